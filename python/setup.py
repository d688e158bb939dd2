"""Makes the wheel of gsl_geometry from what CMake builds and installs.

GSL_BUILD_DIR names a build folder whose libraries and module are taken. Without it the tree is built in
build/wheel-NAME, where NAME is the running Python's.
"""

import atexit
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py

PYTHON = Path(__file__).resolve().parent
ROOT = PYTHON.parent
SCRATCH = tempfile.mkdtemp(prefix="gsl_geometry-")
atexit.register(shutil.rmtree, SCRATCH, ignore_errors=True)


def version():
    text = (ROOT / "gsl/include/gsl_Version.h").read_text()
    return ".".join(re.search(rf"#define GSL_VERSION_{part} (\d+)", text).group(1) for part in ("MAJOR", "MINOR", "PATCH"))


def built():
    """Returns the build folder, with the module built."""
    if os.environ.get("GSL_BUILD_DIR"):
        return Path(os.environ["GSL_BUILD_DIR"]).resolve()
    folder = ROOT / "build" / f"wheel-{sys.implementation.cache_tag}"
    flags = ["-DGSL_PYTHON=ON", "-DGSL_ASSIMP=OFF", "-DCMAKE_BUILD_RPATH_USE_ORIGIN=ON", f"-DPython3_EXECUTABLE={sys.executable}"]
    subprocess.run(["cmake", "--preset", "release", "-B", folder, *flags], cwd=ROOT, check=True)
    subprocess.run(["cmake", "--build", folder, "--target", "gsl_python"], cwd=ROOT, check=True)
    return folder


class BuildWithCMake(build_py):
    def run(self):
        super().run()
        # setuptools changes into the folder of this file; the wheel is made of what lies in build_lib.
        target = Path(self.build_lib).resolve()
        command = ["cmake", "--install", built(), "--component", "gsl_python", "--prefix", target, "--strip"]
        subprocess.run(command, check=True)
        for link in (target / "gsl_geometry").iterdir():
            if link.is_symlink():  # a wheel holds no links
                link.resolve().replace(link)
        for notice in ("LICENSE", "THIRD_PARTY_NOTICES"):
            (target / "gsl_geometry" / notice).write_bytes((ROOT / notice).read_bytes())


class BinaryDistribution(Distribution):
    """Has compiled parts, so that the wheel names its Python and its system."""

    def has_ext_modules(self):
        return True


setup(
    name="gsl_geometry",
    version=version(),
    description="How far a body travels before it touches another, and the geometry below it",
    license="MIT",
    python_requires=">=3.9",
    install_requires=["numpy>=1.20,<2"],
    packages=["gsl_geometry"],
    package_data={"gsl_geometry": ["py.typed", "*.pyi"]},
    cmdclass={"build_py": BuildWithCMake},
    distclass=BinaryDistribution,
    # Nothing is written into the source tree.
    options={"build": {"build_base": SCRATCH}, "egg_info": {"egg_base": SCRATCH}},
)
