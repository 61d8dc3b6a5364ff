// The bit reader and the bit writer inside the JPEG entropy coders, and their constant tables.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjbitread.h"
#include "pjbitwrite.h"
#include "pjhufftbl.h"
#include "pjzigzag.h"
#include "tests/jpeg/support/huffman.h"

#include <gtest/gtest.h>

using namespace zmx;

TEST(HuffmanConstants, FollowTheirRules) {
    EXPECT_EQ(std::size(own_pj_csize), 256u);
    EXPECT_EQ(std::size(own_pj_eobsize), 512u);
    for (auto* table : {&own_pj_lowest_coef, &own_pj_extend_offset, &own_pj_extend_test, &own_pj_twoexpnminusone})
        EXPECT_EQ(std::size(*table), 16u);
    for (unsigned n = 0; n < 512; ++n) {
        int width = 0;
        while (n >> width) ++width;
        if (n < 256) {
            EXPECT_EQ(own_pj_csize[n], width) << n;
        }
        EXPECT_EQ(own_pj_eobsize[n], n ? width - 1 : 0) << n;
    }
    for (unsigned n = 0; n < 16; ++n) {
        const int power = n ? 1 << n : 1;
        EXPECT_EQ(own_pj_lowest_coef[n], 1 - power) << n;
        EXPECT_EQ(own_pj_extend_offset[n], 1 - power) << n;
        EXPECT_EQ(own_pj_extend_test[n], n ? power / 2 : 0) << n;
        EXPECT_EQ(own_pj_twoexpnminusone[n], own_pj_extend_test[n]) << n;
    }
    const int lowest[] = {0, -1, -3, -7}, test[] = {0, 1, 2, 4};
    for (unsigned n = 0; n < 4; ++n) {
        EXPECT_EQ(own_pj_lowest_coef[n], lowest[n]);
        EXPECT_EQ(own_pj_extend_test[n], test[n]);
    }
    EXPECT_EQ(own_pj_lowest_coef[15], -32767);
    EXPECT_EQ(own_pj_extend_test[15], 16384);
    EXPECT_EQ(own_pj_eobsize[511], 8);
}

TEST(HuffmanConstants, ZigzagHasEightSpareEntries) {
    ASSERT_EQ(std::size(own_pj_izigzag_index), 72u);
    for (unsigned k = 0; k < 72; ++k) EXPECT_EQ(own_pj_izigzag_index[k], k < 64 ? annexK::zigzag[k] : 63) << k;
}

namespace {

ZmxStatus fill(StreamIn& s, int bitsNeeded) {
    BitReader in(s.src.data(), s.len(), &s.pos[0], &s.marker[0], s.state.lib());
    return ownpj_FillBitBuffer(in, bitsNeeded);
}

ZmxStatus symbol(StreamIn& s, DecodeTable& table, int& result) {
    BitReader in(s.src.data(), s.len(), &s.pos[0], &s.marker[0], s.state.lib());
    return ownpj_DecodeHuffSymbol(in, &result, *table.lib());
}

ZmxStatus put(StreamOut& s, Zmx32u bits, int n) {
    BitWriter out(s.dst.data(), s.len(), &s.pos[0], s.state.lib());
    return ownpj_write_bits_jpeg(bits, n, out);
}

ZmxStatus flushLib(StreamOut& s) { return flushWriter(s.dst.data(), s.len(), &s.pos[0], s.state.lib()); }

// Bytes in which 0xFF, stuffing, fill and markers are frequent.
std::vector<Zmx8u> dense(Rng& rng, int n, int markersOneIn) {
    std::vector<Zmx8u> bytes;
    while (int(bytes.size()) < n) {
        if (!rng.oneIn(3)) {
            bytes.push_back(Zmx8u(rng.range(0, 254)));
            continue;
        }
        for (int f = int(rng.range(1, rng.oneIn(5) ? 3 : 1)); f > 0; --f) bytes.push_back(0xFF);
        bytes.push_back(rng.oneIn(markersOneIn) ? Zmx8u(rng.range(1, 254)) : Zmx8u(0));
    }
    bytes.resize(std::size_t(n));
    return bytes;
}

} // namespace

TEST(FillBitBuffer, AppendsUpTo32Bits) {
    StreamIn s({1, 2, 3, 4, 5});
    EXPECT_EQ(fill(s, 25), zmxStsNoErr);
    EXPECT_EQ(s.state.lib()->bitBuffer, 0x01020304u);
    EXPECT_EQ(s.state.lib()->bitCount, 32);
    EXPECT_EQ(s.pos[0], 4);
    s.state.lib()->bitCount = 25;
    EXPECT_EQ(fill(s, 0), zmxStsNoErr);
    EXPECT_EQ(s.pos[0], 4) << "25 are enough";
    s.state.lib()->bitCount = 24;
    EXPECT_EQ(fill(s, 0), zmxStsNoErr);
    EXPECT_EQ(s.state.lib()->bitBuffer, 0x02030405u);
    EXPECT_EQ(s.state.lib()->bitCount, 32);
}

TEST(FillBitBuffer, StuffingFillAndMarkers) {
    StreamIn stuffed({0xFF, 0x00, 0x12});
    EXPECT_EQ(fill(stuffed, 16), zmxStsNoErr) << "all that is needed is there at the end of the source";
    EXPECT_EQ(stuffed.state.lib()->bitBuffer, 0xFF12u);
    EXPECT_EQ(stuffed.state.lib()->bitCount, 16);
    EXPECT_EQ(stuffed.pos[0], 3);
    EXPECT_EQ(fill(stuffed, 17), zmxStsOutOfBufErr);

    StreamIn marker({0xFF, 0xFF, 0xD9, 0x33});
    EXPECT_EQ(fill(marker, 16), zmxStsNoErr) << "a new marker ends it without an error, with no bits at all";
    EXPECT_EQ(marker.marker[0], 0xD9);
    EXPECT_EQ(marker.pos[0], 3);
    EXPECT_EQ(marker.state.lib()->bitCount, 0);
    EXPECT_EQ(fill(marker, 1), zmxStsDCTRangeErr);
    EXPECT_EQ(fill(marker, 0), zmxStsNoErr);
    EXPECT_EQ(marker.pos[0], 3);
    marker.state.lib()->bitCount = -3;
    EXPECT_EQ(fill(marker, 0), zmxStsDCTRangeErr) << "0 is more than -3";

    // A fill byte ahead of a stuffed zero makes one data byte.
    StreamIn fillAndZero({0xFF, 0xFF, 0xFF, 0x00});
    EXPECT_EQ(fill(fillAndZero, 8), zmxStsNoErr);
    EXPECT_EQ(fillAndZero.state.lib()->bitBuffer, 0xFFu);
    EXPECT_EQ(fillAndZero.pos[0], 4);
}

TEST(FillBitBuffer, AMarkerOfAnySignStopsReading) {
    for (int marker : {1, 0xD0, 255, 256, -1, INT32_MIN}) {
        StreamIn s({1, 2, 3, 4});
        s.marker[0] = marker;
        EXPECT_EQ(fill(s, 1), zmxStsDCTRangeErr);
        EXPECT_EQ(fill(s, 0), zmxStsNoErr);
        EXPECT_EQ(s.pos[0], 0);
        EXPECT_EQ(s.marker[0], marker);
    }
}

TEST(FillBitBuffer, FFAtTheVeryEndIsLost) {
    for (int n : {1, 2}) {
        StreamIn s(std::vector<Zmx8u>(std::size_t(n), 0xFF));
        s.state.lib()->bitCount = 20;
        EXPECT_EQ(fill(s, 0), zmxStsOutOfBufErr) << "also when no bits are needed";
        EXPECT_EQ(s.pos[0], n);
        EXPECT_EQ(s.state.lib()->bitCount, 20);
        EXPECT_EQ(fill(s, 20), zmxStsNoErr) << "the bits held stay usable";
        EXPECT_EQ(fill(s, 21), zmxStsOutOfBufErr);
    }
    StreamIn beyond({1, 2});
    beyond.pos[0] = 7;
    EXPECT_EQ(fill(beyond, 1), zmxStsOutOfBufErr);
    EXPECT_EQ(beyond.pos[0], 7);
}

TEST(FillBitBuffer, RandomStreams) {
    for (int seed = 1; seed <= 3000; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        StreamIn s(dense(rng, int(rng.range(0, 14)), 4));
        rng.bytes(&s.state.plain, sizeof s.state.plain);
        s.state.plain.bitCount = int(rng.range(-16, 32));
        s.state.share();
        s.pos[0] = s.pos[1] = int(rng.range(0, s.len()));
        s.marker[0] = s.marker[1] = rng.oneIn(6) ? int(rng.range(-2, 254)) : 0;
        for (int call = 0; call < 5; ++call) {
            const int need = int(rng.range(0, 16));
            model::Reader r = s.reader();
            const ZmxStatus expected = model::fillBitBuffer(r, need);
            ASSERT_EQ(fill(s, need), expected);
            ASSERT_TRUE(s.same());
            s.state.plain.bitCount -= int(rng.range(0, 20));
            s.state.share();
        }
    }
}

TEST(DecodeHuffSymbol, ShortAndLongCodes) {
    // Table K.5: 1010 is 0x00, 11111111001 is 0xF0, 1111111111111110 is 0xFA.
    DecodeTable table(annexK::acLuminance);
    StreamIn s({0xAF, 0xFF, 0x00, 0x9F, 0xFF, 0x00, 0xE0}); // 1010, 1111111111111001, 1111111111111110, 0000
    int got = -1;
    EXPECT_EQ(symbol(s, table, got), zmxStsNoErr);
    EXPECT_EQ(got, 0x00);
    EXPECT_EQ(s.state.lib()->bitCount, 28);
    model::Reader r = s.reader();
    int expected = -1;
    ASSERT_EQ(model::decodeSymbol(r, table.plain, expected), zmxStsNoErr);
    while (s.pos[1] < s.len() || s.state.plain.bitCount > 16) {
        ASSERT_EQ(model::decodeSymbol(r, table.plain, expected), zmxStsNoErr);
        ASSERT_EQ(symbol(s, table, got), zmxStsNoErr);
        EXPECT_EQ(got, expected);
        ASSERT_TRUE(s.same());
    }

    StreamIn longest({0xFF, 0x00, 0xFE});
    EXPECT_EQ(symbol(longest, table, got), zmxStsNoErr);
    EXPECT_EQ(got, 0xFA);
    EXPECT_EQ(longest.state.lib()->bitCount, 0);
    StreamIn zrl({0xFF, 0x00, 0x3F});
    EXPECT_EQ(symbol(zrl, table, got), zmxStsNoErr);
    EXPECT_EQ(got, 0xF0);
    EXPECT_EQ(zrl.state.lib()->bitCount, 5);
}

TEST(DecodeHuffSymbol, InvalidCodesStoreZero) {
    DecodeTable table(annexK::acLuminance), empty(HuffmanList{});
    // 16 ones are no code. The 17th bit is taken as well before that is seen.
    StreamIn s({0xFF, 0x00, 0xFF, 0x00, 0x80});
    int got = -1;
    EXPECT_EQ(symbol(s, table, got), zmxStsDCTRangeErr);
    EXPECT_EQ(got, 0);
    EXPECT_EQ(s.state.lib()->bitCount, 24 - 17);
    StreamIn short16({0xFF, 0x00, 0xFF, 0x00});
    got = -1;
    EXPECT_EQ(symbol(short16, table, got), zmxStsOutOfBufErr) << "the bit behind 16 is asked for";
    EXPECT_EQ(got, -1);
    StreamIn any({0x12, 0x34, 0x56});
    EXPECT_EQ(symbol(any, empty, got), zmxStsDCTRangeErr);
    EXPECT_EQ(got, 0);

    // A complete set down to 16 bits: its last code, all ones, reads as none.
    HuffmanList chain;
    for (int i = 0; i < 16; ++i) {
        chain.bits[std::size_t(i)] = i < 15 ? 1 : 2;
        chain.vals.push_back(Zmx8u(i));
    }
    chain.vals.push_back(16);
    DecodeTable complete(chain);
    StreamIn last({0xFF, 0x00, 0xFE, 0xFF, 0x00, 0xFF, 0x00, 0x00});
    EXPECT_EQ(symbol(last, complete, got), zmxStsDCTRangeErr) << "16 bits: the length has no largest code";
    EXPECT_EQ(last.state.lib()->bitCount, 32 - 17);
}

TEST(DecodeHuffSymbol, FewerThanEightBitsAtTheEnd) {
    DecodeTable table(annexK::dcLuminance); // 00 is 0, 010 is 1, 1110 is 6
    StreamIn s({0x2E});                     // 00 101 110
    int got = -1;
    EXPECT_EQ(symbol(s, table, got), zmxStsNoErr);
    EXPECT_EQ(got, 0);
    EXPECT_EQ(symbol(s, table, got), zmxStsNoErr); // 101: bit by bit from length 1
    EXPECT_EQ(got, 4);
    EXPECT_EQ(s.state.lib()->bitCount, 3);
    EXPECT_EQ(symbol(s, table, got), zmxStsNoErr); // 110
    EXPECT_EQ(got, 5);
    EXPECT_EQ(symbol(s, table, got), zmxStsOutOfBufErr);
    StreamIn cut({0xFF, 0xD9});
    EXPECT_EQ(symbol(cut, table, got), zmxStsDCTRangeErr) << "the marker is met, then asked past";
    EXPECT_EQ(cut.marker[0], 0xD9);
}

TEST(DecodeHuffSymbol, RandomTablesAndStreams) {
    int meaningful = 0, invalid = 0;
    for (int seed = 1; seed <= 1500; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        // AtStart: an index ahead of the table's first symbol would be outside.
        DecodeTable table(randomFlush(rng));
        HuffmanList list = randomList(rng, {2, 250}, {0, 3}, 2);
        if (rng.oneIn(5)) list = {{2, 0, 0, 0, 0, 0, 0, 1}, {1, 2, 3}}; // index 256 of the fast table
        if (table.build(list)) continue;
        StreamIn s(dense(rng, int(rng.range(1, 40)), 12));
        if (rng.oneIn(2)) {
            s.state.plain.bitCount = int(rng.range(-3, 24));
            s.state.plain.bitBuffer = Zmx32u(rng.next());
            s.state.plain.bufferMark = 77;
            s.state.share();
        }
        for (int call = 0; call < 60; ++call) {
            model::Reader r = s.reader();
            int expected = -1, got = -1;
            const ZmxStatus status = model::decodeSymbol(r, table.plain, expected);
            const ZmxStatus libStatus = symbol(s, table, got);
            if (r.noPath) break;
            ASSERT_EQ(libStatus, status);
            ASSERT_EQ(got, expected);
            ASSERT_TRUE(s.same());
            ++meaningful;
            if (status == zmxStsDCTRangeErr) ++invalid;
            if (status == zmxStsOutOfBufErr) break;
            if (s.marker[1] != 0 && rng.oneIn(2)) s.restart();
        }
    }
    EXPECT_GT(meaningful, 10000);
    EXPECT_GT(invalid, 100);
}

TEST(DecodeLongBits, EndsAndInvalidCodes) {
    DecodeTable table(annexK::acLuminance);
    const auto run = [&](std::vector<Zmx8u> bytes, int& count) {
        Guarded<Zmx8u> src(bytes);
        int marker = 0;
        Zmx32u bits = 0;
        count = 0;
        DirectReader in(src.data(), 0, &marker, &bits, &count);
        const int result = ownpj_DecodeLongBits(9, *table.lib(), in);
        count = in.count;
        return result;
    };
    int count = 0;
    EXPECT_EQ(run({0xFF, 0x00, 0xFE, 0xFF, 0xD9}, count), 0xFA);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(run({0xFF, 0xD9}, count), -256);
    EXPECT_EQ(run({0xFF, 0x00, 0xFF, 0x00, 0xFF, 0xD9}, count), -256) << "16 ones, and no 17th bit";
    EXPECT_EQ(count, 0);
    // 16 ones and more: read on until the code, 32 bits long, is negative.
    EXPECT_EQ(run({0xFF, 0x00, 0xFF, 0x00, 0x12, 0x34, 0x56, 0x78, 0xFF, 0xD9}, count), -1);
    EXPECT_EQ(count, 0);
}

TEST(WriteBits, StuffsAndKeepsWhatIsPending) {
    StreamOut s(4);
    EXPECT_EQ(put(s, 0x5, 3), zmxStsNoErr);
    EXPECT_EQ(s.state.lib()->bitCount, 3);
    EXPECT_EQ(s.state.lib()->bitBuffer, 0xA00000u);
    EXPECT_EQ(s.pos[0], 0);
    EXPECT_EQ(put(s, 0xFFFFFFFF, 5), zmxStsNoErr) << "bits above the low five do not count";
    EXPECT_EQ(s.dst[0], 0xBF);
    EXPECT_EQ(s.pos[0], 1);
    EXPECT_EQ(put(s, 0xFF, 8), zmxStsNoErr);
    EXPECT_EQ(s.dst[1], 0xFF);
    EXPECT_EQ(s.dst[2], 0x00);
    EXPECT_EQ(s.pos[0], 3);
    EXPECT_EQ(s.state.lib()->bitCount, 0);
    EXPECT_EQ(put(s, 1, 0), zmxStsHuffTableErr) << "no bits: a symbol without a code";
    EXPECT_EQ(put(s, 0xFFFF, 16), zmxStsOutOfBufErr) << "the stuffing has no room";
    EXPECT_EQ(s.pos[0], 4);
    EXPECT_EQ(s.dst[3], 0xFF);
    EXPECT_EQ(s.state.lib()->bitCount, 0);
    EXPECT_EQ(put(s, 0x7F, 7), zmxStsNoErr) << "bits that complete no byte need no room";
    EXPECT_EQ(put(s, 1, 1), zmxStsOutOfBufErr);
    EXPECT_EQ(s.state.lib()->bitCount, 7);
    EXPECT_EQ(s.pos[0], 4);
}

TEST(WriteBits, NoBitsChangeNothing) {
    StreamOut s(2);
    Rng rng(3);
    rng.bytes(&s.state.plain, sizeof s.state.plain);
    s.state.plain.bitCount = 5;
    s.state.share();
    EXPECT_EQ(put(s, 0xFFFF, 0), zmxStsHuffTableErr);
    EXPECT_TRUE(s.same()) << "the mark of a successful write neither";
}

TEST(WriteBits, Flush) {
    struct {
        Zmx32u bits;
        int n;
        std::vector<Zmx8u> bytes;
    } const cases[] = {{0, 0, {}},
                       {0, 1, {0x7F}},
                       {5, 3, {0xBF}},
                       {7, 3, {0xFF, 0x00}},
                       {0x7E, 7, {0xFD}},
                       {0, 7, {0x01}},
                       {0x7F, 7, {0xFF, 0}},
                       {0x1AB, 9, {0xD5, 0xFF, 0x00}},
                       {0x1234, 16, {0x12, 0x34}}};
    for (const auto& c : cases) {
        StreamOut s(4);
        if (c.n) {
            EXPECT_EQ(put(s, c.bits, c.n), zmxStsNoErr);
        }
        s.state.lib()->eobRun = 5;
        s.state.lib()->correctionCount = 2;
        s.state.lib()->correctionBits[1023] = 1;
        EXPECT_EQ(flushLib(s), zmxStsNoErr);
        EXPECT_EQ(std::vector<Zmx8u>(s.dst.data(), s.dst.data() + s.pos[0]), c.bytes);
        EXPECT_TRUE(s.state.same()) << "all zero";
    }
    StreamOut full(1);
    full.pos[0] = 1;
    EXPECT_EQ(put(full, 1, 3), zmxStsNoErr);
    EXPECT_EQ(flushLib(full), zmxStsOutOfBufErr);
    EXPECT_TRUE(full.state.same()) << "cleared all the same";
}

TEST(WriteBits, RandomFields) {
    for (int seed = 1; seed <= 1000; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        StreamOut s(int(rng.range(1, 24)));
        rng.bytes(s.state.plain.correctionBits, 1024);
        s.state.plain.bufferMark = Zmx32u(rng.next());
        s.state.share();
        for (int call = 0; call < 30; ++call) {
            const int n = int(rng.range(0, 16));
            const Zmx32u bits = rng.oneIn(3) ? 0xFFFFFFFFu : Zmx32u(rng.next());
            model::Writer w = s.writer();
            if (rng.oneIn(20)) {
                const ZmxStatus expected = model::flush(w);
                ASSERT_EQ(flushLib(s), expected);
            } else {
                const ZmxStatus expected = model::writeBits(w, bits, n);
                ASSERT_EQ(put(s, bits, n), expected);
            }
            ASSERT_TRUE(s.same());
        }
    }
}
