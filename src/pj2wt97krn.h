// pj2wt97krn.h - the 9/7 steps on single values, in the number systems of the kernels and of the column lifting: 16
// fractional bits on 16-bit samples, saturating, and on 32-bit samples, wrapping; and 32-bit floats.
//
// Each system has two functions, and the inverse of the first: lift() is a step, weigh() a step with the scale folded
// in. A row holds samples of type T. A value that never reaches a row is of type Aside<T>: for integers the same, since
// every result is narrowed at once; a float keeps a 64-bit significand until it is stored.
#pragma once

#include "pj2wt97.h"
#include "pjround.h"
#include "pjrows.h"

#include <cstdint>
#include <type_traits>

namespace zmx::wt97 {

template <class T> using Aside = std::conditional_t<std::is_same_v<T, Zmx32f>, Extended, T>;

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

// ---- the same on 32-bit samples: the sum of two wraps, products are of 64 bits, results are cut to their low 32

constexpr std::int64_t weighed64(Zmx32s c0, Zmx32s v, Zmx32s c1, Zmx32s a, Zmx32s b) {
    return (std::int64_t(c0) * v + std::int64_t(c1) * wrapAdd(a, b) + 32768) >> 16;
}
constexpr Zmx32s lift(Zmx32s centre, Zmx32s c, Zmx32s a, Zmx32s b) { return Zmx32s(centre + weighed64(0, 0, c, a, b)); }
constexpr Zmx32s liftBack(Zmx32s centre, Zmx32s c, Zmx32s a, Zmx32s b) {
    return Zmx32s(centre - weighed64(0, 0, c, a, b));
}
constexpr Zmx32s weigh(Zmx32s c0, Zmx32s v, Zmx32s c1, Zmx32s a, Zmx32s b) {
    return Zmx32s(weighed64(c0, v, c1, a, b));
}

// ---- floats: nothing is rounded to single precision here

inline Extended lift(Extended centre, Zmx32f c, Extended a, Extended b) { return centre + c * (a + b); }
inline Extended liftBack(Extended centre, Zmx32f c, Extended a, Extended b) { return centre - c * (a + b); }
inline Extended weigh(Zmx32f c0, Extended v, Zmx32f c1, Extended a, Extended b) { return c0 * v + c1 * (a + b); }

// ---- what the steps make of the scale: forward at the end, inverse at the beginning

template <class V, class C> V scale(C c, V v) { return weigh(c, v, C(0), V(0), V(0)); }
inline Extended scale(Zmx32f c, Extended v) { return c * v; }

// low from B and the G at its sides. Integers have two ways, with one rounding in all and with two.
template <class T> T lowAtOnce(T b, T g0, T g1) { return weigh(kQ16Steps.oneOverK, b, kQ16Steps.deltaOverK, g0, g1); }
template <class T> T lowInStages(T b, T g0, T g1) {
    return scale(kQ16Steps.oneOverK, lift(b, kQ16Steps.delta, g0, g1));
}
// Floats have D unrounded, and D rounded to single precision, as a row would hold it.
inline Extended lowAtOnce(Extended b, Extended g0, Extended g1) {
    return lift(b, kFloatSteps.delta, g0, g1) * kFloatSteps.oneOverK;
}
inline Extended lowInStages(Extended b, Extended g0, Extended g1) {
    return rounded(Zmx32f(lift(b, kFloatSteps.delta, g0, g1))) * Extended(kFloatSteps.oneOverK);
}

// Even and odd samples after the scale and one step of the inverse, with one rounding in every system.
template <class T, class V> V backB(V low, V h0, V h1) {
    return weigh(kSteps<T>.k, low, -kSteps<T>.deltaOverK, h0, h1);
}
template <class T, class V> V backA(V high, V b0, V b1) {
    return weigh(kSteps<T>.oneOverK, high, -kSteps<T>.gamma, b0, b1);
}

} // namespace zmx::wt97
