"""Shared parts of the tests of the Python module."""

import os
from pathlib import Path

import numpy as np

import gsl_geometry as gg

SOURCE = Path(__file__).resolve().parents[2]
MESHES = SOURCE / "examples" / "meshes"
PACKAGE = Path(gg.__file__).parent
PROGRAM = PACKAGE / "gsl-sweep"

# A box of twelve triangles, which face outwards.
FACES = np.array(
    [[0, 2, 1], [0, 3, 2], [4, 5, 6], [4, 6, 7], [0, 1, 5], [0, 5, 4], [1, 2, 6], [1, 6, 5], [2, 3, 7], [2, 7, 6],
     [3, 0, 4], [3, 4, 7]]
)  # fmt: skip


def corners(low, high):
    (x0, y0, z0), (x1, y1, z1) = low, high
    return np.array(
        [[x0, y0, z0], [x1, y0, z0], [x1, y1, z0], [x0, y1, z0], [x0, y0, z1], [x1, y0, z1], [x1, y1, z1], [x0, y1, z1]],
        dtype=float,
    )


def box(low=(0, 0, 0), high=(1, 1, 1)):
    return gg.Body(corners(low, high), FACES)


def ball(count, radius=1.0, centre=(0, 0, 0)):
    """Returns a closed surface of about `count` triangles around a centre."""
    rings = max(3, int((count / 4) ** 0.5))
    sectors = 2 * rings
    z, angle = np.meshgrid(np.linspace(0, np.pi, rings + 1), np.linspace(0, 2 * np.pi, sectors, endpoint=False), indexing="ij")
    points = np.stack([np.sin(z) * np.cos(angle), np.sin(z) * np.sin(angle), np.cos(z)], axis=-1).reshape(-1, 3)
    ring, sector = np.meshgrid(np.arange(rings), np.arange(sectors), indexing="ij")
    a, b = ring * sectors + sector, ring * sectors + (sector + 1) % sectors
    c, d = a + sectors, b + sectors
    faces = np.concatenate([np.stack([a, c, b], -1).reshape(-1, 3), np.stack([b, c, d], -1).reshape(-1, 3)])
    return gg.Body(radius * points + np.array(centre, dtype=float), faces)


def real_meshes():
    """Returns the meshes of GSL_MESH_DIR; none without it."""
    folder = os.environ.get("GSL_MESH_DIR")
    if not folder:
        return []
    return sorted(path for path in Path(folder).iterdir() if path.suffix in (".stl", ".ply", ".obj", ".off"))
