// pngwrite.cpp - PNG files of 8 and 16 bits, and grey ones of 1, 2 and 4.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/formats.h"
#include "codecs/picture/pnglib.h"

#include <bit>

namespace codecs {
namespace {

// The depth in a file: the least that holds the samples, and that a PNG has for so many channels.
int bitsFor(const Shape& shape) {
    if (shape.wide()) return 16;
    if (shape.channels == 1)
        for (int bits : {1, 2, 4})
            if (shape.maxval == (1 << bits) - 1) return bits;
    return 8;
}

class PngSink final : public RowSink {
public:
    explicit PngSink(std::unique_ptr<ByteSink> sink) : bytes(std::move(sink)) {}

    void begin(const Shape& shape, const Metadata& metadata) override {
        static const int kinds[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                    PNG_COLOR_TYPE_RGBA};
        if (shape.colour == Colour::cmyk) throw Error("a CMYK picture is written to a .tif or .pam file");
        if (shape.channels < 1 || shape.channels > 4 || shape.colour == Colour::other)
            throw Error("a PNG file has 1 to 4 channels");
        form = shape;
        beside = metadata;
        const int bits = bitsFor(shape);
        depth = DepthTable(shape.maxval, (1 << bits) - 1);
        told = depthChange(shape.maxval, depth.maxval(), "a PNG file");
        lib.run([&] {
            png_set_write_fn(lib.png, this, take, nullptr);
            png_set_benign_errors(lib.png, 1); // what is wrong beside the samples is a loss, no error
            png_set_IHDR(lib.png, lib.info, png_uint_32(shape.width), png_uint_32(shape.height), bits,
                         kinds[shape.channels - 1], PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                         PNG_FILTER_TYPE_DEFAULT);
            // Most of what compression can do, in a third of the time that the default takes.
            png_set_compression_level(lib.png, 3);
            setMetadata();
            png_write_info(lib.png, lib.info);
            if (bits < 8) png_set_packing(lib.png);
            if (bits == 16 && std::endian::native == std::endian::little) png_set_swap(lib.png);
        });
        // libpng looks into a profile, and leaves out one that contradicts the picture.
        if (!metadata.icc.empty() && !png_get_valid(lib.png, lib.info, PNG_INFO_iCCP))
            told.emplace_back("PNG has no place for this colour profile");
    }

    void write(const Band& band) override {
        for (int y = 0; y < band.rows; ++y) {
            const std::uint8_t* row = band.row(y);
            if (depth.changes()) {
                scaled.resize(form.rowSamples() * (depth.maxval() > 255 ? 2 : 1));
                depth.convert(row, scaled.data(), form.rowSamples());
                row = scaled.data();
            }
            lib.run([&] { png_write_row(lib.png, row); });
        }
    }

    void finish() override {
        lib.run([&] { png_write_end(lib.png, nullptr); });
        bytes->finish();
    }

private:
    // Called within run(): nothing here has a destructor.
    void setMetadata() {
        if (!beside.icc.empty())
            png_set_iCCP(lib.png, lib.info, "ICC", PNG_COMPRESSION_TYPE_BASE, beside.icc.data(),
                         png_uint_32(beside.icc.size()));
        if (!beside.exif.empty())
            png_set_eXIf_1(lib.png, lib.info, png_uint_32(beside.exif.size()), beside.exif.data());
        if (!beside.xmp.empty()) {
            beside.xmp.push_back(0); // libpng measures texts by their end
            png_text text{};
            text.compression = PNG_ITXT_COMPRESSION_NONE;
            text.key = const_cast<png_charp>(kPngXmpKeyword);
            text.text = reinterpret_cast<png_charp>(beside.xmp.data());
            png_set_text(lib.png, lib.info, &text, 1);
        }
        if (beside.resolution) {
            const Resolution r = beside.resolution->in(Resolution::Unit::metre);
            png_set_pHYs(lib.png, lib.info, png_uint_32(r.x + 0.5), png_uint_32(r.y + 0.5),
                         r.unit == Resolution::Unit::none ? PNG_RESOLUTION_UNKNOWN : PNG_RESOLUTION_METER);
        }
    }

    static void take(png_structp png, png_bytep from, std::size_t n) {
        auto* self = static_cast<PngSink*>(png_get_io_ptr(png));
        self->lib.guarded([&] { self->bytes->write({from, n}); });
    }

    PngLib lib{PngLib::Way::write};
    std::unique_ptr<ByteSink> bytes;
    Shape form;
    Metadata beside;
    DepthTable depth{255, 255};
    Samples scaled;
};

} // namespace

std::unique_ptr<RowSink> createPng(std::unique_ptr<ByteSink> bytes) {
    return std::make_unique<PngSink>(std::move(bytes));
}

} // namespace codecs
