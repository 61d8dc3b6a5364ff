// pjwords.h - eight bytes of a JPEG stream at a time.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

#include <cstdint>

namespace zmx {

// The compiler makes one load or store and a byte swap of these.
inline std::uint64_t loadBigEndian(const Zmx8u* p) {
    return std::uint64_t(p[0]) << 56 | std::uint64_t(p[1]) << 48 | std::uint64_t(p[2]) << 40 |
           std::uint64_t(p[3]) << 32 | std::uint64_t(p[4]) << 24 | std::uint64_t(p[5]) << 16 |
           std::uint64_t(p[6]) << 8 | std::uint64_t(p[7]);
}
inline Zmx32u loadBigEndian32(const Zmx8u* p) {
    return Zmx32u(p[0]) << 24 | Zmx32u(p[1]) << 16 | Zmx32u(p[2]) << 8 | Zmx32u(p[3]);
}
inline void storeBigEndian(Zmx8u* p, std::uint64_t word) {
    p[0] = Zmx8u(word >> 56), p[1] = Zmx8u(word >> 48), p[2] = Zmx8u(word >> 40), p[3] = Zmx8u(word >> 32);
    p[4] = Zmx8u(word >> 24), p[5] = Zmx8u(word >> 16), p[6] = Zmx8u(word >> 8), p[7] = Zmx8u(word);
}

// Whether a byte of the word is 0xFF: a zero byte of its complement.
inline bool hasFF(std::uint64_t word) { return ((~word - 0x0101010101010101u) & word & 0x8080808080808080u) != 0; }
inline bool hasFF(Zmx32u word) { return ((~word - 0x01010101u) & word & 0x80808080u) != 0; }

} // namespace zmx
