"""Exceptions: the library's negative codes, one class each, named and
explained by the header's own table (ErrorNames.h), and the errors the
Python layer finds before any call."""

from __future__ import annotations

import re
from typing import Dict, Type

from . import _lowlevel


class QuorinError(Exception):
    """A negative result of libquorin. ``code`` is the number, ``name`` the
    constant's spelling (``kQuorinError_BadArgument``), ``message`` the
    header's short explanation, ``operation`` the entry point that failed."""

    code: int = 0
    name: str = "unknown"
    message: str = "not a result code of this library"

    def __init__(self, operation: str = "", code: int = 0):
        if code:
            self.code = code
        self.operation = operation
        super().__init__(f"{operation}: {self.name} ({self.code}): {self.message}")


class UsageError(ValueError):
    """An argument the Python layer refuses before calling the library:
    wrong dtype, dimensions, channels or sizes, an unknown format."""


class FormatError(UsageError):
    """A pixel format the operation has no implemented member for, or an
    unknown format tag."""


def _error_texts() -> Dict[str, tuple]:
    """kQuorin name -> (name, message), read from ErrorNames.h's table."""
    text = re.sub(r"/\*.*?\*/", " ", (_lowlevel.HEADER_DIR / "ErrorNames.h").read_text(), flags=re.S)
    entries = re.findall(r'\{\s*(kQuorin\w+)\s*,\s*\{\s*"([^"]*)"\s*,\s*((?:"[^"]*"\s*)+)\}\s*\}', text)
    return {key: (name, "".join(re.findall(r'"([^"]*)"', message))) for key, name, message in entries}


_BY_CODE: Dict[int, Type[QuorinError]] = {}


def _make_classes() -> Dict[str, Type[QuorinError]]:
    classes = {}
    for key, (name, message) in _error_texts().items():
        code = _lowlevel.constant(key)
        if code >= 0:
            continue
        class_name = key.replace("kQuorinError_", "") + "Error"
        cls = type(class_name, (QuorinError,), {"code": code, "name": name, "message": message,
                                                "__doc__": f"{name} ({code}): {message}.",
                                                "__module__": "quorin"})
        classes[class_name] = _BY_CODE[code] = cls
    return classes


ERROR_CLASSES = _make_classes()


def error_for(operation: str, code: int) -> QuorinError:
    """The exception for a negative result (a code the headers do not name
    gets the base class)."""
    cls = _BY_CODE.get(code)
    return cls(operation) if cls is not None else QuorinError(operation, code)


def error_name(code: int) -> str:
    cls = _BY_CODE.get(code)
    return cls.name if cls is not None else ("kQuorinSuccess" if code == 0 else "unknown")
