# SPDX-License-Identifier: BSD-2-Clause
"""Codecs for numcodecs and Zarr: each chunk of an array is a picture.

Chunks are of uint8 or uint16 and of shape (height, width) or (height, width, channels) with up to 4 channels, each
perhaps behind sides of 1: (1, 512, 512) is a picture of 512 x 512. All else is a ValueError that says so. A damaged
chunk is a DamageError when it is read, never a picture with holes.

They are registered when this module is imported, and by an entry point, so that Zarr finds them by itself.
"""
from __future__ import annotations

from typing import Any, Optional

import numpy as np
from numcodecs.abc import Codec
from numcodecs.compat import ensure_contiguous_ndarray, ndarray_copy
from numcodecs.registry import register_codec
from numpy.typing import NDArray

from . import codecs

__all__ = ["Jpeg", "Jpeg2000", "LosslessJpeg"]


class _Pictures(Codec):
    """What the three share: chunks to pictures and back."""

    _channels: tuple[int, ...] = (1, 2, 3, 4)

    def _picture(self, buf: Any) -> NDArray[Any]:
        """A chunk as a picture; a ValueError where it is none."""
        chunk = np.asarray(buf)
        name = type(self).__name__
        if chunk.dtype.kind != "u" or chunk.dtype.itemsize > 2:
            raise ValueError(f"{name}: chunks are of uint8 or uint16, not {chunk.dtype}")
        if not chunk.flags.c_contiguous:
            raise ValueError(f"{name}: chunks are in C order; make the array with order='C'")
        shape = list(chunk.shape)
        while len(shape) > 2 and shape[0] == 1 and not (len(shape) == 3 and shape[2] in self._channels):
            del shape[0]
        if len(shape) not in (2, 3) or 0 in shape or (len(shape) == 3 and shape[2] not in self._channels):
            raise ValueError(
                f"{name}: a chunk is (height, width) or (height, width, channels) with {self._channels} channels, each "
                f"perhaps behind sides of 1, not {chunk.shape}; give the array such chunks")
        return chunk.reshape(shape)

    def _unpicture(self, picture: NDArray[Any], out: Any) -> Any:
        return picture if out is None else ndarray_copy(picture.reshape(-1), out)

    @staticmethod
    def _target(out: Any, shape: tuple[int, ...], bits: int) -> Optional[NDArray[Any]]:
        """`out` as the array of such a picture, to decode into it; None where it is of another kind."""
        wanted = np.dtype(np.uint8 if bits <= 8 else np.uint16)
        if not isinstance(out, np.ndarray) or out.dtype != wanted or not out.flags.c_contiguous:
            return None
        return out.reshape(shape) if out.size == int(np.prod(shape)) and out.flags.writeable else None


class Jpeg2000(_Pictures):
    """JPEG2000 codestreams (ISO/IEC 15444-1): reversible, or to a rate in bits a pixel, or to a PSNR in dB.

    reversible: lossless; None: unless rate or psnr is given. bits: the depth of the samples; None: that of the array.
    levels: of the wavelet. threads: for a chunk; one by default, as chunks are shared out already. The bytes do not
    depend on it, and it is not stored.
    """

    codec_id = "zmxjpx_jpeg2000"

    def __init__(self, reversible: Optional[bool] = None, rate: Optional[float] = None, psnr: Optional[float] = None,
                 levels: int = 5, bits: Optional[int] = None, threads: int = 1) -> None:
        if rate is not None and psnr is not None:
            raise ValueError("Jpeg2000: rate or psnr")
        self.reversible = (rate is None and psnr is None) if reversible is None else reversible
        self.rate, self.psnr, self.levels, self.bits = rate, psnr, levels, bits
        self._threads = threads

    def encode(self, buf: Any) -> bytes:
        picture = self._picture(buf)
        # Channels have no meaning here but for red, green and blue, which go together.
        other = picture.ndim == 3 and picture.shape[2] != 3
        return codecs.encode_jpeg2000(
            picture, reversible=self.reversible, rate=self.rate, psnr=self.psnr, bits=self.bits, levels=self.levels,
            colour="other" if other else None, colour_transform=not other, jp2=False, threads=self._threads)

    def decode(self, buf: Any, out: Any = None) -> Any:
        data = ensure_contiguous_ndarray(buf)
        target = None
        if out is not None:
            told = codecs.info(data)
            shape = (told["height"], told["width"], *([told["channels"]] if told["channels"] > 1 else []))
            target = self._target(out, shape, told["bits"])
        picture = codecs.decode_jpeg2000(data, strict=True, threads=self._threads, out=target)
        return out if target is not None else self._unpicture(picture, out)


class Jpeg(_Pictures):
    """JPEG files (ITU-T T.81) of uint8 and 1 or 3 channels, lossy; quality is 1 to 100."""

    codec_id = "zmxjpx_jpeg"
    _channels = (1, 3)

    def __init__(self, quality: int = 90, sampling: str = "444") -> None:
        self.quality, self.sampling = quality, sampling

    def encode(self, buf: Any) -> bytes:
        picture = self._picture(buf)
        if picture.dtype != np.uint8:
            raise ValueError(f"Jpeg: chunks are of uint8, not {picture.dtype}; LosslessJpeg and Jpeg2000 take uint16")
        return codecs.encode_jpeg(picture, self.quality, sampling=self.sampling, optimize=True)

    def decode(self, buf: Any, out: Any = None) -> Any:
        return self._unpicture(codecs.decode_jpeg(ensure_contiguous_ndarray(buf), strict=True), out)


class LosslessJpeg(_Pictures):
    """Lossless JPEG files (ITU-T T.81, Annex H) of 8 or 16 bits; predictor is 1 to 7 (Table H.1)."""

    codec_id = "zmxjpx_lossless_jpeg"

    def __init__(self, predictor: int = 1) -> None:
        if predictor not in range(1, 8):
            raise ValueError(f"LosslessJpeg: predictor is 1 to 7, not {predictor}")
        self.predictor = predictor

    def encode(self, buf: Any) -> bytes:
        picture = self._picture(buf)
        # Four channels of a JPEG file are inks: only as such they come back as they were.
        colour = "cmyk" if picture.shape[2:] == (4,) else "other"
        return codecs.encode_jpeg(picture, lossless=self.predictor, colour=colour, rgb=picture.shape[2:] == (3,))

    def decode(self, buf: Any, out: Any = None) -> Any:
        return self._unpicture(codecs.decode_jpeg(ensure_contiguous_ndarray(buf), strict=True), out)


for _codec in (Jpeg2000, Jpeg, LosslessJpeg):
    register_codec(_codec)
