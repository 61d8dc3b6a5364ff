// pj2wt97.cpp - one level of the irreversible 9/7 wavelet on whole planes: 16-bit samples in 14-bit fixed point
// (pj2wt97q14), 32-bit samples in extended precision (pj2wt97ext).
//
// As in pj2wt53 the columns are lifted over the full width and stay interleaved; the pass over the rows lifts each row
// out of one place of the plane into the place where it belongs.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2wt.h"
#include "pj2wt97ext.h"
#include "pj2wt97q14.h"
#include "pjx87.h"

namespace zmx::wt97 {
namespace {

// ---- where the bands of the forward transform go

// At an odd origin the high band comes first: required, unlike the 5/3 filter and the inverse. At an odd length, where
// it is one sample longer than half of the line, its last sample replaces the first low one, and the last place of the
// line keeps what it held.
constexpr bool displaced(Split s) { return s.phase == 1 && s.n % 2 != 0; }

// The row of the interleaved plane that goes to row r. Where the bands are displaced, the row of the first low sample
// stands for the one that keeps its input.
int forwardSource(Split s, int r) {
    if (s.phase == 0) return s.lineOf(r);
    if (displaced(s) && r == s.n - 1) return 1;
    return r < s.high() ? 2 * r : 2 * (r - s.n / 2) + 1;
}

// Lifts a row out of its place into another one; forwardLine(src, split, low, high) writes the bands where it is told.
template <class T, class Line> void forwardRow(const Zmx8u* src, Split s, Zmx8u* dst, Line forwardLine) {
    const auto at = [=](int i) { return dst + std::ptrdiff_t(sizeof(T)) * i; };
    if (s.n < 2) return store(dst, 0, T(wrapMul<Zmx32s>(load<T>(src, 0), s.phase + 1)));
    if (s.phase == 0) return forwardLine(src, s, at(0), at(s.low()));
    forwardLine(src, s, at(s.high()), at(0));
    if (displaced(s)) {
        std::memmove(at(s.high()), at(s.high() + 1), sizeof(T) * std::size_t(s.low() - 1));
        store(dst, s.n - 1, load<T>(src, s.n - 1));
    }
}

template <class T, class Line> void inverseRow(Zmx8u* src, Split s, Zmx8u* dst, Line inverseLine) {
    if (s.n < 2) return store(dst, 0, T(load<T>(src, 0) / (s.phase + 1))); // truncates toward zero
    inverseLine(src, src + std::ptrdiff_t(sizeof(T)) * s.low(), s, dst);
}

// ---- whole planes in either number system

// How the lines and the columns of a plane are lifted.
struct Lifting {
    void (*forwardLine)(const Zmx8u* x, Split split, Zmx8u* low, Zmx8u* high);
    void (*inverseLine)(Zmx8u* low, Zmx8u* high, Split split, Zmx8u* x);
    void (*forwardColumns)(Zmx8u* plane, int step, Split split, int width);
    void (*inverseColumns)(Zmx8u* plane, int step, Split split, int width);
};
template <class T> constexpr Lifting kLifting = {};
template <>
constexpr Lifting kLifting<Zmx16s> = {q14::forwardLine, q14::inverseLine, q14::forwardColumns, q14::inverseColumns};
template <>
constexpr Lifting kLifting<Zmx32s> = {ext::forwardLine, ext::inverseLine, ext::forwardColumns, ext::inverseColumns};

// Whether the lifting uses the x87 unit: 32-bit samples go through doubles.
template <class T> constexpr bool kLiftsOnX87 = kDoubleOnX87 && sizeof(T) == sizeof(Zmx32s);

// Columns of fewer than 2 rows; no row, or less, counts as one: required.
template <class T, class Change> void singleRow(Zmx8u* row, int width, Change change) {
    for (int x = 0; x < width; ++x) store(row, x, T(change(load<T>(row, x))));
}

// Columns, then rows. Where the bands are displaced, the row that keeps its input waits in the scratch memory while the
// columns are lifted.
template <class T> void liftPlane(Zmx8u* plane, int step, const ZmxiRect& tile, Zmx8u* scratch) {
    const Split across{tile.width, phaseOf(tile.x)}, down{tile.height, phaseOf(tile.y)};
    const std::size_t rowBytes = sizeof(T) * std::size_t(std::max(across.n, 1));
    const bool lifted = liftsColumns(across, down, 2);
    if (!lifted) {
        singleRow<T>(plane, across.n, [=](T v) { return wrapMul<Zmx32s>(v, down.phase + 1); });
    } else {
        const bool keepLast = displaced(down);
        if (keepLast) std::memcpy(scratch, rowAt(plane, step, down.n - 1), rowBytes);
        kLifting<T>.forwardColumns(plane, step, down, across.n);
        if (keepLast) std::memcpy(rowAt(plane, step, 1), scratch, rowBytes); // the first low row is given up for it
    }
    permuteRows(
        plane, step, down.n, rowBytes, scratch, [=](int r) { return lifted ? forwardSource(down, r) : r; },
        [=](const Zmx8u* src, Zmx8u* dst) { forwardRow<T>(src, across, dst, kLifting<T>.forwardLine); });
}

// Rows, then columns.
template <class T> void liftPlaneBack(Zmx8u* plane, int step, const ZmxiRect& tile, Zmx8u* scratch) {
    const Split across{tile.width, phaseOf(tile.x)}, down{tile.height, phaseOf(tile.y)};
    const bool lifted = liftsColumns(across, down, 2);
    permuteRows(
        plane, step, down.n, sizeof(T) * std::size_t(std::max(across.n, 1)), scratch,
        [=](int r) { return lifted ? down.bandOf(r) : r; },
        [=](Zmx8u* src, Zmx8u* dst) { inverseRow<T>(src, across, dst, kLifting<T>.inverseLine); });
    if (lifted)
        kLifting<T>.inverseColumns(plane, step, down, across.n);
    else
        singleRow<T>(plane, across.n, [=](T v) { return v / (down.phase + 1); });
}

template <class T> void forwardPlane(Zmx8u* plane, int step, const ZmxiRect& tile, Zmx8u* scratch) {
    inFullPrecision<kLiftsOnX87<T>>([=] { liftPlane<T>(plane, step, tile, scratch); });
}
template <class T> void inversePlane(Zmx8u* plane, int step, const ZmxiRect& tile, Zmx8u* scratch) {
    inFullPrecision<kLiftsOnX87<T>>([=] { liftPlaneBack<T>(plane, step, tile, scratch); });
}

// A line needs scratch memory from 2 samples on, with 8 samples of margin.
template <class T> ZmxStatus bufferSize(const ZmxiRect* tile, int* size, bool bands) {
    return scratchSize(tile, size, sizeof(T), 2, 8, bands);
}

} // namespace
} // namespace zmx::wt97

using namespace zmx;
using namespace zmx::wt97;

// ---- in place

ZmxStatus zmxiWTFwd_D97_JPEG2K_16s_C1IR(Zmx16s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer) {
    return planeInPlace(pSrcDst, srcDstStep, pTileRect, pBuffer, forwardPlane<Zmx16s>);
}
ZmxStatus zmxiWTFwd_D97_JPEG2K_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer) {
    return planeInPlace(pSrcDst, srcDstStep, pTileRect, pBuffer, forwardPlane<Zmx32s>);
}
ZmxStatus zmxiWTInv_D97_JPEG2K_16s_C1IR(Zmx16s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer) {
    return planeInPlace(pSrcDst, srcDstStep, pTileRect, pBuffer, inversePlane<Zmx16s>);
}
ZmxStatus zmxiWTInv_D97_JPEG2K_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer) {
    return planeInPlace(pSrcDst, srcDstStep, pTileRect, pBuffer, inversePlane<Zmx32s>);
}

// ---- between a plane and four bands

ZmxStatus zmxiWTFwd_D97_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, const ZmxiRect* pTileRect,
                                       Zmx16s* const pDst[4], const int dstStep[4], Zmx8u* pBuffer) {
    return planeToBands(pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer, forwardPlane<Zmx16s>);
}
ZmxStatus zmxiWTFwd_D97_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, const ZmxiRect* pTileRect,
                                       Zmx32s* const pDst[4], const int dstStep[4], Zmx8u* pBuffer) {
    return planeToBands(pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer, forwardPlane<Zmx32s>);
}
ZmxStatus zmxiWTInv_D97_JPEG2K_16s_C1R(const Zmx16s* const pSrc[4], const int srcStep[4], Zmx16s* pDst, int dstStep,
                                       const ZmxiRect* pTileRect, Zmx8u* pBuffer) {
    return bandsToPlane(pSrc, srcStep, pDst, dstStep, pTileRect, pBuffer, inversePlane<Zmx16s>);
}
ZmxStatus zmxiWTInv_D97_JPEG2K_32s_C1R(const Zmx32s* const pSrc[4], const int srcStep[4], Zmx32s* pDst, int dstStep,
                                       const ZmxiRect* pTileRect, Zmx8u* pBuffer) {
    return bandsToPlane(pSrc, srcStep, pDst, dstStep, pTileRect, pBuffer, inversePlane<Zmx32s>);
}

// ---- scratch memory

ZmxStatus zmxiWTGetBufSize_D97_JPEG2K_16s_C1IR(const ZmxiRect* pTileRect, int* pSize) {
    return bufferSize<Zmx16s>(pTileRect, pSize, false);
}
ZmxStatus zmxiWTGetBufSize_D97_JPEG2K_32s_C1IR(const ZmxiRect* pTileRect, int* pSize) {
    return bufferSize<Zmx32s>(pTileRect, pSize, false);
}
ZmxStatus zmxiWTGetBufSize_D97_JPEG2K_16s_C1R(const ZmxiRect* pTileRect, int* pSize) {
    return bufferSize<Zmx16s>(pTileRect, pSize, true);
}
ZmxStatus zmxiWTGetBufSize_D97_JPEG2K_32s_C1R(const ZmxiRect* pTileRect, int* pSize) {
    return bufferSize<Zmx32s>(pTileRect, pSize, true);
}
