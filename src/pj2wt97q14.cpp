// pj2wt97q14.cpp - the 9/7 lifting of 16-bit samples in 14-bit fixed point.
//
// Every value is cut to its low 16 bits, and nothing saturates: required. Sums and products fit 32 bits.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2wt97q14.h"

#include "pj2wt97const.h"

namespace zmx::wt97::q14 {
namespace {

// A constant times a value, rounded; halves go up.
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

// Runs steps over the rows as a wave: the first step on rows of odd absolute position, each further one a row behind,
// so that it finds its neighbours done by the step before it.
template <class... Steps> void wave(Split s, Steps... steps) {
    for (int t = 1 - s.phase; t < s.n + int(sizeof...(Steps)) - 1; t += 2) {
        int r = t;
        // The first step is never ahead of the first row, the last one never behind the last row.
        ((r >= 0 && r < s.n ? steps(r) : void(), --r), ...); // unreachable: t is 0 or more, and r ends below n
    }
}

} // namespace

// The bands are taken apart first, so that every step runs over neighbouring samples.
void forwardLine(const Zmx8u* x, Split s, Zmx8u* low, Zmx8u* high) {
    const int p = s.phase, lows = s.low(), highs = s.high();
    for (int i = 0; i < lows; ++i) store(low, i, load<Zmx16s>(x, 2 * i + p));
    for (int i = 0; i < highs; ++i) store(high, i, load<Zmx16s>(x, 2 * i + 1 - p));
    liftBand<lift<kQ14Steps.alpha>>(high, highs, low, lows, 1 - p);
    liftBand<lift<kQ14Steps.beta>>(low, lows, high, highs, p);
    liftBand<lift<kQ14Steps.gamma>>(high, highs, low, lows, 1 - p);
    liftBand<lift<kQ14Steps.delta>>(low, lows, high, highs, p);
    scale<kQ14Steps.oneOverK>(low, lows);
    scale<kQ14Steps.k>(high, highs);
}

// The source row is free to be overwritten.
void inverseLine(Zmx8u* low, Zmx8u* high, Split s, Zmx8u* x) {
    const int p = s.phase, lows = s.low(), highs = s.high();
    scale<kQ14Steps.k>(low, lows);
    scale<kQ14Steps.oneOverK>(high, highs);
    liftBand<liftBack<kQ14Steps.delta>>(low, lows, high, highs, p);
    liftBand<liftBack<kQ14Steps.gamma>>(high, highs, low, lows, 1 - p);
    liftBand<liftBack<kQ14Steps.beta>>(low, lows, high, highs, p);
    liftBand<liftBack<kQ14Steps.alpha>>(high, highs, low, lows, 1 - p);
    const Zmx8u *first = p ? high : low, *second = p ? low : high;
    for (int i = 0; i < s.n / 2; ++i) {
        store(x, 2 * i, load<Zmx16s>(first, i));
        store(x, 2 * i + 1, load<Zmx16s>(second, i));
    }
    if (s.n % 2 != 0) store(x, s.n - 1, load<Zmx16s>(first, s.n / 2));
}

// A step down the columns is a step on whole rows. Rows that lie outside are mirrored, once: a step looks one row to
// either side.
void forwardColumns(Zmx8u* plane, int step, Split s, int width) {
    const auto row = [=](int r) { return rowAt(plane, step, r < 0 ? -r : r >= s.n ? 2 * (s.n - 1) - r : r); };
    const auto by = [=](Lift lift) { return [=](int r) { lift(row(r), row(r - 1), row(r + 1), width); }; };
    wave(
        s, by(lift<kQ14Steps.alpha>), by(lift<kQ14Steps.beta>), by(lift<kQ14Steps.gamma>),
        [=](int r) {
            lift<kQ14Steps.delta>(row(r), row(r - 1), row(r + 1), width);
            scale<kQ14Steps.oneOverK>(row(r), width);
        },
        [=](int r) { scale<kQ14Steps.k>(row(r), width); });
}

// The scale is the first step of the wave, or goes with it.
void inverseColumns(Zmx8u* plane, int step, Split s, int width) {
    const auto row = [=](int r) { return rowAt(plane, step, r < 0 ? -r : r >= s.n ? 2 * (s.n - 1) - r : r); };
    const auto by = [=](Lift lift) { return [=](int r) { lift(row(r), row(r - 1), row(r + 1), width); }; };
    wave(
        s, [=](int r) { scale<kQ14Steps.oneOverK>(row(r), width); },
        [=](int r) {
            scale<kQ14Steps.k>(row(r), width);
            liftBack<kQ14Steps.delta>(row(r), row(r - 1), row(r + 1), width);
        },
        by(liftBack<kQ14Steps.gamma>), by(liftBack<kQ14Steps.beta>), by(liftBack<kQ14Steps.alpha>));
}

} // namespace zmx::wt97::q14
