// pj2wt97pair.h - the 9/7 kernels on a single output pair: the taps of the filter at once, with no lifting. In a line
// of interleaved samples y(k), an output at position q takes y(q - d) and y(q + d) under one tap, added first.
//
// The order of the products counts for floats. What becomes of their sum differs from system to system, and from output
// to output of 16-bit samples: all required.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pj2wt97step.h"

namespace zmx::wt97 {

// A tap and the samples under it.
template <class T> struct Product { Zmx32s tap, samples; };
template <> struct Product<Zmx32f> {
    Zmx32f tap;
    Extended samples;
};
template <class T, int count> using Products = Product<T>[count];

// ---- floats: summed in extended precision

template <int count> Zmx32f sumOf(const Products<Zmx32f, count>& t) {
    Extended sum = Extended(t[0].tap) * t[0].samples;
    for (int i = 1; i < count; ++i) sum = sum + Extended(t[i].tap) * t[i].samples;
    return Zmx32f(sum);
}

// ---- 32-bit samples: every product is rounded by itself, and they are added modulo 2^32

template <int count> Zmx32s sumOf(const Products<Zmx32s, count>& t) {
    Zmx32s sum = 0;
    for (const auto& p : t) sum = wrapAdd(sum, Zmx32s((std::int64_t(p.tap) * p.samples + 32768) >> 16));
    return sum;
}

// ---- 16-bit samples: exact up to one rounding, then limited; but for the forward outputs

template <int count> std::int64_t exactSum(const Products<Zmx16s, count>& t) {
    std::int64_t sum = 0;
    for (const auto& p : t) sum += std::int64_t(p.tap) * p.samples;
    return sum;
}
constexpr Zmx16s roundedSum(std::int64_t sum) { return saturate16s(Zmx32s((sum + 32768) >> 16)); }

template <int count> Zmx16s sumOf(const Products<Zmx16s, count>& t) { return roundedSum(exactSum(t)); }

// Low: the sum and its rounding wrap in 32 bits. What 16 shifted bits leave needs no limit.
template <class T> T lowSum(const Products<T, 5>& t) { return sumOf(t); }
template <> inline Zmx16s lowSum(const Products<Zmx16s, 5>& t) {
    return Zmx16s(wrapAdd(Zmx32s(exactSum(t)), 32768) >> 16);
}
// High: all products but that of the centre, the last one, are added in 32 bits.
template <class T> T highSum(const Products<T, 4>& t) { return sumOf(t); }
template <> inline Zmx16s highSum(const Products<Zmx16s, 4>& t) {
    const std::int64_t centre = std::int64_t(t[3].tap) * t[3].samples;
    return roundedSum(Zmx32s(exactSum(t) - centre) + centre);
}

// ---- the pair

template <class T> inline constexpr auto kForwardTaps = kQ16Forward;
template <> inline constexpr auto kForwardTaps<Zmx32f> = kFloatForward;
template <class T> inline constexpr auto kInverseTaps = kQ16Inverse;
template <> inline constexpr auto kInverseTaps<Zmx32f> = kFloatInverse;

// Two samples added: in 32 bits, where 32-bit samples wrap, or in extended precision.
inline Zmx32s added(Zmx32s a, Zmx32s b) { return wrapAdd(a, b); }
inline Extended added(Zmx32f a, Zmx32f b) { return aside(a) + aside(b); }

// The low sample stands at position p, the high one at 1 - p.
template <class T, class Samples> T pairLow(Samples y, int p) {
    constexpr auto c = kForwardTaps<T>;
    const auto at = [=](int d) { return added(y(p - d), y(p + d)); };
    return lowSum<T>({{c.long4, at(4)}, {c.long3, at(3)}, {c.long2, at(2)}, {c.long1, at(1)}, {c.long0, aside(y(p))}});
}
template <class T, class Samples> T pairHigh(Samples y, int p) {
    constexpr auto c = kForwardTaps<T>;
    const auto at = [=](int d) { return added(y(1 - p - d), y(1 - p + d)); };
    return highSum<T>({{c.short3, at(3)}, {c.short2, at(2)}, {c.short1, at(1)}, {c.short0, aside(y(1 - p))}});
}

// Low samples come back through the short taps, high samples through the long ones; the low ones go first.
template <class T, class Samples> T pairEven(Samples y, int p) {
    constexpr auto c = kInverseTaps<T>;
    const auto at = [=](int d) { return added(y(p - d), y(p + d)); };
    return sumOf<4>(Products<T, 4>{{c.short2, at(2)}, {c.short0, aside(y(p))}, {c.long3, at(3)}, {c.long1, at(1)}});
}
template <class T, class Samples> T pairOdd(Samples y, int p) {
    constexpr auto c = kInverseTaps<T>;
    const auto at = [=](int d) { return added(y(1 - p - d), y(1 - p + d)); };
    return sumOf<5>(Products<T, 5>{
        {c.short3, at(3)}, {c.short1, at(1)}, {c.long4, at(4)}, {c.long2, at(2)}, {c.long0, aside(y(1 - p))}});
}

} // namespace zmx::wt97
