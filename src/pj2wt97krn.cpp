// pj2wt97krn.cpp - the row and column kernels of the irreversible 9/7 wavelet, on samples that the caller has extended
// past the edges.
//
// Each step looks one position to either side, so an output stands on a triangle of positions. Here is the one under
// the low sample at position 0; under a high sample it ends at G, on 7 positions in place of 9.
//   x   -4 -3 -2 -1  0  1  2  3  4
//   A      -3    -1     1     3
//   B         -2     0     2
//   G            -1     1
//   D                0
// The triangles of the inverse are the same, on low samples at the even and high ones at the odd positions: an even x
// stands on 7 of them, an odd x on 9.
//
// The bands have equal counts w. At phase p, 0 or 1, low sample i stands at place 2 i + p of the line and high sample i
// at 2 i + 1 - p: between high samples i - 1 + p and i + p, and between low samples i - p and i + 1 - p.
//
// The outputs serve as the working memory of the lifting, a pass over the line for each step. Where a triangle leaves
// the line, the values outside are made aside. Forward, at phase 0, counting in samples of a band:
//   - low 0, the edge, needs G of the outer high sample -1, and so A(-2), A(-1) and B(-1);
//   - high w - 1, opposite, needs B of the other low sample w, and so A(w).
// Inverse, likewise, even 0 needs A of odd -1, and odd w - 1 needs the whole triangle of even w. Phase 1 is the mirror
// image of phase 0.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2wt97step.h"

#include "pj2wt.h"
#include "pj2wt97pair.h"

namespace zmx::wt97 {
namespace {

// A row or a column: element i lies i strides behind the first.
template <class T> struct Line {
    Zmx8u* first;
    std::ptrdiff_t stride;
    T operator[](int i) const { return load<T>(first + stride * i, 0); }
    void set(int i, T v) const { store(first + stride * i, 0, v); }
};
template <class T> struct ConstLine {
    const Zmx8u* first;
    std::ptrdiff_t stride;
    T operator[](int i) const { return load<T>(first + stride * i, 0); }
};

// The band samples at the two ends of a line, and outside of it. An index `outer` or `other` counts in both bands.
struct Ends {
    int edge, opposite;     // the low sample, and the high one, that have a neighbour outside
    int outer, beyond;      // outside, next to the edge: the first and the second
    int other, beyondOther; // the same at the opposite end
    constexpr Ends(int w, int p)
        : edge(p ? w - 1 : 0), opposite(p ? 0 : w - 1), outer(p ? w : -1), beyond(p ? w + 1 : -2), other(p ? -1 : w),
          beyondOther(p ? -2 : w + 1) {}
};

// ---- particulars of the number systems, all required

// How many low samples, from the first one on, take the last step and the scale at once: of integers all but the last,
// or the last two; of floats the first one of phase 0.
template <class T> constexpr int lowsAtOnce(int w, int p) { return w - 1 - p; }
template <> constexpr int lowsAtOnce<Zmx32f>(int, int p) { return 1 - p; }

// At phase 0 the rows of 16-bit samples have three steps with products of 32 bits, which wrap: G of the outer high
// sample, and on the way back A of the other one, limited from above alone, and the last sample.
constexpr Zmx32s wrappedTerm(Zmx32s c, Zmx32s s) { return wrapAdd(wrapMul(c, s), 32768) >> 16; }

template <class T, class V> V outerG(V a, V b0, V b1, int) { return lift(a, kSteps<T>.gamma, b0, b1); }
template <> Zmx16s outerG<Zmx16s>(Zmx16s a, Zmx16s b0, Zmx16s b1, int p) {
    if (p) return lift(a, kQ16Steps.gamma, b0, b1);
    return saturate16s(a + wrappedTerm(kQ16Steps.gamma, b0 + b1));
}
template <class T, class V> V otherA(V high, V b0, V b1, int) { return backA<T>(high, b0, b1); }
template <> Zmx16s otherA<Zmx16s>(Zmx16s high, Zmx16s b0, Zmx16s b1, int p) {
    if (p) return backA<Zmx16s>(high, b0, b1);
    // 32 bits shifted by 16 leave nothing to limit.
    const Zmx32s products = wrapSub(wrapMul<Zmx32s>(kQ16Steps.oneOverK, high), wrapMul(kQ16Steps.gamma, b0 + b1));
    return Zmx16s(wrapAdd(products, 32768) >> 16);
}
template <class T, class V> V oppositeOdd(V a, V even0, V even1, int) {
    return liftBack(a, kSteps<T>.alpha, even0, even1);
}
template <> Zmx16s oppositeOdd<Zmx16s>(Zmx16s a, Zmx16s even0, Zmx16s even1, int p) {
    if (p) return liftBack(a, kQ16Steps.alpha, even0, even1);
    return saturate16s(a - wrappedTerm(kQ16Steps.alpha, even0 + even1));
}

// ---- a line

// Nothing may overlap: the source is read again after outputs have been written.
template <class T> void forwardLine(ConstLine<T> x, Line<T> low, Line<T> high, int w, int p) {
    using V = Aside<T>;
    constexpr auto c = kSteps<T>;
    if (w == 1) {
        const auto y = [=](int k) { return x[k]; };
        const T l = pairLow<T>(y, p), h = pairHigh<T>(y, p);
        low.set(0, l);
        return high.set(0, h);
    }
    const auto even = [=](int i) { return x[2 * i + p]; };
    const auto odd = [=](int i) { return x[2 * i + 1 - p]; };
    const auto a = [=](int i) { return lift(aside(odd(i)), c.alpha, aside(even(i - p)), aside(even(i + 1 - p))); };
    const Ends e(w, p);

    // A, over the whole band, and what lies outside on either side of it.
    for (int i = 0; i < w; ++i) high.set(i, lift(odd(i), c.alpha, even(i - p), even(i + 1 - p)));
    const V aOuter = a(e.outer);
    const V bOuter = lift(aside(even(e.outer)), c.beta, a(e.beyond), aOuter);
    const V bOther = lift(aside(even(e.other)), c.beta, aside(high[e.opposite]), a(e.other));

    // B: the edge has an A aside, the others stand between two of the line.
    low.set(e.edge, T(lift(aside(even(e.edge)), c.beta, aOuter, aside(high[e.edge]))));
    for (int i = 1 - p; i < w - p; ++i) low.set(i, lift(even(i), c.beta, high[i - 1 + p], high[i + p]));

    // G
    const V gOuter = outerG<T>(aOuter, bOuter, aside(low[e.edge]), p);
    high.set(e.opposite, T(lift(aside(high[e.opposite]), c.gamma, aside(low[e.opposite]), bOther)));
    for (int i = p; i < w - 1 + p; ++i) high.set(i, lift(high[i], c.gamma, low[i - p], low[i + 1 - p]));

    // D, and the scale of both bands.
    const int atOnce = lowsAtOnce<T>(w, p);
    low.set(e.edge, lowOf(e.edge < atOnce, aside(low[e.edge]), gOuter, aside(high[e.edge])));
    for (int i = 1 - p; i < w - p; ++i) low.set(i, lowOf(i < atOnce, low[i], high[i - 1 + p], high[i + p]));
    for (int i = 0; i < w; ++i) high.set(i, scale(c.k, high[i]));
}

template <class T> void inverseLine(ConstLine<T> low, ConstLine<T> high, Line<T> x, int w, int p) {
    using V = Aside<T>;
    constexpr auto c = kSteps<T>;
    if (w == 1) {
        const auto y = [=](int k) { return (k - p) % 2 == 0 ? low[(k - p) / 2] : high[(k - 1 + p) / 2]; };
        const T even = pairEven<T>(y, p), odd = pairOdd<T>(y, p);
        x.set(p, even);
        return x.set(1 - p, odd);
    }
    const auto highAside = [=](int i) { return aside(high[i]); };
    const auto b = [=](int i) { return backB<T>(aside(low[i]), highAside(i - 1 + p), highAside(i + p)); };
    const auto even = [=](int i) { return x[2 * i + p]; };
    const auto odd = [=](int i) { return x[2 * i + 1 - p]; };
    const auto setEven = [=](int i, T v) { x.set(2 * i + p, v); };
    const auto setOdd = [=](int i, T v) { x.set(2 * i + 1 - p, v); };
    const Ends e(w, p);

    // B, over the whole band.
    for (int i = 0; i < w; ++i) setEven(i, backB<T>(low[i], high[i - 1 + p], high[i + p]));
    const V bOther = b(e.other);

    // A: the opposite one has a B aside. Two A lie outside, one at either end.
    setOdd(e.opposite, T(backA<T>(highAside(e.opposite), aside(even(e.opposite)), bOther)));
    for (int i = p; i < w - 1 + p; ++i) setOdd(i, backA<T>(high[i], even(i - p), even(i + 1 - p)));
    const V aOuter = backA<T>(highAside(e.outer), b(e.outer), aside(even(e.edge)));
    const V aOther = otherA<T>(highAside(e.other), bOther, b(e.beyondOther), p);

    // Even samples; the other one, outside, ahead of the odd samples that it stands on being finished.
    const V evenOther = liftBack(bOther, c.beta, aside(odd(e.opposite)), aOther);
    setEven(e.edge, T(liftBack(aside(even(e.edge)), c.beta, aOuter, aside(odd(e.edge)))));
    for (int i = 1 - p; i < w - p; ++i) setEven(i, liftBack(even(i), c.beta, odd(i - 1 + p), odd(i + p)));

    // Odd samples.
    setOdd(e.opposite, T(oppositeOdd<T>(aside(odd(e.opposite)), aside(even(e.opposite)), evenOther, p)));
    for (int i = p; i < w - 1 + p; ++i) setOdd(i, liftBack(odd(i), c.alpha, even(i - p), even(i + 1 - p)));
}

// ---- all lines: rows one after the other, or columns. Only floats have columns; integer columns are streamed through
// the column lifting.

enum class Lie { across, down };

// The step of a plane is the stride of its columns. In a row samples stand side by side, as the compiler has to know.
template <Lie lie, class T> Line<T> lineAt(T* plane, int step, int i) {
    if constexpr (lie == Lie::across) return {rowAt(plane, step, i), sizeof(T)};
    return {rowAt(plane + i, 0, 0), step};
}
template <Lie lie, class T> ConstLine<T> lineAt(const T* plane, int step, int i) {
    if constexpr (lie == Lie::across) return {rowAt(plane, step, i), sizeof(T)};
    return {rowAt(plane + i, 0, 0), step};
}

template <Lie lie, class T>
ZmxStatus forward(const T* src, int srcStep, T* low, int lowStep, T* high, int highStep, ZmxiSize roi, int phase) {
    if (ZmxStatus bad = kernelArgs(src, srcStep, low, lowStep, high, highStep, roi)) return bad;
    const int lines = lie == Lie::across ? roi.height : roi.width, pairs = lie == Lie::across ? roi.width : roi.height;
    inFullPrecision<kStepsOnX87<T>>([=] {
        for (int i = 0; i < lines; ++i)
            forwardLine<T>(lineAt<lie>(src, srcStep, i), lineAt<lie>(low, lowStep, i), lineAt<lie>(high, highStep, i),
                           pairs, phase != 0);
    });
    return zmxStsNoErr;
}
template <Lie lie, class T>
ZmxStatus inverse(const T* low, int lowStep, const T* high, int highStep, ZmxiSize roi, T* dst, int dstStep,
                  int phase) {
    if (ZmxStatus bad = kernelArgs(low, lowStep, high, highStep, dst, dstStep, roi)) return bad;
    const int lines = lie == Lie::across ? roi.height : roi.width, pairs = lie == Lie::across ? roi.width : roi.height;
    inFullPrecision<kStepsOnX87<T>>([=] {
        for (int i = 0; i < lines; ++i)
            inverseLine<T>(lineAt<lie>(low, lowStep, i), lineAt<lie>(high, highStep, i), lineAt<lie>(dst, dstStep, i),
                           pairs, phase != 0);
    });
    return zmxStsNoErr;
}

} // namespace
} // namespace zmx::wt97

using namespace zmx::wt97;

ZmxStatus zmxiWTFwdRow_D97_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, Zmx16s* pDstLow, int dstLowStep,
                                          Zmx16s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase) {
    return forward<Lie::across>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
}
ZmxStatus zmxiWTFwdRow_D97_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, Zmx32s* pDstLow, int dstLowStep,
                                          Zmx32s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase) {
    return forward<Lie::across>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
}
ZmxStatus zmxiWTFwdRow_D97_JPEG2K_32f_C1R(const Zmx32f* pSrc, int srcStep, Zmx32f* pDstLow, int dstLowStep,
                                          Zmx32f* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase) {
    return forward<Lie::across>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
}
ZmxStatus zmxiWTInvRow_D97_JPEG2K_16s_C1R(const Zmx16s* pSrcLow, int srcLowStep, const Zmx16s* pSrcHigh,
                                          int srcHighStep, ZmxiSize srcRoiSize, Zmx16s* pDst, int dstStep, int phase) {
    return inverse<Lie::across>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
}
ZmxStatus zmxiWTInvRow_D97_JPEG2K_32s_C1R(const Zmx32s* pSrcLow, int srcLowStep, const Zmx32s* pSrcHigh,
                                          int srcHighStep, ZmxiSize srcRoiSize, Zmx32s* pDst, int dstStep, int phase) {
    return inverse<Lie::across>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
}
ZmxStatus zmxiWTInvRow_D97_JPEG2K_32f_C1R(const Zmx32f* pSrcLow, int srcLowStep, const Zmx32f* pSrcHigh,
                                          int srcHighStep, ZmxiSize srcRoiSize, Zmx32f* pDst, int dstStep, int phase) {
    return inverse<Lie::across>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
}

ZmxStatus zmxiWTFwdCol_D97_JPEG2K_32f_C1R(const Zmx32f* pSrc, int srcStep, Zmx32f* pDstLow, int dstLowStep,
                                          Zmx32f* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase) {
    return forward<Lie::down>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
}
ZmxStatus zmxiWTInvCol_D97_JPEG2K_32f_C1R(const Zmx32f* pSrcLow, int srcLowStep, const Zmx32f* pSrcHigh,
                                          int srcHighStep, ZmxiSize srcRoiSize, Zmx32f* pDst, int dstStep, int phase) {
    return inverse<Lie::down>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
}
