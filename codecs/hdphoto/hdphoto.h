// hdp.h - what the HD Photo core transform makes of a picture.
#pragma once

#include "codecs/picture/image.h"

#include <array>
#include <cstddef>

namespace hdp {

struct Energy {
    std::array<double, 16> mean{}; // of the square of each coefficient of a 4x4 block, by place, row by row
    std::size_t blocks = 0;        // of all channels
    std::size_t lost = 0;          // samples that the inverse did not bring back; 0 unless something is badly wrong
    Image coefficients;            // 16 small pictures, one a place, 4 by 4
};

// Transforms every channel of a picture, centred on zero, and back. A picture whose sides are no multiples of 4 is
// continued by its last row and column.
Energy measure(const Image& image);

} // namespace hdp
