// pidct88f.h - the DCT in single precision, forward and inverse.
//
// A scaled transform: the first butterflies of both directions are one two-dimensional stage, then the vectors go down
// the columns and along the rows, and a table of 64 factors normalises. Every single operation is rounded to single
// precision, so that all builds give the same bits. A pass takes eight vectors side by side, one to a lane, as those of
// the integer transforms do (pidct88.h).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pidctmul.h"
#include "pjround.h"
#include "pjtable.h"
#include "pjtranspose.h"

namespace zmx::dct {

// A single-precision value whose sums, differences and products are single-precision too.
struct Single {
    Zmx32f v;
};
inline Single operator+(Single a, Single b) { return {rounded(a.v + b.v)}; }
inline Single operator-(Single a, Single b) { return {rounded(a.v - b.v)}; }
inline Single operator*(Single a, Zmx32f b) { return {rounded(a.v * b)}; }

using BlockSingle = Block<Zmx32f>;

// Outer products of two vectors, rounded once.
constexpr auto outerProduct(const Factors& f) {
    return tableOf<64>([&](int i) { return Zmx32f(f[i / 8] * f[i % 8]); });
}
inline constexpr auto tab_norm_fwd = outerProduct(kForwardFactors);
inline constexpr auto tab_norm_inv = outerProduct(kInverseFactors);
static_assert(tab_norm_fwd[0] == 0.125f && tab_norm_fwd[1] == tab_norm_fwd[8] && tab_norm_inv[0] == 0.125f);

// Elements 0 to 3 are the sums of the mirrored ones, outermost first; of the differences the outermost is element Outer and
// the innermost the one that is left of 4 and 7.
template <int Outer> inline void forwardPass(const Zmx32f* __restrict in, Zmx32f* __restrict out) {
    static_assert(Outer == 4 || Outer == 7);
    const auto difference = [in](int k, int i) { return in[8 * (Outer == 4 ? 4 + k : 7 - k) + i]; };
    for (int i = 0; i < 8; ++i) {
        const Single s0{in[i]}, s1{in[8 + i]}, s2{in[16 + i]}, s3{in[24 + i]};
        const Single d0{difference(0, i)}, d1{difference(1, i)}, d2{difference(2, i)}, d3{difference(3, i)};

        const Single e0 = s0 + s3, e1 = s0 - s3, f0 = s1 + s2, f1 = s1 - s2, m = (f1 + e1) * kHalfRoot2;
        out[i] = (e0 + f0).v;
        out[32 + i] = (e0 - f0).v;
        out[16 + i] = (e1 + m).v;
        out[48 + i] = (e1 - m).v;

        const Single p = d0 * kSec2, q = (d1 + d2) * kTwoCos6, A = p + q, B = p - q;
        const Single u = d0 + d1, v = d2 + d3, M = v * kTan2 + u, N = v - u * kTan2;
        out[8 + i] = (A + M).v;
        out[56 + i] = (A - M).v;
        out[40 + i] = (B + N).v;
        out[24 + i] = (B - N).v;
    }
}

// The transform of a block, but for the factors: of its element k there is tab_norm_fwd[k] to be taken.
inline void forward(const Zmx32f* __restrict src, Zmx32f* __restrict dst) {
    BlockSingle held, turned;
    // The mirrored elements of each row: differences end outermost last. Rows from below the middle are turned over.
    for (int r = 0; r < 8; ++r) {
        const Zmx32f* const row = src + 8 * r;
        Zmx32f* const to = held.at + 8 * (r < 4 ? r : 11 - r);
        for (int c = 0; c < 8; ++c) {
            const Single own{row[c]}, mirrored{row[7 - c]};
            to[c] = c < 4 ? (mirrored + own).v : (mirrored - own).v;
        }
    }
    // The mirrored rows.
    for (int i = 0; i < 32; ++i) {
        const Single upper{held.at[i]}, lower{held.at[32 + i]};
        turned.at[i] = (upper + lower).v;
        turned.at[32 + i] = (upper - lower).v;
    }
    forwardPass<4>(turned.at, held.at);
    transpose(held.at, turned.at);
    forwardPass<7>(turned.at, held.at);
    transpose(held.at, dst);
}

// One sum and one difference of the results make a sample and the mirrored one: the results that begin a sum, in the order
// of samples, come first, then those that are added to them.
inline void inversePass(const Zmx32f* __restrict in, Zmx32f* __restrict out) {
    for (int i = 0; i < 8; ++i) {
        const Single y0{in[i]}, y1{in[8 + i]}, y2{in[16 + i]}, y3{in[24 + i]};
        const Single y4{in[32 + i]}, y5{in[40 + i]}, y6{in[48 + i]}, y7{in[56 + i]};

        const Single m = (y2 - y6) * kRoot2Single - (y2 + y6);
        out[i] = ((y0 + y4) + (y2 + y6)).v;
        out[8 + i] = ((y0 - y4) + m).v;
        out[16 + i] = ((y0 - y4) - m).v;
        out[24 + i] = ((y0 + y4) - (y2 + y6)).v;

        const Single g = ((y3 + y5) + (y1 + y7)) * kRoot2Cos6;
        const Single h = (y1 - y7) - (y5 - y3) * kTan2 - g;
        const Single k = ((y1 + y7) - (y3 + y5)) * kTwoCos6 - h;
        out[32 + i] = g.v;
        out[40 + i] = h.v;
        out[48 + i] = k.v;
        out[56 + i] = ((y1 - y7) * kTan2 + (y5 - y3) - k).v;
    }
}

// The inverse transform of a block whose elements k have been multiplied by tab_norm_inv[k].
inline void inverse(const Zmx32f* __restrict src, Zmx32f* __restrict dst) {
    BlockSingle held, turned;
    transpose(src, turned.at);
    inversePass(turned.at, held.at);
    transpose(held.at, turned.at);
    inversePass(turned.at, held.at);
    // The mirrored elements of each row, then the mirrored rows.
    for (int r = 0; r < 64; r += 8)
        for (int c = 0; c < 4; ++c) {
            const Single a{held.at[r + c]}, b{held.at[r + 4 + c]};
            turned.at[r + c] = (a + b).v;
            turned.at[r + 7 - c] = (a - b).v;
        }
    for (int r = 0; r < 4; ++r)
        for (int i = 0; i < 8; ++i) {
            const Single upper{turned.at[8 * r + i]}, lower{turned.at[32 + 8 * r + i]};
            dst[8 * r + i] = (upper + lower).v;
            dst[8 * (7 - r) + i] = (upper - lower).v;
        }
}

} // namespace zmx::dct
