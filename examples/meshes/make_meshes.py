#!/usr/bin/env python3
"""Makes the sample parts of this folder: a bolt above a drilled bracket, in millimetres.

usage: make_meshes.py [FOLDER]

Both are closed surfaces with normals outwards; the files are binary STL and come out the same
byte for byte each time.
"""

import math
import pathlib
import struct
import sys


def stl(title, triangles):
    """Binary STL with unit normals."""
    parts = [title.encode().ljust(80, b"\0"), struct.pack("<I", len(triangles))]
    for a, b, c in triangles:
        u = [b[k] - a[k] for k in range(3)]
        v = [c[k] - a[k] for k in range(3)]
        n = [u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]]
        length = math.sqrt(sum(x * x for x in n))
        parts.append(struct.pack("<12fH", *(x / length for x in n), *a, *b, *c, 0))
    return b"".join(parts)


def circle(count, radius, place):
    """Corners of a circle, with exact ones on the axes; place(u, v) puts them in space."""
    corners = []
    for k in range(count):
        quarter, rest = divmod(k * 4, count)
        angle = rest / count * math.pi / 2
        u, v = math.cos(angle), math.sin(angle)
        if rest == 0:
            u, v = 1.0, 0.0
        for _ in range(quarter):
            u, v = -v, u
        corners.append(place(round(radius * u, 4) + 0.0, round(radius * v, 4) + 0.0))
    return corners


def band(lower, upper):
    """Joins two rings that turn the same way."""
    count = len(lower)
    triangles = []
    for k in range(count):
        after = (k + 1) % count
        triangles.append((lower[k], lower[after], upper[after]))
        triangles.append((lower[k], upper[after], upper[k]))
    return triangles


def cap(ring, middle, upwards):
    count = len(ring)
    pairs = [(ring[k], ring[(k + 1) % count]) for k in range(count)]
    return [(a, b, middle) if upwards else (b, a, middle) for a, b in pairs]


def plate_with_hole(corners, ring):
    """A rectangle around a ring. Corners and ring turn the same way; corner k belongs to the
    quarter of the ring that begins at its corner k * count / 4."""
    count = len(ring)
    quarter = count // 4
    triangles = []
    for k in range(count):
        triangles.append((corners[k // quarter], ring[(k + 1) % count], ring[k]))
    for q in range(4):
        triangles.append((corners[q], corners[(q + 1) % 4], ring[(q + 1) * quarter % count]))
    return triangles


def flipped(triangles):
    return [(a, c, b) for a, b, c in triangles]


def hexagon(count, flats, place):
    """A hexagon with `flats` across, with extra corners on its sides."""
    corners = []
    for k in range(count):
        angle = 2 * math.pi * k / count
        from_flat = math.fmod(angle + math.pi / 6, math.pi / 3) - math.pi / 6
        from_flat = abs(from_flat) - math.pi / 6
        radius = flats / 2 / math.cos(from_flat)
        corners.append(place(round(radius * math.cos(angle), 4) + 0.0,
                             round(radius * math.sin(angle), 4) + 0.0))
    return corners


def bolt():
    """M8 with a hexagon head; the underside of the head is at z = 30, the tip at z = 10."""
    count = 24
    at = lambda z: lambda u, v: (u, v, z)
    rings = [
        circle(count, 3.2, at(10.0)),
        circle(count, 4.0, at(11.0)),
        circle(count, 4.0, at(30.0)),
        hexagon(count, 13.0, at(30.0)),
        hexagon(count, 13.0, at(34.5)),
        circle(count, 6.2, at(35.3)),
    ]
    triangles = cap(rings[0], (0.0, 0.0, 10.0), upwards=False)
    for lower, upper in zip(rings, rings[1:]):
        triangles += band(lower, upper)
    return triangles + cap(rings[-1], (0.0, 0.0, 35.3), upwards=True)


def bracket():
    """An angle of 8 mm plate: a foot with a 9 mm hole about the z axis, and a back with a 6.6 mm
    hole through it. The top of the foot is z = 0."""
    foot, back = 32, 24
    half, front, inner, outer = 20.0, 30.0, -22.0, -30.0
    top, bottom, head = 0.0, -8.0, 40.0

    def foot_face(x0, z):
        corners = [(front, half, z), (x0, half, z), (x0, -half, z), (front, -half, z)]
        ring = circle(foot, 4.5, lambda u, v: (u, v, z))
        return plate_with_hole(corners, ring), ring

    def back_face(x, z0):
        corners = [(x, half, head), (x, -half, head), (x, -half, z0), (x, half, z0)]
        ring = circle(back, 3.3, lambda u, v: (x, u, 22.0 + v))
        return plate_with_hole(corners, ring), ring

    upper, upper_ring = foot_face(inner, top)
    lower, lower_ring = foot_face(outer, bottom)
    near, near_ring = back_face(inner, top)
    far, far_ring = back_face(outer, bottom)
    triangles = upper + flipped(lower) + flipped(band(lower_ring, upper_ring))
    triangles += near + flipped(far) + flipped(band(far_ring, near_ring))
    profile = [(outer, bottom), (front, bottom), (front, top), (inner, top), (inner, head),
               (outer, head)]
    for y, turn in ((-half, False), (half, True)):
        p = [(x, y, z) for x, z in profile]
        side = [(p[0], p[1], p[2]), (p[0], p[2], p[3]), (p[0], p[3], p[5]), (p[3], p[4], p[5])]
        triangles += flipped(side) if turn else side
    for (x0, z0), (x1, z1) in ((profile[1], profile[2]), (profile[4], profile[5])):
        a, b = (x0, -half, z0), (x0, half, z0)
        c, d = (x1, half, z1), (x1, -half, z1)
        triangles += [(a, b, c), (a, c, d)]
    return triangles


def main():
    folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent)
    for name, triangles in (("bolt", bolt()), ("bracket", bracket())):
        path = folder / f"{name}.stl"
        path.write_bytes(stl(f"{name}, millimetres", triangles))
        print(f"{path}: {len(triangles)} triangles")


if __name__ == "__main__":
    main()
