// pngread.cpp - PNG files, a row at a time; interlaced ones as a whole.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/formats.h"
#include "codecs/picture/pnglib.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace codecs {
namespace {

class PngRows final : public RowSource {
public:
    PngRows(std::unique_ptr<ByteSource> source, std::uint64_t maxPixels) : bytes(std::move(source)) {
        readHeader(maxPixels);
        setTransforms();
        readShape();
        readMetadata();
    }

    Band next(int rows) override {
        const int n = std::min(rows, form.height - row);
        const std::size_t size = form.rowBytes();
        if (interlaced && all.empty()) readAll();
        std::uint8_t* first = all.data() + (interlaced ? size * std::size_t(row) : 0);
        if (!interlaced) {
            all.resize(std::max(all.size(), size * std::size_t(n)));
            first = all.data();
            lib.run([&] {
                for (int y = 0; y < n; ++y) png_read_row(lib.png, first + size * std::size_t(y), nullptr);
            });
        }
        row += n;
        if (n > 0 && row == form.height) lib.run([&] { png_read_end(lib.png, nullptr); });
        return {first, std::ptrdiff_t(size), n};
    }

private:
    static void give(png_structp png, png_bytep to, std::size_t n) {
        auto* self = static_cast<PngRows*>(png_get_io_ptr(png));
        self->lib.guarded([&] {
            const ByteView there = self->bytes->view(n);
            if (there.size() < n) throw Error("PNG: the file ends too early");
            std::memcpy(to, there.data(), n);
            self->bytes->skip(n);
        });
    }

    void readHeader(std::uint64_t maxPixels) {
        png_uint_32 width = 0, height = 0;
        lib.run([&] {
            png_set_user_limits(lib.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
            png_set_read_fn(lib.png, this, give);
            png_read_info(lib.png, lib.info);
            width = png_get_image_width(lib.png, lib.info);
            height = png_get_image_height(lib.png, lib.info);
        });
        try {
            checkSize(width, height, maxPixels);
        } catch (const Error& e) {
            throw Error(std::string("PNG: ") + e.what());
        }
        form.width = int(width);
        form.height = int(height);
    }

    // Palettes become colours and transparency a channel. Grey of few bits keeps them, a byte a sample, unless it has
    // transparency, which is of 8 bits.
    void setTransforms() {
        lib.run([&] {
            const int depth = png_get_bit_depth(lib.png, lib.info), type = png_get_color_type(lib.png, lib.info);
            const bool transparent = png_get_valid(lib.png, lib.info, PNG_INFO_tRNS);
            if (type == PNG_COLOR_TYPE_GRAY && depth < 8 && !transparent) {
                form.maxval = (1 << depth) - 1;
                png_set_packing(lib.png);
            } else {
                form.maxval = depth == 16 ? 65535 : 255;
                png_set_expand(lib.png);
            }
            if (depth == 16 && std::endian::native == std::endian::little) png_set_swap(lib.png);
            interlaced = png_set_interlace_handling(lib.png) > 1;
            png_read_update_info(lib.png, lib.info);
        });
    }

    // Values of libpng's, which live as long as it does.
    void readMetadata() {
        png_charp name = nullptr;
        png_bytep icc = nullptr, exif = nullptr;
        png_textp texts = nullptr;
        png_uint_32 iccBytes = 0, exifBytes = 0, x = 0, y = 0;
        int method = 0, count = 0, unit = 0;
        lib.run([&] {
            png_get_iCCP(lib.png, lib.info, &name, &method, &icc, &iccBytes);
            png_get_eXIf_1(lib.png, lib.info, &exifBytes, &exif);
            png_get_text(lib.png, lib.info, &texts, &count);
            png_get_pHYs(lib.png, lib.info, &x, &y, &unit);
        });
        if (icc)
            beside.icc.assign(icc, icc + iccBytes);
        else if (*lib.profileTrouble)
            told.emplace_back(std::string("PNG: the colour profile is left out: ") + lib.profileTrouble);
        if (exif) beside.exif.assign(exif, exif + exifBytes);
        for (const png_text& t : std::span(texts, std::size_t(count)))
            if (std::strcmp(t.key, kPngXmpKeyword) == 0 && t.text)
                beside.xmp.assign(t.text, t.text + std::max(t.text_length, t.itxt_length));
        if (x > 0 && y > 0)
            beside.resolution = {double(x), double(y),
                                 unit == PNG_RESOLUTION_METER ? Resolution::Unit::metre : Resolution::Unit::none};
    }

    void readShape() { form = shapeOf(form.width, form.height, png_get_channels(lib.png, lib.info), form.maxval); }

    void readAll() {
        const std::size_t size = form.rowBytes();
        all.resize(size * std::size_t(form.height));
        std::vector<png_bytep> rows(std::size_t(form.height));
        for (std::size_t y = 0; y < rows.size(); ++y) rows[y] = all.data() + size * y;
        lib.run([&] { png_read_image(lib.png, rows.data()); });
    }

    PngLib lib{PngLib::Way::read};
    std::unique_ptr<ByteSource> bytes;
    bool interlaced = false;
    Samples all; // of an interlaced file; else the last band
    int row = 0;
};

} // namespace

Rows openPng(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels) {
    return std::make_unique<PngRows>(std::move(bytes), maxPixels);
}

} // namespace codecs
