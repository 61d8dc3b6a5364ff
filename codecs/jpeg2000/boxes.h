// boxes.h - the JP2 file format around a codestream (annex I).
#pragma once

#include "codecs/jpeg2000/bytes.h"

#include <array>

namespace jpeg2000 {

struct Boxes {
    bool jp2 = false; // otherwise the file is a bare codestream
    Span codestream;
    std::vector<std::string> warnings;
    std::uint32_t enumeratedColour = 0; // 0: none is told
    struct Palette {
        std::vector<std::uint8_t> depths;  // of its columns, sign in bit 7
        std::vector<std::int32_t> entries; // row by row
    } palette;
    struct Mapping {
        int component, type, column;
    };
    std::vector<Mapping> mappings;
    struct Channel {
        int channel, type, association;
    };
    std::vector<Channel> channels;
};

// Finds the codestream in a file and reads what stands around it. Broken boxes of the header give warnings.
Boxes readBoxes(Span file);

// Palette, order of channels, opacity and colour space.
void applyBoxes(const Boxes& boxes, Picture& picture);

// The boxes that come before a codestream of `codestreamSize` bytes, the head of the last one included.
std::vector<std::uint8_t> writeBoxes(const Picture& picture, std::size_t codestreamSize);

} // namespace jpeg2000
