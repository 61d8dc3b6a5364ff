// packetreader.h - takes the packets of a tile apart into the codeword segments of its code blocks.
#pragma once

#include "codecs/jpeg2000/bits.h"
#include "codecs/jpeg2000/packets.h"
#include "codecs/jpeg2000/progression.h"

namespace jpeg2000 {

// What the packets read so far hold of a code block.
struct BlockStream {
    struct Codeword {
        int passes = 0;           // that packet headers have announced
        int kept = 0, length = 0; // passes and bytes that are there and wanted
    };
    std::vector<Codeword> codewords;
    std::vector<Span> pieces; // their bytes
    std::int16_t passes = 0;
    std::uint8_t zeroPlanes = 0, lengthBits = 3;
    bool included = false;
};

class PacketReader {
    const Tile& tile;
    const HeaderSet& headers;
    Span body, packed;
    const bool hasPacked;
    const int maxLayers, reduce;
    std::vector<std::vector<std::vector<PrecinctTrees>>> trees; // by component, resolution, precinct
    struct Contribution {
        BlockStream* block;
        std::size_t codeword;
        int passes, length;
    };
    std::vector<Contribution> contributions;

    void readBlock(BitReader& bits, BlockStream& block, TagTree& inclusion, TagTree& zeroPlanes, std::size_t leaf,
                   int layer, unsigned style);
    void readHeader(const PacketId& id);
    void readBody(bool keep);

public:
    std::vector<std::vector<BlockStream>> blocks; // by component, as in the layout

    // With packed packet headers `body` holds the rest. Layers from maxLayers on and the `reduce` highest
    // resolutions are passed over.
    PacketReader(const Tile& layout, const HeaderSet& set, Span data, Span packedHeaders, bool headersArePacked,
                 int layers, int reduceBy);
    // Reads the next packet; false at the end of the data.
    bool read(const PacketId& id);
};

} // namespace jpeg2000
