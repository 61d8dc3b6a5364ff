// The decoders of DXT1, DXT3 and DXT5 blocks: worked blocks, and surfaces against the plain model.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/texture/model/dxt.h"
#include "tests/texture/support/texture.h"
#include "zmxj.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<Zmx8u>;

const TextureDecoder kDxt1 = {"DXT1", zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R, model::decodeDxt1, 8,
                              0xBF8CD0731928F0D1};
const TextureDecoder kDxt3 = {"DXT3", zmxiTextureDecodeBlockToRGBA_DXT3_8u_C1C4R, model::decodeDxt3, 16,
                              0x55A5125806590336};
const TextureDecoder kDxt5 = {"DXT5", zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R, model::decodeDxt5, 16,
                              0x3AC99009CED7C937};
const TextureDecoder kAll[] = {kDxt1, kDxt3, kDxt5};

// Two colours and the indexes 0, 1, 2, 3 in every row.
Bytes colours(int c0, int c1) {
    return {Zmx8u(c0 & 255), Zmx8u(c0 >> 8), Zmx8u(c1 & 255), Zmx8u(c1 >> 8), 0xE4, 0xE4, 0xE4, 0xE4};
}
Bytes withAlpha(Bytes alpha, const Bytes& colour) {
    alpha.insert(alpha.end(), colour.begin(), colour.end());
    return alpha;
}
const Bytes kNoAlpha(8, 0);

Bytes texel(const Bytes& pixels, int n) { return Bytes(pixels.begin() + 4 * n, pixels.begin() + 4 * n + 4); }

// The pixels of a block whose four rows are this one.
Bytes fourTimes(const Bytes& row) {
    Bytes out;
    for (int i = 0; i < 4; ++i) out.insert(out.end(), row.begin(), row.end());
    return out;
}

TEST(Dxt1, WidensByShiftsAlone) {
    EXPECT_EQ(texel(decoded(kDxt1, {0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}), 0), (Bytes{248, 252, 248, 255}));
    EXPECT_EQ(texel(decoded(kDxt1, {0x00, 0xF8, 0, 0, 0, 0, 0, 0}), 5), (Bytes{248, 0, 0, 255}));
    EXPECT_EQ(texel(decoded(kDxt1, {0xE0, 0x07, 0, 0, 0, 0, 0, 0}), 10), (Bytes{0, 252, 0, 255}));
    EXPECT_EQ(texel(decoded(kDxt1, {0x1F, 0x00, 0, 0, 0, 0, 0, 0}), 15), (Bytes{0, 0, 248, 255}));
    EXPECT_EQ(texel(decoded(kDxt1, {0x21, 0x08, 0, 0, 0, 0, 0, 0}), 15), (Bytes{8, 4, 8, 255}));
}

TEST(Dxt1, FourColoursWhereColour0IsAbove) {
    EXPECT_EQ(decoded(kDxt1, colours(0xFFFF, 0)),
              fourTimes({248, 252, 248, 255, 0, 0, 0, 255, 165, 168, 165, 255, 82, 84, 82, 255}));
    // Unsigned: 0x8000 is above 0x7FFF.
    EXPECT_EQ(decoded(kDxt1, colours(0x8000, 0x7FFF)),
              fourTimes({128, 0, 0, 255, 120, 252, 248, 255, 125, 84, 82, 255, 122, 168, 165, 255}));
    EXPECT_EQ(texel(decoded(kDxt1, colours(0x0001, 0x0000)), 3), (Bytes{0, 0, 2, 255})); // 8/3 is truncated
    EXPECT_EQ(texel(decoded(kDxt1, colours(0x0001, 0x0000)), 2), (Bytes{0, 0, 5, 255}));
}

TEST(Dxt1, ThreeColoursAndWhiteElsewhere) {
    EXPECT_EQ(decoded(kDxt1, colours(0, 0xFFFF)),
              fourTimes({0, 0, 0, 255, 248, 252, 248, 255, 124, 126, 124, 255, 255, 255, 255, 255}));
    EXPECT_EQ(decoded(kDxt1, colours(0x7FFF, 0x8000)),
              fourTimes({120, 252, 248, 255, 128, 0, 0, 255, 124, 126, 124, 255, 255, 255, 255, 255}));
    // Equal colours too: (8, 4, 8) three times.
    EXPECT_EQ(decoded(kDxt1, colours(0x0821, 0x0821)),
              fourTimes({8, 4, 8, 255, 8, 4, 8, 255, 8, 4, 8, 255, 255, 255, 255, 255}));
}

TEST(Dxt1, IndexesStandInRasterOrderFromTheLowestBit) {
    // Index 1 (black) at texel n alone.
    for (int n = 0; n < 16; ++n) {
        Bytes block = {0xFF, 0xFF, 0, 0, 0, 0, 0, 0};
        block[std::size_t(4 + n / 4)] = Zmx8u(1 << 2 * (n % 4));
        const Bytes pixels = decoded(kDxt1, block);
        for (int i = 0; i < 16; ++i)
            EXPECT_EQ(texel(pixels, i), i == n ? (Bytes{0, 0, 0, 255}) : (Bytes{248, 252, 248, 255})) << n << ' ' << i;
    }
}

TEST(Dxt3, AlphaIsItsNibbleShifted) {
    const Bytes alpha = {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE};
    const Bytes pixels = decoded(kDxt3, withAlpha(alpha, colours(0, 0)));
    for (int n = 0; n < 16; ++n) EXPECT_EQ(texel(pixels, n), (Bytes{0, 0, 0, Zmx8u(16 * n)}));
    EXPECT_EQ(pixels[63], 240); // opaque is out of reach
}

TEST(Dxt3, FourColoursInEitherOrder) {
    EXPECT_EQ(decoded(kDxt3, withAlpha(kNoAlpha, colours(0xFFFF, 0))),
              fourTimes({248, 252, 248, 0, 0, 0, 0, 0, 165, 168, 165, 0, 82, 84, 82, 0}));
    EXPECT_EQ(decoded(kDxt3, withAlpha(kNoAlpha, colours(0, 0xFFFF))),
              fourTimes({0, 0, 0, 0, 248, 252, 248, 0, 82, 84, 82, 0, 165, 168, 165, 0}));
    EXPECT_EQ(decoded(kDxt3, withAlpha(kNoAlpha, colours(0x0821, 0x0821))),
              fourTimes({8, 4, 8, 0, 8, 4, 8, 0, 8, 4, 8, 0, 8, 4, 8, 0}));
}

// The alphas 0, 1, ... 7 by index: indexes 0 to 7 in the first two rows and again in the others.
Bytes eightAlphas(int a0, int a1) {
    const Bytes alpha = {Zmx8u(a0), Zmx8u(a1), 0x88, 0xC6, 0xFA, 0x88, 0xC6, 0xFA};
    const Bytes pixels = decoded(kDxt5, withAlpha(alpha, colours(0, 0)));
    Bytes out;
    for (int n = 0; n < 16; ++n) {
        EXPECT_EQ(pixels[std::size_t(4 * n + 3)], pixels[std::size_t(4 * (n % 8) + 3)]);
        if (n < 8) out.push_back(pixels[std::size_t(4 * n + 3)]);
    }
    return out;
}

TEST(Dxt5, EightAlphasWhereAlpha0IsAbove) {
    EXPECT_EQ(eightAlphas(255, 0), (Bytes{255, 0, 219, 182, 146, 109, 73, 36}));
    EXPECT_EQ(eightAlphas(128, 127), (Bytes{128, 127, 128, 128, 128, 127, 127, 127})); // unsigned
    EXPECT_EQ(eightAlphas(1, 0), (Bytes{1, 0, 1, 1, 1, 0, 0, 0}));
}

TEST(Dxt5, SixAlphasElsewhere) {
    EXPECT_EQ(eightAlphas(0, 255), (Bytes{0, 255, 51, 102, 153, 204, 0, 255}));
    EXPECT_EQ(eightAlphas(127, 128), (Bytes{127, 128, 127, 127, 128, 128, 0, 255}));
    EXPECT_EQ(eightAlphas(77, 77), (Bytes{77, 77, 77, 77, 77, 77, 0, 255})); // equal ones too
}

TEST(Dxt5, FourColoursInEitherOrder) {
    EXPECT_EQ(decoded(kDxt5, withAlpha(kNoAlpha, colours(0, 0xFFFF))),
              fourTimes({0, 0, 0, 0, 248, 252, 248, 0, 82, 84, 82, 0, 165, 168, 165, 0}));
    EXPECT_EQ(decoded(kDxt5, withAlpha(kNoAlpha, colours(0x0821, 0x0821))),
              fourTimes({8, 4, 8, 0, 8, 4, 8, 0, 8, 4, 8, 0, 8, 4, 8, 0}));
}

TEST(DxtDecode, OnePixelOfAWholeBlock) {
    const Bytes block = colours(0xFFFF, 0);
    Bytes pixels(8, 0x77);
    ASSERT_EQ(kDxt1.call(block.data(), pixels.data(), 4, ZmxiSize{1, 1}), zmxStsNoErr);
    EXPECT_EQ(pixels, (Bytes{248, 252, 248, 255, 0x77, 0x77, 0x77, 0x77}));
}

TEST(DxtDecode, FiveByFivePixelsOfFourBlocks) {
    // White, black, red, green: one colour to a block.
    const Bytes blocks = {0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0x00, 0x00, 0x00, 0x00, 0, 0, 0, 0,
                          0x00, 0xF8, 0x00, 0xF8, 0, 0, 0, 0, 0xE0, 0x07, 0xE0, 0x07, 0, 0, 0, 0};
    Bytes pixels(100);
    ASSERT_EQ(kDxt1.call(blocks.data(), pixels.data(), 20, ZmxiSize{5, 5}), zmxStsNoErr);
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 5; ++x) {
            const Bytes expected = x < 4   ? y < 4 ? Bytes{248, 252, 248, 255} : Bytes{248, 0, 0, 255}
                                     : y < 4 ? Bytes{0, 0, 0, 255}
                                           : Bytes{0, 252, 0, 255};
            EXPECT_EQ(texel(pixels, 5 * y + x), expected) << x << ' ' << y;
        }
    }
}

TEST(DxtDecode, EverySize) {
    for (const TextureDecoder& f : kAll) checkEverySize(f);
}

TEST(DxtDecode, Steps) {
    for (const TextureDecoder& f : kAll) {
        checkGreatStep(f);
        checkStepOfOneRow(f);
    }
}

TEST(DxtDecode, Arguments) {
    for (const TextureDecoder& f : kAll) checkArguments(f);
}

// Surfaces 64 blocks wide of the blocks that `put` makes from 0, 1, ... count - 1.
template <class Put> void checkBlocks(const TextureDecoder& f, int count, Put put) {
    for (int done = 0; done < count; done += 4096) {
        const int now = std::min(count - done, 4096) / 64 * 64;
        Bytes blocks;
        for (int i = 0; i < now; ++i) {
            const Bytes block = put(done + i);
            blocks.insert(blocks.end(), block.begin(), block.end());
        }
        ASSERT_NO_FATAL_FAILURE(checkDecoder(f, blocks, ZmxiSize{256, now / 16}, 1024));
    }
}

TEST(DxtDecode, EveryPairOfColourFields) {
    const auto pair = [](int i) {
        const int x = i / 64, y = i % 64;
        return colours((x / 2) << 11 | x << 5 | (31 - x / 2), (y / 2) << 11 | y << 5 | (31 - y / 2));
    };
    checkBlocks(kDxt1, 4096, pair);
    checkBlocks(kDxt3, 4096, [&](int i) { return withAlpha(kNoAlpha, pair(i)); });
    checkBlocks(kDxt5, 4096, [&](int i) { return withAlpha(kNoAlpha, pair(i)); });
}

TEST(DxtDecode, EveryPairOfAlphas) {
    checkBlocks(kDxt5, 65536, [](int i) {
        return withAlpha({Zmx8u(i >> 8), Zmx8u(i & 255), 0x88, 0xC6, 0xFA, 0x88, 0xC6, 0xFA}, colours(i, i));
    });
}

TEST(DxtDecode, RandomBlocks) {
    const std::uint64_t seed = 0x71;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (const TextureDecoder& f : kAll) {
        checkBlocks(f, 8192, [&](int) {
            Bytes block(std::size_t(f.blockBytes));
            rng.bytes(block.data(), block.size());
            // Fields are often alike, at their ends or next to each other.
            for (std::size_t at = 0; at < block.size(); at += 8) {
                if (rng.oneIn(4)) block[at + 2] = block[at];
                if (rng.oneIn(4)) block[at + 1] = block[at + 3];
                if (rng.oneIn(4)) block[at] = rng.oneIn(2) ? 0 : 255;
                if (rng.oneIn(4)) block[at + 1] = rng.oneIn(2) ? 0 : 255;
            }
            return block;
        });
    }
}

TEST(DxtDecode, Digests) {
    for (const TextureDecoder& f : kAll) EXPECT_EQ(digestOf(f), f.digest) << f.name;
}

} // namespace
