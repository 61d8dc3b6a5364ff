// pidct8844i.cpp - the reduced integer inverse DCTs: of a block with a non-zero corner, and to a smaller picture.
//
// All take the columns first and keep 16-bit values with three fraction bits between the passes, as the full inverse
// does. The full-size results need not equal those of the full transform bit for bit: 32138 and 42813 are one less than
// the sums of its multipliers that they stand for. Required.
#include "pidct.h"

#include "pidct88.h"
#include "pjargs.h"

#include <initializer_list>

// Even and odd halves of a vector of eight: q from the even coefficients, g and h from the odd ones.
template <class Pass>
static void mirrored(Wrapping q0, Wrapping q1, Wrapping q2, Wrapping q3, Wrapping g1, Wrapping h1, Wrapping h2,
                     Wrapping g2, Zmx16s* out, int step) {
    out[0] = ended<Pass>(q0 + g1);
    out[step] = ended<Pass>(q1 + h1);
    out[2 * step] = ended<Pass>(q2 + h2);
    out[3 * step] = ended<Pass>(q3 + g2);
    out[4 * step] = ended<Pass>(q3 - g2);
    out[5 * step] = ended<Pass>(q2 - h2);
    out[6 * step] = ended<Pass>(q1 - h1);
    out[7 * step] = ended<Pass>(q0 - g1);
}

// The root of two with 12 fraction bits, its operand rounded first.
static Wrapping timesRoot2(Wrapping v) { return Wrapping(shiftRight(v + 2048, 12)) * 5793u; }

// One vector, its source and its result `step` apart; coefficients 4 to 7 are taken as zero.
template <class Pass> static void vector4(const Zmx16s* in, Zmx16s* out, int step) {
    const Wrapping c0 = Wrapping(in[0]), c1 = Wrapping(in[step]), c2 = Wrapping(in[2 * step]),
                   c3 = Wrapping(in[3 * step]);
    const Wrapping x = c0 << 15;
    const Wrapping e1 = c1 * 32138 - c3 * 27246, e2 = c1 * 6393 + c3 * 18205;
    mirrored<Pass>(x + c2 * 42813, x + c2 * 17734, x - c2 * 17734, x - c2 * 42813, //
                   timesRoot2(c1 * 32138 + c3 * 27246), e1 + e2, e1 - e2, timesRoot2(c1 * 6393 - c3 * 18205), //
                   out, step);
}

// The same, coefficients 2 to 7 taken as zero.
template <class Pass> static void vector2(const Zmx16s* in, Zmx16s* out, int step) {
    const Wrapping c0 = Wrapping(in[0]), c1 = Wrapping(in[step]), x = c0 << 15;
    mirrored<Pass>(x, x, x, x, timesRoot2(c1 * 32138), c1 * 38531, c1 * 25745, timesRoot2(c1 * 6393), out, step);
}

// The columns of the corner, then all rows.
static void dct_8x8_inv_4x4_16s(const Zmx16s* src, Zmx16s* dst) {
    Block16s held;
    for (int c = 0; c < 4; ++c) vector4<First>(src + c, held.at + c, 8);
    for (int r = 0; r < 8; ++r) vector4<Second>(held.at + 8 * r, dst + 8 * r, 1);
}

static void dct_8x8_inv_2x2_16s(const Zmx16s* src, Zmx16s* dst) {
    Block16s held;
    for (int c = 0; c < 2; ++c) vector2<First>(src + c, held.at + c, 8);
    for (int r = 0; r < 8; ++r) vector2<Second>(held.at + 8 * r, dst + 8 * r, 1);
}

// Eight coefficients to four points; coefficient 4 has no part in it.
template <class Pass> static void vectorTo4(const Zmx16s* in, int inStep, Zmx16s* out, int outStep) {
    const auto c = [&](int k) { return Wrapping(in[k * inStep]); };
    const Wrapping t1 = c(1) * 41991 + c(3) * 14745 - c(5) * 9852 - c(7) * 8352;
    const Wrapping t2 = c(1) * 17393 - c(3) * 35598 + c(5) * 23786 - c(7) * 3460;
    const Wrapping x = c(0) << 15, m = c(2) * 30274 - c(6) * 12540;
    out[0] = ended<Pass>(x + m + t1);
    out[outStep] = ended<Pass>(x - m + t2);
    out[2 * outStep] = ended<Pass>(x - m - t2);
    out[3 * outStep] = ended<Pass>(x + m - t1);
}

// Eight coefficients to two points, of the odd ones and the first; with one bit more than the others.
struct FirstTo2 {
    static constexpr Wrapping half = 1 << 12;
    static constexpr int shift = 13;
};
struct SecondTo2 {
    static constexpr Wrapping half = 1 << 21;
    static constexpr int shift = 22;
};
template <class Pass> static void vectorTo2(const Zmx16s* in, int inStep, Zmx16s* out, int outStep) {
    const auto c = [&](int k) { return Wrapping(in[k * inStep]); };
    const Wrapping t = c(1) * 59384 - c(3) * 20853 + c(5) * 13932 - c(7) * 11812, x = c(0) << 16;
    out[0] = ended<Pass>(x + t);
    out[outStep] = ended<Pass>(x - t);
}

// Columns that the row pass does not read are passed over.
static void dct_8x8_to_4x4_inv_16s(Zmx16s* block) {
    Zmx16s held[4 * 8] = {};
    for (int c : {0, 1, 2, 3, 5, 6, 7}) vectorTo4<First>(block + c, 8, held + c, 8);
    for (int r = 0; r < 4; ++r) vectorTo4<Second>(held + 8 * r, 1, block + 4 * r, 1);
}

static void dct_8x8_to_2x2_inv_16s(Zmx16s* block) {
    Zmx16s held[2 * 8] = {};
    for (int c : {0, 1, 3, 5, 7}) vectorTo2<First>(block + c, 8, held + c, 8);
    for (int r = 0; r < 2; ++r) vectorTo2<Second>(held + 8 * r, 1, block + 2 * r, 1);
}

ZmxStatus zmxiDCT8x8Inv_4x4_16s_C1I(Zmx16s* pSrcDst) {
    if (ZmxStatus bad = Args().ptr(pSrcDst)) return bad;
    dct_8x8_inv_4x4_16s(pSrcDst, pSrcDst);
    return zmxStsNoErr;
}

ZmxStatus zmxiDCT8x8Inv_2x2_16s_C1I(Zmx16s* pSrcDst) {
    if (ZmxStatus bad = Args().ptr(pSrcDst)) return bad;
    dct_8x8_inv_2x2_16s(pSrcDst, pSrcDst);
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
