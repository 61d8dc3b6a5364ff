// pj2wt53.cpp - one level of the reversible 5/3 wavelet on whole planes (ISO/IEC 15444-1, F.3 and F.4).
//
// Columns are lifted a row at a time over the full width, so that memory is walked in its order, and stay interleaved;
// the pass over the rows then lifts each row out of one place of the plane into the place where it belongs. The results
// are those of lifting column by column and row by row with both ends mirrored. Mirroring an odd neighbour of an even
// sample gives the nearest odd sample inside, and the other way round, so that it comes down to clamping the index
// within a band.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2wt53.h"

#include "pj2wt.h"

namespace zmx {
namespace {

// ---- lines of three samples or more

// Lifts a line of interleaved samples into its two bands.
template <class T> void forwardLine(const Zmx8u* x, Split s, Zmx8u* low, Zmx8u* high) {
    const int p = s.phase, lows = s.low(), highs = s.high();
    const auto even = [=](int i) { return load<T>(x, 2 * clamp(i, 0, lows - 1) + p); };
    const auto highAt = [=](int i) { store(high, i, highOf(load<T>(x, 2 * i + 1 - p), even(i - p), even(i - p + 1))); };
    highAt(0);
    highsOf<T>(x, p, high, 1, highs - 1);
    highAt(highs - 1);

    const auto made = [=](int i) { return load<T>(high, clamp(i, 0, highs - 1)); };
    const auto lowAt = [=](int i) { store(low, i, lowOf(even(i), made(i - 1 + p), made(i + p))); };
    lowAt(0);
    lowsOf<T>(x, p, high, low, 1, lows - 1);
    lowAt(lows - 1);
}

// Brings the two bands of a line back into interleaved samples.
template <class T> void inverseLine(const Zmx8u* low, const Zmx8u* high, Split s, Zmx8u* x) {
    const int p = s.phase, lows = s.low(), highs = s.high();
    const auto given = [=](int i) { return load<T>(high, clamp(i, 0, highs - 1)); };
    const auto even = [=](int i) {
        const int k = clamp(i, 0, lows - 1);
        return evenOf(load<T>(low, k), given(k - 1 + p), given(k + p));
    };
    const int first = 1, end = std::max(std::min(lows, highs - p) - 1, first); // the pairs inside
    const auto ends = [=](int from, int to, int oddFrom, int oddTo) {
        for (int i = from; i < to; ++i) store(x, 2 * i + p, even(i));
        for (int i = oddFrom; i < oddTo; ++i)
            store(x, 2 * i + 1 - p, oddOf(load<T>(high, i), even(i - p), even(i - p + 1)));
    };
    ends(0, std::min(first, lows), 0, std::min(first + p, highs));
    pairsOf<T>(low, high, p, x, first, end);
    ends(end, lows, end + p, highs);
}

// ---- a line of any length; below 3 samples it takes its own way

template <class T> void forwardRow(const Zmx8u* src, Split s, Zmx8u* dst) {
    if (s.n >= 3) return forwardLine<T>(src, s, dst, dst + std::ptrdiff_t(sizeof(T)) * s.low());
    if (s.n == 2) {
        const Zmx32s e = load<T>(src, s.phase), o = load<T>(src, 1 - s.phase);
        const Zmx32s d = wrapSub(o, e); // the full difference goes into the low sample, also in 16 bits: required
        store(dst, 1, T(d));
        store(dst, 0, T(wrapAdd(e, wrapAdd(d, 1) >> 1)));
    } else {
        store(dst, 0, T(wrapMul<Zmx32s>(load<T>(src, 0), s.phase + 1)));
    }
}

template <class T> void inverseRow(const Zmx8u* src, Split s, Zmx8u* dst) {
    if (s.n >= 3) return inverseLine<T>(src, src + std::ptrdiff_t(sizeof(T)) * s.low(), s, dst);
    if (s.n == 2) {
        const T low = load<T>(src, 0), high = load<T>(src, 1);
        const Zmx32s e = wrapSub<Zmx32s>(low, sumOf(high, T(1)) >> 1);
        store(dst, s.phase, T(e));
        store(dst, 1 - s.phase, T(wrapAdd<Zmx32s>(e, high)));
    } else {
        store(dst, 0, T(load<T>(src, 0) / (s.phase + 1))); // truncates toward zero
    }
}

// ---- the columns of a plane, interleaved before and after

// Steps over the rows of one parity, then over the rows between them as soon as both neighbours are done: `outer` on
// the rows of parity `from`, `inner` on the others. A row that lies outside stands for its mirror image.
template <class T, T (*outer)(T, T, T), T (*inner)(T, T, T)>
void liftColumns(Zmx8u* plane, int step, int rows, int width, int from) {
    const auto row = [=](int r) { return rowAt(plane, step, r < 0 ? -r : r >= rows ? 2 * (rows - 1) - r : r); };
    // The inner row ahead of an outer row that does not exist comes behind the loop: a test for it inside makes gcc 12 for
    // s390x split the loop in two and begin the second part by flags that no longer hold.
    int r = from;
    for (; r < rows; r += 2) {
        liftRow<T, outer>(row(r), row(r - 1), row(r + 1), width);
        if (r > 0) liftRow<T, inner>(row(r - 1), row(r - 2), row(r), width);
    }
    if (r == rows) liftRow<T, inner>(row(r - 1), row(r - 2), row(r), width);
}

// Fewer than 3 rows, or no column: column by column through the short forms of a line. No row, or less, counts as one:
// required.
template <class T, void (*line)(const Zmx8u*, Split, Zmx8u*)>
void shortColumns(Zmx8u* plane, int step, Split s, int width) {
    const int n = std::clamp(s.n, 1, 2);
    for (int x = 0; x < width; ++x) {
        Zmx8u in[2 * sizeof(T)], out[2 * sizeof(T)];
        for (int r = 0; r < n; ++r) store(in, r, load<T>(rowAt(plane, step, r), x));
        line(in, s, out);
        for (int r = 0; r < n; ++r) store(rowAt(plane, step, r), x, load<T>(out, r));
    }
}

template <class T> void forwardPlane(Zmx8u* plane, int step, const ZmxiRect& tile, Zmx8u* line) {
    const Split across{tile.width, phaseOf(tile.x)}, down{tile.height, phaseOf(tile.y)};
    const bool lifted = liftsColumns(across, down, 3);
    if (lifted)
        liftColumns<T, highOf<T>, lowOf<T>>(plane, step, down.n, across.n, 1 - down.phase);
    else
        shortColumns<T, forwardRow<T>>(plane, step, down, across.n);
    permuteRows(
        plane, step, down.n, sizeof(T) * std::size_t(std::max(across.n, 1)), line,
        [=](int r) { return lifted ? down.lineOf(r) : r; },
        [=](const Zmx8u* src, Zmx8u* dst) { forwardRow<T>(src, across, dst); });
}

template <class T> void inversePlane(Zmx8u* plane, int step, const ZmxiRect& tile, Zmx8u* line) {
    const Split across{tile.width, phaseOf(tile.x)}, down{tile.height, phaseOf(tile.y)};
    const bool lifted = liftsColumns(across, down, 3);
    permuteRows(
        plane, step, down.n, sizeof(T) * std::size_t(std::max(across.n, 1)), line,
        [=](int r) { return lifted ? down.bandOf(r) : r; },
        [=](const Zmx8u* src, Zmx8u* dst) { inverseRow<T>(src, across, dst); });
    if (lifted)
        liftColumns<T, evenOf<T>, oddOf<T>>(plane, step, down.n, across.n, down.phase);
    else
        shortColumns<T, inverseRow<T>>(plane, step, down, across.n);
}

// A line needs scratch memory from 3 samples on, with 4 samples of margin.
template <class T> ZmxStatus bufferSize(const ZmxiRect* tile, int* size, bool bands) {
    return scratchSize(tile, size, sizeof(T), 3, 4, bands);
}

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiWTFwd_B53_JPEG2K_16s_C1IR(Zmx16s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer) {
    return planeInPlace(pSrcDst, srcDstStep, pTileRect, pBuffer, forwardPlane<Zmx16s>);
}
ZmxStatus zmxiWTFwd_B53_JPEG2K_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer) {
    return planeInPlace(pSrcDst, srcDstStep, pTileRect, pBuffer, forwardPlane<Zmx32s>);
}
ZmxStatus zmxiWTInv_B53_JPEG2K_16s_C1IR(Zmx16s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer) {
    return planeInPlace(pSrcDst, srcDstStep, pTileRect, pBuffer, inversePlane<Zmx16s>);
}
ZmxStatus zmxiWTInv_B53_JPEG2K_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer) {
    return planeInPlace(pSrcDst, srcDstStep, pTileRect, pBuffer, inversePlane<Zmx32s>);
}

ZmxStatus zmxiWTFwd_B53_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, const ZmxiRect* pTileRect,
                                       Zmx16s* const pDst[4], const int dstStep[4], Zmx8u* pBuffer) {
    return planeToBands(pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer, forwardPlane<Zmx16s>);
}
ZmxStatus zmxiWTFwd_B53_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, const ZmxiRect* pTileRect,
                                       Zmx32s* const pDst[4], const int dstStep[4], Zmx8u* pBuffer) {
    return planeToBands(pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer, forwardPlane<Zmx32s>);
}
ZmxStatus zmxiWTInv_B53_JPEG2K_16s_C1R(const Zmx16s* const pSrc[4], const int srcStep[4], Zmx16s* pDst, int dstStep,
                                       const ZmxiRect* pTileRect, Zmx8u* pBuffer) {
    return bandsToPlane(pSrc, srcStep, pDst, dstStep, pTileRect, pBuffer, inversePlane<Zmx16s>);
}
ZmxStatus zmxiWTInv_B53_JPEG2K_32s_C1R(const Zmx32s* const pSrc[4], const int srcStep[4], Zmx32s* pDst, int dstStep,
                                       const ZmxiRect* pTileRect, Zmx8u* pBuffer) {
    return bandsToPlane(pSrc, srcStep, pDst, dstStep, pTileRect, pBuffer, inversePlane<Zmx32s>);
}

ZmxStatus zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR(const ZmxiRect* pTileRect, int* pSize) {
    return bufferSize<Zmx16s>(pTileRect, pSize, false);
}
ZmxStatus zmxiWTGetBufSize_B53_JPEG2K_32s_C1IR(const ZmxiRect* pTileRect, int* pSize) {
    return bufferSize<Zmx32s>(pTileRect, pSize, false);
}
ZmxStatus zmxiWTGetBufSize_B53_JPEG2K_16s_C1R(const ZmxiRect* pTileRect, int* pSize) {
    return bufferSize<Zmx16s>(pTileRect, pSize, true);
}
ZmxStatus zmxiWTGetBufSize_B53_JPEG2K_32s_C1R(const ZmxiRect* pTileRect, int* pSize) {
    return bufferSize<Zmx32s>(pTileRect, pSize, true);
}
