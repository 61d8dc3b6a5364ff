# SPDX-License-Identifier: BSD-2-Clause
"""The build backend of pyproject.toml: setuptools, taken from the system where the system has it.

pip builds in an environment of its own, which hides the packages of the system, and fetches from the network what
pyproject.toml names. Nothing is named there; this module adds the system's folder of packages behind those of the
environment, and asks for what is missing still.
"""
from __future__ import annotations

import importlib.util
import shutil
import sys
import sysconfig
from pathlib import Path


def _add_system_packages() -> None:
    """Debian keeps what apt installed in a scheme of its own, `deb_system`; others have it in the base prefix."""
    base = {"base": sys.base_prefix}
    for scheme in ("deb_system", "posix_prefix"):
        if scheme in sysconfig.get_scheme_names():
            folder = sysconfig.get_path("purelib", scheme, vars=base)
            if Path(folder).is_dir() and folder not in sys.path:
                sys.path.append(folder)



_add_system_packages()
_missing = [name for name in ("setuptools", "wheel") if importlib.util.find_spec(name) is None]
_has_pybind11 = any(Path(prefix, "include/pybind11/pybind11.h").exists() for prefix in ("/usr", "/usr/local"))

if not _missing:
    from setuptools.build_meta import build_editable, build_sdist, build_wheel  # noqa: F401
    from setuptools.build_meta import prepare_metadata_for_build_wheel  # noqa: F401


def get_requires_for_build_wheel(config_settings: dict | None = None) -> list[str]:
    """What pip has to fetch: nothing on a machine that scripts/setup has seen."""
    wanted = list(_missing)
    if not _has_pybind11:
        wanted.append("pybind11")
    if shutil.which("cmake") is None:
        wanted.append("cmake")
    return wanted


get_requires_for_build_editable = get_requires_for_build_wheel
get_requires_for_build_sdist = get_requires_for_build_wheel
