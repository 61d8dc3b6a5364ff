// pjquant.h - one coefficient to and from its quantised value, in 16-bit arithmetic that vectorises eight at a time.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjwrap.h"

namespace zmx {

// The product saturated to 16 bits: its low half where the high half is but the sign of it.
inline Zmx16s dequantised(Zmx16s a, Zmx16s b) {
    const int p = a * b;
    const Zmx16s low = Zmx16s(p), high = Zmx16s(p >> 16), extreme = Zmx16s(high >> 15 ^ 0x7fff);
    return high == Zmx16s(low >> 15) ? low : extreme;
}

// The product over 32768, rounded to nearest with ties to even, saturated to 16 bits.
inline Zmx16s quantised(Zmx16u reciprocal, Zmx16s coefficient) {
    // The two halves of the product; that of an unsigned and a signed factor has no vector form of its own.
    const Zmx16s negative = Zmx16s(coefficient >> 15);
    const Zmx16u low = Zmx16u(Zmx32u(reciprocal) * Zmx16u(coefficient));
    const Zmx16u unsignedHigh = Zmx16u(Zmx32u(reciprocal) * Zmx16u(coefficient) >> 16);
    const Zmx16s high = Zmx16s(unsignedHigh - (negative & reciprocal));

    // The quotient is 2 high + odd; the rounding term is a half of the divisor, less one for an even quotient.
    const Zmx16u odd = low >> 15, up = Zmx16u((low & 0x7fff) + 16383 + odd) >> 15;
    const Zmx16s wrapped = Zmx16s(2 * high + odd + up), extreme = Zmx16s(negative ^ 0x7fff);
    // Out of range: twice the high half changes its sign, or a positive quotient is rounded up to 32768.
    const Zmx16s outside = Zmx16s(Zmx16s((high ^ 2 * high) | (wrapped & ~coefficient)) >> 15);
    return Zmx16s((extreme & outside) | (wrapped & ~outside));
}

} // namespace zmx
