#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""folder.py IN OUT: all pictures of a folder as JPEG2000 files, on all processors, with a report of failures.

The files are a Dask bag. One that cannot be read is a line of the report, and does not stop the others; one that was
damaged is converted as far as it goes, and a line as well. Pictures of JPEG and JPEG2000 are read by zmxjpx, and
others by Pillow. A picture appears under its name when all of it is written.

    folder.py scans archive --report report.json --rate 2
"""
from __future__ import annotations

import argparse
import json
import os
import sys
import warnings
from pathlib import Path
from typing import Any, Optional

import dask.bag
import numpy as np
from numpy.typing import NDArray
from PIL import Image

import zmxjpx


def read(path: Path) -> NDArray[Any]:
    """A picture of whatever kind."""
    data = path.read_bytes()
    try:
        kind = zmxjpx.info(data)["format"]
    except zmxjpx.CodecError:
        with Image.open(path) as image:
            plain = image.mode in ("L", "LA", "RGB", "RGBA", "I;16")
            return np.asarray(image if plain else image.convert("RGB"))
    decode = {"jpeg": zmxjpx.decode_jpeg, "dds": zmxjpx.decode_dds}.get(kind, zmxjpx.decode_jpeg2000)
    return decode(data)


def convert(path: Path, out: Path, rate: Optional[float]) -> dict[str, Any]:
    """Converts a file; what became of it is told, never raised."""
    report: dict[str, Any] = {"file": path.name, "ok": False, "warnings": []}
    try:
        with warnings.catch_warnings(record=True) as caught:
            warnings.simplefilter("always", zmxjpx.DamageWarning)
            picture = read(path)
        report["warnings"] = [str(w.message) for w in caught if issubclass(w.category, zmxjpx.DamageWarning)]
        file = zmxjpx.encode_jpeg2000(picture, rate=rate, threads=1)
        part = out / (path.name + ".part")
        part.write_bytes(file)
        os.replace(part, out / (path.name + ".jp2"))
        report.update(ok=True, pixels=int(picture.shape[0] * picture.shape[1]), bytes=len(file))
    except Exception as error:  # whatever is wrong with one file is not wrong with the others
        report["error"] = f"{type(error).__name__}: {error}"
    return report


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("folder", type=Path)
    parser.add_argument("out", type=Path)
    parser.add_argument("--rate", type=float, help="bits a pixel; left out: lossless")
    parser.add_argument("--report", type=Path, help="a file for the report, as JSON")
    options = parser.parse_args()
    options.out.mkdir(parents=True, exist_ok=True)
    paths = sorted(path for path in options.folder.iterdir() if path.is_file())
    bag = dask.bag.from_sequence(paths, partition_size=1).map(convert, options.out, options.rate)
    reports = bag.compute(scheduler="processes") if paths else []
    failed = [report for report in reports if not report["ok"]]
    for report in reports:
        for line in report["warnings"] + ([report["error"]] if "error" in report else []):
            print(f"{report['file']}: {line}", file=sys.stderr)
    print(f"{len(reports) - len(failed)} converted, {len(failed)} failed")
    if options.report:
        options.report.write_text(json.dumps(reports, indent=2) + "\n")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
