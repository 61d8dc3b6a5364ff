// pj2wt97exact.h - outputs of the 9/7 wavelet of 32-bit samples one at a time, in extended precision: every step with a
// 64-bit significand, and one truncation at the end.
//
// x(j) is the sample j places from the output. An output is made straight from the triangle of samples under it, in
// which most values are computed several times: few outputs come here.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pj2wt97const.h"
#include "pjextended.h"
#include "pjwrap.h"

namespace zmx::wt97::ext {

// One lifting step, in double or extended precision.
template <class Real> Real lift(Real centre, Zmx32f c, Real sides) { return centre + sides * c; }
template <class Real> Real liftBack(Real centre, Zmx32f c, Real sides) { return centre - sides * c; }

// The first forward step adds two samples as integers, which wrap.
template <class Real> Real firstLift(Zmx32s centre, Zmx32s side0, Zmx32s side1) {
    return lift(Real(centre), kFloatSteps.alpha, Real(wrapAdd(side0, side1)));
}

inline constexpr Zmx32s kLeast = -2147483647 - 1;

// Saturates, then truncates toward zero; 2^31 itself passes the comparison and comes out as -2^31.
inline Zmx32s toInteger(SoftExtended v) {
    if (v > 2147483648.0f) return 2147483647;
    if (v < -2147483648.0f || v == 2147483648.0f) return kLeast;
    return Zmx32s(v);
}

// Forward.
template <class X> SoftExtended exactA(X x, int j) { return firstLift<SoftExtended>(x(j), x(j - 1), x(j + 1)); }
template <class X> SoftExtended exactB(X x, int j) {
    return lift(SoftExtended(x(j)), kFloatSteps.beta, exactA(x, j - 1) + exactA(x, j + 1));
}
template <class X> SoftExtended exactG(X x, int j) {
    return lift(exactA(x, j), kFloatSteps.gamma, exactB(x, j - 1) + exactB(x, j + 1));
}
template <class X> Zmx32s exactLow(X x) {
    return toInteger(lift(exactB(x, 0), kFloatSteps.delta, exactG(x, -1) + exactG(x, 1)) * kFloatSteps.oneOverK);
}
template <class X> Zmx32s exactHigh(X x) { return toInteger(exactG(x, 0) * kFloatSteps.k); }

// Inverse: S is a scaled odd sample.
template <class X> SoftExtended exactS(X x, int j) { return SoftExtended(x(j)) * kFloatSteps.oneOverK; }
template <class X> SoftExtended exactBackB(X x, int j) {
    return liftBack(SoftExtended(x(j)) * kFloatSteps.k, kFloatSteps.delta, exactS(x, j - 1) + exactS(x, j + 1));
}
template <class X> SoftExtended exactBackA(X x, int j) {
    return liftBack(exactS(x, j), kFloatSteps.gamma, exactBackB(x, j - 1) + exactBackB(x, j + 1));
}
template <class X> SoftExtended exactBackEven(X x, int j) {
    return liftBack(exactBackB(x, j), kFloatSteps.beta, exactBackA(x, j - 1) + exactBackA(x, j + 1));
}
template <class X> Zmx32s exactEven(X x) { return toInteger(exactBackEven(x, 0)); }
template <class X> Zmx32s exactOdd(X x) {
    return toInteger(liftBack(exactBackA(x, 0), kFloatSteps.alpha, exactBackEven(x, -1) + exactBackEven(x, 1)));
}

} // namespace zmx::wt97::ext
