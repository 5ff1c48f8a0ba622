"""Calls any implemented entry point over numpy arrays, from its header
signature alone: buffers point into the arrays (rows through rowBytes, no
copy), outputs are allocated when not given, and every array is checked
against its pixel format before the call."""

from __future__ import annotations

import re
from dataclasses import dataclass
from functools import lru_cache
from typing import Any, Dict, List, Optional, Sequence, Tuple, Union

import numpy as np

from . import _lowlevel
from ._lowlevel import ffi, lib
from .errors import FormatError, UsageError, error_for

SINGLE_THREADED = _lowlevel.constant("kQuorinFlag_SingleThreaded")
QUERY_TEMP_SIZE = _lowlevel.constant("kQuorinFlag_QueryTempSize")


@dataclass(frozen=True)
class Format:
    """A pixel format: numpy dtype of a sample and samples a pixel (a packed
    format such as RGB565 is one 16-bit sample a pixel)."""

    name: str
    dtype: np.dtype
    channels: int
    pixel_bytes: int = 0
    # What the last axes of a well-formed array hold: shape and strides past
    # the row axis (the pixel axis, then the channel axis if any).
    ndim: int = 0
    tail_shape: Tuple[int, ...] = ()
    tail_strides: Tuple[int, ...] = ()

    def __post_init__(self):
        item, pixel = self.dtype.itemsize, self.dtype.itemsize * self.channels
        object.__setattr__(self, "pixel_bytes", pixel)
        object.__setattr__(self, "ndim", 2 if self.channels == 1 else 3)
        object.__setattr__(self, "tail_shape", () if self.channels == 1 else (self.channels,))
        object.__setattr__(self, "tail_strides", (pixel,) if self.channels == 1 else (pixel, item))

    def shape(self, height: int, width: int) -> Tuple[int, ...]:
        return (height, width) if self.channels == 1 else (height, width, self.channels)


_SAMPLES = {"8888": "u1", "888": "u1", "8": "u1", "16U": "<u2", "16S": "<i2", "16Q12": "<i2",
            "16F": "<f2", "FFFF": "<f4", "FFF": "<f4", "F": "<f4"}
_PACKED = {"RGB565": "<u2", "ARGB1555": "<u2", "RGBA5551": "<u2"}


@lru_cache(maxsize=None)
def pixel_format(name: str) -> Format:
    """The Format a format tag names (``ARGB8888``, ``Planar16U``, ``RGB565``)."""
    if name in _PACKED:
        return Format(name, np.dtype(_PACKED[name]), 1)
    match = re.fullmatch(r"(?:Planar)?(8|16U|16S|16Q12|16F|F)", name)
    if match and name != "8":
        return Format(name, np.dtype(_SAMPLES[match[1]]), 1)
    match = re.fullmatch(r"([ARGBX]{3,4})(8888|888|16U|16S|16Q12|16F|FFFF|FFF)", name)
    if match and (match[2] not in ("8888", "FFFF") or len(match[1]) == 4) and \
            (match[2] not in ("888", "FFF") or len(match[1]) == 3):
        return Format(name, np.dtype(_SAMPLES[match[2]]), len(match[1]))
    raise FormatError(f"unknown pixel format {name!r}")


def plane_of(fmt: Format) -> Format:
    """The one-channel format holding the samples of fmt."""
    names = {"u1": "Planar8", "<u2": "Planar16U", "<i2": "Planar16S", "<f4": "PlanarF", "<f2": "Planar16F"}
    return pixel_format(names[fmt.dtype.str.replace("|", "")])


def describe(a: np.ndarray) -> str:
    return f"an array of dtype {a.dtype} and shape {a.shape}"


def check_image(a: Any, fmt: Format, what: str, writable: bool = False) -> Tuple[int, int, int]:
    """(height, width, rowBytes) of an array that can be described as an image
    of fmt; a clear UsageError otherwise."""
    if isinstance(a, np.ndarray):
        # The common case in few steps: the slow path below names the fault.
        shape, strides = a.shape, a.strides
        if (len(shape) == fmt.ndim and a.dtype == fmt.dtype and shape[2:] == fmt.tail_shape
                and strides[1:] == fmt.tail_strides and shape[0] > 1 and shape[1] > 0
                and strides[0] >= shape[1] * fmt.pixel_bytes):
            flags = a.flags
            if flags.aligned and (flags.writeable or not writable):
                return shape[0], shape[1], strides[0]
    else:
        raise UsageError(f"{what}: expected a numpy array, got {type(a).__name__}")
    if a.dtype != fmt.dtype:
        raise UsageError(f"{what}: {fmt.name} needs dtype {fmt.dtype.name}, got {describe(a)}")
    shape, strides = a.shape, a.strides
    if fmt.channels == 1:
        if a.ndim == 3 and shape[2] == 1:
            shape, strides = shape[:2], strides[:2]
        elif a.ndim != 2:
            raise UsageError(f"{what}: {fmt.name} is one channel, so it needs a 2-D array (height, width), "
                             f"got {describe(a)}")
    elif a.ndim != 3 or shape[2] != fmt.channels:
        raise UsageError(f"{what}: {fmt.name} needs an array of shape (height, width, {fmt.channels}), "
                         f"got {describe(a)}")
    elif shape[0] * shape[1] > 0 and strides[2] != fmt.dtype.itemsize:
        raise UsageError(f"{what}: the channels of a pixel must be adjacent in memory (strides {strides})")
    height, width = shape[0], shape[1]
    if height == 0 or width == 0:
        return height, width, width * fmt.pixel_bytes
    if width > 1 and strides[1] != fmt.pixel_bytes:
        raise UsageError(f"{what}: the pixels of a row must be adjacent in memory (strides {strides}); "
                         "use numpy.ascontiguousarray")
    row_bytes = strides[0] if height > 1 else width * fmt.pixel_bytes
    if height > 1 and row_bytes < width * fmt.pixel_bytes:
        raise UsageError(f"{what}: rows must follow each other top to bottom with no overlap "
                         f"(strides {strides})")
    if not a.flags.aligned:
        raise UsageError(f"{what}: samples must be aligned to their size")
    if writable and not a.flags.writeable:
        raise UsageError(f"{what}: the output array is read-only")
    return height, width, row_bytes


# cffi's backend calls, without the checks its Python wrappers repeat per call.
_new = ffi._backend.newp
_from_buffer = ffi._backend.from_buffer
_BUFFER_POINTER = ffi.typeof("Quorin_Buffer *")
_BYTES = ffi.typeof("char[]")
_VOID_POINTER = ffi.typeof("void *")


def buffer(a: Optional[np.ndarray], height: int, width: int, row_bytes: int):
    """A Quorin_Buffer record pointing into a (a null pointer for None)."""
    if a is None:
        return ffi.NULL
    if a.flags.c_contiguous:
        data = _from_buffer(_BYTES, a, False)
    else:
        data = ffi.cast(_VOID_POINTER, a.__array_interface__["data"][0])
    return _new(_BUFFER_POINTER, (data, height, width, row_bytes))


def _snake(name: str) -> str:
    return re.sub(r"(?<=[a-z0-9])([A-Z])", r"_\1", name).lower()


# Values of scalar parameters that a Python caller rarely sets.
_DEFAULTS: Dict[str, Any] = {"roiOffsetX": 0, "roiOffsetY": 0, "backgroundColor": 0, "bias": 0,
                             "maxFloat": (1.0, 1.0, 1.0, 1.0), "minFloat": (0.0, 0.0, 0.0, 0.0),
                             "preBias": None, "postBias": None}


_C_DTYPES = {"uint8_t": "u1", "int8_t": "i1", "uint16_t": "<u2", "int16_t": "<i2", "uint32_t": "<u4",
             "int32_t": "<i4", "float": "<f4", "double": "<f8"}


def _c_value(param: _lowlevel.Param, value: Any, keep: List[Any]):
    """A Python value as the C argument param expects."""
    ctype = re.sub(r"\bconst\b", "", param.type).strip()
    pointers = re.fullmatch(r"(\w+)\s*\*\s*\[\s*(\d+)\s*\]", ctype)
    if pointers is not None:  # an array of pointers to arrays: rows of a 2-D array
        rows = [np.ascontiguousarray(r, dtype=_C_DTYPES[pointers[1]]) for r in value]
        keep.extend(rows)
        cdata = ffi.new(f"{pointers[1]} *[{pointers[2]}]", [ffi.from_buffer(pointers[1] + "[]", r) for r in rows])
        keep.append(cdata)
        return cdata
    array = re.fullmatch(r"(\w+)\s*\[\s*(\d*)\s*\]", ctype) or re.fullmatch(r"(\w+)\s*\*", ctype)
    if array is None:
        return value
    if value is None:
        return ffi.NULL
    if isinstance(value, np.ndarray):
        value = np.ascontiguousarray(value, dtype=_C_DTYPES[array[1]])
        keep.append(value)
        return ffi.from_buffer(array[1] + "[]", value)
    if np.isscalar(value):
        value = [value] * (int(array[2]) if array.lastindex and array.lastindex >= 2 and array[2] else 1)
    cdata = ffi.new(f"{array[1]}[]", list(value))
    keep.append(cdata)
    return cdata


@dataclass(frozen=True)
class Plan:
    """How one member's parameters are filled: which are source and
    destination buffers (and their formats), which are scalars."""

    member: _lowlevel.Member
    function: Any
    sources: Tuple[int, ...]
    dests: Tuple[int, ...]
    source_format: Format
    dest_format: Format
    # (index, parameter, snake-case name) of every other parameter.
    scalars: Tuple[Tuple[int, _lowlevel.Param, str], ...] = ()

    @property
    def name(self) -> str:
        return self.member.name

    @property
    def simple(self) -> bool:
        """One source, one destination of the same format, flags last: the
        shape of most members, called through run_simple."""
        return (len(self.sources) == 1 and len(self.dests) == 1 and self.source_format == self.dest_format
                and [k for _, _, k in self.scalars] == ["flags"] and self.sources[0] < self.dests[0]
                and self.scalars[0][0] == len(self.member.params) - 1)


def _is_dest(name: str) -> bool:
    return name.startswith("dest")


@lru_cache(maxsize=None)
def plan(member_name: str, source_format: str, dest_format: str) -> Plan:
    member = _lowlevel.member(member_name)
    if member is None:
        raise NotImplementedError(f"{member_name} is not implemented in this build of libquorin")
    buffers = [i for i, p in enumerate(member.params) if p.is_buffer]
    return Plan(member, getattr(lib, member_name),
                tuple(i for i in buffers if not _is_dest(member.params[i].name)),
                tuple(i for i in buffers if _is_dest(member.params[i].name)),
                pixel_format(source_format), pixel_format(dest_format),
                tuple((i, p, _snake(p.name)) for i, p in enumerate(member.params) if not p.is_buffer))


ArrayOrPlanes = Union[np.ndarray, Sequence[Optional[np.ndarray]]]


def _as_list(arrays: ArrayOrPlanes, count: int, what: str) -> List[Optional[np.ndarray]]:
    if count == 1 and (arrays is None or isinstance(arrays, np.ndarray)):
        return [arrays]
    if isinstance(arrays, np.ndarray) and arrays.ndim == 2:
        raise UsageError(f"{what}: expected {count} images, got one 2-D array")
    arrays = [] if arrays is None else list(arrays)
    if len(arrays) != count:
        raise UsageError(f"{what}: expected {count} images, got {len(arrays)}")
    return arrays


def run(p: Plan, sources: ArrayOrPlanes, out: Optional[ArrayOrPlanes] = None,
        size: Optional[Tuple[int, int]] = None, in_place: bool = True, flags: int = 0,
        **params: Any) -> Any:
    """Calls p's member: sources in its parameter order (None for a plane it
    may go without), out allocated when None (one array; several planes as
    one (planes, height, width) array), size the destination size when it
    differs from the sources'. Returns out."""
    params_c = p.member.params
    srcs = sources if type(sources) is list and len(sources) == len(p.sources) else \
        _as_list(sources, len(p.sources), p.name + " sources")
    args: List[Any] = [None] * len(params_c)
    height = width = None
    for index, a in zip(p.sources, srcs):
        name = params_c[index].name
        if a is None:
            args[index] = ffi.NULL
            continue
        h, w, rb = check_image(a, p.source_format, name)
        if height is None:
            height, width = h, w
        elif (h, w) != (height, width) and size is None:
            raise UsageError(f"{name}: size {h}x{w} differs from the first image's {height}x{width}")
        args[index] = buffer(a, h, w, rb)
    if height is None:
        if size is None and isinstance(out, np.ndarray) and len(p.dests) == 1:
            size = out.shape[:2]
        if size is None:
            raise UsageError(f"{p.name}: give out or size, since it reads no image")
        height, width = size
    out_height, out_width = size if size is not None else (height, width)
    fmt = p.dest_format
    count = len(p.dests)
    if out is None:
        if count == 1:
            outs = [np.empty(fmt.shape(out_height, out_width), fmt.dtype)]
            result = outs[0]
        else:
            result = np.empty((count, out_height, out_width) + fmt.shape(1, 1)[2:], fmt.dtype)
            outs = list(result)
    else:
        outs = [out] if count == 1 and isinstance(out, np.ndarray) else _as_list(out, count, "out")
        result = out
    for index, a in zip(p.dests, outs):
        name = params_c[index].name
        h, w, rb = check_image(a, fmt, f"out ({name})", writable=True)
        if (h, w) != (out_height, out_width):
            raise UsageError(f"out ({name}): size {h}x{w}, expected {out_height}x{out_width}")
        if not in_place and any(s is not None and np.may_share_memory(a, s) for s in srcs):
            raise UsageError(f"out ({name}): {p.name} cannot write over its source")
        args[index] = buffer(a, h, w, rb)
    keep: List[Any] = []
    scratch = None
    for index, param, key in p.scalars:
        if key == "flags":
            args[index] = flags
            continue
        if key in params:
            value = params.pop(key)
        elif param.name in _DEFAULTS or param.type.startswith("void"):
            value = _DEFAULTS.get(param.name)
        else:
            raise UsageError(f"{p.name} needs the parameter {key!r}")
        if param.name == "tempBuffer" and value is not None:
            scratch = (index, value)
            value = None
        args[index] = _c_value(param, value, keep)
    if params:
        raise UsageError(f"{p.name} takes no parameter {', '.join(map(repr, params))}")
    if scratch is not None:
        args[scratch[0]] = _scratch(p, args, scratch[1])
    code = p.function(*args)
    if code < 0:
        raise error_for(p.name, code)
    return result


def _scratch(p: Plan, args: List[Any], scratch: Any):
    """The caller's scratch memory for a member that takes a tempBuffer (an
    array, or a function giving one for a byte count), once the member's
    own size query says it is large enough."""
    flags_index = next(i for i, _, key in p.scalars if key == "flags")
    query = list(args)
    query[flags_index] |= QUERY_TEMP_SIZE
    needed = p.function(*query)
    if needed < 0:
        raise error_for(p.name, needed)
    if callable(scratch):
        scratch = scratch(needed)
    if not (isinstance(scratch, np.ndarray) and scratch.flags.c_contiguous and scratch.flags.writeable):
        raise UsageError(f"{p.name}: temp_buffer must be a writable C-contiguous numpy array")
    if scratch.nbytes < needed:
        raise UsageError(f"{p.name}: temp_buffer holds {scratch.nbytes} bytes, the call needs {needed}")
    return _from_buffer(_BYTES, scratch, False)


def run_plane_walk(p: Plan, source: Any, out: Optional[np.ndarray], flags: int, **params: Any) -> np.ndarray:
    """A plane of source's samples through a member whose dest row gets
    ceil(rowBytes / pixel bytes) samples from the start of its src row (the
    extract walk). Rows of dest as long as the source's would give each row
    its width, but spread the plane over the source's size. With n samples
    a pixel, n calls each take every n-th row instead: rows of src n rows
    apart, rows of dest n plane rows apart, so that a dest rowBytes of n x
    width samples gives exactly width samples a row and the n calls tile a
    plane with rows of exactly width samples (each record's last row ends
    inside the plane). A source whose rows follow each other is one row of
    height x width pixels to the walk: one call, along the memory as it lies
    (every n-th row at a time leaves the processor's prefetching behind).
    out must have rows of exactly width samples; it is allocated when None."""
    src_format, plane = p.source_format, p.dest_format
    height, width, row_bytes = check_image(source, src_format, "src")
    if out is None:
        out = np.empty(plane.shape(height, width), plane.dtype)
    else:
        h, w, out_row_bytes = check_image(out, plane, "out", writable=True)
        if (h, w) != (height, width):
            raise UsageError(f"out: size {h}x{w}, expected {height}x{width}")
        if h > 1 and out_row_bytes != width * plane.pixel_bytes:
            raise UsageError("out: rows must hold exactly the image's width (a C-contiguous plane)")
    if height == 0 or width == 0:
        return out
    step = src_format.pixel_bytes // plane.pixel_bytes
    if row_bytes == width * src_format.pixel_bytes:
        height, width, row_bytes = 1, height * width, height * row_bytes
    (src_index,), (dest_index,) = p.sources, p.dests
    args: List[Any] = [None] * len(p.member.params)
    keep: List[Any] = []
    for index, param, key in p.scalars:
        if key == "flags":
            args[index] = flags
        elif key in params:
            args[index] = _c_value(param, params.pop(key), keep)
        else:
            raise UsageError(f"{p.name} needs the parameter {key!r}")
    if params:
        raise UsageError(f"{p.name} takes no parameter {', '.join(map(repr, params))}")
    src_data = ffi.cast("char *", source.__array_interface__["data"][0])
    dest_data = ffi.cast("char *", out.__array_interface__["data"][0])
    plane_row = width * plane.pixel_bytes
    for first in range(min(step, height)):
        rows = (height - first + step - 1) // step
        args[src_index] = _new(_BUFFER_POINTER, (src_data + first * row_bytes, rows, width, step * row_bytes))
        args[dest_index] = _new(_BUFFER_POINTER, (dest_data + first * plane_row, rows, width, step * plane_row))
        code = p.function(*args)
        if code < 0:
            raise error_for(p.name, code)
    return out


def run_simple(p: Plan, source: Any, out: Optional[np.ndarray], flags: int) -> np.ndarray:
    """run for a simple plan (see Plan.simple), with fewer steps."""
    fmt = p.source_format
    height, width, row_bytes = check_image(source, fmt, "src")
    if out is None:
        out = np.empty(fmt.shape(height, width), fmt.dtype)
        out_row_bytes = width * fmt.pixel_bytes
    else:
        h, w, out_row_bytes = check_image(out, fmt, "out", writable=True)
        if h != height or w != width:
            raise UsageError(f"out: size {h}x{w}, expected {height}x{width}")
    code = p.function(buffer(source, height, width, row_bytes), buffer(out, height, width, out_row_bytes), flags)
    if code < 0:
        raise error_for(p.name, code)
    return out
