// Packet headers and bodies (ISO/IEC 15444-1, B.9 to B.12) of tiles of any shape: the first bytes say the shape, the rest are the packets.
// Whatever comes, each packet is visited once, and the pieces of code blocks lie within the bytes.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/packetreader.h"
#include "codecs/jpeg2000/settings.h"
#include "fuzz/support/input.h"

#include <set>
#include <tuple>

namespace {

namespace jpeg2000 = codecs::jpeg2000;
using fuzz::require;

jpeg2000::EncodeOptions optionsOf(fuzz::Input& in) {
    jpeg2000::EncodeOptions o;
    o.levels = in.below(6);
    o.blockWidth = 4 << in.below(4);
    o.blockHeight = 4 << in.below(4);
    o.progression = jpeg2000::Progression(in.below(5));
    o.style = in.byte() & 63;
    o.colourTransform = false;
    o.sop = in.flag();
    o.eph = in.flag();
    for (int i = in.below(3); i > 0; --i) {
        const int width = in.below(6), height = in.below(6);
        o.precincts.emplace_back(8 << width, 8 << height);
    }
    return o;
}

void checkBlocks(const jpeg2000::PacketReader& reader, codecs::ByteView from) {
    for (const auto& component : reader.blocks)
        for (const jpeg2000::BlockStream& block : component) {
            std::size_t told = 0, there = 0;
            for (const auto& word : block.codewords) {
                require(word.kept >= 0 && word.kept <= word.passes && word.length >= 0);
                told += std::size_t(word.length);
            }
            for (const codecs::ByteView& piece : block.pieces) {
                require(piece.data() >= from.data() && piece.data() + piece.size() <= from.data() + from.size());
                there += piece.size();
            }
            require(told == there);
        }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input in(data, size);
    const jpeg2000::EncodeOptions options = optionsOf(in);
    jpeg2000::Rect area{in.below(16), in.below(16), 0, 0};
    area.x1 = area.x0 + 1 + in.below(200);
    area.y1 = area.y0 + 1 + in.below(200);
    std::vector<jpeg2000::SizComponent> components(std::size_t(1 + in.below(4)));
    for (jpeg2000::SizComponent& c : components) c.dx = 1 + in.below(3), c.dy = 1 + in.below(3);
    const int reduce = in.below(3), most = 1 + in.below(4);
    const std::size_t apart = in.byte() * 4u;
    const bool headersApart = in.flag();
    try {
        const jpeg2000::ImageSize picture = jpeg2000::sizeOf(area, components, options);
        jpeg2000::HeaderSet headers = jpeg2000::headersOf(picture, options);
        headers.tile.layers = 1 + in.below(5);
        const jpeg2000::Tile tile = jpeg2000::layOutTile(picture, headers, 0, 1 << 14);
        const codecs::ByteView packed = headersApart ? in.take(apart) : codecs::ByteView();
        const codecs::ByteView body = in.rest();
        jpeg2000::PacketReader reader(tile, headers, {body, packed, headersApart}, most, reduce);
        std::set<std::tuple<int, int, std::size_t, int>> visited;
        try {
            jpeg2000::forEachPacket(picture, tile, headers, [&](const jpeg2000::PacketId& id) {
                require(visited.emplace(id.component, id.resolution, id.precinct, id.layer).second);
                return reader.read(id);
            });
        } catch (const codecs::Error&) {
        }
        checkBlocks(reader, body);
    } catch (const codecs::Error&) {
    }
    return 0;
}
