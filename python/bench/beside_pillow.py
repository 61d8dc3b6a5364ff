#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""beside_pillow.py [PHOTO]: time and memory of zmxjpx beside Pillow (libjpeg-turbo, OpenJPEG), on the same array, in
one run.

Rounds alternate, and of each call the fastest counts. Seconds are those of the processor, so that other programs on the
machine disturb little; both sides run on one thread. Memory is what a process of its own takes at most beyond what it
has before the call. Without PHOTO, ZMX_BENCH_PHOTO names the picture. The table is in the form of
docs/performance-python.md.
"""
from __future__ import annotations

import argparse
import ctypes
import gc
import io
import multiprocessing
import os
import resource
import time
from collections.abc import Callable

import numpy as np
from PIL import Image, features

import zmxjpx

ROUNDS = 7


def saved(image: np.ndarray, form: str, **options: object) -> bytes:
    """By Pillow."""
    file = io.BytesIO()
    Image.fromarray(image).save(file, form, **options)
    return file.getvalue()


def opened(file: bytes) -> np.ndarray:
    return np.asarray(Image.open(io.BytesIO(file)))


def cases(image: np.ndarray) -> list[tuple[str, Callable[[], object], Callable[[], object]]]:
    """Names, our calls and Pillow's. Both decode the same files."""
    jpeg = saved(image, "JPEG", quality=90, subsampling=2)
    exact = zmxjpx.encode_jpeg2000(image)
    lossy = zmxjpx.encode_jpeg2000(image, ratio=10)
    return [
        ("JPEG, quality 90, 4:2:0, encode", lambda: zmxjpx.encode_jpeg(image, 90, sampling="420"),
         lambda: saved(image, "JPEG", quality=90, subsampling=2)),
        ("the same, `fast=True`", lambda: zmxjpx.encode_jpeg(image, 90, sampling="420", fast=True),
         lambda: saved(image, "JPEG", quality=90, subsampling=2)),
        ("JPEG, quality 90, 4:2:0, decode", lambda: zmxjpx.decode_jpeg(jpeg), lambda: opened(jpeg)),
        ("JPEG2000, lossless, encode", lambda: zmxjpx.encode_jpeg2000(image, threads=1),
         lambda: saved(image, "JPEG2000", mct=1)),
        ("JPEG2000, lossless, decode", lambda: zmxjpx.decode_jpeg2000(exact, threads=1), lambda: opened(exact)),
        ("JPEG2000, 9/7, 10 : 1, encode", lambda: zmxjpx.encode_jpeg2000(image, ratio=10, threads=1),
         lambda: saved(image, "JPEG2000", irreversible=True, mct=1, quality_mode="rates",
                       quality_layers=[10])),
        ("JPEG2000, 9/7, 10 : 1, decode", lambda: zmxjpx.decode_jpeg2000(lossy, threads=1), lambda: opened(lossy)),
    ]


def seconds(call: Callable[[], object]) -> float:
    began = time.process_time()
    call()
    return time.process_time() - began


def peak(image: np.ndarray, number: int, side: int) -> int:
    """The bytes that a call takes at most, in a process of its own, which fork() makes of this one."""

    def child(pipe) -> None:
        call = cases(image)[number][side]
        gc.collect()
        ctypes.CDLL(None).malloc_trim(0)  # what is free goes back, so that it counts when it is taken again
        with open("/proc/self/clear_refs", "w") as refs:
            refs.write("5")  # the peak begins again from what there is now
        with open("/proc/self/statm") as statm:
            before = int(statm.read().split()[1]) * resource.getpagesize()
        result = call()
        with open("/proc/self/status") as status:
            most = next(int(line.split()[1]) * 1024 for line in status if line.startswith("VmHWM"))
        pipe.send(most - before)
        del result

    context = multiprocessing.get_context("fork")
    ours, theirs = context.Pipe(False)
    process = context.Process(target=child, args=(theirs,))
    process.start()
    most = ours.recv()
    process.join()
    return most


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("photo", nargs="?", default=os.environ.get("ZMX_BENCH_PHOTO"))
    parser.add_argument("--rounds", type=int, default=ROUNDS)
    options = parser.parse_args()
    if not options.photo:
        parser.error("name a photograph, or set ZMX_BENCH_PHOTO")
    image = np.asarray(Image.open(options.photo).convert("RGB"))
    megapixels = image.shape[0] * image.shape[1] / 1e6
    print(f"{image.shape[1]} x {image.shape[0]} pixels RGB; Pillow {Image.__version__}, libjpeg-turbo "
          f"{features.version('libjpeg_turbo')}, OpenJPEG {features.version('jpg_2000')}\n")
    print("| call | zmxjpx, Mpx/s | Pillow, Mpx/s | time, ours to theirs | zmxjpx, MiB | Pillow, MiB |")
    print("|---|---|---|---|---|---|")
    for number, (name, ours, theirs) in enumerate(cases(image)):
        rounds = [(seconds(ours), seconds(theirs)) for _ in range(options.rounds)]
        us, them = (min(column) for column in zip(*rounds))
        memory = [peak(image, number, side) / 2**20 for side in (1, 2)]
        print(f"| {name} | {megapixels / us:.1f} | {megapixels / them:.1f} | {us / them:.2f} | {memory[0]:.0f} | "
              f"{memory[1]:.0f} |", flush=True)


if __name__ == "__main__":
    main()
