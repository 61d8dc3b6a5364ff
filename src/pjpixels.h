// pjpixels.h - what the plane conversions share: rows of planes, and runs of pixels.
//
// A row is converted in runs through samples on the stack: the compiler sees that these overlap nothing and vectorises
// freely, and a run is read whole before it is written.
#pragma once

#include "pjrows.h"

#include <bit>

static_assert(std::endian::native == std::endian::little, "channel 0 of a pixel is the low byte of its word");

constexpr int kRun = 256; // pixels; a run and its results stay in the first-level cache

// The high half of a 16-bit product, one instruction a vector.
constexpr Zmx16s mulHigh(Zmx16s a, Zmx16s b) { return Zmx16s((a * b) >> 16); }

// (a x + b y + 32768) >> 16 in 16-bit lanes: the high halves of the products, and what their low halves and the
// rounding term carry over. Adding 32768 to the low half of a x carries when its top bit is set; since it also swaps
// the ends of the range, the sum with the low half of b y then carries when it is the lesser one as a signed number.
constexpr Zmx16s roundedSumHigh(Zmx16s a, Zmx16s x, Zmx16s b, Zmx16s y) {
    const Zmx16s low = Zmx16s(a * x), sum = Zmx16s(low + Zmx16s(b * y));
    return Zmx16s(mulHigh(a, x) + mulHigh(b, y) + (low < 0) + (sum < low));
}

// Row y of each of N planes.
template <int N, class Byte> struct PlaneRows {
    Byte* row[N];
    PlaneRows(Byte* const* planes, int step, int y) {
        for (int i = 0; i < N; ++i) row[i] = rowAt(planes[i], step, y);
    }
};

// Baseline x86 has no byte shuffle, so a loop over bytes three apart stays scalar. Words of one pixel each are what the
// compiler can vectorise; between the two forms four pixels travel as three words.

// n pixels of bytes c0, c1, c2 become words c0 + 256 c1 + 65536 c2. Reads 3n bytes.
inline void loadPixels(const Zmx8u* src, Zmx32u* words, int n) {
    int i = 0;
    for (; i + 4 <= n; i += 4, src += 12) {
        const Zmx32u a = load<Zmx32u>(src, 0), b = load<Zmx32u>(src, 1), c = load<Zmx32u>(src, 2);
        words[i] = a & 0xFFFFFF;
        words[i + 1] = (a >> 24 | b << 8) & 0xFFFFFF;
        words[i + 2] = (b >> 16 | c << 16) & 0xFFFFFF;
        words[i + 3] = c >> 8;
    }
    for (; i < n; ++i, src += 3) words[i] = src[0] | Zmx32u(src[1]) << 8 | Zmx32u(src[2]) << 16;
}

// The way back: the top byte of every word must be 0. Writes 3n bytes.
inline void storePixels(const Zmx32u* words, Zmx8u* dst, int n) {
    int i = 0;
    for (; i + 4 <= n; i += 4, dst += 12) {
        const Zmx32u p0 = words[i], p1 = words[i + 1], p2 = words[i + 2], p3 = words[i + 3];
        store(dst, 0, p0 | p1 << 24);
        store(dst, 1, p1 >> 8 | p2 << 16);
        store(dst, 2, p2 >> 16 | p3 << 8);
    }
    for (; i < n; ++i, dst += 3) {
        dst[0] = Zmx8u(words[i]);
        dst[1] = Zmx8u(words[i] >> 8);
        dst[2] = Zmx8u(words[i] >> 16);
    }
}
