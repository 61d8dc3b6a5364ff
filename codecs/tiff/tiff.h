// tiff.h - TIFF files of PackBits strips and tiles: the container by libtiff, the rows by libzmxjpx.
//
// What is read: every layout and kind of samples that picture/tiffread.h knows. What is written: strips of grey, grey and
// alpha, RGB, RGBA and CMYK, of 8 or 16 bits a sample, and bitmaps of 1 bit.
//
// Split rows. PackBits finds few runs in 16-bit samples, for their low bytes are mostly noise. With `split16` each row is
// stored as two packed rows, the high bytes of its samples and then the low bytes. No other program knows that, and
// so that none takes it for PackBits the file claims the private compression scheme kSplitPackBits.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/convert.h"

namespace codecs::tiff {

// The values of the Compression tag that are read and written.
inline constexpr int kPackBits = 32773;
inline constexpr int kSplitPackBits = 64816; // in the range that TIFF 6.0 leaves to private schemes

struct EncodeOptions {
    int rowsPerStrip = 0; // 0: strips of about 8 KiB, as TIFF 6.0 advises
    bool split16 = false; // 16-bit samples only
};
// Depths that a file does not have are scaled up to the next. Gives warnings, a line each.
std::vector<std::string> encode(RowSource& rows, ByteSink& file, const EncodeOptions& options = {});

// The rows of a file, unpacked as they pass by.
Rows open(std::unique_ptr<ByteSource> file, std::uint64_t maxPixels = kMaxPixels);

void decode(ByteSource& file, RowSink& rows, std::uint64_t maxPixels = kMaxPixels);

} // namespace codecs::tiff
