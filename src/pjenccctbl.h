// pjenccctbl.h - the fixed-point table of the plane conversions to YCbCr (ITU-T T.871, 16 fractional bits).
//
// It is the definition. The conversions work by formulas that need no table, and prove there, at compile time, that the
// two agree.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjtable.h"
#include "zmxj.h"

namespace zmx {

struct ColourLine {
    Zmx32s factor, term;
};

// Eight sub-tables of 256 entries, each indexed by a sample; sub-table k begins at entry 256 k. A result is the sum of
// three entries shifted right by 16:
//   Y   0 of R, 1 of G, 2 of B   (2 holds the rounding term 32768)
//   Cb  3 of R, 4 of G, 5 of B   (5 holds the offset 128 and a rounding term of 32767, one short of a half, so that the
//   Cr  5 of R, 6 of G, 7 of B    largest sum stays below 256; it serves both lines)
inline constexpr ColourLine kColourLines[8] = {
    {19595, 0},                   // 0.299 R
    {38470, 0},                   // 0.587 G
    {7471, 32768},                // 0.114 B, and the rounding term of Y
    {-11059, 0},                  // -0.16874 R
    {-21709, 0},                  // -0.33126 G
    {32768, 128 * 65536 + 32767}, // 0.5 B for Cb, 0.5 R for Cr, and the offset of both
    {-27439, 0},                  // -0.41869 G
    {-5329, 0},                   // -0.08131 B
};
inline constexpr auto cc_table =
    tableOf<8 * 256>([](int i) { return kColourLines[i / 256].factor * (i % 256) + kColourLines[i / 256].term; });

static_assert(cc_table[255] == 4996725 && cc_table[511] == 9809850 && cc_table[767] == 1937873 &&
              cc_table[1023] == -2820045);
static_assert(cc_table[1279] == -5535795 && cc_table[1535] == 16777215 && cc_table[1791] == -6996945 &&
              cc_table[2047] == -1358895);

} // namespace zmx
