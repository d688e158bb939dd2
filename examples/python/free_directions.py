"""Draws how far the bolt can travel in every direction from its place above the bracket.

python3 free_directions.py [PICTURE]

It needs Matplotlib. The map of the sphere of directions keeps areas.
"""

import sys
from pathlib import Path

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt
import numpy as np

import gsl_geometry as gg

MESHES = Path(__file__).resolve().parents[1] / "meshes"


def main():
    bolt, bracket = gg.read(MESHES / "bolt.stl"), gg.read(MESHES / "bracket.stl")
    directions = gg.sphere(8000)
    r = gg.Pair(bolt, [bracket]).sweep(directions)

    x, y, z = directions.T
    around, up = np.arctan2(y, x), np.arcsin(z)
    free, meets = ~r.touches, r.touches
    figure, axes = plt.subplots(figsize=(7.2, 4.2), layout="constrained", subplot_kw={"projection": "mollweide"})
    dots = {"s": 16, "linewidth": 0}
    axes.scatter(around[free], up[free], color="#e3e3e3", label=f"free: {free.mean():.0%} of all directions", **dots)
    most = np.quantile(r.travel[meets], 0.99)
    drawn = axes.scatter(around[meets], up[meets], c=r.travel[meets], cmap="viridis", vmax=most, **dots)
    figure.colorbar(drawn, label="travel before contact", shrink=0.8, extend="max")
    axes.set(xticks=np.radians(range(-120, 121, 60)), yticks=np.radians(range(-60, 61, 30)))
    axes.grid(alpha=0.4)
    axes.set_title("Where the bolt can go: angle around its axis, and height", pad=14)
    axes.legend(loc="lower center", bbox_to_anchor=(0.5, -0.14), markerscale=2, frameon=False)
    picture = sys.argv[1] if len(sys.argv) > 1 else "free_directions.png"
    figure.savefig(picture, dpi=90, pil_kwargs={"optimize": True})
    print(f"{picture}: {free.sum()} of {len(r)} directions are free")


if __name__ == "__main__":
    main()
