# SPDX-License-Identifier: BSD-2-Clause
"""JPEG, JPEG2000, DDS and PackBits on NumPy arrays, by libzmxjpx: the same bytes on every machine.

`encode_*` takes an array and gives the bytes of a file, `decode_*` takes anything that holds bytes and gives an array.
`zmxjpx.raw` has all functions of the library as they are; `zmxjpx.pillow` and `zmxjpx.numcodecs` put the codecs into
Pillow, and into numcodecs and Zarr, once they are imported.
"""
from .codecs import (
    decode_dds,
    decode_jpeg,
    decode_jpeg2000,
    decode_packbits,
    encode_dds,
    encode_jpeg,
    encode_jpeg2000,
    encode_packbits,
    info,
    transcode_jpeg,
)
from .errors import CodecError, DamageError, DamageWarning
from .raw import StatusError, StatusWarning

__version__ = "6.1"
__all__ = [
    "CodecError", "DamageError", "DamageWarning", "StatusError", "StatusWarning",
    "decode_dds", "decode_jpeg", "decode_jpeg2000", "decode_packbits",
    "encode_dds", "encode_jpeg", "encode_jpeg2000", "encode_packbits", "info", "transcode_jpeg",
]
