// pj2wt.h - what the wavelets share: argument tests, the split of a line into bands, lines in scratch memory, and the
// walk over the rows of a plane that are put in another order on the way.
//
// A line of n samples at phase p (the parity of its origin) has its even absolute positions, the low band, at indices
// of the parity of p, and its odd ones, the high band, at the others (ISO/IEC 15444-1, F.3 and F.4).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjargs.h"
#include "pjrows.h"

#include <algorithm>

namespace zmx {

// ---- argument tests, in the required order of each family

inline ZmxStatus planeArgs(const void* srcDst, int step, const void* tileRect, const void* buffer) {
    return Args().ptr(srcDst).step(step).ptr(tileRect, buffer); // no size: required
}

// A plane on one side, four bands on the other.
template <class Band>
ZmxStatus bandArgs(const void* src, const void* dst, Band* const* bands, const int* bandSteps, int planeStep,
                   const ZmxiRect* tileRect, const void* buffer) {
    Args args;
    args.ptr(src, dst, bandSteps, tileRect, buffer).step(planeStep).planes(bands, 4);
    for (int i = 0; !ZmxStatus(args) && i < 4; ++i) args.step(bandSteps[i]);
    if (ZmxStatus bad = args) return bad;
    return args.size(ZmxiSize{tileRect->width, tileRect->height});
}

inline ZmxStatus kernelArgs(const void* p0, int step0, const void* p1, int step1, const void* p2, int step2,
                            ZmxiSize roi) {
    // Height ahead of width: required.
    return Args().ptr(p0, p1, p2).step(step0).step(step1).step(step2).size(roi.height).size(roi.width);
}

// A row kernel: the tests, then line(y) for each row of its three planes.
template <class Line>
ZmxStatus kernelRows(const void* p0, int step0, const void* p1, int step1, const void* p2, int step2, ZmxiSize roi,
                     Line line) {
    if (ZmxStatus bad = kernelArgs(p0, step0, p1, step1, p2, step2, roi)) return bad;
    for (int y = 0; y < roi.height; ++y) line(y);
    return zmxStsNoErr;
}

// ---- the bands of a line

struct Split {
    int n, phase;
    int low() const { return (n + 1 - phase) / 2; } // samples of the low band
    int high() const { return (n + phase) / 2; }
    // Where index i of the interleaved line stands when the low band comes first, and the other way round.
    int bandOf(int i) const { return (i + phase) % 2 == 0 ? i / 2 : low() + i / 2; }
    int lineOf(int i) const { return i < low() ? 2 * i + phase : 2 * (i - low()) + 1 - phase; }
};

// Phases of a tile: the parities of its origin.
inline int phaseOf(int origin) { return origin & 1; }

// Whether the columns of a plane are lifted and thus interleaved between the two passes. Without a column there is
// nothing to lift, and the rows, which still count with one sample each, keep their order.
inline bool liftsColumns(Split across, Split down, int shortest) { return across.n > 0 && down.n >= shortest; }

// ---- rows put in another order

// Row by row, transforms row source(r) into row r, for a permutation of the rows of a plane. A cycle of the permutation
// begins with its least row, which waits in the scratch memory until the cycle closes. `scratch` holds one row; it may
// be empty where rows are too short for the lifting. The transform may use its source row as working memory: it is
// overwritten next.
template <class Source, class Transform>
void permuteRows(Zmx8u* plane, int step, int rows, std::size_t rowBytes, Zmx8u* scratch, Source source,
                 Transform transform) {
    Zmx8u little[16];
    Zmx8u* const waiting = rowBytes <= sizeof little ? little : scratch;
    for (int first = 0; first < rows; ++first) {
        int least = first;
        for (int r = source(first); r != first && least == first; r = source(r)) least = std::min(least, r);
        if (least != first) continue;
        std::memcpy(waiting, rowAt(plane, step, first), rowBytes);
        int r = first;
        for (int from = source(r); from != first; r = from, from = source(r))
            transform(rowAt(plane, step, from), rowAt(plane, step, r));
        transform(waiting, rowAt(plane, step, r));
    }
}

// ---- a transform in place

template <class T, class InPlace>
ZmxStatus planeInPlace(T* srcDst, int step, const ZmxiRect* tile, Zmx8u* buffer, InPlace transform) {
    if (ZmxStatus bad = planeArgs(srcDst, step, tile, buffer)) return bad;
    transform(rowAt(srcDst, step, 0), step, *tile, buffer);
    return zmxStsNoErr;
}

// ---- four bands around a transform in place

// The scratch plane of the forms on four bands; the scratch line of the transform in place follows it.
struct ScratchPlane {
    Zmx8u* rows;
    int step;
    Zmx8u* line;
    ScratchPlane(Zmx8u* buffer, int sampleBytes, const ZmxiRect& tile)
        : rows(buffer), step(int((Zmx32u(sampleBytes) * Zmx32u(tile.width) + 31u) & ~31u)),
          line(rowAt(buffer, step, tile.height)) {}
};

inline void copyRows(const void* src, int srcStep, void* dst, int dstStep, int rows, std::size_t rowBytes) {
    for (int y = 0; y < rows; ++y) std::memcpy(rowAt(dst, dstStep, y), rowAt(src, srcStep, y), rowBytes);
}

// Calls copy(band, place in the scratch plane, rows, bytes of a row) for low-low, low-high, high-low and high-high
// (horizontal first). The places and sizes take no account of the phases: required. At an odd origin of odd size the
// bands are displaced by a sample against those of the transform in place.
template <class Copy> void forEachBand(const ScratchPlane& plane, int sampleBytes, const ZmxiRect& tile, Copy copy) {
    const int left = (tile.width + 1) / 2, top = (tile.height + 1) / 2;
    for (int band = 0; band < 4; ++band) {
        const bool right = band >= 2, bottom = band % 2 != 0;
        Zmx8u* place =
            rowAt(plane.rows, plane.step, bottom ? top : 0) + (right ? std::ptrdiff_t(left) * sampleBytes : 0);
        copy(band, place, bottom ? tile.height / 2 : top,
             std::size_t(right ? tile.width / 2 : left) * std::size_t(sampleBytes));
    }
}

template <class T, class InPlace>
ZmxStatus planeToBands(const T* src, int srcStep, const ZmxiRect* tile, T* const* dst, const int* dstStep,
                       Zmx8u* buffer, InPlace forward) {
    if (ZmxStatus bad = bandArgs(src, dst, dst, dstStep, srcStep, tile, buffer)) return bad;
    const ScratchPlane plane(buffer, sizeof(T), *tile);
    copyRows(src, srcStep, plane.rows, plane.step, tile->height, std::size_t(tile->width) * sizeof(T));
    forward(plane.rows, plane.step, *tile, plane.line);
    forEachBand(plane, sizeof(T), *tile, [&](int band, const Zmx8u* place, int rows, std::size_t rowBytes) {
        copyRows(place, plane.step, dst[band], dstStep[band], rows, rowBytes);
    });
    return zmxStsNoErr;
}

template <class T, class InPlace>
ZmxStatus bandsToPlane(const T* const* src, const int* srcStep, T* dst, int dstStep, const ZmxiRect* tile,
                       Zmx8u* buffer, InPlace inverse) {
    if (ZmxStatus bad = bandArgs(src, dst, src, srcStep, dstStep, tile, buffer)) return bad;
    const ScratchPlane plane(buffer, sizeof(T), *tile);
    forEachBand(plane, sizeof(T), *tile, [&](int band, Zmx8u* place, int rows, std::size_t rowBytes) {
        copyRows(src[band], srcStep[band], place, plane.step, rows, rowBytes);
    });
    inverse(plane.rows, plane.step, *tile, plane.line);
    copyRows(plane.rows, plane.step, dst, dstStep, tile->height, std::size_t(tile->width) * sizeof(T));
    return zmxStsNoErr;
}

// ---- scratch sizes, in unsigned arithmetic that wraps

// A line of the longer side and `margin` samples; nothing where both sides are below `shortest`.
constexpr Zmx32u lineBytes(const ZmxiRect& tile, Zmx32u sampleBytes, int shortest, Zmx32u margin) {
    if (tile.width < shortest && tile.height < shortest) return 0;
    return std::max(sampleBytes * (Zmx32u(tile.width) + margin), sampleBytes * (Zmx32u(tile.height) + margin));
}
constexpr Zmx32u scratchPlaneBytes(const ZmxiRect& tile, Zmx32u sampleBytes) {
    return ((sampleBytes * Zmx32u(tile.width) + 31u) & ~31u) * Zmx32u(tile.height);
}

// What the GetBufSize functions report, for a transform in place or on four bands; the tile is not tested.
inline ZmxStatus scratchSize(const ZmxiRect* tile, int* size, Zmx32u sampleBytes, int shortest, Zmx32u margin,
                             bool bands) {
    if (ZmxStatus bad = Args().ptr(tile, size)) return bad;
    *size = int(lineBytes(*tile, sampleBytes, shortest, margin) + (bands ? scratchPlaneBytes(*tile, sampleBytes) : 0));
    return zmxStsNoErr;
}

} // namespace zmx
