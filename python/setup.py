# SPDX-License-Identifier: BSD-2-Clause
"""Builds the extensions with the project's own CMake files, and puts them and the library into the package.

Nothing is written beside the sources: CMake works in build/python of the tree, or in the folder that ZMXJPX_BUILD
names.
"""
from __future__ import annotations

import os
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent
BUILD = Path(os.environ.get("ZMXJPX_BUILD", ROOT / "build" / "python")).resolve()


class CMakeExtension(Extension):
    """Stands for all that CMake makes: both extensions, the library with its levels, and the stub of `raw`."""

    def __init__(self) -> None:
        super().__init__("zmxjpx.raw", sources=[])


class BuildWithCMake(build_ext):
    """Runs CMake and copies its folder `zmxjpx` over the package."""

    def run(self) -> None:
        generator = ["-G", "Ninja"] if shutil.which("ninja") else []
        subprocess.run(
            ["cmake", "-S", ROOT, "-B", BUILD / "cmake", *generator, "-DZMX_PYTHON=ON", "-DZMX_TESTS=OFF",
             "-DZMX_BENCH=OFF", "-DZMX_INSTALL=OFF", f"-DPython3_EXECUTABLE={sys.executable}"], check=True)
        jobs = os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL") or str(os.cpu_count() or 1)
        subprocess.run(["cmake", "--build", BUILD / "cmake", "--target", "zmx_python", "-j", jobs], check=True)
        package = (HERE if self.editable_mode else Path(self.build_lib).resolve()) / "zmxjpx"
        shutil.copytree(BUILD / "cmake" / "python" / "zmxjpx", package, dirs_exist_ok=True)

    def get_outputs(self) -> list[str]:
        """What was copied; setuptools packs the whole folder."""
        made = BUILD / "cmake" / "python" / "zmxjpx"
        package = Path(self.build_lib, "zmxjpx")
        return [str(package / path.relative_to(made)) for path in made.rglob("*") if path.is_file()]


for folder in ("lib", "info"):
    (BUILD / folder).mkdir(parents=True, exist_ok=True)
setup(
    ext_modules=[CMakeExtension()],
    cmdclass={"build_ext": BuildWithCMake},
    options={"build": {"build_base": str(BUILD / "lib")}, "egg_info": {"egg_base": str(BUILD / "info")}},
)
