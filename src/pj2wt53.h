// pj2wt53.h - the lifting steps of the reversible 5/3 filter (ISO/IEC 15444-1, F.3.8.2 and F.4.8.2).
//
// T is Zmx16s or Zmx32s. Sums are formed in 32 bits and wrap there; every result is cut to the width of T at once, so
// that the next step sees it so. Shifts are arithmetic (floors); nothing saturates.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjrows.h"

namespace zmx {

// A quarter of two high samples, rounded. The rounding term goes to the first of them: two calls with the same first
// sample share that sum.
template <class T> constexpr Zmx32s quarterOf(T high0, T high1) {
    return wrapAdd<Zmx32s>(sumOf(high0, T(2)), high1) >> 2;
}

// An odd sample less the mean of its even neighbours; an even sample plus a quarter of the high ones at its sides; and
// the two ways back.
template <class T> constexpr T highOf(T odd, T even0, T even1) {
    return T(wrapSub<Zmx32s>(odd, sumOf(even0, even1) >> 1));
}
template <class T> constexpr T lowOf(T even, T high0, T high1) {
    return T(wrapAdd<Zmx32s>(even, quarterOf(high0, high1)));
}
template <class T> constexpr T evenOf(T low, T high0, T high1) {
    return T(wrapSub<Zmx32s>(low, quarterOf(high0, high1)));
}
template <class T> constexpr T oddOf(T high, T even0, T even1) {
    return T(wrapAdd<Zmx32s>(high, sumOf(even0, even1) >> 1));
}

// One step over whole rows: dst[i] = step(centre[i], side0[i], side1[i]); and with the centre as the destination, which
// the compiler has to know to vectorise it.
template <class T, T (*step)(T, T, T)>
void liftRow(Zmx8u* dst, const Zmx8u* centre, const Zmx8u* side0, const Zmx8u* side1, int width) {
    for (int i = 0; i < width; ++i) store(dst, i, step(load<T>(centre, i), load<T>(side0, i), load<T>(side1, i)));
}
template <class T, T (*step)(T, T, T)> void liftRow(Zmx8u* row, const Zmx8u* side0, const Zmx8u* side1, int width) {
    for (int i = 0; i < width; ++i) store(row, i, step(load<T>(row, i), load<T>(side0, i), load<T>(side1, i)));
}

// Parts of a line x of interleaved samples at phase p (0: x[0] is an even sample) whose neighbours all exist. `from`
// and `to` count samples of a band.

template <class T> void highsOf(const Zmx8u* x, int p, Zmx8u* high, int from, int to) {
    for (int i = from; i < to; ++i)
        store(high, i, highOf(load<T>(x, 2 * i + 1 - p), load<T>(x, 2 * i - p), load<T>(x, 2 * i + 2 - p)));
}
template <class T> void lowsOf(const Zmx8u* x, int p, const Zmx8u* high, Zmx8u* low, int from, int to) {
    for (int i = from; i < to; ++i)
        store(low, i, lowOf(load<T>(x, 2 * i + p), load<T>(high, i - 1 + p), load<T>(high, i + p)));
}

// Even sample i and the odd one behind it. Both even neighbours of the odd sample are rebuilt: twice the work for the
// even ones, but no value goes from one turn to the next.
template <class T> void pairsOf(const Zmx8u* low, const Zmx8u* high, int p, Zmx8u* x, int from, int to) {
    for (int i = from; i < to; ++i) {
        const T h0 = load<T>(high, i - 1 + p), h1 = load<T>(high, i + p), h2 = load<T>(high, i + 1 + p);
        const T here = evenOf(load<T>(low, i), h1, h0), next = evenOf(load<T>(low, i + 1), h1, h2);
        store(x, 2 * i + p, here);
        store(x, 2 * i + 1 + p, oddOf(h1, here, next));
    }
}

} // namespace zmx
