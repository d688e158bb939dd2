#!/usr/bin/env python3
"""Checks that every place that repeats the version agrees with gsl_Version.h.

usage: check_version.py [ROOT]
"""

import pathlib
import re

import house_check

FULL = r"(\d+\.\d+\.\d+)"
MINOR = r"(\d+\.\d+)"
# A file or a pattern of files, a regular expression whose group is the version, and the least number of places.
PLACES = (
    ("CITATION.cff", rf"^version: {FULL}$", 1),
    ("CHANGELOG.md", rf"\A.*?^## \[{FULL}\] - \d{{4}}-\d\d-\d\d$", 1),  # the newest release
    ("tools/*.1", rf'^\.TH \S+ "1" "" "\S+ {FULL}"', 3),
    ("docs/gsl-sweep.md", rf'"tool_version": "{FULL}"', 1),
    ("docs/records.md", rf"`gsl_geometry {FULL}`", 1),
    ("README.md", rf"find_package\(gsl_geometry {MINOR} ", 1),
    ("docs/guide.md", rf"find_package\(gsl_geometry {MINOR}[ )]", 2),
    ("docs/packages.md", rf"find_package\(gsl_geometry {MINOR} ", 1),
    ("docs/packages.md", rf"libgsl-geometry{MINOR}(?=\W|_)", 3),
    ("examples/CMakeLists.txt", rf"find_package\(gsl_geometry {MINOR} ", 1),
    ("tests/host_conformance/CMakeLists.txt", rf"find_package\(gsl_geometry {MINOR} ", 1),
    ("tests/consumer/*/CMakeLists.txt", rf"find_package\(gsl_geometry {MINOR} ", 1),
    ("packaging/debian/control", rf"libgsl-geometry{MINOR}(?=\W|_)", 4),
    ("packaging/debian/*.lintian-overrides", rf"^libgsl-geometry{MINOR}: ", 1),
    ("docs/abi.md", rf"`GSL_{MINOR}`", 1),
    ("docs/abi.md", rf"\.so\.{MINOR}: version `GSL_", 1),
    ("docs/guide.md", rf"^{MINOR}\.x\. ", 1),
    ("abi/*.map", rf"^GSL_{MINOR} \{{$", 5),
    ("abi/*.abi", rf"soname='\w+\.so\.{MINOR}'|soname=\"\w+\.so\.{MINOR}\"", 5),
)
# Files whose name has the version.
NAMES = (("packaging/debian/libgsl-geometry*", rf"libgsl-geometry{MINOR}\.", 2),)


def stated(header):
    """Returns the version that the text of gsl_Version.h states."""
    return ".".join(re.search(rf"^#define GSL_VERSION_{part} (\d+)$", header, re.MULTILINE).group(1)
                    for part in ("MAJOR", "MINOR", "PATCH"))


def disagreements(version, place, pattern, least, texts):
    """Yields what is wrong in the texts of the files of a place; `texts` holds pairs of a name and a text."""
    count = 0
    for name, text in texts:
        for match in re.finditer(pattern, text, re.MULTILINE | re.DOTALL if r"\A" in pattern else re.MULTILINE):
            count += 1
            found = next(group for group in match.groups() if group)
            expected = version if found.count(".") == 2 else version.rpartition(".")[0]
            if found != expected:
                yield f"{name}: the version is {found}; expected {expected}"
    if count < least:
        yield f"{place}: {count} places have the version; expected at least {least} that match {pattern}"


def find(root):
    root = pathlib.Path(root)
    version = stated((root / "gsl/include/gsl_Version.h").read_text(encoding="utf-8"))
    problems = []
    for place, pattern, least in PLACES:
        texts = [(path.relative_to(root), path.read_text(encoding="utf-8")) for path in sorted(root.glob(place))]
        problems += disagreements(version, place, pattern, least, texts)
    for place, pattern, least in NAMES:
        texts = [(path.relative_to(root), path.name) for path in sorted(root.glob(place))]
        problems += disagreements(version, place, pattern, least, texts)
    return problems, len(PLACES) + len(NAMES)


if __name__ == "__main__":
    raise SystemExit(house_check.run(find, "no version was checked"))
