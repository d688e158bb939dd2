"""How far the bolt travels before it touches the bracket, and where.

python3 read_and_sweep.py
"""

from pathlib import Path

import numpy as np

import gsl_geometry as gg

MESHES = Path(__file__).resolve().parents[1] / "meshes"

bolt = gg.read(MESHES / "bolt.stl")
bracket = gg.read(MESHES / "bracket.stl")

c = gg.sweep(bolt, bracket, "-z")
print(f"Down: {c.status} after {c.travel:g}, {c.kind}")
print(f"  triangle {c.moving.triangle} of the bolt meets triangle {c.fixed.triangle} of the bracket at {c.fixed.point}")

# Where the bolt is one unit above its contact, it travels one unit.
c = gg.sweep(bolt, bracket, "-z", offset=(0, 0, 1 - c.travel))
print(f"From one unit above: {c.travel:g}")

# A body from arrays: a square plate of two triangles below both.
corners = np.array([(-20, -20, -50), (20, -20, -50), (20, 20, -50), (-20, 20, -50)])
plate = gg.Body(corners, [(0, 1, 2), (0, 2, 3)])
pair = gg.Pair(bolt, [bracket, plate])
print("Each on its own:", pair.first_of_each("-z").travel)

# Turned upside down, the bolt falls through the hole of the bracket or it does not.
turned = bolt.moved(gg.Transform.rotation(bolt.bounds.mean(axis=0), "x", np.pi))
print("Upside down:", gg.sweep(turned, bracket, "-z"))
