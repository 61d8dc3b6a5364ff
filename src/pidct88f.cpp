// pidct88f.cpp - the single-precision 8x8 forward and inverse DCT, for samples of more than 8 bits.
//
// A scaled transform: the first butterflies of both directions are one two-dimensional stage, then the vectors go down
// the columns and along the rows, and a table of 64 factors normalises. Every single operation is rounded to single
// precision, so that all builds give the same bits.
// SPDX-License-Identifier: BSD-2-Clause
#include "pidct.h"

#include "pidctmul.h"
#include "pjargs.h"
#include "pjround.h"
#include "pjtable.h"

namespace zmx {

using namespace dct;

namespace {

// A single-precision value whose sums, differences and products are single-precision too.
struct Single {
    Zmx32f v;
};
inline Single operator+(Single a, Single b) { return {rounded(a.v + b.v)}; }
inline Single operator-(Single a, Single b) { return {rounded(a.v - b.v)}; }
inline Single operator*(Single a, Zmx32f b) { return {rounded(a.v * b)}; }

// Outer products of two vectors, rounded once.
constexpr auto outerProduct(const Factors& f) {
    return tableOf<64>([&](int i) { return Zmx32f(f[i / 8] * f[i % 8]); });
}
constexpr auto tab_norm_fwd = outerProduct(kForwardFactors);
constexpr auto tab_norm_inv = outerProduct(kInverseFactors);
static_assert(tab_norm_fwd[0] == 0.125f && tab_norm_inv[0] == 0.125f && tab_norm_fwd[1] == tab_norm_fwd[8]);

// Where the sums and the differences of the mirrored elements 0..3 stand between the two-dimensional stage and the
// vector steps.
constexpr int P[4] = {0, 6, 2, 4}, Q[4] = {7, 1, 5, 3};

// One vector of the forward transform in place, its elements Step apart.
template <int Step> void forwardVector(Single* t) {
    const Single s0 = t[0], s1 = t[6 * Step], s2 = t[2 * Step], s3 = t[4 * Step];
    const Single d0 = t[7 * Step], d1 = t[Step], d2 = t[5 * Step], d3 = t[3 * Step];

    const Single e0 = s0 + s3, e1 = s0 - s3, f0 = s1 + s2, f1 = s1 - s2, m = (f1 + e1) * kHalfRoot2;
    t[0] = e0 + f0;
    t[4 * Step] = e0 - f0;
    t[2 * Step] = e1 + m;
    t[6 * Step] = e1 - m;

    const Single p = d0 * kSec2, q = (d1 + d2) * kTwoCos6, A = p + q, B = p - q;
    const Single u = d0 + d1, v = d2 + d3, M = v * kTan2 + u, N = v - u * kTan2;
    t[Step] = A + M;
    t[7 * Step] = A - M;
    t[5 * Step] = B + N;
    t[3 * Step] = B - N;
}

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

// The cores: the source may be the destination, which is written last.
void dct_8x8_fwd_32f(const Zmx32f* src, Zmx32f* dst) {
    Single t[64];
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) {
            const Single a{src[8 * r + c]}, b{src[8 * r + 7 - c]};
            const Single g{src[8 * (7 - r) + c]}, h{src[8 * (7 - r) + 7 - c]};
            t[8 * P[r] + P[c]] = (a + b) + (g + h);
            t[8 * P[r] + Q[c]] = (a - b) + (g - h);
            t[8 * Q[r] + P[c]] = (a + b) - (g + h);
            t[8 * Q[r] + Q[c]] = (a - b) - (g - h);
        }
    for (int c = 0; c < 8; ++c) forwardVector<8>(t + c);
    for (int r = 0; r < 8; ++r) forwardVector<1>(t + 8 * r);
    for (std::size_t k = 0; k < 64; ++k) dst[k] = (t[k] * tab_norm_fwd[k]).v;
}

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
    dct_8x8_fwd_32f(pSrcDst, pSrcDst);
    return zmxStsNoErr;
}

ZmxStatus zmxiDCT8x8Inv_32f_C1I(Zmx32f* pSrcDst) {
    if (ZmxStatus bad = Args().ptr(pSrcDst)) return bad;
    dct_8x8_inv_32f(pSrcDst, pSrcDst);
    return zmxStsNoErr;
}

} // namespace zmx
