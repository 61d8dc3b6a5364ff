// decode.cpp - packed strips and tiles, unpacked row by row as they are wanted.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/tiffread.h"
#include "codecs/tiff/tiff.h"
#include "zmxj.h"

#include <algorithm>
#include <climits>

namespace codecs::tiff {
namespace {

class PackedPieces final : public TiffPieces {
public:
    PackedPieces(TiffFile& from, const TiffLayout& layout, bool splits)
        : file(from), h(layout), split(splits),
          reversed(file.tag<std::uint16_t>(TIFFTAG_FILLORDER, FILLORDER_MSB2LSB) == FILLORDER_LSB2MSB),
          words(h.bits == 16 && !split && TIFFIsByteSwapped(file.get())), fileSize(file.input().size()) {
        for (int plane = 0; plane < h.planes(); ++plane) places.emplace_back(file.input());
        if (split) halves.resize(h.pieceRowBytes());
    }

    void read(std::uint32_t piece, int plane, std::uint32_t first, std::uint32_t rows, std::uint8_t* to) override {
        Place& place = places[std::size_t(plane)];
        if (first == 0) begin(place, piece);
        const std::size_t size = h.pieceRowBytes();
        for (std::uint32_t y = 0; y < rows; ++y, to += size) {
            row = first + y;
            if (split) {
                unpack(place, halves.data(), size / 2);
                unpack(place, halves.data() + size / 2, size / 2);
                const std::uint8_t* const planes[2] = {halves.data(), halves.data() + size / 2};
                zmxiJoinRow_TIFF_8u16u_C1(planes, reinterpret_cast<Zmx16u*>(to), int(size / 2));
            } else {
                unpack(place, to, size);
                if (words) TIFFSwabArrayOfShort(reinterpret_cast<std::uint16_t*>(to), tmsize_t(size / 2));
            }
        }
    }

private:
    // How far the pieces of a plane have been unpacked.
    struct Place {
        explicit Place(ByteSource& bytes) : window(bytes) {}
        ByteWindow window;
        std::uint32_t piece = 0;
        std::uint64_t start = 0, size = 0, at = 0; // of the piece in the file; within it
    };

    [[noreturn]] void fail(const Place& place, const std::string& what, bool inRow = true) const {
        const std::uint32_t top = h.tiled ? 0 : place.piece * h.pieceHeight;
        file.fail((h.tiled ? "tile " : "strip ") + std::to_string(place.piece) +
                  (inRow ? ", row " + std::to_string(top + row) : "") + ": " + what);
    }

    void begin(Place& place, std::uint32_t piece) {
        place.piece = piece;
        place.start = TIFFGetStrileOffset(file.get(), piece);
        place.size = TIFFGetStrileByteCount(file.get(), piece);
        place.at = 0;
        if (place.size < 1) fail(place, "it has no bytes", false);
        if (place.start > fileSize || place.size > fileSize - place.start)
            fail(place, std::to_string(place.size) + " bytes in a file of " + std::to_string(fileSize), false);
    }

    // A packed row has as many bytes as its writer liked; more are looked at until it is whole.
    void unpack(Place& place, std::uint8_t* to, std::size_t bytes) {
        for (std::uint64_t wanted = 2 * std::uint64_t(bytes) + 64;; wanted *= 4) {
            const std::uint64_t left = place.size - place.at;
            const ByteView packed = view(place, std::size_t(std::min({wanted, left, std::uint64_t(INT_MAX - 1)})));
            int pos = 0;
            const ZmxStatus status =
                zmxiUnpackBitsRow_TIFF_8u_C1(packed.data(), &pos, int(packed.size()), to, int(bytes));
            // The value of a last run may have been taken from behind what there is.
            const auto end = std::size_t(pos);
            const bool cut = end > packed.size() || (status != zmxStsNoErr && end == packed.size());
            if (!cut && status == zmxStsNoErr) {
                place.at += end;
                return;
            }
            if (packed.size() < left && packed.size() < INT_MAX - 1) continue;
            if (cut) fail(place, "the strip ends inside the row");
            fail(place,
                 "the packet at byte " + std::to_string(place.at + end - 1) + " goes beyond the row or the strip");
        }
    }

    ByteView view(Place& place, std::size_t n) {
        const ByteView packed = place.window.view(place.start + place.at, n);
        if (!reversed) return packed;
        turned.assign(packed.begin(), packed.end());
        turned.push_back(0);
        TIFFReverseBits(turned.data(), tmsize_t(packed.size()));
        return ByteView(turned).first(packed.size());
    }

    TiffFile& file;
    const TiffLayout h;
    bool split, reversed, words;
    std::uint64_t fileSize;
    std::vector<Place> places;
    Samples halves;
    Bytes turned;
    std::uint32_t row = 0; // of the piece
};

std::unique_ptr<TiffPieces> packedPieces(TiffFile& file, const TiffLayout& h) {
    const unsigned compression = file.tag<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    const bool split = compression == kSplitPackBits;
    if (compression != kPackBits && !split) file.refuse("Compression", compression);
    if (h.colour == TiffColour::converted)
        file.refuse("PhotometricInterpretation", file.tag<std::uint16_t>(TIFFTAG_PHOTOMETRIC, 0));
    if (split && h.bits != 16) file.fail("split rows of samples that have not 16 bits");
    if (h.bits > 16) file.refuse("BitsPerSample", unsigned(h.bits));
    const std::string size = sizeText(h.shape.width, h.shape.height);
    if (h.pieceRowBytes() > INT_MAX - 1) file.fail(size + ": the rows are too long");
    // Two bytes of PackBits make 128 at the most.
    const std::uint64_t there = file.input().size();
    if (std::uint64_t(h.pieceRowBytes()) * unsigned(h.shape.height) / 64 > there)
        file.fail(size + " cannot be in a file of " + std::to_string(there) + " bytes");
    return std::make_unique<PackedPieces>(file, h, split);
}

} // namespace

Rows open(std::unique_ptr<ByteSource> file, std::uint64_t maxPixels) {
    return openTiffWith(std::move(file), maxPixels, packedPieces);
}

void decode(ByteSource& file, RowSink& rows, std::uint64_t maxPixels) {
    copyRows(*open(std::make_unique<BorrowedSource>(file), maxPixels), rows);
}

} // namespace codecs::tiff
