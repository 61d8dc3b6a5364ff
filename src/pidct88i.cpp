// pidct88i.cpp - the integer 8x8 forward and inverse DCT.
//
// The flow is that of Loeffler, Ligtenberg and Moschytz. The forward transform takes the rows first, the inverse the
// columns. Arithmetic wraps in 32 bits; between the two passes the block holds 16-bit values with three fraction bits.
#include "pidct.h"

#include "pidct88.h"
#include "pjargs.h"
#include "pjrows.h"

// Results 0 and 4: the sums themselves, eight times as large after the first pass, rounded after the second.
static Zmx16s sumEnded(First, Wrapping v) { return wrap16s(Zmx32s(v * 8)); }
static Zmx16s sumEnded(Second, Wrapping v) { return wrap16s(shiftRight(v + 32, 6)); }

template <class Pass> static void forwardPass(const Zmx16s* in, Zmx16s* out) {
    for (int i = 0; i < 8; ++i) {
        const int x0 = in[i], x1 = in[8 + i], x2 = in[16 + i], x3 = in[24 + i];
        const int x4 = in[32 + i], x5 = in[40 + i], x6 = in[48 + i], x7 = in[56 + i];
        const Wrapping s0 = Wrapping(x0 + x7), s1 = Wrapping(x1 + x6), s2 = Wrapping(x2 + x5), s3 = Wrapping(x3 + x4);
        const Wrapping d0 = Wrapping(x0 - x7), d1 = Wrapping(x1 - x6), d2 = Wrapping(x2 - x5), d3 = Wrapping(x3 - x4);

        const Wrapping a = s0 + s3, b = s0 - s3, c = s1 + s2, e = s1 - s2;
        out[i] = sumEnded(Pass(), a + c);
        out[32 + i] = sumEnded(Pass(), a - c);
        // Multipliers of 15 fraction bits.
        const Wrapping w = (b + e) * 17734u;
        out[16 + i] = ended<Pass>(w + b * 25080u);
        out[48 + i] = ended<Pass>(w - e * 60547u);

        // The odd part is eight times as large from here on, its multipliers have 12 fraction bits. The root of two
        // times the outer differences is rounded here, in both passes.
        const Wrapping u = (d1 + d2) * 8, v = (d1 - d2) * 8;
        const Wrapping p = Wrapping(shiftRight(d0 * 46341u + 2048, 12)), q = Wrapping(shiftRight(d3 * 46341u + 2048, 12));
        const Wrapping e1 = u + p, e2 = p - u, e3 = v + q, e4 = q - v;
        const Wrapping w1 = (e1 + e3) * 799u, w2 = (e2 + e4) * 3406u;
        out[8 + i] = ended<Pass>(w1 + e1 * 3218u);
        out[56 + i] = ended<Pass>(w1 - e3 * 4816u);
        out[24 + i] = ended<Pass>(w2 - e4 * 5681u);
        out[40 + i] = ended<Pass>(w2 - e2 * 1130u);
    }
}

template <class Pass> static void inversePass(const Zmx16s* in, Zmx16s* out) {
    for (int i = 0; i < 8; ++i) {
        const Zmx16s c0 = in[i], c1 = in[8 + i], c2 = in[16 + i], c3 = in[24 + i];
        const Zmx16s c4 = in[32 + i], c5 = in[40 + i], c6 = in[48 + i], c7 = in[56 + i];

        // The rotations multiplied out, so that every factor has 16 bits: sums that wrap do not mind. All multipliers
        // but 5793 have 15 fraction bits.
        const Wrapping o1 = product(c5, 27246 - 9041) + product(c3, 27246);
        const Wrapping o2 = product(c5, 27246) + product(c3, 27246 - 45451);
        const Wrapping o3 = product(c1, 6393 + 25746) + product(c7, 6393);
        const Wrapping o4 = product(c1, 6393) + product(c7, 6393 - 38531);
        const Wrapping e1 = o3 - o1, e2 = o4 - o2, h1 = e1 + e2, h2 = e1 - e2;
        // The root of two, with 12 fraction bits; the sums are rounded ahead of it, in both passes.
        const Wrapping g1 = Wrapping(shiftRight(o1 + o3 + 2048, 12)) * 5793u;
        const Wrapping g2 = Wrapping(shiftRight(o2 + o4 + 2048, 12)) * 5793u;

        // 17734 + 25080 = 2 x 21407; 17734 - 60547 = 1 - 2 x 21407.
        const Wrapping p1 = 2 * product(c2, 21407) + product(c6, 17734);
        const Wrapping p2 = product(c2, 17734) - 2 * product(c6, 21407) + Wrapping(c6);
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

// The cores: the source may be the destination, which is written last.
static void dct_8x8_fwd_16s(const Zmx16s* src, Zmx16s* dst) {
    Block16s turned, held;
    transpose(src, turned.at);
    forwardPass<First>(turned.at, held.at);
    transpose(held.at, turned.at);
    forwardPass<Second>(turned.at, dst);
}

static void dct_8x8_inv_16s(const Zmx16s* src, Zmx16s* dst) {
    Block16s held, turned;
    inversePass<First>(src, held.at);
    transpose(held.at, turned.at);
    inversePass<Second>(turned.at, held.at);
    transpose(held.at, dst);
}

ZmxStatus zmxiDCT8x8Fwd_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst) {
    if (ZmxStatus bad = Args().ptr(pSrc).ptr(pDst)) return bad;
    dct_8x8_fwd_16s(pSrc, pDst);
    return zmxStsNoErr;
}

ZmxStatus zmxiDCT8x8Fwd_16s_C1I(Zmx16s* pSrcDst) { return zmxiDCT8x8Fwd_16s_C1(pSrcDst, pSrcDst); }

ZmxStatus zmxiDCT8x8Inv_16s_C1I(Zmx16s* pSrcDst) {
    if (ZmxStatus bad = Args().ptr(pSrcDst)) return bad;
    dct_8x8_inv_16s(pSrcDst, pSrcDst);
    return zmxStsNoErr;
}

ZmxStatus zmxiDCT8x8InvLSClip_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep, Zmx16s levelShift,
                                        Zmx8u minValue, Zmx8u maxValue) {
    if (ZmxStatus bad = Args().ptr(pSrc).ptr(pDst).step(dstStep)) return bad;
    Block16s samples;
    dct_8x8_inv_16s(pSrc, samples.at);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const int t = samples.at[8 * y + x] + levelShift;
            // In this order: bounds that cross give the lower one below it and the upper one elsewhere.
            rowAt(pDst, dstStep, y)[x] = t < minValue ? minValue : t >= maxValue ? maxValue : Zmx8u(t);
        }
    return zmxStsNoErr;
}
