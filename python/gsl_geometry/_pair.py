"""Questions about one moving body and fixed bodies."""

from __future__ import annotations

import math
from typing import Any, Callable, Iterable, Optional, Sequence, Tuple, Union

import numpy as np

from . import _arguments, _core
from ._body import Body
from ._contact import Contact, Contacts, Patch

__all__ = ["Pair", "sphere", "sweep"]

Direction = Union[str, Sequence[float], np.ndarray]
Progress = Callable[[float], Any]
SOLID = _arguments.RULES["solid"]


def _body(name: str, value: Any) -> Body:
    if isinstance(value, Body):
        return value
    if hasattr(value, "vertices") and hasattr(value, "faces"):
        return Body(value)
    _arguments.wrong_type(name, "a Body or an object with vertices and faces", value)


def _require_solids(bodies: Sequence[Body]) -> None:
    for k, body in enumerate(bodies):
        fault = body.solid_fault
        if fault:
            name = "moving" if k == 0 else f"fixed[{k - 1}]"
            raise ValueError(f'{name}: rule="solid" expected a solid, got a body with a fault: {fault}')


def sweep(
    moving: Any,
    fixed: Any,
    direction: Direction,
    *,
    offset: Sequence[float] = _arguments.NO_OFFSET,
    max_distance: float = math.inf,
    one_sided: bool = False,
    rule: str = "touch",
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

    >>> import gsl_geometry as gg
    >>> c = gg.sweep(gg.read("bolt.stl"), gg.read("bracket.stl"), "-z")
    >>> c.status, c.travel, c.kind
    ('contact', 30.0, 'vertex-face')
    """
    bodies = [_body("moving", moving)]
    if isinstance(fixed, (list, tuple)):
        bodies += [_body(f"fixed[{k}]", body) for k, body in enumerate(fixed)]
    else:
        bodies.append(_body("fixed", fixed))
    code = _arguments.choice("rule", rule, _arguments.RULES)
    along = _arguments.direction(direction)
    start = _arguments.offset(offset)
    limit = _arguments.at_least_zero("max_distance", max_distance)
    if code == SOLID:
        _require_solids(bodies)
    return Contact(_core.sweep([body._core for body in bodies], along, start, limit, bool(one_sided), code))


class Pair:
    """A moving body and fixed bodies, prepared once and asked many times, from any threads.

    `threads` limits the threads of a batch; 0 means one for each processor. `progress` is called with the part
    of the preparation that is done, from 0 to 1.

    The answer is the same as if the triangles of all fixed bodies, in order, were one body. The options of each
    question are described at sweep().

    >>> import gsl_geometry as gg
    >>> pair = gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")])
    >>> pair.sweep(gg.sphere(100)).touches.sum() > 0
    True
    """

    __slots__ = ("_bodies", "_core", "_threads", "__weakref__")

    def __init__(
        self, moving: Any, fixed: Iterable[Any], *, threads: int = 0, progress: Optional[Progress] = None
    ) -> None:
        if isinstance(fixed, Body) or hasattr(fixed, "vertices"):
            fixed = [fixed]
        self._bodies = [_body("moving", moving)]
        self._bodies += [_body(f"fixed[{k}]", body) for k, body in enumerate(fixed)]
        self._threads = _arguments.count("threads", threads)
        self._core = _core.Pair([body._core for body in self._bodies], self._threads, progress)

    @property
    def moving(self) -> Body:
        """The moving body.

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

    def _terms(self, max_distance: float, one_sided: bool, rule: str) -> Tuple[float, bool, int]:
        code = _arguments.choice("rule", rule, _arguments.RULES)
        if code == SOLID:
            _require_solids(self._bodies)
        return _arguments.at_least_zero("max_distance", max_distance), bool(one_sided), code

    def _ask(
        self, last: bool, direction: Any, offset: Any, terms: Tuple[float, bool, int], progress: Optional[Progress]
    ) -> Union[Contact, Contacts]:
        if last and terms[2] == SOLID:
            raise ValueError("rule: expected 'touch' or 'leaving' for the last contact, got 'solid'")
        if isinstance(direction, str) or np.ndim(direction) == 1 and np.shape(direction) != (0,):
            along, start = _arguments.direction(direction), _arguments.offset(offset)
            return Contact(self._core.one(along, start, *terms, last))
        rows = _arguments.directions(direction)
        starts = _arguments.offsets(offset, len(rows))
        return Contacts(self._core.many(rows, starts, *terms, last, progress))

    def sweep(
        self,
        directions: Any,
        *,
        offset: Any = _arguments.NO_OFFSET,
        max_distance: float = math.inf,
        one_sided: bool = False,
        rule: str = "touch",
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
        """
        return self._ask(False, directions, offset, self._terms(max_distance, one_sided, rule), progress)

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
        return self._ask(True, directions, offset, self._terms(max_distance, one_sided, rule), progress)

    def first_of_each(
        self,
        direction: Direction,
        *,
        offset: Sequence[float] = _arguments.NO_OFFSET,
        max_distance: float = math.inf,
        one_sided: bool = False,
        rule: str = "touch",
    ) -> Contacts:
        """Returns the first contact with each fixed body, as if it were alone with the moving body.

        >>> import gsl_geometry as gg
        >>> bolt, bracket = gg.read("bolt.stl"), gg.read("bracket.stl")
        >>> lower = bracket.moved(gg.Transform.translation((0, 0, -10)))
        >>> gg.Pair(bolt, [bracket, lower]).first_of_each("-z").travel
        array([30., 40.])
        """
        terms = self._terms(max_distance, one_sided, rule)
        return Contacts(self._core.of_each(_arguments.direction(direction), _arguments.offset(offset), *terms))

    def patch(
        self,
        direction: Direction,
        *,
        offset: Sequence[float] = _arguments.NO_OFFSET,
        max_distance: float = math.inf,
        one_sided: bool = False,
        rule: str = "touch",
        limit: Optional[int] = None,
    ) -> Patch:
        """Returns all pairs of triangles that touch at the first contact. `limit` is the most that are listed.

        >>> import gsl_geometry as gg
        >>> pair = gg.Pair(gg.read("bolt.stl"), [gg.read("bracket.stl")])
        >>> patch = pair.patch("-z", limit=2)
        >>> patch.pair_count > 2, len(patch.pairs)
        (True, 2)
        """
        terms = self._terms(max_distance, one_sided, rule)
        if terms[2] == SOLID:
            raise ValueError("rule: expected 'touch' or 'leaving' for a patch, got 'solid'")
        most = 2**63 - 1 if limit is None else _arguments.count("limit", limit)
        first, count, low, high, pairs = self._core.patch(
            _arguments.direction(direction), _arguments.offset(offset), *terms, most
        )
        touches = count > 0
        return Patch(
            Contact(first), count, np.array(low) if touches else None, np.array(high) if touches else None,
            Contacts(pairs),
        )  # fmt: skip

    def __repr__(self) -> str:
        fixed = ", ".join(repr(body) for body in self._bodies[1:])
        return f"Pair({self._bodies[0]!r}, [{fixed}])"

    def __reduce__(self) -> Tuple[Any, ...]:
        return _restore, (self._bodies[0], self._bodies[1:], self._threads)


def _restore(moving: Body, fixed: Sequence[Body], threads: int) -> Pair:
    """Returns a pair that was pickled."""
    return Pair(moving, fixed, threads=threads)


def sphere(n: int) -> np.ndarray:
    """Returns n directions of length one, spread evenly over the sphere, from the top down, shape (n, 3).

    They are the same bits on every machine, and the directions of gsl-sweep --sphere.

    >>> import gsl_geometry as gg
    >>> gg.sphere(1000).shape
    (1000, 3)
    """
    return _core.sphere(_arguments.count("n", n))
