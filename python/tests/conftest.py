# SPDX-License-Identifier: BSD-2-Clause
"""Pictures that tests share. Seeds are fixed."""
from __future__ import annotations

import numpy as np
import pytest
from numpy.typing import NDArray


def picture(height: int, width: int, channels: int = 3, bits: int = 8, seed: int = 1) -> NDArray:
    """Smooth waves with some noise: what a photograph is to a codec."""
    random = np.random.default_rng(seed)
    y, x = np.mgrid[0:height, 0:width].astype(float)
    largest = (1 << bits) - 1
    planes = [0.5 + 0.35 * np.sin(x / (9 + 4 * c)) * np.cos(y / (13 + 3 * c)) + random.normal(0, 0.01, (height, width))
              for c in range(channels)]
    samples = np.clip(np.stack(planes, axis=2) * largest, 0, largest).astype(np.uint8 if bits <= 8 else np.uint16)
    return samples[:, :, 0].copy() if channels == 1 else samples


def psnr(a: NDArray, b: NDArray, largest: int = 255) -> float:
    error = np.mean((a.astype(float) - b.astype(float)) ** 2)
    return 200.0 if error == 0 else float(10 * np.log10(largest**2 / error))


@pytest.fixture
def grey() -> NDArray:
    return picture(61, 83, 1)


@pytest.fixture
def rgb() -> NDArray:
    return picture(61, 83, 3)
