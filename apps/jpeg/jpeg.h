// jpeg.h - JPEG files in memory: pixels to bytes and back.
//
// Pixels are 8-bit, interleaved, rows without gaps: 1 channel is grey, 3 are RGB, 4 are CMYK as the file stores
// them (files with an Adobe marker store 255 for no ink; invert the picture for ink amounts).
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace jpeg {

// A file that cannot be decoded, or a picture that cannot be encoded. what() is one line, with the byte offset
// where there is one.
struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

enum class Sampling { s444, s422, s420 };

struct EncodeOptions {
    int quality = 75;                    // 1 to 100
    Sampling sampling = Sampling::s420;  // of the chroma; grey, RGB and CMYK are never subsampled
    bool optimize = false;               // Huffman tables made for the picture
    int restart = 0;                     // MCUs in a restart interval; 0: none
    bool rgb = false;                    // 3 channels: store RGB as it is
    bool ycck = false;                   // 4 channels: store YCCK
};

std::vector<std::uint8_t> encode(const std::uint8_t* pixels, int width, int height, int channels,
                                 const EncodeOptions& options = {});

struct DecodeOptions {
    int scale = 1;                                    // 1, 2, 4 or 8: the picture is decoded at 1/scale
    std::size_t maxPixels = std::size_t(1) << 28;     // of the picture in the file; more are refused
};

struct Picture {
    int width = 0, height = 0, channels = 0;
    bool adobe = false; // the file has an Adobe marker: its CMYK is inverted
    std::vector<std::uint8_t> pixels;
    // What was wrong with a file that could be decoded in part, a line each; empty for a sound file. Places that
    // could not be decoded are mid-grey.
    std::vector<std::string> warnings;
};

// Decodes into `picture`, whose memory is used again where it suffices.
void decode(const std::uint8_t* data, std::size_t size, const DecodeOptions& options, Picture& picture);
Picture decode(const std::uint8_t* data, std::size_t size, const DecodeOptions& options = {});

// What the segments of a file say, in lines of text.
std::string describe(const std::uint8_t* data, std::size_t size);

} // namespace jpeg
