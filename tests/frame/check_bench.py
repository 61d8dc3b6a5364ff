#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""check_bench.py SOURCE BUILD-DIR: scripts/bench --quick writes a row for every comparison, with figures above zero, and a
chart that is sound XML. How fast anything is, is not tested."""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

source, build = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
NEEDED = "djpeg cjpeg jpegtran opj_compress opj_decompress tiffcp pnmtile gcc taskset".split()
missing = [program for program in NEEDED if not shutil.which(program)]
missing += [f for f in ("/usr/bin/time", "/usr/share/backgrounds/mate/nature/Garden.jpg") if not pathlib.Path(f).exists()]
if missing:
    print("not here:", *missing)
    sys.exit(77)

# What stands in the table, by kind: works and the peers of each.
ROWS = {"In memory": [("JPEG decode", 2), ("JPEG encode", 2), ("progressive JPEG decode", 1), ("progressive JPEG encode", 1),
                      ("block coder, 5/3, encode", 1), ("block coder, 5/3, decode", 1)] +
        [(f"{kind} {way}, one level, 32 bits", 1) for kind in ("5/3", "9/7") for way in ("forward", "inverse")] +
        [(f"PackBits {way}, {what}", 1) for what in ("bilevel page", "halftoned photograph") for way in ("pack", "unpack")] +
        [(f"DXT{n} decode", 1) for n in (1, 3, 5)],
        "Whole commands": [("zmx jpeg " + name, 2) for name in
                           ("encode 4:2:0", "encode 4:2:0, fast", "encode 4:4:4, quality 90", "encode grey", "decode 4:2:0",
                            "decode 4:2:0, chroma repeated", "decode 4:4:4", "decode grey")] +
        [(name, 1) for name in ("TIFF to PackBits", "PackBits to PPM", "DXT1 to PPM", "DXT5 to PAM", "PAM to DXT1",
                                "PAM to DXT5", "PNG to PPM", "PPM to PNG")]}
for kind in "JPEG2000, 1 thread", "JPEG2000, 2 threads":
    ROWS[kind] = [(name, 1) for name in ("encode lossless", "encode, 1 bpp", "decode lossless", "decode, 1 bpp")]


def figures_of(cells):
    """All numbers that a line must have, from the peer's time on."""
    times = [re.fullmatch(r"([0-9.e+]+) (?:s|ms|µs|ns) ±\d+ %", cell) for cell in cells[3:5]]
    rest = [cell.strip("*") for cell in cells[5:] if cell not in ("met", "missed")]
    return [float(m.group(1)) if m else 0 for m in times] + [float(cell) for cell in rest]


with tempfile.TemporaryDirectory() as folder:
    done = subprocess.run([source / "scripts/bench", "--quick", "--build", build, "--out", folder], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if done.returncode:
        sys.exit(done.stdout[-3000:])
    page = (pathlib.Path(folder) / "bench.md").read_text(encoding="utf-8")
    chart = xml.etree.ElementTree.parse(pathlib.Path(folder) / "bench.svg").getroot()

table = [[cell.strip() for cell in line.split("|")[1:-1]] for line in page.splitlines() if line.startswith("| ")]
head, lines = table[0], table[1:]
failed = []
for kind, works in ROWS.items():
    for work, peers in works:
        found = sum(cells[:2] == [kind, work] for cells in lines)
        if found != peers:
            failed.append(f"{kind}: {work}: {found} lines, not {peers}")
if len(lines) != sum(peers for works in ROWS.values() for _, peers in works):
    failed.append(f"{len(lines)} lines")
for cells in lines:
    if len(cells) != len(head) or min(figures_of(cells)) <= 0:
        failed.append(" | ".join(cells))
levels = sum(cell == "baseline" or re.fullmatch("v[234]", cell) is not None for cell in head)
bars = [e for e in chart.iter("{http://www.w3.org/2000/svg}rect") if e.get("height") == "6"]
if len(bars) != levels * len(lines):
    failed.append(f"{len(bars)} bars for {len(lines)} lines at {levels} levels")
print(*failed, sep="\n")
print(f"{len(lines)} lines at {levels} levels, {len(failed)} failed")
sys.exit(bool(failed))
