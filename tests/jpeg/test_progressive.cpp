// Progressive JPEG blocks: decoding.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/support/progressive.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/rounds.h"

#include <gtest/gtest.h>

namespace {

// A reader that holds an end-of-band run.
void setRun(StreamIn& in, int run) {
    in.state.plain.eobRun = run;
    in.state.share();
}

// 0000: 0x00, 0001: 0x10, 0010: 0x20, 0011: 0xF0, 0100: 0x01, 0101: 0x11, 0110: 0x02, 0111: 0xE0, 1000: 0xF1
const HuffmanList kSymbols = nibbles({0x00, 0x10, 0x20, 0xF0, 0x01, 0x11, 0x02, 0xE0, 0xF1});

} // namespace

TEST(ProgressiveDecoding, OrderOfTests) {
    DecodeTable table(kSymbols);
    DecodeStateTwin state;
    Guarded<Zmx8u> src(Bytes{0x12, 0x34});
    Guarded<Zmx16s> block(64), lastDC(1);
    block.fill(7);
    const auto before = block.copy();
    int pos = 0, marker = 0;
    checkOrder({kNull, kSize, kNull, kNull, kNull, kNull, kBadArg, kNull, kNull}, [&](const Bad& bad) {
        return zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(bad.null(0, src.data()), bad.below1(1, 2), bad.null(2, &pos),
                                                          bad.null(3, block.data()), bad.null(4, lastDC.data()),
                                                          bad.null(5, &marker), bad.any(6, 13, {14, -1}),
                                                          bad.null(7, table.lib()), bad.null(8, state.lib()));
    });
    checkOrder({kNull, kSize, kNull, kNull, kNull, kBadArg, kNull}, [&](const Bad& bad) {
        return zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(bad.null(0, src.data()), bad.below1(1, 2), bad.null(2, &pos),
                                                           bad.null(3, block.data()), bad.null(4, &marker),
                                                           bad.any(5, 0, {14, -1}), bad.null(6, state.lib()));
    });
    for (auto decode : {zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1, zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1})
        checkOrder({kNull, kSize, kNull, kNull, kNull, kBadArg, kBadArg, kBadArg, kNull, kNull}, [&](const Bad& bad) {
            return decode(bad.null(0, src.data()), bad.below1(1, 2), bad.null(2, &pos), bad.null(3, block.data()),
                          bad.null(4, &marker), bad.below1(5, 1), bad.any(6, 63, {64}), bad.any(7, 0, {14, -1}),
                          bad.null(8, table.lib()), bad.null(9, state.lib()));
        });
    EXPECT_EQ(block.copy(), before);
    EXPECT_TRUE(state.same());
    EXPECT_EQ(pos, 0);
    EXPECT_EQ(marker, 0);
}

TEST(ProgressiveDecoding, DomainOfTheBand) {
    DecodeTable table(kSymbols);
    StreamIn in({0x00});
    BlockOut out;
    const auto edges = {INT32_MIN, -1, 0, 1, 2, 12, 13, 14, 31, 62, 63, 64, 65, INT32_MAX};
    for (int ss : edges)
        for (int se : edges)
            for (int al : edges) {
                const bool good = ss >= 1 && ss <= 63 && se >= ss && se <= 63 && al >= 0 && al <= 13;
                for (auto decode :
                     {zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1, zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1}) {
                    setRun(in, 1); // a block in a run of zeros reads nothing
                    out.set(Block{});
                    ASSERT_EQ(decode(in.src.data(), 1, &in.pos[0], out.dst.data(), &in.marker[0], ss, se, al,
                                     table.lib(), in.state.lib()),
                              good ? zmxStsNoErr : zmxStsBadArgErr)
                        << ss << ' ' << se << ' ' << al;
                    in.state.plain.eobRun = good ? 0 : 1;
                    ASSERT_TRUE(in.same());
                }
            }
    for (int al : edges) {
        const ZmxStatus expected = al >= 0 && al <= 13 ? zmxStsNoErr : zmxStsBadArgErr;
        StreamIn one({0x00});
        EXPECT_EQ(zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(one.src.data(), 1, &one.pos[0], out.dst.data(),
                                                             out.lastDC.data(), &one.marker[0], al, table.lib(),
                                                             one.state.lib()),
                  expected);
        EXPECT_EQ(zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(one.src.data(), 1, &one.pos[0], out.dst.data(),
                                                              &one.marker[0], al, one.state.lib()),
                  expected);
    }
}

TEST(ProgressiveDecoding, DCFirst) {
    DecodeTable table(nibbles({0x00, 0x03, 0x10, 0x0F}));
    for (auto flush : bothEnds) {
        BlockOut out(flush);
        out.set(blockOf({{1, 9}, {63, -9}}));
        StreamIn in({0x1A, 0x02, 0x32, 0xAA, 0x80, 0x00});
        EXPECT_EQ(decodeDCFirst(in, out, 2, table).status, zmxStsNoErr); // 0001 101: 5
        EXPECT_EQ(out.dst[0], 20);
        EXPECT_EQ(out.lastDC[0], 5) << "ahead of the shift";
        EXPECT_EQ(out.plain, blockOf({{0, 20}, {1, 9}, {63, -9}})) << "the block is not cleared";
    }
    // The symbol 0 stores the prediction; one with a category of 0 adds nothing. Shifts keep 16 bits.
    BlockOut out;
    out.setDC(-3);
    StreamIn in({0x02});
    EXPECT_EQ(decodeDCFirst(in, out, 13, table).status, zmxStsNoErr);
    EXPECT_EQ(out.dst[0], Zmx16s(-3 * 8192));
    EXPECT_EQ(decodeDCFirst(in, out, 0, table).status, zmxStsNoErr);
    EXPECT_EQ(out.dst[0], -3);
    EXPECT_EQ(out.lastDC[0], -3);
    // The sum keeps 16 bits too.
    out.setDC(32767);
    StreamIn wrap({0x3F, 0xFF, 0x00, 0xFF, 0x00}); // 0011, fifteen ones: 32767
    EXPECT_EQ(decodeDCFirst(wrap, out, 1, table).status, zmxStsNoErr);
    EXPECT_EQ(out.lastDC[0], -2);
    EXPECT_EQ(out.dst[0], -4);
    // Errors leave the block and the predictor.
    StreamIn cut({0x3F});
    EXPECT_EQ(decodeDCFirst(cut, out, 1, table).status, zmxStsOutOfBufErr);
    EXPECT_EQ(out.lastDC[0], -2);
    EXPECT_EQ(out.dst[0], -4);
}

TEST(ProgressiveDecoding, DCRefine) {
    BlockOut out;
    StreamIn in({0xA0}); // 1, 0, 1
    for (auto [before, al, after] : {std::tuple{4, 0, 5}, {4, 1, 4}, {-8, 2, -4}}) {
        out.set(blockOf({{0, before}, {1, 6}}));
        EXPECT_EQ(decodeDCRefine(in, out, al).status, zmxStsNoErr);
        EXPECT_EQ(out.plain, blockOf({{0, after}, {1, 6}}));
    }
    EXPECT_EQ(in.state.plain.bitCount, 5);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(decodeDCRefine(in, out, 0).status, zmxStsNoErr);
    EXPECT_EQ(decodeDCRefine(in, out, 0).status, zmxStsOutOfBufErr);
    StreamIn marker({0xFF, 0xD9});
    EXPECT_EQ(decodeDCRefine(marker, out, 0).status, zmxStsNoErr) << "the refill that meets the marker says nothing";
    EXPECT_EQ(marker.state.plain.bitCount, -1);
    EXPECT_EQ(decodeDCRefine(marker, out, 0).status, zmxStsDCTRangeErr);
}

TEST(ProgressiveDecoding, ARunInTheFirstScanReadsNothing) {
    DecodeTable table(kSymbols);
    StreamIn in({0x00});
    setRun(in, 5);
    BlockOut out;
    EXPECT_EQ(decodeACFirst(in, out, {1, 63, 0}, table).status, zmxStsNoErr);
    EXPECT_EQ(in.state.plain.eobRun, 4);
    EXPECT_EQ(in.pos[0], 0);
    EXPECT_EQ(in.state.plain.bitCount, 0);
}

TEST(ProgressiveDecoding, EndOfBandRuns) {
    DecodeTable table(kSymbols);
    for (auto [byte, run] : {std::pair{0x00, 0}, {0x10, 1}, {0x18, 2}, {0x20, 3}, {0x24, 4}, {0x2C, 6}}) {
        SCOPED_TRACE(byte);
        BlockOut first, refine;
        first.set(Block{});
        refine.set(Block{});
        StreamIn in({Zmx8u(byte)}), in2({Zmx8u(byte)});
        EXPECT_EQ(decodeACFirst(in, first, {1, 63, 0}, table).status, zmxStsNoErr);
        EXPECT_EQ(in.state.plain.eobRun, run);
        EXPECT_EQ(decodeACRefine(in2, refine, {1, 63, 0}, table).status, zmxStsNoErr);
        EXPECT_EQ(in2.state.plain.eobRun, run);
    }
    // The longest: 0xE0 and fourteen ones.
    StreamIn longest({0x7F, 0xFF, 0x00, 0xFF, 0x00});
    BlockOut out;
    EXPECT_EQ(decodeACFirst(longest, out, {1, 63, 0}, table).status, zmxStsNoErr);
    EXPECT_EQ(longest.state.plain.eobRun, 32766);
}

TEST(ProgressiveDecoding, ARunWhoseBitsAreMissing) {
    DecodeTable table(kSymbols);
    for (bool refine : {false, true}) {
        StreamIn in({0x7F}); // 0xE0, four of fourteen bits
        BlockOut out;
        out.set(Block{});
        EXPECT_EQ((refine ? decodeACRefine : decodeACFirst)(in, out, {1, 63, 0}, table).status, zmxStsOutOfBufErr);
        EXPECT_EQ(in.state.plain.eobRun, 16384);
        EXPECT_EQ(in.state.plain.bitCount, 4);
        StreamIn marker({0x7F, 0xFF, 0xD0});
        EXPECT_EQ((refine ? decodeACRefine : decodeACFirst)(marker, out, {1, 63, 0}, table).status, zmxStsDCTRangeErr);
        EXPECT_EQ(marker.state.plain.eobRun, 16384);
    }
}

TEST(ProgressiveDecoding, ACFirst) {
    DecodeTable table(kSymbols);
    for (auto flush : bothEnds) {
        BlockOut out(flush);
        out.set(blockOf({{0, 77}, {5, 3}}));
        // 0x01 1: at position 1; 0x11 0: at 3; ZRL: on to 20; 0x02 10: at 20; 0x00
        StreamIn in({0x4A, 0x8D, 0xA0, 0x00}); // 0100 1, 0101 0, 0011, 0110 10, 0000
        EXPECT_EQ(decodeACFirst(in, out, {1, 63, 2}, table).status, zmxStsNoErr);
        EXPECT_EQ(out.plain, blockOf({{0, 77}, {1, 4}, {3, -4}, {5, 3}, {20, 8}}));
        EXPECT_EQ(in.state.plain.eobRun, 0);
    }
    // The band ends by position, without an end-of-band symbol.
    BlockOut out;
    out.set(Block{});
    StreamIn in({0x4C}); // 0100 1 100
    EXPECT_EQ(decodeACFirst(in, out, {6, 6, 0}, table).status, zmxStsNoErr);
    EXPECT_EQ(out.plain, blockOf({{6, 1}}));
    EXPECT_EQ(in.state.plain.bitCount, 3);
}

TEST(ProgressiveDecoding, RunsBehindTheBand) {
    // The position is not held to the band: 0x11 from position 2 of a band of 1 to 2 writes 3.
    DecodeTable table(nibbles({0x00, 0x11, 0xF1, 0x81, 0x91}));
    for (auto flush : bothEnds) {
        BlockOut out(flush);
        out.set(Block{});
        StreamIn in({0x18}); // 0001 1
        EXPECT_EQ(decodeACFirst(in, out, {2, 2, 0}, table).status, zmxStsNoErr);
        EXPECT_EQ(out.plain, blockOf({{3, 1}}));
        // From 63 by 8 to the last spare entry: element 63.
        StreamIn last({0x38});
        EXPECT_EQ(decodeACFirst(last, out, {63, 63, 0}, table).status, zmxStsNoErr);
        EXPECT_EQ(out.plain, blockOf({{3, 1}, {63, 1}}));
        // Behind that the library does what it likes inside the block.
        for (int symbol : {4, 2}) {
            StreamIn beyond({Zmx8u(symbol << 4 | 8)});
            const Outcome o = decodeACFirst(beyond, out, {63, 63, 0}, table);
            EXPECT_FALSE(o.path);
        }
    }
}

TEST(ProgressiveDecoding, CorrectionBits) {
    DecodeTable table(kSymbols);
    // In a run each coefficient that is not zero reads a bit: 1 for all of these.
    for (auto [before, after] :
         {std::pair{-2, -3}, {-3, -3}, {2, 3}, {3, 3}, {-4, -5}, {1, 1}, {-1, -1}, {-32768, 32767}}) {
        StreamIn in({0xFF, 0x00});
        setRun(in, 2);
        BlockOut out;
        out.set(blockOf({{0, 50}, {7, before}}));
        EXPECT_EQ(decodeACRefine(in, out, {1, 63, 0}, table).status, zmxStsNoErr);
        EXPECT_EQ(out.plain, blockOf({{0, 50}, {7, after}}));
        EXPECT_EQ(in.state.plain.bitCount, 7);
        EXPECT_EQ(in.state.plain.eobRun, 1);
    }
    // A bit of 0 leaves the coefficient; higher positions move by their own weight, outside the band nothing
    // moves.
    StreamIn in({0x50}); // 0, 1, 0, 1
    setRun(in, 1);
    BlockOut out;
    out.set(blockOf({{1, 8}, {2, 8}, {3, 8}, {4, -8}, {5, -8}, {6, 8}}));
    EXPECT_EQ(decodeACRefine(in, out, {2, 5, 2}, table).status, zmxStsNoErr);
    EXPECT_EQ(out.plain, blockOf({{1, 8}, {2, 8}, {3, 12}, {4, -8}, {5, -12}, {6, 8}}));
    EXPECT_EQ(in.state.plain.eobRun, 0);
    // Too few of them: the run stays.
    StreamIn cut({0xAA});
    setRun(cut, 3);
    Block full;
    full.fill(2);
    out.set(full);
    EXPECT_EQ(decodeACRefine(cut, out, {1, 63, 0}, table).status, zmxStsOutOfBufErr);
    EXPECT_EQ(cut.state.plain.eobRun, 3);
    EXPECT_EQ(std::count(out.plain.begin(), out.plain.end(), 3), 4);
}

TEST(ProgressiveDecoding, RefinementPassesOverZeros) {
    DecodeTable table(kSymbols);
    // ZRL over 16 zeros at 1 to 18, with coefficients at 3 and 10 corrected on the way (bits 1, 0); then 0x01
    // 1 at 19.
    StreamIn in({0x39, 0x30}); // 0011 1 0, 0100 1
    BlockOut out;
    out.set(blockOf({{3, 2}, {10, 2}}));
    EXPECT_EQ(decodeACRefine(in, out, {1, 19, 0}, table).status, zmxStsNoErr);
    EXPECT_EQ(out.plain, blockOf({{3, 3}, {10, 2}, {19, 1}}));

    // A new value behind a run: 0x11, sign 0; the coefficient at 2 does not count, the zeros at 1 and 3 do.
    StreamIn one({0x53, 0x80}); // 0101 0 0 ... : -1, correction 0
    out.set(blockOf({{2, -2}}));
    EXPECT_EQ(decodeACRefine(one, out, {1, 3, 0}, table).status, zmxStsNoErr);
    EXPECT_EQ(out.plain, blockOf({{2, -2}, {3, -1}}));

    // Of s only that it is not zero counts: 0x02 reads one bit and stores p1.
    StreamIn two({0x6C});
    out.set(Block{});
    EXPECT_EQ(decodeACRefine(two, out, {4, 4, 3}, table).status, zmxStsNoErr);
    EXPECT_EQ(out.plain, blockOf({{4, 8}}));
    EXPECT_EQ(two.state.plain.bitCount, 3);
    // After a new value the band goes on; 0x00 corrects what is left and ends it.
    StreamIn end({0x48, 0x40}); // 0100 1, 0000, 1
    out.set(blockOf({{5, -2}}));
    EXPECT_EQ(decodeACRefine(end, out, {1, 63, 0}, table).status, zmxStsNoErr);
    EXPECT_EQ(out.plain, blockOf({{1, 1}, {5, -3}}));
    EXPECT_EQ(end.state.plain.eobRun, 0);
}

TEST(ProgressiveDecoding, ARefinementWithoutAPlaceStoresBehindTheBand) {
    DecodeTable table(kSymbols);
    for (auto flush : bothEnds) {
        BlockOut out(flush);
        out.set(Block{});
        StreamIn in({0x88}); // 0xF1, 1: 15 zeros and a place, in a band of 2
        EXPECT_EQ(decodeACRefine(in, out, {3, 4, 0}, table).status, zmxStsNoErr);
        EXPECT_EQ(out.plain, blockOf({{5, 1}}));
        StreamIn last({0x88});
        out.set(Block{});
        EXPECT_EQ(decodeACRefine(last, out, {60, 63, 0}, table).status, zmxStsNoErr);
        EXPECT_EQ(out.plain, blockOf({{63, 1}})) << "the spare entry 64";
    }
}

TEST(ProgressiveDecoding, RandomTablesAndStreams) {
    int meaningful[4] = {}, failed[4] = {};
    for (int seed = 1; seed <= rounds(3000); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        const auto flushAt = randomFlush(rng);
        DecodeTable table(flushAt);
        table.build(randomDecoderList(rng));
        const int kind = seed % 4;
        const int ffOneIn = rng.oneIn(3) ? 400 : int(rng.range(2, 40));
        StreamIn in(randomStream(rng, int(rng.range(1, kind == 1 ? 6 : 150)), ffOneIn, kind == 1 ? 2 : 10), flushAt);
        BlockOut out(flushAt);
        rng.bytes(&in.state.plain, sizeof in.state.plain);
        in.state.plain.bitCount = int(rng.range(rng.oneIn(4) ? -15 : 0, 32));
        in.pos[0] = in.pos[1] = rng.oneIn(2) ? 0 : int(rng.range(0, in.len() + 2));
        in.state.plain.eobRun = rng.oneIn(3) ? int(rng.range(-2, 5)) : 0;
        in.state.share();
        const int ss = int(rng.range(1, 63));
        const Band band{ss, int(rng.range(ss, 63)), int(rng.range(0, 13))};
        for (int call = 0; call < 14; ++call) {
            if (rng.oneIn(2)) out.set(randomBlock(rng, int(rng.range(1, 6)), 15));
            const Outcome o = kind == 0   ? decodeDCFirst(in, out, band.al, table)
                              : kind == 1 ? decodeDCRefine(in, out, band.al)
                              : kind == 2 ? decodeACFirst(in, out, band, table)
                                          : decodeACRefine(in, out, band, table);
            if (::testing::Test::HasFailure()) return;
            if (!o.path) break;
            ++meaningful[kind];
            failed[kind] += o.status != zmxStsNoErr;
            if (in.marker[1] && rng.oneIn(2)) in.restart();
        }
    }
    for (int n : meaningful) EXPECT_GT(n, rounds(2000));
    for (int n : failed) EXPECT_GT(n, rounds(100));
}
