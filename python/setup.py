"""Builds the package with CMake, library and all, from the tree it lies in. Everything that is built goes to build/pip."""

import os
import pathlib
import re
import subprocess
import sys

import setuptools
from setuptools.command.build_ext import build_ext

HERE = pathlib.Path(__file__).resolve().parent
TREE = HERE.parent
BUILD = TREE / "build/pip"
os.chdir(HERE)
BUILD.mkdir(parents=True, exist_ok=True)


class CMakeBuild(build_ext):
    """Lets CMake build the one extension."""

    def build_extension(self, ext: setuptools.Extension) -> None:
        target = pathlib.Path(self.get_ext_fullpath(ext.name)).resolve()
        cmake = BUILD / f"cmake-{sys.implementation.cache_tag}"
        options = ["CMAKE_BUILD_TYPE=Release", "VELTRA_PYTHON=ON", "VELTRA_TOOLS=OFF", "VELTRA_EXAMPLES=OFF",
                   f"Python_EXECUTABLE={sys.executable}"]
        subprocess.run(["cmake", "-S", TREE, "-B", cmake, "-G", "Ninja", *("-D" + option for option in options)], check=True)
        subprocess.run(["cmake", "--build", cmake, "--target", "veltra_python"], check=True)
        target.parent.mkdir(parents=True, exist_ok=True)
        (built,) = (cmake / "python/veltra").glob("_veltra.*.so")
        subprocess.run(["strip", "-o", target, built], check=True)


def version() -> str:
    text = (TREE / "libcrossplatform/common/Version.h").read_text()
    return ".".join(re.findall(r"#define VELTRA_VERSION_[A-Z]+ ([0-9]+)", text))


setuptools.setup(
    name="veltra",
    version=version(),
    description="Test results of handheld cabling testers: reading, checking, saving and writing their files",
    packages=["veltra"],
    package_data={"veltra": ["py.typed", "*.pyi"]},
    ext_modules=[setuptools.Extension("veltra._veltra", [])],
    cmdclass={"build_ext": CMakeBuild},
    python_requires=">=3.9",
    extras_require={"frame": ["pandas"], "dask": ["dask", "distributed", "pandas"]},
    options={"build": {"build_base": os.fspath(BUILD)}, "egg_info": {"egg_base": os.fspath(BUILD)}},
    zip_safe=False,
)
