// SPDX-License-Identifier: BSD-2-Clause
#include "tests/hostile/readers.h"

#include "codecs/jpeg/jpeg.h"
#include "codecs/jpeg2000/jpeg2000.h"
#include "codecs/jpeg2000/pgx.h"
#include "codecs/picture/files.h"
#include "codecs/picture/orientation.h"
#include "codecs/texture/texture.h"
#include "codecs/tiff/tiff.h"
#include "fuzz/support/mutator.h"

#include <algorithm>

namespace hostile {

namespace {

using namespace codecs;

// Rows that nobody keeps, so that what is measured is the reader.
class Nowhere final : public RowSink {
public:
    void begin(const Shape&, const Metadata&) override {}
    void write(const Band&) override {}
    void finish() override {}
};

void readJpeg(ByteView file, int way, std::uint64_t maxPixels) {
    MemorySource source(file);
    Nowhere rows;
    jpeg::DecodeOptions options;
    options.maxPixels = maxPixels;
    jpeg::TranscodeOptions anew;
    anew.maxPixels = maxPixels;
    switch (way) {
    case 0:
        jpeg::decode(source, rows, options);
        break;
    case 1:
        options.scale = 4;
        options.upsampling = jpeg::Upsampling::plain;
        jpeg::decode(source, rows, options);
        break;
    case 2:
        anew.turn = Turn::quarter;
        anew.trim = true;
        anew.progressive = true;
        jpeg::transcode(source, anew);
        break;
    default:
        jpeg::describe(source);
    }
}

void readJpeg2000(ByteView file, int way, std::uint64_t maxPixels) {
    jpeg2000::DecodeOptions options;
    options.maxPixels = maxPixels;
    options.threads = 1;
    if (way == 0) {
        MemorySource source(file);
        Nowhere rows;
        jpeg2000::decode(source, rows, options);
    } else if (way == 1) {
        options.window = jpeg2000::Window{3, 3, 9, 9};
        jpeg2000::decodePlanes(file, options);
    } else if (way == 2)
        jpeg2000::decodePlanes(file, options);
    else
        jpeg2000::describe(file);
}

void readTexture(ByteView file, int, std::uint64_t) {
    MemorySource source(file);
    const texture::Texture t = texture::readHeader(source);
    Nowhere rows;
    for (int i = 0; i < t.levels; ++i) texture::decode(source, t, rows, {t.layers - 1, i});
}

void readTiff(ByteView file, int, std::uint64_t maxPixels) {
    MemorySource source(file);
    Nowhere rows;
    tiff::decode(source, rows, maxPixels);
}

void readPicture(ByteView file, int way, std::uint64_t maxPixels) {
    Rows rows = openPicture(std::make_unique<MemorySource>(file), maxPixels);
    if (way == 1) rows = upright(std::move(rows));
    Nowhere to;
    copyRows(*rows, to);
}

void readPgx(ByteView file, int, std::uint64_t) { jpeg2000::readPgx(file); }

constexpr std::size_t kMiB = std::size_t(1) << 20;

} // namespace

const std::vector<Reader>& readers() {
    static const std::vector<Reader> all{
        {"jpeg", {32 * kMiB, 8, 32}, 4, readJpeg, fuzz::mutateJpeg},
        {"jpeg2000", {512 * kMiB, 2560, 40}, 4, readJpeg2000, fuzz::mutateJpeg2000},
        {"dds", {4 * kMiB, 16, 0}, 1, readTexture, nullptr},
        {"tiff", {16 * kMiB, 16, 704}, 1, readTiff, nullptr},
        {"picture", {16 * kMiB, 16, 704}, 2, readPicture, nullptr},
        {"pgx", {4 * kMiB, 16, 0}, 1, readPgx, nullptr},
    };
    return all;
}

} // namespace hostile
