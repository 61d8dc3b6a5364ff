// pj2wt97.cpp - one level of the irreversible 9/7 wavelet on whole planes: 16-bit samples in 14-bit fixed point, 32-bit
// samples in extended precision (pj2wt97ext).
//
// As in pj2wt53 the columns are lifted over the full width and stay interleaved; the pass over the rows lifts each row
// out of one place of the plane into the place where it belongs.
#include "pj2wt97.h"

#include "pj2wt.h"
#include "pj2wt97ext.h"

namespace zmx {
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

// ---- 14-bit fixed point: every value is cut to its low 16 bits, and nothing saturates. Sums and products fit 32 bits.

constexpr Zmx32s q14(Zmx32s c, Zmx32s v) { return (c * v + 8192) >> 14; }

// One step over a row, in place: centre + c (side0 + side1).
template <Zmx32s c> void lift(Zmx8u* centre, const Zmx8u* side0, const Zmx8u* side1, int n) {
    for (int i = 0; i < n; ++i)
        store(centre, i, Zmx16s(load<Zmx16s>(centre, i) + q14(c, load<Zmx16s>(side0, i) + load<Zmx16s>(side1, i))));
}
// The same with the sign of the inverse. It is not the same as lifting by -c: the half is added to the positive
// product.
template <Zmx32s c> void liftBack(Zmx8u* centre, const Zmx8u* side0, const Zmx8u* side1, int n) {
    for (int i = 0; i < n; ++i)
        store(centre, i, Zmx16s(load<Zmx16s>(centre, i) - q14(c, load<Zmx16s>(side0, i) + load<Zmx16s>(side1, i))));
}
template <Zmx32s c> void scale(Zmx8u* row, int n) {
    for (int i = 0; i < n; ++i) store(row, i, Zmx16s(q14(c, load<Zmx16s>(row, i))));
}

using Lift = void (*)(Zmx8u*, const Zmx8u*, const Zmx8u*, int);

// A step on one band of a line: sample i of `centre` has samples i + shift - 1 and i + shift of the other band at its
// sides. Mirroring at the ends comes down to clamping.
template <Lift step> void liftBand(Zmx8u* centre, int n, const Zmx8u* sides, int sideCount, int shift) {
    const auto at = [](auto* p, int i) { return p + std::ptrdiff_t(sizeof(Zmx16s)) * i; };
    const auto single = [=](int i) {
        step(at(centre, i), at(sides, clamp(i + shift - 1, 0, sideCount - 1)),
             at(sides, clamp(i + shift, 0, sideCount - 1)), 1);
    };
    const int from = 1, to = std::max(std::min(n, sideCount - shift) - 1, from);
    single(0);
    step(at(centre, from), at(sides, from + shift - 1), at(sides, from + shift), std::min(to, n) - from);
    for (int i = to; i < n; ++i) single(i);
}

void forwardLineQ14(const Zmx8u* x, Split s, Zmx8u* low, Zmx8u* high) {
    const int p = s.phase, lows = s.low(), highs = s.high();
    for (int i = 0; i < lows; ++i) store(low, i, load<Zmx16s>(x, 2 * i + p));
    for (int i = 0; i < highs; ++i) store(high, i, load<Zmx16s>(x, 2 * i + 1 - p));
    liftBand<lift<Wt97Q14::alpha>>(high, highs, low, lows, 1 - p);
    liftBand<lift<Wt97Q14::beta>>(low, lows, high, highs, p);
    liftBand<lift<Wt97Q14::gamma>>(high, highs, low, lows, 1 - p);
    liftBand<lift<Wt97Q14::delta>>(low, lows, high, highs, p);
    scale<Wt97Q14::oneOverK>(low, lows);
    scale<Wt97Q14::k>(high, highs);
}

// The source row is free to be overwritten.
void inverseLineQ14(Zmx8u* low, Zmx8u* high, Split s, Zmx8u* x) {
    const int p = s.phase, lows = s.low(), highs = s.high();
    scale<Wt97Q14::k>(low, lows);
    scale<Wt97Q14::oneOverK>(high, highs);
    liftBand<liftBack<Wt97Q14::delta>>(low, lows, high, highs, p);
    liftBand<liftBack<Wt97Q14::gamma>>(high, highs, low, lows, 1 - p);
    liftBand<liftBack<Wt97Q14::beta>>(low, lows, high, highs, p);
    liftBand<liftBack<Wt97Q14::alpha>>(high, highs, low, lows, 1 - p);
    const Zmx8u *first = p ? high : low, *second = p ? low : high;
    for (int i = 0; i < s.n / 2; ++i) {
        store(x, 2 * i, load<Zmx16s>(first, i));
        store(x, 2 * i + 1, load<Zmx16s>(second, i));
    }
    if (s.n % 2 != 0) store(x, s.n - 1, load<Zmx16s>(first, s.n / 2));
}

// Runs steps over the rows as a wave: the first step on rows of odd absolute position, each further one a row behind,
// so that it finds its neighbours done by the step before it.
template <class... Steps> void wave(Split s, Steps... steps) {
    for (int t = 1 - s.phase; t < s.n + int(sizeof...(Steps)) - 1; t += 2) {
        int r = t;
        ((r >= 0 && r < s.n ? steps(r) : void(), --r), ...);
    }
}

void forwardColumnsQ14(Zmx8u* plane, int step, Split s, int width) {
    const auto row = [=](int r) { return rowAt(plane, step, r < 0 ? -r : r >= s.n ? 2 * (s.n - 1) - r : r); };
    const auto by = [=](Lift lift) { return [=](int r) { lift(row(r), row(r - 1), row(r + 1), width); }; };
    wave(
        s, by(lift<Wt97Q14::alpha>), by(lift<Wt97Q14::beta>), by(lift<Wt97Q14::gamma>),
        [=](int r) {
            lift<Wt97Q14::delta>(row(r), row(r - 1), row(r + 1), width);
            scale<Wt97Q14::oneOverK>(row(r), width);
        },
        [=](int r) { scale<Wt97Q14::k>(row(r), width); });
}

void inverseColumnsQ14(Zmx8u* plane, int step, Split s, int width) {
    const auto row = [=](int r) { return rowAt(plane, step, r < 0 ? -r : r >= s.n ? 2 * (s.n - 1) - r : r); };
    const auto by = [=](Lift lift) { return [=](int r) { lift(row(r), row(r - 1), row(r + 1), width); }; };
    wave(
        s, [=](int r) { scale<Wt97Q14::oneOverK>(row(r), width); },
        [=](int r) {
            scale<Wt97Q14::k>(row(r), width);
            liftBack<Wt97Q14::delta>(row(r), row(r - 1), row(r + 1), width);
        },
        by(liftBack<Wt97Q14::gamma>), by(liftBack<Wt97Q14::beta>), by(liftBack<Wt97Q14::alpha>));
}

// ---- whole planes in either number system

template <class T> struct System;
template <> struct System<Zmx16s> {
    static constexpr auto forwardLine = forwardLineQ14;
    static constexpr auto inverseLine = inverseLineQ14;
    static constexpr auto forwardColumns = forwardColumnsQ14;
    static constexpr auto inverseColumns = inverseColumnsQ14;
};
template <> struct System<Zmx32s> {
    static constexpr auto forwardLine = wt97ForwardLine;
    static constexpr auto inverseLine = wt97InverseLine;
    static constexpr auto forwardColumns = wt97ForwardColumns;
    static constexpr auto inverseColumns = wt97InverseColumns;
};

// Columns of fewer than 2 rows; no row, or less, counts as one: required.
template <class T, class Change> void singleRow(Zmx8u* row, int width, Change change) {
    for (int x = 0; x < width; ++x) store(row, x, T(change(load<T>(row, x))));
}

template <class T> void forwardPlane(Zmx8u* plane, int step, const ZmxiRect& tile, Zmx8u* scratch) {
    const Split across{tile.width, phaseOf(tile.x)}, down{tile.height, phaseOf(tile.y)};
    const std::size_t rowBytes = sizeof(T) * std::size_t(std::max(across.n, 1));
    const bool lifted = liftsColumns(across, down, 2);
    if (!lifted) {
        singleRow<T>(plane, across.n, [=](T v) { return wrapMul<Zmx32s>(v, down.phase + 1); });
    } else {
        const bool keepLast = displaced(down);
        if (keepLast) std::memcpy(scratch, rowAt(plane, step, down.n - 1), rowBytes);
        System<T>::forwardColumns(plane, step, down, across.n);
        if (keepLast) std::memcpy(rowAt(plane, step, 1), scratch, rowBytes); // the first low row is given up for it
    }
    permuteRows(
        plane, step, down.n, rowBytes, scratch, [=](int r) { return lifted ? forwardSource(down, r) : r; },
        [=](const Zmx8u* src, Zmx8u* dst) { forwardRow<T>(src, across, dst, System<T>::forwardLine); });
}

template <class T> void inversePlane(Zmx8u* plane, int step, const ZmxiRect& tile, Zmx8u* scratch) {
    const Split across{tile.width, phaseOf(tile.x)}, down{tile.height, phaseOf(tile.y)};
    const bool lifted = liftsColumns(across, down, 2);
    permuteRows(
        plane, step, down.n, sizeof(T) * std::size_t(std::max(across.n, 1)), scratch,
        [=](int r) { return lifted ? down.bandOf(r) : r; },
        [=](Zmx8u* src, Zmx8u* dst) { inverseRow<T>(src, across, dst, System<T>::inverseLine); });
    if (lifted)
        System<T>::inverseColumns(plane, step, down, across.n);
    else
        singleRow<T>(plane, across.n, [=](T v) { return v / (down.phase + 1); });
}

// A line needs scratch memory from 2 samples on, with 8 samples of margin.
template <class T> ZmxStatus bufferSize(const ZmxiRect* tile, int* size, bool bands) {
    return scratchSize(tile, size, sizeof(T), 2, 8, bands);
}

} // namespace
} // namespace zmx

using namespace zmx;

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
