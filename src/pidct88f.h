// pidct88f.h - the forward DCT in single precision, and what the inverse shares with it.
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
static_assert(tab_norm_fwd[0] == 0.125f && tab_norm_fwd[1] == tab_norm_fwd[8]);

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

} // namespace zmx::dct
