"""A box blur of a large ARGB8888 image through quorin.dask on a local cluster
of worker processes, beside one call on an image that fits in memory and
beside dask-image's uniform_filter (the same mean, edges repeated) on the
same dask array and cluster.

Usage: python bench_dask.py [--size N] [--chunk C] [--kernel K] [--single S]
                            [--workers W] [--threads T] [--repeats R]

The image is made on the workers chunk by chunk and kept there (persisted)
before any timing, so the figures are the blur's and not the making's; each
result is reduced to its sum on the workers, so neither crosses to this
process. Both libraries pay for the same summing, measured alone as
"baseline" and taken off. Each runs once untimed on a corner of the image
first (imports, the workers' memory); then quorin and dask-image run in
turn, R times, and the medians are reported (the machine may be shared:
its load is printed)."""

from __future__ import annotations

import argparse
import os
import statistics
import time

import dask.array as da
import numpy as np
from distributed import Client, LocalCluster, wait

import quorin
import quorin.dask


def timed(fn) -> float:
    start = time.perf_counter()
    fn()
    return time.perf_counter() - start


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--size", type=int, default=20000)
    parser.add_argument("--chunk", type=int, default=5000)
    parser.add_argument("--kernel", type=int, default=9)
    parser.add_argument("--single", type=int, default=4096, help="side of the image of the single call")
    parser.add_argument("--workers", type=int, default=2, help="worker processes")
    parser.add_argument("--threads", type=int, default=1, help="threads a worker")
    parser.add_argument("--repeats", type=int, default=3)
    args = parser.parse_args()
    if not hasattr(quorin, "box_blur"):
        raise SystemExit("bench_dask: this build of libquorin has no box blur member")
    k, n = args.kernel, args.size
    megapixels = n * n / 1e6

    image = np.random.default_rng(1).integers(0, 256, (args.single, args.single, 4), dtype=np.uint8)
    quorin.box_blur(image, size=k)
    single_rate = args.single ** 2 / 1e6 / statistics.median(
        timed(lambda: quorin.box_blur(image, size=k)) for _ in range(5))
    print(f"single call {args.single}x{args.single} (the box blur runs on the calling thread): "
          f"{single_rate:.0f} MP/s")
    print(f"cluster: {args.workers} worker processes x {args.threads} thread(s) on {os.cpu_count()} processors; "
          f"{n}x{n} ARGB8888 in {args.chunk}x{args.chunk} chunks; one single-threaded call a chunk; "
          f"load average before {os.getloadavg()[0]:.1f}")

    try:
        from dask_image import ndfilters
    except ImportError:
        ndfilters = None
        print("dask-image is not installed: no comparison")
    with LocalCluster(n_workers=args.workers, threads_per_worker=args.threads, processes=True,
                      dashboard_address=None) as cluster, Client(cluster) as client:
        big = da.random.randint(0, 256, (n, n, 4), chunks=(args.chunk, args.chunk, 4), dtype=np.uint8).persist()
        wait(big)
        runs = {"baseline": lambda image: image.sum().compute(),
                "quorin": lambda image: quorin.dask.apply("box_blur", image, size=k).sum().compute()}
        if ndfilters is not None:
            runs["dask-image"] = \
                lambda image: ndfilters.uniform_filter(image, size=(k, k, 1), mode="nearest").sum().compute()
        # Untimed, on a corner of the image: each worker imports the
        # libraries and takes the memory a chunk needs.
        corner = big[:2 * args.chunk, :2 * args.chunk]
        for fn in runs.values():
            fn(corner)
        times = {name: [] for name in runs}
        for _ in range(args.repeats):
            for name, fn in runs.items():
                times[name].append(timed(lambda: fn(big)))
        client.cancel(big)
    median = {name: statistics.median(t) for name, t in times.items()}
    baseline = median["baseline"]
    ours = median["quorin"] - baseline
    print(f"quorin.dask {n}x{n} box {k}x{k}: {megapixels / ours:.0f} MP/s "
          f"(median of {args.repeats}; summing the result, {baseline:.2f} s, taken off); "
          f"{(megapixels / ours) / single_rate:.2f} x the single call")
    if "dask-image" in median:
        theirs = median["dask-image"] - baseline
        print(f"dask-image uniform_filter: {megapixels / theirs:.0f} MP/s; quorin.dask {theirs / ours:.2f} x faster")
    print(f"runs (s): " + "; ".join(f"{name} {', '.join(f'{t:.2f}' for t in ts)}" for name, ts in times.items()))
    print(f"load average after {os.getloadavg()[0]:.1f}")


if __name__ == "__main__":
    main()
