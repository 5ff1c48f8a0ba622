"""A box blur of a large ARGB8888 image through quorin.dask on a local cluster
of two worker processes, beside one call on an image that fits in memory and
beside dask-image's uniform_filter (the same mean, edges repeated) on the
same dask array and cluster.

Usage: python bench_dask.py [--size N] [--chunk C] [--kernel K] [--single S]

The image is made on the workers chunk by chunk and each result is reduced
to its sum there, so neither crosses to this process; both libraries pay for
the same making and summing, measured alone as "baseline"."""

from __future__ import annotations

import argparse
import time

import dask.array as da
import numpy as np
from distributed import Client, LocalCluster

import quorin
import quorin.dask


def timed(fn) -> float:
    start = time.perf_counter()
    fn()
    return time.perf_counter() - start


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--size", type=int, default=20000)
    parser.add_argument("--chunk", type=int, default=2500)
    parser.add_argument("--kernel", type=int, default=9)
    parser.add_argument("--single", type=int, default=4096, help="side of the image of the single call")
    args = parser.parse_args()
    if not hasattr(quorin, "box_blur"):
        raise SystemExit("bench_dask: this build of libquorin has no box blur member")
    k, n = args.kernel, args.size
    megapixels = n * n / 1e6

    image = np.random.default_rng(1).integers(0, 256, (args.single, args.single, 4), dtype=np.uint8)
    quorin.box_blur(image, size=k)
    single = min(timed(lambda: quorin.box_blur(image, size=k)) for _ in range(3))
    print(f"single call {args.single}x{args.single}: {args.single ** 2 / 1e6 / single:.0f} MP/s")

    with LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None) as cluster, \
            Client(cluster):
        big = da.random.randint(0, 256, (n, n, 4), chunks=(args.chunk, args.chunk, 4), dtype=np.uint8)
        baseline = timed(lambda: big.sum().compute())
        ours = timed(lambda: quorin.dask.apply("box_blur", big, size=k).sum().compute()) - baseline
        print(f"quorin.dask {n}x{n} box {k}x{k}: {megapixels / ours:.0f} MP/s "
              f"(making and summing the image, {baseline:.1f} s, taken off); "
              f"{(megapixels / ours) / (args.single ** 2 / 1e6 / single):.2f} x the single call")
        try:
            from dask_image import ndfilters
        except ImportError:
            print("dask-image is not installed: no comparison")
            return
        theirs = timed(lambda: ndfilters.uniform_filter(big, size=(k, k, 1), mode="nearest").sum().compute()) - baseline
        print(f"dask-image uniform_filter: {megapixels / theirs:.0f} MP/s; quorin.dask {theirs / ours:.2f} x faster")


if __name__ == "__main__":
    main()
