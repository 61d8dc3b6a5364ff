// PackBits rows: known streams, every short row at every capacity, damaged streams, and rows at the limits of a packet.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"
#include "tests/support/rounds.h"
#include "tests/tiff/model/packbits.h"
#include "zmxj.h"

#include <algorithm>
#include <climits>
#include <string>

namespace {

using Bytes = std::vector<Zmx8u>;

Bytes text(const std::string& s) { return Bytes(s.begin(), s.end()); }
Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}
Bytes times(std::size_t n, Zmx8u v) { return Bytes(n, v); }

// n bytes of which no two neighbours are equal, and none is `except`.
Bytes mixed(std::size_t n, Zmx8u except = 0) {
    Bytes out(n);
    for (std::size_t i = 0; i < n; ++i) out[i] = Zmx8u(i % 7 + 1 + (except > 0 && except < 8 ? 7 : 0));
    return out;
}

// A stretch of memory that ends at a guard page, out of which buffers of any size are cut without a new mapping: each
// stands flush at the end. What lies ahead of it within the stretch is watched.
class Room {
    static constexpr std::size_t kBytes = 4096;
    static constexpr Zmx8u kAhead = 0x5C;
    Guarded<Zmx8u> bytes{kBytes};

public:
    static constexpr Zmx8u kFresh = 0x9E;
    Zmx8u* last(std::size_t n) {
        std::fill(bytes.data() + kBytes - std::min(kBytes, n + 16), bytes.data() + kBytes - n, kAhead);
        std::fill(bytes.data() + kBytes - n, bytes.data() + kBytes, kFresh);
        return bytes.data() + kBytes - n;
    }
    Zmx8u* last(const Bytes& v) {
        Zmx8u* p = last(v.size());
        std::copy(v.begin(), v.end(), p);
        return p;
    }
    bool aheadUntouched(const Zmx8u* p) {
        return std::all_of(std::max<const Zmx8u*>(bytes.data(), p - 16), p, [](Zmx8u v) { return v == kAhead; });
    }
};

// Calls the library and the model with a row, a start and a capacity; a difference in anything fails the test.
struct Packer {
    Room source, stream;

    model::PackBitsResult check(const Bytes& row, int pos, int dstLen) {
        const model::PackBitsResult e =
            model::packBits(row.data(), int(row.size()), Bytes(std::size_t(dstLen), Room::kFresh), pos);
        const Zmx8u* src = source.last(row);
        Zmx8u* dst = stream.last(std::size_t(dstLen));
        int at = pos;
        const ZmxStatus st = zmxiPackBitsRow_TIFF_8u_C1(src, int(row.size()), dst, &at, dstLen);
        if (st != e.status || at != e.pos || !std::equal(e.dst.begin(), e.dst.end(), dst) ||
            !stream.aheadUntouched(dst))
            ADD_FAILURE() << "row " << ::testing::PrintToString(row) << "\nstart " << pos << ", room " << dstLen
                          << ": status " << st << ", not " << e.status << "; position " << at << ", not " << e.pos
                          << "; " << sameBytes(e.dst.data(), dst, e.dst.size()).message();
        return e;
    }
};
struct Unpacker {
    Room source, row;

    // `stream` holds srcLen bytes, or one more, which stands behind the end that the call is told.
    model::PackBitsResult check(const Bytes& stream, int pos, int srcLen, int dstLen) {
        Bytes padded = stream;
        padded.resize(std::max(padded.size(), std::size_t(srcLen) + 1));
        const model::PackBitsResult e =
            model::unpackBits(padded.data(), pos, srcLen, Bytes(std::size_t(dstLen), Room::kFresh));
        const Zmx8u* src = source.last(stream);
        Zmx8u* dst = row.last(std::size_t(dstLen));
        int at = pos;
        const ZmxStatus st = zmxiUnpackBitsRow_TIFF_8u_C1(src, &at, srcLen, dst, dstLen);
        if (st != e.status || at != e.pos || !std::equal(e.dst.begin(), e.dst.end(), dst) || !row.aheadUntouched(dst))
            ADD_FAILURE() << "stream " << ::testing::PrintToString(stream) << "\nstart " << pos << ", length " << srcLen
                          << ", row of " << dstLen << ": status " << st << ", not " << e.status << "; position " << at
                          << ", not " << e.pos << "; " << sameBytes(e.dst.data(), dst, e.dst.size()).message();
        return e;
    }
};

Bytes packed(const Bytes& row) {
    Guarded<Zmx8u> src(row), dst(row.size() + row.size() / 64 + 2);
    int pos = 0;
    EXPECT_EQ(zmxiPackBitsRow_TIFF_8u_C1(src.data(), int(row.size()), dst.data(), &pos, int(dst.size())), zmxStsNoErr);
    return Bytes(dst.data(), dst.data() + pos);
}
Bytes unpacked(const Bytes& stream, std::size_t rowBytes) {
    Guarded<Zmx8u> src(stream), dst(rowBytes);
    int pos = 0;
    EXPECT_EQ(zmxiUnpackBitsRow_TIFF_8u_C1(src.data(), &pos, int(stream.size()), dst.data(), int(rowBytes)),
              zmxStsNoErr);
    EXPECT_EQ(pos, int(stream.size()));
    return dst.copy();
}

// Runs and literals of lengths that matter, over few values, so that pairs, merges and full packets are common.
Bytes randomRow(Rng& rng, std::size_t most) {
    const std::size_t n = std::size_t(rng.range(1, std::int64_t(most)));
    const int values = rng.oneIn(2) ? 2 : rng.oneIn(2) ? 4 : 256;
    Bytes row;
    while (row.size() < n) {
        const auto v = Zmx8u(rng.range(0, values - 1));
        switch (rng.range(0, 4)) {
        case 0:
            row.push_back(v);
            break;
        case 1:
            row = row + times(2, v);
            break;
        case 2:
            row = row + times(std::size_t(rng.range(1, 300)), v);
            break;
        case 3:
            row = row + mixed(std::size_t(rng.range(120, 130)), v);
            break;
        default:
            row = row + mixed(std::size_t(rng.range(1, 20)), v);
        }
    }
    row.resize(n);
    return row;
}

} // namespace

TEST(PackBits, KnownStreams) {
    const struct {
        Bytes row, stream;
    } known[] = {
        {text("a"), {0x00, 0x61}},
        {text("aa"), {0xFF, 0x61}},
        {text("ab"), {0x01, 0x61, 0x62}},
        {text("aab"), {0xFF, 0x61, 0x00, 0x62}},
        {text("abb"), {0x00, 0x61, 0xFF, 0x62}},
        {text("abbc"), {0x03, 0x61, 0x62, 0x62, 0x63}},
        {text("abbcdd"), {0x03, 0x61, 0x62, 0x62, 0x63, 0xFF, 0x64}},
        {text("abbcdde"), {0x06, 0x61, 0x62, 0x62, 0x63, 0x64, 0x64, 0x65}},
        {times(129, 'a'), {0x81, 0x61, 0x00, 0x61}},
        {times(130, 'a'), {0x81, 0x61, 0xFF, 0x61}},
        // A run of three between literals, and a pair behind another run, stay what they are.
        {text("abbbc"), {0x00, 0x61, 0xFE, 0x62, 0x00, 0x63}},
        {text("aabbc"), {0xFF, 0x61, 0xFF, 0x62, 0x00, 0x63}},
        {text("abbccd"), {0x00, 0x61, 0xFF, 0x62, 0xFF, 0x63, 0x00, 0x64}},
        {text("abccddef"), {0x01, 0x61, 0x62, 0xFF, 0x63, 0xFF, 0x64, 0x01, 0x65, 0x66}},
        {times(128, 'a'), {0x81, 0x61}},
        {times(127, 'a'), {0x82, 0x61}},
        {Bytes{0xFF, 0xFF}, {0xFF, 0xFF}},
        {Bytes{0x80, 0xFF, 0xFF, 0x80}, {0x03, 0x80, 0xFF, 0xFF, 0x80}},
    };
    for (const auto& k : known) {
        EXPECT_EQ(packed(k.row), k.stream) << ::testing::PrintToString(k.row);
        EXPECT_EQ(unpacked(k.stream, k.row.size()), k.row) << ::testing::PrintToString(k.stream);
        const auto m = model::packBits(k.row.data(), int(k.row.size()), Bytes(k.stream.size()), 0);
        EXPECT_EQ(m.dst, k.stream) << "the model";
        EXPECT_EQ(m.status, zmxStsNoErr);
    }
}

TEST(PackBits, LiteralsOf128AtTheMost) {
    for (std::size_t n : {1u, 2u, 126u, 127u, 128u}) EXPECT_EQ(packed(mixed(n)), Bytes{Zmx8u(n - 1)} + mixed(n)) << n;
    const Bytes row = mixed(129);
    EXPECT_EQ(packed(row), (Bytes{127} + mixed(128) + Bytes{0, row[128]}));
    // A pair right behind 127 bytes is a run of its own; one byte later it is cut off by the full packet.
    EXPECT_EQ(packed(mixed(127) + times(2, 'z')), (Bytes{126} + mixed(127) + Bytes{0xFF, 'z'}));
    EXPECT_EQ(packed(mixed(128) + times(2, 'z')), (Bytes{127} + mixed(128) + Bytes{0xFF, 'z'}));
}

TEST(PackBits, APairIsAbsorbedWhereTheLiteralHasRoom) {
    const Bytes pair = times(2, 'z');
    for (std::size_t before = 1; before <= 128; ++before)
        for (std::size_t after : {1u, 2u, 3u, 5u, 100u, 127u, 128u, 129u}) {
            const Bytes row = mixed(before) + pair + mixed(after);
            Bytes expected;
            if (before <= 125) { // a header below 125
                const std::size_t joined = std::min(after, 126 - before);
                const Bytes tail = mixed(after);
                const Bytes rest(tail.begin() + std::ptrdiff_t(joined), tail.end());
                expected = Bytes{Zmx8u(before + 2 + joined - 1)} + mixed(before) + pair +
                           Bytes(tail.begin(), tail.begin() + std::ptrdiff_t(joined));
                for (std::size_t at = 0; at < rest.size(); at += 128) {
                    const std::size_t n = std::min<std::size_t>(128, rest.size() - at);
                    expected = expected + Bytes{Zmx8u(n - 1)} +
                               Bytes(rest.begin() + std::ptrdiff_t(at), rest.begin() + std::ptrdiff_t(at + n));
                }
            } else {
                const std::size_t first = std::min<std::size_t>(after, 128);
                const Bytes tail = mixed(after);
                expected = Bytes{Zmx8u(before - 1)} + mixed(before) + Bytes{0xFF, 'z', Zmx8u(first - 1)} +
                           Bytes(tail.begin(), tail.begin() + std::ptrdiff_t(first));
                if (after > 128) expected = expected + Bytes{0, tail[128]};
            }
            ASSERT_EQ(packed(row), expected) << before << " bytes, a pair, " << after << " bytes";
            ASSERT_EQ(unpacked(expected, row.size()), row);
        }
}

// Two pairs in a row are not absorbed, so that each single byte behind them costs a header: the longest streams there are.
TEST(PackBits, TheLongestStreams) {
    Bytes row, stream;
    for (Zmx8u v = 0; v < 240; v = Zmx8u(v + 3)) {
        row = row + Bytes{v, v, Zmx8u(v + 1), Zmx8u(v + 1), Zmx8u(v + 2)};
        stream = stream + Bytes{0xFF, v, 0xFF, Zmx8u(v + 1), 0, Zmx8u(v + 2)};
    }
    Bytes out(stream.size());
    int pos = 0;
    EXPECT_EQ(zmxiPackBitsRow_TIFF_8u_C1(row.data(), int(row.size()), out.data(), &pos, int(out.size())), zmxStsNoErr);
    EXPECT_EQ(out, stream);
    EXPECT_EQ(unpacked(stream, row.size()), row);
}

TEST(PackBits, NothingBehindTheRowIsLookedAt) {
    // The byte behind the last one is no part of the row, whatever it is.
    Bytes stream(8);
    for (int behind = 0; behind < 256; ++behind) {
        const Zmx8u src[] = {'a', 'b', Zmx8u(behind)};
        int pos = 0;
        ASSERT_EQ(zmxiPackBitsRow_TIFF_8u_C1(src, 2, stream.data(), &pos, 8), zmxStsNoErr);
        ASSERT_EQ(Bytes(stream.data(), stream.data() + pos), (Bytes{0x01, 'a', 'b'})) << behind;
    }
}

// Every row of up to 10 bytes over three letters: all pairs, merges and ends of row, at every capacity.
TEST(PackBits, EveryShortRowAtEveryCapacity) {
    Packer pack;
    Unpacker unpack;
    long rows = 0, calls = 0;
    const std::size_t longest = shortened() ? 7 : 10;
    for (std::size_t n = 1; n <= longest; ++n) {
        Bytes row(n, 0);
        for (bool more = true; more;) {
            const model::PackBitsResult whole = pack.check(row, 0, 16);
            if (whole.status != zmxStsNoErr || HasFailure()) FAIL();
            for (int room = 1; room <= whole.pos + 1; ++room, ++calls) pack.check(row, 0, room);
            if (n <= 6)
                for (int start = 1; start <= 3; ++start)
                    for (int room = 1; room <= whole.pos + start + 1; ++room, ++calls) pack.check(row, start, room);
            const Bytes stream(whole.dst.begin(), whole.dst.begin() + whole.pos);
            const model::PackBitsResult back = unpack.check(stream, 0, whole.pos, int(n));
            if (HasFailure()) FAIL();
            ASSERT_EQ(back.dst, row);
            ASSERT_EQ(back.pos, whole.pos);
            ++rows;
            more = false;
            for (std::size_t i = 0; i < n && !more; ++i) {
                more = row[i] < 2;
                row[i] = more ? Zmx8u(row[i] + 1) : Zmx8u(0);
            }
        }
    }
    EXPECT_EQ(rows, shortened() ? 3279 : 88572);
    EXPECT_GT(calls, rounds(800000));
}

TEST(PackBits, RandomRowsAtRandomCapacities) {
    constexpr std::uint64_t seed = 821;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    Packer pack;
    Unpacker unpack;
    for (int round = 0; round < 3000; ++round) {
        const Bytes row = randomRow(rng, 1500);
        const int start = rng.oneIn(3) ? int(rng.range(1, 200)) : 0;
        const auto whole = pack.check(row, start, 2000);
        ASSERT_EQ(whole.status, zmxStsNoErr);
        pack.check(row, start, whole.pos);
        for (int k = 0; k < 6; ++k) pack.check(row, start, int(rng.range(1, whole.pos)));
        pack.check(row, start, std::max(1, whole.pos - int(rng.range(1, 6))));
        ASSERT_FALSE(HasFailure()) << "round " << round;
        // The same start on the way back, with bytes ahead of it that are no part of the row.
        const Bytes stream(whole.dst.begin(), whole.dst.begin() + whole.pos);
        const auto back = unpack.check(stream, start, whole.pos, int(row.size()));
        ASSERT_EQ(back.dst, row);
        ASSERT_EQ(back.pos, whole.pos);
        ASSERT_LE(whole.pos - start, int(row.size() + row.size() / 5 + 2)) << "a byte in five more at the most";
    }
}

TEST(PackBits, RoomForAPacketIsTestedAheadOfIt) {
    // Three packets, 2 bytes and 3 and 2: aaa, bc, dd.
    const Bytes row = text("aaabcdd");
    const struct {
        int room;
        ZmxStatus status;
        int pos;
        Bytes written;
    } known[] = {
        {1, zmxStsUnderRunErr, 0, {}},
        {2, zmxStsUnderRunErr, 2, {0xFE, 'a'}},
        {4, zmxStsUnderRunErr, 2, {0xFE, 'a'}},
        {5, zmxStsUnderRunErr, 5, {0xFE, 'a', 0x01, 'b', 'c'}},
        {6, zmxStsUnderRunErr, 5, {0xFE, 'a', 0x01, 'b', 'c'}},
        {7, zmxStsNoErr, 7, {0xFE, 'a', 0x01, 'b', 'c', 0xFF, 'd'}},
    };
    for (const auto& k : known) {
        Guarded<Zmx8u> dst(std::size_t(k.room));
        dst.fill(0x9E);
        int pos = 0;
        EXPECT_EQ(zmxiPackBitsRow_TIFF_8u_C1(row.data(), int(row.size()), dst.data(), &pos, k.room), k.status)
            << k.room;
        EXPECT_EQ(pos, k.pos) << k.room;
        EXPECT_EQ(dst.copy(), k.written + times(std::size_t(k.room) - k.written.size(), 0x9E)) << k.room;
    }
    // A pair that would be absorbed stands as a run when what follows does not fit.
    Guarded<Zmx8u> dst(4);
    int pos = 0;
    EXPECT_EQ(zmxiPackBitsRow_TIFF_8u_C1(text("abbc").data(), 4, dst.data(), &pos, 4), zmxStsUnderRunErr);
    EXPECT_EQ(pos, 4);
    EXPECT_EQ(dst.copy(), (Bytes{0x00, 'a', 0xFF, 'b'}));
    // A literal at the end of the row needs its bytes and the header.
    Guarded<Zmx8u> three(3);
    pos = 0;
    EXPECT_EQ(zmxiPackBitsRow_TIFF_8u_C1(text("abc").data(), 3, three.data(), &pos, 3), zmxStsUnderRunErr);
    EXPECT_EQ(pos, 0);
}

TEST(PackBits, AStartOutsideOfTheRoomIsLeftAlone) {
    Bytes dst(4, 0x9E);
    for (int start : {5, 6, 1000, INT_MAX - 1, INT_MAX, -1, -2, -4096, INT_MIN}) {
        int pos = start;
        EXPECT_EQ(zmxiPackBitsRow_TIFF_8u_C1(text("aab").data(), 3, dst.data(), &pos, 4), zmxStsUnderRunErr);
        EXPECT_EQ(pos, start);
    }
    // At the very end there is room for nothing; sums near the largest position do not wrap.
    for (const auto& [row, dstLen] :
         {std::pair{text("aa"), 4}, {text("ab"), 4}, {text("aa"), INT_MAX}, {text("ab"), INT_MAX}}) {
        int pos = dstLen;
        EXPECT_EQ(zmxiPackBitsRow_TIFF_8u_C1(row.data(), 2, dst.data(), &pos, dstLen), zmxStsUnderRunErr);
        EXPECT_EQ(pos, dstLen);
    }
    int pos = INT_MAX - 1;
    EXPECT_EQ(zmxiPackBitsRow_TIFF_8u_C1(text("a").data(), 1, dst.data(), &pos, INT_MAX), zmxStsUnderRunErr);
    EXPECT_EQ(pos, INT_MAX - 1);
    EXPECT_EQ(dst, Bytes(4, 0x9E));
}

TEST(PackBits, ArgumentsOfPacking) {
    Bytes src(4, 1), dst(8, 0x9E);
    int pos = 0;
    checkOrder({kNull, kNull, kNull, kSize, kSize}, [&](const Bad& bad) {
        return zmxiPackBitsRow_TIFF_8u_C1(bad.null(0, src.data()), bad.below1(3, 4), bad.null(2, dst.data()),
                                          bad.null(1, &pos), bad.below1(4, 8));
    });
    EXPECT_EQ(pos, 0);
    EXPECT_EQ(dst, Bytes(8, 0x9E)) << "nothing is written";
    EXPECT_EQ(zmxiPackBitsRow_TIFF_8u_C1(src.data(), 4, dst.data(), &pos, 8), zmxStsNoErr);
    EXPECT_EQ(pos, 2);
}

TEST(UnpackBits, ArgumentsOfUnpacking) {
    Bytes src{0x00, 0x61, 0}, dst(8, 0x9E);
    int pos = 0;
    checkOrder({kNull, kNull, kNull, kSize, kSize}, [&](const Bad& bad) {
        return zmxiUnpackBitsRow_TIFF_8u_C1(bad.null(0, src.data()), bad.null(1, &pos), bad.below1(3, 2),
                                            bad.null(2, dst.data()), bad.below1(4, 1));
    });
    EXPECT_EQ(pos, 0);
    EXPECT_EQ(dst, Bytes(8, 0x9E)) << "nothing is written";
    EXPECT_EQ(zmxiUnpackBitsRow_TIFF_8u_C1(src.data(), &pos, 2, dst.data(), 1), zmxStsNoErr);
    EXPECT_EQ(pos, 2);
}

TEST(UnpackBits, KnownStreams) {
    const struct {
        const char* what;
        Bytes stream;
        int start, srcLen, dstLen;
        ZmxStatus status;
        int pos;
        Bytes row; // what has been written
    } known[] = {
        {"one packet is the row", {0x00, 0x61}, 0, 2, 1, zmxStsNoErr, 2, {0x61}},
        {"the stream ends ahead of the row", {0x00, 0x61}, 0, 2, 2, zmxStsUnderRunErr, 2, {0x61}},
        {"the value lies at the end of the stream", {0xFF, 0x77}, 0, 1, 2, zmxStsNoErr, 2, {0x77, 0x77}},
        {"the header is passed over, and the next packet does not fit",
         {0x80, 0x61, 0xFF},
         0,
         3,
         200,
         zmxStsUnderRunErr,
         2,
         {}},
        {"a literal does not reach behind the stream", {0x00, 0x61}, 0, 1, 1, zmxStsUnderRunErr, 1, {}},
        {"a literal of the whole stream", {0x02, 1, 2, 3}, 0, 4, 3, zmxStsNoErr, 4, {1, 2, 3}},
        {"a literal of one byte too many", {0x02, 1, 2, 3}, 0, 3, 3, zmxStsUnderRunErr, 1, {}},
        {"a run is not cut short", {0xFE, 5}, 0, 2, 2, zmxStsUnderRunErr, 1, {}},
        {"a literal is not cut short", {0x02, 1, 2, 3}, 0, 4, 2, zmxStsUnderRunErr, 1, {}},
        {"earlier packets stay", {0x00, 7, 0xFE, 5}, 0, 4, 3, zmxStsUnderRunErr, 3, {7}},
        {"nothing to do at the end of the stream", {0x80}, 0, 1, 1, zmxStsUnderRunErr, 1, {}},
        {"nothing to do twice, then a run", {0x80, 0x80, 0xFF, 9}, 0, 4, 2, zmxStsNoErr, 4, {9, 9}},
        {"what follows the row is not read", {0x00, 7, 0x80, 0x80}, 0, 4, 1, zmxStsNoErr, 2, {7}},
        {"a run of 128", {0x81, 4}, 0, 2, 128, zmxStsNoErr, 2, times(128, 4)},
        {"a run of 2", {0xFF, 4}, 0, 2, 2, zmxStsNoErr, 2, times(2, 4)},
        {"a later start", {0x55, 0x55, 0x00, 7}, 2, 4, 1, zmxStsNoErr, 4, {7}},
        {"a start at the end", {0x00, 7}, 2, 2, 1, zmxStsUnderRunErr, 2, {}},
        {"a start behind the end", {0x00, 7}, 1000, 2, 1, zmxStsUnderRunErr, 1000, {}},
        {"the largest start", {0x00, 7}, INT_MAX, 2, 1, zmxStsUnderRunErr, INT_MAX, {}},
    };
    for (const auto& k : known) {
        Guarded<Zmx8u> src(k.stream), dst(std::size_t(k.dstLen));
        dst.fill(0x9E);
        int pos = k.start;
        EXPECT_EQ(zmxiUnpackBitsRow_TIFF_8u_C1(src.data(), &pos, k.srcLen, dst.data(), k.dstLen), k.status) << k.what;
        EXPECT_EQ(pos, k.pos) << k.what;
        EXPECT_EQ(dst.copy(), k.row + times(std::size_t(k.dstLen) - k.row.size(), 0x9E)) << k.what;
    }
}

TEST(UnpackBits, NothingStandsAheadOfTheStream) {
    Guarded<Zmx8u> src(Bytes{0x00, 0x61, 0x00}, GuardedBlock::AtStart), row(4, GuardedBlock::AtStart);
    row.fill(0x9E);
    for (int start : {-1, -2, -4096, INT_MIN, 2, 3, INT_MAX}) {
        int pos = start;
        EXPECT_EQ(zmxiUnpackBitsRow_TIFF_8u_C1(src.data(), &pos, 2, row.data(), 4), zmxStsUnderRunErr) << start;
        EXPECT_EQ(pos, start);
    }
    EXPECT_EQ(row.copy(), Bytes(4, 0x9E));
}

TEST(UnpackBits, RowsFollowEachOther) {
    const Bytes stream{0x01, 1, 2, 0xFF, 3, 0x80, 0xFD, 4};
    Bytes row(2);
    int pos = 0;
    EXPECT_EQ(zmxiUnpackBitsRow_TIFF_8u_C1(stream.data(), &pos, 8, row.data(), 2), zmxStsNoErr);
    EXPECT_EQ(row, (Bytes{1, 2}));
    EXPECT_EQ(pos, 3);
    EXPECT_EQ(zmxiUnpackBitsRow_TIFF_8u_C1(stream.data(), &pos, 8, row.data(), 2), zmxStsNoErr);
    EXPECT_EQ(row, (Bytes{3, 3}));
    EXPECT_EQ(pos, 5);
    EXPECT_EQ(zmxiUnpackBitsRow_TIFF_8u_C1(stream.data(), &pos, 8, row.data(), 2), zmxStsUnderRunErr) << "a run of 4";
    EXPECT_EQ(pos, 7);
    Bytes four(4);
    pos = 5;
    EXPECT_EQ(zmxiUnpackBitsRow_TIFF_8u_C1(stream.data(), &pos, 8, four.data(), 4), zmxStsNoErr);
    EXPECT_EQ(four, times(4, 4));
    EXPECT_EQ(pos, 8);
}

// Every header, at every length of the stream and of the row around its own. The stream ends at a guard page, and one
// byte later exactly where a run takes its value from there.
TEST(UnpackBits, EveryHeaderAtEveryEnd) {
    Unpacker unpack;
    for (int header = 0; header < 256; ++header) {
        const int n = header < 128 ? header + 1 : header == 128 ? 0 : 257 - header;
        for (int srcLen : {1, 2, 3, n - 1, n, n + 1, n + 2})
            for (int dstLen : {1, 2, n - 1, n, n + 1}) {
                if (srcLen < 1 || dstLen < 1) continue;
                Bytes stream = Bytes{Zmx8u(header)} + mixed(std::size_t(srcLen));
                const bool valueBehind = srcLen == 1 && header > 128 && n <= dstLen;
                stream.resize(std::size_t(srcLen) + valueBehind);
                unpack.check(stream, 0, srcLen, dstLen);
                ASSERT_FALSE(HasFailure()) << "header " << header;
            }
    }
}

TEST(UnpackBits, DamagedStreams) {
    constexpr std::uint64_t seed = 822;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    Unpacker unpack;
    int sound = 0, behind = 0;
    for (int round = 0; round < rounds(60000); ++round) {
        Bytes stream;
        int dstLen = int(rng.range(1, 400));
        if (rng.oneIn(2)) {
            const Bytes row = randomRow(rng, 400);
            dstLen = int(row.size()) + (rng.oneIn(4) ? int(rng.range(-1, 1)) : 0);
            dstLen = std::max(dstLen, 1);
            stream = model::packBits(row.data(), int(row.size()), Bytes(800), 0).dst;
            stream.resize(std::size_t(model::packBits(row.data(), int(row.size()), Bytes(800), 0).pos));
            for (std::int64_t k = rng.range(0, 2); k > 0; --k)
                stream[std::size_t(rng.range(0, std::int64_t(stream.size()) - 1))] = Zmx8u(rng.range(0, 255));
            if (rng.oneIn(3)) stream.resize(std::size_t(rng.range(1, std::int64_t(stream.size()))));
        } else {
            // Small packets, with headers of no meaning among them.
            const std::size_t n = std::size_t(rng.range(1, 60));
            while (stream.size() < n) stream.push_back(rng.oneIn(3) ? 0x80 : Zmx8u(rng.range(-4, 4)));
        }
        const int srcLen = int(stream.size());
        const int pos = rng.oneIn(4) ? int(rng.range(0, srcLen + 1)) : 0;
        // The byte behind the stream is there exactly when a run reads it.
        Bytes padded = stream;
        padded.push_back(0x3D);
        const auto e = model::unpackBits(padded.data(), pos, srcLen, Bytes(std::size_t(dstLen), 0));
        const bool reads = pos <= srcLen && e.pos == srcLen + 1;
        unpack.check(reads ? padded : stream, pos, srcLen, dstLen);
        ASSERT_FALSE(HasFailure()) << "round " << round;
        sound += e.status == zmxStsNoErr;
        behind += reads;
    }
    EXPECT_GT(sound, rounds(5000));
    EXPECT_GT(behind, rounds(500));
}

TEST(PackBits, TheSameBytesFromEveryBuild) {
    Digest streams, rows;
    Rng rng(823);
    for (int round = 0; round < 2000; ++round) {
        const Bytes row = randomRow(rng, 3000);
        Bytes stream(4000, 0);
        int pos = 0;
        const int room = rng.oneIn(4) ? int(rng.range(1, 3000)) : 4000;
        streams.value(zmxiPackBitsRow_TIFF_8u_C1(row.data(), int(row.size()), stream.data(), &pos, room))
            .value(pos)
            .add(stream);
        Bytes back(row.size(), 0);
        int at = 0;
        stream[std::size_t(rng.range(0, 3999))] = 0x80;
        rows.value(zmxiUnpackBitsRow_TIFF_8u_C1(stream.data(), &at, pos + 1, back.data(), int(back.size())))
            .value(at)
            .add(back);
    }
    EXPECT_EQ(streams.get(), 0x63720BF621303B53u);
    EXPECT_EQ(rows.get(), 0x176E6926C3FFD42Du);
}
