// packetwriter.cpp - packet headers (B.10) and bodies, the other way round from packetreader.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/packetwriter.h"

#include <algorithm>
#include <bit>

namespace codecs::jpeg2000 {

namespace {

// The number of coding passes in a packet (Table B.4).
void writePassCount(BitWriter& bits, int n) {
    if (n == 1)
        bits.bits(0, 1);
    else if (n == 2)
        bits.bits(2, 2);
    else if (n <= 5)
        bits.bits(unsigned(3 << 2 | (n - 3)), 4);
    else if (n <= 36)
        bits.bits(unsigned(15 << 5 | (n - 6)), 9);
    else
        bits.bits(unsigned(511 << 7 | (n - 37)), 16);
}

// Bytes of a block up to the end of so many passes.
std::uint32_t rateOf(const CodedBlock& b, int passes) {
    return passes == 0 ? 0 : b.passes[std::size_t(passes) - 1].rate;
}

// Calls use(passes, bytes) for each codeword segment that has passes in [from, until).
template <class Use> void forEachPart(const CodedBlock& b, int from, int until, Use use) {
    for (int begin = from; begin < until;) {
        int end = begin + 1;
        while (end < until && !b.passes[std::size_t(end) - 1].ends) ++end;
        use(end - begin, rateOf(b, end) - rateOf(b, begin));
        begin = end;
    }
}

int passesBefore(const CodedBlock& b, int layer) { return layer == 0 ? 0 : b.layerPasses[std::size_t(layer) - 1]; }

// Calls use(band, leaf of its tag trees, block) for the blocks of a precinct, in the order of packets.
template <class Use> void forEachBlock(const Precinct& p, Use use) {
    for (std::size_t band = 0; band < 3; ++band)
        for (std::size_t i = 0; i < std::size_t(p.grids[band].across) * std::size_t(p.grids[band].down); ++i)
            use(band, i, p.grids[band].first + i);
}

} // namespace

// Tag trees are made with the first packet of their precinct.
PacketWriter::PacketWriter(const EncodedTile& encoded) : tile(encoded) {
    for (const TileComponent& c : tile.layout.components) {
        progress.emplace_back(c.blocks.size());
        trees.emplace_back();
        for (const Resolution& r : c.resolutions) trees.back().emplace_back(r.precincts.size());
    }
}

// The numbers of all leaves must be known before the first bit is written: the layer that a block comes with first,
// and how many of its planes are zero.
void PacketWriter::makeTrees(PrecinctTrees& tree, const Precinct& precinct, std::size_t component) const {
    tree.make(precinct);
    forEachBlock(precinct, [&](std::size_t band, std::size_t leaf, std::size_t index) {
        const CodedBlock& b = tile.blocks[component][index];
        // Blocks without passes stay beyond every layer.
        const auto first = std::find_if(b.layerPasses.begin(), b.layerPasses.end(), [](int n) { return n > 0; });
        if (first != b.layerPasses.end()) tree.inclusion[band].set(leaf, int(first - b.layerPasses.begin()));
        tree.zeroPlanes[band].set(leaf, b.zeroPlanes);
    });
}

// How many passes, and how long their segments are (B.10.6, B.10.7). The field for a length grows with the logarithm
// of the passes; where that is not enough, ones make it wider for good.
std::size_t PacketWriter::writeBlock(BitWriter& bits, const CodedBlock& block, Progress& done, int until) const {
    writePassCount(bits, until - done.passes);
    int wider = 0;
    forEachPart(block, done.passes, until, [&](int passes, std::uint32_t bytes) {
        wider = std::max(wider, int(std::bit_width(bytes)) - done.lengthBits - floorLog2(unsigned(passes)));
    });
    // Lblock never shrinks (B.10.7.1).
    done.lengthBits += wider;
    while (wider-- > 0) bits.bit(true);
    bits.bit(false);
    forEachPart(block, done.passes, until, [&](int passes, std::uint32_t bytes) {
        bits.bits(bytes, done.lengthBits + floorLog2(unsigned(passes)));
    });
    const std::size_t size = rateOf(block, until) - rateOf(block, done.passes);
    done.passes = until;
    return size;
}

std::size_t PacketWriter::writeHeader(const PacketId& id, Bytes& out) {
    const auto c = std::size_t(id.component), r = std::size_t(id.resolution), layer = std::size_t(id.layer);
    const Precinct& precinct = tile.layout.components[c].resolutions[r].precincts[id.precinct];
    PrecinctTrees& tree = trees[c][r][id.precinct];
    if (!tree.made) makeTrees(tree, precinct, c);
    // A packet without anything is a single zero.
    bool empty = true;
    forEachBlock(precinct, [&](std::size_t, std::size_t, std::size_t i) {
        empty = empty && tile.blocks[c][i].layerPasses[layer] == progress[c][i].passes;
    });
    BitWriter bits(out);
    bits.bit(!empty);
    std::size_t body = 0;
    if (!empty)
        forEachBlock(precinct, [&](std::size_t band, std::size_t leaf, std::size_t i) {
            const CodedBlock& block = tile.blocks[c][i];
            Progress& done = progress[c][i];
            const int until = block.layerPasses[layer];
            if (done.passes > 0)
                bits.bit(until > done.passes);
            else
                // Up to its first packet the tag tree tells of a block, afterwards a bit.
                tree.inclusion[band].tell(leaf, id.layer + 1, bits);
            if (until == done.passes) return;
            if (done.passes == 0) tree.zeroPlanes[band].tell(leaf, block.zeroPlanes + 1, bits);
            body += writeBlock(bits, block, done, until);
        });
    bits.finish();
    return body;
}

void PacketWriter::writeBody(const PacketId& id, ByteSink& out) const {
    const auto c = std::size_t(id.component);
    forEachBlock(tile.layout.components[c].resolutions[std::size_t(id.resolution)].precincts[id.precinct],
                 [&](std::size_t, std::size_t, std::size_t i) {
                     const CodedBlock& b = tile.blocks[c][i];
                     const std::size_t from = rateOf(b, passesBefore(b, id.layer));
                     const std::size_t to = rateOf(b, b.layerPasses[std::size_t(id.layer)]);
                     if (to > from) out.write(ByteView(b.bytes).subspan(from, to - from));
                 });
}

} // namespace codecs::jpeg2000
