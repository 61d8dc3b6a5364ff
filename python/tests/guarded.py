# SPDX-License-Identifier: BSD-2-Clause
"""Arrays flush against pages that nothing may touch: a call that reaches beyond one ends the process."""
from __future__ import annotations

import ctypes
import mmap

import numpy as np

PAGE = mmap.PAGESIZE
CANARY = 0xA5


_LIBC = ctypes.CDLL(None, use_errno=True)
_LIBC.mmap.restype = ctypes.c_void_p
_LIBC.mmap.argtypes = [ctypes.c_void_p, ctypes.c_size_t, ctypes.c_int, ctypes.c_int, ctypes.c_int, ctypes.c_long]
_LIBC.mprotect.argtypes = [ctypes.c_void_p, ctypes.c_size_t, ctypes.c_int]
_LIBC.munmap.argtypes = [ctypes.c_void_p, ctypes.c_size_t]


class Slot:
    """Some pages between two that are closed. Its arrays live no longer than it does."""

    def __init__(self, pages: int) -> None:
        self.size = pages * PAGE
        self._whole = (pages + 2) * PAGE
        self._base = _LIBC.mmap(None, self._whole, mmap.PROT_READ | mmap.PROT_WRITE,
                                mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS, -1, 0)
        if self._base in (None, ctypes.c_void_p(-1).value):
            raise MemoryError
        for closed in (self._base, self._base + PAGE + self.size):
            if _LIBC.mprotect(closed, PAGE, 0) != 0:
                raise OSError(ctypes.get_errno(), "mprotect")
        self.bytes = np.frombuffer((ctypes.c_uint8 * self.size).from_address(self._base + PAGE), np.uint8)

    def __del__(self) -> None:
        _LIBC.munmap(self._base, self._whole)

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
        return np.ndarray(shape, dtype, self.bytes, start - low if extent else 0, strides)

    def intact(self) -> bool:
        """Whether nothing has been written beside the array."""
        return bool((self.bytes[: self.used.start] == CANARY).all() and (self.bytes[self.used.stop:] == CANARY).all())
