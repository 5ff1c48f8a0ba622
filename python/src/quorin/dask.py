"""Quorin operations over dask arrays, chunk by chunk, with the bytes of one
call on the whole image.

Per-pixel operations run on each chunk as it is (``map_blocks``).
Neighbourhood operations read past their chunk: each chunk is given the
halo its operation declares from its neighbours, and only from them: where
a chunk meets the image's edge, the expanded block's edge is the image's,
so the library's own edge rule (edge pixels repeated, or zeros) applies
there exactly as in a call on the whole image. A result pixel then sees
exactly the pixels it sees in that call.

Unlike dask's generic ``map_overlap``, nothing is padded and no neighbour
crosses between workers whole: each block hands on only the strips its
neighbours need (small, so cheap to send), the expanded block is built
with one copy, and the result is the interior of the call's output, a view.
"""

from __future__ import annotations

import threading
from typing import Any, Callable, Dict, List, Optional, Sequence, Tuple, Union

import dask.array as da
import numpy as np
from dask.array.overlap import ensure_minimum_chunksize
from dask.base import tokenize
from dask.highlevelgraph import HighLevelGraph

from . import _lowlevel, ops
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


_WORKSPACE = threading.local()


def _workspace(name: str, nbytes: int) -> np.ndarray:
    """This thread's reusable bytes called name, grown when too small. A
    block's temporary memory taken fresh costs a page fault per page on
    every task; reused, it costs none. Each worker thread keeps the largest
    it needed (two blocks' worth) until it ends."""
    held = getattr(_WORKSPACE, name, None)
    if held is None or held.nbytes < nbytes:
        del held
        setattr(_WORKSPACE, name, None)  # the old one goes before the new one is made
        held = np.empty(nbytes, np.uint8)
        setattr(_WORKSPACE, name, held)
    return held[:nbytes]


def _takes_scratch(op: ops.Operation, image: Any, params: Dict[str, Any]) -> bool:
    """Whether the member the operation calls for image's chunks takes a
    tempBuffer (scratch memory the call would otherwise allocate)."""
    members = getattr(op, "members", None)
    if members is None:
        return False
    sample = np.empty((1, 1) + tuple(image.shape[2:]), image.dtype)
    member = _lowlevel.member(members()[op.choose_format(sample, params.get("format"))])
    return any(p.name == "tempBuffer" for p in member.params)


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
    (rows, columns), _ = halo(op, image, **params)
    if rows == 0 and columns == 0:
        return da.map_blocks(run, *images, dtype=image.dtype)
    if len(images) != 1:
        raise UsageError(f"{op.name}: a neighbourhood operation over dask arrays takes one image")
    if _takes_scratch(op, image, params):
        run = _block_function(op, dict(params, temp_buffer=lambda nbytes: _workspace("scratch", nbytes)), flags)
    return _neighbourhood(op.name, run, images[0], rows, columns)


# The eight neighbours of a block, (row step, column step).
_NEIGHBOURS = tuple((di, dj) for di in (-1, 0, 1) for dj in (-1, 0, 1) if (di, dj) != (0, 0))


def _strips(block: np.ndarray, rows: int, columns: int) -> Dict[Tuple[int, int], np.ndarray]:
    """The parts of block its neighbours need, keyed by the neighbour's
    direction from block; copies, so that sending one sends only its bytes."""
    def part(direction: int, depth: int, length: int) -> slice:
        # The neighbour before (-1) needs the first samples, the one after the last.
        return slice(0, depth) if direction == -1 else slice(length - depth, length) if direction == 1 else slice(None)
    height, width = block.shape[:2]
    return {(di, dj): np.ascontiguousarray(block[part(di, rows, height), part(dj, columns, width)])
            for di, dj in _NEIGHBOURS}


def _expanded_run(run: Callable[[np.ndarray], np.ndarray], centre: np.ndarray,
                  around: Sequence[Optional[Dict[Tuple[int, int], np.ndarray]]]) -> np.ndarray:
    """run over centre with its neighbours' strips around it (around in
    _NEIGHBOURS order, None past the image's edge); the centre's part of
    the result."""
    sides = dict(zip(_NEIGHBOURS, around))
    top = sides[-1, 0][1, 0].shape[0] if sides[-1, 0] is not None else 0
    bottom = sides[1, 0][-1, 0].shape[0] if sides[1, 0] is not None else 0
    left = sides[0, -1][0, 1].shape[1] if sides[0, -1] is not None else 0
    right = sides[0, 1][0, -1].shape[1] if sides[0, 1] is not None else 0
    height, width = centre.shape[:2]
    shape = (top + height + bottom, left + width + right) + centre.shape[2:]
    block = _workspace("block", int(np.prod(shape)) * centre.itemsize).view(centre.dtype).reshape(shape)
    spans = {-1: (0, top), 0: (top, top + height), 1: (top + height, top + height + bottom)}
    columns = {-1: (0, left), 0: (left, left + width), 1: (left + width, left + width + right)}
    block[top:top + height, left:left + width] = centre
    for (di, dj), strips in sides.items():
        if strips is None:
            continue
        (r0, r1), (c0, c1) = spans[di], columns[dj]
        if r1 > r0 and c1 > c0:
            # The neighbour at (di, dj) keyed its strip for us by our
            # direction from it, (-di, -dj).
            block[r0:r1, c0:c1] = strips[-di, -dj]
    return run(block)[top:top + height, left:left + width]


def _neighbourhood(name: str, run: Callable[..., np.ndarray], image: da.Array, rows: int, columns: int) -> da.Array:
    # A strip comes from one neighbour only, so chunks at least as deep as
    # it; and an expanded block at the image's edge, with halo on one side
    # only, is still longer than the kernel (whose members refuse, or read
    # past the line, otherwise): chunks of twice the halo and one more.
    chunks = tuple(ensure_minimum_chunksize(min(2 * d + 1, sum(c)), c)
                   for d, c in ((rows, image.chunks[0]), (columns, image.chunks[1])))
    if chunks != image.chunks[:2]:
        image = image.rechunk(chunks + image.chunks[2:])
    token = tokenize(name, run, image, rows, columns)
    strips_name, out_name = f"quorin-strips-{token}", f"quorin-{name}-{token}"
    grid_rows, grid_columns = image.numblocks[:2]
    tail = (0,) * (image.ndim - 2)
    layer: Dict[Any, Any] = {}
    for i in range(grid_rows):
        for j in range(grid_columns):
            layer[(strips_name, i, j)] = (_strips, (image.name, i, j) + tail, rows, columns)
    for i in range(grid_rows):
        for j in range(grid_columns):
            around: List[Any] = [(strips_name, i + di, j + dj)
                                 if 0 <= i + di < grid_rows and 0 <= j + dj < grid_columns else None
                                 for di, dj in _NEIGHBOURS]
            layer[(out_name, i, j) + tail] = (_expanded_run, run, (image.name, i, j) + tail, around)
    graph = HighLevelGraph.from_collections(out_name, layer, dependencies=[image])
    return da.Array(graph, out_name, image.chunks, dtype=image.dtype)
