// tiffread.cpp - TIFF pictures in bands: strips, tiles and planes put together to rows.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/tiffread.h"

#include "codecs/picture/formats.h"
#include "codecs/picture/tiffmetadata.h"
#include "codecs/picture/tiffsamples.h"

#include <algorithm>
#include <cstring>

namespace codecs {
namespace {

class TiffRows final : public RowSource {
public:
    TiffRows(std::unique_ptr<ByteSource> source, std::uint64_t maxPixels, MakePieces make)
        : bytes(std::move(source)), file(*bytes), h(layoutOf(file, maxPixels)), gather(gatherOf(h)),
          finish(finishOf(file, h)), pieces(make(file, h)) {
        form = h.shape;
        beside = readMetadata(file);
        told = h.warnings;
        // Rows that stand in the file as in the picture are read where they are to be.
        straight = !finish && !h.planar && !h.tiled && (h.bits == 8 || h.bits == 16) && !h.isFloat;
        rawRowBytes = std::size_t(form.width) * std::size_t(h.channels) * (h.rawMaxval() > 255 ? 2 : 1);
    }

    Band next(int rows) override {
        const int n = std::min(rows, form.height - row);
        const std::size_t size = form.rowBytes();
        band.resize(std::max(band.size(), size * std::size_t(n)));
        for (int done = 0; done < n;) {
            std::uint8_t* to = band.data() + size * std::size_t(done);
            const int some = straight ? readStraight(to, n - done) : copySlab(to, n - done);
            done += some;
            row += some;
        }
        return {band.data(), std::ptrdiff_t(size), n};
    }

private:
    std::uint32_t rowInPiece() const { return unsigned(row) % h.pieceHeight; }
    // Rows from `row` to the end of the pieces that they are in.
    int rowsHere() const { return int(std::min<std::int64_t>(h.pieceHeight - rowInPiece(), form.height - row)); }

    int readStraight(std::uint8_t* to, int rows) {
        const int n = std::min(rows, rowsHere());
        pieces->read(TIFFComputeStrip(file.get(), unsigned(row), 0), 0, rowInPiece(), unsigned(n), to);
        return n;
    }

    int copySlab(std::uint8_t* to, int rows) {
        if (row == slabEnd) readSlab();
        const int n = std::min(rows, slabEnd - row);
        for (int y = 0; y < n; ++y, to += form.rowBytes()) {
            const std::uint8_t* raw = slab.data() + rawRowBytes * std::size_t(row + y - slabStart);
            if (finish)
                finish(raw, to);
            else
                std::memcpy(to, raw, form.rowBytes());
        }
        return n;
    }

    // The samples of the next rows out of all the pieces that they are in. A tile is read as a whole, a strip need not be.
    void readSlab() {
        slabStart = row;
        const int n = h.tiled ? rowsHere() : std::min(rowsHere(), bandRows(form));
        slabEnd = row + n;
        slab.resize(rawRowBytes * std::size_t(n));
        const std::size_t pieceRows = h.tiled ? h.pieceHeight : unsigned(n);
        piece.resize(std::max(piece.size(), h.pieceRowBytes() * pieceRows));
        for (int plane = 0; plane < h.planes(); ++plane)
            for (std::int64_t left = 0; left < form.width; left += h.pieceWidth) {
                const auto top = unsigned(row);
                const std::uint32_t number =
                    h.tiled ? TIFFComputeTile(file.get(), unsigned(left), top, 0, std::uint16_t(plane))
                            : TIFFComputeStrip(file.get(), top, std::uint16_t(plane));
                pieces->read(number, plane, rowInPiece(), unsigned(n), piece.data());
                for (int y = 0; y < n; ++y) place(y, int(left), plane);
            }
    }

    // Row `y` of a piece into the slab, as far as it lies in the picture.
    void place(int y, int left, int plane) {
        const auto pixels = std::size_t(std::min<std::int64_t>(h.pieceWidth, form.width - left));
        const auto channels = std::size_t(h.channels), inPiece = channels / std::size_t(h.planes());
        const std::size_t first = std::size_t(left) * channels + std::size_t(plane);
        gather(piece.data() + h.pieceRowBytes() * std::size_t(y), 0, pixels * inPiece, h.bits,
               slab.data() + rawRowBytes * std::size_t(y) + first * (h.rawMaxval() > 255 ? 2 : 1),
               h.planar ? channels : 1);
    }

    std::unique_ptr<ByteSource> bytes;
    TiffFile file;
    TiffLayout h;
    GatherSamples gather;
    UnpackRow finish;
    std::unique_ptr<TiffPieces> pieces;
    bool straight = false;
    std::size_t rawRowBytes = 0;
    Samples piece, slab, band;
    int row = 0, slabStart = 0, slabEnd = 0;
};

// Colours that libtiff converts, as many rows at a time as a strip or tile has.
class ConvertedTiffRows final : public RowSource {
public:
    ConvertedTiffRows(std::unique_ptr<ByteSource> source, std::uint64_t maxPixels)
        : bytes(std::move(source)), file(*bytes), h(layoutOf(file, maxPixels)) {
        form = h.shape;
        beside = readMetadata(file);
        told = h.warnings;
        char why[1024] = "";
        if (!TIFFRGBAImageBegin(&image, file.get(), 1, why)) file.fail(why);
        // The rows come as they stand: which way up they are meant is for others to see to.
        image.orientation = image.req_orientation = ORIENTATION_TOPLEFT;
    }
    ~ConvertedTiffRows() override { TIFFRGBAImageEnd(&image); }

    Band next(int rows) override {
        const int n = std::min(rows, form.height - row);
        const std::size_t size = form.rowBytes();
        band.resize(std::max(band.size(), size * std::size_t(n)));
        for (int y = 0; y < n; ++y, ++row) {
            if (row == slabEnd) readSlab();
            const std::uint32_t* from = slab.data() + std::size_t(row - slabStart) * std::size_t(form.width);
            std::uint8_t* to = band.data() + size * std::size_t(y);
            for (int x = 0; x < form.width; ++x, to += 3) {
                to[0] = std::uint8_t(TIFFGetR(from[x]));
                to[1] = std::uint8_t(TIFFGetG(from[x]));
                to[2] = std::uint8_t(TIFFGetB(from[x]));
            }
        }
        return {band.data(), std::ptrdiff_t(size), n};
    }

private:
    void readSlab() {
        slabStart = row;
        slabEnd = int(std::min<std::int64_t>(std::int64_t(row) + h.pieceHeight, form.height));
        const int n = slabEnd - slabStart;
        slab.resize(std::size_t(form.width) * std::size_t(n));
        image.row_offset = row;
        if (!TIFFRGBAImageGet(&image, slab.data(), unsigned(form.width), unsigned(n)))
            file.fail("row " + std::to_string(row) + " cannot be read");
    }

    std::unique_ptr<ByteSource> bytes;
    TiffFile file;
    TiffLayout h;
    TIFFRGBAImage image{};
    std::vector<std::uint32_t> slab;
    Samples band;
    int row = 0, slabStart = 0, slabEnd = 0;
};

} // namespace

Rows openTiffWith(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels, MakePieces pieces) {
    return std::make_unique<TiffRows>(std::move(bytes), maxPixels, pieces);
}

Rows openTiff(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels) {
    const bool converted = [&] {
        const TiffFile file(*bytes);
        return layoutOf(file, maxPixels).colour == TiffColour::converted;
    }();
    if (converted) return std::make_unique<ConvertedTiffRows>(std::move(bytes), maxPixels);
    return openTiffWith(std::move(bytes), maxPixels, piecesByLibtiff);
}

} // namespace codecs
