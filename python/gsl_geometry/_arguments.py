"""Arguments of the module's functions as arrays of numbers, or errors that name them."""

from __future__ import annotations

import math
import numbers
import os
from typing import Any, NoReturn, Sequence, Tuple, Union

import numpy as np

Vector = Tuple[float, float, float]

AXES = {
    sign + axis: tuple((-1.0 if sign == "-" else 1.0) if axis.lower() == name else 0.0 for name in "xyz")
    for sign in ("", "+", "-")
    for axis in "xyzXYZ"
}
NO_OFFSET = (0.0, 0.0, 0.0)
NO_LENGTH = 0.0
RULES = {"touch": 0, "leaving": 1, "solid": 2}
DIRECTION_FORMS = "3 numbers or an axis such as 'z' or '-z'"


# The greatest counts. Doubles hold every whole number up to the first, and C++ takes threads up to the second.
MOST_EXACT = 2**53
MOST_UNSIGNED = 2**32 - 1
# A matrix is rigid when the products of its columns are off by no more. Single precision is off by about 2e-7.
RIGID_ERROR = 1e-6


def shape_text(shape: Sequence[int]) -> str:
    return str(tuple(int(size) for size in shape))


def wrong_type(name: str, expected: str, value: Any) -> NoReturn:
    raise TypeError(f"{name}: expected {expected}, got {type(value).__name__}")


def is_path(value: Any) -> bool:
    return isinstance(value, (str, bytes, os.PathLike))


def wrong_body(name: str, expected: str, value: Any) -> NoReturn:
    if is_path(value):
        raise TypeError(f"{name}: expected {expected}, got {type(value).__name__}; read(path) makes a body from a file")
    wrong_type(name, expected, value)


def progress(value: Any) -> None:
    if value is not None and not callable(value):
        wrong_type("progress", "a function of the part done", value)


def any_array(name: str, value: Any, of: str) -> np.ndarray:
    """Returns the value as an array of any type; `of` says what was expected."""
    try:
        return np.asarray(value)
    except ValueError as error:  # lists of different lengths
        raise ValueError(f"{name}: expected an array of {of}, got {type(value).__name__} ({error})") from None


def array(name: str, value: Any) -> np.ndarray:
    """Returns the value as an array of real numbers of any type."""
    made = any_array(name, value, "numbers")
    if made.dtype.kind not in "fiu":
        if made.size == 0:
            return made.astype(np.float64)
        raise TypeError(f"{name}: expected numbers, got {made.dtype}")
    return made


def reals(name: str, value: Any, shape: Sequence[Union[int, str]]) -> np.ndarray:
    """Returns the value as contiguous doubles. A text in the shape is a size that the value chooses."""
    made = array(name, value)
    if made.size == 0 and made.ndim == 1 and isinstance(shape[0], str):
        made = made.reshape(tuple(0 if isinstance(size, str) else size for size in shape))
    same = made.ndim == len(shape) and all(
        isinstance(expected, str) or size == expected for size, expected in zip(made.shape, shape)
    )
    if not same:
        wanted = "(" + ", ".join(str(size) for size in shape) + ("," if len(shape) == 1 else "") + ")"
        raise ValueError(f"{name}: expected shape {wanted}, got {shape_text(made.shape)}")
    return np.ascontiguousarray(made, dtype=np.float64)


def number(name: str, value: Any) -> float:
    if type(value) is float:  # at once, in calls of a few microseconds
        return value
    if isinstance(value, numbers.Real) and not isinstance(value, (bool, np.bool_)):
        try:
            return float(value)
        except OverflowError:
            raise ValueError(f"{name}: expected a number within the range of double, got a larger one") from None
    wrong_type(name, "a number", value)


def finite(name: str, value: Any) -> float:
    found = number(name, value)
    if not math.isfinite(found):
        raise ValueError(f"{name}: expected a finite number, got {found:g}")
    return found


def at_least_zero(name: str, value: Any) -> float:
    found = number(name, value)
    if not found >= 0.0:
        raise ValueError(f"{name}: expected a number of at least 0, got {found:g}")
    return found


def clearance(value: Any, rule: str) -> float:
    """Returns a distance; only rule="touch" takes one above 0."""
    if value is NO_LENGTH:
        return NO_LENGTH
    found = at_least_zero("clearance", finite("clearance", value))
    if found and rule != "touch":
        raise ValueError(f'clearance: expected 0 with rule="{rule}", got {found:g}')
    return found


def count(name: str, value: Any, most: int) -> int:
    if not isinstance(value, numbers.Integral) or isinstance(value, (bool, np.bool_)):
        wrong_type(name, "a whole number", value)
    if value < 0:
        raise ValueError(f"{name}: expected a whole number of at least 0, got {value}")
    if value > most:
        raise ValueError(f"{name}: expected a whole number of at most {most}, got {value}")
    return int(value)


def choice(name: str, value: Any, choices: dict) -> int:
    try:
        return choices[value]
    except (KeyError, TypeError):
        wanted = ", ".join(repr(key) for key in choices)
        raise ValueError(f"{name}: expected one of {wanted}, got {value!r}") from None


def vector(name: str, value: Any, expected: str = "3 numbers") -> Vector:
    """Returns three finite numbers."""
    if isinstance(value, str):
        raise ValueError(f"{name}: expected {expected}, got {value!r}")
    made = array(name, value)
    if made.shape != (3,):
        raise ValueError(f"{name}: expected {expected}, got shape {shape_text(made.shape)}")
    x, y, z = made.tolist()
    if not (math.isfinite(x) and math.isfinite(y) and math.isfinite(z)):
        raise ValueError(f"{name}: expected finite numbers, got ({x:g}, {y:g}, {z:g})")
    return float(x), float(y), float(z)


def direction(value: Any) -> Vector:
    """Returns three finite numbers that are not all zero."""
    if isinstance(value, str) and value in AXES:
        return AXES[value]  # type: ignore[return-value]
    made = vector("direction", value, DIRECTION_FORMS)
    if made == NO_OFFSET:
        raise ValueError("direction: expected a vector that is not zero, got (0, 0, 0)")
    return made


def offset(value: Any) -> Vector:
    return NO_OFFSET if value is NO_OFFSET else vector("offset", value)


def finite_matrix(matrix: np.ndarray) -> np.ndarray:
    """Returns the matrix, and refuses one with a number that is not finite."""
    wrong = np.argwhere(~np.isfinite(matrix))
    if len(wrong):
        row, column = wrong[0]
        raise ValueError(f"matrix[{row}, {column}]: expected a finite number, got {matrix[row, column]:g}")
    return matrix


def rigid(matrix: np.ndarray) -> None:
    """Refuses a matrix, shape (4, 4), that does more than rotate and translate."""
    finite_matrix(matrix)
    if (matrix[3] != (0, 0, 0, 1)).any():
        raise ValueError(f"matrix[3]: expected (0, 0, 0, 1), got ({', '.join(f'{x:g}' for x in matrix[3])})")
    turn = matrix[:3, :3]
    with np.errstate(over="ignore", invalid="ignore"):
        error = np.abs(turn.T @ turn - np.eye(3)).max()
    if not error <= RIGID_ERROR:
        raise ValueError(
            f"matrix: expected a rotation in the first three columns, got products of columns that are off by {error:.3g}"
        )
    if np.linalg.det(turn) < 0.0:
        raise ValueError("matrix: expected a rotation in the first three columns, got a reflection")


def finite_rows(name: str, rows: np.ndarray) -> None:
    fine = np.isfinite(rows).all(axis=1)
    if not fine.all():
        row = int(np.argmin(fine))
        raise ValueError(f"{name}[{row}]: expected finite numbers, got ({', '.join(f'{x:g}' for x in rows[row])})")


def directions(value: Any) -> np.ndarray:
    """Returns a copy of the rows, each of which is finite and not zero."""
    rows = reals("directions", value, ("k", 3)).copy()
    finite_rows("directions", rows)
    fine = rows.any(axis=1)
    if not fine.all():
        row = int(np.argmin(fine))
        raise ValueError(f"directions[{row}]: expected a vector that is not zero, got (0, 0, 0)")
    return rows


def offsets(value: Any, size: int) -> np.ndarray:
    """Returns a copy of the only row, or of one row for each direction."""
    made = array("offset", value)
    if made.shape == (3,):
        rows = made.reshape(1, 3)
    elif made.shape == (size, 3):
        rows = made
    else:
        raise ValueError(f"offset: expected shape (3,) or ({size}, 3), got {shape_text(made.shape)}")
    rows = np.array(rows, dtype=np.float64, order="C")
    finite_rows("offset", rows)
    return rows


def broadcast(names: Sequence[str], values: Sequence[Any], widths: Sequence[Tuple[int, ...]]):
    """Returns the common leading shape, and each value as contiguous rows: as many as that shape holds, or one."""
    arrays = []
    for name, value, width in zip(names, values, widths):
        made = array(name, value)
        if made.shape[made.ndim - len(width):] != width:
            wanted = "(..., " + ", ".join(str(size) for size in width) + ")"
            raise ValueError(f"{name}: expected shape {wanted}, got {shape_text(made.shape)}")
        arrays.append(np.ascontiguousarray(made, dtype=np.float64))
    leading = [made.shape[: made.ndim - len(width)] for made, width in zip(arrays, widths)]
    try:
        shape = np.broadcast_shapes(*leading)
    except ValueError:
        given = ", ".join(f"{name} {shape_text(made.shape)}" for name, made in zip(names, arrays))
        raise ValueError(f"expected shapes that broadcast together, got {given}") from None
    size = math.prod(shape)
    rows = []
    for made, own, width in zip(arrays, leading, widths):
        if own != shape and math.prod(own) != 1:
            made = np.ascontiguousarray(np.broadcast_to(made, shape + width))
        rows.append(made.reshape((-1,) + width))
    return shape, size, rows
