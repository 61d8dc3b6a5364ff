// jpeg2000.h - JPEG2000 Part 1 files in memory (ISO/IEC 15444-1): pictures to bytes and back.
//
// A picture is a list of components, each with its own size, depth and sign.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/rows.h"

#include <optional>
#include <string>
#include <vector>

namespace codecs::jpeg2000 {

struct Component {
    int dx = 1, dy = 1; // one sample for dx by dy points of the reference grid
    int depth = 8;      // bits a sample, 1 to 16
    bool isSigned = false;
    int width = 0, height = 0;
    std::vector<std::int32_t> samples; // row by row, without gaps

    int smallest() const { return isSigned ? -(1 << (depth - 1)) : 0; }
    int largest() const { return (1 << (isSigned ? depth - 1 : depth)) - 1; }
};

enum class ColourSpace { unknown, grey, sRgb, sYcc, cmyk };

struct PlanarPicture {
    std::uint32_t x0 = 0, y0 = 0, x1 = 0, y1 = 0; // the image area on the reference grid
    std::vector<Component> components;
    ColourSpace colour = ColourSpace::unknown;
    int alpha = -1; // the component that holds the opacity, or -1
    Metadata metadata = {};
};

// Orders of packets, in the codes of Table A.16.
enum class Progression { LRCP, RLCP, RPCL, PCRL, CPRL };

// Bits of the code-block style byte (Table A.19).
enum BlockStyle : unsigned {
    kStyleBypass = 1,
    kStyleReset = 2,
    kStyleTerminateAll = 4,
    kStyleCausal = 8,
    kStylePredictable = 16,
    kStyleSegmentation = 32
};

// One record of a POC marker segment: the packets within these bounds, in this order.
struct ProgressionChange {
    int resolutionBegin = 0, componentBegin = 0, layerEnd = 0, resolutionEnd = 0, componentEnd = 0;
    Progression order = Progression::LRCP;
};

// Where packet headers are: with their packets, or in the PPM and PPT segments of the headers.
enum class PackedHeaders { none, main, tile };

// A part of a picture, in pixels of its full size from its top left corner.
struct Window {
    std::int64_t x = 0, y = 0, width = 0, height = 0;
};

// What a component has of its own, in COC and QCC segments; the rest is as for all.
struct ComponentOptions {
    int component = 0;
    std::optional<bool> reversible = {};
    std::optional<int> levels = {}, blockWidth = {}, blockHeight = {};
};

struct EncodeOptions {
    bool reversible = true; // 5/3 and RCT; otherwise 9/7 and ICT
    int levels = 5;         // wavelet levels, 0 to 32
    int blockWidth = 64, blockHeight = 64;
    std::vector<std::pair<int, int>> precincts =
        {}; // widths and heights, highest resolution first; the last one goes on
    Progression progression = Progression::LRCP;
    unsigned style = 0;                          // an or of BlockStyle
    bool colourTransform = true;                 // of the first three components, where their shapes agree
    std::uint32_t tileWidth = 0, tileHeight = 0; // 0: one tile
    std::uint32_t tileX = 0, tileY = 0;          // origin of the grid of tiles
    // Of pictures of rows: their place on the reference grid, the sampling of the second and third component (of all
    // inks but the first), and whether samples are stored around 0. Planar pictures say so themselves.
    std::uint32_t x0 = 0, y0 = 0;
    int samplingX = 1, samplingY = 1;
    bool asSigned = false;
    bool sop = false, eph = false;
    bool tilePartsByResolution = false;          // begin a tile-part where the resolution changes (R-first orders)
    std::vector<ProgressionChange> changes = {}; // of the progression; together they hold every packet
    PackedHeaders packedHeaders = PackedHeaders::none;
    bool tileLengths = true;                // TLM segments in files of several tile-parts
    std::vector<ComponentOptions> own = {}; // of single components
    std::optional<Window> region = {};      // that comes ahead of all else in the bits of each code block (max shift)
    // What the layers hold, the smallest first: bits a pixel, dB, or how many times smaller than the samples they are.
    // Empty: one layer of everything. An infinite last rate or PSNR, and a ratio of 1, stand for everything.
    std::vector<double> rates = {}, psnrs = {}, ratios = {};
    double baseStep = 0; // quantiser step of 8-bit samples at a basis function of norm 1; 0: by what is asked
    bool jp2 = true;     // JP2 boxes around the codestream
    int threads = 0;     // 0: one a processor. The bytes do not depend on it
};

// An Error for options that no picture could be encoded with; encode() finds them too.
void check(const EncodeOptions& options);

// Gives warnings, a line each: of what travels beside the samples a bare codestream holds nothing.
std::vector<std::string> encode(RowSource& picture, ByteSink& file, const EncodeOptions& options = {});
Bytes encode(const Picture& picture, const EncodeOptions& options = {});
void encode(const PlanarPicture& picture, ByteSink& file, const EncodeOptions& options = {});
Bytes encode(const PlanarPicture& picture, const EncodeOptions& options = {});

struct DecodeOptions {
    int reduce = 0;                       // leave out this many of the highest resolutions
    int layers = 0;                       // decode this many; 0: all
    std::optional<Window> window = {};    // as it comes out of the whole; what it does not ask for is not decoded
    int component = -1;                   // one component of the codestream alone, palette left aside; -1: all
    std::uint64_t maxPixels = kMaxPixels; // of the window in full size; more are refused
    int threads = 0;
};

// Warnings say what was wrong with a file that could be decoded in part, a line each; a sound file has none.
struct DecodedPicture {
    Picture picture;
    std::vector<std::string> warnings;
};
struct DecodedPlanes {
    PlanarPicture picture;
    std::vector<std::string> warnings;
};
// The first four components side by side, repeated where they are subsampled; gives the warnings.
std::vector<std::string> decode(ByteSource& file, RowSink& picture, const DecodeOptions& options = {});
DecodedPicture decode(ByteView file, const DecodeOptions& options = {});
// All components as they are.
DecodedPlanes decodePlanes(ByteView file, const DecodeOptions& options = {});

// What the boxes and marker segments of a file say, in lines of text.
std::string describe(ByteView file);

} // namespace codecs::jpeg2000
