// pj2wt97krn.cpp - the row and column kernels of the irreversible 9/7 wavelet, on samples that the caller has extended
// past the edges. The outputs serve as the working memory of the lifting; values outside the bands are made aside.
//
// The bands have equal counts. At phase 0 sample 0 is a low-pass one, otherwise a high-pass one: low sample i stands at
// line sample 2 i + p, high sample i at 2 i + 1 - p.
#include "pj2wt.h"
#include "pj2wt97sys.h"
#include "pj2wt97taps.h"

namespace zmx {
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

// What differs between the number systems beyond their arithmetic: the low samples that are made in two stages, and
// single products of the 16-bit rows that are taken in 32 bits, where they wrap. All required.
template <class System> struct Particulars {
    static constexpr bool narrowProducts = false;
    static bool inStages(int i, int w, int p) { return i >= w - 1 - p; } // the last low sample, or the last two
};
template <> struct Particulars<Wt97Q16System<Zmx16s>> {
    static constexpr bool narrowProducts = true;
    static bool inStages(int i, int w, int p) { return i >= w - 1 - p; }
};
template <> struct Particulars<Wt97FloatSystem> {
    static constexpr bool narrowProducts = false;
    static bool inStages(int i, int, int p) { return i > 0 || p != 0; } // all but the first of phase 0
};

// (c s + 32768) >> 16 with everything in 32 bits.
constexpr Zmx32s wrappedTerm(Zmx32s c, Zmx32s s) { return wrapAdd(wrapMul(c, s), 32768) >> 16; }

template <class System, class T = typename System::T>
void forwardLine(ConstLine<T> x, Line<T> low, Line<T> high, int w, int p) {
    using S = System;
    using C = typename S::C;
    using V = typename S::Aside;
    if (w == 1) return Wt97Taps<T>::forward(x, low, high, p);
    const auto a = [=](int k) { return S::lift(V(x[k]), C::alpha, V(x[k - 1]), V(x[k + 1])); };

    // Ahead of the bands.
    const V aBefore = a(p ? -2 : -1);
    for (int i = 0; i < w; ++i) high.set(i, T(a(2 * i + 1 - p)));
    const V bBefore = p ? S::lift(V(x[-1]), C::beta, aBefore, V(high[0])) : S::lift(V(x[-2]), C::beta, a(-3), aBefore);
    // Behind them.
    const V aBehind = a(p ? 2 * w : 2 * w + 1);

    for (int i = 1 - p; i < w - p; ++i)
        low.set(i, T(S::lift(V(x[2 * i + p]), C::beta, V(high[i - 1 + p]), V(high[i + p]))));
    if (p)
        low.set(w - 1, T(S::lift(V(x[2 * w - 1]), C::beta, V(high[w - 1]), aBehind)));
    else
        low.set(0, T(S::lift(V(x[0]), C::beta, aBefore, V(high[0]))));
    const V bBehind = p ? S::lift(V(x[2 * w + 1]), C::beta, aBehind, a(2 * w + 2))
                        : S::lift(V(x[2 * w]), C::beta, V(high[w - 1]), aBehind);

    V gOutside; // ahead at phase 0, behind otherwise
    if (p) {
        gOutside = S::lift(aBehind, C::gamma, V(low[w - 1]), bBehind);
        high.set(0, T(S::lift(V(high[0]), C::gamma, bBefore, V(low[0]))));
    } else {
        if constexpr (Particulars<S>::narrowProducts)
            gOutside = S::narrow(aBefore + wrappedTerm(C::gamma, bBefore + low[0]));
        else
            gOutside = S::lift(aBefore, C::gamma, bBefore, V(low[0]));
        high.set(w - 1, T(S::lift(V(high[w - 1]), C::gamma, V(low[w - 1]), bBehind)));
    }
    for (int i = p; i < w - 1 + p; ++i) high.set(i, T(S::lift(V(high[i]), C::gamma, V(low[i - p]), V(low[i + 1 - p]))));

    for (int i = 0; i < w; ++i) {
        const V g0 = i - 1 + p < 0 ? gOutside : V(high[i - 1 + p]), g1 = i + p == w ? gOutside : V(high[i + p]);
        low.set(i,
                T(Particulars<S>::inStages(i, w, p) ? S::lowInStages(V(low[i]), g0, g1) : S::low(V(low[i]), g0, g1)));
    }
    for (int i = 0; i < w; ++i) high.set(i, T(S::scale(C::k, V(high[i]))));
}

template <class System, class T = typename System::T>
void inverseLine(ConstLine<T> low, ConstLine<T> high, Line<T> x, int w, int p) {
    using S = System;
    using C = typename S::C;
    using V = typename S::Aside;
    if (w == 1) return Wt97Taps<T>::inverse(low, high, x, p);
    // Even and odd by absolute position: even i is line sample 2 i + p, odd i line sample 2 i + 1 - p.
    const auto b = [=](int i) { return S::backB(V(low[i]), V(high[i - 1 + p]), V(high[i + p])); };
    const auto even = [=](int i) { return V(x[2 * i + p]); };
    const auto odd = [=](int i) { return V(x[2 * i + 1 - p]); };

    for (int i = 0; i < w; ++i) x.set(2 * i + p, T(b(i)));
    const V bBefore = b(-1), bBehind = b(w);
    // Odd i has even i - p and i - p + 1 at its sides.
    if (p)
        x.set(0, T(S::backA(V(high[0]), bBefore, even(0))));
    else
        x.set(2 * w - 1, T(S::backA(V(high[w - 1]), even(w - 1), bBehind)));
    for (int i = p; i < w - 1 + p; ++i) x.set(2 * i + 1 - p, T(S::backA(V(high[i]), even(i - p), even(i - p + 1))));
    const V aBefore = p ? S::backA(V(high[-1]), b(-2), bBefore) : S::backA(V(high[-1]), bBefore, even(0));
    V aBehind;
    if (p)
        aBehind = S::backA(V(high[w]), even(w - 1), bBehind);
    else if constexpr (Particulars<S>::narrowProducts)
        aBehind =
            V(wrapAdd(wrapSub(wrapMul<Zmx32s>(C::oneOverK, high[w]), wrapMul<Zmx32s>(C::gamma, bBehind + b(w + 1))),
                      32768) >>
              16);
    else
        aBehind = S::backA(V(high[w]), bBehind, b(w + 1));

    // Even i has odd i - 1 + p and i + p at its sides.
    const V outside =
        p ? S::liftBack(bBefore, C::beta, aBefore, odd(0)) : S::liftBack(bBehind, C::beta, odd(w - 1), aBehind);
    for (int i = 0; i < w; ++i) {
        const V a0 = i - 1 + p < 0 ? aBefore : odd(i - 1 + p), a1 = i + p == w ? aBehind : odd(i + p);
        x.set(2 * i + p, T(S::liftBack(even(i), C::beta, a0, a1)));
    }
    for (int i = p; i < w - 1 + p; ++i)
        x.set(2 * i + 1 - p, T(S::liftBack(odd(i), C::alpha, even(i - p), even(i - p + 1))));
    if (p)
        x.set(0, T(S::liftBack(odd(0), C::alpha, outside, even(0))));
    else if constexpr (Particulars<S>::narrowProducts)
        x.set(2 * w - 1, S::narrow(odd(w - 1) - wrappedTerm(C::alpha, even(w - 1) + outside)));
    else
        x.set(2 * w - 1, T(S::liftBack(odd(w - 1), C::alpha, even(w - 1), outside)));
}

template <class System, class T>
ZmxStatus forwardRows(const T* src, int srcStep, T* low, int lowStep, T* high, int highStep, ZmxiSize roi, int phase) {
    if (ZmxStatus bad = kernelArgs(src, srcStep, low, lowStep, high, highStep, roi)) return bad;
    for (int y = 0; y < roi.height; ++y)
        forwardLine<System>({rowAt(src, srcStep, y), sizeof(T)}, {rowAt(low, lowStep, y), sizeof(T)},
                            {rowAt(high, highStep, y), sizeof(T)}, roi.width, phase != 0);
    return zmxStsNoErr;
}
template <class System, class T>
ZmxStatus inverseRows(const T* low, int lowStep, const T* high, int highStep, ZmxiSize roi, T* dst, int dstStep,
                      int phase) {
    if (ZmxStatus bad = kernelArgs(low, lowStep, high, highStep, dst, dstStep, roi)) return bad;
    for (int y = 0; y < roi.height; ++y)
        inverseLine<System>({rowAt(low, lowStep, y), sizeof(T)}, {rowAt(high, highStep, y), sizeof(T)},
                            {rowAt(dst, dstStep, y), sizeof(T)}, roi.width, phase != 0);
    return zmxStsNoErr;
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiWTFwdRow_D97_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, Zmx16s* pDstLow, int dstLowStep,
                                          Zmx16s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase) {
    return forwardRows<Wt97Q16System<Zmx16s>>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize,
                                              phase);
}
ZmxStatus zmxiWTFwdRow_D97_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, Zmx32s* pDstLow, int dstLowStep,
                                          Zmx32s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase) {
    return forwardRows<Wt97Q16System<Zmx32s>>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize,
                                              phase);
}
ZmxStatus zmxiWTFwdRow_D97_JPEG2K_32f_C1R(const Zmx32f* pSrc, int srcStep, Zmx32f* pDstLow, int dstLowStep,
                                          Zmx32f* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase) {
    return forwardRows<Wt97FloatSystem>(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
}
ZmxStatus zmxiWTInvRow_D97_JPEG2K_16s_C1R(const Zmx16s* pSrcLow, int srcLowStep, const Zmx16s* pSrcHigh,
                                          int srcHighStep, ZmxiSize srcRoiSize, Zmx16s* pDst, int dstStep, int phase) {
    return inverseRows<Wt97Q16System<Zmx16s>>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep,
                                              phase);
}
ZmxStatus zmxiWTInvRow_D97_JPEG2K_32s_C1R(const Zmx32s* pSrcLow, int srcLowStep, const Zmx32s* pSrcHigh,
                                          int srcHighStep, ZmxiSize srcRoiSize, Zmx32s* pDst, int dstStep, int phase) {
    return inverseRows<Wt97Q16System<Zmx32s>>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep,
                                              phase);
}
ZmxStatus zmxiWTInvRow_D97_JPEG2K_32f_C1R(const Zmx32f* pSrcLow, int srcLowStep, const Zmx32f* pSrcHigh,
                                          int srcHighStep, ZmxiSize srcRoiSize, Zmx32f* pDst, int dstStep, int phase) {
    return inverseRows<Wt97FloatSystem>(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
}

// Only floats have column kernels; integer columns are streamed through the column lifting.
ZmxStatus zmxiWTFwdCol_D97_JPEG2K_32f_C1R(const Zmx32f* pSrc, int srcStep, Zmx32f* pDstLow, int dstLowStep,
                                          Zmx32f* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase) {
    if (ZmxStatus bad = kernelArgs(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize)) return bad;
    for (int i = 0; i < dstRoiSize.width; ++i)
        forwardLine<Wt97FloatSystem>({rowAt(pSrc + i, 0, 0), srcStep}, {rowAt(pDstLow + i, 0, 0), dstLowStep},
                                     {rowAt(pDstHigh + i, 0, 0), dstHighStep}, dstRoiSize.height, phase != 0);
    return zmxStsNoErr;
}
ZmxStatus zmxiWTInvCol_D97_JPEG2K_32f_C1R(const Zmx32f* pSrcLow, int srcLowStep, const Zmx32f* pSrcHigh,
                                          int srcHighStep, ZmxiSize srcRoiSize, Zmx32f* pDst, int dstStep, int phase) {
    if (ZmxStatus bad = kernelArgs(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, pDst, dstStep, srcRoiSize)) return bad;
    for (int i = 0; i < srcRoiSize.width; ++i)
        inverseLine<Wt97FloatSystem>({rowAt(pSrcLow + i, 0, 0), srcLowStep}, {rowAt(pSrcHigh + i, 0, 0), srcHighStep},
                                     {rowAt(pDst + i, 0, 0), dstStep}, srcRoiSize.height, phase != 0);
    return zmxStsNoErr;
}
