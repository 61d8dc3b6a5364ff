// coefficients.cpp - what concerns all coefficients of a picture.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/coefficients.h"

namespace codecs::jpeg {

void Coefficients::fillPadding() {
    for (int i = 0; i < int(frame.components.size()); ++i) {
        const Component& c = frame.components[std::size_t(i)];
        const int columns = frame.blockColumns(c), rows = frame.blockRows(c);
        for (int y = 0; y < frame.mcuRows() * c.v; ++y)
            for (int x = y < rows ? columns : 0; x < frame.mcuColumns() * c.h; ++x) {
                // What is coded before it: to the left in its MCU, or the last one of the row above there. The first
                // block of an MCU is always in the picture.
                const Zmx16s* const before = x % c.h > 0 ? block(i, x - 1, y) : block(i, x + c.h - 1, y - 1);
                Zmx16s* const b = block(i, x, y);
                std::fill_n(b, kBlock, Zmx16s(0));
                b[0] = before[0];
            }
    }
}

std::uint64_t Coefficients::digest() const {
    std::uint64_t hash = 0xCBF29CE484222325;
    eachVisible([&](int, const Zmx16s* b) {
        for (int k = 0; k < kBlock; k += 4) {
            std::uint64_t four = 0;
            for (int i = 0; i < 4; ++i) four |= std::uint64_t(std::uint16_t(b[k + i])) << (16 * i);
            hash = (hash ^ four) * 0x100000001B3;
            hash ^= hash >> 32; // the product carries upwards only
        }
    });
    return hash;
}

} // namespace codecs::jpeg
