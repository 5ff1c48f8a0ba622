#!/usr/bin/env python3
"""Combines the ratio tables of several benchmark runs into one.

Each run's table pairs rows measured in the same run (ours against memcpy,
the peer and the single-threaded twin), so its ratios are fair even when the
machine is faster or slower from one run to the next. This prints, per row,
the median over the runs of each figure and each ratio, and how many runs
had the peer ratio at 1 or above.

    ./build/bench/quorin-bench > run1.txt; ...; bench/median_of_runs.py run*.txt
"""
import re
import statistics
import sys

COLUMNS = ["MP/s", "GB/s", "x memcpy", "x peer", "x st"]


def read_table(path):
    rows = {}
    with open(path) as f:
        lines = f.read().splitlines()
    try:
        start = next(i for i, line in enumerate(lines) if line.startswith("row "))
    except StopIteration:
        sys.exit(f"{path}: no ratio table")
    header = lines[start]
    # Fixed-width columns: find where each one ends from the header.
    ends = [header.index(name) + len(name) for name in COLUMNS]
    for line in lines[start + 1:]:
        if line.startswith("per target"):  # the same figures again, by target
            break
        if not line.strip() or line.startswith("memcpy/"):
            continue
        match = re.match(r"(.*?/\d+x\d+/(?:st|mt|pair))", line)
        if not match:
            continue
        name = match.group(1)
        values, begin = [], len(name)
        for end in ends:
            cell = line[begin:end].strip()
            begin = end
            values.append(float(cell) if cell not in ("", "-") else None)
        rows[name] = values
    return rows


def main(paths):
    runs = [read_table(p) for p in paths]
    names = sorted(set().union(*runs))
    print(f"{'row':<44} {'MP/s':>8} {'GB/s':>7} {'x memcpy':>9} {'x peer':>7} {'x st':>6} {'peer>=1':>8}")
    for name in names:
        cells = []
        for k in range(len(COLUMNS)):
            seen = [run[name][k] for run in runs if name in run and run[name][k] is not None]
            cells.append(statistics.median(seen) if seen else None)
        peers = [run[name][3] for run in runs if name in run and run[name][3] is not None]
        wins = f"{sum(p >= 1.0 for p in peers)}/{len(peers)}" if peers else ""
        shown = [f"{c:.0f}" if i == 0 and c is not None else f"{c:.2f}" if c is not None else "" for i, c in enumerate(cells)]
        print(f"{name:<44} {shown[0]:>8} {shown[1]:>7} {shown[2]:>9} {shown[3]:>7} {shown[4]:>6} {wins:>8}")


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    main(sys.argv[1:])
