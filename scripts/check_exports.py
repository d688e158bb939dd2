#!/usr/bin/env python3
"""Compares the names that a shared library exports with its version script in abi/.

usage: check_exports.py [--write | --strong] SCRIPT LIBRARY OBJECTS

OBJECTS is a file with the paths of the library's object files, one a line. The linker hides every name that the
script does not list, so the object files show what is declared for export and is not listed. With --strong a weak
name need not be listed: other compilers and other levels emit other inline functions, which every module has anyway.
The version of the script is the version of the headers. With --write the script is written instead; a change of it
is a change of what programs link against.
"""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
HEAD = """\
# What {library} exports: every name that programs link against. An inline member is among them only
# where gcc keeps a copy; every module that uses one compiles it. The linker hides other names. To write this file again:
#   cmake --build build/dev --target write_abi
"""
# The standard library makes its own templates visible; every module has its own.
STANDARD = re.compile(r"(?:[\w:<>*&, ]+ |decltype .*\) )?(?:std|__gnu_cxx)::|operator (?:new|delete)")
LISTED = re.compile(r"^    (\w+);", re.MULTILINE)
NODE = re.compile(r"^(\S+) \{", re.MULTILINE)
SYMBOL = re.compile(r"(GLOBAL|WEAK|UNIQUE) +DEFAULT +(?!UND)\w+ +(\S+)$", re.MULTILINE)


def node_of(header):
    """Returns the name of the version node that belongs to the text of gsl_Version.h."""
    number = {part: re.search(rf"#define GSL_VERSION_{part} (\d+)", header).group(1) for part in ("MAJOR", "MINOR")}
    return f"GSL_{number['MAJOR']}.{number['MINOR']}"


def demangled(names):
    names = list(names)
    text = subprocess.run(["c++filt"], input="\n".join(names), check=True, capture_output=True, text=True).stdout
    return dict(zip(names, text.splitlines()))


def visible(table, files):
    """Returns the names of a symbol table that other modules may see, each with its binding."""
    command = ["readelf", "--wide", table, *files]
    text = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    found = {}
    for binding, name in SYMBOL.findall(text):
        found.setdefault(name.partition("@")[0], binding)
    readable = demangled(found)
    return {
        name: binding for name, binding in found.items() if name.startswith("_Z") and not STANDARD.match(readable[name])
    }


def script_of(library, node, names):
    readable = demangled(names)
    lines = [f"    {name};  # {readable[name]}\n" for name in sorted(names, key=lambda name: (readable[name], name))]
    return HEAD.format(library=library) + f"\n{node} {{\n  global:\n{''.join(lines)}  local:\n    *;\n}};\n"


def problems(script, node, exported, declared, strong=False):
    """Yields what differs. Names are compared as people read them, because compilers emit different variants of one
    constructor."""
    found = NODE.search(script)
    if not found or found.group(1) != node:
        yield f"the version is {found.group(1) if found else 'missing'}; expected {node}"
    listed = set(demangled(LISTED.findall(script)).values())
    if not listed:
        yield "no name is listed"
    for name in sorted(listed - set(demangled(exported).values())):
        yield f"listed, but not exported: {name}"
    readable = demangled(declared)
    unlisted = {readable[name] for name, binding in declared.items() if not (strong and binding == "WEAK")} - listed
    for name in sorted(unlisted):
        yield f"declared for export, but not listed: {name}"


def unversioned(table, node):
    """Yields the names of a dynamic symbol table that are defined without the version."""
    for _, name in SYMBOL.findall(table):
        if name.startswith("_Z") and not name.endswith(f"@@{node}"):
            yield f"exported without the version {node}: {name}"


def main():
    arguments = [argument for argument in sys.argv[1:] if not argument.startswith("--")]
    if len(arguments) != 3:
        print(__doc__, file=sys.stderr)
        return 2
    script, library, objects = map(pathlib.Path, arguments)
    node = node_of((ROOT / "gsl/include/gsl_Version.h").read_text())
    declared = visible("--syms", objects.read_text().split())
    if "--write" in sys.argv:
        script.write_text(script_of(script.stem, node, declared))
        return 0
    found = list(problems(script.read_text(), node, visible("--dyn-syms", [library]), declared, "--strong" in sys.argv))
    table = subprocess.run(["readelf", "--wide", "--dyn-syms", library], check=True, capture_output=True, text=True)
    found += unversioned(table.stdout, node)
    for problem in found:
        print(f"{script.name}: {problem}", file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
