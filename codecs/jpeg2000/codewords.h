// codewords.h - what packets carry: the codeword segments of code blocks (B.10), on their way in and on their way out.
//
// The coder of blocks and the reader and writer of packets meet here; neither knows the other.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/geometry.h"
#include "codecs/picture/bytes.h"

namespace codecs::jpeg2000 {

// How many passes the codeword segment that begins with pass `first` (from 0) may have.
inline int segmentPasses(unsigned style, int first) {
    if (style & kStyleTerminateAll) return 1;
    if (!(style & kStyleBypass)) return 1 << 20;
    if (first < 10) return 10 - first;    // four planes of MQ passes
    return (first - 10) % 3 == 0 ? 2 : 1; // two raw ones, a cleanup
}

// What the packets read so far hold of a code block.
struct BlockStream {
    struct Codeword {
        int passes = 0;           // that packet headers have announced
        int kept = 0, length = 0; // passes and bytes that are there and wanted
    };
    std::vector<Codeword> codewords;
    std::vector<ByteView> pieces; // their bytes
    std::int16_t passes = 0;
    std::uint8_t zeroPlanes = 0, lengthBits = 3;
    bool included = false;
};

// A code block after tier-1 coding.
struct CodedBlock {
    struct Pass {
        std::uint32_t rate; // bytes up to its end
        bool ends;          // a codeword segment
        double distortion;  // reduction of the squared error so far, in units of the squared step
    };
    Bytes bytes;
    std::vector<Pass> passes;
    double residual = 0;                    // squared error that all passes leave, in the same units
    int bitPlanes = 0;                      // coded ones
    int zeroPlanes = 0;                     // above them, up to the planes of the band
    double weight = 1;                      // of its errors in the picture: squared error there over squared step
    std::vector<std::uint16_t> layerPasses; // passes up to the end of each layer
};

struct EncodedTile {
    int index = 0;
    int guardBits = 2; // that its numbers ask for
    Tile layout;
    std::vector<std::vector<CodedBlock>> blocks; // by component, as in the layout
};

} // namespace codecs::jpeg2000
