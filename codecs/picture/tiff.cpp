// tiff.cpp - TIFF pictures through libtiff's own codecs: read in every compression that libtiff knows, in strips or
// tiles, written deflated. (tiff/tiff.h packs the rows of its files by libzmxjpx instead.)
#include "codecs/picture/files.h"
#include "codecs/picture/tifffile.h"

#include <algorithm>
#include <cstring>

namespace {

// The samples of a picture that stand in one buffer of libtiff: a strip or a tile of one plane.
class Pieces {
public:
    Pieces(const TiffFile& f, TiffPicture& picture, std::size_t maxPixels)
        : file(f), h(picture), planes(h.planar ? h.image.channels : 1), tiled(TIFFIsTiled(f.get())),
          width(unsigned(h.image.width)),
          height(std::min(file.tag<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, UINT32_MAX), unsigned(h.image.height))),
          channels(h.image.channels / planes) {
        if (tiled) {
            width = file.tag<std::uint32_t>(TIFFTAG_TILEWIDTH, 0);
            height = file.tag<std::uint32_t>(TIFFTAG_TILELENGTH, 0);
            if (std::uint64_t(width) * height > maxPixels) file.fail("tiles of more pixels than the limit allows");
        }
        if (width < 1 || height < 1) file.fail("strips or tiles without pixels");
        rowBytes = (std::size_t(width) * std::size_t(channels * h.bits) + 7) / 8;
        bytes.resize(rowBytes * height);
    }

    // All of them, in the order of their numbers.
    void read() {
        const auto across = unsigned(h.image.width), down = unsigned(h.image.height);
        std::uint32_t number = 0;
        for (int plane = 0; plane < planes; ++plane)
            for (std::uint64_t top = 0; top < down; top += height)
                for (std::uint64_t left = 0; left < across; left += width) {
                    const unsigned rows = std::min(height, down - unsigned(top));
                    decode(number++, rowBytes * rows);
                    for (unsigned y = 0; y < rows; ++y)
                        place(bytes.data() + rowBytes * y, h.image.row(int(top + y)), int(left), plane);
                }
    }

private:
    void decode(std::uint32_t number, std::size_t size) {
        const auto got =
            (tiled ? TIFFReadEncodedTile : TIFFReadEncodedStrip)(file.get(), number, bytes.data(), tmsize_t(size));
        if (got != tmsize_t(size)) file.fail((tiled ? "tile " : "strip ") + std::to_string(number) + " cannot be read");
    }

    // A row of a piece into a row of the picture, as far as it lies in it.
    void place(const std::uint8_t* from, std::uint16_t* row, int left, int plane) const {
        const int pixels = std::min(int(width), h.image.width - left);
        std::uint16_t* to = row + std::ptrdiff_t(left) * h.image.channels + plane;
        for (int x = 0; x < pixels; ++x, to += h.image.channels)
            for (int c = 0; c < channels; ++c) {
                const std::uint16_t sample = sampleAt(from, std::ptrdiff_t(x) * channels + c);
                to[c] = h.inverted ? std::uint16_t(h.image.maxval - sample) : sample;
            }
    }
    // libtiff has brought words to this machine's byte order, and the first bit of a byte to the top.
    std::uint16_t sampleAt(const std::uint8_t* from, std::ptrdiff_t i) const {
        if (h.bits == 1) return from[i / 8] >> (7 - i % 8) & 1;
        if (h.bits == 8) return from[i];
        std::uint16_t word;
        std::memcpy(&word, from + 2 * i, sizeof word);
        return word;
    }

    const TiffFile& file;
    TiffPicture& h;
    int planes;
    bool tiled;
    std::uint32_t width, height;
    int channels; // in a piece
    std::size_t rowBytes;
    std::vector<std::uint8_t> bytes;
};

} // namespace

Image readTiff(const std::string& path, std::size_t maxPixels) {
    const TiffFile file(path, "rm");
    TiffPicture h = pictureOf(file, maxPixels);
    Pieces pieces(file, h, maxPixels);
    h.image.samples.resize(h.image.rowSamples() * std::size_t(h.image.height));
    pieces.read();
    return std::move(h.image);
}

void writeTiff(const std::string& path, const Image& picture) {
    const Image image = scaled(picture, picture.maxval > 255 ? 65535 : 255);
    const bool wide = image.maxval > 255;
    const TiffFile file(path, "w");
    file.set(TIFFTAG_IMAGEWIDTH, unsigned(image.width));
    file.set(TIFFTAG_IMAGELENGTH, unsigned(image.height));
    file.set(TIFFTAG_BITSPERSAMPLE, wide ? 16 : 8);
    file.set(TIFFTAG_SAMPLESPERPIXEL, unsigned(image.channels));
    file.set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    file.set(TIFFTAG_PHOTOMETRIC, image.cmyk           ? PHOTOMETRIC_SEPARATED
                                  : image.channels < 3 ? PHOTOMETRIC_MINISBLACK
                                                       : PHOTOMETRIC_RGB);
    if (image.cmyk)
        file.set(TIFFTAG_INKSET, INKSET_CMYK);
    else if (image.channels % 2 == 0)
        file.setAlpha();
    file.set(TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    file.set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    file.set(TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(file.get(), 0));
    std::vector<std::uint8_t> narrow(image.rowSamples());
    std::vector<std::uint16_t> row(image.rowSamples());
    for (int y = 0; y < image.height; ++y) {
        // libtiff takes differences in the buffer that it is given.
        std::copy_n(image.row(y), row.size(), row.begin());
        if (!wide) std::copy(row.begin(), row.end(), narrow.begin());
        if (TIFFWriteScanline(file.get(), wide ? static_cast<void*>(row.data()) : narrow.data(), unsigned(y)) != 1)
            file.fail("row " + std::to_string(y) + " cannot be written");
    }
    file.finish();
}
