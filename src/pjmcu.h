// pjmcu.h - the shapes of a minimum coded unit.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

// A unit whose chroma has a half of its luma's width (ShiftX 1) or height (ShiftY 1), or as much (0).
template <int ShiftX, int ShiftY> struct Unit {
    static constexpr int shiftX = ShiftX, shiftY = ShiftY;
    static constexpr int width = 8 << ShiftX, height = 8 << ShiftY, pixels = width * height;

    // Where pixel row y of column block h stands in a plane of full resolution: blocks follow one another, left to
    // right, then top to bottom.
    static constexpr int rowAt(int h, int y) { return 64 * (((y >> 3) << ShiftX) + h) + 8 * (y & 7); }
};
using Unit444 = Unit<0, 0>;
using Unit422 = Unit<1, 0>;
using Unit411 = Unit<1, 1>;

} // namespace zmx
