// tiffread.cpp - TIFF pictures through libtiff's own codecs, in every compression that it knows, in strips or tiles.
#include "codecs/picture/formats.h"
#include "codecs/picture/storedrows.h"
#include "codecs/picture/tifffile.h"

#include <algorithm>
#include <cstring>

namespace codecs {
namespace {

// A row of strips or tiles, of one plane or of all: as many rows of the picture as stand in one piece.
class TiffRows final : public RowSource {
public:
    TiffRows(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels)
        : file(std::move(bytes)), h(pictureOf(file, maxPixels)), planes(h.planar ? h.shape.channels : 1),
          channels(h.shape.channels / planes), tiled(TIFFIsTiled(file.get())), width(unsigned(h.shape.width)),
          height(std::min(file.tag<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, UINT32_MAX), unsigned(h.shape.height))) {
        form = h.shape;
        if (tiled) {
            width = file.tag<std::uint32_t>(TIFFTAG_TILEWIDTH, 0);
            height = file.tag<std::uint32_t>(TIFFTAG_TILELENGTH, 0);
            if (std::uint64_t(width) * height > maxPixels) file.fail("tiles of more pixels than the limit allows");
        }
        if (width < 1 || height < 1) file.fail("strips or tiles without pixels");
        pieceRowBytes = (std::size_t(width) * std::size_t(channels * h.bits) + 7) / 8;
        piece.resize(pieceRowBytes * height);
    }

    Band next(int rows) override {
        const int n = std::min(rows, form.height - row);
        const std::size_t size = form.rowBytes();
        band.resize(std::max(band.size(), size * std::size_t(n)));
        for (int done = 0; done < n;) {
            if (row == slabEnd) readSlab();
            const int some = std::min(n - done, slabEnd - row);
            std::memcpy(band.data() + size * std::size_t(done), slab.data() + size * std::size_t(row - slabStart),
                        size * std::size_t(some));
            done += some;
            row += some;
        }
        return {band.data(), std::ptrdiff_t(size), n};
    }

private:
    // All pieces from `row` down to where they end.
    void readSlab() {
        slabStart = row;
        slabEnd = int(std::min<std::int64_t>(std::int64_t(row) + height, form.height));
        slab.resize(form.rowBytes() * std::size_t(slabEnd - slabStart));
        for (int plane = 0; plane < planes; ++plane)
            for (std::int64_t left = 0; left < form.width; left += width) {
                decode(plane, unsigned(left));
                for (int y = 0; y < slabEnd - slabStart; ++y) place(y, int(left), plane);
            }
    }

    void decode(int plane, unsigned left) {
        TIFF* const tiff = file.get();
        const auto top = unsigned(slabStart);
        const std::uint32_t number = tiled ? TIFFComputeTile(tiff, left, top, 0, std::uint16_t(plane))
                                           : TIFFComputeStrip(tiff, top, std::uint16_t(plane));
        const auto size = tmsize_t(pieceRowBytes * std::size_t(slabEnd - slabStart));
        if ((tiled ? TIFFReadEncodedTile : TIFFReadEncodedStrip)(tiff, number, piece.data(), size) != size)
            file.fail((tiled ? "tile " : "strip ") + std::to_string(number) + " cannot be read");
    }

    // Row `y` of a piece into the slab, as far as it lies in the picture.
    void place(int y, int left, int plane) {
        const int pixels = std::min(int(width), form.width - left);
        const std::uint8_t* from = piece.data() + pieceRowBytes * std::size_t(y);
        const std::size_t first = std::size_t(left) * std::size_t(form.channels) + std::size_t(plane);
        std::uint8_t* to = slab.data() + form.rowBytes() * std::size_t(y) + first * (form.wide() ? 2 : 1);
        if (h.bits == 1)
            bitsToBytes(from, to, std::size_t(pixels), h.inverted);
        else if (form.wide())
            copy(reinterpret_cast<const std::uint16_t*>(from), reinterpret_cast<std::uint16_t*>(to), pixels);
        else
            copy(from, to, pixels);
    }
    // libtiff has brought words to this machine's byte order, and the first bit of a byte to the top.
    template <class Sample> void copy(const Sample* from, Sample* to, int pixels) const {
        const auto inverse = [&](Sample v) { return h.inverted ? Sample(form.maxval - v) : v; };
        if (planes == 1)
            std::transform(from, from + std::ptrdiff_t(pixels) * channels, to, inverse);
        else
            for (int x = 0; x < pixels; ++x) to[std::ptrdiff_t(x) * form.channels] = inverse(from[x]);
    }

    TiffFile file;
    TiffPicture h;
    int planes, channels; // in a piece
    bool tiled;
    std::uint32_t width, height; // of a piece
    std::size_t pieceRowBytes = 0;
    Samples piece, slab, band;
    int row = 0, slabStart = 0, slabEnd = 0;
};

} // namespace

Rows openTiff(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels) {
    return std::make_unique<TiffRows>(std::move(bytes), maxPixels);
}

} // namespace codecs
