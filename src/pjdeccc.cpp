// pjdeccc.cpp - colour conversion of whole planes from YCbCr and YCCK (ITU-T T.871 in 16-bit fixed point).
//
// Rows of planes are converted as they lie; pixels go through runs of samples on the stack, which a layout class writes
// out. Since a pixel is read whole before it is written, a destination may be its own source.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjdeccctbl.h"
#include "pjpixels.h"

#include <algorithm>
#include <utility>

namespace zmx {
namespace {

// What the four tables hold, by multiplication in 16-bit lanes. With u and v twice the centred chroma:
//   red    (91881 v / 2 + 32768) >> 16 = (v + 1 + ((26345 v) >> 16)) >> 1, for 91881 = 65536 + 26345, since nested
//          floors collapse; and 1 + the high half is minus the high half of -26345 v, but for v = 0, where both give 0;
//   blue   likewise with 116130 = 2 * 65536 - 14942;
//   green  (-22554 u / 2 - 46802 v / 2 + 32768) >> 16: the two products are rounded together.
// The sums are saturated in 16 bits too: as int they would be widened for it.
constexpr Zmx16s saturated(Zmx16s a, Zmx16s b) { return std::clamp<Zmx16s>(Zmx16s(a + b), 0, 255); }
constexpr Zmx16s twiceCentred(Zmx16s chroma) { return Zmx16s(2 * chroma - 256); }
constexpr Zmx16s redOf(Zmx16s v) { return Zmx16s(Zmx16s(v - mulHigh(-26345, v)) >> 1); }
constexpr Zmx16s greenOf(Zmx16s u, Zmx16s v) { return roundedSumHigh(-23401, v, -11277, u); }
constexpr Zmx16s blueOf(Zmx16s u) { return Zmx16s(Zmx16s(2 * u - mulHigh(14942, u)) >> 1); }

// The proof, for every pair of Cb and Cr; in parts, since a compiler does not go on for ever.
template <int Part> constexpr bool agree() {
    for (int cr = 16 * Part; cr < 16 * (Part + 1); ++cr) {
        const Zmx16s v = twiceCentred(Zmx16s(cr));
        if (redOf(v) != cr_r_tbl[std::size_t(cr)] || blueOf(v) != cb_b_tbl[std::size_t(cr)]) return false;
        for (int cb = 0; cb < 256; ++cb)
            if (greenOf(twiceCentred(Zmx16s(cb)), v) != (cb_g_tbl[std::size_t(cb)] + cr_g_tbl[std::size_t(cr)]) >> 16)
                return false;
    }
    return true;
}
template <int Part> constexpr bool kAgree = agree<Part>();
template <int... Part> constexpr bool allAgree(std::integer_sequence<int, Part...>) { return (kAgree<Part> && ...); }
static_assert(allAgree(std::make_integer_sequence<int, 16>()));

constexpr void toRgb(const Pixel<3>& ycc, Pixel<3>& rgb) {
    const Zmx16s y = ycc.of[0], u = twiceCentred(ycc.of[1]), v = twiceCentred(ycc.of[2]);
    rgb.of[0] = saturated(y, redOf(v));
    rgb.of[1] = saturated(y, greenOf(u, v));
    rgb.of[2] = saturated(y, blueOf(u));
}
// 255 minus the saturated sample; K passes unchanged.
constexpr void toCmyk(const Pixel<4>& ycck, Pixel<4>& cmyk) {
    const auto [y, cb, cr, k] = ycck.of;
    Pixel<3> rgb{};
    toRgb({y, cb, cr}, rgb);
    for (int c = 0; c < 3; ++c) cmyk.of[c] = Zmx16s(255 - rgb.of[c]);
    cmyk.of[3] = k;
}

template <class Layout, auto formula, int N> void pixelsRow(Rows<const Zmx8u, N> src, Zmx8u* dst, int width) {
    using Sample = typename Layout::PutSample;
    layout::Run<Sample, N> run;
    for (int x = 0, n; x < width; x += n) {
        n = std::min(layout::kRun, width - x);
        convertRow<formula>(src.from(x), Rows<Sample, N>(run), n);
        Layout::put(Rows<const Sample, N>(run), dst + std::ptrdiff_t(Layout::kBytes) * x, n);
    }
}

template <class Layout, auto formula, int N, class How>
ZmxStatus planesToPixels(const Zmx8u* const* src, int srcStep, void* dst, int dstStep, ZmxiSize roi) {
    if (ZmxStatus bad = Args().ptr(src, dst).planes(src, N).step(srcStep).step(dstStep).size(roi)) return bad;
    How::rows(roi, [=](int y) {
        pixelsRow<Layout, formula>(Rows<const Zmx8u, N>(src, srcStep, y), rowAt(dst, dstStep, y), roi.width);
    });
    return zmxStsNoErr;
}

// Pairs of pixels Y Cb Y Cr, each sample of chroma for two pixels. An odd width still reads and writes whole pairs: one
// pixel beyond it.
void pairsRow(const Zmx8u* src, Zmx8u* dst, int width) {
    const int pairs = width / 2 + width % 2;
    layout::Run<Zmx16s, 3> pairsRun;
    layout::Run<Zmx8u, 3> run;
    for (int x = 0, n; x < pairs; x += n) {
        n = std::min(layout::kRun / 2, pairs - x);
        layout::YCbYCr::get(src + std::ptrdiff_t(4) * x, Rows<Zmx16s, 3>(pairsRun), 2 * n);
        convertRow<toRgb>(Rows<const Zmx16s, 3>(pairsRun), Rows<Zmx8u, 3>(run), 2 * n);
        layout::RGB::put(Rows<const Zmx8u, 3>(run), dst + std::ptrdiff_t(6) * x, 2 * n);
    }
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiYCbCrToRGB_JPEG_8u_P3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* const pDst[3], int dstStep,
                                     ZmxiSize roiSize) {
    return planesToPlanes<toRgb, 3, 3>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCCKToCMYK_JPEG_8u_P4R(const Zmx8u* const pSrc[4], int srcStep, Zmx8u* const pDst[4], int dstStep,
                                     ZmxiSize roiSize) {
    return planesToPlanes<toCmyk, 4, 4>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCbCrToRGB_JPEG_8u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* pDst, int dstStep,
                                       ZmxiSize roiSize) {
    return planesToPixels<layout::RGB, toRgb, 3, Parallel>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCbCrToBGR_JPEG_8u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* pDst, int dstStep,
                                       ZmxiSize roiSize) {
    return planesToPixels<layout::BGR, toRgb, 3, Parallel>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCCKToCMYK_JPEG_8u_P4C4R(const Zmx8u* const pSrc[4], int srcStep, Zmx8u* pDst, int dstStep,
                                       ZmxiSize roiSize) {
    return planesToPixels<layout::CMYK, toCmyk, 4, Parallel>(pSrc, srcStep, pDst, dstStep, roiSize);
}
// The packed forms open no parallel region at any size.
ZmxStatus zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst, int dstStep,
                                             ZmxiSize roiSize) {
    return planesToPixels<layout::BGR555, toRgb, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCbCrToRGB555_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst, int dstStep,
                                             ZmxiSize roiSize) {
    return planesToPixels<layout::RGB555, toRgb, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst, int dstStep,
                                             ZmxiSize roiSize) {
    return planesToPixels<layout::BGR565, toRgb, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCbCrToRGB565_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst, int dstStep,
                                             ZmxiSize roiSize) {
    return planesToPixels<layout::RGB565, toRgb, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiYCbCr422ToRGB_JPEG_8u_C2C3R(const Zmx8u* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize) {
    // No step is tested: required. A step of 0 or below overlays the rows or runs backward.
    if (ZmxStatus bad = Args().ptr(pSrc, pDst).size(roiSize)) return bad;
    Parallel::rows(roiSize, [=](int y) { pairsRow(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), roiSize.width); });
    return zmxStsNoErr;
}
