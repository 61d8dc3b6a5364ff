// pngwrite.cpp - PNG files of 8 and 16 bits, and grey ones of 1, 2 and 4.
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

    void begin(const Shape& shape, const Metadata&) override {
        static const int kinds[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                    PNG_COLOR_TYPE_RGBA};
        if (shape.colour == Colour::cmyk) throw Error("a CMYK picture is written to a .tif or .pam file");
        if (shape.channels < 1 || shape.channels > 4 || shape.colour == Colour::other)
            throw Error("a PNG file has 1 to 4 channels");
        form = shape;
        const int bits = bitsFor(shape);
        depth = DepthTable(shape.maxval, (1 << bits) - 1);
        lib.run([&] {
            png_set_write_fn(lib.png, this, take, nullptr);
            png_set_IHDR(lib.png, lib.info, png_uint_32(shape.width), png_uint_32(shape.height), bits,
                         kinds[shape.channels - 1], PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                         PNG_FILTER_TYPE_DEFAULT);
            // Most of what compression can do, in a third of the time that the default takes.
            png_set_compression_level(lib.png, 3);
            png_write_info(lib.png, lib.info);
            if (bits < 8) png_set_packing(lib.png);
            if (bits == 16 && std::endian::native == std::endian::little) png_set_swap(lib.png);
        });
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
    static void take(png_structp png, png_bytep from, std::size_t n) {
        auto* self = static_cast<PngSink*>(png_get_io_ptr(png));
        self->lib.guarded([&] { self->bytes->write({from, n}); });
    }

    PngLib lib{PngLib::Way::write};
    std::unique_ptr<ByteSink> bytes;
    Shape form;
    DepthTable depth{255, 255};
    Samples scaled;
};

} // namespace

std::unique_ptr<RowSink> createPng(std::unique_ptr<ByteSink> bytes) {
    return std::make_unique<PngSink>(std::move(bytes));
}

} // namespace codecs
