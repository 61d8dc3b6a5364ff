// tiff.cpp - the container: tags and raw strips.
#include "codecs/tiff/tiff.h"

#include "codecs/picture/bytefile.h"
#include "codecs/picture/tifffile.h"
#include "codecs/tiff/rows.h"

#include <algorithm>
#include <climits>

namespace tif {

using codecs::TiffFile;

namespace {

// The samples of a picture in the next depth that a file has: 1, 8 or 16 bits.
Image inFileDepth(Image image) {
    const int maxval = image.maxval == 1 && image.channels == 1 ? 1 : image.maxval <= 255 ? 255 : 65535;
    return scaled(image, maxval);
}
int bitsOf(int maxval) { return maxval == 1 ? 1 : maxval == 255 ? 8 : 16; }

void writeTags(const TiffFile& file, const Image& image, const RowLayout& layout, int rowsPerStrip) {
    file.set(TIFFTAG_IMAGEWIDTH, unsigned(image.width));
    file.set(TIFFTAG_IMAGELENGTH, unsigned(image.height));
    file.set(TIFFTAG_BITSPERSAMPLE, unsigned(layout.bits));
    file.set(TIFFTAG_SAMPLESPERPIXEL, unsigned(image.channels));
    file.set(TIFFTAG_PHOTOMETRIC, image.channels < 3 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
    file.set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    file.set(TIFFTAG_ROWSPERSTRIP, unsigned(rowsPerStrip));
    file.set(TIFFTAG_COMPRESSION, unsigned(layout.split ? kSplitPackBits : kPackBits));
    if (image.channels % 2 == 0) file.setAlpha();
}

// What the tags of a file say.
struct Header {
    Image image; // without samples
    RowLayout layout;
    int rowsPerStrip;
};

Header readTags(const TiffFile& file, std::size_t maxPixels) {
    if (TIFFIsTiled(file.get())) file.fail("tiles are not supported");
    const unsigned compression = file.tag<std::uint16_t>(TIFFTAG_COMPRESSION, 1);
    const bool split = compression == kSplitPackBits;
    if (compression != kPackBits && !split) file.refuse("Compression", compression);
    const unsigned photometric = file.tag<std::uint16_t>(TIFFTAG_PHOTOMETRIC, 0xFFFF);
    if (photometric == PHOTOMETRIC_SEPARATED) file.refuse("PhotometricInterpretation", photometric);
    const codecs::TiffPicture picture = pictureOf(file, maxPixels);
    const Image image = imageFrom(codecs::Picture(picture.shape));
    if (picture.planar) file.refuse("PlanarConfiguration", PLANARCONFIG_SEPARATE);
    if (split && picture.bits != 16) file.fail("split rows of samples that have not 16 bits");
    const auto rows = file.tag<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, unsigned(image.height));
    if (rows < 1) file.refuse("RowsPerStrip", rows);

    const std::string size = codecs::sizeText(image.width, image.height);
    if (std::uint64_t(image.rowSamples()) * unsigned(picture.bits) / 8 > INT_MAX - 1)
        file.fail(size + ": the rows are too long");
    Header h{image, {}, int(std::min(rows, unsigned(image.height)))};
    h.layout = {int(image.rowSamples()), picture.bits, split, TIFFIsByteSwapped(file.get()) != 0, picture.inverted};
    // Two bytes of PackBits make 128 at the most.
    if (std::uint64_t(h.layout.bytes()) * unsigned(image.height) / 64 > file.size())
        file.fail(size + " cannot be in a file of " + std::to_string(file.size()) + " bytes");
    return h;
}

// A strip as it stands in the file, and one byte more, which an unpacker may look at.
Bytes readStrip(const TiffFile& file, std::uint32_t strip) {
    const auto where = "strip " + std::to_string(strip) + ": ";
    const std::uint64_t bytes = TIFFGetStrileByteCount(file.get(), strip);
    if (bytes < 1) file.fail(where + "it has no bytes");
    if (bytes > file.size() || bytes >= INT_MAX)
        file.fail(where + std::to_string(bytes) + " bytes in a file of " + std::to_string(file.size()));
    Bytes data(std::size_t(bytes) + 1);
    if (TIFFReadRawStrip(file.get(), strip, data.data(), tmsize_t(bytes)) != tmsize_t(bytes))
        file.fail(where + "it cannot be read");
    if (file.tag<std::uint16_t>(TIFFTAG_FILLORDER, FILLORDER_MSB2LSB) == FILLORDER_LSB2MSB)
        TIFFReverseBits(data.data(), tmsize_t(bytes));
    return data;
}

} // namespace

namespace {

void writeUnnamed(const std::string& path, const Image& picture, const EncodeOptions& options) {
    if (picture.cmyk) throw Error("TIFF: a CMYK picture is not supported");
    const Image image = inFileDepth(picture);
    const std::uint64_t rowBytes = std::uint64_t(image.rowSamples()) * 2;
    if (rowBytes > INT_MAX / 2) throw Error("TIFF: the rows are too long");
    if (options.split16 && image.maxval != 65535) throw Error("TIFF: split rows are for samples of 16 bits");
    const RowLayout layout{int(image.rowSamples()), bitsOf(image.maxval), options.split16};
    const int advised = std::max(1, int(8192 / layout.bytes()));
    const int rowsPerStrip = std::min(image.height, options.rowsPerStrip > 0 ? options.rowsPerStrip : advised);

    TiffFile file(codecs::createBytes(path), false);
    writeTags(file, image, layout, rowsPerStrip);
    for (int y = 0; y < image.height;) {
        const int strip = y / rowsPerStrip, end = std::min(image.height, y + rowsPerStrip);
        Bytes data;
        for (; y < end; ++y) {
            if (data.size() > INT_MAX / 2)
                file.fail("strip " + std::to_string(strip) + ": too many rows; ask for fewer in a strip");
            packRow(layout, image.row(y), data);
        }
        if (TIFFWriteRawStrip(file.get(), std::uint32_t(strip), data.data(), tmsize_t(data.size())) !=
            tmsize_t(data.size()))
            file.fail("strip " + std::to_string(strip) + ": it cannot be written");
    }
    file.finish();
}

Image readUnnamed(const std::string& path, std::size_t maxPixels) {
    const TiffFile file(codecs::openBytes(path));
    Header h = readTags(file, maxPixels);
    Image& image = h.image;
    image.samples.resize(image.rowSamples() * std::size_t(image.height));
    for (int y = 0; y < image.height;) {
        const int strip = y / h.rowsPerStrip, end = std::min(image.height, y + h.rowsPerStrip);
        const Bytes data = readStrip(file, std::uint32_t(strip));
        for (int pos = 0; y < end; ++y)
            if (const std::string wrong = unpackRow(h.layout, data.data(), int(data.size() - 1), pos, image.row(y));
                !wrong.empty())
                file.fail("strip " + std::to_string(strip) + ", row " + std::to_string(y) + ": " + wrong);
    }
    return std::move(image);
}

} // namespace

void write(const std::string& path, const Image& picture, const EncodeOptions& options) {
    codecs::named(path, [&] { writeUnnamed(path, picture, options); });
}
Image read(const std::string& path, std::size_t maxPixels) {
    return codecs::named(path, [&] { return readUnnamed(path, maxPixels); });
}

} // namespace tif
