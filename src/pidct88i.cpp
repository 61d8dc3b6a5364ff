// pidct88i.cpp - the integer 8x8 forward and inverse DCT.
//
// The flow, its multipliers and where it begins to wrap are in pidctmul.h. The forward transform takes the rows first,
// the inverse the columns. Arithmetic wraps in 32 bits; between the two passes the block holds 16-bit values with three
// fraction bits.
// SPDX-License-Identifier: BSD-2-Clause
#include "pidct.h"

#include "pidct88.h"
#include "pjargs.h"
#include "pjrows.h"

namespace zmx {

using namespace dct;

// Results 0 and 4: the sums themselves, eight times as large after the first pass, rounded after the second.
static Zmx16s sumEnded(First, Wrapping v) { return wrap16s(Zmx32s(v * 8)); }
static Zmx16s sumEnded(Second, Wrapping v) { return wrap16s(shiftRight(v + 32, 6)); }

// The same for operands of 32 bits.
template <Zmx32u Constant> static Wrapping times(Zmx32s v) { return Wrapping(v) * Constant; }

// Sum is a type that holds the sums and differences of the inputs, Odd one that holds those of the odd part.
template <class Pass, class Sum, class Odd>
static void forwardPass(const Zmx16s* __restrict in, Zmx16s* __restrict out) {
    for (int i = 0; i < 8; ++i) {
        const Sum x0 = in[i], x1 = in[8 + i], x2 = in[16 + i], x3 = in[24 + i];
        const Sum x4 = in[32 + i], x5 = in[40 + i], x6 = in[48 + i], x7 = in[56 + i];
        const Sum s0 = Sum(x0 + x7), s1 = Sum(x1 + x6), s2 = Sum(x2 + x5), s3 = Sum(x3 + x4);
        const Sum d0 = Sum(x0 - x7), d1 = Sum(x1 - x6), d2 = Sum(x2 - x5), d3 = Sum(x3 - x4);

        const Sum a = Sum(s0 + s3), b = Sum(s0 - s3), c = Sum(s1 + s2), e = Sum(s1 - s2);
        out[i] = sumEnded(Pass(), Wrapping(a + c));
        out[32 + i] = sumEnded(Pass(), Wrapping(a - c));
        // The even rotation multiplied out: b + e may outgrow its type.
        out[16 + i] = ended<Pass>(times<kEven.both + kEven.minus>(b) + times<kEven.both>(e));
        out[48 + i] = ended<Pass>(times<kEven.both>(b) - times<kEven.plus - kEven.both>(e));

        // The odd part is eight times as large from here on. The root of two times the outer differences is rounded
        // here, in both passes.
        const Odd u = Odd(8 * (d1 + d2)), v = Odd(8 * (d1 - d2));
        const Odd p = Odd(shiftRight(times<kRoot2With15>(d0) + 2048, 12));
        const Odd q = Odd(shiftRight(times<kRoot2With15>(d3) + 2048, 12));
        const Odd e1 = Odd(u + p), e2 = Odd(p - u), e3 = Odd(v + q), e4 = Odd(q - v);
        const Wrapping w1 = times<kOddBy1Of8.both>(Odd(e1 + e3)), w2 = times<kOddBy3Of8.both>(Odd(e2 + e4));
        out[8 + i] = ended<Pass>(w1 + times<kOddBy1Of8.minus>(e1));
        out[56 + i] = ended<Pass>(w1 - times<kOddBy1Of8.plus>(e3));
        out[24 + i] = ended<Pass>(w2 - times<kOddBy3Of8.plus>(e4));
        out[40 + i] = ended<Pass>(w2 - times<kOddBy3Of8.minus>(e2));
    }
}

// Only the first Count vectors are read, the others being zero. Every result is what eight would give: products of zero
// vanish ahead of any rounding.
template <class Pass, int Count> static void inversePass(const Zmx16s* __restrict in, Zmx16s* __restrict out) {
    const auto element = [in](int k, int i) { return k < Count ? in[8 * k + i] : Zmx16s(0); };
    for (int i = 0; i < 8; ++i) {
        const Zmx16s c0 = in[i], c1 = in[8 + i], c2 = in[16 + i], c3 = in[24 + i];
        const Zmx16s c4 = element(4, i), c5 = element(5, i), c6 = element(6, i), c7 = element(7, i);

        // The odd rotations multiplied out, so that every factor has 16 bits: sums that wrap do not mind. Behind them
        // the butterflies, and the root of two on two of the four.
        const Wrapping o1 = times<kOddBy3.both - kOddBy3.minus>(c5) + times<kOddBy3.both>(c3);
        const Wrapping o2 = times<kOddBy3.both>(c5) - times<kOddBy3.plus - kOddBy3.both>(c3);
        const Wrapping o3 = times<kOddBy1.both + kOddBy1.minus>(c1) + times<kOddBy1.both>(c7);
        const Wrapping o4 = times<kOddBy1.both>(c1) - times<kOddBy1.plus - kOddBy1.both>(c7);
        const Wrapping e1 = o3 - o1, e2 = o4 - o2, h1 = e1 + e2, h2 = e1 - e2;
        const Wrapping g1 = timesRoot2(o1 + o3), g2 = timesRoot2(o2 + o4);

        // The even rotation.
        const Wrapping p1 = times<kEven.both + kEven.minus>(c2) + times<kEven.both>(c6);
        const Wrapping p2 = times<kEven.both>(c2) - times<kEven.plus - kEven.both>(c6);
        const Wrapping sum = Wrapping(c0 + c4) << 15, difference = Wrapping(c0 - c4) << 15;
        const Wrapping q0 = sum + p1, q3 = sum - p1, q1 = difference + p2, q2 = difference - p2;

        out[i] = ended<Pass>(q0 + g1);
        out[8 + i] = ended<Pass>(q1 + h1);
        out[16 + i] = ended<Pass>(q2 + h2);
        out[24 + i] = ended<Pass>(q3 + g2);
        out[32 + i] = ended<Pass>(q3 - g2);
        out[40 + i] = ended<Pass>(q2 - h2);
        out[48 + i] = ended<Pass>(q1 - h1);
        out[56 + i] = ended<Pass>(q0 - g1);
    }
}

// Whether all samples are those of 8 bits around zero.
static bool are8Bits(const Zmx16s* samples) {
    int beyond = 0;
    for (int i = 0; i < 64; ++i) beyond |= (samples[i] + 128) & ~255;
    return !beyond;
}

// The cores: the source may be the destination, which is written last.
static void dct_8x8_fwd_16s(const Zmx16s* src, Zmx16s* dst) {
    Block16s turned, held;
    transpose(src, turned.at);
    // With samples of 8 bits the sums fit 16 bits, and products of those are cheaper; the results are the same. The
    // first pass makes values from -8192 (eight times -128, three fraction bits) to 8191 at most (kForwardGain), and the
    // second adds up to four of them ahead of its products. Its odd part outgrows 16 bits, that of the first pass does
    // not.
    if (are8Bits(src)) {
        forwardPass<First, Zmx16s, Zmx16s>(turned.at, held.at);
        transpose(held.at, turned.at);
        forwardPass<Second, Zmx16s, Zmx32s>(turned.at, dst);
    } else {
        forwardPass<First, Zmx32s, Zmx32s>(turned.at, held.at);
        transpose(held.at, turned.at);
        forwardPass<Second, Zmx32s, Zmx32s>(turned.at, dst);
    }
}

// Columns of zeros leave columns of zeros behind the first pass, and the second one reads columns as its vectors.
template <int Rows, int Columns> static void inverse(const Zmx16s* src, Zmx16s* dst) {
    Block16s held, turned;
    inversePass<First, Rows>(src, held.at);
    transpose(held.at, turned.at);
    inversePass<Second, Columns>(turned.at, held.at);
    transpose(held.at, dst);
}

void dct_8x8_inv_16s(const Zmx16s* src, Zmx16s* dst, bool small) {
    // More forms would do with less arithmetic, but a branch that goes either way costs more than it saves.
    if (small)
        inverse<kSmallRows, kSmallColumns>(src, dst);
    else
        inverse<8, 8>(src, dst);
}

ZmxStatus zmxiDCT8x8Fwd_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst) {
    if (ZmxStatus bad = Args().ptr(pSrc).ptr(pDst)) return bad;
    dct_8x8_fwd_16s(pSrc, pDst);
    return zmxStsNoErr;
}

ZmxStatus zmxiDCT8x8Fwd_16s_C1I(Zmx16s* pSrcDst) { return zmxiDCT8x8Fwd_16s_C1(pSrcDst, pSrcDst); }

ZmxStatus zmxiDCT8x8Inv_16s_C1I(Zmx16s* pSrcDst) {
    if (ZmxStatus bad = Args().ptr(pSrcDst)) return bad;
    dct_8x8_inv_16s(pSrcDst, pSrcDst, isSmall(pSrcDst));
    return zmxStsNoErr;
}

ZmxStatus zmxiDCT8x8InvLSClip_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep, Zmx16s levelShift, Zmx8u minValue,
                                        Zmx8u maxValue) {
    if (ZmxStatus bad = Args().ptr(pSrc).ptr(pDst).step(dstStep)) return bad;
    Block16s samples;
    dct_8x8_inv_16s(pSrc, samples.at, isSmall(pSrc));
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const int t = samples.at[8 * y + x] + levelShift;
            // In this order: bounds that cross give the lower one below it and the upper one elsewhere.
            rowAt(pDst, dstStep, y)[x] = t < minValue ? minValue : t >= maxValue ? maxValue : Zmx8u(t);
        }
    return zmxStsNoErr;
}

} // namespace zmx
