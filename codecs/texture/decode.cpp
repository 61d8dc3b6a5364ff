// decode.cpp - rows of blocks to rows of pixels.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/storedrows.h"
#include "codecs/texture/texture.h"
#include "codecs/texture/ycocg.h"
#include "zmxj.h"

#include <algorithm>
#include <cstring>

namespace codecs::texture {
namespace {

void decodeBlocks(const Zmx8u* blocks, Format format, Zmx8u* to, ZmxiSize size) {
    const Zmx32u step = Zmx32u(4 * size.width);
    ZmxStatus status = zmxStsNoErr;
    switch (format) {
    case Format::dxt1:
        status = zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R(blocks, to, step, size);
        break;
    case Format::dxt3:
        status = zmxiTextureDecodeBlockToRGBA_DXT3_8u_C1C4R(blocks, to, step, size);
        break;
    case Format::dxt5:
    case Format::ycocgDxt5:
        status = zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R(blocks, to, step, size);
        break;
    case Format::bc7:
        status = zmxiTextureDecodeBlockToRGBA_BC7_8u_C1C4R(blocks, to, step, size);
        break;
    }
    // The library refuses nothing that these arguments can be.
    if (status != zmxStsNoErr) throw std::logic_error("the texture library returned " + std::to_string(status));
}

std::uint32_t wordAt(const std::uint8_t* p, int bytes) {
    std::uint32_t v = 0;
    for (int i = bytes; i-- > 0;) v = v << 8 | p[i];
    return v;
}

// A bit pair of 3 stands for a transparent texel where the first colour of a DXT1 block is not the greater one. Returns
// the low bits of these pairs.
std::uint32_t transparentTexels(const std::uint8_t* block) {
    if (wordAt(block, 2) > wordAt(block + 2, 2)) return 0;
    const std::uint32_t indexes = wordAt(block + 4, 4);
    return indexes & indexes >> 1 & 0x55555555;
}

bool hasTransparentTexels(ByteSource& file, std::uint64_t at, std::uint64_t size) {
    Samples piece(std::size_t(1) << 16);
    for (std::uint64_t done = 0; done < size;) {
        const auto n = std::size_t(std::min<std::uint64_t>(piece.size(), size - done));
        if (file.readAt(at + done, {piece.data(), n}) < n) throw Error("the file ends too early");
        std::uint32_t any = 0;
        for (std::size_t i = 0; i < n; i += 8) any |= transparentTexels(piece.data() + i);
        if (any) return true;
        done += n;
    }
    return false;
}

// The library takes such texels for white ones; the format wants transparent black.
void clearTransparent(const std::uint8_t* blocks, std::uint8_t* pixels, int width, int rows) {
    for (int y = 0; y < rows; y += 4)
        for (int x = 0; x < width; x += 4, blocks += 8) {
            const std::uint32_t texels = transparentTexels(blocks);
            for (int i = 0; i < 16 && texels; ++i)
                if (const int u = x + i % 4, v = y + i / 4; texels >> 2 * i & 1 && u < width && v < rows)
                    std::memset(pixels + 4 * (std::ptrdiff_t(v) * width + u), 0, 4);
        }
}

// R, G, B, A to R, G, B, in place.
void dropAlpha(std::uint8_t* pixels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        pixels[3 * i] = pixels[4 * i];
        pixels[3 * i + 1] = pixels[4 * i + 1];
        pixels[3 * i + 2] = pixels[4 * i + 2];
    }
}
void toRgbInPlace(std::uint8_t* pixels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* p = pixels + 4 * i;
        const Triple rgb = toRgb(p[0], p[1], p[2], p[3]);
        pixels[3 * i] = rgb.a;
        pixels[3 * i + 1] = rgb.b;
        pixels[3 * i + 2] = rgb.c;
    }
}

} // namespace

void decode(ByteSource& file, const Texture& texture, RowSink& rows, const DecodeOptions& options) {
    const auto among = [](const char* what, int which, int count) {
        if (which < 0 || which >= count)
            throw Error(what + std::to_string(which) + " is not among its " + std::to_string(count));
    };
    among("layer ", options.layer, texture.layers);
    among("level ", options.level, texture.levels);
    const Level place = texture.level(options.layer, options.level);
    const std::uint64_t start = texture.headerBytes + place.offset;
    const bool dxt1 = texture.format == Format::dxt1, ycocg = texture.format == Format::ycocgDxt5;
    const bool transparent = dxt1 && hasTransparentTexels(file, start, place.size);
    const int channels = ycocg || (dxt1 && !transparent) ? 3 : 4;
    rows.begin(shapeOf(place.width, place.height, channels), {});

    const auto rowBytes = std::size_t((place.width + 3) / 4) * std::size_t(blockBytes(texture.format));
    const int most = std::max(4, bandRows(shapeOf(place.width, place.height, 4)) & ~3);
    Samples blocks(rowBytes * std::size_t(most / 4)), pixels(4 * std::size_t(place.width) * std::size_t(most));
    std::uint64_t at = start;
    for (int y = 0; y < place.height;) {
        const int n = std::min(most, place.height - y);
        const std::size_t size = rowBytes * std::size_t((n + 3) / 4);
        if (file.readAt(at, {blocks.data(), size}) < size) throw Error("the file ends too early");
        decodeBlocks(blocks.data(), texture.format, pixels.data(), {place.width, n});
        const std::size_t count = std::size_t(place.width) * std::size_t(n);
        if (ycocg)
            toRgbInPlace(pixels.data(), count);
        else if (transparent)
            clearTransparent(blocks.data(), pixels.data(), place.width, n);
        else if (dxt1)
            dropAlpha(pixels.data(), count);
        rows.write({pixels.data(), std::ptrdiff_t(channels) * place.width, n});
        at += size;
        y += n;
    }
    rows.finish();
}

} // namespace codecs::texture
