# SPDX-License-Identifier: BSD-2-Clause
"""Decoding speed beside Pillow, in one run on one core: texture_pillow.py LIBZMXJPX

Both sides decode blocks in memory: random ones, and for BC7 also a photograph's ($ZMX_BENCH_PHOTO).
"""
import ctypes
import os
import sys
import time

import numpy as np
from PIL import Image

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "command"))
import texture

texture.PHOTO = os.environ.get("ZMX_BENCH_PHOTO", texture.PHOTO)
SIDE = 1024
library = ctypes.CDLL(os.path.abspath(sys.argv[1]))


class Size(ctypes.Structure):
    _fields_ = [("width", ctypes.c_int), ("height", ctypes.c_int)]


def best(call):
    """The shortest of many runs, in seconds."""
    times = []
    while len(times) < 5 or sum(times) < 1:
        start = time.perf_counter()
        call()
        times.append(time.perf_counter() - start)
    return min(times)


def compare(name, kind, number, blocks):
    decode = getattr(library, f"zmxiTextureDecodeBlockToRGBA_{kind}_8u_C1C4R")
    out = ctypes.create_string_buffer(4 * SIDE * SIDE)
    ours = best(lambda: decode(blocks, out, 4 * SIDE, Size(SIDE, SIDE)))
    theirs = best(lambda: Image.frombytes("RGBA", (SIDE, SIDE), blocks, "bcn", number, kind))
    rate = SIDE * SIDE / 1e6
    print(f"{name:15} zmxjpx {rate / ours:7.0f} Mpixel/s   Pillow {rate / theirs:6.0f} Mpixel/s   ratio {theirs / ours:5.1f}")


rng = np.random.default_rng(1)
for kind, number, size in (("DXT1", 1, 8), ("DXT3", 2, 16), ("DXT5", 3, 16)):
    compare(kind + " random", kind, number, rng.integers(0, 256, SIDE * SIDE // 16 * size, np.uint8).tobytes())
compare("BC7 random", "BC7", 7, texture.random_bc7(SIDE * SIDE // 16).tobytes())
compare("BC7 photograph", "BC7", 7, texture.packed_picture(np.asarray(texture.photograph(SIDE, SIDE))))
