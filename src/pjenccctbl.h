// pjenccctbl.h - the fixed-point table of the plane conversions to YCbCr (ITU-T T.871, 16 fractional bits).
#pragma once

#include "pjtable.h"
#include "zmxj.h"

namespace zmx {

// Eight sub-tables of 256 entries, each indexed by a sample; sub-table k begins at entry 256 k. A result is the sum of
// three entries shifted right by 16:
//   Y   0 of R, 1 of G, 2 of B   (2 holds the rounding term 32768)
//   Cb  3 of R, 4 of G, 5 of B   (5 holds the offset 128 and a rounding term of 32767, one short of a half, so that the
//   Cr  5 of R, 6 of G, 7 of B    largest sum stays below 256; it serves both lines)
extern const std::array<Zmx32s, 8 * 256> cc_table;

} // namespace zmx
