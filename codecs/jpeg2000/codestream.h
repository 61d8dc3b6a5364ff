// codestream.h - a codestream taken apart: the main header, and for each tile its marker segments and packet data.
#pragma once

#include "codecs/jpeg2000/numbers.h"
#include "codecs/jpeg2000/parameters.h"

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
    std::map<int, TileData> tiles;
    std::vector<std::string> warnings;
};

// Reads the marker segments of a codestream. A broken main header throws; what is wrong behind it ends the reading
// with a warning. `maxPixels` bounds the samples of the picture.
Codestream readCodestream(ByteView file, std::size_t maxPixels);

// The main header with a tile's own segments on top.
HeaderSet tileHeaders(const Codestream& stream, const TileData& tile);

} // namespace codecs::jpeg2000
