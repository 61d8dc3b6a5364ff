// Lossless JPEG rows: the predictors and the coding of differences.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/support/lossless.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/rounds.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>

namespace {

// What the library stores, its rows flush with guard pages on one side or the other.
Row run(std::size_t n, GuardedBlock::Flush flush, const std::function<ZmxStatus(Zmx16s*)>& call) {
    Guarded<Zmx16s> dst(n, flush);
    dst.fill(kUntouched);
    EXPECT_EQ(call(dst.data()), zmxStsNoErr);
    return dst.copy();
}

Row firstRow(bool inverse, const Row& src, int p, int pt, GuardedBlock::Flush flush = GuardedBlock::AtEnd) {
    Guarded<Zmx16s> in(src, flush);
    const int n = int(src.size());
    Row expected(src.size());
    (inverse ? model::reconstructFirstRow : model::diffFirstRow)(src.data(), expected.data(), n, p, pt);
    const Row got = run(src.size(), flush, [&](Zmx16s* dst) {
        return (inverse ? zmxiReconstructPredFirstRow_JPEG_16s_C1 : zmxiDiffPredFirstRow_JPEG_16s_C1)(in.data(), dst, n,
                                                                                                      p, pt);
    });
    EXPECT_TRUE(sameBytes(expected, got));
    return got;
}

Row laterRow(bool inverse, const Row& src, const Row& above, int predictor,
             GuardedBlock::Flush flush = GuardedBlock::AtEnd) {
    Guarded<Zmx16s> in(src, flush), prev(above, flush);
    const int n = int(src.size());
    Row expected(src.size());
    (inverse ? model::reconstructRow : model::diffRow)(src.data(), above.data(), expected.data(), n, predictor);
    const Row got = run(src.size(), flush, [&](Zmx16s* dst) {
        return (inverse ? zmxiReconstructPredRow_JPEG_16s_C1 : zmxiDiffPredRow_JPEG_16s_C1)(in.data(), prev.data(), dst,
                                                                                            n, predictor);
    });
    EXPECT_TRUE(sameBytes(expected, got));
    return got;
}

// Categories 0 to 16 and some symbols above, of up to 7 bits.
const HuffmanList kDifferences{{0, 1, 2, 3, 4, 5, 3}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}};

int categoryOf(Zmx16s value) {
    Guarded<Zmx16s> src(Row{value});
    Guarded<Zmx32u> counts(17);
    counts.fill(5);
    EXPECT_EQ(zmxiGetHuffmanStatisticsOne_JPEG_16s_C1(src.data(), counts.data()), zmxStsNoErr);
    int at = -1;
    for (std::size_t i = 0; i < 17; ++i)
        if (counts[i] != 5) {
            EXPECT_EQ(counts[i], 6u);
            EXPECT_EQ(at, -1) << "one counter moves";
            at = int(i);
        }
    return at;
}

} // namespace

TEST(Lossless, OrderOfTests) {
    Guarded<Zmx16s> src(4), above(4), dst(4);
    dst.fill(kUntouched);
    for (auto row : {zmxiDiffPredFirstRow_JPEG_16s_C1, zmxiReconstructPredFirstRow_JPEG_16s_C1})
        checkOrder({kNull, kNull, kSize, kBadArg, kBadArg}, [&](const Bad& bad) {
            return row(bad.null(0, src.data()), bad.null(1, dst.data()), bad.below1(2, 4),
                       bad.any(3, 8, {17, 1, -1, INT32_MIN, INT32_MAX}), bad.any(4, 0, {-1, INT32_MIN}));
        });
    for (auto row : {zmxiDiffPredRow_JPEG_16s_C1, zmxiReconstructPredRow_JPEG_16s_C1})
        checkOrder({kNull, kNull, kNull, kSize, kBadArg}, [&](const Bad& bad) {
            return row(bad.null(0, src.data()), bad.null(1, above.data()), bad.null(2, dst.data()), bad.below1(3, 4),
                       bad.any(4, 1, {0, 8, -1, INT32_MIN, INT32_MAX}));
        });
    EXPECT_EQ(dst.copy(), Row(4, kUntouched));
    for (int p : {INT32_MIN, -1, 0, 1, 2, 16, 17, INT32_MAX})
        for (int pt : {INT32_MIN, -1, 0, 1, 16, 40, INT32_MAX})
            for (auto row : {zmxiDiffPredFirstRow_JPEG_16s_C1, zmxiReconstructPredFirstRow_JPEG_16s_C1})
                EXPECT_EQ(row(src.data(), dst.data(), 4, p, pt),
                          p >= 2 && p <= 16 && pt >= 0 ? zmxStsNoErr : zmxStsBadArgErr)
                    << p << ' ' << pt;
}

TEST(Lossless, OrderOfTestsOfTheCoders) {
    DecodeTable dec(kDifferences);
    EncodeTable enc(kDifferences);
    DecodeStateTwin reader;
    EncodeStateTwin writer;
    Guarded<Zmx8u> stream(Bytes{0x12, 0x34});
    Guarded<Zmx16s> row(2);
    row.fill(kUntouched);
    Guarded<Zmx32u> counts(17);
    counts.fill(0);
    int pos = 0, marker = 0;
    checkOrder({kNull, kSize, kNull, kNull, kNull, kNull, kNull}, [&](const Bad& bad) {
        return zmxiDecodeHuffmanOne_JPEG_1u16s_C1(bad.null(0, stream.data()), bad.below1(1, 2), bad.null(2, &pos),
                                                  bad.null(3, row.data()), bad.null(4, &marker), bad.null(5, dec.lib()),
                                                  bad.null(6, reader.lib()));
    });
    // Of three planes each row is tested ahead of its table.
    std::vector<ZmxStatus> order{kNull, kSize, kNull, kNull, kSize, kSize, kNull, kNull, kNull};
    order.insert(order.end(), 6, kNull);
    checkOrder(order, [&](const Bad& bad) {
        Zmx16s* rows[4] = {bad.null(9, row.data()), bad.null(11, row.data()), bad.null(13, row.data()), nullptr};
        const ZmxiDecodeHuffmanSpec* tables[4] = {bad.null(10, dec.lib()), bad.null(12, dec.lib()),
                                                  bad.null(14, dec.lib()), nullptr};
        return zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4(
            bad.null(0, stream.data()), bad.below1(1, 2), bad.null(2, &pos), bad.null(3, rows), bad.below1(4, 2),
            bad.below1(5, 3), bad.null(6, &marker), bad.null(7, tables), bad.null(8, reader.lib()));
    });
    checkOrder({kNull, kSize, kNull, kNull, kNull, kNull}, [&](const Bad& bad) {
        return zmxiEncodeHuffmanOne_JPEG_16s1u_C1(bad.null(4, row.data()), bad.null(0, stream.data()), bad.below1(1, 2),
                                                  bad.null(2, &pos), bad.null(5, enc.lib()), bad.null(3, writer.lib()),
                                                  0);
    });
    order = {kNull, kSize, kNull, kNull, kNull, kSize, kSize, kNull, kNull, kNull, kNull, kNull};
    checkOrder(order, [&](const Bad& bad) {
        const Zmx16s* rows[4] = {bad.null(8, row.data()), bad.null(10, row.data()), nullptr, nullptr};
        const ZmxiEncodeHuffmanSpec* tables[4] = {bad.null(9, enc.lib()), bad.null(11, enc.lib()), nullptr, nullptr};
        return zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(bad.null(4, rows), bad.below1(5, 2), bad.below1(6, 2),
                                                    bad.null(0, stream.data()), bad.below1(1, 2), bad.null(2, &pos),
                                                    bad.null(7, tables), bad.null(3, writer.lib()), 0);
    });
    // A flush stands ahead of all that is about samples.
    for (int flushState : {1, -3})
        checkOrder({kNull, kSize, kNull, kNull}, [&](const Bad& bad) {
            Zmx8u* const dst = bad.null(0, stream.data());
            const int len = bad.below1(1, 2);
            int* const at = bad.null(2, &pos);
            ZmxiEncodeHuffmanState* const state = bad.null(3, writer.lib());
            const ZmxStatus one = zmxiEncodeHuffmanOne_JPEG_16s1u_C1(nullptr, dst, len, at, nullptr, state, flushState);
            EXPECT_EQ(zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(nullptr, 0, 0, dst, len, at, nullptr, state, flushState),
                      one);
            return one;
        });
    checkOrder({kNull, kNull}, [&](const Bad& bad) {
        return zmxiGetHuffmanStatisticsOne_JPEG_16s_C1(bad.null(0, row.data()), bad.null(1, counts.data()));
    });
    EXPECT_EQ(row.copy(), Row(2, kUntouched));
    EXPECT_EQ(stream.copy(), (Bytes{0x12, 0x34}));
    EXPECT_TRUE(reader.same() && writer.same());
    EXPECT_EQ(pos, 0);
    EXPECT_EQ(marker, 0);
    EXPECT_EQ(counts.copy(), std::vector<Zmx32u>(17));
}

TEST(Lossless, FirstRow) {
    EXPECT_EQ(firstRow(false, {130, 127, 127, -5}, 8, 0), (Row{2, -3, 0, -132}));
    EXPECT_EQ(firstRow(true, {2, -3, 0, -132}, 8, 0), (Row{130, 127, 127, -5}));
    EXPECT_EQ(firstRow(false, {7}, 8, 0), Row{-121}) << "h is 128";
    EXPECT_EQ(firstRow(false, {7}, 8, 3), Row{-9}) << "16";
    EXPECT_EQ(firstRow(false, {7}, 2, 0), Row{5});
    EXPECT_EQ(firstRow(false, {7}, 16, 0), Row{-32761}) << "32768, and the difference wraps";
    EXPECT_EQ(firstRow(false, {-1}, 16, 0), Row{32767});
    EXPECT_EQ(firstRow(true, {32767}, 16, 0), Row{-1});
    EXPECT_EQ(firstRow(false, {7}, 8, 7), Row{6});
    EXPECT_EQ(firstRow(false, {7}, 8, 8), Row{7}) << "the shift count is 31: nothing of it in 16 bits";
    EXPECT_EQ(firstRow(false, {7}, 8, 23), Row{7}) << "16 modulo 32";
    EXPECT_EQ(firstRow(false, {7}, 8, 24), Row{Zmx16s(7 - 32768)}) << "15 modulo 32";
    EXPECT_EQ(firstRow(false, {7}, 8, 39), Row{6}) << "0 modulo 32";
    EXPECT_EQ(firstRow(false, {32767, -32768}, 8, 0), (Row{32639, 1})) << "neighbours wrap";
}

TEST(Lossless, LaterRows) {
    const Row src{10, 20, 30}, above{4, 9, 1};
    const Row expected[8] = {{},         {6, 10, 10}, {6, 11, 29}, {6, 16, 21},
                             {6, 5, 18}, {6, 8, 14},  {6, 8, 24},  {6, 11, 20}};
    for (int predictor = 1; predictor <= 7; ++predictor) {
        SCOPED_TRACE(predictor);
        EXPECT_EQ(laterRow(false, src, above, predictor), expected[predictor]);
        EXPECT_EQ(laterRow(true, expected[predictor], above, predictor), src);
        EXPECT_EQ(laterRow(false, {77}, {-3}, predictor), Row{80}) << "one sample: the one above predicts it";
        EXPECT_EQ(laterRow(true, {80}, {-3}, predictor), Row{77});
    }
    // Halves go towards minus infinity, of signed samples.
    EXPECT_EQ(laterRow(false, {0, 0}, {1, 0}, 5), (Row{-1, 1}));
    EXPECT_EQ(laterRow(false, {0, 0}, {1, 0}, 6), (Row{-1, 1}));
    EXPECT_EQ(laterRow(false, {-1, 0}, {0, 0}, 7), (Row{-1, 1}));
    EXPECT_EQ(laterRow(false, {-32768, 0}, {0, -32768}, 7), (Row{-32768, -32768}));
    EXPECT_EQ(laterRow(false, {0, 0}, {-32768, 32767}, 5)[1], -32767) << "65535 halved, in 32 bits";
    EXPECT_EQ(laterRow(false, {-32768, 0}, {32767, 0}, 4)[1], Zmx16s(-(-32768 - 32767)));
}

TEST(Lossless, RandomRowsThereAndBack) {
    for (int seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        const std::size_t n = std::size_t(rng.range(1, rng.oneIn(3) ? 4 : 150));
        const bool wild = rng.oneIn(2);
        const auto flushAt = randomFlush(rng);
        const Row src = rng.vec<Zmx16s>(n, wild ? -32768 : 0, wild ? 32767 : 255);
        Row above = rng.vec<Zmx16s>(n, wild ? -32768 : 0, wild ? 32767 : 255);
        if (rng.oneIn(4)) std::fill(above.begin(), above.end(), rng.oneIn(2) ? Zmx16s(-32768) : Zmx16s(32767));
        const int p = int(rng.range(2, 16)), pt = int(rng.range(0, 40));
        ASSERT_EQ(firstRow(true, firstRow(false, src, p, pt, flushAt), p, pt, flushAt), src);
        for (int predictor = 1; predictor <= 7; ++predictor)
            ASSERT_EQ(laterRow(true, laterRow(false, src, above, predictor, flushAt), above, predictor, flushAt), src);
        if (::testing::Test::HasFailure()) return;
    }
}

TEST(Lossless, Categories) {
    const std::pair<int, int> known[] = {{0, 0},      {1, 1},       {-1, 1},     {2, 2},       {-3, 2},
                                         {255, 8},    {256, 9},     {-256, 9},   {511, 9},     {16383, 14},
                                         {16384, 15}, {-16384, 15}, {32767, 15}, {-32767, 15}, {-32768, 16}};
    for (auto [value, category] : known) EXPECT_EQ(categoryOf(Zmx16s(value)), category) << value;
    for (int value = -32768; value <= 32767; value += 61) EXPECT_EQ(categoryOf(Zmx16s(value)), model::category(value));
}

TEST(Lossless, OneDifference) {
    // 00: 0, 010: 1, 011: 2, 1000: 3, 1001: 4, 1010: 5, 10110 ... 11001: 6 to 9, 110100 ... 111000: 10 to 14,
    // 1110010: 15, 1110011: 16, 1110100: 17
    EncodeTable enc(kDifferences);
    DecodeTable dec(kDifferences);
    const std::pair<int, Bytes> known[] = {{0, {0x3F}},
                                           {1, {0x5F}},
                                           {-1, {0x4F}},
                                           {2, {0x77}},
                                           {-3, {0x67}},
                                           {5, {0x8B}},
                                           {-5, {0x85}},
                                           {-32768, {0xE7}},
                                           {32767, {0xE5, 0xFF, 0x00, 0xFF, 0x00}},
                                           {-32767, {0xE4, 0x00, 0x03}}};
    for (const auto& [value, bytes] : known) {
        SCOPED_TRACE(value);
        StreamOut out(8);
        EXPECT_EQ(encodeOne(out, value, enc), zmxStsNoErr);
        EXPECT_EQ(flush(out, false), zmxStsNoErr);
        EXPECT_EQ(out.written(), bytes);
        StreamIn in(bytes);
        Zmx16s got[2] = {9, 9};
        EXPECT_EQ(decodeOne(in, got, dec).status, zmxStsNoErr);
        EXPECT_EQ(got[0], value);
    }
    for (Zmx8u byte : {0xE7, 0xE9}) { // 16, and 17 which no encoder writes
        StreamIn in({byte});
        Zmx16s got[2] = {};
        EXPECT_EQ(decodeOne(in, got, dec).status, zmxStsNoErr);
        EXPECT_EQ(got[0], -32768);
        EXPECT_EQ(in.state.plain.bitCount, 1) << "no further bits";
    }
    DecodeTable high(nibbles({255, 128, 16, 1}));
    StreamIn in({0x01, 0x2F});
    Zmx16s got[2] = {};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(decodeOne(in, got, high).status, zmxStsNoErr);
        EXPECT_EQ(got[0], -32768);
    }
    EXPECT_EQ(decodeOne(in, got, high).status, zmxStsOutOfBufErr);
    EXPECT_EQ(got[0], -32768) << "nothing is stored";
}

TEST(Lossless, EveryDifferenceThereAndBack) {
    EncodeTable enc(kDifferences);
    DecodeTable dec(kDifferences);
    const int width = 4096;
    for (int from = -32768; from < 32768; from += width * 4) {
        std::vector<Row> rows(4, Row(std::size_t(width)));
        for (int i = 0; i < width * 4; ++i) rows[std::size_t(i % 4)][std::size_t(i / 4)] = Zmx16s(from + i);
        StreamOut out(width * 4 * 4);
        ASSERT_EQ(encodeRow(out, rows, 4, {&enc, &enc, &enc, &enc}), zmxStsNoErr);
        ASSERT_EQ(flush(out, true), zmxStsNoErr);
        StreamIn in(out.written());
        DecodePlanes planes(width, {&dec, &dec, &dec, &dec});
        ASSERT_EQ(decodeRow(in, planes, width, 4).status, zmxStsNoErr);
        ASSERT_EQ(planes.plain, rows);
    }
}

TEST(Lossless, MissingCodesAndRoom) {
    EncodeTable none{HuffmanList{}}, enc(kDifferences), few(HuffmanList{{1}, {0}});
    StreamOut out(3);
    EXPECT_EQ(encodeOne(out, 0, none), zmxStsHuffTableErr);
    EXPECT_EQ(encodeRow(out, {{0, 1, 0}}, 1, {&few}), zmxStsHuffTableErr);
    EXPECT_EQ(out.state.plain.bitCount, 1) << "the first sample stands";
    EXPECT_EQ(encodeRow(out, {{0, 0}, {0, 3}}, 2, {&few, &few}), zmxStsHuffTableErr);
    EXPECT_EQ(out.state.plain.bitCount, 4);
    EXPECT_EQ(encodeRow(out, {{300, -300, 300}}, 1, {&enc}), zmxStsOutOfBufErr);
    EXPECT_EQ(flush(out, true), zmxStsOutOfBufErr);
    EXPECT_EQ(flush(out, false), zmxStsNoErr) << "nothing is pending any more";
}

TEST(Lossless, PlanesBehindTheFourthAreNotLookedAt) {
    EncodeTable enc(kDifferences), other(HuffmanList{{0, 0, 2}, {0, 1}});
    DecodeTable dec(kDifferences), decOther(HuffmanList{{0, 0, 2}, {0, 1}});
    const std::vector<Row> rows{{1, -2}, {0, 1}, {5, 6}, {-7, 8}};
    for (int planes : {4, 5, 6, INT32_MAX}) {
        StreamOut out(40);
        EXPECT_EQ(encodeRow(out, rows, planes, {&enc, &other, &enc, &enc}), zmxStsNoErr);
        EXPECT_EQ(flush(out, true), zmxStsNoErr);
        StreamIn in(out.written());
        DecodePlanes got(2, {&dec, &decOther, &dec, &dec});
        EXPECT_EQ(decodeRow(in, got, 2, planes).status, zmxStsNoErr);
        EXPECT_EQ(got.plain, rows);
    }
    // Each plane by its own table, sample by sample: 010 1, 000; 011 01, 001 1
    StreamOut out(8);
    EXPECT_EQ(encodeRow(out, {{1, -2}, {0, 1}}, 2, {&enc, &other}), zmxStsNoErr);
    EXPECT_EQ(flush(out, true), zmxStsNoErr);
    EXPECT_EQ(out.written(), (Bytes{0x50, 0xD3}));
}

TEST(Lossless, CutAtEveryLengthAndResumed) {
    EncodeTable enc(kDifferences);
    DecodeTable dec(kDifferences);
    Rng rng(9);
    std::vector<Row> rows;
    for (int c = 0; c < 3; ++c) rows.push_back(rng.vec<Zmx16s>(8, -40, 4000));
    StreamOut out(200);
    ASSERT_EQ(encodeRow(out, rows, 3, {&enc, &enc, &enc}), zmxStsNoErr);
    ASSERT_EQ(flush(out, true), zmxStsNoErr);
    for (bool marker : {false, true}) {
        const Bytes whole = marker ? withMarker(out.written()) : out.written();
        for (std::size_t cut = 1; cut <= whole.size(); ++cut) {
            SCOPED_TRACE(cut);
            StreamIn head(Bytes(whole.begin(), whole.begin() + std::ptrdiff_t(cut)));
            DecodePlanes got(8, {&dec, &dec, &dec});
            const Outcome o = decodeRow(head, got, 8, 3);
            EXPECT_TRUE(o.path);
            if (o.status == zmxStsNoErr) {
                EXPECT_EQ(got.plain, rows);
                continue;
            }
            StreamIn rest(whole);
            rest.resume(head);
            Zmx16s value[2] = {};
            for (int i = 0; i < 10; ++i)
                if (!decodeOne(rest, value, dec).path) break;
        }
    }
    // Every length of the destination.
    const Bytes bytes = out.written();
    for (int len = 1; len <= int(bytes.size()); ++len) {
        SCOPED_TRACE(len);
        StreamOut shorter(len);
        ZmxStatus s = encodeRow(shorter, rows, 3, {&enc, &enc, &enc});
        if (s == zmxStsNoErr) s = flush(shorter, true);
        EXPECT_EQ(s, len < int(bytes.size()) ? zmxStsOutOfBufErr : zmxStsNoErr);
        EXPECT_TRUE(std::equal(shorter.plain.begin(), shorter.plain.begin() + shorter.pos[1], bytes.begin()));
    }
}

// Codes of 1 to 16 bits, the longest one for category 15: with the value 32767 all bits but one are set.
TEST(Lossless, RowsOfTheLongestCodesInEveryRoom) {
    EncodeTable enc(HuffmanList{{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1},
                                {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}});
    for (int width = 1; width <= 12; ++width)
        for (int room = 1; room <= 8 * width + 2; ++room)
            for (int pending = 0; pending < 8; ++pending) {
                SCOPED_TRACE(::testing::Message() << width << " in " << room << " behind " << pending);
                StreamOut out(room);
                out.state.plain.bitCount = pending;
                out.state.plain.bitBuffer = 0xFFFFFFu << (24 - pending) & 0xFFFFFF;
                out.state.share();
                encodeRow(out, {Row(std::size_t(width), 32767)}, 1, {&enc});
                if (::testing::Test::HasFailure()) return;
            }
    StreamOut one(8);
    one.state.plain.bitCount = 7;
    one.state.plain.bitBuffer = 0xFE0000;
    one.state.share();
    EXPECT_EQ(encodeRow(one, {{32767}}, 1, {&enc}), zmxStsNoErr);
    EXPECT_EQ(one.written(), (Bytes{0xFF, 0, 0xFF, 0, 0xFD, 0xFF, 0}));
    EXPECT_EQ(one.state.plain.bitCount, 6);
}

TEST(Lossless, RandomRowsFromRandomStates) {
    std::map<ZmxStatus, int> seen;
    for (int seed = 1; seed <= rounds(3000); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        const int planes = int(rng.range(1, 4)), width = int(rng.range(1, 40));
        std::vector<std::unique_ptr<EncodeTable>> tables;
        std::vector<EncodeTable*> pointers;
        std::vector<Row> rows;
        const bool wild = rng.oneIn(3);
        for (int c = 0; c < planes; ++c) {
            HuffmanList list = randomList(rng, {17, 40}, {1, 1}, 2);
            const bool gap = rng.oneIn(6); // a category without a code
            for (std::size_t i = 0; i < list.vals.size(); ++i) list.vals[i] = Zmx8u(gap && i == 9 ? 255 : i);
            tables.push_back(std::make_unique<EncodeTable>(list));
            pointers.push_back(tables.back().get());
            rows.push_back(rng.vec<Zmx16s>(std::size_t(width), wild ? -32768 : -100, wild ? 32767 : 100));
        }
        const int room = int(rng.range(1, rng.oneIn(3) ? 9 * width * planes : 3000));
        StreamOut out(room, randomFlush(rng));
        rng.bytes(&out.state.plain, sizeof out.state.plain);
        out.state.plain.bitCount = int(rng.range(0, 7));
        // Mostly as writers leave it: with zeros behind what is pending.
        out.state.plain.bitBuffer &= rng.oneIn(4) ? 0xFFFFFF : 0xFFFFFFu << (24 - out.state.plain.bitCount) & 0xFFFFFF;
        out.state.share();
        out.pos[0] = out.pos[1] = rng.oneIn(2) ? 0 : int(rng.range(0, room + 2));
        for (int call = 0; call < 3; ++call) ++seen[encodeRow(out, rows, planes, pointers)];
        if (::testing::Test::HasFailure()) return;
    }
    EXPECT_GT(seen[zmxStsNoErr], rounds(2000));
    EXPECT_GT(seen[zmxStsOutOfBufErr], rounds(500));
    EXPECT_GT(seen[zmxStsHuffTableErr], rounds(70));
}

TEST(Lossless, RandomTablesAndStreams) {
    int meaningful = 0, failed = 0;
    for (int seed = 1; seed <= rounds(1200); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        const auto flushAt = randomFlush(rng);
        std::vector<std::unique_ptr<DecodeTable>> tables;
        std::vector<DecodeTable*> pointers;
        const int planes = int(rng.range(1, 4)), width = int(rng.range(1, 12));
        for (int c = 0; c < planes; ++c) {
            HuffmanList list = randomList(rng, {2, 40}, {0, 2}, 3);
            for (Zmx8u& symbol : list.vals)
                if (!rng.oneIn(4)) symbol %= 18;
            if (rng.oneIn(12)) list = {{2, 0, 0, 0, 0, 0, 0, 1}, {1, 9, 3}}; // index 256 of the fast table
            tables.push_back(std::make_unique<DecodeTable>(flushAt));
            tables.back()->build(list);
            pointers.push_back(tables.back().get());
        }
        const int ffOneIn = rng.oneIn(3) ? 400 : int(rng.range(2, 40));
        StreamIn in(randomStream(rng, int(rng.range(1, 120)), ffOneIn, 10), flushAt);
        rng.bytes(&in.state.plain, sizeof in.state.plain);
        in.state.plain.bitCount = int(rng.range(rng.oneIn(4) ? -15 : 0, 32));
        in.pos[0] = in.pos[1] = rng.oneIn(2) ? 0 : int(rng.range(0, in.len() + 2));
        in.state.share();
        for (int call = 0; call < 12; ++call) {
            DecodePlanes out(width, pointers);
            Zmx16s value[2] = {};
            const Outcome o = rng.oneIn(2) ? decodeRow(in, out, width, planes) : decodeOne(in, value, *pointers[0]);
            if (::testing::Test::HasFailure()) return;
            if (!o.path) break;
            ++meaningful;
            failed += o.status != zmxStsNoErr;
            if (in.marker[1] && rng.oneIn(2)) in.restart();
        }
    }
    EXPECT_GT(meaningful, rounds(3000));
    EXPECT_GT(failed, rounds(500));
}

namespace {

// A picture there and back: predictors, statistics, optimal tables, rows, restarts.
void picture(int seed, Digest* digest) {
    Rng rng{std::uint64_t(seed)};
    const int width = int(rng.range(1, 40)), height = int(rng.range(1, 9)), planes = int(rng.range(1, 4));
    const int predictor = int(rng.range(1, 7)), p = int(rng.range(2, 16)), every = int(rng.range(1, 4));
    const Row blank(static_cast<std::size_t>(width));
    const std::vector<Row> blankRows(static_cast<std::size_t>(planes), blank);
    std::vector<std::vector<Row>> image(static_cast<std::size_t>(height), blankRows);
    for (auto& rows : image)
        for (Row& row : rows)
            for (Zmx16s& v : row) v = Zmx16s(rng.range(0, (1 << p) - 1));
    auto differences = image;
    std::vector<std::vector<Zmx32u>> counts(std::size_t(planes), std::vector<Zmx32u>(257));
    for (int y = 0; y < height; ++y)
        for (std::size_t c = 0; c < std::size_t(planes); ++c) {
            const Row& row = image[std::size_t(y)][c];
            Row& d = differences[std::size_t(y)][c];
            d = y % every == 0 ? firstRow(false, row, p, 0)
                               : laterRow(false, row, image[std::size_t(y - 1)][c], predictor);
            for (Zmx16s v : d) {
                EXPECT_EQ(zmxiGetHuffmanStatisticsOne_JPEG_16s_C1(&v, counts[c].data()), zmxStsNoErr);
            }
        }
    std::vector<std::unique_ptr<EncodeTable>> enc;
    std::vector<std::unique_ptr<DecodeTable>> dec;
    std::vector<EncodeTable*> encoders;
    std::vector<DecodeTable*> decoders;
    for (auto& n : counts) {
        const HuffmanList list = optimalList(n);
        enc.push_back(std::make_unique<EncodeTable>(list));
        dec.push_back(std::make_unique<DecodeTable>(list));
        encoders.push_back(enc.back().get());
        decoders.push_back(dec.back().get());
    }
    for (int y = 0; y < height; y += every) {
        const int end = std::min(height, y + every);
        StreamOut out(width * planes * every * 4 + 8);
        for (int i = y; i < end; ++i)
            ASSERT_EQ(encodeRow(out, differences[std::size_t(i)], planes, encoders), zmxStsNoErr);
        ASSERT_EQ(flush(out, true), zmxStsNoErr);
        const Bytes stream = withMarker(out.written(), 0xD0);
        if (digest) digest->add(stream);
        StreamIn in(stream);
        for (int i = y; i < end; ++i) {
            DecodePlanes got(width, decoders);
            ASSERT_EQ(decodeRow(in, got, width, planes).status, zmxStsNoErr);
            for (std::size_t c = 0; c < std::size_t(planes); ++c) {
                const Row& row = image[std::size_t(i)][c];
                ASSERT_EQ(i == y ? firstRow(true, got.plain[c], p, 0)
                                 : laterRow(true, got.plain[c], image[std::size_t(i - 1)][c], predictor),
                          row);
            }
        }
    }
}

} // namespace

TEST(Lossless, PicturesThereAndBack) {
    for (int seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        picture(seed, nullptr);
        if (::testing::Test::HasFailure()) return;
    }
}

TEST(Lossless, Digests) {
    Digest streams, forward, inverse, decoded;
    DecodeTable dec(kDifferences);
    for (int seed = 1; seed <= 40; ++seed) {
        picture(seed, &streams);
        Rng rng{std::uint64_t(seed)};
        const Row src = rng.vec<Zmx16s>(64, -32768, 32767), above = rng.vec<Zmx16s>(64, -32768, 32767);
        forward.add(firstRow(false, src, 2 + seed % 15, seed % 20));
        inverse.add(firstRow(true, src, 2 + seed % 15, seed % 20));
        for (int predictor = 1; predictor <= 7; ++predictor) {
            forward.add(laterRow(false, src, above, predictor));
            inverse.add(laterRow(true, src, above, predictor));
        }
        StreamIn in(randomStream(rng, 60, 12, 10));
        for (int call = 0; call < 10; ++call) {
            DecodePlanes out(5, {&dec, &dec});
            const Outcome o = decodeRow(in, out, 5, 2);
            if (!o.value) break;
            decoded.value(o.status).add(out.lib[0]->data(), 10).add(out.lib[1]->data(), 10);
            decoded.value(in.pos[0]).value(in.marker[0]).words(in.state.bytes(), 20);
        }
    }
    EXPECT_EQ(streams.get(), 0x449BD633A2B79F6Fu);
    EXPECT_EQ(forward.get(), 0x637EABE2A7E343DBu);
    EXPECT_EQ(inverse.get(), 0xAC4665C28B78DFF3u);
    EXPECT_EQ(decoded.get(), 0x670F1F3A0C4496E1u);
}
