// norms.h - how much the numbers of a band weigh in the picture.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/geometry.h"

namespace codecs::jpeg2000 {

// Norm of the basis functions of a band, `levels` down.
double waveletNorm(bool reversible, int levels, Orientation o);

// The same for a band of a resolution of a component with so many levels.
inline double bandNorm(bool reversible, int levels, int resolution, Orientation o) {
    return waveletNorm(reversible, resolution == 0 ? levels : levels - resolution + 1, o);
}

// Norm of what one unit of a transformed component does to the three colours.
double colourNorm(bool reversible, std::size_t component);

} // namespace codecs::jpeg2000
