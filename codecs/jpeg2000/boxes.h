// boxes.h - the JP2 file format around a codestream (annex I).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/numbers.h"
#include "codecs/jpeg2000/parameters.h"

#include <array>

namespace codecs::jpeg2000 {

// The type of a box.
constexpr std::uint32_t fourcc(const char (&s)[5]) {
    return std::uint32_t(s[0]) << 24 | std::uint32_t(s[1]) << 16 | std::uint32_t(s[2]) << 8 | std::uint32_t(s[3]);
}
constexpr std::uint32_t kSignature = 0x0D0A870A;
// Enumerated colour spaces (Table I.10); that of inks is from ISO/IEC 15444-2, M.11.7.3.1.
constexpr std::uint32_t kEnumCmyk = 12, kEnumSRgb = 16, kEnumGrey = 17, kEnumSYcc = 18;

// UUID boxes that hold EXIF, from its byte order mark on, and XMP, as is usual.
using Uuid = std::array<std::uint8_t, 16>;
constexpr Uuid kExifUuid = {'J', 'p', 'g', 'T', 'i', 'f', 'f', 'E', 'x', 'i', 'f', '-', '>', 'J', 'P', '2'};
constexpr Uuid kXmpUuid = {0xBE, 0x7A, 0xCF, 0xCB, 0x97, 0xA9, 0x42, 0xE8,
                           0x9C, 0x71, 0x99, 0x94, 0x91, 0xE3, 0xAF, 0xAC};

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
    Metadata metadata;
};

// Finds the codestream in a file and reads what stands around it. Broken boxes of the header give warnings.
Boxes readBoxes(ByteView file);

// What the boxes ahead of a codestream say of a picture, besides its size.
struct FileHeader {
    ColourSpace colour = ColourSpace::unknown;
    int alpha = -1; // the component that holds the opacity, or -1
    const Metadata& metadata;
};

// The boxes that come before a codestream, with the head of the one that holds it. Until it is patched it lasts to the
// end of the file.
Bytes writeBoxes(const ImageSize& size, const FileHeader& header);
// Fills in the length of the box whose content begins at `begin` and ends at the end of the sink, unless it is too
// long.
void patchCodestreamBox(ByteSink& sink, std::uint64_t begin);

} // namespace codecs::jpeg2000
