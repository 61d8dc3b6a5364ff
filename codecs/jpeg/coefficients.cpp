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
    // Four at a time that do not wait for each other's product.
    constexpr int lanes = 4;
    std::uint64_t hash[lanes] = {0xCBF29CE484222325, 1, 2, 3};
    const auto mix = [](std::uint64_t& h, std::uint64_t with) {
        h = (h ^ with) * 0x100000001B3;
        h ^= h >> 32; // the product carries upwards only
    };
    eachVisible([&](int, const Zmx16s* b) {
        for (int k = 0; k < kBlock; k += 4 * lanes)
            for (int lane = 0; lane < lanes; ++lane) {
                std::uint64_t four = 0;
                for (int i = 0; i < 4; ++i) four |= std::uint64_t(std::uint16_t(b[k + 4 * lane + i])) << (16 * i);
                mix(hash[lane], four);
            }
    });
    for (int lane = 1; lane < lanes; ++lane) mix(hash[0], hash[lane]);
    return hash[0];
}

} // namespace codecs::jpeg
