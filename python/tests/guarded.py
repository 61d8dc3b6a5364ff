# SPDX-License-Identifier: BSD-2-Clause
"""Arrays flush against pages that nothing may touch: a call that reaches beyond one ends the process."""
from __future__ import annotations

import ctypes
import mmap

import numpy as np

PAGE = mmap.PAGESIZE
CANARY = 0xA5


class Slot:
    """Some pages between two that are closed."""

    def __init__(self, pages: int) -> None:
        self._map = mmap.mmap(-1, (pages + 2) * PAGE)
        self.size = pages * PAGE
        first = ctypes.addressof(ctypes.c_char.from_buffer(self._map))
        libc = ctypes.CDLL(None, use_errno=True)
        for closed in (first, first + PAGE + self.size):
            if libc.mprotect(ctypes.c_void_p(closed), ctypes.c_size_t(PAGE), 0) != 0:
                raise OSError(ctypes.get_errno(), "mprotect")
        self.bytes = np.frombuffer((ctypes.c_uint8 * self.size).from_address(first + PAGE), np.uint8)

    def array(self, shape: tuple[int, ...], strides: tuple[int, ...], dtype: np.dtype, at_end: bool, shift: int
              ) -> np.ndarray:
        """An array of these strides, in bytes, all of which lies in the slot; `shift` bytes off the edge."""
        low = sum(min(0, (n - 1) * s) for n, s in zip(shape, strides) if n)
        high = sum(max(0, (n - 1) * s) for n, s in zip(shape, strides) if n) + dtype.itemsize
        extent = 0 if 0 in shape else high - low
        if extent + shift > self.size:
            raise ValueError("larger than the slot")
        start = self.size - extent - shift if at_end else shift
        self.used = slice(start, start + extent)
        self.bytes[:] = CANARY
        self.bytes[self.used] = np.random.default_rng(extent).integers(0, 256, extent, np.uint8)
        return np.ndarray(shape, dtype, self.bytes, start - low if extent else 0, strides)

    def intact(self) -> bool:
        """Whether nothing has been written beside the array."""
        return bool((self.bytes[: self.used.start] == CANARY).all() and (self.bytes[self.used.stop:] == CANARY).all())
