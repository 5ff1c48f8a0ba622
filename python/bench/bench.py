"""The package beside Pillow, OpenCV (cv2) and pyvips doing the same jobs on
the same arrays, and the binding's own cost against a call from C.

Usage: python bench.py [--size N] [--repeats R] [--ccall PATH]

Each row's figures are medians of R runs (each the best of three calls),
the libraries interleaved run by run, each run starting with a different
one, so that a slow spell of a shared machine does not fall on one alone.
"ratio" is the peer's time over the package's (above 1: the package is
faster): single-threaded against Pillow, which has one thread, and with the
library's default split against cv2 and pyvips, which use every core."""

from __future__ import annotations

import argparse
import statistics
import subprocess
import time
import timeit
from typing import Callable, Dict, List, Optional

import numpy as np

import quorin

ST = quorin.SINGLE_THREADED


def seconds(fn: Callable[[], object]) -> float:
    start = time.perf_counter()
    fn()
    return time.perf_counter() - start


def peers(size: int) -> Dict[str, Dict[str, Callable[[], object]]]:
    """Operation -> {way of running it -> a call}."""
    from PIL import Image
    rng = np.random.default_rng(3)
    rgba = rng.integers(0, 256, (size, size, 4), dtype=np.uint8)
    bottom = rng.integers(0, 256, (size, size, 4), dtype=np.uint8)
    argb, argb_bottom = (np.ascontiguousarray(a[..., [3, 0, 1, 2]]) for a in (rgba, bottom))
    out = np.empty_like(rgba)
    planes = np.empty((4, size, size), np.uint8)
    plane = np.empty((size, size), np.uint8)
    pil, pil_bottom = Image.fromarray(rgba, "RGBA"), Image.fromarray(bottom, "RGBA")
    pil_pre = pil.convert("RGBa")
    pil_planes = pil.split()
    rows: Dict[str, Dict[str, Callable[[], object]]] = {
        "premultiply RGBA8888": {
            "quorin/st": lambda: quorin.premultiply(rgba, out=out, format="RGBA8888", flags=ST),
            "quorin/mt": lambda: quorin.premultiply(rgba, out=out, format="RGBA8888"),
            "Pillow": lambda: pil.convert("RGBa")},
        "unpremultiply RGBA8888": {
            "quorin/st": lambda: quorin.unpremultiply(rgba, out=out, format="RGBA8888", flags=ST),
            "quorin/mt": lambda: quorin.unpremultiply(rgba, out=out, format="RGBA8888"),
            "Pillow": lambda: pil_pre.convert("RGBA")},
        "alpha blend (straight over)": {
            "quorin/st": lambda: quorin.alpha_blend(argb, argb_bottom, out=out, flags=ST),
            "quorin/mt": lambda: quorin.alpha_blend(argb, argb_bottom, out=out),
            "Pillow": lambda: Image.alpha_composite(pil_bottom, pil)},
        "swap red and blue": {
            "quorin/st": lambda: quorin.permute_channels(rgba, out=out, order=[2, 1, 0, 3], flags=ST),
            "quorin/mt": lambda: quorin.permute_channels(rgba, out=out, order=[2, 1, 0, 3]),
            "Pillow": lambda: Image.merge("RGBA", (pil_planes[2], pil_planes[1], pil_planes[0], pil_planes[3]))},
        "split into planes": {
            "quorin/st": lambda: quorin.convert(argb, "ARGB8888", "Planar8", out=planes, flags=ST),
            "quorin/mt": lambda: quorin.convert(argb, "ARGB8888", "Planar8", out=planes),
            "Pillow": lambda: pil.split()},
        "merge planes": {
            "quorin/st": lambda: quorin.convert(planes, "Planar8", "ARGB8888", out=out, flags=ST),
            "quorin/mt": lambda: quorin.convert(planes, "Planar8", "ARGB8888", out=out),
            "Pillow": lambda: Image.merge("RGBA", pil_planes)},
        "extract one channel": {
            "quorin/st": lambda: quorin.extract_channel(rgba, channel=1, flags=ST),
            "quorin/mt": lambda: quorin.extract_channel(rgba, channel=1),
            "Pillow": lambda: pil.getchannel(1)},
    }
    try:
        import cv2
        rows["premultiply RGBA8888"]["cv2"] = lambda: cv2.cvtColor(rgba, cv2.COLOR_RGBA2mRGBA, dst=out)
        rows["unpremultiply RGBA8888"]["cv2"] = lambda: cv2.cvtColor(rgba, cv2.COLOR_mRGBA2RGBA, dst=out)
        rows["swap red and blue"]["cv2"] = lambda: cv2.cvtColor(rgba, cv2.COLOR_RGBA2BGRA, dst=out)
        rows["split into planes"]["cv2"] = lambda: cv2.split(rgba)
        rows["merge planes"]["cv2"] = lambda: cv2.merge(list(planes))
        rows["extract one channel"]["cv2"] = lambda: cv2.extractChannel(rgba, 1, plane)
    except ImportError:
        pass
    try:
        import pyvips
        vips = pyvips.Image.new_from_array(rgba, interpretation="srgb")
        vips_bottom = pyvips.Image.new_from_array(bottom, interpretation="srgb")
        rows["premultiply RGBA8888"]["pyvips"] = lambda: vips.premultiply().cast("uchar").write_to_memory()
        rows["unpremultiply RGBA8888"]["pyvips"] = lambda: vips.unpremultiply().cast("uchar").write_to_memory()
        rows["alpha blend (straight over)"]["pyvips"] = \
            lambda: vips_bottom.composite2(vips, "over").cast("uchar").write_to_memory()
        rows["swap red and blue"]["pyvips"] = lambda: vips[2].bandjoin([vips[1], vips[0], vips[3]]).write_to_memory()
        rows["extract one channel"]["pyvips"] = lambda: vips[1].write_to_memory()
    except (ImportError, OSError):
        pass
    return rows


def run_rows(rows, repeats: int) -> List[str]:
    lines = [f"{'operation':30} {'way':10} {'ms':>9} {'MP/s':>8} {'ratio':>7}"]
    for name, ways in rows.items():
        for fn in ways.values():
            fn()  # warm up: first-touch allocations, lazy imports
        times: Dict[str, List[float]] = {w: [] for w in ways}
        order = list(ways.items())
        for run in range(repeats):
            # Each way in turn first: whoever follows another's allocations
            # and threads is not always the same one.
            for way, fn in order[run % len(order):] + order[:run % len(order)]:
                times[way].append(min(seconds(fn) for _ in range(3)))
        median = {w: statistics.median(t) for w, t in times.items()}
        megapixels = SIZE * SIZE / 1e6
        for way, t in median.items():
            ours = median["quorin/st"] if way == "Pillow" else median["quorin/mt"]
            ratio = "" if way.startswith("quorin") else f"{t / ours:7.2f}"
            lines.append(f"{name:30} {way:10} {t * 1e3:9.2f} {megapixels / t:8.0f} {ratio:>7}")
    return lines


def binding_cost(ccall: Optional[str], repeats: int) -> List[str]:
    """One 16x16 premultiply: from C, through cffi alone, through the package."""
    img = np.random.default_rng(1).integers(0, 256, (16, 16, 4), dtype=np.uint8)
    out = np.empty_like(img)
    ffi, lib = quorin.ffi, quorin.lib
    src = ffi.new("Quorin_Buffer *", (ffi.from_buffer(img), 16, 16, 64))
    dst = ffi.new("Quorin_Buffer *", (ffi.from_buffer(out), 16, 16, 64))
    raw = lib.QuorinPremultiplyData_ARGB8888
    ways = {"cffi call": lambda: raw(src, dst, 0),
            "quorin, out given": lambda: quorin.premultiply(img, out=out),
            "quorin, out allocated": lambda: quorin.premultiply(img)}
    # Short rounds, many of them, and their median: on a shared machine a
    # long round is mostly the time others held the processor.
    calls, rounds = 200, 101
    times: Dict[str, List[float]] = {}
    c_times: List[float] = []
    for _ in range(repeats):
        if ccall:
            c_times.append(float(subprocess.run([ccall, "16", "16", str(calls), str(rounds), "0"],
                                                capture_output=True, text=True, check=True).stdout) / 1e3)
        for way, fn in ways.items():
            rounds_us = [t / calls * 1e6 for t in timeit.repeat(fn, number=calls, repeat=rounds)]
            times.setdefault(way, []).append(statistics.median(rounds_us))
    c = statistics.median(c_times) if c_times else None
    lines = ["binding cost, premultiply ARGB8888 16x16 (median us a call)"]
    if c is not None:
        lines.append(f"  {'C call':24} {c:7.2f}")
    for way, t in times.items():
        median = statistics.median(t)
        lines.append(f"  {way:24} {median:7.2f}" + (f"   (+{median - c:.2f} over C)" if c is not None else ""))
    if ccall:
        big = 4096
        image = np.random.default_rng(2).integers(0, 256, (big, big, 4), dtype=np.uint8)
        dest = np.empty_like(image)
        mp = big * big / 1e6
        for flags, label in ((0, "split"), (ST, "single-threaded")):
            c_big = float(subprocess.run([ccall, str(big), str(big), "1", "21", str(flags)], capture_output=True,
                                         text=True, check=True).stdout) / 1e9
            py = statistics.median(seconds(lambda: quorin.premultiply(image, out=dest, flags=flags))
                                   for _ in range(21))
            lines.append(f"  4096x4096 {label}: C {mp / c_big:.0f} MP/s, quorin {mp / py:.0f} MP/s")
    return lines


SIZE = 2048


def main() -> None:
    global SIZE
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--size", type=int, default=SIZE, help="image side in pixels")
    parser.add_argument("--repeats", type=int, default=5)
    parser.add_argument("--ccall", help="the timing program built from ccall.c")
    args = parser.parse_args()
    SIZE = args.size
    print(f"quorin {quorin.__version__}, {quorin.features()}")
    print("\n".join(binding_cost(args.ccall, args.repeats)))
    print(f"\n{SIZE}x{SIZE} RGBA8888 images")
    print("\n".join(run_rows(peers(SIZE), args.repeats)))


if __name__ == "__main__":
    main()
