"""Reading and writing PNG, TIFF and JPEG files as arrays the operations take,
and running one operation over files in the channel order each member wants."""

from __future__ import annotations

import os
from pathlib import Path
from typing import Any, Dict, List, Sequence

import numpy as np

from . import ops
from .errors import FormatError

WRITERS = {".png": "PNG", ".tif": "TIFF", ".tiff": "TIFF", ".jpg": "JPEG", ".jpeg": "JPEG"}


class InputError(OSError):
    """A file that is missing or cannot be read as an image."""


def read_image(path: str) -> np.ndarray:
    """The file's pixels: (height, width) for one channel, else
    (height, width, 4) in R, G, B, A order (an opaque alpha added to RGB)."""
    p = Path(path)
    if not p.is_file():
        raise InputError(f"{path}: no such file")
    suffix = p.suffix.lower()
    try:
        if suffix in (".tif", ".tiff"):
            import tifffile
            array = tifffile.imread(path)
        else:
            from PIL import Image
            with Image.open(path) as image:
                if image.mode in ("L", "I;16", "F"):
                    array = np.asarray(image)
                else:
                    array = np.asarray(image.convert("RGBA"))
    except InputError:
        raise
    except Exception as error:  # any decoder's own complaint
        raise InputError(f"{path}: cannot be read as an image ({error})") from None
    if array.ndim == 3 and array.shape[2] == 3:
        opaque = np.iinfo(array.dtype).max if array.dtype.kind in "ui" else 1.0
        array = np.concatenate([array, np.full(array.shape[:2] + (1,), opaque, array.dtype)], axis=2)
    if array.ndim not in (2, 3) or (array.ndim == 3 and array.shape[2] not in (1, 4)):
        raise FormatError(f"{path}: {array.shape} samples: one, three or four channels are supported")
    return np.ascontiguousarray(array)


def check_output(path: str) -> str:
    suffix = Path(path).suffix.lower()
    if suffix not in WRITERS:
        raise FormatError(f"{path}: unsupported output format {suffix or '(none)'}; "
                          f"use one of {', '.join(sorted(WRITERS))}")
    return WRITERS[suffix]


def write_image(path: str, array: np.ndarray) -> None:
    """Writes the whole file or nothing: the pixels go to a temporary file
    beside it, renamed over path once complete."""
    kind = check_output(path)
    target = Path(path)
    temporary = target.with_name(f".{target.name}.{os.getpid()}.part")
    try:
        if kind == "TIFF":
            import tifffile
            tifffile.imwrite(temporary, array, photometric="rgb" if array.ndim == 3 else "minisblack")
        else:
            from PIL import Image
            if array.dtype != np.uint8 and not (kind == "PNG" and array.ndim == 2 and array.dtype == np.uint16):
                raise FormatError(f"{path}: {kind} holds 8-bit samples (16-bit grey for PNG); "
                                  f"this result is {array.dtype.name}: write a .tif")
            image = Image.fromarray(array)
            if kind == "JPEG" and image.mode == "RGBA":
                image = image.convert("RGB")
            image.save(temporary, format=kind)
        os.replace(temporary, target)
    finally:
        if temporary.exists():
            temporary.unlink()


# Interleaved arrays read from files hold R, G, B, A: members in that order
# are called directly, ARGB members through a channel rotation.
_TO_ARGB, _FROM_ARGB = [3, 0, 1, 2], [1, 2, 3, 0]


def apply(op: ops.Operation, images: Sequence[np.ndarray], params: Dict[str, Any], flags: int = 0) -> Any:
    """op over arrays read by read_image, the result in the same order."""
    members = op.members()
    first = images[0]
    if first.ndim == 2:
        return op(*images, flags=flags, **params)
    depth = {"u1": "8888", "<u2": "16U", "<f4": "FFFF"}.get(first.dtype.str.replace("|", ""))
    if depth is None:
        raise FormatError(f"{op.name}: no format for {first.dtype.name} samples")
    if "RGBA" + depth in members:
        return op(*images, format="RGBA" + depth, flags=flags, **params)
    if op.by_position and "ARGB" + depth in members:
        return op(*images, format="ARGB" + depth, flags=flags, **params)
    if "ARGB" + depth not in members:
        raise FormatError(f"{op.name} takes no {first.dtype.name} colour images; it takes {', '.join(members)}")
    rotated = [np.ascontiguousarray(i[..., _TO_ARGB]) for i in images]
    result = op(*rotated, format="ARGB" + depth, flags=flags, **params)
    return np.ascontiguousarray(result[..., _FROM_ARGB]) if result.ndim == 3 else result


def process_files(name: str, inputs: List[str], output: str, params: Dict[str, Any], flags: int = 0) -> str:
    """Reads inputs, runs the operation called name, writes output; returns
    output. Importable by name, so it runs on Dask workers too."""
    op = ops.available()[name]
    check_output(output)
    result = apply(op, [read_image(i) for i in inputs], params, flags)
    write_image(output, result)
    return output
