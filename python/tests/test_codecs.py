# SPDX-License-Identifier: BSD-2-Clause
"""Whole codecs: what goes in comes out, whatever the layout of the array, and files of others are read."""
from __future__ import annotations

import io
import mmap
import threading
import time

import numpy as np
import pytest
from conftest import picture, psnr
from PIL import Image

import zmxjpx


def test_jpeg_comes_back_nearly_as_it_was(rgb, grey):
    for image in (rgb, grey):
        back = zmxjpx.decode_jpeg(zmxjpx.encode_jpeg(image, 90, sampling="444"))
        assert back.shape == image.shape and back.dtype == np.uint8
        assert psnr(image, back) > 35


def test_pillow_reads_the_jpeg_files_alike(rgb):
    file = zmxjpx.encode_jpeg(rgb, 92, sampling="444", optimize=True)
    theirs = np.asarray(Image.open(io.BytesIO(file)))
    assert psnr(theirs, zmxjpx.decode_jpeg(file)) > 45


def test_progressive_files_of_pillow_are_read(rgb):
    file = io.BytesIO()
    Image.fromarray(rgb).save(file, "JPEG", quality=92, progressive=True, subsampling=0)
    assert psnr(rgb, zmxjpx.decode_jpeg(file.getvalue())) > 35
    assert zmxjpx.info(file.getvalue())["mode"] == "progressive"


@pytest.mark.parametrize("predictor", range(1, 8))
@pytest.mark.parametrize(("channels", "bits"), [(1, 8), (3, 8), (1, 16), (3, 12), (4, 10)])
def test_lossless_jpeg_is_exact(predictor, channels, bits):
    image = picture(23, 31, channels, bits)
    file = zmxjpx.encode_jpeg(image, lossless=predictor, bits=bits, colour="cmyk" if channels == 4 else None)
    assert np.array_equal(zmxjpx.decode_jpeg(file), image)
    assert zmxjpx.info(file)["mode"] == "lossless" and zmxjpx.info(file)["bits"] == bits


def test_twelve_bits_are_kept():
    image = picture(40, 56, 1, 12)
    back = zmxjpx.decode_jpeg(zmxjpx.encode_jpeg(image, 95))
    assert back.dtype == np.uint16 and psnr(image, back, 4095) > 40


def test_cmyk_is_not_turned_over():
    image = picture(32, 32, 4)
    for ycck in (False, True):
        file = zmxjpx.encode_jpeg(image, 95, colour="cmyk", ycck=ycck, sampling="444")
        assert psnr(image, zmxjpx.decode_jpeg(file)) > 35
    with pytest.raises(zmxjpx.CodecError, match="alpha"):
        zmxjpx.encode_jpeg(image)


def test_scaled_decoding():
    image = picture(64, 96)
    file = zmxjpx.encode_jpeg(image, 90)
    sizes = [zmxjpx.decode_jpeg(file, scale=scale).shape[:2] for scale in (1, 2, 4, 8)]
    assert sizes == [(64, 96), (32, 48), (16, 24), (8, 12)]


def test_transcoding_changes_no_coefficient(rgb):
    file = zmxjpx.encode_jpeg(rgb, 90)
    again = zmxjpx.transcode_jpeg(file, progressive=True)
    assert np.array_equal(zmxjpx.decode_jpeg(again), zmxjpx.decode_jpeg(file))
    turned = zmxjpx.transcode_jpeg(zmxjpx.encode_jpeg(rgb[:48, :64], 90), rotate=90)
    assert zmxjpx.decode_jpeg(turned).shape == (64, 48, 3)


@pytest.mark.parametrize(("channels", "bits"), [(1, 8), (2, 8), (3, 8), (4, 8), (1, 16), (3, 16), (4, 11)])
def test_reversible_jpeg2000_is_exact(channels, bits):
    image = picture(75, 50, channels, bits)
    file = zmxjpx.encode_jpeg2000(image, bits=bits)
    assert np.array_equal(zmxjpx.decode_jpeg2000(file), image)
    assert zmxjpx.info(file)["bits"] == bits and zmxjpx.info(file)["reversible"]


def test_pillow_reads_the_jpeg2000_files_alike(rgb):
    assert np.array_equal(np.asarray(Image.open(io.BytesIO(zmxjpx.encode_jpeg2000(rgb)))), rgb)
    file = io.BytesIO()
    Image.fromarray(rgb).save(file, "JPEG2000")
    assert np.array_equal(zmxjpx.decode_jpeg2000(file.getvalue()), rgb)


def test_jpeg2000_parts(rgb):
    image = picture(200, 300)
    file = zmxjpx.encode_jpeg2000(image, tile=(128, 128))
    assert np.array_equal(zmxjpx.decode_jpeg2000(file, window=(100, 50, 80, 60)), image[50:110, 100:180])
    assert zmxjpx.decode_jpeg2000(file, reduce=2).shape == (50, 75, 3)
    # A component of the codestream is ahead of the inverse colour transform's picture only in its order.
    plain = zmxjpx.encode_jpeg2000(image, colour_transform=False)
    assert np.array_equal(zmxjpx.decode_jpeg2000(plain, component=1), image[:, :, 1])


def test_jpeg2000_rates_and_layers():
    image = picture(256, 256)
    file = zmxjpx.encode_jpeg2000(image, rate=[0.5, 2.0])
    assert abs(len(file) * 8 / 256**2 - 2.0) < 0.1
    first, both = zmxjpx.decode_jpeg2000(file, layers=1), zmxjpx.decode_jpeg2000(file)
    assert psnr(image, first) < psnr(image, both)
    assert zmxjpx.info(file)["layers"] == 2
    assert psnr(image, zmxjpx.decode_jpeg2000(zmxjpx.encode_jpeg2000(image, psnr=40))) == pytest.approx(40, abs=0.7)


def test_dds_textures(rgb):
    alpha = np.dstack([rgb, np.full(rgb.shape[:2], 255, np.uint8)])
    for form in ("dxt1", "dxt3", "dxt5"):
        file = zmxjpx.encode_dds(alpha, form, mips=True)
        back = zmxjpx.decode_dds(file)
        assert psnr(rgb, back[:, :, :3]) > 25
        assert zmxjpx.decode_dds(file, level=1).shape[:2] == (30, 41)
        assert zmxjpx.info(file)["texture"] == form
    with pytest.raises(zmxjpx.CodecError):
        zmxjpx.encode_dds(rgb, "png")


def test_packbits():
    rows = np.repeat(np.arange(40, dtype=np.uint8), 30).reshape(20, 60)
    packed = zmxjpx.encode_packbits(rows)
    assert len(packed) < rows.size / 5
    assert np.array_equal(zmxjpx.decode_packbits(packed, rows.shape), rows)
    assert zmxjpx.decode_packbits(zmxjpx.encode_packbits(b"aaaaaaab")) == b"aaaaaaab"
    # The example of TIFF 6.0, section 9.
    theirs = bytes.fromhex("FEAA0280002AFDAA0380002A22F7AA")
    ours = bytes.fromhex("AAAAAA80002AAAAAAAAA80002A22AAAAAAAAAAAAAAAAAAAA")
    assert zmxjpx.decode_packbits(theirs) == ours
    with pytest.warns(zmxjpx.DamageWarning):
        assert zmxjpx.decode_packbits(packed[:9], rows.shape).shape == rows.shape


def layouts(image):
    """The same picture in arrays of other layouts."""
    height, width = image.shape[:2]
    wide = np.zeros((height * 2, width + 7, *image.shape[2:]), image.dtype)
    wide[::2, 3:-4] = image
    yield wide[::2, 3:-4]
    yield np.ascontiguousarray(image[::-1])[::-1]
    yield np.ascontiguousarray(image[:, ::-1])[:, ::-1]
    yield np.asfortranarray(image)
    yield image.astype(image.dtype.newbyteorder())
    shifted = np.frombuffer(b"x" + image.tobytes(), np.uint8)[1:]
    yield shifted.view(image.dtype).reshape(image.shape)


@pytest.mark.parametrize("bits", [8, 16])
def test_layouts_of_arrays_do_not_matter(bits):
    image = picture(37, 29, 3, bits)
    wanted = zmxjpx.encode_jpeg2000(image)
    lossless = zmxjpx.encode_jpeg(image, lossless=1)
    for other in layouts(image):
        assert np.array_equal(other, image)
        assert zmxjpx.encode_jpeg2000(other) == wanted
        assert zmxjpx.encode_jpeg(other, lossless=1) == lossless


def test_any_object_of_bytes_is_a_file(rgb):
    file = zmxjpx.encode_jpeg2000(rgb)
    mapped = mmap.mmap(-1, len(file))
    mapped.write(file)
    for other in (bytearray(file), memoryview(file), np.frombuffer(file, np.uint8), mapped):
        assert np.array_equal(zmxjpx.decode_jpeg2000(other), rgb)


def test_pictures_go_into_an_array_that_is_given(rgb):
    file = zmxjpx.encode_jpeg2000(rgb)
    page = np.zeros((100, 200, 3), np.uint8)
    assert zmxjpx.decode_jpeg2000(file, out=page[20:81, 50:133]) is not None
    assert np.array_equal(page[20:81, 50:133], rgb) and not page[:20].any() and not page[:, :50].any()
    for wrong in (np.zeros((61, 82, 3), np.uint8), np.zeros((61, 83, 3), np.uint16), np.zeros((61, 83), np.uint8)):
        with pytest.raises(ValueError):
            zmxjpx.decode_jpeg2000(file, out=wrong)
    page.flags.writeable = False
    with pytest.raises(ValueError):
        zmxjpx.decode_jpeg2000(file, out=page[20:81, 50:133])


def test_damage_is_warned_of_or_raised(rgb):
    image = picture(256, 256)
    file = zmxjpx.encode_jpeg(image, 90)
    with pytest.warns(zmxjpx.DamageWarning) as caught:
        cut = zmxjpx.decode_jpeg(file[: len(file) // 2])
    assert cut.shape == image.shape and caught[0].message.trouble
    with pytest.raises(zmxjpx.DamageError) as raised:
        zmxjpx.decode_jpeg(file[: len(file) // 2], strict=True)
    assert np.array_equal(raised.value.picture, cut) and raised.value.trouble
    with pytest.warns(zmxjpx.DamageWarning):
        zmxjpx.decode_jpeg2000(zmxjpx.encode_jpeg2000(image)[:-5000])
    with pytest.raises(zmxjpx.CodecError):
        zmxjpx.decode_jpeg(b"no file")


@pytest.mark.parametrize("image", [np.zeros((4, 4), float), np.zeros((4, 4), bool), np.zeros((4, 4), np.int16)])
def test_other_types_are_refused(image):
    with pytest.raises(TypeError):
        zmxjpx.encode_jpeg2000(image)


def test_other_shapes_and_samples_are_refused():
    for shape in ((4,), (4, 0), (2, 2, 2, 2)):
        with pytest.raises(ValueError):
            zmxjpx.encode_jpeg2000(np.zeros(shape, np.uint8))
    with pytest.raises(zmxjpx.CodecError, match="row 2 has samples above 4095"):
        zmxjpx.encode_jpeg(np.array([[1], [2], [5000]], np.uint16))
    with pytest.raises(zmxjpx.CodecError):
        zmxjpx.decode_jpeg(zmxjpx.encode_jpeg(picture(40, 40)), max_pixels=1000)


def test_other_threads_run_while_a_codec_works():
    image = picture(1500, 1500)
    done = threading.Event()
    worker = threading.Thread(target=lambda: (zmxjpx.encode_jpeg2000(image), done.set()))
    began = time.monotonic()
    worker.start()
    turns = 0
    while not done.is_set():
        turns += 1
        time.sleep(0.002)
    worker.join()
    # With the lock held there would be a turn or two.
    assert turns > 10 and time.monotonic() - began > 0.05
