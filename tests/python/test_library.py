"""Distances, sweeps of triangles, the solver, the labelling and transforms, compared with NumPy and SciPy."""

import math
import sys
import threading
import time
import warnings

import numpy as np
import pytest
from scipy import linalg
from scipy.sparse.csgraph import connected_components

import gsl_geometry as gg

RANDOM = np.random.default_rng(20261121)


def points(*shape):
    return RANDOM.uniform(-1.0, 1.0, (*shape, 3))


def nearest_on_segment(p, a, b):
    d = b - a
    t = np.clip(((p - a) * d).sum(-1) / (d * d).sum(-1), 0.0, 1.0)
    return a + d * t[..., None]


def test_point_segment():
    p, a, b = points(3, 5000)
    distance, nearest = gg.point_segment(p, a, b)
    expected = nearest_on_segment(p, a, b)
    assert np.allclose(nearest, expected, atol=2e-6)  # a foot up to the tolerance beyond an end counts
    assert np.allclose(distance, np.linalg.norm(p - expected, axis=1), atol=2e-6)


def test_a_short_segment_is_its_first_point():
    distance, nearest = gg.point_segment((0, 3, 0), (0, 0, 0), (1e-7, 0, 0))
    assert distance == 3.0 and np.array_equal(nearest, [0, 0, 0])


def nearest_on_triangle(p, a, b, c):
    """Returns the distance by the plane and the edges."""
    n = np.cross(b - a, c - a)
    n /= np.linalg.norm(n, axis=-1, keepdims=True)
    foot = p - n * ((p - a) * n).sum(-1, keepdims=True)
    inside = np.ones(len(p), bool)
    for q, r in ((a, b), (b, c), (c, a)):
        inside &= (np.cross(r - q, foot - q) * n).sum(-1) >= 0
    edges = [np.linalg.norm(p - nearest_on_segment(p, q, r), axis=-1) for q, r in ((a, b), (b, c), (c, a))]
    return np.where(inside, np.linalg.norm(p - foot, axis=-1), np.min(edges, axis=0))


def test_point_triangle():
    p, a, b, c = points(4, 5000)
    assert np.allclose(gg.point_triangle(p, a, b, c), nearest_on_triangle(p, a, b, c), atol=2e-6)
    assert math.isnan(gg.point_triangle((0, 0, 1), (0, 0, 0), (1, 0, 0), (2, 0, 0)))


def test_segment_segment():
    a0, a1, b0, b1 = points(4, 300)
    distance, on_a, on_b = gg.segment_segment(a0, a1, b0, b1)
    assert np.allclose(np.linalg.norm(on_a - on_b, axis=1), distance)
    assert np.allclose(nearest_on_segment(on_a, a0, a1), on_a, atol=2e-6)
    assert np.allclose(nearest_on_segment(on_b, b0, b1), on_b, atol=2e-6)
    # No point of a fine grid on both is nearer, and the grid comes close.
    t = np.linspace(0, 1, 201)
    for k in range(300):
        u = a0[k] + (a1[k] - a0[k]) * t[:, None]
        least = np.linalg.norm(u - nearest_on_segment(u, b0[k], b1[k]), axis=1).min()
        assert least - 0.02 <= distance[k] <= least + 2e-6
    assert math.isnan(gg.segment_segment((0, 0, 0), (1, 0, 0), (2e10, 0, 0), (2e10, 1, 0)).distance)


def test_shapes_broadcast():
    p = points(4, 1, 3)
    a, b, c = points(3)[None], points(3)[None], points(3)[None]
    single = gg.point_triangle(p, a, b, c)
    assert single.shape == (4, 1, 3)
    for k in range(4):
        for j in range(3):
            assert single[k, 0, j] == gg.point_triangle(p[k, 0, j], a[0, j], b[0, j], c[0, j])
    assert gg.point_segment(points(4, 1), points(1, 5), (0, 0, 0)).nearest.shape == (4, 5, 3)
    number = gg.point_triangle((0, 0, 1), (0, 0, 0), (1, 0, 0), (0, 1, 0))
    assert isinstance(number, float) and number == 1.0
    assert gg.point_triangle(np.zeros((0, 3)), (0, 0, 0), (1, 0, 0), (0, 1, 0)).shape == (0,)
    wide = np.asfortranarray(points(50))
    assert np.array_equal(gg.point_segment(wide[::2], (0, 0, 0), (1, 0, 0)).distance,
                          gg.point_segment(np.ascontiguousarray(wide[::2]), (0, 0, 0), (1, 0, 0)).distance)


TRIANGLE = np.array([[0.0, 0, 0], [1, 0, 0], [0, 1, 0]])


def test_triangle_sweep():
    up = TRIANGLE + (0, 0, 3)
    found, distance, on_a, on_b = gg.triangle_sweep([(0, 0, 2), (0, 0, -1), (1, 0, 0)], TRIANGLE, up)
    assert found.tolist() == [True, False, False] and distance.tolist() == [3.0, math.inf, math.inf]
    assert np.array_equal(on_a[0] + (0, 0, 3), on_b[0]) and np.isnan(on_a[1:]).all() and np.isnan(on_b[1:]).all()
    # A faces along the direction and B does too, so that B must be reversed.
    for flags, expected in (((True, True), True), ((False, True), True), ((True, False), False)):
        assert gg.triangle_sweep((0, 0, 1), TRIANGLE, up, two_sided=flags).found == expected
    assert gg.triangle_sweep((0, 0, 1), TRIANGLE[::-1], up, two_sided=(False, True)).found == False  # noqa: E712
    lifts = np.arange(1.0, 6.0)
    many = gg.triangle_sweep((0, 0, 1), TRIANGLE, TRIANGLE + lifts[:, None, None] * np.array([0, 0, 1.0]))
    assert np.array_equal(many.distance, lifts)


def test_lu_equals_numpy_and_scipy():
    for size in (1, 2, 3, 17, 120):
        a = RANDOM.normal(size=(size, size))
        lu = gg.LU(a)
        x = RANDOM.normal(size=(size, 4))
        assert np.allclose(lu.solve(a @ x), x, atol=1e-8)
        assert np.allclose(lu.solve(a @ x[:, 0]), np.linalg.solve(a, a @ x[:, 0]), atol=1e-8)
        assert np.isclose(lu.determinant, np.linalg.det(a))
        order = np.arange(size)
        for j, p in enumerate(lu.pivots):
            order[[j, p]] = order[[p, j]]
        lower = np.tril(lu.factors, -1) + np.eye(size)
        assert np.allclose(lower @ np.triu(lu.factors), a[order])
    # With rows of one scale the pivots are those of SciPy.
    rows = a / np.abs(a).max(axis=1, keepdims=True)
    factors, pivots = linalg.lu_factor(rows)
    assert np.array_equal(gg.LU(rows).pivots[:1], pivots[:1])


def test_lu_keeps_the_matrix_and_solves_any_shape():
    a = np.asfortranarray([[0.0, 2.0], [1.0, 0.0]])
    lu = gg.LU(a)
    assert np.array_equal(a, [[0, 2], [1, 0]])
    assert lu.solve(np.array([[4, 2, 0], [3, 1, 5]])).tolist() == [[3, 1, 5], [2, 1, 0]]
    assert lu.solve(np.zeros((2, 0))).shape == (2, 0)
    assert lu.parity == -1 and repr(lu) == "LU(2 x 2)"
    empty = gg.LU(np.zeros((0, 0)))
    assert empty.solve([]).shape == (0,) and empty.determinant == 1.0 and empty.pivots.shape == (0,)


def test_lu_warns_of_a_floor_and_refuses_a_zero_row():
    with pytest.warns(gg.PivotWarning, match="^a: 1 of 2 pivots were below 1e-16 and became 1e-16$"):
        lu = gg.LU([[1, 2], [2, 4]])
    assert lu.factors[1, 1] == 1e-16
    with pytest.raises(np.linalg.LinAlgError, match="in row 1$"):
        gg.LU([[1, 2], [0, 9e-17]])
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        gg.LU([[1, 2], [3, 4]])


@pytest.mark.parametrize("density", [0.0, 0.002, 0.01, 1.0])
def test_labels_equal_scipy(density):
    edges = RANDOM.uniform(size=(300, 300)) < density
    edges |= edges.T
    labels, count = gg.label(edges)
    expected_count, expected = connected_components(edges, directed=False)
    assert count == expected_count and np.array_equal(labels, expected)
    assert np.array_equal(gg.label(edges.astype(np.int64) * 256)[0], labels)
    assert np.array_equal(gg.label(np.asfortranarray(edges))[0], labels)


def test_labels_follow_edges_in_their_direction():
    edges = np.zeros((2, 2), bool)
    edges[1, 0] = True
    assert gg.label(edges)[1] == 2 and gg.label(edges.T)[1] == 1
    assert gg.label(np.zeros((0, 0), bool))[1] == 0


def test_transforms():
    turn = gg.Transform.rotation((1, 0, 0), (0, 0, 2), math.pi / 2)
    assert np.allclose(turn.apply((0, 0, 0)), (1, -1, 0), atol=1e-15)
    shift = gg.Transform.translation((1, 2, 3))
    p = points(7, 2)
    assert np.allclose((turn @ shift).apply(p), turn.apply(shift.apply(p)))
    assert np.allclose((turn @ shift).matrix, turn.matrix @ shift.matrix)
    assert np.allclose((turn @ shift).inverse().apply((turn @ shift).apply(p)), p)
    assert np.allclose(shift.apply(p), p + (1, 2, 3)) and shift.apply(p).shape == (7, 2, 3)
    assert turn == gg.Transform(turn.matrix) and turn != shift and hash(turn) == hash(gg.Transform(turn.matrix))
    with pytest.raises(ValueError):
        turn.matrix[0, 0] = 2.0
    x, y, z = p[0, 0].tolist()
    for row, moved in zip(turn.matrix.tolist(), turn.apply(p[0, 0]).tolist()):
        assert row[0] * x + row[1] * y + row[2] * z + row[3] == moved


def test_tolerances_hold_within_and_are_restored():
    before = repr(gg.tolerances())
    short = (0, 0, 1), (0, 0, 0), (1e-4, 0, 0)
    assert gg.point_segment((5e-5, 1, 0), *short[1:]).nearest[0] == 5e-5
    with pytest.raises(KeyError):
        with gg.tolerances(linear=1e-3):
            assert gg.point_segment((5e-5, 1, 0), *short[1:]).nearest[0] == 0.0
            with gg.tolerances(cosine=1e-3) as inner:
                assert inner.linear == 1e-3 and inner.cosine == 1e-3
            assert gg.tolerances().cosine == 1e-10 and gg.tolerances().linear == 1e-3
            raise KeyError
    assert repr(gg.tolerances()) == before


def test_tolerances_change_while_other_threads_compute():
    stop = threading.Event()
    seen = set()
    p, a, b, c = points(4, 2000)
    both = []
    for tolerance in (1e-6, 0.5):
        with gg.tolerances(linear=tolerance):
            both.append(gg.point_triangle(p, a, b, c).tobytes())

    def ask():
        while not stop.is_set():
            seen.add(gg.point_triangle(p, a, b, c).tobytes())

    threads = [threading.Thread(target=ask) for _ in range(3)]
    for thread in threads:
        thread.start()
    for _ in range(200):
        with gg.tolerances(linear=0.5):
            pass
    stop.set()
    for thread in threads:
        thread.join()
    assert seen <= set(both) and both[0] != both[1]


def test_tolerances_are_read_whole():
    # Writers change all three at once and run beside the reader, which must not see some of each.
    core, stop = sys.modules["gsl_geometry._core"], threading.Event()
    sets = [tuple(size * value for value in core.tolerances()) for size in (2.0, 3.0)]

    def write(values):
        while not stop.is_set():
            core.set_tolerances(*values)

    with gg.tolerances():
        threads = [threading.Thread(target=write, args=(values,)) for values in sets]
        core.set_tolerances(*sets[0])
        for thread in threads:
            thread.start()
        seen, asked, end = set(), 0, time.monotonic() + 30.0
        while asked < 20000 or len(seen) < 2 and time.monotonic() < end:
            seen.add(core.tolerances())
            asked += 1
        stop.set()
        for thread in threads:
            thread.join()
    assert seen == set(sets)


def test_nan_passes_through():
    nan = np.full(3, np.nan)
    assert math.isnan(gg.point_segment(nan, (0, 0, 0), (1, 0, 0)).distance)
    assert math.isnan(gg.point_triangle(nan, *TRIANGLE))
    assert math.isnan(gg.segment_segment(nan, nan, (0, 0, 0), (1, 0, 0)).distance)
    sweep = gg.triangle_sweep((0, 0, 1), np.full((3, 3), np.nan), TRIANGLE)
    assert not math.isnan(sweep.distance)
    assert np.isnan(gg.Transform.identity().apply(nan)).all()


def test_equal_transforms_have_equal_hashes():
    there, back = gg.Transform.translation((0, 0, -5)), gg.Transform.translation((0, 0, 5)).inverse()
    assert there == back and hash(there) == hash(back)
