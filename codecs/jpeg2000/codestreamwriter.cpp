// codestreamwriter.cpp - the main header, tile-parts and packed packet headers (A.3 to A.7).
#include "codecs/jpeg2000/codestreamwriter.h"

#include "codecs/jpeg2000/markers.h"
#include "codecs/jpeg2000/packetwriter.h"

#include <algorithm>

namespace codecs::jpeg2000 {

namespace {

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
        need(number < 256, "too many packet headers to be kept apart");
        const ByteView part = packed.first(std::min(most, packed.size()));
        out.u16(unsigned(marker));
        out.u16(unsigned(part.size() + 3));
        out.u8(unsigned(number));
        out.bytes(part);
        packed = packed.subspan(part.size());
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
        if (headers.quant[c].steps != headers.quant[0].steps)
            writeQcc(out, with(headers.quant[c]), c, headers.quant.size());
}

Bytes CodestreamWriter::mainHeader() const {
    Bytes bytes;
    ByteWriter out(bytes);
    out.u16(SOC);
    writeSiz(out, size);
    writeCod(out, headers.tile, headers.coding[0]);
    writeQuantization(out, headers.quant[0].guardBits);
    if (!headers.changes.empty()) writePoc(out, headers.changes, headers.coding.size());
    return bytes;
}

std::vector<CodestreamWriter::TilePart> CodestreamWriter::partsOf(const EncodedTile& tile) const {
    std::vector<TilePart> parts(1);
    PacketWriter writer(tile);
    int resolution = -1, packets = 0;
    forEachPacket(size, tile.layout, headers, [&](const PacketId& id) {
        const bool split = options.tilePartsByResolution && resolution >= 0 && id.resolution != resolution;
        if (split && parts.size() < 254) parts.emplace_back();
        resolution = id.resolution;
        TilePart& part = parts.back();
        Bytes& header = options.packedHeaders == PackedHeaders::none ? part.body : part.headers;
        if (headers.tile.sop) writeSop(part.body, packets++);
        writer.writeHeader(id, header);
        if (headers.tile.eph) ByteWriter(header).u16(EPH);
        writer.writeBody(id, part.body);
        return true;
    });
    return parts;
}

void CodestreamWriter::begin() { sink.write(mainHeader()); }

void CodestreamWriter::write(const EncodedTile& tile, const std::vector<TilePart>& parts) {
    int packedNumber = 0; // of the PPT segments
    for (std::size_t p = 0; p < parts.size(); ++p) {
        Bytes head;
        ByteWriter out(head);
        out.u16(SOT);
        out.u16(10);
        out.u16(unsigned(tile.index));
        out.u32(0); // its length, below
        out.u8(unsigned(p));
        out.u8(unsigned(parts.size()));
        if (p == 0 && tile.guardBits != headers.quant[0].guardBits) writeQuantization(out, tile.guardBits);
        if (options.packedHeaders == PackedHeaders::tile) writePacked(head, PPT, parts[p].headers, packedNumber);
        out.u16(SOD);
        const std::size_t length = head.size() + parts[p].body.size();
        need(length <= 0xFFFFFFFF, "a tile-part of 4 GiB or more: smaller tiles are needed");
        out.patch32(6, std::uint32_t(length));
        sink.write(head);
        sink.write(parts[p].body);
    }
}

void CodestreamWriter::end() {
    Bytes bytes;
    ByteWriter(bytes).u16(EOC);
    sink.write(bytes);
}

void CodestreamWriter::write(const std::vector<EncodedTile>& tiles) {
    std::vector<std::vector<TilePart>> parts;
    Bytes packed;
    ByteWriter out(packed);
    for (const EncodedTile& tile : tiles) {
        parts.push_back(partsOf(tile));
        for (const TilePart& part : parts.back()) {
            out.u32(std::uint32_t(part.headers.size()));
            out.bytes(part.headers);
        }
    }
    Bytes main = mainHeader();
    int number = 0;
    writePacked(main, PPM, packed, number);
    sink.write(main);
    for (std::size_t t = 0; t < parts.size(); ++t) write(tiles[t], parts[t]);
    end();
}

std::size_t headerBytes(const ImageSize& size, const HeaderSet& headers, const EncodeOptions& options) {
    MemorySink sink;
    CodestreamWriter(size, headers, options, sink).begin();
    constexpr std::size_t tilePart = 14, end = 2; // SOT with SOD, EOC
    return sink.bytes.size() + tilePart * std::size_t(size.tiles()) + end;
}

} // namespace codecs::jpeg2000
