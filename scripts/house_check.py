"""The shared part of the checks of the house: their command line and their report."""

import pathlib
import sys


def run(find, nothing_found):
    """Checks the tree that the command line names, or the tree that this script belongs to. `find` takes its
    root, and returns the problems and the number of things that were checked. A check of nothing fails: it says
    `nothing_found`. Returns the exit code."""
    root = sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent
    problems, count = find(root)
    if count == 0:
        problems = [*problems, f"{root}: {nothing_found}"]
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0
