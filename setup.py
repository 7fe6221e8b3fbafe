"""Builds the module of the Python package with CMake; everything else is in pyproject.toml.

The package holds the libraries that the module needs of this tree. Those of the system, such as Cairo, stay the system's.
CMAKE_ARGS in the environment has further arguments for CMake; QZANNO_BUILD_FOLDER names a folder in which the tree is built
already, for any prefix but /usr, and whose module and libraries are taken.
"""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).resolve().parent
LEFT_OUT = ["COMMAND_LINE", "DESK", "COMPLETION", "REFERENCE", "BUILD_TESTS"]


class BuildByCMake(build_ext):
    def run(self):
        if self.inplace or getattr(self, "editable_mode", False):
            sys.exit("an editable install is not possible; put BUILD_FOLDER/bindings/python on PYTHONPATH instead")
        built = os.environ.get("QZANNO_BUILD_FOLDER")
        if not built:
            built = pathlib.Path(self.build_temp).resolve()
            cmake("-S", ROOT, "-B", built, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", f"-DPython_EXECUTABLE={sys.executable}",
                  *(f"-DQZANNO_{part}=OFF" for part in LEFT_OUT), *shlex.split(os.environ.get("CMAKE_ARGS", "")))
            cmake("--build", built, "--target", "QzAnnoPython")
        package = pathlib.Path(self.build_lib) / "qzanno"
        package.mkdir(parents=True, exist_ok=True)
        with tempfile.TemporaryDirectory() as prefix:
            for component in ("core", "c", "python"):
                cmake("--install", built, "--prefix", prefix, "--component", component, "--strip")
            # Libraries are loaded by the names of their links, but a wheel cannot contain links.
            for library in pathlib.Path(prefix).rglob("*.so*"):
                if library.is_symlink() or library.name.startswith("_qzanno."):
                    shutil.copy(library, package)


def cmake(*arguments):
    subprocess.run(["cmake", *map(str, arguments)], check=True)


setup(
    version=re.search(r"project\(QzAnno VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")).group(1),
    ext_modules=[Extension("qzanno._qzanno", [])],
    cmdclass={"build_ext": BuildByCMake},
)
