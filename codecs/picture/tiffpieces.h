// tiffpieces.h - the strips and tiles of a TIFF file, decoded a few rows at a time.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/tifflayout.h"

#include <memory>

namespace codecs {

// Bytes of a file through a window that jumps where it is wanted.
class ByteWindow {
public:
    explicit ByteWindow(ByteSource& source) : bytes(source) {}
    // `n` bytes from `at` on, fewer only where the file ends. One byte behind them can be read. They hold until the next call.
    ByteView view(std::uint64_t at, std::size_t n);

private:
    ByteSource& bytes;
    Samples buffer;
    std::uint64_t start = 0;
    std::size_t filled = 0;
};

// What decodes pieces.
class TiffPieces {
public:
    virtual ~TiffPieces() = default;
    // Rows `first` to `first` + `rows` of a piece of `plane`, as they stand packed in it: words of this machine's byte
    // order, the first bit at the top. Strips are read downward, a tile at once.
    virtual void read(std::uint32_t piece, int plane, std::uint32_t first, std::uint32_t rows, std::uint8_t* to) = 0;
};

// By libtiff's own codecs; what is not compressed straight from the file.
std::unique_ptr<TiffPieces> piecesByLibtiff(TiffFile& file, const TiffLayout& layout);

// What else decodes pieces is made of the file and its layout by such a function.
using MakePieces = std::unique_ptr<TiffPieces> (*)(TiffFile& file, const TiffLayout& layout);

} // namespace codecs
