#!/usr/bin/env python3
"""Times calls of the Python module beside the same calls in C++, and beside NumPy written by hand.

usage: python_calls.py BASELINE

BASELINE is the program python_baseline. Times are processor time of one thread, the least of some rounds.
"""

import subprocess
import sys
import time

import numpy as np

import gsl_geometry as gg

FACES = [(0, 2, 1), (0, 3, 2), (4, 5, 6), (4, 6, 7), (0, 1, 5), (0, 5, 4), (1, 2, 6), (1, 6, 5), (2, 3, 7), (2, 7, 6),
         (3, 0, 4), (3, 4, 7)]  # fmt: skip
ROWS = 1000000


def box(z):
    low = [(0, 0, z), (1, 0, z), (1, 1, z), (0, 1, z)]
    return gg.Body(low + [(x, y, z + 1) for x, y, z in low], FACES)


def timed(calls, call, rounds=15):
    """Returns nanoseconds of one call."""
    least = 1e9
    for _ in range(rounds):
        begin = time.thread_time()
        for _ in range(calls):
            call()
        least = min(least, (time.thread_time() - begin) / calls)
    return 1e9 * least


def nearest_on_segment(p, a, b):
    d = b - a
    t = np.clip(((p - a) * d).sum(1) / (d * d).sum(1), 0.0, 1.0)
    return a + d * t[:, None]


def by_numpy(p, a, b, c):
    """Returns the distances by the plane and the three edges."""
    n = np.cross(b - a, c - a)
    n /= np.sqrt((n * n).sum(1))[:, None]
    height = ((p - a) * n).sum(1)
    foot = p - n * height[:, None]
    inside = np.ones(len(p), bool)
    least = np.full(len(p), np.inf)
    for q, r in ((a, b), (b, c), (c, a)):
        inside &= (np.cross(r - q, foot - q) * n).sum(1) >= 0
        off = p - nearest_on_segment(p, q, r)
        np.minimum(least, (off * off).sum(1), out=least)
    return np.where(inside, np.abs(height), np.sqrt(least))


def main():
    said = subprocess.run(sys.argv[1:2], capture_output=True, text=True, check=True).stdout
    baseline = {name: float(value) for name, value in (line.split() for line in said.splitlines())}
    moving, fixed = box(0), box(3)
    pair = gg.Pair(moving, [fixed])
    points = ((np.arange(12 * ROWS) * 7919 % 10007) / 10007).reshape(4, ROWS, 3)
    own = {
        "sweep": timed(20000, lambda: gg.sweep(moving, fixed, "z")),
        "pair.sweep": timed(20000, lambda: pair.sweep("z")),
        "point_triangle": timed(1, lambda: gg.point_triangle(*points)),
    }
    numpy_time = timed(1, lambda: by_numpy(*points), rounds=3)
    print(f"{'call':32}{'module':>12}{'C++':>12}{'difference':>14}{'ratio':>8}")
    for name, taken in own.items():
        there = baseline[name]
        rows = f"{name}, 1e6 rows" if name == "point_triangle" else name
        print(f"{rows:32}{taken / 1e3:9.2f} us{there / 1e3:9.2f} us{(taken - there) / 1e3:11.2f} us{taken / there:8.2f}")
    print(f"{'the same in NumPy':32}{numpy_time / 1e3:9.2f} us{'':26}{numpy_time / own['point_triangle']:8.2f} of ours")


if __name__ == "__main__":
    main()
