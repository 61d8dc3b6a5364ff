// pj2wt97step.h - the 9/7 steps on single values, in the number systems of the kernels and of the column lifting: 16
// fractional bits on 16-bit samples, saturating, and on 32-bit samples, wrapping; and 32-bit floats.
//
// Each system has two functions, and the inverse of the first: lift() is a step, weigh() a step with the scale folded
// in. A row holds samples of type T. A value that never reaches a row is of type Aside<T>: for integers the same, since
// every result is narrowed at once; for floats a number with a 64-bit significand.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pj2wt97const.h"
#include "pjbits.h"
#include "pjround.h"
#include "pjrows.h"
#include "pjx87.h"

#include <cmath>
#include <cstdint>
#include <type_traits>

namespace zmx::wt97 {

template <class T> using Aside = std::conditional_t<std::is_same_v<T, Zmx32f>, Extended, T>;

// Whether the steps on samples of type T use the x87 unit.
template <class T> inline constexpr bool kStepsOnX87 = std::is_same_v<T, Zmx32f> && (kExtendedOnX87 || kDoubleOnX87);

template <class T> inline constexpr auto kSteps = kQ16Steps;
template <> inline constexpr auto kSteps<Zmx32f> = kFloatSteps;

// ---- 16 fractional bits on 16-bit samples: (c0 v + c1 s + 32768) >> 16 with exact products, then limited

// The whole parts of the weights stay out of the products; what is left of them keeps the products within 32 bits,
// which the compiler vectorises.
constexpr Zmx32s wholeOf(Zmx32s c) { return (c + 32768) >> 16; }
constexpr Zmx32s weighed(Zmx32s c0, Zmx32s v, Zmx32s c1, Zmx32s s) {
    const Zmx32s w0 = wholeOf(c0), w1 = wholeOf(c1);
    return w0 * v + w1 * s + (((c0 - 65536 * w0) * v + (c1 - 65536 * w1) * s + 32768) >> 16);
}
constexpr bool fits(Zmx32s c0, Zmx32s c1) {
    const auto rest = [](Zmx32s c) { return c < 65536 * wholeOf(c) ? 65536 * wholeOf(c) - c : c - 65536 * wholeOf(c); };
    return 32768 + std::int64_t(32768) * rest(c0) + std::int64_t(65536) * rest(c1) < std::int64_t(1) << 31;
}
static_assert(fits(0, kQ16Steps.alpha) && fits(0, kQ16Steps.beta) && fits(0, kQ16Steps.gamma));
static_assert(fits(0, kQ16Steps.delta) && fits(kQ16Steps.k, 0) && fits(kQ16Steps.oneOverK, kQ16Steps.deltaOverK));
static_assert(fits(kQ16Steps.k, kQ16Steps.deltaOverK) && fits(kQ16Steps.oneOverK, kQ16Steps.gamma));

constexpr Zmx16s lift(Zmx16s centre, Zmx32s c, Zmx16s a, Zmx16s b) {
    return saturate16s(centre + weighed(0, 0, c, a + b));
}
constexpr Zmx16s liftBack(Zmx16s centre, Zmx32s c, Zmx16s a, Zmx16s b) {
    return saturate16s(centre - weighed(0, 0, c, a + b));
}
constexpr Zmx16s weigh(Zmx32s c0, Zmx16s v, Zmx32s c1, Zmx16s a, Zmx16s b) {
    return saturate16s(weighed(c0, v, c1, a + b));
}

// ---- the same on 32-bit samples: the sum of two wraps, products are exact, results are cut to their low 32

// In products of 64 bits; s is the sum of the two.
constexpr Zmx32s weighed64(Zmx32s c0, Zmx32s v, Zmx32s c1, Zmx32s s) {
    return Zmx32s((std::int64_t(c0) * v + std::int64_t(c1) * s + 32768) >> 16);
}

// Whether vectors have products of 32 bits: those of SSE have them from SSE4.1 on.
#if defined(__SSE2__) && !defined(__SSE4_1__)
inline constexpr bool kWordProducts = false;
#else
inline constexpr bool kWordProducts = true;
#endif

// What the remainders of the weights make of the lower halves of their factors, with the rounding term: it fits 32 bits
// with a sign, or, where it cannot be negative, without one.
constexpr bool fitsSigned(Zmx32s r0, Zmx32s r1) {
    const auto end = [=](bool lower) {
        return 32768 + std::int64_t(65535) * (((r0 < 0) == lower ? r0 : 0) + ((r1 < 0) == lower ? r1 : 0));
    };
    return end(true) >= -(std::int64_t(1) << 31) && end(false) < std::int64_t(1) << 31;
}
constexpr bool fitsUnsigned(Zmx32s r0, Zmx32s r1) { return r0 >= 0 && r1 >= 0; }

// In products of 32 bits, of which a vector holds twice as many.
constexpr Zmx32s weighed32(Zmx32s c0, Zmx32s v, Zmx32s c1, Zmx32s s) {
    const Zmx32s w0 = wholeOf(c0), w1 = wholeOf(c1), r0 = c0 - 65536 * w0, r1 = c1 - 65536 * w1;
    const Zmx32u low = Zmx32u(r0) * (Zmx32u(v) & 0xFFFF) + Zmx32u(r1) * (Zmx32u(s) & 0xFFFF) + 32768;
    const Zmx32u carry = fitsSigned(r0, r1) ? Zmx32u(Zmx32s(low) >> 16) : low >> 16;
    return Zmx32s(Zmx32u(w0) * Zmx32u(v) + Zmx32u(w1) * Zmx32u(s) + Zmx32u(r0) * Zmx32u(v >> 16) +
                  Zmx32u(r1) * Zmx32u(s >> 16) + carry);
}
constexpr bool fits32(Zmx32s c0, Zmx32s c1) {
    const Zmx32s r0 = c0 - 65536 * wholeOf(c0), r1 = c1 - 65536 * wholeOf(c1);
    return fitsSigned(r0, r1) || fitsUnsigned(r0, r1);
}
static_assert(fits32(0, kQ16Steps.alpha) && fits32(0, kQ16Steps.beta) && fits32(0, kQ16Steps.gamma));
static_assert(fits32(0, kQ16Steps.delta) && fits32(kQ16Steps.k, 0) && fits32(kQ16Steps.oneOverK, kQ16Steps.deltaOverK));
static_assert(fits32(kQ16Steps.k, kQ16Steps.deltaOverK) && fits32(kQ16Steps.k, -kQ16Steps.deltaOverK));
static_assert(fits32(kQ16Steps.oneOverK, kQ16Steps.gamma) && fits32(kQ16Steps.oneOverK, -kQ16Steps.gamma));

constexpr Zmx32s weigh(Zmx32s c0, Zmx32s v, Zmx32s c1, Zmx32s a, Zmx32s b) {
    return (kWordProducts ? weighed32 : weighed64)(c0, v, c1, wrapAdd(a, b));
}
constexpr Zmx32s lift(Zmx32s centre, Zmx32s c, Zmx32s a, Zmx32s b) { return wrapAdd(centre, weigh(0, 0, c, a, b)); }
constexpr Zmx32s liftBack(Zmx32s centre, Zmx32s c, Zmx32s a, Zmx32s b) { return wrapSub(centre, weigh(0, 0, c, a, b)); }

// ---- floats, aside: nothing is rounded to single precision

inline Extended lift(Extended centre, Zmx32f c, Extended a, Extended b) { return centre + Extended(c) * (a + b); }
inline Extended liftBack(Extended centre, Zmx32f c, Extended a, Extended b) { return centre - Extended(c) * (a + b); }
inline Extended weigh(Zmx32f c0, Extended v, Zmx32f c1, Extended a, Extended b) {
    return Extended(c0) * v + Extended(c1) * (a + b);
}
// A sample of a row as a value aside.
template <class T> Aside<T> aside(T v) { return v; }

// ---- floats in rows: the same, rounded at once

// Whether all numbers within `doubt` of a value round to one float.
inline bool rounds(double value, double doubt, Zmx32f& result) {
    result = Zmx32f(value - doubt);
    const Zmx32u below = bitCast<Zmx32u>(result), above = bitCast<Zmx32u>(Zmx32f(value + doubt));
    return below == above && doubt < 0x1p1000; // neither infinite nor a NaN
}
// centre + c (a + b) in double precision, for an exact centre, if that settles what it rounds to in extended precision.
// The products are exact. Two sums are off by a last place of each; where the terms cancel that is too much, and what
// the sums lose is added to them: then the last of 64 bits of the terms is in doubt, and of 53 bits of the result.
inline bool settles(double centre, double c, double a, double b, Zmx32f& result) {
    const double side0 = c * a, side1 = c * b;
    const double sides = a + b == 0 ? c * (a + b) : side0 + side1; // for the sign of a zero
    const double all = centre + sides, size = std::fabs(centre) + std::fabs(sides);
    if (rounds(all, size * 0x1p-51, result)) return true;
    if (kDoubleOnX87) return false; // a sum may have more bits than what is lost from it
    const auto lost = [](double x, double y, double sum) {
        const double part = sum - x;
        return (x - (sum - part)) + (y - part);
    };
    const double rest = lost(side0, side1, sides) + lost(centre, sides, all);
    const double value = rest == 0 ? all : all + rest; // keeps the sign of a zero
    return rounds(value, std::fabs(value) * 0x1p-52 + size * 0x1p-61, result);
}

// The x87 unit takes 0.8 ns for a step, the way through double precision 3 ns.
inline Zmx32f lift(Zmx32f centre, Zmx32f c, Zmx32f a, Zmx32f b) {
    if constexpr (!kExtendedOnX87)
        if (Zmx32f result; settles(centre, c, a, b, result)) [[likely]]
            return result;
    return Zmx32f(lift(Extended(centre), c, Extended(a), Extended(b)));
}
inline Zmx32f liftBack(Zmx32f centre, Zmx32f c, Zmx32f a, Zmx32f b) { return lift(centre, -c, a, b); }
inline Zmx32f weigh(Zmx32f c0, Zmx32f v, Zmx32f c1, Zmx32f a, Zmx32f b) {
    if constexpr (!kExtendedOnX87)
        if (Zmx32f result; settles(double(c0) * v, c1, a, b, result)) [[likely]]
            return result;
    return Zmx32f(weigh(c0, Extended(v), c1, Extended(a), Extended(b)));
}

// ---- what the steps make of the scale: forward at the end, inverse at the beginning

template <class T> T scale(Zmx32s c, T v) { return weigh(c, v, 0, T(0), T(0)); }
// A product of floats is exact in extended precision: rounding it at once is the same. A NaN, which is a quiet one behind
// a step, stays, as it does on x86: RISC-V and WebAssembly make others of it. Told by its bits, for compilers take all
// NaNs for equal.
inline Zmx32f scale(Zmx32f c, Zmx32f v) {
    if constexpr (!kExtendedOnX87)
        if ((bitCast<Zmx32s>(v) & 0x7FFFFFFF) > 0x7F800000) return v;
    return c * v;
}

// low from B and the G at its sides: the step and the scale at once, or D rounded in between.
template <class T> T lowOf(bool atOnce, T b, T g0, T g1) {
    constexpr auto c = kQ16Steps;
    return atOnce ? weigh(c.oneOverK, b, c.deltaOverK, g0, g1) : scale(c.oneOverK, lift(b, c.delta, g0, g1));
}
inline Zmx32f lowOf(bool atOnce, Extended b, Extended g0, Extended g1) {
    const Extended d = lift(b, kFloatSteps.delta, g0, g1);
    return atOnce ? Zmx32f(d * Extended(kFloatSteps.oneOverK)) : scale(kFloatSteps.oneOverK, rounded(Zmx32f(d)));
}
// With both G in a row D is always rounded, as a row would hold it.
inline Zmx32f lowOf(bool, Zmx32f b, Zmx32f g0, Zmx32f g1) {
    return scale(kFloatSteps.oneOverK, rounded(lift(b, kFloatSteps.delta, g0, g1)));
}

// Even and odd samples after the scale and one step of the inverse, with one rounding in every system.
template <class T, class V> V backB(V low, V h0, V h1) {
    return weigh(kSteps<T>.k, low, -kSteps<T>.deltaOverK, h0, h1);
}
template <class T, class V> V backA(V high, V b0, V b1) {
    return weigh(kSteps<T>.oneOverK, high, -kSteps<T>.gamma, b0, b1);
}

} // namespace zmx::wt97
