// pjtranspose.h - blocks of 64 elements, and how they are transposed.
//
// Which way costs least depends on how many elements a vector holds. Templates that are not called inline too gcc inlines
// less readily, which costs the integer transforms 4 to 7 %.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

// A block that a pass of a transform reads or writes.
template <class T> struct alignas(32) Block { T at[64]; };

// A perfect shuffle of 64 elements: its index is turned by one bit.
template <class T> inline void shuffle(const T* __restrict in, T* __restrict out) {
    for (int i = 0; i < 32; ++i) {
        out[2 * i] = in[i];
        out[2 * i + 1] = in[i + 32];
    }
}

// The bit of weight Bit changes places between the number of a row and that of a column.
template <int Bit, class T> inline void exchange(const T* __restrict in, T* __restrict out) {
    for (int r = 0; r < 64; r += 16 * Bit)
        for (int upper = r; upper < r + 8 * Bit; upper += 8)
            for (int c = upper; c < upper + 8; c += 2 * Bit)
                for (int i = c; i < c + Bit; ++i) {
                    out[i] = in[i];
                    out[i + Bit] = in[i + 8 * Bit];
                    out[i + 8 * Bit] = in[i + Bit];
                    out[i + 9 * Bit] = in[i + 9 * Bit];
                }
}

// Rows that fill 16 bytes: three shuffles turn the index rrrccc into cccrrr.
inline void transpose(const Zmx16s* in, Zmx16s* out) {
    Block<Zmx16s> a, b;
    shuffle(in, a.at);
    shuffle(a.at, b.at);
    shuffle(b.at, out);
}

// Rows of 32 bytes: vectors of that length cross their halves once, and not at all in the other exchanges. gcc must not call
// it inline: among other arithmetic it takes the vectors apart to single elements. clang makes vectors of shuffles alone.
#ifdef __clang__
inline void transpose(const Zmx32f* in, Zmx32f* out) {
    Block<Zmx32f> a, b;
    shuffle(in, a.at);
    shuffle(a.at, b.at);
    shuffle(b.at, out);
}
#else
[[gnu::noinline]] inline void transpose(const Zmx32f* in, Zmx32f* out) {
    Block<Zmx32f> a, b;
    exchange<4>(in, a.at);
    exchange<1>(a.at, b.at);
    exchange<2>(b.at, out);
}
#endif

} // namespace zmx
