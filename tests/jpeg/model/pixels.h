// pixels.h - plain models of the layouts of pixels and of the colour formulas: one pixel out of memory, converted, and into
// memory.
//
// All is inline, so that a caller who knows the layouts gets a loop without decisions (tests/exhaustive/).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/frame/model/primitives.h"
#include "zmxj/types.h"

#include <array>
#include <cstring>

namespace model {

// How pixels lie in memory. Packed words have the first colour of their name in the low bits.
enum class Layout { Planes3, Planes4, Grey, Rgb, Bgr, Cmyk, Rgb555, Bgr555, Rgb565, Bgr565, Pairs422 };

constexpr int planesOf(Layout l) { return l == Layout::Planes3 ? 3 : l == Layout::Planes4 ? 4 : 1; }

// In one plane; Pairs422: two for each pixel.
constexpr int pixelBytes(Layout l) {
    switch (l) {
    case Layout::Planes3:
    case Layout::Planes4:
    case Layout::Grey:
        return 1;
    case Layout::Rgb:
    case Layout::Bgr:
        return 3;
    case Layout::Cmyk:
        return 4;
    default:
        return 2;
    }
}

// Rows of pixels; what layouts of one plane have is plane 0.
struct Rows {
    Layout layout;
    std::array<Zmx8u*, 4> plane;
    int step;
};

using Pixel4 = std::array<int, 4>; // three colours and K

inline Pixel4 fromYCbCr(Pixel4 p) {
    const int y = p[0], cb = p[1] - 128, cr = p[2] - 128;
    return {limit8u(y + ((91881 * cr + 32768) >> 16)), limit8u(y + ((-22554 * cb - 46802 * cr + 32768) >> 16)),
            limit8u(y + ((116130 * cb + 32768) >> 16)), p[3]};
}

inline Pixel4 toYCbCr(Pixel4 p) {
    const int r = p[0], g = p[1], b = p[2];
    // The offset of chroma is rounded by one less than a half.
    const int offset = 128 * 65536 + 32767;
    return {(19595 * r + 38470 * g + 7471 * b + 32768) >> 16, (-11059 * r - 21709 * g + 32768 * b + offset) >> 16,
            (32768 * r - 27439 * g - 5329 * b + offset) >> 16, p[3]};
}

// The lowest bit and the number of bits of red, green and blue in a packed word.
struct Field {
    int at, bits;
};
inline std::array<Field, 3> fieldsOf(Layout l) {
    const int green = l == Layout::Rgb565 || l == Layout::Bgr565 ? 6 : 5;
    const Field low{0, 5}, mid{5, green}, high{5 + green, 5};
    return l == Layout::Rgb555 || l == Layout::Rgb565 ? std::array{low, mid, high} : std::array{high, mid, low};
}

inline Zmx8u* at(const Rows& r, int plane, int x, int y) {
    return r.plane[std::size_t(plane)] + std::ptrdiff_t(r.step) * y + std::ptrdiff_t(x) * pixelBytes(r.layout);
}

// Packed words are the processor's own.
inline int word(const Zmx8u* p) {
    Zmx16u w;
    std::memcpy(&w, p, sizeof w);
    return w;
}

// A pixel as samples of 8 bits, narrower fields with zeros below.
inline Pixel4 get(const Rows& r, int x, int y) {
    const Zmx8u* p = at(r, 0, x, y);
    switch (r.layout) {
    case Layout::Planes3:
        return {*p, *at(r, 1, x, y), *at(r, 2, x, y), 0};
    case Layout::Planes4:
        return {*p, *at(r, 1, x, y), *at(r, 2, x, y), *at(r, 3, x, y)};
    case Layout::Grey:
        return {*p, 128, 128, 0};
    case Layout::Rgb:
        return {p[0], p[1], p[2], 0};
    case Layout::Bgr:
        return {p[2], p[1], p[0], 0};
    case Layout::Cmyk:
        return {p[0], p[1], p[2], p[3]};
    case Layout::Pairs422: {
        const Zmx8u* pair = at(r, 0, x & ~1, y);
        return {p[0], pair[1], pair[3], 0};
    }
    default: {
        const auto fields = fieldsOf(r.layout);
        Pixel4 v{};
        for (std::size_t i = 0; i < 3; ++i)
            v[i] = (word(p) >> fields[i].at & ((1 << fields[i].bits) - 1)) << (8 - fields[i].bits);
        return v;
    }
    }
}

// Narrower fields keep the top bits.
inline void put(const Rows& r, int x, int y, Pixel4 v) {
    Zmx8u* p = at(r, 0, x, y);
    const auto byte = [&](std::size_t i) { return Zmx8u(v[i]); };
    switch (r.layout) {
    case Layout::Planes3:
    case Layout::Planes4:
        for (int i = 0; i < planesOf(r.layout); ++i) *at(r, i, x, y) = byte(std::size_t(i));
        break;
    case Layout::Grey:
        *p = byte(0);
        break;
    case Layout::Bgr:
        for (std::size_t i = 0; i < 3; ++i) p[2 - i] = byte(i);
        break;
    case Layout::Rgb:
    case Layout::Cmyk:
        for (std::size_t i = 0; i < std::size_t(pixelBytes(r.layout)); ++i) p[i] = byte(i);
        break;
    case Layout::Pairs422:
        break; // nothing writes them
    default: {
        const auto fields = fieldsOf(r.layout);
        int w = 0;
        for (std::size_t i = 0; i < 3; ++i) w |= v[i] >> (8 - fields[i].bits) << fields[i].at;
        const auto packed = Zmx16u(w);
        std::memcpy(p, &packed, sizeof packed);
    }
    }
}

inline bool hasK(Layout l) { return l == Layout::Planes4 || l == Layout::Cmyk; }

inline Pixel4 complement(Pixel4 v) { return {255 - v[0], 255 - v[1], 255 - v[2], v[3]}; }

// The pixel at x, y of src, converted, to dst.
inline void pixelFromYCbCr(const Rows& src, const Rows& dst, int x, int y) {
    const Pixel4 rgb = fromYCbCr(get(src, x, y));
    put(dst, x, y, hasK(dst.layout) ? complement(rgb) : rgb);
}
inline void pixelToYCbCr(const Rows& src, const Rows& dst, int x, int y) {
    const Pixel4 rgb = get(src, x, y);
    put(dst, x, y, toYCbCr(hasK(src.layout) ? complement(rgb) : rgb));
}

} // namespace model
