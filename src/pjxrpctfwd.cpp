// pjxrpctfwd.cpp - the forward photo core transform of HD Photo (ITU-T T.832, clause 9.9): 4x4 blocks, lifting steps
// only.
//
// The steps stand in the order in which they are taken, since each one rounds.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjxrpct.h"

namespace zmx::pct {
namespace {

// The odd part in one direction: rotations by lifting steps of 3/8.
inline void rotate(Sample& p, Sample& q, Sample& s, Sample& u) {
    q = q - s;
    p = p + u;
    s = s + sar(q + 1, 1);
    u = sar(p + 1, 1) - u;
    q = q - sar(3 * p + 4, 3);
    p = p + sar(3 * q + 4, 3);
    u = u - sar(3 * s + 4, 3);
    s = s + sar(3 * u + 4, 3);
    u = u + sar(q, 1);
    s = s - sar(p + 1, 1);
    q = q - u;
    p = p + s;
}

// The part that is odd in both directions: lifting steps of 3/8, 3/4 and 3/8.
inline void rotateTwice(Sample& a, Sample& b, Sample& c, Sample& d) {
    b = 0 - b;
    c = 0 - c;
    d = a + d;
    c = c - b;
    const Sample t = sar(d, 1), w = sar(c, 1);
    a = a - t;
    // The terms 4, 3, 3 with shifts of 3, 2, 3 are what the inverse undoes with 3, 3, 4.
    const Sample x = a + sar(3 * (b + w) + 4, 3);
    const Sample y = b + w - sar(3 * x + 3, 2);
    b = y - w;
    a = x + sar(3 * y + 3, 3) + t;
    c = c + b;
    d = d - a;
}

// A block: butterflies over the four corners of each size, then the rotations of what is odd.
[[gnu::always_inline]] inline void forward(Block& block) {
    auto& m = block.m;
    butterfly(m[0][0], m[0][3], m[3][0], m[3][3], 0);
    butterfly(m[0][1], m[0][2], m[3][1], m[3][2], 0);
    butterfly(m[1][0], m[1][3], m[2][0], m[2][3], 0);
    butterfly(m[1][1], m[1][2], m[2][1], m[2][2], 0);
    butterfly(m[0][0], m[0][1], m[1][0], m[1][1], 1);
    rotate(m[0][2], m[0][3], m[1][2], m[1][3]);
    rotate(m[2][0], m[3][0], m[2][1], m[3][1]); // the same, transposed
    rotateTwice(m[2][2], m[2][3], m[3][2], m[3][3]);
}

void owniPCTFwd_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, ZmxiSize roiSize) {
    rectangle<forward>(pSrcDst, srcDstStep, roiSize);
}

// The forms for a macroblock of luma, or of chroma at half the width, or at half of both.
ZmxStatus fixedSize(Zmx32s* pSrcDst, int srcDstStep, ZmxiSize size) {
    if (ZmxStatus bad = fixedArgs(pSrcDst, srcDstStep, size)) return bad;
    owniPCTFwd_HDP_32s_C1IR(pSrcDst, srcDstStep, size);
    return zmxStsNoErr;
}

} // namespace
} // namespace zmx::pct

using namespace zmx::pct;

ZmxStatus zmxiPCTFwd16x16_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep) {
    return fixedSize(pSrcDst, srcDstStep, {16, 16});
}
ZmxStatus zmxiPCTFwd8x16_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep) {
    return fixedSize(pSrcDst, srcDstStep, {8, 16});
}
ZmxStatus zmxiPCTFwd8x8_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep) { return fixedSize(pSrcDst, srcDstStep, {8, 8}); }

ZmxStatus zmxiPCTFwd_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, ZmxiSize roiSize) {
    if (ZmxStatus bad = rectangleArgs(pSrcDst, srcDstStep, roiSize)) return bad;
    owniPCTFwd_HDP_32s_C1IR(pSrcDst, srcDstStep, roiSize);
    return zmxStsNoErr;
}
