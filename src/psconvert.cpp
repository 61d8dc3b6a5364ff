// psconvert.cpp - vectors between integers and single precision.
// SPDX-License-Identifier: BSD-2-Clause
#include "psconvert.h"

#include "pjargs.h"
#include "pjx87.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zmx {

template <class T> static ZmxStatus widen(const T* src, Zmx32f* dst, int len) {
    if (ZmxStatus bad = Args().ptr(src).ptr(dst).size(len)) return bad;
    for (int i = 0; i < len; ++i) dst[i] = Zmx32f(src[i]);
    return zmxStsNoErr;
}

ZmxStatus zmxsConvert_16s32f(const Zmx16s* pSrc, Zmx32f* pDst, int len) { return widen(pSrc, pDst, len); }
ZmxStatus zmxsConvert_16u32f(const Zmx16u* pSrc, Zmx32f* pDst, int len) { return widen(pSrc, pDst, len); }

// Two to the power of minus scaleFactor as the repeated product of a 64-bit significand with 15 bits of exponent would
// have it, which becomes zero below 2^-16445 and infinite from 2^16384 on: that makes a NaN of an infinity and of zero.
// In between a double serves: beyond 2^300 either way all values saturate or round to zero.
static double scaleOf(int scaleFactor) {
    if (scaleFactor > 16445) return 0;
    if (scaleFactor <= -16384) return std::numeric_limits<double>::infinity();
    return std::ldexp(1.0, std::clamp(-scaleFactor, -300, 300));
}

// A double holds the value plus a half exactly wherever the half decides: the sum is wrong only for values below 2^-29,
// which round to zero either way.
// What is out of the range is limited first, so that nothing overflows. A NaN is no number, and gives 0.
template <class T> static T roundedTo(double x, ZmxRoundMode mode) {
    constexpr int lo = std::numeric_limits<T>::min(), hi = std::numeric_limits<T>::max();
    if (std::isnan(x)) return 0;
    if (x > hi) return T(hi);
    if (x < lo) return T(lo);
    if (mode == zmxRndZero) return T(int(x));
    // Signs are as likely one as the other: no branch on them.
    const int sign = 1 - 2 * (x < 0);
    const double sum = x + 0.5 * sign;
    const int t = int(sum);
    // A half exactly went away from zero: an odd result goes back to its even neighbour.
    const int tie = (mode == zmxRndNear) & (t % 2 != 0) & (double(t) == sum);
    return T(t - sign * tie);
}

template <class T> static ZmxStatus convert(const Zmx32f* src, T* dst, int len, ZmxRoundMode mode, int scaleFactor) {
    if (ZmxStatus bad = Args().ptr(src).ptr(dst).size(len)) return bad;
    if (scaleFactor == 0 && mode == zmxRndNear) {
        for (int i = 0; i < len; ++i) dst[i] = nearest<T>(src[i]);
    } else {
        const double scale = scaleOf(scaleFactor);
        inFullPrecision<kDoubleOnX87>([=] {
            for (int i = 0; i < len; ++i) dst[i] = roundedTo<T>(src[i] * scale, mode);
        });
    }
    return zmxStsNoErr;
}

ZmxStatus zmxsConvert_32f16s_Sfs(const Zmx32f* pSrc, Zmx16s* pDst, int len, ZmxRoundMode rndMode, int scaleFactor) {
    return convert(pSrc, pDst, len, rndMode, scaleFactor);
}
ZmxStatus zmxsConvert_32f16u_Sfs(const Zmx32f* pSrc, Zmx16u* pDst, int len, ZmxRoundMode rndMode, int scaleFactor) {
    return convert(pSrc, pDst, len, rndMode, scaleFactor);
}

} // namespace zmx
