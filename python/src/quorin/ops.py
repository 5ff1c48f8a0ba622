"""The Pythonic operations: one declarative entry per operation, naming the
entry points' common stem. An operation exists in ``quorin`` as soon as one
of its members is implemented in the loaded library, and takes exactly the
formats whose members are; adding an operation for a new family is one
entry here."""

from __future__ import annotations

import inspect
from dataclasses import dataclass
from functools import lru_cache
from typing import Any, Callable, Dict, List, Optional, Tuple

import numpy as np

from . import _binding, _lowlevel
from ._binding import Format, pixel_format, plane_of
from .errors import FormatError, UsageError

HIGH_QUALITY = _lowlevel.constant("kQuorinFlag_HighQualityResampling")

# When several formats fit an array's dtype and channel count, the first of
# these that an operation has is taken (the library's channel order is ARGB).
PREFERRED = ("ARGB8888", "ARGB16U", "ARGBFFFF", "ARGB16Q12", "Planar8", "Planar16U", "PlanarF",
             "Planar16S", "RGB888", "RGB16U", "RGBFFF")


@dataclass(frozen=True)
class Param:
    """A parameter a caller gives by name (also a command-line option)."""

    name: str
    kind: Callable[[str], Any]
    help: str
    default: Any = inspect.Parameter.empty
    # The entry point's own parameter this one sets (snake case), when the
    # names differ.
    c_name: Optional[str] = None


@dataclass(frozen=True, eq=False)
class Operation:
    """One operation: the members named Quorin<stem>_<format>."""

    name: str
    stem: str
    doc: str
    # The images taken, in order; a name ending in "?" is taken by the planar
    # members only (their separate alpha plane).
    sources: Tuple[str, ...] = ("image",)
    params: Tuple[Param, ...] = ()
    in_place: bool = True
    # Formats left out although implemented (members whose walk does not fit
    # an array, said in the doc).
    exclude: Tuple[str, ...] = ()
    # Destinations must have rows of exactly width pixels (the member walks
    # dest's rowBytes, padding included); sources too when tight_sources.
    tight_dest: bool = False
    tight_sources: bool = False
    # Extra arguments of the call, from the caller's parameters and the
    # first source: returns (C parameters, destination size or None, flags).
    prepare: Optional[Callable[[Dict[str, Any], np.ndarray, Format], Tuple[Dict[str, Any], Any, int]]] = None
    # Neighbourhood operations: (rows, columns) of halo a result pixel needs,
    # and how the image continues past its edges ("nearest" or 0).
    halo: Optional[Callable[[Dict[str, Any]], Tuple[int, int]]] = None
    boundary: Any = None
    dest_plane: bool = False  # the result is one plane of the source's samples
    resizes: bool = False  # the result's size is a parameter
    # The result is this parameter's array (made by prepare), not an image.
    result_param: Optional[str] = None
    # Channels are named by position and treated alike (permute, masks):
    # files' RGBA pixels go to the ARGB member as they are.
    by_position: bool = False
    cli: bool = True

    def members(self) -> Dict[str, str]:
        """format -> member name, for the implemented members."""
        prefix = f"Quorin{self.stem}_"
        found = {}
        for name in _lowlevel.MEMBERS:
            if name.startswith(prefix) and "_" not in name[len(prefix):]:
                fmt = name[len(prefix):]
                if fmt not in self.exclude:
                    try:
                        pixel_format(fmt)
                    except FormatError:
                        continue
                    found[fmt] = name
        return dict(sorted(found.items(), key=lambda kv: (PREFERRED + (kv[0],)).index(kv[0])))

    @property
    def required_sources(self) -> Tuple[str, ...]:
        return tuple(s for s in self.sources if not s.endswith("?"))

    @property
    def available(self) -> bool:
        return bool(self.members())

    def choose_format(self, image: Any, fmt: Optional[str]) -> str:
        members = _members(self)
        if fmt is not None:
            if fmt not in members:
                raise FormatError(f"{self.name} has no member for format {fmt!r}; it takes {', '.join(members)}")
            return fmt
        if not isinstance(image, np.ndarray):
            raise UsageError(f"{self.name}: expected a numpy array, got {type(image).__name__}")
        return _default_format(self, image.dtype.str, image.shape[2] if image.ndim == 3 else 1)

    def _resolve(self, first: Any, format: Optional[str]) -> Tuple[str, Format, "_binding.Plan", bool]:
        fmt = self.choose_format(first, format)
        source_format = pixel_format(fmt)
        dest_format = plane_of(source_format) if self.dest_plane else source_format
        plan = _binding.plan(_members(self)[fmt], fmt, dest_format.name)
        simple = plan.simple and not (self.params or self.prepare or self.tight_sources or self.tight_dest
                                      or self.dest_plane or not self.in_place)
        return fmt, source_format, plan, simple

    def __call__(self, *sources: Any, out: Any = None, format: Optional[str] = None, flags: int = 0,
                 **params: Any) -> Any:
        first = sources[0] if sources else out
        # Which member an array's dtype and channels select, remembered.
        try:
            key = (format, first.dtype, first.shape[2:])
        except AttributeError:
            key = (format, None, None)
        resolved = _RESOLVED.get((self, key))
        if resolved is None:
            resolved = _RESOLVED[self, key] = self._resolve(first, format)
        fmt, source_format, plan, simple = resolved
        if simple and not params and len(sources) == 1:
            return _binding.run_simple(plan, first, out, flags)
        for p in self.params:
            if p.name in params:
                if p.c_name:
                    params[p.c_name] = params.pop(p.name)
            elif p.default is not inspect.Parameter.empty:
                params[p.c_name or p.name] = p.default
        size = None
        if self.prepare is not None:
            params, size, extra = self.prepare(params, first, source_format)
            flags |= extra
        if self.tight_sources:
            sources = tuple(s if s is None or not isinstance(s, np.ndarray) or _tight(s) else np.ascontiguousarray(s)
                            for s in sources)
        if self.tight_dest and out is not None and not _tight(out):
            raise UsageError(f"out: {self.name} writes whole rows up to their end, so out must have "
                             "rows of exactly its width (a C-contiguous array)")
        if self.dest_plane:
            if len(sources) != 1:
                raise UsageError(f"{self.name} takes one image, got {len(sources)}")
            if out is not None and not _tight(out):
                # The walk fills whole rows of its own length: a plane with
                # padded rows gets the result through a copy.
                result = _binding.run_plane_walk(plan, first, None, flags, **params)
                _binding.check_image(out, plan.dest_format, "out", writable=True)
                if out.shape[:2] != result.shape:
                    raise UsageError(f"out: size {out.shape[0]}x{out.shape[1]}, expected "
                                     f"{result.shape[0]}x{result.shape[1]}")
                out.reshape(result.shape)[...] = result
                return out
            return _binding.run_plane_walk(plan, first, out, flags, **params)
        if self.result_param:
            result = params[self.result_param]
            _binding.run(plan, list(sources), None, in_place=True, flags=flags, **params)
            return result
        return _binding.run(plan, list(sources), out, size=size, in_place=self.in_place, flags=flags, **params)


_RESOLVED: Dict[Any, Tuple[str, Format, "_binding.Plan", bool]] = {}


def _tight(a: np.ndarray) -> bool:
    return a.ndim < 2 or a.shape[0] <= 1 or a.strides[0] == a.shape[1] * a.itemsize * (a.shape[2] if a.ndim == 3 else 1)


@lru_cache(maxsize=None)
def _members(op: Operation) -> Dict[str, str]:
    return op.members()


@lru_cache(maxsize=None)
def _default_format(op: Operation, dtype: str, channels: int) -> str:
    members = _members(op)
    for fmt in members:
        f = pixel_format(fmt)
        if f.dtype.str == dtype and f.channels == channels:
            return fmt
    accepted = "; ".join(f"{fmt}: {pixel_format(fmt).dtype.name} x {pixel_format(fmt).channels}" for fmt in members)
    raise FormatError(f"{op.name} takes no format for an array of dtype {np.dtype(dtype).name} with {channels} "
                     f"channel(s); accepted: {accepted}")


# ---- parameter preparation of the operations that need it ------------------


def _scale(params, image, fmt):
    size = params.pop("size")
    high = params.pop("high_quality", False)
    if len(size) != 2 or min(size) < 1:
        raise UsageError(f"scale: size must be (height, width) of at least 1, got {size!r}")
    return params, (int(size[0]), int(size[1])), HIGH_QUALITY if high else 0


def _kernel_size(params):
    size = params.pop("size")
    size = (size, size) if np.isscalar(size) else tuple(size)
    if len(size) != 2 or min(size) < 1 or max(size) > 255:
        raise UsageError(f"size must be one or two numbers from 1 to 255, got {size!r}")
    params["kernel_height"], params["kernel_width"] = int(size[0]), int(size[1])
    return params


def _fill(params, image, fmt):
    size = params.pop("size", None)
    if fmt.channels == 1 and "color" in params:
        color = params.pop("color")
        params["value"] = color if np.isscalar(color) else list(color)[0]
    return params, None if size is None else (int(size[0]), int(size[1])), 0


def _box(params, image, fmt):
    return _kernel_size(params), None, 0


def _convolve(params, image, fmt):
    kernel = np.asarray(params["kernel"])
    if kernel.ndim != 2 or kernel.shape[0] % 2 == 0 or kernel.shape[1] % 2 == 0:
        raise UsageError(f"convolve: the kernel must be a 2-D array of odd height and width, got shape {kernel.shape}")
    params["kernel_height"], params["kernel_width"] = kernel.shape
    return params, None, 0


def _histogram(params, image, fmt):
    entries, low, high = params.pop("entries", 256), params.pop("low", 0.0), params.pop("high", 1.0)
    if fmt.dtype.kind == "f":
        params["histogram_entries"], params["min_val"], params["max_val"] = entries, low, high
    else:
        entries = 256
    params["histograms"] = np.zeros((fmt.channels, entries), np.uint32)
    return params, None, 0


def _matrix(params, image, fmt):
    matrix = np.asarray(params["matrix"])
    if matrix.size != 16:
        raise UsageError(f"matrix_multiply: the matrix needs 16 values (4 x 4), got {matrix.size}")
    params["matrix"] = matrix.ravel()
    if fmt.dtype.kind == "f":  # float members take no divisor
        params.pop("divisor", None)
    return params, None, 0


def _pair(text: str) -> Tuple[int, int]:
    parts = [int(p) for p in text.replace("x", ",").split(",")]
    return (parts[0], parts[0]) if len(parts) == 1 else (parts[0], parts[1])


def _numbers(text: str) -> List[float]:
    return [float(p) for p in text.split(",")]


def _ints(text: str) -> List[int]:
    return [int(p) for p in text.split(",")]


OPERATIONS: Tuple[Operation, ...] = (
    # ---- alpha compositing
    Operation("premultiply", "PremultiplyData", "Multiplies colour by alpha, alpha kept. Planar formats take "
              "the alpha plane as a second image.", sources=("image", "alpha?")),
    Operation("unpremultiply", "UnpremultiplyData", "Divides premultiplied colour by alpha; alpha 0 gives colour 0. "
              "Planar formats take the alpha plane as a second image.", sources=("image", "alpha?")),
    Operation("clip_to_alpha", "ClipToAlpha", "Limits premultiplied colour to its alpha. Planar formats take the "
              "alpha plane as a second image.", sources=("image", "alpha?")),
    Operation("alpha_blend", "AlphaBlend", "Top over bottom, both straight colour; the result straight colour. "
              "Planar formats take four planes and give two (colour, alpha).",
              sources=("top", "top alpha?", "bottom", "bottom alpha?")),
    Operation("premultiplied_blend", "PremultipliedAlphaBlend", "Top over bottom, both premultiplied.",
              sources=("top", "bottom")),
    Operation("blend_darken", "PremultipliedAlphaBlendDarken", "Darken blend of premultiplied images.",
              sources=("top", "bottom")),
    Operation("blend_lighten", "PremultipliedAlphaBlendLighten", "Lighten blend of premultiplied images.",
              sources=("top", "bottom")),
    Operation("blend_multiply", "PremultipliedAlphaBlendMultiply", "Multiply blend of premultiplied images.",
              sources=("top", "bottom")),
    Operation("blend_screen", "PremultipliedAlphaBlendScreen", "Screen blend of premultiplied images.",
              sources=("top", "bottom")),
    Operation("const_alpha_blend", "PremultipliedConstAlphaBlend", "A premultiplied top plane, faded by a "
              "constant alpha, over a bottom plane.", sources=("top", "top alpha", "bottom"),
              params=(Param("alpha", float, "the constant alpha (0-255 for 8-bit, 0-1 for float)", c_name="const_alpha"),),
              cli=False),
    # ---- channels
    Operation("permute_channels", "PermuteChannels", "Reorders the channels: out channel i is image channel order[i].",
              params=(Param("order", _ints, "four channel positions, such as 3,2,1,0", c_name="permute_map"),),
              by_position=True),
    Operation("extract_channel", "ExtractChannel", "One channel as a plane.",
              params=(Param("channel", int, "the channel position, 0-3", c_name="channel_index"),),
              dest_plane=True, cli=False),
    Operation("overwrite_channels", "OverwriteChannelsWithScalar", "Sets the channels a mask selects (0x8 the first) "
              "to one value.", params=(Param("value", float, "the value", c_name="scalar"),
                                       Param("mask", lambda t: int(t, 0), "channel mask, 0x8 the first channel",
                                             c_name="copy_mask")),
              exclude=("Planar8", "PlanarF", "Planar16S", "Planar16U"), by_position=True),
    # The 8-bit member rewrites only the first quarter of each row: left out.
    Operation("overwrite_channels_with_pixel", "OverwriteChannelsWithPixel", "Sets the channels a mask selects to "
              "the pixel's values.", params=(Param("pixel", _numbers, "four values"),
                                             Param("mask", lambda t: int(t, 0), "channel mask", c_name="copy_mask")),
              exclude=("ARGB8888",), tight_dest=True, tight_sources=True, cli=False),
    Operation("fill", "BufferFill", "Fills out (or a new image of size) with one colour.", sources=(),
              params=(Param("color", _numbers, "the colour, one value a channel"),), prepare=_fill, cli=False),
    Operation("clip", "Clip", "Limits values to [low, high]; NaN passes.",
              params=(Param("low", float, "lower bound", c_name="min_float"),
                      Param("high", float, "upper bound", c_name="max_float")), cli=False),
    # ---- families whose members land later: present once implemented
    Operation("scale", "Scale", "Resamples the whole image to size (height, width).",
              params=(Param("size", _pair, "height,width"),
                      Param("high_quality", bool, "float arithmetic", default=False)),
              prepare=_scale, resizes=True),
    Operation("convolve", "Convolve", "Convolves with an integer kernel (2-D, odd sizes) divided by divisor; "
              "pixels past the edges count as 0.", in_place=False,
              params=(Param("kernel", lambda t: np.array([_ints(r) for r in t.split(";")], np.int16),
                            "rows separated by ';', such as 1,2,1;2,4,2;1,2,1"),
                      Param("divisor", int, "the divisor")),
              prepare=_convolve, halo=lambda p: (p["kernel_height"] // 2, p["kernel_width"] // 2), boundary=0),
    Operation("box_blur", "BoxConvolve", "Mean over a box of size (height, width), edges extended.",
              in_place=False, params=(Param("size", _pair, "kernel height,width (odd)"),),
              prepare=_box, tight_sources=True, tight_dest=True,
              halo=lambda p: (1 + p["kernel_height"] // 2, 1 + p["kernel_width"] // 2), boundary="nearest"),
    Operation("tent_blur", "TentConvolve", "Triangular blur of size (height, width); pixels past the edges count "
              "as 0.", in_place=False, params=(Param("size", _pair, "kernel height,width (odd)"),), prepare=_box,
              halo=lambda p: (p["kernel_height"] // 2, p["kernel_width"] // 2), boundary=0),
    Operation("histogram", "HistogramCalculation", "Counts each channel's values: a (channels, entries) uint32 "
              "array (256 entries for 8-bit; for float, entries bins over [low, high]).",
              params=(Param("entries", int, "bins (float images)", default=256),
                      Param("low", float, "lowest value binned (float images)", default=0.0),
                      Param("high", float, "highest value binned (float images)", default=1.0)),
              prepare=_histogram, result_param="histograms", cli=False),
    Operation("matrix_multiply", "MatrixMultiply", "Each pixel's channels times a 4 x 4 matrix, divided by divisor "
              "(8-bit), with optional biases before and after.",
              params=(Param("matrix", lambda t: _ints(t), "16 values, row by row"),
                      Param("divisor", int, "the divisor (8-bit)", default=1)),
              prepare=_matrix),
)


def _function(op: Operation) -> Callable[..., Any]:
    def operation(*images: np.ndarray, out: Any = None, format: Optional[str] = None, flags: int = 0,
                  **params: Any) -> np.ndarray:
        return op(*images, out=out, format=format, flags=flags, **params)

    operation.__name__ = operation.__qualname__ = op.name
    members = ", ".join(op.members())
    lines = [op.doc, "", f"images: {', '.join(op.sources) or 'none'}."]
    lines += [f"{p.name}: {p.help}." for p in op.params]
    lines += ["out: the destination, allocated when None.",
              "format: the pixel format; by default the first that fits the array's dtype and channels.",
              "flags: kQuorinFlag_* bits (quorin.SINGLE_THREADED keeps the call on this thread).",
              "", f"Formats: {members}."]
    operation.__doc__ = "\n".join(lines)
    operation.operation = op  # type: ignore[attr-defined]
    return operation


def available() -> Dict[str, Operation]:
    """The operations with at least one implemented member, by name."""
    return {op.name: op for op in OPERATIONS if op.available}


FUNCTIONS: Dict[str, Callable[..., Any]] = {name: _function(op) for name, op in available().items()}


def convert(image: Any, source: str, dest: str, out: Any = None, flags: int = 0, **params: Any) -> Any:
    """Converts between formats with the member Quorin_Convert_<source>to<dest>.

    Planar sources are a sequence of planes in the member's order (None where
    it takes no plane, such as a missing alpha); planar results come back as
    one (planes, height, width) array. Extra parameters (alpha, max_float,
    min_float) follow the member's header."""
    for name in (f"QuorinConvert_{source}to{dest}", f"QuorinConvert_{source}To{dest}"):
        if _lowlevel.member(name) is not None:
            plan = _binding.plan(name, source, dest)
            return _binding.run(plan, image, out, in_place=False, flags=flags, **params)
    known = sorted(n[len("QuorinConvert_"):] for n in _lowlevel.MEMBERS if n.startswith("QuorinConvert_"))
    raise FormatError(f"no conversion from {source} to {dest} is implemented; these are: {', '.join(known)}")


def call(member: str, *sources: Any, out: Any = None, size: Optional[Tuple[int, int]] = None,
         source_format: Optional[str] = None, dest_format: Optional[str] = None, flags: int = 0,
         **params: Any) -> Any:
    """Any implemented entry point by name, its parameters filled from its
    header: buffers from the arrays, other parameters by their names in snake
    case (``copy_mask`` for copyMask). Formats default to the member's suffix."""
    suffix = member.rsplit("_", 1)[-1]
    plan = _binding.plan(member, source_format or suffix, dest_format or source_format or suffix)
    given = list(sources) if len(plan.sources) != 1 else (sources[0] if sources else None)
    return _binding.run(plan, given, out, size=size, flags=flags, **params)
