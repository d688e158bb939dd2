#!/usr/bin/env python3
"""Checks that the tests mirror the tree: each source file has its own test file.

usage: check_tests.py [ROOT]

ROOM/NAME.cpp, and ROOM/NAME.h that holds the bodies of functions itself, are tested by
tests/ROOM/NAME_test.cpp. A stand-in of the host is tested where its header is: gsl/host/PREFIX/standin/NAME.cpp
by tests/gsl/host/PREFIX/NAME_test.cpp. The exceptions below say why; one that is no longer needed is an error.
"""

import fnmatch
import pathlib
import re
import sys

import house_check

SOURCES = ["gsl", "model", "records", "exact", "mesh", "sweep", "view", "tools"]
# Rooms whose headers hold code that is compiled nowhere else.
ROOMS_OF_HEADERS = ["exact/", "mesh/", "tools/", "gsl/impl/kernel/", "gsl/impl/wide/"]

# Patterns of file names.
EXCEPTIONS = {
    "gsl/impl/wide/gsl_WideKernelsAvx2.cpp": "gsl_WideKernels_test.cpp runs the kernels of every width",
    "gsl/impl/wide/gsl_WideKernelsAvx512.cpp": "gsl_WideKernels_test.cpp runs the kernels of every width",
    "gsl/impl/wide/gsl_WideKernelsBaseline.cpp": "gsl_WideKernels_test.cpp runs the kernels of every width",
    "gsl/persist/gsl_Arrays.cpp": "instantiates what cls_xo1DArrayList_test.cpp and omu_xoObjVarray_test.cpp test",
}

# Matches a parameter list, what may follow it, and a brace.
BODY = re.compile(r"\)\s*(?:const\b|noexcept\b|override\b|final\b|\s)*(?::\s[^;{}]*(?:\{[^;{}]*\}[^;{}]*)*)?\{")
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)


def has_bodies(text):
    return BODY.search(COMMENT.sub("", text)) is not None


def needs_test(root, path):
    name = path.relative_to(root).as_posix()
    if path.suffix == ".cpp":
        return True
    if path.suffix != ".h" or path.with_suffix(".cpp").exists():
        return False
    return any(name.startswith(room) for room in ROOMS_OF_HEADERS) and has_bodies(path.read_text())


def test_of(name):
    name = re.sub(r"^(gsl/host/[^/]+)/standin/", r"\1/", name)
    return f"tests/{name.rsplit('.', 1)[0]}_test.cpp"


def listed(root):
    """Returns the test files that a CMakeLists.txt of the tests names, so that they are compiled."""
    found = set()
    for build in (root / "tests").rglob("CMakeLists.txt"):
        for name in re.findall(r"[\w./-]+_test\.cpp", build.read_text()):
            found.add((build.parent / name).resolve())
    return found


def problem_of(root, name, exceptions, compiled):
    test = root / test_of(name)
    if any(fnmatch.fnmatch(name, pattern) for pattern in exceptions):
        return f"{name}: has a test, so it is no longer an exception of scripts/check_tests.py" if test.exists() else None
    if not test.exists():
        return f"{name}: has no test file {test_of(name)}"
    if test not in compiled:
        return f"{test_of(name)}: is missing in the CMakeLists.txt of the tests"
    return None


def check(root, exceptions=None):
    root = pathlib.Path(root).resolve()
    exceptions = EXCEPTIONS if exceptions is None else exceptions
    compiled = listed(root)
    names = [
        path.relative_to(root).as_posix()
        for folder in SOURCES
        for path in sorted((root / folder).rglob("*"))
        if path.is_file() and needs_test(root, path)
    ]
    problems = [problem for name in names if (problem := problem_of(root, name, exceptions, compiled))]
    for pattern in exceptions:
        if not fnmatch.filter(names, pattern):
            problems.append(f"{pattern}: is an exception of scripts/check_tests.py, but no source is called that")
    return problems, len(names)


if __name__ == "__main__":
    sys.exit(house_check.run(check, "no sources found"))
