// pjdeccctbl.h - the fixed-point tables of the plane conversions from YCbCr (ITU-T T.871, 16 fractional bits).
//
// Each is indexed by a chroma sample. Red and blue are rounded here, to whole samples; the two products of green keep
// their fraction, and cb_g_tbl alone holds the rounding term of their sum.
#pragma once

#include "pjtable.h"
#include "zmxj.h"

namespace zmx {

extern const std::array<Zmx32s, 256> cr_r_tbl, cb_b_tbl, cr_g_tbl, cb_g_tbl;

} // namespace zmx
