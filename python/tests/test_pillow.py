# SPDX-License-Identifier: BSD-2-Clause
"""The formats for Pillow."""
from __future__ import annotations

import io

import numpy as np
import pytest
from conftest import picture, psnr
from PIL import Image

import zmxjpx
import zmxjpx.pillow  # registers them


def opened(file: bytes) -> Image.Image:
    return Image.open(io.BytesIO(file))


@pytest.mark.parametrize(("channels", "mode"), [(1, "L"), (3, "RGB")])
def test_lossless_jpeg(channels, mode):
    image = picture(40, 60, channels)
    there = opened(zmxjpx.encode_jpeg(image, lossless=4))
    assert there.mode == mode and there.size == (60, 40) and there.format == "ZMXJPEG"
    assert np.array_equal(np.asarray(there), image)


@pytest.mark.parametrize(("bits", "lossless"), [(12, 0), (16, 1), (12, 1)])
def test_grey_of_more_bits(bits, lossless):
    image = picture(40, 60, 1, bits)
    there = opened(zmxjpx.encode_jpeg(image, 98, lossless=lossless, bits=bits))
    assert there.mode == "I;16" and there.info["bits"] == bits
    assert psnr(np.asarray(there), image, (1 << bits) - 1) > (45 if not lossless else 199)


def test_colours_of_more_bits_lose_the_low_ones():
    image = picture(40, 60, 3, 16)
    assert np.array_equal(np.asarray(opened(zmxjpx.encode_jpeg2000(image))), image >> 8)


def test_other_jpeg_files_are_left_to_pillow(rgb):
    assert opened(zmxjpx.encode_jpeg(rgb)).format == "JPEG"
    file = io.BytesIO()
    Image.fromarray(rgb).save(file, "PNG")
    assert opened(file.getvalue()).format == "PNG"


def test_windows_of_jpeg2000_are_decoded_alone(rgb):
    image = picture(600, 800)
    there = opened(zmxjpx.encode_jpeg2000(image, tile=(256, 256)))
    part = there.crop((300, 200, 420, 280))
    assert np.array_equal(np.asarray(part), image[200:280, 300:420])
    assert there._data is not None  # it is still not loaded
    assert there.window((0, 0, 800, 600), reduce=3).size == (100, 75)
    assert np.array_equal(np.asarray(there), image)
    assert np.array_equal(np.asarray(there.crop((300, 200, 420, 280))), image[200:280, 300:420])
    with pytest.raises(ValueError):
        there.window((0, 0, 8, 8))


def test_saving():
    wide = Image.fromarray(picture(30, 40, 1, 16))
    file = io.BytesIO()
    wide.save(file, "ZMXJPEG", lossless=2)
    assert zmxjpx.info(file.getvalue())["mode"] == "lossless"
    assert np.array_equal(np.asarray(opened(file.getvalue())), picture(30, 40, 1, 16))
    file = io.BytesIO()
    Image.fromarray(picture(64, 64)).save(file, "ZMXJPEG2000", rate=2)
    assert abs(len(file.getvalue()) * 8 / 64**2 - 2) < 1.2
    assert opened(file.getvalue()).mode == "RGB"


def test_broken_files_are_no_pictures():
    for file in (b"\xff\xd8\xff\xc3 and so on", b"\xff\x4f\xff\x51 and so on"):
        with pytest.raises(OSError):
            opened(file)
