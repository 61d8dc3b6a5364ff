#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""check_licence.py SOURCE-DIR [--add]: every source file names its licence, once, near its head.

The line stands at the end of the comment that a C or C++ file begins with, and behind the first line of a script or of a page. --add puts
it where it is missing.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

TAG = "SPDX-" + "License-Identifier: "
LICENCE = "BSD-2-Clause"
LINES = 25  # how far down it may stand
C_LIKE = (".c", ".cpp", ".h", ".js", ".mjs", ".css")
SCRIPTS = (".py", ".sh", ".bash", ".cmake", ".in")


def kind(path):
    """How a file writes comments; None when it is no source file."""
    if path.suffix in C_LIKE:
        return "C"
    if path.suffix == ".html":
        return "<"
    if path.suffix in SCRIPTS or path.name in ("CMakeLists.txt", "Makefile") or path.parent.name == "scripts":
        return "#"
    return None


def sources(root):
    listed = subprocess.run(["git", "-C", str(root), "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                            capture_output=True)
    names = listed.stdout.decode().split("\0") if listed.returncode == 0 else [
        str(path.relative_to(root)) for path in root.rglob("*") if not path.is_relative_to(root / "build")]
    for name in sorted(filter(None, names)):
        path = root / name
        if kind(path) and path.is_file() and "corpus" not in path.parts:
            yield path


def found(text):
    return [line for line in text.splitlines()[:LINES] if TAG in line]


def with_line(path, text):
    lines = text.split("\n")
    if kind(path) == "<":
        return "\n".join(lines[:1] + [f"<!-- {TAG}{LICENCE} -->"] + lines[1:])
    if kind(path) == "#":
        at = 1 if lines[0].startswith("#!") else 0
        return "\n".join(lines[:at] + [f"# {TAG}{LICENCE}"] + lines[at:])
    if lines[0].startswith("//"):
        at = next(i for i, line in enumerate(lines) if not line.startswith("//"))
        return "\n".join(lines[:at] + [f"// {TAG}{LICENCE}"] + lines[at:])
    at = 0
    if lines[0].startswith("/*"):
        at = next(i for i, line in enumerate(lines) if "*/" in line) + 1
    plain = path.suffix in (".c", ".h", ".css")
    line = f"/* {TAG}{LICENCE} */" if plain else f"// {TAG}{LICENCE}"
    return "\n".join(lines[:at] + [line] + lines[at:])


def selftest():
    """What is added is found, and what is not there is missed."""
    with tempfile.TemporaryDirectory() as folder:
        for name, text in (("a.cpp", "// a.cpp - what it does,\n// and why\n#include <b>\n"), ("b.h", "/* b.h\n */\n#if 1\n"),
                           ("c.sh", "#!/bin/sh\n# c.sh\ntrue\n"), ("d.cmake", "set(a b)\n"), ("e.c", "int x;\n"),
                           ("f.html", "<!doctype html>\n<title>f</title>\n"), ("g.css", "/* g */\nb {}\n"), ("h.js", "// h\nh();\n")):
            path = pathlib.Path(folder, name)
            added = with_line(path, text)
            assert not found(text) and len(found(added)) == 1, name
            assert [line for line in added.split("\n") if TAG not in line] == text.split("\n"), name
        assert with_line(pathlib.Path("c.sh"), "#!/bin/sh\ntrue\n").startswith("#!/bin/sh\n# SPDX")


def main(root, *flags):
    selftest()
    root, faults, count = pathlib.Path(root), 0, 0
    for path in sources(root):
        count += 1
        text = path.read_text()
        lines = found(text)
        if not lines and "--add" in flags:
            path.write_text(with_line(path, text))
        elif len(lines) != 1 or not re.search(rf"{TAG}{LICENCE}( \*/| -->)?$", lines[0]):
            print(f"{path.relative_to(root)}: {'no licence' if not lines else lines}")
            faults += 1
    print(f"{count} files, {faults} faults")
    return bool(faults) or count < 100


sys.exit(main(*sys.argv[1:]))
