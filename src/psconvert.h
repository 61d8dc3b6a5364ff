// psconvert.h - vectors between integers and single precision.
//
// Argument tests: null pointers in order, then a length below 1.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjbits.h"
#include "pjround.h"

#include <limits>

namespace zmx {

// To the nearest whole number, ties to the even one, saturated, a NaN giving 0, in steps that the compiler vectorises: to
// a single-precision value below 2^22 one of three times that size adds itself and leaves no room for a fraction. The
// bits of the sum have the order of numbers down to where it is below zero, and there they are a negative integer: it is
// they that are limited. (Of comparisons of floats, which might trap, the compiler makes branches.)
template <class T> inline T nearest(Zmx32f v) {
    constexpr Zmx32f large = 3 << 22;
    constexpr Zmx32s zero = bitCast<Zmx32s>(large);
    constexpr Zmx32s lo = zero + std::numeric_limits<T>::min(), hi = zero + std::numeric_limits<T>::max();
    const Zmx32s sum = bitCast<Zmx32s>(rounded(v + large));
    const Zmx32s isNumber = (sum & 0x7fffffff) > 0x7f800000 ? 0 : -1;
    const Zmx32s limited = sum < lo ? lo : sum > hi ? hi : sum;
    return T((limited - zero) & isNumber);
}

// How a float becomes an integer; every value but the first two means zmxRndFinancial.
enum ZmxRoundMode : Zmx32s {
    zmxRndZero = 0,      // towards zero
    zmxRndNear = 1,      // to nearest, ties to the even neighbour
    zmxRndFinancial = 2, // to nearest, ties away from zero
};

ZmxStatus zmxsConvert_16s32f(const Zmx16s* pSrc, Zmx32f* pDst, int len);
ZmxStatus zmxsConvert_16u32f(const Zmx16u* pSrc, Zmx32f* pDst, int len);

// Each element times two to the power of minus scaleFactor, rounded and saturated; a NaN gives 0.
ZmxStatus zmxsConvert_32f16s_Sfs(const Zmx32f* pSrc, Zmx16s* pDst, int len, ZmxRoundMode rndMode, int scaleFactor);
ZmxStatus zmxsConvert_32f16u_Sfs(const Zmx32f* pSrc, Zmx16u* pDst, int len, ZmxRoundMode rndMode, int scaleFactor);

} // namespace zmx
