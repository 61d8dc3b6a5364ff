// pj2wtcollift.cpp - column lifting of both wavelets: one stage over rows that the caller holds in a ring.
#include "pj2wt53.h"
#include "pj2wt97sys.h"
#include "pjargs.h"

namespace zmx {
namespace {

// Samples of rows at any address: the caller's row step need not be a multiple of the sample.
template <class T> T at(const T* row, int i) { return load<T>(rowAt(row, 0, 0), i); }
template <class T> void put(T* row, int i, T v) { store(rowAt(row, 0, 0), i, v); }

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

// The 9/7 filter takes one pass over the row for each step, in the order of the steps.
template <class System, class T = typename System::T>
ZmxStatus forward97(const T* src0, const T* src1, const T* src2, T* low0, T* low1, T* high0, T* high1, T* high2,
                    int width) {
    using S = System;
    using C = typename S::C;
    using V = typename S::Aside;
    if (ZmxStatus bad =
            Args().ptr(src0).ptr(src1).ptr(src2).ptr(low0).ptr(low1).ptr(high0).ptr(high1).ptr(high2).size(width))
        return bad;
    for (int i = 0; i < width; ++i) put(high2, i, T(S::lift(V(at(src1, i)), C::alpha, V(at(src0, i)), V(at(src2, i)))));
    for (int i = 0; i < width; ++i) put(low1, i, T(S::lift(V(at(src0, i)), C::beta, V(at(high1, i)), V(at(high2, i)))));
    for (int i = 0; i < width; ++i)
        put(high1, i, T(S::lift(V(at(high1, i)), C::gamma, V(at(low0, i)), V(at(low1, i)))));
    // Fused for the integers; a float is stored between the step and the scale.
    if constexpr (std::is_integral_v<T>)
        for (int i = 0; i < width; ++i) put(low0, i, S::low(at(low0, i), at(high0, i), at(high1, i)));
    else
        for (int i = 0; i < width; ++i)
            put(low0, i, T(S::lowInStages(V(at(low0, i)), V(at(high0, i)), V(at(high1, i)))));
    for (int i = 0; i < width; ++i) put(high0, i, T(S::scale(C::k, V(at(high0, i)))));
    return zmxStsNoErr;
}

template <class System, class T = typename System::T>
ZmxStatus inverse97(const T* low0, const T* high0, const T* high1, const T* src0, T* srcDst1, T* srcDst2, T* dst3,
                    T* dst4, int width) {
    using S = System;
    using C = typename S::C;
    using V = typename S::Aside;
    if (ZmxStatus bad =
            Args().ptr(low0).ptr(high0).ptr(high1).ptr(src0).ptr(srcDst1).ptr(srcDst2).ptr(dst3).ptr(dst4).size(width))
        return bad;
    for (int i = 0; i < width; ++i) put(dst4, i, T(S::backB(V(at(low0, i)), V(at(high0, i)), V(at(high1, i)))));
    for (int i = 0; i < width; ++i) put(dst3, i, T(S::backA(V(at(high0, i)), V(at(srcDst2, i)), V(at(dst4, i)))));
    for (int i = 0; i < width; ++i)
        put(srcDst2, i, T(S::liftBack(V(at(srcDst2, i)), C::beta, V(at(srcDst1, i)), V(at(dst3, i)))));
    for (int i = 0; i < width; ++i)
        put(srcDst1, i, T(S::liftBack(V(at(srcDst1, i)), C::alpha, V(at(src0, i)), V(at(srcDst2, i)))));
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
    return forward97<Wt97Q16System<Zmx16s>>(pSrc0, pSrc1, pSrc2, pSrcDstLow0, pDstLow1, pSrcDstHigh0, pSrcDstHigh1,
                                            pDstHigh2, width);
}
ZmxStatus zmxiWTInvColLift_D97_JPEG2K_16s_C1(const Zmx16s* pSrcLow0, const Zmx16s* pSrcHigh0, const Zmx16s* pSrcHigh1,
                                             const Zmx16s* pSrc0, Zmx16s* pSrcDst1, Zmx16s* pSrcDst2, Zmx16s* pDst3,
                                             Zmx16s* pDst4, int width) {
    return inverse97<Wt97Q16System<Zmx16s>>(pSrcLow0, pSrcHigh0, pSrcHigh1, pSrc0, pSrcDst1, pSrcDst2, pDst3, pDst4,
                                            width);
}

ZmxStatus zmxiWTFwdColLift_D97_JPEG2K_32s_C1(const Zmx32s* pSrc0, const Zmx32s* pSrc1, const Zmx32s* pSrc2,
                                             Zmx32s* pSrcDstLow0, Zmx32s* pDstLow1, Zmx32s* pSrcDstHigh0,
                                             Zmx32s* pSrcDstHigh1, Zmx32s* pDstHigh2, int width) {
    return forward97<Wt97Q16System<Zmx32s>>(pSrc0, pSrc1, pSrc2, pSrcDstLow0, pDstLow1, pSrcDstHigh0, pSrcDstHigh1,
                                            pDstHigh2, width);
}
ZmxStatus zmxiWTInvColLift_D97_JPEG2K_32s_C1(const Zmx32s* pSrcLow0, const Zmx32s* pSrcHigh0, const Zmx32s* pSrcHigh1,
                                             const Zmx32s* pSrc0, Zmx32s* pSrcDst1, Zmx32s* pSrcDst2, Zmx32s* pDst3,
                                             Zmx32s* pDst4, int width) {
    return inverse97<Wt97Q16System<Zmx32s>>(pSrcLow0, pSrcHigh0, pSrcHigh1, pSrc0, pSrcDst1, pSrcDst2, pDst3, pDst4,
                                            width);
}

ZmxStatus zmxiWTFwdColLift_D97_JPEG2K_32f_C1(const Zmx32f* pSrc0, const Zmx32f* pSrc1, const Zmx32f* pSrc2,
                                             Zmx32f* pSrcDstLow0, Zmx32f* pDstLow1, Zmx32f* pSrcDstHigh0,
                                             Zmx32f* pSrcDstHigh1, Zmx32f* pDstHigh2, int width) {
    return forward97<Wt97FloatSystem>(pSrc0, pSrc1, pSrc2, pSrcDstLow0, pDstLow1, pSrcDstHigh0, pSrcDstHigh1, pDstHigh2,
                                      width);
}
ZmxStatus zmxiWTInvColLift_D97_JPEG2K_32f_C1(const Zmx32f* pSrcLow0, const Zmx32f* pSrcHigh0, const Zmx32f* pSrcHigh1,
                                             const Zmx32f* pSrc0, Zmx32f* pSrcDst1, Zmx32f* pSrcDst2, Zmx32f* pDst3,
                                             Zmx32f* pDst4, int width) {
    return inverse97<Wt97FloatSystem>(pSrcLow0, pSrcHigh0, pSrcHigh1, pSrc0, pSrcDst1, pSrcDst2, pDst3, pDst4, width);
}
