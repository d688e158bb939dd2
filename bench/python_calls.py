#!/usr/bin/env python3
"""Times calls of the Python module beside the same calls in C++, and beside NumPy written by hand.

usage: python_calls.py BASELINE

BASELINE is the program python_baseline. Writes JSON. Times are nanoseconds, the least of some rounds; processor time of
one thread, or wall time for a batch, which has a thread of its own.
"""

import json
import platform
import subprocess
import sys
import time

import numpy as np

import gsl_geometry as gg

FACES = [(0, 2, 1), (0, 3, 2), (4, 5, 6), (4, 6, 7), (0, 1, 5), (0, 5, 4), (1, 2, 6), (1, 6, 5), (2, 3, 7), (2, 7, 6),
         (3, 0, 4), (3, 4, 7)]  # fmt: skip
ROWS = 1000000
PRIME = 2**31 - 1


def box(z):
    low = [(0, 0, z), (1, 0, z), (1, 1, z), (0, 1, z)]
    return gg.Body(low + [(x, y, z + 1) for x, y, z in low], FACES)


def numbers(count):
    """The same numbers as those of bench/python_baseline.cpp: cubes modulo a prime, from 0 to 1."""
    k = np.arange(count)
    return (k * k % PRIME * k % PRIME) / PRIME


def timed(calls, call, rounds=15, clock=time.thread_time):
    """Returns nanoseconds of one call."""
    least = 1e9
    for _ in range(rounds):
        begin = clock()
        for _ in range(calls):
            call()
        least = min(least, (clock() - begin) / calls)
    return 1e9 * least


def nearest_on_segment(p, a, b):
    d = b - a
    t = np.clip(((p - a) * d).sum(1) / (d * d).sum(1), 0.0, 1.0)
    return a + d * t[:, None]


def by_plane_and_edges(p, a, b, c):
    """Returns the distances: every row is compared with the plane and with the three edges."""
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


def by_regions(p, a, b, c):
    """Returns the distances as mesh packages in Python find them: rows are sorted by the corner, the edge or the
    face that is nearest, and each group is finished on its own."""
    ab, ac, bc = b - a, c - a, c - b
    dots = {name: ((p - corner) * edge).sum(1) for name, corner, edge in (
        ("ab_a", a, ab), ("ac_a", a, ac), ("ab_b", b, ab), ("ac_b", b, ac), ("ab_c", c, ab), ("ac_c", c, ac))}  # fmt: skip
    opposite_c = dots["ab_a"] * dots["ac_b"] - dots["ab_b"] * dots["ac_a"]
    opposite_b = dots["ab_c"] * dots["ac_a"] - dots["ab_a"] * dots["ac_c"]
    opposite_a = dots["ab_b"] * dots["ac_c"] - dots["ab_c"] * dots["ac_b"]
    beyond_b, beyond_c = dots["ac_b"] - dots["ab_b"], dots["ab_c"] - dots["ac_c"]
    nearest = np.empty_like(p)
    left = np.ones(len(p), bool)
    groups = (
        ((dots["ab_a"] <= 0) & (dots["ac_a"] <= 0), lambda k: a[k]),
        ((dots["ab_b"] >= 0) & (beyond_b <= 0), lambda k: b[k]),
        ((opposite_c <= 0) & (dots["ab_a"] >= 0) & (dots["ab_b"] <= 0),
         lambda k: a[k] + ab[k] * (dots["ab_a"][k] / (dots["ab_a"][k] - dots["ab_b"][k]))[:, None]),
        ((dots["ac_c"] >= 0) & (beyond_c <= 0), lambda k: c[k]),
        ((opposite_b <= 0) & (dots["ac_a"] >= 0) & (dots["ac_c"] <= 0),
         lambda k: a[k] + ac[k] * (dots["ac_a"][k] / (dots["ac_a"][k] - dots["ac_c"][k]))[:, None]),
        ((opposite_a <= 0) & (beyond_b >= 0) & (beyond_c >= 0),
         lambda k: b[k] + bc[k] * (beyond_b[k] / (beyond_b[k] + beyond_c[k]))[:, None]),
    )  # fmt: skip
    for chosen, place in groups:
        rows = chosen & left
        nearest[rows] = place(rows)
        left &= ~rows
    v, w = (weight[left] / (opposite_a + opposite_b + opposite_c)[left] for weight in (opposite_b, opposite_c))
    nearest[left] = a[left] + ab[left] * v[:, None] + ac[left] * w[:, None]
    off = p - nearest
    return np.sqrt((off * off).sum(1))


def main():
    said = subprocess.run(sys.argv[1:2], capture_output=True, text=True, check=True).stdout
    baseline = {name: float(value) for name, value in (line.split() for line in said.splitlines())}
    moving, fixed = box(0), box(3)
    pair = gg.Pair(moving, [fixed], threads=1)
    one_row = np.array([[0.0, 0.0, 1.0]])
    points = numbers(12 * ROWS).reshape(4, ROWS, 3)
    distances = gg.point_triangle(*points)
    for other in (by_plane_and_edges, by_regions):
        error = np.abs(other(*points) - distances).max()
        if not error <= 1e-9:
            sys.exit(f"{other.__name__} is off by {error}")
    own = {
        "sweep": timed(20000, lambda: gg.sweep(moving, fixed, "z")),
        "pair.sweep": timed(20000, lambda: pair.sweep("z")),
        "batch": timed(500, lambda: pair.sweep(one_row), clock=time.perf_counter),
        "point_triangle": timed(1, lambda: gg.point_triangle(*points)),
    }
    numpy_times = {
        "the plane and the edges": timed(1, lambda: by_plane_and_edges(*points), rounds=3),
        "groups of rows by the nearest feature": timed(1, lambda: by_regions(*points), rounds=3),
    }
    result = {
        "isComplete": True, "rows": ROWS, "python": platform.python_version(), "numpy": np.__version__, "own": own,
        "baseline": baseline, "numpyTimes": numpy_times,
    }  # fmt: skip
    json.dump(result, sys.stdout, indent=2)


if __name__ == "__main__":
    main()
