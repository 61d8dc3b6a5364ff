// tileparts.cpp - tile-part by tile-part to EOC (A.4.2), or straight to those that TLM segments point at (A.7.1).
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/codestream.h"
#include "codecs/jpeg2000/region.h"

#include <algorithm>
#include <optional>

namespace codecs::jpeg2000 {

namespace {

constexpr std::size_t kSotBytes = 12;

// The contents of marker segments that are counted in their first byte, in their order, without that byte.
std::vector<ByteView> inOrder(const std::vector<Segment>& segments, int marker) {
    std::vector<std::pair<int, ByteView>> parts;
    for (const Segment& s : segments)
        if (s.marker == marker && !s.content.empty()) parts.push_back({s.content[0], s.content.subspan(1)});
    std::stable_sort(parts.begin(), parts.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<ByteView> contents;
    for (const auto& p : parts) contents.push_back(p.second);
    return contents;
}

// The packet headers that PPM segments hold for the tile-parts, one after the other (A.7.4).
class PackedMain {
    Bytes joined;
    std::size_t pos = 0;

public:
    explicit PackedMain(const std::vector<Segment>& segments) {
        for (const ByteView& s : inOrder(segments, PPM)) joined.insert(joined.end(), s.begin(), s.end());
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

// Finds the tile-parts of the wanted tiles in one of two ways.
class TilePartReader {
    Codestream& stream;
    const Rect& window;
    PackedMain packed;

    bool wanted(int tile) const { return !intersection(tileRect(stream.size, tile), window).empty(); }

    // Where a tile-part ends that begins at `begin`; `from` is behind its SOT. A length of 0 stands for all that is
    // left.
    std::size_t endOf(std::size_t begin, std::uint32_t length) const {
        if (length > 0) return begin + length;
        const ByteView& f = stream.file;
        const bool eoc = f.size() >= begin + kSotBytes + 2 && f[f.size() - 2] == 0xFF && f[f.size() - 1] == 0xD9;
        return f.size() - (eoc ? 2 : 0);
    }
    static void readHeader(ByteReader& in, TileData& tile) {
        for (;;) {
            const Segment s = readSegment(in);
            if (s.marker == SOD) return;
            if (s.marker == SOT || s.marker == EOC) throw Error("a tile-part without data");
            tile.segments.push_back(s);
        }
    }

    // One tile-part, of which the reader is behind SOT.
    void readPart(ByteReader& in, std::size_t begin, const Segment& sot) {
        ByteReader head(sot.content, "SOT");
        const int index = head.u16();
        const std::uint32_t length = head.u32();
        if (index >= stream.size.tiles())
            throw Error("a tile-part of tile " + std::to_string(index) + ", which is not there");
        const std::size_t end = endOf(begin, length), to = std::min(end, stream.file.size());
        const bool reading = wanted(index);
        if (reading) {
            TileData& tile = stream.tiles[index];
            readHeader(in, tile);
            if (end < in.position()) throw Error("a tile-part that is shorter than its header");
            tile.bodies.push_back(in.take(to - in.position()));
            if (packed.used()) tile.packedHeaders.push_back(packed.next());
        } else {
            if (end < in.position()) throw Error("a tile-part that is shorter than its header");
            in.take(to - in.position());
            // Its packet headers are passed over with it.
            if (packed.used()) packed.next();
        }
        if (end > to) throw Error("the file ends within tile " + std::to_string(index));
    }

    struct Place {
        int tile;
        std::size_t begin;
        std::uint32_t length;
    };
    // Where TLM segments say that tile-parts are; nothing where they are broken.
    std::vector<Place> told() const {
        std::vector<Place> places;
        std::size_t begin = stream.firstPart;
        for (const ByteView& content : inOrder(stream.mainSegments, TLM)) {
            ByteReader in(content, "TLM");
            // Stlm: how wide the numbers of tiles and the lengths are (Table A.34).
            const int sizes = in.u8(), tileBytes = sizes >> 4 & 3, lengthBytes = sizes & 0x40 ? 4 : 2;
            if (tileBytes == 3) return {};
            while (in.left() >= std::size_t(tileBytes + lengthBytes)) {
                // Without numbers the tiles follow each other, in one part each.
                const int tile = tileBytes == 0 ? int(places.size()) : int(in.number(tileBytes));
                const std::uint32_t length = in.number(lengthBytes);
                if (tile >= stream.size.tiles() || length < kSotBytes || length > stream.file.size() - begin) return {};
                places.push_back({tile, begin, length});
                begin += length;
            }
        }
        // They are all there only if EOC follows them.
        const ByteView rest = stream.file.subspan(begin);
        if (rest.size() < 2 || rest[0] != 0xFF || rest[1] != 0xD9) return {};
        return places;
    }
    // Whether there is such a tile-part.
    bool holds(const Place& p) const {
        ByteReader in(stream.file.subspan(p.begin, p.length), "SOT");
        const int marker = in.u16();
        in.u16();
        const int tile = in.u16();
        return marker == SOT && tile == p.tile && in.u32() == p.length;
    }

public:
    TilePartReader(Codestream& s, const Rect& w) : stream(s), window(w), packed(s.mainSegments) {}

    // By TLM; tells whether it was to be relied on.
    bool jump() {
        if (packed.used()) return false; // its headers stand in the order of all tile-parts
        const std::vector<Place> places = told();
        if (places.empty()) return false;
        std::vector<bool> found(std::size_t(stream.size.tiles()));
        for (const Place& p : places) {
            if (!wanted(p.tile)) continue;
            if (!holds(p)) return false;
            found[std::size_t(p.tile)] = true;
        }
        for (int t = 0; t < stream.size.tiles(); ++t)
            if (wanted(t) && !found[std::size_t(t)]) return false;
        for (const Place& p : places) {
            if (!wanted(p.tile)) continue;
            ByteReader in(stream.file.first(p.begin + p.length), "a tile-part");
            in.take(p.begin);
            readPart(in, p.begin, readSegment(in));
        }
        return true;
    }
    void walk() {
        ByteReader in(stream.file, "the file");
        in.take(stream.firstPart);
        for (;;) {
            const std::size_t begin = in.position();
            const Segment s = readSegment(in);
            if (s.marker == EOC) return;
            if (s.marker != SOT) throw Error("no tile-part where one is due, at byte " + std::to_string(begin));
            readPart(in, begin, s);
            if (in.left() == 0) throw Error("no EOC at the end");
        }
    }
};

} // namespace

void findTileParts(Codestream& stream, const Rect& window) {
    const Rect all{stream.size.x0, stream.size.y0, stream.size.x1, stream.size.y1};
    TilePartReader reader(stream, window);
    try {
        if (window == all || !reader.jump()) reader.walk();
    } catch (const Error& e) {
        stream.warnings.push_back(e.what());
    }
}

} // namespace codecs::jpeg2000
