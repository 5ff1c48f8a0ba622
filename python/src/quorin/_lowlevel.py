"""The low-level layer: libquorin through cffi, declared from its own headers.

The declarations are read at import time from the public headers shipped in
the package and filtered by MANIFEST.txt, so every entry point the manifest
calls ``implemented`` is reachable as ``lib.<name>`` and a family that lands
appears with no new binding code. Entry points that are stubs or partial are
never declared: calling one would end the process, so asking for one raises
``NotImplementedError`` instead.

cffi's ABI mode (``ffi.dlopen``) is used rather than a compiled extension:
the headers are plain C99 with no macros in the declarations, the wheel then
holds no Python-version-specific code, and cffi releases the GIL around every
call it makes this way.
"""

from __future__ import annotations

import os
import re
from dataclasses import dataclass
from pathlib import Path
from typing import Dict, List, Optional, Tuple

import cffi

NATIVE_DIR = Path(os.environ.get("QUORIN_NATIVE_DIR", Path(__file__).with_name("_native")))
HEADER_DIR = NATIVE_DIR / "include" / "quorin"

_COMMENT = re.compile(r"/\*.*?\*/|//[^\n]*", re.S)
_DIRECTIVE = re.compile(r"^[ \t]*#.*$", re.M)
_MARKERS = re.compile(r"\b(QUORIN_EXTERN_C_BEGIN|QUORIN_EXTERN_C_END|QUORIN_API|QUORIN_NORETURN)\b")
_FUNCTION = re.compile(r"^(?P<ret>.*?)\b(?P<name>\w+)\s*\((?P<params>.*)\)$", re.S)


@dataclass(frozen=True)
class Param:
    """One parameter of an entry point as its header spells it."""

    type: str
    name: str

    @property
    def is_buffer(self) -> bool:
        return re.search(r"\bQuorin_Buffer\s*\*", self.type) is not None and "[" not in self.type


@dataclass(frozen=True)
class Member:
    """An implemented entry point: its name, family (header) and parameters."""

    name: str
    family: str
    returns: str
    params: Tuple[Param, ...]


def _strip(text: str) -> str:
    return _MARKERS.sub("", _DIRECTIVE.sub("", _COMMENT.sub(" ", text)))


def _split_top(text: str, separator: str) -> List[str]:
    """Splits at separators outside braces, brackets and parentheses."""
    parts, depth, start = [], 0, 0
    for i, ch in enumerate(text):
        if ch in "({[":
            depth += 1
        elif ch in ")}]":
            depth -= 1
        elif ch == separator and depth == 0:
            parts.append(text[start:i])
            start = i + 1
    parts.append(text[start:])
    return [" ".join(p.split()) for p in parts if p.strip()]


def _param(text: str) -> Param:
    match = re.match(r"^(?P<type>.*?)(?P<name>\w+)\s*(?P<array>(\[\s*\w*\s*\])*)$", text)
    if match is None or text in ("void",):
        return Param(text, "")
    return Param((match["type"] + match["array"]).strip(), match["name"])


def read_manifest(path: Path) -> Dict[str, str]:
    """Entry point name -> state, from MANIFEST.txt."""
    states = {}
    for line in path.read_text().splitlines():
        if line and not line.startswith("#"):
            fields = line.split("\t")
            if len(fields) >= 2:
                states[fields[0]] = fields[1]
    return states


def header_order(header_dir: Path) -> List[str]:
    """The family headers in the umbrella header's include order, each after
    the headers it includes itself (whose types it uses)."""
    order: List[str] = []

    def visit(header: str) -> None:
        if header in order or not (header_dir / header).exists():
            return
        for included in re.findall(r'#include\s+"(\w+\.h)"', (header_dir / header).read_text()):
            visit(included)
        order.append(header)

    for header in re.findall(r'#include\s+"(\w+\.h)"', (header_dir / "Quorin.h").read_text()):
        visit(header)
    return order


_DATA = re.compile(r"^extern\s+(?P<decl>.*?\b(?P<name>\w+)\s*(\[\s*\w*\s*\])?)$", re.S)


def parse_headers(header_dir: Path, implemented: set) -> Tuple[str, Dict[str, Member], List[str]]:
    """The cdef text (every type, the implemented functions and data), the
    function members and the names of the exported data."""
    declarations, members, data = [], {}, []
    for header in header_order(header_dir):
        if header == "ErrorNames.h":  # static inline helpers: read by errors.py
            continue
        family = header[:-2]
        for statement in _split_top(_strip((header_dir / header).read_text()), ";"):
            if statement.startswith(("typedef", "struct", "enum")):
                # Layout checks (a char array of size -1 when a struct's size
                # is wrong) use expressions cffi does not evaluate.
                if "sizeof(" not in statement:
                    declarations.append(statement + ";")
                continue
            extern = _DATA.match(statement)
            if extern is not None:
                if extern["name"] in implemented:
                    data.append(extern["name"])
                    declarations.append(statement + ";")
                continue
            match = _FUNCTION.match(statement)
            if match is None or match["name"] not in implemented:
                continue
            params = tuple(_param(p) for p in _split_top(match["params"], ","))
            members[match["name"]] = Member(match["name"], family, match["ret"].strip(), params)
            declarations.append(statement + ";")
    return "\n".join(declarations), members, data


def read_version(header_dir: Path) -> str:
    match = re.search(r'#define\s+QUORIN_VERSION_STRING\s+"([^"]+)"', (header_dir / "Version.h").read_text())
    return match[1] if match else "0.0.0"


class Library:
    """The implemented entry points as attributes; any other manifest name
    raises NotImplementedError rather than reaching a stub."""

    def __init__(self, raw, members: Dict[str, Member], states: Dict[str, str]):
        self._states = states
        for name in members:
            setattr(self, name, getattr(raw, name))

    def __getattr__(self, name: str):
        if name in DATA:  # exported data (tables, constants): read through on every access
            return getattr(_raw, name)
        state = self.__dict__.get("_states", {}).get(name)
        if state in ("stub", "partial"):
            raise NotImplementedError(
                f"{name} is {state!r} in this build of libquorin: calling it would end the process")
        if state is not None:
            raise NotImplementedError(f"{name} is {state!r} in this build of libquorin")
        raise AttributeError(f"libquorin has no entry point named {name!r}")


ffi = cffi.FFI()
STATES = read_manifest(NATIVE_DIR / "MANIFEST.txt")
_CDEF, MEMBERS, DATA = parse_headers(HEADER_DIR, {n for n, s in STATES.items() if s == "implemented"})
ffi.cdef(_CDEF)
_raw = ffi.dlopen(os.environ.get("QUORIN_LIBRARY", str(NATIVE_DIR / "libquorin.so")))
lib = Library(_raw, MEMBERS, STATES)
VERSION = read_version(HEADER_DIR)


def constant(name: str) -> int:
    """An enum constant of the headers (flags, codes)."""
    return getattr(_raw, name)


def member(name: str) -> Optional[Member]:
    return MEMBERS.get(name)
