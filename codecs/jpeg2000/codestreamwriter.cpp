// codestreamwriter.cpp - the main header, tile-parts and packed packet headers (A.3 to A.7).
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/codestreamwriter.h"

#include "codecs/jpeg2000/markers.h"
#include "codecs/jpeg2000/packetwriter.h"

#include <algorithm>

namespace codecs::jpeg2000 {

namespace {

constexpr std::size_t kMostParts = 254;         // of a tile: TPsot and TNsot have a byte each
constexpr std::uint64_t kPsot = 6, kTnsot = 11; // in a tile-part (Table A.5)

// A marker segment ahead of a packet, with the packet's number (A.8.1).
void writeSop(Bytes& bytes, int packet) {
    ByteWriter out(bytes);
    out.u16(SOP);
    out.u16(4);
    out.u16(unsigned(packet & 0xFFFF));
}

// Packet headers as PPM or PPT segments, counted on from `number`.
void writePacked(Bytes& bytes, int marker, ByteView packed, int& number) {
    constexpr std::size_t most = 65000;
    ByteWriter out(bytes);
    for (; !packed.empty(); ++number) {
        // Zppm and Zppt have a byte each.
        need(number < 256, "too many packet headers to be kept apart");
        const ByteView part = packed.first(std::min(most, packed.size()));
        out.u16(unsigned(marker));
        out.u16(unsigned(part.size() + 3));
        out.u8(unsigned(number));
        out.bytes(part);
        packed = packed.subspan(part.size());
    }
}

// Where tile-parts are (A.7.1): numbers of tiles in two bytes, lengths in four.
template <class Lengths> void writeTlm(Bytes& bytes, const Lengths& lengths) {
    constexpr std::size_t most = 10900, entry = 6; // in a segment
    ByteWriter out(bytes);
    for (std::size_t at = 0; at < lengths.size(); at += most) {
        const std::size_t n = std::min(most, lengths.size() - at);
        out.u16(TLM);
        out.u16(unsigned(4 + entry * n));
        out.u8(unsigned(at / most));
        out.u8(0x60);
        for (std::size_t i = at; i < at + n; ++i) {
            out.u16(unsigned(lengths[i].tile));
            out.u32(lengths[i].bytes);
        }
    }
}

} // namespace

// QCD for the first component, and QCC for those that differ from it.
void CodestreamWriter::writeQuantization(ByteWriter& out, int guardBits) const {
    const auto with = [&](Quantization q) {
        q.guardBits = guardBits;
        return q;
    };
    writeQcd(out, with(headers.quant[0]));
    for (std::size_t c = 1; c < headers.quant.size(); ++c)
        if (headers.quant[c] != headers.quant[0]) writeQcc(out, with(headers.quant[c]), c, headers.quant.size());
}

// SIZ comes first, the others in any order (A.3); this one is usual.
Bytes CodestreamWriter::mainHeader() const {
    Bytes bytes;
    ByteWriter out(bytes);
    out.u16(SOC);
    writeSiz(out, size);
    writeCod(out, headers.tile, headers.coding[0]);
    for (std::size_t c = 1; c < headers.coding.size(); ++c)
        if (headers.coding[c] != headers.coding[0]) writeCoc(out, headers.coding[c], c, headers.coding.size());
    writeQuantization(out, headers.quant[0].guardBits);
    for (std::size_t c = 0; c < headers.roiShift.size(); ++c)
        if (headers.roiShift[c] > 0) writeRgn(out, headers.roiShift[c], c, headers.coding.size());
    if (!headers.changes.empty()) writePoc(out, headers.changes, headers.coding.size());
    return bytes;
}

// Calls use(packet, whether a tile-part begins with it) for all packets of a tile in their order. Tile-parts are cut
// where the resolution changes if that is asked for; the first one is open already.
template <class Use> void CodestreamWriter::forEachPacketOf(const Tile& tile, Use use) const {
    int resolution = -1;
    std::size_t parts = 1;
    forEachPacket(size, tile, headers, [&](const PacketId& id) {
        const bool changes = options.tilePartsByResolution && resolution >= 0 && id.resolution != resolution;
        const bool cut = changes && parts < kMostParts;
        parts += cut;
        resolution = id.resolution;
        use(id, cut);
        return true;
    });
}

// What stands ahead of a packet's body, in two kinds of bytes where headers are kept apart.
void CodestreamWriter::writeHead(const PacketId& id, PacketWriter& packets, int number, Bytes& ahead,
                                 Bytes& header) const {
    if (headers.tile.sop) writeSop(ahead, number);
    packets.writeHeader(id, header);
    if (headers.tile.eph) ByteWriter(header).u16(EPH);
}

std::vector<CodestreamWriter::TilePart> CodestreamWriter::partsOf(const EncodedTile& tile) const {
    std::vector<TilePart> parts(1);
    PacketWriter packets(tile);
    int number = 0;
    forEachPacketOf(tile.layout, [&](const PacketId& id, bool cut) {
        if (cut) parts.emplace_back();
        TilePart& part = parts.back();
        writeHead(id, packets, number++, part.body.bytes, part.headers);
        packets.writeBody(id, part.body);
    });
    return parts;
}

// How many tile-parts there will be.
std::size_t CodestreamWriter::countParts() const {
    const auto tiles = std::size_t(size.tiles());
    if (!options.tilePartsByResolution) return tiles;
    std::size_t parts = tiles;
    for (std::size_t t = 0; t < tiles; ++t)
        forEachPacketOf(layOutTile(size, headers, int(t), ~std::size_t(0) >> 1),
                        [&](const PacketId&, bool cut) { parts += cut; });
    return parts;
}

void CodestreamWriter::writeMainHeader(ByteView packedHeaders) {
    Bytes bytes = mainHeader();
    // One tile-part is found without.
    if (const std::size_t parts = options.tileLengths ? countParts() : 0; parts > 1) {
        hasTlm = true;
        tlmPosition = sink.position() + bytes.size();
        lengths.assign(parts, {}); // filled in at the end
        // What was left free in the header is filled in, now that all lengths are known.
        writeTlm(bytes, lengths);
        lengths.clear();
    }
    int number = 0;
    writePacked(bytes, PPM, packedHeaders, number);
    sink.write(bytes);
}

void CodestreamWriter::begin() { writeMainHeader({}); }

// The header of a tile-part (A.4.2), up to SOD. Its length is filled in at its end, and how many there are of the tile
// at the end of the last one.
void CodestreamWriter::openPart(const EncodedTile& tile, std::size_t part, ByteView packedHeaders) {
    partBegin = sink.position();
    Bytes head;
    ByteWriter out(head);
    out.u16(SOT);
    out.u16(10);
    out.u16(unsigned(tile.index));
    out.u32(0);
    out.u8(unsigned(part));
    out.u8(1);
    if (part == 0 && tile.guardBits != headers.quant[0].guardBits) writeQuantization(out, tile.guardBits);
    if (part == 0) packedNumber = 0; // PPT segments are counted on through the parts of a tile
    writePacked(head, PPT, packedHeaders, packedNumber);
    out.u16(SOD);
    sink.write(head);
}

void CodestreamWriter::closePart(const EncodedTile& tile) {
    const std::uint64_t length = sink.position() - partBegin;
    // Psot has four bytes.
    need(length <= 0xFFFFFFFF, "a tile-part of 4 GiB or more: smaller tiles are needed");
    lengths.push_back({tile.index, std::uint32_t(length)});
    Bytes bytes;
    ByteWriter(bytes).u32(std::uint32_t(length));
    sink.patch(partBegin + kPsot, bytes);
}

// A tile of a single part says so from the beginning.
void CodestreamWriter::tellParts(std::uint64_t begin, std::size_t parts) {
    const std::uint8_t number[] = {std::uint8_t(parts)};
    for (std::size_t p = lengths.size() - parts; parts > 1 && p < lengths.size(); ++p) {
        sink.patch(begin + kTnsot, number);
        begin += lengths[p].bytes;
    }
}

// Packet by packet, so that a tile's bytes are in memory once, in its blocks.
void CodestreamWriter::writeStraight(const EncodedTile& tile) {
    const std::uint64_t begin = sink.position();
    PacketWriter packets(tile);
    std::size_t parts = 1;
    int number = 0;
    Bytes head;
    openPart(tile, 0, {});
    forEachPacketOf(tile.layout, [&](const PacketId& id, bool cut) {
        if (cut) {
            closePart(tile);
            openPart(tile, parts++, {});
        }
        head.clear();
        writeHead(id, packets, number++, head, head);
        sink.write(head);
        packets.writeBody(id, sink);
    });
    closePart(tile);
    tellParts(begin, parts);
}

void CodestreamWriter::writeApart(const EncodedTile& tile, const std::vector<TilePart>& parts) {
    const std::uint64_t begin = sink.position();
    for (std::size_t p = 0; p < parts.size(); ++p) {
        openPart(tile, p, options.packedHeaders == PackedHeaders::tile ? parts[p].headers : ByteView());
        sink.write(parts[p].body.bytes);
        closePart(tile);
    }
    tellParts(begin, parts.size());
}

void CodestreamWriter::write(const EncodedTile& tile) {
    if (options.packedHeaders == PackedHeaders::none) return writeStraight(tile);
    writeApart(tile, partsOf(tile));
}

void CodestreamWriter::end() {
    Bytes bytes;
    ByteWriter(bytes).u16(EOC);
    sink.write(bytes);
    if (!hasTlm) return;
    bytes.clear();
    writeTlm(bytes, lengths);
    sink.patch(tlmPosition, bytes);
}

void CodestreamWriter::write(const std::vector<EncodedTile>& tiles) {
    std::vector<std::vector<TilePart>> parts;
    Bytes packed;
    ByteWriter out(packed);
    for (const EncodedTile& tile : tiles) {
        parts.push_back(partsOf(tile));
        // Nppm, then the headers of a tile-part (A.7.4).
        for (const TilePart& part : parts.back()) {
            out.u32(std::uint32_t(part.headers.size()));
            out.bytes(part.headers);
        }
    }
    writeMainHeader(packed);
    for (std::size_t t = 0; t < parts.size(); ++t) writeApart(tiles[t], parts[t]);
    end();
}

std::size_t headerBytes(const ImageSize& size, const HeaderSet& headers, const EncodeOptions& options) {
    MemorySink sink;
    CodestreamWriter(size, headers, options, sink).begin();
    constexpr std::size_t tilePart = 14, end = 2; // SOT with SOD, EOC
    return sink.bytes.size() + tilePart * std::size_t(size.tiles()) + end;
}

} // namespace codecs::jpeg2000
