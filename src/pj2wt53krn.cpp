// pj2wt53krn.cpp - the row and column kernels of the reversible 5/3 wavelet: the lifting of pj2wt53 on samples that the
// caller has extended past the edges.
//
// The bands have equal counts. At phase 0 the first sample is a low-pass one, otherwise a high-pass one.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2wt.h"
#include "pj2wt53.h"

namespace zmx {
namespace {

// The lifting of one band sample needs a high (forward) or even (inverse) value that lies outside: the one ahead of the
// first at one phase, the one behind the last at the other. It is made aside and not stored.

template <class T> void forwardRow(const Zmx8u* x, Zmx8u* low, Zmx8u* high, int w, int p) {
    const int v = p ? w : -1;
    const T aside = highOf(load<T>(x, 2 * v + 1 - p), load<T>(x, 2 * v - p), load<T>(x, 2 * v + 2 - p));
    highsOf<T>(x, p, high, 0, w);
    lowsOf<T>(x, p, high, low, 1 - p, w - p);
    if (p)
        store(low, w - 1, lowOf(load<T>(x, 2 * w - 1), load<T>(high, w - 1), aside));
    else
        store(low, 0, lowOf(load<T>(x, 0), aside, load<T>(high, 0)));
}

template <class T> void inverseRow(const Zmx8u* low, const Zmx8u* high, Zmx8u* x, int w, int p) {
    const auto even = [=](int i) { return evenOf(load<T>(low, i), load<T>(high, i - 1 + p), load<T>(high, i + p)); };
    if (p) store(x, 0, oddOf(load<T>(high, 0), even(-1), even(0)));
    pairsOf<T>(low, high, p, x, 0, w - p);
    if (p) store(x, 2 * w - 1, even(w - 1));
}

// Rows of a plane as samples of a line.
struct Rows {
    const Zmx8u* base;
    int step;
    const Zmx8u* operator()(int r) const { return rowAt(base, step, r); }
};

template <class T>
void forwardColumns(Rows x, Zmx8u* low, int lowStep, Zmx8u* high, int highStep, ZmxiSize roi, int p) {
    const int h = roi.height, v = p ? h : -1;
    const auto highRow = [=](int r) { return rowAt(high, highStep, r); };
    for (int r = 0; r < h; ++r) {
        liftRow<T, highOf<T>>(highRow(r), x(2 * r + 1 - p), x(2 * r - p), x(2 * r + 2 - p), roi.width);
        const int made = r - p; // the low row whose neighbours are done
        if (made >= 1 - p)
            liftRow<T, lowOf<T>>(rowAt(low, lowStep, made), x(2 * made + p), highRow(made - 1 + p), highRow(made + p),
                                 roi.width);
    }
    const int last = p ? h - 1 : 0;
    const Zmx8u *centre = x(2 * v + 1 - p), *side0 = x(2 * v - p), *side1 = x(2 * v + 2 - p), *even = x(2 * last + p);
    const Zmx8u* inner = highRow(last);
    Zmx8u* dst = rowAt(low, lowStep, last);
    for (int i = 0; i < roi.width; ++i)
        store(dst, i,
              lowOf(load<T>(even, i), load<T>(inner, i),
                    highOf(load<T>(centre, i), load<T>(side0, i), load<T>(side1, i))));
}

template <class T> void inverseColumns(Rows low, Rows high, Zmx8u* dst, int dstStep, ZmxiSize roi, int p) {
    const int h = roi.height, v = p ? -1 : h;
    const auto x = [=](int r) { return rowAt(dst, dstStep, r); };
    const auto evenRow = [=](int r) {
        liftRow<T, evenOf<T>>(x(2 * r + p), low(r), high(r - 1 + p), high(r + p), roi.width);
    };
    const auto oddRow = [=](int r) {
        liftRow<T, oddOf<T>>(x(2 * r + 1 - p), high(r), x(2 * r - p), x(2 * r + 2 - p), roi.width);
    };
    evenRow(0);
    for (int r = 1; r < h; ++r) {
        evenRow(r);
        oddRow(r - 1 + p);
    }
    // Low row -1 lies a high step ahead of row 0, not a low step: required.
    const Zmx8u* outside = p ? rowAt(low.base, high.step, -1) : low(v);
    const Zmx8u *side0 = high(v - 1 + p), *side1 = high(v + p);
    const int last = p ? 0 : h - 1;
    const Zmx8u *centre = high(last), *inner = x(p ? 1 : 2 * last);
    Zmx8u* odd = x(2 * last + 1 - p);
    for (int i = 0; i < roi.width; ++i)
        store(odd, i,
              oddOf(load<T>(centre, i), load<T>(inner, i),
                    evenOf(load<T>(outside, i), load<T>(side0, i), load<T>(side1, i))));
}

template <class T>
ZmxStatus forwardRows(const T* src, int srcStep, T* low, int lowStep, T* high, int highStep, ZmxiSize roi, int phase) {
    return kernelRows(src, srcStep, low, lowStep, high, highStep, roi, [=](int y) {
        forwardRow<T>(rowAt(src, srcStep, y), rowAt(low, lowStep, y), rowAt(high, highStep, y), roi.width, phase != 0);
    });
}
template <class T>
ZmxStatus inverseRows(const T* low, int lowStep, const T* high, int highStep, ZmxiSize roi, T* dst, int dstStep,
                      int phase) {
    return kernelRows(low, lowStep, high, highStep, dst, dstStep, roi, [=](int y) {
        inverseRow<T>(rowAt(low, lowStep, y), rowAt(high, highStep, y), rowAt(dst, dstStep, y), roi.width, phase != 0);
    });
}
template <class T>
ZmxStatus forwardCols(const T* src, int srcStep, T* low, int lowStep, T* high, int highStep, ZmxiSize roi, int phase) {
    if (ZmxStatus bad = kernelArgs(src, srcStep, low, lowStep, high, highStep, roi)) return bad;
    forwardColumns<T>({rowAt(src, 0, 0), srcStep}, rowAt(low, 0, 0), lowStep, rowAt(high, 0, 0), highStep, roi,
                      phase != 0);
    return zmxStsNoErr;
}
template <class T>
ZmxStatus inverseCols(const T* low, int lowStep, const T* high, int highStep, ZmxiSize roi, T* dst, int dstStep,
                      int phase) {
    if (ZmxStatus bad = kernelArgs(low, lowStep, high, highStep, dst, dstStep, roi)) return bad;
    inverseColumns<T>({rowAt(low, 0, 0), lowStep}, {rowAt(high, 0, 0), highStep}, rowAt(dst, 0, 0), dstStep, roi,
                      phase != 0);
    return zmxStsNoErr;
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiWTFwdRow_B53_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, Zmx16s* pDstLow, int dstLowStep,
                                          Zmx16s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase) {
    return forwardRows(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
}
ZmxStatus zmxiWTFwdRow_B53_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, Zmx32s* pDstLow, int dstLowStep,
                                          Zmx32s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase) {
    return forwardRows(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
}
ZmxStatus zmxiWTFwdCol_B53_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, Zmx16s* pDstLow, int dstLowStep,
                                          Zmx16s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase) {
    return forwardCols(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
}
ZmxStatus zmxiWTFwdCol_B53_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, Zmx32s* pDstLow, int dstLowStep,
                                          Zmx32s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase) {
    return forwardCols(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstRoiSize, phase);
}
ZmxStatus zmxiWTInvRow_B53_JPEG2K_16s_C1R(const Zmx16s* pSrcLow, int srcLowStep, const Zmx16s* pSrcHigh,
                                          int srcHighStep, ZmxiSize srcRoiSize, Zmx16s* pDst, int dstStep, int phase) {
    return inverseRows(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
}
ZmxStatus zmxiWTInvRow_B53_JPEG2K_32s_C1R(const Zmx32s* pSrcLow, int srcLowStep, const Zmx32s* pSrcHigh,
                                          int srcHighStep, ZmxiSize srcRoiSize, Zmx32s* pDst, int dstStep, int phase) {
    return inverseRows(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
}
ZmxStatus zmxiWTInvCol_B53_JPEG2K_16s_C1R(const Zmx16s* pSrcLow, int srcLowStep, const Zmx16s* pSrcHigh,
                                          int srcHighStep, ZmxiSize srcRoiSize, Zmx16s* pDst, int dstStep, int phase) {
    return inverseCols(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
}
ZmxStatus zmxiWTInvCol_B53_JPEG2K_32s_C1R(const Zmx32s* pSrcLow, int srcLowStep, const Zmx32s* pSrcHigh,
                                          int srcHighStep, ZmxiSize srcRoiSize, Zmx32s* pDst, int dstStep, int phase) {
    return inverseCols(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcRoiSize, pDst, dstStep, phase);
}
