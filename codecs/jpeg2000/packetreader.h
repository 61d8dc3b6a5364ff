// packetreader.h - takes the packets of a tile apart into the codeword segments of its code blocks.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/bits.h"
#include "codecs/jpeg2000/codewords.h"
#include "codecs/jpeg2000/packets.h"
#include "codecs/jpeg2000/progression.h"

namespace codecs::jpeg2000 {

// The packets of a tile, one behind the other.
struct PacketData {
    ByteView body;
    ByteView headers; // packet headers that are kept apart from the body
    bool headersApart = false;
};

class PacketReader {
    const Tile& tile;
    const HeaderSet& headers;
    PacketData data;
    const int layers, reduce;
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

    // Layers from `maxLayers` on and the `reduceBy` highest resolutions are passed over.
    PacketReader(const Tile& layout, const HeaderSet& set, const PacketData& bytes, int maxLayers, int reduceBy);
    // Reads the next packet; false at the end of the data.
    bool read(const PacketId& id);
};

} // namespace codecs::jpeg2000
