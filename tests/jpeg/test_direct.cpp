// Sequential JPEG blocks: the Direct coders, which know no bounds.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/support/sequential.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/rounds.h"

#include <gtest/gtest.h>

namespace {

// The stream and the words of the Direct decoder.
struct DirectIn {
    Bytes bytes;
    Guarded<Zmx8u> src;
    int bitsLen[2] = {}, marker[2] = {};
    Zmx32u bits[2] = {};
    Zmx32s count[2] = {};

    explicit DirectIn(const Bytes& b) : bytes(b), src(b) {}
    ::testing::AssertionResult same() {
        if (bitsLen[0] == bitsLen[1] && marker[0] == marker[1] && bits[0] == bits[1] && count[0] == count[1])
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure()
               << std::hex << "position " << bitsLen[0] << ", expected " << bitsLen[1] << "; marker " << marker[0]
               << ", expected " << marker[1] << "; bits " << bits[0] << ", expected " << bits[1] << "; count "
               << count[0] << ", expected " << count[1];
    }
};

Outcome decodeDirect(DirectIn& in, BlockOut& out, DecodeTable& dc, DecodeTable& ac) {
    model::DirectReader r{in.bytes, in.bitsLen[1], in.marker[1], in.bits[1], in.count[1]};
    const ZmxStatus expected = in.count[1] < 0
                                   ? ZmxStatus(zmxStsBadArgErr)
                                   : model::decodeBlockDirect(r, out.plain.data(), out.plainDC, dc.plain, ac.plain);
    const ZmxStatus got =
        zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(in.src.data(), &in.bitsLen[0], out.dst.data(), out.lastDC.data(),
                                                  &in.marker[0], &in.bits[0], &in.count[0], dc.lib(), ac.lib());
    return settle(in, out, expected, got, !r.noPath && !r.astray, r.noValue);
}

} // namespace

TEST(Direct, OrderOfTests) {
    Luminance t;
    Guarded<Zmx8u> src(Bytes{0x12, 0x34}), dst(4);
    Guarded<Zmx16s> block(64), lastDC(1);
    int marker = 0, bitsLen = 0, badBitsLen = -1;
    Zmx32u bits = 0;
    Zmx32s held = 0, badHeld = -1;
    block.fill(7);
    const auto blockBefore = block.copy();
    dst.fill(9);

    checkOrder({kNull, kNull, kBadArg, kNull, kNull, kNull, kNull, kNull, kBadArg, kNull, kNull}, [&](const Bad& bad) {
        int* const position = bad.any(2, &bitsLen, {&badBitsLen});
        Zmx32s* const number = bad.any(8, &held, {&badHeld});
        return zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(bad.null(0, src.data()), bad.null(1, position),
                                                         bad.null(3, block.data()), bad.null(4, lastDC.data()),
                                                         bad.null(5, &marker), bad.null(6, &bits), bad.null(7, number),
                                                         bad.null(9, t.decDC.lib()), bad.null(10, t.decAC.lib()));
    });
    checkOrder({kNull, kNull, kNull, kNull, kNull, kNull}, [&](const Bad& bad) {
        return zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1(bad.null(0, block.data()), bad.null(1, dst.data()),
                                                         bad.null(2, &bitsLen), bad.null(3, lastDC.data()),
                                                         bad.null(4, t.encDC.lib()), bad.null(5, t.encAC.lib()));
    });

    EXPECT_EQ(block.copy(), blockBefore);
    EXPECT_EQ(dst.copy(), Bytes(4, 9));
    EXPECT_TRUE(t.encDC.same() && t.encAC.same() && t.decDC.same() && t.decAC.same());
    EXPECT_EQ(marker, 0);
    EXPECT_EQ(bitsLen, 0);
    EXPECT_EQ(badBitsLen, -1);
    EXPECT_EQ(bits, 0u);
    EXPECT_EQ(held, 0);
    EXPECT_EQ(badHeld, -1);
}

TEST(Direct, PositionsAndQuietEnds) {
    Luminance t;
    // 00 1010 and two bits of filling; a marker.
    DirectIn in({0x2B, 0xFF, 0xD9});
    in.bitsLen[0] = in.bitsLen[1] = 7; // the byte counts
    BlockOut out;
    out.setDC(12);
    EXPECT_EQ(decodeDirect(in, out, t.decDC, t.decAC).status, zmxStsNoErr);
    EXPECT_EQ(out.plain, blockOf({{0, 12}}));
    EXPECT_EQ(in.bitsLen[0], 24) << "behind the marker, which the refill met";
    EXPECT_EQ(in.marker[0], 0xD9);
    EXPECT_EQ(in.count[0], 2);
    EXPECT_EQ(in.bits[0], 0x2Bu);
    // 11 is left: as 11000000 it reads as the DC category 4 or so; its bits run out.
    EXPECT_EQ(decodeDirect(in, out, t.decDC, t.decAC).status, zmxStsOutOfBufErr);
    EXPECT_EQ(out.plain, Block{});
    EXPECT_EQ(in.bitsLen[0], 24);
    EXPECT_EQ(in.count[0], -1);
    EXPECT_EQ(decodeDirect(in, out, t.decDC, t.decAC).status, zmxStsBadArgErr) << "a negative count is refused";

    // No bits at all: in the DC part status 0, the block zero, and the position not stored.
    DirectIn empty({0xFF, 0xFF, 0xD9});
    EXPECT_EQ(decodeDirect(empty, out, t.decDC, t.decAC).status, zmxStsNoErr);
    EXPECT_EQ(out.plain, Block{});
    EXPECT_EQ(empty.bitsLen[0], 0);
    EXPECT_EQ(empty.marker[0], 0xD9);
    EXPECT_EQ(out.lastDC[0], 12);

    // In the AC part the block stays as far as it got, and the position is stored: 00, 00 1, 00 1.
    DirectIn quiet({0x09, 0xFF, 0xD9}); // 00 00 1 00 1
    EXPECT_EQ(decodeDirect(quiet, out, t.decDC, t.decAC).status, zmxStsNoErr);
    EXPECT_EQ(out.plain, blockOf({{0, 12}, {1, 1}, {2, 1}}));
    EXPECT_EQ(quiet.bitsLen[0], 24);
    EXPECT_EQ(quiet.count[0], 0);
}

TEST(Direct, ValueBitsAtAMarker) {
    // 0000: 0x00, 0001: 0x04
    DecodeTable t(nibbles({0x00, 0x04}));
    BlockOut out;
    DirectIn none({0x01, 0xFF, 0xD9}); // DC 0, then 0x04 and no bit
    EXPECT_EQ(decodeDirect(none, out, t, t).status, zmxStsOutOfBufErr);
    EXPECT_EQ(none.bitsLen[0], 0) << "the position is not stored";
    EXPECT_EQ(none.count[0], 0);
    EXPECT_EQ(none.marker[0], 0xD9);
    DirectIn dcNone({0x12, 0xFF, 0xD9}); // DC 0x04, 0010: all there; then nothing: quiet
    EXPECT_EQ(decodeDirect(dcNone, out, t, t).status, zmxStsNoErr);
    EXPECT_EQ(out.dst[0], -13);
    // 0x04 with two bits of four: the count goes to -2, and the quiet end puts it to 0.
    DirectIn some({0xFF, 0xD9});
    some.bits[0] = some.bits[1] = 0x06; // 0000 0001 10, with 10 held
    some.count[0] = some.count[1] = 10;
    EXPECT_EQ(decodeDirect(some, out, t, t).status, zmxStsNoErr);
    EXPECT_EQ(some.count[0], 0);
    EXPECT_EQ(some.bitsLen[0], 16);
    DirectIn invalid({0xF0, 0xFF, 0xD9});
    EXPECT_EQ(decodeDirect(invalid, out, t, t).status, zmxStsNoErr) << "the data end within the walk: quiet";
    DirectIn invalidLong({0xF0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xD9});
    EXPECT_EQ(decodeDirect(invalidLong, out, t, t).status, zmxStsDCTRangeErr);
    EXPECT_EQ(invalidLong.bitsLen[0], 0);
}

TEST(Direct, OnlyAPositiveMarkerStopsReading) {
    Luminance t;
    BlockOut out;
    for (int marker : {0, -1, INT32_MIN}) {
        DirectIn in({0x2B, 0xFF, 0xD9});
        in.marker[0] = in.marker[1] = marker;
        EXPECT_EQ(decodeDirect(in, out, t.decDC, t.decAC).status, zmxStsNoErr);
        EXPECT_EQ(in.marker[0], 0xD9);
        EXPECT_EQ(in.bitsLen[0], 24);
    }
    DirectIn in({0x2B, 0xFF, 0xD9});
    in.marker[0] = in.marker[1] = 1;
    EXPECT_EQ(decodeDirect(in, out, t.decDC, t.decAC).status, zmxStsNoErr) << "quiet: no bits";
    EXPECT_EQ(in.bitsLen[0], 0);
    EXPECT_EQ(in.marker[0], 1);
    // The state-held decoder takes any other marker for one.
    StreamIn held({0x2B, 0xFF, 0xD9});
    held.marker[0] = held.marker[1] = -1;
    EXPECT_EQ(decode(held, out, t.decDC, t.decAC).status, zmxStsDCTRangeErr);
}

// A table without codes: the walk along its words ends behind the last of them.
TEST(Direct, NoCodeOfAnyLength) {
    DecodeTable none(HuffmanList{});
    for (const Bytes& bytes :
         {Bytes{0, 1, 0, 0, 0, 0, 0, 0, 0, 0}, Bytes{0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55}, Bytes(12, 0),
          Bytes{0, 0, 0x20, 0, 0, 0, 0, 0, 0}}) {
        BlockOut out;
        DirectIn in(withMarker(bytes));
        EXPECT_LT(decodeDirect(in, out, none, none).status, zmxStsNoErr);
    }
}

TEST(Direct, SymbolsOfTheDecoder) {
    DecodeTable t(nibbles({0x00, 0x10, 0xE0, 0xF0, 0x02, 0xD1, 0x81, 0x91}));
    for (auto flush : bothEnds) {
        BlockOut out(flush);
        out.setDC(40);
        const auto run = [&](const Bytes& bytes) {
            DirectIn in(withMarker(bytes));
            return decodeDirect(in, out, t, t).status;
        };
        EXPECT_EQ(run({0x12}), zmxStsNoErr);
        EXPECT_EQ(out.plain, blockOf({{0, 40}}));
        EXPECT_EQ(run({0x04, 0x84}), zmxStsNoErr);
        EXPECT_EQ(out.plain, blockOf({{0, 40}, {1, 2}}));
        EXPECT_EQ(run({0x03, 0x33, 0x5B, 0x40}), zmxStsNoErr);
        EXPECT_EQ(out.plain, blockOf({{0, 40}, {62, 1}, {63, 1}}));
        // Behind the spare entries: whatever happens, it happens inside the block.
        const ZmxStatus s = run({0x03, 0x33, 0x5B, 0xC0});
        EXPECT_LE(s, zmxStsNoErr);
        for (int k = 1; k < 62; ++k) EXPECT_EQ(out.dst[std::size_t(annexK::zigzag[k])], 0) << k;
    }
}

TEST(Direct, ScansOfTableK) {
    Luminance t;
    for (int seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        const Scan scan = makeScan(rng, 12, t, int(rng.range(1, 30)), 10);
        DirectIn in(withMarker(scan.stream));
        BlockOut out;
        for (const Block& b : scan.blocks) {
            ASSERT_EQ(decodeDirect(in, out, t.decDC, t.decAC).status, zmxStsNoErr);
            ASSERT_EQ(out.plain, b);
        }
    }
}

TEST(Direct, CutByAMarkerAtEveryByte) {
    Luminance t;
    int negative = 0;
    for (int seed = 1; seed <= 12; ++seed) {
        Rng rng{std::uint64_t(seed)};
        const Scan scan = makeScan(rng, 4, t, seed % 2 ? 2 : 9, 10);
        for (std::size_t cut = 0; cut <= scan.stream.size(); ++cut) {
            SCOPED_TRACE(::testing::Message() << "seed " << seed << " cut at " << cut);
            Bytes head(scan.stream.begin(), scan.stream.begin() + std::ptrdiff_t(cut));
            if (!head.empty() && head.back() == 0xFF) head.push_back(0);
            DirectIn in(withMarker(head));
            BlockOut out;
            for (int call = 0; call < 5; ++call) {
                const Outcome o = decodeDirect(in, out, t.decDC, t.decAC);
                if (!o.path) break;
                negative += o.status == zmxStsBadArgErr;
            }
        }
    }
    EXPECT_GT(negative, 50);
}

TEST(Direct, RandomTablesAndStreams) {
    int meaningful = 0, invalid = 0, out62 = 0;
    for (int seed = 1; seed <= rounds(1500); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        RandomTables t(rng);
        const int ffOneIn = rng.oneIn(3) ? 400 : int(rng.range(2, 60));
        DirectIn in(withMarker(randomStream(rng, int(rng.range(1, 400)), ffOneIn, 12)));
        // The last byte may be a 0xFF of its own: fill, and the marker stays one.
        BlockOut out(t.flush);
        in.bits[0] = in.bits[1] = Zmx32u(rng.next());
        in.count[0] = in.count[1] = int(rng.range(0, 32));
        for (int call = 0; call < 12; ++call) {
            const Outcome o = decodeDirect(in, out, t.dc, t.ac);
            if (::testing::Test::HasFailure()) return;
            if (!o.path) break;
            ++meaningful;
            invalid += o.status == zmxStsDCTRangeErr;
            out62 += o.status == zmxStsOutOfBufErr;
        }
    }
    EXPECT_GT(meaningful, rounds(5000));
    EXPECT_GT(invalid, rounds(50));
    EXPECT_GT(out62, rounds(20));
}

namespace {

// The Direct encoder on both sides; the library's buffer ends where the model's last write stands.
struct DirectOut {
    Bytes plain;
    int bitsLen[2] = {};
    Zmx16s lastDC[2] = {};
    Bytes lib;

    void encode(const Block& block, EncodeTable& dc, EncodeTable& ac) {
        const Bytes before = plain;
        model::encodeBlockDirect(block.data(), plain, bitsLen[1], lastDC[1], dc.plain, ac.plain);
        Guarded<Zmx16s> src(std::vector<Zmx16s>(block.begin(), block.end()));
        Guarded<Zmx8u> dst(plain.size());
        dst.fill(0xC3);
        std::copy(before.begin(), before.end(), dst.data());
        EXPECT_EQ(zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1(src.data(), dst.data(), &bitsLen[0], &lastDC[0], dc.lib(),
                                                            ac.lib()),
                  zmxStsNoErr);
        EXPECT_EQ(bitsLen[0], bitsLen[1]);
        EXPECT_EQ(lastDC[0], lastDC[1]);
        EXPECT_TRUE(sameBytes(plain, dst.copy()));
    }
};

} // namespace

TEST(Direct, EncodesTheSameBitsAsTheOther) {
    Luminance t;
    for (int seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        DirectOut out;
        StreamOut held(4000);
        Zmx16s lastDC[2] = {};
        for (int i = 0; i < 8; ++i) {
            Block b = randomBlock(rng, int(rng.range(1, 20)), 10);
            out.encode(b, t.encDC, t.encAC);
            ASSERT_EQ(encode(held, b, lastDC, t.encDC, t.encAC), zmxStsNoErr);
            ASSERT_EQ(out.bitsLen[0], held.pos[0] * 8 + held.state.plain.bitCount);
        }
        ASSERT_EQ(flush(held), zmxStsNoErr);
        // The caller fills the last byte.
        Bytes bytes(out.plain.begin(), out.plain.begin() + (out.bitsLen[0] + 7) / 8);
        if (out.bitsLen[0] & 7) bytes.back() |= Zmx8u(0xFF >> (out.bitsLen[0] & 7));
        if (!bytes.empty() && bytes.back() == 0xFF) bytes.push_back(0);
        ASSERT_EQ(bytes, held.written());
    }
}

TEST(Direct, BitsOfTheEncoder) {
    Luminance t;
    DirectOut out;
    out.plain = {0xFF}; // what stands behind the position goes
    out.bitsLen[0] = out.bitsLen[1] = 3;
    out.encode(Block{}, t.encDC, t.encAC); // 00 1010
    EXPECT_EQ(out.plain, (Bytes{0xE5, 0x00}));
    EXPECT_EQ(out.bitsLen[0], 9);
    out.encode(Block{}, t.encDC, t.encAC);
    EXPECT_EQ(out.plain, (Bytes{0xE5, 0x14}));
    EXPECT_EQ(out.bitsLen[0], 15);

    // A byte of 0xFF is stuffed, and the stuffing counts.
    EncodeTable ones(nibbles({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0})); // 0 is 1110
    DirectOut stuffed;
    stuffed.encode(blockOf({{0, 15}}), ones, ones); // 0011 1111, 1110
    EXPECT_EQ(stuffed.plain, (Bytes{0x3F, 0xE0}));
    stuffed.encode(blockOf({{0, 30}}), ones, ones); // 0011 1111 1110
    EXPECT_EQ(stuffed.plain, (Bytes{0x3F, 0xE3, 0xFE, 0x00})) << "the byte behind a full one is zero";
    EXPECT_EQ(stuffed.bitsLen[0], 24);
    DirectOut full;
    full.plain = {0xFE};
    full.bitsLen[0] = full.bitsLen[1] = 7;
    EncodeTable one(HuffmanList{{0, 3}, {1, 2, 0}}); // 0 is 10
    full.encode(Block{}, one, one);                  // 1'0 10
    EXPECT_EQ(full.plain, (Bytes{0xFF, 0x00, 0x40}));
    EXPECT_EQ(full.bitsLen[0], 19);
}

TEST(Direct, ASymbolWithoutACodeIsPassedOver) {
    EncodeTable none{HuffmanList{}};
    DirectOut out;
    out.encode(blockOf({{0, 5}, {1, -2}}), none, none); // 101 and 01
    EXPECT_EQ(out.plain, Bytes{0xA8});
    EXPECT_EQ(out.bitsLen[0], 5);
    out.encode(blockOf({{0, 5}}), none, none);
    EXPECT_EQ(out.bitsLen[0], 5) << "nothing at all";
    for (auto flushAt : bothEnds) {
        EncodeTable edge(annexK::acLuminance, flushAt);
        DirectOut top;
        top.encode(blockOf({{16, -32768}}), edge, edge); // the symbol 256 is behind the table
    }
}

TEST(Direct, EncoderWithRandomTables) {
    for (int seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        EncodeTable dc(randomList(rng, {2, 254}, {1, 1}, 2));
        EncodeTable ac(randomList(rng, {2, 254}, {1, 1}, 2));
        DirectOut out;
        for (int i = 0; i < 5; ++i) {
            const int oneIn = int(rng.range(1, 12));
            Block b = randomBlock(rng, oneIn, rng.oneIn(3) ? 15 : 9);
            if (rng.oneIn(8)) b[std::size_t(rng.range(0, 63))] = -32768;
            out.encode(b, dc, ac);
            if (::testing::Test::HasFailure()) return;
        }
    }
}

TEST(Direct, Digests) {
    Luminance t;
    Digest decoded, encodedBytes;
    for (int seed = 1; seed <= 60; ++seed) {
        Rng rng{std::uint64_t(seed)};
        DirectOut encoder;
        const Scan scan = makeScan(rng, 6, t, int(rng.range(1, 12)), 10);
        for (const Block& b : scan.blocks) encoder.encode(b, t.encDC, t.encAC);
        encodedBytes.add(encoder.plain).value(encoder.bitsLen[0]);
        for (const Bytes& bytes : {withMarker(scan.stream), damaged(rng, withMarker(scan.stream))}) {
            DirectIn in(bytes);
            BlockOut out;
            for (int call = 0; call < 6; ++call) {
                const Outcome o = decodeDirect(in, out, t.decDC, t.decAC);
                if (!o.value) break;
                decoded.value(o.status).add(out.dst.data(), 128).value(out.lastDC[0]);
                decoded.value(in.bitsLen[0]).value(in.marker[0]).value(in.bits[0]).value(in.count[0]);
            }
        }
    }
    EXPECT_EQ(decoded.get(), 0xF9F55771AD86D96Au);
    EXPECT_EQ(encodedBytes.get(), 0xBE2757464FEEF752u);
}
