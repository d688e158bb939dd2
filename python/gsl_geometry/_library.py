"""Distances, the sweep of triangles, the solver, the labelling and transforms, on arrays."""

from __future__ import annotations

import contextlib
import warnings
from typing import Any, Iterator, NamedTuple, Optional, Sequence, Tuple

import numpy as np

from . import _arguments, _core, _pickles

__all__ = [
    "LU", "PivotWarning", "Tolerances", "Transform", "TriangleSweep", "label", "point_segment", "point_triangle",
    "segment_segment", "tolerances", "triangle_sweep",
]  # fmt: skip


class PivotWarning(RuntimeWarning):
    """A pivot of a decomposition was below 1e-16 and was replaced."""


class PointSegment(NamedTuple):
    """Distances from points to segments, and the nearest points.

    >>> import gsl_geometry as gg
    >>> gg.point_segment((0, 1, 0), (-1, 0, 0), (1, 0, 0)).nearest
    array([0., 0., 0.])
    """

    distance: np.ndarray  #: shape (...)
    nearest: np.ndarray  #: on the segment, shape (..., 3)

    __reduce__ = _pickles.reduced_tuple


class SegmentSegment(NamedTuple):
    """Distances between segments, and the ends of the shortest connections.

    >>> import gsl_geometry as gg
    >>> gg.segment_segment((0, 0, 0), (2, 0, 0), (1, -1, 1), (1, 1, 1)).on_a
    array([1., 0., 0.])
    """

    distance: np.ndarray  #: shape (...)
    on_a: np.ndarray  #: shape (..., 3)
    on_b: np.ndarray  #: shape (..., 3)

    __reduce__ = _pickles.reduced_tuple


class TriangleSweep(NamedTuple):
    """The answers of triangle_sweep.

    >>> import gsl_geometry as gg
    >>> t = [[0, 0, 0], [1, 0, 0], [0, 1, 0]]
    >>> gg.triangle_sweep((0, 0, 1), t, [[x, y, z + 3] for x, y, z in t]).distance
    3.0
    """

    found: np.ndarray  #: whether there is a contact, shape (...), of bool
    distance: np.ndarray  #: shape (...); infinite without a contact
    on_a: np.ndarray  #: the contact on A, shape (..., 3); NaN without a contact
    on_b: np.ndarray  #: the contact on B, shape (..., 3); NaN without a contact

    __reduce__ = _pickles.reduced_tuple


def _shaped(shape: Tuple[int, ...], flat: np.ndarray) -> Any:
    """Returns the rows in the common shape; a number of one row alone is a scalar."""
    made = flat.reshape(shape + flat.shape[1:])
    return made[()] if made.ndim == 0 else made


POINT = (3,)


def point_segment(p: Any, a: Any, b: Any) -> PointSegment:
    """Returns the distance from points p to the segments from a to b, and the nearest points.

    Each argument has the shape (..., 3), and the shapes broadcast. Distances are in the units of the points. A
    segment shorter than the linear tolerance counts as its point a.

    >>> import gsl_geometry as gg
    >>> distance, nearest = gg.point_segment([(0, 3, 0), (5, 4, 0)], (-1, 0, 0), (2, 0, 0))
    >>> distance
    array([3., 5.])
    >>> nearest
    array([[0., 0., 0.],
           [2., 0., 0.]])
    """
    shape, count, (p, a, b) = _arguments.broadcast("pab", (p, a, b), (POINT,) * 3)
    distance, nearest = _core.point_segment(p, a, b, count)
    return PointSegment(_shaped(shape, distance), _shaped(shape, nearest))


def point_triangle(p: Any, a: Any, b: Any, c: Any) -> Any:
    """Returns the distance from points p to the triangles a, b, c.

    Each argument has the shape (..., 3), and the shapes broadcast. A triangle without a normal, because its
    corners lie on one line, has the distance NaN.

    >>> import gsl_geometry as gg
    >>> gg.point_triangle([(0.2, 0.2, 2), (3, 0, 0)], (0, 0, 0), (1, 0, 0), (0, 1, 0))
    array([2., 2.])
    """
    shape, count, (p, a, b, c) = _arguments.broadcast("pabc", (p, a, b, c), (POINT,) * 4)
    return _shaped(shape, _core.point_triangle(p, a, b, c, count))


def segment_segment(a0: Any, a1: Any, b0: Any, b1: Any) -> SegmentSegment:
    """Returns the distance between the segments a0-a1 and b0-b1, and the ends of the shortest connection.

    Each argument has the shape (..., 3), and the shapes broadcast. Segments that are 1e10 or farther apart have
    NaN. For the ends of the other, a segment shorter than the linear tolerance is its first point.

    >>> import gsl_geometry as gg
    >>> gg.segment_segment((0, 0, 0), (2, 0, 0), (1, -1, 1), (1, 1, 1)).distance
    1.0
    """
    names = ("a0", "a1", "b0", "b1")
    shape, count, (a0, a1, b0, b1) = _arguments.broadcast(names, (a0, a1, b0, b1), (POINT,) * 4)
    columns = _core.segment_segment(a0, a1, b0, b1, count)
    return SegmentSegment(*(_shaped(shape, column) for column in columns))


def triangle_sweep(
    d: Any, A: Any, B: Any, two_sided: Sequence[bool] = (True, True), margin: float = 0.0
) -> TriangleSweep:
    """Moves each triangle A along d and returns how far it travels before it touches triangle B, and where.

    d has the shape (..., 3), A and B have (..., 3, 3), and the shapes before these broadcast. `two_sided` says
    whether A, which faces along d, and B, which faces against it, may be used reversed. `margin` only loosens
    the rejection by extents. This is the library's tolerant sweep of two triangles, with its documented limits;
    sweep() decides exactly.

    >>> import gsl_geometry as gg
    >>> t = [[0, 0, 0], [1, 0, 0], [0, 1, 0]]
    >>> gg.triangle_sweep([(0, 0, 1), (0, 0, -1)], t, [[x, y, z + 3] for x, y, z in t]).found
    array([ True, False])
    """
    try:
        flags = tuple(two_sided)
    except TypeError:
        _arguments.wrong_type("two_sided", "2 flags", two_sided)
    if len(flags) != 2:
        raise ValueError(f"two_sided: expected 2 flags, got {len(flags)}")
    loose = _arguments.number("margin", margin)
    shape, count, (d, A, B) = _arguments.broadcast("dAB", (d, A, B), (POINT, (3, 3), (3, 3)))
    columns = _core.triangle_sweep(d, A, B, bool(flags[0]), bool(flags[1]), loose, count)
    return TriangleSweep(*(_shaped(shape, column) for column in columns))


class LU:
    """The decomposition of a square matrix, which solves any number of systems.

    `a` has the shape (n, n) and is copied. The pivot of each column has the largest size relative to its row. A
    pivot below 1e-16 becomes 1e-16, and PivotWarning says so. Raises numpy.linalg.LinAlgError for a row that is
    zero. Results are the same bits on every machine.

    >>> import gsl_geometry as gg
    >>> lu = gg.LU([[0, 2], [1, 0]])
    >>> lu.solve([4, 3])
    array([3., 2.])
    >>> lu.pivots, lu.parity, lu.determinant
    (array([1, 1], dtype=int32), -1, -2.0)
    """

    __slots__ = ("_core", "_factors", "__weakref__")

    def __init__(self, a: Any) -> None:
        matrix = _arguments.array("a", a)
        if matrix.ndim != 2 or matrix.shape[0] != matrix.shape[1]:
            raise ValueError(f"a: expected shape (n, n), got {_arguments.shape_text(matrix.shape)}")
        matrix = np.ascontiguousarray(matrix, dtype=np.float64)
        self._core = _core.LU(matrix)
        if self._core.is_singular:
            row = int(np.argmin((np.abs(matrix) >= 1e-16).any(axis=1)))
            raise np.linalg.LinAlgError(f"a: expected a row that is not zero, got no number of at least 1e-16 in row {row}")
        self._factors: Optional[np.ndarray] = None
        floored = int(np.count_nonzero(self.factors.diagonal() == 1e-16))
        if floored:
            warnings.warn(
                f"a: {floored} of {len(matrix)} pivots were below 1e-16 and became 1e-16", PivotWarning, stacklevel=2
            )

    @property
    def factors(self) -> np.ndarray:
        """Both factors in one matrix, shape (n, n), read only, without the ones of the lower factor's diagonal.

        >>> import gsl_geometry as gg
        >>> gg.LU([[2, 0], [1, 3]]).factors
        array([[2. , 0. ],
               [0.5, 3. ]])
        """
        if self._factors is None:
            self._factors = self._core.factors()
            self._factors.flags.writeable = False
        return self._factors

    @property
    def pivots(self) -> np.ndarray:
        """Shape (n,): entry j is the row that was exchanged with row j in step j.

        >>> import gsl_geometry as gg
        >>> gg.LU([[0, 1], [1, 0]]).pivots
        array([1, 1], dtype=int32)
        """
        return self._core.pivots()

    @property
    def parity(self) -> int:
        """1 or -1, the sign of the exchanges of rows.

        >>> import gsl_geometry as gg
        >>> gg.LU([[0, 1], [1, 0]]).parity
        -1
        """
        return self._core.parity

    @property
    def determinant(self) -> float:
        """The determinant: the product of the pivots times the parity.

        >>> import gsl_geometry as gg
        >>> gg.LU([[2, 0], [1, 3]]).determinant
        6.0
        """
        return float(np.prod(self.factors.diagonal()) * self.parity)

    def solve(self, b: Any) -> np.ndarray:
        """Returns x with a @ x = b; b and x have the shape (n,) or (n, k).

        >>> import gsl_geometry as gg
        >>> gg.LU([[2, 0], [1, 3]]).solve([[2, 4], [1, 5]])
        array([[1., 2.],
               [0., 1.]])
        """
        size = len(self.factors)
        side = _arguments.array("b", b)
        if side.ndim not in (1, 2) or side.shape[0] != size:
            raise ValueError(f"b: expected shape ({size},) or ({size}, k), got {_arguments.shape_text(side.shape)}")
        rows = np.ascontiguousarray(side.T.reshape(-1, size) if side.size else np.zeros((0, size)), dtype=np.float64)
        return np.ascontiguousarray(self._core.solve(rows).T).reshape(side.shape)

    def __repr__(self) -> str:
        size = len(self.factors)
        return f"LU({size} x {size})"


def label(adjacency: Any) -> Tuple[np.ndarray, int]:
    """Labels each vertex of a graph with the number of its component; returns the labels and their count.

    `adjacency` has the shape (n, n) and is bool, or whole numbers of which every one but 0 is an edge. Labels
    have the shape (n,). For a symmetric matrix these are the connected components. Otherwise a component is what
    its lowest vertex reaches along edges, without the earlier components.

    >>> import gsl_geometry as gg
    >>> gg.label([[0, 0, 1], [0, 0, 0], [1, 0, 0]])
    (array([0, 1, 0], dtype=int32), 2)
    """
    made = _arguments.any_array("adjacency", adjacency, "bool or whole numbers")
    if made.size and made.dtype.kind not in "biu":
        raise TypeError(f"adjacency: expected bool or whole numbers, got {made.dtype}")
    if made.ndim != 2 or made.shape[0] != made.shape[1]:
        raise ValueError(f"adjacency: expected shape (n, n), got {_arguments.shape_text(made.shape)}")
    return _core.label(np.ascontiguousarray(made, dtype=np.bool_))


class Transform:
    """A rigid transform: a matrix, shape (4, 4), that acts on column vectors.

    a @ b acts as b first, then as a. Transform(matrix) takes finite numbers, with (0, 0, 0, 1) in the last row, that
    rotate and translate: the products of the first three columns are off by at most 1e-6, and nothing is
    mirrored. Body.moved takes any affine matrix without a Transform.

    >>> import math
    >>> import gsl_geometry as gg
    >>> turn = gg.Transform.rotation((1, 0, 0), "z", math.pi / 2)
    >>> turn.apply([(0, 0, 0)]).round(12)
    array([[ 1., -1.,  0.]])
    """

    __slots__ = ("_matrix",)

    def __init__(self, matrix: Any) -> None:
        self._matrix = _arguments.reals("matrix", matrix, (4, 4)).copy()
        _arguments.rigid(self._matrix)
        self._matrix.flags.writeable = False

    @classmethod
    def _of(cls, matrix: np.ndarray) -> Transform:
        """Returns the transform of a matrix that products and inverses of rigid ones have made. Their roundings add
        up, so it is not judged again."""
        transform = cls.__new__(cls)
        transform._matrix = matrix
        matrix.flags.writeable = False
        return transform

    @classmethod
    def identity(cls) -> Transform:
        """Returns the transform that moves nothing.

        >>> import gsl_geometry as gg
        >>> gg.Transform.identity().apply((1, 2, 3))
        array([1., 2., 3.])
        """
        return cls(np.eye(4))

    @classmethod
    def translation(cls, step: Any) -> Transform:
        """Returns the translation by `step`, 3 numbers.

        >>> import gsl_geometry as gg
        >>> gg.Transform.translation((0, 0, 5)).apply((1, 2, 3))
        array([1., 2., 8.])
        """
        matrix = np.eye(4)
        matrix[:3, 3] = _arguments.vector("step", step)
        return cls(matrix)

    @classmethod
    def rotation(cls, point: Any, axis: Any, angle: float) -> Transform:
        """Returns the rotation by `angle`, in radians, about the line through `point` along `axis`.

        `axis` has 3 numbers, or is 'x', '-x' and so on; its length must be at least the linear tolerance. The
        rotation is right-handed.

        >>> import math
        >>> import gsl_geometry as gg
        >>> gg.Transform.rotation((0, 0, 0), (0, 0, 1), math.pi).apply((1, 0, 0)).round(12)
        array([-1.,  0.,  0.])
        """
        centre = np.array(_arguments.vector("point", point))
        if isinstance(axis, str) and axis in _arguments.AXES:
            axis = _arguments.AXES[axis]
        along = np.array(_arguments.vector("axis", axis, _arguments.DIRECTION_FORMS))
        largest = np.abs(along).max()
        if largest > 1e100:  # its square would leave the range of double
            along = along / largest
        least = tolerances().linear
        if np.sqrt((along * along).sum()) < least:
            raise ValueError(f"axis: expected a length of at least {least:g}, got {_arguments.vector('axis', along)}")
        return cls(_core.rotation(centre, along, _arguments.finite("angle", angle)))

    @property
    def matrix(self) -> np.ndarray:
        """The matrix, shape (4, 4), read only.

        >>> import gsl_geometry as gg
        >>> gg.Transform.translation((7, 8, 9)).matrix[:, 3]
        array([7., 8., 9., 1.])
        """
        return self._matrix

    def apply(self, points: Any) -> np.ndarray:
        """Returns the points, shape (..., 3), where the transform moves them.

        >>> import gsl_geometry as gg
        >>> gg.Transform.translation((0, 0, 5)).apply([(1, 2, 3), (0, 0, 0)])
        array([[1., 2., 8.],
               [0., 0., 5.]])
        """
        shape, _, (rows,) = _arguments.broadcast(("points",), (points,), (POINT,))
        return _core.apply(self._matrix, rows).reshape(shape + POINT)

    def inverse(self) -> Transform:
        """Returns the inverse.

        >>> import gsl_geometry as gg
        >>> gg.Transform.translation((0, 0, 5)).inverse().apply((0, 0, 5))
        array([0., 0., 0.])
        """
        return Transform._of(_arguments.finite_matrix(_core.inverse(self._matrix)))

    def __matmul__(self, other: Transform) -> Transform:
        if not isinstance(other, Transform):
            return NotImplemented
        return Transform._of(_arguments.finite_matrix(_core.concatenated(other._matrix, self._matrix)))

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Transform):
            return NotImplemented
        return bool((self._matrix == other._matrix).all())

    def __hash__(self) -> int:
        return hash((self._matrix + 0.0).tobytes())  # 0.0 equals -0.0

    def __reduce__(self) -> _pickles.Reduced:
        return _pickles.reduced(self, {"matrix": np.array(self._matrix)})

    def __repr__(self) -> str:
        rows = ", ".join("[" + ", ".join(f"{value:.6g}" for value in row) + "]" for row in self._matrix.tolist())
        return f"Transform([{rows}])"


class Tolerances:
    """The tolerances in use: `linear` for lengths, `zero` for equal points, `cosine` for angles.

    In a with statement they hold until its end.

    >>> import gsl_geometry as gg
    >>> gg.tolerances().linear
    1e-06
    """

    __slots__ = ("linear", "zero", "cosine", "_before")

    def __init__(self, linear: float, zero: float, cosine: float) -> None:
        self.linear, self.zero, self.cosine = linear, zero, cosine
        self._before: list = []

    def __enter__(self) -> Tolerances:
        self._before.append(_core.tolerances())
        _core.set_tolerances(self.linear, self.zero, self.cosine)
        return self

    def __exit__(self, *_: Any) -> None:
        _core.set_tolerances(*self._before.pop())

    def __repr__(self) -> str:
        return f"Tolerances(linear={self.linear:g}, zero={self.zero:g}, cosine={self.cosine:g})"


def tolerances(
    linear: Optional[float] = None, zero: Optional[float] = None, cosine: Optional[float] = None
) -> Tolerances:
    """Returns tolerances for a with statement; those that are not given stay as they are.

    They belong to the process: functions that other threads call meanwhile read them too. A change waits until
    calls that are at work have read them. sweep() and Pair decide exactly and read none.

    >>> import gsl_geometry as gg
    >>> with gg.tolerances(linear=1e-3):
    ...     gg.tolerances()
    Tolerances(linear=0.001, zero=1e-12, cosine=1e-10)
    >>> gg.tolerances()
    Tolerances(linear=1e-06, zero=1e-12, cosine=1e-10)
    """
    current = _core.tolerances()
    given = (("linear", linear), ("zero", zero), ("cosine", cosine))
    return Tolerances(
        *(old if new is None else _arguments.at_least_zero(name, new) for old, (name, new) in zip(current, given))
    )
