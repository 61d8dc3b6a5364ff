// bmp.h - where the fields of a BMP file stand, for the reader and the writer. All are little-endian.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <cstddef>
#include <cstdint>

namespace codecs {

// Behind the file header of 14 bytes stands one of several headers, told by its size: 12 bytes of OS/2, or 40 and more
// of Windows, which begin alike.
enum BmpField : std::size_t {
    kBmpFileSize = 2,
    kBmpPixels = 10, // where the pixels begin
    kBmpHeaderSize = 14,
    kBmpWidth = 18,
    kBmpOldHeight = 20, // in 16 bits, of OS/2
    kBmpOldBits = 24,
    kBmpHeight = 22, // negative: the first row is the top one
    kBmpPlanes = 26,
    kBmpBits = 28, // of a pixel
    kBmpCompression = 30,
    kBmpImageSize = 34,
    kBmpXPerMetre = 38,
    kBmpYPerMetre = 42,
    kBmpColours = 46, // in the palette; 0: as many as the bits allow
    kBmpMasks = 54,   // of red, green, blue and, in headers of 56 bytes and more, alpha
    kBmpColourSpace = 70,
    kBmpProfileOffset = 126, // from the start of the header
    kBmpProfileSize = 130,
};
inline constexpr std::size_t kBmpFileHeader = 14, kBmpOldHeader = 12, kBmpInfoHeader = 40, kBmpV4Header = 108,
                             kBmpV5Header = 124;
enum BmpCompression : std::uint32_t {
    kBmpRgb = 0,
    kBmpRle8 = 1,
    kBmpRle4 = 2,
    kBmpBitfields = 3,
    kBmpAlphaBitfields = 6
};
inline constexpr std::uint32_t kBmpSrgb = 0x73524742, kBmpProfile = 0x4D424544; // "sRGB" and "MBED" as words

// Rows are filled up to a multiple of four bytes.
inline std::uint64_t bmpRowBytes(int width, int bits) {
    return (std::uint64_t(unsigned(width)) * unsigned(bits) + 31) / 32 * 4;
}

} // namespace codecs
