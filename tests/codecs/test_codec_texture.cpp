// DDS files from rows and back: bands against whole surfaces, levels against plain means, transparent texels.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/texture/texture.h"
#include "tests/codecs/support/pictures.h"
#include "zmxj.h"

using namespace codecs;
using texture::Format;

namespace {

struct Encoded {
    Bytes file;
    std::vector<std::string> lost;
};
Encoded encoded(const Picture& picture, const texture::EncodeOptions& options) {
    MemorySink file;
    PictureSource rows(picture);
    auto lost = texture::encode(rows, file, options);
    return {std::move(file.bytes), std::move(lost)};
}

Picture decoded(const Bytes& file, const texture::DecodeOptions& options = {}) {
    MemorySource source(file);
    PictureSink rows;
    texture::decode(source, texture::readHeader(source), rows, options);
    return std::move(rows.picture);
}

// A pixel of the next level as the mean of those that it stands for; an odd side leaves three to the last.
Picture halved(const Picture& in) {
    const int width = std::max(1, in.shape().width / 2), height = std::max(1, in.shape().height / 2);
    Picture out(shapeOf(width, height, 4));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 4; ++c) {
                const int x1 = x + 1 == width ? in.shape().width : 2 * x + 2,
                          y1 = y + 1 == height ? in.shape().height : 2 * y + 2;
                const unsigned n = unsigned((x1 - 2 * x) * (y1 - 2 * y));
                unsigned sum = n / 2;
                for (int v = 2 * y; v < y1; ++v)
                    for (int u = 2 * x; u < x1; ++u) sum += in.at(4 * u + c, v);
                out.set(4 * x + c, y, sum / n);
            }
    return out;
}

// All levels, each coded by one call of the library.
Bytes levelsOf(Picture rgba, int levels) {
    Bytes all;
    for (int i = 0; i < levels; ++i) {
        if (i > 0) rgba = halved(rgba);
        const Shape& s = rgba.shape();
        Bytes blocks(std::size_t((s.width + 3) / 4 * ((s.height + 3) / 4)) * 16);
        EXPECT_EQ(zmxiTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R(rgba.all().data(), Zmx32u(4 * s.width),
                                                               {s.width, s.height}, blocks.data()),
                  zmxStsNoErr);
        all.insert(all.end(), blocks.begin(), blocks.end());
    }
    return all;
}

// A DXT1 file of these blocks.
Bytes dxt1File(int width, int height, const Bytes& blocks) {
    texture::Texture t;
    t.width = width;
    t.height = height;
    Bytes file = texture::headerOf(t);
    file.insert(file.end(), blocks.begin(), blocks.end());
    return file;
}

} // namespace

TEST(Texture, BandsAreTheWholeSurface) {
    for (auto [width, height] : {std::pair{1, 1}, {4, 4}, {5, 3}, {17, 9}, {64, 64}, {101, 66}, {3, 1500}, {9000, 7}}) {
        SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
        const Picture rgba = noise(shapeOf(width, height, 4));
        for (bool chain : {false, true}) {
            const Bytes file = encoded(rgba, {Format::dxt5, chain}).file;
            const Bytes blocks(file.begin() + 128, file.end());
            EXPECT_EQ(blocks, levelsOf(rgba, chain ? texture::fullChain(width, height) : 1));
        }
        const Bytes file = encoded(rgba, {Format::dxt5, true}).file;
        for (int level = 0; level < texture::fullChain(width, height); ++level) {
            MemorySource source(file);
            const texture::Level place = texture::readHeader(source).level(0, level);
            Picture whole(shapeOf(place.width, place.height, 4));
            EXPECT_EQ(zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R(file.data() + 128 + place.offset, whole.all().data(),
                                                                 Zmx32u(4 * place.width), {place.width, place.height}),
                      zmxStsNoErr);
            expectSame(decoded(file, {0, level}), whole);
        }
    }
}

TEST(Texture, EveryKindOfPictureAsRgba) {
    const Picture grey = made(shapeOf(2, 1, 2), {7, 1, 8, 2});
    const auto blocks = [](const Picture& p) { return encoded(p, {Format::dxt5, false}).file; };
    EXPECT_EQ(blocks(grey), blocks(made(shapeOf(2, 1, 4), {7, 7, 7, 1, 8, 8, 8, 2})));
    EXPECT_EQ(blocks(made(shapeOf(2, 1, 1), {7, 8})), blocks(made(shapeOf(2, 1, 4), {7, 7, 7, 255, 8, 8, 8, 255})));
    EXPECT_EQ(blocks(made(shapeOf(1, 1, 3, 65535), {257, 514, 65535})), blocks(made(shapeOf(1, 1, 3), {1, 2, 255})));
}

TEST(Texture, InksAreRefusedWithTheWayOut) {
    EXPECT_EQ(errorOf([] {
                  encoded(noise(cmykShape(4, 4)), {Format::dxt5, false});
              }),
              "a texture is made of grey or RGB, not of CMYK; zmx image convert --rgb makes RGB of it");
    EXPECT_NE(errorOf([] { encoded(noise(shapeOf(4, 4, 3)), {Format::bc7, false}); }).find("BC7"), std::string::npos);
    EXPECT_NE(errorOf([] {
                  encoded(noise(shapeOf(32769, 1, 1)), {Format::dxt1, false});
              }).find("32768"),
              std::string::npos);
}

TEST(Texture, WhatIsLostIsSaid) {
    const Picture opaque = mapped(noise(shapeOf(8, 8, 4)), [](unsigned) { return 255u; });
    Picture hole = opaque;
    hole.set(4 * 7 + 3, 7, 254);
    for (Format format : {Format::dxt1, Format::ycocgDxt5}) {
        EXPECT_TRUE(encoded(opaque, {format, false}).lost.empty());
        EXPECT_EQ(
            encoded(hole, {format, false}).lost,
            std::vector<std::string>{texture::nameOf(format) + std::string(" is written without the alpha channel")});
    }
    EXPECT_TRUE(encoded(hole, {Format::dxt3, false}).lost.empty());
    hole.metadata.icc = {1};
    EXPECT_EQ(encoded(hole, {Format::dxt5, false}).lost,
              std::vector<std::string>{"a DDS file has no place for: colour profile"});
}

TEST(Texture, TransparentTexelsOfDxt1GiveAlpha) {
    // Red and blue; texel i has index i modulo 4.
    const Bytes four{0x00, 0xF8, 0x1F, 0x00, 0xE4, 0xE4, 0xE4, 0xE4},
        three{0x1F, 0x00, 0x00, 0xF8, 0xE4, 0xE4, 0xE4, 0xE4},
        noneOfThem{0x1F, 0x00, 0x00, 0xF8, 0x24, 0x24, 0x24, 0x24};
    const auto join = [](Bytes a, const Bytes& b) {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    };
    EXPECT_EQ(decoded(dxt1File(8, 4, join(four, noneOfThem))).shape(), shapeOf(8, 4, 3));
    const Picture some = decoded(dxt1File(7, 3, join(four, three)));
    ASSERT_EQ(some.shape(), shapeOf(7, 3, 4));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 7; ++x) {
            const bool clear = x == 7 || (x >= 4 && x % 4 == 3);
            EXPECT_EQ(some.at(4 * x + 3, y), clear ? 0u : 255u);
        }
    EXPECT_EQ(some.at(0, 0), 248u) << "the first colour of the first block";
    EXPECT_EQ(some.at(4 * 4 + 2, 0), 248u) << "and of the second";
    const Picture one = decoded(dxt1File(4, 4, three));
    for (int c = 0; c < 4; ++c) EXPECT_EQ(one.at(12 + c, 0), 0u) << "transparent black";
    // What we write of an opaque picture stays opaque, flat parts too.
    for (const Picture& p :
         {noise(shapeOf(64, 64, 3)), mapped(noise(shapeOf(16, 16, 3)), [](unsigned) { return 77u; })})
        EXPECT_EQ(decoded(encoded(p, {Format::dxt1, false}).file).shape().channels, 3);
}

TEST(Texture, LayersAndLevelsThatAreNotThere) {
    const Bytes file = encoded(noise(shapeOf(8, 8, 3)), {Format::dxt1, true}).file;
    EXPECT_EQ(errorOf([&] { decoded(file, {1, 0}); }), "layer 1 is not among its 1");
    EXPECT_EQ(errorOf([&] { decoded(file, {0, 4}); }), "level 4 is not among its 4");
    EXPECT_EQ(decoded(file, {0, 3}).shape(), shapeOf(1, 1, 3));
}
