# SPDX-License-Identifier: BSD-2-Clause
"""What the package raises and warns of."""
from __future__ import annotations

import warnings

from ._codecs import CodecError

__all__ = ["CodecError", "DamageError", "DamageWarning", "damaged"]


class DamageWarning(UserWarning):
    """A file that was decoded in part; `trouble` says what was wrong with it, a line each."""

    def __init__(self, trouble: list[str]) -> None:
        super().__init__("; ".join(trouble))
        self.trouble = trouble


class DamageError(CodecError):
    """The same with `strict=True`; `trouble` says what was wrong, `picture` is what could be decoded."""

    def __init__(self, trouble: list[str], picture: object = None) -> None:
        super().__init__("; ".join(trouble))
        self.trouble = trouble
        self.picture = picture


def damaged(trouble: list[str], strict: bool, result: object) -> None:
    """Warns of what was wrong with a file, or raises; nothing of a sound one."""
    if not trouble:
        return
    if strict:
        raise DamageError(trouble, result)
    warnings.warn(DamageWarning(trouble), stacklevel=3)
