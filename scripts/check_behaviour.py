#!/usr/bin/env python3
"""Checks that docs/behaviour.md, the comments that name an oddity, and the tests belong together.

usage: check_behaviour.py [ROOT]

Every row names files of the library and tests. Each file must hold a comment with the row's name, a colon
and a reason, and each test must exist. A comment with a name that no row has is an error too, and so is such a
name in brackets on a page that the page of the oddities links.
"""

import pathlib
import re
import sys

import house_check

PAGE = "docs/behaviour.md"
HEAD = ["name", "what it does", "where", "test"]
# Matches three words or more joined by hyphens, alone or before a colon. Ordinary comments do not look like this.
NAME_COMMENT = re.compile(r"^[ \t]*//+ ([a-z0-9]+(?:-[a-z0-9]+){2,})(?:(:)[ \t]*(\S?)|[ \t]*$)", re.MULTILINE)
NAME_ON_A_PAGE = re.compile(r"\(`([a-z0-9]+(?:-[a-z0-9]+){2,})`\)")
LINK = re.compile(r"\]\(([\w-]+\.md)\)")
TEST = re.compile(r"^(?:TEST|TEST_F|TEST_P|RC_GTEST_PROP)\(\s*(\w+),\s*(\w+)", re.MULTILINE)


def cells_of(line):
    return [cell.strip() for cell in line.strip().strip("|").split("|")]


def rows_of(page):
    """Yields (line number, cells) of every row of the page's tables."""
    for number, line in enumerate(page.splitlines(), 1):
        if not line.startswith("|"):
            continue
        cells = cells_of(line)
        if cells != HEAD and not all(set(cell) <= set("-: ") for cell in cells):
            yield number, cells


def quoted(cell):
    return re.findall(r"`([^`]+)`", cell)


def sources(root, folder):
    return sorted(path for path in (root / folder).rglob("*") if path.suffix in (".h", ".cpp"))


def tests_of(root):
    found = set()
    for path in sources(root, "tests"):
        found.update(f"{suite}.{name}" for suite, name in TEST.findall(path.read_text()))
    return found


def names_in_code(root):
    """Returns the name of every oddity comment with its files, and the comments without a reason."""
    found, bare = {}, []
    for path in sources(root, "gsl"):
        file = path.relative_to(root).as_posix()
        for name, colon, reason in NAME_COMMENT.findall(path.read_text()):
            found.setdefault(name, set()).add(file)
            if not colon or not reason:
                bare.append(f"{file}: {name} has no colon and reason after it")
    return found, bare


def names_on_linked_pages(root):
    """Yields (page, name) of every name in brackets on the pages that the page of the oddities links."""
    for link in sorted(set(LINK.findall((root / PAGE).read_text()))):
        page = (root / PAGE).parent / link
        for name in NAME_ON_A_PAGE.findall(page.read_text()):
            yield page.relative_to(root).as_posix(), name


def check_row(cells, tests, named):
    if len(cells) != len(HEAD):
        return [f"has {len(cells)} cells, but {len(HEAD)} are expected"]
    name, what, where, test = cells[0].strip("`"), cells[1], quoted(cells[2]), quoted(cells[3])
    problems = [f"{name}: {missing}" for missing, cell in
                (("says nothing", what), ("names no file", where), ("names no test", test)) if not cell]
    problems += [f"{name}: {file} has no comment of that name" for file in where
                 if file not in named.get(name, ())]
    problems += [f"{name}: there is no test {entry}" for entry in test if entry not in tests]
    return problems


def check(root):
    root = pathlib.Path(root)
    tests = tests_of(root)
    named, problems = names_in_code(root)
    seen = set()
    for number, cells in rows_of((root / PAGE).read_text()):
        name = cells[0].strip("`")
        found = check_row(cells, tests, named)
        if name in seen:
            found.append(f"{name}: has two rows")
        seen.add(name)
        problems += [f"{PAGE}:{number}: {problem}" for problem in found]
    problems += [f"{file}: {name} has no row in {PAGE}"
                 for name in sorted(set(named) - seen) for file in sorted(named[name])]
    problems += [f"{page}: {name} has no row in {PAGE}" for page, name in names_on_linked_pages(root)
                 if name not in seen]
    return problems, len(seen)


if __name__ == "__main__":
    sys.exit(house_check.run(check, f"{PAGE} has no rows"))
