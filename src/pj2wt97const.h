// pj2wt97const.h - the irreversible 9/7 filter (ISO/IEC 15444-1, F.3.8.1 and F.4.8.1): its steps, and its constants in
// every number system.
//
// A line has its low-pass samples at even positions and its high-pass ones at odd positions. Forward, four steps and
// a scale:
//   A(odd)  = x(odd)  + alpha (x(odd - 1) + x(odd + 1))
//   B(even) = x(even) + beta  (A(even - 1) + A(even + 1))
//   G(odd)  = A(odd)  + gamma (B(odd - 1) + B(odd + 1))        high = K G
//   D(even) = B(even) + delta (G(even - 1) + G(even + 1))      low = D / K
// Inverse, the scale and the same steps back, which make B, A, x(even) and x(odd) in turn.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjbits.h"
#include "zmxj.h"

namespace zmx::wt97 {

// No constant is computed from another: each is taken as it stands.
template <class Number> struct Steps {
    Number alpha, beta, gamma, delta;
    Number k, oneOverK;
    Number deltaOverK; // the last forward step or the first inverse one, with the scale folded in
};

// 32-bit floats; their bits are asserted below.
inline constexpr Steps<Zmx32f> kFloatSteps = {-1.5861343f, -0.052980117f, 0.8829111f, 0.44350687f,
                                              1.2301741f,  0.8128931f,    0.36052364f};
// 14 fractional bits, for planes of 16-bit samples, which fold nothing; and 16 fractional bits, for the kernels.
inline constexpr Steps<Zmx32s> kQ14Steps = {-25987, -868, 14466, 7266, 20155, 13318, 0};
inline constexpr Steps<Zmx32s> kQ16Steps = {-103949, -3472, 57862, 29066, 80621, 53274, 23627};

// The filter applied at once, for the kernels on a single pair: a tap by its distance from the output.
template <class Number> struct Taps {
    Number long0, long1, long2, long3, long4; // 9 taps
    Number short0, short1, short2, short3;    // 7 taps
};

// The inverse has alternating signs. In 16 fractional bits two of its magnitudes are others, too.
inline constexpr Taps<Zmx32f> kFloatForward = {0.602949f, 0.26686412f,  -0.078223266f, -0.01686412f, 0.026748758f,
                                               1.115087f, -0.59127176f, -0.057543527f, 0.091271766f};
inline constexpr Taps<Zmx32f> kFloatInverse = {0.602949f, -0.26686412f, -0.078223266f, 0.01686412f,  0.026748758f,
                                               1.115087f, 0.59127176f,  -0.057543527f, -0.091271766f};
inline constexpr Taps<Zmx32s> kQ16Forward = {39515, 17489, -5126, -1105, 1753, 73078, -38749, -3771, 5982};
inline constexpr Taps<Zmx32s> kQ16Inverse = {39515, -17489, -5126, 1105, 1753, 73078, 38750, -3771, -5981};

// The floats to the bit, however a compiler reads their decimals.
constexpr bool isFloat(Zmx32f v, Zmx32u bits) { return bitCast<Zmx32u>(v) == bits; }
static_assert(isFloat(kFloatSteps.alpha, 0xBFCB0673) && isFloat(kFloatSteps.beta, 0xBD5901AE));
static_assert(isFloat(kFloatSteps.gamma, 0x3F620676) && isFloat(kFloatSteps.delta, 0x3EE31355));
static_assert(isFloat(kFloatSteps.k, 0x3F9D7658) && isFloat(kFloatSteps.oneOverK, 0x3F5019C3));
static_assert(isFloat(kFloatSteps.deltaOverK, 0x3EB8968E));
static_assert(isFloat(kFloatForward.long0, 0x3F1A5ADE) && isFloat(kFloatForward.long1, 0x3E88A26A));
static_assert(isFloat(kFloatForward.long2, 0xBDA03385) && isFloat(kFloatForward.long3, 0xBC8A269F));
static_assert(isFloat(kFloatForward.long4, 0x3CDB2036) && isFloat(kFloatForward.short0, 0x3F8EBB2C));
static_assert(isFloat(kFloatForward.short1, 0xBF175D96) && isFloat(kFloatForward.short2, 0xBD6BB2C3));
static_assert(isFloat(kFloatForward.short3, 0x3DBAECB1));

} // namespace zmx::wt97
