// decode.cpp - a codestream to a picture, tile by tile: packets, code blocks, wavelet, components.
#include "codecs/jpeg2000/blocks.h"
#include "codecs/jpeg2000/boxes.h"
#include "codecs/jpeg2000/codestream.h"
#include "codecs/jpeg2000/components.h"
#include "codecs/jpeg2000/parallel.h"

#include <algorithm>

namespace jpeg2000 {

namespace {

// The pieces as one; they are joined in `memory` where there are several.
Span join(const std::vector<Span>& pieces, std::vector<std::uint8_t>& memory) {
    if (pieces.size() == 1) return pieces[0];
    for (const Span& s : pieces) memory.insert(memory.end(), s.data, s.data + s.size);
    return {memory.data(), memory.size()};
}

// The packet headers that a tile keeps apart from its packets, in PPM or PPT segments (A.7.4, A.7.5).
bool joinPackedHeaders(const TileData& data, std::vector<std::uint8_t>& memory) {
    bool found = !data.packedHeaders.empty();
    for (const auto& part : data.packedHeaders) memory.insert(memory.end(), part.begin(), part.end());
    for (const Segment& s : data.segments)
        if (s.marker == PPT && s.content.size >= 1) {
            memory.insert(memory.end(), s.content.data + 1, s.content.data + s.content.size);
            found = true;
        }
    return found;
}

class Decoder {
    const Codestream& stream;
    const DecodeOptions& options;
    const int threads;
    Picture& picture;
    std::vector<BlockDecoder> blockDecoders;

    void readPackets(const Tile& tile, const HeaderSet& headers, PacketReader& reader, int index) {
        bool complete = true;
        try {
            forEachPacket(stream.size, tile, headers, [&](const PacketId& id) { return complete = reader.read(id); });
        } catch (const Error& e) {
            warn(index, e.what());
            return;
        }
        if (!complete) warn(index, "packets are missing");
    }

    void warn(int tile, const std::string& what) {
        if (picture.warnings.size() < 20) picture.warnings.push_back("tile " + std::to_string(tile) + ": " + what);
    }

    // How much a component is reduced: no more than it has levels.
    int reduction(const CodingStyle& style) const { return std::min(options.reduce, style.levels); }

    void decodeBlocks(const Tile& tile, const HeaderSet& headers, const PacketReader& reader,
                      std::vector<Plane>& planes, int index) {
        struct Job {
            std::size_t component, block;
        };
        std::vector<Job> jobs;
        for (std::size_t c = 0; c < tile.components.size(); ++c)
            for (std::size_t b = 0; b < tile.components[c].blocks.size(); ++b)
                if (!reader.blocks[c][b].codewords.empty() &&
                    tile.components[c].blocks[b].resolution <= headers.coding[c].levels - reduction(headers.coding[c]))
                    jobs.push_back({c, b});
        std::atomic<int> damaged{0};
        parallelFor(jobs.size(), threads, [&](std::size_t i, int thread) {
            const auto [c, b] = jobs[i];
            const TileComponent& tc = tile.components[c];
            const Block& block = tc.blocks[b];
            const Orientation o = tc.resolutions[block.resolution].bands[block.band].orientation;
            const BandCoding coding = bandCoding(headers.coding[c], headers.quant[c], headers.roiShift[c],
                                                 stream.size.components[c].depth, block.resolution, block.band, o);
            if (!blockDecoders[std::size_t(thread)].decode(reader.blocks[c][b], block, o, headers.coding[c].style,
                                                           coding, planes[c]))
                ++damaged;
        });
        if (damaged > 0) warn(index, std::to_string(damaged) + " damaged code blocks");
    }

    bool coloured(const HeaderSet& headers, const std::vector<Plane>& planes) {
        if (!headers.tile.colourTransform || planes.size() < 3) return false;
        for (std::size_t c = 1; c < 3; ++c)
            if (planes[c].width != planes[0].width || planes[c].height != planes[0].height ||
                headers.coding[c].reversible != headers.coding[0].reversible ||
                stream.size.components[c].depth != stream.size.components[0].depth)
                return false;
        return true;
    }

    void inverse(const Tile& tile, const HeaderSet& headers, std::size_t c, Plane& plane, int team) {
        const CodingStyle& style = headers.coding[c];
        for (int r = 1; r <= style.levels - reduction(style); ++r)
            inverseWavelet(plane, tile.components[c].resolutions[std::size_t(r)].rect,
                           filterOf(style.reversible, stream.size.components[c].depth), team);
    }

    // A tile that is reduced less than the picture, for want of levels, keeps every so many samples.
    void place(const Tile& tile, const HeaderSet& headers, std::size_t c, Plane& plane) {
        const CodingStyle& style = headers.coding[c];
        const SizComponent& k = stream.size.components[c];
        const Rect whole = reducedRect(componentRect(imageRect(stream.size), k), options.reduce);
        const Rect at = reducedRect(tile.components[c].rect, options.reduce);
        if (at.empty()) return;
        if (const int more = options.reduce - reduction(style); more > 0) {
            const Rect have = reducedRect(tile.components[c].rect, style.levels);
            Plane thin(at.width(), at.height());
            for (int y = 0; y < thin.height; ++y)
                for (int x = 0; x < thin.width; ++x)
                    *thin.at(x, y) =
                        *plane.at(int(((at.x0 + x) << more) - have.x0), int(((at.y0 + y) << more) - have.y0));
            plane = std::move(thin);
        }
        fromPlane(plane, picture.components[c], int(at.x0 - whole.x0), int(at.y0 - whole.y0),
                  planeFraction(style.reversible, k.depth));
    }

public:
    static Rect imageRect(const ImageSize& s) { return {s.x0, s.y0, s.x1, s.y1}; }

    Decoder(const Codestream& s, const DecodeOptions& o, Picture& p)
        : stream(s), options(o), threads(threadCount(o.threads)), picture(p), blockDecoders(std::size_t(threads)) {}

    void decodeTile(int index, const TileData& data) {
        const HeaderSet headers = tileHeaders(stream, data);
        std::size_t samples = 0;
        const Rect area = tileRect(stream.size, index);
        for (const SizComponent& c : stream.size.components) samples += componentRect(area, c).area();
        const Tile tile = layOutTile(stream.size, headers, index, samples / 4 + 65536);

        std::vector<std::uint8_t> bodyMemory, headerMemory;
        const Span body = join(data.bodies, bodyMemory);
        const bool packed = joinPackedHeaders(data, headerMemory);
        PacketReader reader(tile, headers, body, {headerMemory.data(), headerMemory.size()}, packed,
                            options.layers > 0 ? options.layers : maxLayers, options.reduce);
        readPackets(tile, headers, reader, index);

        std::vector<Plane> planes;
        for (std::size_t c = 0; c < tile.components.size(); ++c) {
            const Rect r = reducedRect(tile.components[c].rect, reduction(headers.coding[c]));
            planes.push_back(r.empty() ? Plane() : Plane(r.width(), r.height()));
        }
        decodeBlocks(tile, headers, reader, planes, index);
        // The 9/7 filter shares a plane out among all threads; the 5/3 filter takes a thread for a plane.
        for (std::size_t c = 0; c < planes.size(); ++c)
            if (!headers.coding[c].reversible) inverse(tile, headers, c, planes[c], threads);
        parallelFor(planes.size(), threads, [&](std::size_t c, int) {
            if (headers.coding[c].reversible) inverse(tile, headers, c, planes[c], 1);
        });
        if (coloured(headers, planes))
            inverseColour(planes, headers.coding[0].reversible, stream.size.components[0].depth);
        else if (headers.tile.colourTransform)
            warn(index, "a component transform of components that differ is left out");
        parallelFor(planes.size(), threads, [&](std::size_t c, int) { place(tile, headers, c, planes[c]); });
    }
};

Picture decodeCodestream(Span file, const DecodeOptions& options) {
    Codestream stream = readCodestream(file, options.maxPixels);
    Picture picture;
    picture.warnings = std::move(stream.warnings);
    picture.x0 = stream.size.x0;
    picture.y0 = stream.size.y0;
    picture.x1 = stream.size.x1;
    picture.y1 = stream.size.y1;
    for (const SizComponent& k : stream.size.components) {
        Component c{k.dx, k.dy, k.depth, k.isSigned, 0, 0, {}};
        const Rect r = reducedRect(componentRect(Decoder::imageRect(stream.size), k), options.reduce);
        if (!r.empty()) {
            c.width = r.width();
            c.height = r.height();
        }
        // What no tile fills is mid-grey.
        c.samples.assign(std::size_t(c.width) * std::size_t(c.height), k.isSigned ? 0 : 1 << (k.depth - 1));
        picture.components.push_back(std::move(c));
    }
    Decoder decoder(stream, options, picture);
    int missing = stream.size.tiles();
    for (const auto& [index, data] : stream.tiles) {
        try {
            decoder.decodeTile(index, data);
            --missing;
        } catch (const Error& e) {
            picture.warnings.push_back("tile " + std::to_string(index) + ": " + e.what());
        }
    }
    if (missing == stream.size.tiles()) throw Error("no tile can be decoded");
    if (missing > 0) picture.warnings.push_back(std::to_string(missing) + " tiles are missing");
    return picture;
}

} // namespace

Picture decode(const std::uint8_t* data, std::size_t size, const DecodeOptions& options) {
    if (options.reduce < 0 || options.reduce > maxLevels || options.layers < 0)
        throw Error("no such resolution or layer");
    const Boxes boxes = readBoxes({data, size});
    Picture picture = decodeCodestream(boxes.codestream, options);
    applyBoxes(boxes, picture);
    return picture;
}

} // namespace jpeg2000
