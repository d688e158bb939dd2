"""Runs gsl-sweep: python -m gsl_geometry bolt.stl bracket.stl -d -z"""

import os
import shutil
import sys
from pathlib import Path

# The exit status 1 of gsl-sweep means that there is no contact.
OTHER_FAILURE = 4


def main() -> None:
    beside = Path(__file__).parent / "gsl-sweep"
    program = str(beside) if beside.exists() else shutil.which("gsl-sweep")
    if program is None:
        print("gsl_geometry: gsl-sweep is neither beside the module nor in the folders of PATH; the Debian package "
              "gsl-geometry-tools has it", file=sys.stderr)
        sys.exit(OTHER_FAILURE)
    os.execv(program, [program, *sys.argv[1:]])


if __name__ == "__main__":
    main()
