// pj2ict.cpp - the irreversible component transform of JPEG2000 (ISO/IEC 15444-1, G.3) in fixed point with 14
// fractional bits, and in floating point.
#include "pj2ct.h"
#include "pjround.h"

namespace zmx::components {
namespace {

// ---- fixed point: products and sums in 32 bits, where they wrap for large 32-bit samples; each result has its own
// half (8192) ahead of the shift, and nothing saturates.

constexpr Zmx32s weigh(Zmx32s w0, Zmx32s x0, Zmx32s w1, Zmx32s x1, Zmx32s w2, Zmx32s x2) {
    return wrapAdd(wrapAdd(wrapAdd(wrapMul(w0, x0), wrapMul(w1, x1)), wrapMul(w2, x2)), 8192) >> 14;
}

// The weights of Y add up to 16384, those of Cb and of Cr to 0.
template <class T> constexpr Pixel<T> forward(Pixel<T> p) {
    return {T(weigh(4899, p.a, 9617, p.b, 1868, p.c)), T(weigh(-2765, p.a, -5427, p.b, 8192, p.c)),
            T(weigh(8192, p.a, -6860, p.b, -1332, p.c))};
}

// Y is added behind the shift.
template <class T> constexpr Pixel<T> inverse(Pixel<T> p) {
    const Zmx32s y = p.a, cb = p.b, cr = p.c;
    return {T(wrapAdd(y, weigh(22970, cr, 0, 0, 0, 0))), T(wrapAdd(y, weigh(-5638, cb, -11700, cr, 0, 0))),
            T(wrapAdd(y, weigh(29032, cb, 0, 0, 0, 0)))};
}

// ---- floating point: 32-bit constants, each sum from left to right in extended precision and rounded once, at the
// store.

inline Pixel<Zmx32f> forwardFloat(Pixel<Zmx32f> p) {
    const Extended r = p.a, g = p.b, b = p.c;
    return {Zmx32f(r * 0.299f + g * 0.587f + b * 0.114f), Zmx32f(r * -0.16875f - g * 0.33126f + b * 0.5f),
            Zmx32f(r * 0.5f - g * 0.41869f - b * 0.08131f)};
}

inline Pixel<Zmx32f> inverseFloat(Pixel<Zmx32f> p) {
    const Extended y = p.a, cb = p.b, cr = p.c;
    return {Zmx32f(cr * 1.402f + y), Zmx32f((y - cb * 0.34413f) - cr * 0.71414f), Zmx32f(cb * 1.772f + y)};
}

} // namespace
} // namespace zmx::components

using namespace zmx::components;

ZmxStatus zmxiICTFwd_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace<Zmx16s, forward<Zmx16s>>(pSrcDst, srcDstStep, roiSize);
}
ZmxStatus zmxiICTFwd_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace<Zmx32s, forward<Zmx32s>>(pSrcDst, srcDstStep, roiSize);
}
ZmxStatus zmxiICTInv_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace<Zmx16s, inverse<Zmx16s>>(pSrcDst, srcDstStep, roiSize);
}
ZmxStatus zmxiICTInv_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace<Zmx32s, inverse<Zmx32s>>(pSrcDst, srcDstStep, roiSize);
}
ZmxStatus zmxiICTFwd_JPEG2K_32f_C3P3R(const Zmx32f* pSrc, int srcStep, Zmx32f* const pDst[3], int dstStep,
                                      ZmxiSize roiSize) {
    return pixelsToPlanes<Zmx32f, forwardFloat>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiICTFwd_JPEG2K_32f_P3IR(Zmx32f* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace<Zmx32f, forwardFloat>(pSrcDst, srcDstStep, roiSize);
}
ZmxStatus zmxiICTInv_JPEG2K_32f_P3C3R(const Zmx32f* const pSrc[3], int srcStep, Zmx32f* pDst, int dstStep,
                                      ZmxiSize roiSize) {
    return planesToPixels<Zmx32f, inverseFloat>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiICTInv_JPEG2K_32f_P3IR(Zmx32f* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace<Zmx32f, inverseFloat>(pSrcDst, srcDstStep, roiSize);
}
