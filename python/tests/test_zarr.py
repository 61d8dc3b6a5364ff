# SPDX-License-Identifier: BSD-2-Clause
"""The codecs as compressors of Zarr arrays."""
from __future__ import annotations

import json
import subprocess
import sys
from importlib import metadata

import numcodecs
import numpy as np
import pytest
import zarr
from conftest import picture, psnr

import zmxjpx
from zmxjpx.numcodecs import Jpeg, Jpeg2000, LosslessJpeg

LOSSLESS = [Jpeg2000(), Jpeg2000(levels=2), LosslessJpeg(), LosslessJpeg(predictor=7)]


@pytest.mark.parametrize("codec", LOSSLESS, ids=repr)
@pytest.mark.parametrize(("channels", "bits"), [(1, 8), (1, 16), (3, 8), (4, 16), (2, 8)])
def test_lossless_codecs_keep_arrays(codec, channels, bits, tmp_path):
    image = picture(150, 170, channels, bits)
    chunks = (64, 64) if channels == 1 else (64, 64, channels)
    stored = zarr.open(str(tmp_path / "a.zarr"), "w", shape=image.shape, chunks=chunks, dtype=image.dtype,
                       compressor=codec)
    stored[:] = image
    again = zarr.open(str(tmp_path / "a.zarr"), "r")
    assert np.array_equal(again[:], image) and again.compressor == codec
    assert np.array_equal(again[10:100, 65:70], image[10:100, 65:70])
    assert again.nbytes_stored < image.nbytes


LOSSY = [(Jpeg(95), 35), (Jpeg2000(psnr=42), 41), (Jpeg2000(rate=3), 30)]


@pytest.mark.parametrize(("codec", "least"), LOSSY, ids=repr)
def test_lossy_codecs(codec, least):
    image = picture(128, 128)
    stored = zarr.array(image, chunks=(128, 128, 3), compressor=codec)
    assert psnr(image, stored[:]) > least and stored.nbytes_stored < image.nbytes / 2


def test_stacks_of_pictures():
    stack = np.stack([picture(40, 50, 1, 16, seed) for seed in range(3)])
    stored = zarr.array(stack, chunks=(1, 40, 50), compressor=Jpeg2000())
    assert np.array_equal(stored[:], stack)
    with pytest.raises(ValueError, match=r"not \(3, 40, 50\)"):
        zarr.array(stack, chunks=(3, 40, 50), compressor=Jpeg2000())


@pytest.mark.parametrize("array", [np.zeros((4, 4), np.float32), np.zeros((4, 4), np.int16), np.zeros(9, np.uint8)])
def test_other_chunks_are_a_clear_error(array):
    with pytest.raises(ValueError, match="chunk"):
        Jpeg2000().encode(array)


def test_jpeg_takes_bytes_alone_and_fortran_order_is_refused():
    with pytest.raises(ValueError, match="uint8"):
        Jpeg().encode(np.zeros((8, 8), np.uint16))
    with pytest.raises(ValueError, match="order"):
        zarr.array(picture(16, 24, 1), chunks=(16, 24), order="F", compressor=Jpeg2000())


@pytest.mark.parametrize("codec", [*LOSSLESS, Jpeg(80), Jpeg2000(rate=1.5)], ids=repr)
def test_configurations_go_through_json(codec):
    assert numcodecs.get_codec(json.loads(json.dumps(codec.get_config()))) == codec


def test_decoding_into_an_array():
    image = picture(33, 44, 1, 16)
    for codec in (Jpeg2000(), LosslessJpeg()):
        out = np.zeros(33 * 44, np.uint16)
        codec.decode(codec.encode(image), out=out)
        assert np.array_equal(out.reshape(33, 44), image)
        room = bytearray(image.nbytes)
        codec.decode(codec.encode(image), out=room)
        assert bytes(room) == image.tobytes()


def test_damage_is_never_passed_over():
    file = Jpeg2000().encode(picture(200, 200, 1))
    with pytest.raises(zmxjpx.DamageError):
        Jpeg2000().decode(file[: len(file) // 2])


def test_numcodecs_finds_them_with_nobody_importing_them():
    try:
        metadata.distribution("zmxjpx")
    except metadata.PackageNotFoundError:
        pytest.skip("the package is not installed, only on the path")
    code = "import numcodecs; print(numcodecs.get_codec({'id': 'zmxjpx_jpeg2000', 'rate': 2}).rate)"
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True)
    assert done.stdout.strip() == "2", done.stderr
