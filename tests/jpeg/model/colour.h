// colour.h - plain models of the colour conversions of whole planes, a pixel at a time from the formulas.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj/types.h"

#include <array>

namespace model {

// How pixels lie in memory. Packed words have the first colour of their name in the low bits.
enum class Layout { Planes3, Planes4, Grey, Rgb, Bgr, Cmyk, Rgb555, Bgr555, Rgb565, Bgr565, Pairs422 };

int planesOf(Layout l);
int pixelBytes(Layout l); // in one plane; Pairs422: two for each pixel

// Rows of pixels; what layouts of one plane have is plane 0.
struct Rows {
    Layout layout;
    std::array<Zmx8u*, 4> plane;
    int step;
};

using Pixel4 = std::array<int, 4>; // three colours and K

Pixel4 fromYCbCr(Pixel4 p);
Pixel4 toYCbCr(Pixel4 p);

// The pixels of src, converted, to dst. Layouts with K hold complements of the colours, on the side away from
// YCbCr. With 4:2:2 an odd width is one more.
void fromYCbCr(Rows src, Rows dst, ZmxiSize size);
void toYCbCr(Rows src, Rows dst, ZmxiSize size);

} // namespace model
