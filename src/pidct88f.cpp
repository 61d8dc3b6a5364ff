// pidct88f.cpp - the single-precision 8x8 forward and inverse DCT, for samples of more than 8 bits.
//
// The forward transform and what both have in common stand in pidct88f.h.
// SPDX-License-Identifier: BSD-2-Clause
#include "pidct88f.h"

#include "pidct.h"
#include "pjargs.h"

namespace zmx {

using namespace dct;

namespace {

constexpr auto tab_norm_inv = outerProduct(kInverseFactors);
static_assert(tab_norm_inv[0] == 0.125f);

// Where the sums and the differences of the mirrored elements 0..3 stand between the two-dimensional stage and the
// vector steps.
constexpr int P[4] = {0, 6, 2, 4}, Q[4] = {7, 1, 5, 3};

// One vector of the inverse transform in place, its elements Step apart.
template <int Step> void inverseVector(Single* y) {
    const Single y0 = y[0], y1 = y[Step], y2 = y[2 * Step], y3 = y[3 * Step];
    const Single y4 = y[4 * Step], y5 = y[5 * Step], y6 = y[6 * Step], y7 = y[7 * Step];

    const Single m = (y2 - y6) * kRoot2Single - (y2 + y6);
    y[0] = (y0 + y4) + (y2 + y6);
    y[4 * Step] = (y0 + y4) - (y2 + y6);
    y[2 * Step] = (y0 - y4) - m;
    y[6 * Step] = (y0 - y4) + m;

    const Single g = ((y3 + y5) + (y1 + y7)) * kRoot2Cos6;
    const Single h = (y1 - y7) - (y5 - y3) * kTan2 - g;
    const Single k = ((y1 + y7) - (y3 + y5)) * kTwoCos6 - h;
    y[7 * Step] = g;
    y[Step] = h;
    y[5 * Step] = k;
    y[3 * Step] = (y1 - y7) * kTan2 + (y5 - y3) - k;
}

// The core: the source may be the destination, which is written last.
void dct_8x8_inv_32f(const Zmx32f* src, Zmx32f* dst) {
    Single t[64];
    for (std::size_t k = 0; k < 64; ++k) t[k] = Single{src[k]} * tab_norm_inv[k];
    for (int r = 0; r < 8; ++r) inverseVector<1>(t + 8 * r);
    for (int c = 0; c < 8; ++c) inverseVector<8>(t + c);
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) {
            const Single ss = t[8 * P[r] + P[c]], sd = t[8 * P[r] + Q[c]];
            const Single ds = t[8 * Q[r] + P[c]], dd = t[8 * Q[r] + Q[c]];
            dst[8 * r + c] = ((ss + sd) + (ds + dd)).v;
            dst[8 * r + 7 - c] = ((ss - sd) + (ds - dd)).v;
            dst[8 * (7 - r) + c] = ((ss + sd) - (ds + dd)).v;
            dst[8 * (7 - r) + 7 - c] = ((ss - sd) - (ds - dd)).v;
        }
}

} // namespace

ZmxStatus zmxiDCT8x8Fwd_32f_C1I(Zmx32f* pSrcDst) {
    if (ZmxStatus bad = Args().ptr(pSrcDst)) return bad;
    BlockSingle block;
    forward(pSrcDst, block.at);
    for (std::size_t k = 0; k < 64; ++k) pSrcDst[k] = rounded(block.at[k] * tab_norm_fwd[k]);
    return zmxStsNoErr;
}

ZmxStatus zmxiDCT8x8Inv_32f_C1I(Zmx32f* pSrcDst) {
    if (ZmxStatus bad = Args().ptr(pSrcDst)) return bad;
    dct_8x8_inv_32f(pSrcDst, pSrcDst);
    return zmxStsNoErr;
}

} // namespace zmx
