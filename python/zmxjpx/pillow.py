# SPDX-License-Identifier: BSD-2-Clause
"""Pillow formats for what Pillow lacks: importing this module registers them.

Reading, by Image.open: JPEG files that are lossless or have other than 8 bits, and JPEG2000 files, of which crop() and
window() decode only the part that is asked for, as long as the rest is not loaded. All other files are left to Pillow.
Grey of more than 8 bits has mode "I;16"; as Pillow has no colours of more than 8 bits, those lose their low bits
(zmxjpx.decode_jpeg() and decode_jpeg2000() keep them). Damage is a zmxjpx.DamageWarning.

Writing, by save(file, format="ZMXJPEG"): lossless=1 to 7 and bits= for lossless and 12-bit files; and
format="ZMXJPEG2000": rate=, psnr= and so on. Options are those of zmxjpx.encode_jpeg() and encode_jpeg2000().
"""
from __future__ import annotations

from typing import IO, Any, Optional

import numpy as np
from numpy.typing import NDArray
from PIL import Image, ImageFile

from . import codecs
from .errors import CodecError

__all__ = ["JpegFile", "Jpeg2000File"]

_MODES = {1: "L", 2: "LA", 3: "RGB", 4: "RGBA"}


def _image(picture: NDArray[Any], bits: int, colour: Optional[str] = None) -> Image.Image:
    """An array as Pillow holds it."""
    if picture.dtype == np.uint16 and picture.ndim == 3:
        picture = (picture >> (bits - 8)).astype(np.uint8)
    if picture.dtype == np.uint16:
        return Image.frombytes("I;16", picture.shape[1::-1], picture.astype("<u2").tobytes())
    mode = "CMYK" if colour == "cmyk" else _MODES[picture.shape[2] if picture.ndim == 3 else 1]
    return Image.frombytes(mode, picture.shape[1::-1], np.ascontiguousarray(picture).tobytes())


class _File(ImageFile.ImageFile):
    """A file that is decoded as a whole, by load(), when somebody looks at its pixels."""

    def _begin(self) -> dict[str, Any]:
        """Reads the file, and what it says of itself; SyntaxError is how a plugin passes a file on."""
        self._data = self.fp.read()
        try:
            told = codecs.info(self._data)
        except CodecError as error:
            raise SyntaxError(str(error)) from error
        self._size = told["width"], told["height"]
        self.tile = []
        self.info["bits"] = told["bits"]
        self._told = told
        return told

    def _decoded(self) -> Image.Image:
        raise NotImplementedError

    def load(self) -> Any:
        if self._data is not None:
            self.im = self._decoded().im
            self._data = None
            if self.fp is not None and self._exclusive_fp:
                self.fp.close()
            self.fp = None
        return Image.Image.load(self)


class JpegFile(_File):
    """Lossless JPEG files, and those of other than 8 bits (ITU-T T.81)."""

    format = "ZMXJPEG"
    format_description = "JPEG, lossless or of 12 bits (ITU-T T.81)"

    def _open(self) -> None:
        told = self._begin()
        if told["mode"] != "lossless" and told["bits"] == 8:
            raise SyntaxError("Pillow reads it")
        colours = "cmyk" if told["colour"] in ("cmyk", "ycck") else None
        wide = told["bits"] > 8 and told["channels"] == 1
        self.mode = "I;16" if wide else "CMYK" if colours else _MODES[told["channels"]]
        self._colours = colours

    def _decoded(self) -> Image.Image:
        return _image(codecs.decode_jpeg(self._data), self.info["bits"], self._colours)


class Jpeg2000File(_File):
    """JPEG2000 files and codestreams (ISO/IEC 15444-1)."""

    format = "ZMXJPEG2000"
    format_description = "JPEG2000 (ISO/IEC 15444-1)"

    def _open(self) -> None:
        # One pixel tells what the file alone does not: whether a palette stands between, and how deep it is.
        self._begin()
        try:
            pixel = codecs.decode_jpeg2000(self._data, window=(0, 0, 1, 1), threads=1)
        except CodecError as error:
            raise SyntaxError(str(error)) from error
        wide = pixel.dtype == np.uint16
        self.mode = "I;16" if wide and pixel.ndim == 2 else _MODES[pixel.shape[2] if pixel.ndim == 3 else 1]

    def _decoded(self) -> Image.Image:
        return _image(codecs.decode_jpeg2000(self._data), max(self.info["bits"], 9))

    def window(self, box: tuple[int, int, int, int], reduce: int = 0) -> Image.Image:
        """The part (left, top, right, bottom) of the full size, decoded alone, at 1 / 2**reduce of the size."""
        left, top, right, bottom = map(int, box)
        if self._data is None:
            raise ValueError("the file is loaded already; use crop()")
        picture = codecs.decode_jpeg2000(self._data, window=(left, top, right - left, bottom - top), reduce=reduce)
        return _image(picture, max(self.info["bits"], 9))

    def crop(self, box: Optional[tuple[int, int, int, int]] = None) -> Image.Image:
        """As Image.crop(); a part inside the picture is decoded alone while the file is not loaded."""
        inside = box is not None and 0 <= box[0] < box[2] <= self.width and 0 <= box[1] < box[3] <= self.height
        return self.window(box) if inside and self._data is not None else super().crop(box)


def _pixels(image: Image.Image) -> tuple[NDArray[Any], Optional[str]]:
    if image.mode not in ("L", "LA", "RGB", "RGBA", "CMYK", "I;16"):
        raise OSError(f"cannot write mode {image.mode}")
    return np.asarray(image), "cmyk" if image.mode == "CMYK" else None


def _save_jpeg(image: Image.Image, file: IO[bytes], name: str) -> None:
    pixels, colour = _pixels(image)
    options = {"lossless": 1, "colour": colour, **image.encoderinfo}
    if options["lossless"] == 0 and pixels.dtype == np.uint16:
        options.setdefault("bits", 12)
    file.write(codecs.encode_jpeg(pixels, **options))


def _save_jpeg2000(image: Image.Image, file: IO[bytes], name: str) -> None:
    pixels, colour = _pixels(image)
    file.write(codecs.encode_jpeg2000(pixels, colour=colour, **image.encoderinfo))


def _register() -> None:
    """Ahead of Pillow's own plugins, which take the same first bytes and fail later."""
    Image.preinit()
    Image.init()
    signatures = (b"\xff\x4f\xff\x51", b"\x00\x00\x00\x0cjP  \r\n\x87\n")
    for factory, accept in ((JpegFile, lambda prefix: prefix[:2] == b"\xff\xd8"),
                            (Jpeg2000File, lambda prefix: prefix.startswith(signatures))):
        Image.register_open(factory.format, factory, accept)
        Image.ID.remove(factory.format)
        Image.ID.insert(0, factory.format)
    Image.register_save("ZMXJPEG", _save_jpeg)
    Image.register_save("ZMXJPEG2000", _save_jpeg2000)


_register()
