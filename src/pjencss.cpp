// pjencss.cpp - chroma downsampling by the box filter: the mean of two or four samples.
//
// The rectangle forms have a constant rounding term, the row forms one that alternates along the row.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjrows.h"
#include "pjss.h"
#include "pjtable.h"

#include <algorithm>

namespace zmx {
namespace {

// What changes from position to position comes from a table, and rows go through it in runs: made from the position, it
// would be a number of 32 bits to each result, and take longer than the sums.
constexpr int kRun = 512;
constexpr auto kOdd = tableOf<kRun>([](int x) { return Zmx16u(x % 2); });
constexpr auto kEven = tableOf<kRun>([](int x) { return Zmx8u(1 - x % 2); });

template <class Part> void inRuns(int n, Part part) {
    for (int x = 0, run; x < n; x += run) {
        run = std::min(kRun, n - x);
        part(std::ptrdiff_t(x), run);
    }
}

// The mean rounded up is one vector operation; where down(x) is 1, an odd sum gives one less. So the rounding term is
// 1, or 0 there.
template <class Down> void boxH(const Zmx8u* s, Zmx8u* d, int n, Down down) {
    for (int x = 0; x < n; ++x) {
        const Zmx8u a = s[2 * x], b = s[2 * x + 1];
        d[x] = Zmx8u(((a + b + 1) >> 1) - ((a ^ b) & down(x)));
    }
}

// The two samples of a word of 16 bits, whichever is the low byte.
inline Zmx16u pairSum(const Zmx8u* s, int x) {
    const Zmx16u pair = load<Zmx16u>(s, x);
    return Zmx16u((pair & 255) + (pair >> 8));
}
template <class Term> void boxHV(const Zmx8u* s1, const Zmx8u* s2, Zmx8u* d, int n, Term term) {
    for (int x = 0; x < n; ++x) d[x] = Zmx8u(Zmx16u(pairSum(s1, x) + pairSum(s2, x) + term(x)) >> 2);
}

// Results of a row: an odd width counts its last sample together with the one beyond it.
constexpr int halfUp(int width) { return width / 2 + width % 2; }

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiSampleDownH2V1_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst, int dstStep,
                                         ZmxiSize dstRoiSize) {
    if (ZmxStatus bad = rectangleArgs(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize)) return bad;
    Parallel::rows(dstRoiSize, [=](int y) {
        boxH(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), dstRoiSize.width, [](int) { return 0; });
    });
    return zmxStsNoErr;
}

ZmxStatus zmxiSampleDownH2V2_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst, int dstStep,
                                         ZmxiSize dstRoiSize) {
    if (ZmxStatus bad = rectangleArgs(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize)) return bad;
    Parallel::rows(dstRoiSize, [=](int y) {
        // The term is 3, not 2: the mean leans upward, required.
        const Zmx8u* top = rowAt(rowAt(pSrc, srcStep, y), srcStep, y);
        boxHV(top, rowAt(top, srcStep, 1), rowAt(pDst, dstStep, y), dstRoiSize.width, [](int) { return 3; });
    });
    return zmxStsNoErr;
}

ZmxStatus zmxiSampleDownRowH2V1_Box_JPEG_8u_C1(const Zmx8u* pSrc, int srcWidth, Zmx8u* pDst) {
    if (ZmxStatus bad = Args().ptr(pSrc, pDst).size(srcWidth)) return bad;
    // The term is 0 at even positions and 1 at odd ones: required.
    inRuns(halfUp(srcWidth), [=](std::ptrdiff_t x, int n) {
        boxH(pSrc + 2 * x, pDst + x, n, [](int i) { return kEven[std::size_t(i)]; });
    });
    return zmxStsNoErr;
}

ZmxStatus zmxiSampleDownRowH2V2_Box_JPEG_8u_C1(const Zmx8u* pSrc1, const Zmx8u* pSrc2, int srcWidth, Zmx8u* pDst) {
    if (ZmxStatus bad = Args().ptr(pSrc1, pSrc2, pDst).size(srcWidth)) return bad;
    // The term is 1 at even positions and 2 at odd ones: required.
    inRuns(halfUp(srcWidth), [=](std::ptrdiff_t x, int n) {
        boxHV(pSrc1 + 2 * x, pSrc2 + 2 * x, pDst + x, n, [](int i) { return 1 + kOdd[std::size_t(i)]; });
    });
    return zmxStsNoErr;
}
