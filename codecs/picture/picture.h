// image.h - a picture in memory, and PNG, PNM and TIFF files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

// A picture of interleaved samples. Each sample is held in 16 bits, whatever its depth, so that one code path
// serves all; rows are contiguous.
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

// A file that cannot be read or written; what() says which one and why, in one line.
struct ImageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// What readImage() and writeImage() take, for help and messages.
inline const std::string kPictureFile = "a PNG, PNM, PAM or TIFF file",
                         kPictureEndings = ".png, .tif, .pgm, .ppm, .pnm or .pam";

// Reads a PNG, PBM, PGM, PPM, PAM or TIFF file, told apart by its first bytes. Palettes of PNG are expanded; a
// tRNS chunk becomes an alpha channel; PNG samples of fewer than 8 bits are scaled to 8. `maxPixels` bounds what
// a header may ask for.
Image readImage(const std::string& path, std::size_t maxPixels = std::size_t(1) << 28);

// Writes, by the ending of the path, a .png, .tif or .tiff (maxval 255 or 65535; other depths are scaled up to the
// next of the two), or a .pgm, .ppm, .pnm or .pam with the picture's own maxval. CMYK goes into .tif and .pam
// files only.
void writeImage(const std::string& path, const Image& image);

// The picture with another largest sample.
Image scaled(Image image, int maxval);

// The picture as bytes: width x channels x height samples, scaled to 8 bits where it has another depth.
std::vector<std::uint8_t> to8bit(const Image& image);
Image from8bit(const std::uint8_t* samples, int width, int height, int channels);

// The picture without its alpha channel (1 or 3 channels, and CMYK, stay as they are).
Image withoutAlpha(const Image& image);

// The part of a picture that begins at (x, y); it must lie inside.
Image crop(const Image& image, int x, int y, int width, int height);

// How two pictures of one shape differ, over all of their samples.
struct Difference {
    double psnr;   // peak signal-to-noise ratio in dB; infinite when they are equal
    int max;       // the largest difference of two samples
    double within; // the share of samples that differ by `level` at the most
};
Difference compare(const Image& a, const Image& b, int level);
double psnr(const Image& a, const Image& b);

// A whole file as bytes, in and out.
std::vector<std::uint8_t> readBytes(const std::string& path);
void writeBytes(const std::string& path, const std::vector<std::uint8_t>& bytes);
