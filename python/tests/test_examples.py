# SPDX-License-Identifier: BSD-2-Clause
"""The examples for many machines, on a cluster of this one: real processes, a real kill."""
from __future__ import annotations

import json
import os
import re
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest
import zarr
from conftest import picture
from PIL import Image

import zmxjpx
import zmxjpx.numcodecs  # registers the codec of the arrays

EXAMPLES = Path(__file__).resolve().parents[2] / "examples"


def ran(*arguments: object, status: int = 0) -> str:
    done = subprocess.run([sys.executable, *map(str, arguments)], capture_output=True, text=True, timeout=600)
    assert done.returncode == status, done.stdout + done.stderr
    return done.stdout + done.stderr


def sums(output: str) -> list[str]:
    return re.findall(r"checksum (\w+)", output)


def test_gigapixel_comes_out_alike_whatever_happens(tmp_path):
    script = EXAMPLES / "gigapixel" / "gigapixel.py"
    size = ["--side", 2000, "--chunk", 256, "--levels", 2]
    output = ran(script, tmp_path / "g", *size, "--workers", 1, 2, 2, "--kill")
    assert "killed a worker" in output and "megapixels a second" in output
    assert len(sums(output)) == 3 and len(set(sums(output))) == 1
    # The level is what the picture itself gives at a reduced resolution.
    level = zarr.open(str(tmp_path / "g" / "2"), "r")
    below = zarr.open(str(tmp_path / "g" / "0"), "r")
    assert level.shape == (500, 500, 3)
    chunk = zmxjpx.decode_jpeg2000(below.chunk_store["3.4.0"], reduce=2)
    assert np.array_equal(level[192:256, 256:320], chunk)


def test_memory_stays_flat_whatever_the_size(tmp_path):
    script = EXAMPLES / "gigapixel" / "gigapixel.py"
    peaks = []
    for side in (1024, 3072):
        output = ran(script, tmp_path / str(side), "--side", side, "--chunk", 512, "--levels", 0, "--workers", 1)
        peaks.append(int(re.search(r"(\d+) MiB at most", output)[1]))
    assert peaks[1] < peaks[0] + 30  # 9 times the pixels


def test_one_broken_file_does_not_stop_a_folder(tmp_path):
    pictures, out = tmp_path / "in", tmp_path / "out"
    pictures.mkdir()
    image = picture(60, 80)
    Image.fromarray(image).save(pictures / "a.png")
    file = zmxjpx.encode_jpeg(picture(200, 200), 90)
    (pictures / "b.jpg").write_bytes(file)
    (pictures / "broken.jpg").write_bytes(b"\xff\xd8 and nothing more")
    (pictures / "cut.jpg").write_bytes(file[: len(file) // 2])
    (pictures / "text.txt").write_text("no picture")
    report = tmp_path / "report.json"
    output = ran(EXAMPLES / "folder" / "folder.py", pictures, out, "--report", report, status=1)
    assert "3 converted, 2 failed" in output
    told = {line["file"]: line for line in json.loads(report.read_text())}
    assert [name for name in sorted(told) if told[name]["ok"]] == ["a.png", "b.jpg", "cut.jpg"]
    assert told["cut.jpg"]["warnings"] and told["broken.jpg"]["error"]
    assert sorted(os.listdir(out)) == ["a.png.jp2", "b.jpg.jp2", "cut.jpg.jp2"]
    assert np.array_equal(zmxjpx.decode_jpeg2000((out / "a.png.jp2").read_bytes()), image)


def test_the_guide_runs(tmp_path):
    script = EXAMPLES / "from_python.py"
    guide = (EXAMPLES.parent / "docs" / "guides" / "python.md").read_text()
    named = set(re.findall(r"^# \[(\w+)\]$", script.read_text(), re.M))
    assert set(re.findall(r"\\snippet from_python.py (\w+)", guide)) == named
    done = subprocess.run([sys.executable, str(script)], cwd=tmp_path, capture_output=True, text=True, timeout=300)
    assert done.returncode == 0, done.stderr
    assert [line.split(":")[0] for line in done.stdout.splitlines()] == [
        "decoded in part", "refused", "640 rows, baseline", "-6 zmxStsSizeErr", "I;16"]


@pytest.mark.parametrize("script", ["gigapixel/gigapixel.py", "folder/folder.py"])
def test_examples_say_what_they_do(script):
    assert "usage:" in ran(EXAMPLES / script, "--help")
