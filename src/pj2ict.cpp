// pj2ict.cpp - the irreversible component transform of JPEG2000 (ISO/IEC 15444-1, G.3) in fixed point with 14
// fractional bits, and in floating point.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2ct.h"
#include "pjbits.h"
#include "pjround.h"
#include "pjx87.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace zmx::components {
namespace {

// ---- fixed point: products and sums in 32 bits, where they wrap for large 32-bit samples; each result has its own
// half (8192) ahead of the shift, and nothing saturates.

constexpr Zmx32s weigh(Zmx32s w0, Zmx32s x0, Zmx32s w1, Zmx32s x1, Zmx32s w2, Zmx32s x2) {
    return wrapAdd(wrapAdd(wrapAdd(wrapMul(w0, x0), wrapMul(w1, x1)), wrapMul(w2, x2)), 8192) >> 14;
}

// The weights of Y add up to 16384, those of Cb and of Cr to 0.
template <class T> constexpr Pixel<T> forward(Pixel<T> p) {
    return {T(weigh(4899, p.a, 9617, p.b, 1868, p.c)), T(weigh(-2765, p.a, -5427, p.b, 8192, p.c)),
            T(weigh(8192, p.a, -6860, p.b, -1332, p.c))};
}

// Y is added behind the shift.
template <class T> constexpr Pixel<T> inverse(Pixel<T> p) {
    const Zmx32s y = p.a, cb = p.b, cr = p.c;
    return {T(wrapAdd(y, weigh(22970, cr, 0, 0, 0, 0))), T(wrapAdd(y, weigh(-5638, cb, -11700, cr, 0, 0))),
            T(wrapAdd(y, weigh(29032, cb, 0, 0, 0, 0)))};
}

// ---- floating point: 32-bit constants, each sum from left to right in extended precision and rounded once, at the
// store. Real is a type in which the sums are computed; products of floats are exact in all of them.

// Y, Cb, Cr. The order of the terms is fixed: it decides the last bit.
struct Forward {
    template <class Real> static Pixel<Real> sums(Real r, Real g, Real b) {
        return {r * 0.299f + g * 0.587f + b * 0.114f, r * -0.16875f - g * 0.33126f + b * 0.5f,
                r * 0.5f - g * 0.41869f - b * 0.08131f};
    }
};
// R, G, B; the constants are no exact inverse of the forward ones.
struct Inverse {
    template <class Real> static Pixel<Real> sums(Real y, Real cb, Real cr) {
        return {cr * 1.402f + y, (y - cb * 0.34413f) - cr * 0.71414f, cb * 1.772f + y};
    }
};

// One pixel: all three samples are read before any is written.
template <class Direction, class Real> Pixel<Zmx32f> inPrecisionOf(Zmx32f a, Zmx32f b, Zmx32f c) {
    const Real x = a, y = b, z = c; // exact
    const Pixel<Real> p = Direction::sums(x, y, z);
    return {Zmx32f(p.a), Zmx32f(p.b), Zmx32f(p.c)};
}

// Doubles serve, a block of pixels at a time, which the compiler vectorises, where it is certain that they come to the
// same floats. A block has its samples apart by component, whatever the layout of the row; what the sums come to; and
// something other than 0 where that is in doubt.
constexpr int kBlock = 64;
struct Block {
    Zmx32f in[3][kBlock], out[3][kBlock];
    Zmx32u doubt[kBlock];
    void put(int i, Pixel<Zmx32f> p) {
        out[0][i] = p.a;
        out[1][i] = p.b;
        out[2][i] = p.c;
    }
};

Zmx32u bitsOf(Zmx32f v) { return bitCast<Zmx32u>(v); }

// Whole numbers are what an encoder begins with. They are worth a way of their own: their sums have few bits, so that
// many lie half-way between two floats, where no bracket tells. Below 2^22 the sums are exact: multiples of 2^-27, as
// all constants are, and below 2^25.
bool areWhole(const Zmx32f* v, int n) {
    constexpr Zmx32f large = 3 << 22; // leaves no room for a fraction
    Zmx32u others = 0;
    for (int i = 0; i < n; ++i) {
        const Zmx32u magnitude = bitsOf(v[i]) << 1; // without the sign, which a zero may lose in the sum
        others |= magnitude ^ bitsOf(rounded(rounded(v[i] + large) - large)) << 1;
        others |= Zmx32u(magnitude >= bitsOf(0x1p22f) << 1);
    }
    return others == 0;
}
template <class Direction> void exactSums(Block& x, int n) {
    for (int i = 0; i < n; ++i) x.put(i, inPrecisionOf<Direction, double>(x.in[0][i], x.in[1][i], x.in[2][i]));
}

// Of other numbers, with S the sum of the magnitudes, every partial sum is below 2 S, so that two of them are off by
// less than 2^-51 S, and 2^-62 S in extended precision. What lies within 2^-50 S of a sum, on both sides, has to round
// to the same float. An infinity or a NaN makes a doubt that is none.
template <class Direction> void bracketedSums(Block& x, int n) {
    for (int i = 0; i < n; ++i) {
        const double a = x.in[0][i], b = x.in[1][i], c = x.in[2][i];
        const double off = (std::fabs(a) + std::fabs(b) + std::fabs(c)) * 0x1p-50;
        const Pixel<double> p = Direction::sums(a, b, c);
        const Pixel<Zmx32f> below = {Zmx32f(p.a - off), Zmx32f(p.b - off), Zmx32f(p.c - off)};
        x.put(i, below);
        x.doubt[i] = (bitsOf(below.a) ^ bitsOf(Zmx32f(p.a + off))) | (bitsOf(below.b) ^ bitsOf(Zmx32f(p.b + off))) |
                     (bitsOf(below.c) ^ bitsOf(Zmx32f(p.c + off))) | Zmx32u(!(Zmx32f(off) < 0x1p100f));
    }
}

// The few pixels in doubt are computed again.
template <class Direction> void transformBlock(Block& x, int n) {
    if (areWhole(x.in[0], n) && areWhole(x.in[1], n) && areWhole(x.in[2], n)) return exactSums<Direction>(x, n);
    bracketedSums<Direction>(x, n);
    Zmx32u any = 0;
    for (int i = 0; i < n; ++i) any |= x.doubt[i];
    // About one pixel in a thousand.
    for (int i = 0; any != 0 && i < n; ++i)
        if (x.doubt[i]) x.put(i, inPrecisionOf<Direction, SoftExtended>(x.in[0][i], x.in[1][i], x.in[2][i]));
}

constexpr std::ptrdiff_t kSample = sizeof(Zmx32f);

// Rows of three planes, and rows of pixels: n pixels from number `from` on go into a block, and out of it. Copying the
// samples one by one lets the compiler choose: it vectorises planes and leaves pixels alone, which is the faster way.
template <class Byte> struct Planes {
    Byte* rows[3];
    void gather(int from, Block& x, int n) const {
        for (int c = 0; c < 3; ++c)
            for (int i = 0; i < n; ++i) x.in[c][i] = load<Zmx32f>(rows[c], from + i);
    }
    void scatter(int from, const Block& x, int n) const {
        for (int c = 0; c < 3; ++c)
            for (int i = 0; i < n; ++i) store(rows[c], from + i, x.out[c][i]);
    }
};
template <class Byte> struct Pixels {
    Byte* row;
    // unreachable: with an x87 unit, which onX87 takes
    void gather(int from, Block& x, int n) const {
        const Zmx8u* const first = row + 3 * kSample * from;
        for (int i = 0; i < n; ++i) {
            x.in[0][i] = load<Zmx32f>(first, 3 * i);
            x.in[1][i] = load<Zmx32f>(first, 3 * i + 1);
            x.in[2][i] = load<Zmx32f>(first, 3 * i + 2);
        }
    }
    // unreachable: with an x87 unit, which onX87 takes
    void scatter(int from, const Block& x, int n) const {
        Zmx8u* const first = row + 3 * kSample * from;
        for (int i = 0; i < n; ++i) {
            store(first, 3 * i, x.out[0][i]);
            store(first, 3 * i + 1, x.out[1][i]);
            store(first, 3 * i + 2, x.out[2][i]);
        }
    }
};

// Where rows touch, a sample may be written before it is read as another one: pixels go one by one.
template <class Direction, class Source, class Destination>
void transformRow(Source src, Destination dst, int width, bool touching) {
    const int step = touching ? 1 : kBlock; // slow, and hardly ever needed
    Block x;
    for (int from = 0; from < width; from += step) {
        const int n = std::min(step, width - from);
        src.gather(from, x, n);
        transformBlock<Direction>(x, n);
        dst.scatter(from, x, n);
    }
}

// Whether rows touch that have so many samples a pixel.
using Bytes = const Zmx8u*;
bool touch(Bytes a, int samplesOfA, Bytes b, int samplesOfB, int width) {
    const auto p = reinterpret_cast<std::uintptr_t>(a), q = reinterpret_cast<std::uintptr_t>(b);
    return (p < q ? q - p : p - q) < std::size_t(kSample * (p < q ? samplesOfA : samplesOfB)) * std::size_t(width);
}
// unreachable: with an x87 unit, which onX87 takes
template <class Direction> void splitFloats(Bytes src, Zmx8u* d0, Zmx8u* d1, Zmx8u* d2, int width) {
    const auto touches = [=](Bytes d) { return touch(src, 3, d, 1, width); };
    transformRow<Direction>(Pixels<const Zmx8u>{src}, Planes<Zmx8u>{{d0, d1, d2}}, width,
                            touches(d0) || touches(d1) || touches(d2));
}
// unreachable: with an x87 unit, which onX87 takes
template <class Direction> void joinFloats(Bytes s0, Bytes s1, Bytes s2, Zmx8u* dst, int width) {
    const auto touches = [=](Bytes s) { return touch(s, 1, dst, 3, width); };
    transformRow<Direction>(Planes<const Zmx8u>{{s0, s1, s2}}, Pixels<Zmx8u>{dst}, width,
                            touches(s0) || touches(s1) || touches(s2));
}
template <class Direction> void planesOfFloats(Zmx8u* r0, Zmx8u* r1, Zmx8u* r2, int width) {
    const auto touches = [=](Bytes a, Bytes b) { return touch(a, 1, b, 1, width); };
    transformRow<Direction>(Planes<Zmx8u>{{r0, r1, r2}}, Planes<Zmx8u>{{r0, r1, r2}}, width,
                            touches(r0, r1) || touches(r0, r2) || touches(r1, r2));
}

// Which way serves, by measurement on x86-64 with gcc 12.
//
// The x87 unit, where there is one, is faster for the shorter sums of the inverse (1.9 ns a pixel against 2.9), and as
// fast for pixels, which have to be taken apart into blocks. For planes the blocks take 3.0 ns against its 4.1.
template <class Direction> Pixel<Zmx32f> onX87(Pixel<Zmx32f> p) {
    return inPrecisionOf<Direction, Extended>(p.a, p.b, p.c);
}
constexpr auto splitForward = kExtendedOnX87 ? splitRow<Zmx32f, onX87<Forward>> : splitFloats<Forward>;
constexpr auto planesForward = planesOfFloats<Forward>;
constexpr auto joinInverse = kExtendedOnX87 ? joinRow<Zmx32f, onX87<Inverse>> : joinFloats<Inverse>;
constexpr auto planesInverse = kExtendedOnX87 ? planesRow<Zmx32f, onX87<Inverse>> : planesOfFloats<Inverse>;

// Either doubles or extended precision, and either may be computed on the unit.
constexpr bool kOnX87 = kExtendedOnX87 || kDoubleOnX87;

} // namespace
} // namespace zmx::components

using namespace zmx;
using namespace zmx::components;

// ---- fixed point: planes in place alone; the transforms of pixels are for floats

ZmxStatus zmxiICTFwd_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace(pSrcDst, srcDstStep, roiSize, planesRow<Zmx16s, forward<Zmx16s>>);
}
ZmxStatus zmxiICTFwd_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace(pSrcDst, srcDstStep, roiSize, planesRow<Zmx32s, forward<Zmx32s>>);
}
ZmxStatus zmxiICTInv_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace(pSrcDst, srcDstStep, roiSize, planesRow<Zmx16s, inverse<Zmx16s>>);
}
ZmxStatus zmxiICTInv_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return planesInPlace(pSrcDst, srcDstStep, roiSize, planesRow<Zmx32s, inverse<Zmx32s>>);
}

// ---- floats: the encoder's direction from pixels, the decoder's to pixels, both in place

ZmxStatus zmxiICTFwd_JPEG2K_32f_C3P3R(const Zmx32f* pSrc, int srcStep, Zmx32f* const pDst[3], int dstStep,
                                      ZmxiSize roiSize) {
    return inFullPrecision<kOnX87>([=] { return pixelsToPlanes(pSrc, srcStep, pDst, dstStep, roiSize, splitForward); });
}
ZmxStatus zmxiICTFwd_JPEG2K_32f_P3IR(Zmx32f* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return inFullPrecision<kOnX87>([=] { return planesInPlace(pSrcDst, srcDstStep, roiSize, planesForward); });
}
ZmxStatus zmxiICTInv_JPEG2K_32f_P3C3R(const Zmx32f* const pSrc[3], int srcStep, Zmx32f* pDst, int dstStep,
                                      ZmxiSize roiSize) {
    return inFullPrecision<kOnX87>([=] { return planesToPixels(pSrc, srcStep, pDst, dstStep, roiSize, joinInverse); });
}
ZmxStatus zmxiICTInv_JPEG2K_32f_P3IR(Zmx32f* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize) {
    return inFullPrecision<kOnX87>([=] { return planesInPlace(pSrcDst, srcDstStep, roiSize, planesInverse); });
}
