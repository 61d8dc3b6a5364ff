// pjxrpctinv.cpp - the inverse photo core transform of HD Photo (ITU-T T.832, clause 9.9): 4x4 blocks, lifting steps
// only.
//
// The steps stand in the order in which they are taken, since each one rounds.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjxrpct.h"

namespace zmx::pct {
namespace {

// The odd part in one direction, step by step backwards.
inline void rotateBack(Sample& p, Sample& q, Sample& s, Sample& u) {
    q = q + u;
    p = p - s;
    u = u - sar(q, 1);
    s = s + sar(p + 1, 1);
    p = p - sar(3 * q + 4, 3);
    q = q + sar(3 * p + 4, 3);
    s = s - sar(3 * u + 4, 3);
    u = u + sar(3 * s + 4, 3);
    s = s - sar(q + 1, 1);
    u = sar(p + 1, 1) - u;
    q = q + s;
    p = p - u;
}

// The part that is odd in both directions.
inline void rotateTwiceBack(Sample& a, Sample& b, Sample& c, Sample& d) {
    d = a + d;
    c = c - b;
    const Sample t = sar(d, 1), w = sar(c, 1);
    a = a - t;
    // The terms 3, 3, 4 with shifts of 3, 2, 3 undo those of the forward direction, 4, 3, 3.
    const Sample x = a - sar(3 * (b + w) + 3, 3);
    const Sample y = b + w + sar(3 * x + 3, 2);
    b = y - w;
    a = x - sar(3 * y + 4, 3) + t;
    c = c + b;
    d = d - a;
    b = 0 - b;
    c = 0 - c;
}

// A block: the stages of the forward transform in the opposite order.
[[gnu::always_inline]] inline void inverse(Block& block) {
    auto& m = block.m;
    rotateBack(m[0][2], m[0][3], m[1][2], m[1][3]);
    rotateBack(m[2][0], m[3][0], m[2][1], m[3][1]); // the same, transposed
    rotateTwiceBack(m[2][2], m[2][3], m[3][2], m[3][3]);
    butterfly(m[0][0], m[0][1], m[1][0], m[1][1], 1);
    butterfly(m[0][0], m[0][3], m[3][0], m[3][3], 0);
    butterfly(m[0][1], m[0][2], m[3][1], m[3][2], 0);
    butterfly(m[1][0], m[1][3], m[2][0], m[2][3], 0);
    butterfly(m[1][1], m[1][2], m[2][1], m[2][2], 0);
}

void owniPCTInv_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, ZmxiSize roiSize) {
    rectangle<inverse>(pSrcDst, srcDstStep, roiSize);
}

// The forms for a macroblock of luma, or of chroma at half the width, or at half of both.
ZmxStatus fixedSize(Zmx32s* pSrcDst, int srcDstStep, ZmxiSize size) {
    if (ZmxStatus bad = fixedArgs(pSrcDst, srcDstStep, size)) return bad;
    owniPCTInv_HDP_32s_C1IR(pSrcDst, srcDstStep, size);
    return zmxStsNoErr;
}

} // namespace
} // namespace zmx::pct

using namespace zmx::pct;

ZmxStatus zmxiPCTInv16x16_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep) {
    return fixedSize(pSrcDst, srcDstStep, {16, 16});
}
ZmxStatus zmxiPCTInv8x16_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep) {
    return fixedSize(pSrcDst, srcDstStep, {8, 16});
}
ZmxStatus zmxiPCTInv8x8_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep) { return fixedSize(pSrcDst, srcDstStep, {8, 8}); }

ZmxStatus zmxiPCTInv_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, ZmxiSize roiSize) {
    if (ZmxStatus bad = rectangleArgs(pSrcDst, srcDstStep, roiSize)) return bad;
    owniPCTInv_HDP_32s_C1IR(pSrcDst, srcDstStep, roiSize);
    return zmxStsNoErr;
}
