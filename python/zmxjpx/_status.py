# SPDX-License-Identifier: BSD-2-Clause
"""The statuses of the library as exceptions and warnings."""
from __future__ import annotations

import warnings
from typing import Any

# As types.h names them.
NAMES = {
    6: "zmxStsDivByZero", 0: "zmxStsNoErr", -2: "zmxStsErr", -5: "zmxStsBadArgErr", -6: "zmxStsSizeErr",
    -7: "zmxStsRangeErr", -8: "zmxStsNullPtrErr", -9: "zmxStsMemAllocErr", -14: "zmxStsStepErr",
    -17: "zmxStsContextMatchErr", -62: "zmxStsOutOfBufErr", -63: "zmxStsDCTRangeErr", -64: "zmxStsHuffTableErr",
    -112: "zmxStsCBDamagedErr", -113: "zmxStsBadPassNumberErr", -124: "zmxStsUnderRunErr", -180: "zmxStsCBNotAttachedErr",
    -9999: "zmxStsNotSupportedModeErr",
}


class StatusError(Exception):
    """A status below 0. What the call has written up to there stays written.

    status: the number, such as -14; name: zmxStsStepErr; function: the one that answered; results: what it would have
    returned otherwise.
    """

    def __init__(self, status: int, function: str, results: Any = None) -> None:
        self.status = status
        self.name = NAMES.get(status, str(status))
        self.function = function
        self.results = results
        super().__init__(f"{function}: {self.name} ({status})")

    def __reduce__(self) -> tuple[Any, ...]:
        """Pickles it without its results, which may be blocks of memory."""
        return type(self), (self.status, self.function)


class StatusWarning(UserWarning):
    """A status above 0: the result is defined, and something was odd. status, name and function as for StatusError."""

    def __init__(self, status: int, function: str) -> None:
        self.status = status
        self.name = NAMES.get(status, str(status))
        self.function = function
        super().__init__(f"{function}: {self.name} ({status})")


def warn(status: int, function: str) -> None:
    """Called by the extension."""
    warnings.warn(StatusWarning(status, function), stacklevel=2)
