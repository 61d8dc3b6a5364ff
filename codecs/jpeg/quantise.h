// quantise.h - quantisation tables: those of a quality or of a text, and as the library takes them in both directions.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/format.h"

namespace codecs::jpeg {

// Up to four tables of 64 divisors in rows of eight, in words: numbers, blanks between them, and comments from # to the
// end of the line. An Error says what is wrong. They come out in zig-zag order.
std::vector<QuantTable> parseTables(const std::string& text);
// The table for another quality than 50. Divisors of 8-bit samples fit a byte.
QuantTable scaledTable(const QuantTable& table, int quality, int precision);
// The table of a picture whose rows have become columns.
QuantTable transposedTable(const QuantTable& table);

// The divisors of a component on the way to the file.
struct Quantiser {
    QuantTable table;                       // as the file holds them
    std::array<Zmx16u, kBlock> forward;     // for the integer transform; divisors of bytes only
    std::array<Zmx32f, kBlock> reciprocals; // for the transform in single precision, in natural order

    explicit Quantiser(const QuantTable& divisors);
};

// And on the way back, in natural order.
using DequantTable = std::array<Zmx16u, kBlock>;
DequantTable dequantTableOf(const QuantTable& table);

} // namespace codecs::jpeg
