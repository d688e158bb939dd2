#!/usr/bin/env python3
"""Checks that THIRD_PARTY_NOTICES has a section for every library that the programs are built with.

usage: check_notices.py [ROOT]

The libraries are the packages named lib... or ...-dev of the group python in scripts/packages.sh, which holds the
group build, and the dependencies in view/page/package.json. Python itself loads the module, and has its own notices. The heading of a section is an underlined line
that names the package in brackets. It names the holder of the copyright, or says that the library is in the public
domain.
"""

import json
import pathlib
import re
import subprocess
import sys

import house_check

NOTICES = "THIRD_PARTY_NOTICES"

SECTION = re.compile(r"^[^\n]* \[([^\]\n]+)\]\n-{3,}\n(.*?)(?=^[^\n]*\n-{3,}\n|\Z)", re.MULTILINE | re.DOTALL)
TITLE = re.compile(r"^The (\w+) licence\n-{3,}\n", re.MULTILINE)


def libraries(packages):
    return {name for name in packages if re.match(r"lib|.*-dev$", name) and name != "python3-dev"}


def problems(packages, notices, bundled=()):
    needed = libraries(packages) | set(bundled)
    sections = dict(SECTION.findall(notices))
    titles = set(TITLE.findall(notices))
    for name in sorted(needed - set(sections)):
        yield f"{name} has no section"
    for name in sorted(set(sections) - needed):
        yield f"{name} has a section, but no program is built with {name}"
    for name, text in sorted(sections.items()):
        if not re.search(r"^(Copyright \([cC]\) |In the public domain: )", text, re.MULTILINE):
            yield f"{name}: the section does not name the holder of the copyright"
        promised = re.search(r"The (\w+) licence, whose text is at the end", text)
        if promised and promised.group(1) not in titles:
            yield f"{name}: the text of the {promised.group(1)} licence is missing"


def check(root):
    root = pathlib.Path(root).resolve()
    packages = subprocess.run(
        [root / "scripts/packages.sh", "python"], check=True, capture_output=True, text=True
    ).stdout.split()
    bundled = json.loads((root / "view/page/package.json").read_text())["dependencies"]
    found = problems(packages, (root / NOTICES).read_text(), bundled)
    return [f"{NOTICES}: {problem}" for problem in found], len(libraries(packages))


if __name__ == "__main__":
    sys.exit(house_check.run(check, "the group python has no libraries"))
