// image.h - whole pictures of 16-bit samples in memory, for code that does not work on rows yet.
#pragma once

#include "codecs/picture/bytefile.h"
#include "codecs/picture/compare.h"
#include "codecs/picture/files.h"
#include "codecs/picture/raw.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// A picture of interleaved samples. Each sample is held in 16 bits, whatever its depth; rows are contiguous.
struct Image {
    int width = 0, height = 0;
    int channels = 1; // 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA or CMYK
    int maxval = 255; // the largest sample: 255 for 8 bits, 65535 for 16, 4095 for 12 and so on (1 for bitmaps)
    std::vector<std::uint16_t> samples;
    bool cmyk = false; // the 4 channels are amounts of ink

    std::size_t rowSamples() const { return std::size_t(width) * std::size_t(channels); }
    std::uint16_t* row(int y) { return samples.data() + rowSamples() * std::size_t(y); }
    const std::uint16_t* row(int y) const { return samples.data() + rowSamples() * std::size_t(y); }
};

using ImageError = codecs::Error;
using codecs::kPictureEndings;
using codecs::kPictureFile;
using codecs::RawFormat;

codecs::Picture pictureFrom(const Image& image);
Image imageFrom(const codecs::Picture& picture);

Image readImage(const std::string& path, std::size_t maxPixels = std::size_t(1) << 28);
void writeImage(const std::string& path, const Image& image);
Image readRaw(const std::string& path, int width, int height, RawFormat format);
void writeRaw(const std::string& path, const Image& image, RawFormat format);

// The picture with another largest sample.
Image scaled(const Image& image, int maxval);
// The picture as bytes: width x channels x height samples, scaled to 8 bits where it has another depth.
std::vector<std::uint8_t> to8bit(const Image& image);
Image from8bit(const std::uint8_t* samples, int width, int height, int channels);
// The picture without its alpha channel (1 or 3 channels, and CMYK, stay as they are).
Image withoutAlpha(const Image& image);
// The part of a picture that begins at (x, y); it must lie inside.
Image crop(const Image& image, int x, int y, int width, int height);
// The luma of an RGB picture.
Image toGrey(const Image& image);

inline codecs::Bytes readBytes(const std::string& path) { return codecs::readFile(path); }
inline void writeBytes(const std::string& path, const codecs::Bytes& bytes) { codecs::writeFile(path, bytes); }
