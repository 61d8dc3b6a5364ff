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

Bytes CodestreamWriter::mainHeader() const {
    Bytes bytes;
    ByteWriter out(bytes);
    out.u16(SOC);
    writeSiz(out, size);
    writeCod(out, headers.tile, headers.coding[0]);
    writeQcd(out, headers.quant[0]);
    for (std::size_t c = 1; c < headers.quant.size(); ++c)
        if (size.components[c].depth != size.components[0].depth)
            writeQcc(out, headers.quant[c], c, headers.quant.size());
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

void CodestreamWriter::writeTile(Bytes& bytes, int index, const std::vector<TilePart>& parts) const {
    ByteWriter out(bytes);
    int packedNumber = 0; // of the PPT segments
    for (std::size_t p = 0; p < parts.size(); ++p) {
        const std::size_t begin = out.size();
        out.u16(SOT);
        out.u16(10);
        out.u16(unsigned(index));
        out.u32(0); // its length, below
        out.u8(unsigned(p));
        out.u8(unsigned(parts.size()));
        if (options.packedHeaders == PackedHeaders::tile) writePacked(bytes, PPT, parts[p].headers, packedNumber);
        out.u16(SOD);
        out.bytes(parts[p].body);
        out.patch32(begin + 6, std::uint32_t(out.size() - begin));
    }
}

Bytes CodestreamWriter::write(const std::vector<EncodedTile>& tiles) const {
    Bytes bytes = mainHeader();
    std::vector<std::vector<TilePart>> parts;
    for (const EncodedTile& tile : tiles) parts.push_back(partsOf(tile));
    if (options.packedHeaders == PackedHeaders::main) {
        Bytes packed;
        ByteWriter out(packed);
        for (const auto& tile : parts)
            for (const TilePart& part : tile) {
                out.u32(std::uint32_t(part.headers.size()));
                out.bytes(part.headers);
            }
        int number = 0;
        writePacked(bytes, PPM, packed, number);
    }
    for (std::size_t t = 0; t < parts.size(); ++t) writeTile(bytes, int(t), parts[t]);
    ByteWriter(bytes).u16(EOC);
    return bytes;
}

} // namespace codecs::jpeg2000
