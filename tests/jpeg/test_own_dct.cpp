// The 8x8 transforms inside the library: the integer flow bit for bit, the single-precision flow operation by
// operation, and both near the definition.
// SPDX-License-Identifier: BSD-2-Clause
#include "pidct.h"
#include "pidctmul.h"
#include "tests/frame/model/primitives.h"
#include "tests/jpeg/model/dct.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"
#include "tests/support/rounds.h"

#include <array>
#include <cmath>
#include <functional>

using namespace zmx;

namespace {

using Block = std::array<Zmx16s, 64>;
using InPlace = ZmxStatus (*)(Zmx16s*);

struct Transform {
    const char* name;
    InPlace library;
    void (*model)(Zmx16s*);
};
const Transform kTransforms[] = {
    {"forward", zmxiDCT8x8Fwd_16s_C1I, model::dctForward},
    {"inverse", zmxiDCT8x8Inv_16s_C1I, model::dctInverse},
    {"inverse of a 4x4 corner", zmxiDCT8x8Inv_4x4_16s_C1I, model::dctInverse4x4},
    {"inverse of a 2x2 corner", zmxiDCT8x8Inv_2x2_16s_C1I, model::dctInverse2x2},
    {"to 4x4", zmxiDCT8x8To4x4Inv_16s_C1I, model::dctTo4x4},
    {"to 2x2", zmxiDCT8x8To2x2Inv_16s_C1I, model::dctTo2x2},
};

Block constant(int v) {
    Block b;
    b.fill(Zmx16s(v));
    return b;
}
Block dcOnly(int v) {
    Block b{};
    b[0] = Zmx16s(v);
    return b;
}
Block after(InPlace f, Block b) {
    EXPECT_EQ(f(b.data()), zmxStsNoErr);
    return b;
}

// Blocks of every kind: flat and busy, sparse and full, within 8 bits and far beyond what the flow can hold.
Block anyBlock(Rng& rng) {
    const int reaches[] = {1, 10, 128, 1024, 2048, 4096, 8192, 32768};
    const int reach = reaches[rng.range(0, 7)], sparse = rng.oneIn(3) ? int(rng.range(2, 30)) : 1;
    Block b{};
    for (Zmx16s& v : b)
        if (rng.oneIn(sparse)) v = Zmx16s(rng.range(-reach, reach - 1));
    if (rng.oneIn(8))
        for (Zmx16s& v : b) v = Zmx16s(rng.oneIn(2) ? 32767 : -32768);
    return b;
}

// A block of the samples of an 8-bit picture, around zero.
Block sampleBlock(Rng& rng) {
    Block b;
    const int base = int(rng.range(-128, 127)), reach = int(rng.range(0, 255));
    for (Zmx16s& v : b) v = Zmx16s(model::limit(int(base + rng.range(-reach, reach)), -128, 127));
    return b;
}

std::array<double, 64> real(const Block& b) {
    std::array<double, 64> d;
    for (std::size_t i = 0; i < 64; ++i) d[i] = b[i];
    return d;
}

} // namespace

TEST(IntegerDct, ZeroGivesZero) {
    for (const Transform& t : kTransforms) EXPECT_EQ(after(t.library, Block{}), Block{}) << t.name;
}

TEST(IntegerDct, AConstantBlockHasOnlyADcCoefficient) {
    EXPECT_EQ(after(zmxiDCT8x8Fwd_16s_C1I, constant(100)), dcOnly(800));
    EXPECT_EQ(after(zmxiDCT8x8Fwd_16s_C1I, constant(-128)), dcOnly(-1024));
    EXPECT_EQ(after(zmxiDCT8x8Inv_16s_C1I, dcOnly(800)), constant(100));
    EXPECT_EQ(after(zmxiDCT8x8Inv_4x4_16s_C1I, dcOnly(800)), constant(100));
    EXPECT_EQ(after(zmxiDCT8x8Inv_2x2_16s_C1I, dcOnly(800)), constant(100));
    Block four = dcOnly(800), two = dcOnly(800);
    for (std::size_t i = 0; i < 16; ++i) four[i] = 100;
    for (std::size_t i = 0; i < 4; ++i) two[i] = 100;
    EXPECT_EQ(after(zmxiDCT8x8To4x4Inv_16s_C1I, dcOnly(800)), four);
    EXPECT_EQ(after(zmxiDCT8x8To2x2Inv_16s_C1I, dcOnly(800)), two);
}

TEST(IntegerDct, ARowSumBeyond13BitsWraps) {
    // Eight times 600 is 4800, which 13 bits read as -3392.
    EXPECT_EQ(after(zmxiDCT8x8Fwd_16s_C1I, constant(600)), dcOnly(-3392));
    EXPECT_EQ(after(zmxiDCT8x8Fwd_16s_C1I, constant(511)), dcOnly(4088));
    EXPECT_EQ(after(zmxiDCT8x8Fwd_16s_C1I, constant(512)), dcOnly(-4096));
    EXPECT_EQ(after(zmxiDCT8x8Fwd_16s_C1I, constant(-512)), dcOnly(-4096));
    EXPECT_EQ(after(zmxiDCT8x8Fwd_16s_C1I, constant(-513)), dcOnly(4088));
}

TEST(IntegerDct, EveryStepOfTheFlow) {
    Rng rng(261);
    SCOPED_TRACE("seed 261");
    for (int i = 0; i < 3000; ++i) {
        const Block input = anyBlock(rng);
        for (const Transform& t : kTransforms) {
            Block expected = input;
            t.model(expected.data());
            ASSERT_EQ(after(t.library, input), expected) << t.name << ", block " << i;
        }
        Block out;
        ASSERT_EQ(zmxiDCT8x8Fwd_16s_C1(input.data(), out.data()), zmxStsNoErr);
        ASSERT_EQ(out, after(zmxiDCT8x8Fwd_16s_C1I, input));
    }
}

// Samples around the ends of 8 bits, in constant blocks and alone: +128 is not one of 8 bits any more.
TEST(IntegerDct, TheEndsOf8Bits) {
    for (int v : {-130, -129, -128, -127, 126, 127, 128, 129, 130}) {
        EXPECT_EQ(after(zmxiDCT8x8Fwd_16s_C1I, constant(v)), dcOnly(8 * v)) << v;
        for (int others : {-128, 0, 127})
            for (std::size_t k = 0; k < 64; ++k) {
                Block input = constant(others);
                input[k] = Zmx16s(v);
                Block expected = input;
                model::dctForward(expected.data());
                ASSERT_EQ(after(zmxiDCT8x8Fwd_16s_C1I, input), expected) << v << " at " << k << " among " << others;
            }
    }
}

// Multiples of powers of two, and one off: where products end in just the half that is rounded.
TEST(IntegerDct, TiesOfEveryRounding) {
    Rng rng(277);
    SCOPED_TRACE("seed 277");
    for (int i = 0; i < 6000; ++i) {
        Block input{};
        const int sparse = int(rng.range(1, 20));
        for (Zmx16s& v : input) {
            if (!rng.oneIn(sparse)) continue;
            const int power = int(rng.range(1, 3)) << rng.range(0, 13), off = rng.oneIn(3) ? int(rng.range(-1, 1)) : 0;
            v = Zmx16s((rng.oneIn(2) ? power : -power) + off);
        }
        for (const Transform& t : kTransforms) {
            Block expected = input;
            t.model(expected.data());
            ASSERT_EQ(after(t.library, input), expected) << t.name << ", block " << i;
        }
    }
}

// With the worst signs for each result: no step wraps as long as the bounds of the passes hold.
TEST(IntegerDct, NothingWrapsWithinTheBounds) {
    const int samples =
        dct::largestInput(dct::kForwardGain, 1 << 20) / 64; // a first pass takes eight of them eight times
    const int coefficients =
        int(std::int64_t(dct::largestInput(dct::kInverseGain, 1 << 20)) * 4096 / dct::kInverseGain);
    EXPECT_EQ(samples, 138);
    EXPECT_EQ(coefficients, 146);
    const auto basis = [](std::size_t k, std::size_t n) { // of coefficient k at sample n
        return dct::cosine(int((2 * (n / 8) + 1) * (k / 8))) * dct::cosine(int((2 * (n % 8) + 1) * (k % 8)));
    };
    double forward = 0, inverse = 0, beyond = 0;
    for (std::size_t at = 0; at < 64; ++at) {
        Block x{}, c{}, large{};
        for (std::size_t i = 0; i < 64; ++i) {
            x[i] = Zmx16s(basis(at, i) < 0 ? -samples : samples);
            c[i] = Zmx16s(basis(i, at) < 0 ? -coefficients : coefficients);
            large[i] = Zmx16s(6 * c[i]);
        }
        auto exact = real(x);
        model::dctForward(exact.data());
        const Block forwards = after(zmxiDCT8x8Fwd_16s_C1I, x);
        for (std::size_t k = 0; k < 64; ++k) forward = std::max(forward, std::abs(exact[k] - forwards[k]));
        exact = real(c);
        model::dctInverse(exact.data());
        const Block inverses = after(zmxiDCT8x8Inv_16s_C1I, c);
        for (std::size_t k = 0; k < 64; ++k) inverse = std::max(inverse, std::abs(exact[k] - inverses[k]));
        const Block wrapped = after(zmxiDCT8x8Inv_16s_C1I, large);
        for (std::size_t k = 0; k < 64; ++k) beyond = std::max(beyond, std::abs(6 * exact[k] - wrapped[k]));
    }
    EXPECT_LT(forward, 1.0);
    EXPECT_LT(inverse, 1.0);
    EXPECT_GT(beyond, 1000) << "six times as much does wrap";
}

TEST(IntegerDct, EachElementAlone) {
    // One basis function at a time, small, large and extreme.
    for (std::size_t k = 0; k < 64; ++k)
        for (int v : {1, -1, 4, 100, -1024, 2047, 8000, -20000, 32767, -32768})
            for (const Transform& t : kTransforms) {
                Block input{};
                input[k] = Zmx16s(v);
                Block expected = input;
                t.model(expected.data());
                ASSERT_EQ(after(t.library, input), expected) << t.name << ", element " << k << ", " << v;
            }
}

TEST(IntegerDct, TheEndsOfTheRange) {
    // Two extreme values, at several reaches: the largest sums that a reach can make.
    Rng rng(271);
    SCOPED_TRACE("seed 271");
    for (int reach : {128, 256, 512, 1024, 2048, 4096, 16384, 32768})
        for (int i = 0; i < 300; ++i) {
            Block input;
            for (std::size_t k = 0; k < 64; ++k) {
                // Rows all alike, columns all alike, or neither.
                const std::size_t like = i % 3 == 0 ? k % 8 : i % 3 == 1 ? k / 8 * 8 : k;
                input[k] = like == k ? Zmx16s(rng.oneIn(2) ? reach - 1 : -reach) : input[like];
            }
            for (const Transform& t : kTransforms) {
                Block expected = input;
                t.model(expected.data());
                ASSERT_EQ(after(t.library, input), expected) << t.name << ", reach " << reach;
            }
        }
}

TEST(IntegerDct, WithinTheCallersBlocks) {
    Rng rng(262);
    SCOPED_TRACE("seed 262");
    for (auto flush : {GuardedBlock::AtEnd, GuardedBlock::AtStart}) {
        const Block input = sampleBlock(rng);
        Guarded<Zmx16s> src(std::vector<Zmx16s>(input.begin(), input.end()), flush), dst(64, flush);
        ASSERT_EQ(zmxiDCT8x8Fwd_16s_C1(src.data(), dst.data()), zmxStsNoErr);
        EXPECT_TRUE(sameBytes(input.data(), src.data(), 128));
        ASSERT_EQ(zmxiDCT8x8Fwd_16s_C1(src.data(), src.data()), zmxStsNoErr) << "onto itself";
        EXPECT_TRUE(sameBytes(dst.data(), src.data(), 128));
        for (const Transform& t : kTransforms) ASSERT_EQ(t.library(src.data()), zmxStsNoErr) << t.name;
    }
}

// Zeros behind any row and any column: the flow leaves out work that they make needless.
TEST(IntegerDct, InverseOfBlocksThatEndEarly) {
    Rng rng(264);
    SCOPED_TRACE("seed 264");
    for (int rows = 1; rows <= 8; ++rows)
        for (int columns = 1; columns <= 8; ++columns)
            for (int i = 0; i < 60; ++i) {
                Block b = anyBlock(rng);
                for (int k = 0; k < 64; ++k)
                    if (k / 8 >= rows || k % 8 >= columns) b[std::size_t(k)] = 0;
                // The last row and column that count may hold one value only.
                b[std::size_t(8 * (rows - 1) + columns - 1)] = Zmx16s(rng.oneIn(2) ? 1 : -32768);
                Block expected = b;
                model::dctInverse(expected.data());
                ASSERT_EQ(after(zmxiDCT8x8Inv_16s_C1I, b), expected) << rows << " rows, " << columns << " columns";
            }
}

TEST(IntegerDct, ReducedInversesIgnoreWhatLiesOutside) {
    Rng rng(263);
    SCOPED_TRACE("seed 263");
    const struct {
        const Transform& t;
        std::function<bool(int, int)> counts; // row, column
        std::size_t results;
    } cases[] = {
        {kTransforms[2], [](int r, int c) { return r < 4 && c < 4; }, 64},
        {kTransforms[3], [](int r, int c) { return r < 2 && c < 2; }, 64},
        {kTransforms[4], [](int r, int c) { return r != 4 && c != 4; }, 16},
        {kTransforms[5], [](int r, int c) { return (r == 0 || r % 2) && (c == 0 || c % 2); }, 4},
    };
    for (const auto& one : cases)
        for (int i = 0; i < 200; ++i) {
            const Block stray = anyBlock(rng);
            Block clean = stray;
            for (int k = 0; k < 64; ++k)
                if (!one.counts(k / 8, k % 8)) clean[std::size_t(k)] = 0;
            const Block a = after(one.t.library, stray), b = after(one.t.library, clean);
            ASSERT_TRUE(std::equal(a.begin(), a.begin() + std::ptrdiff_t(one.results), b.begin())) << one.t.name;
            for (std::size_t k = one.results; k < 64; ++k)
                ASSERT_EQ(a[k], stray[k]) << one.t.name << " keeps element " << k;
        }
}

TEST(IntegerDct, TheReducedResultMayDifferFromTheFull) {
    // 32138 and 42813 against 32139 and 42814: with these corner values it shows.
    Rng rng(264);
    SCOPED_TRACE("seed 264");
    int differing = 0;
    for (int i = 0; i < 2000; ++i) {
        Block b{};
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c) b[std::size_t(8 * r + c)] = Zmx16s(rng.range(-1024, 1023));
        const Block full = after(zmxiDCT8x8Inv_16s_C1I, b), corner = after(zmxiDCT8x8Inv_4x4_16s_C1I, b);
        differing += full != corner;
        for (std::size_t k = 0; k < 64; ++k) ASSERT_NEAR(full[k], corner[k], 1);
    }
    EXPECT_GT(differing, 0);
}

TEST(IntegerDct, NearTheDefinition) {
    Rng rng(265);
    SCOPED_TRACE("seed 265");
    double forward = 0, inverse = 0, four = 0, two = 0;
    for (int i = 0; i < (shortened() ? 75 : 1500); ++i) {
        const Block samples = sampleBlock(rng), coefficients = after(zmxiDCT8x8Fwd_16s_C1I, samples);
        auto exact = real(samples);
        model::dctForward(exact.data());
        for (std::size_t k = 0; k < 64; ++k) forward = std::max(forward, std::abs(exact[k] - coefficients[k]));

        const Block back = after(zmxiDCT8x8Inv_16s_C1I, coefficients);
        exact = real(coefficients);
        model::dctInverse(exact.data());
        for (std::size_t k = 0; k < 64; ++k) inverse = std::max(inverse, std::abs(exact[k] - back[k]));

        // A reduced picture is the mean over squares of the whole one.
        const Block half = after(zmxiDCT8x8To4x4Inv_16s_C1I, coefficients);
        const Block quarter = after(zmxiDCT8x8To2x2Inv_16s_C1I, coefficients);
        double mean4[16] = {}, mean2[4] = {};
        for (std::size_t k = 0; k < 64; ++k) {
            mean4[k / 16 * 4 + k % 8 / 2] += exact[k] / 4;
            mean2[k / 32 * 2 + k % 8 / 4] += exact[k] / 16;
        }
        for (std::size_t k = 0; k < 16; ++k) four = std::max(four, std::abs(mean4[k] - half[k]));
        for (std::size_t k = 0; k < 4; ++k) two = std::max(two, std::abs(mean2[k] - quarter[k]));
    }
    RecordProperty("forward", std::to_string(forward));
    RecordProperty("inverse", std::to_string(inverse));
    RecordProperty("to4x4", std::to_string(four));
    RecordProperty("to2x2", std::to_string(two));
    EXPECT_LT(forward, 0.8);
    EXPECT_LT(inverse, 0.8);
    EXPECT_LT(four, 0.8);
    EXPECT_LT(two, 0.8);
}

TEST(IntegerDct, CornersNearTheDefinition) {
    Rng rng(266);
    SCOPED_TRACE("seed 266");
    for (int corner : {2, 4}) {
        double worst = 0;
        for (int i = 0; i < (shortened() ? 25 : 500); ++i) {
            Block b{};
            for (int k = 0; k < corner * corner; ++k)
                b[std::size_t(8 * (k / corner) + k % corner)] = Zmx16s(rng.range(-250, 250));
            auto exact = real(b);
            model::dctInverse(exact.data());
            const Block out = after(corner == 2 ? zmxiDCT8x8Inv_2x2_16s_C1I : zmxiDCT8x8Inv_4x4_16s_C1I, b);
            for (std::size_t k = 0; k < 64; ++k) worst = std::max(worst, std::abs(exact[k] - out[k]));
        }
        EXPECT_LT(worst, 0.8) << corner;
    }
}

TEST(IntegerDct, NullPointers) {
    Block b = constant(3);
    checkOrder({kNull, kNull},
               [&](const Bad& bad) { return zmxiDCT8x8Fwd_16s_C1(bad.null(0, b.data()), bad.null(1, b.data())); });
    for (const Transform& t : kTransforms) EXPECT_EQ(t.library(nullptr), zmxStsNullPtrErr) << t.name;
    EXPECT_EQ(zmxiDCT8x8Fwd_32f_C1I(nullptr), zmxStsNullPtrErr);
    EXPECT_EQ(zmxiDCT8x8Inv_32f_C1I(nullptr), zmxStsNullPtrErr);
    EXPECT_EQ(b, constant(3));
}

TEST(ClippedInverse, PointersThenStep) {
    const Block src = constant(3);
    std::vector<Zmx8u> dst(64, 0x5A);
    checkOrder({kNull, kNull, kStep}, [&](const Bad& bad) {
        return zmxiDCT8x8InvLSClip_16s8u_C1R(bad.null(0, src.data()), bad.null(1, dst.data()), bad.below1(2, 8), 128, 0,
                                             255);
    });
    EXPECT_EQ(dst, std::vector<Zmx8u>(64, 0x5A));
}

TEST(ClippedInverse, EqualBoundsGiveThatValueEverywhere) {
    Rng rng(267);
    SCOPED_TRACE("seed 267");
    std::vector<Zmx8u> dst(64);
    ASSERT_EQ(zmxiDCT8x8InvLSClip_16s8u_C1R(anyBlock(rng).data(), dst.data(), 8, 128, 77, 77), zmxStsNoErr);
    EXPECT_EQ(dst, std::vector<Zmx8u>(64, 77));
}

TEST(ClippedInverse, TheLowerBoundIsTestedFirst) {
    // Samples of -100, 0, 100 against bounds that stand the wrong way round.
    for (const auto& [dc, expected] :
         {std::pair(-800, 200), std::pair(0, 200), std::pair(1584, 200), std::pair(1600, 100)}) {
        std::vector<Zmx8u> dst(64);
        ASSERT_EQ(zmxiDCT8x8InvLSClip_16s8u_C1R(dcOnly(dc).data(), dst.data(), 8, 0, 200, 100), zmxStsNoErr);
        EXPECT_EQ(dst, std::vector<Zmx8u>(64, Zmx8u(expected))) << dc;
    }
}

TEST(ClippedInverse, AgainstTheModel) {
    Rng rng(268);
    SCOPED_TRACE("seed 268");
    for (int i = 0; i < 600; ++i) {
        const Block input = anyBlock(rng);
        const int shift = i % 3 == 0 ? 128 : int(i % 3 == 1 ? rng.range(-300, 300) : rng.range(0, 1) * 65535 - 32768);
        const int lo = i % 2 ? 0 : int(rng.range(0, 255)), hi = i % 2 ? 255 : int(rng.range(0, 255));
        const int step = i % 5 ? 8 + int(rng.range(0, 9)) : int(rng.range(1, 8));
        const auto flush = i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart;
        Guarded<Zmx16s> src(std::vector<Zmx16s>(input.begin(), input.end()), flush);
        Guarded<Zmx8u> dst(std::size_t(7 * step + 8), flush);
        dst.fill(0x5A);
        std::vector<Zmx8u> expected = dst.copy();
        Block samples = input;
        model::dctInverse(samples.data());
        for (std::size_t k = 0; k < 64; ++k) {
            const int t = samples[k] + shift;
            expected[k / 8 * std::size_t(step) + k % 8] = Zmx8u(t < lo ? lo : t >= hi ? hi : t);
        }
        ASSERT_EQ(zmxiDCT8x8InvLSClip_16s8u_C1R(src.data(), dst.data(), step, Zmx16s(shift), Zmx8u(lo), Zmx8u(hi)),
                  zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected, dst.copy())) << "block " << i;
        ASSERT_TRUE(sameBytes(input.data(), src.data(), 128));
    }
}

namespace {

using Singles = std::array<Zmx32f, 64>;

Singles singles(Rng& rng, double reach, bool whole) {
    Singles b;
    for (Zmx32f& v : b) {
        v = Zmx32f((double(rng.range(-1000000, 1000000)) / 1000000) * reach);
        if (whole) v = std::floor(v);
    }
    return b;
}

} // namespace

TEST(SingleDct, ExactOnConstantBlocks) {
    for (int v : {0, 1, 100, -2048, 2047}) {
        Singles b;
        b.fill(Zmx32f(v));
        ASSERT_EQ(zmxiDCT8x8Fwd_32f_C1I(b.data()), zmxStsNoErr);
        EXPECT_EQ(b[0], Zmx32f(8 * v));
        for (std::size_t k = 1; k < 64; ++k) ASSERT_EQ(b[k], 0.0f);
        ASSERT_EQ(zmxiDCT8x8Inv_32f_C1I(b.data()), zmxStsNoErr);
        for (std::size_t k = 0; k < 64; ++k) ASSERT_EQ(b[k], Zmx32f(v));
    }
}

TEST(SingleDct, TheFactorsOfTheDcCoefficientAreAnEighth) {
    EXPECT_EQ(model::forwardNorm(0), 0.125f);
    EXPECT_EQ(model::inverseNorm(0), 0.125f);
    EXPECT_EQ(model::forwardNorm(63), Zmx32f(1.18391256 * 1.18391256));
    EXPECT_EQ(model::inverseNorm(9), Zmx32f(0.90612749 * 0.90612749));
}

TEST(SingleDct, EachOperationRoundedToSingle) {
    Rng rng(269);
    SCOPED_TRACE("seed 269");
    Digest digest;
    for (int i = 0; i < (shortened() ? 75 : 1500); ++i) {
        const double reaches[] = {1e-30, 1, 128, 2048, 40000, 1e20};
        const Singles input = singles(rng, reaches[i % 6], i % 2);
        Singles expected = input, actual = input;
        model::dctForward(expected.data());
        ASSERT_EQ(zmxiDCT8x8Fwd_32f_C1I(actual.data()), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected.data(), actual.data(), sizeof actual)) << "forward, block " << i;
        digest.add(actual.data(), sizeof actual);
        expected = actual = input;
        model::dctInverse(expected.data());
        ASSERT_EQ(zmxiDCT8x8Inv_32f_C1I(actual.data()), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected.data(), actual.data(), sizeof actual)) << "inverse, block " << i;
        digest.add(actual.data(), sizeof actual);
    }
    EXPECT_EQ(digest.get(), 0x37AA429910B8C751u) << std::hex << digest.get();
}

TEST(SingleDct, NearTheDefinition) {
    Rng rng(270);
    SCOPED_TRACE("seed 270");
    double forward = 0, inverse = 0;
    for (int i = 0; i < (shortened() ? 25 : 500); ++i) {
        Singles b = singles(rng, 128, i % 2);
        std::array<double, 64> exact;
        std::copy(b.begin(), b.end(), exact.begin());
        model::dctForward(exact.data());
        ASSERT_EQ(zmxiDCT8x8Fwd_32f_C1I(b.data()), zmxStsNoErr);
        for (std::size_t k = 0; k < 64; ++k) forward = std::max(forward, std::abs(exact[k] - double(b[k])));
        std::copy(b.begin(), b.end(), exact.begin());
        model::dctInverse(exact.data());
        ASSERT_EQ(zmxiDCT8x8Inv_32f_C1I(b.data()), zmxStsNoErr);
        for (std::size_t k = 0; k < 64; ++k) inverse = std::max(inverse, std::abs(exact[k] - double(b[k])));
    }
    RecordProperty("forward", std::to_string(forward * 1e6));
    RecordProperty("inverse", std::to_string(inverse * 1e6));
    EXPECT_LT(forward, 2e-4);
    EXPECT_LT(inverse, 2e-4);
}

TEST(SingleDct, WithinTheCallersBlock) {
    for (auto flush : {GuardedBlock::AtEnd, GuardedBlock::AtStart}) {
        Guarded<Zmx32f> b(64, flush);
        b.fill(3);
        ASSERT_EQ(zmxiDCT8x8Fwd_32f_C1I(b.data()), zmxStsNoErr);
        ASSERT_EQ(zmxiDCT8x8Inv_32f_C1I(b.data()), zmxStsNoErr);
        EXPECT_EQ(b[63], 3.0f);
    }
}
