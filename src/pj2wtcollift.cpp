// pj2wtcollift.cpp - column lifting of both wavelets: one stage of the lifting over rows that the caller holds.
//
// A caller that streams a tile from top to bottom has no need of the whole plane: it holds a few rows in a ring and
// calls one stage for every two rows of source. The stage finishes two rows and leaves the rows between the steps to
// the next one. Between two calls the caller turns the ring: the rows that the next stage looks back at step down by
// one name, the finished ones go out, and their memory comes back in for the rows that are made anew. At the edges of a
// tile it mirrors, by passing one row for two that are only read.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2wt53.h"
#include "pj2wt97step.h"
#include "pjargs.h"

namespace zmx {
namespace {

// Samples of rows at any address: the caller's row step need not be a multiple of the sample.
template <class T> T at(const T* row, int i) { return load<T>(rowAt(row, 0, 0), i); }
template <class T> void put(T* row, int i, T v) { store(rowAt(row, 0, 0), i, v); }

// ---- 5/3: a high row stands on three source rows, a low one on two high rows and a source row. With n the number of
// rows of either band so far:
//   src0, src1, src2   source rows 2 n, 2 n + 1, 2 n + 2
//   high0, high1       high row n - 1, of the call before; high row n, made here
//   low0               low row n, made here
template <class T>
ZmxStatus forward53(const T* src0, const T* src1, const T* src2, T* low0, const T* high0, T* high1, int width) {
    if (ZmxStatus bad = Args().ptr(src0).ptr(src1).ptr(src2).ptr(low0).ptr(high0).ptr(high1).size(width)) return bad;
    for (int i = 0; i < width; ++i) {
        const T even = at(src0, i), d = highOf(at(src1, i), even, at(src2, i));
        const T low = lowOf(even, at(high0, i), d);
        put(high1, i, d);
        put(low0, i, low);
    }
    return zmxStsNoErr;
}

// With n the number of odd rows so far:
//   low1, high0, high1   low row n + 1, high rows n and n + 1
//   src0                 row 2 n, of the call before
//   dst1, dst2           rows 2 n + 1 and 2 n + 2, made here
template <class T>
ZmxStatus inverse53(const T* low1, const T* high0, const T* high1, const T* src0, T* dst1, T* dst2, int width) {
    if (ZmxStatus bad = Args().ptr(low1).ptr(high0).ptr(high1).ptr(src0).ptr(dst1).ptr(dst2).size(width)) return bad;
    for (int i = 0; i < width; ++i) {
        const T e = evenOf(at(low1, i), at(high0, i), at(high1, i));
        put(dst1, i, oddOf(at(high0, i), at(src0, i), e));
        put(dst2, i, e);
    }
    return zmxStsNoErr;
}

// ---- 9/7: a pass over the row for each step, in the order of the steps; what a pass stores is rounded.

// dst = step(centre, side0, side1)
template <class T, class Step>
void pass(T* dst, const T* centre, const T* side0, const T* side1, int width, Step step) {
    for (int i = 0; i < width; ++i) put(dst, i, step(at(centre, i), at(side0, i), at(side1, i)));
}

// The four steps run behind each other down the tile. With n the number of finished rows of either band:
//   src0, src1, src2   source rows 2 n + 2, 2 n + 3, 2 n + 4
//   high2              takes A(2 n + 3)
//   low1               takes B(2 n + 2)
//   high1              holds A(2 n + 1), becomes G(2 n + 1)
//   low0               holds B(2 n), becomes the finished low row n
//   high0              holds G(2 n - 1), becomes the finished high row n - 1
// The next call has high1 as high0, high2 as high1 and low1 as low0.
template <class T>
ZmxStatus forward97(const T* src0, const T* src1, const T* src2, T* low0, T* low1, T* high0, T* high1, T* high2,
                    int width) {
    static constexpr auto c = wt97::kSteps<T>;
    if (ZmxStatus bad =
            Args().ptr(src0).ptr(src1).ptr(src2).ptr(low0).ptr(low1).ptr(high0).ptr(high1).ptr(high2).size(width))
        return bad;
    inFullPrecision<wt97::kStepsOnX87<T>>([=] {
        pass(high2, src1, src0, src2, width, [](T x, T a, T b) { return wt97::lift(x, c.alpha, a, b); });
        pass(low1, src0, high1, high2, width, [](T x, T a, T b) { return wt97::lift(x, c.beta, a, b); });
        pass(high1, high1, low0, low1, width, [](T x, T a, T b) { return wt97::lift(x, c.gamma, a, b); });
        // At once for integers; a float is rounded between the step and the scale.
        pass(low0, low0, high0, high1, width, [](T b, T g0, T g1) { return wt97::lowOf(true, b, g0, g1); });
        for (int i = 0; i < width; ++i) put(high0, i, wt97::scale(c.k, at(high0, i)));
    });
    return zmxStsNoErr;
}

// With n the number of the low row under way:
//   low0, high0, high1   low row n + 1, high rows n and n + 1
//   dst4                 takes B(2 n + 2)
//   dst3                 takes A(2 n + 1)
//   srcDst2              holds B(2 n), becomes row 2 n
//   srcDst1              holds A(2 n - 1), becomes row 2 n - 1
//   src0                 row 2 n - 2, finished by the call before
// The next call has srcDst2 as src0, dst3 as srcDst1 and dst4 as srcDst2.
template <class T>
ZmxStatus inverse97(const T* low0, const T* high0, const T* high1, const T* src0, T* srcDst1, T* srcDst2, T* dst3,
                    T* dst4, int width) {
    static constexpr auto c = wt97::kSteps<T>;
    if (ZmxStatus bad =
            Args().ptr(low0).ptr(high0).ptr(high1).ptr(src0).ptr(srcDst1).ptr(srcDst2).ptr(dst3).ptr(dst4).size(width))
        return bad;
    inFullPrecision<wt97::kStepsOnX87<T>>([=] {
        pass(dst4, low0, high0, high1, width, [](T low, T h0, T h1) { return wt97::backB<T>(low, h0, h1); });
        pass(dst3, high0, srcDst2, dst4, width, [](T high, T b0, T b1) { return wt97::backA<T>(high, b0, b1); });
        pass(srcDst2, srcDst2, srcDst1, dst3, width, [](T x, T a, T b) { return wt97::liftBack(x, c.beta, a, b); });
        pass(srcDst1, srcDst1, src0, srcDst2, width, [](T x, T a, T b) { return wt97::liftBack(x, c.alpha, a, b); });
    });
    return zmxStsNoErr;
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiWTFwdColLift_B53_JPEG2K_16s_C1(const Zmx16s* pSrc0, const Zmx16s* pSrc1, const Zmx16s* pSrc2,
                                             Zmx16s* pDstLow0, const Zmx16s* pSrcHigh0, Zmx16s* pDstHigh1, int width) {
    return forward53(pSrc0, pSrc1, pSrc2, pDstLow0, pSrcHigh0, pDstHigh1, width);
}
ZmxStatus zmxiWTFwdColLift_B53_JPEG2K_32s_C1(const Zmx32s* pSrc0, const Zmx32s* pSrc1, const Zmx32s* pSrc2,
                                             Zmx32s* pDstLow0, const Zmx32s* pSrcHigh0, Zmx32s* pDstHigh1, int width) {
    return forward53(pSrc0, pSrc1, pSrc2, pDstLow0, pSrcHigh0, pDstHigh1, width);
}
ZmxStatus zmxiWTInvColLift_B53_JPEG2K_16s_C1(const Zmx16s* pSrcLow1, const Zmx16s* pSrcHigh0, const Zmx16s* pSrcHigh1,
                                             const Zmx16s* pSrc0, Zmx16s* pDst1, Zmx16s* pDst2, int width) {
    return inverse53(pSrcLow1, pSrcHigh0, pSrcHigh1, pSrc0, pDst1, pDst2, width);
}
ZmxStatus zmxiWTInvColLift_B53_JPEG2K_32s_C1(const Zmx32s* pSrcLow1, const Zmx32s* pSrcHigh0, const Zmx32s* pSrcHigh1,
                                             const Zmx32s* pSrc0, Zmx32s* pDst1, Zmx32s* pDst2, int width) {
    return inverse53(pSrcLow1, pSrcHigh0, pSrcHigh1, pSrc0, pDst1, pDst2, width);
}

ZmxStatus zmxiWTFwdColLift_D97_JPEG2K_16s_C1(const Zmx16s* pSrc0, const Zmx16s* pSrc1, const Zmx16s* pSrc2,
                                             Zmx16s* pSrcDstLow0, Zmx16s* pDstLow1, Zmx16s* pSrcDstHigh0,
                                             Zmx16s* pSrcDstHigh1, Zmx16s* pDstHigh2, int width) {
    return forward97(pSrc0, pSrc1, pSrc2, pSrcDstLow0, pDstLow1, pSrcDstHigh0, pSrcDstHigh1, pDstHigh2, width);
}
ZmxStatus zmxiWTInvColLift_D97_JPEG2K_16s_C1(const Zmx16s* pSrcLow0, const Zmx16s* pSrcHigh0, const Zmx16s* pSrcHigh1,
                                             const Zmx16s* pSrc0, Zmx16s* pSrcDst1, Zmx16s* pSrcDst2, Zmx16s* pDst3,
                                             Zmx16s* pDst4, int width) {
    return inverse97(pSrcLow0, pSrcHigh0, pSrcHigh1, pSrc0, pSrcDst1, pSrcDst2, pDst3, pDst4, width);
}

ZmxStatus zmxiWTFwdColLift_D97_JPEG2K_32s_C1(const Zmx32s* pSrc0, const Zmx32s* pSrc1, const Zmx32s* pSrc2,
                                             Zmx32s* pSrcDstLow0, Zmx32s* pDstLow1, Zmx32s* pSrcDstHigh0,
                                             Zmx32s* pSrcDstHigh1, Zmx32s* pDstHigh2, int width) {
    return forward97(pSrc0, pSrc1, pSrc2, pSrcDstLow0, pDstLow1, pSrcDstHigh0, pSrcDstHigh1, pDstHigh2, width);
}
ZmxStatus zmxiWTInvColLift_D97_JPEG2K_32s_C1(const Zmx32s* pSrcLow0, const Zmx32s* pSrcHigh0, const Zmx32s* pSrcHigh1,
                                             const Zmx32s* pSrc0, Zmx32s* pSrcDst1, Zmx32s* pSrcDst2, Zmx32s* pDst3,
                                             Zmx32s* pDst4, int width) {
    return inverse97(pSrcLow0, pSrcHigh0, pSrcHigh1, pSrc0, pSrcDst1, pSrcDst2, pDst3, pDst4, width);
}

ZmxStatus zmxiWTFwdColLift_D97_JPEG2K_32f_C1(const Zmx32f* pSrc0, const Zmx32f* pSrc1, const Zmx32f* pSrc2,
                                             Zmx32f* pSrcDstLow0, Zmx32f* pDstLow1, Zmx32f* pSrcDstHigh0,
                                             Zmx32f* pSrcDstHigh1, Zmx32f* pDstHigh2, int width) {
    return forward97(pSrc0, pSrc1, pSrc2, pSrcDstLow0, pDstLow1, pSrcDstHigh0, pSrcDstHigh1, pDstHigh2, width);
}
ZmxStatus zmxiWTInvColLift_D97_JPEG2K_32f_C1(const Zmx32f* pSrcLow0, const Zmx32f* pSrcHigh0, const Zmx32f* pSrcHigh1,
                                             const Zmx32f* pSrc0, Zmx32f* pSrcDst1, Zmx32f* pSrcDst2, Zmx32f* pDst3,
                                             Zmx32f* pDst4, int width) {
    return inverse97(pSrcLow0, pSrcHigh0, pSrcHigh1, pSrc0, pSrcDst1, pSrcDst2, pDst3, pDst4, width);
}
