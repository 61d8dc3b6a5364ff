// tiledecoder.cpp - the packets of a tile to samples, with threads sharing blocks, then planes.
#include "codecs/jpeg2000/tiledecoder.h"

#include "codecs/jpeg2000/components.h"
#include "codecs/jpeg2000/parallel.h"

#include <algorithm>

namespace codecs::jpeg2000 {

namespace {

Rect imageRect(const ImageSize& s) { return {s.x0, s.y0, s.x1, s.y1}; }

// The pieces as one; they are joined in `memory` where there are several.
ByteView join(const std::vector<ByteView>& pieces, Bytes& memory) {
    if (pieces.size() == 1) return pieces[0];
    for (const ByteView& s : pieces) memory.insert(memory.end(), s.begin(), s.end());
    return memory;
}

// The packet headers that a tile keeps apart from its packets, in PPM or PPT segments (A.7.4, A.7.5).
bool joinPackedHeaders(const TileData& data, Bytes& memory) {
    bool found = !data.packedHeaders.empty();
    for (const auto& part : data.packedHeaders) memory.insert(memory.end(), part.begin(), part.end());
    for (const Segment& s : data.segments)
        if (s.marker == PPT && !s.content.empty()) {
            memory.insert(memory.end(), s.content.begin() + 1, s.content.end());
            found = true;
        }
    return found;
}

// No tile has more precincts and code blocks than this: a quarter of its samples, and some for tiny ones.
std::size_t partsLimit(const ImageSize& size, int index) {
    std::size_t samples = 0;
    for (const SizComponent& c : size.components) samples += componentRect(tileRect(size, index), c).area();
    return samples / 4 + 65536;
}

} // namespace

PlanarPicture emptyPicture(const ImageSize& size, int reduce) {
    PlanarPicture picture;
    picture.x0 = size.x0;
    picture.y0 = size.y0;
    picture.x1 = size.x1;
    picture.y1 = size.y1;
    for (const SizComponent& k : size.components) {
        Component c{k.dx, k.dy, k.depth, k.isSigned, 0, 0, {}};
        const Rect r = reducedRect(componentRect(imageRect(size), k), reduce);
        if (!r.empty()) {
            c.width = r.width();
            c.height = r.height();
        }
        picture.components.push_back(std::move(c));
    }
    return picture;
}

struct TileDecoder::Work {
    int index;
    HeaderSet headers;
    Tile tile;
    std::vector<Plane> planes;
};

TileDecoder::TileDecoder(const Codestream& from, const DecodeOptions& o, PlanarPicture& to)
    : stream(from), options(o), threads(threadCount(o.threads)), picture(to), blockDecoders(std::size_t(threads)) {}

void TileDecoder::warn(const Work& work, const std::string& what) {
    if (picture.warnings.size() < 20) picture.warnings.push_back("tile " + std::to_string(work.index) + ": " + what);
}

// How much a component is reduced: no more than it has levels.
int TileDecoder::reduction(const CodingStyle& style) const { return std::min(options.reduce, style.levels); }

void TileDecoder::readPackets(const Work& work, PacketReader& reader) {
    bool complete = true;
    try {
        forEachPacket(stream.size, work.tile, work.headers,
                      [&](const PacketId& id) { return complete = reader.read(id); });
    } catch (const Error& e) {
        warn(work, e.what());
        return;
    }
    if (!complete) warn(work, "packets are missing");
}

void TileDecoder::decodeBlocks(Work& work, const PacketReader& reader) {
    std::vector<std::pair<std::size_t, std::size_t>> jobs; // component, block
    for (std::size_t c = 0; c < work.tile.components.size(); ++c) {
        const CodingStyle& style = work.headers.coding[c];
        const std::vector<Block>& blocks = work.tile.components[c].blocks;
        for (std::size_t b = 0; b < blocks.size(); ++b)
            if (!reader.blocks[c][b].codewords.empty() && blocks[b].resolution <= style.levels - reduction(style))
                jobs.push_back({c, b});
    }
    std::atomic<int> damaged{0};
    parallelFor(jobs.size(), threads, [&](std::size_t i, int thread) {
        const auto [c, b] = jobs[i];
        const TileComponent& tc = work.tile.components[c];
        const Block& block = tc.blocks[b];
        const Orientation o = tc.resolutions[block.resolution].bands[block.band].orientation;
        const CodingStyle& style = work.headers.coding[c];
        const BandCoding coding = bandCoding(style, work.headers.quant[c], work.headers.roiShift[c],
                                             stream.size.components[c].depth, {block.resolution, block.band, o});
        BlockDecoder& decoder = blockDecoders[std::size_t(thread)];
        if (!decoder.decode(reader.blocks[c][b], block, o, style.style, coding, work.planes[c])) ++damaged;
    });
    if (damaged > 0) warn(work, std::to_string(damaged) + " damaged code blocks");
}

void TileDecoder::inverseWavelets(Work& work) {
    const auto inverse = [&](std::size_t c, int team) {
        const CodingStyle& style = work.headers.coding[c];
        for (int r = 1; r <= style.levels - reduction(style); ++r)
            inverseWavelet(work.planes[c], work.tile.components[c].resolutions[std::size_t(r)].rect,
                           filterOf(style.reversible, stream.size.components[c].depth), team);
    };
    // The 9/7 filter shares a plane out among all threads; the 5/3 filter takes a thread for a plane.
    for (std::size_t c = 0; c < work.planes.size(); ++c)
        if (!work.headers.coding[c].reversible) inverse(c, threads);
    parallelFor(work.planes.size(), threads, [&](std::size_t c, int) {
        if (work.headers.coding[c].reversible) inverse(c, 1);
    });
}

void TileDecoder::inverseColours(Work& work) {
    if (!work.headers.tile.colourTransform) return;
    const auto alike = [&](std::size_t c) {
        const Plane &a = work.planes[c], &b = work.planes[0];
        return a.width == b.width && a.height == b.height &&
               work.headers.coding[c].reversible == work.headers.coding[0].reversible &&
               stream.size.components[c].depth == stream.size.components[0].depth;
    };
    if (work.planes.size() >= 3 && alike(1) && alike(2))
        inverseColour(work.planes, work.headers.coding[0].reversible, stream.size.components[0].depth);
    else
        warn(work, "a component transform of components that differ is left out");
}

// A tile that is reduced less than the picture, for want of levels, keeps every so many samples.
void TileDecoder::place(Work& work, std::size_t c) {
    const CodingStyle& style = work.headers.coding[c];
    const SizComponent& k = stream.size.components[c];
    const Rect& rect = work.tile.components[c].rect;
    const Rect whole = reducedRect(componentRect(imageRect(stream.size), k), options.reduce);
    const Rect at = reducedRect(rect, options.reduce);
    if (at.empty()) return;
    Plane& plane = work.planes[c];
    if (const int more = options.reduce - reduction(style); more > 0) {
        const Rect have = reducedRect(rect, style.levels);
        Plane thin(at.width(), at.height());
        for (int y = 0; y < thin.height; ++y)
            for (int x = 0; x < thin.width; ++x)
                *thin.at(x, y) = *plane.at(int(((at.x0 + x) << more) - have.x0), int(((at.y0 + y) << more) - have.y0));
        plane = std::move(thin);
    }
    fromPlane(plane, picture.components[c], int(at.x0 - whole.x0), int(at.y0 - whole.y0),
              planeFraction(style.reversible, k.depth));
}

void TileDecoder::decode(int index, const TileData& data) {
    Work work{index, tileHeaders(stream, data), {}, {}};
    work.tile = layOutTile(stream.size, work.headers, index, partsLimit(stream.size, index));
    Bytes bodyMemory, headerMemory;
    const bool apart = joinPackedHeaders(data, headerMemory);
    PacketReader reader(work.tile, work.headers, {join(data.bodies, bodyMemory), headerMemory, apart},
                        options.layers > 0 ? options.layers : kMaxLayers, options.reduce);
    readPackets(work, reader);
    for (std::size_t c = 0; c < work.tile.components.size(); ++c) {
        const Rect r = reducedRect(work.tile.components[c].rect, reduction(work.headers.coding[c]));
        work.planes.push_back(r.empty() ? Plane() : Plane(r.width(), r.height()));
    }
    decodeBlocks(work, reader);
    inverseWavelets(work);
    inverseColours(work);
    parallelFor(work.planes.size(), threads, [&](std::size_t c, int) { place(work, c); });
}

} // namespace codecs::jpeg2000
