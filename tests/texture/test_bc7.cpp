// The decoder of BC7 blocks: worked blocks, every mode with every partition, rotation and index selector
// against the plain model, and surfaces.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/texture/model/bc7.h"
#include "tests/texture/support/texture.h"
#include "zmxj.h"

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<Zmx8u>;

const TextureDecoder kBc7 = {"BC7", zmxiTextureDecodeBlockToRGBA_BC7_8u_C1C4R, model::decodeBc7, 16,
                             0xC2848F7EB9D80D83};

// A block written field by field from bit 0.
class Fields {
    Bytes block = Bytes(16, 0);
    int at = 0;

public:
    Fields& put(int bits, unsigned v) {
        for (int i = 0; i < bits; ++i, ++at)
            block[std::size_t(at / 8)] = Zmx8u(block[std::size_t(at / 8)] | (v >> i & 1) << at % 8);
        return *this;
    }
    Fields& put(int bits, std::initializer_list<unsigned> values) {
        for (unsigned v : values) put(bits, v);
        return *this;
    }
    Fields& times(int n, int bits, unsigned v) {
        while (n-- > 0) put(bits, v);
        return *this;
    }
    Fields& mode(int m) { return put(m + 1, 1u << m); }
    const Bytes& whole() const {
        EXPECT_EQ(at, 128);
        return block;
    }
};

Bytes texel(const Bytes& pixels, int n) { return Bytes(pixels.begin() + 4 * n, pixels.begin() + 4 * n + 4); }

Bytes channel(const Bytes& pixels, int c) {
    Bytes out;
    for (int n = 0; n < 16; ++n) out.push_back(pixels[std::size_t(4 * n + c)]);
    return out;
}

TEST(Bc7, AllZeroBlockIsTransparentBlack) { EXPECT_EQ(decoded(kBc7, Bytes(16, 0)), Bytes(64, 0)); }

TEST(Bc7, FirstByteZeroHasNoModeWhateverFollows) {
    Bytes block(16, 0xFF);
    block[0] = 0;
    EXPECT_EQ(decoded(kBc7, block), Bytes(64, 0));
    // Not an error for the surface either, and the blocks beside it are as they are.
    Bytes two = block;
    const Bytes white = Fields().mode(6).times(8, 7, 127).put(1, {1, 1}).put(3, 0).times(15, 4, 0).whole();
    two.insert(two.end(), white.begin(), white.end());
    Bytes pixels(128, 0x77);
    EXPECT_EQ(kBc7.call(two.data(), pixels.data(), 32, ZmxiSize{8, 4}), zmxStsNoErr);
    for (int n = 0; n < 32; ++n) EXPECT_EQ(texel(pixels, n), Bytes(4, n % 8 < 4 ? 0 : 255)) << n;
}

TEST(Bc7, LowestSetBitOfTheFirstByteTellsTheMode) {
    // Bits 6 and 7: mode 6, of whose first red end-point bit 7 is the lowest bit.
    Bytes block(16, 0);
    block[0] = 0xC0;
    EXPECT_EQ(texel(decoded(kBc7, block), 0), (Bytes{2, 0, 0, 0}));
    // Bit 6 alone is mode 6; the two P-bits are bits 63 and 64.
    block[0] = 0x40;
    block[7] = 0x80;
    EXPECT_EQ(texel(decoded(kBc7, block), 0), (Bytes{1, 1, 1, 1}));
    // Bit 7 alone is mode 7, whose red end-points stand in bits 14 to 33: of 5 bits and a P-bit, 2 is 8.
    block.assign(16, 0);
    block[0] = 0x80;
    block[1] = 0x40;
    EXPECT_EQ(texel(decoded(kBc7, block), 0), (Bytes{8, 0, 0, 0}));
    // Bit 0 is mode 0 whatever stands above it: opaque.
    block.assign(16, 0xFF);
    EXPECT_EQ(texel(decoded(kBc7, block), 0)[3], 255);
}

TEST(Bc7, Mode6InterpolatesWithSixteenWeights) {
    Fields f;
    f.mode(6).put(7, {0, 127}).put(7, {127, 0}).put(7, {0, 0}).put(7, {127, 127}).put(1, {0, 1});
    f.put(3, 0);
    for (unsigned n = 1; n < 16; ++n) f.put(4, n);
    const Bytes pixels = decoded(kBc7, f.whole());
    EXPECT_EQ(channel(pixels, 0), (Bytes{0, 16, 36, 52, 68, 84, 104, 120, 135, 151, 171, 187, 203, 219, 239, 255}));
    EXPECT_EQ(channel(pixels, 1), // 254 to 1
              (Bytes{254, 238, 218, 203, 187, 171, 151, 135, 120, 104, 84, 68, 52, 37, 17, 1}));
    EXPECT_EQ(channel(pixels, 2), (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(channel(pixels, 3),
              (Bytes{254, 254, 254, 254, 254, 254, 254, 254, 255, 255, 255, 255, 255, 255, 255, 255}));
}

TEST(Bc7, Mode5RotationsSwapAlphaWithAChannel) {
    const auto block = [](unsigned rotation) {
        return Fields().mode(5).put(2, rotation).times(6, 7, 0).put(8, {255, 255}).times(2, 31, 0).whole();
    };
    EXPECT_EQ(texel(decoded(kBc7, block(0)), 7), (Bytes{0, 0, 0, 255}));
    EXPECT_EQ(texel(decoded(kBc7, block(1)), 7), (Bytes{255, 0, 0, 0}));
    EXPECT_EQ(texel(decoded(kBc7, block(2)), 7), (Bytes{0, 255, 0, 0}));
    EXPECT_EQ(texel(decoded(kBc7, block(3)), 7), (Bytes{0, 0, 255, 0}));
}

TEST(Bc7, Mode5RotationTakesTheIndexSetAlong) {
    // Colour from 0 to 255 with index 1 everywhere but at texel 0, alpha from 0 to 255 with index 2.
    Fields f;
    f.mode(5).put(2, 2).put(7, {0, 127, 0, 127, 0, 127}).put(8, {0, 255});
    f.put(1, 0).times(15, 2, 1).put(1, 0).times(15, 2, 2);
    const Bytes pixels = decoded(kBc7, f.whole());
    EXPECT_EQ(texel(pixels, 0), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(texel(pixels, 1), (Bytes{84, 171, 84, 84}));
    EXPECT_EQ(texel(pixels, 15), (Bytes{84, 171, 84, 84}));
}

// Mode 4 with colour and alpha from 0 to 255, 2-bit indexes 1 and 3-bit indexes 3, but 0 at texel 0.
Bytes mode4(unsigned rotation, unsigned selector) {
    Fields f;
    f.mode(4).put(2, rotation).put(1, selector).put(5, {0, 31, 0, 31, 0, 31}).put(6, {0, 63});
    f.put(1, 0).times(15, 2, 1).put(2, 0).times(15, 3, 3);
    return decoded(kBc7, f.whole());
}

TEST(Bc7, Mode4SelectorTellsWhichSetIsTheColours) {
    EXPECT_EQ(texel(mode4(0, 0), 5), (Bytes{84, 84, 84, 108}));
    EXPECT_EQ(texel(mode4(0, 1), 5), (Bytes{108, 108, 108, 84}));
    EXPECT_EQ(texel(mode4(0, 1), 0), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(texel(mode4(1, 0), 5), (Bytes{108, 84, 84, 84}));
    EXPECT_EQ(texel(mode4(3, 1), 5), (Bytes{108, 108, 84, 108}));
}

TEST(Bc7, EightAndFourWeights) {
    Fields f; // mode 4, selector 1: the 3-bit indexes 0 to 7 are the colours'
    f.mode(4).put(2, 0).put(1, 1).put(5, {0, 31, 0, 0, 31, 31}).put(6, {0, 63});
    f.put(1, 0).put(2, {1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3});
    f.put(2, 0).put(3, {1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3, 4, 5, 6, 7});
    const Bytes pixels = decoded(kBc7, f.whole());
    EXPECT_EQ(channel(pixels, 0), (Bytes{0, 36, 72, 108, 147, 183, 219, 255, 0, 36, 72, 108, 147, 183, 219, 255}));
    EXPECT_EQ(channel(pixels, 1), Bytes(16, 0));
    EXPECT_EQ(channel(pixels, 2), Bytes(16, 255));
    EXPECT_EQ(channel(pixels, 3), (Bytes{0, 84, 171, 255, 0, 84, 171, 255, 0, 84, 171, 255, 0, 84, 171, 255}));
}

TEST(Bc7, Mode3Partition0HasItsSecondAnchorAtTexel15) {
    // Partition 0: the two columns on the left are subset 0 (0 to 255), the others subset 1 (1 to 254).
    Fields f;
    f.mode(3).put(6, 0);
    for (int c = 0; c < 3; ++c) f.put(7, {0, 127, 0, 127});
    f.put(1, {0, 1, 1, 0}).put(1, 1).times(14, 2, 3).put(1, 1); // one bit at texel 0 and at texel 15
    const Bytes pixels = decoded(kBc7, f.whole());
    EXPECT_EQ(texel(pixels, 0), (Bytes{84, 84, 84, 255}));
    EXPECT_EQ(texel(pixels, 1), (Bytes{255, 255, 255, 255}));
    EXPECT_EQ(texel(pixels, 2), (Bytes{254, 254, 254, 255}));
    EXPECT_EQ(texel(pixels, 15), (Bytes{84, 84, 84, 255})); // (1 * 43 + 254 * 21 + 32) >> 6
}

TEST(Bc7, Mode1SharesAPBitInASubset) {
    // 6 bits and the P-bit are 7 bits: 1 is 2, 127 is 255.
    Fields f;
    f.mode(1).put(6, 13); // partition 13: the lower half is subset 1
    for (int c = 0; c < 3; ++c) f.put(6, {0, 0, 63, 63});
    f.put(1, {1, 0}).times(2, 2, 0).times(14, 3, 0);
    const Bytes pixels = decoded(kBc7, f.whole());
    EXPECT_EQ(texel(pixels, 0), (Bytes{2, 2, 2, 255}));
    EXPECT_EQ(texel(pixels, 7), (Bytes{2, 2, 2, 255}));
    EXPECT_EQ(texel(pixels, 8), (Bytes{253, 253, 253, 255})); // 126 is 252 and its top bit
}

TEST(Bc7, Mode2Partition38HasAnchorsAt8And9) {
    // Blue is the subset: 0, 8 (1 of 31), 16 (2 of 31). Red runs from 0 to 255.
    Fields f;
    f.mode(2).put(6, 38).put(5, {0, 31, 0, 31, 0, 31}).times(6, 5, 0).put(5, {0, 0, 1, 1, 2, 2});
    f.put(1, 0).times(7, 2, 3).put(1, {1, 1}).times(6, 2, 2);
    // The anchors of this partition are texels 8 and 9.
    const Bytes pixels = decoded(kBc7, f.whole());
    EXPECT_EQ(channel(pixels, 0), (Bytes{0, 255, 255, 255, 255, 255, 255, 255, 84, 84, 171, 171, 171, 171, 171, 171}));
    EXPECT_EQ(channel(pixels, 1), Bytes(16, 0));
    EXPECT_EQ(channel(pixels, 2), (Bytes{0, 8, 16, 0, 16, 0, 8, 16, 8, 16, 0, 8, 0, 8, 16, 0}));
}

TEST(Bc7, ThreeByThreePixelsOfOneBlock) {
    const Bytes white = Fields().mode(6).times(8, 7, 127).put(1, {1, 1}).put(3, 0).times(15, 4, 0).whole();
    Bytes pixels(64, 0x77);
    EXPECT_EQ(kBc7.call(white.data(), pixels.data(), 16, ZmxiSize{3, 3}), zmxStsNoErr);
    for (int n = 0; n < 16; ++n) EXPECT_EQ(texel(pixels, n), Bytes(4, n % 4 < 3 && n < 12 ? 255 : 0x77)) << n;
}

TEST(Bc7, EverySize) { checkEverySize(kBc7); }

TEST(Bc7, Steps) {
    checkGreatStep(kBc7);
    checkStepOfOneRow(kBc7);
}

TEST(Bc7, Arguments) { checkArguments(kBc7); }

// 64 blocks that open with these fields: noise, and plain fields with noise in a single byte.
void checkOpening(int bits, unsigned opening, Rng& rng) {
    Bytes blocks;
    for (int i = 0; i < 64; ++i) {
        Bytes block(16);
        if (i % 4 == 0) block.assign(16, i % 8 == 0 ? 0 : 255);
        if (i % 4 == 0) block[std::size_t(i / 4)] = Zmx8u(rng.next());
        if (i % 4 != 0) rng.bytes(block.data(), block.size());
        for (int b = 0; b < bits; ++b) {
            Zmx8u& byte = block[std::size_t(b / 8)];
            byte = Zmx8u((byte & ~(1 << b % 8)) | int(opening >> b & 1) << b % 8);
        }
        blocks.insert(blocks.end(), block.begin(), block.end());
    }
    ASSERT_NO_FATAL_FAILURE(checkDecoder(kBc7, blocks, ZmxiSize{32, 32}, 128));
}

TEST(Bc7, EveryModePartitionRotationAndSelector) {
    const std::uint64_t seed = 0xBC7;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    const int fieldBits[] = {4, 6, 6, 6, 3, 2, 0, 6}; // partition, or rotation and selector
    for (int mode = 0; mode < 8; ++mode) {
        for (unsigned field = 0; field < 1u << fieldBits[mode]; ++field) {
            SCOPED_TRACE(testing::Message() << "mode " << mode << ", partition or rotation " << field);
            checkOpening(mode + 1 + fieldBits[mode], (field << 1 | 1) << mode, rng);
            if (HasFatalFailure()) return;
        }
    }
    checkOpening(8, 0, rng); // no mode
}

TEST(Bc7, EveryFirstByte) {
    Rng rng(0xBC8);
    for (unsigned first = 0; first < 256; ++first) ASSERT_NO_FATAL_FAILURE(checkOpening(8, first, rng)) << first;
}

TEST(Bc7, Digest) { EXPECT_EQ(digestOf(kBc7), kBc7.digest); }

} // namespace
