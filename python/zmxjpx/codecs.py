# SPDX-License-Identifier: BSD-2-Clause
"""Whole codecs on arrays.

An image is an array of uint8 or uint16 of shape (height, width) or (height, width, channels): 1 channel is grey, 2 are
grey and alpha, 3 RGB, 4 RGB and alpha, or CMYK with `colour="cmyk"`, in which 0 is no ink. Encoders read it where it
lies if the samples of a row lie side by side, whatever the distance of the rows (slices of rows and columns, flipped
rows); else they work on a copy. Decoders write into the array that they return, or into `out`. A file is any object of
bytes; it is read where it lies. Other threads of Python run while a codec works.

What a file does not hold, or an option that no codec knows, is a CodecError, which is a ValueError.
"""
from __future__ import annotations

from collections.abc import Sequence
from typing import Any, Optional, Union

import numpy as np
from numpy.typing import ArrayLike, NDArray

from . import _codecs
from .errors import CodecError, damaged

Buffer = Any  # bytes, bytearray, memoryview, mmap, an array of bytes: whatever has the buffer protocol
Layers = Union[float, Sequence[float], None]

MAX_PIXELS = 1 << 30
"""Pictures of more pixels are refused, unless `max_pixels` says otherwise."""

_WIDTHS = {1: 8, 2: 16}


def _pixels(image: ArrayLike) -> NDArray[Any]:
    """The image as native uint8 or uint16, its samples side by side in each row: itself where that is so already."""
    pixels = np.asarray(image)
    if pixels.dtype == np.bool_:
        raise TypeError("samples are uint8 or uint16, not bool; multiply by 255")
    if pixels.dtype.kind != "u" or pixels.dtype.itemsize not in _WIDTHS:
        raise TypeError(f"samples are uint8 or uint16, not {pixels.dtype}")
    if not pixels.dtype.isnative:
        pixels = pixels.astype(pixels.dtype.newbyteorder("="))
    if pixels.ndim not in (2, 3) or 0 in pixels.shape:
        raise ValueError(f"an image is of shape (height, width) or (height, width, channels), not {pixels.shape}")
    item, channels = pixels.itemsize, pixels.shape[2] if pixels.ndim == 3 else 1
    packed = (pixels.shape[1] == 1 or pixels.strides[1] == item * channels) and (
        channels == 1 or pixels.strides[2] == item)
    return pixels if packed and pixels.flags.aligned else pixels.copy("C")


def _bits(pixels: NDArray[Any], bits: Optional[int], usual: Optional[int] = None) -> int:
    """The depth of the samples: as given, or `usual` of 16-bit arrays, or that of the array."""
    width = _WIDTHS[pixels.itemsize]
    if bits is None:
        return usual if usual is not None and width == 16 else width
    low = 1 if width == 8 else 9
    if not low <= bits <= width:
        raise ValueError(f"an array of {pixels.dtype} has samples of {low} to {width} bits, not {bits}")
    return bits


def _colour(colour: Optional[str]) -> str:
    if colour not in (None, "cmyk", "other"):
        raise ValueError(f"colour is None, 'cmyk' or 'other', not {colour!r}")
    return colour or ""


def _choose(name: str, value: Any, among: Sequence[Any]) -> Any:
    if value not in among:
        raise ValueError(f"{name} is one of {', '.join(map(repr, among))}, not {value!r}")
    return value


def encode_jpeg(
    image: ArrayLike, quality: int = 75, *, sampling: Optional[str] = None, lossless: int = 0, point_transform: int = 0,
    bits: Optional[int] = None, colour: Optional[str] = None, progressive: bool = False, optimize: bool = False,
    restart: int = 0, fast: bool = False, rgb: bool = False, ycck: bool = False,
) -> bytes:
    """Encodes an image as a JPEG file (ITU-T T.81).

    quality: 1 to 100. sampling: of the chroma, "444", "422" or "420"; None: "420".
    lossless: a predictor, 1 to 7, for the lossless process (Annex H), of 2 to 16 bits and 1 to 4 channels; 0: a DCT
    process, of 8 or 12 bits. point_transform: low bits that lossless files leave out.
    bits: the depth of the samples; None: 8 of uint8 arrays; of uint16 arrays 12, and 16 where the file is lossless.
    colour: "cmyk" for 4 channels of ink. JPEG files hold no alpha. rgb: stored as RGB, not YCbCr. ycck: CMYK as YCCK.
    progressive: Annex G. optimize: Huffman tables made for the image. restart: MCUs in a restart interval; 0: none.
    fast: integer transform and colours without rounding, up to 2 dB worse.

    Raises CodecError where the file cannot hold such an image, and where a sample exceeds its bits.
    """
    pixels = _pixels(image)
    if not 1 <= quality <= 100:
        raise ValueError(f"quality is 1 to 100, not {quality}")
    _choose("lossless", lossless, range(8))
    _choose("sampling", sampling, (None, "444", "422", "420"))
    if not 0 <= restart <= 65535 or not 0 <= point_transform <= 15:
        raise ValueError("restart is 0 to 65535, point_transform 0 to 15")
    options = {"quality": quality, "sampling": sampling or "420", "lossless": lossless, "optimize": optimize,
               "point_transform": point_transform, "progressive": progressive, "restart": restart, "fast": fast,
               "rgb": rgb, "ycck": ycck}
    return _codecs.encode_jpeg(pixels, _bits(pixels, bits, None if lossless else 12), _colour(colour), options)


def decode_jpeg(
    data: Buffer, *, scale: int = 1, smooth: bool = True, fast: bool = False, strict: bool = False,
    max_pixels: int = MAX_PIXELS, out: Optional[NDArray[Any]] = None,
) -> NDArray[Any]:
    """Decodes a JPEG file, sequential, progressive or lossless: uint8, or uint16 where samples have more than 8 bits.

    scale: 1, 2, 4 or 8: at 1/scale of the size, rounded up. smooth: chroma of half rate by the triangle filter, else
    repeated. fast: repeated, and colours without rounding. CMYK comes with 0 as no ink.
    strict: what is wrong with the file is a DamageError, else a DamageWarning, and places that cannot be decoded are
    mid-grey.
    out: an array of the picture's shape and type that receives it.

    Raises CodecError where there is nothing to decode.
    """
    _choose("scale", scale, (1, 2, 4, 8))
    picture, trouble = _codecs.decode_jpeg(data, scale, smooth, fast, max_pixels, out)
    damaged(trouble, strict, picture)
    return picture


def transcode_jpeg(
    data: Buffer, *, progressive: bool = False, restart: int = -1, rotate: int = 0, flip: Optional[str] = None,
    orient: bool = False, trim: bool = False, crop: Optional[tuple[int, int, int, int]] = None, grey: bool = False,
    strip: bool = False, strict: bool = False, max_pixels: int = MAX_PIXELS,
) -> bytes:
    """Codes the coefficients of a JPEG file anew, with Huffman tables made for them: no coefficient changes.

    progressive: else sequential. restart: MCUs in a restart interval; -1: as it was. rotate: to the right by 0, 90,
    180 or 270 degrees, then flip: "horizontal" or "vertical". orient: as its EXIF says, instead. trim: cuts off parts
    of units that cannot be turned, else they are a CodecError. crop: (x, y, width, height) of the turned picture, from
    the unit on in which it begins. grey: luma alone. strip: without metadata. strict: as for decode_jpeg.
    """
    _choose("rotate", rotate, (0, 90, 180, 270))
    _choose("flip", flip, (None, "horizontal", "vertical"))
    if orient and (rotate or flip):
        raise ValueError("orient, or rotate and flip")
    options = {"progressive": progressive, "restart": restart, "rotate": rotate, "flip": flip or "", "orient": orient,
               "trim": trim, "crop": crop, "grey": grey, "strip": strip, "max_pixels": max_pixels}
    file, trouble = _codecs.transcode_jpeg(data, options)
    damaged(trouble, strict, file)
    return file


def _layers(value: Layers) -> list[float]:
    return [] if value is None else [float(v) for v in (value if isinstance(value, Sequence) else [value])]


def encode_jpeg2000(
    image: ArrayLike, *, reversible: Optional[bool] = None, rate: Layers = None, psnr: Layers = None,
    ratio: Layers = None, bits: Optional[int] = None, colour: Optional[str] = None, levels: int = 5,
    block: tuple[int, int] = (64, 64), tile: tuple[int, int] = (0, 0), progression: str = "LRCP",
    colour_transform: bool = True, jp2: bool = True, threads: int = 0,
) -> bytes:
    """Encodes an image as a JPEG2000 file (ISO/IEC 15444-1).

    reversible: 5/3 wavelet and RCT, lossless unless layers cut it; else 9/7 and ICT; None: reversible unless rate,
    psnr or ratio is given. Of these one at most: rate, bits a pixel; psnr, dB; ratio, how many times smaller than the
    samples. A number for each quality layer, each better than the one before.
    bits: the depth of the samples, 1 to 16; None: that of the array. colour: "cmyk" for 4 channels of ink, "other" for
    channels that mean something else.
    levels: of the wavelet, 0 to 32. block: width and height of a code block. tile: width and height; (0, 0): one tile.
    progression: "LRCP", "RLCP", "RPCL", "PCRL" or "CPRL" (Table A.16). colour_transform: of the first three channels.
    jp2: boxes around the codestream (Annex I). threads: 0: one a processor; the bytes do not depend on it.
    """
    pixels = _pixels(image)
    targets = [_layers(value) for value in (rate, psnr, ratio)]
    if sum(map(bool, targets)) > 1:
        raise ValueError("one of rate, psnr and ratio")
    if min(*block, *tile) < 0:
        raise ValueError("sizes of blocks and tiles are not negative")
    options = {"reversible": not any(targets) if reversible is None else reversible, "levels": levels, "block": block,
               "tile": tile, "progression": progression, "colour_transform": colour_transform, "rates": targets[0],
               "psnrs": targets[1], "ratios": targets[2], "jp2": jp2, "threads": threads}
    return _codecs.encode_jpeg2000(pixels, _bits(pixels, bits), _colour(colour), options)


def decode_jpeg2000(
    data: Buffer, *, window: Optional[tuple[int, int, int, int]] = None, reduce: int = 0, layers: int = 0,
    component: Optional[int] = None, strict: bool = False, max_pixels: int = MAX_PIXELS, threads: int = 0,
    out: Optional[NDArray[Any]] = None,
) -> NDArray[Any]:
    """Decodes a JPEG2000 file or codestream: uint8, or uint16 where samples have more than 8 bits.

    window: (x, y, width, height) in pixels of the full size; what it does not touch is not decoded.
    reduce: how many of the highest resolutions to leave out: each halves both sides, rounded up.
    layers: how many quality layers to decode; 0: all. component: one component alone, as it is in the codestream;
    None: the first four channels side by side. Signed samples are moved up.
    strict, max_pixels and out: as for decode_jpeg. threads: 0: one a processor.
    """
    if reduce < 0 or layers < 0 or (component is not None and component < 0):
        raise ValueError("reduce, layers and component are not negative")
    picture, trouble = _codecs.decode_jpeg2000(
        data, window, reduce, layers, -1 if component is None else component, max_pixels, threads, out)
    damaged(trouble, strict, picture)
    return picture


def encode_dds(image: ArrayLike, format: str = "dxt1", *, mips: bool = False) -> bytes:
    """Encodes an image of uint8, grey, RGB or RGBA, as a DDS texture file.

    format: "dxt1", "dxt3", "dxt5" or "ycocg-dxt5". mips: with all levels down to 1 x 1.
    """
    file, _ = _codecs.encode_dds(_pixels(image), format, mips)
    return file


def decode_dds(
    data: Buffer, *, level: int = 0, layer: int = 0, max_pixels: int = MAX_PIXELS, out: Optional[NDArray[Any]] = None,
) -> NDArray[Any]:
    """Decodes a picture of a DDS texture file (DXT1, DXT3, DXT5, BC7): uint8, with alpha where the format has any.

    level: of the chain, 0 is the largest. layer: face of a cube map or element of an array.
    """
    return _codecs.decode_dds(data, layer, level, max_pixels, out)


def encode_packbits(rows: ArrayLike) -> bytes:
    """Packs bytes by PackBits (TIFF 6.0, section 9): an array row by row, bytes-like objects as one row.

    Samples of several bytes are packed in the order of this machine.
    """
    if isinstance(rows, (bytes, bytearray, memoryview)):
        view = memoryview(rows).cast("B")
        return _codecs.encode_packbits(view, len(view))
    array = np.ascontiguousarray(rows)
    row_bytes = array[0].nbytes if array.ndim > 1 and array.size else array.nbytes
    return _codecs.encode_packbits(array.reshape(-1).view(np.uint8), row_bytes) if array.size else b""


def decode_packbits(
    data: Buffer, shape: Optional[Sequence[int]] = None, dtype: Any = np.uint8, *, size: Optional[int] = None,
    strict: bool = False,
) -> Union[bytes, NDArray[Any]]:
    """Unpacks PackBits: bytes, or an array of `shape` and `dtype`, whose rows were packed one by one.

    size: how many bytes come out, where no shape says it; None: as many as the packets hold.
    strict: packets that end early are a DamageError, else a DamageWarning, and what is missing is 0.
    """
    if shape is None:
        unpacked, trouble = _codecs.decode_packbits(data, -1 if size is None else size, 0)
        result: Any = unpacked.tobytes()
    else:
        kind, sides = np.dtype(dtype), tuple(int(side) for side in shape)
        if kind.hasobject or min(sides, default=1) < 0:
            raise ValueError("a shape of sides that are not negative, and a type of plain numbers")
        total = kind.itemsize * int(np.prod(sides, dtype=object))
        row_bytes = total // sides[0] if len(sides) > 1 and sides[0] else total
        unpacked, trouble = _codecs.decode_packbits(data, total, row_bytes)
        result = unpacked.view(kind).reshape(sides)
    damaged(trouble, strict, result)
    return result


def info(data: Buffer) -> dict[str, Any]:
    """Tells what a JPEG, JPEG2000 or DDS file holds, without decoding it.

    Each has format ("jpeg", "jp2", "j2k", "dds"), width and height in pixels, channels, bits, and trouble: what was
    wrong, a line each. JPEG: mode, colour, sampling, restart; JPEG2000: components, tile, tiles, levels, reversible,
    layers, progression; both: text, a description for people. DDS: texture, levels, layers, cube.
    """
    head = bytes(memoryview(data).cast("B")[:12])
    if head[:2] == b"\xff\xd8":
        return _codecs.info_jpeg(data)
    if head[:4] == b"\xff\x4f\xff\x51" or head[4:12] == b"jP  \r\n\x87\n":
        return _codecs.info_jpeg2000(data)
    if head[:4] == b"DDS ":
        return _codecs.info_dds(data)
    raise CodecError("neither a JPEG nor a JPEG2000 nor a DDS file")


