// pjenccctbl.cpp - the fixed-point table of the plane conversions to YCbCr.
#include "pjenccctbl.h"

namespace zmx {
namespace {
struct Line {
    Zmx32s factor, term;
};
constexpr Line kLines[8] = {
    {19595, 0},                   // 0.299 R
    {38470, 0},                   // 0.587 G
    {7471, 32768},                // 0.114 B, and the rounding term of Y
    {-11059, 0},                  // -0.16874 R
    {-21709, 0},                  // -0.33126 G
    {32768, 128 * 65536 + 32767}, // 0.5 B for Cb, 0.5 R for Cr, and the offset of both
    {-27439, 0},                  // -0.41869 G
    {-5329, 0},                   // -0.08131 B
};
} // namespace

constexpr std::array<Zmx32s, 8 * 256> cc_table =
    tableOf<8 * 256>([](int i) { return kLines[i / 256].factor * (i % 256) + kLines[i / 256].term; });

static_assert(cc_table[255] == 4996725 && cc_table[511] == 9809850 && cc_table[767] == 1937873 &&
              cc_table[1023] == -2820045);
static_assert(cc_table[1279] == -5535795 && cc_table[1535] == 16777215 && cc_table[1791] == -6996945 &&
              cc_table[2047] == -1358895);

} // namespace zmx
