// quantise.h - quantisation tables as the library takes them, in both directions.
#pragma once

#include "codecs/jpeg/format.h"

namespace codecs::jpeg {

// The divisors of a component on the way to the file.
struct Quantiser {
    QuantTable table;                       // as the file holds them, in zig-zag order
    std::array<Zmx16u, kBlock> forward;     // for the integer transform; divisors of bytes only
    std::array<Zmx32f, kBlock> reciprocals; // for the transform in single precision, in natural order

    // Of a table for quality 50, at another quality.
    Quantiser(const std::array<std::uint8_t, kBlock>& base, int quality);
};

// And on the way back, in natural order.
using DequantTable = std::array<Zmx16u, kBlock>;
DequantTable dequantTableOf(const QuantTable& table);

} // namespace codecs::jpeg
