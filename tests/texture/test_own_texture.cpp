// The routines for a single texture block and the steps of the BC7 decoder.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjdecdxt.h"
#include "pjdecdxt1.h"
#include "pjencdxt.h"
#include "tests/support/guarded.h"
#include "tests/texture/model/bc7.h"
#include "tests/texture/model/dxt.h"
#include "tests/texture/model/dxtencode.h"
#include "tests/texture/support/texture.h"

#include <algorithm>

using namespace zmx;

namespace {

using Bytes = std::vector<Zmx8u>;

Bytes bytesOf(const model::Texels& texels, int channels) {
    Bytes out;
    for (const model::Texel& t : texels)
        for (int c = 0; c < channels; ++c) out.push_back(t[c]);
    return out;
}

model::Texels texelsOf(const Bytes& pixels, int channels) {
    model::Texels out{};
    for (int n = 0; n < 16; ++n)
        for (int c = 0; c < channels; ++c) out[n][c] = pixels[std::size_t(channels * n + c)];
    return out;
}

void checkBlockDecoder(void (*decode)(const Zmx8u*, Zmx8u*), model::Texels (*model)(const Zmx8u*), int blockBytes) {
    Rng rng(0x71);
    for (int i = 0; i < 500; ++i) {
        Guarded<Zmx8u> block(rng.vec<Zmx8u>(std::size_t(blockBytes), 0, 255)), out(64);
        decode(block.data(), out.data());
        ASSERT_TRUE(sameBytes(bytesOf(model(block.data()), 4), out.copy()));
    }
}

TEST(TextureBlock, DecodersWriteSixtyFourDenseBytes) {
    checkBlockDecoder(decode_block_dxt1_rgba, model::decodeDxt1, 8);
    checkBlockDecoder(decode_block_dxt3_rgba, model::decodeDxt3, 16);
    checkBlockDecoder(decode_block_dxt5_rgba, model::decodeDxt5, 16);
}

void checkBlockEncoder(void (*encode)(const Zmx8u*, Zmx8u*), void (*model)(const model::Texels&, Zmx8u*),
                       int blockBytes) {
    Rng rng(0x73);
    for (int i = 0; i < 500; ++i) {
        Guarded<Zmx8u> pixels(variedPicture(rng, ZmxiSize{4, 4}, 4)),
            out(std::size_t(blockBytes), GuardedBlock::AtStart);
        Bytes expected(out.size());
        model(texelsOf(pixels.copy(), 4), expected.data());
        encode(pixels.data(), out.data());
        ASSERT_TRUE(sameBytes(expected, out.copy()));
    }
}

TEST(TextureBlock, EncodersReadSixtyFourBytes) {
    checkBlockEncoder(encode_block_rgba_dxt1, model::encodeDxt1, 8);
    checkBlockEncoder(encode_block_rgba_dxt3, model::encodeDxt3, 16);
    checkBlockEncoder(encode_block_rgba_dxt5, model::encodeDxt5, 16);
}

TEST(TextureBlock, YCoCgScalesItsPixelsInPlace) {
    Rng rng(0x74);
    for (int i = 0; i < 500; ++i) {
        const Bytes before = variedPicture(rng, ZmxiSize{4, 4}, 3);
        Guarded<Zmx8u> pixels(before), out(16);
        Bytes expected(16);
        model::encodeYCoCg(texelsOf(before, 3), expected.data());
        encode_block_ycocg_dxt5(pixels.data(), out.data());
        ASSERT_TRUE(sameBytes(expected, out.copy()));
        const int scale = (out[8] & 31) + 1;
        for (std::size_t n = 0; n < 16; ++n) {
            EXPECT_EQ(pixels[3 * n], before[3 * n]);
            EXPECT_EQ(pixels[3 * n + 1], scale * (before[3 * n + 1] - 128) + 128);
            EXPECT_EQ(pixels[3 * n + 2], scale * (before[3 * n + 2] - 128) + 128);
        }
    }
}

TEST(TextureBlock, Bc7ReturnsTheNextBlockAndLeavesGaps) {
    Rng rng(0x72);
    for (int i = 0; i < 500; ++i) {
        Guarded<Zmx8u> block(rng.vec<Zmx8u>(16, 0, 255));
        if (i % 10 == 0) block[0] = 0;
        const std::size_t step = 16 + std::size_t(i % 7);
        Guarded<Zmx8u> out(3 * step + 16);
        out.fill(0x77);
        EXPECT_EQ(decode_block_bc7_rgba(block.data(), out.data(), step), block.data() + 16);
        const Bytes expected = bytesOf(model::decodeBc7(block.data()), 4);
        for (std::size_t y = 0; y < 4; ++y) {
            ASSERT_TRUE(sameBytes(&expected[16 * y], &out[step * y], 16));
            for (std::size_t x = 16; y < 3 && x < step; ++x) ASSERT_EQ(out[step * y + x], 0x77);
        }
    }
}

TEST(Bc7Steps, ParseOfModes3And7LeavesTheFirstTwoIndexes) {
    // Partition 0, whose anchor is texel 15: the indexes of texels 2 to 14 are 1, 2, 3, 0 ..., the last is 1.
    Bytes block(16, 0);
    int at = 98 + 3; // behind the bits of texels 0 and 1
    for (int n = 2; n < 16; ++n) {
        for (int b = 0; b < (n == 15 ? 1 : 2); ++b, ++at) {
            const int index = n == 15 ? 1 : (n - 1) % 4;
            block[std::size_t(at / 8)] = Zmx8u(block[std::size_t(at / 8)] | (index >> b & 1) << at % 8);
        }
    }
    Zmx32u indexes[16];
    std::fill(indexes, indexes + 16, 99u);
    auxParseMode37(block.data(), indexes, 0);
    EXPECT_EQ(std::vector<Zmx32u>(indexes, indexes + 16),
              (std::vector<Zmx32u>{99, 99, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 1}));
}

TEST(Bc7Steps, MultiSubsetInterpolationDoesNotReadItsReservedArgument) {
    const Zmx32u r[4] = {0, 255, 10, 20}, g[4] = {255, 0, 0, 0}, b[4] = {7, 7, 8, 8}, a[4] = {0, 255, 255, 255};
    Zmx32u indexes[16], subsets[16];
    for (Zmx32u n = 0; n < 16; ++n) {
        indexes[n] = n % 4;
        subsets[n] = n / 8;
    }
    Bytes two(64), other(64);
    block_interpolate_multi_subsets_rgba(indexes, r, g, b, a, 2, subsets, two.data(), 16);
    block_interpolate_multi_subsets_rgba(indexes, r, g, b, a, -1, subsets, other.data(), 16);
    EXPECT_EQ(two, other);
    EXPECT_EQ(Bytes(two.begin(), two.begin() + 16),
              (Bytes{0, 255, 7, 0, 84, 171, 7, 84, 171, 84, 7, 171, 255, 0, 7, 255}));
    EXPECT_EQ(Bytes(two.begin() + 32, two.begin() + 48),
              (Bytes{10, 0, 8, 255, 13, 0, 8, 255, 17, 0, 8, 255, 20, 0, 8, 255}));
}

} // namespace
