// codestreamwriter.h - headers and encoded tiles to the bytes of a codestream.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/numbers.h"
#include "codecs/jpeg2000/packetwriter.h"

namespace codecs::jpeg2000 {

class CodestreamWriter {
    const ImageSize& size;
    const HeaderSet& headers;
    const EncodeOptions& options;
    ByteSink& sink;

    // The packets of a part of a tile, and the packet headers where they are kept apart.
    struct TilePart {
        MemorySink body;
        Bytes headers;
    };
    // What TLM segments tell, and where they stand.
    struct Length {
        int tile;
        std::uint32_t bytes;
    };
    std::vector<Length> lengths;
    std::uint64_t tlmPosition = 0, partBegin = 0;
    int packedNumber = 0; // of PPT segments of the tile so far
    bool hasTlm = false;

    template <class Use> void forEachPacketOf(const Tile& tile, Use use) const;
    void writeHead(const PacketId& id, PacketWriter& packets, int number, Bytes& ahead, Bytes& header) const;
    std::vector<TilePart> partsOf(const EncodedTile& tile) const;
    std::size_t countParts() const;
    void writeMainHeader(ByteView packedHeaders);
    void writeQuantization(ByteWriter& out, int guardBits) const;
    Bytes mainHeader() const;
    void openPart(const EncodedTile& tile, std::size_t part, ByteView packedHeaders);
    void closePart(const EncodedTile& tile);
    void tellParts(std::uint64_t begin, std::size_t parts);
    void writeStraight(const EncodedTile& tile);
    void writeApart(const EncodedTile& tile, const std::vector<TilePart>& parts);

public:
    // The headers may change until begin() and stay from there on. The sink must let itself be patched.
    CodestreamWriter(const ImageSize& imageSize, const HeaderSet& set, const EncodeOptions& o, ByteSink& to)
        : size(imageSize), headers(set), options(o), sink(to) {}
    // From SOC to the first SOT.
    void begin();
    // A tile whose layers are settled.
    void write(const EncodedTile& tile);
    void end();
    // All at once, as packet headers in the main header ask for.
    void write(const std::vector<EncodedTile>& tiles);
};

// Bytes of all headers of a codestream of so many tiles with one tile-part each.
std::size_t headerBytes(const ImageSize& size, const HeaderSet& headers, const EncodeOptions& options);

} // namespace codecs::jpeg2000
