// pjpixels.h - what the plane conversions share: a colour formula applied along rows, and bytes of pixels to rows and
// back.
//
// Two neighbouring samples of a row make one word of 16 bits, and are taken apart and put together by masks and shifts
// of 16-bit lanes. The compiler vectorises that as it stands; rows of bytes it would first widen and at last narrow,
// which takes longer.
#pragma once

#include "pjargs.h"
#include "pjrows.h"

#include <cstdint>

namespace zmx {

// Ahead of a loop each of whose iterations reads all that it reads before it writes, at places that are its own: rows
// in place of their own sources are no reason against vectors, and nobody need ask at run time whether they are. The
// bound must be a plain local: gcc with sanitizers does not look for the loop behind an expression. For clang it is a
// demand, and a warning where there are no vectors; here it is a leave.
#ifdef __clang__
#pragma clang diagnostic ignored "-Wpass-failed"
#define INDEPENDENT_ITERATIONS _Pragma("clang loop vectorize(assume_safety)")
#else
#define INDEPENDENT_ITERATIONS _Pragma("GCC ivdep")
#endif

// The high half of a 16-bit product, one instruction a vector.
constexpr Zmx16s mulHigh(Zmx16s a, Zmx16s b) { return Zmx16s((a * b) >> 16); }

// (a x + b y + 32768) >> 16 in 16-bit lanes: the high halves of the products, and what their low halves and the
// rounding term carry over. Adding 32768 to the low half of a x carries when its top bit is set; since it also swaps
// the ends of the range, the sum with the low half of b y then carries when it is the lesser one as a signed number.
constexpr Zmx16s roundedSumHigh(Zmx16s a, Zmx16s x, Zmx16s b, Zmx16s y) {
    const Zmx16s low = Zmx16s(a * x), sum = Zmx16s(low + Zmx16s(b * y));
    return Zmx16s(mulHigh(a, x) + mulHigh(b, y) + (low < 0) + (sum < low));
}

// Rows of pixels pass through runs of N channels on the stack.
constexpr int kRun = 256; // pixels; a run and its results stay in the first-level cache
template <int N> struct Run { Zmx8u of[N][kRun]; };

// N rows of samples that make pixels together: row y of N planes, or a run.
template <int N, class Byte> struct Rows {
    Byte* of[N];
    Rows(Byte* const* planes, int step, int y) {
        for (int p = 0; p < N; ++p) of[p] = rowAt(planes[p], step, y);
    }
    explicit Rows(Run<N>& run) {
        for (int p = 0; p < N; ++p) of[p] = run.of[p];
    }
    // The same rows from pixel x on.
    Rows from(int x) const {
        Rows rest(*this);
        for (Byte*& row : rest.of) row += x;
        return rest;
    }
};

// A pixel of N samples of 0 to 255, in 16-bit lanes. A colour formula is a function of a Pixel<N> and the Pixel<M> that
// it fills: a result by value would come in one register, and clang would go on in 64-bit lanes.
template <int N> struct Pixel { Zmx16s of[N]; };

// n pixels by a formula. A row written may be any one of those read.
template <auto formula, int N, int M> inline void convertRow(Rows<N, const Zmx8u> src, Rows<M, Zmx8u> dst, int n) {
    const int pairs = n / 2;
    INDEPENDENT_ITERATIONS
    for (int i = 0; i < pairs; ++i) {
        Pixel<N> first, second;
        for (int p = 0; p < N; ++p) {
            const Zmx16u word = load<Zmx16u>(src.of[p], i); // which of the two is the low byte does not matter
            first.of[p] = Zmx16s(word & 255);
            second.of[p] = Zmx16s(word >> 8);
        }
        Pixel<M> low, high;
        formula(first, low);
        formula(second, high);
        for (int p = 0; p < M; ++p) store(dst.of[p], i, Zmx16u(low.of[p] | high.of[p] << 8));
    }
    if (n % 2 == 0) return;
    Pixel<N> last;
    for (int p = 0; p < N; ++p) last.of[p] = src.of[p][n - 1];
    Pixel<M> low;
    formula(last, low);
    for (int p = 0; p < M; ++p) dst.of[p][n - 1] = Zmx8u(low.of[p]);
}

// Planes to planes, in both directions.
template <auto formula, int N, int M>
ZmxStatus planesToPlanes(const Zmx8u* const* src, int srcStep, Zmx8u* const* dst, int dstStep, ZmxiSize roi) {
    if (ZmxStatus bad = Args().ptr(src).ptr(dst).planes(src, N).planes(dst, M).step(srcStep).step(dstStep).size(roi))
        return bad;
    Parallel::rows(roi, [=](int y) {
        convertRow<formula>(Rows<N, const Zmx8u>(src, srcStep, y), Rows<M, Zmx8u>(dst, dstStep, y), roi.width);
    });
    return zmxStsNoErr;
}

// Baseline x86 has no byte shuffle, so a loop over bytes three apart stays scalar. But four pixels are three words of
// 32 bits, and four samples of a row are one: between these go masks and shifts. Two fours go side by side in 64 bits,
// since vectors of 64-bit lanes are the only ones that the compilers also deal out by threes.
using Fours = std::uint64_t;
namespace fours {
constexpr Fours both(Zmx32u word) { return Fours(word) << 32 | word; }
constexpr Fours kByte0 = both(0xFF), kByte1 = both(0xFF00), kByte2 = both(0xFF0000), kByte3 = both(0xFF000000);
constexpr Fours kFirst = 0xFFFFFFFF, kSecond = ~kFirst;
} // namespace fours

// n pixels of three bytes to rows. Reads 3n bytes.
inline void loadPixels(const Zmx8u* src, Zmx8u* row0, Zmx8u* row1, Zmx8u* row2, int n) {
    using namespace fours;
    const int eights = n / 8;
    INDEPENDENT_ITERATIONS
    for (int i = 0; i < eights; ++i) {
        const auto x = loadLE<Fours>(src, 3 * i), y = loadLE<Fours>(src, 3 * i + 1), z = loadLE<Fours>(src, 3 * i + 2);
        // Words 0 and 3, 1 and 4, 2 and 5 of the six.
        const Fours a = (x & kFirst) | (y & kSecond), b = x >> 32 | z << 32, c = (y & kFirst) | (z & kSecond);
        storeLE(row0, i, (a & kByte0) | (a >> 16 & kByte1) | (b & kByte2) | (c << 16 & kByte3));
        storeLE(row1, i, (a >> 8 & kByte0) | (b << 8 & kByte1) | (b >> 8 & kByte2) | (c << 8 & kByte3));
        storeLE(row2, i, (a >> 16 & kByte0) | (b & kByte1) | (c << 16 & kByte2) | (c & kByte3));
    }
    for (int i = 8 * eights; i < n; ++i) {
        row0[i] = src[3 * i];
        row1[i] = src[3 * i + 1];
        row2[i] = src[3 * i + 2];
    }
}

// The way back. Writes 3n bytes.
inline void storePixels(const Zmx8u* row0, const Zmx8u* row1, const Zmx8u* row2, Zmx8u* dst, int n) {
    using namespace fours;
    const int eights = n / 8;
    INDEPENDENT_ITERATIONS
    for (int i = 0; i < eights; ++i) {
        const auto p = loadLE<Fours>(row0, i), q = loadLE<Fours>(row1, i), r = loadLE<Fours>(row2, i);
        const Fours a = (p & kByte0) | (q << 8 & kByte1) | (r << 16 & kByte2) | (p << 16 & kByte3);
        const Fours b = (q >> 8 & kByte0) | (r & kByte1) | (p & kByte2) | (q << 8 & kByte3);
        const Fours c = (r >> 16 & kByte0) | (p >> 16 & kByte1) | (q >> 8 & kByte2) | (r & kByte3);
        storeLE(dst, 3 * i, (a & kFirst) | b << 32);
        storeLE(dst, 3 * i + 1, (c & kFirst) | (a & kSecond));
        storeLE(dst, 3 * i + 2, b >> 32 | (c & kSecond));
    }
    for (int i = 8 * eights; i < n; ++i) {
        dst[3 * i] = row0[i];
        dst[3 * i + 1] = row1[i];
        dst[3 * i + 2] = row2[i];
    }
}

} // namespace zmx
