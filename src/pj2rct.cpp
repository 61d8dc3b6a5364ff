// pj2rct.cpp - the reversible component transform of JPEG2000 (ISO/IEC 15444-1, G.2).
//
// Sums are formed in 32 bits and wrap there; results are cut to the width of the samples, and nothing saturates.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2ct.h"

namespace zmx::components {
namespace {

// R, G, B to Y, B - G, R - G. The shift is a floor, not a rounding: the inverse takes the same one.
template <class T> constexpr Pixel<T> forward(Pixel<T> p) {
    const Zmx32s r = p.a, g = p.b, b = p.c;
    return {T(wrapAdd(wrapAdd(r, wrapMul(2, g)), b) >> 2), T(wrapSub(b, g)), T(wrapSub(r, g))};
}

template <class T> constexpr Pixel<T> inverse(Pixel<T> p) {
    const Zmx32s y = p.a, blue = p.b, red = p.c;
    const Zmx32s g = wrapSub(y, wrapAdd(blue, red) >> 2);
    return {T(wrapAdd(red, g)), T(g), T(wrapAdd(blue, g))};
}

} // namespace
} // namespace zmx::components

using namespace zmx::components;

ZmxStatus zmxiRCTFwd_JPEG2K_16s_C3P3R(const Zmx16s* pSrc, int srcStep, Zmx16s* const pDst[3], int dstStep,
                                      ZmxiSize roiSize) {
    return pixelsToPlanes(pSrc, srcStep, pDst, dstStep, roiSize, splitRow<Zmx16s, forward<Zmx16s>>);
}
ZmxStatus zmxiRCTFwd_JPEG2K_32s_C3P3R(const Zmx32s* pSrc, int srcStep, Zmx32s* const pDst[3], int dstStep,
                                      ZmxiSize roiSize) {
    return pixelsToPlanes(pSrc, srcStep, pDst, dstStep, roiSize, splitRow<Zmx32s, forward<Zmx32s>>);
}
ZmxStatus zmxiRCTFwd_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace(pSrcDst, srcDstStep, roiSize, planesRow<Zmx16s, forward<Zmx16s>>);
}
ZmxStatus zmxiRCTFwd_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace(pSrcDst, srcDstStep, roiSize, planesRow<Zmx32s, forward<Zmx32s>>);
}
ZmxStatus zmxiRCTInv_JPEG2K_16s_P3C3R(const Zmx16s* const pSrc[3], int srcStep, Zmx16s* pDst, int dstStep,
                                      ZmxiSize roiSize) {
    return planesToPixels(pSrc, srcStep, pDst, dstStep, roiSize, joinRow<Zmx16s, inverse<Zmx16s>>);
}
ZmxStatus zmxiRCTInv_JPEG2K_32s_P3C3R(const Zmx32s* const pSrc[3], int srcStep, Zmx32s* pDst, int dstStep,
                                      ZmxiSize roiSize) {
    return planesToPixels(pSrc, srcStep, pDst, dstStep, roiSize, joinRow<Zmx32s, inverse<Zmx32s>>);
}
ZmxStatus zmxiRCTInv_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace(pSrcDst, srcDstStep, roiSize, planesRow<Zmx16s, inverse<Zmx16s>>);
}
ZmxStatus zmxiRCTInv_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace(pSrcDst, srcDstStep, roiSize, planesRow<Zmx32s, inverse<Zmx32s>>);
}
