// codestream.h - a codestream taken apart: the main header, and for each tile its marker segments and packet data.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/geometry.h"
#include "codecs/jpeg2000/numbers.h"

#include <map>

namespace codecs::jpeg2000 {

struct Segment {
    int marker;
    ByteView content; // behind the length
};

// What the tile-parts of one tile hold. Its headers are read when the tile is decoded, so that a file of many tiles
// takes no memory for all of them at once.
struct TileData {
    std::vector<Segment> segments;
    std::vector<ByteView> bodies;
    std::vector<Bytes> packedHeaders; // packet headers from PPM, in order
};

struct Codestream {
    ImageSize size;
    HeaderSet main;
    std::vector<Segment> mainSegments;
    ByteView file;
    std::size_t firstPart = 0; // where the first tile-part begins
    std::map<int, TileData> tiles;
    std::vector<std::string> warnings;
};

// A marker segment at the reader's place; those without a length have no content.
Segment readSegment(ByteReader& in);

// Reads from SOC to the first SOT. A broken main header throws.
Codestream readMainHeader(ByteView file);

// Finds the tile-parts of the tiles that `window`, on the reference grid, touches. Where TLM segments tell where they
// are, the others are not even looked at. What is wrong ends the reading with a warning.
void findTileParts(Codestream& stream, const Rect& window);

// The main header with a tile's own segments on top.
HeaderSet tileHeaders(const Codestream& stream, const TileData& tile);

} // namespace codecs::jpeg2000
