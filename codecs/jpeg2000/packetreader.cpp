// packetreader.cpp - packet headers (B.10) and bodies.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/packetreader.h"

namespace codecs::jpeg2000 {

namespace {

// A block of the most planes that the standard knows: 38 of them (Table A.18 allows 7 guard bits and exponents of 31).
constexpr int kMaxPassesInAll = 3 * 38 - 2;

// The number of coding passes in a packet (Table B.4).
int readPassCount(BitReader& bits) {
    if (!bits.bit()) return 1;
    if (!bits.bit()) return 2;
    if (const unsigned v = bits.bits(2); v < 3) return int(3 + v);
    if (const unsigned v = bits.bits(5); v < 31) return int(6 + v);
    return int(37 + bits.bits(7));
}

// SOP and EPH are marked as possible, yet may be missing.
void skipMarker(ByteView& s, int marker, std::size_t size) {
    if (s.size() >= size && s[0] == marker >> 8 && s[1] == (marker & 255)) s = s.subspan(size);
}

} // namespace

PacketReader::PacketReader(const Tile& layout, const HeaderSet& set, const PacketData& bytes, int maxLayers,
                           int reduceBy)
    : tile(layout), headers(set), data(bytes), layers(maxLayers), reduce(reduceBy) {
    for (const TileComponent& c : tile.components) {
        blocks.emplace_back(c.blocks.size());
        trees.emplace_back();
        for (const Resolution& r : c.resolutions) trees.back().emplace_back(r.precincts.size());
    }
}

// What a packet header says of one block (B.10.4 to B.10.7): whether it contributes, then what is new of it.
void PacketReader::readBlock(BitReader& bits, BlockStream& block, TagTree& inclusion, TagTree& zeroPlanes,
                             std::size_t leaf, int layer, unsigned style) {
    if (!(block.included ? bits.bit() : inclusion.below(leaf, layer + 1, bits))) return;
    // Bit planes without any bit are told once, with the first contribution (B.10.5).
    if (!block.included) {
        int n = 1;
        while (!zeroPlanes.below(leaf, n, bits))
            if (++n > 80) throw Error("a code block with too many zero planes");
        block.zeroPlanes = std::uint8_t(n - 1);
        block.included = true;
    }
    int passes = readPassCount(bits);
    if (block.passes + passes > kMaxPassesInAll) throw Error("a code block with too many passes");
    // Lblock grows by a bit for each 1 and stays so for the block (B.10.7.1).
    while (bits.bit())
        if (++block.lengthBits > 31) throw Error("a code block with too long a length");
    while (passes > 0) {
        // A segment goes on from packet to packet until it has all passes that its style allows.
        int room = block.codewords.empty() ? 0
                                           : segmentPasses(style, block.passes - block.codewords.back().passes) -
                                                 block.codewords.back().passes;
        if (room <= 0) {
            block.codewords.emplace_back();
            room = segmentPasses(style, block.passes);
        }
        const int n = std::min(room, passes), width = block.lengthBits + floorLog2(unsigned(n));
        if (width > 31) throw Error("a code block with too long a length");
        const int length = int(bits.bits(width));
        block.codewords.back().passes += n;
        block.passes = std::int16_t(block.passes + n);
        contributions.push_back({&block, block.codewords.size() - 1, n, length});
        passes -= n;
    }
}

// A header begins with a bit that says whether anything follows.
void PacketReader::readHeader(const PacketId& id) {
    const auto c = std::size_t(id.component), r = std::size_t(id.resolution);
    const Precinct& precinct = tile.components[c].resolutions[r].precincts[id.precinct];
    PrecinctTrees& tree = trees[c][r][id.precinct];
    // Trees are made as packets come to them: a window may never get to most.
    if (!tree.made) tree.make(precinct);
    ByteView& source = data.headersApart ? data.headers : data.body;
    BitReader bits(source);
    if (bits.bit())
        for (int b = 0; b < 3; ++b) {
            const BlockGrid& g = precinct.grids[b];
            for (std::size_t i = 0; i < std::size_t(g.across) * std::size_t(g.down); ++i)
                readBlock(bits, blocks[c][g.first + i], tree.inclusion[b], tree.zeroPlanes[b], i, id.layer,
                          headers.coding[c].style);
        }
    const std::size_t used = bits.finish();
    source = source.subspan(used);
    if (headers.tile.eph) skipMarker(source, EPH, 2);
}

// The bytes of a packet stand in the order of its header. What nobody wants is passed over.
void PacketReader::readBody(bool keep) {
    for (const Contribution& c : contributions) {
        BlockStream& block = *c.block;
        const auto length = std::size_t(c.length);
        if (length > data.body.size()) throw Error("the data of a packet ends early");
        if (keep) {
            block.codewords[c.codeword].kept += c.passes;
            block.codewords[c.codeword].length += c.length;
            // Pieces that follow each other in the file are one.
            if (!block.pieces.empty() && std::to_address(block.pieces.back().end()) == data.body.data())
                block.pieces.back() = {block.pieces.back().data(), block.pieces.back().size() + length};
            else if (length > 0)
                block.pieces.push_back(data.body.first(length));
        }
        data.body = data.body.subspan(length);
    }
}

bool PacketReader::read(const PacketId& id) {
    // Nsop is not looked at: packets stand in their order anyhow.
    if (headers.tile.sop) skipMarker(data.body, SOP, 6);
    if ((data.headersApart ? data.headers : data.body).empty()) return false;
    contributions.clear();
    readHeader(id);
    // A component may have fewer resolutions than others: each leaves out its own highest ones.
    const int resolutions = int(tile.components[std::size_t(id.component)].resolutions.size());
    readBody(id.layer < layers && id.resolution < resolutions - reduce);
    return true;
}

} // namespace codecs::jpeg2000
