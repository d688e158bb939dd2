"""The wheel holds all that it needs, and works where nothing is installed."""

import os
import shutil
import subprocess
import sys
import sysconfig
import zipfile

import pytest

import gsl_geometry as gg
from support import MESHES, PACKAGE, SOURCE


BUILD = PACKAGE.parent.parent


def make_wheel(folder, **environment):
    before = {path.name for path in (SOURCE / "python").iterdir()}
    command = [sys.executable, "-m", "pip", "wheel", "--no-build-isolation", "--no-deps", "--no-index", "-w", folder]
    made = subprocess.run(
        [*command, SOURCE / "python"], capture_output=True, text=True, check=False,
        env={**os.environ, "SOURCE_DATE_EPOCH": "1795305600", **environment},
    )
    assert made.returncode == 0, made.stdout + made.stderr
    assert {path.name for path in (SOURCE / "python").iterdir()} == before
    (path,) = folder.iterdir()
    return path


@pytest.fixture(scope="module")
def wheel(tmp_path_factory):
    return make_wheel(tmp_path_factory.mktemp("wheel"), GSL_BUILD_DIR=str(BUILD))


def test_without_a_build_folder_the_tree_is_built(wheel, tmp_path):
    # Building takes minutes, so that a script in the place of CMake notes the commands and installs from this build.
    cmake, commands, made = tmp_path / "bin" / "cmake", tmp_path / "commands", tmp_path / "made"
    cmake.parent.mkdir()
    made.mkdir()
    folder = SOURCE / "build" / f"wheel-{sys.implementation.cache_tag}"
    cmake.write_text(f"""#!/bin/sh
printf '%s\\n' "$*" >>"{commands}"
[ "$1" != --install ] || {{ shift 2; exec "{shutil.which('cmake')}" --install "{BUILD}" "$@"; }}
""")
    cmake.chmod(0o755)
    path = make_wheel(made, GSL_BUILD_DIR="", PATH=f"{cmake.parent}:{os.environ['PATH']}")
    # Wheels of one build and of one SOURCE_DATE_EPOCH have the same bytes.
    assert path.read_bytes() == wheel.read_bytes()
    configured, built, installed = commands.read_text().splitlines()
    flags = f"-DGSL_PYTHON=ON -DGSL_ASSIMP=OFF -DCMAKE_BUILD_RPATH_USE_ORIGIN=ON -DPython3_EXECUTABLE={sys.executable}"
    assert configured == f"--preset release -B {folder} {flags}"
    assert built == f"--build {folder} --target gsl_python"
    assert installed.startswith(f"--install {folder} --component gsl_python --prefix ")


def test_the_name_says_python_and_system(wheel):
    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    system = sysconfig.get_platform().replace("-", "_").replace(".", "_")
    assert wheel.name == f"gsl_geometry-{gg.__version__}-{python}-{python}-{system}.whl"


def test_the_wheel_works_where_nothing_is_installed(wheel, tmp_path):
    with zipfile.ZipFile(wheel) as archive:
        archive.extractall(tmp_path)
    package = tmp_path / "gsl_geometry"
    (package / "gsl-sweep").chmod(0o755)  # pip keeps the mode, zipfile does not
    names = {path.name for path in package.iterdir()}
    assert {"__init__.py", "py.typed", "_core.pyi", "LICENSE", "THIRD_PARTY_NOTICES", "gsl-sweep"} <= names
    environment = {"PATH": "/usr/bin:/bin", "PYTHONPATH": str(tmp_path)}

    def run(*command):
        done = subprocess.run(command, cwd=MESHES, env=environment, capture_output=True, text=True, check=False)
        assert done.returncode == 0, done.stderr
        return done.stdout

    for file in (next(package.glob("_core.*.so")), package / "gsl-sweep"):
        ours = [line for line in run("ldd", file).splitlines() if "libgsl_" in line]
        assert len(ours) >= 2
        for line in ours:
            assert line.split()[2].startswith(str(package)), line
    code = "import gsl_geometry as g; print(g.__file__, g.sweep(g.read('bolt.stl'), g.read('bracket.stl'), '-z').travel)"
    assert run(sys.executable, "-B", "-c", code) == f"{package / '__init__.py'} 30.0\n"
    assert "after 30 along" in run(sys.executable, "-B", "-m", "gsl_geometry", "bolt.stl", "bracket.stl", "-d", "-z")
