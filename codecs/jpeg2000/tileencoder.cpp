// tileencoder.cpp - the samples of a tile to coded blocks, with threads sharing the blocks.
#include "codecs/jpeg2000/tileencoder.h"

#include "codecs/jpeg2000/components.h"
#include "codecs/jpeg2000/parallel.h"
#include "codecs/jpeg2000/settings.h"

namespace codecs::jpeg2000 {

namespace {

// Norm of what one unit of a transformed component does to the three colours.
double colourNorm(bool reversible, std::size_t component) {
    static constexpr double rct[] = {1.7320508, 0.8291562, 0.8291562}, ict[] = {1.7320508, 1.8051, 1.5734};
    return reversible ? rct[component] : ict[component];
}

} // namespace

TileEncoder::TileEncoder(const PlanarPicture& from, const ImageSize& imageSize, const HeaderSet& set, int team)
    : picture(from), size(imageSize), headers(set), threads(team), blockEncoders(std::size_t(team)) {}

void TileEncoder::transform(const Tile& tile, std::size_t c, Plane& plane, int team) const {
    const CodingStyle& style = headers.coding[c];
    for (int r = style.levels; r > 0; --r)
        forwardWavelet(plane, tile.components[c].resolutions[std::size_t(r)].rect,
                       filterOf(style.reversible, size.components[c].depth), team);
}

std::vector<Plane> TileEncoder::planesOf(const Tile& tile) const {
    std::vector<Plane> planes;
    for (const TileComponent& tc : tile.components)
        planes.push_back(tc.rect.empty() ? Plane() : Plane(tc.rect.width(), tc.rect.height()));
    const bool reversible = headers.coding[0].reversible;
    parallelFor(planes.size(), threads, [&](std::size_t c, int) {
        const Component& from = picture.components[c];
        const Rect whole = componentRect({size.x0, size.y0, size.x1, size.y1}, size.components[c]);
        const Rect& r = tile.components[c].rect;
        if (!r.empty())
            toPlane(from, int(r.x0 - whole.x0), int(r.y0 - whole.y0), planes[c], planeFraction(reversible, from.depth));
    });
    if (headers.tile.colourTransform) forwardColour(planes, reversible, picture.components[0].depth);
    // The 9/7 filter shares a plane out among all threads; the 5/3 filter takes a thread for a plane.
    if (reversible)
        parallelFor(planes.size(), threads, [&](std::size_t c, int) { transform(tile, c, planes[c], 1); });
    else
        for (std::size_t c = 0; c < planes.size(); ++c) transform(tile, c, planes[c], threads);
    return planes;
}

CodedBlock TileEncoder::encodeBlock(const Tile& tile, std::size_t c, std::size_t b, Plane& plane, int thread) {
    const TileComponent& tc = tile.components[c];
    const Block& block = tc.blocks[b];
    const Orientation o = tc.resolutions[block.resolution].bands[block.band].orientation;
    const int depth = size.components[c].depth;
    const CodingStyle& style = headers.coding[c];
    const BandCoding coding = bandCoding(style, headers.quant[c], 0, depth, {block.resolution, block.band, o});
    auto& encoder = blockEncoders[std::size_t(thread)];
    if (!encoder) encoder = std::make_unique<BlockEncoder>(1 << style.blockWidthLog, 1 << style.blockHeightLog);
    CodedBlock coded = encoder->encode(plane, block, o, style.style, coding);
    const double step = style.reversible ? 1 : stepOf(headers.quant[c].step(block.resolution, block.band), depth, o);
    const double colour = headers.tile.colourTransform && c < 3 ? colourNorm(style.reversible, c) : 1;
    const double error = step * colour * normOf(style.reversible, style.levels, block.resolution, o);
    coded.weight = error * error;
    return coded;
}

EncodedTile TileEncoder::encode(int index) {
    EncodedTile out{layOutTile(size, headers, index, ~std::size_t(0) >> 1), {}};
    std::vector<Plane> planes = planesOf(out.layout);
    std::vector<std::pair<std::size_t, std::size_t>> jobs; // component, block
    for (std::size_t c = 0; c < planes.size(); ++c) {
        out.blocks.emplace_back(out.layout.components[c].blocks.size());
        for (std::size_t b = 0; b < out.blocks[c].size(); ++b) jobs.push_back({c, b});
    }
    parallelFor(jobs.size(), threads, [&](std::size_t i, int thread) {
        const auto [c, b] = jobs[i];
        out.blocks[c][b] = encodeBlock(out.layout, c, b, planes[c], thread);
    });
    return out;
}

} // namespace codecs::jpeg2000
