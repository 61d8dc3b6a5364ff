// pjdeccctbl.h - the fixed-point tables of the plane conversions from YCbCr (ITU-T T.871, 16 fractional bits).
//
// They are the definition. The conversions work by formulas that need no table, and prove there, at compile time, that
// the two agree.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjtable.h"
#include "zmxj.h"

namespace zmx {

// Each is indexed by a chroma sample. Red and blue are rounded here, to whole samples; the two products of green keep
// their fraction, and cb_g_tbl alone holds the rounding term of their sum.
inline constexpr auto cr_r_tbl = tableOf<256>([](int i) { return (91881 * (i - 128) + 32768) >> 16; });  // 1.402
inline constexpr auto cb_b_tbl = tableOf<256>([](int i) { return (116130 * (i - 128) + 32768) >> 16; }); // 1.772
inline constexpr auto cr_g_tbl = tableOf<256>([](int i) { return -46802 * (i - 128); });                 // 0.71414
inline constexpr auto cb_g_tbl = tableOf<256>([](int i) { return -22554 * (i - 128) + 32768; });         // 0.34414

static_assert(cr_r_tbl[0] == -179 && cr_r_tbl[127] == -1 && cr_r_tbl[128] == 0 && cr_r_tbl[129] == 1 &&
              cr_r_tbl[255] == 178);
static_assert(cb_b_tbl[0] == -227 && cb_b_tbl[127] == -2 && cb_b_tbl[128] == 0 && cb_b_tbl[129] == 2 &&
              cb_b_tbl[255] == 225);
static_assert(cr_g_tbl[0] == 5990656 && cr_g_tbl[129] == -46802 && cr_g_tbl[255] == -5943854);
static_assert(cb_g_tbl[0] == 2919680 && cb_g_tbl[128] == 32768 && cb_g_tbl[255] == -2831590);

} // namespace zmx
