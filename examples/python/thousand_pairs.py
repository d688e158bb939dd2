"""Asks about a thousand pairs of parts on every processor.

python3 thousand_pairs.py

Threads suffice, because the work runs without the lock of the interpreter. Bodies are prepared once and shared.
"""

from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import numpy as np

import gsl_geometry as gg

MESHES = Path(__file__).resolve().parents[1] / "meshes"
BOLT, BRACKET = gg.read(MESHES / "bolt.stl"), gg.read(MESHES / "bracket.stl")


def travel(turn):
    """Returns how far the bolt falls when it is turned about the x axis by this angle first."""
    moved = BOLT.moved(gg.Transform.rotation((0, 0, 40), "x", turn))
    return gg.sweep(moved, BRACKET, "-z", offset=(0, 0, 30)).travel


def main():
    turns = np.linspace(0.0, np.pi, 1000)
    with ThreadPoolExecutor() as pool:
        travels = np.array(list(pool.map(travel, turns)))
    least, most = np.argmin(travels), np.argmax(travels)
    print(f"{len(travels)} pairs")
    print(f"least travel    {travels[least]:.6f} at {np.degrees(turns[least]):.1f} degrees")
    print(f"greatest travel {travels[most]:.6f} at {np.degrees(turns[most]):.1f} degrees")


if __name__ == "__main__":
    main()
