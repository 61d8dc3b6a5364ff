// The HD Photo core transform: known blocks, the inverse, wrap-around, steps of every kind, and the order of argument tests.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/hdphoto/model/photo.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"
#include "zmxj.h"

#include <climits>
#include <cstdlib>

namespace {

using Block = std::vector<Zmx32s>;
constexpr bool kForward = false, kInverse = true;

ZmxStatus transform(bool inverse, Zmx32s* p, int step, ZmxiSize size) {
    return inverse ? zmxiPCTInv_HDP_32s_C1IR(p, step, size) : zmxiPCTFwd_HDP_32s_C1IR(p, step, size);
}
Block transformed(bool inverse, Block m) {
    EXPECT_EQ(transform(inverse, m.data(), 16, {4, 4}), zmxStsNoErr);
    return m;
}
Block modelled(bool inverse, Block m) {
    if (inverse)
        model::photoInverse(m.data());
    else
        model::photoForward(m.data());
    return m;
}

// The entry points for one size each.
struct Fixed {
    const char* name;
    ZmxStatus (*run)(Zmx32s*, int);
    bool inverse;
    ZmxiSize size;
};
const Fixed kFixed[] = {
    {"Fwd16x16", zmxiPCTFwd16x16_HDP_32s_C1IR, kForward, {16, 16}},
    {"Inv16x16", zmxiPCTInv16x16_HDP_32s_C1IR, kInverse, {16, 16}},
    {"Fwd8x16", zmxiPCTFwd8x16_HDP_32s_C1IR, kForward, {8, 16}},
    {"Inv8x16", zmxiPCTInv8x16_HDP_32s_C1IR, kInverse, {8, 16}},
    {"Fwd8x8", zmxiPCTFwd8x8_HDP_32s_C1IR, kForward, {8, 8}},
    {"Inv8x8", zmxiPCTInv8x8_HDP_32s_C1IR, kInverse, {8, 8}},
};

// A plane of samples in a guarded buffer, with whatever step; the top row comes last where the step is negative.
class Plane {
    ZmxiSize size;
    int step;
    Guarded<Zmx8u> bytes;
    std::vector<Zmx8u> before;

    std::size_t at(int x, int y) const {
        const int row = step > 0 ? y : size.height - 1 - y;
        return std::size_t(row) * std::size_t(std::abs(step)) + 4 * std::size_t(x);
    }

public:
    Plane(ZmxiSize s, int stepBytes, GuardedBlock::Flush flush, Rng& rng, std::int64_t magnitude)
        : size(s), step(stepBytes),
          bytes(std::size_t(std::abs(stepBytes)) * std::size_t(s.height - 1) + 4 * std::size_t(s.width), flush) {
        rng.bytes(bytes.data(), bytes.size());
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x) {
                const auto v = Zmx32s(rng.range(-magnitude, magnitude - 1));
                std::memcpy(bytes.data() + at(x, y), &v, 4);
            }
        before = bytes.copy();
    }
    Zmx32s* origin() { return reinterpret_cast<Zmx32s*>(bytes.data() + at(0, 0)); }
    std::vector<Zmx8u> now() { return bytes.copy(); }
    const std::vector<Zmx8u>& was() const { return before; }

    // What the buffer ought to hold after a transform of the whole plane: the bytes between the rows stay.
    std::vector<Zmx8u> expected(bool inverse) const {
        std::vector<Zmx8u> out = before;
        for (int y = 0; y < size.height; y += 4)
            for (int x = 0; x < size.width; x += 4) {
                Block m(16);
                for (int i = 0; i < 16; ++i) std::memcpy(&m[std::size_t(i)], &before[at(x + i % 4, y + i / 4)], 4);
                m = modelled(inverse, m);
                for (int i = 0; i < 16; ++i) std::memcpy(&out[at(x + i % 4, y + i / 4)], &m[std::size_t(i)], 4);
            }
        return out;
    }
};

} // namespace

TEST(HdPhoto, AFlatBlockHasItsDcAlone) {
    Block dc(16, 0);
    dc[0] = 400;
    EXPECT_EQ(transformed(kForward, Block(16, 100)), dc) << "a gain of 4";
    EXPECT_EQ(transformed(kInverse, dc), Block(16, 100));
    EXPECT_EQ(transformed(kForward, Block(16, 0)), Block(16, 0));
    EXPECT_EQ(transformed(kInverse, Block(16, 0)), Block(16, 0));
}

TEST(HdPhoto, ARampOfSixteen) {
    Block ramp(16);
    for (int i = 0; i < 16; ++i) ramp[std::size_t(i)] = i;
    const Block coefficients{30, 0, -17, 0, 0, 0, 0, -2, -4, 0, 0, 0, 0, -1, 0, 0};
    EXPECT_EQ(transformed(kForward, ramp), coefficients);
    EXPECT_EQ(transformed(kInverse, coefficients), ramp);
}

TEST(HdPhoto, TheSmallestRegionIsOneBlock) {
    Guarded<Zmx32s> block(16), other(16, GuardedBlock::AtStart);
    block.fill(-7);
    other.fill(9);
    EXPECT_EQ(zmxiPCTFwd_HDP_32s_C1IR(block.data(), 16, {4, 4}), zmxStsNoErr);
    EXPECT_EQ(zmxiPCTFwd_HDP_32s_C1IR(other.data(), 16, {4, 4}), zmxStsNoErr);
    EXPECT_EQ(block[0], -28);
    EXPECT_EQ(other[0], 36);
    for (std::size_t i = 1; i < 16; ++i) {
        EXPECT_EQ(block[i], 0);
        EXPECT_EQ(other[i], 0);
    }
}

// Each sample alone, at every small value, and pairs of them: every rounding term shows in one of these.
TEST(HdPhoto, SmallBlocksAreTransformedAsWrittenDown) {
    for (bool inverse : {kForward, kInverse})
        for (std::size_t i = 0; i < 16; ++i)
            for (std::size_t j = i; j < 16; ++j)
                for (int v = -9; v <= 9; ++v)
                    for (int w : {-5, -3, 0, 1, 2, 4}) {
                        Block m(16, 0);
                        m[i] = v;
                        m[j] += w;
                        ASSERT_EQ(transformed(inverse, m), modelled(inverse, m))
                            << "inverse " << inverse << ", " << v << " at " << i << ", " << w << " at " << j;
                    }
}

TEST(HdPhoto, TheInverseBringsEverySampleBack) {
    constexpr std::uint64_t seed = 811;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (int bits : {1, 2, 4, 8, 16, 24, 27})
        for (int round = 0; round < 2000; ++round) {
            const std::int64_t limit = std::int64_t(1) << bits;
            Block m = rng.vec<Zmx32s>(16, -limit, limit);
            if (round % 8 == 0)
                for (Zmx32s& v : m) v = Zmx32s(rng.oneIn(2) ? limit : -limit);
            const Block coefficients = transformed(kForward, m);
            ASSERT_EQ(coefficients, modelled(kForward, m)) << bits << " bits, round " << round;
            ASSERT_EQ(transformed(kInverse, coefficients), m) << bits << " bits, round " << round;
        }
}

TEST(HdPhoto, SumsWrapIn32Bits) {
    constexpr std::uint64_t seed = 812;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    const Zmx32s edges[] = {INT_MIN, INT_MIN + 1, -1,         0,           1,         INT_MAX - 1,
                            INT_MAX, 0x2AAAAAAA,  0x55555555, -0x40000000, 0x40000000};
    for (bool inverse : {kForward, kInverse}) {
        for (Zmx32s v : edges)
            ASSERT_EQ(transformed(inverse, Block(16, v)), modelled(inverse, Block(16, v))) << "a flat block of " << v;
        for (int round = 0; round < 10000; ++round) {
            Block m = rng.vec<Zmx32s>(16, INT_MIN, INT_MAX);
            if (round % 2)
                for (Zmx32s& v : m)
                    if (!rng.oneIn(3)) v = edges[std::size_t(rng.range(0, 10))];
            ASSERT_EQ(transformed(inverse, m), modelled(inverse, m)) << "inverse " << inverse << ", round " << round;
        }
    }
}

TEST(HdPhoto, PlanesOfEveryStep) {
    constexpr std::uint64_t seed = 813;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (bool inverse : {kForward, kInverse})
        for (ZmxiSize size : {ZmxiSize{4, 4}, {4, 12}, {12, 4}, {8, 8}, {20, 8}, {64, 16}, {100, 12}})
            for (int spare : {0, 1, 2, 3, 4, 5, 16, 33})
                for (int way : {1, -1})
                    for (auto flush : {GuardedBlock::AtEnd, GuardedBlock::AtStart})
                        for (std::int64_t magnitude : {std::int64_t(256), std::int64_t(1) << 31}) {
                            const int step = way * (4 * size.width + spare);
                            Plane plane(size, step, flush, rng, magnitude);
                            const std::vector<Zmx8u> expected = plane.expected(inverse);
                            ASSERT_EQ(transform(inverse, plane.origin(), step, size), zmxStsNoErr);
                            ASSERT_TRUE(sameBytes(expected, plane.now()))
                                << size.width << " by " << size.height << ", step " << step;
                        }
}

TEST(HdPhoto, FixedSizes) {
    constexpr std::uint64_t seed = 814;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (const Fixed& f : kFixed)
        for (int spare : {0, 1, 3, 4, 64})
            for (int way : {1, -1})
                for (auto flush : {GuardedBlock::AtEnd, GuardedBlock::AtStart}) {
                    const int step = way * (4 * f.size.width + spare);
                    Plane plane(f.size, step, flush, rng, 1 << 20);
                    const std::vector<Zmx8u> expected = plane.expected(f.inverse);
                    ASSERT_EQ(f.run(plane.origin(), step), zmxStsNoErr) << f.name;
                    ASSERT_TRUE(sameBytes(expected, plane.now())) << f.name << ", step " << step;
                }
}

// A negative step is a large unsigned number. Rows that lie a byte apart overlap, so that only the reach of the call is
// defined, not what it leaves there.
TEST(HdPhoto, AStepOfMinusOneAddressesTheRowsWithIt) {
    for (const Fixed& f : kFixed) {
        Guarded<Zmx8u> flushBehind(std::size_t(f.size.height - 1 + 4 * f.size.width), GuardedBlock::AtEnd);
        Guarded<Zmx8u> flushAhead(std::size_t(f.size.height - 1 + 4 * f.size.width), GuardedBlock::AtStart);
        for (auto* bytes : {&flushBehind, &flushAhead}) {
            bytes->fill(3);
            auto* top = reinterpret_cast<Zmx32s*>(bytes->data() + f.size.height - 1);
            EXPECT_EQ(f.run(top, -1), zmxStsNoErr) << f.name;
            EXPECT_NE(bytes->copy(), std::vector<Zmx8u>(bytes->size(), 3)) << f.name;
        }
    }
}

TEST(HdPhoto, ArgumentsOfTheFixedSizes) {
    for (const Fixed& f : kFixed) {
        const int least = 4 * f.size.width;
        Guarded<Zmx32s> plane(std::size_t(f.size.width * f.size.height));
        plane.fill(5);
        SCOPED_TRACE(f.name);
        checkOrder({kNull, kStep}, [&](const Bad& bad) {
            return f.run(bad.null(0, plane.data()), bad.any(1, least, {0, 1, least / 2, least - 4, least - 1}));
        });
        EXPECT_EQ(f.run(nullptr, -1), zmxStsNullPtrErr) << f.name;
        EXPECT_EQ(plane.copy(), Block(plane.size(), 5)) << f.name << ": nothing is written";
        EXPECT_EQ(f.run(plane.data(), least), zmxStsNoErr) << f.name;
    }
    Guarded<Zmx32s> eight(64);
    EXPECT_EQ(zmxiPCTFwd8x8_HDP_32s_C1IR(eight.data(), 31), zmxStsStepErr);
    EXPECT_EQ(zmxiPCTFwd8x8_HDP_32s_C1IR(eight.data(), 32), zmxStsNoErr);
}

TEST(HdPhoto, ArgumentsOfAnySize) {
    Guarded<Zmx32s> plane(64);
    plane.fill(5);
    for (bool inverse : {kForward, kInverse}) {
        // Pointer, size below 1, a step that is shorter than the row, multiple of 4.
        checkOrder({kNull, kSize, kSize, kStep, kSize, kSize}, [&](const Bad& bad) {
            const auto extent = [&](int below1, int odd) {
                return bad.any(below1, bad.any(odd, 8, {1, 2, 3, 5, 6, 7}), {0, -1, -3, -4, INT_MIN, INT_MIN + 4});
            };
            return transform(inverse, bad.null(0, plane.data()), bad.any(3, 32, {0, 1, 3}),
                             {extent(1, 4), extent(2, 5)});
        });
        for (int step : {16, 28, 31}) EXPECT_EQ(transform(inverse, plane.data(), step, {8, 8}), zmxStsStepErr) << step;
        EXPECT_EQ(transform(inverse, plane.data(), 31, {8, 0}), zmxStsSizeErr);
        EXPECT_EQ(transform(inverse, plane.data(), 8, {6, 8}), zmxStsStepErr)
            << "a step wins over a size that is no multiple of 4";
        EXPECT_EQ(transform(inverse, plane.data(), 23, {6, 8}), zmxStsStepErr);
        EXPECT_EQ(transform(inverse, plane.data(), 24, {6, 8}), zmxStsSizeErr);
        for (int odd : {1, 2, 3, 5, 6, 7})
            EXPECT_EQ(transform(inverse, plane.data(), -32, {odd, 8}), zmxStsSizeErr)
                << odd << ": a negative step passes";
        EXPECT_EQ(plane.copy(), Block(64, 5)) << "nothing is written";
        EXPECT_EQ(transform(inverse, plane.data(), 32, {8, 8}), zmxStsNoErr);
        plane.fill(5);
    }
}

TEST(HdPhoto, TheSameBytesFromEveryBuild) {
    Digest forward, inverse;
    Rng rng(815);
    for (std::int64_t magnitude : {std::int64_t(2), std::int64_t(256), std::int64_t(65536), std::int64_t(1) << 31})
        for (int round = 0; round < 50; ++round) {
            const Block m = rng.vec<Zmx32s>(64 * 64, -magnitude, magnitude - 1);
            Block f = m, i = m;
            zmxiPCTFwd_HDP_32s_C1IR(f.data(), 256, {64, 64});
            zmxiPCTInv_HDP_32s_C1IR(i.data(), 256, {64, 64});
            forward.add(f);
            inverse.add(i);
        }
    EXPECT_EQ(forward.get(), 0x06A97B70F33FA8C7u);
    EXPECT_EQ(inverse.get(), 0x085FD801D18E8C91u);
    Rng again(816);
    const std::uint64_t fixed[] = {0x16298544529AF3C1u, 0x3ED5551DF2CD266Bu, 0x64865C1D8A5677D0u,
                                   0x03131FF6FD0C0CA3u, 0xC8A56A7862C872AAu, 0x37B20FB5331DC40Bu};
    for (std::size_t k = 0; k < 6; ++k) {
        Block m = again.vec<Zmx32s>(256, INT_MIN, INT_MAX);
        kFixed[k].run(m.data(), 64);
        EXPECT_EQ(Digest().add(m).get(), fixed[k]) << kFixed[k].name;
    }
}
