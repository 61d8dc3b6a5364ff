// packetwriter.h - puts the passes of code blocks into packets, layer by layer.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/bits.h"
#include "codecs/jpeg2000/codewords.h"
#include "codecs/jpeg2000/packets.h"
#include "codecs/jpeg2000/progression.h"

namespace codecs::jpeg2000 {

// The packets of one tile, from its first layer on. It keeps account of what has been written.
class PacketWriter {
    const EncodedTile& tile;
    struct Progress {
        int passes = 0, lengthBits = 3;
    };
    std::vector<std::vector<Progress>> progress;
    std::vector<std::vector<std::vector<PrecinctTrees>>> trees;

    void makeTrees(PrecinctTrees& tree, const Precinct& precinct, std::size_t component) const;
    std::size_t writeBlock(BitWriter& bits, const CodedBlock& block, Progress& done, int until) const;

public:
    explicit PacketWriter(const EncodedTile& encoded);
    // Writes a packet's header to `header` and tells how long its body is.
    std::size_t writeHeader(const PacketId& id, Bytes& header);
    // The body of a packet, as its block's layers say; needs no order.
    void writeBody(const PacketId& id, ByteSink& out) const;
};

} // namespace codecs::jpeg2000
