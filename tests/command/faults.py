#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""faults.py ZMX FAULTS-LIBRARY [--record]: one call fails in each run of a command: a request for memory, an open, a read, a
write, a close, the rename or a mapping.

Then the command ends with 1 and one line of message, and an output that stood there stays as it was; or it ends with 0 and
wrote what it always writes, as it must after interruptions and short counts. No other file is left, and no signal ends it.

Each call of a kind that concerns files fails in its turn; requests for memory a few dozen of each command, all of them with
ZMX_LONG_TESTS. --record writes the figures for docs/assurance.md.
"""
import collections
import concurrent.futures
import errno
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

LONG = bool(os.environ.get("ZMX_LONG_TESTS"))
MEMORY_RUNS = 24  # of a command, in the short form
OLD = b"what stood here before\n"
# What the system may answer to each kind of call; after those of MUST_GO_ON all goes on as if nothing had been.
FAULTS = {
    "open": [errno.EIO, errno.EMFILE, errno.EINTR],
    "read": [errno.EIO, errno.EINTR, "short"],
    "write": [errno.ENOSPC, errno.EPIPE, errno.EIO, errno.EINTR, "short"],
    "close": [errno.EIO, errno.ENOSPC, errno.EINTR],
    "rename": [errno.EIO, errno.EACCES],
    "map": [errno.ENOMEM],
    "memory": [errno.ENOMEM],
}
MUST_GO_ON = {errno.EINTR, "short"}

ONE = ["--threads", "1"]
# Name, words, and how many files there are: OUT is a file, "-" standard output.
COMMANDS = [
    ("convert to PNG", ["image", "convert", "a.ppm", "OUT.png"]),
    ("convert to TIFF", ["image", "convert", "a.png", "OUT.tif"]),
    ("convert to BMP", ["image", "convert", "a.tif", "OUT.bmp"]),
    ("convert from BMP", ["image", "convert", "a.bmp", "OUT.ppm"]),
    ("PNG through pipes", ["image", "convert", "-", "-", "--to", "png"]),
    ("TIFF through pipes", ["image", "convert", "-", "-", "--to", "tif"]),
    ("compare", ["image", "compare", "a.ppm", "a.png"]),
    ("jpeg encode", ["jpeg", "encode", "a.ppm", "OUT.jpg"]),
    ("jpeg encode, progressive", ["jpeg", "encode", "a.ppm", "OUT.jpg", "--progressive"]),
    ("jpeg encode, lossless", ["jpeg", "encode", "a.png", "OUT.jpg", "--lossless", "1"]),
    ("jpeg decode", ["jpeg", "decode", "a.jpg", "OUT.png"]),
    ("jpeg decode, progressive", ["jpeg", "decode", "p.jpg", "OUT.ppm"]),
    ("jpeg decode, raw", ["jpeg", "decode", "a.jpg", "OUT.raw", "--format", "bgr565"]),
    ("jpeg transcode", ["jpeg", "transcode", "a.jpg", "OUT.jpg", "--progressive"]),
    ("j2k encode", ["j2k", "encode", "a.ppm", "OUT.jp2", *ONE]),
    ("j2k encode, lossy", ["j2k", "encode", "a.png", "OUT.jp2", "--lossy", "--rate", "2", *ONE]),
    ("j2k decode", ["j2k", "decode", "a.jp2", "OUT.ppm", *ONE]),
    ("j2k decode, reduced", ["j2k", "decode", "a.jp2", "OUT.png", "--reduce", "1", *ONE]),
    ("dds encode", ["dds", "encode", "a.ppm", "OUT.dds", "--format", "dxt5", "--mips"]),
    ("dds decode", ["dds", "decode", "a.dds", "OUT.png"]),
    ("tiff encode", ["tiff", "encode", "a.ppm", "OUT.tif"]),
    ("tiff decode", ["tiff", "decode", "b.tif", "OUT.ppm"]),
    ("hdp energy", ["hdp", "energy", "a.ppm"]),
]

Result = collections.namedtuple("Result", "code out err file left")


def ramp(path):
    rows = bytes((x * 7 + y * 13 + c * 50) % 256 for y in range(30) for x in range(40) for c in range(3))
    path.write_bytes(b"P6 40 30 255\n" + rows)


class Bench:
    """The command, its inputs, and a scratch folder for each run."""

    def __init__(self, zmx, library, root):
        self.zmx, self.library, self.root = zmx, library, root
        self.inputs = root / "inputs"
        self.inputs.mkdir()
        ramp(self.inputs / "a.ppm")
        for words in (["image", "convert", "a.ppm", "a.png"], ["image", "convert", "a.ppm", "a.tif"],
                      ["image", "convert", "a.ppm", "a.bmp"], ["tiff", "encode", "a.ppm", "b.tif"],
                      ["jpeg", "encode", "a.ppm", "a.jpg"], ["jpeg", "encode", "a.ppm", "p.jpg", "--progressive"],
                      ["j2k", "encode", "a.ppm", "a.jp2"], ["dds", "encode", "a.ppm", "a.dds", "--format", "dxt5"]):
            subprocess.run([zmx, *words], cwd=self.inputs, check=True)

    def run(self, words, fault="", counts=""):
        folder = pathlib.Path(tempfile.mkdtemp(dir=self.root))
        try:
            temporary = folder / "tmp"
            temporary.mkdir()
            out = next((word for word in words if word.startswith("OUT")), None)
            if out:
                (folder / out).write_bytes(OLD)
            named = [str(self.inputs / word) if (self.inputs / word).is_file() else word for word in words]
            env = dict(os.environ, LD_PRELOAD=self.library, TMPDIR=str(temporary), ZMX_FAULT=fault, ZMX_FAULT_COUNTS=counts,
                       OMP_NUM_THREADS="1", ASAN_OPTIONS="verify_asan_link_order=0:detect_leaks=0")
            with open(self.inputs / "a.ppm", "rb") as stdin:
                done = subprocess.run([self.zmx, *named], cwd=folder, stdin=stdin if "-" in words else subprocess.DEVNULL,
                                      capture_output=True, env=env, timeout=120)
            left = sorted(path.name for path in [*folder.iterdir(), *temporary.iterdir()] if path.name not in ("tmp", out))
            return Result(done.returncode, done.stdout, done.stderr, (folder / out).read_bytes() if out else None, left)
        finally:
            shutil.rmtree(folder)

    def counts(self, words):
        path = self.root / "counts"
        good = self.run(words, counts=str(path))
        told = dict(line.split() for line in path.read_text().splitlines())
        return good, {kind: int(n) for kind, n in told.items()}


def trouble(good, got, how):
    """What is wrong with a run in which a call failed, or None."""
    if got.left:
        return f"left {got.left}"
    if got.code == 0:
        return None if (got.out, got.file) == (good.out, good.file) else "said that all went well, and wrote something else"
    if how in MUST_GO_ON:
        return "gave up"
    if got.code != 1:
        return f"ended with {got.code}"
    lines = got.err.decode(errors="replace").splitlines()
    if len(lines) != 1 or not lines[0].startswith("zmx: "):
        return "has not one line of message"
    return None if got.file in (None, OLD) else "changed the file that stood there"


def numbers(kind, count, nth):
    """Which calls of a kind fail."""
    if kind != "memory" or LONG or count <= MEMORY_RUNS:
        return range(1, count + 1)
    # A part of them at the end, where the work is done; most build the table of options.
    late, few = min(count // 2, 400), MEMORY_RUNS // 2
    places = [i * (count - late) / few for i in range(few)] + [count - late + i * late / few for i in range(few)]
    return sorted({min(count, int(place) + 1 + nth % 29) for place in places})


def main(zmx, library, *words):
    totals, faults = collections.Counter(), []
    with tempfile.TemporaryDirectory() as root:
        bench = Bench(os.path.abspath(zmx), os.path.abspath(library), pathlib.Path(root))
        todo = []
        for nth, (name, command) in enumerate(COMMANDS):
            good, counts = bench.counts(command)
            if good.code or good.left or good.err:
                sys.exit(f"{name}: ends with {good.code} where nothing fails: {good.err} {good.left}")
            todo += [(name, command, good, kind, n, how) for kind, ways in FAULTS.items() for how in ways
                     for n in numbers(kind, counts[kind], nth)]

        def one(job):
            _, command, good, kind, n, how = job
            got = bench.run(command, f"{kind} {n} {how}")
            return trouble(good, got, how), got

        with concurrent.futures.ThreadPoolExecutor(os.cpu_count() if LONG else 1) as pool:
            for (name, _, _, kind, n, how), (wrong, got) in zip(todo, pool.map(one, todo)):
                totals[kind] += 1
                if wrong:
                    what = how if how == "short" else errno.errorcode[how]
                    faults.append(f"{name}: {kind} {n} {what}: {wrong}: {got.code} {got.err.decode(errors='replace')[:200]!r}")
    print("\n".join(faults[:60]))
    print(f"{sum(totals.values())} runs, {len(faults)} failures; " + ", ".join(f"{kind} {n}" for kind, n in totals.items()))
    if "--record" in words:
        figures = [("commands", len(COMMANDS)), *((f"runs in which one call of a kind failed: {kind}", n) for kind, n in totals.items()),
                   ("runs that broke a rule", len(faults))]
        note = ("A run ends with 1, one line of message and all files as they were, or with 0 and what it always writes; the latter it must "
                "after interruptions and short counts. What libtiff requests for itself never fails: version 4.5 reads behind its list of tags then.")
        put = pathlib.Path(__file__).resolve().parents[2] / "scripts/assurance"
        subprocess.run([put, "--put", "faults", "Faults injected into the command", ("ZMX_LONG_TESTS=1 " if LONG else "") + "tests/command/faults.sh build/release/bin --record"],
                       input="".join(f"{what}\t{value}\n" for what, value in figures) + f"NOTE\t{note}\n", text=True, check=True)
    return 1 if faults or sum(totals.values()) < 500 else 0


sys.exit(main(*sys.argv[1:]))
