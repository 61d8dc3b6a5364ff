// coefficients.cpp - what concerns all coefficients of a picture.
#include "codecs/jpeg/coefficients.h"

namespace codecs::jpeg {

void Coefficients::fillPadding() {
    for (int i = 0; i < int(frame.components.size()); ++i) {
        const Component& c = frame.components[std::size_t(i)];
        const int columns = frame.blockColumns(c), rows = frame.blockRows(c);
        for (int y = 0; y < frame.mcuRows() * c.v; ++y)
            for (int x = y < rows ? columns : 0; x < frame.mcuColumns() * c.h; ++x) {
                Zmx16s* b = block(i, x, y);
                std::fill_n(b, kBlock, Zmx16s(0));
                // The last one of the row or, in rows below the picture, the one that its MCU begins with.
                b[0] = *(x >= columns ? block(i, x - 1, y) : block(i, x, y - 1));
            }
    }
}

std::uint64_t Coefficients::digest() const {
    std::uint64_t hash = 0xCBF29CE484222325;
    eachVisible([&](int, const Zmx16s* b) {
        for (int k = 0; k < kBlock; ++k)
            for (int shift : {0, 8}) hash = (hash ^ (unsigned(b[k]) >> shift & 0xFF)) * 0x100000001B3;
    });
    return hash;
}

} // namespace codecs::jpeg
