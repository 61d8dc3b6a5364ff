// raw.cpp - headerless pictures in and out.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/raw.h"

#include "codecs/picture/storedrows.h"

#include <algorithm>

namespace codecs {
namespace {

int channelsOf(RawFormat format) { return format == RawFormat::gray ? 1 : format == RawFormat::cmyk ? 4 : 3; }

// The bytes of rows, and nothing else.
class ByteRows final : public RowSink {
public:
    explicit ByteRows(std::unique_ptr<ByteSink> sink) : bytes(std::move(sink)) {}
    void begin(const Shape& shape, const Metadata&) override { size = shape.rowBytes(); }
    void write(const Band& band) override {
        for (int y = 0; y < band.rows; ++y) bytes->write({band.row(y), size});
    }
    void finish() override { bytes->finish(); }

private:
    std::unique_ptr<ByteSink> bytes;
    std::size_t size = 0;
};

Rows asRaw(Rows rows, RawFormat format) {
    if ((rows->shape().colour == Colour::cmyk) != (format == RawFormat::cmyk))
        throw Error("cmyk is for CMYK pictures, and they have no other raw format");
    rows = withoutAlpha(std::move(rows));
    if (format == RawFormat::gray) rows = asGrey(std::move(rows));
    rows = withDepth(std::move(rows), 255);
    if (format == RawFormat::rgb || format == RawFormat::bgr) rows = asRgb(std::move(rows));
    return format == RawFormat::bgr ? withRedAndBlueExchanged(std::move(rows)) : std::move(rows);
}

} // namespace

Rows openRaw(std::unique_ptr<ByteSource> bytes, int width, int height, RawFormat format) {
    checkSize(unsigned(std::max(width, 0)), unsigned(std::max(height, 0)), INT64_MAX);
    Shape shape = shapeOf(width, height, channelsOf(format));
    if (format == RawFormat::cmyk) {
        shape.colour = Colour::cmyk;
        shape.alpha = false;
    }
    const std::uint64_t size = std::uint64_t(shape.rowBytes()) * unsigned(height);
    if (!bytes->isPipe() && bytes->size() != size)
        throw Error(std::to_string(bytes->size()) + " bytes, but the picture has " + std::to_string(size));
    Rows rows = storedRows(std::move(bytes), shape, shape.rowBytes(), {}, true);
    return format == RawFormat::bgr ? withRedAndBlueExchanged(std::move(rows)) : std::move(rows);
}

std::unique_ptr<RowSink> createRaw(std::unique_ptr<ByteSink> bytes, RawFormat format) {
    return changedBefore(std::make_unique<ByteRows>(std::move(bytes)),
                         [format](Rows rows) { return asRaw(std::move(rows), format); });
}

} // namespace codecs
