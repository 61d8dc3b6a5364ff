// pj2wt97.h - the irreversible 9/7 filter (ISO/IEC 15444-1, F.3.8.1 and F.4.8.1): its constants in every number system.
//
// Forward, A to D over odd and even positions in turn:
//   A odd + alpha (even + even), B even + beta (A + A), G A + gamma (B + B), D B + delta (G + G), low = D / K, high = K
//   G
// and the inverse takes the same steps back. No constant is recomputed from another: each is taken as it stands.
#pragma once

#include "zmxj.h"

#include <bit>

namespace zmx {

// 32-bit floats.
struct Wt97Float {
    static constexpr Zmx32f alpha = -1.5861343f, beta = -0.052980117f, gamma = 0.8829111f, delta = 0.44350687f;
    static constexpr Zmx32f k = 1.2301741f, oneOverK = 0.8128931f, deltaOverK = 0.36052364f;
};
static_assert(std::bit_cast<Zmx32u>(Wt97Float::alpha) == 0xBFCB0673 &&
              std::bit_cast<Zmx32u>(Wt97Float::beta) == 0xBD5901AE);
static_assert(std::bit_cast<Zmx32u>(Wt97Float::gamma) == 0x3F620676 &&
              std::bit_cast<Zmx32u>(Wt97Float::delta) == 0x3EE31355);
static_assert(std::bit_cast<Zmx32u>(Wt97Float::k) == 0x3F9D7658 &&
              std::bit_cast<Zmx32u>(Wt97Float::oneOverK) == 0x3F5019C3);
static_assert(std::bit_cast<Zmx32u>(Wt97Float::deltaOverK) == 0x3EB8968E);

// 14 fractional bits.
struct Wt97Q14 {
    static constexpr Zmx32s alpha = -25987, beta = -868, gamma = 14466, delta = 7266, k = 20155, oneOverK = 13318;
};

// 16 fractional bits.
struct Wt97Q16 {
    static constexpr Zmx32s alpha = -103949, beta = -3472, gamma = 57862, delta = 29066, k = 80621, oneOverK = 53274,
                            deltaOverK = 23627;
};

} // namespace zmx
