#!/usr/bin/env python3
# SPDX-License-Identifier: BSD-2-Clause
"""from_python.py: the program of the guide "From Python". It works in the folder in which it is called."""
import io
import warnings
from pathlib import Path

import numpy as np

import zmxjpx

# A picture to begin with: height x width x channels, of 8 bits.
y, x = np.mgrid[0:480, 0:640]
image = np.stack([x * 255 // 639, y * 255 // 479, (x // 8 + y // 8) % 2 * 200], axis=2).astype(np.uint8)

# [codecs]
file = zmxjpx.encode_jpeg(image, 90, sampling="444", progressive=True)
back = zmxjpx.decode_jpeg(file)

exact = zmxjpx.encode_jpeg2000(image)  # lossless, as long as nothing else is asked for
assert np.array_equal(zmxjpx.decode_jpeg2000(exact), image)

small = zmxjpx.encode_jpeg2000(image, rate=[0.5, 2])  # two quality layers, of 0.5 and 2 bits a pixel
Path("small.jp2").write_bytes(small)
# [codecs]
assert back.shape == image.shape and np.abs(back.astype(int) - image).mean() < 6

# [parts]
part = zmxjpx.decode_jpeg2000(exact, window=(200, 100, 64, 48))  # x, y, width, height
thumbnail = zmxjpx.decode_jpeg2000(exact, reduce=3)  # an eighth of each side
rough = zmxjpx.decode_jpeg2000(small, layers=1)
half = zmxjpx.decode_jpeg(file, scale=2)
# [parts]
assert np.array_equal(part, image[100:148, 200:264]) and thumbnail.shape == (60, 80, 3)
assert rough.shape == image.shape and half.shape == (240, 320, 3)

# [depth]
scan = (image[:, :, 0].astype(np.uint16) << 8) | image[:, :, 1]  # 16 bits
lossless = zmxjpx.encode_jpeg(scan, lossless=4)
assert np.array_equal(zmxjpx.decode_jpeg(lossless), scan)

medical = zmxjpx.encode_jpeg(scan >> 4, 95)  # 12 bits
ink = zmxjpx.encode_jpeg(np.dstack([image, image[:, :, 0]]), colour="cmyk")
# [depth]
assert zmxjpx.info(medical)["bits"] == 12 and zmxjpx.info(ink)["channels"] == 4

# [layout]
flipped = zmxjpx.encode_jpeg2000(image[::-1])  # read where it lies, from the last row up
page = np.zeros((1000, 1000, 3), np.uint8)
zmxjpx.decode_jpeg2000(exact, out=page[100:580, 50:690])  # decoded to where it is to stay
# [layout]
assert np.array_equal(zmxjpx.decode_jpeg2000(flipped), image[::-1]) and np.array_equal(page[100:580, 50:690], image)

# [damage]
with warnings.catch_warnings(record=True) as caught:
    warnings.simplefilter("always")
    partly = zmxjpx.decode_jpeg(file[: len(file) // 2])
print("decoded in part:", caught[0].message.trouble[0])

try:
    zmxjpx.decode_jpeg(file[: len(file) // 2], strict=True)
except zmxjpx.DamageError as error:
    print("refused:", error)
# [damage]
assert partly.shape == image.shape

# [transcode]
upright = zmxjpx.transcode_jpeg(file, rotate=90)  # no coefficient changes
print(zmxjpx.info(upright)["height"], "rows,", zmxjpx.info(upright)["mode"])
# [transcode]
assert zmxjpx.info(upright)["height"] == 640

# [raw]
from zmxjpx import raw

table = np.full(64, 16, np.uint8)
raw.zmxiQuantFwdRawTableInit_JPEG_8u(table, 75)
forward, inverse = np.empty(64, np.uint16), np.empty(64, np.uint16)
raw.zmxiQuantFwdTableInit_JPEG_8u16u(table, forward)
raw.zmxiQuantInvTableInit_JPEG_8u16u(table, inverse)

block, samples = np.empty(64, np.int16), np.empty((8, 8), np.uint8)
raw.zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(image[40:48, 80:88, 0].copy(), block, forward)  # steps come from the strides
raw.zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R(block, samples, inverse)

planes = [np.empty((480, 640), np.uint8) for _ in range(3)]
raw.zmxiRGBToYCbCr_JPEG_8u_C3P3R(image, planes)
try:
    raw.zmxiRGBToYCbCr_JPEG_8u_C3P3R(image, planes, roiSize=(0, 1))
except zmxjpx.StatusError as error:
    print(error.status, error.name)
# [raw]
assert np.abs(samples.astype(int) - image[40:48, 80:88, 0]).max() < 12

# [states]
state = raw.zmxiEncodeInitAlloc_JPEG2K((64, 64))  # given back when nobody has it any more
words = np.abs(np.arange(4096, dtype=np.int32).reshape(64, 64) - 2000)
planes_used, passes, segments = raw.zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(words, state, 0, 31, 0, 0)
stream = np.empty(20000, np.uint8)
length, more = raw.zmxiEncodeStoreBits_JPEG2K_1u(stream, state)

decoder = raw.zmxiDecodeCBProgrInitAlloc_JPEG2K((64, 64))
result = np.empty((64, 64), np.int32)
raw.zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(result, decoder, 0, planes_used, 0)
raw.zmxiDecodeCBProgrSetPassCounter_JPEG2K(passes, decoder)
raw.zmxiDecodeCBProgrStep_JPEG2K(stream[:length], decoder)
# [states]
assert np.array_equal(result, words) and (segments, more) == (1, 0)

# [pillow]
from PIL import Image

import zmxjpx.pillow  # registers the formats

with Image.open(io.BytesIO(exact)) as picture:
    corner = picture.crop((0, 0, 100, 100))  # decodes no more than that
Image.fromarray(scan).save("scan.jpg", "ZMXJPEG", lossless=1)
print(Image.open("scan.jpg").mode)
# [pillow]
assert np.array_equal(np.asarray(corner), image[:100, :100])

# [zarr]
import zarr

from zmxjpx.numcodecs import Jpeg2000

stored = zarr.open("image.zarr", "w", shape=image.shape, chunks=(128, 128, 3), dtype=np.uint8,
                   compressor=Jpeg2000(reversible=True))
stored[:] = image
window = zarr.open("image.zarr", "r")[100:148, 200:264]  # decodes the chunks that it touches
# [zarr]
assert np.array_equal(window, part)
