// pjlayouts.h - where the samples of pixels stand in memory: one class a layout, for the conversions of whole planes and
// of minimum coded units alike.
//
// A class has kChannels, kBytes (of a pixel), and get() and put(), which take n pixels from memory apart into rows, one
// a channel, and put them together again. The channels have the order R, G, B (C, M, Y, K; Y, Cb, Cr) whatever the
// order in memory. Rows hold samples of 8 bits, or 16-bit lanes: units work in the latter, and the conversions of
// planes by runs of GetSample and PutSample, with which they take the least time.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjrows.h"

#include <cstdint>

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

namespace zmx::layout {

// The channels of some pixels side by side.
constexpr int kRun = 256;    // pixels: those of the largest unit, and few enough for the first-level cache
constexpr int kUnitRow = 16; // the most pixels in a row of a unit
template <class T, int N, int Pixels = kRun> struct Run { alignas(32) T of[N][Pixels]; };

// N rows of samples that make pixels together: row y of N planes, or those of a run.
template <class T, int N> struct Rows {
    T* of[N];
    Rows(T* const* planes, int step, int y) {
        for (int p = 0; p < N; ++p) of[p] = rowAt(planes[p], step, y);
    }
    template <class U, int Pixels> Rows(Run<U, N, Pixels>& run) {
        for (int p = 0; p < N; ++p) of[p] = run.of[p];
    }
    // The same rows from pixel x on.
    Rows from(int x) const {
        Rows rest(*this);
        for (T*& row : rest.of) row += x;
        return rest;
    }
};

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

// Between samples of 8 and of 16 bits.
template <class From, class To> inline void converted(const From* __restrict from, To* __restrict to, int n) {
    for (int i = 0; i < n; ++i) to[i] = To(from[i]);
}

// Three bytes a pixel: first channel C0, then C1, then C2.
template <int C0, int C1, int C2> struct Bytes3 {
    static constexpr int kChannels = 3, kBytes = 3;
    using GetSample = Zmx8u;
    using PutSample = Zmx8u;
    static void get(const Zmx8u* pixels, Rows<Zmx8u, 3> run, int n) {
        loadPixels(pixels, run.of[C0], run.of[C1], run.of[C2], n);
    }
    // Faster than the way back of put(), which takes 1.1 times as long for units of 128 and 256 pixels.
    static void get(const Zmx8u* pixels, Rows<Zmx16s, 3> run, int n) {
        Run<Zmx8u, 3> narrow;
        get(pixels, Rows<Zmx8u, 3>(narrow), n);
        for (int c = 0; c < 3; ++c) converted(narrow.of[c], run.of[c], n);
    }
    static void put(Rows<const Zmx8u, 3> run, Zmx8u* pixels, int n) {
        storePixels(run.of[C0], run.of[C1], run.of[C2], pixels, n);
    }
    // An even number of pixels in a row of a unit, two at a time. Narrowing and the above take 1.4 to 1.6 times as long
    // there; in runs of 256 pixels this takes 1.3 times as long as the above.
    [[gnu::always_inline]] static void put(Rows<const Zmx16s, 3> run, Zmx8u* pixels, int n) {
        // Four bytes a pixel, then two pixels without the gap between them.
        alignas(16) Zmx8u spaced[4 * kUnitRow];
        for (int x = 0; x < n; ++x) {
            storeLE(spaced, 2 * x, Zmx16u(run.of[C0][x] | run.of[C1][x] << 8));
            storeLE(spaced, 2 * x + 1, Zmx16u(run.of[C2][x]));
        }
        std::uint64_t pairs[kUnitRow / 2];
        for (int i = 0; i < n / 2; ++i) {
            const auto pair = loadLE<std::uint64_t>(spaced, i);
            pairs[i] = littleEndian((pair & 0xffffff) | (pair >> 8 & 0xffffff000000));
        }
        // Each pair overwrites the two bytes too many of the one before; the last has only its six.
        const int last = n / 2 - 1;
        for (int i = 0; i < last; ++i) std::memcpy(pixels + 6 * i, pairs + i, 8);
        std::memcpy(pixels + 6 * last, pairs + last, 6);
    }
};
using RGB = Bytes3<0, 1, 2>;
using BGR = Bytes3<2, 1, 0>;
using YCbCr = Bytes3<0, 1, 2>;

// A word of 16 bits a pixel, in the processor's byte order: channel Low in its five low bits, green above it, channel
// High in the five bits on top of that. Fields are widened with zeros below, and cut off at their low bits. Bit 15 of
// 555 is ignored, and written as 0.
template <int Low, int High, int GreenBits> struct Packed {
    static constexpr int kChannels = 3, kBytes = 2;
    using GetSample = Zmx16s;
    using PutSample = Zmx16s;
    static void get(const Zmx8u* pixels, Rows<Zmx16s, 3> run, int n) {
        for (int i = 0; i < n; ++i) {
            const auto p = load<Zmx16u>(pixels, i);
            run.of[Low][i] = Zmx16s((p & 31) << 3);
            run.of[1][i] = Zmx16s((p >> 5 & ((1 << GreenBits) - 1)) << (8 - GreenBits));
            run.of[High][i] = Zmx16s((p >> (5 + GreenBits) & 31) << 3);
        }
    }
    static void put(Rows<const Zmx16s, 3> run, Zmx8u* pixels, int n) {
        const Zmx16s *low = run.of[Low], *green = run.of[1], *high = run.of[High];
        for (int i = 0; i < n; ++i)
            store(pixels, i, Zmx16u(low[i] >> 3 | green[i] >> (8 - GreenBits) << 5 | high[i] >> 3 << (5 + GreenBits)));
    }
};
// The first colour of a name lies lowest.
using RGB555 = Packed<0, 2, 5>;
using BGR555 = Packed<2, 0, 5>;
using RGB565 = Packed<0, 2, 6>;
using BGR565 = Packed<2, 0, 6>;

// Four bytes a pixel. Runs of bytes are taken apart in 0.9 of the time that 16-bit lanes take, and put together in 1.1.
struct CMYK {
    static constexpr int kChannels = 4, kBytes = 4;
    using GetSample = Zmx8u;
    using PutSample = Zmx16s;
    static void get(const Zmx8u* pixels, Rows<Zmx8u, 4> run, int n) {
        INDEPENDENT_ITERATIONS
        for (int i = 0; i < n; ++i)
            for (int c = 0; c < 4; ++c) run.of[c][i] = pixels[4 * i + c];
    }
    static void get(const Zmx8u* pixels, Rows<Zmx16s, 4> run, int n) {
        for (int i = 0; i < n; ++i) {
            const auto first = loadLE<Zmx16u>(pixels, 2 * i), second = loadLE<Zmx16u>(pixels, 2 * i + 1);
            run.of[0][i] = Zmx16s(first & 255);
            run.of[1][i] = Zmx16s(first >> 8);
            run.of[2][i] = Zmx16s(second & 255);
            run.of[3][i] = Zmx16s(second >> 8);
        }
    }
    static void put(Rows<const Zmx16s, 4> run, Zmx8u* pixels, int n) {
        for (int i = 0; i < n; ++i) {
            storeLE(pixels, 2 * i, Zmx16u(run.of[0][i] | run.of[1][i] << 8));
            storeLE(pixels, 2 * i + 1, Zmx16u(run.of[2][i] | run.of[3][i] << 8));
        }
    }
};

// Two pixels in the four bytes Y Cb Y Cr, each sample of chroma for both: n is even.
struct YCbYCr {
    static constexpr int kChannels = 3, kBytes = 2;
    using GetSample = Zmx16s;
    using PutSample = Zmx16s;
    static void get(const Zmx8u* pixels, Rows<Zmx16s, 3> run, int n) {
        for (int i = 0; i < n; i += 2) {
            const auto left = loadLE<Zmx16u>(pixels, i), right = loadLE<Zmx16u>(pixels, i + 1);
            run.of[0][i] = Zmx16s(left & 255);
            run.of[0][i + 1] = Zmx16s(right & 255);
            run.of[1][i] = run.of[1][i + 1] = Zmx16s(left >> 8);
            run.of[2][i] = run.of[2][i + 1] = Zmx16s(right >> 8);
        }
    }
    // The chroma of the first pixel of each pair counts.
    static void put(Rows<const Zmx16s, 3> run, Zmx8u* pixels, int n) {
        for (int i = 0; i < n; i += 2) {
            storeLE(pixels, i, Zmx16u(run.of[0][i] | run.of[1][i] << 8));
            storeLE(pixels, i + 1, Zmx16u(run.of[0][i + 1] | run.of[2][i] << 8));
        }
    }
};

} // namespace zmx::layout
