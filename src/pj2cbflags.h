// pj2cbflags.h - the flag plane of a code block, shared by decoder and encoder: what a flag word says, how a
// sample that turns significant tells its neighbours, and the context tables that a word's bits index
// (ISO/IEC 15444-1 D.3).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pj2mqprobest.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>

namespace zmx {

// A word describes two samples, one above the other: the low half the even row, the high half the odd row,
// each with these bits. The plane has a border of one word on each side and of one word row above and below.
inline constexpr Zmx32u kSigSE = 0x0001; // significant neighbours
inline constexpr Zmx32u kSigSW = 0x0002;
inline constexpr Zmx32u kSigNE = 0x0004;
inline constexpr Zmx32u kSigNW = 0x0008;
inline constexpr Zmx32u kSigS = 0x0010;
inline constexpr Zmx32u kSigN = 0x0020;
inline constexpr Zmx32u kSigE = 0x0040;
inline constexpr Zmx32u kSigW = 0x0080;
inline constexpr Zmx32u kRefined = 0x0100; // the sample has had its first refinement
inline constexpr Zmx32u kNegS = 0x0200;    // negative neighbours
inline constexpr Zmx32u kNegN = 0x0400;
inline constexpr Zmx32u kNegE = 0x0800;
inline constexpr Zmx32u kNegW = 0x1000;
inline constexpr Zmx32u kSigAny = 0x2000;  // at least one of the eight neighbours is significant
inline constexpr Zmx32u kVisited = 0x4000; // coded in the significance pass of the current plane
inline constexpr Zmx32u kSelf = 0x8000;    // the sample is significant

// Zero-coding contexts (Table D.1) by the sums of significant horizontal, vertical and diagonal neighbours.
constexpr Zmx32u zeroCodingLL(Zmx32u h, Zmx32u v, Zmx32u d) {
    if (h == 2) return 8;
    if (h == 1) return v ? 7 : d ? 6 : 5;
    if (v) return 2 + v;
    return d > 2 ? 2 : d;
}
constexpr Zmx32u zeroCodingHH(Zmx32u hv, Zmx32u d) {
    if (d > 2) return 8;
    if (d == 2) return hv ? 7 : 6;
    if (hv > 2) hv = 2;
    return d ? 3 + hv : hv;
}
constexpr Zmx32u sumH(Zmx32u half) { return std::popcount(half & (kSigE | kSigW)); }
constexpr Zmx32u sumV(Zmx32u half) { return std::popcount(half & (kSigN | kSigS)); }
constexpr Zmx32u sumD(Zmx32u half) { return std::popcount(half & (kSigNW | kSigNE | kSigSW | kSigSE)); }

// Indexed by bits 0 to 7 of a half. The names tell which of H and V counts as the first.
inline constexpr auto ZeroCodingLUT_LxHy = // LL and LH
    tableOf<256>([](int i) { return kZeroCodingContext + zeroCodingLL(sumH(i), sumV(i), sumD(i)); });
inline constexpr auto ZeroCodingLUT_HxLy = // HL
    tableOf<256>([](int i) { return kZeroCodingContext + zeroCodingLL(sumV(i), sumH(i), sumD(i)); });
inline constexpr auto ZeroCodingLUT_HxHy = // HH
    tableOf<256>([](int i) { return kZeroCodingContext + zeroCodingHH(sumH(i) + sumV(i), sumD(i)); });
static_assert(ZeroCodingLUT_LxHy[0] == 2 && ZeroCodingLUT_LxHy[kSigE | kSigW] == 10 && ZeroCodingLUT_LxHy[kSigN] == 5);
static_assert(ZeroCodingLUT_HxLy[kSigN | kSigS] == 10 && ZeroCodingLUT_HxHy[kSigN | kSigSE] == 6);

constexpr const Zmx32u* zeroCodingLUT(int subband) {
    return (subband == 2 ? ZeroCodingLUT_HxLy : subband == 3 ? ZeroCodingLUT_HxHy : ZeroCodingLUT_LxHy).data();
}

// What a pair of neighbours says about the sign (Table D.2): 1 mostly positive, -1 mostly negative, 0
// nothing.
constexpr int signContribution(Zmx32u half, Zmx32u sigA, Zmx32u negA, Zmx32u sigB, Zmx32u negB) {
    const auto one = [half](Zmx32u sig, Zmx32u neg) { return half & sig ? half & neg ? -1 : 1 : 0; };
    const int sum = one(sigA, negA) + one(sigB, negB);
    return sum > 0 ? 1 : sum < 0 ? -1 : 0;
}

// Table D.3, indexed by bits 4 to 12 of a half: the context in bits 0 to 3, the predicted sign in bit 31.
constexpr Zmx32u signCoding(int index) {
    const Zmx32u half = Zmx32u(index) << 4;
    int h = signContribution(half, kSigE, kNegE, kSigW, kNegW);
    int v = signContribution(half, kSigN, kNegN, kSigS, kNegS);
    const bool flip = h < 0 || (h == 0 && v < 0); // the table is symmetric
    if (flip) h = -h, v = -v;
    const int label = h ? 3 + v : v; // 2 to 4 in the row of H, 0 or 1 without H
    return (kSignContext + label) | Zmx32u(flip) << 31;
}
// Index 511 cannot be reached (a sample whose sign is coded has not been refined); its entry is 0, required
// as such.
inline constexpr auto SignCodingLUT = tableOf<512>([](int i) { return i == 511 ? 0u : signCoding(i); });
static_assert(SignCodingLUT[0] == 11 && SignCodingLUT[(kSigE | kSigN) >> 4] == 15);
static_assert(SignCodingLUT[(kSigE | kNegE) >> 4] == (0x80000000 | 14));

// Table D.4, indexed by bits 0 to 8 of a half.
inline constexpr auto MagnRefineLUT = tableOf<512>([](int i) {
    return kRefineContext + (i & kRefined ? 2 : i ? 1 : 0);
});
static_assert(MagnRefineLUT[0] == 16 && MagnRefineLUT[1] == 17 && MagnRefineLUT[256] == 18);

// Bytes from flag row to flag row: a word a column and one on each side, in multiples of 32.
constexpr std::int64_t flagRowBytes(int width) { return (std::int64_t(width) * 4 + 8 + 31) & ~31; }

// Flag rows of a plane: one for each pair of sample rows, one above and one below.
constexpr std::int64_t flagRows(int height) { return (std::int64_t(height) + 1) / 2 + 2; }

// The most bytes that an int can tell, and so the most that a block of memory has.
inline constexpr std::int64_t kMostBytes = std::numeric_limits<int>::max();

// The product of two sizes above 0; where it is above that, a number that is so too, and no overflow.
constexpr std::int64_t bytesOf(std::int64_t a, std::int64_t b) {
    return std::min(std::min(a, kMostBytes + 1) * std::min(b, kMostBytes + 1), kMostBytes + 1);
}

constexpr std::int64_t flagPlaneBytes(ZmxiSize size) {
    return bytesOf(flagRowBytes(size.width), flagRows(size.height));
}

// Zeroes the flag plane of a block; what lies between its border and the end of a flag row is left alone.
void clearFlagPlane(Zmx32u* flags, ZmxiSize size);

// A shift by a bit plane's number. Numbers above 31 count modulo 32, whatever the machine.
constexpr Zmx32u atPlane(Zmx32u bits, int plane) { return bits << (plane & 31); }

} // namespace zmx
