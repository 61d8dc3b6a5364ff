// The bounds by which the JPEG coders choose between their fast and their exact halves: the blocks that take the most
// room, and the codes that take the most bits.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/support/lossless.h"
#include "tests/jpeg/support/sequential.h"

#include <gtest/gtest.h>

namespace {

// A code of each length from 1 to 14 bits, the shortest for symbol 0, and the last three of 16 bits, for these symbols:
// FFFC, FFFD, FFFE.
HuffmanList ladder(const Bytes& longest) {
    HuffmanList list;
    std::fill_n(list.bits.begin(), 14, Zmx8u(1));
    list.bits[15] = 3;
    list.vals = {0};
    for (int s = 0x21; list.vals.size() < 14; ++s) list.vals.push_back(Zmx8u(s));
    list.vals.insert(list.vals.end(), longest.begin(), longest.end());
    return list;
}

// A row of 60 differences, encoded and decoded.
void thereAndBack(const Row& row, EncodeTable& enc, DecodeTable& dec) {
    StreamOut out(800);
    ASSERT_EQ(encodeRow(out, {row}, 1, {&enc}), zmxStsNoErr);
    ASSERT_EQ(flush(out, true), zmxStsNoErr);
    StreamIn in(withMarker(out.written()));
    DecodePlanes decoded(60, {&dec});
    ASSERT_EQ(decodeRow(in, decoded, 60, 1).status, zmxStsNoErr);
    ASSERT_EQ(decoded.plain[0], row);
}

} // namespace

// All 64 coefficients with the longest code and the most bits behind it, nearly all of them ones, so that nearly every
// byte is stuffed: at every length of the destination, flush with a guard page, and for every number of pending bits.
TEST(CoderBounds, TheBlockThatTakesTheMostRoom) {
    EncodeTable wide(ladder({0x0E, 0x10, 0x0F})), widest(ladder({0x0E, 0x0F, 0x10}));
    int most = 0;
    for (int pending = 0; pending < 8; ++pending)
        for (int len = 1; len <= 540; ++len)
            for (bool category16 : {false, true}) {
                SCOPED_TRACE(::testing::Message() << len << " bytes, " << pending << " pending, " << category16);
                EncodeTable& table = category16 ? widest : wide;
                StreamOut out(len);
                out.state.plain.bitCount = pending;
                out.state.plain.bitBuffer = ((1u << pending) - 1) << (24 - pending);
                out.state.share();
                Zmx16s lastDC[2] = {};
                encode(out, everywhere(category16 ? -32768 : 32767), lastDC, table, table);
                most = std::max(most, out.pos[1]);
                if (HasFailure()) return;
            }
    EXPECT_GT(most, 400) << "bytes of the block with its stuffing";
}

// Codes of 16 bits with 13 to 15 bits behind them, one behind the other: more than a register has left behind the first.
TEST(CoderBounds, LongCodesInARow) {
    const HuffmanList list = ladder({0x0D, 0x0E, 0x0F});
    EncodeTable enc(list);
    DecodeTable dec(list);
    for (int seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        std::vector<Block> blocks(6);
        StreamOut out(4000);
        Zmx16s lastDC[2] = {};
        for (Block& b : blocks) {
            b = Block{};
            const int last = int(rng.range(1, 63));
            for (int k = 1; k <= last; ++k) {
                const int bits = int(rng.range(seed % 3 ? 13 : 15, 15)),
                          v = int(rng.range(1 << (bits - 1), (1 << bits) - 1));
                b[std::size_t(annexK::zigzag[k])] = Zmx16s(rng.oneIn(2) ? v : -v);
            }
            ASSERT_EQ(encode(out, b, lastDC, enc, enc), zmxStsNoErr);
        }
        ASSERT_EQ(flush(out), zmxStsNoErr);
        const Bytes stream = withMarker(out.written());

        StreamIn in(stream);
        BlockOut decoded;
        for (const Block& b : blocks) {
            ASSERT_EQ(decode(in, decoded, dec, dec).status, zmxStsNoErr);
            ASSERT_EQ(decoded.plain, b);
        }
        // The Direct decoder, which shares the registers.
        Guarded<Zmx8u> src(stream);
        int position = 0, marker = 0;
        Zmx32u bits = 0;
        Zmx32s count = 0;
        Zmx16s dc = 0;
        for (const Block& b : blocks) {
            Block direct;
            ASSERT_EQ(zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(src.data(), &position, direct.data(), &dc, &marker,
                                                                &bits, &count, dec.lib(), dec.lib()),
                      zmxStsNoErr);
            ASSERT_EQ(direct, b);
        }
    }
}

// A block that ends in the first bytes, with a stuffed byte among those that a register has run ahead over.
TEST(CoderBounds, StuffingBehindAShortBlock) {
    Luminance t;
    for (int at = 1; at < 9; ++at)
        for (std::size_t zero = 1; zero < 9; ++zero) {
            SCOPED_TRACE(::testing::Message() << at << ", " << zero);
            Bytes bytes(40, 0x28); // no difference, and the end of the block
            bytes[zero] = 0;       // not every zero is stuffing
            bytes.insert(bytes.begin() + at, {0xFF, 0});
            StreamIn in(withMarker(bytes));
            BlockOut out;
            for (int block = 0; block < 4; ++block) decode(in, out, t.decDC, t.decAC);
        }
}

// A code of 16 bits and one of 8 for each refill of a register, with 14 and 15 bits behind them: all of it is taken, and the
// reader stands ahead of what has been looked at.
TEST(CoderBounds, AllOfARegisterTaken) {
    HuffmanList list = ladder({0x0D, 0x0E, 0x1F});
    list.vals[7] = 0x0F;
    EncodeTable enc(list);
    DecodeTable dec(list);
    Rng rng(0x4B04);
    for (int n = 0; n < 600; ++n) {
        SCOPED_TRACE(n);
        Block b{};
        const int bits[2] = {rng.oneIn(2) ? 14 : 13, 15};
        for (int k = 1; k < 64; ++k) {
            const int v = int(rng.range(1 << (bits[k % 2] - 1), (1 << bits[k % 2]) - 1));
            b[std::size_t(annexK::zigzag[k])] = Zmx16s(rng.oneIn(2) ? v : -v);
        }
        StreamOut out(600);
        Zmx16s lastDC[2] = {};
        ASSERT_EQ(encode(out, b, lastDC, enc, enc), zmxStsNoErr);
        ASSERT_EQ(flush(out), zmxStsNoErr);
        Bytes stream = out.written();
        stream.insert(stream.end(), 20, 0x55);
        StreamIn in(withMarker(stream));
        BlockOut decoded;
        ASSERT_EQ(decode(in, decoded, dec, dec).status, zmxStsNoErr);
        ASSERT_EQ(decoded.plain, b);
    }
}

// Rows of differences with such codes.
TEST(CoderBounds, LongCodesInARowOfDifferences) {
    const HuffmanList list = ladder({13, 14, 15});
    EncodeTable enc(list);
    DecodeTable dec(list);
    Rng rng(0x4B01);
    for (int n = 0; n < 100; ++n) {
        SCOPED_TRACE(n);
        Row row;
        for (int i = 0; i < 60; ++i) {
            const int bits = int(rng.range(13, 15)), v = int(rng.range(1 << (bits - 1), (1 << bits) - 1));
            row.push_back(Zmx16s(rng.oneIn(2) ? v : -v));
        }
        ASSERT_NO_FATAL_FAILURE(thereAndBack(row, enc, dec));
    }
}

// The one difference of category 16, which has no bits of its own, and codes that no table has, amid long rows.
TEST(CoderBounds, Category16AndNoCodeInLongRows) {
    HuffmanList list; // the categories from 0 to 16, in five bits each
    list.bits[4] = 17;
    for (int i = 0; i <= 16; ++i) list.vals.push_back(Zmx8u(i));
    EncodeTable enc(list);
    DecodeTable dec(list);
    Rng rng(0x4B03);
    for (int n = 0; n < 20; ++n) {
        SCOPED_TRACE(n);
        Row row;
        for (int i = 0; i < 60; ++i) row.push_back(Zmx16s(rng.oneIn(2) ? -32768 : rng.range(-32767, 32767)));
        ASSERT_NO_FATAL_FAILURE(thereAndBack(row, enc, dec));
    }
    // Ones are no code.
    for (std::size_t ahead : {0u, 1u, 5u, 20u}) {
        Bytes bytes(ahead, 0);
        for (int i = 0; i < 6; ++i) bytes.insert(bytes.end(), {0xFF, 0});
        bytes.insert(bytes.end(), 40, 0x55);
        StreamIn in(withMarker(bytes));
        DecodePlanes decoded(300, {&dec});
        ASSERT_LT(decodeRow(in, decoded, 300, 1).status, zmxStsNoErr) << ahead;
    }
}

// A table of 256 codes of which the last one alone stands for more than category 16: it has no bits of its own, like 16.
TEST(CoderBounds, TheLastOf256CodesIsNoCategory) {
    HuffmanList list;
    list.bits[7] = 254;
    list.bits[8] = 2;
    for (int i = 0; i < 255; ++i) list.vals.push_back(Zmx8u(i % 9));
    list.vals.push_back(0x25);
    DecodeTable table(list);
    Rng rng(0x4B02);
    for (int n = 0; n < 50; ++n) {
        SCOPED_TRACE(n);
        StreamOut out(400);
        model::Writer w = out.writer();
        std::ptrdiff_t last = 0;
        for (int i = 0; i < 40; ++i) {
            if (rng.oneIn(3)) {
                ASSERT_EQ(model::writeBits(w, 0x1FD, 9), zmxStsNoErr);
                ++last;
                continue;
            }
            const int code = int(rng.range(0, 253));
            ASSERT_EQ(model::writeBits(w, Zmx32u(code), 8), zmxStsNoErr);
            const Zmx32u value = Zmx32u(rng.next());
            ASSERT_EQ(code % 9 ? model::writeBits(w, value, code % 9) : zmxStsNoErr, zmxStsNoErr);
        }
        ASSERT_EQ(model::flush(w), zmxStsNoErr);
        StreamIn in(withMarker(out.written()));
        DecodePlanes decoded(40, {&table});
        ASSERT_EQ(decodeRow(in, decoded, 40, 1).status, zmxStsNoErr);
        ASSERT_EQ(std::count(decoded.plain[0].begin(), decoded.plain[0].end(), Zmx16s(-32768)), last);
    }
}
