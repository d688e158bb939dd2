#!/usr/bin/env python3
"""Compares the names that a library exports for its own classes and functions with a list.

usage: check_exported_names.py [--write] LIBRARY LIST

What the standard library leaves in the library is not compared. With --write the list is written instead; a
change of it is a change of what hosts link against.
"""

import pathlib
import re
import subprocess
import sys

HEAD = """\
# What {library} exports of its own classes and functions, demangled, one name a line. Inline members
# are not among them: every module that uses one compiles it. To write this file again:
#   tests/gsl/check_exported_names.py --write LIBRARY {listing}
"""
# libgsl_geometry instantiates templates of the host, which have a list of their own.
OWN_OF_GEOMETRY = re.compile(r"(?:(?:vtable|typeinfo) for )?(?:gsl_\w+|omu_ReturnPrim)")
STANDARD = re.compile(r"(?:\w+ )?(?:[\w ]+ for )?(?:std|__gnu_cxx)::")
RULES = {
    "libgsl_geometry": lambda name: OWN_OF_GEOMETRY.match(name) and "<" not in name,
    "libgsl_sweep": lambda name: not STANDARD.match(name),
}


def exported_names(library):
    text = subprocess.run(
        ["nm", "--dynamic", "--defined-only", "--demangle", library],
        check=True, capture_output=True, text=True,
    ).stdout
    is_own = RULES[pathlib.Path(library).name.split(".")[0]]
    names = {line.split(" ", 2)[2] for line in text.splitlines()}
    return sorted(name for name in names if is_own(name))


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--write"]
    if len(arguments) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    library, listing = arguments
    exported = exported_names(library)
    if "--write" in sys.argv:
        with open(listing, "w", encoding="utf-8") as out:
            head = HEAD.format(library=pathlib.Path(library).name.split(".")[0], listing=listing)
            out.write(head + "\n" + "".join(f"{name}\n" for name in exported))
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
