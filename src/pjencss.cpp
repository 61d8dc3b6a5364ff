// pjencss.cpp - chroma downsampling by the box filter: the mean of two or four samples.
//
// The rectangle forms have a constant rounding term, the row forms one that alternates along the row.
#include "pjrows.h"
#include "pjss.h"

namespace {

// The term is added at even positions, and one more at odd ones where the form alternates.
template <int Term, bool Alternate> void boxH(const Zmx8u* s, Zmx8u* d, int n) {
    for (int x = 0; x < n; ++x) d[x] = Zmx8u((s[2 * x] + s[2 * x + 1] + (Term + (Alternate ? x & 1 : 0))) >> 1);
}
template <int Term, bool Alternate> void boxHV(const Zmx8u* s1, const Zmx8u* s2, Zmx8u* d, int n) {
    for (int x = 0; x < n; ++x)
        d[x] = Zmx8u((s1[2 * x] + s1[2 * x + 1] + s2[2 * x] + s2[2 * x + 1] + (Term + (Alternate ? x & 1 : 0))) >> 2);
}

// Results of a row: an odd width counts its last sample together with the one beyond it.
constexpr int halfUp(int width) { return width / 2 + width % 2; }

} // namespace

ZmxStatus zmxiSampleDownH2V1_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst, int dstStep,
                                         ZmxiSize dstRoiSize) {
    if (ZmxStatus bad = rectangleArgs(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize)) return bad;
    Parallel::rows(dstRoiSize,
                   [=](int y) { boxH<1, false>(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), dstRoiSize.width); });
    return zmxStsNoErr;
}

ZmxStatus zmxiSampleDownH2V2_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst, int dstStep,
                                         ZmxiSize dstRoiSize) {
    if (ZmxStatus bad = rectangleArgs(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize)) return bad;
    Parallel::rows(dstRoiSize, [=](int y) {
        // The term is 3, not 2: the mean leans upward, required.
        const Zmx8u* top = rowAt(rowAt(pSrc, srcStep, y), srcStep, y);
        boxHV<3, false>(top, rowAt(top, srcStep, 1), rowAt(pDst, dstStep, y), dstRoiSize.width);
    });
    return zmxStsNoErr;
}

ZmxStatus zmxiSampleDownRowH2V1_Box_JPEG_8u_C1(const Zmx8u* pSrc, int srcWidth, Zmx8u* pDst) {
    if (ZmxStatus bad = Args().ptr(pSrc).ptr(pDst).size(srcWidth)) return bad;
    boxH<0, true>(pSrc, pDst, halfUp(srcWidth));
    return zmxStsNoErr;
}

ZmxStatus zmxiSampleDownRowH2V2_Box_JPEG_8u_C1(const Zmx8u* pSrc1, const Zmx8u* pSrc2, int srcWidth, Zmx8u* pDst) {
    if (ZmxStatus bad = Args().ptr(pSrc1).ptr(pSrc2).ptr(pDst).size(srcWidth)) return bad;
    boxHV<1, true>(pSrc1, pSrc2, pDst, halfUp(srcWidth));
    return zmxStsNoErr;
}
