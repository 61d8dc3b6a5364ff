// colour.cpp - plain models of the colour conversions of whole planes.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/colour.h"

namespace model {

namespace {

template <class Convert> void eachPixel(Rows src, ZmxiSize size, Convert convert) {
    const int width = src.layout == Layout::Pairs422 ? (size.width + 1) / 2 * 2 : size.width;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < width; ++x) convert(x, y);
}

} // namespace

void fromYCbCr(Rows src, Rows dst, ZmxiSize size) {
    eachPixel(src, size, [&](int x, int y) { pixelFromYCbCr(src, dst, x, y); });
}

void toYCbCr(Rows src, Rows dst, ZmxiSize size) {
    eachPixel(src, size, [&](int x, int y) { pixelToYCbCr(src, dst, x, y); });
}

} // namespace model
