"""Bodies of triangles, from arrays and from files."""

from __future__ import annotations

import os
import warnings
from pathlib import Path
from typing import TYPE_CHECKING, Any, Callable, Optional, Union

import numpy as np

from . import _arguments, _core, _pickles

if TYPE_CHECKING:
    from ._library import Transform

__all__ = ["Body", "MeshError", "MeshWarning", "read"]

MeshError = _core.MeshError

Progress = Callable[[float], Any]


class MeshWarning(UserWarning):
    """A part of a mesh file was left out or is unusual."""


def _vertices_of(value: Any) -> np.ndarray:
    made = _arguments.array("vertices", value)
    if made.size == 0 and made.ndim == 1:
        made = made.reshape(0, 3)
    if made.ndim != 2 or made.shape[1] != 3:
        raise ValueError(f"vertices: expected shape (n, 3), got {_arguments.shape_text(made.shape)}")
    return _kept(made, np.float32 if made.dtype.kind == "f" and made.dtype.itemsize == 4 else np.float64)


def _kept(made: np.ndarray, dtype: Any) -> np.ndarray:
    """Returns a copy that nobody can change."""
    kept = np.array(made, dtype=dtype, order="C")
    kept.flags.writeable = False
    return kept


def _faces_of(value: Any, vertex_count: int) -> np.ndarray:
    made = _arguments.any_array("faces", value, "whole numbers")
    if made.size == 0:
        if made.ndim == 1 or made.shape == (0, 3):
            made = np.zeros((0, 3), dtype=np.uint32)
    elif made.dtype.kind not in "iu":
        raise TypeError(f"faces: expected whole numbers, got {made.dtype}")
    if made.ndim != 2 or made.shape[1] != 3:
        raise ValueError(f"faces: expected shape (m, 3), got {_arguments.shape_text(made.shape)}")
    wrong = (made >= vertex_count) | (made < 0)
    if wrong.any():
        row, column = divmod(int(np.argmax(wrong)), 3)
        raise IndexError(f"faces[{row}, {column}] = {made[row, column]}, but there are {vertex_count} vertices")
    return _kept(made, np.uint32)


class Body:
    """Triangles that are prepared for questions. A body never changes.

    Body(vertices, faces) takes the vertices, shape (n, 3), of any type of number, and for each triangle the
    numbers of its three vertices, shape (m, 3), of any type of whole number. Body(triangles) takes the corners
    of the triangles, shape (m, 3, 3). Body(mesh) takes any object with the attributes `vertices` and `faces`.

    The arrays are copied. Triangles keep their order and their numbers. Triangles with a corner that is NaN or
    infinite are skipped, and `skipped_count` counts them. The first question prepares the body.

    >>> import gsl_geometry as gg
    >>> corners = [[0, 0, 0], [1, 0, 0], [0, 1, 0], [0, 0, 1]]
    >>> part = gg.Body(corners, [[0, 2, 1], [0, 1, 3], [1, 2, 3], [0, 3, 2]])
    >>> part
    Body(4 triangles)
    >>> part.is_solid
    True
    >>> gg.Body(part.triangles).triangle_count
    4
    """

    __slots__ = ("_core", "_vertices", "_faces", "_triangles", "_file", "_deviation", "__weakref__")

    def __init__(self, vertices: Any, faces: Any = None) -> None:
        if _arguments.is_path(vertices):
            _arguments.wrong_body("Body", "arrays or an object with vertices and faces", vertices)
        self._file: Optional[str] = None
        self._deviation: Optional[float] = None
        if faces is None and isinstance(vertices, Body):
            self._file, self._deviation = vertices._file, vertices._deviation
        if faces is None and hasattr(vertices, "vertices") and hasattr(vertices, "faces"):
            vertices, faces = vertices.vertices, vertices.faces
        self._triangles: Optional[np.ndarray] = None
        if faces is None:
            soup = _arguments.array("triangles", vertices)
            if soup.ndim != 3 or soup.shape[1:] != (3, 3):
                raise ValueError(
                    f"triangles: expected shape (m, 3, 3), got {_arguments.shape_text(soup.shape)}; "
                    "vertices need faces beside them"
                )
            self._vertices = _vertices_of(soup.reshape(-1, 3))
            self._faces: Optional[np.ndarray] = None
        else:
            self._vertices = _vertices_of(vertices)
            self._faces = _faces_of(faces, len(self._vertices))
        self._core = _core.Body(np.asarray(self._vertices, dtype=np.float64), self._faces)

    @classmethod
    def _of(
        cls, core: _core.Body, vertices: np.ndarray, faces: Optional[np.ndarray], file: Optional[str],
        deviation: Optional[float] = None,
    ) -> Body:
        vertices.flags.writeable = False
        body = cls.__new__(cls)
        body._core, body._vertices, body._faces, body._file = core, vertices, faces, file
        body._deviation = deviation
        body._triangles = None
        return body

    @property
    def vertices(self) -> np.ndarray:
        """The vertices, shape (n, 3), read only.

        >>> import gsl_geometry as gg
        >>> gg.Body([[[0, 0, 0], [1, 0, 0], [0, 2, 0]]]).vertices.max()
        2.0
        """
        return self._vertices

    @property
    def faces(self) -> np.ndarray:
        """The numbers of the vertices of each triangle, shape (m, 3), read only.

        >>> import gsl_geometry as gg
        >>> gg.Body([[[0, 0, 0], [1, 0, 0], [0, 2, 0]]]).faces
        array([[0, 1, 2]], dtype=uint32)
        """
        if self._faces is None:
            self._faces = _kept(np.arange(len(self._vertices)).reshape(-1, 3), np.uint32)
        return self._faces

    @property
    def triangles(self) -> np.ndarray:
        """The corners of each triangle, shape (m, 3, 3), in doubles, read only. Made at the first use.

        >>> import gsl_geometry as gg
        >>> part = gg.Body([[0, 0, 0], [1, 0, 0], [0, 2, 0]], [[2, 0, 1]])
        >>> part.triangles
        array([[[0., 2., 0.],
                [0., 0., 0.],
                [1., 0., 0.]]])
        """
        if self._triangles is None:
            corners = self._vertices if self._faces is None else self._vertices[self._faces]
            made = np.asarray(corners, dtype=np.float64).reshape(-1, 3, 3)
            made.flags.writeable = False
            self._triangles = made
        return self._triangles

    @property
    def triangle_count(self) -> int:
        """The number of triangles.

        >>> import gsl_geometry as gg
        >>> gg.read("bolt.stl").triangle_count
        288
        """
        return self._core.triangle_count

    @property
    def skipped_count(self) -> int:
        """The number of triangles with a corner that is NaN or infinite, which no question sees.

        >>> import gsl_geometry as gg
        >>> gg.Body([[[0, 0, 0], [1, 0, 0], [0, float("nan"), 0]]]).skipped_count
        1
        """
        return self._core.skipped_count

    @property
    def bounds(self) -> np.ndarray:
        """The least and the greatest coordinates of the finite triangles, shape (2, 3); zeros without triangles.

        >>> import gsl_geometry as gg
        >>> gg.Body([[[0, 0, 0], [1, 0, 0], [0, 2, 0]]]).bounds
        array([[0., 0., 0.],
               [1., 2., 0.]])
        """
        return self._core.bounds()

    @property
    def is_solid(self) -> bool:
        """Whether the triangles are the surface of a solid: closed, oriented outwards, with a volume.

        >>> import gsl_geometry as gg
        >>> gg.read("bolt.stl").is_solid
        True
        """
        return not self._core.solid_fault()

    @property
    def solid_fault(self) -> Optional[str]:
        """Why the body is not a solid, in one line; None for a solid.

        >>> import gsl_geometry as gg
        >>> gg.Body([[[0, 0, 0], [1, 0, 0], [0, 2, 0]]]).solid_fault is None
        False
        """
        return self._core.solid_fault() or None

    @property
    def file(self) -> Optional[str]:
        """The path from which the body was read; None for a body from arrays.

        >>> import gsl_geometry as gg
        >>> gg.read("bolt.stl").file
        'bolt.stl'
        """
        return self._file

    @property
    def deviation(self) -> Optional[float]:
        """For a body that was grown: the greatest difference between the length by which it was grown and the
        travel of the plane of a triangle at one of its corners, in the unit in which it was grown: moved() does not
        change it. None for any other body.

        >>> import gsl_geometry as gg
        >>> bolt = gg.read("bolt.stl")
        >>> bolt.deviation is None, 0 < bolt.grown(0.125).deviation < 0.02
        (True, True)
        """
        return self._deviation

    def grown(self, e: float) -> Body:
        """Returns the body made thicker by e, or thinner by a negative e, in the units of the vertices.

        Each corner is moved so that the planes of the triangles around it move by e along their normals, and
        where they cannot all do so, as nearly as possible by least squares. Equal coordinates are one corner. A
        vertex that no triangle uses stays. Questions about the grown body are decided exactly, but the growing
        is rounded; `deviation` says how far it is off at most. Where a grown body is grown again, the deviations
        are added.

        Raises ValueError when a triangle turns over, which it does in a body that is too thin for e. Surfaces
        that cross each other are not noticed.

        >>> import gsl_geometry as gg
        >>> bolt = gg.read("bolt.stl")
        >>> (bolt.grown(0.125).bounds - bolt.bounds)[:, 2]
        array([-0.125,  0.125])
        """
        return self._grown("e", _arguments.finite("e", e))

    def _grown(self, name: str, e: float) -> Body:
        """Returns the grown body; errors name the argument that says by how much."""
        try:
            core, deviation = self._core.grown(e)
        except ValueError as error:
            raise ValueError(f"{name}: expected a length by which the body can grow, but {error}") from None
        triangles = core.triangles().reshape(-1, 3, 3)
        kept = ~np.isnan(triangles[:, 0, 0])  # the others, and vertices that no triangle uses, stay
        vertices = np.array(self._vertices, dtype=np.float64)
        if self._faces is None:
            vertices.reshape(-1, 3, 3)[kept] = triangles[kept]
        else:
            vertices[self._faces[kept]] = triangles[kept]
        return Body._of(core, vertices, self._faces, self._file, deviation + (self._deviation or 0.0))

    def moved(self, transform: Union[Transform, Any]) -> Body:
        """Returns the body at another place. `transform` is a Transform or any affine matrix, shape (4, 4).

        Every corner is exactly where Transform.apply puts it. The preparation of this body is used again.

        >>> import gsl_geometry as gg
        >>> part = gg.Body([[[0, 0, 0], [1, 0, 0], [0, 2, 0]]])
        >>> part.moved(gg.Transform.translation((0, 0, 5))).bounds[0]
        array([0., 0., 5.])
        """
        matrix = _arguments.reals("transform", getattr(transform, "matrix", transform), (4, 4))
        vertices = _core.apply(matrix, np.asarray(self._vertices, dtype=np.float64))
        return Body._of(self._core.moved(matrix), vertices, self._faces, self._file, self._deviation)

    def __repr__(self) -> str:
        count = self.triangle_count
        text = f"{count} triangle" if count == 1 else f"{count} triangles"
        if self.skipped_count:
            text += f", {self.skipped_count} of them skipped"
        return f"Body({text}, from {self._file!r})" if self._file else f"Body({text})"

    def __reduce__(self) -> _pickles.Reduced:
        values = {
            "vertices": self._vertices, "faces": self._faces, "file": self._file, "deviation": self._deviation
        }  # fmt: skip
        return _pickles.reduced(self, values)

    @classmethod
    def _restored(
        cls, *, vertices: np.ndarray, faces: Optional[np.ndarray], file: Optional[str], deviation: Optional[float]
    ) -> Body:
        if faces is not None:
            faces.flags.writeable = False
        return cls._of(_core.Body(np.asarray(vertices, dtype=np.float64), faces), vertices, faces, file, deviation)


def read(path: Union[str, os.PathLike], progress: Optional[Progress] = None) -> Body:
    """Reads a mesh file: STL, PLY, OBJ, OFF, and the formats that the import program reads.

    The contents decide the format where they are unambiguous, otherwise the extension. Numbers are kept as the
    file has them. `progress` is called with the part done, from 0 to 1.

    Raises OSError for a file that cannot be opened, MeshError, a ValueError, for a file that is damaged or holds
    no triangle. Warns with MeshWarning of what was left out.

    >>> import gsl_geometry as gg
    >>> gg.read("bolt.stl")
    Body(288 triangles, from 'bolt.stl')
    """
    _arguments.progress(progress)
    try:
        name = os.fspath(path)
    except TypeError:
        _arguments.wrong_type("path", "a str, bytes or a path", path)
    if not isinstance(name, str):
        name = os.fsdecode(name)
    with open(name, "rb"):
        pass
    importer = Path(__file__).parent / "gsl-mesh-import"
    if importer.exists():
        os.environ.setdefault("GSL_MESH_IMPORT", str(importer))
    corners, found = _core.read(os.fsencode(name), progress)
    if not len(corners):
        raise RuntimeError(f"{name}: the reading was cancelled")
    for text in found:
        warnings.warn(text, MeshWarning, stacklevel=2)
    return Body._of(_core.Body(corners, None), corners, None, name)
