#!/usr/bin/env python3
"""Compares the names that a library exports for its own classes and functions with a list.

usage: check_exported_names.py [--write] LIBRARY LIST

Instantiations of templates and the names of types are not compared: the former have a list of their own. With
--write the list is written instead; a change of it is a change of what hosts link against.
"""

import re
import subprocess
import sys

HEAD = """\
# What libgsl_geometry exports of its own classes and functions, demangled, one name a line. Inline members
# are not among them: every module that uses one compiles it. To write this file again:
#   tests/gsl/check_exported_names.py --write LIBRARY tests/gsl/exported_names.txt
"""
OWN = re.compile(r"(?:(?:vtable|typeinfo) for )?(?:gsl_\w+|omu_ReturnPrim)")


def exported_names(library):
    text = subprocess.run(
        ["nm", "--dynamic", "--defined-only", "--demangle", library],
        check=True, capture_output=True, text=True,
    ).stdout
    names = {line.split(" ", 2)[2] for line in text.splitlines()}
    return sorted(name for name in names if OWN.match(name) and "<" not in name)


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--write"]
    if len(arguments) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    library, listing = arguments
    exported = exported_names(library)
    if "--write" in sys.argv:
        with open(listing, "w", encoding="utf-8") as out:
            out.write(HEAD + "\n" + "".join(f"{name}\n" for name in exported))
        return 0
    with open(listing, encoding="utf-8") as lines:
        pinned = [line.rstrip("\n") for line in lines if line.strip() and not line.startswith("#")]
    for name in sorted(set(pinned) - set(exported)):
        print(f"no longer exported: {name}", file=sys.stderr)
    for name in sorted(set(exported) - set(pinned)):
        print(f"exported, but not listed: {name}", file=sys.stderr)
    print(f"{len(exported)} exported, {len(pinned)} listed")
    return 1 if set(exported) != set(pinned) or not pinned else 0


if __name__ == "__main__":
    sys.exit(main())
