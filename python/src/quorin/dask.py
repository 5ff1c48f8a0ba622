"""Quorin operations over dask arrays, chunk by chunk, with the bytes of one
call on the whole image.

Per-pixel operations run on each chunk as it is (``map_blocks``).
Neighbourhood operations read past their chunk: each chunk is given the
halo its operation declares, continued past the image's edges as the
library continues it (edge pixels repeated, or zeros), and the halo is cut
off the result (``map_overlap``). A result pixel then sees exactly the
pixels it sees in a call on the whole image.
"""

from __future__ import annotations

from typing import Any, Callable, Dict, Tuple, Union

import dask.array as da
import numpy as np

from . import ops
from ._binding import SINGLE_THREADED, pixel_format
from .errors import UsageError

OperationLike = Union[str, ops.Operation]


def _operation(op: OperationLike) -> ops.Operation:
    if isinstance(op, str):
        found = ops.available().get(op)
        if found is None:
            raise UsageError(f"no operation named {op!r} in this build; these are: {', '.join(ops.available())}")
        return found
    return op


def _whole_channels(image: da.Array) -> da.Array:
    """Chunks hold whole pixels: the channel axis in one piece."""
    if image.ndim == 3 and len(image.chunks[2]) > 1:
        return image.rechunk({2: -1})
    return image


def _block_function(op: ops.Operation, params: Dict[str, Any], flags: int) -> Callable[..., np.ndarray]:
    def run(*blocks: np.ndarray) -> np.ndarray:
        return op(*(np.ascontiguousarray(b) for b in blocks), flags=flags, **params)
    return run


def halo(op: OperationLike, image: Any, **params: Any) -> Tuple[Tuple[int, int], Any]:
    """((rows, columns), boundary) the operation needs around a chunk."""
    op = _operation(op)
    if op.halo is None:
        return (0, 0), None
    c_params = dict(params)
    if op.prepare is not None:
        sample = np.empty((1, 1) + tuple(image.shape[2:]), image.dtype)
        fmt = pixel_format(op.choose_format(sample, params.get("format")))
        c_params, _, _ = op.prepare(c_params, image, fmt)
    return op.halo(c_params), op.boundary


def apply(op: OperationLike, image: da.Array, *others: da.Array, single_threaded: bool = True,
          **params: Any) -> da.Array:
    """The operation over dask arrays (the same chunking for every image).
    Each chunk's call runs single-threaded unless told otherwise, since Dask
    already runs one chunk per core."""
    op = _operation(op)
    if getattr(op, "resizes", False) or getattr(op, "dest_plane", False) or getattr(op, "result_param", None):
        raise UsageError(f"{op.name} changes the image's shape: it has no chunk-by-chunk form")
    images = [_whole_channels(image)] + [_whole_channels(o).rechunk(_whole_channels(image).chunks) for o in others]
    flags = SINGLE_THREADED if single_threaded else 0
    run = _block_function(op, params, flags)
    (rows, columns), boundary = halo(op, image, **params)
    if rows == 0 and columns == 0:
        return da.map_blocks(run, *images, dtype=image.dtype)
    depth = {0: rows, 1: columns}
    edges = {0: boundary, 1: boundary}
    if image.ndim == 3:
        depth[2], edges[2] = 0, "none"
    return da.map_overlap(run, *images, depth=depth, boundary=edges, trim=True, dtype=image.dtype,
                          allow_rechunk=True)
