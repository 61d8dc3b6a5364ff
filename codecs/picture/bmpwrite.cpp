// bmpwrite.cpp - BMP files: bitmaps, grey by a palette, RGB of 24 bits, and RGBA of 32 with a header that says so.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/bmp.h"
#include "codecs/picture/bytefile.h"
#include "codecs/picture/formats.h"
#include "codecs/picture/storedrows.h"

#include <algorithm>
#include <limits>

namespace codecs {
namespace {

class BmpSink final : public RowSink {
public:
    explicit BmpSink(std::unique_ptr<ByteSink> sink) : target(std::move(sink)) {}

    void begin(const Shape& shape, const Metadata& metadata) override {
        if (shape.colour != Colour::grey && shape.colour != Colour::rgb)
            throw Error("a BMP file is written of grey or RGB pictures");
        if (shape.colour == Colour::grey && shape.alpha)
            throw Error("a BMP file holds no grey with an alpha channel; write .png, .tif or .pam");
        form = shape;
        bits = shape.channels == 1 ? shape.maxval == 1 ? 1 : 8 : 8 * shape.channels;
        rowBytes = bmpRowBytes(shape.width, bits);
        depth = DepthTable(shape.maxval, bits == 1 ? 1 : 255);
        const Bytes head = header(metadata);
        pixels = head.size();
        if (pixels + rowBytes * unsigned(shape.height) > std::numeric_limits<std::uint32_t>::max())
            throw Error("a BMP file ends at 4 GiB");
        Metadata lost = metadata;
        lost.resolution.reset();
        told = depthChange(shape.maxval, depth.maxval(), "a BMP file");
        for (std::string& loss : lossOf(lost, "a BMP file")) told.push_back(std::move(loss));
        // The last row comes first. On a pipe the rows wait for that.
        if (!target->seekable()) spool = std::make_unique<SpooledSink>(*target);
        sink().write(head);
    }

    void write(const Band& band) override {
        block.resize(std::max(block.size(), std::size_t(rowBytes) * std::size_t(band.rows)));
        for (int y = 0; y < band.rows; ++y) pack(band.row(y), block.data() + rowBytes * std::size_t(band.rows - 1 - y));
        row += band.rows;
        sink().patch(pixels + rowBytes * unsigned(form.height - row),
                     {block.data(), std::size_t(rowBytes) * std::size_t(band.rows)});
    }

    void finish() override { sink().finish(); }

private:
    ByteSink& sink() { return spool ? *spool : *target; }

    Bytes header(const Metadata& metadata) const {
        const std::size_t info = form.alpha ? kBmpV4Header : kBmpInfoHeader,
                          colours = bits <= 8 ? std::size_t(1) << bits : 0;
        Bytes h(kBmpFileHeader + info + 4 * colours);
        const auto put = [&](std::size_t at, std::uint64_t v, std::size_t size = 4) {
            for (std::size_t i = 0; i < size; ++i) h[at + i] = std::uint8_t(v >> 8 * i);
        };
        h[0] = 'B';
        h[1] = 'M';
        put(kBmpFileSize, h.size() + rowBytes * unsigned(form.height));
        put(kBmpPixels, h.size());
        put(kBmpHeaderSize, info);
        put(kBmpWidth, unsigned(form.width));
        put(kBmpHeight, unsigned(form.height));
        put(kBmpPlanes, 1, 2);
        put(kBmpBits, unsigned(bits), 2);
        put(kBmpImageSize, rowBytes * unsigned(form.height));
        if (metadata.resolution && metadata.resolution->unit != Resolution::Unit::none) {
            const Resolution r = metadata.resolution->in(Resolution::Unit::metre);
            put(kBmpXPerMetre, std::uint64_t(r.x + 0.5));
            put(kBmpYPerMetre, std::uint64_t(r.y + 0.5));
        }
        put(kBmpColours, colours);
        for (std::size_t i = 0; i < colours; ++i)
            put(kBmpFileHeader + info + 4 * i, (i * 255 / (colours - 1)) * 0x10101);
        if (form.alpha) {
            put(kBmpCompression, kBmpBitfields);
            const std::uint32_t masks[] = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
            for (std::size_t i = 0; i < 4; ++i) put(kBmpMasks + 4 * i, masks[i]);
            put(kBmpColourSpace, kBmpSrgb);
        }
        return h;
    }

    void pack(const std::uint8_t* samples, std::uint8_t* to) {
        std::fill_n(to, rowBytes, std::uint8_t(0));
        if (bits == 1) return bytesToBits(samples, to, form.rowSamples(), 0);
        std::uint8_t* bytes = to;
        if (bits > 8) {
            scaled.resize(form.rowSamples());
            bytes = scaled.data();
        }
        depth.convert(samples, bytes, form.rowSamples());
        if (bits == 8) return;
        for (int x = 0; x < form.width; ++x, bytes += form.channels, to += form.channels) {
            to[0] = bytes[2];
            to[1] = bytes[1];
            to[2] = bytes[0];
            if (form.alpha) to[3] = bytes[3];
        }
    }

    std::unique_ptr<ByteSink> target, spool;
    Shape form;
    int bits = 0, row = 0;
    std::uint64_t rowBytes = 0, pixels = 0;
    DepthTable depth{255, 255};
    Samples scaled, block;
};

} // namespace

std::unique_ptr<RowSink> createBmp(std::unique_ptr<ByteSink> bytes) {
    return std::make_unique<BmpSink>(std::move(bytes));
}

} // namespace codecs
