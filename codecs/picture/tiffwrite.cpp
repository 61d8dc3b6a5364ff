// tiffwrite.cpp - TIFF pictures, deflated by libtiff. (codecs/tiff packs the rows of its files by libzmxjpx instead.)
#include "codecs/picture/formats.h"
#include "codecs/picture/tifffile.h"

#include <optional>

namespace codecs {
namespace {

class TiffSink final : public RowSink {
public:
    explicit TiffSink(std::unique_ptr<ByteSink> sink) : bytes(std::move(sink)) {}

    void begin(const Shape& shape, const Metadata&) override {
        form = shape;
        if (shape.colour == Colour::other) throw Error("a TIFF file is written of grey, RGB or CMYK pictures");
        depth = DepthTable(shape.maxval, shape.wide() ? 65535 : 255);
        row.resize(shape.rowBytes());
        // What deflating may make longer stays below the other half of 4 GiB.
        file.emplace(std::move(bytes), std::uint64_t(row.size()) * unsigned(shape.height) > UINT64_C(1) << 31);
        file->set(TIFFTAG_IMAGEWIDTH, unsigned(shape.width));
        file->set(TIFFTAG_IMAGELENGTH, unsigned(shape.height));
        file->set(TIFFTAG_BITSPERSAMPLE, shape.wide() ? 16 : 8);
        file->set(TIFFTAG_SAMPLESPERPIXEL, unsigned(shape.channels));
        file->set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        file->set(TIFFTAG_PHOTOMETRIC, shape.colour == Colour::cmyk   ? PHOTOMETRIC_SEPARATED
                                       : shape.colour == Colour::grey ? PHOTOMETRIC_MINISBLACK
                                                                      : PHOTOMETRIC_RGB);
        if (shape.colour == Colour::cmyk) file->set(TIFFTAG_INKSET, INKSET_CMYK);
        if (shape.alpha) file->setAlpha();
        file->set(TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
        file->set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
        file->set(TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(file->get(), 0));
    }

    void write(const Band& band) override {
        for (int y = 0; y < band.rows; ++y, ++written) {
            // libtiff takes differences in the buffer that it is given.
            depth.convert(band.row(y), row.data(), form.rowSamples());
            if (TIFFWriteScanline(file->get(), row.data(), written) != 1)
                file->fail("row " + std::to_string(written) + " cannot be written");
        }
    }

    void finish() override { file->finish(); }

private:
    std::unique_ptr<ByteSink> bytes;
    std::optional<TiffFile> file;
    Shape form;
    DepthTable depth{255, 255};
    Samples row;
    std::uint32_t written = 0;
};

} // namespace

std::unique_ptr<RowSink> createTiff(std::unique_ptr<ByteSink> bytes) {
    return std::make_unique<TiffSink>(std::move(bytes));
}

} // namespace codecs
