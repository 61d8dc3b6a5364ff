// rows.h - rows of samples as TIFF stores them, and PackBits strips of them.
#pragma once

#include "codecs/picture/image.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tif {

using Bytes = std::vector<std::uint8_t>;

// What the rows of a file hold.
struct RowLayout {
    int samples = 0;       // width x channels
    int bits = 8;          // of a sample: 1, 8 or 16
    bool split = false;    // 16-bit samples as a packed row of high bytes and one of low bytes
    bool swapped = false;  // 16-bit samples in the other byte order
    bool inverted = false; // 0 is white

    // The bytes of a row before it is packed.
    std::size_t bytes() const { return (std::size_t(samples) * std::size_t(bits) + 7) / 8; }
    unsigned maxval() const { return (1u << bits) - 1; }
};

// Packs a row behind what `strip` holds.
void packRow(const RowLayout& layout, const std::uint16_t* row, Bytes& strip);

// Unpacks the row that begins at `pos` of a strip of `stripBytes`, and moves `pos` behind it. The strip has one readable byte
// more than that. Returns what is wrong, or an empty text.
std::string unpackRow(const RowLayout& layout, const std::uint8_t* strip, int stripBytes, int& pos, std::uint16_t* row);

} // namespace tif
