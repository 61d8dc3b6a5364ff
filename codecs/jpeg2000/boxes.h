// boxes.h - the JP2 file format around a codestream (annex I).
#pragma once

#include "codecs/jpeg2000/jpeg2000.h"
#include "codecs/jpeg2000/numbers.h"

namespace codecs::jpeg2000 {

// The type of a box.
constexpr std::uint32_t fourcc(const char (&s)[5]) {
    return std::uint32_t(s[0]) << 24 | std::uint32_t(s[1]) << 16 | std::uint32_t(s[2]) << 8 | std::uint32_t(s[3]);
}
constexpr std::uint32_t kSignature = 0x0D0A870A;
// Enumerated colour spaces (Table I.10).
constexpr std::uint32_t kEnumSRgb = 16, kEnumGrey = 17, kEnumSYcc = 18;

struct Boxes {
    bool jp2 = false; // otherwise the file is a bare codestream
    ByteView codestream;
    std::vector<std::string> warnings;
    std::uint32_t enumeratedColour = 0; // 0: none is told
    struct Palette {
        Bytes depths;                      // of its columns, sign in bit 7
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
Boxes readBoxes(ByteView file);

// Palette, order of channels, opacity and colour space.
void applyBoxes(const Boxes& boxes, PlanarPicture& picture);

// The boxes that come before a codestream of `codestreamSize` bytes, the head of the last one included.
Bytes writeBoxes(const PlanarPicture& picture, std::size_t codestreamSize);

} // namespace codecs::jpeg2000
