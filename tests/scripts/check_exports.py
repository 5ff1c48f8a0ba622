#!/usr/bin/env python3
"""Checks that a shared object exports exactly what the manifest promises.

Usage: check_exports.py MANIFEST.txt libquorin.so

Fails (exit 1) listing
  - names the library exports that the manifest does not mark implemented,
    partial or stub,
  - names marked so that the library does not export,
  - manifest rows that are malformed, carry an unknown state, or repeat a name.
"""
import subprocess
import sys

EXPORTED_STATES = {"implemented", "partial", "stub"}
STATES = EXPORTED_STATES | {"missing", "internal"}


def read_manifest(path):
    promised, problems, seen = set(), [], {}
    with open(path, encoding="utf-8") as manifest:
        for number, line in enumerate(manifest, 1):
            line = line.rstrip("\n")
            if not line.strip() or line.startswith("#"):
                continue
            fields = line.split("\t")
            if len(fields) not in (2, 3) or fields[1] not in STATES or not fields[0]:
                problems.append(f"line {number}: malformed row: {line!r}")
                continue
            name, state = fields[0], fields[1]
            if name in seen:
                problems.append(f"line {number}: {name} repeats line {seen[name]}")
                continue
            seen[name] = number
            if state in EXPORTED_STATES:
                promised.add(name)
    return promised, problems


def read_exports(library):
    output = subprocess.run(["nm", "-D", "--defined-only", library], check=True,
                            capture_output=True, text=True).stdout
    exported = set()
    for line in output.splitlines():
        fields = line.split()
        if len(fields) >= 3:
            exported.add(fields[2].split("@")[0])  # strip a version suffix
    return exported


def main(argv):
    if len(argv) != 3:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    promised, problems = read_manifest(argv[1])
    exported = read_exports(argv[2])
    unexpected = sorted(exported - promised)
    absent = sorted(promised - exported)
    for title, names in (("manifest problems", problems),
                         ("exported but not marked implemented, partial or stub", unexpected),
                         ("marked implemented, partial or stub but not exported", absent)):
        if names:
            print(f"{title} ({len(names)}):", file=sys.stderr)
            for name in names:
                print(f"  {name}", file=sys.stderr)
    if problems or unexpected or absent:
        return 1
    print(f"{len(exported)} exports match the manifest")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
