// pjpixels.h - what the plane conversions share: a colour formula applied along rows, and bytes of pixels to rows and
// back.
//
// Two neighbouring samples of a row make one word of 16 bits, and are taken apart and put together by masks and shifts
// of 16-bit lanes. The compiler vectorises that as it stands; rows of bytes it would first widen and at last narrow,
// which takes a third more of its time.
#pragma once

#include "pjargs.h"
#include "pjrows.h"

#include <array>
#include <bit>

static_assert(std::endian::native == std::endian::little, "the first sample is the low byte of its word");

// Ahead of a loop each of whose iterations reads all that it reads before it writes, at places that are its own: rows
// in place of their own sources are no reason against vectors, and nobody need ask at run time whether they are.
#ifdef __clang__
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
template <int N> struct Run {
    Zmx8u of[N][kRun];
};

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

// A pixel of N samples of 0 to 255, in 16-bit lanes. A colour formula is a function from Pixel<N> to Pixel<M>.
template <int N> struct Pixel {
    Zmx16s of[N];
};

// n pixels by a formula. A row written may be any one of those read.
template <auto formula, int N, int M>
inline void convertRow(Rows<N, const Zmx8u> src, Rows<M, Zmx8u> dst, int n) {
    INDEPENDENT_ITERATIONS
    for (int i = 0; i < n / 2; ++i) {
        Pixel<N> first, second;
        for (int p = 0; p < N; ++p) {
            const Zmx16u word = load<Zmx16u>(src.of[p], i);
            first.of[p] = Zmx16s(word & 255);
            second.of[p] = Zmx16s(word >> 8);
        }
        const Pixel<M> low = formula(first), high = formula(second);
        for (int p = 0; p < M; ++p) store(dst.of[p], i, Zmx16u(low.of[p] | high.of[p] << 8));
    }
    if (n % 2 == 0) return;
    Pixel<N> last;
    for (int p = 0; p < N; ++p) last.of[p] = src.of[p][n - 1];
    const Pixel<M> low = formula(last);
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

// Baseline x86 has no byte shuffle, so a loop over bytes three apart stays scalar. Four pixels are three words of 32
// bits, and four samples of a row are one: masks and shifts between these become vectors.

// n pixels of three bytes to rows. Reads 3n bytes.
inline void loadPixels(const Zmx8u* src, Zmx8u* row0, Zmx8u* row1, Zmx8u* row2, int n) {
    INDEPENDENT_ITERATIONS
    for (int i = 0; i < n / 4; ++i) {
        const auto a = load<Zmx32u>(src, 3 * i), b = load<Zmx32u>(src, 3 * i + 1), c = load<Zmx32u>(src, 3 * i + 2);
        store(row0, i, (a & 0xFF) | (a >> 16 & 0xFF00) | (b & 0xFF0000) | (c << 16 & 0xFF000000));
        store(row1, i, (a >> 8 & 0xFF) | (b << 8 & 0xFF00) | (b >> 8 & 0xFF0000) | (c << 8 & 0xFF000000));
        store(row2, i, (a >> 16 & 0xFF) | (b & 0xFF00) | (c << 16 & 0xFF0000) | (c & 0xFF000000));
    }
    for (int i = n / 4 * 4; i < n; ++i) {
        row0[i] = src[3 * i];
        row1[i] = src[3 * i + 1];
        row2[i] = src[3 * i + 2];
    }
}

// The way back. Writes 3n bytes.
inline void storePixels(const Zmx8u* row0, const Zmx8u* row1, const Zmx8u* row2, Zmx8u* dst, int n) {
    INDEPENDENT_ITERATIONS
    for (int i = 0; i < n / 4; ++i) {
        const auto p = load<Zmx32u>(row0, i), q = load<Zmx32u>(row1, i), r = load<Zmx32u>(row2, i);
        store(dst, 3 * i, (p & 0xFF) | (q << 8 & 0xFF00) | (r << 16 & 0xFF0000) | (p << 16 & 0xFF000000));
        store(dst, 3 * i + 1, (q >> 8 & 0xFF) | (r & 0xFF00) | (p & 0xFF0000) | (q << 8 & 0xFF000000));
        store(dst, 3 * i + 2, (r >> 16 & 0xFF) | (p >> 16 & 0xFF00) | (q >> 8 & 0xFF0000) | (r & 0xFF000000));
    }
    for (int i = n / 4 * 4; i < n; ++i) {
        dst[3 * i] = row0[i];
        dst[3 * i + 1] = row1[i];
        dst[3 * i + 2] = row2[i];
    }
}
