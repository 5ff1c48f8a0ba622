#!/usr/bin/env python3
"""Writes the C example of README.md (the ```c block after the line
"<!-- example -->") to the given file, so the tests build the example the
README shows, not a copy of it.

Usage: readme_example.py README.md out.c
"""
import re
import sys

MARK = "<!-- example -->"


def main(readme, out):
    text = open(readme, encoding="utf-8").read()
    if MARK not in text:
        sys.exit(f"{readme}: no line {MARK!r} before the example")
    block = re.search(r"```c\n(.*?)```", text[text.index(MARK):], re.S)
    if not block:
        sys.exit(f"{readme}: no ```c block after {MARK!r}")
    with open(out, "w", encoding="utf-8") as f:
        f.write(block.group(1))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
