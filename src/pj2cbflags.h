// pj2cbflags.h - the flag plane of a code block, shared by decoder and encoder: what a flag word says, how a sample that
// turns significant tells its neighbours, and the context tables that a word's bits index (ISO/IEC 15444-1 D.3).
#pragma once

#include "pj2mqprobest.h"

// A word describes two samples, one above the other: the low half the even row, the high half the odd row, each with
// these bits. The plane has a border of one word on each side and of one word row above and below.
enum FlagBit : Zmx32u {
    kSigSE = 0x0001,
    kSigSW = 0x0002,
    kSigNE = 0x0004,
    kSigNW = 0x0008,
    kSigS = 0x0010,
    kSigN = 0x0020,
    kSigE = 0x0040,
    kSigW = 0x0080,
    kRefined = 0x0100, // the sample has had its first refinement
    kNegS = 0x0200,
    kNegN = 0x0400,
    kNegE = 0x0800,
    kNegW = 0x1000,
    kSigAny = 0x2000,  // at least one of the eight neighbours is significant
    kVisited = 0x4000, // coded in the significance pass of the current plane
    kSelf = 0x8000     // the sample is significant
};

// Zero-coding contexts (Table D.1) by the sums of significant horizontal, vertical and diagonal neighbours.
constexpr int zeroCodingLL(int h, int v, int d) {
    if (h == 2) return 8;
    if (h == 1) return v ? 7 : d ? 6 : 5;
    if (v) return 2 + v;
    return d > 2 ? 2 : d;
}
constexpr int zeroCodingHH(int hv, int d) {
    if (d > 2) return 8;
    if (d == 2) return hv ? 7 : 6;
    if (hv > 2) hv = 2;
    return d ? 3 + hv : hv;
}
constexpr int countBits(int half, int mask) {
    int n = 0;
    for (int bits = half & mask; bits; bits &= bits - 1) ++n;
    return n;
}
constexpr int sumH(int half) { return countBits(half, kSigE | kSigW); }
constexpr int sumV(int half) { return countBits(half, kSigN | kSigS); }
constexpr int sumD(int half) { return countBits(half, kSigNW | kSigNE | kSigSW | kSigSE); }

// Indexed by bits 0 to 7 of a half. The names tell which of H and V counts as the first.
inline constexpr auto ZeroCodingLUT_LxHy = // LL and LH
    tableOf<256>([](int i) { return Zmx32u(kZeroCodingContext + zeroCodingLL(sumH(i), sumV(i), sumD(i))); });
inline constexpr auto ZeroCodingLUT_HxLy = // HL
    tableOf<256>([](int i) { return Zmx32u(kZeroCodingContext + zeroCodingLL(sumV(i), sumH(i), sumD(i))); });
inline constexpr auto ZeroCodingLUT_HxHy = // HH
    tableOf<256>([](int i) { return Zmx32u(kZeroCodingContext + zeroCodingHH(sumH(i) + sumV(i), sumD(i))); });
static_assert(ZeroCodingLUT_LxHy[0] == 2 && ZeroCodingLUT_LxHy[kSigE | kSigW] == 10 && ZeroCodingLUT_LxHy[kSigN] == 5);
static_assert(ZeroCodingLUT_HxLy[kSigN | kSigS] == 10 && ZeroCodingLUT_HxHy[kSigN | kSigSE] == 6);

constexpr const Zmx32u* zeroCodingLUT(int subband) {
    return (subband == 2 ? ZeroCodingLUT_HxLy : subband == 3 ? ZeroCodingLUT_HxHy : ZeroCodingLUT_LxHy).data();
}

// What a pair of neighbours says about the sign (Table D.2): 1 mostly positive, -1 mostly negative, 0 nothing.
constexpr int signContribution(int half, int sigA, int negA, int sigB, int negB) {
    const auto one = [half](int sig, int neg) { return half & sig ? half & neg ? -1 : 1 : 0; };
    const int sum = one(sigA, negA) + one(sigB, negB);
    return sum > 0 ? 1 : sum < 0 ? -1 : 0;
}

// Table D.3, indexed by bits 4 to 12 of a half: the context in bits 0 to 3, the predicted sign in bit 31.
constexpr Zmx32u signCoding(int index) {
    const int half = index << 4;
    int h = signContribution(half, kSigE, kNegE, kSigW, kNegW);
    int v = signContribution(half, kSigN, kNegN, kSigS, kNegS);
    const bool flip = h < 0 || (h == 0 && v < 0); // the table is symmetric
    if (flip) h = -h, v = -v;
    const int label = h ? 3 + v : v; // 2 to 4 in the row of H, 0 or 1 without H
    return Zmx32u(kSignContext + label) | Zmx32u(flip) << 31;
}
// Index 511 cannot be reached (a sample whose sign is coded has not been refined); its entry is 0, required as such.
inline constexpr auto SignCodingLUT = tableOf<512>([](int i) { return i == 511 ? 0u : signCoding(i); });
static_assert(SignCodingLUT[0] == 11 && SignCodingLUT[(kSigE | kSigN) >> 4] == 15);
static_assert(SignCodingLUT[(kSigE | kNegE) >> 4] == (0x80000000 | 14));

// Table D.4, indexed by bits 0 to 8 of a half.
inline constexpr auto MagnRefineLUT =
    tableOf<512>([](int i) { return Zmx32u(kRefineContext + (i & kRefined ? 2 : i ? 1 : 0)); });
static_assert(MagnRefineLUT[0] == 16 && MagnRefineLUT[1] == 17 && MagnRefineLUT[256] == 18);
