// geometry.h - where tiles, tile-components, resolutions, bands, precincts and code blocks lie (annex B).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/parameters.h"

namespace codecs::jpeg2000 {

struct Rect {
    std::int64_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    int width() const { return int(x1 - x0); }
    int height() const { return int(y1 - y0); }
    bool empty() const { return x1 <= x0 || y1 <= y0; }
    bool operator==(const Rect&) const = default;
    std::size_t area() const { return empty() ? 0 : std::size_t(x1 - x0) * std::size_t(y1 - y0); }
};

constexpr std::int64_t ceilDiv(std::int64_t a, std::int64_t b) { return (a + b - 1) / b; }
constexpr std::int64_t ceilShift(std::int64_t a, int n) { return (a + (std::int64_t(1) << n) - 1) >> n; }

enum Orientation { LL, HL, LH, HH }; // in the order of packets and step sizes

struct Block {
    std::int32_t x0, y0; // in its band
    std::uint16_t width, height;
    std::uint8_t resolution, band; // band: index in its resolution
};

struct Subband {
    Orientation orientation;
    Rect rect;
    int blockWidthLog = 6, blockHeightLog = 6; // of the grid of blocks, which begins at 0
};

// The code blocks of one band in a precinct: `across` times `down` of them, row by row from blocks[first] on.
struct BlockGrid {
    int across = 0, down = 0;
    std::size_t first = 0;
};

struct Precinct {
    BlockGrid grids[3]; // by band
};

struct Resolution {
    Rect rect;
    int precinctWidthLog = 15, precinctHeightLog = 15;
    int precinctsAcross = 0, precinctsDown = 0;
    std::vector<Subband> bands; // LL alone, or HL, LH, HH
    std::vector<Precinct> precincts;
};

struct TileComponent {
    Rect rect;
    std::vector<Resolution> resolutions;
    std::vector<Block> blocks;
};

struct Tile {
    Rect rect;
    std::vector<TileComponent> components;
};

Rect tileRect(const ImageSize& size, int index);
// A window as a rectangle of the reference grid; one that is not within the picture is refused.
Rect windowOn(const ImageSize& size, const Window& window);
Rect componentRect(const Rect& onGrid, const SizComponent& c);
// The rectangle of a tile-component with `levels` wavelet levels taken off.
Rect reducedRect(const Rect& r, int levels);

// Lays out a tile. More than `maxParts` precincts and code blocks together are refused; a resolution counts as several.
Tile layOutTile(const ImageSize& size, const HeaderSet& headers, int index, std::size_t maxParts);

} // namespace codecs::jpeg2000
