// encode.cpp - rows of pixels to rows of blocks, and to the rows of the next smaller level.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/bytefile.h"
#include "codecs/picture/convert.h"
#include "codecs/texture/texture.h"
#include "codecs/texture/ycocg.h"
#include "zmxj.h"

#include <algorithm>

namespace codecs::texture {
namespace {

// The library refuses nothing that these arguments can be.
void check(ZmxStatus status) {
    if (status != zmxStsNoErr) throw std::logic_error("the texture library returned " + std::to_string(status));
}

// Pixels of R, G, B, A as blocks.
class BlockCoder {
public:
    BlockCoder(Format f, int pixels) : format(f), width(pixels) {}

    ByteView encode(const Band& band) {
        const ZmxiSize size{width, band.rows};
        const auto step = Zmx32u(band.step);
        blocks.resize(std::size_t((width + 3) / 4) * std::size_t((band.rows + 3) / 4) *
                      std::size_t(blockBytes(format)));
        switch (format) {
        case Format::dxt1:
            check(zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R(band.data, step, size, blocks.data()));
            break;
        case Format::dxt3:
            check(zmxiTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R(band.data, step, size, blocks.data()));
            break;
        case Format::dxt5:
            check(zmxiTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R(band.data, step, size, blocks.data()));
            break;
        case Format::ycocgDxt5:
            toYCoCg(band);
            check(zmxiTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R(ycocg.data(), Zmx32u(3 * width), size, blocks.data()));
            break;
        case Format::bc7:
            throw Error("BC7 textures can be read, not written");
        }
        return blocks;
    }

private:
    void toYCoCg(const Band& band) {
        ycocg.resize(3 * std::size_t(width) * std::size_t(band.rows));
        std::uint8_t* to = ycocg.data();
        for (int y = 0; y < band.rows; ++y) {
            const std::uint8_t* p = band.row(y);
            for (int x = 0; x < width; ++x, p += 4, to += 3) {
                const Triple t = texture::toYCoCg(p[0], p[1], p[2]);
                to[0] = t.a;
                to[1] = t.b;
                to[2] = t.c;
            }
        }
    }

    Format format;
    int width;
    Samples ycocg, blocks;
};

// One level: it codes the rows that it is given, and gives the next level every pair of them as one.
class LevelCoder {
public:
    LevelCoder(const Texture& texture, int index, ByteSink& sink)
        : place(texture.level(0, index)), at(texture.headerBytes + place.offset), sequential(texture.levels == 1),
          file(sink), coder(texture.format, place.width) {
        if (index + 1 < texture.levels) {
            next = std::make_unique<LevelCoder>(texture, index + 1, sink);
            sums.resize(4 * std::size_t(next->place.width));
        }
    }

    // Rows in groups of four, until the last.
    void add(const Band& band) {
        const ByteView blocks = coder.encode(band);
        if (sequential)
            file.write(blocks);
        else
            file.patch(at, blocks);
        at += blocks.size();
        for (int y = 0; y < band.rows && next; ++y) sum(band.row(y));
    }

private:
    // A pixel of the next level is the mean of those that it stands for; an odd side leaves three to the last.
    void sum(const std::uint8_t* row) {
        for (int x = 0; x < next->place.width; ++x) {
            const int from = 2 * x, to = x + 1 == next->place.width ? place.width : from + 2;
            for (int u = from; u < to; ++u)
                for (int c = 0; c < 4; ++c) sums[std::size_t(4 * x + c)] += row[4 * u + c];
        }
        ++summed;
        ++seen;
        const bool lastPair = made + 1 == next->place.height;
        if (seen == place.height || (summed == 2 && !lastPair)) emit();
    }

    void emit() {
        std::uint8_t* to = next->slot();
        for (int x = 0; x < next->place.width; ++x) {
            const int wide = x + 1 == next->place.width ? place.width - 2 * x : 2;
            const unsigned n = unsigned(wide * summed);
            for (std::size_t c = 0; c < 4; ++c) *to++ = std::uint8_t((sums[std::size_t(4 * x) + c] + n / 2) / n);
        }
        std::fill(sums.begin(), sums.end(), 0u);
        summed = 0;
        ++made;
        next->slotFilled();
    }

    // Rows that come one by one wait here for their block.
    std::uint8_t* slot() {
        const std::size_t size = 4 * std::size_t(place.width);
        waiting.resize(4 * size);
        return waiting.data() + size * std::size_t(waitingRows);
    }
    void slotFilled() {
        ++waitingRows;
        ++arrived;
        if (waitingRows < 4 && arrived < place.height) return;
        add({waiting.data(), 4 * std::ptrdiff_t(place.width), waitingRows});
        waitingRows = 0;
    }

    Level place;
    std::uint64_t at; // of the next blocks in the file
    bool sequential;
    ByteSink& file;
    BlockCoder coder;
    std::unique_ptr<LevelCoder> next;
    std::vector<std::uint32_t> sums;    // of the row of the next level
    int summed = 0, seen = 0, made = 0; // rows in them; rows so far; rows given on
    Samples waiting;
    int waitingRows = 0, arrived = 0;
};

bool isTransparent(const Band& band, int width) {
    std::uint8_t least = 255;
    for (int y = 0; y < band.rows; ++y)
        for (int x = 0; x < width; ++x) least = std::min(least, band.row(y)[4 * x + 3]);
    return least < 255;
}

} // namespace

std::vector<std::string> encode(RowSource& source, ByteSink& file, const EncodeOptions& options) {
    const Shape shape = source.shape();
    if (shape.colour == Colour::other) throw Error("a texture is made of grey or RGB, not of other channels");
    if (shape.colour == Colour::cmyk)
        throw Error("a texture is made of grey or RGB, not of CMYK; zmx image convert --rgb makes RGB of it");
    if (std::max(shape.width, shape.height) > kMaxSide)
        throw Error("a side of more than " + std::to_string(kMaxSide) + " pixels");
    Texture texture;
    texture.format = options.format;
    texture.width = shape.width;
    texture.height = shape.height;
    texture.levels = options.chain ? fullChain(shape.width, shape.height) : 1;
    const Bytes header = headerOf(texture);
    texture.headerBytes = std::uint32_t(header.size());

    // Levels are written side by side, each at its place.
    std::unique_ptr<SpooledSink> spool;
    if (options.chain && !file.seekable()) spool = std::make_unique<SpooledSink>(file);
    ByteSink& sink = spool ? *spool : file;
    sink.write(header);
    const bool losesAlpha = shape.alpha && (options.format == Format::dxt1 || options.format == Format::ycocgDxt5);
    std::vector<std::string> lost = lossOf(source.metadata(), "a DDS file");
    bool transparent = false;
    LevelCoder level(texture, 0, sink);
    const Rows rows = withAlpha(asRgb(withDepth(borrowed(source), 255)));
    for (int y = 0; y < shape.height;) {
        const Band band = rows->next(std::max(4, bandRows(rows->shape()) & ~3));
        transparent = transparent || (losesAlpha && isTransparent(band, shape.width));
        level.add(band);
        y += band.rows;
    }
    if (transparent) lost.push_back(std::string(nameOf(options.format)) + " is written without the alpha channel");
    sink.finish();
    return lost;
}

} // namespace codecs::texture
