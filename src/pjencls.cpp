// pjencls.cpp - the level shift ahead of the forward DCT.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjls.h"

#include "pjargs.h"

using namespace zmx;

ZmxStatus zmxiSub128_JPEG_8u16s_C1R(const Zmx8u* pSrc, int srcStep, Zmx16s* pDst, int dstStep, ZmxiSize roiSize) {
    // Argument order, each step behind its pointer: required here.
    if (ZmxStatus bad = Args().ptr(pSrc).step(srcStep).ptr(pDst).step(dstStep).size(roiSize)) return bad;
    ownpj_Sub128_JPEG_8u16s_C1R(pSrc, srcStep, pDst, dstStep, roiSize);
    return zmxStsNoErr;
}

namespace zmx {

static void shiftRowDown(const Zmx8u* src, Zmx8u* dst, int width) {
    for (int x = 0; x < width; ++x) store(dst, x, shiftedDown(src[x]));
}

void ownpj_Sub128_JPEG_8u16s_C1R(const Zmx8u* pSrc, int srcStep, Zmx16s* pDst, int dstStep, ZmxiSize roiSize) {
    Parallel::rows(roiSize,
                   [=](int y) { shiftRowDown(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), roiSize.width); });
}

} // namespace zmx
