// pj2cbflags.cpp - zeroing of a flag plane.
#include "pj2cbflags.h"

#include "pjrows.h"

namespace zmx {

void clearFlagPlane(Zmx32u* flags, ZmxiSize size) {
    const int stride = int(flagRowBytes(size.width));
    const int rows = int(flagRows(size.height));
    for (int y = 0; y < rows; ++y) std::memset(rowAt(flags, stride, y), 0, std::size_t(size.width) * 4 + 8);
}

} // namespace zmx
