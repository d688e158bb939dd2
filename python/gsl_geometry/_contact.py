"""Answers to questions about contacts."""

from __future__ import annotations

import math
from typing import Any, Dict, Iterator, List, NamedTuple, Optional, Tuple, Union, overload

import numpy as np

from . import _pickles

__all__ = ["Contact", "Contacts", "Patch", "Place"]

# By their numbers in the library.
STATUSES = ("contact", "start", "none", "cancelled")
KINDS = ("vertex-vertex", "vertex-edge", "edge-vertex", "vertex-face", "face-vertex", "edge-edge", "overlap", "inside")

# The numbers of an answer, in the order of the compiled part, and then the deviation of growing.
NAMES = (
    "status", "travel", "direction", "kind", "normal", "moving_triangle", "moving_point", "fixed_body",
    "fixed_triangle", "fixed_point", "overlaps_at_start", "is_exact", "error_bound", "deviation",
)  # fmt: skip


def _numbers_text(values: Any) -> str:
    return "(" + ", ".join(f"{value:.6g}" for value in values) + ")"


class Place(NamedTuple):
    """Where a body touches.

    >>> import gsl_geometry as gg
    >>> c = gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), "-z")
    >>> c.fixed.body, c.fixed.triangle
    (0, 0)
    """

    triangle: int  #: the number of the triangle in its body
    point: np.ndarray  #: shape (3,); of the moving body with the offset, before the travel
    body: int = 0  #: the number of the fixed body in its pair

    __reduce__ = _pickles.reduced_tuple


def _in_order(values: Dict[str, Any]) -> Tuple[Any, ...]:
    """Returns the values in the order of NAMES."""
    if set(values) != set(NAMES):
        raise TypeError(f"the names differ in {', '.join(sorted(set(values) ^ set(NAMES)))}")
    return tuple(values[name] for name in NAMES)


class Contact:
    """The answer to one question. It is true when the bodies touch.

    >>> import gsl_geometry as gg
    >>> c = gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), "-z")
    >>> c
    Contact(after 30 along (0, 0, -1): vertex-face, moving triangle 120 on fixed triangle 0)
    >>> bool(c), c.travel, c.moving.triangle
    (True, 30.0, 120)
    """

    __slots__ = ("_answer",)

    def __init__(self, answer: Tuple[Any, ...]) -> None:
        self._answer = answer

    @property
    def status(self) -> str:
        """'contact' after a travel, 'start' before any travel, 'none', or 'cancelled'.

        >>> import gsl_geometry as gg
        >>> gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), "+z").status
        'none'
        """
        return STATUSES[self._answer[0]]

    @property
    def travel(self) -> float:
        """The distance until the contact in the units of the vertices; infinite without a contact.

        >>> import gsl_geometry as gg
        >>> gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), "+z").travel
        inf
        """
        return self._answer[1]

    @property
    def direction(self) -> np.ndarray:
        """The direction of the question with length one, shape (3,); NaN for an answer that was cancelled.

        >>> import gsl_geometry as gg
        >>> gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), (0, 0, -2)).direction
        array([ 0.,  0., -1.])
        """
        return np.array(self._answer[2] if self._answer[0] != 3 else (math.nan,) * 3)

    @property
    def kind(self) -> Optional[str]:
        """The features that meet, the moving body's first, as in 'vertex-face'; 'overlap' where the triangles
        share a point but no features can be named; 'inside' where a solid contains the other. None without a
        contact.

        >>> import gsl_geometry as gg
        >>> gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), "-z").kind
        'vertex-face'
        """
        return KINDS[self._answer[3]] if self else None

    @property
    def normal(self) -> Optional[np.ndarray]:
        """The normal of the plane in which the features meet, of length one and against the direction, shape
        (3,). None where they define no such plane.

        >>> import gsl_geometry as gg
        >>> gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), "-z").normal
        array([0., 0., 1.])
        """
        return None if self._answer[4] is None else np.array(self._answer[4])

    @property
    def moving(self) -> Optional[Place]:
        """Where the moving body touches, before its travel. None without a contact, and for a solid around the
        other one.

        >>> import gsl_geometry as gg
        >>> gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), "-z").moving.point[2]
        30.0
        """
        return None if self._answer[6] is None else Place(self._answer[5], np.array(self._answer[6]))

    @property
    def fixed(self) -> Optional[Place]:
        """Where the fixed body touches. None without a contact, and for a solid around the other one.

        >>> import gsl_geometry as gg
        >>> gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), "-z").fixed.point[2]
        0.0
        """
        if self._answer[9] is None:
            return None
        return Place(self._answer[8], np.array(self._answer[9]), self._answer[7])

    @property
    def overlaps_at_start(self) -> bool:
        """True under rule="solid" when the interiors overlap before any travel.

        >>> import gsl_geometry as gg
        >>> bolt = gg.read("bolt.stl")
        >>> gg.sweep(bolt, bolt, "z", rule="solid").overlaps_at_start
        True
        """
        return bool(self and self._answer[10])

    @property
    def is_exact(self) -> bool:
        """False for a question with a clearance, whose travel is a root that is rounded: see error_bound. True
        otherwise, also when it was cancelled; the travel and the points are then the exact ones, rounded.

        >>> import gsl_geometry as gg
        >>> bolt, bracket = gg.read("bolt.stl"), gg.read("bracket.stl")
        >>> gg.sweep(bolt, bracket, "-z").is_exact, gg.sweep(bolt, bracket, "-z", clearance=0.25).is_exact
        (True, False)
        """
        return self._answer[11]

    @property
    def error_bound(self) -> float:
        """The greatest error of the travel, and of each coordinate of the points; 0.0 for an exact answer and
        without a contact.

        >>> import gsl_geometry as gg
        >>> c = gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), "-z", clearance=0.25)
        >>> c.travel, 0 < c.error_bound < 1e-12
        (29.75, True)
        """
        return self._answer[12]

    @property
    def deviation(self) -> Optional[float]:
        """The greatest Body.deviation of the bodies that were grown, by an allowance or by Body.grown; None where
        none was. The answer is that of the grown bodies. The unit is that in which they were grown.

        >>> import gsl_geometry as gg
        >>> bolt, bracket = gg.read("bolt.stl"), gg.read("bracket.stl")
        >>> 0 < gg.sweep(bolt, bracket, "-z", allowance=-1e-4).deviation < 2e-5
        True
        """
        return self._answer[13]

    def to_dict(self) -> Dict[str, Any]:
        """Returns plain numbers, lists and texts under the names of gsl-sweep's JSON. Missing values are None.
        Every key is there for every question.

        >>> import gsl_geometry as gg
        >>> answer = gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), "-z").to_dict()
        >>> answer["fixed"]["triangle"], answer["normal"]
        (0, [0.0, 0.0, 1.0])
        """

        def place(triangle: int, point: Optional[Tuple[float, ...]]) -> Dict[str, Any]:
            return {"triangle": None if point is None else triangle, "point": None if point is None else list(point)}

        answer = self._answer
        return {
            "status": self.status,
            "travel": answer[1] if self else None,
            "exact": answer[11],
            "error_bound": answer[12] if self else None,
            "direction": None if self.status == "cancelled" else list(answer[2]),
            "kind": self.kind,
            "normal": None if answer[4] is None else list(answer[4]),
            "moving": place(answer[5], answer[6]),
            "fixed": place(answer[8], answer[9]),
            "fixed_body": answer[7] if self else None,
            "overlaps_at_start": self.overlaps_at_start,
            "growing": None if answer[13] is None else {"exact": False, "deviation": answer[13]},
        }

    def __bool__(self) -> bool:
        return self._answer[0] < 2

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Contact):
            return NotImplemented
        return bool(self._answer == other._answer)

    def __hash__(self) -> int:
        return hash(self._answer)

    def __reduce__(self) -> _pickles.Reduced:
        return _pickles.reduced(self, {**dict(zip(NAMES, self._answer)), "status": self.status, "kind": self.kind})

    @classmethod
    def _restored(cls, *, status: str, kind: Optional[str], **values: Any) -> Contact:
        values["status"] = STATUSES.index(status)
        values["kind"] = -1 if kind is None else KINDS.index(kind)
        return cls(_in_order(values))

    def __repr__(self) -> str:
        if self.status == "cancelled":
            return "Contact(cancelled)"
        along = f"along {_numbers_text(self._answer[2])}"
        if not self:
            return f"Contact(none {along})"
        when = f"after {self.travel:.6g}" if self.status == "contact" else "at the start"
        body = f" of body {self._answer[7]}" if self._answer[7] else ""
        if self.kind == "inside":
            inner, outer = ("moving body", "fixed body") if self.moving else ("fixed body", "moving body")
            return f"Contact({when} {along}: inside, a part of the {inner} in the {outer})"
        return (
            f"Contact({when} {along}: {self.kind}, "
            f"moving triangle {self._answer[5]} on fixed triangle {self._answer[8]}{body})"
        )


class Contacts:
    """The answers to k questions as arrays with one row for each. r[k] is a Contact; a slice, a list of numbers
    or a mask selects rows.

    >>> import gsl_geometry as gg
    >>> pair = gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")])
    >>> r = pair.sweep([(0, 0, -1), (0, 0, 1)])
    >>> r
    Contacts(2 answers: 1 contact, 0 start, 1 none)
    >>> r.travel, r.moving_triangle
    (array([30., inf]), array([120,  -1]))
    >>> r[0].kind
    'vertex-face'
    """

    __slots__ = (
        "_codes", "travel", "direction", "_kinds", "normal", "moving_triangle", "moving_point", "fixed_body",
        "fixed_triangle", "fixed_point", "overlaps_at_start", "is_exact", "error_bound", "deviation",
    )  # fmt: skip

    _codes: np.ndarray
    _kinds: np.ndarray
    travel: np.ndarray  #: shape (k,); infinite without a contact
    direction: np.ndarray  #: of length one, shape (k, 3)
    normal: np.ndarray  #: shape (k, 3); NaN where there is none
    moving_triangle: np.ndarray  #: shape (k,); -1 without a contact, and for a solid around the other one
    moving_point: np.ndarray  #: with the offset, before the travel, shape (k, 3); NaN without a contact
    fixed_body: np.ndarray  #: shape (k,); -1 without a contact
    fixed_triangle: np.ndarray  #: shape (k,); -1 without a contact
    fixed_point: np.ndarray  #: shape (k, 3); NaN without a contact
    overlaps_at_start: np.ndarray  #: shape (k,), of bool
    is_exact: np.ndarray  #: shape (k,), of bool; False with a clearance, unless the answer was cancelled
    error_bound: np.ndarray  #: of the travel and the points, shape (k,); 0 where the answer is exact
    deviation: np.ndarray  #: the greatest of the bodies that were grown, shape (k,); NaN where none was

    def __init__(self, columns: Tuple[np.ndarray, ...]) -> None:
        for name, column in zip(self.__slots__, columns):
            setattr(self, name, column)

    @property
    def status(self) -> np.ndarray:
        """The status of each answer, as in Contact.status, shape (k,), of texts.

        >>> import gsl_geometry as gg
        >>> pair = gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")])
        >>> pair.sweep([(0, 0, -1), (0, 0, 1)]).status == "none"
        array([False,  True])
        """
        return np.array(STATUSES)[self._codes]

    @property
    def kind(self) -> np.ndarray:
        """The kind of each contact, as in Contact.kind, shape (k,), of texts; empty without a contact.

        >>> import gsl_geometry as gg
        >>> pair = gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")])
        >>> pair.sweep([(0, 0, -1)]).kind
        array(['vertex-face'], dtype='<U13')
        """
        return np.array(KINDS + ("",))[self._kinds]

    @property
    def touches(self) -> np.ndarray:
        """Whether the bodies touch, shape (k,), of bool.

        >>> import gsl_geometry as gg
        >>> pair = gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")])
        >>> pair.sweep([(0, 0, -1), (0, 0, 1)]).touches
        array([ True, False])
        """
        return self._codes < 2

    def to_dict(self) -> Dict[str, np.ndarray]:
        """Returns the arrays by their names, ready for np.savez. Directions, normals and points have shape (k, 3).

        >>> import gsl_geometry as gg
        >>> pair = gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")])
        >>> list(pair.sweep(gg.sphere(8)).to_dict())[:3]
        ['status', 'travel', 'direction']
        """
        names = ("status", "travel", "direction", "kind") + self.__slots__[4:]
        return {name: getattr(self, name) for name in names}

    def __len__(self) -> int:
        return len(self.travel)

    @overload
    def __getitem__(self, k: int) -> Contact: ...

    @overload
    def __getitem__(self, k: Union[slice, List[int], np.ndarray]) -> Contacts: ...

    def __getitem__(self, k: Union[int, slice, List[int], np.ndarray]) -> Union[Contact, Contacts]:
        if isinstance(k, (slice, list, np.ndarray)):
            return Contacts(tuple(getattr(self, name)[k] for name in self.__slots__))
        if isinstance(k, (bool, np.bool_)) or not hasattr(k, "__index__"):
            raise TypeError(f"expected a number, a slice, a list or an array, got {type(k).__name__}")

        def row(column: np.ndarray) -> Any:
            value = column[k].tolist()
            return tuple(value) if isinstance(value, list) else value

        values = [row(getattr(self, name)) for name in self.__slots__]
        code, travel, direction, kind, normal, *rest, is_exact, error_bound, deviation = values
        trust = (is_exact, error_bound, None if math.isnan(deviation) else deviation)
        if code == 3:
            direction = (0.0, 0.0, 0.0)
        if code > 1:
            return Contact((code, travel, direction, -1, None, -1, None, -1, -1, None, False, *trust))
        # A body around the other one has neither a triangle nor a point.
        values = [None if isinstance(value, tuple) and math.isnan(value[0]) else value for value in (normal, *rest)]
        return Contact((code, travel, direction, kind, *values, *trust))

    def __iter__(self) -> Iterator[Contact]:
        return (self[k] for k in range(len(self)))

    def __reduce__(self) -> _pickles.Reduced:
        return _pickles.reduced(self, dict(zip(NAMES, (getattr(self, name) for name in self.__slots__))))

    @classmethod
    def _restored(cls, **columns: np.ndarray) -> Contacts:
        return cls(_in_order(columns))

    def __repr__(self) -> str:
        counts = np.bincount(self._codes, minlength=4)
        text = f"{counts[0]} contact, {counts[1]} start, {counts[2]} none"
        if counts[3]:
            text += f", {counts[3]} cancelled"
        return f"Contacts({len(self)} {'answer' if len(self) == 1 else 'answers'}: {text})"


class Patch(NamedTuple):
    """All pairs of triangles that touch at the first contact.

    >>> import gsl_geometry as gg
    >>> pair = gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")])
    >>> patch = pair.patch("-z")
    >>> patch.pair_count == len(patch.pairs)
    True
    """

    first: Contact  #: the first contact
    pair_count: int  #: 0 without a contact
    low: Optional[np.ndarray]  #: the box around all points of the fixed bodies that are touched, shape (3,)
    high: Optional[np.ndarray]  #: the same; None without a contact
    pairs: Contacts  #: one row for each pair, by moving triangle, fixed body and fixed triangle

    __reduce__ = _pickles.reduced_tuple
