// jpeg.h - JPEG files (ITU-T T.81): rows of pixels into bytes and back, and files into other files.
//
// Pictures of 1 channel are grey, of 3 RGB, of 4 CMYK, where 0 is no ink; files with an Adobe marker hold the inverse,
// which is turned over on the way. Sequential files go by a row of units at a time, in memory that does not grow with
// the height; every other one keeps the coefficients of the whole picture, lossless encoding its samples.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytes.h"
#include "codecs/picture/orientation.h"
#include "codecs/picture/rows.h"

#include <functional>
#include <optional>

namespace codecs::jpeg {

using Warnings = std::vector<std::string>; // a line each

enum class Sampling { s444, s422, s420 };
struct Factors {
    int h, v; // 1 to 4
};

// The transform of 8-bit samples. Single precision rounds once, where it quantises. The integer one rounds
// coefficients to whole numbers ahead of that: a file is some percent smaller or larger and up to 0.2 dB worse.
enum class Dct { single, integer };

struct EncodeOptions {
    int quality = 75;                   // 1 to 100
    Sampling sampling = Sampling::s420; // of the chroma; grey, RGB and CMYK are never subsampled by it
    std::vector<Factors> factors;       // sampling factors of each component, instead; empty: as above
    bool optimize = false;              // Huffman tables made for the picture; other modes have them always
    Dct dct = Dct::single;              // the transform of 8-bit samples
    bool fast = false;                  // the integer transform, and 8-bit colours are converted without rounding
    int restart = 0;                    // MCUs in a restart interval; 0: none
    bool rgb = false;                   // 3 channels: store RGB as it is
    bool ycck = false;                  // 4 channels: store YCCK
    bool progressive = false;           // by the usual script
    std::string scans;                  // the text of a scan script; empty: none
    int lossless = 0;                   // 1 to 7: lossless mode with this predictor; 0: a DCT mode
    int pointTransform = 0;             // lossless: bits that are left out of the samples
    std::string tables;                 // the text of quantisation tables for quality 50; empty: the usual ones
};

// The largest sample says the precision: 255 or 4095, and in lossless mode of 2 to 16 bits, with any 1 to 4 channels. A
// picture with alpha is refused, as no JPEG file holds it. Says what of the metadata the file cannot hold.
Warnings encode(RowSource& picture, ByteSink& file, const EncodeOptions& options = {});
Bytes encode(const Picture& picture, const EncodeOptions& options = {});

// How chroma of a lower rate is brought to the rate of the picture: smoothly, where the ratio is 2 to 1, or by repetition.
enum class Upsampling { smooth, plain };

// 16-bit words of red, green and blue, 5 or 6 bits each, the first of the name in the low bits; bit 15 of 555 is 0.
enum class Packing { none, rgb565, bgr565, rgb555, bgr555 };

struct DecodeOptions {
    int scale = 1; // 1, 2, 4 or 8: the picture is decoded at 1/scale
    Upsampling upsampling = Upsampling::smooth;
    bool fast = false; // chroma is repeated, and 8-bit colours at full size are converted without rounding
    Packing packing = Packing::none; // else the picture has 1 channel of packed words; not of CMYK, 12 bits, lossless
    std::uint64_t maxPixels = kMaxPixels;          // of the picture in the file; more are refused
    std::function<void(const Picture&)> afterScan; // hears of the picture as it is behind each scan
};

// Says what was wrong with a file that could be decoded in part; nothing of a sound file. Places that could not be
// decoded are mid-grey.
Warnings decode(ByteSource& file, RowSink& picture, const DecodeOptions& options = {});

struct Decoded {
    Picture picture;
    Warnings warnings;
};
Decoded decode(ByteView file, const DecodeOptions& options = {});

// A part of the picture, after the turn. It begins at the unit in which (x, y) lies, and grows by what lies ahead of it.
struct Part {
    int x = 0, y = 0, width = 0, height = 0;
};

struct TranscodeOptions {
    bool progressive = false; // by the usual script; else sequential, in one scan
    std::string scans;        // the text of a scan script; empty: none
    int restart = -1;         // MCUs in a restart interval; -1: as it was
    Turn turn = Turn::none;   // rows and columns of blocks trade places, and signs of coefficients; none changes
    bool upright = false;     // the turn that the EXIF asks for, after which it asks for none
    // A side that comes to begin with a part of a unit cannot be turned: such parts are cut off, or it is an Error.
    bool trim = false;
    std::optional<Part> part;
    bool grey = false;  // the luma alone
    bool strip = false; // leave out APPn and COM segments but for those that tell of the colours
    std::uint64_t maxPixels = kMaxPixels;
};
struct Transcoded {
    Bytes file;
    std::uint64_t before = 0, after = 0; // digests of the coefficients that were to be written, and of those that were
    Warnings warnings;                   // of the file that was read
};
// Codes the coefficients of a file anew, with Huffman tables made for them. No coefficient changes its value.
Transcoded transcode(ByteSource& file, const TranscodeOptions& options = {});
Transcoded transcode(ByteView file, const TranscodeOptions& options = {});

// What the segments of a file say, in lines of text; the trouble in which it ends also apart.
std::string describe(ByteSource& file, Warnings* trouble = nullptr);
std::string describe(ByteView file, Warnings* trouble = nullptr);

} // namespace codecs::jpeg
