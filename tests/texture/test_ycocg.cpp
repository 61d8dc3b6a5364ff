// The encoder of DXT5 blocks from YCoCg: worked blocks, and surfaces against the plain model.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/texture/model/dxtencode.h"
#include "tests/texture/support/texture.h"
#include "zmxj.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<Zmx8u>;

const TextureEncoder kYCoCg = {
    "YCoCg", zmxiTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R, model::encodeYCoCg, 16, 3, 0x673863481F91D9CC};

struct Pixel {
    int y, co, cg;
};

// The block of these pixels; the last one is repeated.
Bytes blockOf(const std::vector<Pixel>& pixels) {
    Bytes bytes;
    for (std::size_t n = 0; n < 16; ++n) {
        const Pixel& p = pixels[std::min(n, pixels.size() - 1)];
        for (int v : {p.y, p.co, p.cg}) bytes.push_back(Zmx8u(v));
    }
    return encoded(kYCoCg, bytes);
}
std::vector<Pixel> times(int n, Pixel p) { return std::vector<Pixel>(std::size_t(n), p); }
std::vector<Pixel> operator+(std::vector<Pixel> a, const std::vector<Pixel>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

int word(const Bytes& block, std::size_t at) { return block[at] | block[at + 1] << 8; }
int colour0(const Bytes& block) { return word(block, 8); }
int colour1(const Bytes& block) { return word(block, 10); }
Bytes alphaOf(const Bytes& block) { return Bytes(block.begin(), block.begin() + 8); }
Bytes indexesOf(const Bytes& block) { return Bytes(block.begin() + 12, block.end()); }

TEST(YCoCg, NeutralChroma) {
    // The bounds 128 and 128 become 127 and 128, which are widened to 123 and 132 (Co), 125 and 130 (Cg). The
    // middle colours are (129, 128) and (126, 126): both are nearer to (128, 128) than the end-points,
    // hence 3.
    EXPECT_EQ(blockOf({{50, 128, 128}}), (Bytes{50, 50, 0x49, 0x92, 0x24, 0x49, 0x92, 0x24, //
                                                0x03, 0x84, 0xE3, 0x7B, 0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(YCoCg, LowBoundOf0Wraps) {
    // All Co 0: the low bound is 255, above the high bound of 0; Cg is 125 and 130. Co 0 is below its middle,
    // Cg 128 is not: all texels differ, and the end-points of Cg change places.
    const Bytes block = blockOf({{7, 0, 128}});
    EXPECT_EQ(colour0(block), 0 << 11 | 125 >> 2 << 5);
    EXPECT_EQ(colour1(block), 31 << 11 | 130 >> 2 << 5);
    // All Cg 0 likewise, and the bounds of Cg change places once more.
    const Bytes other = blockOf({{7, 128, 0}});
    EXPECT_EQ(colour0(other), 132 >> 3 << 11 | 63 << 5);
    EXPECT_EQ(colour1(other), 123 >> 3 << 11 | 0 << 5);
}

TEST(YCoCg, LowBoundWrapsBelowARangeOf7) {
    // From 0 to 6 the sum is -1; from 0 to 7 it is 0.
    EXPECT_EQ(colour1(blockOf({{0, 0, 128}, {0, 6, 128}})) >> 11, 31);
    EXPECT_EQ(colour1(blockOf({{0, 0, 128}, {0, 7, 128}})) >> 11, 0);
    // From 1 to 1 it is 9, shifted 0.
    EXPECT_EQ(colour1(blockOf({{0, 1, 128}})) >> 11, 0);
}

TEST(YCoCg, ScaleStandsInBothBlueFields) {
    const auto scaleOf = [](Pixel p) {
        const Bytes block = blockOf({p, {0, 128, 128}});
        EXPECT_EQ(colour0(block) & 31, colour1(block) & 31);
        return (colour0(block) & 31) + 1;
    };
    EXPECT_EQ(scaleOf({0, 128, 128}), 4);
    EXPECT_EQ(scaleOf({0, 159, 128}), 4);
    EXPECT_EQ(scaleOf({0, 160, 128}), 2);
    EXPECT_EQ(scaleOf({0, 191, 128}), 2);
    EXPECT_EQ(scaleOf({0, 192, 128}), 1);
    EXPECT_EQ(scaleOf({0, 255, 128}), 1);
    EXPECT_EQ(scaleOf({0, 97, 128}), 4);
    EXPECT_EQ(scaleOf({0, 96, 128}), 2);
    EXPECT_EQ(scaleOf({0, 65, 128}), 2);
    EXPECT_EQ(scaleOf({0, 64, 128}), 1);
    EXPECT_EQ(scaleOf({0, 128, 97}), 4);
    EXPECT_EQ(scaleOf({0, 128, 96}), 2);
    EXPECT_EQ(scaleOf({0, 128, 160}), 2);
    EXPECT_EQ(scaleOf({0, 128, 64}), 1);
    EXPECT_EQ(scaleOf({0, 128, 192}), 1);
}

TEST(YCoCg, ChromaIsScaledAround128) {
    // Co from 97 to 159 is 4 and 252 at scale 4: 4 * 16 + 248 - 7 is 305, 252 * 16 - 241 is 3791: 19 and 236.
    const Bytes block = blockOf({{0, 97, 128}, {0, 159, 128}});
    EXPECT_EQ(colour1(block) >> 11, 19 >> 3);
    EXPECT_EQ(colour0(block) >> 11, 236 >> 3);
}

// Chroma at the four corners of the plane: 15 and 239 after the inset, widened to 8 and 239, 12 and 239.
const Pixel kLowLow = {0, 0, 0}, kHighHigh = {0, 255, 255}, kLowHigh = {0, 0, 255}, kHighLow = {0, 255, 0};

TEST(YCoCg, DiagonalIsSwappedAbove8) {
    const Bytes eight = blockOf(times(4, kLowLow) + times(4, kHighHigh) + times(4, kLowHigh) + times(4, kHighLow));
    EXPECT_EQ(colour0(eight), 29 << 11 | 59 << 5);
    EXPECT_EQ(colour1(eight), 1 << 11 | 3 << 5);
    const Bytes nine = blockOf(times(4, kLowLow) + times(3, kHighHigh) + times(4, kLowHigh) + times(5, kHighLow));
    EXPECT_EQ(colour0(nine), 29 << 11 | 3 << 5);
    EXPECT_EQ(colour1(nine), 1 << 11 | 59 << 5);
}

TEST(YCoCg, RepeatedPixelsCountForTheDiagonal) {
    // In a region of 2 by 4 the right column counts three times: 12 texels on the anti-diagonal.
    Bytes pixels;
    for (int y = 0; y < 4; ++y)
        for (const Pixel& p : {y % 2 ? kLowLow : kHighHigh, y % 2 ? kLowHigh : kHighLow})
            for (int v : {p.y, p.co, p.cg}) pixels.push_back(Zmx8u(v));
    Bytes block(16);
    ASSERT_EQ(kYCoCg.call(pixels.data(), 6, ZmxiSize{2, 4}, block.data()), zmxStsNoErr);
    EXPECT_EQ(colour0(block), 29 << 11 | 3 << 5);
    EXPECT_EQ(colour1(block), 1 << 11 | 59 << 5);
}

TEST(YCoCg, Index1DoesNotOccur) {
    // Palette: (239, 239), (8, 12), (162, 163), (85, 87). The texel nearest to colour 1 has index 0.
    const Bytes block = blockOf(times(1, kHighHigh) + times(1, kLowLow) + times(1, {0, 162, 163}) +
                                times(1, {0, 85, 87}) + times(4, kLowLow) + times(8, kHighHigh));
    EXPECT_EQ(indexesOf(block), (Bytes{0xE0, 0, 0, 0}));
    Rng rng(0x740);
    const ZmxiSize roi = {256, 256};
    const auto pixels = variedPicture(rng, roi, 3);
    Bytes blocks(blockBytesOf(kYCoCg, roi));
    ASSERT_EQ(kYCoCg.call(pixels.data(), 768, roi, blocks.data()), zmxStsNoErr);
    int seen[4] = {};
    for (std::size_t at = 0; at < blocks.size(); at += 16)
        for (int n = 0; n < 16; ++n) ++seen[blocks[at + 12 + std::size_t(n / 4)] >> 2 * (n % 4) & 3];
    EXPECT_EQ(seen[1], 0);
    EXPECT_GT(seen[0], 1000);
    EXPECT_GT(seen[2], 1000);
    EXPECT_GT(seen[3], 1000);
}

TEST(YCoCg, YHasExactBounds) {
    for (int y : {0, 1, 77, 254, 255})
        EXPECT_EQ(alphaOf(blockOf({{y, 3, 200}})), (Bytes{Zmx8u(y), Zmx8u(y), 0x49, 0x92, 0x24, 0x49, 0x92, 0x24}));
    // 255 and 0: h is 18, the thresholds 18, 236, 200, 163, 127, 90, 54; the indexes 0 0 2 2 3 3 4 4 and
    // 5 5 6 6 7 7 1 1.
    std::vector<Pixel> pixels;
    for (int y : {255, 237, 236, 201, 200, 164, 163, 128, 127, 91, 90, 55, 54, 19, 18, 0})
        pixels.push_back({y, 128, 128});
    EXPECT_EQ(alphaOf(blockOf(pixels)), (Bytes{255, 0, 0x80, 0xB4, 0x91, 0xAD, 0xFD, 0x27}));
}

TEST(YCoCg, OnePixelFillsItsBlock) {
    const Bytes pixel = {50, 128, 128};
    Bytes block(16);
    ASSERT_EQ(kYCoCg.call(pixel.data(), 3, ZmxiSize{1, 1}, block.data()), zmxStsNoErr);
    EXPECT_EQ(block, blockOf({{50, 128, 128}}));
}

TEST(YCoCg, EverySize) { checkEverySize(kYCoCg); }

TEST(YCoCg, Steps) {
    checkGreatStep(kYCoCg);
    checkStepOfOneRow(kYCoCg);
}

TEST(YCoCg, Arguments) { checkArguments(kYCoCg); }

TEST(YCoCg, EveryPairOfBounds) {
    for (const std::vector<int>& follow : {std::vector<int>{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 1, 1}, {0, 1, -1}})
        ASSERT_NO_FATAL_FAILURE(checkEveryPairOfBounds(kYCoCg, follow));
}

TEST(YCoCg, VariedPictures) {
    for (std::uint64_t seed = 0x742; seed < 0x754; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        const ZmxiSize roi = {int(rng.range(200, 260)), int(rng.range(100, 140))};
        ASSERT_NO_FATAL_FAILURE(checkEncoder(kYCoCg, variedPicture(rng, roi, 3), roi, Zmx32u(3 * roi.width)));
    }
}

TEST(YCoCg, Digest) { EXPECT_EQ(digestOf(kYCoCg), kYCoCg.digest); }

} // namespace
