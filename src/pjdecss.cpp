// pjdecss.cpp - chroma upsampling by the triangle filter: weights of 3/4 and 1/4 in each direction that is doubled.
//
// The rectangle forms take the sample beyond each end of a row, and the row beyond each end of the plane, as the caller
// arranged them; the row forms treat the ends of the row by themselves.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjrows.h"
#include "pjss.h"

#include <algorithm>

namespace zmx {
namespace {

// Two results for each of n samples, from the sample and its left or right neighbour: s[-1] to s[n] are read. The two
// rounding terms differ: required.
template <int Shift, int EvenTerm, int OddTerm, class T> void trianglePairs(const T* s, Zmx8u* d, int n) {
    for (int i = 0; i < n; ++i) {
        d[2 * i] = Zmx8u((3 * s[i] + s[i - 1] + EvenTerm) >> Shift);
        d[2 * i + 1] = Zmx8u((3 * s[i] + s[i + 1] + OddTerm) >> Shift);
    }
}

// One direction: samples of 8 bits, terms 1 and 2.
void pairsH(const Zmx8u* s, Zmx8u* d, int n) { trianglePairs<2, 1, 2>(s, d, n); }
Zmx8u evenH(const Zmx8u* s) { return Zmx8u((3 * s[0] + s[-1] + 1) >> 2); }
Zmx8u oddH(const Zmx8u* s) { return Zmx8u((3 * s[0] + s[1] + 2) >> 2); }

// Two directions: sums 3 near + far of two rows, terms 8 and 7, the other way round than above.
constexpr int kRun = 512;
int sumHV(const Zmx8u* near, const Zmx8u* far, std::ptrdiff_t x) { return 3 * near[x] + far[x]; }
void pairsHV(const Zmx8u* near, const Zmx8u* far, Zmx8u* d, int n) {
    Zmx16s sums[kRun + 2];
    for (int x = 0; x < n; x += kRun) {
        const int run = std::min(kRun, n - x);
        for (int i = 0; i < run + 2; ++i) sums[i] = Zmx16s(sumHV(near, far, x + i - 1));
        trianglePairs<4, 8, 7>(sums + 1, d + std::ptrdiff_t(2) * x, run);
    }
}
Zmx8u evenHV(const Zmx8u* near, const Zmx8u* far, std::ptrdiff_t x) {
    return Zmx8u((3 * sumHV(near, far, x) + sumHV(near, far, x - 1) + 8) >> 4);
}

void rowH2V1(const Zmx8u* s, Zmx8u* d, int width) {
    const int pairs = width / 2;
    pairsH(s, d, pairs);
    if (width % 2 != 0) d[width - 1] = evenH(s + pairs);
}

void rowH2V2(const Zmx8u* near, const Zmx8u* far, Zmx8u* d, int width) {
    const int pairs = width / 2;
    pairsHV(near, far, d, pairs);
    if (width % 2 != 0) d[width - 1] = evenHV(near, far, pairs);
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiSampleUpH2V1_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst, int dstStep,
                                       ZmxiSize dstRoiSize) {
    if (ZmxStatus bad = rectangleArgs(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize)) return bad;
    // Alone among the rectangle forms it opens no parallel region at any size.
    Serial::rows(dstRoiSize,
                 [=](int y) { rowH2V1(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), dstRoiSize.width); });
    return zmxStsNoErr;
}

ZmxStatus zmxiSampleUpH2V2_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst, int dstStep,
                                       ZmxiSize dstRoiSize) {
    if (ZmxStatus bad = rectangleArgs(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize)) return bad;
    Parallel::rows(dstRoiSize, [=](int y) {
        const int near = y >> 1, far = near + (y % 2 != 0 ? 1 : -1);
        rowH2V2(rowAt(pSrc, srcStep, near), rowAt(pSrc, srcStep, far), rowAt(pDst, dstStep, y), dstRoiSize.width);
    });
    return zmxStsNoErr;
}

ZmxStatus zmxiSampleUpRowH2V1_Triangle_JPEG_8u_C1(const Zmx8u* pSrc, int srcWidth, Zmx8u* pDst) {
    if (ZmxStatus bad = Args().ptr(pSrc, pDst).size(srcWidth)) return bad;
    // The two ends are always done, one after the other, so that a width of 1 writes four samples and looks at its
    // neighbours on both sides: required.
    const Zmx8u* last = pSrc + (srcWidth - 1);
    Zmx8u* end = pDst + std::ptrdiff_t(2) * std::max(srcWidth - 1, 1);
    pDst[0] = pSrc[0];
    pDst[1] = oddH(pSrc);
    pairsH(pSrc + 1, pDst + 2, srcWidth - 2);
    end[0] = evenH(last);
    end[1] = last[0];
    return zmxStsNoErr;
}

ZmxStatus zmxiSampleUpRowH2V2_Triangle_JPEG_8u_C1(const Zmx8u* pSrc1, const Zmx8u* pSrc2, int srcWidth, Zmx8u* pDst) {
    if (ZmxStatus bad = Args().ptr(pSrc1, pSrc2, pDst).size(srcWidth)) return bad;
    const int last = std::max(srcWidth - 1, 1); // a width of 1 is done as one of 2: required
    Zmx8u* end = pDst + std::ptrdiff_t(2) * last;
    pDst[0] = Zmx8u((4 * sumHV(pSrc1, pSrc2, 0) + 8) >> 4);
    pDst[1] = Zmx8u((3 * sumHV(pSrc1, pSrc2, 0) + sumHV(pSrc1, pSrc2, 1) + 7) >> 4);
    pairsHV(pSrc1 + 1, pSrc2 + 1, pDst + 2, last - 1);
    end[0] = evenHV(pSrc1, pSrc2, last);
    end[1] = Zmx8u((4 * sumHV(pSrc1, pSrc2, last) + 7) >> 4);
    return zmxStsNoErr;
}
