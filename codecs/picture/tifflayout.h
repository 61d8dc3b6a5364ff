// tifflayout.h - what the tags of a TIFF file say about its picture.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/tifffile.h"

namespace codecs {

// How the samples of a file become those of a picture.
enum class TiffColour : std::uint8_t {
    plain,    // they are it
    palette,  // they are places in a table of colours
    converted // libtiff makes RGB of 8 bits of them: YCbCr, CIE L*a*b*, LogLuv
};

struct TiffLayout {
    Shape shape; // of the picture that comes out
    TiffColour colour = TiffColour::plain;
    int bits = 8, channels = 1; // of a sample; of a pixel, in the file
    bool isFloat = false;
    bool inverted = false;      // 0 is white, or ink
    bool premultiplied = false; // colours are multiplied by alpha
    bool planar = false;        // each channel in strips or tiles of its own
    bool tiled = false;
    std::uint32_t pieceWidth = 0, pieceHeight = 0; // of a strip or tile, in pixels
    std::vector<std::string> warnings;

    int planes() const { return planar ? channels : 1; }
    std::size_t pieceRowBytes() const {
        return (std::size_t(pieceWidth) * std::size_t(channels / planes()) * std::size_t(bits) + 7) / 8;
    }
    // Samples between the file and the picture are of this largest value: 16 bits for all that is wider.
    int rawMaxval() const { return bits > 16 || isFloat ? 65535 : (1 << bits) - 1; }
};

// What cannot be read is refused by the name of its tag. `maxPixels` bounds what the tags may ask for.
TiffLayout layoutOf(const TiffFile& file, std::uint64_t maxPixels);

} // namespace codecs
