#!/usr/bin/env python3
"""Compares what `gsl-mesh check` says of mesh files with a second method that shares nothing with it.

usage: judge_mesh_report.py PROGRAM [--made SEED] [--below BYTES] [FILE...]

Reads the files itself (STL, OBJ and binary PLY), counts vertices and edges with NumPy, and decides in whole
numbers which triangles cross, which takes a minute or two for 100,000 triangles. --made judges meshes with faults
that it makes, from a seed; --below the files in the folder GSL_MESH_DIR, if it is set, with fewer bytes. Prints a
line for each mesh; the exit status is 1 when one differs.
"""

import json
import math
import os
import random
import struct
import subprocess
import sys
import tempfile
from collections import Counter

import numpy as np


# Files.

def read_stl(data):
    count = struct.unpack_from("<I", data, 80)[0]
    if len(data) != 84 + 50 * count:
        words = [line.split() for line in data.decode("latin-1").splitlines()]
        points = [[float(value) for value in line[1:4]] for line in words if line[:1] == ["vertex"]]
        return np.array(points).reshape(-1, 3, 3)
    rows = np.frombuffer(data, np.dtype([("n", "<3f4"), ("c", "<9f4"), ("a", "<u2")]), count, 84)
    return rows["c"].astype(float).reshape(-1, 3, 3)


def read_obj(data):
    points, triangles = [], []
    for line in data.decode("latin-1").splitlines():
        words = line.split()
        if words[:1] == ["v"]:
            points.append([float(word) for word in words[1:4]])
        elif words[:1] == ["f"]:
            if len(words) != 4:
                raise ValueError("a polygon")
            triangles.append([int(word.split("/")[0]) - 1 for word in words[1:]])
    return np.array(points)[np.array(triangles)]


PLY_TYPES = {"char": "i1", "uchar": "u1", "short": "<i2", "ushort": "<u2", "int": "<i4", "uint": "<u4", "float": "<f4",
             "double": "<f8"}


def read_ply(data):
    head, body = data.split(b"end_header\n", 1)
    elements = []
    for words in (line.split() for line in head.decode("latin-1").splitlines()):
        if words[0] == "element":
            elements.append((words[1], int(words[2]), []))
        elif words[0] == "property":
            elements[-1][2].append(words[1:])
    at, points = 0, None
    for name, count, properties in elements:
        fields = []
        for words in properties:
            if words[0] == "list":
                fields += [("count", PLY_TYPES[words[1]]), ("corners", PLY_TYPES[words[2]], 3)]
            else:
                fields.append((words[1], PLY_TYPES[words[0]]))
        row = np.dtype(fields)
        rows = np.frombuffer(body, row, count, at)
        at += row.itemsize * count
        if name == "vertex":
            points = np.stack([rows[axis].astype(float) for axis in "xyz"], 1)
        elif name == "face":
            if (rows["count"] != 3).any():
                raise ValueError("a polygon")
            return points[rows["corners"]]
    raise ValueError("no faces")


def read(file):
    with open(file, "rb") as stream:
        data = stream.read()
    return {"stl": read_stl, "obj": read_obj, "ply": read_ply}[file.rsplit(".", 1)[1]](data)


# Whole numbers: every coordinate times one power of two.

def as_whole(corners):
    shift = 0
    for value in corners[corners != 0].flat:
        mantissa, exponent = math.frexp(value)
        whole = int(mantissa * 2.0**53)
        shift = max(shift, 53 - exponent - ((whole & -whole).bit_length() - 1))
    scale = 1 << shift

    def whole_of(value):
        top, bottom = float(value).as_integer_ratio()
        return top * (scale // bottom)

    return [[tuple(whole_of(value) for value in corner) for corner in triangle] for triangle in corners.tolist()]


def minus(a, b):
    return (a[0] - b[0], a[1] - b[1], a[2] - b[2])


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def dot(a, b):
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]


def normal(triangle):
    return cross(minus(triangle[1], triangle[0]), minus(triangle[2], triangle[0]))


def sign(number):
    return (number > 0) - (number < 0)


def is_inside(point, weight, triangle, n):
    """Whether point / weight, with weight > 0 and in the plane of the triangle, belongs to it."""
    for k in range(3):
        a, b = triangle[k], triangle[(k + 1) % 3]
        to = (point[0] - weight * a[0], point[1] - weight * a[1], point[2] - weight * a[2])
        if dot(cross(minus(b, a), to), n) < 0:
            return False
    return True


def meets(p, q, triangle, n):
    """Yields the points, as (x, y, z, weight), where a segment crosses the plane of a triangle inside it."""
    s, t = dot(minus(p, triangle[0]), n), dot(minus(q, triangle[0]), n)
    if s == 0 and is_inside(p, 1, triangle, n):
        yield (*p, 1)
    if t == 0 and is_inside(q, 1, triangle, n):
        yield (*q, 1)
    if s * t < 0:
        point, weight = [abs(t) * a + abs(s) * b for a, b in zip(p, q)], abs(s) + abs(t)
        if is_inside(point, weight, triangle, n):
            yield (*point, weight)


def in_plane(p, q, a, b, n):
    """Yields the point where two segments of one plane, that are not parallel, cross."""
    c, d = dot(cross(minus(b, a), minus(p, a)), n), dot(cross(minus(b, a), minus(q, a)), n)
    e, f = dot(cross(minus(q, p), minus(a, p)), n), dot(cross(minus(q, p), minus(b, p)), n)
    if c * d <= 0 and e * f <= 0 and c != d:
        yield (*(abs(d) * x + abs(c) * y for x, y in zip(p, q)), abs(c) + abs(d))


def ends(a, b):
    """Yields points of which the common part of two triangles is the hull."""
    na, nb = normal(a), normal(b)
    for k in range(3):
        yield from meets(a[k], a[(k + 1) % 3], b, nb)
        yield from meets(b[k], b[(k + 1) % 3], a, na)
    for k in range(3):
        p, q = a[k], a[(k + 1) % 3]
        if dot(minus(p, b[0]), nb) == 0 and dot(minus(q, b[0]), nb) == 0:
            for j in range(3):
                yield from in_plane(p, q, b[j], b[(j + 1) % 3], nb)
    for k in range(3):
        p, q = b[k], b[(k + 1) % 3]
        if dot(minus(p, a[0]), na) == 0 and dot(minus(q, a[0]), na) == 0:
            for j in range(3):
                yield from in_plane(p, q, a[j], a[(j + 1) % 3], na)


def is_common(point, common):
    """Whether a point belongs to the hull of the common corners."""
    if not common:
        return False
    weight = point[3]
    to = [tuple(weight * value - at for value, at in zip(corner, point)) for corner in common]
    if len(to) == 1:
        return to[0] == (0, 0, 0)
    return cross(to[0], to[1]) == (0, 0, 0) and dot(to[0], to[1]) <= 0


def do_cross(a, b):
    common = [corner for corner in a if corner in b]
    return len(common) == 3 or any(not is_common(point, common) for point in ends(a, b))


# Pairs that may cross, in floating point with a bound of the error.

def pairs_of_boxes(low, high):
    """Pairs of triangles whose boxes meet, each once."""
    size = np.median(high - low, axis=0).max() * 2.0 or 1.0
    first, last = np.floor(low / size).astype(int), np.floor(high / size).astype(int)
    cells = {}
    for k, (f, l) in enumerate(zip(first.tolist(), last.tolist())):
        for x in range(f[0], l[0] + 1):
            for y in range(f[1], l[1] + 1):
                for z in range(f[2], l[2] + 1):
                    cells.setdefault((x, y, z), []).append(k)
    found = []
    for (x, y, z), members in cells.items():
        ids = np.array(members)
        i, j = np.triu_indices(len(ids), 1)
        a, b = ids[i], ids[j]
        corner = np.maximum(first[a], first[b])  # the first cell that both reach
        meet = ((low[a] <= high[b]) & (low[b] <= high[a])).all(1) & (corner == (x, y, z)).all(1)
        found.append(np.stack([a[meet], b[meet]], 1))
    return np.concatenate(found) if found else np.empty((0, 2), int)


def are_apart(a, b, vertex_a, vertex_b):
    """True where every corner of b that a does not share is on one side of a, for certain."""
    u, v = a[:, 1] - a[:, 0], a[:, 2] - a[:, 0]
    n = np.cross(u, v)
    to = b - a[:, None, 0]
    side = np.einsum("ij,ikj->ik", n, to)
    bound = 1e-13 * np.einsum("ij,ikj->ik", np.abs(u) @ np.ones((3, 3)) * np.abs(v).sum(1)[:, None], np.abs(to))
    shared = (vertex_b[:, :, None] == vertex_a[:, None, :]).any(2)
    above, below = (side > bound) | shared, (side < -bound) | shared
    return (above.all(1) | below.all(1)) & ~shared.all(1)


def crossings(corners, vertices, whole):
    if len(corners) == 0:
        return []
    pairs = pairs_of_boxes(corners.min(1), corners.max(1))
    apart = np.zeros(len(pairs), bool)
    for a, b in ((0, 1), (1, 0)):
        i, j = pairs[:, a], pairs[:, b]
        apart |= are_apart(corners[i], corners[j], vertices[i], vertices[j])
    return sorted((i, j) for i, j in pairs[~apart].tolist() if do_cross(whole[i], whole[j]))


# The report.

def components_of(triangles):
    parent = {}

    def root(k):
        while parent[k] != k:
            parent[k] = parent[parent[k]]
            k = parent[k]
        return k

    owner = {}
    for number, triangle in triangles:
        parent[number] = number
        for k in range(3):
            edge = frozenset((triangle[k], triangle[(k + 1) % 3]))
            parent[root(number)] = root(owner.setdefault(edge, number))
    return sum(parent[k] == k for k in parent)


def measures(corners, closed):
    """Sums of high accuracy, around the middle of the box."""
    low, high = corners.min((0, 1)), corners.max((0, 1))
    middle = (low + high) / 2
    a, b, c = (corners[:, k] - middle for k in range(3))
    areas = np.linalg.norm(np.cross(b - a, c - a), axis=1) / 2
    six = np.einsum("ij,ij->i", a, np.cross(b, c))
    area, volume = math.fsum(areas), math.fsum(six) / 6
    weights, middles, total = (six / 6, (a + b + c) / 4, volume) if closed else (areas, (a + b + c) / 3, area)
    centroid = [math.fsum(weights * middles[:, k]) / total + middle[k] for k in range(3)] if total else None
    return {"low": low.tolist(), "high": high.tolist(), "area": area, "volume": volume if closed else None,
            "centroid": centroid}


def first_of(numbers):
    numbers = sorted(numbers)
    return {"count": len(numbers), "first_triangle": numbers[0] if numbers else None}


def judge(corners):
    corners = corners + 0.0  # no negative zeros
    finite = np.isfinite(corners).all((1, 2))
    kept = np.flatnonzero(finite)
    solid = corners[kept]
    points, numbers = np.unique(solid.reshape(-1, 3), axis=0, return_inverse=True)
    vertices = numbers.reshape(-1, 3)
    whole = as_whole(solid)
    flat = np.array([normal(triangle) == (0, 0, 0) for triangle in whole], bool)
    seen, duplicate, edges, uses = set(), [], {}, Counter()
    joined = []
    for number, triangle in zip(kept.tolist(), vertices.tolist()):
        key = tuple(sorted(triangle))
        if key in seen:
            duplicate.append(number)
        seen.add(key)
        if len(set(triangle)) < 3:
            continue
        joined.append((number, triangle))
        for k in range(3):
            way = triangle[k], triangle[(k + 1) % 3]
            uses[way] += 1
            edges.setdefault(tuple(sorted(way)), []).append(number)
    balanced = all(uses[a, b] == uses[b, a] for a, b in edges)
    open_edges = [min(users) for users in edges.values() if len(users) == 1]
    found = [(int(kept[index[i]]), int(kept[index[j]])) for index in [np.flatnonzero(~flat)]
             for i, j in crossings(solid[~flat], vertices[~flat], [t for t, f in zip(whole, flat) if not f])]
    return {
        "triangles": len(corners), "vertices": len(points), "edges": len(edges), "components": components_of(joined),
        "closed": balanced and bool(edges),
        "oriented": all(uses[a, b] == uses[b, a] for (a, b), users in edges.items() if len(users) > 1),
        "faults": {
            "not_finite": first_of(np.flatnonzero(~finite).tolist()),
            "degenerate": first_of(kept[flat].tolist()),
            "duplicate": first_of(duplicate),
            "open_edges": first_of(open_edges),
            "non_manifold_edges": first_of([min(users) for users in edges.values() if len(users) > 2]),
            "turned_edges": first_of([min(users) for (a, b), users in edges.items()
                                      if len(users) == 2 and uses[a, b] != uses[b, a]]),
            "crossings": {"count": len(found), "pairs": [list(pair) for pair in found[:100]]},
        },
        "measures": measures(solid, balanced and bool(edges)) if len(solid) else None,
    }


def differences(wanted, given, path=""):
    """Yields where two reports differ; measures may differ by their rounding."""
    if isinstance(wanted, dict):
        for key in wanted:
            yield from differences(wanted[key], given[key], f"{path}.{key}")
    elif isinstance(wanted, float) and isinstance(given, float):
        if not abs(wanted - given) <= 1e-9 * abs(wanted) + 1e-15:
            yield f"{path}: {given}, not {wanted}"
    elif path.endswith(".centroid") and wanted and given:
        if len(wanted) != len(given) or not all(abs(a - b) <= 1e-6 * max(abs(a), 1.0) for a, b in zip(wanted, given)):
            yield f"{path}: {given}, not {wanted}"
    elif wanted != given:
        yield f"{path}: {str(given)[:200]}, not {str(wanted)[:200]}"


def is_equal(program, file, corners):
    said = subprocess.run([program, "check", "--json", "-", file], stdout=subprocess.PIPE, check=False)
    given = json.loads(said.stdout)["meshes"][0]
    found = list(differences(judge(corners), given)) if not given["error"] else [given["error"]]
    name = os.path.basename(file)
    print(f"{name}: " + ("; ".join(found) if found else f"equal, {given['faults']['crossings']['count']} crossings"))
    return not found


# Meshes with faults.

def bricks(chance):
    """A few boxes on small whole coordinates, whose faces are cut into triangles."""
    made = []
    for _ in range(chance.randint(1, 4)):
        low = [chance.randint(0, 4) for _ in range(3)]
        high = [value + chance.randint(1, 3) for value in low]
        corner = [[(high if k >> axis & 1 else low)[axis] for axis in range(3)] for k in range(8)]
        for a, b, c, d in ((0, 2, 3, 1), (4, 5, 7, 6), (0, 1, 5, 4), (2, 6, 7, 3), (0, 4, 6, 2), (1, 3, 7, 5)):
            made += [[corner[a], corner[b], corner[c]], [corner[a], corner[c], corner[d]]]
    return made


def with_faults(chance):
    mesh = bricks(chance)
    for _ in range(chance.randint(0, 4)):
        k = chance.randrange(len(mesh))
        fault = chance.randrange(7)
        if fault == 0:
            del mesh[k]
        elif fault == 1:
            mesh.append(chance.sample(mesh[k], 3))
        elif fault == 2:
            mesh[k] = mesh[k][::-1]
        elif fault == 3:
            mesh[k] = [mesh[k][0], mesh[k][1], mesh[k][chance.randrange(2)]]
        elif fault == 4:
            a, b = mesh[k][:2]
            mesh.append([a, b, [(x + y) / 2 for x, y in zip(a, b)]])
        elif fault == 5:
            mesh[k] = [mesh[k][0], [chance.choice((math.nan, math.inf)), *mesh[k][1][1:]], mesh[k][2]]
        else:
            mesh.append([[chance.randint(0, 6) for _ in range(3)] for _ in range(3)])
        if not mesh:
            mesh = bricks(chance)
    chance.shuffle(mesh)
    return np.array(mesh, float)


def write_stl(file, corners):
    rows = np.zeros(len(corners), np.dtype([("n", "<3f4"), ("c", "<9f4"), ("a", "<u2")]))
    rows["c"] = corners.reshape(-1, 9)
    with open(file, "wb") as stream:
        stream.write(b" " * 80 + struct.pack("<I", len(corners)) + rows.tobytes())


def judge_made(program, seed):
    chance, equal = random.Random(seed), True
    with tempfile.TemporaryDirectory() as folder:
        for k in range(60):
            corners, file = with_faults(chance), os.path.join(folder, f"made-{seed}-{k}.stl")
            write_stl(file, corners)
            equal &= is_equal(program, file, corners)
    return equal


def small_meshes(size):
    folder = os.environ.get("GSL_MESH_DIR")
    files = [os.path.join(folder, name) for name in sorted(os.listdir(folder))] if folder else []
    return [file for file in files if file.endswith((".stl", ".obj", ".ply")) and os.path.getsize(file) < size]


def main(arguments):
    program, rest, equal = arguments[0], arguments[1:], True
    if rest[:1] == ["--made"]:
        equal &= judge_made(program, int(rest[1]))
        rest = rest[2:]
    if rest[:1] == ["--below"]:
        rest = small_meshes(int(rest[1])) + rest[2:]
    for file in rest:
        try:
            corners = read(file)
        except ValueError as error:
            print(f"{os.path.basename(file)}: left out, {error}")
            continue
        equal &= is_equal(program, file, corners)
    return 0 if equal else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
