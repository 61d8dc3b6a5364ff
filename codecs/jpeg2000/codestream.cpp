// codestream.cpp - from SOC to EOC: the main header, then tile-part by tile-part (A.3, A.4).
#include "codecs/jpeg2000/codestream.h"

#include "codecs/jpeg2000/markers.h"

#include <algorithm>

namespace codecs::jpeg2000 {

namespace {

Segment readSegment(ByteReader& in) {
    const int marker = in.u16();
    if (marker < 0xFF00) throw Error("no marker where one is due, at byte " + std::to_string(in.position() - 2));
    if (marker == SOD || marker == EOC || (marker >= 0xFF30 && marker <= 0xFF3F)) return {marker, {}};
    const int length = in.u16();
    if (length < 2) throw Error("a marker segment with a length of " + std::to_string(length));
    return {marker, in.take(std::size_t(length) - 2)};
}

// The packet headers that PPM segments hold for the tile-parts, one after the other (A.7.4).
class PackedMain {
    Bytes joined;
    std::size_t pos = 0;

public:
    explicit PackedMain(const std::vector<Segment>& segments) {
        std::vector<std::pair<int, ByteView>> parts;
        for (const Segment& s : segments)
            if (s.marker == PPM && !s.content.empty()) parts.push_back({s.content[0], s.content.subspan(1)});
        std::stable_sort(parts.begin(), parts.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        for (const auto& p : parts) joined.insert(joined.end(), p.second.begin(), p.second.end());
    }
    bool used() const { return !joined.empty(); }
    Bytes next() {
        ByteReader in(ByteView(joined).subspan(pos), "PPM");
        const std::uint32_t n = in.u32();
        const ByteView part = in.take(n);
        pos += 4 + n;
        return {part.begin(), part.end()};
    }
};

// One tile-part from its SOT on.
void readTilePart(ByteReader& in, ByteView file, std::size_t begin, Segment sot, Codestream& stream,
                  PackedMain& packed) {
    ByteReader head(sot.content, "SOT");
    const int index = head.u16();
    const std::uint32_t length = head.u32();
    if (index >= stream.size.tiles())
        throw Error("a tile-part of tile " + std::to_string(index) + ", which is not there");
    TileData& tile = stream.tiles[index];
    for (;;) {
        const Segment s = readSegment(in);
        if (s.marker == SOD) break;
        if (s.marker == SOT || s.marker == EOC) throw Error("a tile-part without data");
        tile.segments.push_back(s);
    }
    // A length of 0 stands for all that is left.
    const std::size_t from = in.position();
    const std::size_t end = file.size();
    std::size_t to = length == 0 ? end : begin + length;
    if (length == 0 && end >= from + 2 && file[end - 2] == 0xFF && file[end - 1] == 0xD9) to -= 2;
    if (to < from) throw Error("a tile-part that is shorter than its header");
    const bool cut = to > end;
    to = std::min(to, end);
    tile.bodies.push_back(in.take(to - from));
    if (packed.used()) tile.packedHeaders.push_back(packed.next());
    if (cut) throw Error("the file ends within tile " + std::to_string(index));
}

} // namespace

Codestream readCodestream(ByteView file, std::size_t maxPixels) {
    Codestream stream;
    ByteReader in(file, "the file");
    if (file.size() < 2 || in.u16() != SOC) throw Error("not a JPEG2000 codestream");
    Segment s = readSegment(in);
    if (s.marker != SIZ) throw Error("no SIZ segment behind SOC");
    stream.size = readSiz(s.content, maxPixels);
    const std::size_t components = stream.size.components.size();
    stream.main.coding.resize(components);
    stream.main.quant.resize(components);
    stream.main.roiShift.resize(components);
    HeaderReader reader(stream.main);
    std::size_t begin;
    for (;;) {
        begin = in.position();
        s = readSegment(in);
        if (s.marker == SOT) break;
        if (s.marker == SOD || s.marker == EOC) throw Error("a main header without tiles");
        reader.take(s.marker, s.content);
        stream.mainSegments.push_back(s);
    }
    if (!reader.complete()) throw Error("a main header without COD or QCD");
    PackedMain packed(stream.mainSegments);
    try {
        for (;;) {
            if (s.marker == EOC) break;
            if (s.marker != SOT) throw Error("no tile-part where one is due, at byte " + std::to_string(begin));
            readTilePart(in, file, begin, s, stream, packed);
            if (in.left() == 0) throw Error("no EOC at the end");
            begin = in.position();
            s = readSegment(in);
        }
    } catch (const Error& e) {
        stream.warnings.push_back(e.what());
    }
    return stream;
}

HeaderSet tileHeaders(const Codestream& stream, const TileData& tile) {
    HeaderSet headers = stream.main;
    HeaderReader reader(headers);
    for (const Segment& s : tile.segments) reader.take(s.marker, s.content);
    return headers;
}

} // namespace codecs::jpeg2000
