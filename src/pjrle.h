// pjrle.h - the bytes of one packet, 1 to 128 of them, moved for the PackBits coders.
//
// Most packets hold a few bytes, for which a call of the system's block routines costs more than the move itself, and
// what the compiler puts in the place of such a call (rep movs) costs more still. Neither function touches a byte
// outside its n: a packet that follows may not fit, and what lies behind then has to stay.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjrows.h"

#include <cstdint>
#include <type_traits>

namespace zmx {

// Covers n bytes by two spans of one fixed size, the second flush with the end; they overlap where n is less than both.
template <class Span> inline void bySpans(std::ptrdiff_t n, Span span) {
    const auto both = [&](auto size) {
        span(0, size);
        span(n - size, size);
    };
    // Halved first: short packets are the many.
    if (n < 16) {
        if (n >= 8)
            both(std::integral_constant<int, 8>());
        else if (n >= 4)
            both(std::integral_constant<int, 4>());
        else if (n >= 2)
            both(std::integral_constant<int, 2>());
        else
            span(0, std::integral_constant<int, 1>());
    } else if (n >= 64)
        both(std::integral_constant<int, 64>());
    else if (n >= 32)
        both(std::integral_constant<int, 32>());
    else
        both(std::integral_constant<int, 16>());
}

// Moves n bytes between buffers that do not overlap.
inline void copyBytes(const Zmx8u* src, Zmx8u* dst, std::ptrdiff_t n) {
    bySpans(n, [=](std::ptrdiff_t at, auto size) { std::memcpy(dst + at, src + at, size); });
}

// Sets n bytes.
inline void setBytes(Zmx8u val, Zmx8u* dst, std::ptrdiff_t n) {
    bySpans(n, [=](std::ptrdiff_t at, auto size) { std::memset(dst + at, val, size); });
}

} // namespace zmx
