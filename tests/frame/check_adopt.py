#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""check_adopt.py SOURCE-DIR [HOME]: does what docs/adopt.md says, section by section, each in at most five minutes. What it
built and installed stays in HOME when that is given; what was there goes.

A fenced block with the name of a file becomes that file; a block of `sh` runs as it stands. The word behind `sh` tells what a
block needs: `setup` changes the machine and is run by scripts/test itself, `packages` needs debhelper and takes long
(ZMX_LONG_TESTS=1), `python` needs pybind11 beside the system's NumPy, `root` changes the machine (never run here). What
is left out is named.

The compiler is tests/install/quick-g++, which leaves out optimisation; with ZMX_LONG_TESTS=1 it is the system's own, and the
five minutes are those of a newcomer.

The five minutes are processor time shared among the processors, so that what else runs on the machine does not count. A
compiler cache that CMAKE_CXX_COMPILER_LAUNCHER names is used.
"""
import os
import pathlib
import re
import resource
import shutil
import subprocess
import sys
import tempfile

MOST = 300  # seconds a section
PATIENCE = 3000  # seconds a block, on a machine that has other work


def processor_time():
    """Of all programs that have ended so far, as if every processor had worked on them all the time."""
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return (used.ru_utime + used.ru_stime) / len(os.sched_getaffinity(0))


def blocks(text):
    """(section, language, word, content) of each fenced block."""
    section = ""
    for match in re.finditer(r"^## ([^\n]*)$|^```(\w+)(?: (\S+))?\n(.*?)^```$", text, re.M | re.S):
        if match.group(1):
            section = match.group(1)
        else:
            yield section, match.group(2), match.group(3), match.group(4)


def left_out(word):
    if word == "packages":
        if os.environ.get("ZMX_LONG_TESTS") and shutil.which("dh") and shutil.which("dpkg-buildpackage"):
            return None
        return "ZMX_LONG_TESTS is not set, or there is no debhelper"
    if word == "python":
        needs = ["/usr/bin/python3", "-c", "import numpy, pybind11, setuptools, venv"]
        has = os.path.exists(needs[0]) and subprocess.run(needs, capture_output=True).returncode == 0
        return None if has else "scripts/setup python has not run"
    return "it changes the machine" if word in ("root", "setup") else None


def copy_source(source, target):
    """The files that git knows: what a release has."""
    listed = subprocess.run(["git", "-C", source, "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                            capture_output=True)
    if listed.returncode:
        shutil.copytree(source, target, ignore=shutil.ignore_patterns("build", ".git"))
        return
    for name in filter(None, listed.stdout.decode().split("\0")):
        from_ = pathlib.Path(source, name)
        if from_.is_file():
            to = target / name
            to.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(from_, to)


def environment_of(source, home):
    """What the commands of the page see."""
    environment = {**os.environ, "HOME": str(home), "CCACHE_BASEDIR": str(home)}
    environment.setdefault("CCACHE_DIR", os.path.expanduser("~/.cache/ccache"))
    environment.pop("LD_LIBRARY_PATH", None)
    if not os.environ.get("ZMX_LONG_TESTS"):
        environment["CXX"] = str(pathlib.Path(source, "tests/install/quick-g++").resolve())
    return environment


def follow(source, home):
    """Does what the page says. How many blocks ran, the seconds of each section, and what was left out; None when one failed."""
    ran, seconds, missing = 0, {}, []
    environment = environment_of(source, home)
    for section, language, word, content in blocks(pathlib.Path(source, "docs", "adopt.md").read_text()):
        if language != "sh":
            path = home / word
            path.parent.mkdir(exist_ok=True)
            path.write_text(content)
            continue
        if left_out(word):
            missing.append(f"{section}: {left_out(word)}")
            continue
        begin = processor_time()
        done = subprocess.run(["bash", "-eu", "-o", "pipefail", "-c", content], cwd=home, env=environment,
                              capture_output=True, text=True, timeout=PATIENCE)
        seconds[section] = seconds.get(section, 0) + processor_time() - begin
        ran += 1
        if done.returncode:
            print(done.stdout[-3000:], done.stderr[-3000:])
            print(f"FAILED: {section}: exit {done.returncode}")
            return None
        print(f"{section}: {seconds[section]:.0f} s", flush=True)
    return ran, seconds, missing


def main(source, kept=None):
    with tempfile.TemporaryDirectory() as folder:
        home = pathlib.Path(kept or folder).resolve()
        if kept:
            shutil.rmtree(home, ignore_errors=True)
            home.mkdir(parents=True)
        copy_source(source, home / "libzmxjpx")
        result = follow(source, home)
    if not result:
        return 1
    ran, seconds, missing = result
    for line in missing:
        print("left out:", line)
    slow = [section for section, spent in seconds.items() if spent > MOST]
    if slow:
        print("FAILED: longer than five minutes:", slow)
    return bool(slow) or ran < 8


sys.exit(main(*sys.argv[1:]))
