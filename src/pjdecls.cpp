// pjdecls.cpp - the level shift behind the inverse DCT.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjls.h"

#include "pjargs.h"

using namespace zmx;

ZmxStatus zmxiAdd128_JPEG_16s8u_C1R(const Zmx16s* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize) {
    // Argument order, each step behind its pointer: required here.
    if (ZmxStatus bad = Args().ptr(pSrc).step(srcStep).ptr(pDst).step(dstStep).size(roiSize)) return bad;
    ownpj_Add128_JPEG_16s8u_C1R(pSrc, srcStep, pDst, dstStep, roiSize);
    return zmxStsNoErr;
}

namespace zmx {

static void shiftRowUp(const Zmx8u* src, Zmx8u* dst, int width) {
    for (int x = 0; x < width; ++x) dst[x] = Zmx8u(shiftedUp(load<Zmx16s>(src, x)));
}

void ownpj_Add128_JPEG_16s8u_C1R(const Zmx16s* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize) {
    Parallel::rows(roiSize,
                   [=](int y) { shiftRowUp(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), roiSize.width); });
}

} // namespace zmx
