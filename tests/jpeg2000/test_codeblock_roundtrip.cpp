// What the encoder makes, the decoder takes apart: more than a hundred thousand random blocks in every style.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/support/codeblock.h"
#include "tests/support/rounds.h"

namespace {

// One encoder and one decoder for blocks up to a size.
class RoundTrip {
    EncoderState encoder;
    DecoderState decoder;
    std::vector<Zmx8u> bytes;
    std::vector<int> lengths;
    std::vector<Zmx32s> decoded;

public:
    int blocks = 0, coded = 0, segments = 0;

    explicit RoundTrip(ZmxiSize largest)
        : encoder(largest), decoder(largest),
          bytes(std::size_t(largest.width) * std::size_t(largest.height) * 8 + 4096), lengths(110),
          decoded(std::size_t(largest.width) * std::size_t(largest.height)) {}

    // With the easy termination every segment is tested when it is decoded. Planes below the lowest coded one
    // are cut off; what is above comes back.
    void run(const BlockSamples& samples, ZmxiSize size, const EncodeChoice& how) {
        const CodedBlock c = loadBlock(encoder, samples, size, how);
        const int passes = c.passes, terms = c.segments;
        int more, n = int(bytes.size());
        ASSERT_EQ(zmxiEncodeStoreBits_JPEG2K_1u(bytes.data(), &n, encoder, &more), zmxStsNoErr);
        ASSERT_EQ(more, 0);
        int sum = 0;
        for (int i = 0; i < terms && passes; ++i) {
            ASSERT_EQ(zmxiEncodeGetTermPassLen_JPEG2K(encoder, i, &lengths[std::size_t(i)]), zmxStsNoErr);
            sum += lengths[std::size_t(i)];
        }
        ASSERT_EQ(sum, n);
        const int base = 31 - how.magnBits, planes = std::max(c.sfBits - base, 0);
        const Zmx32u style = how.style | (how.termination == ZMX_MQ_TERM_EASY ? ZMX_CB_ERROR_PREDICTION : 0);
        ASSERT_EQ(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(bytes.data(), decoded.data(), size.width * 4, size, how.subband,
                                                       planes, passes, lengths.data(), passes ? terms : 0, style,
                                                       nullptr, decoder),
                  zmxStsNoErr);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const Zmx32u magnitude = (samples[i] & 0x7FFFFFFF) >> base;
            ASSERT_EQ(Zmx32u(decoded[i]), magnitude ? magnitude | (samples[i] & 0x80000000) : 0) << i;
        }
        ++blocks;
        coded += passes > 0;
        segments += passes ? terms : 0;
    }
};

} // namespace

TEST(CodeBlockRoundTrip, SmallBlocksInEveryStyle) {
    Rng rng(0x6321);
    RoundTrip trip({9, 14});
    for (int n = 0; n < rounds(4500); ++n)
        for (Zmx32u style = 0; style < 32; ++style) {
            const ZmxiSize size{int(rng.range(1, rng.oneIn(20) ? 9 : 4)), int(rng.range(1, rng.oneIn(20) ? 14 : 6))};
            const int bits = int(rng.range(1, rng.oneIn(50) ? 31 : 8));
            const EncodeChoice how = choice(style, n % 3, 31 - (n % 7 ? 0 : int(rng.range(0, 31))), n / 3 % 4);
            ASSERT_NO_FATAL_FAILURE(trip.run(randomBlock(rng, size.width, size.height, bits), size, how))
                << "n " << n << " style " << style << " size " << size.width << " by " << size.height;
        }
    EXPECT_EQ(trip.blocks, 32 * rounds(4500));
    EXPECT_GT(trip.coded, rounds(100000)) << "blocks that are not empty";
    EXPECT_GT(trip.segments, rounds(500000));
}

TEST(CodeBlockRoundTrip, LargeBlocks) {
    Rng rng(0x6322);
    for (ZmxiSize size : {ZmxiSize{64, 64}, ZmxiSize{1024, 4}, ZmxiSize{4, 1024}, ZmxiSize{32, 32}, ZmxiSize{61, 47},
                          ZmxiSize{200, 19}}) {
        RoundTrip trip(size);
        for (int n = 0; n < 8; ++n) {
            const Zmx32u style = Zmx32u(rng.range(0, 31));
            const EncodeChoice how = choice(style, n % 3, 31, n % 4);
            ASSERT_NO_FATAL_FAILURE(
                trip.run(randomBlock(rng, size.width, size.height, n == 7 ? 31 : int(rng.range(1, 14))), size, how))
                << "n " << n << " style " << style;
        }
    }
}
