// tiff.h - TIFF files of PackBits strips: the container by libtiff's raw strip calls, the rows by libzmxjpx.
//
// Grey, grey and alpha, RGB and RGBA, of 8 or 16 bits a sample, and bitmaps of 1 bit.
//
// Split rows. PackBits finds few runs in 16-bit samples, for their low bytes are mostly noise. With `split16` each row is
// stored as two packed rows, the high bytes of its samples and then the low bytes. No other program knows that, and
// so that none takes it for PackBits the file claims the private compression scheme kSplitPackBits.
#pragma once

#include "codecs/picture/image.h"

#include <cstddef>
#include <string>

// Not tiff: that is libtiff's name for a file.
namespace tif {

// The values of the Compression tag that are read and written.
inline constexpr int kPackBits = 32773;
inline constexpr int kSplitPackBits = 64816; // in the range that TIFF 6.0 leaves to private schemes

// A file that cannot be read or written; what() says where as well.
using Error = ImageError;

struct EncodeOptions {
    int rowsPerStrip = 0; // 0: strips of about 8 KiB, as TIFF 6.0 advises
    bool split16 = false; // 16-bit samples only
};
void write(const std::string& path, const Image& image, const EncodeOptions& options = {});

Image read(const std::string& path, std::size_t maxPixels = std::size_t(1) << 28);

} // namespace tif
