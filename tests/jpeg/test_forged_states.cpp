// The coders of JPEG on states and positions that no coder leaves: every field at its extremes. What they store then has
// no meaning, but it stays within the block, the stream, the counts and the state, which stand flush with guard pages.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/support/lossless.h"
#include "tests/jpeg/support/progressive.h"
#include "tests/jpeg/support/sequential.h"
#include "tests/support/extremes.h"
#include "tests/support/rounds.h"

#include <cstddef>
#include <functional>
#include <gtest/gtest.h>

namespace {

// Of most symbols, with codes of all lengths.
const HuffmanList& someList() {
    static const HuffmanList list = [] {
        Rng rng(17);
        return randomTree(rng, 250, 1, true);
    }();
    return list;
}

Block someBlock(int kind) {
    Rng rng(std::uint64_t(kind) + 5);
    return kind == 0 ? Block{} : kind == 1 ? randomBlock(rng, 3, 11) : randomBlock(rng, 1, 3);
}

// ---- encoders

constexpr std::size_t kWriterFields[] = {offsetof(model::EncodeState, bitBuffer),
                                         offsetof(model::EncodeState, bufferMark),
                                         offsetof(model::EncodeState, bitCount), offsetof(model::EncodeState, eobRun),
                                         offsetof(model::EncodeState, correctionCount)};

// What all encoders share in these tests. The memory is used again and again: mapping it costs more than a call.
struct Encoders {
    Guarded<Zmx8u> state{sizeof(model::EncodeState)}, dst;
    Bytes before;
    EncodeTable table{someList()};
    Guarded<Zmx32u> counts{257};
    Guarded<Zmx16s> src{64};
    Zmx16s lastDC = 0;
    int pos = 0;

    explicit Encoders(int len, GuardedBlock::Flush flush)
        : state(sizeof(model::EncodeState), flush), dst(std::size_t(len), flush), before(std::size_t(len)) {}

    ZmxiEncodeHuffmanState* st() { return reinterpret_cast<ZmxiEncodeHuffmanState*>(state.data()); }
    int len() const { return int(dst.size()); }

    static constexpr int kCalls = 16;
    ZmxStatus call(int which, const Zmx16s* p) {
        Zmx8u* const d = dst.data();
        const auto* const t = table.lib();
        const Zmx16s* const rows[2] = {p, p};
        const ZmxiEncodeHuffmanSpec* const tables[2] = {t, t};
        switch (which) {
        case 0:
            return zmxiEncodeHuffman8x8_JPEG_16s1u_C1(p, d, len(), &pos, &lastDC, t, t, st(), 0);
        case 1:
            return zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(p, d, len(), &pos, &lastDC, 1, t, st(), 0);
        case 2:
            return zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(p, d, len(), &pos, 1, st(), 0);
        case 3:
            return zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(p, d, len(), &pos, 1, 63, 0, t, st(), 0);
        case 4:
            return zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(p, d, len(), &pos, 1, 63, 0, t, st(), 0);
        case 5:
            return zmxiEncodeHuffmanOne_JPEG_16s1u_C1(p, d, len(), &pos, t, st(), 0);
        case 6:
            return zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(rows, 64, 2, d, len(), &pos, tables, st(), 0);
        case 7:
            return zmxiEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, d, len(), &pos, nullptr, nullptr, nullptr, st(), 1);
        case 8:
            return zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(nullptr, d, len(), &pos, nullptr, 0, nullptr, st(), 1);
        case 9:
            return zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(nullptr, d, len(), &pos, 0, st(), 1);
        case 10:
            return zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(nullptr, d, len(), &pos, 1, 63, 0, t, st(), 1);
        case 11:
            return zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(nullptr, d, len(), &pos, 1, 63, 0, t, st(), 1);
        case 12:
            return zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(p, counts.data(), 1, 63, 0, st(), 0);
        case 13:
            return zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(p, counts.data(), 1, 63, 0, st(), 0);
        case 14:
            return zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(nullptr, counts.data(), 1, 63, 0, st(), 1);
        default:
            return zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(nullptr, counts.data(), 1, 63, 0, st(), 1);
        }
    }

    // One call: bytes change between the position before and the one behind alone, and there in order.
    ::testing::AssertionResult keepsToItsRoom(int which, const Zmx16s* p) {
        const int start = pos;
        std::copy(dst.data(), dst.data() + len(), before.begin());
        const ZmxStatus s = call(which, p);
        if (s > 0) return ::testing::AssertionFailure() << "status " << s;
        if (pos < start) return ::testing::AssertionFailure() << "position " << start << " became " << pos;
        if (pos > start && (start < 0 || pos > len()))
            return ::testing::AssertionFailure() << "position " << start << " became " << pos << " of " << len();
        for (int i = 0; i < len(); ++i)
            if ((i < start || i >= pos) && dst[std::size_t(i)] != before[std::size_t(i)])
                return ::testing::AssertionFailure()
                       << "byte " << i << " changed, outside of " << start << " to " << pos;
        return ::testing::AssertionSuccess();
    }
};

} // namespace

TEST(ForgedStates, Encoders) {
    const int longest = shortened() ? 40 : 700, kinds = shortened() ? 1 : 3;
    for (auto flushAt : bothEnds)
        for (int len : {1, 40, 700}) {
            if (len > longest) continue;
            Encoders e(len, flushAt);
            Rng rng(0x4F01);
            e.dst.fill(0x3C);
            e.counts.fill(0);
            for (int kind = 0; kind < kinds; ++kind) {
                const Block block = someBlock(kind);
                std::copy(block.begin(), block.end(), e.src.data());
                for (std::size_t field : kWriterFields)
                    for (int value : kExtremes)
                        for (int which = 0; which < Encoders::kCalls; ++which)
                            for (int pos : {0, len, INT_MIN, -1, len + 1, INT_MAX}) {
                                rng.bytes(e.state.data(), 24);
                                if (rng.oneIn(2)) std::memset(e.state.data(), 0, 20);
                                setField(e.state.data(), field, value);
                                e.pos = pos;
                                // Once, and on with any other.
                                ASSERT_TRUE(e.keepsToItsRoom(which, e.src.data()))
                                    << "call " << which << ", field at " << field << " is " << value;
                                const int next = int(rng.range(0, Encoders::kCalls - 1));
                                ASSERT_TRUE(e.keepsToItsRoom(next, e.src.data()))
                                    << "call " << next << " behind " << which << ", field at " << field << " was "
                                    << value;
                            }
            }
        }
}

// Numbers of held bits that there cannot be count as the nearest that there can.
TEST(ForgedStates, NumbersOfHeldBits) {
    EncodeTable table(someList());
    const Block three = blockOf({{1, 4}, {2, -7}, {63, 2}});
    for (int held : kExtremes) {
        SCOPED_TRACE(held);
        const bool full = held > 1024 - 3;
        StreamOut out(700);
        out.state.plain.eobRun = 1;
        out.state.plain.correctionCount = held;
        out.state.share();
        BlockIn src(three);
        EXPECT_EQ(zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(src.data(), out.dst.data(), out.len(), &out.pos[0], 1, 63,
                                                              0, table.lib(), out.state.lib(), 0),
                  zmxStsNoErr);
        std::memcpy(&out.state.plain, out.state.bytes(), sizeof out.state.plain);
        const int kept = full ? 3 : std::max(held, 0) + 3;
        EXPECT_EQ(out.state.plain.correctionCount, full ? 3 : kept > 937 ? 0 : kept);
        EXPECT_EQ(out.state.plain.eobRun, full ? 1 : kept > 937 ? 0 : 2);
        EXPECT_GE(out.pos[0] * 8, held > 934 ? std::min(held, 1024) : 0) << "all of them have gone out";
    }
}

// Counts of pending bits for which the plain writer has a meaning, on any register, with room for the fast one: the exact
// writer's result all the same.
TEST(ForgedStates, PendingBitsOfAnyKindWithRoomLeft) {
    EncodeTable table(someList());
    Rng rng(0x4F02);
    StreamOut out(700);
    for (int n = 0; n < 4000; ++n) {
        SCOPED_TRACE(n);
        out.pos[0] = out.pos[1] = 0;
        out.state.plain = {};
        const int clean = int(rng.range(0, 32)); // low bits that are zero, as behind pending ones
        out.state.plain.bitBuffer = clean < 32 ? Zmx32u(rng.next()) >> clean << clean : 0;
        out.state.plain.bitCount = int(rng.range(-7, 8));
        out.state.share();
        Zmx16s lastDC[2] = {};
        const Block b = someBlock(1);
        switch (n % 3) {
        case 0:
            encode(out, b, lastDC, table, table);
            break;
        case 1:
            encodeRow(out, {Row(b.begin(), b.begin() + 20)}, 1, {&table});
            break;
        default:
            encodeACFirst(out, b, kAll, table);
        }
        if (HasFailure()) return;
    }
}

TEST(ForgedStates, NegativePositionsOfTheDirectEncoder) {
    EncodeTable table(someList());
    for (auto flushAt : bothEnds)
        for (int position : {INT_MIN, INT_MIN + 1, -65536, -9, -8, -7, -1}) {
            Guarded<Zmx8u> dst(600, flushAt);
            dst.fill(0x3C);
            const Block block = someBlock(1);
            BlockIn src(block);
            int at = position;
            Zmx16s lastDC = 77;
            EXPECT_EQ(zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1(src.data(), dst.data(), &at, &lastDC, table.lib(),
                                                                table.lib()),
                      zmxStsBadArgErr);
            EXPECT_EQ(at, position);
            EXPECT_EQ(lastDC, 77);
            EXPECT_EQ(dst.copy(), Bytes(600, 0x3C));
        }
}

// ---- decoders

namespace {

constexpr std::size_t kReaderFields[] = {offsetof(model::DecodeState, bitBuffer),
                                         offsetof(model::DecodeState, bufferMark),
                                         offsetof(model::DecodeState, bitCount), offsetof(model::DecodeState, eobRun),
                                         offsetof(model::DecodeState, blockPositions)};

struct Decoders {
    Guarded<Zmx8u> state, src;
    Guarded<Zmx16s> dst;
    DecodeTable table{someList()};
    Zmx16s lastDC = 0;
    int pos = 0, marker = 0;

    Decoders(const Bytes& bytes, GuardedBlock::Flush flush)
        : state(sizeof(model::DecodeState), flush), src(bytes, flush), dst(64, flush) {}

    int len() const { return int(src.size()); }

    static constexpr int kCalls = 7;
    ZmxStatus call(int which) {
        auto* const st = reinterpret_cast<ZmxiDecodeHuffmanState*>(state.data());
        const Zmx8u* const s = src.data();
        Zmx16s* const d = dst.data();
        const auto* const t = table.lib();
        Zmx16s* const rows[2] = {d, d + 32};
        const ZmxiDecodeHuffmanSpec* const tables[2] = {t, t};
        switch (which) {
        case 0:
            return zmxiDecodeHuffman8x8_JPEG_1u16s_C1(s, len(), &pos, d, &lastDC, &marker, t, t, st);
        case 1:
            return zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(s, len(), &pos, d, &lastDC, &marker, 1, t, st);
        case 2:
            return zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(s, len(), &pos, d, &marker, 1, st);
        case 3:
            return zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(s, len(), &pos, d, &marker, 1, 63, 0, t, st);
        case 4:
            return zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(s, len(), &pos, d, &marker, 1, 63, 0, t, st);
        case 5:
            return zmxiDecodeHuffmanOne_JPEG_1u16s_C1(s, len(), &pos, d, &marker, t, st);
        default:
            return zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4(s, len(), &pos, rows, 32, 2, &marker, tables, st);
        }
    }
    ::testing::AssertionResult keepsToItsSource(int which) {
        const int start = pos;
        const ZmxStatus s = call(which);
        if (s > 0) return ::testing::AssertionFailure() << "status " << s;
        if (pos != start && (start < 0 || pos < start || pos > len()))
            return ::testing::AssertionFailure() << "position " << start << " became " << pos << " of " << len();
        return ::testing::AssertionSuccess();
    }
};

} // namespace

TEST(ForgedStates, Decoders) {
    for (auto flushAt : bothEnds)
        for (int len : {1, 3, 60}) {
            Rng rng(0x4F03);
            Decoders d(randomStream(rng, len, 30, 3), flushAt);
            for (std::size_t field : kReaderFields)
                for (int value : kExtremes)
                    for (int which = 0; which < Decoders::kCalls; ++which)
                        for (int pos : {0, len, INT_MIN, INT_MIN + 1, -1, -2, len + 1, INT_MAX})
                            for (int marker : {0, 0xD9, -1}) {
                                rng.bytes(d.state.data(), 8);
                                setField(d.state.data(), 8, int(rng.range(-9, 32)));
                                setField(d.state.data(), 12, int(rng.range(-2, 2)));
                                setField(d.state.data(), field, value);
                                d.pos = pos;
                                d.marker = marker;
                                ASSERT_TRUE(d.keepsToItsSource(which))
                                    << "call " << which << ", field at " << field << " is " << value;
                                const int next = int(rng.range(0, Decoders::kCalls - 1));
                                ASSERT_TRUE(d.keepsToItsSource(next)) << "call " << next << " behind " << which
                                                                      << ", field at " << field << " was " << value;
                            }
        }
}

// The words of the Direct decoder, which stand for a state.
TEST(ForgedStates, DirectDecoder) {
    for (auto flushAt : bothEnds) {
        Rng rng(0x4F04);
        Decoders d(withMarker(randomStream(rng, 40, 20, 1000)), flushAt);
        for (int count : kExtremes)
            for (int marker : kExtremes)
                for (int start : {0, 1, 39}) {
                    int position = start * 8;
                    Zmx32u bits = Zmx32u(rng.next());
                    Zmx32s held = count;
                    d.marker = marker;
                    for (int call = 0; call < 3; ++call) {
                        const ZmxStatus s = zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(
                            d.src.data(), &position, d.dst.data(), &d.lastDC, &d.marker, &bits, &held, d.table.lib(),
                            d.table.lib());
                        ASSERT_LE(s, 0);
                        ASSERT_TRUE(position >= start * 8 && position <= d.len() * 8) << position;
                    }
                }
    }
}

// Fewer bits held than none, as a marker leaves them, with much of the source left behind it: the exact reader's result.
TEST(ForgedStates, FewerBitsThanNoneWithSourceLeft) {
    DecodeTable table(someList());
    int good = 0;
    for (int seed = 1; seed <= 1500; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        StreamIn in(randomStream(rng, 300, 60, 40));
        in.state.plain.bitBuffer = Zmx32u(rng.next());
        in.state.plain.bitCount = int(rng.range(-31, -1));
        in.state.share();
        BlockOut out;
        const Outcome o = seed % 2 ? decode(in, out, table, table) : [&] {
            DecodePlanes rows(20, {&table});
            return decodeRow(in, rows, 20, 1);
        }();
        good += o.path && o.status == zmxStsNoErr;
        if (HasFailure()) return;
    }
    EXPECT_GT(good, 300);
}
