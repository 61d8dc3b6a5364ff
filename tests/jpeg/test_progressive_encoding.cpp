// Progressive JPEG blocks: encoding and statistics, and whole pictures' scans there and back.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/support/progressive.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/rounds.h"

#include <gtest/gtest.h>

namespace {

void preset(StreamOut& out, int eobRun, int corrections = 0) {
    out.state.plain.eobRun = eobRun;
    out.state.plain.correctionCount = corrections;
    for (int i = 0; i < corrections; ++i) out.state.plain.correctionBits[i] = Zmx8u(i % 3 == 0);
    out.state.share();
}

} // namespace

TEST(ProgressiveEncoding, OrderOfTests) {
    EncodeTable table(octets());
    EncodeStateTwin state;
    Guarded<Zmx8u> dst(4);
    dst.fill(9);
    Guarded<Zmx16s> block(64), lastDC(1);
    Guarded<Zmx32u> counts(257);
    counts.fill(0);
    lastDC[0] = 5;
    int pos = 0;
    checkOrder({kNull, kSize, kNull, kNull, kNull, kNull, kBadArg, kNull}, [&](const Bad& bad) {
        return zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(
            bad.null(4, block.data()), bad.null(0, dst.data()), bad.below1(1, 4), bad.null(2, &pos),
            bad.null(5, lastDC.data()), bad.any(6, 0, {14, -1}), bad.null(7, table.lib()), bad.null(3, state.lib()), 0);
    });
    checkOrder({kNull, kSize, kNull, kNull, kNull, kBadArg}, [&](const Bad& bad) {
        return zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(bad.null(4, block.data()), bad.null(0, dst.data()),
                                                           bad.below1(1, 4), bad.null(2, &pos), bad.any(5, 0, {14, -1}),
                                                           bad.null(3, state.lib()), 0);
    });
    for (auto encode : {zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1, zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1}) {
        checkOrder({kNull, kSize, kNull, kNull, kNull, kNull, kBadArg, kBadArg, kBadArg}, [&](const Bad& bad) {
            return encode(bad.null(5, block.data()), bad.null(0, dst.data()), bad.below1(1, 4), bad.null(2, &pos),
                          bad.below1(6, 1), bad.any(7, 63, {64}), bad.any(8, 13, {14, -1}), bad.null(3, table.lib()),
                          bad.null(4, state.lib()), 0);
        });
        // A flush needs the table, and no block or band.
        checkOrder({kNull, kSize, kNull, kNull, kNull}, [&](const Bad& bad) {
            return encode(nullptr, bad.null(0, dst.data()), bad.below1(1, 4), bad.null(2, &pos), 0, 64, -1,
                          bad.null(3, table.lib()), bad.null(4, state.lib()), -1);
        });
    }
    checkOrder({kNull, kSize, kNull, kNull}, [&](const Bad& bad) {
        const ZmxStatus refine = zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(
            nullptr, bad.null(0, dst.data()), bad.below1(1, 4), bad.null(2, &pos), 14, bad.null(3, state.lib()), 2);
        const ZmxStatus first = zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(nullptr, bad.null(0, dst.data()),
                                                                           bad.below1(1, 4), bad.null(2, &pos), nullptr,
                                                                           14, nullptr, bad.null(3, state.lib()), 2);
        EXPECT_EQ(first, refine);
        return first;
    });
    checkOrder({kNull, kNull, kNull, kBadArg}, [&](const Bad& bad) {
        return zmxiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(bad.null(0, block.data()), bad.null(1, counts.data()),
                                                               bad.null(2, lastDC.data()), bad.any(3, 0, {14, -1}));
    });
    for (auto count :
         {zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1, zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1}) {
        checkOrder({kNull, kNull, kNull, kBadArg, kBadArg, kBadArg}, [&](const Bad& bad) {
            return count(bad.null(2, block.data()), bad.null(0, counts.data()), bad.any(3, 1, {64}), bad.below1(4, 63),
                         bad.any(5, 0, {14, -1}), bad.null(1, state.lib()), 0);
        });
        checkOrder({kNull, kNull}, [&](const Bad& bad) {
            return count(nullptr, bad.null(0, counts.data()), 0, 0, -1, bad.null(1, state.lib()), 1);
        });
    }
    EXPECT_TRUE(state.same());
    EXPECT_EQ(pos, 0);
    EXPECT_EQ(lastDC[0], 5);
    EXPECT_EQ(dst.copy(), Bytes(4, 9));
    EXPECT_EQ(counts.copy(), std::vector<Zmx32u>(257));
}

TEST(ProgressiveEncoding, DomainOfTheBand) {
    EncodeTable table(octets());
    BlockIn block{Block{}};
    const auto edges = {INT32_MIN, -1, 0, 1, 2, 13, 14, 62, 63, 64, INT32_MAX};
    for (int ss : edges)
        for (int se : edges)
            for (int al : edges) {
                const bool good = ss >= 1 && ss <= 63 && se >= ss && se <= 63 && al >= 0 && al <= 13;
                const ZmxStatus expected = good ? zmxStsNoErr : zmxStsBadArgErr;
                for (auto encode :
                     {zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1, zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1}) {
                    StreamOut out(1);
                    ASSERT_EQ(encode(block.data(), out.dst.data(), 1, &out.pos[0], ss, se, al, table.lib(),
                                     out.state.lib(), 0),
                              expected);
                    out.state.plain.eobRun = good;
                    ASSERT_TRUE(out.same());
                }
                for (auto count : {zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1,
                                   zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1}) {
                    Pass pass;
                    ASSERT_EQ(count(block.data(), pass.counts.data(), ss, se, al, pass.state.lib(), 0), expected);
                    pass.state.plain.eobRun = good;
                    ASSERT_TRUE(pass.same());
                }
            }
    for (int al : edges) {
        const ZmxStatus expected = al >= 0 && al <= 13 ? zmxStsNoErr : zmxStsBadArgErr;
        StreamOut out(4);
        Zmx16s lastDC = 0;
        Pass pass;
        EXPECT_EQ(zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(block.data(), out.dst.data(), 4, &out.pos[0], &lastDC, al,
                                                             table.lib(), out.state.lib(), 0),
                  expected);
        EXPECT_EQ(zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(block.data(), out.dst.data(), 4, &out.pos[0], al,
                                                              out.state.lib(), 0),
                  expected);
        EXPECT_EQ(zmxiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(block.data(), pass.counts.data(), &lastDC, al),
                  expected);
    }
}

TEST(ProgressiveEncoding, DCFirst) {
    EncodeTable table(octets());
    StreamOut out(20);
    Zmx16s lastDC[2] = {};
    EXPECT_EQ(encodeDCFirst(out, blockOf({{0, -13}}), lastDC, 2, table),
              zmxStsNoErr); // -13 >> 2 is -4: 3, 011
    EXPECT_EQ(lastDC[0], -4);
    EXPECT_EQ(encodeDCFirst(out, blockOf({{0, -13}}), lastDC, 2, table), zmxStsNoErr); // 0
    EXPECT_EQ(encodeDCFirst(out, blockOf({{0, 7}}), lastDC, 3, table), zmxStsNoErr);   // 0 - -4: 3, 100
    EXPECT_EQ(flushDCFirst(out), zmxStsNoErr);
    EXPECT_EQ(out.written(), (Bytes{0x03, 0x60, 0x00, 0x73}));
    // Categories up to 11 can be coded.
    Pass pass;
    for (auto [dc, status] : {std::pair{2047, zmxStsNoErr},
                              {2048, zmxStsDCTRangeErr},
                              {-2047, zmxStsNoErr},
                              {-2048, zmxStsDCTRangeErr},
                              {-32768, zmxStsDCTRangeErr}}) {
        lastDC[0] = lastDC[1] = 0;
        EXPECT_EQ(encodeDCFirst(out, blockOf({{0, dc}}), lastDC, 0, table), status);
        EXPECT_EQ(lastDC[0], dc) << "changed all the same";
        lastDC[0] = lastDC[1] = 0;
        EXPECT_EQ(countDC(pass, blockOf({{0, dc}}), lastDC, 0), status);
        EXPECT_EQ(lastDC[0], dc);
    }
    EXPECT_EQ(pass.plain[11], 2u);
    EXPECT_EQ(std::accumulate(pass.plain.begin(), pass.plain.end(), 0u), 2u);
}

TEST(ProgressiveEncoding, DCRefine) {
    StreamOut out(2);
    const int values[] = {5, 5, 5, -1, -2, -2, -8, -8};
    const int als[] = {0, 1, 2, 13, 0, 1, 2, 3}; // 1 0 1 1 0 1 0 1
    for (int i = 0; i < 8; ++i) EXPECT_EQ(encodeDCRefine(out, blockOf({{0, values[i]}, {1, -1}}), als[i]), zmxStsNoErr);
    EXPECT_EQ(out.written(), Bytes{0xB5});
    EXPECT_EQ(flushDCRefine(out), zmxStsNoErr);
    EXPECT_EQ(out.pos[0], 1) << "nothing pending";
}

TEST(ProgressiveEncoding, ABandOfZerosRaisesTheRun) {
    EncodeTable table(octets());
    StreamOut out(8);
    Pass first, refine;
    for (int i = 1; i <= 3; ++i) {
        // Magnitudes shift towards zero: -1 and -3 are zeros here.
        const Block b = blockOf({{0, 99}, {1, -1}, {30, -3}, {63, 3}});
        EXPECT_EQ(encodeACFirst(out, b, {1, 63, 2}, table), zmxStsNoErr);
        EXPECT_EQ(out.state.plain.eobRun, i);
        countAC(first, AC::First, b, {1, 63, 2});
        EXPECT_EQ(first.state.plain.eobRun, i);
    }
    EXPECT_EQ(encodeACRefine(out, Block{}, kAll, table), zmxStsNoErr);
    EXPECT_EQ(out.state.plain.eobRun, 4) << "with no correction bit";
    EXPECT_EQ(out.state.plain.correctionCount, 0);
    EXPECT_EQ(out.pos[0], 0);
    EXPECT_EQ(flushACFirst(out, table), zmxStsNoErr);
    EXPECT_EQ(out.written(), (Bytes{0x20, 0x3F})) << "a run of 4: 0x20 and 00";
    EXPECT_EQ(flushCount(first, AC::First), zmxStsNoErr);
    EXPECT_EQ(first.plain[0x10], 1u) << "a run of 3";
    countAC(refine, AC::Refine, Block{}, kAll);
    EXPECT_EQ(flushCount(refine, AC::Refine), zmxStsNoErr);
    EXPECT_EQ(refine.plain[0], 1u);
}

TEST(ProgressiveEncoding, ABandThatEndsOnACoefficient) {
    EncodeTable table(octets());
    StreamOut out(16);
    EXPECT_EQ(encodeACFirst(out, blockOf({{63, -2}}), kAll, table), zmxStsNoErr);
    EXPECT_EQ(out.state.plain.eobRun, 0);
    EXPECT_EQ(encodeACFirst(out, blockOf({{9, 4}, {10, 4}}), {5, 9, 1}, table), zmxStsNoErr);
    EXPECT_EQ(flushACFirst(out, table), zmxStsNoErr);
    // F0 F0 F0 E2 01, 42 10: 62 zeros and the complement of 2; 4 zeros and 2
    EXPECT_EQ(out.written(), (Bytes{0xF0, 0xF0, 0xF0, 0xE2, 0x50, 0xAF}));
}

TEST(ProgressiveEncoding, TheRunIsWrittenAheadOfACoefficient) {
    EncodeTable table(octets());
    StreamOut out(16);
    preset(out, 5);
    EXPECT_EQ(encodeACFirst(out, blockOf({{1, 1}}), {1, 1, 0}, table), zmxStsNoErr);
    EXPECT_EQ(flushACFirst(out, table), zmxStsNoErr);
    EXPECT_EQ(out.written(), (Bytes{0x20, 0x40, 0x7F})); // 0x20, 01, 0x01, 1, 11111
    for (auto [run, symbol] : {std::pair{1, 0x00},
                               {2, 0x10},
                               {3, 0x10},
                               {4, 0x20},
                               {255, 0x70},
                               {256, 0x80},
                               {511, 0x80},
                               {512, 0x90},
                               {16383, 0xD0},
                               {16384, 0xE0},
                               {32766, 0xE0},
                               {32767, 0xE0}}) {
        Pass pass;
        pass.state.plain.eobRun = run;
        pass.state.share();
        countAC(pass, AC::First, blockOf({{1, 1}}), {1, 1, 0});
        EXPECT_EQ(pass.plain[std::size_t(symbol)], 1u) << run;
        EXPECT_EQ(pass.plain[1], 1u);
    }
}

TEST(ProgressiveEncoding, ARunOf32767IsWrittenAtOnce) {
    EncodeTable table(octets());
    for (bool refine : {false, true}) {
        StreamOut out(8);
        preset(out, 32765, refine ? 2 : 0);
        EXPECT_EQ((refine ? encodeACRefine : encodeACFirst)(out, Block{}, kAll, table), zmxStsNoErr);
        EXPECT_EQ(out.pos[0], 0);
        EXPECT_EQ(out.state.plain.eobRun, 32766);
        EXPECT_EQ((refine ? encodeACRefine : encodeACFirst)(out, Block{}, kAll, table), zmxStsNoErr);
        EXPECT_EQ(out.state.plain.eobRun, 0);
        EXPECT_EQ(out.state.plain.correctionCount, 0);
        EXPECT_EQ(flushACFirst(out, table), zmxStsNoErr);
        // 0xE0, fourteen ones; the correction bits 1 and 0 of the other
        EXPECT_EQ(out.written(), refine ? (Bytes{0xE0, 0xFF, 0x00, 0xFE}) : (Bytes{0xE0, 0xFF, 0x00, 0xFF, 0x00}));
        Pass pass;
        pass.state.plain.eobRun = 32766;
        pass.state.share();
        countAC(pass, refine ? AC::Refine : AC::First, Block{}, kAll);
        EXPECT_EQ(pass.plain[224], 1u);
        EXPECT_EQ(pass.state.plain.eobRun, 0);
    }
}

TEST(ProgressiveEncoding, RunsBeyond32767) {
    EncodeTable table(octets());
    const Block one = blockOf({{1, 1}});
    // No scan gets there, a caller's state may: 32767 of it as the symbol 224, and the rest.
    for (bool refine : {false, true}) {
        StreamOut out(8);
        preset(out, 32767 + 4);
        EXPECT_EQ((refine ? encodeACRefine : encodeACFirst)(out, one, {1, 1, 0}, table), zmxStsNoErr);
        EXPECT_EQ(out.pos[0], 5); // E0, 14 bits; 20, 2 bits; 01, 1
        // A rest of more than 14 bits has no symbol.
        for (int run : {32767 + 32768, 32767 + 65535}) {
            StreamOut full(8);
            preset(full, run, 3);
            EXPECT_EQ((refine ? encodeACRefine : encodeACFirst)(full, one, {1, 1, 0}, table), zmxStsDCTRangeErr);
            EXPECT_EQ(full.state.plain.eobRun, run - 32767);
            Pass pass;
            pass.state.plain.eobRun = run;
            pass.state.share();
            EXPECT_EQ(countAC(pass, refine ? AC::Refine : AC::First, one, {1, 1, 0}), zmxStsDCTRangeErr);
            EXPECT_EQ(pass.plain[224], 1u);
            pass.state.plain.eobRun = run;
            pass.state.share();
            EXPECT_EQ(flushCount(pass, refine ? AC::Refine : AC::First), zmxStsDCTRangeErr);
            // In a flush the first scan reports the last write alone, the refinement the run.
            StreamOut end(32);
            preset(end, run, 3);
            EXPECT_EQ((refine ? flushACRefine : flushACFirst)(end, table), refine ? zmxStsDCTRangeErr : zmxStsNoErr);
            // 14 ones, or 13 and a zero; the correction bits are given up.
            EXPECT_EQ(end.written(),
                      run == 65535 ? (Bytes{0xE0, 0xFF, 0x00, 0xFF, 0x00}) : (Bytes{0xE0, 0xFF, 0x00, 0xFB}));
        }
    }
}

TEST(ProgressiveEncoding, FlushReportsTheRunOrNot) {
    EncodeTable none{HuffmanList{}}, table(octets());
    StreamOut first(4), refine(4);
    preset(first, 3, 2);
    EXPECT_EQ(flushACFirst(first, none), zmxStsNoErr);
    preset(refine, 3, 2);
    EXPECT_EQ(flushACRefine(refine, none), zmxStsHuffTableErr);
    for (StreamOut* out : {&first, &refine}) EXPECT_EQ(out->pos[0], 0);
    // A destination without room for the run: with nothing pending the last write needs none.
    for (bool fine : {false, true}) {
        StreamOut full(1);
        full.pos[0] = full.pos[1] = 1;
        preset(full, 3);
        EXPECT_EQ((fine ? flushACRefine : flushACFirst)(full, table), fine ? zmxStsOutOfBufErr : zmxStsNoErr);
        StreamOut pending(1);
        pending.pos[0] = pending.pos[1] = 1;
        preset(pending, 3);
        pending.state.plain.bitCount = 2;
        pending.state.share();
        EXPECT_EQ((fine ? flushACRefine : flushACFirst)(pending, table), zmxStsOutOfBufErr);
    }
    // Held bits, also in a first scan's flush.
    for (bool fine : {false, true}) {
        StreamOut out(8);
        preset(out, 1, 10); // 0x00, 1001001001, 111111
        EXPECT_EQ((fine ? flushACRefine : flushACFirst)(out, table), zmxStsNoErr);
        EXPECT_EQ(out.written(), (Bytes{0x00, 0x92, 0x7F}));
        StreamOut nothing(1);
        EXPECT_EQ((fine ? flushACRefine : flushACFirst)(nothing, table), zmxStsNoErr);
        EXPECT_EQ(nothing.pos[0], 0);
    }
}

TEST(ProgressiveEncoding, Categories) {
    EncodeTable table(octets());
    for (auto [v, encoder, statistics] : {std::tuple{1023, zmxStsNoErr, zmxStsNoErr},
                                          {1024, zmxStsNoErr, zmxStsDCTRangeErr},
                                          {-2047, zmxStsNoErr, zmxStsDCTRangeErr},
                                          {2048, zmxStsDCTRangeErr, zmxStsDCTRangeErr},
                                          {-32768, zmxStsDCTRangeErr, zmxStsDCTRangeErr}}) {
        SCOPED_TRACE(v);
        // Ahead of it a run, a ZRL and a coefficient: they are written or counted all the same.
        const Block b = blockOf({{1, 1}, {20, v}});
        StreamOut out(32);
        preset(out, 1);
        EXPECT_EQ(encodeACFirst(out, b, kAll, table), encoder);
        EXPECT_GE(out.pos[0], 3);
        Pass pass;
        pass.state.plain.eobRun = 1;
        pass.state.share();
        EXPECT_EQ(countAC(pass, AC::First, b, kAll), statistics);
        EXPECT_EQ(pass.plain[0], 1u);
        EXPECT_EQ(pass.plain[1], 1u);
        EXPECT_EQ(pass.plain[240], 1u);
        // The shift comes first.
        EXPECT_EQ(encodeACFirst(out, blockOf({{20, v}}), {1, 63, 5}, table), zmxStsNoErr);
        EXPECT_EQ(countAC(pass, AC::First, blockOf({{20, v}}), {1, 63, 6}), zmxStsNoErr);
        // A refinement has no such limit.
        EXPECT_EQ(countAC(pass, AC::Refine, b, kAll), zmxStsNoErr);
    }
}

TEST(ProgressiveEncoding, CorrectionBitsAreHeldUpTo937) {
    EncodeTable table(octets());
    Block b{};
    for (int k = 1; k <= 38; ++k) b[std::size_t(annexK::zigzag[k])] = Zmx16s(k % 2 ? 2 : -3);
    StreamOut held(300), written(300);
    preset(held, 20, 899);
    EXPECT_EQ(encodeACRefine(held, b, kAll, table), zmxStsNoErr);
    EXPECT_EQ(held.state.plain.correctionCount, 937);
    EXPECT_EQ(held.state.plain.eobRun, 21);
    EXPECT_EQ(held.pos[0], 0);
    EXPECT_EQ(held.state.plain.correctionBits[899], 0);
    EXPECT_EQ(held.state.plain.correctionBits[900], 1);
    preset(written, 20, 900);
    EXPECT_EQ(encodeACRefine(written, b, kAll, table), zmxStsNoErr);
    EXPECT_EQ(written.state.plain.correctionCount, 0) << "938 of them: the run is written as it stands";
    EXPECT_EQ(written.state.plain.eobRun, 0);
    EXPECT_EQ(written.pos[0], (8 + 4 + 938) / 8);
    EXPECT_EQ(written.plain[0], 0x40);
    Pass pass;
    pass.state.plain.eobRun = 20;
    pass.state.plain.correctionCount = 900;
    pass.state.share();
    countAC(pass, AC::Refine, b, kAll);
    EXPECT_EQ(pass.plain[0x40], 1u);
    EXPECT_EQ(pass.state.plain.correctionCount, 0);
}

TEST(ProgressiveEncoding, RefinementWritesZRLUpToTheLastNewCoefficient) {
    EncodeTable table(octets());
    // 20 zeros ahead of a known coefficient, none new: the run alone, whatever stands behind.
    StreamOut out(64);
    EXPECT_EQ(encodeACRefine(out, blockOf({{21, 2}, {50, 3}}), kAll, table), zmxStsNoErr);
    EXPECT_EQ(out.pos[0], 0);
    EXPECT_EQ(out.state.plain.eobRun, 1);
    EXPECT_EQ(out.state.plain.correctionCount, 2);
    // With a new one at 40: run 1 and its bits 0, 1; F0 ahead of 21; behind it 22 zeros and so F0 with 21's
    // bit 0 and then 6 zeros; the new one, positive; a known one at 62.
    EXPECT_EQ(encodeACRefine(out, blockOf({{21, -2}, {40, 1}, {62, 5}}), kAll, table), zmxStsNoErr);
    EXPECT_EQ(out.state.plain.eobRun, 1);
    EXPECT_EQ(out.state.plain.correctionCount, 1);
    EXPECT_EQ(flushACRefine(out, table), zmxStsNoErr);
    // 00 01, F0, F0 0, 61 1, 00 1, 111
    EXPECT_EQ(out.written(), (Bytes{0x00, 0x7C, 0x3C, 0x0C, 0x30, 0x0F}));
    Pass pass;
    countAC(pass, AC::Refine, blockOf({{21, -2}, {40, 1}, {62, 5}}), kAll);
    EXPECT_EQ(pass.plain[240], 2u);
    EXPECT_EQ(pass.plain[0x61], 1u);
    EXPECT_EQ(pass.state.plain.correctionCount, 1);
}

namespace {

// A block as it stands in a refinement scan: known coefficients, new ones, zeros.
Block refinable(Rng& rng, int oneIn, int al) {
    Block b{};
    for (Zmx16s& c : b)
        if (rng.oneIn(oneIn)) {
            const int magnitude = int(rng.range(1, rng.oneIn(2) ? 1 : 15)) << al;
            c = Zmx16s(rng.oneIn(2) ? magnitude : -magnitude);
        }
    return b;
}

// The blocks of one AC scan, encoded into a destination of len bytes until a status other than 0, then
// flushed.
ZmxStatus encodeScan(StreamOut& out, const std::vector<Block>& blocks, AC kind, Band band, EncodeTable& table) {
    ZmxStatus s = zmxStsNoErr;
    for (std::size_t i = 0; s == zmxStsNoErr && i < blocks.size(); ++i)
        s = kind == AC::First ? encodeACFirst(out, blocks[i], band, table)
                              : encodeACRefine(out, blocks[i], band, table);
    return s;
}

} // namespace

TEST(ProgressiveEncoding, DestinationFullAtEveryByte) {
    EncodeTable table(octets());
    for (AC kind : {AC::First, AC::Refine}) {
        Rng rng(7);
        std::vector<Block> blocks;
        for (int i = 0; i < 20; ++i) blocks.push_back(refinable(rng, i % 4 ? 40 : 5, 0));
        StreamOut whole(4000);
        ASSERT_EQ(encodeScan(whole, blocks, kind, kAll, table), zmxStsNoErr);
        ASSERT_EQ(kind == AC::First ? flushACFirst(whole, table) : flushACRefine(whole, table), zmxStsNoErr);
        const Bytes bytes = whole.written();
        ASSERT_GT(bytes.size(), 60u);
        for (int len = 1; len <= int(bytes.size()); ++len) {
            SCOPED_TRACE(len);
            StreamOut out(len);
            ZmxStatus s = encodeScan(out, blocks, kind, kAll, table);
            EXPECT_TRUE(s == zmxStsNoErr || s == zmxStsOutOfBufErr);
            if (s) { // tried again, and once more: what is held goes down bit by bit
                const auto before = out.state.plain.correctionCount;
                encodeScan(out, blocks, kind, kAll, table);
                EXPECT_LE(out.state.plain.correctionCount, before);
                encodeScan(out, blocks, kind, kAll, table);
            }
            const ZmxStatus f = kind == AC::First ? flushACFirst(out, table) : flushACRefine(out, table);
            if (len == int(bytes.size())) {
                EXPECT_EQ(s, zmxStsNoErr);
                EXPECT_EQ(f, zmxStsNoErr);
            }
            const Bytes got = out.written();
            EXPECT_TRUE(std::equal(got.begin(), got.end(), bytes.begin()));
        }
    }
}

TEST(ProgressiveEncoding, AFullDestinationLeavesTheBitsNotYetWritten) {
    EncodeTable table(octets());
    // One byte of room: the symbol 0x00 fills it, seven held bits are pending, the eighth has no room.
    StreamOut out(1);
    preset(out, 1, 12);
    EXPECT_EQ(encodeACRefine(out, blockOf({{1, 1}, {2, 4}}), kAll, table), zmxStsOutOfBufErr);
    EXPECT_EQ(out.state.plain.eobRun, 0) << "the run was written whole";
    EXPECT_EQ(out.state.plain.correctionCount, 12 - 7);
    EXPECT_EQ(out.state.plain.bitCount, 7);
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(out.state.plain.correctionBits[i], i % 3 == 0) << "they stay where they stood";
    // Behind the held bits: the symbol has no room.
    StreamOut behind(2);
    preset(behind, 1, 3);
    EXPECT_EQ(encodeACRefine(behind, blockOf({{1, 1}}), kAll, table), zmxStsNoErr);
    EXPECT_EQ(encodeACRefine(behind, blockOf({{1, 1}}), kAll, table), zmxStsOutOfBufErr);
    EXPECT_EQ(behind.state.plain.correctionCount, 0);
    EXPECT_EQ(behind.state.plain.eobRun, 1) << "the run itself has no room";
}

TEST(ProgressiveEncoding, RandomBlocksTablesAndStates) {
    int good[4] = {}, bad[4] = {};
    for (int seed = 1; seed <= rounds(1600); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        const auto flushAt = randomFlush(rng);
        EncodeTable table(rng.oneIn(2) ? octets() : randomList(rng, {200, 254}, {1, 1}, 2), flushAt);
        const int kind = seed % 4;
        StreamOut out(int(rng.range(1, kind == 1 ? 3 : rng.oneIn(2) ? 40 : 1500)));
        rng.bytes(&out.state.plain, sizeof out.state.plain);
        out.state.plain.bitCount = int(rng.range(0, 7));
        out.state.plain.bitBuffer &= 0xFFFFFFu << (24 - out.state.plain.bitCount) & 0xFFFFFF;
        out.state.plain.eobRun = rng.oneIn(3) ? int(rng.range(32760, 32766)) : int(rng.range(0, 400));
        out.state.plain.correctionCount = rng.oneIn(3) ? int(rng.range(880, 937)) : int(rng.range(0, 30));
        out.state.share();
        Pass pass;
        pass.state.plain = out.state.plain;
        pass.state.share();
        const int ss = int(rng.range(1, 63));
        const Band band{ss, int(rng.range(ss, 63)), int(rng.range(0, rng.oneIn(2) ? 3 : 13))};
        Zmx16s lastDC[2] = {}, lastCount[2] = {};
        for (int call = 0; call < (kind == 1 ? 30 : 10); ++call) {
            const int oneIn = rng.oneIn(4) ? 60 : int(rng.range(1, 8));
            Block b = kind == 3 && rng.oneIn(2) ? refinable(rng, oneIn, band.al)
                                                : randomBlock(rng, oneIn, int(rng.range(2, 13)));
            if (rng.oneIn(10)) b[std::size_t(rng.range(0, 63))] = -32768;
            const ZmxStatus s = kind == 0   ? encodeDCFirst(out, b, lastDC, band.al, table)
                                : kind == 1 ? encodeDCRefine(out, b, band.al)
                                : kind == 2 ? encodeACFirst(out, b, band, table)
                                            : encodeACRefine(out, b, band, table);
            ++(s ? bad : good)[kind];
            if (kind == 0) countDC(pass, b, lastCount, band.al);
            if (kind == 2) countAC(pass, AC::First, b, band);
            if (kind == 3) countAC(pass, AC::Refine, b, band);
            if (rng.oneIn(6)) {
                if (kind == 0) flushDCFirst(out);
                if (kind == 1) flushDCRefine(out);
                if (kind == 2) flushACFirst(out, table);
                if (kind == 3) flushACRefine(out, table);
                if (kind > 1) flushCount(pass, kind == 2 ? AC::First : AC::Refine);
            }
            if (::testing::Test::HasFailure()) return;
        }
    }
    for (int n : good) EXPECT_GT(n, rounds(400));
    for (int n : bad) EXPECT_GT(n, rounds(100));
}

namespace {

// One scan of a picture of one component: the kind of coding, the band, and for AC scans the tables of its
// own symbols.
struct ScanShape {
    bool dc, refine;
    Band band;
};

// A picture in six scans, as a progressive encoder would split it.
const ScanShape kScans[] = {{true, false, {0, 0, 1}},  {false, false, {1, 5, 2}}, {false, false, {6, 63, 2}},
                            {false, true, {1, 63, 1}}, {true, true, {0, 0, 0}},   {false, true, {1, 63, 0}}};

// The scan's stream, in intervals of `every` blocks, each flushed and behind it a restart marker.
Bytes encodeShape(const ScanShape& scan, const std::vector<Block>& blocks, std::size_t every, HuffmanList& list,
                  Digest* digest) {
    Pass pass;
    std::vector<std::pair<int, int>> runs; // eobRun and correctionCount behind each block of the counting pass
    Zmx16s lastDC[2] = {};
    const AC kind = scan.refine ? AC::Refine : AC::First;
    if (!(scan.dc && scan.refine)) {
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            if (i % every == 0) {
                lastDC[0] = lastDC[1] = 0;
                if (i && !scan.dc) {
                    EXPECT_EQ(flushCount(pass, kind), zmxStsNoErr);
                }
            }
            EXPECT_EQ(scan.dc ? countDC(pass, blocks[i], lastDC, scan.band.al)
                              : countAC(pass, kind, blocks[i], scan.band),
                      zmxStsNoErr);
            runs.push_back({pass.state.plain.eobRun, pass.state.plain.correctionCount});
        }
        if (!scan.dc) {
            EXPECT_EQ(flushCount(pass, kind), zmxStsNoErr);
        }
        if (digest) digest->add(pass.plain);
        list = optimalList(pass.plain);
    }
    EncodeTable table(list);
    Bytes stream;
    for (std::size_t i = 0; i < blocks.size(); i += every) {
        StreamOut out(int(every) * 400 + 1100);
        lastDC[0] = lastDC[1] = 0;
        for (std::size_t j = i; j < std::min(blocks.size(), i + every); ++j) {
            const Block& b = blocks[j];
            EXPECT_EQ(scan.dc       ? scan.refine ? encodeDCRefine(out, b, scan.band.al)
                                                  : encodeDCFirst(out, b, lastDC, scan.band.al, table)
                            : scan.refine ? encodeACRefine(out, b, scan.band, table)
                                    : encodeACFirst(out, b, scan.band, table),
                      zmxStsNoErr);
            if (!scan.dc) {
                EXPECT_EQ((std::pair{out.state.plain.eobRun, out.state.plain.correctionCount}), runs[j])
                    << "counting and writing see the same runs";
            }
        }
        EXPECT_EQ(scan.dc       ? scan.refine ? flushDCRefine(out) : flushDCFirst(out)
                        : scan.refine ? flushACRefine(out, table)
                                : flushACFirst(out, table),
                  zmxStsNoErr);
        const Bytes part = withMarker(out.written(), Zmx8u(0xD0 + i / every % 8));
        stream.insert(stream.end(), part.begin(), part.end());
    }
    return stream;
}

Outcome decodeShape(const ScanShape& scan, StreamIn& in, BlockOut& out, DecodeTable& table) {
    return scan.dc ? scan.refine ? decodeDCRefine(in, out, scan.band.al) : decodeDCFirst(in, out, scan.band.al, table)
           : scan.refine ? decodeACRefine(in, out, scan.band, table)
                         : decodeACFirst(in, out, scan.band, table);
}

// Decodes a whole scan into the blocks; the marker behind each interval has to be the right one.
void decodeScan(const ScanShape& scan, const Bytes& stream, std::size_t every, const HuffmanList& list,
                std::vector<Block>& blocks) {
    DecodeTable table(list);
    StreamIn in(stream);
    BlockOut out;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        if (i && i % every == 0) {
            // The reader may not have come to the marker yet: it is behind at most one byte of filling.
            while (in.marker[1] == 0) {
                in.state.plain.bitCount = 0;
                in.state.share();
                decodeDCRefine(in, out, 0);
            }
            ASSERT_EQ(in.marker[0], 0xD0 + int(i / every - 1) % 8);
            in.restart();
            out.setDC(0);
        }
        out.set(blocks[i]);
        ASSERT_EQ(decodeShape(scan, in, out, table).status, zmxStsNoErr);
        blocks[i] = out.plain;
    }
}

std::vector<Block> picture(Rng& rng, int n) {
    std::vector<Block> blocks;
    while (int(blocks.size()) < n) {
        const int oneIn = rng.oneIn(3) ? 70 : int(rng.range(1, 12));
        blocks.push_back(randomBlock(rng, oneIn, int(rng.range(2, 9))));
        if (rng.oneIn(4)) blocks.insert(blocks.end(), std::size_t(rng.range(1, 6)), Block{});
    }
    return blocks;
}

} // namespace

TEST(ProgressiveScans, ThereAndBack) {
    for (int seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        const std::vector<Block> blocks = picture(rng, int(rng.range(1, 60)));
        const std::size_t every = seed % 3 ? blocks.size() : std::size_t(rng.range(1, 20));
        std::vector<Block> got(blocks.size());
        for (const ScanShape& scan : kScans) {
            HuffmanList list;
            const Bytes stream = encodeShape(scan, blocks, every, list, nullptr);
            decodeScan(scan, stream, every, list, got);
            if (::testing::Test::HasFailure()) return;
        }
        ASSERT_EQ(got, blocks);
    }
}

TEST(ProgressiveScans, CutAtEveryLengthAndResumed) {
    for (const ScanShape& scan : kScans) {
        Rng rng(5);
        const std::vector<Block> blocks = picture(rng, 6);
        HuffmanList list;
        Bytes whole = encodeShape(scan, blocks, blocks.size(), list, nullptr);
        DecodeTable table(list);
        for (std::size_t cut = 1; cut <= whole.size(); ++cut) {
            SCOPED_TRACE(cut);
            StreamIn head(Bytes(whole.begin(), whole.begin() + std::ptrdiff_t(cut)));
            BlockOut out;
            bool path = true;
            ZmxStatus s = zmxStsNoErr;
            for (std::size_t i = 0; path && s == zmxStsNoErr && i < blocks.size(); ++i) {
                if (scan.refine) out.set(blocks[i]);
                const Outcome o = decodeShape(scan, head, out, table);
                path = o.path;
                s = o.status;
            }
            if (!path || s == zmxStsNoErr) continue;
            StreamIn rest(whole);
            rest.resume(head);
            for (int call = 0; path && call < 4; ++call) path = decodeShape(scan, rest, out, table).path;
            if (::testing::Test::HasFailure()) return;
        }
    }
}

TEST(ProgressiveScans, Digests) {
    Digest streams, counts, decoded;
    for (int seed = 1; seed <= 10; ++seed) {
        Rng rng{std::uint64_t(seed)};
        const std::vector<Block> blocks = picture(rng, 20);
        for (const ScanShape& scan : kScans) {
            HuffmanList list;
            const Bytes stream = encodeShape(scan, blocks, blocks.size(), list, &counts);
            streams.add(stream);
            DecodeTable table(list);
            for (const Bytes& bytes : {stream, damaged(rng, stream)}) {
                StreamIn in(bytes);
                BlockOut out;
                for (std::size_t i = 0; i < blocks.size(); ++i) {
                    out.set(scan.refine ? blocks[i] : Block{});
                    const Outcome o = decodeShape(scan, in, out, table);
                    if (!o.value) break;
                    addDecoded(decoded, o, in, out);
                }
            }
        }
    }
    EXPECT_EQ(streams.get(), 0x705453698BC3CEFBu);
    EXPECT_EQ(counts.get(), 0x6A7CAA9E1E0403F9u);
    EXPECT_EQ(decoded.get(), 0x25C0D6A592B0AD65u);
}
