// geometry.cpp - the layout of a tile, from the outside in: tile-components (B-12), resolutions (B-14), bands
// (B-15), precincts (B-16) and code blocks (B.7).
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/geometry.h"

#include <algorithm>

namespace codecs::jpeg2000 {

namespace {

// B-15.
Rect bandRect(const Rect& tc, Orientation o, int levels) {
    if (o == LL) return reducedRect(tc, levels);
    const std::int64_t half = std::int64_t(1) << (levels - 1);
    const std::int64_t dx = o == HL || o == HH ? half : 0, dy = o == LH || o == HH ? half : 0;
    return {ceilShift(tc.x0 - dx, levels), ceilShift(tc.y0 - dy, levels), ceilShift(tc.x1 - dx, levels),
            ceilShift(tc.y1 - dy, levels)};
}

// A resolution with its bands and the filters of its rows takes about as much memory as so many code blocks. A file of a
// few bytes could ask for half a million of them.
constexpr std::size_t kPartsOfResolution = 8;

// Lays out the resolutions of one component after the other, and counts what they are made of.
class Layout {
    const std::size_t maxParts;
    std::size_t parts = 0;

    void count(std::size_t n) {
        parts += n;
        if (n > maxParts || parts > maxParts)
            throw Error("the tile has too many resolutions, precincts and code blocks");
    }

    // The blocks of a resolution's band within a precinct's rectangle in band coordinates.
    BlockGrid grid(TileComponent& tc, const Rect& precinct, const Subband& band, int resolution, int index) {
        const int wLog = band.blockWidthLog, hLog = band.blockHeightLog;
        const Rect r{std::max(precinct.x0, band.rect.x0), std::max(precinct.y0, band.rect.y0),
                     std::min(precinct.x1, band.rect.x1), std::min(precinct.y1, band.rect.y1)};
        // A precinct may have no blocks in a band, and has packets all the same (B.6).
        if (r.empty()) return {};
        const std::int64_t left = r.x0 >> wLog, top = r.y0 >> hLog;
        const BlockGrid g{int(ceilShift(r.x1, wLog) - left), int(ceilShift(r.y1, hLog) - top), tc.blocks.size()};
        // Counted ahead of being made: the memory of a hostile file is refused first.
        count(std::size_t(g.across) * std::size_t(g.down));
        for (int j = 0; j < g.down; ++j)
            for (int i = 0; i < g.across; ++i) {
                const std::int64_t x0 = std::max((left + i) << wLog, r.x0), x1 = std::min((left + i + 1) << wLog, r.x1);
                const std::int64_t y0 = std::max((top + j) << hLog, r.y0), y1 = std::min((top + j + 1) << hLog, r.y1);
                tc.blocks.push_back({std::int32_t(x0), std::int32_t(y0), std::uint16_t(x1 - x0), std::uint16_t(y1 - y0),
                                     std::uint8_t(resolution), std::uint8_t(index)});
            }
        return g;
    }

    // The precincts of a resolution and their code blocks, row by row (B.6, B.7). They lie on a grid that begins at 0.
    void precincts(TileComponent& tc, Resolution& res, int r) {
        if (res.rect.empty()) return;
        const int pw = res.precinctWidthLog, ph = res.precinctHeightLog, halving = r > 0 ? 1 : 0;
        const std::int64_t left = res.rect.x0 >> pw, top = res.rect.y0 >> ph;
        const std::int64_t across = ceilShift(res.rect.x1, pw) - left, down = ceilShift(res.rect.y1, ph) - top;
        // Their product could wrap.
        if (std::size_t(across) > maxParts || std::size_t(down) > maxParts) count(maxParts + 1);
        count(std::size_t(across) * std::size_t(down));
        res.precinctsAcross = int(across);
        res.precinctsDown = int(down);
        res.precincts.resize(std::size_t(across * down));
        for (std::int64_t j = 0; j < down; ++j)
            for (std::int64_t i = 0; i < across; ++i) {
                const int w = pw - halving, h = ph - halving;
                const Rect inBand{(left + i) << w, (top + j) << h, (left + i + 1) << w, (top + j + 1) << h};
                Precinct& p = res.precincts[std::size_t(j * across + i)];
                for (std::size_t b = 0; b < res.bands.size(); ++b)
                    p.grids[b] = grid(tc, inBand, res.bands[b], r, int(b));
            }
    }

public:
    explicit Layout(std::size_t limit) : maxParts(limit) {}

    TileComponent component(const Rect& rect, const CodingStyle& style) {
        TileComponent tc{rect, {}, {}};
        count(kPartsOfResolution * (std::size_t(style.levels) + 1));
        if (rect.empty()) { // nothing to lay out, but the resolutions are there
            tc.resolutions.resize(std::size_t(style.levels) + 1);
            return tc;
        }
        for (int r = 0; r <= style.levels; ++r) {
            Resolution res;
            res.rect = reducedRect(rect, style.levels - r);
            res.precinctWidthLog = style.precincts[std::size_t(r)] & 15;
            res.precinctHeightLog = style.precincts[std::size_t(r)] >> 4;
            // nb of B-15: the lowest resolution is the LL band, the others add bands of one level up.
            const int levels = r == 0 ? style.levels : style.levels - r + 1;
            // A code block is no larger than the precinct's part of its band (B.7).
            const int halving = r > 0 ? 1 : 0;
            for (const Orientation o : r == 0 ? std::vector{LL} : std::vector{HL, LH, HH})
                res.bands.push_back({o, bandRect(rect, o, levels),
                                     std::min(style.blockWidthLog, res.precinctWidthLog - halving),
                                     std::min(style.blockHeightLog, res.precinctHeightLog - halving)});
            precincts(tc, res, r);
            tc.resolutions.push_back(std::move(res));
        }
        return tc;
    }
};

} // namespace

// B-7 to B-10.
Rect tileRect(const ImageSize& s, int index) {
    const std::int64_t p = index % s.tilesAcross(), q = index / s.tilesAcross();
    return {std::max<std::int64_t>(s.tileX + p * s.tileWidth, s.x0),
            std::max<std::int64_t>(s.tileY + q * s.tileHeight, s.y0),
            std::min<std::int64_t>(s.tileX + (p + 1) * s.tileWidth, s.x1),
            std::min<std::int64_t>(s.tileY + (q + 1) * s.tileHeight, s.y1)};
}

Rect windowOn(const ImageSize& s, const Window& w) {
    const std::int64_t width = s.x1 - s.x0, height = s.y1 - s.y0;
    if (w.x < 0 || w.y < 0 || w.width < 1 || w.height < 1 || w.x >= width || w.width > width - w.x || w.y >= height ||
        w.height > height - w.y)
        throw Error("a window that is not within the picture");
    return {s.x0 + w.x, s.y0 + w.y, s.x0 + w.x + w.width, s.y0 + w.y + w.height};
}

// B-12.
Rect componentRect(const Rect& g, const SizComponent& c) {
    return {ceilDiv(g.x0, c.dx), ceilDiv(g.y0, c.dy), ceilDiv(g.x1, c.dx), ceilDiv(g.y1, c.dy)};
}

Rect reducedRect(const Rect& r, int levels) {
    return {ceilShift(r.x0, levels), ceilShift(r.y0, levels), ceilShift(r.x1, levels), ceilShift(r.y1, levels)};
}

Tile layOutTile(const ImageSize& size, const HeaderSet& headers, int index, std::size_t maxParts) {
    Tile tile{tileRect(size, index), {}};
    Layout layout(maxParts);
    for (std::size_t c = 0; c < size.components.size(); ++c)
        tile.components.push_back(layout.component(componentRect(tile.rect, size.components[c]), headers.coding[c]));
    return tile;
}

} // namespace codecs::jpeg2000
