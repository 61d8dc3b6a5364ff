// The coders of JPEG when a caller goes on after a status that says that something failed: with the same block, the
// next one, a flush, another function. What they do is that of the model, and nothing is written outside of state and
// buffers, which stand flush with guard pages.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/support/lossless.h"
#include "tests/jpeg/support/progressive.h"
#include "tests/jpeg/support/sequential.h"
#include "tests/support/rounds.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>

// ---- held correction bits

// Blocks of nothing but known coefficients, 63 bits of each to be held, into a destination that is full at once: no call
// holds more than there is room for.
TEST(AfterFailure, CorrectionBitsWithoutRoom) {
    EncodeTable table(octets());
    for (auto flushAt : bothEnds)
        for (int calls : {15, 16, 17, 25, 60})
            for (int last = 0; last < 4; ++last) {
                SCOPED_TRACE(::testing::Message() << calls << " calls and ending " << last);
                StreamOut out(1, flushAt);
                out.pos[0] = out.pos[1] = 1;
                int failed = 0;
                for (int i = 0; i < calls; ++i)
                    failed += encodeACRefine(out, everywhere(4), kAll, table) != zmxStsNoErr;
                EXPECT_EQ(failed, std::max(0, calls - 14)) << "15 blocks have 945 bits";
                EXPECT_LE(out.state.plain.correctionCount, 1024);
                const Block fresh = blockOf({{1, 1}});
                const ZmxStatus next = last == 1   ? encodeACRefine(out, fresh, kAll, table)
                                       : last == 2 ? encodeACFirst(out, fresh, kAll, table)
                                                   : zmxStsOutOfBufErr;
                EXPECT_EQ(next, zmxStsOutOfBufErr);
                if (last == 3) {
                    EXPECT_EQ(flushACFirst(out, table), zmxStsNoErr) << "which gives all up";
                }
                EXPECT_EQ(flushACRefine(out, table), last == 3 ? zmxStsNoErr : zmxStsOutOfBufErr);
                if (HasFailure()) return;
            }
}

// With room given at last what was held goes out, and the stream is right: the run, its bits, and behind them the rest.
TEST(AfterFailure, CorrectionBitsThatFindRoomLater) {
    EncodeTable table(octets());
    for (int blocks = 15; blocks <= 17; ++blocks) {
        SCOPED_TRACE(blocks);
        StreamOut tight(1), wide(4000);
        tight.pos[0] = tight.pos[1] = 1;
        int taken = 0;
        for (int i = 0; i < blocks; ++i) { // a block counts if it went into the run, whatever the status
            const int before = tight.state.plain.eobRun;
            encodeACRefine(tight, everywhere(i % 2 ? 5 : -6), kAll, table);
            taken += tight.state.plain.eobRun - before;
        }
        ASSERT_EQ(taken, std::min(blocks, 16)) << "the 17th is refused whole";
        wide.state.plain = tight.state.plain;
        wide.state.share();
        ASSERT_EQ(encodeACRefine(wide, everywhere(4), kAll, table), zmxStsNoErr);
        ASSERT_EQ(flushACRefine(wide, table), zmxStsNoErr);

        DecodeTable decodeTable(octets());
        StreamIn in(withMarker(wide.written()));
        for (int i = 0; i <= taken; ++i) {
            BlockOut out;
            const bool last = i == taken;
            Block known = everywhere(last ? 4 : i % 2 ? 4 : -6);
            out.set(known);
            ASSERT_EQ(decodeACRefine(in, out, kAll, decodeTable).status, zmxStsNoErr);
            Block expected = everywhere(last ? 4 : i % 2 ? 5 : -6);
            expected[0] = known[0];
            ASSERT_EQ(out.plain, expected) << i;
        }
    }
}

// The same in a counting pass, where it is a run without a symbol that cannot be counted.
TEST(AfterFailure, CorrectionBitsOfACountingPass) {
    for (int run : {65535, 65536, 70000, 1 << 20})
        for (int held : {0, 900, 937}) {
            SCOPED_TRACE(::testing::Message() << "run " << run << " with " << held);
            Pass pass;
            pass.state.plain.eobRun = run;
            pass.state.plain.correctionCount = held;
            pass.state.share();
            for (int i = 0; i < 60; ++i) countAC(pass, AC::Refine, everywhere(4), kAll);
            countAC(pass, AC::First, everywhere(4), kAll);
            flushCount(pass, AC::Refine);
            if (HasFailure()) return;
        }
}

// ---- every function behind every failing status

namespace {

// Which function came behind which failing status of which other one.
class Followers {
    std::map<std::pair<std::string, ZmxStatus>, std::map<std::string, int>> seen;
    std::pair<std::string, ZmxStatus> before;

public:
    void note(const std::string& name, ZmxStatus status) {
        if (before.second < 0) ++seen[before][name];
        before = {name, status};
    }
    void restart() { before = {}; }
    // Each of the functions has followed each of the statuses of each function that has them.
    void expectAll(const std::vector<std::string>& functions,
                   const std::vector<std::pair<std::string, ZmxStatus>>& failures) {
        for (const auto& failure : failures)
            for (const std::string& f : functions)
                EXPECT_GT(seen[failure][f], 0) << f << " behind status " << failure.second << " of " << failure.first;
    }
};

// Blocks of every kind: zeros, a few small coefficients, known ones alone, values without a category.
Block anyBlock(Rng& rng) {
    switch (rng.range(0, 5)) {
    case 0:
        return Block{};
    case 1:
        return everywhere(int(rng.range(2, 9)));
    case 2:
        return randomBlock(rng, int(rng.range(1, 60)), 1);
    case 3:
        return randomBlock(rng, int(rng.range(1, 20)), 4);
    case 4:
        return everywhere(rng.oneIn(2) ? -32768 : 32767);
    default:
        return randomBlock(rng, int(rng.range(1, 8)), 15);
    }
}

} // namespace

TEST(AfterFailure, Encoders) {
    Followers followers;
    const std::vector<std::string> names{"block", "DCFirst", "DCRefine", "ACFirst",  "ACRefine", "One",
                                         "Row",   "flush",   "flushDCF", "flushDCR", "flushACF", "flushACR"};
    for (int seed = 1; seed <= rounds(900); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        const auto flushAt = randomFlush(rng);
        EncodeTable table(rng.oneIn(3) ? octets() : randomList(rng, {20, 254}, {1, 1}, 2), flushAt);
        auto out = std::make_unique<StreamOut>(int(rng.range(1, 60)), flushAt);
        const Band band{int(rng.range(1, 3)), int(rng.range(20, 63)), int(rng.range(0, 2))};
        Zmx16s lastDC[2] = {};
        Block b = anyBlock(rng);
        followers.restart();
        for (int call = 0; call < 60; ++call) {
            const std::vector<std::function<ZmxStatus()>> calls{
                [&] { return encode(*out, b, lastDC, table, table); },
                [&] { return encodeDCFirst(*out, b, lastDC, band.al, table); },
                [&] { return encodeDCRefine(*out, b, band.al); },
                [&] { return encodeACFirst(*out, b, band, table); },
                [&] { return encodeACRefine(*out, b, band, table); },
                [&] { return encodeOne(*out, b[7], table); },
                [&] {
                    return encodeRow(*out, {Row(b.begin(), b.end()), Row(b.rbegin(), b.rend())}, 2, {&table, &table});
                },
                [&] { return flush(*out); },
                [&] { return flushDCFirst(*out); },
                [&] { return flushDCRefine(*out); },
                [&] { return flushACFirst(*out, table); },
                [&] { return flushACRefine(*out, table); },
            };
            ASSERT_EQ(calls.size(), names.size());
            // Mostly refinements, which hold the most, some callers nothing else; a flush now and then.
            const bool stubborn = seed % 4 == 0 && !rng.oneIn(30);
            const std::size_t f = stubborn || rng.oneIn(3) ? 4 : std::size_t(rng.range(0, rng.oneIn(3) ? 11 : 6));
            followers.note(names[f], calls[f]());
            if (HasFailure()) return;
            if (rng.oneIn(stubborn ? 40 : 2)) b = anyBlock(rng); // else the same block again
            if (rng.oneIn(20)) {                                 // a new buffer for what is held
                auto next = std::make_unique<StreamOut>(int(rng.range(1, 300)), flushAt);
                next->state.plain = out->state.plain;
                next->state.share();
                out = std::move(next);
            }
        }
    }
    std::vector<std::pair<std::string, ZmxStatus>> failures;
    for (const std::string& name : names) failures.emplace_back(name, zmxStsOutOfBufErr);
    for (const char* name : {"block", "DCFirst", "ACFirst", "ACRefine", "One", "Row", "flushACR"})
        failures.emplace_back(name, zmxStsHuffTableErr);
    for (const char* name : {"DCFirst", "ACFirst"}) failures.emplace_back(name, zmxStsDCTRangeErr);
    if (!shortened()) followers.expectAll(names, failures);
}

TEST(AfterFailure, Decoders) {
    Followers followers;
    const std::vector<std::string> names{"block", "DCFirst", "DCRefine", "ACFirst", "ACRefine", "One", "Row"};
    for (int seed = 1; seed <= rounds(2500); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        const auto flushAt = randomFlush(rng);
        DecodeTable table(randomDecoderList(rng), flushAt);
        Bytes stream = randomStream(rng, int(rng.range(1, 80)), int(rng.range(4, 60)), 3);
        StreamIn in(stream, flushAt);
        BlockOut out(flushAt);
        const Band band{int(rng.range(1, 3)), int(rng.range(20, 63)), int(rng.range(0, 2))};
        Zmx16s value[2] = {};
        followers.restart();
        for (int call = 0; call < 30; ++call) {
            const std::vector<std::function<Outcome()>> calls{
                [&] { return decode(in, out, table, table); },
                [&] { return decodeDCFirst(in, out, band.al, table); },
                [&] { return decodeDCRefine(in, out, band.al); },
                [&] { return decodeACFirst(in, out, band, table); },
                [&] { return decodeACRefine(in, out, band, table); },
                [&] { return decodeOne(in, value, table); },
                [&] {
                    DecodePlanes rows(5, {&table, &table});
                    return decodeRow(in, rows, 5, 2);
                },
            };
            ASSERT_EQ(calls.size(), names.size());
            const std::size_t f = std::size_t(rng.range(0, 6));
            const Outcome o = calls[f]();
            if (HasFailure()) return;
            ASSERT_GE(in.pos[0], 0);
            ASSERT_LE(in.pos[0], in.len());
            if (!o.path) in.follow(); // what it did had no meaning, and yet it may be called on
            followers.note(names[f], o.status);
            if (rng.oneIn(12)) in.marker[0] = in.marker[1] = 0; // as a caller does who reads on behind a marker
        }
    }
    std::vector<std::pair<std::string, ZmxStatus>> failures{{"block", zmxStsErr}};
    for (const std::string& name : names)
        for (ZmxStatus s : {zmxStsOutOfBufErr, zmxStsDCTRangeErr}) failures.emplace_back(name, s);
    if (!shortened()) followers.expectAll(names, failures);
}

// The Direct decoder reads nothing behind a marker, however often it is called there.
TEST(AfterFailure, DirectDecoder) {
    std::map<ZmxStatus, int> statuses;
    for (int seed = 1; seed <= rounds(3000); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        const auto flushAt = randomFlush(rng);
        DecodeTable table(randomDecoderList(rng), flushAt);
        Guarded<Zmx8u> src(withMarker(randomStream(rng, int(rng.range(0, 30)), 20, 1000)), flushAt);
        Guarded<Zmx16s> block(64, flushAt);
        int position = 0, marker = 0;
        Zmx32u bits = 0;
        Zmx32s count = 0;
        Zmx16s lastDC = 0;
        for (int call = 0; call < 30; ++call) {
            const ZmxStatus s = zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(
                src.data(), &position, block.data(), &lastDC, &marker, &bits, &count, table.lib(), table.lib());
            ++statuses[s];
            ASSERT_GE(position, 0);
            ASSERT_LE(position, int(src.size()) * 8);
            if (s == zmxStsBadArgErr) count = int(rng.range(0, 40)); // the count had gone negative
        }
    }
    for (ZmxStatus s : {zmxStsNoErr, zmxStsBadArgErr, zmxStsOutOfBufErr, zmxStsDCTRangeErr})
        EXPECT_GT(statuses[s], rounds(70));
    EXPECT_EQ(statuses.size(), 4u);
}

// ---- tables that could not be built, and are used all the same

TEST(AfterFailure, TablesThatCouldNotBeBuilt) {
    int failed = 0;
    for (int seed = 1; seed <= rounds(1500); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        const auto flushAt = randomFlush(rng);
        HuffmanList list;
        for (Zmx8u& n : list.bits) n = Zmx8u(rng.oneIn(3) ? rng.range(0, 255) : rng.range(0, 4));
        list.vals.resize(16 * 255);
        for (Zmx8u& v : list.vals) v = Zmx8u(rng.range(0, 255));
        DecodeTable decodeTable(flushAt);
        EncodeTable encodeTable(flushAt);
        failed += decodeTable.build(list) == zmxStsHuffTableErr;
        failed += encodeTable.build(list) == zmxStsHuffTableErr;
        StreamIn in(randomStream(rng, 60, 20, 10), flushAt);
        BlockOut out(flushAt);
        StreamOut written(40, flushAt);
        Zmx16s value[2] = {}, lastDC[2] = {};
        for (int call = 0; call < 4; ++call) {
            bool path = decode(in, out, decodeTable, decodeTable).path;
            if (!path) in.follow();
            path = decodeACFirst(in, out, kAll, decodeTable).path;
            if (!path) in.follow();
            path = decodeACRefine(in, out, kAll, decodeTable).path;
            if (!path) in.follow();
            path = decodeOne(in, value, decodeTable).path;
            if (!path) in.follow();
            const Block b = anyBlock(rng);
            encode(written, b, lastDC, encodeTable, encodeTable);
            encodeACFirst(written, b, kAll, encodeTable);
            encodeACRefine(written, b, kAll, encodeTable);
            encodeOne(written, b[0], encodeTable);
            if (HasFailure()) return;
        }
        flushACRefine(written, encodeTable);
    }
    EXPECT_GT(failed, rounds(1000));
}
