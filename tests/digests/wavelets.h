// wavelets.h - the weights of the irreversible filter's float form, for inputs at rounding boundaries.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/digests/hardfloats.h"

// Bits of the constants as the header's description of the filter has them, and of the filter's taps.
inline constexpr std::uint32_t kAlpha = 0xBFCB0673, kBeta = 0xBD5901AE, kGamma = 0x3F620676, kDelta = 0x3EE31355;
inline constexpr std::uint32_t kScale = 0x3F9D7658, kOneOverScale = 0x3F5019C3, kDeltaOverScale = 0x3EB8968E;
inline constexpr std::uint32_t kOne = 0x3F800000, kSign = 0x80000000;
inline constexpr std::uint32_t kTap0 = 0x3F1A5ADE, kTap1 = 0x3E88A26A, kTap2 = 0xBDA03385;
