#!/usr/bin/env python3
"""Checks that the test of aliases names every public operation that has an output parameter.

usage: check_outputs.py [ROOT]

An output is a parameter that refers or points to something that is not const. A comment of the test names an
operation with the types of its parameters. Only outputs have & and * there:

    // output: gsl_Point::ProjectOn(gsl_StLine, double&)

An operation that the test does not name is an error, and so is a name that no header has.
"""

import pathlib
import re
import sys

import house_check

HEADERS = "gsl/include"
TEST = "tests/gsl/aliasing_test.cpp"
# The operations pass these parameters on and read no input after them.
NOT_OUTPUTS = {"aio_ostream", "cls_ClassRegistrar"}

# Matches a scope that opens or closes, an access label, or a call, which may be a declaration.
TOKEN = re.compile(
    r"(?:(?P<kind>class|struct|namespace) (?:GSL_API )?(?P<scope>\w+)[^;{}()]*)?(?P<brace>[{}])"
    r"|(?P<access>public|private|protected):"
    r"|(?P<name>\w+)\((?P<parameters>[^(){};]*)\)")
PARAMETER = re.compile(r"(const )?([\w:<>]+)( const)?([&*]*)(?: const)?(?: \w+)?(?: = .*)?")
NAMED = re.compile(r"// output: ([^)]*\))")


def plain(text):
    """Returns the text without comments. Each type is one word, and a pointer to an array is a pointer."""
    text = re.sub(r"//[^\n]*", "", text).replace("unsigned int", "unsigned")
    return re.sub(r"double \(\*const (\w+)\)\[4\]", r"double* \1", text)


def types_of(parameters):
    """Returns the types without const and names, and whether one is an output. Returns None for other text."""
    types, has_output = [], False
    for parameter in parameters.split(","):
        match = PARAMETER.fullmatch(" ".join(parameter.split()))
        if not match:
            return None, False
        before, base, after, reference = match.groups()
        # A parameter that is moved from is not an output.
        is_output = reference not in ("", "&&") and not before and not after
        has_output = has_output or (is_output and base not in NOT_OUTPUTS)
        types.append(base + (reference if is_output else ""))
    return ", ".join(types), has_output


def operations_of(text):
    """Yields the name and the types of every public operation of a header that has an output."""
    scopes = []
    for token in TOKEN.finditer(plain(text)):
        if token["brace"] == "{":
            scopes.append([token["scope"], token["kind"] != "class"])
        elif token["brace"]:
            scopes.pop()
        elif token["access"]:
            scopes[-1][1] = token["access"] == "public"
        else:
            types, has_output = types_of(token["parameters"])
            if has_output and all(public for _, public in scopes):
                yield "::".join([scope for scope, _ in scopes] + [token["name"]]) + f"({types})"


def check(root):
    root = pathlib.Path(root)
    declared = {}
    for header in sorted((root / HEADERS).glob("*.h")):
        for operation in operations_of(header.read_text()):
            declared.setdefault(operation, header.name)
    lines = re.sub(r"\n\s*//(?! output:) *", " ", (root / TEST).read_text())
    named = [" ".join(name.split()) for name in NAMED.findall(lines)]
    problems = [f"{HEADERS}/{header}: {TEST} does not name {operation}"
                for operation, header in declared.items() if operation not in named]
    problems += [f"{TEST}: no header declares {name}" for name in named if name not in declared]
    return problems, len(declared)


if __name__ == "__main__":
    sys.exit(house_check.run(check, "no operations with an output found"))
