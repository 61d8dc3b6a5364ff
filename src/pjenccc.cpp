// pjenccc.cpp - colour conversion of whole planes to Y, YCbCr and YCCK (ITU-T T.871 in 16-bit fixed point).
//
// Rows of planes are converted as they lie; pixels go through runs of samples on the stack, which a layout class fills.
// Since a pixel is read whole before it is written, a destination may be its own source.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjenccctbl.h"
#include "pjpixels.h"

#include <algorithm>
#include <utility>

namespace zmx {
namespace {

// What cc_table sums up, by multiplication. The three factors of Y add up to 65536 and those of Cb and of
// Cr to 0, so with a = R - G and b = B - G each line needs two products:
//   Y   G + ((19595 a + 7471 b + 32768) >> 16)
//   Cb  128 + ((32768 b - 11059 a + 32767) >> 16)
//   Cr  128 + ((32768 a - 5329 b + 32767) >> 16)
// The rounding term of Y is a half, those of Cb and Cr are one short of it. Taking the shift of Cb in two steps of 15
// and 1 gives 128 + ((b + ((32767 - 11059 a) >> 15)) >> 1), and the inner term, being a ceiling, is minus the high half
// of 22118 a: 16-bit lanes are enough. Cr likewise. Nothing saturates: no result leaves 0 to 255.
struct Differences {
    Zmx16s a, b;
    constexpr Differences(Zmx16s red, Zmx16s green, Zmx16s blue) : a(Zmx16s(red - green)), b(Zmx16s(blue - green)) {}
};
constexpr Zmx16s lumaOf(Differences d, Zmx16s green) { return Zmx16s(green + roundedSumHigh(19595, d.a, 7471, d.b)); }
// Cb of (a, b), and Cr of (b, a), by the factor of the first difference doubled.
constexpr Zmx16s chromaOf(Zmx16s other, Zmx16s own, Zmx16s factor) {
    return Zmx16s(Zmx16s(own - mulHigh(factor, other) + 256) >> 1);
}

constexpr void toY(const Pixel<3>& rgb, Pixel<1>& y) {
    const auto [red, green, blue] = rgb.of;
    y.of[0] = lumaOf({red, green, blue}, green);
}
constexpr void toYcc(const Pixel<3>& rgb, Pixel<3>& ycc) {
    const auto [red, green, blue] = rgb.of;
    const Differences d(red, green, blue);
    ycc.of[0] = lumaOf(d, green);
    ycc.of[1] = chromaOf(d.a, d.b, 22118);
    ycc.of[2] = chromaOf(d.b, d.a, 10658);
}
// The proof. Raising R, G and B alike raises the sum of Y by 65536 a step, and those of Cb and Cr by nothing, so that one
// colour of each pair of differences is enough: all a with every 51st b, and all b with every 51st a.
constexpr Zmx32s factorOf(std::size_t line) { return kColourLines[line].factor; }
static_assert(factorOf(0) + factorOf(1) + factorOf(2) == 65536);
static_assert(factorOf(3) + factorOf(4) + factorOf(5) == 0 && factorOf(5) + factorOf(6) + factorOf(7) == 0);

constexpr bool agrees(int a, int b) {
    const int green = std::max({0, -a, -b}), red = green + a, blue = green + b;
    if (red > 255 || blue > 255) return true; // there is no such colour
    const auto entry = [](int table, int sample) { return cc_table[std::size_t(256 * table + sample)]; };
    Pixel<3> ycc{};
    toYcc({Zmx16s(red), Zmx16s(green), Zmx16s(blue)}, ycc);
    return ycc.of[0] == (entry(0, red) + entry(1, green) + entry(2, blue)) >> 16 &&
           ycc.of[1] == (entry(3, red) + entry(4, green) + entry(5, blue)) >> 16 &&
           ycc.of[2] == (entry(5, red) + entry(6, green) + entry(7, blue)) >> 16;
}
template <int Part> constexpr bool agree() { // in parts, since a compiler does not go on for ever
    for (int other = -255; other <= 255; ++other)
        if (!agrees(51 * Part - 255, other) || !agrees(other, 51 * Part - 255)) return false;
    return true;
}
template <int Part> constexpr bool kAgree = agree<Part>();
template <int... Part> constexpr bool allAgree(std::integer_sequence<int, Part...>) { return (kAgree<Part> && ...); }
static_assert(allAgree(std::make_integer_sequence<int, 11>()));

// 255 minus each sample first; K is copied unchanged.
constexpr void toYcck(const Pixel<4>& cmyk, Pixel<4>& ycck) {
    const auto [c, m, y, k] = cmyk.of;
    Pixel<3> ycc{};
    toYcc({Zmx16s(255 - c), Zmx16s(255 - m), Zmx16s(255 - y)}, ycc);
    for (int i = 0; i < 3; ++i) ycck.of[i] = ycc.of[i];
    ycck.of[3] = k;
}

template <class Layout, auto formula, int M> void pixelsRow(const Zmx8u* src, Rows<Zmx8u, M> dst, int width) {
    constexpr int N = Layout::kChannels;
    using Sample = typename Layout::GetSample;
    layout::Run<Sample, N> run;
    for (int x = 0, n; x < width; x += n) {
        n = std::min(layout::kRun, width - x);
        Layout::get(src + std::ptrdiff_t(Layout::kBytes) * x, Rows<Sample, N>(run), n);
        convertRow<formula>(Rows<const Sample, N>(run), dst.from(x), n);
    }
}

template <class Layout, auto formula, int M, class How>
ZmxStatus pixelsToPlanes(const void* src, int srcStep, Zmx8u* const* dst, int dstStep, ZmxiSize roi) {
    if (ZmxStatus bad = Args().ptr(src, dst).planes(dst, M).step(srcStep).step(dstStep).size(roi)) return bad;
    How::rows(roi, [=](int y) {
        pixelsRow<Layout, formula>(rowAt(src, srcStep, y), Rows<Zmx8u, M>(dst, dstStep, y), roi.width);
    });
    return zmxStsNoErr;
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiRGBToY_JPEG_8u_C3C1R(const Zmx8u* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize) {
    return pixelsToPlanes<layout::RGB, toY, 1, Parallel>(pSrc, srcStep, &pDst, dstStep, roiSize);
}
ZmxStatus zmxiBGRToY_JPEG_8u_C3C1R(const Zmx8u* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize) {
    return pixelsToPlanes<layout::BGR, toY, 1, Parallel>(pSrc, srcStep, &pDst, dstStep, roiSize);
}
ZmxStatus zmxiRGBToY_JPEG_8u_P3C1R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* pDst, int dstStep,
                                   ZmxiSize roiSize) {
    // So pDst itself is tested behind the source planes: required; the other functions test both arrays first.
    return planesToPlanes<toY, 3, 1>(pSrc, srcStep, &pDst, dstStep, roiSize);
}
ZmxStatus zmxiRGBToYCbCr_JPEG_8u_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                       ZmxiSize roiSize) {
    return pixelsToPlanes<layout::RGB, toYcc, 3, Parallel>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiBGRToYCbCr_JPEG_8u_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                       ZmxiSize roiSize) {
    return pixelsToPlanes<layout::BGR, toYcc, 3, Parallel>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiRGBToYCbCr_JPEG_8u_P3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* const pDst[3], int dstStep,
                                     ZmxiSize roiSize) {
    return planesToPlanes<toYcc, 3, 3>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiCMYKToYCCK_JPEG_8u_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx8u* const pDst[4], int dstStep,
                                       ZmxiSize roiSize) {
    return pixelsToPlanes<layout::CMYK, toYcck, 4, Parallel>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiCMYKToYCCK_JPEG_8u_P4R(const Zmx8u* const pSrc[4], int srcStep, Zmx8u* const pDst[4], int dstStep,
                                     ZmxiSize roiSize) {
    return planesToPlanes<toYcck, 4, 4>(pSrc, srcStep, pDst, dstStep, roiSize);
}
// The packed forms open no parallel region at any size.
ZmxStatus zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                             ZmxiSize roiSize) {
    return pixelsToPlanes<layout::RGB555, toYcc, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiBGR555ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                             ZmxiSize roiSize) {
    return pixelsToPlanes<layout::BGR555, toYcc, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiRGB565ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                             ZmxiSize roiSize) {
    return pixelsToPlanes<layout::RGB565, toYcc, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
ZmxStatus zmxiBGR565ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                             ZmxiSize roiSize) {
    return pixelsToPlanes<layout::BGR565, toYcc, 3, Serial>(pSrc, srcStep, pDst, dstStep, roiSize);
}
