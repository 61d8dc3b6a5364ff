// The encoders of DXT1, DXT3 and DXT5 blocks from RGBA: worked blocks, and surfaces against the plain model.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/texture/model/dxtencode.h"
#include "tests/texture/support/texture.h"
#include "zmxj.h"

#include <array>
#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<Zmx8u>;

const TextureEncoder kDxt1 = {"DXT1",           zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R, model::encodeDxt1, 8, 4,
                              0xF3E99DE718EB4FE};
const TextureEncoder kDxt3 = {
    "DXT3", zmxiTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R, model::encodeDxt3, 16, 4, 0xAD916E8FAD743246};
const TextureEncoder kDxt5 = {
    "DXT5", zmxiTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R, model::encodeDxt5, 16, 4, 0x50A556CA8725E0FB};
const TextureEncoder kAll[] = {kDxt1, kDxt3, kDxt5};

using Pixel = std::array<int, 4>;

Bytes sixteenTimes(Pixel p) {
    Bytes out;
    for (int n = 0; n < 16; ++n)
        for (int v : p) out.push_back(Zmx8u(v));
    return out;
}
Bytes greys(std::initializer_list<int> values) {
    Bytes out;
    for (int v : values) out.insert(out.end(), {Zmx8u(v), Zmx8u(v), Zmx8u(v), 255});
    EXPECT_EQ(out.size(), 64u);
    return out;
}
Bytes alphas(std::initializer_list<int> values) {
    Bytes out;
    for (int v : values) out.insert(out.end(), {0, 0, 0, Zmx8u(v)});
    EXPECT_EQ(out.size(), 64u);
    return out;
}
Bytes firstHalf(const Bytes& block) { return Bytes(block.begin(), block.begin() + 8); }
Bytes secondHalf(const Bytes& block) { return Bytes(block.begin() + 8, block.end()); }

TEST(DxtColours, ConstantBlock) {
    // 10 >> 3 is 1, 20 >> 2 is 5, 30 >> 3 is 3.
    const Bytes expected = {0xA3, 0x08, 0xA3, 0x08, 0, 0, 0, 0};
    EXPECT_EQ(encoded(kDxt1, sixteenTimes({10, 20, 30, 40})), expected);
    EXPECT_EQ(secondHalf(encoded(kDxt3, sixteenTimes({10, 20, 30, 40}))), expected);
    EXPECT_EQ(secondHalf(encoded(kDxt5, sixteenTimes({10, 20, 30, 40}))), expected);
    // The decoder sees three colours, and index 0 is the colour all the same.
    Bytes pixels(64);
    ASSERT_EQ(zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R(expected.data(), pixels.data(), 16, ZmxiSize{4, 4}),
              zmxStsNoErr);
    EXPECT_EQ(pixels, sixteenTimes({8, 20, 24, 255}));
}

TEST(DxtColours, BoxIsDrawnInByASixteenth) {
    // From 0 and 255 to 15 and 240: fields 1, 3, 1 and 30, 60, 30. The palette is 247 243 247, 8 12 8, 167
    // 166 167 and 87 89 87.
    const Bytes pixels = greys({255, 0, 167, 87, 240, 15, 207, 208, 47, 48, 127, 126, 128, 200, 100, 60});
    // Indexes 0 1 2 3, 0 1 0 0, 1 1 3 3, 2 2 3 3. Grey 127 lies 40 + 39 + 40 off entry 2 and 40 + 38 + 40 off
    // entry 3; 128 is nearer to entry 2. 207 is nearer to colour 0, by 40 + 36 + 40 to 40 + 41 + 40.
    EXPECT_EQ(encoded(kDxt1, pixels), (Bytes{0x9E, 0xF7, 0x61, 0x08, 0xE4, 0x04, 0xF5, 0xFA}));
}

TEST(DxtColours, RangeBelow16IsNotDrawnIn) {
    // Red from 100 to 115: fields 12 and 14. From 100 to 116 the inset is 1: 101 and 115, the same fields; so
    // from 103 to 119 it is 104 and 118, fields 13 and 14, where 103 alone would be 12.
    Bytes pixels = sixteenTimes({100, 0, 0, 0});
    pixels[0] = 115;
    EXPECT_EQ(encoded(kDxt1, pixels)[1], 14 << 3);
    EXPECT_EQ(encoded(kDxt1, pixels)[3], 12 << 3);
    pixels = sixteenTimes({103, 0, 0, 0});
    pixels[0] = 118;
    EXPECT_EQ(encoded(kDxt1, pixels)[3], 12 << 3);
    pixels[0] = 119;
    EXPECT_EQ(encoded(kDxt1, pixels)[3], 13 << 3);
    // The high end: from 105 to 120 it stays 120, from 104 to 120 it becomes 119.
    pixels = sixteenTimes({105, 0, 0, 0});
    pixels[0] = 120;
    EXPECT_EQ(encoded(kDxt1, pixels)[1], 15 << 3);
    pixels[4] = 104;
    EXPECT_EQ(encoded(kDxt1, pixels)[1], 14 << 3);
}

TEST(DxtColours, ChannelsHaveTheirOwnFields) {
    Bytes pixels = sixteenTimes({255, 0, 0, 0});
    EXPECT_EQ(firstHalf(encoded(kDxt1, pixels)), (Bytes{0x00, 0xF8, 0x00, 0xF8, 0, 0, 0, 0}));
    pixels = sixteenTimes({0, 255, 0, 0});
    EXPECT_EQ(firstHalf(encoded(kDxt1, pixels)), (Bytes{0xE0, 0x07, 0xE0, 0x07, 0, 0, 0, 0}));
    pixels = sixteenTimes({0, 0, 255, 0});
    EXPECT_EQ(firstHalf(encoded(kDxt1, pixels)), (Bytes{0x1F, 0x00, 0x1F, 0x00, 0, 0, 0, 0}));
}

TEST(DxtColours, TieGoesToTheLowerIndex) {
    // Red from 0 to 8: fields 0 and 1, palette 0 and 8, 5 and 2. Red 1 lies 1 off entries 1 and 3: index 1.
    // Green from 0 to 8: fields 0 and 2, palette 8, 0, 5, 2 as well.
    Bytes pixels = sixteenTimes({0, 0, 0, 0});
    pixels[0] = 8;
    pixels[4] = 1;
    pixels[8] = 2;
    pixels[12] = 5;
    pixels[16] = 6;
    pixels[20] = 7;
    //  8 is 0, 1 is 1 (a tie), 2 is 3, 5 is 2; 6 is 2, 7 is 0; then 0 is 1
    EXPECT_EQ(encoded(kDxt1, pixels), (Bytes{0x00, 0x08, 0x00, 0x00, 0xB4, 0x52, 0x55, 0x55}));
}

TEST(DxtColours, AlphaHasNoPart) {
    Bytes seen = greys({255, 0, 167, 87, 240, 15, 207, 208, 47, 48, 127, 126, 128, 200, 100, 60}), unseen = seen;
    for (std::size_t i = 3; i < 64; i += 4) unseen[i] = Zmx8u(i % 8 == 3 ? 0 : i);
    EXPECT_EQ(encoded(kDxt1, seen), encoded(kDxt1, unseen));
    EXPECT_EQ(secondHalf(encoded(kDxt3, seen)), secondHalf(encoded(kDxt3, unseen)));
    EXPECT_EQ(secondHalf(encoded(kDxt5, seen)), secondHalf(encoded(kDxt5, unseen)));
}

TEST(Dxt3Alpha, IsTheTopNibble) {
    EXPECT_EQ(
        firstHalf(encoded(kDxt3, alphas({0, 31, 32, 63, 64, 95, 96, 127, 128, 159, 160, 191, 192, 223, 239, 255}))),
        (Bytes{0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE}));
    // 255 comes back as 240.
    const Bytes block = encoded(kDxt3, sixteenTimes({0, 0, 0, 255}));
    EXPECT_EQ(firstHalf(block), Bytes(8, 0xFF));
    Bytes pixels(64);
    ASSERT_EQ(zmxiTextureDecodeBlockToRGBA_DXT3_8u_C1C4R(block.data(), pixels.data(), 16, ZmxiSize{4, 4}), zmxStsNoErr);
    EXPECT_EQ(pixels, sixteenTimes({0, 0, 0, 240}));
}

TEST(Dxt5Alpha, ConstantAlphaHasIndex1Throughout) {
    for (int a : {0, 1, 77, 254, 255})
        EXPECT_EQ(firstHalf(encoded(kDxt5, sixteenTimes({9, 9, 9, a}))),
                  (Bytes{Zmx8u(a), Zmx8u(a), 0x49, 0x92, 0x24, 0x49, 0x92, 0x24}));
}

TEST(Dxt5Alpha, SevenThresholds) {
    // From 0 and 255 to 15 and 240, h is 16: thresholds 31, 223, 191, 159, 127, 95, 63.
    // Indexes 0 0 2 2 3 3 4 4 and 5 5 6 6 7 7 1 1, from the lowest bit up.
    EXPECT_EQ(
        firstHalf(encoded(kDxt5, alphas({255, 224, 223, 192, 191, 160, 159, 128, 127, 96, 95, 64, 63, 32, 31, 0}))),
        (Bytes{240, 15, 0x80, 0xB4, 0x91, 0xAD, 0xFD, 0x27}));
}

TEST(Dxt5Alpha, RangeBelow16IsNotDrawnIn) {
    Bytes pixels = sixteenTimes({0, 0, 0, 100});
    pixels[3] = 115;
    EXPECT_EQ(encoded(kDxt5, pixels)[0], 115);
    EXPECT_EQ(encoded(kDxt5, pixels)[1], 100);
    pixels[3] = 116;
    EXPECT_EQ(encoded(kDxt5, pixels)[0], 115);
    EXPECT_EQ(encoded(kDxt5, pixels)[1], 101);
}

TEST(DxtEncode, OnePixelFillsItsBlock) {
    const Bytes pixel = {10, 20, 30, 40};
    Bytes block(8);
    ASSERT_EQ(kDxt1.call(pixel.data(), 4, ZmxiSize{1, 1}, block.data()), zmxStsNoErr);
    EXPECT_EQ(block, (Bytes{0xA3, 0x08, 0xA3, 0x08, 0, 0, 0, 0}));
    block.resize(16);
    ASSERT_EQ(kDxt5.call(pixel.data(), 4, ZmxiSize{1, 1}, block.data()), zmxStsNoErr);
    EXPECT_EQ(block, (Bytes{40, 40, 0x49, 0x92, 0x24, 0x49, 0x92, 0x24, 0xA3, 0x08, 0xA3, 0x08, 0, 0, 0, 0}));
}

TEST(DxtEncode, FiveByFivePixelsFillFourBlocks) {
    // Alpha tells the place: 16 y in column 4, 16 x in row 4, and 255 at the corner.
    Bytes pixels(100);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 5; ++x)
            pixels[std::size_t(20 * y + 4 * x + 3)] = Zmx8u(x == 4 && y == 4 ? 255
                                                            : x == 4         ? 16 * y
                                                            : y == 4         ? 16 * x
                                                                             : 80);
    Bytes blocks(64);
    ASSERT_EQ(kDxt3.call(pixels.data(), 20, ZmxiSize{5, 5}, blocks.data()), zmxStsNoErr);
    const Bytes black(8, 0), expected[] = {Bytes(8, 0x55),                                   //
                                           {0x00, 0x00, 0x11, 0x11, 0x22, 0x22, 0x33, 0x33}, // column 4
                                           {0x10, 0x32, 0x10, 0x32, 0x10, 0x32, 0x10, 0x32}, // row 4
                                           Bytes(8, 0xFF)};
    for (int i = 0; i < 4; ++i) {
        const Bytes block(blocks.begin() + 16 * i, blocks.begin() + 16 * i + 16);
        EXPECT_EQ(firstHalf(block), expected[i]) << i;
        EXPECT_EQ(secondHalf(block), black) << i;
    }
}

TEST(DxtEncode, EverySize) {
    for (const TextureEncoder& f : kAll) checkEverySize(f);
}

TEST(DxtEncode, Steps) {
    for (const TextureEncoder& f : kAll) {
        checkGreatStep(f);
        checkStepOfOneRow(f);
    }
}

TEST(DxtEncode, Arguments) {
    for (const TextureEncoder& f : kAll) checkArguments(f);
}

TEST(DxtEncode, EveryPairOfBounds) {
    for (const std::vector<int>& follow :
         {std::vector<int>{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {1, 1, 1, 0}, {1, -1, 1, 0}})
        ASSERT_NO_FATAL_FAILURE(checkEveryPairOfBounds(kDxt1, follow));
    ASSERT_NO_FATAL_FAILURE(checkEveryPairOfBounds(kDxt5, {0, 0, 0, 1}));
}

TEST(DxtEncode, VariedPictures) {
    for (std::uint64_t seed = 0x732; seed < 0x738; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        for (const TextureEncoder& f : kAll) {
            const ZmxiSize roi = {int(rng.range(200, 260)), int(rng.range(100, 140))};
            ASSERT_NO_FATAL_FAILURE(checkEncoder(f, variedPicture(rng, roi, 4), roi, Zmx32u(4 * roi.width)));
        }
    }
}

TEST(DxtEncode, Digests) {
    for (const TextureEncoder& f : kAll) EXPECT_EQ(digestOf(f), f.digest) << f.name;
}

} // namespace
