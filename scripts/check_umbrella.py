#!/usr/bin/env python3
"""Checks that gsl_utils.h declares or includes every exported free function.

usage: check_umbrella.py [ROOT]
"""

import pathlib
import re
import sys

import house_check

UMBRELLA = "gsl_utils.h"
FUNCTION = re.compile(r"^GSL_API\s[^;{]*?\b(\w+)\(", re.MULTILINE)
INCLUDE = re.compile(r'^#include "([^"]+)"', re.MULTILINE)


def reached_from(headers, start):
    reached, waiting = set(), [start]
    while waiting:
        name = waiting.pop()
        if name in headers and name not in reached:
            reached.add(name)
            waiting += INCLUDE.findall(headers[name])
    return reached


def check(root):
    headers = {path.name: path.read_text() for path in (pathlib.Path(root) / "gsl/include").glob("*.h")}
    reached = reached_from(headers, UMBRELLA)
    functions = {(name, function) for name, text in headers.items() for function in FUNCTION.findall(text)}
    problems = [f"{name}: declares {function}, but {UMBRELLA} does not include it"
                for name, function in sorted(functions) if name not in reached]
    return problems, len(functions)


if __name__ == "__main__":
    sys.exit(house_check.run(check, "no exported functions found"))
