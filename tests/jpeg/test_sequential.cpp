// Sequential JPEG blocks: the coders on bit states, and the statistics.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/support/sequential.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/rounds.h"

#include <gtest/gtest.h>

namespace {

struct Counters {
    std::vector<Zmx32u> dc = std::vector<Zmx32u>(257), ac = std::vector<Zmx32u>(257);
};

ZmxStatus count(const Block& block, Counters& c, Zmx16s& lastDC) {
    Guarded<Zmx16s> src(std::vector<Zmx16s>(block.begin(), block.end()));
    Guarded<Zmx32u> dc(c.dc), ac(c.ac);
    Zmx16s libDC = lastDC;
    const ZmxStatus expected = model::countBlock(block.data(), c.dc.data(), c.ac.data(), lastDC);
    EXPECT_EQ(zmxiGetHuffmanStatistics8x8_JPEG_16s_C1(src.data(), dc.data(), ac.data(), &libDC), expected);
    EXPECT_EQ(libDC, lastDC);
    EXPECT_TRUE(sameBytes(c.dc, dc.copy()));
    EXPECT_TRUE(sameBytes(c.ac, ac.copy()));
    return expected;
}

} // namespace

TEST(Sequential, OrderOfTests) {
    Luminance t;
    Guarded<Zmx8u> src(Bytes{0x12, 0x34}), dst(4);
    Guarded<Zmx16s> block(64), lastDC(1);
    int pos = 0, marker = 0;
    DecodeStateTwin reader;
    EncodeStateTwin writer;
    Guarded<Zmx32u> dcCounts(257), acCounts(257);
    block.fill(7);
    const auto blockBefore = block.copy();
    dst.fill(9);

    checkOrder({kNull, kBadArg, kNull, kNull, kNull, kNull, kNull, kNull, kNull}, [&](const Bad& bad) {
        return zmxiDecodeHuffman8x8_JPEG_1u16s_C1(
            bad.null(0, src.data()), bad.any(1, 2, {-1, INT32_MIN}), bad.null(2, &pos), bad.null(3, block.data()),
            bad.null(4, lastDC.data()), bad.null(5, &marker), bad.null(6, t.decDC.lib()), bad.null(7, t.decAC.lib()),
            bad.null(8, reader.lib()));
    });
    checkOrder({kNull, kSize, kNull, kNull, kNull, kNull, kNull, kNull}, [&](const Bad& bad) {
        return zmxiEncodeHuffman8x8_JPEG_16s1u_C1(bad.null(4, block.data()), bad.null(0, dst.data()), bad.below1(1, 4),
                                                  bad.null(2, &pos), bad.null(5, lastDC.data()),
                                                  bad.null(6, t.encDC.lib()), bad.null(7, t.encAC.lib()),
                                                  bad.null(3, writer.lib()), 0);
    });
    for (int flushState : {1, -1, INT32_MIN})
        checkOrder({kNull, kSize, kNull, kNull}, [&](const Bad& bad) {
            return zmxiEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, bad.null(0, dst.data()), bad.below1(1, 4),
                                                      bad.null(2, &pos), nullptr, nullptr, nullptr,
                                                      bad.null(3, writer.lib()), flushState);
        });
    checkOrder({kNull, kNull, kNull, kNull}, [&](const Bad& bad) {
        return zmxiGetHuffmanStatistics8x8_JPEG_16s_C1(bad.null(0, block.data()), bad.null(1, dcCounts.data()),
                                                       bad.null(2, acCounts.data()), bad.null(3, lastDC.data()));
    });

    EXPECT_EQ(block.copy(), blockBefore);
    EXPECT_EQ(dst.copy(), Bytes(4, 9));
    EXPECT_TRUE(reader.same());
    EXPECT_TRUE(writer.same());
    EXPECT_TRUE(t.encDC.same() && t.encAC.same() && t.decDC.same() && t.decAC.same());
    EXPECT_EQ(pos, 0);
    EXPECT_EQ(marker, 0);
}

TEST(Sequential, AFlushNeedsNoBlock) {
    StreamOut out(4);
    out.state.plain.bitBuffer = 0xA00000;
    out.state.plain.bitCount = 3;
    out.state.share();
    EXPECT_EQ(flush(out), zmxStsNoErr);
    EXPECT_EQ(out.written(), Bytes{0xBF}) << "filled with one-bits";
    EXPECT_EQ(flush(out), zmxStsNoErr);
    EXPECT_EQ(out.pos[0], 1) << "nothing pending, nothing written";
}

TEST(Sequential, ZeroBlock) {
    Luminance t;
    StreamOut out(8);
    Zmx16s lastDC[2] = {-77, -77};
    Block block{};
    block[0] = -77;
    EXPECT_EQ(encode(out, block, lastDC, t.encDC, t.encAC), zmxStsNoErr);
    EXPECT_EQ(flush(out), zmxStsNoErr);
    EXPECT_EQ(out.written(), Bytes{0x2B}) << "00 for the DC category 0, 1010 for the end of the block, 11";

    StreamIn in({0x2B});
    BlockOut got;
    got.setDC(-77);
    EXPECT_EQ(decode(in, got, t.decDC, t.decAC).status, zmxStsNoErr);
    EXPECT_EQ(got.plain, block);
    EXPECT_EQ(in.state.plain.blockPositions, 1);
    EXPECT_EQ(in.state.plain.bitCount, 2);
}

TEST(Sequential, ValueBits) {
    Luminance t;
    // DC 5: 100 101. AC 1: 00 1; -1: 00 0; 1010.
    EXPECT_EQ(encoded(blockOf({{0, 5}}), t.encDC, t.encAC), (Bytes{0x96, 0xBF}));
    EXPECT_EQ(encoded(blockOf({{1, 1}}), t.encDC, t.encAC), (Bytes{0x0D, 0x7F}));  // 00 001 1010
    EXPECT_EQ(encoded(blockOf({{1, -1}}), t.encDC, t.encAC), (Bytes{0x05, 0x7F})); // 00 000 1010
    // DC -5: 100 010.
    EXPECT_EQ(encoded(blockOf({{0, -5}}), t.encDC, t.encAC), (Bytes{0x8A, 0xBF}));
    BlockOut out;
    StreamIn in({0x8A, 0xBF});
    out.setDC(100);
    EXPECT_EQ(decode(in, out, t.decDC, t.decAC).status, zmxStsNoErr);
    EXPECT_EQ(out.dst[0], 95);
    EXPECT_EQ(out.lastDC[0], 95);
    StreamIn in2({0x05, 0x7F});
    EXPECT_EQ(decode(in2, out, t.decDC, t.decAC).status, zmxStsNoErr);
    EXPECT_EQ(out.dst[1], -1);
    EXPECT_EQ(out.dst[0], 95);
}

TEST(Sequential, SymbolsOfRuns) {
    Counters c;
    Zmx16s lastDC = 0;
    EXPECT_EQ(count(blockOf({{63, 2}}), c, lastDC), zmxStsNoErr);
    EXPECT_EQ(c.dc[0], 1u);
    EXPECT_EQ(c.ac[240], 3u) << "62 zeros: 16, 16, 16, 14";
    EXPECT_EQ(c.ac[0xE2], 1u);
    EXPECT_EQ(c.ac[0], 0u) << "the block ends by position";
    c = {};
    EXPECT_EQ(count(blockOf({{17, 1}}), c, lastDC), zmxStsNoErr);
    EXPECT_EQ(c.ac[240], 1u);
    EXPECT_EQ(c.ac[0x01], 1u);
    EXPECT_EQ(c.ac[0], 1u) << "46 zeros at the end: no ZRL";
    EXPECT_EQ(std::accumulate(c.ac.begin(), c.ac.end(), 0u), 3u);
    c = {};
    EXPECT_EQ(count(blockOf({{16, 1}}), c, lastDC), zmxStsNoErr);
    EXPECT_EQ(c.ac[240], 0u);
    EXPECT_EQ(c.ac[0xF1], 1u) << "15 zeros";

    Luminance t;
    BlockOut out;
    for (const Block& b : {blockOf({{63, 2}}), blockOf({{17, 1}}), blockOf({{16, 1}}), blockOf({{62, 3}, {63, -3}})}) {
        StreamIn in(encoded(b, t.encDC, t.encAC));
        EXPECT_EQ(decode(in, out, t.decDC, t.decAC).status, zmxStsNoErr);
        EXPECT_EQ(out.plain, b);
    }
}

TEST(Sequential, LargestCategories) {
    // Only tables with these symbols can code them.
    EncodeTable dc(nibbles({0, 15, 16})), ac(nibbles({0, 0x10, 0x1F, 0x20}));
    StreamOut out(100);
    Zmx16s lastDC[2] = {};
    // -32768 has category 16; with a run of 0 its symbol is 0x10. Value bits: the low 16 of -32769.
    EXPECT_EQ(encode(out, blockOf({{0, -32768}, {1, -32768}}), lastDC, dc, ac), zmxStsNoErr);
    EXPECT_EQ(flush(out), zmxStsNoErr);
    EXPECT_EQ(out.written(), (Bytes{0x27, 0xFF, 0x00, 0xF1, 0x7F, 0xFF, 0x00, 0x0F}));
    // From -32768 to 32767 the difference is 65535.
    EXPECT_EQ(encode(out, blockOf({{0, 32767}}), lastDC, dc, ac), zmxStsNoErr);
    EXPECT_EQ(lastDC[0], 32767);
    EXPECT_EQ(encode(out, blockOf({{0, -32768}}), lastDC, dc, ac), zmxStsNoErr);
    // Behind a run of 15 the symbol would be 256, which no table has.
    for (auto flush : bothEnds) {
        EncodeTable edge(nibbles({0, 0x10, 0x1F, 0x20}), flush);
        EXPECT_EQ(encode(out, blockOf({{0, -32768}, {16, -32768}}), lastDC, dc, edge), zmxStsHuffTableErr);
    }

    Counters c;
    Zmx16s last = 0;
    EXPECT_EQ(count(blockOf({{0, -32768}}), c, last), zmxStsDCTRangeErr) << "category 16 of the difference";
    EXPECT_EQ(last, -32768) << "changed all the same";
    last = 0;
    EXPECT_EQ(count(blockOf({{0, 32767}}), c, last), zmxStsNoErr);
    EXPECT_EQ(c.dc[15], 1u);
    EXPECT_EQ(count(blockOf({{0, 32767}, {1, 16383}}), c, last), zmxStsNoErr);
    EXPECT_EQ(c.ac[14], 1u);
    EXPECT_EQ(count(blockOf({{0, 32767}, {40, 16384}}), c, last), zmxStsDCTRangeErr) << "category 15 of a coefficient";
    EXPECT_EQ(c.ac[240], 2u) << "what stood ahead of it is counted";
}

TEST(Sequential, ASymbolWithoutACodeStopsTheEncoder) {
    EncodeTable none{HuffmanList{}}, dc(annexK::dcLuminance), ac(annexK::acLuminance);
    Zmx16s lastDC[2] = {};
    StreamOut out(20);
    EXPECT_EQ(encode(out, blockOf({{0, 9}}), lastDC, none, ac), zmxStsHuffTableErr);
    EXPECT_EQ(lastDC[0], 9) << "the predictor is ahead of the write";
    EXPECT_EQ(encode(out, blockOf({{0, 9}, {1, 1024}}), lastDC, dc, ac), zmxStsHuffTableErr) << "category 11";
    EXPECT_EQ(out.state.plain.bitCount, 2) << "the DC symbol stands";
    EXPECT_EQ(encode(out, blockOf({{0, 2048 + 9}}), lastDC, dc, ac), zmxStsHuffTableErr) << "category 12";
    EXPECT_EQ(encode(out, blockOf({{0, 2048 + 9}}), lastDC, dc, none), zmxStsHuffTableErr) << "no end of block";
}

TEST(Sequential, SymbolsOfTheDecoder) {
    // 0000: 0x00, 0001: 0x10, 0010: 0xE0, 0011: 0xF0, 0100: 0x02, 0101: 0xD1, 0110: 0x81, 0111: 0x91
    DecodeTable t(nibbles({0x00, 0x10, 0xE0, 0xF0, 0x02, 0xD1, 0x81, 0x91}));
    const auto run = [&](const Bytes& bytes, BlockOut& out, int positionsBefore = -1) {
        StreamIn in(bytes);
        in.state.plain.blockPositions = positionsBefore;
        in.state.share();
        const ZmxStatus s = decode(in, out, t, t).status;
        return std::pair{s, in.state.plain.blockPositions};
    };
    for (auto flush : bothEnds) {
        BlockOut out(flush);
        out.setDC(40);
        // DC 0x10: a category of 0 in the low four bits leaves the predictor. Then 0xE0 ends the block.
        EXPECT_EQ(run({0x12}, out), std::pair(0, 1));
        EXPECT_EQ(out.dst[0], 40);
        EXPECT_EQ(out.plain, blockOf({{0, 40}}));
        // 0x10 ends it as well, here behind one coefficient: 0x02, 10 and 0x10.
        EXPECT_EQ(run({0x04, 0x84}, out), std::pair(0, 2)); // 0000 0100 10 0001
        EXPECT_EQ(out.plain, blockOf({{0, 40}, {1, 2}}));
        // Three ZRLs, a run of 13: position 62; then runs to 71 and to 72.
        EXPECT_EQ(run({0x03, 0x33, 0x5B, 0x40}, out), std::pair(0, 72)); // 0000 0011 0011 0011 0101 1 0110 1
        EXPECT_EQ(out.plain, blockOf({{0, 40}, {62, 1}, {63, 1}}));
        EXPECT_EQ(run({0x03, 0x33, 0x5B, 0xC0}, out, 1234), std::pair(int(zmxStsErr), 1234))
            << "behind the spare entries";
        EXPECT_EQ(out.plain, blockOf({{0, 40}, {62, 1}}));
        // Four ZRLs: 65 positions.
        EXPECT_EQ(run({0x03, 0x33, 0x30}, out), std::pair(0, 65));
        // Off the block with too few bits: the refill comes ahead of the position.
        EXPECT_EQ(run({0x03, 0x33, 0x5B, 0x80}, out).first, zmxStsErr) << "7 bits are left";
    }
}

TEST(Sequential, NothingToRead) {
    Luminance t;
    StreamIn in(Bytes{});
    BlockOut out;
    out.setDC(3);
    in.state.plain.blockPositions = 5;
    in.state.share();
    EXPECT_EQ(decode(in, out, t.decDC, t.decAC).status, zmxStsOutOfBufErr);
    EXPECT_EQ(in.state.plain.blockPositions, 0);
    EXPECT_EQ(out.plain, Block{}) << "the block is zero before anything is read";
    EXPECT_EQ(out.lastDC[0], 3);
    StreamIn marker({0xFF, 0xD0});
    EXPECT_EQ(decode(marker, out, t.decDC, t.decAC).status, zmxStsDCTRangeErr);
    EXPECT_EQ(marker.marker[0], 0xD0);
}

TEST(Sequential, AMarkerWithTooFewBitsLeft) {
    Luminance t;
    StreamIn in({0xDB, 0xFF, 0xD7}); // 110 11011: DC category 5 and its bits
    BlockOut out;
    EXPECT_EQ(decode(in, out, t.decDC, t.decAC).status, zmxStsDCTRangeErr);
    EXPECT_EQ(in.state.plain.blockPositions, 1) << "the value was complete, and the block went on";
    EXPECT_EQ(in.state.plain.bitCount, 0);
    EXPECT_EQ(out.dst[0], 27);

    // 1110 1011: category 6, and four bits. The marker was met ahead of the code: the value is refused at
    // once.
    StreamIn known({0xEB, 0xFF, 0xD7});
    EXPECT_EQ(decode(known, out, t.decDC, t.decAC).status, zmxStsDCTRangeErr);
    EXPECT_EQ(known.state.plain.bitCount, 4) << "nothing was taken";
    EXPECT_EQ(known.state.plain.blockPositions, 0);
    EXPECT_EQ(known.marker[0], 0xD7);

    // The same bits held, so that the value's refill meets the marker: that is no error, and the value is
    // taken.
    StreamIn cut({0xFF, 0xD7});
    cut.state.plain.bitBuffer = 0xEB;
    cut.state.plain.bitCount = 8;
    cut.state.share();
    EXPECT_EQ(decode(cut, out, t.decDC, t.decAC).status, zmxStsDCTRangeErr) << "the next code is not there";
    EXPECT_EQ(cut.state.plain.bitCount, -2);
    EXPECT_EQ(cut.state.plain.blockPositions, 1);
    EXPECT_EQ(cut.marker[0], 0xD7);
    EXPECT_EQ(cut.pos[0], 2);
    EXPECT_EQ(decode(cut, out, t.decDC, t.decAC).status, zmxStsDCTRangeErr) << "the next call says so too";
    EXPECT_EQ(cut.state.plain.blockPositions, 0);
    EXPECT_EQ(cut.state.plain.bitCount, -2);
    EXPECT_EQ(cut.pos[0], 2);
    // A caller that only clears the marker goes on with a debt of two bits.
    StreamIn more({0x2F, 0xFF, 0xD7});
    more.resume(cut);
    more.pos[0] = more.pos[1] = more.marker[0] = more.marker[1] = 0;
    EXPECT_EQ(decode(more, out, t.decDC, t.decAC).status, zmxStsDCTRangeErr); // 101111: DC category 4
}

TEST(Sequential, ScansOfTableK) {
    Luminance t;
    for (int seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        const Scan scan = makeScan(rng, 12, t, int(rng.range(1, 30)), 10);
        for (const Bytes& bytes : {scan.stream, withMarker(scan.stream)}) {
            StreamIn in(bytes, randomFlush(rng));
            BlockOut out;
            for (const Block& b : scan.blocks) {
                ASSERT_EQ(decode(in, out, t.decDC, t.decAC).status, zmxStsNoErr);
                ASSERT_EQ(out.plain, b);
            }
        }
    }
}

TEST(Sequential, CutAtEveryLengthAndResumed) {
    Luminance t;
    int resumed = 0, complete = 0;
    for (int seed = 1; seed <= 6; ++seed) {
        Rng rng{std::uint64_t(seed)};
        const Scan scan = makeScan(rng, 4, t, seed % 2 ? 2 : 9, 10);
        for (bool marker : {false, true}) {
            const Bytes whole = marker ? withMarker(scan.stream, 0xD3) : scan.stream;
            for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
                SCOPED_TRACE(::testing::Message() << "seed " << seed << " cut at " << cut << " of " << whole.size());
                StreamIn head(Bytes(whole.begin(), whole.begin() + std::ptrdiff_t(cut)));
                BlockOut out;
                std::size_t done = 0;
                bool meaning = true;
                for (ZmxStatus s = zmxStsNoErr; meaning && s == zmxStsNoErr && done < scan.blocks.size();) {
                    const Outcome o = decode(head, out, t.decDC, t.decAC);
                    s = o.status;
                    meaning = o.path;
                    if (s == zmxStsNoErr) {
                        ASSERT_EQ(out.plain, scan.blocks[done]);
                        ++done;
                    }
                }
                ASSERT_TRUE(meaning) << "without a marker every bit that is taken is there";
                if (done == scan.blocks.size()) {
                    ++complete;
                    continue;
                }
                // The caller has more of the stream now, and goes on with the state as it is.
                StreamIn rest(whole);
                rest.resume(head);
                for (int call = 0; meaning && call < 4; ++call) meaning = decode(rest, out, t.decDC, t.decAC).path;
                ++resumed;
            }
        }
    }
    EXPECT_GT(resumed, 500);
    EXPECT_GE(complete, 12);
}

TEST(Sequential, RandomTablesAndStreams) {
    int meaningful = 0, statuses[3] = {};
    for (int seed = 1; seed <= rounds(1200); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        RandomTables t(rng);
        const int ffOneIn = rng.oneIn(3) ? 400 : int(rng.range(2, 40));
        StreamIn in(randomStream(rng, int(rng.range(1, rng.oneIn(4) ? 600 : 120)), ffOneIn, 10), t.flush);
        BlockOut out(t.flush);
        rng.bytes(&in.state.plain, sizeof in.state.plain);
        in.state.plain.bitCount = int(rng.range(rng.oneIn(4) ? -15 : 0, 32));
        in.state.share();
        in.pos[0] = in.pos[1] = rng.oneIn(2) ? 0 : int(rng.range(0, in.len() + 2));
        for (int call = 0; call < 10; ++call) {
            const Outcome o = decode(in, out, t.dc, t.ac);
            if (::testing::Test::HasFailure()) return;
            if (!o.path) break;
            ++meaningful;
            statuses[o.status == zmxStsErr ? 2 : o.status == zmxStsNoErr ? 1 : 0] += 1;
            if (in.marker[1] && rng.oneIn(2)) in.restart();
        }
    }
    EXPECT_GT(meaningful, rounds(4000));
    for (int n : statuses) EXPECT_GT(n, rounds(50));
}

TEST(Sequential, EncoderWithRandomTablesAndShortBuffers) {
    int full = 0, noCode = 0, good = 0;
    for (int seed = 1; seed <= 500; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        EncodeTable dc(randomList(rng, {150, 254}, {1, 1}, 2));
        const auto flushAt = randomFlush(rng);
        EncodeTable ac(randomList(rng, {230, 254}, {1, 1}, 2), flushAt);
        StreamOut out(int(rng.range(1, rng.oneIn(2) ? 60 : 900)));
        out.pos[0] = out.pos[1] = rng.oneIn(2) ? 0 : int(rng.range(0, std::min(40, out.len() + 2)));
        Zmx16s lastDC[2] = {};
        lastDC[0] = lastDC[1] = Zmx16s(rng.range(-32768, 32767));
        rng.bytes(&out.state.plain, sizeof out.state.plain);
        out.state.plain.bitCount = int(rng.range(0, 7));
        out.state.plain.bitBuffer &= 0xFFFFFFu << (24 - out.state.plain.bitCount) & 0xFFFFFF;
        out.state.share();
        for (int call = 0; call < 8; ++call) {
            const int oneIn = int(rng.range(1, 12));
            Block b = randomBlock(rng, oneIn, rng.oneIn(5) ? 15 : 9);
            if (rng.oneIn(6)) b[std::size_t(rng.range(0, 63))] = -32768;
            const ZmxStatus s = encode(out, b, lastDC, dc, ac);
            (s == zmxStsNoErr ? good : s == zmxStsOutOfBufErr ? full : noCode) += 1;
            if (rng.oneIn(5)) flush(out);
            if (::testing::Test::HasFailure()) return;
        }
    }
    EXPECT_GT(good, 200);
    EXPECT_GT(full, 200);
    EXPECT_GT(noCode, 100);
}

TEST(Sequential, DestinationFullAtEveryByte) {
    Luminance t;
    // A coefficient of 1023 is eight ones and more: stuffing at many places.
    Rng rng(11);
    std::vector<Block> blocks(3);
    for (Block& b : blocks) {
        b = randomBlock(rng, 3, 10);
        for (int k : {5, 6, 20, 50}) b[std::size_t(k)] = 1023;
    }
    StreamOut whole(2000);
    Zmx16s lastDC[2] = {};
    for (const Block& b : blocks) ASSERT_EQ(encode(whole, b, lastDC, t.encDC, t.encAC), zmxStsNoErr);
    ASSERT_EQ(flush(whole), zmxStsNoErr);
    const Bytes bytes = whole.written();
    ASSERT_GT(std::count(bytes.begin(), bytes.end(), 0xFF), 2);
    for (int len = 1; len <= int(bytes.size()); ++len) {
        SCOPED_TRACE(len);
        StreamOut out(len);
        Zmx16s last[2] = {};
        ZmxStatus s = zmxStsNoErr;
        for (std::size_t i = 0; s == zmxStsNoErr && i < blocks.size(); ++i)
            s = encode(out, blocks[i], last, t.encDC, t.encAC);
        if (s == zmxStsNoErr) s = flush(out);
        EXPECT_EQ(s, len < int(bytes.size()) ? zmxStsOutOfBufErr : zmxStsNoErr);
        EXPECT_TRUE(std::equal(out.plain.begin(), out.plain.begin() + out.pos[1], bytes.begin()));
        if (s) {
            EXPECT_EQ(out.pos[0], len);
            // A retry, and a flush into the full buffer.
            encode(out, blocks[0], last, t.encDC, t.encAC);
            flush(out);
        }
    }
}

TEST(Sequential, StatisticsMakeTablesForTheScan) {
    for (int seed = 1; seed <= 25; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        std::vector<Block> blocks(std::size_t(rng.range(1, 40)));
        const int restartEvery = int(rng.range(1, 9));
        Counters c;
        Zmx16s last = 0;
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            if (i % std::size_t(restartEvery) == 0) last = 0;
            blocks[i] = randomBlock(rng, int(rng.range(1, 40)), seed % 3 ? 9 : 13);
            ASSERT_EQ(count(blocks[i], c, last), zmxStsNoErr);
        }
        const HuffmanList dcList = optimalList(c.dc), acList = optimalList(c.ac);
        EncodeTable encDC(dcList), encAC(acList);
        DecodeTable decDC(dcList), decAC(acList);
        // Restart intervals: a flush and a marker behind each.
        Bytes stream;
        std::vector<std::size_t> starts;
        for (std::size_t i = 0; i < blocks.size(); i += std::size_t(restartEvery)) {
            StreamOut out(restartEvery * 300 + 8);
            Zmx16s lastDC[2] = {};
            for (std::size_t j = i; j < std::min(blocks.size(), i + std::size_t(restartEvery)); ++j)
                ASSERT_EQ(encode(out, blocks[j], lastDC, encDC, encAC), zmxStsNoErr);
            ASSERT_EQ(flush(out), zmxStsNoErr);
            const Bytes part = withMarker(out.written(), Zmx8u(0xD0 + i / std::size_t(restartEvery) % 8));
            stream.insert(stream.end(), part.begin(), part.end());
        }
        StreamIn in(stream);
        BlockOut got;
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            if (i && i % std::size_t(restartEvery) == 0) {
                // Nothing but the marker is left: one more call meets it, if the last one did not.
                if (!in.marker[0]) decode(in, got, decDC, decAC);
                EXPECT_EQ(in.marker[0], 0xD0 + (int(i) / restartEvery - 1) % 8);
                in.restart();
                got.setDC(0);
            }
            ASSERT_EQ(decode(in, got, decDC, decAC).status, zmxStsNoErr);
            ASSERT_EQ(got.plain, blocks[i]);
        }
    }
}

TEST(Sequential, Digests) {
    Luminance t;
    Digest decoded, encodedBytes, counted;
    for (int seed = 1; seed <= 60; ++seed) {
        Rng rng{std::uint64_t(seed)};
        Counters c;
        Zmx16s last = 0;
        const Scan scan = makeScan(rng, 6, t, int(rng.range(1, 12)), 10);
        encodedBytes.add(scan.stream);
        for (const Block& b : scan.blocks) count(b, c, last);
        counted.add(c.dc).add(c.ac);
        for (const Bytes& bytes : {withMarker(scan.stream), damaged(rng, withMarker(scan.stream))}) {
            StreamIn in(bytes);
            BlockOut out;
            for (int call = 0; call < 6; ++call) {
                const Outcome o = decode(in, out, t.decDC, t.decAC);
                if (!o.value) break;
                addDecoded(decoded, o, in, out);
            }
        }
    }
    EXPECT_EQ(decoded.get(), 0x2C9D3105A64FFA12u);
    EXPECT_EQ(encodedBytes.get(), 0x73812361150767B2u);
    EXPECT_EQ(counted.get(), 0xE4E187F3287B5D27u);
}
