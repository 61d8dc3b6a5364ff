// How often a spoilt byte is noticed: the counts of docs/codeblock-errors.md, which this program prints.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/support/codeblock.h"
#include "tests/support/rounds.h"

#include <cstdio>
#include <iterator>

namespace {

constexpr int kBlocks = 2000;

struct Count {
    int noticed = 0, harmless = 0, unnoticed = 0;
};

// Sixteen by sixteen samples of up to eight bits, small ones much more often than large ones.
BlockSamples typicalBlock(Rng& rng) {
    BlockSamples v(256);
    for (Zmx32u& s : v) {
        const Zmx32u m = Zmx32u(rng.range(0, (1 << rng.range(0, 8)) - 1));
        s = m && rng.oneIn(2) ? m | 0x80000000u : m;
    }
    v[0] = 0x80;
    return v;
}

// Codes blocks with the easy termination, changes one byte of each, and decodes with the tests asked for.
Count spoil(Zmx32u layout, Zmx32u tests) {
    const ZmxiSize size{16, 16};
    Rng rng(0x6F01);
    EncoderState encoder(size);
    DecoderState decoder(size);
    Count count;
    EncodeChoice how;
    how.termination = ZMX_MQ_TERM_EASY;
    how.style = layout | (tests & ZMX_CB_SEGMENTATION_SYMBOLS);
    for (int n = 0; n < kBlocks; ++n) {
        const BlockSamples samples = typicalBlock(rng);
        CodedBlock c = encodeBlock(encoder, samples, size, how);
        const std::size_t at = std::size_t(rng.range(0, int(c.bytes.size()) - 1));
        c.bytes[at] = Zmx8u(c.bytes[at] + rng.range(1, 255));
        BlockSamples decoded(256);
        const ZmxStatus status = zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(
            c.bytes.data(), reinterpret_cast<Zmx32s*>(decoded.data()), 64, size, 0, c.sfBits, c.passes,
            c.lengths.data(), c.segments, layout | tests, nullptr, decoder);
        if (status == zmxStsCBDamagedErr)
            ++count.noticed;
        else if (decoded == samples)
            ++count.harmless;
        else
            ++count.unnoticed;
    }
    return count;
}

} // namespace

TEST(CodeBlockErrors, OneSpoiltByte) {
    const Zmx32u symbol = ZMX_CB_SEGMENTATION_SYMBOLS, end = ZMX_CB_ERROR_PREDICTION;
    const Zmx32u bypass = ZMX_CB_SELECTIVE_BYPASS, all = ZMX_CB_TERMINATE_ALL;
    const struct {
        const char* name;
        Zmx32u layout, tests;
        int noticed, harmless;
    } cases[] = {
        {"one segment, no test", 0, 0, 0, 1},
        {"one segment, segmentation symbols", 0, symbol, 1983, 1},
        {"one segment, termination test", 0, end, 1968, 0},
        {"one segment, both", 0, symbol | end, 1989, 0},
        {"every pass terminated, no test", all, 0, 0, 27},
        {"every pass terminated, segmentation symbols", all, symbol, 973, 23},
        {"every pass terminated, termination test", all, end, 1982, 0},
        {"every pass terminated, both", all, symbol | end, 1976, 5},
        {"bypass, no test", bypass, 0, 1245, 11},
        {"bypass, segmentation symbols", bypass, symbol, 1291, 4},
        {"bypass, termination test", bypass, end, 1300, 0},
        {"bypass, both", bypass, symbol | end, 1296, 3},
        {"bypass, every pass terminated, no test", bypass | all, 0, 1183, 15},
        {"bypass, every pass terminated, segmentation symbols", bypass | all, symbol, 1272, 12},
        {"bypass, every pass terminated, termination test", bypass | all, end, 1345, 0},
        {"bypass, every pass terminated, both", bypass | all, symbol | end, 1414, 6},
    };
    // An emulator has time for the first of them.
    const int tried = shortened() ? 3 : int(std::size(cases));
    for (int i = 0; i < tried; ++i) {
        const auto& c = cases[i];
        const Count n = spoil(c.layout, c.tests);
        std::printf("%-52s noticed %4d harmless %4d unnoticed %4d of %d\n", c.name, n.noticed, n.harmless, n.unnoticed,
                    kBlocks);
        EXPECT_EQ(n.noticed, c.noticed) << c.name;
        EXPECT_EQ(n.harmless, c.harmless) << c.name;
        EXPECT_EQ(n.noticed + n.harmless + n.unnoticed, kBlocks);
    }
}
