// hdphoto.h - what the HD Photo core transform makes of a picture.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/rows.h"

#include <array>
#include <cstddef>

namespace codecs::hdphoto {

struct Energy {
    std::array<double, 16> mean{}; // of the square of each coefficient of a 4x4 block, by place, row by row
    std::uint64_t blocks = 0;      // of all channels
    std::uint64_t lost = 0;        // samples that the inverse did not bring back; 0 unless something is badly wrong
    Picture coefficients;          // where asked for: 16 small pictures, one a place, 4 by 4
};

// Transforms every channel of a picture, centred on zero, and back, four rows at a time. A picture whose sides are no
// multiples of 4 is continued by its last row and column.
Energy measure(RowSource& rows, bool withCoefficients);

} // namespace codecs::hdphoto
