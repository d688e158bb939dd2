"""What the arguments may be, and what the errors of wrong ones say."""

import math
import os
import pathlib
import pickle
import re
import shutil
import sys

import numpy as np
import pytest

import gsl_geometry as gg
from support import FACES, MESHES, box, corners

CORNERS = corners((0, 0, 0), (1, 2, 3))


class Mesh:
    def __init__(self, vertices, faces):
        self.vertices, self.faces = vertices, faces


def refuses(error, text, call):
    with pytest.raises(error) as raised:
        call()
    assert str(raised.value) == text


@pytest.mark.parametrize("dtype", ["f4", "f8", ">f8", "<f4", "f2", "i4", "u8", "g"])
def test_vertices_of_every_type_of_number(dtype):
    body = gg.Body(CORNERS.astype(dtype), FACES)
    assert np.array_equal(body.triangles, CORNERS[FACES])
    assert body.triangles.dtype == np.float64
    assert body.vertices.dtype == (np.float32 if np.dtype(dtype).itemsize == 4 and dtype[-2] == "f" else np.float64)


@pytest.mark.parametrize("dtype", ["i1", "u1", "i2", "u2", "i4", "u4", "i8", "u8", ">i8", ">u2"])
def test_faces_of_every_type_of_whole_number(dtype):
    assert np.array_equal(gg.Body(CORNERS, FACES.astype(dtype)).triangles, CORNERS[FACES])


def strided(values):
    wide = np.zeros((2 * values.shape[0], 5), dtype=values.dtype)
    wide[::2, 1:4] = values
    return wide[::2, 1:4]


@pytest.mark.parametrize(
    "change", [strided, np.asfortranarray, lambda a: a[::-1][::-1], lambda a: a.tolist(), lambda a: tuple(map(tuple, a))]
)
def test_any_strides_and_sequences(change):
    assert np.array_equal(gg.Body(change(CORNERS), change(FACES)).triangles, CORNERS[FACES])


def test_read_only_arrays_are_taken_and_copied():
    vertices, faces = CORNERS.copy(), FACES.copy()
    vertices.flags.writeable = faces.flags.writeable = False
    body = gg.Body(vertices, faces)
    vertices.flags.writeable = True
    vertices[:] = 7.0
    assert np.array_equal(body.triangles, CORNERS[FACES])


def test_what_a_body_shows_cannot_be_changed():
    body = gg.Body(CORNERS, FACES)
    for made in (body.vertices, body.faces, body.triangles, gg.Body(CORNERS[FACES]).faces, body.moved(np.eye(4)).vertices):
        with pytest.raises(ValueError):
            made[0] = 0
    assert body.triangles is body.triangles


def test_triangles_and_objects_with_vertices_and_faces():
    for body in (gg.Body(CORNERS[FACES]), gg.Body(Mesh(CORNERS, FACES)), gg.Body(gg.Body(CORNERS, FACES))):
        assert np.array_equal(body.triangles, CORNERS[FACES])
    c = gg.sweep(Mesh(CORNERS, FACES), box((0, 0, 7), (1, 1, 8)), "z")
    assert c.travel == 4.0


def test_wrong_vertices():
    refuses(ValueError, "vertices: expected shape (n, 3), got (864, 2)", lambda: gg.Body(np.zeros((864, 2)), FACES))
    refuses(ValueError, "vertices: expected shape (n, 3), got (3,)", lambda: gg.Body([1, 2, 3], FACES))
    refuses(TypeError, "vertices: expected numbers, got <U1", lambda: gg.Body([["a", "b", "c"]], FACES))
    refuses(TypeError, "vertices: expected numbers, got complex128", lambda: gg.Body(CORNERS * 1j, FACES))
    refuses(TypeError, "vertices: expected numbers, got bool", lambda: gg.Body(CORNERS > 0, FACES))
    with pytest.raises(ValueError, match=r"^vertices: expected an array of numbers, got list \("):
        gg.Body([[1, 2, 3], [1, 2]], FACES)
    text = "triangles: expected shape (m, 3, 3), got (8, 3); vertices need faces beside them"
    refuses(ValueError, text, lambda: gg.Body(CORNERS))


def test_wrong_faces():
    many = np.tile(FACES, (72, 1))[:, :]
    vertices = np.zeros((864, 3))
    wrong = np.arange(864).reshape(288, 3)
    wrong[287, 2] = 864
    refuses(IndexError, "faces[287, 2] = 864, but there are 864 vertices", lambda: gg.Body(vertices, wrong))
    wrong[5, 1] = -1
    refuses(IndexError, "faces[5, 1] = -1, but there are 864 vertices", lambda: gg.Body(vertices, wrong))
    refuses(ValueError, "faces: expected shape (m, 3), got (864, 4)",
            lambda: gg.Body(vertices, np.zeros((864, 4), dtype=int)))
    refuses(TypeError, "faces: expected whole numbers, got float64", lambda: gg.Body(vertices, many.astype(float)))
    refuses(TypeError, "faces: expected whole numbers, got bool", lambda: gg.Body(vertices, many > 0))
    refuses(IndexError, f"faces[0, 0] = {2**40}, but there are 864 vertices",
            lambda: gg.Body(vertices, [[2**40, 0, 0]]))


def test_wrong_bodies_and_terms():
    a, b = box(), box((0, 0, 3), (1, 1, 4))
    refuses(TypeError, "moving: expected a Body or an object with vertices and faces, got int", lambda: gg.sweep(1, b, "z"))
    refuses(TypeError, "fixed[1]: expected a Body or an object with vertices and faces, got str; "
            "read(path) makes a body from a file", lambda: gg.sweep(a, [b, "b"], "z"))
    refuses(TypeError, "fixed: expected a Body, an object with vertices and faces, or some of them, got str; "
            "read(path) makes a body from a file", lambda: gg.sweep(a, "b.stl", "z"))
    refuses(TypeError, "moving: expected a Body or an object with vertices and faces, got PosixPath; "
            "read(path) makes a body from a file", lambda: gg.sweep(pathlib.PosixPath("a.stl"), b, "z"))
    refuses(TypeError, "Body: expected arrays or an object with vertices and faces, got str; "
            "read(path) makes a body from a file", lambda: gg.Body("a.stl"))
    refuses(ValueError, "direction: expected 3 numbers or an axis such as 'z' or '-z', got 'w'",
            lambda: gg.sweep(a, b, "w"))
    refuses(ValueError, "direction: expected 3 numbers or an axis such as 'z' or '-z', got shape (2,)",
            lambda: gg.sweep(a, b, (1, 2)))
    refuses(ValueError, "direction: expected a vector that is not zero, got (0, 0, 0)",
            lambda: gg.sweep(a, b, (0, 0, -0.0)))
    refuses(ValueError, "direction: expected finite numbers, got (nan, 0, 1)", lambda: gg.sweep(a, b, (math.nan, 0, 1)))
    refuses(ValueError, "offset: expected finite numbers, got (0, inf, 1)",
            lambda: gg.sweep(a, b, "z", offset=(0, math.inf, 1)))
    refuses(ValueError, "max_distance: expected a number of at least 0, got -1",
            lambda: gg.sweep(a, b, "z", max_distance=-1))
    refuses(ValueError, "max_distance: expected a number of at least 0, got nan",
            lambda: gg.sweep(a, b, "z", max_distance=math.nan))
    refuses(TypeError, "max_distance: expected a number, got str", lambda: gg.sweep(a, b, "z", max_distance="1"))
    refuses(ValueError, "rule: expected one of 'touch', 'leaving', 'solid', got 'hit'",
            lambda: gg.sweep(a, b, "z", rule="hit"))
    with pytest.raises(ValueError, match=r'^fixed\[0\]: rule="solid" expected a solid, got a body with a fault: '):
        gg.sweep(a, gg.Body([[[0, 0, 0], [1, 0, 0], [0, 1, 0]]]), "z", rule="solid")
    pair = gg.Pair(a, [b])
    for ask in (pair.last, pair.patch):
        with pytest.raises(ValueError, match="^rule: expected 'touch' or 'leaving' for "):
            ask("z", rule="solid")


def test_wrong_batches():
    pair = gg.Pair(box(), [box((0, 0, 3), (1, 1, 4))])
    refuses(ValueError, "directions: expected shape (k, 3), got (4, 2)", lambda: pair.sweep(np.ones((4, 2))))
    refuses(ValueError, "directions[2]: expected a vector that is not zero, got (0, 0, 0)",
            lambda: pair.sweep([(1, 0, 0), (0, 1, 0), (0, 0, 0)]))
    refuses(ValueError, "directions[1]: expected finite numbers, got (0, nan, 0)",
            lambda: pair.sweep([(1, 0, 0), (0, math.nan, 0)]))
    refuses(ValueError, "offset: expected shape (3,) or (2, 3), got (3, 3)",
            lambda: pair.sweep(np.ones((2, 3)), offset=np.zeros((3, 3))))
    refuses(ValueError, "offset[1]: expected finite numbers, got (0, inf, 0)",
            lambda: pair.sweep(np.ones((2, 3)), offset=[(0, 0, 0), (0, math.inf, 0)]))
    refuses(ValueError, "threads: expected a whole number of at least 0, got -1", lambda: gg.Pair(box(), [], threads=-1))
    refuses(TypeError, "n: expected a whole number, got float", lambda: gg.sphere(1.5))
    refuses(ValueError, "n: expected a whole number of at least 0, got -1", lambda: gg.sphere(-1))


def test_wrong_arrays_of_the_library():
    refuses(ValueError, "a: expected shape (..., 3), got (2,)", lambda: gg.point_segment((0, 0, 0), (1, 1), (0, 0, 1)))
    refuses(ValueError, "expected shapes that broadcast together, got p (2, 3), a (3, 3), b (3,)",
            lambda: gg.point_segment(np.zeros((2, 3)), np.zeros((3, 3)), (0, 0, 1)))
    refuses(ValueError, "A: expected shape (..., 3, 3), got (3,)",
            lambda: gg.triangle_sweep((0, 0, 1), (0, 0, 1), np.zeros((3, 3))))
    refuses(ValueError, "two_sided: expected 2 flags, got 1",
            lambda: gg.triangle_sweep((0, 0, 1), np.zeros((3, 3)), np.zeros((3, 3)), two_sided=(True,)))
    refuses(ValueError, "a: expected shape (n, n), got (2, 3)", lambda: gg.LU(np.zeros((2, 3))))
    refuses(ValueError, "b: expected shape (2,) or (2, k), got (3,)", lambda: gg.LU(np.eye(2)).solve([1, 2, 3]))
    refuses(ValueError, "adjacency: expected shape (n, n), got (2, 3)", lambda: gg.label(np.zeros((2, 3), bool)))
    refuses(TypeError, "adjacency: expected bool or whole numbers, got float64", lambda: gg.label(np.zeros((2, 2))))
    refuses(ValueError, "matrix: expected shape (4, 4), got (3, 3)", lambda: gg.Transform(np.eye(3)))
    refuses(ValueError, "axis: expected a length of at least 1e-06, got (0.0, 0.0, 0.0)",
            lambda: gg.Transform.rotation((0, 0, 0), (0, 0, 0), 1.0))
    refuses(ValueError, "linear: expected a number of at least 0, got -1", lambda: gg.tolerances(linear=-1))


def test_errors_name_the_argument_for_what_no_array_holds():
    a, b, ragged = box(), box((0, 0, 3), (1, 1, 4)), [[1, 2, 3], [1, 2]]
    for name, call in {
        "vertices": lambda: gg.Body(ragged, FACES),
        "faces": lambda: gg.Body(CORNERS, ragged),
        "triangles": lambda: gg.Body(ragged),
        "direction": lambda: gg.sweep(a, b, ragged),
        "offset": lambda: gg.sweep(a, b, "z", offset=ragged),
        "directions": lambda: gg.Pair(a, b).sweep(ragged),
        "adjacency": lambda: gg.label(ragged),
        "matrix": lambda: gg.Transform(ragged),
        "transform": lambda: a.moved(ragged),
        "points": lambda: gg.Transform.identity().apply(ragged),
        "a": lambda: gg.LU(ragged),
        "b": lambda: gg.LU(np.eye(2)).solve(ragged),
        "p": lambda: gg.point_segment(ragged, (0, 0, 0), (0, 0, 1)),
    }.items():
        with pytest.raises((ValueError, TypeError), match=f"^{name}: expected "):  # a TypeError before NumPy 1.24
            call()
    refuses(TypeError, "fixed: expected a Body, an object with vertices and faces, or some of them, got int",
            lambda: gg.Pair(a, 5))
    refuses(TypeError, "two_sided: expected 2 flags, got bool",
            lambda: gg.triangle_sweep((0, 0, 1), np.zeros((3, 3)), np.zeros((3, 3)), two_sided=True))
    refuses(TypeError, "path: expected a str, bytes or a path, got int", lambda: gg.read(5))
    for call in (lambda: gg.read("x", progress=5), lambda: gg.Pair(a, b, progress=5), lambda: gg.Pair(a, b).sweep("z", progress=5)):
        refuses(TypeError, "progress: expected a function of the part done, got int", call)


def test_errors_name_the_argument_for_huge_numbers():
    a, b = box(), box((0, 0, 3), (1, 1, 4))
    for n in (2**53 + 1, 2**64):
        refuses(ValueError, f"n: expected a whole number of at most {2**53}, got {n}", lambda: gg.sphere(n))
        refuses(ValueError, f"limit: expected a whole number of at most {2**53}, got {n}",
                lambda: gg.Pair(a, b).patch("z", limit=n))
    with pytest.raises(MemoryError):
        gg.sphere(2**53)
    refuses(ValueError, f"threads: expected a whole number of at most {2**32 - 1}, got {2**32}",
            lambda: gg.Pair(a, b, threads=2**32))
    refuses(ValueError, "max_distance: expected a number within the range of double, got a larger one",
            lambda: gg.sweep(a, b, "z", max_distance=10**400))
    refuses(ValueError, "angle: expected a finite number, got nan",
            lambda: gg.Transform.rotation((0, 0, 0), "z", math.nan))


def test_wrong_clearances_and_allowances():
    a, b = box(), box((0, 0, 3), (1, 1, 4))
    pair = gg.Pair(a, b)
    for ask in (lambda **terms: gg.sweep(a, b, "z", **terms), lambda **terms: pair.sweep("z", **terms),
                lambda **terms: pair.first_of_each("z", **terms)):
        refuses(ValueError, "clearance: expected a number of at least 0, got -1", lambda: ask(clearance=-1))
        refuses(ValueError, "clearance: expected a finite number, got inf", lambda: ask(clearance=math.inf))
        refuses(ValueError, "clearance: expected a finite number, got nan", lambda: ask(clearance=math.nan))
        refuses(TypeError, "clearance: expected a number, got str", lambda: ask(clearance="1"))
        for rule in ("leaving", "solid"):
            refuses(ValueError, f'clearance: expected 0 with rule="{rule}", got 0.5', lambda: ask(clearance=0.5, rule=rule))
            assert ask(clearance=0.0, rule=rule).travel == 2.0
    for ask in (lambda e: gg.sweep(a, b, "z", allowance=e), lambda e: gg.Pair(a, [b], allowance=e)):
        refuses(ValueError, "allowance: expected a finite number, got nan", lambda: ask(math.nan))
        refuses(TypeError, "allowance: expected a number, got str", lambda: ask("1"))
        with pytest.raises(ValueError, match="^allowance: expected a length by which the body can grow, but triangle 0 turns"):
            ask(-0.5)
    refuses(ValueError, "e: expected a finite number, got -inf", lambda: a.grown(-math.inf))
    with pytest.raises(ValueError, match="^e: expected a length by which the body can grow, but triangle 0 turns"):
        a.grown(-0.5)


def test_products_and_inverses_of_transforms_are_transforms():
    scaled = gg.Transform(np.diag([1 + 4e-7, 1 + 4e-7, 1 + 4e-7, 1]))
    product = scaled @ scaled @ scaled
    assert np.allclose(product.matrix, np.diag([1 + 1.2e-6] * 3 + [1]), rtol=0, atol=1e-12)
    # The inverse of a rotation is its transposed matrix.
    assert np.array_equal(product.inverse().matrix, product.matrix)
    turn = gg.Transform(gg.Transform.rotation((1, 2, 3), (1, 1, 0), 0.3).matrix.astype(np.float32))
    chain = turn
    for _ in range(100):
        chain = chain @ turn
    assert not chain.matrix.flags.writeable
    far = gg.Transform.translation((1e308, 0, 0))
    refuses(ValueError, "matrix[0, 3]: expected a finite number, got inf", lambda: far @ far)


def test_an_axis_has_any_length():
    for length in (1e-3, 1.0, 1e150, 1e200, 1e308):
        turned = gg.Transform.rotation((0, 0, 0), (0, 0, length), math.pi / 2).apply((1, 0, 0))
        assert np.allclose(turned, (0, 1, 0), rtol=0, atol=1e-15)


def test_rows_are_selected_by_numbers():
    r = gg.Pair(box(), [box((0, 0, 3), (1, 1, 4))]).sweep(gg.sphere(5))
    assert repr(r[np.int64(2)]) == repr(r[2])
    for wrong in (True, np.bool_(True), range(3), 1.5, None, "1"):
        text = f"expected a number, a slice, a list or an array, got {type(wrong).__name__}"
        refuses(TypeError, text, lambda wrong=wrong: r[wrong])


def test_a_copy_of_a_body_knows_what_it_is_of():
    bolt = gg.read(MESHES / "bolt.stl").grown(0.125)
    copy = gg.Body(bolt)
    assert copy.deviation == bolt.deviation and copy.file == bolt.file


def test_transforms_are_rigid():
    turn = gg.Transform.rotation((1, 2, 3), (1, 1, 0), 0.3).matrix
    gg.Transform(turn.astype(np.float32))
    for row, column in ((0, 0), (2, 3), (3, 1)):
        for value in (math.nan, math.inf):
            wrong = turn.copy()
            wrong[row, column] = value
            refuses(ValueError, f"matrix[{row}, {column}]: expected a finite number, got {value}", lambda: gg.Transform(wrong))
    wrong = turn.copy()
    wrong[3, 3] = 2
    refuses(ValueError, "matrix[3]: expected (0, 0, 0, 1), got (0, 0, 0, 2)", lambda: gg.Transform(wrong))
    text = "matrix: expected a rotation in the first three columns, got "
    refuses(ValueError, text + "a reflection", lambda: gg.Transform(np.diag([1.0, 1, -1, 1])))
    refuses(ValueError, text + "products of columns that are off by 3", lambda: gg.Transform(np.diag([1.0, 2, 1, 1])))
    # The limit, closed: 1 + error is exact for the square of the scale that is rounded up or down to it.
    scales = [np.sqrt(1 + 1e-6) + k * 2.0**-52 for k in range(-3, 4)]
    fine = [abs(s * s - 1.0) <= 1e-6 for s in scales]
    assert fine == sorted(fine, reverse=True) and True in fine and False in fine
    for scale, is_fine in zip(scales, fine):
        matrix = np.diag([1.0, scale, 1, 1])
        if is_fine:
            gg.Transform(matrix)
        else:
            with pytest.raises(ValueError, match="off by 1e-06$"):
                gg.Transform(matrix)
    huge = np.eye(4)
    huge[:2, :2] = [[1e200, 1e200], [1e200, -1e200]]  # with products that are infinite or NaN
    for matrix in (huge, np.diag([1e200, 1, 1, 1])):
        with pytest.raises(ValueError, match=text + "products of columns that are off by (inf|nan)"):
            gg.Transform(matrix)
    assert np.array_equal(box().moved(np.diag([1.0, 2, 1, 1])).bounds[1], [1, 2, 1])


@pytest.mark.skipif(sys.platform != "linux", reason="file names are bytes")
def test_file_names_that_are_not_text(tmp_path):
    path = os.fsencode(tmp_path) + b"/\xff part.stl"
    text = os.fsdecode(path)
    shutil.copy(MESHES / "bolt.stl", path)
    for name in (path, text):
        body = gg.read(name)
        assert body.file == text and os.fsencode(body.file) == path and pickle.loads(pickle.dumps(body)).file == text
        assert repr(body) == f"Body(288 triangles, from {text!r})"
    with open(path, "wb") as file:
        file.write(b"solid x\nfacet")
    with pytest.raises(gg.MeshError) as raised:
        gg.read(path)
    assert str(raised.value).startswith(text + ": ")
    odd = os.fsencode(tmp_path) + b"/\xff.obj"
    with open(odd, "wb") as file:
        file.write(b"v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2\nf 1 2 3\n")
    with pytest.warns(gg.MeshWarning, match=re.escape(os.fsdecode(odd))):
        gg.read(odd)


def test_files_that_cannot_be_read(tmp_path):
    with pytest.raises(FileNotFoundError):
        gg.read(tmp_path / "none.stl")
    with pytest.raises(IsADirectoryError):
        gg.read(tmp_path)
    damaged = tmp_path / "damaged.stl"
    damaged.write_bytes(b"solid x\nfacet")
    with pytest.raises(gg.MeshError, match="damaged.stl"):
        gg.read(str(damaged))
    assert issubclass(gg.MeshError, ValueError)
    with pytest.raises(ValueError):
        gg.read("a\0b.stl")


def test_paths_of_every_type_and_warnings(tmp_path):
    assert gg.read(MESHES / "bolt.stl").triangle_count == gg.read(str(MESHES / "bolt.stl").encode()).triangle_count == 288
    odd = tmp_path / "two.obj"
    odd.write_text("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2\nf 1 2 3\n")
    with pytest.warns(gg.MeshWarning, match="two.obj"):
        assert gg.read(odd).triangle_count == 1


def test_an_exception_of_progress_passes_through():
    def progress(part):
        raise KeyError("stop")

    pair = gg.Pair(box(), [box((0, 0, 3), (1, 1, 4))])
    with pytest.raises(KeyError, match="stop"):
        pair.sweep(gg.sphere(10), progress=progress)
    with pytest.raises(KeyError, match="stop"):
        gg.read(MESHES / "bolt.stl", progress=progress)
    parts = []
    pair.sweep(gg.sphere(10), progress=parts.append)
    assert parts[-1] == 1.0 and parts == sorted(parts)


def test_empty_bodies_and_batches():
    for empty in (gg.Body([], []), gg.Body(np.zeros((0, 3)), np.zeros((0, 3), int)), gg.Body(np.zeros((0, 3, 3)))):
        assert empty.triangle_count == 0 and empty.triangles.shape == (0, 3, 3)
        assert np.array_equal(empty.bounds, np.zeros((2, 3)))
        assert gg.sweep(empty, box(), "z").status == "none"
        assert pickle.loads(pickle.dumps(empty)).triangle_count == 0
    pair = gg.Pair(box(), [])
    assert pair.sweep("z").status == "none"
    assert len(pair.first_of_each("z")) == 0
    r = gg.Pair(box(), [box()]).sweep([])
    assert len(r) == 0 and r.normal.shape == (0, 3) and list(r) == [] and r.status.shape == (0,)
    assert gg.sphere(0).shape == (0, 3)


def test_triangles_with_nan_are_skipped_and_counted():
    vertices = CORNERS.copy()
    vertices[0, 1] = math.nan
    vertices[6, 0] = math.inf
    body = gg.Body(vertices, FACES)
    expected = int(np.any((FACES == 0) | (FACES == 6), axis=1).sum())
    assert body.skipped_count == expected > 0
    assert "of them skipped" in repr(body)


def test_huge_coordinates():
    far = gg.Body(corners((0, 0, 1e300), (1, 1, 2e300)), FACES)
    assert gg.sweep(box(), far, "z").travel == 1e300
    most = np.finfo(float).max
    low = gg.Body(np.array([[0, 0, -most], [1, 0, -most], [0, 1, -most]]), [[0, 1, 2]])
    high = gg.Body(np.array([[0, 0, most], [1, 0, most], [0, 1, most]]), [[0, 1, 2]])
    with pytest.raises(OverflowError):
        gg.sweep(low, high, "z")
    with pytest.raises(OverflowError, match=r"^directions\[1\]: the travel or a point is beyond the range of double$"):
        gg.Pair(low, [high]).sweep([(1, 0, 0), (0, 0, 1)])
    many = np.tile((1.0, 0.0, 0.0), (70000, 1))
    many[69000] = (0, 0, 1)
    with pytest.raises(OverflowError, match=r"^directions\[69000\]: "):
        gg.Pair(low, [high]).sweep(many)


def test_a_damaged_pickle_of_a_body_is_refused():
    restore, (kind, version, values) = gg.Body(np.zeros((3, 3)), [[0, 1, 2]]).__reduce__()
    for damaged in ({"vertices": np.zeros(6), "faces": None}, {"vertices": np.zeros((4, 2)), "faces": None},
                    {"faces": np.zeros(3, dtype=np.uint32)}):
        with pytest.raises(ValueError, match=r"expected the shapes \(n, 3\) and \(m, 3\)"):
            restore(kind, version, {**values, **damaged})


def copied(thing, protocol=pickle.HIGHEST_PROTOCOL):
    return pickle.loads(pickle.dumps(thing, protocol))


def pickled():
    """Returns one thing of each type that can be pickled."""
    pair = gg.Pair(box(), [box((0, 0, 3), (1, 1, 4))], allowance=0.125)
    patch, r = pair.patch("z"), pair.sweep(gg.sphere(5), clearance=0.25)
    line = gg.point_segment((0, 1, 0), (0, 0, 0), (1, 0, 0))
    lines = gg.segment_segment((0, 0, 0), (2, 0, 0), (1, -1, 1), (1, 1, 1))
    sweep = gg.triangle_sweep((0, 0, 1), np.zeros((3, 3)), np.zeros((3, 3)))
    return [pair.moving, pair, r, r[0], pair.sweep("-z"), patch, patch.first.moving, gg.Transform.identity(), line, lines, sweep]


@pytest.mark.parametrize("k", range(11))
def test_pickles_hold_names_and_a_version(k):
    thing = pickled()[k]
    restore, (kind, version, values) = thing.__reduce__()
    assert kind is type(thing) and version == 1 and values and all(isinstance(name, str) for name in values)
    again = restore(kind, version, dict(reversed(list(values.items()))))
    assert pickle.dumps(copied(again)) == pickle.dumps(copied(thing))
    name = f"gsl_geometry.{kind.__name__}"
    with pytest.raises(pickle.UnpicklingError, match=f"^{name}: expected a pickle of version 1, got version 2; "):
        restore(kind, 2, values)
    for damaged in (dict(list(values.items())[1:]), {**values, "more": 1}):
        with pytest.raises(pickle.UnpicklingError, match=f"^{name}: expected a whole pickle, got a damaged one "):
            restore(kind, version, damaged)


@pytest.mark.parametrize("protocol", range(2, pickle.HIGHEST_PROTOCOL + 1))
def test_bodies_and_answers_are_pickled(protocol):
    def copy(thing):
        return pickle.loads(pickle.dumps(thing, protocol))

    body = copy(gg.read(MESHES / "bolt.stl"))
    bracket = copy(gg.Body(gg.read(MESHES / "bracket.stl")))
    assert repr(body) == f"Body(288 triangles, from {str(MESHES / 'bolt.stl')!r})"
    with pytest.raises(ValueError):
        body.vertices[0] = 0
    single = copy(gg.Body(CORNERS.astype("f4"), FACES))
    assert single.vertices.dtype == np.float32 and np.array_equal(single.faces, FACES)
    pair = copy(gg.Pair(body, [bracket]))
    c = pair.sweep("-z")
    assert copy(c) == c and copy(c).to_dict() == c.to_dict() and hash(copy(c)) == hash(c)
    r = pair.sweep(gg.sphere(20))
    for name, column in r.to_dict().items():
        assert np.array_equal(getattr(copy(r), name), column, equal_nan=column.dtype.kind == "f")
    patch = copy(pair.patch("-z"))
    assert patch.pair_count == len(patch.pairs) == pair.patch("-z").pair_count
    turn = gg.Transform.rotation((0, 0, 0), "z", 1.0)
    assert copy(turn) == turn
