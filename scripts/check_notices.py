#!/usr/bin/env python3
"""Checks that THIRD_PARTY_NOTICES has a section for every library that the programs are built with.

usage: check_notices.py [ROOT]

The libraries are the packages named lib... or ...-dev of the group build in scripts/packages.sh. A
section is headed by a line that names its package in brackets, underlined.
"""

import pathlib
import re
import subprocess
import sys

SECTION = re.compile(r"^[^\n]* \[([^\]\n]+)\]\n-{3,}\n(.*?)(?=^[^\n]*\n-{3,}\n|\Z)", re.MULTILINE | re.DOTALL)
TITLE = re.compile(r"^The (\w+) licence\n-{3,}\n", re.MULTILINE)


def libraries(packages):
    return {name for name in packages if re.match(r"lib|.*-dev$", name)}


def problems(packages, notices):
    needed = libraries(packages)
    sections = dict(SECTION.findall(notices))
    titles = set(TITLE.findall(notices))
    for name in sorted(needed - set(sections)):
        yield f"{name} has no section"
    for name in sorted(set(sections) - needed):
        yield f"{name} has a section, but nothing is built with it"
    for name, text in sorted(sections.items()):
        if not re.search(r"^Copyright \([cC]\) ", text, re.MULTILINE):
            yield f"{name}: the section names no holder of the copyright"
        promised = re.search(r"The (\w+) licence, whose text is at the end", text)
        if promised and promised.group(1) not in titles:
            yield f"{name}: the text of the {promised.group(1)} licence is missing"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else __file__).resolve()
    root = root if root.is_dir() else root.parent.parent
    packages = subprocess.run(
        [root / "scripts/packages.sh", "build"], check=True, capture_output=True, text=True
    ).stdout.split()
    found = list(problems(packages, (root / "THIRD_PARTY_NOTICES").read_text()))
    if not libraries(packages):
        found.append("the group build has no libraries")
    for problem in found:
        print(f"THIRD_PARTY_NOTICES: {problem}", file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
