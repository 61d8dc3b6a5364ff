// jpeg.h - JPEG files in memory: pixels to bytes and back, and files to files.
//
// Pixels are interleaved, rows without gaps: 1 channel is grey, 3 are RGB, 4 are CMYK as the file stores them
// (files with an Adobe marker store 255 for no ink; invert the picture for ink amounts). Samples of 8 bits
// are bytes, others are 16-bit words.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace jpeg {

// A file that cannot be decoded, or a picture that cannot be encoded. what() is one line, with the byte
// offset where there is one.
struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

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
};

std::vector<std::uint8_t> encode(const std::uint8_t* pixels, int width, int height, int channels,
                                 const EncodeOptions& options = {});
// Samples of `precision` bits: 12, or 2 to 16 and any 1 to 4 channels in lossless mode.
std::vector<std::uint8_t> encode(const std::uint16_t* pixels, int width, int height, int channels, int precision,
                                 const EncodeOptions& options = {});

struct Picture {
    int width = 0, height = 0, channels = 0;
    int precision = 8;                // bits of a sample
    bool adobe = false;               // the file has an Adobe marker: its CMYK is inverted
    std::vector<std::uint8_t> pixels; // samples of 8 bits
    std::vector<std::uint16_t> wide;  // samples of another precision
    // What was wrong with a file that could be decoded in part, a line each; empty for a sound file. Places
    // that could not be decoded are mid-grey.
    std::vector<std::string> warnings;

    void shape(int width, int height, int channels, int precision);
};

// How chroma of a lower rate is brought to the rate of the picture: by repetition, or smoothly where the ratio is 2 to 1
// (8-bit files at full size).
enum class Upsampling { plain, fancy };

// 16-bit words of red, green and blue, 5 or 6 bits each, the first of the name in the low bits; bit 15 of 555 is 0.
enum class Packing { none, rgb565, bgr565, rgb555, bgr555 };

struct DecodeOptions {
    int scale = 1; // 1, 2, 4 or 8: the picture is decoded at 1/scale
    Upsampling upsampling = Upsampling::plain;
    bool fast = false; // with plain upsampling: colours of 8 bits are converted without rounding where that is faster
    Packing packing = Packing::none; // else the picture has 1 channel of packed words; not of CMYK, 12 bits, lossless
    std::size_t maxPixels = std::size_t(1) << 28;  // of the picture in the file; more are refused
    std::function<void(const Picture&)> afterScan; // hears of the picture as it is behind each scan
};

// Decodes into `picture`, whose memory is used again where it suffices.
void decode(const std::uint8_t* data, std::size_t size, const DecodeOptions& options, Picture& picture);
Picture decode(const std::uint8_t* data, std::size_t size, const DecodeOptions& options = {});

struct TranscodeOptions {
    bool progressive = false; // by the usual script; else sequential, in one scan
    std::string scans;        // the text of a scan script; empty: none
    int restart = -1;         // MCUs in a restart interval; -1: as it was
    std::size_t maxPixels = std::size_t(1) << 28;
};
struct Transcoded {
    std::vector<std::uint8_t> file;
    std::uint64_t before = 0, after = 0; // digests of the coefficients of the two files
    std::vector<std::string> warnings;   // of the file that was read
};
// Codes the coefficients of a file anew, with Huffman tables made for them. No coefficient changes.
Transcoded transcode(const std::uint8_t* data, std::size_t size, const TranscodeOptions& options = {});

// What the segments of a file say, in lines of text.
std::string describe(const std::uint8_t* data, std::size_t size);

} // namespace jpeg
