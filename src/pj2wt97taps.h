// pj2wt97taps.h - the 9/7 kernels for one output pair: the taps of the filter applied directly, with no lifting.
#pragma once

#include "pj2wt97sys.h"

namespace zmx {

template <class N> struct Wt97TapSet {
    N c0, c1, c2, c3, c4; // of the long filter, from the centre outward
    N g0, g1, g2, g3;     // of the short one
};

// Forward, and inverse with alternating signs; the 16-bit fractions of the two are not all the same.
inline constexpr Wt97TapSet<Zmx32f> wt97FloatForward = {0.602949f,    0.26686412f,   -0.078223266f,
                                                        -0.01686412f, 0.026748758f,  1.115087f,
                                                        -0.59127176f, -0.057543527f, 0.091271766f};
inline constexpr Wt97TapSet<Zmx32f> wt97FloatInverse = {0.602949f,   -0.26686412f,  -0.078223266f,
                                                        0.01686412f, 0.026748758f,  1.115087f,
                                                        0.59127176f, -0.057543527f, -0.091271766f};
inline constexpr Wt97TapSet<Zmx32s> wt97Q16Forward = {39515, 17489, -5126, -1105, 1753, 73078, -38749, -3771, 5982};
inline constexpr Wt97TapSet<Zmx32s> wt97Q16Inverse = {39515, -17489, -5126, 1105, 1753, 73078, 38750, -3771, -5981};

static_assert(std::bit_cast<Zmx32u>(wt97FloatForward.c0) == 0x3F1A5ADE &&
              std::bit_cast<Zmx32u>(wt97FloatForward.c1) == 0x3E88A26A);
static_assert(std::bit_cast<Zmx32u>(wt97FloatForward.c2) == 0xBDA03385 &&
              std::bit_cast<Zmx32u>(wt97FloatForward.c3) == 0xBC8A269F);
static_assert(std::bit_cast<Zmx32u>(wt97FloatForward.c4) == 0x3CDB2036 &&
              std::bit_cast<Zmx32u>(wt97FloatForward.g0) == 0x3F8EBB2C);
static_assert(std::bit_cast<Zmx32u>(wt97FloatForward.g1) == 0xBF175D96 &&
              std::bit_cast<Zmx32u>(wt97FloatForward.g2) == 0xBD6BB2C3);
static_assert(std::bit_cast<Zmx32u>(wt97FloatForward.g3) == 0x3DBAECB1);

// Sums of products in each number system. `long` is five terms, `short` four; a term is a tap and the samples that
// share it.
template <class T> struct Wt97TapSum;

// Floats: in extended precision, rounded at the store.
template <> struct Wt97TapSum<Zmx32f> {
    using Value = Extended;
    static constexpr auto &forward = wt97FloatForward, &inverse = wt97FloatInverse;
    template <class... Term> static Zmx32f forwardLow(Term... t) { return Zmx32f((... + (t.first * t.second))); }
    template <class... Term> static Zmx32f forwardHigh(Term... t) { return forwardLow(t...); }
    template <class... Term> static Zmx32f inverseOf(Term... t) { return forwardLow(t...); }
};

// 16 bits: the low output is summed in 32 bits, where it wraps; the high one likewise but for its last product, which
// is exact; the inverse is exact. The last two saturate; 32 bits shifted by 16 leave nothing to saturate in the first.
template <> struct Wt97TapSum<Zmx16s> {
    using Value = Zmx32s;
    static constexpr auto &forward = wt97Q16Forward, &inverse = wt97Q16Inverse;
    template <class... Term> static Zmx32s wrapped(Term... t) {
        Zmx32u sum = 0;
        ((sum += Zmx32u(t.first) * Zmx32u(t.second)), ...);
        return Zmx32s(sum);
    }
    template <class... Term> static Zmx16s forwardLow(Term... t) { return Zmx16s(wrapAdd(wrapped(t...), 32768) >> 16); }
    template <class Term> static Zmx16s forwardHigh(Term g3, Term g2, Term g1, Term g0) {
        const std::int64_t exact = std::int64_t(g0.first) * g0.second;
        return Wt97Q16System<Zmx16s>::narrow((wrapped(g3, g2, g1) + exact + 32768) >> 16);
    }
    template <class... Term> static Zmx16s inverseOf(Term... t) {
        return Wt97Q16System<Zmx16s>::narrow(((... + (std::int64_t(t.first) * t.second)) + 32768) >> 16);
    }
};

// 32 bits: each term is rounded by itself, and the terms are added modulo 2^32.
template <> struct Wt97TapSum<Zmx32s> {
    using Value = Zmx32s;
    static constexpr auto &forward = wt97Q16Forward, &inverse = wt97Q16Inverse;
    template <class... Term> static Zmx32s forwardLow(Term... t) {
        Zmx32u sum = 0;
        ((sum += Zmx32u((std::int64_t(t.first) * t.second + 32768) >> 16)), ...);
        return Zmx32s(sum);
    }
    template <class... Term> static Zmx32s forwardHigh(Term... t) { return forwardLow(t...); }
    template <class... Term> static Zmx32s inverseOf(Term... t) { return forwardLow(t...); }
};

template <class T> struct Wt97Taps {
    using Sum = Wt97TapSum<T>;
    using V = typename Sum::Value;

    template <class Tap> struct Term {
        Tap first;
        V second;
    };
    static V add(V a, V b) {
        if constexpr (std::is_integral_v<V>)
            return wrapAdd(a, b);
        else
            return a + b;
    }

    template <class In, class Out> static void forward(In x, Out low, Out high, int p) {
        const auto& t = Sum::forward;
        const auto pair = [=](auto tap, int a, int b) { return Term<decltype(tap)>{tap, add(V(x[a]), V(x[b]))}; };
        const int l = p ? 1 : 0, h = p ? 0 : 1; // the centres
        const T lowValue = Sum::forwardLow(pair(t.c4, l - 4, l + 4), pair(t.c3, l - 3, l + 3), pair(t.c2, l - 2, l + 2),
                                           pair(t.c1, l - 1, l + 1), Term<decltype(t.c0 + 0)>{t.c0, V(x[l])});
        const T highValue = Sum::forwardHigh(pair(t.g3, h - 3, h + 3), pair(t.g2, h - 2, h + 2),
                                             pair(t.g1, h - 1, h + 1), Term<decltype(t.g0 + 0)>{t.g0, V(x[h])});
        low.set(0, lowValue);
        high.set(0, highValue);
    }

    template <class In, class Out> static void inverse(In low, In high, Out x, int p) {
        const auto& t = Sum::inverse;
        const auto lows = [=](auto tap, int a, int b) { return Term<decltype(tap)>{tap, add(V(low[a]), V(low[b]))}; };
        const auto highs = [=](auto tap, int a, int b) {
            return Term<decltype(tap)>{tap, add(V(high[a]), V(high[b]))};
        };
        // The even sample lies at the low sample itself, between high samples p - 1 and p; the odd one at the high
        // sample, between low samples -p and 1 - p.
        const T even = Sum::inverseOf(lows(t.g2, -1, 1), Term<decltype(t.g0 + 0)>{t.g0, V(low[0])},
                                      highs(t.c3, p - 2, p + 1), highs(t.c1, p - 1, p));
        const T odd = Sum::inverseOf(lows(t.g3, -p - 1, 2 - p), lows(t.g1, -p, 1 - p), highs(t.c4, -2, 2),
                                     highs(t.c2, -1, 1), Term<decltype(t.c0 + 0)>{t.c0, V(high[0])});
        x.set(p, even);
        x.set(1 - p, odd);
    }
};

} // namespace zmx
