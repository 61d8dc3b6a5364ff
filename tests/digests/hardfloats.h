// hardfloats.h - floats whose weighted sums lie so near a rounding boundary that 53 significant bits on the way do not
// decide them, and 64 do.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/digests/digests.h"

// The bits of three floats a, b and c. With exact products the sum wa a + wb b + wc c is the middle between two
// neighbouring floats, plus or minus something below the 53rd significant bit of the sum and above the 64th.
struct HardTriple {
    std::uint32_t a, b, c;
};

// The weights as the bits of floats that are not zero.
HardTriple hardTriple(Random& random, std::uint32_t wa, std::uint32_t wb, std::uint32_t wc);
