// pj2wtcollift.cpp - column lifting of the 5/3 wavelet: one stage over rows that the caller holds in a ring.
#include "pj2wt53.h"
#include "pjargs.h"

namespace {

template <class T>
ZmxStatus forward53(const T* src0, const T* src1, const T* src2, T* low0, const T* high0, T* high1, int width) {
    if (ZmxStatus bad = Args().ptr(src0).ptr(src1).ptr(src2).ptr(low0).ptr(high0).ptr(high1).size(width)) return bad;
    for (int i = 0; i < width; ++i) {
        const T even = src0[i], d = highOf(src1[i], even, src2[i]);
        const T low = lowOf(even, high0[i], d);
        high1[i] = d;
        low0[i] = low;
    }
    return zmxStsNoErr;
}

template <class T>
ZmxStatus inverse53(const T* low1, const T* high0, const T* high1, const T* src0, T* dst1, T* dst2, int width) {
    if (ZmxStatus bad = Args().ptr(low1).ptr(high0).ptr(high1).ptr(src0).ptr(dst1).ptr(dst2).size(width)) return bad;
    for (int i = 0; i < width; ++i) {
        const T e = evenOf(low1[i], high0[i], high1[i]);
        dst1[i] = oddOf(high0[i], src0[i], e);
        dst2[i] = e;
    }
    return zmxStsNoErr;
}

} // namespace

ZmxStatus zmxiWTFwdColLift_B53_JPEG2K_16s_C1(const Zmx16s* pSrc0, const Zmx16s* pSrc1, const Zmx16s* pSrc2, Zmx16s* pDstLow0,
                                             const Zmx16s* pSrcHigh0, Zmx16s* pDstHigh1, int width) {
    return forward53(pSrc0, pSrc1, pSrc2, pDstLow0, pSrcHigh0, pDstHigh1, width);
}
ZmxStatus zmxiWTFwdColLift_B53_JPEG2K_32s_C1(const Zmx32s* pSrc0, const Zmx32s* pSrc1, const Zmx32s* pSrc2, Zmx32s* pDstLow0,
                                             const Zmx32s* pSrcHigh0, Zmx32s* pDstHigh1, int width) {
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
