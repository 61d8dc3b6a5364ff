// pidct8844i.cpp - the reduced integer inverse DCTs: of a block with a non-zero corner, and to a smaller picture.
//
// All take the columns first and keep 16-bit values with three fraction bits between the passes, as the full inverse
// does. The full-size results need not equal those of the full transform bit for bit: two multipliers are one less than
// the sums of those that they stand for (pidctmul.h). Required.
// SPDX-License-Identifier: BSD-2-Clause
#include "pidct.h"

#include "pidct88.h"
#include "pjargs.h"

#include <initializer_list>

namespace zmx {

using namespace dct;

// The eight results of the vector in a lane: q of the even coefficients, g and h of the odd ones.
template <class Pass>
static inline void mirrored(Zmx16s* out, Wrapping q0, Wrapping q1, Wrapping q2, Wrapping q3, //
                            Wrapping g1, Wrapping h1, Wrapping h2, Wrapping g2) {
    out[0] = ended<Pass>(q0 + g1);
    out[8] = ended<Pass>(q1 + h1);
    out[16] = ended<Pass>(q2 + h2);
    out[24] = ended<Pass>(q3 + g2);
    out[32] = ended<Pass>(q3 - g2);
    out[40] = ended<Pass>(q2 - h2);
    out[48] = ended<Pass>(q1 - h1);
    out[56] = ended<Pass>(q0 - g1);
}

// Coefficients 4 to 7 of each lane are taken as zero.
struct Corner4x4 {
    template <class Pass> static void run(const Zmx16s* __restrict in, Zmx16s* __restrict out) {
        for (int i = 0; i < 8; ++i) {
            const Zmx16s c0 = in[i], c1 = in[8 + i], c2 = in[16 + i], c3 = in[24 + i];
            const Wrapping x = Wrapping(c0) << 15, outer = times<kEvenOuter>(c2), inner = times<kEvenInner>(c2);
            const Wrapping e1 = times<kCos1>(c1) - times<kCos3>(c3), e2 = times<kCos7>(c1) + times<kCos5>(c3);
            const Wrapping g1 = timesRoot2(times<kCos1>(c1) + times<kCos3>(c3));
            const Wrapping g2 = timesRoot2(times<kCos7>(c1) - times<kCos5>(c3));
            mirrored<Pass>(out + i, x + outer, x + inner, x - inner, x - outer, g1, e1 + e2, e1 - e2, g2);
        }
    }
};

// Coefficients 2 to 7 of each lane are taken as zero.
struct Corner2x2 {
    template <class Pass> static void run(const Zmx16s* __restrict in, Zmx16s* __restrict out) {
        for (int i = 0; i < 8; ++i) {
            const Zmx16s c0 = in[i], c1 = in[8 + i];
            const Wrapping x = Wrapping(c0) << 15;
            mirrored<Pass>(out + i, x, x, x, x, timesRoot2(times<kCos1>(c1)), times<kCos1 + kCos7>(c1),
                           times<kCos1 - kCos7>(c1), timesRoot2(times<kCos7>(c1)));
        }
    }
};

// The columns of the corner, then all rows. Columns beside the corner go along in their lanes, but no row reads them.
template <class Corner> static void inverseOfCorner(Zmx16s* block) {
    Block16s held, turned;
    Corner::template run<First>(block, held.at);
    transpose(held.at, turned.at);
    Corner::template run<Second>(turned.at, held.at);
    transpose(held.at, block);
}

// Eight coefficients of each lane to four points; coefficient 4 has no part in it.
template <class Pass> static void passTo4(const Zmx16s* __restrict in, Zmx16s* __restrict out) {
    for (int i = 0; i < 8; ++i) {
        const Zmx16s c0 = in[i], c1 = in[8 + i], c2 = in[16 + i], c3 = in[24 + i];
        const Zmx16s c5 = in[40 + i], c6 = in[48 + i], c7 = in[56 + i];
        const Wrapping t1 =
            times<kOuterOf4<1>>(c1) + times<kOuterOf4<3>>(c3) - times<kOuterOf4<5>>(c5) - times<kOuterOf4<7>>(c7);
        const Wrapping t2 =
            times<kInnerOf4<1>>(c1) - times<kInnerOf4<3>>(c3) + times<kInnerOf4<5>>(c5) - times<kInnerOf4<7>>(c7);
        const Wrapping x = Wrapping(c0) << 15, m = times<kOuterOf4<2>>(c2) - times<kOuterOf4<6>>(c6);
        out[i] = ended<Pass>(x + m + t1);
        out[8 + i] = ended<Pass>(x - m + t2);
        out[16 + i] = ended<Pass>(x - m - t2);
        out[24 + i] = ended<Pass>(x + m - t1);
    }
}

static void dct_8x8_to_4x4_inv_16s(Zmx16s* block) {
    Block16s held = {}, turned;
    passTo4<First>(block, held.at);
    transpose(held.at, turned.at);
    passTo4<Second>(turned.at, held.at);
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) block[4 * r + c] = held.at[8 * c + r];
}

// Eight coefficients to two points, of the odd ones and the first, with one bit more than in the other transforms. The
// vectors are so few that they are taken one by one.
using FirstTo2 = Ending<13>;
using SecondTo2 = Ending<22>;
template <class Pass> static void vectorTo2(const Zmx16s* in, int inStep, Zmx16s* out, int outStep) {
    const Wrapping t = times<kPointOf2<1>>(in[inStep]) - times<kPointOf2<3>>(in[3 * inStep]) +
                       times<kPointOf2<5>>(in[5 * inStep]) - times<kPointOf2<7>>(in[7 * inStep]);
    const Wrapping x = Wrapping(in[0]) << 16;
    out[0] = ended<Pass>(x + t);
    out[outStep] = ended<Pass>(x - t);
}

static void dct_8x8_to_2x2_inv_16s(Zmx16s* block) {
    Zmx16s held[2 * 8] = {};
    for (int c : {0, 1, 3, 5, 7}) vectorTo2<FirstTo2>(block + c, 8, held + c, 8);
    for (int r = 0; r < 2; ++r) vectorTo2<SecondTo2>(held + 8 * r, 1, block + 2 * r, 1);
}

ZmxStatus zmxiDCT8x8Inv_4x4_16s_C1I(Zmx16s* pSrcDst) {
    if (ZmxStatus bad = Args().ptr(pSrcDst)) return bad;
    inverseOfCorner<Corner4x4>(pSrcDst);
    return zmxStsNoErr;
}

ZmxStatus zmxiDCT8x8Inv_2x2_16s_C1I(Zmx16s* pSrcDst) {
    if (ZmxStatus bad = Args().ptr(pSrcDst)) return bad;
    inverseOfCorner<Corner2x2>(pSrcDst);
    return zmxStsNoErr;
}

ZmxStatus zmxiDCT8x8To4x4Inv_16s_C1I(Zmx16s* pSrcDst) {
    if (ZmxStatus bad = Args().ptr(pSrcDst)) return bad;
    dct_8x8_to_4x4_inv_16s(pSrcDst);
    return zmxStsNoErr;
}

ZmxStatus zmxiDCT8x8To2x2Inv_16s_C1I(Zmx16s* pSrcDst) {
    if (ZmxStatus bad = Args().ptr(pSrcDst)) return bad;
    dct_8x8_to_2x2_inv_16s(pSrcDst);
    return zmxStsNoErr;
}

} // namespace zmx
