// tiffpieces.cpp - pieces through libtiff, and pieces that need no decoding.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/tiffpieces.h"

#include <algorithm>
#include <cstring>

namespace codecs {
namespace {

// The name of a piece for messages.
std::string pieceText(const TiffLayout& h, std::uint32_t piece) {
    return (h.tiled ? "tile " : "strip ") + std::to_string(piece) + " cannot be read";
}

// Scanlines rather than strips: a strip may be as high as the picture. Planes take turns, and each has its own place in
// its strips: so each is another file to libtiff.
class LibtiffPieces final : public TiffPieces {
public:
    LibtiffPieces(TiffFile& first, const TiffLayout& layout) : h(layout) {
        files.push_back(&first);
        for (int plane = 1; plane < h.planes() && !h.tiled; ++plane) {
            others.push_back(std::make_unique<TiffFile>(first.input()));
            files.push_back(others.back().get());
        }
        const tmsize_t size = h.tiled ? TIFFTileRowSize(first.get()) : TIFFScanlineSize(first.get());
        if (size != tmsize_t(h.pieceRowBytes())) first.fail("rows of " + std::to_string(size) + " bytes");
    }

    void read(std::uint32_t piece, int plane, std::uint32_t first, std::uint32_t rows, std::uint8_t* to) override {
        const std::size_t rowBytes = h.pieceRowBytes();
        if (h.tiled) {
            const auto size = tmsize_t(rowBytes * h.pieceHeight);
            if (TIFFReadEncodedTile(files[0]->get(), piece, to, size) != size) files[0]->fail(pieceText(h, piece));
            files[0]->needSound();
            return;
        }
        const TiffFile& file = *files[std::size_t(plane)];
        const auto perPlane = std::uint32_t(TIFFNumberOfStrips(file.get()) / unsigned(h.planes()));
        const std::uint32_t top = piece % perPlane * h.pieceHeight + first;
        for (std::uint32_t y = 0; y < rows; ++y, to += rowBytes)
            if (TIFFReadScanline(file.get(), to, top + y, std::uint16_t(plane)) != 1) file.fail(pieceText(h, piece));
        file.needSound();
    }

private:
    const TiffLayout h;
    std::vector<const TiffFile*> files;
    std::vector<std::unique_ptr<TiffFile>> others;
};

// Strips that are not compressed stand in the file as they are.
class PlainPieces final : public TiffPieces {
public:
    PlainPieces(TiffFile& from, const TiffLayout& layout)
        : file(from), h(layout),
          reversed(file.tag<std::uint16_t>(TIFFTAG_FILLORDER, FILLORDER_MSB2LSB) == FILLORDER_LSB2MSB) {
        for (int plane = 0; plane < h.planes(); ++plane) windows.emplace_back(file.input());
    }

    void read(std::uint32_t piece, int plane, std::uint32_t first, std::uint32_t rows, std::uint8_t* to) override {
        const std::size_t rowBytes = h.pieceRowBytes(), size = rowBytes * rows;
        const std::uint64_t at = TIFFGetStrileOffset(file.get(), piece) + std::uint64_t(rowBytes) * first;
        const ByteView stored = windows[std::size_t(plane)].view(at, size);
        if (stored.size() < size) file.fail(pieceText(h, piece));
        std::memcpy(to, stored.data(), size);
        if (reversed) TIFFReverseBits(to, tmsize_t(size));
        if (h.bits == 16 && TIFFIsByteSwapped(file.get()))
            TIFFSwabArrayOfShort(reinterpret_cast<std::uint16_t*>(to), tmsize_t(size / 2));
    }

private:
    TiffFile& file;
    const TiffLayout h;
    bool reversed;
    std::vector<ByteWindow> windows; // one a plane, which lie apart
};

} // namespace

ByteView ByteWindow::view(std::uint64_t at, std::size_t n) {
    constexpr std::size_t kWindow = std::size_t(1) << 18;
    if (at < start || at - start > filled || filled - std::size_t(at - start) < n) {
        const std::size_t size = std::max(n, kWindow);
        if (buffer.size() < size + 1) buffer.resize(size + 1);
        start = at;
        filled = bytes.readAt(at, {buffer.data(), size});
        buffer[filled] = 0;
    }
    const auto offset = std::size_t(at - start);
    return ByteView(buffer).subspan(offset, std::min(n, filled - offset));
}

std::unique_ptr<TiffPieces> piecesByLibtiff(TiffFile& file, const TiffLayout& layout) {
    const bool plain = file.tag<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE) == COMPRESSION_NONE;
    // Wider words have their own orders of bytes, which libtiff sees to.
    if (plain && !layout.tiled && layout.bits <= 16 && !layout.isFloat)
        return std::make_unique<PlainPieces>(file, layout);
    return std::make_unique<LibtiffPieces>(file, layout);
}

} // namespace codecs
