"""Quorin image operations over numpy arrays.

Every operation takes and returns numpy arrays without copying pixels: a
(height, width, channels) array for interleaved formats, (height, width) for
one plane. The operations present are those with implemented members in the
loaded libquorin (``operations()``); ``call`` reaches any implemented entry
point by name, and ``lib`` / ``ffi`` are the raw cffi layer.
"""

from __future__ import annotations

import os
import re
from typing import Any, Dict, List

from . import _lowlevel
from ._binding import SINGLE_THREADED, Format, pixel_format
from ._lowlevel import VERSION as __version__
from ._lowlevel import ffi, lib
from .errors import ERROR_CLASSES, FormatError, QuorinError, UsageError, error_name
from .ops import FUNCTIONS, Operation, available as operations, call, convert

globals().update(ERROR_CLASSES)
globals().update(FUNCTIONS)

# The library's vector kernels are compiled for these (best first).
_TARGETS = (("AVX3", ("avx512f", "avx512bw", "avx512dq", "avx512vl")), ("AVX2", ("avx2", "bmi2", "fma")),
            ("SSE4", ("sse4_1", "sse4_2", "ssse3")))


def _cpu_flags() -> set:
    try:
        with open("/proc/cpuinfo") as f:
            match = re.search(r"^flags\s*:(.*)$", f.read(), re.M)
        return set(match[1].split()) if match else set()
    except OSError:
        return set()


def features() -> Dict[str, Any]:
    """What this process runs on: whether vector kernels may run (the
    library's own feature test), the vector targets the library is built for
    that this processor has (best first; the library picks the first), and
    the processors this process may use."""
    flags = _cpu_flags()
    vector = bool(lib.Quorin_HasFeature(1))
    targets: List[str] = [name for name, needs in _TARGETS if all(f in flags for f in needs)] if vector else []
    return {"version": __version__, "vector": vector, "targets": targets,
            "processors": len(os.sched_getaffinity(0))}


def families() -> Dict[str, int]:
    """Implemented entry points per family (public header)."""
    counts: Dict[str, int] = {}
    for m in _lowlevel.MEMBERS.values():
        counts[m.family] = counts.get(m.family, 0) + 1
    return counts


__all__ = ["QuorinError", "UsageError", "FormatError", "Format", "Operation", "SINGLE_THREADED", "call", "convert", "features",
           "families", "ffi", "lib", "operations", "pixel_format", "error_name", "__version__",
           *ERROR_CLASSES, *FUNCTIONS]
