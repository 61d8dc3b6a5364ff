// pj2ct.h - what the component transforms share: argument tests, and the walk over pixels in each layout.
//
// Rows are bytes, whose steps need not be multiples of a sample, and may be shorter than a row.
//
// A transform is a function of one pixel, (a, b, c) to (a, b, c), all three read before any is written. A walk calls
// one of three row functions, made of a transform here.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjargs.h"
#include "pjrows.h"

namespace zmx::components {

// The samples of a pixel, in the order of the components.
template <class T> struct Pixel { T a, b, c; };

// Interleaved pixels to three planes: a row, and the walk with its argument tests, null pointers, steps, sizes.
template <class T, Pixel<T> (*transform)(Pixel<T>)>
void splitRow(const Zmx8u* src, Zmx8u* d0, Zmx8u* d1, Zmx8u* d2, int width) {
    for (int x = 0; x < width; ++x) {
        const std::ptrdiff_t at = std::ptrdiff_t(3) * x;
        const Pixel<T> p = transform({load<T>(src, at), load<T>(src, at + 1), load<T>(src, at + 2)});
        store(d0, x, p.a);
        store(d1, x, p.b);
        store(d2, x, p.c);
    }
}
template <class T, class Row>
ZmxStatus pixelsToPlanes(const T* src, int srcStep, T* const* dst, int dstStep, ZmxiSize roi, Row splitRow) {
    if (ZmxStatus bad = Args().ptr(src, dst).planes(dst, 3).step(srcStep).step(dstStep).size(roi)) return bad;
    for (int y = 0; y < roi.height; ++y)
        splitRow(rowAt(src, srcStep, y), rowAt(dst[0], dstStep, y), rowAt(dst[1], dstStep, y),
                 rowAt(dst[2], dstStep, y), roi.width);
    return zmxStsNoErr;
}

// Three planes to interleaved pixels, likewise.
template <class T, Pixel<T> (*transform)(Pixel<T>)>
void joinRow(const Zmx8u* s0, const Zmx8u* s1, const Zmx8u* s2, Zmx8u* dst, int width) {
    for (int x = 0; x < width; ++x) {
        const std::ptrdiff_t at = std::ptrdiff_t(3) * x;
        const Pixel<T> p = transform({load<T>(s0, x), load<T>(s1, x), load<T>(s2, x)});
        store(dst, at, p.a);
        store(dst, at + 1, p.b);
        store(dst, at + 2, p.c);
    }
}
template <class T, class Row>
ZmxStatus planesToPixels(const T* const* src, int srcStep, T* dst, int dstStep, ZmxiSize roi, Row joinRow) {
    if (ZmxStatus bad = Args().ptr(src, dst).planes(src, 3).step(srcStep).step(dstStep).size(roi)) return bad;
    for (int y = 0; y < roi.height; ++y)
        joinRow(rowAt(src[0], srcStep, y), rowAt(src[1], srcStep, y), rowAt(src[2], srcStep, y), rowAt(dst, dstStep, y),
                roi.width);
    return zmxStsNoErr;
}

// Three planes in place, likewise. There is one step for all of them, and no test of planes that overlap: they are
// walked from left to right, pixel by pixel.
template <class T, Pixel<T> (*transform)(Pixel<T>)> void planesRow(Zmx8u* r0, Zmx8u* r1, Zmx8u* r2, int width) {
    for (int x = 0; x < width; ++x) {
        const Pixel<T> p = transform({load<T>(r0, x), load<T>(r1, x), load<T>(r2, x)});
        store(r0, x, p.a);
        store(r1, x, p.b);
        store(r2, x, p.c);
    }
}
template <class T, class Row> ZmxStatus planesInPlace(T* const* srcDst, int step, ZmxiSize roi, Row planesRow) {
    if (ZmxStatus bad = Args().ptr(srcDst).planes(srcDst, 3).step(step).size(roi)) return bad;
    for (int y = 0; y < roi.height; ++y)
        planesRow(rowAt(srcDst[0], step, y), rowAt(srcDst[1], step, y), rowAt(srcDst[2], step, y), roi.width);
    return zmxStsNoErr;
}

} // namespace zmx::components
