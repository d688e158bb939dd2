#!/usr/bin/env python3
"""Checks that public headers mark with [[nodiscard]] what a caller must not drop.

usage: check_nodiscard.py [ROOT]

These are results of type bool, and pointers to something that is not const, because the caller may own it.
"""

import pathlib
import re
import sys

import house_check

HEADERS = ("gsl/include/*.h", "gsl/host/*/*.h")
# Operations whose result a caller may not need, and pointers to what the object keeps.
MAY_BE_DROPPED = {"Normalize", "Regenerate", "Insert", "Substitute", "atr_SubstituteFormat", "Entry", "Unshared",
                  "ExtensionObject", "begin", "end"}
DECLARATION = re.compile(
    r"^ *(?P<mark>\[\[nodiscard\]\] )?(?:static |virtual |explicit |constexpr |inline |friend |GSL_API |GSL_HOST_API )*"
    r"(?P<type>bool|[\w:<>, ]+\*) (?P<name>\w+|operator[^\w(]+)\((?P<rest>[^;{]*[;{])?", re.MULTILINE)
NO_TYPE = {"return", "new", "delete", "else", "throw", "using", "operator"}


def without_comments(text):
    return re.sub(r"//[^\n]*", "", text)


def unmarked(text):
    """Returns the declarations without the mark, and the number of declarations that need the mark."""
    missing, count = [], 0
    for match in DECLARATION.finditer(without_comments(text)):
        name = match["name"]
        words = match["type"].replace("*", " ").split()
        if name in MAY_BE_DROPPED or "const" in words or (words and words[0] in NO_TYPE):
            continue
        # The language allows no attribute on a friend declaration that is not a definition.
        if "friend " in match[0] and (match["rest"] or "").endswith(";"):
            continue
        count += 1
        if not match["mark"]:
            missing.append(name)
    return missing, count


def check(root):
    root = pathlib.Path(root)
    problems, total = [], 0
    for pattern in HEADERS:
        for header in sorted(root.glob(pattern)):
            missing, count = unmarked(header.read_text())
            total += count
            problems += [f"{header.relative_to(root)}: {name} is not marked [[nodiscard]]" for name in missing]
    return problems, total


if __name__ == "__main__":
    sys.exit(house_check.run(check, "no declarations found"))
