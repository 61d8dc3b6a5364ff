# SPDX-License-Identifier: BSD-2-Clause
"""Runs every example of every --help, and those of README.md, as they stand: examples.py BIN-DIR

Each runs in an empty folder, in which only the files that it reads have been made by their names: photo.png is a picture
in colours, scan16.pgm has 16 bits, print.tif is CMYK, sky.dds a cube map. It must end with 0, and what it writes must be
there and not be empty.
"""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent / "support"))
from help import Command  # noqa: E402

README = pathlib.Path(__file__).resolve().parents[2] / "README.md"
ENDINGS = re.compile(r"\.(png|ppm|pgm|pbm|pam|bmp|tif|jpg|jp2|j2k|j2c|dds|raw|pgx)$")


def zmx(*args):
    subprocess.run([ZMX, *args], check=True, capture_output=True)


# ---- files by their names

def waves(width, height, channels, deep):
    """Samples of a ramp with a texture, without a file around them; two bytes each where they are deep."""
    row = bytes((x * 3 + x * x // 97) & 255 for x in range(width * channels * (2 if deep else 1)))
    return b"".join(row[y % 64:] + row[:y % 64] for y in range(height))


def netpbm(path, width, height, kind, channels=3, deep=False):
    heads = {"pnm": f"P{6 if channels == 3 else 5}\n{width} {height}\n{65535 if deep else 255}\n",
             "pbm": f"P4\n{width} {height}\n",
             "cmyk": f"P7\nWIDTH {width}\nHEIGHT {height}\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\n"}
    samples = waves((width + 7) // 8, height, 1, False) if kind == "pbm" else waves(width, height, channels, deep)
    path.write_bytes(heads[kind].encode() + samples)


def make_cube(path):
    """The same texture six times, as the faces of a cube map (caps2 of the header)."""
    netpbm(path.with_suffix(".ppm"), 64, 64, "pnm")
    zmx("dds", "encode", str(path.with_suffix(".ppm")), str(path), "--format", "dxt1")
    data = path.read_bytes()
    path.write_bytes(data[:112] + (0xFE00).to_bytes(4, "little") + data[116:128] + 6 * data[128:])


def make(path, size):
    """A file of the kind that its name says, of at least that size."""
    width, height = max(size[0], 800), max(size[1], 600)
    name, ending = path.name, path.suffix[1:]
    source = path.with_name("source-of-" + name + ".pam")
    if name == "sky.dds":
        make_cube(path)
    elif ending == "raw":
        path.write_bytes(waves(640, 480, 3, False))
    elif ending == "pgx":
        path.write_bytes(f"PG ML + 8 {width} {height}\n".encode() + waves(width, height, 1, False))
    elif ending == "pbm" or name == "page.tif":
        netpbm(source, width, height, "pbm")
        zmx(*(("tiff", "encode") if ending == "tif" else ("image", "convert")), str(source), str(path))
    else:
        inks, deep, large = "print" in name, "16" in name or "xray" in name, width * height > 10**7
        grey = deep or large or "scan" in name or ending == "pgm"
        netpbm(source, width, height, "cmyk" if inks else "pnm", 4 if inks else 1 if grey else 3, deep)
        codec = {"jpg": ["jpeg", "encode"], "jp2": ["j2k", "encode"], "j2k": ["j2k", "encode"],
                 "j2c": ["j2k", "encode"], "dds": ["dds", "encode", "--format", "dxt5", "--mips"]}
        tiles = ["--tile", "1024,1024"] if large and codec.get(ending, [""])[0] == "j2k" else []
        zmx(*codec.get(ending, ["image", "convert"]), str(source), str(path), *tiles)
    if source.exists():
        source.unlink()


# ---- what an example reads and writes

def parts(example, command):
    """(inputs, outputs) of a command line: files by their places and behind options."""
    words = shlex.split(example.split("|")[0])[len(command.words):]
    takes = {name: o for o in command.options for name in o.names if o.value}
    operands, inputs, outputs, tells = [], [], [], False
    while words:
        word = words.pop(0)
        if not word.startswith("-") or word == "-":
            operands.append(word)
        elif word in takes:
            value = words.pop(0)
            if "--output" in takes[word].names or "--suffix" in takes[word].names:
                tells = True
                outputs += [value] if "--output" in takes[word].names else []
            elif ENDINGS.search(value):
                inputs += value.split(",")
    if "OUT" in command.usage and not tells:
        outputs.append(operands.pop())
    return operands + inputs, outputs + re.findall(r">(\S+)", example)


def size_of(example):
    """What a part that is asked for needs: X,Y,WIDTH,HEIGHT."""
    found = re.search(r"--(?:crop|window) (\d+),(\d+),(\d+),(\d+)", example)
    x, y, width, height = map(int, found.groups()) if found else (0, 0, 0, 0)
    return x + width, y + height


class Examples(unittest.TestCase):
    def tried(self, example):
        command = next(c for c in reversed(ROOT.all()) if example.split()[:len(c.words)] == list(c.words))
        inputs, outputs = parts(example, command)
        with tempfile.TemporaryDirectory() as folder:
            folder = pathlib.Path(folder)
            for name in inputs:
                for one in [name.replace("*", "1"), name.replace("*", "2")] if "*" in name else [name]:
                    path = folder / one
                    path.parent.mkdir(exist_ok=True)
                    if one != "-" and not path.exists():
                        make(path, size_of(example))
            for name in outputs:
                if name.endswith("/"):
                    (folder / name).mkdir()
            done = subprocess.run(["bash", "-o", "pipefail", "-c", example], cwd=folder, capture_output=True,
                                  stdin=subprocess.DEVNULL, timeout=300,
                                  env={**os.environ, "PATH": BIN + ":" + os.environ["PATH"]})
            self.assertEqual(done.returncode, 0, (example, done.stderr.decode()))
            for name in outputs:
                if name != "-":
                    self.written(folder, name)
            if not outputs:
                self.assertNotEqual(done.stdout, b"")

    def written(self, folder, name):
        """A file; two files in a folder; or files of which each has a piece of the name."""
        path = folder / name
        there = list(path.iterdir()) if name.endswith("/") else [path] if path.exists() else \
            list(folder.glob(path.stem + "*" + path.suffix))
        self.assertGreaterEqual(len(there), 2 if name.endswith("/") else 1, name)
        for file in there:
            self.assertGreater(file.stat().st_size, 0, file)

    def test_each_help_has_some_and_all_work(self):
        seen = set()
        for c in ROOT.all():
            with self.subTest(" ".join(c.words)):
                self.assertTrue(c.examples)
                for example in c.examples:
                    self.assertEqual(example.split()[:len(c.words)], list(c.words))
                    if example not in seen:
                        with self.subTest(example):
                            self.tried(example)
                    seen.add(example)
        self.assertGreater(len(seen), 25)

    def test_those_of_the_readme_work(self):
        lines = re.findall(r"^    (zmx [a-z].*)$", README.read_text(), re.M)
        self.assertGreater(len(lines), 8)
        for example in lines:
            with self.subTest(example):
                self.tried(example)


if __name__ == "__main__":
    BIN = os.path.realpath(sys.argv[1])
    ZMX = os.path.join(BIN, "zmx")
    if not shutil.which("pnminvert"):
        print("no pnminvert")
        sys.exit(77)
    ROOT = Command(ZMX, ("zmx",))
    unittest.main(argv=sys.argv[:1] + sys.argv[2:], verbosity=2)
