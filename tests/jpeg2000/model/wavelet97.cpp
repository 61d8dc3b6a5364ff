// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/wavelet97.h"

#include <bit>
#include <cstdint>
#include <type_traits>

namespace model {

namespace {

using Wide = std::int64_t;

struct Constant {
    Zmx32u bits;
    int q14, q16;
    Extended value() const { return std::bit_cast<float>(bits); }
};
constexpr Constant kAlpha{0xBFCB0673, -25987, -103949}, kBeta{0xBD5901AE, -868, -3472},
    kGamma{0x3F620676, 14466, 57862}, kDelta{0x3EE31355, 7266, 29066}, kK{0x3F9D7658, 20155, 80621},
    kInvK{0x3F5019C3, 13318, 53274}, kDeltaInvK{0x3EB8968E, 0, 23627};

struct Taps {
    Constant c[5], g[4];
};
constexpr Taps kForwardTaps{
    {{0x3F1A5ADE, 0, 39515},
     {0x3E88A26A, 0, 17489},
     {0xBDA03385, 0, -5126},
     {0xBC8A269F, 0, -1105},
     {0x3CDB2036, 0, 1753}},
    {{0x3F8EBB2C, 0, 73078}, {0xBF175D96, 0, -38749}, {0xBD6BB2C3, 0, -3771}, {0x3DBAECB1, 0, 5982}}};
constexpr Taps kInverseTaps{
    {{0x3F1A5ADE, 0, 39515},
     {0xBE88A26A, 0, -17489},
     {0xBDA03385, 0, -5126},
     {0x3C8A269F, 0, 1105},
     {0x3CDB2036, 0, 1753}},
    {{0x3F8EBB2C, 0, 73078}, {0x3F175D96, 0, 38750}, {0xBD6BB2C3, 0, -3771}, {0xBDBAECB1, 0, -5981}}};

Zmx32s wrap(Wide v) { return Zmx32s(Zmx32u(std::uint64_t(v))); }
Wide saturate(Wide v) { return v > 32767 ? 32767 : v < -32768 ? -32768 : v; }

// ---- Whole planes

// 14 fractional bits; every value is cut to 16 bits.
struct Q14 {
    using Value = Zmx16s;
    static Zmx32s term(Constant c, Zmx32s s) { return wrap(Wide(c.q14) * s + 8192) >> 14; }
    static Value add(Value x, Constant c, Value a, Value b) { return Value(x + term(c, a + b)); }
    static Value sub(Value x, Constant c, Value a, Value b) { return Value(x - term(c, a + b)); }
    static Value first(Zmx16s x, Zmx16s a, Zmx16s b) { return add(x, kAlpha, a, b); }
    static Value scale(Value x, Constant c) { return Value(term(c, x)); }
    static Zmx16s sample(Value x) { return x; }
};

// Unrounded from the first step to the output. The first sum is one of samples, in 32 bits.
struct Unrounded {
    using Value = Extended;
    static Value add(Value x, Constant c, Value a, Value b) { return x + c.value() * (a + b); }
    static Value sub(Value x, Constant c, Value a, Value b) { return x - c.value() * (a + b); }
    static Value first(Zmx32s x, Zmx32s a, Zmx32s b) { return Value(x) + kAlpha.value() * Value(wrap(Wide(a) + b)); }
    static Value scale(Value x, Constant c) { return x * c.value(); }
    static Zmx32s sample(Value x) { return toSample(x); }
};

template <class T> struct PlaneSystem;
template <> struct PlaneSystem<Zmx16s> : Q14 {};
template <> struct PlaneSystem<Zmx32s> : Unrounded {};

template <class T> void forwardLine(Stroke<T> s, int n, int p) {
    using Sys = PlaneSystem<T>;
    if (n < 2) {
        s[0] = T(wrap(Wide(s[0]) * (p + 1)));
        return;
    }
    Line<T> x(n);
    if (n <= 4)
        readExt4(s, x, n);
    else
        readExt(s, x, n, 4 - p, ((p + n) & 1) + 3);
    auto e = [&](int k) { return x[k + p]; };

    Line<typename Sys::Value> v(n + 8);
    auto makeA = [&](int k) { v[k] = Sys::first(e(k), e(k - 1), e(k + 1)); };
    auto makeB = [&](int k) { v[k] = Sys::add(e(k), kBeta, v[k - 1], v[k + 1]); };
    auto makeG = [&](int k) { v[k] = Sys::add(v[k], kGamma, v[k - 1], v[k + 1]); };
    auto makeD = [&](int k) { v[k] = Sys::add(v[k], kDelta, v[k - 1], v[k + 1]); };
    makeA(-3), makeA(-1), makeA(1);
    makeB(-2), makeB(0);
    makeG(-1);
    int low = p ? n / 2 : 0, high = p ? 0 : (n + 1) / 2;
    if (p) s[high++] = Sys::sample(Sys::scale(v[-1], kK));
    for (int k = 0, count = n - p; count > 0; k += 2, count -= 2) {
        makeA(k + 3), makeB(k + 2), makeG(k + 1), makeD(k);
        s[low++] = Sys::sample(Sys::scale(v[k], kInvK));
        if (count > 1) s[high++] = Sys::sample(Sys::scale(v[k + 1], kK));
    }
}

template <class T> void inverseLine(Stroke<T> s, int n, int p) {
    using Sys = PlaneSystem<T>;
    if (n < 2) {
        s[0] = T(s[0] / (p + 1));
        return;
    }
    Line<T> x(n);
    if (n <= 4)
        readInterleaveExt4(s, x, n, p);
    else
        readInterleaveExt(s, x, n, p, p + 3, 4 - ((p + n) & 1));
    auto scaled = [&](int k) { return Sys::scale(typename Sys::Value(x[k - p]), k & 1 ? kInvK : kK); };

    Line<typename Sys::Value> v(n + 8);
    auto makeB = [&](int k) { v[k] = Sys::sub(scaled(k), kDelta, scaled(k - 1), scaled(k + 1)); };
    auto makeA = [&](int k) { v[k] = Sys::sub(scaled(k), kGamma, v[k - 1], v[k + 1]); };
    auto makeEven = [&](int k) { v[k] = Sys::sub(v[k], kBeta, v[k - 1], v[k + 1]); };
    makeB(-2), makeB(0), makeB(2);
    makeA(-1), makeA(1);
    makeEven(0);
    int out = 0;
    if (!p) s[out++] = Sys::sample(v[0]);
    for (int k = 0, count = n + p - 2; count >= 0; k += 2, count -= 2) {
        makeB(k + 4), makeA(k + 3), makeEven(k + 2);
        s[out++] = Sys::sample(Sys::sub(v[k + 1], kAlpha, v[k], v[k + 2]));
        if (count > 0) s[out++] = Sys::sample(v[k + 2]);
    }
}

// ---- Kernels

// What is common to the two integer systems: exact products, 16 fractional bits; they differ in what becomes
// of a value.
template <class T, Wide (*Keep)(Wide), Wide (*Sum)(Wide)> struct Q16 {
    using Value = Wide;
    static Value term(Constant c, Value s) { return (c.q16 * Sum(s) + 32768) >> 16; }
    static Value add(Value x, Constant c, Value a, Value b) { return Keep(x + term(c, a + b)); }
    static Value sub(Value x, Constant c, Value a, Value b) { return Keep(x - term(c, a + b)); }
    static Value lowFused(Value b, Value g0, Value g1) {
        return Keep((kInvK.q16 * b + kDeltaInvK.q16 * Sum(g0 + g1) + 32768) >> 16);
    }
    static Value scale(Value x, Constant c) { return Keep(term(c, x)); }
    static Value evenOf(Value l, Value h0, Value h1) {
        return Keep((kK.q16 * l - kDeltaInvK.q16 * Sum(h0 + h1) + 32768) >> 16);
    }
    static Value oddOf(Value h, Value b0, Value b1) {
        return Keep((kInvK.q16 * h - kGamma.q16 * Sum(b0 + b1) + 32768) >> 16);
    }
    static Value stored(bool, Value v) { return v; }
    static T sample(Value v) { return T(v); }
};
Wide wrapped(Wide v) { return wrap(v); }
Wide whole(Wide v) { return v; }

struct Saturating : Q16<Zmx16s, saturate, whole> {
    // These take their products in 32 bits.
    static Zmx32s narrowTerm(Constant c, Value s) { return wrap(c.q16 * s + 32768) >> 16; }
    static Value firstGamma(Value x, Value a, Value b) { return saturate(x + narrowTerm(kGamma, a + b)); }
    static Value lastOdd(Value h, Value b0, Value b1) {
        const Wide v = wrap(kInvK.q16 * h - kGamma.q16 * (b0 + b1) + 32768) >> 16;
        return v > 32767 ? 32767 : v;
    }
    static Value lastSample(Value x, Value a, Value b) { return saturate(x - narrowTerm(kAlpha, a + b)); }
};
struct Wrapping : Q16<Zmx32s, wrapped, wrapped> {
    static Value firstGamma(Value x, Value a, Value b) { return add(x, kGamma, a, b); }
    static Value lastOdd(Value h, Value b0, Value b1) { return oddOf(h, b0, b1); }
    static Value lastSample(Value x, Value a, Value b) { return sub(x, kAlpha, a, b); }
};
// Extended precision; what stands in a row is a float.
struct Floats : Unrounded {
    static Value evenOf(Value l, Value h0, Value h1) { return kK.value() * l - kDeltaInvK.value() * (h0 + h1); }
    static Value oddOf(Value h, Value b0, Value b1) { return kInvK.value() * h - kGamma.value() * (b0 + b1); }
    static Value firstGamma(Value x, Value a, Value b) { return add(x, kGamma, a, b); }
    static Value lastOdd(Value h, Value b0, Value b1) { return oddOf(h, b0, b1); }
    static Value lastSample(Value x, Value a, Value b) { return sub(x, kAlpha, a, b); }
    static Value stored(bool inRow, Value v) { return inRow ? Value(Zmx32f(v)) : v; }
    static Zmx32f sample(Value v) { return Zmx32f(v); }
};

template <class T> struct KernelSystem;
template <> struct KernelSystem<Zmx16s> : Saturating {};
template <> struct KernelSystem<Zmx32s> : Wrapping {};
template <> struct KernelSystem<Zmx32f> : Floats {};

// ---- One output pair: the direct taps. A pair of samples under one tap, or the middle one alone.
struct Tapped {
    Constant c;
    Extended s; // exact: two samples of any type
    Wide i;
};
template <class T> Tapped under(Constant c, T a, T b) { return {c, Extended(a) + Extended(b), Wide(a) + Wide(b)}; }
template <class T> Tapped under(Constant c, T a) { return {c, Extended(a), Wide(a)}; }
template <> Tapped under(Constant c, Zmx32f a, Zmx32f b) { return {c, Extended(a) + Extended(b), 0}; }
template <> Tapped under(Constant c, Zmx32f a) { return {c, Extended(a), 0}; }

enum class Output { ForwardLow, ForwardHigh, Inverse };

template <class T, std::size_t N> T tapSum(const Tapped (&t)[N], Output what) {
    if constexpr (std::is_same_v<T, Zmx32f>) {
        Extended sum = t[0].c.value() * t[0].s;
        for (std::size_t i = 1; i < N; ++i) sum = sum + t[i].c.value() * t[i].s;
        return Zmx32f(sum);
    } else if constexpr (std::is_same_v<T, Zmx32s>) {
        Zmx32s sum = 0;
        for (const Tapped& p : t) sum = wrap(Wide(sum) + ((p.c.q16 * Wide(wrap(p.i)) + 32768) >> 16));
        return sum;
    } else {
        Wide sum = 0;
        for (const Tapped& p : t) sum += p.c.q16 * p.i;
        if (what == Output::Inverse) return Zmx16s(saturate((sum + 32768) >> 16));
        if (what == Output::ForwardLow) return Zmx16s(std::min(wrap(sum + 32768) >> 16, 32767));
        // The middle tap is the last one; the others are added in 32 bits.
        const Wide middle = t[N - 1].c.q16 * t[N - 1].i;
        return Zmx16s(saturate((wrap(sum - middle) + middle + 32768) >> 16));
    }
}

template <class T> void forwardPair(const T* x, T* low, T* high, int q) {
    const auto& [c, g] = kForwardTaps;
    const T *l = x + q, *h = x + 1 - q; // where the low and the high sample stand
    const Tapped lowTaps[] = {under(c[4], l[-4], l[4]), under(c[3], l[-3], l[3]), under(c[2], l[-2], l[2]),
                              under(c[1], l[-1], l[1]), under(c[0], l[0])};
    const Tapped highTaps[] = {under(g[3], h[-3], h[3]), under(g[2], h[-2], h[2]), under(g[1], h[-1], h[1]),
                               under(g[0], h[0])};
    *low = tapSum<T>(lowTaps, Output::ForwardLow);
    *high = tapSum<T>(highTaps, Output::ForwardHigh);
}

template <class T> void inversePair(const T* low, const T* high, T* dst, int q) {
    const auto& [c, g] = kInverseTaps;
    const T* h = high + q; // the high sample behind the low one
    const Tapped lowPlace[] = {under(g[2], low[-1], low[1]), under(g[0], low[0]), under(c[3], h[-2], h[1]),
                               under(c[1], h[-1], h[0])};
    const T* l = low - q; // the low sample ahead of the high one
    const Tapped highPlace[] = {under(g[3], l[-1], l[2]), under(g[1], l[0], l[1]), under(c[4], high[-2], high[2]),
                                under(c[2], high[-1], high[1]), under(c[0], high[0])};
    dst[q] = tapSum<T>(lowPlace, Output::Inverse);
    dst[1 - q] = tapSum<T>(highPlace, Output::Inverse);
}

} // namespace

Zmx32s toSample(Extended v) {
    constexpr Zmx32s least = -2147483647 - 1;
    if (v > 2147483648.0) return 2147483647;
    if (v < -2147483648.0 || v == 2147483648.0) return least; // exactly 2147483648 becomes the most negative sample
    return Zmx32s(v);
}

template <class T> void forward97(Grid<T>& g, const ZmxiRect& r) {
    columns(g, r, forwardLine<T>);
    rows(g, r, forwardLine<T>);
}

template <class T> void inverse97(Grid<T>& g, const ZmxiRect& r) {
    rows(g, r, inverseLine<T>);
    columns(g, r, inverseLine<T>);
}

template <class T> void forwardLine97(const T* x, T* low, T* high, int w, int phase) {
    using Sys = KernelSystem<T>;
    const int q = phase ? 1 : 0;
    if (w == 1) return forwardPair(x, low, high, q);
    // v is indexed by position; low sample i stands at 2 i + q. What stands in a row is what lies in 0 to 2 w
    // - 1.
    Line<typename Sys::Value> v(2 * w);
    auto keep = [&](int k, auto value) { v[k] = Sys::stored(k >= 0 && k < 2 * w, value); };
    for (int k = -3 + q; k <= 2 * w + 1 + q; k += 2) keep(k, Sys::add(x[k], kAlpha, x[k - 1], x[k + 1]));
    for (int k = -2 + q; k <= 2 * w + q; k += 2) keep(k, Sys::add(x[k], kBeta, v[k - 1], v[k + 1]));
    for (int k = -1 + q; k <= 2 * w - 1 + q; k += 2)
        keep(k, k < 0 ? Sys::firstGamma(v[k], v[k - 1], v[k + 1]) : Sys::add(v[k], kGamma, v[k - 1], v[k + 1]));
    for (int i = 0; i < w; ++i) {
        const int k = 2 * i + q;
        if constexpr (std::is_same_v<T, Zmx32f>) {
            // The first one of phase 0 is scaled before it is stored.
            const Extended d = Sys::add(v[k], kDelta, v[k - 1], v[k + 1]);
            low[i] = Sys::sample(Sys::scale(Sys::stored(k > 0, d), kInvK));
        } else {
            // The last low samples take two roundings.
            const bool fused = i < w - 1 - q;
            low[i] = Sys::sample(fused ? Sys::lowFused(v[k], v[k - 1], v[k + 1])
                                       : Sys::scale(Sys::add(v[k], kDelta, v[k - 1], v[k + 1]), kInvK));
        }
        high[i] = Sys::sample(Sys::scale(v[2 * i + 1 - q], kK));
    }
}

template <class T> void inverseLine97(const T* low, const T* high, T* dst, int w, int phase) {
    using Sys = KernelSystem<T>;
    const int q = phase ? 1 : 0;
    if (w == 1) return inversePair(low, high, dst, q);
    Line<typename Sys::Value> v(2 * w);
    auto l = [&](int k) { return low[(k - q) / 2]; };      // the low sample at position k, k - q even
    auto h = [&](int k) { return high[(k - 1 + q) / 2]; }; // the high sample at position k
    auto keep = [&](int k, auto value) { v[k] = Sys::stored(k >= 0 && k < 2 * w, value); };
    const bool phase0 = q == 0;
    for (int k = -2 - q; k <= 2 * w + 2 - q; k += 2) keep(k, Sys::evenOf(l(k), h(k - 1), h(k + 1)));
    for (int k = -1 - q; k <= 2 * w + 1 - q; k += 2)
        keep(k,
             phase0 && k == 2 * w + 1 ? Sys::lastOdd(h(k), v[k - 1], v[k + 1]) : Sys::oddOf(h(k), v[k - 1], v[k + 1]));
    for (int k = -q; k <= 2 * w - q; k += 2) keep(k, Sys::sub(v[k], kBeta, v[k - 1], v[k + 1]));
    for (int k = 1 - q; k <= 2 * w - 1 - q; k += 2)
        keep(k, phase0 && k == 2 * w - 1 ? Sys::lastSample(v[k], v[k - 1], v[k + 1])
                                         : Sys::sub(v[k], kAlpha, v[k - 1], v[k + 1]));
    for (int k = 0; k < 2 * w; ++k) dst[k] = Sys::sample(v[k]);
}

// Step by step on one column of the rows, in the order stated, so that rows that are one and the same behave
// as they must.
template <class T>
void forwardLift97(const T* src0, const T* src1, const T* src2, T* srcDstLow0, T* dstLow1, T* srcDstHigh0,
                   T* srcDstHigh1, T* dstHigh2, int width) {
    using Sys = KernelSystem<T>;
    for (int i = 0; i < width; ++i) {
        dstHigh2[i] = Sys::sample(Sys::add(src1[i], kAlpha, src0[i], src2[i]));
        dstLow1[i] = Sys::sample(Sys::add(src0[i], kBeta, srcDstHigh1[i], dstHigh2[i]));
        srcDstHigh1[i] = Sys::sample(Sys::add(srcDstHigh1[i], kGamma, srcDstLow0[i], dstLow1[i]));
        if constexpr (std::is_same_v<T, Zmx32f>) {
            srcDstLow0[i] = Sys::sample(Sys::add(srcDstLow0[i], kDelta, srcDstHigh0[i], srcDstHigh1[i]));
            srcDstLow0[i] = Sys::sample(Sys::scale(srcDstLow0[i], kInvK));
        } else {
            srcDstLow0[i] = Sys::sample(Sys::lowFused(srcDstLow0[i], srcDstHigh0[i], srcDstHigh1[i]));
        }
        srcDstHigh0[i] = Sys::sample(Sys::scale(srcDstHigh0[i], kK));
    }
}

template <class T>
void inverseLift97(const T* srcLow0, const T* srcHigh0, const T* srcHigh1, const T* src0, T* srcDst1, T* srcDst2,
                   T* dst3, T* dst4, int width) {
    using Sys = KernelSystem<T>;
    for (int i = 0; i < width; ++i) {
        dst4[i] = Sys::sample(Sys::evenOf(srcLow0[i], srcHigh0[i], srcHigh1[i]));
        dst3[i] = Sys::sample(Sys::oddOf(srcHigh0[i], srcDst2[i], dst4[i]));
        srcDst2[i] = Sys::sample(Sys::sub(srcDst2[i], kBeta, srcDst1[i], dst3[i]));
        srcDst1[i] = Sys::sample(Sys::sub(srcDst1[i], kAlpha, src0[i], srcDst2[i]));
    }
}

template void forward97(Grid<Zmx16s>&, const ZmxiRect&);
template void forward97(Grid<Zmx32s>&, const ZmxiRect&);
template void inverse97(Grid<Zmx16s>&, const ZmxiRect&);
template void inverse97(Grid<Zmx32s>&, const ZmxiRect&);
template void forwardLine97(const Zmx16s*, Zmx16s*, Zmx16s*, int, int);
template void forwardLine97(const Zmx32s*, Zmx32s*, Zmx32s*, int, int);
template void forwardLine97(const Zmx32f*, Zmx32f*, Zmx32f*, int, int);
template void inverseLine97(const Zmx16s*, const Zmx16s*, Zmx16s*, int, int);
template void inverseLine97(const Zmx32s*, const Zmx32s*, Zmx32s*, int, int);
template void inverseLine97(const Zmx32f*, const Zmx32f*, Zmx32f*, int, int);

template void forwardLift97(const Zmx16s*, const Zmx16s*, const Zmx16s*, Zmx16s*, Zmx16s*, Zmx16s*, Zmx16s*, Zmx16s*,
                            int);
template void forwardLift97(const Zmx32s*, const Zmx32s*, const Zmx32s*, Zmx32s*, Zmx32s*, Zmx32s*, Zmx32s*, Zmx32s*,
                            int);
template void forwardLift97(const Zmx32f*, const Zmx32f*, const Zmx32f*, Zmx32f*, Zmx32f*, Zmx32f*, Zmx32f*, Zmx32f*,
                            int);
template void inverseLift97(const Zmx16s*, const Zmx16s*, const Zmx16s*, const Zmx16s*, Zmx16s*, Zmx16s*, Zmx16s*,
                            Zmx16s*, int);
template void inverseLift97(const Zmx32s*, const Zmx32s*, const Zmx32s*, const Zmx32s*, Zmx32s*, Zmx32s*, Zmx32s*,
                            Zmx32s*, int);
template void inverseLift97(const Zmx32f*, const Zmx32f*, const Zmx32f*, const Zmx32f*, Zmx32f*, Zmx32f*, Zmx32f*,
                            Zmx32f*, int);

} // namespace model
