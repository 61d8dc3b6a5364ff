#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""gigapixel.py FOLDER: a picture too large for memory, made and compressed by a cluster.

The picture follows from a rule, so that any part of it can be made by itself. Each chunk of a Zarr array is made and
compressed by a worker of dask.distributed, losslessly by JPEG2000, and never is more than a few chunks in memory. The
levels of a pyramid are decoded from the chunks at reduced resolution, and compressed in their turn.

A chunk is a file that appears whole or not at all, and its bytes depend on the rule alone. So a worker that dies loses
nothing: its chunks are made again by another one, and the checksum over all files is the same for any number of
workers.

    gigapixel.py /tmp/giga --workers 1 2       # measures, and tells how much faster two workers are
    gigapixel.py /tmp/giga --kill              # kills a worker in the middle
"""
from __future__ import annotations

import argparse
import hashlib
import os
import resource
import shutil
import signal
import sys
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

import numpy as np
import zarr
from distributed import Client, LocalCluster, as_completed
from numpy.typing import NDArray

import zmxjpx
from zmxjpx.numcodecs import Jpeg2000


@dataclass(frozen=True)
class Work:
    """What is made: square arrays 0, 1, ... in a folder, each with sides half as long as the one before."""

    folder: str
    side: int
    chunk: int
    levels: int

    def side_of(self, level: int) -> int:
        return (self.side + (1 << level) - 1) >> level

    def array(self, level: int) -> zarr.Array:
        return zarr.open(f"{self.folder}/{level}", mode="r+")

    def chunks(self, level: int) -> list[tuple[int, int]]:
        count = -(-self.side_of(level) // self.chunk)
        return [(row, column) for row in range(count) for column in range(count)]


def strip_of_rule(y: int, x: int, height: int, width: int) -> NDArray[np.uint8]:
    rows = np.arange(y, y + height, dtype=np.int64)[:, None]
    columns = np.arange(x, x + width, dtype=np.int64)[None, :]
    wave = np.abs((rows * 3 + columns) % 1021 - 510) // 3 + np.abs((columns * 5 - rows) % 2039 - 1019) // 16
    # What looks like noise: the low bits of a product.
    grain = ((rows * 7919 + columns * 104729) * 2654435761 >> 24) & 3
    return np.stack([wave + grain, 255 - wave // 2 - grain, (wave + rows // 64) & 127], axis=2).astype(np.uint8)


def rule(y: int, x: int, height: int, width: int) -> NDArray[np.uint8]:
    """A part of the picture, RGB: waves of many lengths, and in integers, so that every machine makes the same.

    By strips, whose many intermediate arrays stay in the cache of their processor.
    """
    part = np.empty((height, width, 3), np.uint8)
    for top in range(0, height, 16):
        rows = min(16, height - top)
        part[top:top + rows] = strip_of_rule(y + top, x, rows, width)
    return part


def make_arrays(work: Work) -> None:
    shutil.rmtree(work.folder, ignore_errors=True)
    for level in range(work.levels + 1):
        side = work.side_of(level)
        zarr.open(f"{work.folder}/{level}", mode="w", shape=(side, side, 3), chunks=(work.chunk, work.chunk, 3),
                  dtype=np.uint8, compressor=Jpeg2000(), fill_value=0)


def make_chunk(work: Work, place: tuple[int, int]) -> int:
    """Makes a chunk of the picture and stores it; how many pixels that were."""
    y, x = (n * work.chunk for n in place)
    height, width = (min(work.chunk, work.side - n) for n in (y, x))
    work.array(0)[y:y + height, x:x + width] = rule(y, x, height, width)
    return height * width


def make_level(work: Work, level: int, place: tuple[int, int]) -> int:
    """Makes a chunk of a level of the pyramid out of the chunks of the picture, which are decoded at its resolution.

    The files of the chunks are read as they are: of each only the packets of the low resolutions are decoded.
    """
    pixels, below = work.array(level), work.array(0)
    y, x = (n * work.chunk for n in place)
    part = np.zeros((min(work.chunk, pixels.shape[0] - y), min(work.chunk, pixels.shape[1] - x), 3), np.uint8)
    times, small = 1 << level, work.chunk >> level
    last = -(-work.side // work.chunk)
    for row in range(place[0] * times, min((place[0] + 1) * times, last)):
        for column in range(place[1] * times, min((place[1] + 1) * times, last)):
            file = below.chunk_store[f"{below.path}{row}.{column}.0"]
            decoded = zmxjpx.decode_jpeg2000(file, reduce=level, threads=1)
            top, left = row * small - y, column * small - x
            room = part[top:top + small, left:left + small]
            room[:] = decoded[:room.shape[0], :room.shape[1]]
    pixels[y:y + part.shape[0], x:x + part.shape[1]] = part
    return part.shape[0] * part.shape[1]


def checksum(folder: str) -> str:
    """Of the names and bytes of all files, in the order of their names."""
    total = hashlib.sha256()
    for path in sorted(Path(folder).rglob("*")):
        if path.is_file():
            total.update(f"{path.relative_to(folder)}\0".encode())
            total.update(hashlib.sha256(path.read_bytes()).digest())
    return total.hexdigest()


def peak_memory() -> int:
    """Of this process so far, in bytes."""
    return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024


def run(work: Work, workers: int, kill: bool) -> tuple[float, int]:
    """Makes all, on so many worker processes of one thread: the seconds for the picture itself, the peak of memory."""
    make_arrays(work)
    with tempfile.TemporaryDirectory() as scratch, LocalCluster(
            n_workers=workers, threads_per_worker=1, processes=True, dashboard_address=":0", memory_limit=0,
            local_directory=scratch) as cluster, Client(cluster) as client:
        began = time.perf_counter()
        futures = client.map(make_chunk, [work] * len(work.chunks(0)), work.chunks(0), pure=False)
        for done, future in enumerate(as_completed(futures), 1):
            future.result()
            if kill and done == max(len(futures) // 3, 1):
                victim = next(iter(client.run(os.getpid).values()))
                os.kill(victim, signal.SIGKILL)
                print(f"killed a worker after {done} of {len(futures)} chunks")
        seconds = time.perf_counter() - began
        for level in range(1, work.levels + 1):
            places = work.chunks(level)
            client.gather(client.map(make_level, [work] * len(places), [level] * len(places), places, pure=False))
        return seconds, max(client.run(peak_memory).values())


def check_window(work: Work) -> None:
    """Reads windows back, and compares them with the rule."""
    size = min(700, work.side)
    for y, x in ((0, 0), (work.side - size, work.side // 3), (work.side // 2, work.side - size)):
        y, x = min(y, work.side - size), min(x, work.side - size)
        if not np.array_equal(work.array(0)[y:y + size, x:x + size], rule(y, x, size, size)):
            raise SystemExit(f"the window at {y}, {x} is not what was stored")


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("folder")
    parser.add_argument("--side", type=int, default=20480, help="of the picture, in pixels (default %(default)s)")
    parser.add_argument("--chunk", type=int, default=1024, help="side of a chunk, a multiple of 2**LEVELS")
    parser.add_argument("--levels", type=int, default=4, help="of the pyramid")
    parser.add_argument("--workers", type=int, nargs="+", default=[2], help="how many processes; several: one run each")
    parser.add_argument("--kill", action="store_true", help="kill a worker in the middle of the last run")
    options = parser.parse_args()
    if options.chunk % (1 << options.levels):
        parser.error("--chunk: not a multiple of 2**LEVELS")
    work = Work(str(Path(options.folder).resolve()), options.side, options.chunk, options.levels)
    sums, times = [], []
    for number, workers in enumerate(options.workers):
        kill = options.kill and number == len(options.workers) - 1
        seconds, peak = run(work, workers, kill)
        sums.append(checksum(work.folder))
        times.append(seconds)
        check_window(work)
        print(f"{workers} workers: {work.side ** 2 / seconds / 1e6:.2f} megapixels a second, "
              f"{peak / 2**20:.0f} MiB at most a worker, checksum {sums[-1][:16]}", flush=True)
    for workers, seconds in zip(options.workers[1:], times[1:]):
        print(f"{workers} workers are {times[0] / seconds:.2f} times as fast as {options.workers[0]}")
    stored = sum(path.stat().st_size for path in Path(work.folder).rglob("*") if path.is_file())
    print(f"{work.side} x {work.side} pixels and {work.levels} levels in {stored / 2**20:.0f} MiB")
    if len(set(sums)) > 1:
        sys.exit("the runs differ")


if __name__ == "__main__":
    main()
