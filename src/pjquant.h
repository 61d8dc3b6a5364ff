// pjquant.h - one coefficient to and from its quantised value, in 16-bit arithmetic that vectorises eight at a time.
#pragma once

#include "pjwrap.h"

#include <algorithm>

// The product saturated to 16 bits: its low half where the high half is but the sign of it.
inline Zmx16s dequantised(Zmx16s a, Zmx16s b) {
    const int p = a * b;
    const Zmx16s low = Zmx16s(p), high = Zmx16s(p >> 16), extreme = Zmx16s(high >> 15 ^ 0x7fff);
    return high == Zmx16s(low >> 15) ? low : extreme;
}

// The product over 32768, rounded to nearest with ties to even, saturated to 16 bits.
inline Zmx16s quantised(Zmx16u reciprocal, Zmx16s coefficient) {
    const int p = reciprocal * coefficient;
    // The rounding term is a half, less one for an even quotient; half of it is added to half of the product, for the
    // sum to stay in 32 bits.
    const int term = 16383 + (p >> 15 & 1);
    return saturate16s(((p >> 1) + (term >> 1) + (p & term & 1)) >> 14);
}
