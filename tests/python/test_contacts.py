"""The answers of the module: by hand, and equal to what gsl-sweep writes."""

import inspect
import json
import math
import pickle
import subprocess

import numpy as np
import pytest

import gsl_geometry as gg
from support import MESHES, PROGRAM, ball, box, real_meshes


def program(*arguments):
    run = subprocess.run([PROGRAM, *map(str, arguments), "--json", "-"], capture_output=True, text=True, check=False)
    assert run.returncode in (0, 1), run.stderr
    return json.loads(run.stdout)


def test_a_contact_by_hand():
    c = gg.sweep(box(), box((0, 0, 3), (1, 1, 4)), "z")
    assert (c.status, c.travel, c.kind) == ("contact", 2.0, "vertex-vertex")
    assert c and c.moving.triangle == 2 and c.fixed.triangle == 0 and c.fixed.body == 0
    assert np.array_equal(c.moving.point + 2.0 * c.direction, c.fixed.point)
    assert np.array_equal(c.direction, [0, 0, 1])


def test_no_contact_and_the_greatest_distance():
    high = box((0, 0, 3), (1, 1, 4))
    none = gg.sweep(box(), high, "z", max_distance=np.nextafter(2.0, 0.0))
    assert not none and none.status == "none" and none.travel == math.inf
    assert none.kind is none.normal is none.moving is none.fixed is None
    assert repr(none) == "Contact(none along (0, 0, 1))"
    assert gg.sweep(box(), high, "z", max_distance=2.0).travel == 2.0
    assert gg.sweep(box(), high, "-z").status == "none"


def test_start_offset_and_rules():
    table = box((-5, -5, -1), (5, 5, 0))
    assert gg.sweep(box(), table, "z").status == "start"
    assert gg.sweep(box(), table, "z", rule="leaving").status == "none"
    assert gg.sweep(box(), table, "x", rule="solid").status == "none"
    down = gg.sweep(box(), table, "-z", rule="solid")
    assert down.status == "start" and not down.overlaps_at_start
    assert gg.sweep(box(), table, "-z", rule="solid", offset=(0, 0, -0.5)).overlaps_at_start
    assert gg.sweep(box(), table, "-z", offset=(0, 0, 2.5)).travel == 2.5
    assert repr(gg.sweep(box(), table, "z")).startswith("Contact(at the start along (0, 0, 1): ")


def test_a_solid_around_the_other_touches_nothing():
    small, large = box((1, 1, 1), (2, 2, 2)), box((0, 0, 0), (3, 3, 3))
    c = gg.sweep(small, large, "z", rule="solid")
    assert (c.status, c.kind, c.overlaps_at_start) == ("start", "inside", True)
    assert c.moving.triangle == 0 and c.fixed is None
    assert c.to_dict()["fixed"] == {"triangle": None, "point": None}
    assert repr(c) == "Contact(at the start along (0, 0, 1): inside, a part of the moving body in the fixed body)"
    c = gg.sweep(large, small, "z", rule="solid")
    assert c.moving is None and c.fixed.triangle == 0
    assert repr(c).endswith("inside, a part of the fixed body in the moving body)")
    r = gg.Pair(large, [small]).sweep([(0, 0, 1)], rule="solid")
    assert r.moving_triangle.tolist() == [-1] and np.isnan(r.moving_point).all()
    assert r.fixed_triangle.tolist() == [0] and not np.isnan(r.fixed_point).any()
    assert r[0] == c


def test_rows_are_selected():
    r = gg.Pair(box(), [box((0, 0, 3), (1, 1, 4))]).sweep([(0, 0, 1), (0, 0, -1), (0, 0, 2)])
    assert r[1:].travel.tolist() == [math.inf, 2.0]
    assert r[r.touches].travel.tolist() == [2.0, 2.0]
    assert r[[2, 0]].direction.tolist() == [[0, 0, 1], [0, 0, 1]]
    assert r[-1] == r[2] and len(r[3:]) == 0
    with pytest.raises(IndexError):
        r[3]


def test_axes_are_directions():
    target = {"x": (3, 0, 0), "y": (0, 3, 0), "z": (0, 0, 3)}
    for axis, corner in target.items():
        there = box(corner, np.add(corner, 1))
        back = box(np.negative(corner), np.add(np.negative(corner), 1))
        for name in (axis, axis.upper(), "+" + axis):
            assert gg.sweep(box(), there, name).travel == 2.0
            assert gg.sweep(box(), back, name).status == "none"
        assert gg.sweep(box(), back, "-" + axis).travel == 2.0


def test_several_fixed_bodies():
    near, far = box((0, 0, 3), (1, 1, 4)), box((0, 0, 6), (1, 1, 7))
    c = gg.sweep(box(), [far, near], "z")
    assert c.travel == 2.0 and c.fixed.body == 1 and "of body 1" in repr(c)
    each = gg.Pair(box(), [far, near]).first_of_each("z")
    assert each.travel.tolist() == [5.0, 2.0] and each.fixed_body.tolist() == [0, 1]


def test_the_last_contact():
    pair = gg.Pair(box(), [box((0, 0, 3), (1, 1, 4))])
    assert pair.last("z").travel == 4.0
    assert pair.last("z", max_distance=3.0).travel == 3.0
    assert pair.last([(0, 0, 1), (0, 0, -1)]).travel.tolist() == [4.0, math.inf]


def test_the_patch_of_a_face_on_a_face():
    pair = gg.Pair(box(), [box((0, 0, 3), (1, 1, 4))])
    patch = pair.patch("z")
    # Two triangles meet two, and the triangles of the walls touch at the rim.
    assert patch.first.travel == 2.0 and patch.pair_count == len(patch.pairs) > 4
    assert np.array_equal(patch.low, [0, 0, 3]) and np.array_equal(patch.high, [1, 1, 3])
    order = np.lexsort((patch.pairs.fixed_triangle, patch.pairs.moving_triangle))
    assert np.array_equal(order, np.arange(patch.pair_count))
    assert set(patch.pairs.travel) == {2.0}
    few = pair.patch("z", limit=3)
    assert few.pair_count == patch.pair_count and np.array_equal(few.pairs.fixed_point, patch.pairs.fixed_point[:3])
    none = pair.patch("-z")
    assert none.pair_count == 0 and none.low is None and len(none.pairs) == 0 and not none.first


def test_a_patch_of_thousands_is_complete():
    # A grid of 30 x 30 squares on another: each triangle touches at least its own copy.
    x, y = np.meshgrid(np.arange(31.0), np.arange(31.0), indexing="ij")
    vertices = np.stack([x.ravel(), y.ravel(), np.zeros(961)], axis=1)
    corner = (np.arange(30)[:, None] * 31 + np.arange(30)).ravel()
    faces = np.concatenate([np.stack([corner, corner + 31, corner + 1], 1), np.stack([corner + 1, corner + 31, corner + 32], 1)])
    pair = gg.Pair(gg.Body(vertices, faces), [gg.Body(vertices + (0, 0, 1), faces)])
    patch = pair.patch("z")
    pairs = set(zip(patch.pairs.moving_triangle.tolist(), patch.pairs.fixed_triangle.tolist()))
    assert patch.pair_count == len(patch.pairs) == len(pairs) > 1800 * 6
    assert {(k, k) for k in range(1800)} <= pairs
    assert len(pair.patch("z", limit=None).pairs) == patch.pair_count
    assert inspect.signature(pair.patch).parameters["limit"].default == 1000000


def test_batches_equal_single_questions():
    pair = gg.Pair(ball(600, centre=(0.1, 0.2, 3.0)), [box((-2, -2, -1), (2, 2, 0)), box((3, -2, -1), (4, 2, 5))])
    directions = gg.sphere(200)
    r = pair.sweep(directions)
    assert set(r.status) == {"contact", "none"} and set(r.fixed_body) == {-1, 0, 1}
    for k, c in enumerate(r):
        assert c == pair.sweep(directions[k]) == gg.sweep(pair.moving, pair.fixed, directions[k])
        assert c == r[k] and bool(c) == r.touches[k] and (c.kind or "") == r.kind[k]
    free = ~r.touches
    assert np.isnan(r.normal[free]).all() and np.isinf(r.travel[free]).all() and (r.moving_triangle[free] == -1).all()
    assert r[-1] == r[199]
    with pytest.raises(IndexError):
        r[200]


def test_offsets_of_each_direction():
    pair = gg.Pair(box(), [box((0, 0, 3), (1, 1, 4))])
    r = pair.sweep([(0, 0, 1)] * 3, offset=[(0, 0, 0), (0, 0, 1), (5, 0, 0)])
    assert r.travel.tolist() == [2.0, 1.0, math.inf]


def test_one_thread_gives_the_same_bits():
    bodies = ball(600, centre=(0.1, 0.2, 3.0)), [box((-2, -2, -1), (2, 2, 0))]
    directions = gg.sphere(300)
    alone, all_of_them = gg.Pair(*bodies, threads=1).sweep(directions), gg.Pair(*bodies).sweep(directions)
    for name, column in alone.to_dict().items():
        assert column.tobytes() == getattr(all_of_them, name).tobytes()


def test_more_directions_than_a_block():
    pair = gg.Pair(box(), [box((0, 0, 3), (1, 1, 4))])
    directions = np.tile([(0.0, 0.0, 1.0), (0.0, 0.0, -1.0), (1.0, 0.0, 0.0)], (30000, 1))
    r = pair.sweep(directions)
    assert np.array_equal(r.travel, np.tile([2.0, math.inf, math.inf], 30000))
    assert np.array_equal(r.direction, directions)


def test_bounds_solids_and_moved_bodies():
    bolt = gg.read(MESHES / "bolt.stl")
    assert np.array_equal(bolt.bounds, [bolt.vertices.min(axis=0), bolt.vertices.max(axis=0)])
    turn = gg.Transform.rotation((1, 2, 3), (1, 1, 0), 0.3)
    moved = bolt.moved(turn)
    assert np.array_equal(moved.vertices, turn.apply(bolt.vertices))
    assert np.array_equal(moved.triangles, turn.apply(bolt.triangles)) and moved.is_solid
    assert moved.moved(turn.matrix).triangle_count == 288
    bracket = gg.read(MESHES / "bracket.stl")
    direction = (0.1, 0.2, -1.0)
    assert gg.sweep(moved, bracket, direction) == gg.sweep(gg.Body(moved.triangles), bracket, direction)
    assert box().is_solid and box().solid_fault is None
    assert not gg.Body([[[0, 0, 0], [1, 0, 0], [0, 1, 0]]]).is_solid


@pytest.mark.parametrize("options, terms", [
    ((), {}),
    (("--offset", "0.5,0.25,1"), {"offset": (0.5, 0.25, 1)}),
    (("--max-distance", "29"), {"max_distance": 29}),
    (("--one-sided",), {"one_sided": True}),
    (("--leaving",), {"rule": "leaving"}),
    (("--solid",), {"rule": "solid"}),
    (("--solid", "--offset", "0,0,-30.5"), {"rule": "solid", "offset": (0, 0, -30.5)}),
    (("--clearance", "0.25"), {"clearance": 0.25}),
    (("--allowance=-0.125",), {"allowance": -0.125}),
])
@pytest.mark.parametrize("direction", ["-z", "x", "0.25,0.5,-1"])
def test_equals_the_program_on_the_example(options, terms, direction):
    files = MESHES / "bolt.stl", MESHES / "bracket.stl"
    new = [option.split("=")[0] for option in options if option.startswith(("--clearance", "--allowance"))]
    if new and new[0] not in subprocess.run([PROGRAM, "--help"], capture_output=True, text=True, check=True).stdout:
        pytest.skip(f"gsl-sweep has no option {new[0]}")
    said = program(*files, "--direction", direction, *options)
    along = direction if direction in ("-z", "x") else tuple(map(float, direction.split(",")))
    assert_equals(gg.sweep(gg.read(files[0]), gg.read(files[1]), along, **terms).to_dict(), said)


def assert_equals(answer, said):
    for key in ("status", "travel", "exact", "error_bound", "direction", "kind", "normal", "fixed_body"):
        # A gsl-sweep without --clearance does not write whether answers are exact.
        assert key not in said and key in ("exact", "error_bound") or answer[key] == said[key], key
    assert said.get("growing") == answer["growing"]
    assert said.get("overlaps_at_start", False) == answer["overlaps_at_start"]
    for side in ("moving", "fixed"):
        if side in said and "triangle" in said[side]:
            assert answer[side] == {key: said[side][key] for key in ("triangle", "point")}


def test_equals_the_program_on_a_sphere_of_directions():
    files = MESHES / "bolt.stl", MESHES / "bracket.stl"
    said = program(*files, "--sphere", 500)
    r = gg.Pair(gg.read(files[0]), [gg.read(files[1])]).sweep(gg.sphere(500))
    assert len(said["answers"]) == 500
    for c, answer in zip(r, said["answers"]):
        assert_equals(c.to_dict(), answer)


def test_equals_the_program_on_real_meshes():
    meshes = real_meshes()
    if not meshes:
        pytest.skip("GSL_MESH_DIR names no folder")
    bodies = [gg.read(path) for path in meshes]
    for k, fixed in enumerate(bodies):
        moving, path = bodies[k - 1], meshes[k - 1]
        above = fixed.bounds[1] - moving.bounds[0] + (1.0, 2.0, 3.0)
        above[:2] = (fixed.bounds.mean(axis=0) - moving.bounds.mean(axis=0))[:2]
        text = ",".join(map(repr, above.tolist()))
        pair = gg.Pair(moving, [fixed])
        said = program(path, meshes[k], "--offset", text, "--direction", "0.01,0.02,-1", "--max-distance", "1e9")
        assert_equals(pair.sweep((0.01, 0.02, -1), offset=above, max_distance=1e9).to_dict(), said)
        said = program(path, meshes[k], "--offset", text, "--sphere", 8, "--last")
        for c, answer in zip(pair.last(gg.sphere(8), offset=above), said["answers"]):
            assert_equals(c.to_dict(), answer)


def test_kinds_are_those_of_the_program():
    # The order of the names is the library's; each kind that can occur here is found in both.
    files = MESHES / "bolt.stl", MESHES / "bracket.stl"
    kinds = {answer["kind"] for answer in program(*files, "--sphere", 2000)["answers"]} - {None}
    r = gg.Pair(gg.read(files[0]), [gg.read(files[1])]).sweep(gg.sphere(2000))
    assert set(r.kind) - {""} == kinds and len(kinds) >= 3


def test_every_kind_by_hand():
    def triangle(*corners):
        return gg.Body([corners])

    apex = triangle((0, 0, 1), (-1, 1, -1), (-1, -1, -1))
    ridge = triangle((-1, 0, 3), (1, 0, 3), (0, 1, 5))
    face = triangle((-2, -2, 3), (2, -2, 3), (0, 3, 3))
    beam = triangle((0, -1, 1), (0, 1, 1), (0, 0, -1))
    point = triangle((0, 0, 3), (1, 1, 5), (1, -1, 5))
    assert gg.sweep(apex, point, "z").kind == "vertex-vertex" and gg.sweep(apex, point, "z").normal is None
    assert np.isnan(gg.Pair(apex, [point]).sweep([(0, 0, 1)]).normal).all()
    assert np.array_equal(gg.Pair(apex, [face]).sweep([(0, 0, 1)]).normal, [[0, 0, -1]])
    assert gg.sweep(apex, ridge, "z").kind == "vertex-edge"
    assert gg.sweep(ridge, apex, "-z").kind == "edge-vertex"
    assert gg.sweep(apex, face, "z").kind == "vertex-face"
    assert gg.sweep(face, apex, "-z").kind == "face-vertex"
    assert gg.sweep(beam, ridge, "z").kind == "edge-edge"
    assert gg.sweep(beam, triangle((-1, 0.1, 0), (1, 0.2, 0), (1, 0.3, 0.1)), "z").kind == "overlap"
    inner = gg.sweep(box((1, 1, 1), (2, 2, 2)), box((0, 0, 0), (3, 3, 3)), "z", rule="solid")
    assert inner.kind == "inside" and inner.overlaps_at_start


def near(c, travel, points=()):
    """Whether a rounded answer is within its bound of numbers that are found by hand."""
    off = [abs(c.travel - travel)] + [np.abs(np.subtract(*both)).max() for both in points]
    return not c.is_exact and 0.0 < c.error_bound < 1e-13 and max(off) <= c.error_bound


def test_a_clearance_by_hand():
    high = box((0, 0, 3), (1, 1, 4))
    c = gg.sweep(box(), high, "z", clearance=0.5)
    assert c.status == "contact" and near(c, 1.5) and c.moving.point[2] == 1.0 and c.fixed.point[2] == 3.0
    # An edge passes an edge: the distance is 5 where the travel along x leaves 3 and z is 4 away.
    aside = box((10, 0, 5), (11, 1, 6))
    c = gg.sweep(box(), aside, "x", clearance=5)
    assert near(c, 6.0) and c.fixed.point[0] == 10.0 and c.kind in ("vertex-vertex", "edge-vertex", "edge-edge")
    assert gg.sweep(box(), aside, "x", clearance=3.9).status == "none"
    assert near(gg.sweep(box(), aside, "x", clearance=5, offset=(2, 0, 0)), 4.0)
    start = gg.sweep(box(), high, "-z", clearance=2.0)
    assert (start.status, start.travel, start.is_exact) == ("start", 0.0, False)
    away = gg.sweep(box(), high, "-z", clearance=np.nextafter(2.0, 0.0))
    assert (away.status, away.is_exact, away.error_bound) == ("none", False, 0.0)
    assert away.to_dict()["error_bound"] is None and away.to_dict()["exact"] is False
    exact = gg.sweep(box(), high, "z")
    assert exact.is_exact and exact.error_bound == 0.0 and exact == gg.sweep(box(), high, "z", clearance=0)
    assert exact.to_dict()["exact"] is True and exact.to_dict()["error_bound"] == 0.0


def test_clearances_of_batches_and_of_each():
    near_box, far_box = box((0, 0, 3), (1, 1, 4)), box((0, 0, 6), (1, 1, 7))
    pair = gg.Pair(box(), [far_box, near_box])
    r = pair.sweep([(0, 0, 1), (0, 0, -1), (0, 0, 3)], clearance=0.5)
    assert np.allclose(r.travel, [1.5, math.inf, 1.5], atol=1e-13) and not r.is_exact.any()
    assert (r.error_bound[[0, 2]] > 0).all() and r.error_bound[1] == 0.0
    assert list(r) == [pair.sweep(d, clearance=0.5) for d in r.direction]
    assert np.allclose(pair.first_of_each("z", clearance=0.5).travel, [4.5, 1.5], atol=1e-13)
    assert pair.sweep(r.direction).is_exact.all()


def test_an_allowance_by_hand():
    table = box((-5, -5, -1), (5, 5, 0))
    c = gg.sweep(box(), table, "-z", offset=(0, 0, 3), allowance=0.25)
    assert (c.travel, c.is_exact, c.deviation) == (2.75, True, 0.0)
    assert c.to_dict()["growing"] == {"exact": False, "deviation": 0.0}
    thin = gg.sweep(box(), table, "-z", rule="solid", allowance=-0.25)
    assert (thin.status, thin.travel) == ("contact", 0.25)
    both = gg.sweep(box(), table, "-z", offset=(0, 0, 3), allowance=0.25, clearance=0.5)
    assert near(both, 2.25) and both.deviation == 0.0
    plain = gg.sweep(box(), table, "-z", allowance=0)
    assert plain.deviation is None and plain.to_dict()["growing"] is None and plain == gg.sweep(box(), table, "-z")
    pair = gg.Pair(box(), [table], allowance=0.25)
    assert np.array_equal(pair.moving.bounds, [[-0.25] * 3, [1.25] * 3])
    for answers in (pair.sweep(gg.sphere(3)), pair.last(gg.sphere(3)), pair.first_of_each("z"), pair.patch("-z").pairs):
        assert len(answers) and set(answers.deviation) == {0.0} and answers[0].deviation == 0.0
    assert pair.patch("z").first.deviation == pair.sweep("z").deviation == 0.0
    assert np.isnan(gg.Pair(box(), [table]).sweep(gg.sphere(3)).deviation).all()


def test_bodies_grow():
    corners_of_two = np.concatenate([box().vertices, [[9, 9, 9], [math.nan, 0, 0]]]).astype("f4")
    body = gg.Body(corners_of_two, np.concatenate([box().faces, [[9, 0, 1]]]))
    grown = body.grown(0.5)
    assert np.array_equal(grown.vertices[:8], box((-0.5,) * 3, (1.5,) * 3).vertices)
    assert np.array_equal(grown.vertices[8], [9, 9, 9]) and np.isnan(grown.vertices[9, 0])
    assert np.array_equal(grown.faces, body.faces) and grown.skipped_count == 1 and grown.deviation == 0.0
    skipped = [[[math.inf, 1, 2], [3, 4, 5], [6, 7, 8]]]
    soup = gg.Body(np.concatenate([skipped, box().triangles])).grown(-0.25)
    assert np.array_equal(soup.triangles, np.concatenate([skipped, box((0.25,) * 3, (0.75,) * 3).triangles]))
    assert body.deviation is None and gg.Body(body).deviation is None and gg.Body(grown).deviation == 0.0
    # A bolt, whose concave corners do not fit: what it shows is what the library asks about.
    bolt, bracket = gg.read(MESHES / "bolt.stl"), gg.read(MESHES / "bracket.stl")
    thick = bolt.grown(0.125)
    travels = [np.abs(((thick.triangles - bolt.triangles) * n[:, None]).sum(-1)) for n in [normals(bolt.triangles)]]
    assert np.isclose(np.abs(travels[0] - 0.125).max(), thick.deviation, atol=1e-9) and thick.deviation > 0.01
    directions = gg.sphere(50)
    ours, again = (gg.Pair(b, [bracket]).sweep(directions) for b in (thick, gg.Body(thick.triangles)))
    assert ours.travel.tobytes() == again.travel.tobytes() and ours.fixed_point.tobytes() == again.fixed_point.tobytes()
    assert thick.grown(0.125).deviation > 1.5 * thick.deviation and thick.moved(np.eye(4)).deviation == thick.deviation
    assert gg.sweep(thick, bracket, "-z") == gg.sweep(bolt, bracket, "-z", allowance=0.125)
    assert gg.sweep(bracket, [bracket, thick], "z").deviation == thick.deviation
    assert gg.sweep(box().grown(1), thick, "z").deviation == gg.sweep(thick, box().grown(1), "z").deviation == thick.deviation
    assert pickle.loads(pickle.dumps(thick)).deviation == thick.deviation


def normals(triangles):
    n = np.cross(triangles[:, 1] - triangles[:, 0], triangles[:, 2] - triangles[:, 0])
    return n / np.linalg.norm(n, axis=1, keepdims=True)


def test_a_start_touches_within_no_distance():
    table = box((-5, -5, -1), (5, 5, 0))
    assert gg.sweep(box(), table, "z", max_distance=0).status == "start"
    r = gg.Pair(box(), [table]).sweep([(0, 0, 1), (0, 0, -1)], max_distance=0.0)
    assert r.touches.all() and set(r.status) == {"start"} and (r.travel == 0.0).all()
