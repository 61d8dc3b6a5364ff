// tiffwrite.cpp - TIFF pictures, deflated by libtiff. (codecs/tiff packs the rows of its files by libzmxjpx instead.)
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/tiffwrite.h"
#include "codecs/picture/formats.h"
#include "codecs/picture/storedrows.h"
#include "codecs/picture/tiffmetadata.h"

#include <optional>

namespace codecs {
namespace {

class TiffSink final : public RowSink {
public:
    explicit TiffSink(std::unique_ptr<ByteSink> sink) : bytes(std::move(sink)) {}

    void begin(const Shape& shape, const Metadata& metadata) override {
        form = shape;
        if (shape.colour == Colour::other) throw Error("a TIFF file is written of grey, RGB or CMYK pictures");
        const bool bitmap = shape.maxval == 1 && shape.channels == 1;
        bits = bitmap ? 1 : shape.wide() ? 16 : 8;
        depth = DepthTable(shape.maxval, (1 << bits) - 1);
        told = depthChange(shape.maxval, depth.maxval(), "a TIFF file");
        row.resize(shape.rowBytes());
        // What deflating may make longer stays below the other half of 4 GiB.
        file.emplace(*bytes, std::uint64_t(row.size()) * unsigned(shape.height) > UINT64_C(1) << 31);
        writePictureTags(*file, shape, bits);
        writeMetadata(*file, metadata);
        file->set(TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        if (!bitmap) file->set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
        file->set(TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(file->get(), 0));
    }

    void write(const Band& band) override {
        for (int y = 0; y < band.rows; ++y, ++written) {
            // libtiff takes differences in the buffer that it is given.
            if (bits == 1)
                bytesToBits(band.row(y), row.data(), form.rowSamples(), 0);
            else
                depth.convert(band.row(y), row.data(), form.rowSamples());
            if (TIFFWriteScanline(file->get(), row.data(), written) != 1)
                file->fail("row " + std::to_string(written) + " cannot be written");
        }
    }

    void finish() override { file->finish(); }

private:
    std::unique_ptr<ByteSink> bytes;
    std::optional<TiffFile> file; // behind the bytes that it writes to
    Shape form;
    int bits = 8;
    DepthTable depth{255, 255};
    Samples row;
    std::uint32_t written = 0;
};

} // namespace

void writePictureTags(const TiffFile& file, const Shape& shape, int bits) {
    file.set(TIFFTAG_IMAGEWIDTH, unsigned(shape.width));
    file.set(TIFFTAG_IMAGELENGTH, unsigned(shape.height));
    file.set(TIFFTAG_BITSPERSAMPLE, unsigned(bits));
    file.set(TIFFTAG_SAMPLESPERPIXEL, unsigned(shape.channels));
    file.set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    file.set(TIFFTAG_PHOTOMETRIC, shape.colour == Colour::cmyk   ? PHOTOMETRIC_SEPARATED
                                  : shape.colour == Colour::grey ? PHOTOMETRIC_MINISBLACK
                                                                 : PHOTOMETRIC_RGB);
    if (shape.colour == Colour::cmyk) file.set(TIFFTAG_INKSET, INKSET_CMYK);
    if (shape.alpha) file.setAlpha();
}

std::unique_ptr<RowSink> createTiff(std::unique_ptr<ByteSink> bytes) {
    return std::make_unique<TiffSink>(std::move(bytes));
}

} // namespace codecs
