"""python -m gsl_geometry is gsl-sweep."""

import os
import subprocess
import sys

import gsl_geometry as gg
from support import MESHES, PACKAGE, PROGRAM

FILES = ["bolt.stl", "bracket.stl", "-d", "-z"]


def run(*command, **environment):
    return subprocess.run(
        command, cwd=MESHES, capture_output=True, check=False,
        env={**os.environ, "PYTHONPATH": str(PACKAGE.parent), **environment},
    )  # fmt: skip


def test_runs_the_same_program():
    for arguments in (FILES, [*FILES, "--json", "-"], ["--version"], ["bolt.stl"], [*FILES[:3], "z"]):
        own, module = run(PROGRAM, *arguments), run(sys.executable, "-m", "gsl_geometry", *arguments)
        assert (module.returncode, module.stdout, module.stderr) == (own.returncode, own.stdout, own.stderr)
    assert b"after 30 along" in run(sys.executable, "-m", "gsl_geometry", *FILES).stdout


def test_says_when_there_is_no_program(tmp_path):
    package = tmp_path / "gsl_geometry"
    package.mkdir()
    for path in PACKAGE.iterdir():
        if path.suffix in (".py", ".so"):
            (package / path.name).symlink_to(path.resolve())
    failed = run(sys.executable, "-B", "-m", "gsl_geometry", *FILES, PYTHONPATH=str(tmp_path), PATH="")
    assert failed.returncode == 4
    assert failed.stderr == (b"gsl_geometry: gsl-sweep is neither beside the module nor in the folders of PATH; "
                             b"the Debian package gsl-geometry-tools has it\n")


def test_the_version_is_the_program_s():
    assert gg.__version__ in run(PROGRAM, "--version").stdout.decode()
