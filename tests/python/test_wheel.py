"""The wheel holds all that it needs, and works where nothing is installed."""

import os
import subprocess
import sys
import sysconfig
import zipfile

import pytest

import gsl_geometry as gg
from support import MESHES, PACKAGE, SOURCE


@pytest.fixture(scope="module")
def wheel(tmp_path_factory):
    folder = tmp_path_factory.mktemp("wheel")
    before = {path.name for path in (SOURCE / "python").iterdir()}
    command = [sys.executable, "-m", "pip", "wheel", "--no-build-isolation", "--no-deps", "--no-index", "-w", folder]
    made = subprocess.run(
        [*command, SOURCE / "python"], capture_output=True, text=True, check=False,
        env={**os.environ, "GSL_BUILD_DIR": str(PACKAGE.parent.parent)},
    )  # fmt: skip
    assert made.returncode == 0, made.stdout + made.stderr
    assert {path.name for path in (SOURCE / "python").iterdir()} == before
    (path,) = folder.iterdir()
    return path


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
