"""Questions about one moving body and fixed bodies."""

from __future__ import annotations

import math
from collections.abc import Iterable
from typing import Any, Callable, List, Optional, Sequence, Tuple, Union

import numpy as np

from . import _arguments, _core, _pickles
from ._body import Body
from ._contact import Contact, Contacts, Patch

__all__ = ["Pair", "sphere", "sweep"]

Direction = Union[str, Sequence[float], np.ndarray]
Progress = Callable[[float], Any]
Terms = Tuple[float, bool, int, float]
SOLID = _arguments.RULES["solid"]


def _body(name: str, value: Any) -> Body:
    if isinstance(value, Body):
        return value
    if hasattr(value, "vertices") and hasattr(value, "faces"):
        return Body(value)
    _arguments.wrong_body(name, "a Body or an object with vertices and faces", value)


def _bodies(moving: Any, fixed: Any, allowance: float) -> List[Body]:
    """Returns the moving body, grown by the allowance, and the fixed bodies."""
    bodies = [_body("moving", moving)]
    if isinstance(fixed, Body) or hasattr(fixed, "vertices"):
        bodies.append(_body("fixed", fixed))
    elif isinstance(fixed, Iterable) and not isinstance(fixed, str):
        bodies += [_body(f"fixed[{k}]", body) for k, body in enumerate(fixed)]
    else:
        _arguments.wrong_body("fixed", "a Body, an object with vertices and faces, or some of them", fixed)
    if allowance is not _arguments.NO_LENGTH:
        length = _arguments.finite("allowance", allowance)
        if length != 0.0:
            bodies[0] = bodies[0]._grown("allowance", length)
    return bodies


def _deviation(bodies: Sequence[Body]) -> Optional[float]:
    """Returns the greatest deviation of the bodies that were grown; None where none was."""
    greatest = None
    for body in bodies:
        if body._deviation is not None and (greatest is None or body._deviation > greatest):
            greatest = body._deviation
    return greatest


def _require_solids(bodies: Sequence[Body]) -> None:
    for k, body in enumerate(bodies):
        fault = body.solid_fault
        if fault:
            name = "moving" if k == 0 else f"fixed[{k - 1}]"
            raise ValueError(f'{name}: rule="solid" expected a solid, got a body with a fault: {fault}')


def _terms(
    bodies: Sequence[Body], max_distance: float, one_sided: bool, rule: str, clearance: float = _arguments.NO_LENGTH
) -> Terms:
    """Returns what questions have in common apart from their direction and offset."""
    code = _arguments.choice("rule", rule, _arguments.RULES)
    limit = _arguments.at_least_zero("max_distance", max_distance)
    gap = _arguments.clearance(clearance, rule)
    if code == SOLID:
        _require_solids(bodies)
    return limit, bool(one_sided), code, gap


def sweep(
    moving: Any,
    fixed: Any,
    direction: Direction,
    *,
    offset: Sequence[float] = _arguments.NO_OFFSET,
    max_distance: float = math.inf,
    one_sided: bool = False,
    rule: str = "touch",
    allowance: float = _arguments.NO_LENGTH,
    clearance: float = _arguments.NO_LENGTH,
) -> Contact:
    """Moves a body along a direction and returns its first contact with another body.

    The decision is exact, and the answer has the same bits on every machine.

    moving, fixed   a Body, or any object with `vertices` and `faces`; `fixed` may be a list of bodies. A Body is
                    prepared once; make it once to ask again.
    direction       3 numbers of any length but zero, or an axis: 'x', '+x', '-x' and so on.
    offset          is added to the moving body first; 3 numbers.
    max_distance    the greatest travel, in the units of the vertices; a contact there counts.
    one_sided       leaves out triangles of the moving body that face against the direction, and of the fixed
                    bodies that face along it.
    rule            'touch': every contact counts. 'leaving': except contacts that end at the start. 'solid': the
                    bodies are solids, which may touch and slide, and the contact is where their interiors would
                    begin to overlap.
    allowance       makes the moving body thicker first, or thinner when it is negative, as Body.grown does; the
                    answer's `deviation` says how far that is off. A Pair grows it once.
    clearance       the contact is where the distance between the bodies is at most this. Its travel is rounded,
                    and the answer's `error_bound` says how far it is off. For 'touch' alone.

    >>> import gsl_geometry as gg
    >>> c = gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), "-z")
    >>> c.status, c.travel, c.kind
    ('contact', 30.0, 'vertex-face')
    >>> bolt, bracket = gg.read("bolt.stl"), gg.read("bracket.stl")
    >>> gg.sweep(bolt, bracket, "-z", clearance=0.25).travel
    29.75
    >>> gg.sweep(bolt, bracket, "-z", offset=(0, 0, -30), rule="solid", allowance=-0.125).travel
    0.125
    """
    along = _arguments.direction(direction)
    start = _arguments.offset(offset)
    bodies = _bodies(moving, fixed, allowance)
    terms = _terms(bodies, max_distance, one_sided, rule, clearance)
    return Contact(_core.sweep([body._core for body in bodies], along, start, terms) + (_deviation(bodies),))


class Pair:
    """A moving body and fixed bodies, prepared once and asked many times, from any threads.

    `threads` limits the threads of a batch; 0 means one for each processor. `progress` is called with the part
    of the preparation that is done, from 0 to 1.

    The answer is the same as if the triangles of all fixed bodies, in order, were one body. The options of each
    question, and `allowance`, are described at sweep(). The moving body is grown once, by the allowance.

    >>> import gsl_geometry as gg
    >>> pair = gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")])
    >>> pair.sweep(gg.sphere(100)).touches.sum() > 0
    True
    >>> gg.Pair(pair.moving, pair.fixed, allowance=0.25).sweep("-z").travel
    29.75
    """

    __slots__ = ("_bodies", "_core", "_deviation", "_threads", "__weakref__")

    def __init__(
        self,
        moving: Any,
        fixed: Any,
        *,
        allowance: float = _arguments.NO_LENGTH,
        threads: int = 0,
        progress: Optional[Progress] = None,
    ) -> None:
        _arguments.progress(progress)
        self._threads = _arguments.count("threads", threads, _arguments.MOST_UNSIGNED)
        self._bodies = _bodies(moving, fixed, allowance)
        self._deviation = _deviation(self._bodies)
        self._core = _core.Pair([body._core for body in self._bodies], self._threads, progress)

    def _terms_without_solids(self, what: str, max_distance: float, one_sided: bool, rule: str) -> Terms:
        terms = _terms(self._bodies, max_distance, one_sided, rule)
        if terms[2] == SOLID:
            raise ValueError(f"rule: expected 'touch' or 'leaving' for {what}, got 'solid'")
        return terms

    @property
    def moving(self) -> Body:
        """The moving body, grown by the allowance.

        >>> import gsl_geometry as gg
        >>> gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")]).moving.file
        'bolt.stl'
        """
        return self._bodies[0]

    @property
    def fixed(self) -> Tuple[Body, ...]:
        """The fixed bodies.

        >>> import gsl_geometry as gg
        >>> len(gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")]).fixed)
        1
        """
        return tuple(self._bodies[1:])

    def _contact(self, answer: Tuple[Any, ...]) -> Contact:
        return Contact(answer + (self._deviation,))

    def _contacts(self, columns: Tuple[np.ndarray, ...]) -> Contacts:
        deviation = math.nan if self._deviation is None else self._deviation
        return Contacts(columns + (np.full(len(columns[0]), deviation),))

    def _ask(
        self, last: bool, directions: Any, offset: Any, terms: Terms, progress: Optional[Progress]
    ) -> Union[Contact, Contacts]:
        _arguments.progress(progress)
        if not isinstance(directions, (str, np.ndarray)):
            directions = _arguments.array("directions", directions)
        if isinstance(directions, str) or directions.ndim == 1 and directions.size > 0:
            along, start = _arguments.direction(directions), _arguments.offset(offset)
            return self._contact(self._core.one(along, start, terms, last))
        rows = _arguments.directions(directions)
        starts = _arguments.offsets(offset, len(rows))
        return self._contacts(self._core.many(rows, starts, terms, last, progress))

    def sweep(
        self,
        directions: Any,
        *,
        offset: Any = _arguments.NO_OFFSET,
        max_distance: float = math.inf,
        one_sided: bool = False,
        rule: str = "touch",
        clearance: float = _arguments.NO_LENGTH,
        progress: Optional[Progress] = None,
    ) -> Any:
        """Returns the first contact along one direction, a Contact, or along each row of (k, 3), as Contacts.

        `offset` has 3 numbers, or one row for each direction. All processors share a batch. `progress` is called
        about twenty times a second with the part done; when it returns False, the remaining answers have the
        status 'cancelled'. Ctrl-C raises KeyboardInterrupt.

        >>> import gsl_geometry as gg
        >>> pair = gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")])
        >>> pair.sweep([(0, 0, -1), (0, 0, 1)]).travel
        array([30., inf])
        >>> pair.sweep("-z").travel
        30.0
        >>> pair.sweep("-z", clearance=0.25).travel
        29.75
        """
        terms = _terms(self._bodies, max_distance, one_sided, rule, clearance)
        return self._ask(False, directions, offset, terms, progress)

    def last(
        self,
        directions: Any,
        *,
        offset: Any = _arguments.NO_OFFSET,
        max_distance: float = math.inf,
        one_sided: bool = False,
        rule: str = "touch",
        progress: Optional[Progress] = None,
    ) -> Any:
        """Returns the last contact in the same way: after it the bodies are apart, up to max_distance.

        >>> import gsl_geometry as gg
        >>> pair = gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")])
        >>> pair.last("-z").travel > pair.sweep("-z").travel
        True
        """
        terms = self._terms_without_solids("the last contact", max_distance, one_sided, rule)
        return self._ask(True, directions, offset, terms, progress)

    def first_of_each(
        self,
        direction: Direction,
        *,
        offset: Sequence[float] = _arguments.NO_OFFSET,
        max_distance: float = math.inf,
        one_sided: bool = False,
        rule: str = "touch",
        clearance: float = _arguments.NO_LENGTH,
    ) -> Contacts:
        """Returns the first contact with each fixed body, as if it were alone with the moving body.

        >>> import gsl_geometry as gg
        >>> bolt, bracket = gg.read("bolt.stl"), gg.read("bracket.stl")
        >>> lower = bracket.moved(gg.Transform.translation((0, 0, -10)))
        >>> gg.Pair(bolt, [bracket, lower]).first_of_each("-z").travel
        array([30., 40.])
        """
        terms = _terms(self._bodies, max_distance, one_sided, rule, clearance)
        return self._contacts(self._core.of_each(_arguments.direction(direction), _arguments.offset(offset), terms))

    def patch(
        self,
        direction: Direction,
        *,
        offset: Sequence[float] = _arguments.NO_OFFSET,
        max_distance: float = math.inf,
        one_sided: bool = False,
        rule: str = "touch",
        limit: Optional[int] = 1000000,
    ) -> Patch:
        """Returns all pairs of triangles that touch at the first contact.

        `limit` is the most pairs that are listed, the first ones; None lists all. Two fans of n triangles can
        have n * n pairs, each of which takes about 150 bytes. `pair_count` counts all in any case.

        >>> import gsl_geometry as gg
        >>> pair = gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")])
        >>> patch = pair.patch("-z", limit=2)
        >>> patch.pair_count > 2, len(patch.pairs)
        (True, 2)
        """
        terms = self._terms_without_solids("a patch", max_distance, one_sided, rule)
        most = _arguments.MOST_EXACT if limit is None else _arguments.count("limit", limit, _arguments.MOST_EXACT)
        first, count, low, high, pairs = self._core.patch(
            _arguments.direction(direction), _arguments.offset(offset), terms, most
        )
        touches = count > 0
        return Patch(
            self._contact(first), count, np.array(low) if touches else None, np.array(high) if touches else None,
            self._contacts(pairs),
        )  # fmt: skip

    def __repr__(self) -> str:
        fixed = ", ".join(repr(body) for body in self._bodies[1:])
        return f"Pair({self._bodies[0]!r}, [{fixed}])"

    def __reduce__(self) -> _pickles.Reduced:
        values = {"moving": self._bodies[0], "fixed": self._bodies[1:], "threads": self._threads}
        return _pickles.reduced(self, values)


def sphere(n: int) -> np.ndarray:
    """Returns n directions of length one, spread evenly over the sphere, from the top down, shape (n, 3).

    They are the same bits on every machine, and the directions of gsl-sweep --sphere.

    >>> import gsl_geometry as gg
    >>> gg.sphere(1000).shape
    (1000, 3)
    """
    return _core.sphere(_arguments.count("n", n, _arguments.MOST_EXACT))
