// picopyca.cpp - rectangles copied, widened and masked.
//
// All go row by row on the calling thread. The row functions take their pointers and width by value, so that the
// compiler makes vector loops of them.
// SPDX-License-Identifier: BSD-2-Clause
#include "picopyca.h"

#include "pjargs.h"
#include "pjcopy.h"

namespace zmx {

// Bytes to 16 bits.
static void widenRow(const Zmx8u* src, Zmx8u* dst, int width) {
    for (int x = 0; x < width; ++x) store(dst, x, Zmx16u(src[x]));
}

ZmxStatus zmxiConvert_8u16u_C1R(const Zmx8u* pSrc, int srcStep, Zmx16u* pDst, int dstStep, ZmxiSize roiSize) {
    if (ZmxStatus bad = Args().ptr(pSrc, pDst).size(roiSize).step(srcStep).step(dstStep)) return bad;
    Serial::rows(roiSize, [=](int y) { widenRow(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), roiSize.width); });
    return zmxStsNoErr;
}

// Elements are copied as bits: no value is looked at.
template <class T> static ZmxStatus copyRectangle(const void* src, int srcStep, void* dst, int dstStep, ZmxiSize roi) {
    // The steps are not tested: rows may run backwards or lie on one another.
    if (ZmxStatus bad = Args().ptr(src, dst).size(roi)) return bad;
    Serial::rows(roi, [=](int y) { copyForward<T>(rowAt(src, srcStep, y), rowAt(dst, dstStep, y), roi.width); });
    return zmxStsNoErr;
}

ZmxStatus zmxiCopy_16s_C1R(const Zmx16s* pSrc, int srcStep, Zmx16s* pDst, int dstStep, ZmxiSize roiSize) {
    return copyRectangle<Zmx16s>(pSrc, srcStep, pDst, dstStep, roiSize);
}

ZmxStatus zmxiCopy_32f_C1R(const void* pSrc, int srcStep, void* pDst, int dstStep, ZmxiSize roiSize) {
    return copyRectangle<Zmx32u>(pSrc, srcStep, pDst, dstStep, roiSize);
}

// Source and destination may be one row: an element is read ahead of its being written.
static void andRow(const Zmx8u* src, Zmx32s value, Zmx8u* dst, int width) {
    for (int x = 0; x < width; ++x) store(dst, x, load<Zmx32s>(src, x) & value);
}

ZmxStatus zmxiAndC_32s_C1R(const Zmx32s* pSrc, int srcStep, Zmx32s value, Zmx32s* pDst, int dstStep, ZmxiSize roiSize) {
    if (ZmxStatus bad = Args().ptr(pSrc, pDst).step(srcStep).step(dstStep).size(roiSize)) return bad;
    Serial::rows(roiSize,
                 [=](int y) { andRow(rowAt(pSrc, srcStep, y), value, rowAt(pDst, dstStep, y), roiSize.width); });
    return zmxStsNoErr;
}

ZmxStatus zmxiAndC_32s_C1IR(Zmx32s value, Zmx32s* pSrcDst, int srcDstStep, ZmxiSize roiSize) {
    return zmxiAndC_32s_C1R(pSrcDst, srcDstStep, value, pSrcDst, srcDstStep, roiSize);
}

} // namespace zmx
