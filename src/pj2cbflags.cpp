// pj2cbflags.cpp - zeroing of a flag plane.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2cbflags.h"

#include "pjrows.h"

namespace zmx {

void clearFlagPlane(Zmx32u* flags, ZmxiSize size) {
    // Row by row: what pads a flag row to its stride is not part of the plane.
    const int stride = int(flagRowBytes(size.width));
    const int rows = int(flagRows(size.height));
    for (int y = 0; y < rows; ++y) std::memset(rowAt(flags, stride, y), 0, std::size_t(size.width) * 4 + 8);
}

} // namespace zmx
