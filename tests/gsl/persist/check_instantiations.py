#!/usr/bin/env python3
"""Checks that a library exports every symbol of a list.

usage: check_instantiations.py LIBRARY LIST

A line of the list is the beginning of a demangled symbol; lines that begin with # are comments.
"""

import subprocess
import sys


def main():
    if len(sys.argv) != 3:
        print(__doc__, file=sys.stderr)
        return 2
    library, listing = sys.argv[1:]
    text = subprocess.run(
        ["nm", "--dynamic", "--defined-only", "--demangle", library],
        check=True, capture_output=True, text=True,
    ).stdout
    exported = [line.split(" ", 2)[2] for line in text.splitlines()]
    with open(listing, encoding="utf-8") as lines:
        wanted = [line.rstrip("\n") for line in lines if line.strip() and not line.startswith("#")]
    missing = [name for name in wanted if not any(symbol.startswith(name) for symbol in exported)]
    for name in missing:
        print(f"not exported: {name}", file=sys.stderr)
    print(f"{len(wanted) - len(missing)} of {len(wanted)} are exported")
    return 1 if missing or not wanted else 0


if __name__ == "__main__":
    sys.exit(main())
