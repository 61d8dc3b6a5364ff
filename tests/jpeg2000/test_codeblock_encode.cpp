// The code-block encoder: arguments, passes, distortions, bytes, rates and segment lengths against the plain
// model.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/codeblock.h"
#include "tests/jpeg2000/support/codeblock.h"
#include "tests/support/digest.h"
#include "tests/support/rounds.h"

#include <climits>
#include <cmath>

namespace {

using Bytes = std::vector<Zmx8u>;
constexpr Zmx32u kStyles = 64; // with the lossless flag

// What the model makes of a block, in pieces of a capacity.
CodedBlock modelBlock(const BlockSamples& samples, ZmxiSize size, const EncodeChoice& how, int capacity = 1 << 16) {
    model::BlockEncoder e;
    e.load(samples.data(), size.width * 4, size, how.subband, how.magnBits, how.termination, how.style);
    CodedBlock c;
    c.sfBits = e.significantBits();
    c.passes = e.passCount();
    c.segments = e.segments();
    Bytes piece(static_cast<std::size_t>(capacity));
    for (bool more = true; more;) {
        const int n = e.store(piece.data(), capacity, more);
        c.bytes.insert(c.bytes.end(), piece.begin(), piece.begin() + n);
    }
    for (int i = 0; i < c.passes; ++i) {
        c.rates.push_back(e.rate(i));
        c.distortions.push_back(e.distortion(i));
    }
    for (int i = 0; i < c.segments && c.passes; ++i) c.lengths.push_back(e.segmentLength(i));
    return c;
}

void expectSame(const CodedBlock& expected, const CodedBlock& actual) {
    ASSERT_EQ(actual.sfBits, expected.sfBits);
    ASSERT_EQ(actual.passes, expected.passes);
    ASSERT_EQ(actual.segments, expected.segments);
    ASSERT_TRUE(sameBytes(expected.bytes, actual.bytes));
    ASSERT_EQ(actual.lengths, expected.lengths);
    ASSERT_EQ(actual.rates, expected.rates);
    ASSERT_TRUE(sameBytes(expected.distortions, actual.distortions));
}

ZmxiSize randomSize(Rng& rng, int most) {
    return {int(rng.range(1, rng.oneIn(3) ? 3 : most)), int(rng.range(1, rng.oneIn(3) ? 5 : most))};
}

CodedBlock encodeOnce(const BlockSamples& samples, ZmxiSize size, const EncodeChoice& how, int capacity = 1 << 16) {
    EncoderState state(size);
    return encodeBlock(state, samples, size, how, capacity);
}

// What one call of the store writes into a buffer of a capacity.
struct Piece {
    Bytes bytes;
    bool more;
};
Piece storePiece(ZmxiEncodeState_JPEG2K* state, int capacity) {
    Bytes bytes(static_cast<std::size_t>(capacity));
    int n = capacity, more = 7;
    EXPECT_EQ(zmxiEncodeStoreBits_JPEG2K_1u(bytes.data(), &n, state, &more), zmxStsNoErr);
    EXPECT_TRUE(more == 0 || more == 1) << more;
    bytes.resize(std::size_t(n));
    return {bytes, more != 0};
}

// The length of a segment and the rate of a pass.
int lengthOf(ZmxiEncodeState_JPEG2K* state, int segment) {
    int n = -1;
    EXPECT_EQ(zmxiEncodeGetTermPassLen_JPEG2K(state, segment, &n), zmxStsNoErr);
    return n;
}
int rateOf(ZmxiEncodeState_JPEG2K* state, int pass) {
    int n = -1;
    EXPECT_EQ(zmxiEncodeGetRate_JPEG2K(state, pass, &n), zmxStsNoErr);
    return n;
}

// Anything of a number of styles; in braces, so that every compiler draws in the same order.
EncodeChoice anyChoice(Rng& rng, int styles) {
    return {int(rng.range(0, 3)), 31, int(rng.range(0, 2)), Zmx32u(rng.range(0, styles - 1))};
}

} // namespace

// ---- arguments

TEST(CodeBlockEncoder, ArgumentsOfInitAndFree) {
    ZmxiEncodeState_JPEG2K* p = reinterpret_cast<ZmxiEncodeState_JPEG2K*>(&p);
    ZmxiEncodeState_JPEG2K* const before = p;
    checkOrder({kNull, kSize, kSize}, [&](const Bad& bad) {
        return zmxiEncodeInitAlloc_JPEG2K(bad.null(0, &p), {bad.below1(1, 1), bad.below1(2, 1)});
    });
    EXPECT_EQ(p, before);
    EXPECT_EQ(zmxiEncodeFree_JPEG2K(nullptr), zmxStsNullPtrErr);
    ASSERT_EQ(zmxiEncodeInitAlloc_JPEG2K(&p, {3, 3}), zmxStsNoErr);
    Zmx32u word;
    std::memcpy(&word, p, sizeof word);
    EXPECT_EQ(word, 0x4C4D5344u);
    // The magic word does not matter for the release.
    std::memset(p, 0, 4);
    EXPECT_EQ(zmxiEncodeFree_JPEG2K(p), zmxStsNoErr);
}

TEST(CodeBlockEncoder, ArgumentsOfLoad) {
    EncoderState state({4, 4}), foreign({4, 4});
    *reinterpret_cast<Zmx8u*>(static_cast<ZmxiEncodeState_JPEG2K*>(foreign)) ^= 1;
    std::vector<Zmx32s> samples(16, 5);
    int a = 41, b = 42, c = 43;
    const auto load = [&](const Zmx32s* src, int step, ZmxiSize size, ZmxiEncodeState_JPEG2K* s, int* sf, int* n,
                          int* t) {
        return zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(src, step, size, s, 0, 31, 0, 12345, 0, sf, n, t);
    };
    // The size ahead of the source.
    checkOrder({kNull, kContext, kNull, kNull, kNull, kSize, kSize, kNull, kStep}, [&](const Bad& bad) {
        return load(bad.null(7, samples.data()), bad.below1(8, 16), {bad.below1(5, 4), bad.below1(6, 4)},
                    stateOf(bad, 0, state, 1, foreign), bad.null(2, &a), bad.null(3, &b), bad.null(4, &c));
    });
    EXPECT_TRUE(a == 41 && b == 42 && c == 43);

    EXPECT_EQ(load(samples.data(), 16, {4, 4}, state, &a, &b, &c), zmxStsNoErr);
    EXPECT_EQ(a, 3);
    EXPECT_EQ(b, 7);
    EXPECT_EQ(c, 1);
}

TEST(CodeBlockEncoder, ArgumentsOfTheOthers) {
    EncoderState state({4, 4}), foreign({4, 4});
    loadBlock(state, BlockSamples(16, 5), {4, 4}, choice(0)); // of 7 passes in one segment
    *reinterpret_cast<Zmx8u*>(static_cast<ZmxiEncodeState_JPEG2K*>(foreign)) ^= 1;
    int rate = 42;
    double dist = 42;
    const auto checkPasses = [&](auto get, auto* result) {
        checkOrder({kNull, kContext, kNull, zmxStsBadPassNumberErr}, [&](const Bad& bad) {
            return get(stateOf(bad, 0, state, 1, foreign), bad.any(3, 0, {7, 8, 99, 1000, -1, INT_MIN, INT_MAX}),
                       bad.null(2, result));
        });
    };
    checkPasses(zmxiEncodeGetDist_JPEG2K, &dist);
    checkPasses(zmxiEncodeGetRate_JPEG2K, &rate);
    checkPasses(zmxiEncodeGetTermPassLen_JPEG2K, &rate);
    EXPECT_EQ(zmxiEncodeGetTermPassLen_JPEG2K(state, 1, &rate), zmxStsBadPassNumberErr) << "one segment";
    EXPECT_TRUE(rate == 42 && dist == 42);

    Zmx8u room[8];
    int n = 0, more = 43;
    // All pointers ahead of the capacity, which stands in *pDstLen.
    checkOrder({kNull, kContext, kNull, kNull, kNull, kSize}, [&](const Bad& bad) {
        n = bad.below1(5, 8);
        const int before = n;
        const ZmxStatus status = zmxiEncodeStoreBits_JPEG2K_1u(bad.null(2, room), bad.null(3, &n),
                                                               stateOf(bad, 0, state, 1, foreign), bad.null(4, &more));
        EXPECT_EQ(n, before);
        return status;
    });
    EXPECT_EQ(more, 43);
}

// ---- what a load tells

TEST(CodeBlockEncoder, NothingToCode) {
    for (Zmx32u style = 0; style < 32; ++style) {
        const int segments = style & ZMX_CB_TERMINATE_ALL ? 0 : 1;
        struct {
            BlockSamples samples;
            int magnBits, sfBits;
        } const cases[] = {
            {{0, 0, 0, 0}, 31, 0},          {{0x80000000, 0, 0, 0x80000000}, 31, 0}, // negative zeros are zeros
            {{3, 0x80000001, 2, 0}, 29, 2}, // below plane 2, the lowest coded one
            {{0x7FFFFFFF, 0, 0, 0}, 0, 31}, {{0x7FFFFFFF, 0, 0, 0}, -1, 31},
        };
        for (const auto& c : cases) {
            EncoderState state({2, 2});
            const CodedBlock coded = encodeBlock(state, c.samples, {2, 2}, choice(style, 0, c.magnBits));
            EXPECT_EQ(coded.sfBits, c.sfBits);
            EXPECT_EQ(coded.passes, 0);
            EXPECT_EQ(coded.segments, segments);
            EXPECT_TRUE(coded.bytes.empty());
            double dist;
            int rate = 77, n = 5, more = 9;
            EXPECT_EQ(zmxiEncodeGetDist_JPEG2K(state, 0, &dist), zmxStsBadPassNumberErr);
            EXPECT_EQ(zmxiEncodeGetRate_JPEG2K(state, 0, &rate), zmxStsBadPassNumberErr);
            EXPECT_EQ(zmxiEncodeGetTermPassLen_JPEG2K(state, segments, &rate), zmxStsBadPassNumberErr);
            Zmx8u room[5];
            EXPECT_EQ(zmxiEncodeStoreBits_JPEG2K_1u(room, &n, state, &more), zmxStsNoErr);
            EXPECT_EQ(n, 0);
            EXPECT_EQ(more, 0);
        }
    }
}

TEST(CodeBlockEncoder, PassesAndSegments) {
    for (int top = 0; top < 31; ++top)
        for (int base : {0, 1, top - 5, top - 4, top - 3, top}) {
            if (base < 0 || base > top) continue;
            const BlockSamples samples = {1u << top, 0, 0x80000001, 0};
            const int passes = 3 * (top - base) + 1;
            const CodedBlock plain = encodeOnce(samples, {2, 2}, choice(0, 0, 31 - base));
            EXPECT_EQ(plain.sfBits, top + 1) << "counted from bit 0 and not from the lowest coded plane";
            EXPECT_EQ(plain.passes, passes);
            EXPECT_EQ(plain.segments, 1);
            const CodedBlock all = encodeOnce(samples, {2, 2}, choice(ZMX_CB_TERMINATE_ALL, 0, 31 - base));
            EXPECT_EQ(all.passes, passes);
            EXPECT_EQ(all.segments, passes);
            // Plane p is raw below sfBits - 4, whatever the lowest plane is: top - 4 and below.
            const int rawPlanes = std::max(0, top - 4 - base + 1);
            const CodedBlock bypass = encodeOnce(samples, {2, 2}, choice(ZMX_CB_SELECTIVE_BYPASS, 0, 31 - base));
            EXPECT_EQ(bypass.passes, passes);
            EXPECT_EQ(bypass.segments, 1 + 2 * rawPlanes) << top << ' ' << base;
        }
}

TEST(CodeBlockEncoder, NothingWrittenToTheSource) {
    Rng rng(0x6301);
    for (int n = 0; n < 200; ++n) {
        SCOPED_TRACE(n);
        const ZmxiSize size = randomSize(rng, 9);
        const int step = size.width * 4 + int(rng.range(0, 30));
        const std::size_t bytes = std::size_t(step) * std::size_t(size.height - 1) + std::size_t(size.width) * 4;
        // Any step, any bytes between the rows, flush with a guard page.
        Guarded<Zmx8u> src(bytes, step % 4 || rng.oneIn(2) ? GuardedBlock::AtStart : GuardedBlock::AtEnd);
        rng.bytes(src.data(), bytes);
        const Bytes before = src.copy();
        BlockSamples packed;
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x) {
                Zmx32u v;
                std::memcpy(&v, src.data() + y * step + x * 4, 4);
                packed.push_back(v);
            }
        EncoderState state(size);
        EncodeChoice how = choice(Zmx32u(rng.range(0, 63)));
        how.magnBits = int(rng.range(0, 31));
        int sf, passes, segments;
        ASSERT_EQ(zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(reinterpret_cast<Zmx32s*>(src.data()), step, size, state, 0,
                                                         how.magnBits, 0, -1, how.style, &sf, &passes, &segments),
                  zmxStsNoErr);
        EXPECT_TRUE(sameBytes(before, src.copy()));
        const CodedBlock expected = modelBlock(packed, size, how);
        const Piece all = storePiece(state, 1 << 16);
        EXPECT_FALSE(all.more);
        ASSERT_TRUE(sameBytes(expected.bytes, all.bytes));
        EXPECT_EQ(passes, expected.passes);
    }
}

// ---- distortions

TEST(CodeBlockEncoder, DistortionOfOneSample) {
    // The value 1 in plane 0, exact: the whole of its square goes.
    CodedBlock c = encodeOnce({1}, {1, 1}, choice(ZMX_CB_LOSSLESS));
    ASSERT_EQ(c.passes, 1);
    EXPECT_EQ(c.distortions[0], 1.0);
    // Without the flag, the model of a midpoint stays although no lower plane exists: 6144 / 8192.
    c = encodeOnce({1}, {1, 1}, choice(0));
    EXPECT_EQ(c.distortions[0], 0.75);
    // 5 = 101: turns significant in plane 2, where v is 5/4; refined by 0 and by 1.
    c = encodeOnce({0x80000005}, {1, 1}, choice(ZMX_CB_LOSSLESS));
    ASSERT_EQ(c.passes, 7);
    // The midpoint of plane 2 is 6, so of 25 an error of 1 stays. Plane 1 makes it the midpoint 5 of 4 and 5,
    // which is the sample itself; plane 0 has nothing to add.
    EXPECT_EQ(c.distortions, (std::vector<double>{24, 24, 25, 25, 25, 25, 25}));
    c = encodeOnce({0x80000005}, {1, 1}, choice(0));
    // The last step puts the midpoint at 1.5 in units of plane 0, which is worse by 1/4.
    EXPECT_EQ(c.distortions, (std::vector<double>{24, 24, 25, 25, 25, 24.75, 24.75}));
    // With fraction bits: 13 of which plane 2 is the lowest coded one, so 3.25 in its units. Significant in
    // plane 1 of those with v 1.625, then refined in the lowest, exactly or to a midpoint.
    c = encodeOnce({13}, {1, 1}, choice(0, 0, 29));
    ASSERT_EQ(c.passes, 4);
    EXPECT_EQ(c.distortions, (std::vector<double>{10.5625 - 0.0625, 10.5, 10.5 + 0.0625 - 0.0625, 10.5}));
    c = encodeOnce({13}, {1, 1}, choice(ZMX_CB_LOSSLESS, 0, 29));
    EXPECT_EQ(c.distortions, (std::vector<double>{10.5, 10.5, 10.5625, 10.5625}));
}

// The four tables by their definitions: every index of each, in a plane of its own.
TEST(CodeBlockEncoder, DistortionTables) {
    for (int k = 0; k < 64; ++k) {
        // Significance in plane 6 with k below it, plane 6 being the lowest.
        const double v = 1 + k / 64.0;
        for (Zmx32u lossless : {Zmx32u(0), Zmx32u(ZMX_CB_LOSSLESS)}) {
            const CodedBlock c = encodeOnce({64u + Zmx32u(k)}, {1, 1}, choice(lossless, 0, 25));
            ASSERT_EQ(c.passes, 1);
            EXPECT_EQ(c.distortions[0], lossless ? v * v : v * v - (v - 1.5) * (v - 1.5)) << k;
        }
    }
    for (int k = 0; k < 128; ++k) {
        const double v = k / 64.0, half = v < 1 ? 0.5 : 1.5;
        for (Zmx32u lossless : {Zmx32u(0), Zmx32u(ZMX_CB_LOSSLESS)}) {
            const CodedBlock c = encodeOnce({128u + Zmx32u(k)}, {1, 1}, choice(lossless, 0, 25));
            ASSERT_EQ(c.passes, 4);
            const double refined = c.distortions[2] - c.distortions[1];
            EXPECT_EQ(refined, lossless ? (v - 1) * (v - 1) : (v - 1) * (v - 1) - (v - half) * (v - half)) << k;
            EXPECT_EQ(refined < 0, !lossless && k >= 49 && k <= 79) << "a refinement can make a sample worse";
        }
    }
}

// The power of two is a 32-bit shift: 31 gives a negative factor and more a wrapped one. The exponent is 2
// for each plane above the lowest, less 13.
TEST(CodeBlockEncoder, DistortionExponentsWrap) {
    for (int above = 0; above <= 30; ++above) {
        const int e = 2 * above - 13;
        const double factor = e <= 0 ? std::ldexp(1, e) : double(Zmx32s(1u << (e & 31)));
        const CodedBlock c = encodeOnce({1u << above}, {1, 1}, choice(0));
        ASSERT_EQ(c.passes, 3 * above + 1);
        EXPECT_EQ(c.distortions[0], 6144 * factor) << above;
        if (above == 22) {
            EXPECT_EQ(c.distortions[0], -6144 * 2147483648.0);
        }
        if (above == 23) {
            EXPECT_EQ(c.distortions[0], 6144 * 2.0);
        }
    }
}

// ---- bytes

// Flat fields: what is in the segment can be worked out.
TEST(CodeBlockEncoder, PassesWithoutDecisions) {
    // One sample alone: no significance pass has anything to do; with every pass terminated their segments
    // are empty and their rates are those before.
    for (int termination : {0, 1, 2}) {
        const CodedBlock c = encodeOnce({0x15}, {1, 1}, choice(ZMX_CB_TERMINATE_ALL, termination));
        ASSERT_EQ(c.passes, 13);
        for (int pass = 1; pass < 13; ++pass) {
            const std::size_t i = std::size_t(pass);
            if (pass % 3 == 2) continue; // refinements have one decision each
            EXPECT_EQ(c.lengths[i], 0);
            EXPECT_EQ(c.rates[i], c.rates[i - 1]);
        }
        int sum = 0;
        for (std::size_t i = 0; i < 13; ++i) {
            sum += c.lengths[i];
            EXPECT_EQ(c.rates[i], sum) << "exact, as every pass is terminated";
        }
        EXPECT_EQ(sum, int(c.bytes.size()));
    }
}

// A raw pass whose last byte is 0xFF writes nothing at its end; the rate steps back before the 0xFF if that
// byte is in the buffer of the call that ends the pass.
TEST(CodeBlockEncoder, RawPassThatEndsInFF) {
    // Eight samples of 0x3F: planes 1 and 0 are raw refinements of eight ones.
    const BlockSamples samples(8, 0x3F);
    const Zmx32u style = ZMX_CB_SELECTIVE_BYPASS | ZMX_CB_TERMINATE_ALL;
    const CodedBlock c = encodeOnce(samples, {8, 1}, choice(style));
    ASSERT_EQ(c.passes, 16);
    EXPECT_EQ(c.lengths[10], 0);
    EXPECT_EQ(c.lengths[11], 1) << "one byte, with no bit left to fill up";
    EXPECT_EQ(c.rates[11], c.rates[10]) << "ahead of the 0xFF";
    int before = 0;
    for (int i = 0; i < 11; ++i) before += c.lengths[std::size_t(i)];
    EXPECT_EQ(c.bytes[std::size_t(before)], 0xFF);
    EXPECT_EQ(c.rates[10], before);
    // The cleanup and the significance pass behind it are empty, and step back with it; then comes the second
    // 0xFF.
    EXPECT_EQ(c.rates[12], before);
    EXPECT_EQ(c.rates[13], before);
    EXPECT_EQ(c.rates[14], before + 1);

    // With a buffer that is full with the 0xFF the pass ends in the call after, where the byte is not at
    // hand.
    EncoderState state({8, 1});
    loadBlock(state, samples, {8, 1}, choice(style));
    const Piece first = storePiece(state, before + 1), rest = storePiece(state, 200);
    EXPECT_EQ(int(first.bytes.size()), before + 1);
    EXPECT_EQ(first.bytes.back(), 0xFF);
    EXPECT_TRUE(first.more);
    EXPECT_FALSE(rest.more);
    EXPECT_EQ(rateOf(state, 11), before + 1);
    EXPECT_EQ(lengthOf(state, 11), 1);
}

// The raw termination needs a byte of room: with none left behind the last bit the pass stays open.
TEST(CodeBlockEncoder, RawTerminationNeedsRoom) {
    // Nine samples: a raw refinement has one byte and one bit.
    const BlockSamples samples(9, 0x2A);
    const Zmx32u style = ZMX_CB_SELECTIVE_BYPASS | ZMX_CB_TERMINATE_ALL;
    const CodedBlock c = encodeOnce(samples, {9, 1}, choice(style));
    ASSERT_EQ(c.passes, 16);
    EXPECT_EQ(c.lengths[11], 2);
    int before = 0;
    for (int i = 0; i < 11; ++i) before += c.lengths[std::size_t(i)];
    // Plane 1 of 101010 is 1 nine times; 0xFF, and behind it a zero bit, the ninth 1 and 0, 1, 0, 1, 0, 1.
    EXPECT_EQ(c.bytes[std::size_t(before)], 0xFF);
    EXPECT_EQ(c.bytes[std::size_t(before) + 1], 0x55);
    EncoderState state({9, 1});
    loadBlock(state, samples, {9, 1}, choice(style));
    const Piece first = storePiece(state, before + 1), second = storePiece(state, 1);
    EXPECT_EQ(int(first.bytes.size()), before + 1);
    EXPECT_TRUE(first.more);
    EXPECT_EQ(second.bytes, Bytes{0x55});
    EXPECT_EQ(lengthOf(state, 11), 2);
}

// Without every pass terminated, segments end where raw and MQ passes meet: 10 passes, then 2 and 1.
TEST(CodeBlockEncoder, SegmentsWithBypass) {
    Rng rng(0x6302);
    BlockSamples samples = randomBlock(rng, 16, 16, 8);
    samples[0] = 0xFF;
    const CodedBlock c = encodeOnce(samples, {16, 16}, choice(ZMX_CB_SELECTIVE_BYPASS));
    ASSERT_EQ(c.sfBits, 8);
    ASSERT_EQ(c.segments, 1 + 2 * 4);
    // The rates of the passes that end segments are exact, unless a 0xFF stands there.
    int sum = 0;
    for (int segment = 0, pass = 9; segment < 9; ++segment, pass += segment % 2 ? 2 : 1) {
        sum += c.lengths[std::size_t(segment)];
        EXPECT_EQ(c.rates[std::size_t(pass)], c.bytes[std::size_t(sum) - 1] == 0xFF ? sum - 1 : sum) << pass;
    }
    EXPECT_EQ(sum, int(c.bytes.size()));
}

TEST(CodeBlockEncoder, RatesDoNotDecrease) {
    Rng rng(0x6303);
    for (int n = 0; n < 500; ++n) {
        SCOPED_TRACE(n);
        const ZmxiSize size = randomSize(rng, 14);
        EncoderState state(size);
        const Zmx32u style = Zmx32u(rng.range(0, 31));
        const CodedBlock c = encodeBlock(state, randomBlock(rng, size.width, size.height, int(rng.range(1, 12))), size,
                                         choice(style, n % 3));
        for (std::size_t i = 1; i < c.rates.size(); ++i) EXPECT_GE(c.rates[i], c.rates[i - 1]) << i;
        for (int rate : c.rates) {
            EXPECT_LE(rate, int(c.bytes.size()));
            // Segments that end in a raw 0xFF may stand one behind the other.
            if (rate > 0 && !(style & ZMX_CB_SELECTIVE_BYPASS)) {
                EXPECT_NE(c.bytes[std::size_t(rate) - 1], 0xFF) << "no cut behind a 0xFF";
            }
        }
    }
}

// A cut at a pass's rate decodes to what that pass knows: the slack is enough.
TEST(CodeBlockEncoder, CutsAtTheRatesAreEnough) {
    Rng rng(0x6304);
    for (int n = 0; n < rounds(400); ++n) {
        SCOPED_TRACE(n);
        const ZmxiSize size = randomSize(rng, 12);
        EncoderState state(size);
        const Zmx32u style = Zmx32u(rng.range(0, 31)) & ~Zmx32u(ZMX_CB_SELECTIVE_BYPASS | ZMX_CB_TERMINATE_ALL);
        const CodedBlock c = encodeBlock(state, randomBlock(rng, size.width, size.height, int(rng.range(1, 8))), size,
                                         choice(style, n % 3));
        for (int pass = 0; pass < c.passes; ++pass) {
            const std::size_t count = std::size_t(size.width) * std::size_t(size.height);
            std::vector<Zmx32s> whole(count), cut(count);
            const int all = int(c.bytes.size()), some = c.rates[std::size_t(pass)];
            for (auto [length, out] : {std::pair{all, &whole}, std::pair{some, &cut}}) {
                Guarded<Zmx8u> bytes(Bytes(c.bytes.begin(), c.bytes.begin() + length));
                DecoderState decoder(size);
                ASSERT_EQ(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(bytes.data(), out->data(), size.width * 4, size, 0,
                                                               c.sfBits, pass + 1, &length, 1, style, nullptr, decoder),
                          zmxStsNoErr);
            }
            ASSERT_EQ(whole, cut) << pass;
        }
    }
}

// ---- against the model

TEST(CodeBlockEncoder, EveryStyleSubbandAndTermination) {
    Rng rng(0x6311);
    EncoderState state({13, 13});
    for (Zmx32u style = 0; style < kStyles; ++style)
        for (int subband = -1; subband < 5; ++subband)
            for (int n = 0; n < 12; ++n) {
                SCOPED_TRACE(::testing::Message() << "style " << style << " subband " << subband << " n " << n);
                const int termination = n % 4 == 3 ? 3 - n : n % 4; // every other number is a flush
                const ZmxiSize size = randomSize(rng, 13);
                const BlockSamples samples = randomBlock(rng, size.width, size.height, int(rng.range(1, 10)));
                const EncodeChoice how = choice(style, termination, 31 - (n % 2 ? 0 : int(rng.range(0, 6))), subband);
                ASSERT_NO_FATAL_FAILURE(
                    expectSame(modelBlock(samples, size, how), encodeBlock(state, samples, size, how)));
            }
}

TEST(CodeBlockEncoder, AnySamples) {
    Rng rng(0x6312);
    EncoderState state({9, 9});
    for (int n = 0; n < 2000; ++n) {
        SCOPED_TRACE(n);
        const ZmxiSize size = randomSize(rng, 9);
        // All 32 bits; negative zeros too.
        BlockSamples samples = randomBlock(rng, size.width, size.height, int(rng.range(1, 31)));
        for (Zmx32u& v : samples)
            if (rng.oneIn(5)) v = rng.oneIn(2) ? 0x80000000u : Zmx32u(rng.next());
        EncodeChoice how = anyChoice(rng, 64);
        how.magnBits = int(rng.range(0, 31));
        ASSERT_NO_FATAL_FAILURE(expectSame(modelBlock(samples, size, how), encodeBlock(state, samples, size, how)));
    }
}

TEST(CodeBlockEncoder, LargeAndThinBlocks) {
    Rng rng(0x6313);
    for (ZmxiSize size : {ZmxiSize{64, 64}, ZmxiSize{1024, 4}, ZmxiSize{4, 1024}, ZmxiSize{64, 1}, ZmxiSize{1, 64},
                          ZmxiSize{63, 61}, ZmxiSize{32, 6}, ZmxiSize{3, 3}, ZmxiSize{1, 1}}) {
        EncoderState state(size);
        for (int n = 0; n < 4; ++n) {
            SCOPED_TRACE(::testing::Message() << size.width << " by " << size.height << " n " << n);
            const EncodeChoice how = choice(Zmx32u(rng.range(0, 63)), n % 3, 31, n);
            const BlockSamples samples = randomBlock(rng, size.width, size.height, n == 3 ? 31 : int(rng.range(1, 12)));
            ASSERT_NO_FATAL_FAILURE(expectSame(modelBlock(samples, size, how), encodeBlock(state, samples, size, how)));
        }
    }
}

// Most decisions that a block can have: every sample in every plane, with signs and segmentation symbols.
TEST(CodeBlockEncoder, TheFullestBlock) {
    for (ZmxiSize size : {ZmxiSize{64, 64}, ZmxiSize{1, 1}, ZmxiSize{1, 4}, ZmxiSize{3, 5}}) {
        const std::size_t count = std::size_t(size.width) * std::size_t(size.height);
        BlockSamples samples(count);
        for (std::size_t i = 0; i < count; ++i) samples[i] = i % 2 ? 0xFFFFFFFFu : 0x40000001u;
        const EncodeChoice how = choice(ZMX_CB_SEGMENTATION_SYMBOLS);
        const CodedBlock c = encodeOnce(samples, size, how);
        EXPECT_EQ(c.passes, 91);
        ASSERT_NO_FATAL_FAILURE(expectSame(modelBlock(samples, size, how), c));
    }
}

// Buffers of any size: the same bytes, rates and lengths as with a large one (of the rates see
// RawPassThatEndsInFF).
TEST(CodeBlockEncoder, AnyCapacity) {
    Rng rng(0x6314);
    EncoderState state({12, 12});
    int other = 0;
    for (int n = 0; n < 3000; ++n) {
        SCOPED_TRACE(n);
        const ZmxiSize size = randomSize(rng, 12);
        const EncodeChoice how = anyChoice(rng, 64);
        const BlockSamples samples = randomBlock(rng, size.width, size.height, int(rng.range(1, 10)));
        const int capacity = n % 2 ? 1 : int(rng.range(2, 20));
        const CodedBlock pieces = encodeBlock(state, samples, size, how, capacity);
        ASSERT_NO_FATAL_FAILURE(expectSame(modelBlock(samples, size, how, capacity), pieces)) << capacity;
        const CodedBlock whole = encodeBlock(state, samples, size, how);
        ASSERT_TRUE(sameBytes(whole.bytes, pieces.bytes));
        ASSERT_EQ(whole.lengths, pieces.lengths);
        ASSERT_EQ(whole.rates.size(), pieces.rates.size());
        for (std::size_t i = 0; i < whole.rates.size(); ++i) {
            if (whole.rates[i] == pieces.rates[i]) continue;
            // Only where a segment ends in a raw 0xFF, which may not have been at hand any more.
            ++other;
            ASSERT_TRUE(how.style & ZMX_CB_SELECTIVE_BYPASS) << i;
            ASSERT_EQ(whole.rates[i] + 1, pieces.rates[i]) << i;
            ASSERT_EQ(whole.bytes[std::size_t(whole.rates[i])], 0xFF) << i;
        }
    }
    EXPECT_GT(other, 0);
}

// The last decision of a pass may put two bytes out at once, of which a small buffer takes one. The pass's
// rate is that of a large buffer all the same.
TEST(CodeBlockEncoder, APassThatEndsWithTwoBytes) {
    Rng rng(0x6318);
    for (int plane = 1; plane < 10; ++plane) {
        SCOPED_TRACE(plane);
        // Refinements of nothing but zeros, thousands of them, at the very end of a plane a one, and bytes
        // behind it.
        const ZmxiSize size{64, 64};
        BlockSamples samples(4096);
        for (Zmx32u& s : samples) s = 0x1000u | Zmx32u(rng.range(0, 1)) | (rng.oneIn(30) ? 0x80000000u : 0);
        samples.back() |= 1u << plane;
        EncoderState state(size);
        const CodedBlock whole = encodeBlock(state, samples, size, choice(0));
        ASSERT_NO_FATAL_FAILURE(expectSame(modelBlock(samples, size, choice(0)), whole));
        for (int capacity : {1, 2, 3, 5}) {
            const CodedBlock pieces = encodeBlock(state, samples, size, choice(0), capacity);
            ASSERT_NO_FATAL_FAILURE(expectSame(whole, pieces)) << capacity;
        }
    }
}

// Call by call: the bytes of each, flush with a guard page, and whether there are more.
TEST(CodeBlockEncoder, EachCallOfTheStore) {
    Rng rng(0x6315);
    EncoderState state({10, 10});
    for (int n = 0; n < 1500; ++n) {
        SCOPED_TRACE(n);
        const ZmxiSize size = randomSize(rng, 10);
        const EncodeChoice how = anyChoice(rng, 32);
        const BlockSamples samples = randomBlock(rng, size.width, size.height, int(rng.range(1, 9)));
        model::BlockEncoder e;
        e.load(samples.data(), size.width * 4, size, how.subband, how.magnBits, how.termination, how.style);
        loadBlock(state, samples, size, how);
        bool more = true;
        // Two calls beyond the end write nothing.
        for (int beyond = 0; beyond < 2; beyond += !more) {
            const int capacity = int(rng.range(1, rng.oneIn(3) ? 40 : 4));
            Guarded<Zmx8u> actual(static_cast<std::size_t>(capacity));
            actual.fill(0x5C);
            Bytes expected(std::size_t(capacity), 0x5C);
            const bool ended = !more;
            const int count = e.store(expected.data(), capacity, more);
            int written = capacity, notFinished = 7;
            ASSERT_EQ(zmxiEncodeStoreBits_JPEG2K_1u(actual.data(), &written, state, &notFinished), zmxStsNoErr);
            ASSERT_EQ(written, count);
            ASSERT_EQ(notFinished, more ? 1 : 0);
            ASSERT_TRUE(sameBytes(expected, actual.copy())) << "nothing behind the bytes";
            if (ended) {
                ASSERT_EQ(written, 0);
            }
        }
    }
}

// A load at any time forgets what was under way; smaller blocks than the state's are as good.
TEST(CodeBlockEncoder, LoadInTheMiddleOfAStore) {
    Rng rng(0x6316);
    EncoderState state({16, 16});
    for (int n = 0; n < 300; ++n) {
        SCOPED_TRACE(n);
        for (int i = 0; i < 2; ++i) {
            const ZmxiSize size = randomSize(rng, 16);
            const EncodeChoice how = anyChoice(rng, 64);
            const BlockSamples samples = randomBlock(rng, size.width, size.height, int(rng.range(1, 12)));
            if (i) {
                ASSERT_NO_FATAL_FAILURE(
                    expectSame(modelBlock(samples, size, how), encodeBlock(state, samples, size, how)));
                break;
            }
            loadBlock(state, samples, size, how);
            for (int calls = int(rng.range(0, 3)); calls > 0; --calls) storePiece(state, int(rng.range(1, 8)));
        }
    }
}

// Before a store the lengths are those of the block before, or nothing in a fresh state.
TEST(CodeBlockEncoder, LengthsBeforeTheStoreAreStale) {
    EncoderState state({8, 8});
    const BlockSamples samples(64, 0x80000077);
    const int segments = loadBlock(state, samples, {8, 8}, choice(ZMX_CB_TERMINATE_ALL)).segments;
    for (int i = 0; i < segments; ++i) {
        EXPECT_EQ(lengthOf(state, i), 0);
        EXPECT_EQ(rateOf(state, i), 0);
    }
    const CodedBlock c = encodeBlock(state, samples, {8, 8}, choice(ZMX_CB_TERMINATE_ALL));
    ASSERT_EQ(loadBlock(state, {7}, {1, 1}, choice(ZMX_CB_TERMINATE_ALL)).segments, 7);
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(lengthOf(state, i), c.lengths[std::size_t(i)]);
        EXPECT_EQ(rateOf(state, i), c.rates[std::size_t(i)]);
    }
}

// Not tested, not refused: a lowest plane below bit 0, or none at all, must not hurt anything else.
TEST(CodeBlockEncoder, OtherMagnitudeBitsAreSafe) {
    Rng rng(0x6317);
    for (int magnBits : {32, 33, 34, 35, 36, 37, 38, 40, 63, 64, 1000, INT_MAX, INT_MIN, -1, -31})
        for (Zmx32u style = 0; style < kStyles; ++style) {
            const ZmxiSize size{4, 5};
            EncoderState state(size);
            const BlockSamples samples = randomBlock(rng, 4, 5, int(rng.range(1, 31)));
            const int passes = loadBlock(state, samples, size, choice(style, 0, magnBits)).passes;
            storePiece(state, 1 << 14);
            double distortion = 0;
            if (passes) {
                ASSERT_EQ(zmxiEncodeGetDist_JPEG2K(state, passes - 1, &distortion), zmxStsNoErr);
            }
        }
}

// ---- digest

TEST(CodeBlockEncoder, Digest) {
    Rng rng(0x63D1);
    Digest digest;
    EncoderState state({20, 20});
    for (Zmx32u style = 0; style < kStyles; ++style)
        for (int n = 0; n < 4; ++n) {
            const ZmxiSize size = randomSize(rng, 20);
            const EncodeChoice how = choice(style, n % 3, 31 - n, n);
            const CodedBlock c = encodeBlock(state, randomBlock(rng, size.width, size.height, int(rng.range(4, 16))),
                                             size, how, n == 2 ? 3 : 1 << 12);
            digest.value(c.sfBits).value(c.passes).value(c.segments);
            digest.add(c.bytes).add(c.lengths).add(c.rates).add(c.distortions);
        }
    EXPECT_EQ(digest.get(), 17706224281849548031u);
}
