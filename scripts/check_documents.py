#!/usr/bin/env python3
"""Checks that the lines of prose in every document fit in 120 columns, and that CITATION.cff names the version of
gsl_Version.h.

usage: check_documents.py [ROOT]

Rows of tables, blocks of code, and lines that are one link or one word alone may be longer: none of them can be
broken.
"""

import pathlib
import re
import sys

import house_check

WIDTH = 120
FENCE = re.compile(r"^\s*(```|~~~)")


def problems_of(name, text):
    fence = None
    for number, line in enumerate(text.splitlines(), 1):
        mark = FENCE.match(line)
        if mark and fence in (None, mark.group(1)):
            fence = None if fence else mark.group(1)
            continue
        is_row = line.lstrip().startswith("|")
        is_one_word = len(line.split()) <= 1
        if fence is None and not is_row and not is_one_word and len(line) > WIDTH:
            yield f"{name}:{number}: the line has {len(line)} columns, but at most {WIDTH} are allowed"
    if fence:
        yield f"{name}: a block of code is not closed"


def version_problems(root):
    citation, header = root / "CITATION.cff", root / "gsl/include/gsl_Version.h"
    if not citation.exists() or not header.exists():
        return
    parts = re.findall(r"^#define GSL_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)$", header.read_text(), re.MULTILINE)
    named = re.search(r"^version: *(\S*)$", citation.read_text(), re.MULTILINE)
    if not named or named.group(1) != ".".join(parts):
        yield f"CITATION.cff: the version is {named and named.group(1)}; expected {'.'.join(parts)}"


def check(root):
    root = pathlib.Path(root)
    problems = list(version_problems(root))
    count = 0
    for path in sorted(root.rglob("*.md")):
        name = path.relative_to(root).as_posix()
        if name.startswith((".", "build")):
            continue
        count += 1
        problems.extend(problems_of(name, path.read_text()))
    return problems, count


if __name__ == "__main__":
    sys.exit(house_check.run(check, "no documents found"))
