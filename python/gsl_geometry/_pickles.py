"""Pickles that hold values by their names, and a version."""

from __future__ import annotations

import pickle
from typing import Any, Callable, Dict, Tuple

# Changes when a name gets another meaning.
VERSION = 1

Reduced = Tuple[Callable[..., Any], Tuple[Any, ...]]


def reduced(thing: Any, values: Dict[str, Any]) -> Reduced:
    """Returns what a class's __reduce__ returns; the class has _restored(**values), or is a named tuple."""
    return restored, (type(thing), VERSION, values)


def restored(kind: Any, version: int, values: Dict[str, Any]) -> Any:
    name = f"gsl_geometry.{kind.__name__}"
    if version != VERSION:
        raise pickle.UnpicklingError(
            f"{name}: expected a pickle of version {VERSION}, got version {version}; "
            "another version of gsl_geometry has written it"
        )
    make = getattr(kind, "_restored", kind)
    try:
        return make(**values)
    except TypeError as error:
        raise pickle.UnpicklingError(f"{name}: expected a whole pickle, got a damaged one ({error})") from error


def reduced_tuple(thing: Any) -> Reduced:
    """The __reduce__ of a named tuple."""
    return reduced(thing, thing._asdict())
