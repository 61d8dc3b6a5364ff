// The marker segments of a codestream, without decoding: the main header, the tile-parts with and without TLM segments,
// and the headers of each tile. What a header says of the coding is written and read again the same.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/codestream.h"
#include "codecs/jpeg2000/markers.h"
#include "fuzz/support/input.h"
#include "fuzz/support/mutator.h"

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    return fuzz::mutateJpeg2000(data, size, most, seed);
}

namespace {

namespace jpeg2000 = codecs::jpeg2000;
using fuzz::require;

void writeAndRead(const jpeg2000::ImageSize& size, const jpeg2000::HeaderSet& headers) {
    codecs::Bytes bytes;
    jpeg2000::ByteWriter out(bytes);
    const std::size_t count = size.components.size();
    jpeg2000::writeCod(out, headers.tile, headers.coding[0]);
    jpeg2000::writeQcd(out, headers.quant[0]);
    for (std::size_t c = 1; c < std::min<std::size_t>(count, 5); ++c) {
        jpeg2000::writeCoc(out, headers.coding[c], c, count);
        jpeg2000::writeQcc(out, headers.quant[c], c, count);
    }
    jpeg2000::HeaderSet again;
    again.coding.resize(count);
    again.quant.resize(count);
    again.roiShift.resize(count);
    jpeg2000::HeaderReader reader(again);
    for (jpeg2000::ByteReader in(bytes, "what was written"); in.left() > 0;) {
        const jpeg2000::Segment s = jpeg2000::readSegment(in);
        reader.take(s.marker, s.content);
    }
    require(reader.complete());
    for (std::size_t c = 0; c < std::min<std::size_t>(count, 5); ++c)
        require(again.coding[c] == headers.coding[c] && again.quant[c] == headers.quant[c]);
    require(again.tile.progression == headers.tile.progression && again.tile.layers == headers.tile.layers);
}

void checkTiles(jpeg2000::Codestream stream, const jpeg2000::Rect& window, codecs::ByteView file) {
    jpeg2000::findTileParts(stream, window);
    for (const auto& [index, tile] : stream.tiles) {
        require(index >= 0 && index < stream.size.tiles());
        for (const codecs::ByteView& body : tile.bodies)
            require(body.empty() ||
                    (body.data() >= file.data() && body.data() + body.size() <= file.data() + file.size()));
        try {
            const jpeg2000::HeaderSet headers = jpeg2000::tileHeaders(stream, tile);
            const jpeg2000::Rect r = jpeg2000::tileRect(stream.size, index);
            require(!r.empty());
            jpeg2000::layOutTile(stream.size, headers, index, 1 << 12);
        } catch (const codecs::Error&) {
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const codecs::ByteView file(data, size);
    try {
        const jpeg2000::Codestream stream = jpeg2000::readMainHeader(file);
        const jpeg2000::ImageSize& s = stream.size;
        require(s.x1 > s.x0 && s.y1 > s.y0 && !s.components.empty() && s.tiles() >= 1 &&
                s.tiles() <= jpeg2000::kMaxTiles);
        writeAndRead(s, stream.main);
        const jpeg2000::Rect all{s.x0, s.y0, s.x1, s.y1};
        checkTiles(stream, all, file);
        checkTiles(stream, jpeg2000::Rect{s.x0, s.y0, std::int64_t(s.x0) + 1, std::int64_t(s.y0) + 1}, file);
    } catch (const codecs::Error&) {
    }
    return 0;
}
