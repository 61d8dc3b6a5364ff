// The vector and rectangle primitives inside the library: values, rounding, overlap, order of argument tests.
// SPDX-License-Identifier: BSD-2-Clause
#include "picopyca.h"
#include "pithresh16u.h"
#include "psconvert.h"
#include "pscopyca.h"
#include "psmul.h"
#include "tests/frame/model/primitives.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"

#include <bit>
#include <cmath>
#include <functional>
#include <limits>

using namespace zmx;

namespace {

constexpr Zmx32f kInfinity = std::numeric_limits<Zmx32f>::infinity();
constexpr Zmx32f kNaN = std::numeric_limits<Zmx32f>::quiet_NaN();
constexpr auto kFlushes = {GuardedBlock::AtEnd, GuardedBlock::AtStart};

// Lengths around what a loop unrolled or a vector unit may take at once.
std::vector<int> lengths() {
    std::vector<int> v;
    for (int n = 1; n <= 70; ++n) v.push_back(n);
    for (int n : {127, 128, 129, 1023, 1600, 1601, 3199, 3200, 3201, 5000}) v.push_back(n);
    return v;
}

// Any single, the extreme ones often.
Zmx32f anySingle(Rng& rng) {
    switch (rng.range(0, 5)) {
    case 0:
        return std::bit_cast<Zmx32f>(std::uint32_t(rng.next()));
    case 1:
        return Zmx32f(rng.range(-70000, 70000)) + 0.5f;
    case 2:
        return Zmx32f(rng.range(-70000, 70000)) / 64;
    case 3:
        return std::nextafter(Zmx32f(rng.range(-10, 10)) + 0.5f, rng.oneIn(2) ? kInfinity : -kInfinity);
    case 4:
        return Zmx32f(rng.range(-70000, 70000));
    default:
        break;
    }
    const Zmx32f special[] = {0.0f,      -0.0f,     0.5f,       -0.5f,    32767.0f, 32766.5f, 32767.5f, -32768.0f,
                              -32768.5f, -32767.5f, 65535.0f,   65534.5f, 65535.5f, 1e-40f,   -1e-40f,  3e38f,
                              -3e38f,    kInfinity, -kInfinity, 1.0f,     1.5f,     2.5f};
    return special[rng.range(0, std::int64_t(std::size(special)) - 1)];
}

} // namespace

// --- zeroing, filling, copying -------------------------------------------------------------------------------

TEST(Zeroing, EveryLengthAtEveryAlignment) {
    for (int n : lengths())
        for (int offset = 0; offset < 5; ++offset) {
            Guarded<Zmx8u> bytes(std::size_t(n + offset));
            const auto expect = [&](Zmx8u v) {
                std::vector<Zmx8u> all(std::size_t(n + offset), v);
                for (int i = 0; i < offset; ++i) all[std::size_t(i)] = 0x77;
                ASSERT_TRUE(sameBytes(all, bytes.copy())) << n << " bytes, offset " << offset;
            };
            bytes.fill(0x77);
            ASSERT_EQ(zmxsZero_8u(bytes.data() + offset, n), zmxStsNoErr);
            ASSERT_NO_FATAL_FAILURE(expect(0));
            bytes.fill(0x77);
            ASSERT_EQ(ownsZero_8u(bytes.data() + offset, n), bytes.data() + offset);
            ASSERT_NO_FATAL_FAILURE(expect(0));
            ASSERT_EQ(zmxsSet_8u(0xE3, bytes.data() + offset, n), zmxStsNoErr);
            for (int i = 0; i < offset; ++i) bytes[std::size_t(i)] = 0x77;
            ASSERT_NO_FATAL_FAILURE(expect(0xE3));
            bytes.fill(0x77);
            ownsSet_8u(0x1F, bytes.data() + offset, n);
            ASSERT_NO_FATAL_FAILURE(expect(0x1F));
        }
    for (int n : lengths()) {
        Guarded<Zmx16s> shorts(std::size_t(n) + 1);
        shorts.fill(0x7777);
        ASSERT_EQ(zmxsZero_16s(shorts.data() + 1, n), zmxStsNoErr);
        ASSERT_EQ(shorts[0], 0x7777);
        for (int i = 1; i <= n; ++i) ASSERT_EQ(shorts[std::size_t(i)], 0);
        Guarded<Zmx32s> words(std::size_t(n) + 1);
        words.fill(5);
        ownsSet_32s(-77777777, words.data() + 1, n);
        ASSERT_EQ(words[0], 5);
        for (int i = 1; i <= n; ++i) ASSERT_EQ(words[std::size_t(i)], -77777777);
    }
}

TEST(Zeroing, WorkersTakeNoLengthBelowOne) {
    Zmx8u b[2] = {1, 2};
    Zmx32s w[1] = {3};
    for (int n : {0, -1, -2147483647 - 1}) {
        EXPECT_EQ(ownsZero_8u(b, n), b);
        ownsSet_8u(9, b, n);
        ownsSet_32s(9, w, n);
        EXPECT_EQ(ownsCopy_8u(b, b + 1, n), b + 1);
    }
    EXPECT_EQ(b[0], 1);
    EXPECT_EQ(b[1], 2);
    EXPECT_EQ(w[0], 3);
}

TEST(Copying, ApartAndOverlapping) {
    Rng rng(231);
    SCOPED_TRACE("seed 231");
    std::vector<std::pair<int, int>> cases; // length, distance from source to destination
    for (int n : lengths())
        for (int d : {0,   1,  -1, 2,  -2, 3,     4, 7,     8,     -8, 15,     16,    17,
                      -17, 31, 32, 33, 64, n - 1, n, n + 1, 1 - n, -n, -n - 1, n + 40})
            cases.push_back({n, d});
    for (const auto& [n, d] : cases)
        for (int worker = 0; worker < 2; ++worker) {
            const int from = d < 0 ? -d : 0, to = d < 0 ? 0 : d;
            Guarded<Zmx8u> bytes(std::size_t(n + std::abs(d)));
            rng.bytes(bytes.data(), bytes.size());
            std::vector<Zmx8u> expected = bytes.copy();
            model::copyForward(&expected[std::size_t(from)], &expected[std::size_t(to)], std::size_t(n), 1);
            if (worker) {
                ASSERT_EQ(ownsCopy_8u(bytes.data() + from, bytes.data() + to, n), bytes.data() + to);
            } else {
                ASSERT_EQ(zmxsCopy_8u(bytes.data() + from, bytes.data() + to, n), zmxStsNoErr);
            }
            ASSERT_TRUE(sameBytes(expected, bytes.copy())) << n << " bytes, distance " << d;
        }
}

TEST(Copying, ADestinationJustBehindRepeatsTheFirstByte) {
    for (int n : {100, 3200, 3201, 4000}) {
        std::vector<Zmx8u> bytes(std::size_t(n) + 1, 9);
        bytes[0] = 42;
        ASSERT_EQ(zmxsCopy_8u(bytes.data(), bytes.data() + 1, n), zmxStsNoErr);
        EXPECT_EQ(bytes, std::vector<Zmx8u>(std::size_t(n) + 1, 42)) << n;
    }
}

namespace {

// A rectangle copy of elements of the given size, source and destination in one block distance bytes apart.
template <class Copy>
void compareCopy(Rng& rng, Copy copy, int size, ZmxiSize roi, int srcStep, int dstStep, std::ptrdiff_t distance) {
    const auto reach = [&](int step) { // lowest and highest byte offset of a rectangle
        const std::ptrdiff_t last = std::ptrdiff_t(step) * (roi.height - 1);
        return std::pair(std::min<std::ptrdiff_t>(last, 0), std::max<std::ptrdiff_t>(last, 0) + roi.width * size);
    };
    const auto [s0, s1] = reach(srcStep);
    const auto [d0, d1] = reach(dstStep);
    const std::ptrdiff_t low = std::min(s0, d0 + distance), high = std::max(s1, d1 + distance);
    Guarded<Zmx8u> block(std::size_t(high - low));
    rng.bytes(block.data(), block.size());
    std::vector<Zmx8u> expected = block.copy();
    for (int y = 0; y < roi.height; ++y)
        model::copyForward(expected.data() - low + std::ptrdiff_t(srcStep) * y,
                           expected.data() - low + distance + std::ptrdiff_t(dstStep) * y, std::size_t(roi.width),
                           std::size_t(size));
    ASSERT_EQ(copy(block.data() - low, srcStep, block.data() - low + distance, dstStep, roi), zmxStsNoErr);
    ASSERT_TRUE(sameBytes(expected, block.copy())) << roi.width << " by " << roi.height << ", steps " << srcStep
                                                   << " and " << dstStep << ", distance " << distance;
}
const auto copy16 = [](const Zmx8u* s, int ss, Zmx8u* d, int ds, ZmxiSize roi) {
    return zmxiCopy_16s_C1R(reinterpret_cast<const Zmx16s*>(s), ss, reinterpret_cast<Zmx16s*>(d), ds, roi);
};
const auto copy32 = [](const Zmx8u* s, int ss, Zmx8u* d, int ds, ZmxiSize roi) {
    return zmxiCopy_32f_C1R(s, ss, d, ds, roi);
};

} // namespace

TEST(Copying, RectanglesApartAndOverlapping) {
    Rng rng(232);
    SCOPED_TRACE("seed 232");
    const auto both = [&](int width, int height, int srcGap, int dstGap, std::ptrdiff_t distance) {
        ASSERT_NO_FATAL_FAILURE(
            compareCopy(rng, copy16, 2, {width, height}, 2 * width + srcGap, 2 * width + dstGap, distance));
        ASSERT_NO_FATAL_FAILURE(
            compareCopy(rng, copy32, 4, {width, height}, 4 * width + srcGap, 4 * width + dstGap, distance));
    };
    for (int width : {1, 2, 7, 8, 33, 799, 800, 801, 1599, 1600, 1601, 2000})
        for (std::ptrdiff_t distance : {0,
                                        1,
                                        -1,
                                        2,
                                        -2,
                                        4,
                                        -4,
                                        6,
                                        8,
                                        12,
                                        16,
                                        -16,
                                        32,
                                        2 * width,
                                        2 * width + 1,
                                        -2 * width,
                                        4 * width - 1,
                                        4 * width,
                                        4 * width + 1,
                                        1 - 4 * width,
                                        -4 * width,
                                        -4 * width - 1})
            ASSERT_NO_FATAL_FAILURE(both(width, 1, 0, 0, distance)) << width << ", " << distance;
    for (int i = 0; i < 200; ++i)
        ASSERT_NO_FATAL_FAILURE(both(int(rng.range(1, 30)), int(rng.range(1, 6)), int(rng.range(0, 9)),
                                     int(rng.range(0, 9)), std::ptrdiff_t(rng.range(-2000, 2000))));
}

TEST(Copying, StepsOfRectanglesAreNotTested) {
    Rng rng(233);
    SCOPED_TRACE("seed 233");
    for (int step : {0, -1, 5, -40, -200})
        for (int other : {0, -3, 40, -64}) {
            ASSERT_NO_FATAL_FAILURE(compareCopy(rng, copy16, 2, {6, 5}, step, other, 3000));
            ASSERT_NO_FATAL_FAILURE(compareCopy(rng, copy32, 4, {6, 5}, step, other, 3000));
        }
}

TEST(Copying, AnyBitsOf32) {
    // Signalling NaNs are copied as bits.
    std::vector<Zmx32u> src, dst;
    for (int width : {40, 900}) {
        src.assign(std::size_t(width), 0x7FA00001u);
        dst.assign(std::size_t(width), 0);
        ASSERT_EQ(zmxiCopy_32f_C1R(src.data(), 4 * width, dst.data(), 4 * width, {width, 1}), zmxStsNoErr);
        EXPECT_EQ(dst, src);
    }
}

// --- order of argument tests ------------------------------------------------------------------------------------

namespace {

// A vector function: null pointers in order, then the length. call(bad) makes the call.
template <class Call> void vectorOrder(int pointers, Call call) {
    std::vector<ZmxStatus> tests(std::size_t(pointers), kNull);
    tests.push_back(kSize);
    checkOrder(tests, call);
}

struct Buffers {
    Zmx8u a[64], b[64], c[64];
    Buffers() {
        std::memset(a, 0x41, 64);
        std::memset(b, 0x42, 64);
        std::memset(c, 0x43, 64);
    }
    template <class T> T* at(Zmx8u (Buffers::*m)[64]) { return reinterpret_cast<T*>(this->*m); }
    void expectUntouched() const {
        for (int i = 0; i < 64; ++i) {
            ASSERT_EQ(a[i], 0x41);
            ASSERT_EQ(b[i], 0x42);
            ASSERT_EQ(c[i], 0x43);
        }
    }
};

} // namespace

TEST(ArgumentOrder, Vectors) {
    alignas(16) Buffers m;
    const auto A = &Buffers::a;
    const auto B = &Buffers::b;
    const auto C = &Buffers::c;
    vectorOrder(1, [&](const Bad& bad) { return zmxsZero_8u(bad.null(0, m.at<Zmx8u>(A)), bad.below1(1, 4)); });
    vectorOrder(1, [&](const Bad& bad) { return zmxsZero_16s(bad.null(0, m.at<Zmx16s>(A)), bad.below1(1, 4)); });
    vectorOrder(1, [&](const Bad& bad) { return zmxsSet_8u(1, bad.null(0, m.at<Zmx8u>(A)), bad.below1(1, 4)); });
    vectorOrder(2, [&](const Bad& bad) {
        return zmxsCopy_8u(bad.null(0, m.at<Zmx8u>(A)), bad.null(1, m.at<Zmx8u>(B)), bad.below1(2, 4));
    });
    vectorOrder(2, [&](const Bad& bad) {
        return zmxsConvert_16s32f(bad.null(0, m.at<Zmx16s>(A)), bad.null(1, m.at<Zmx32f>(B)), bad.below1(2, 4));
    });
    vectorOrder(2, [&](const Bad& bad) {
        return zmxsConvert_16u32f(bad.null(0, m.at<Zmx16u>(A)), bad.null(1, m.at<Zmx32f>(B)), bad.below1(2, 4));
    });
    vectorOrder(2, [&](const Bad& bad) {
        return zmxsConvert_32f16s_Sfs(bad.null(0, m.at<Zmx32f>(A)), bad.null(1, m.at<Zmx16s>(B)), bad.below1(2, 4),
                                      zmxRndNear, 0);
    });
    vectorOrder(2, [&](const Bad& bad) {
        return zmxsConvert_32f16u_Sfs(bad.null(0, m.at<Zmx32f>(A)), bad.null(1, m.at<Zmx16u>(B)), bad.below1(2, 4),
                                      zmxRndNear, 3);
    });
    // A constant of 0.0 does not save the tests.
    for (const Zmx32f val : {0.0f, 1.0f}) {
        vectorOrder(
            1, [&](const Bad& bad) { return zmxsAddC_32f_I(val, bad.null(0, m.at<Zmx32f>(A)), bad.below1(1, 4)); });
        vectorOrder(
            1, [&](const Bad& bad) { return zmxsSubC_32f_I(val, bad.null(0, m.at<Zmx32f>(A)), bad.below1(1, 4)); });
    }
    vectorOrder(2, [&](const Bad& bad) {
        return zmxsMul_32f_I(bad.null(0, m.at<Zmx32f>(A)), bad.null(1, m.at<Zmx32f>(B)), bad.below1(2, 4));
    });
    vectorOrder(3, [&](const Bad& bad) {
        return zmxsMul_16s(bad.null(0, m.at<Zmx16s>(A)), bad.null(1, m.at<Zmx16s>(B)), bad.null(2, m.at<Zmx16s>(C)),
                           bad.below1(3, 4));
    });
    vectorOrder(2, [&](const Bad& bad) {
        return zmxsMul_16s_I(bad.null(0, m.at<Zmx16s>(A)), bad.null(1, m.at<Zmx16s>(B)), bad.below1(2, 4));
    });
    for (int scale : {0, 1, 15, 32, -3, -20})
        vectorOrder(3, [&](const Bad& bad) {
            return zmxsMul_16u16s_Sfs(bad.null(0, m.at<Zmx16u>(A)), bad.null(1, m.at<Zmx16s>(B)),
                                      bad.null(2, m.at<Zmx16s>(C)), bad.below1(3, 4), scale);
        });
    for (const Zmx16u val : {Zmx16u(0), Zmx16u(5)}) {
        vectorOrder(2, [&](const Bad& bad) {
            return zmxsDivCRev_16u(bad.null(0, m.at<Zmx16u>(A)), val, bad.null(1, m.at<Zmx16u>(B)), bad.below1(2, 4));
        });
        vectorOrder(
            1, [&](const Bad& bad) { return zmxsDivCRev_16u_I(val, bad.null(0, m.at<Zmx16u>(A)), bad.below1(1, 4)); });
    }
    m.expectUntouched();
}

TEST(ArgumentOrder, Rectangles) {
    alignas(16) Buffers m;
    const auto A = &Buffers::a;
    const auto B = &Buffers::b;
    // Sizes before steps.
    checkOrder({kNull, kNull, kSize, kSize, kStep, kStep}, [&](const Bad& bad) {
        return zmxiConvert_8u16u_C1R(bad.null(0, m.at<Zmx8u>(A)), bad.below1(4, 8), bad.null(1, m.at<Zmx16u>(B)),
                                     bad.below1(5, 8), {bad.below1(2, 4), bad.below1(3, 2)});
    });
    // No step is tested: a good one or a bad one changes nothing.
    for (int step : {8, 0, -1})
        checkOrder({kNull, kNull, kSize, kSize}, [&](const Bad& bad) {
            const ZmxiSize roi{bad.below1(2, 4), bad.below1(3, 2)};
            const ZmxStatus st =
                zmxiCopy_32f_C1R(bad.null(0, m.at<Zmx32f>(A)), step, bad.null(1, m.at<Zmx32f>(B)), step, roi);
            EXPECT_EQ(zmxiCopy_16s_C1R(bad.null(0, m.at<Zmx16s>(A)), step, bad.null(1, m.at<Zmx16s>(B)), step, roi),
                      st);
            return st;
        });
    // Steps before sizes.
    checkOrder({kNull, kNull, kStep, kStep, kSize, kSize}, [&](const Bad& bad) {
        return zmxiAndC_32s_C1R(bad.null(0, m.at<Zmx32s>(A)), bad.below1(2, 8), 1, bad.null(1, m.at<Zmx32s>(B)),
                                bad.below1(3, 8), {bad.below1(4, 2), bad.below1(5, 2)});
    });
    checkOrder({kNull, kStep, kSize, kSize}, [&](const Bad& bad) {
        return zmxiAndC_32s_C1IR(1, bad.null(0, m.at<Zmx32s>(A)), bad.below1(1, 8),
                                 {bad.below1(2, 2), bad.below1(3, 2)});
    });
    // The mode before all else, sizes before steps.
    constexpr ZmxStatus mode = zmxStsNotSupportedModeErr;
    const auto modeOf = [](const Bad& bad) { return ZmxCmpOp(bad.any(0, 4, {1, 2, 3, 5, -1, 0x10000, 0x104})); };
    checkOrder({mode, kNull, kNull, kSize, kSize, kStep, kStep}, [&](const Bad& bad) {
        const ZmxiSize roi{bad.below1(3, 4), bad.below1(4, 2)};
        const ZmxStatus st =
            zmxiThreshold_Val_16u_C1R(bad.null(1, m.at<Zmx16u>(A)), bad.below1(5, 8), bad.null(2, m.at<Zmx16u>(B)),
                                      bad.below1(6, 8), roi, 3, 4, modeOf(bad));
        EXPECT_EQ(zmxiThreshold_16u_C1R(bad.null(1, m.at<Zmx16u>(A)), bad.below1(5, 8), bad.null(2, m.at<Zmx16u>(B)),
                                        bad.below1(6, 8), roi, 3, modeOf(bad)),
                  st);
        return st;
    });
    checkOrder({mode, kNull, kSize, kSize, kStep}, [&](const Bad& bad) {
        return zmxiThreshold_16u_C1IR(bad.null(1, m.at<Zmx16u>(A)), bad.below1(4, 8),
                                      {bad.below1(2, 4), bad.below1(3, 2)}, 3, modeOf(bad));
    });
    m.expectUntouched();
}

// --- conversions to and from single precision ---------------------------------------------------------------------

TEST(Conversion, WideningIsExact) {
    std::vector<Zmx16s> s(65536);
    std::vector<Zmx16u> u(65536);
    for (int i = 0; i < 65536; ++i) {
        s[std::size_t(i)] = Zmx16s(i - 32768);
        u[std::size_t(i)] = Zmx16u(i);
    }
    std::vector<Zmx32f> f(65536);
    ASSERT_EQ(zmxsConvert_16s32f(s.data(), f.data(), 65536), zmxStsNoErr);
    for (int i = 0; i < 65536; ++i) ASSERT_EQ(f[std::size_t(i)], Zmx32f(i - 32768));
    ASSERT_EQ(zmxsConvert_16u32f(u.data(), f.data(), 65536), zmxStsNoErr);
    for (int i = 0; i < 65536; ++i) ASSERT_EQ(f[std::size_t(i)], Zmx32f(i));
    for (int n : lengths())
        for (auto flush : kFlushes) {
            Guarded<Zmx16s> a{std::vector<Zmx16s>(s.begin() + 5, s.begin() + 5 + n), flush};
            Guarded<Zmx32f> d(std::size_t(n), flush);
            ASSERT_EQ(zmxsConvert_16s32f(a.data(), d.data(), n), zmxStsNoErr);
            ASSERT_EQ(d[std::size_t(n - 1)], Zmx32f(n + 4 - 32768));
        }
}

namespace {

Zmx16s to16s(Zmx32f v, ZmxRoundMode mode, int scale = 0) {
    Zmx16s d = 99;
    EXPECT_EQ(zmxsConvert_32f16s_Sfs(&v, &d, 1, mode, scale), zmxStsNoErr);
    return d;
}
Zmx16u to16u(Zmx32f v, ZmxRoundMode mode, int scale = 0) {
    Zmx16u d = 99;
    EXPECT_EQ(zmxsConvert_32f16u_Sfs(&v, &d, 1, mode, scale), zmxStsNoErr);
    return d;
}

} // namespace

TEST(Conversion, RoundingTo16Bits) {
    EXPECT_EQ(to16s(2.5f, zmxRndNear), 2);
    EXPECT_EQ(to16s(3.5f, zmxRndNear), 4);
    EXPECT_EQ(to16s(-2.5f, zmxRndNear), -2);
    EXPECT_EQ(to16s(-3.5f, zmxRndNear), -4);
    EXPECT_EQ(to16s(40000.0f, zmxRndNear), 32767);
    EXPECT_EQ(to16s(-40000.0f, zmxRndNear), -32768);
    EXPECT_EQ(to16s(kNaN, zmxRndNear), 0);
    EXPECT_EQ(to16s(kInfinity, zmxRndNear), 32767);
    EXPECT_EQ(to16s(-kInfinity, zmxRndNear), -32768);
    EXPECT_EQ(to16s(0.5f, zmxRndNear), 0);
    EXPECT_EQ(to16s(-0.5f, zmxRndNear), 0);
    EXPECT_EQ(to16s(32766.5f, zmxRndNear), 32766);
    EXPECT_EQ(to16s(2.5f, zmxRndFinancial), 3);
    EXPECT_EQ(to16s(-2.5f, zmxRndFinancial), -3);
    EXPECT_EQ(to16s(2.5f, ZmxRoundMode(7)), 3) << "every other value means the same";
    EXPECT_EQ(to16s(2.5f, ZmxRoundMode(-1)), 3);
    EXPECT_EQ(to16s(-2.9f, zmxRndZero), -2);
    EXPECT_EQ(to16s(2.9f, zmxRndZero), 2);
    // Just under a half: the sum with 0.5 does not fit in single precision and must not be rounded up to 1.
    EXPECT_EQ(to16s(0.49999997f, zmxRndFinancial), 0);
    EXPECT_EQ(to16s(-0.49999997f, zmxRndFinancial), 0);
    EXPECT_EQ(to16s(0.49999997f, zmxRndNear), 0);
    EXPECT_EQ(to16u(0.49999997f, zmxRndFinancial), 0);
    EXPECT_EQ(to16u(2.5f, zmxRndNear), 2);
    EXPECT_EQ(to16u(3.5f, zmxRndNear), 4);
    EXPECT_EQ(to16u(2.5f, zmxRndFinancial), 3);
    EXPECT_EQ(to16u(2.99f, zmxRndZero), 2);
    EXPECT_EQ(to16u(-0.5f, zmxRndFinancial), 0);
    EXPECT_EQ(to16u(-1.0f, zmxRndNear), 0);
    EXPECT_EQ(to16u(kNaN, zmxRndNear), 0);
    EXPECT_EQ(to16u(65534.5f, zmxRndNear), 65534);
    EXPECT_EQ(to16u(65534.5f, zmxRndFinancial), 65535);
    EXPECT_EQ(to16u(65535.0f, zmxRndZero), 65535);
    EXPECT_EQ(to16u(70000.0f, zmxRndNear), 65535);
    EXPECT_EQ(to16u(kInfinity, zmxRndNear), 65535);
}

TEST(Conversion, Scaling) {
    EXPECT_EQ(to16s(5.0f, zmxRndNear, 1), 2);
    EXPECT_EQ(to16s(7.0f, zmxRndNear, 1), 4);
    EXPECT_EQ(to16s(5.0f, zmxRndFinancial, 1), 3);
    EXPECT_EQ(to16s(5.25f, zmxRndNear, -2), 21);
    EXPECT_EQ(to16s(-5.25f, zmxRndNear, -2), -21);
    EXPECT_EQ(to16u(5.25f, zmxRndNear, -2), 21);
    EXPECT_EQ(to16s(3e38f, zmxRndNear, 120), 226) << "3e38 is 225.69 x 2^120";
    EXPECT_EQ(to16s(1e-38f, zmxRndNear, -130), 14) << "1e-38 is 13.61 / 2^130";
    EXPECT_EQ(to16s(1.0f, zmxRndNear, -15), 32767);
    EXPECT_EQ(to16s(-1.0f, zmxRndNear, -15), -32768);
    EXPECT_EQ(to16u(1.0f, zmxRndNear, -15), 32768);
    EXPECT_EQ(to16u(1.0f, zmxRndNear, -16), 65535);
    EXPECT_EQ(to16s(kNaN, zmxRndNear, 3), 0);
    EXPECT_EQ(to16s(kInfinity, zmxRndNear, 3), 32767);
}

TEST(Conversion, EveryScaleAndModeAgainstTheModel) {
    Rng rng(234);
    SCOPED_TRACE("seed 234");
    std::vector<int> scales;
    for (int s = -40; s <= 40; ++s) scales.push_back(s);
    for (int s : {126, 127, 149, 150, 200, 1030, 1100, 16383, 16440, 16500})
        for (int sign : {1, -1}) scales.push_back(sign * s);
    for (int scale : scales)
        for (int mode : {0, 1, 2, 3, -1, 32}) {
            const int n = scale == 0 ? 4000 : scale > 1000 || scale < -1000 ? 40 : 150;
            Guarded<Zmx32f> src(static_cast<std::size_t>(n));
            for (std::size_t i = 0; i < src.size(); ++i) {
                // Half of them of a size that the scale brings into range.
                src[i] = anySingle(rng);
                if (rng.oneIn(2)) src[i] = std::ldexp(src[i], scale);
            }
            Guarded<Zmx16s> s(src.size());
            Guarded<Zmx16u> u(src.size());
            ASSERT_EQ(zmxsConvert_32f16s_Sfs(src.data(), s.data(), n, ZmxRoundMode(mode), scale), zmxStsNoErr);
            ASSERT_EQ(zmxsConvert_32f16u_Sfs(src.data(), u.data(), n, ZmxRoundMode(mode), scale), zmxStsNoErr);
            for (std::size_t i = 0; i < src.size(); ++i) {
                ASSERT_EQ(s[i], model::toInt16(src[i], mode, scale))
                    << src[i] << ", mode " << mode << ", scale " << scale;
                ASSERT_EQ(u[i], model::toUint16(src[i], mode, scale))
                    << src[i] << ", mode " << mode << ", scale " << scale;
            }
        }
}

TEST(Conversion, EveryHalfInRange) {
    std::vector<Zmx32f> src;
    for (int i = -66000; i <= 66000; ++i) src.push_back(Zmx32f(i) / 2);
    const int n = int(src.size());
    std::vector<Zmx16s> s(src.size());
    std::vector<Zmx16u> u(src.size());
    for (int mode = 0; mode < 3; ++mode) {
        ASSERT_EQ(zmxsConvert_32f16s_Sfs(src.data(), s.data(), n, ZmxRoundMode(mode), 0), zmxStsNoErr);
        ASSERT_EQ(zmxsConvert_32f16u_Sfs(src.data(), u.data(), n, ZmxRoundMode(mode), 0), zmxStsNoErr);
        for (std::size_t i = 0; i < src.size(); ++i) {
            ASSERT_EQ(s[i], model::toInt16(src[i], mode, 0)) << src[i];
            ASSERT_EQ(u[i], model::toUint16(src[i], mode, 0)) << src[i];
        }
    }
}

// --- arithmetic in single precision
// ---------------------------------------------------------------------------------

TEST(SingleArithmetic, AConstantOfZeroTouchesNothing) {
    const std::vector<Zmx32u> bits{0x7FA00001u, 0xFFA00001u, 0x7FC00000u, 0x80000000u, 1u, 0x7F800000u};
    for (const Zmx32f zero : {0.0f, -0.0f}) {
        std::vector<Zmx32u> data = bits;
        ASSERT_EQ(zmxsAddC_32f_I(zero, reinterpret_cast<Zmx32f*>(data.data()), int(data.size())), zmxStsNoErr);
        EXPECT_EQ(data, bits);
        ASSERT_EQ(zmxsSubC_32f_I(zero, reinterpret_cast<Zmx32f*>(data.data()), int(data.size())), zmxStsNoErr);
        EXPECT_EQ(data, bits);
    }
}

TEST(SingleArithmetic, EachResultIsRounded) {
    Rng rng(235);
    SCOPED_TRACE("seed 235");
    for (int n : lengths())
        for (auto flush : kFlushes) {
            Guarded<Zmx32f> a(std::size_t(n), flush), b(std::size_t(n), flush);
            for (std::size_t i = 0; i < a.size(); ++i) {
                a[i] = anySingle(rng);
                b[i] = anySingle(rng);
            }
            const std::vector<Zmx32f> a0 = a.copy(), b0 = b.copy();
            const auto check = [&](const char* what, auto rule) {
                for (std::size_t i = 0; i < b0.size(); ++i) {
                    const Zmx32f expected = rule(i);
                    if (std::isnan(expected)) {
                        ASSERT_TRUE(std::isnan(b[i])) << what;
                    } else {
                        ASSERT_EQ(std::bit_cast<Zmx32u>(b[i]), std::bit_cast<Zmx32u>(expected)) << what << " " << b0[i];
                    }
                }
                std::memcpy(b.data(), b0.data(), b0.size() * 4);
            };
            const Zmx32f val = std::nextafter(Zmx32f(rng.range(-3000, 3000)), kInfinity);
            ASSERT_EQ(zmxsAddC_32f_I(val, b.data(), n), zmxStsNoErr);
            ASSERT_NO_FATAL_FAILURE(
                check("add", [&](std::size_t i) { return model::single(double(b0[i]) + double(val)); }));
            ASSERT_EQ(zmxsSubC_32f_I(val, b.data(), n), zmxStsNoErr);
            ASSERT_NO_FATAL_FAILURE(
                check("subtract", [&](std::size_t i) { return model::single(double(b0[i]) - double(val)); }));
            ASSERT_EQ(zmxsMul_32f_I(a.data(), b.data(), n), zmxStsNoErr);
            ASSERT_NO_FATAL_FAILURE(
                check("multiply", [&](std::size_t i) { return model::single(double(a0[i]) * double(b0[i])); }));
            ASSERT_TRUE(sameBytes(a0, a.copy()));
        }
}

// --- products and quotients of integers
// -------------------------------------------------------------------------------

TEST(Products, Saturate) {
    const Zmx16s a[6] = {256, -256, -32768, 32767, 181, -1}, b[6] = {128, 128, -32768, 1, 181, -32768};
    const Zmx16s expected[6] = {32767, -32768, 32767, 32767, 32761, 32767};
    Zmx16s d[6];
    ASSERT_EQ(zmxsMul_16s(a, b, d, 6), zmxStsNoErr);
    EXPECT_TRUE(sameBytes(expected, d, sizeof d));
}

TEST(Products, AgainstTheModel) {
    Rng rng(236);
    SCOPED_TRACE("seed 236");
    for (int n : lengths())
        for (auto flush : kFlushes) {
            const int reach = rng.oneIn(2) ? 32768 : 200;
            Guarded<Zmx16s> a(rng.vec<Zmx16s>(std::size_t(n), -reach, reach - 1), flush);
            Guarded<Zmx16s> b(rng.vec<Zmx16s>(std::size_t(n), -reach, reach - 1), flush), d(std::size_t(n), flush);
            std::vector<Zmx16s> expected;
            for (std::size_t i = 0; i < a.size(); ++i) expected.push_back(model::product(a[i], b[i]));
            ASSERT_EQ(zmxsMul_16s(a.data(), b.data(), d.data(), n), zmxStsNoErr);
            ASSERT_TRUE(sameBytes(expected, d.copy()));
            ASSERT_EQ(zmxsMul_16s_I(a.data(), b.data(), n), zmxStsNoErr);
            ASSERT_TRUE(sameBytes(expected, b.copy()));
        }
}

namespace {

Zmx16s scaledProduct(int a, int b, int scale) {
    const Zmx16u x = Zmx16u(a);
    const Zmx16s y = Zmx16s(b);
    Zmx16s d = 99;
    EXPECT_EQ(zmxsMul_16u16s_Sfs(&x, &y, &d, 1, scale), zmxStsNoErr);
    return d;
}

} // namespace

TEST(ScaledProducts, TiesGoToTheEvenNeighbour) {
    EXPECT_EQ(scaledProduct(1 << 14, 3, 15), 2);
    EXPECT_EQ(scaledProduct(1 << 14, 1, 15), 0);
    EXPECT_EQ(scaledProduct(1 << 14, 5, 15), 2);
    EXPECT_EQ(scaledProduct(1 << 14, -1, 15), 0);
    EXPECT_EQ(scaledProduct(1 << 14, -3, 15), -2);
    EXPECT_EQ(scaledProduct(1 << 14, -5, 15), -2);
    EXPECT_EQ(scaledProduct(1, 1, 1), 0);
    EXPECT_EQ(scaledProduct(1, 3, 1), 2);
    EXPECT_EQ(scaledProduct(1, 5, 1), 2);
    EXPECT_EQ(scaledProduct(1, -1, 1), 0);
    EXPECT_EQ(scaledProduct(1, -3, 1), -2);
    // Near the ends of 32 bits: 65535 x 32767 + 2^30 does not fit.
    EXPECT_EQ(scaledProduct(65535, 32767, 31), 1);
    EXPECT_EQ(scaledProduct(65535, -32768, 31), -1);
    EXPECT_EQ(scaledProduct(32768, -32768, 31), 0) << "minus a half";
    EXPECT_EQ(scaledProduct(65535, 32767, 16), 32767);
    EXPECT_EQ(scaledProduct(65535, -32768, 16), -32768);
}

TEST(ScaledProducts, LeftShiftsTakeTheSaturatedProduct) {
    EXPECT_EQ(scaledProduct(3, 5, -1), 30);
    EXPECT_EQ(scaledProduct(3, -5, -4), -240);
    EXPECT_EQ(scaledProduct(1, 1, -14), 16384);
    EXPECT_EQ(scaledProduct(2, 1, -14), 32767);
    EXPECT_EQ(scaledProduct(2, -1, -14), -32768);
    EXPECT_EQ(scaledProduct(3, -1, -14), -32768);
    EXPECT_EQ(scaledProduct(65535, 32767, -14), 32767);
    EXPECT_EQ(scaledProduct(65535, -32768, -14), -32768);
    for (int scale : {-15, -16, -31, -32, -33, -1000, -2147483647 - 1}) {
        EXPECT_EQ(scaledProduct(1, 1, scale), 32767);
        EXPECT_EQ(scaledProduct(65535, -1, scale), -32768);
        EXPECT_EQ(scaledProduct(0, -1, scale), 0);
        EXPECT_EQ(scaledProduct(1, 0, scale), 0);
    }
    for (int scale : {32, 33, 64, 2147483647}) {
        EXPECT_EQ(scaledProduct(65535, 32767, scale), 0);
        EXPECT_EQ(scaledProduct(65535, -32768, scale), 0);
    }
}

TEST(ScaledProducts, EveryScaleAgainstTheModel) {
    Rng rng(237);
    SCOPED_TRACE("seed 237");
    for (int scale = -40; scale <= 40; ++scale)
        for (int round = 0; round < 30; ++round) {
            const std::size_t n = std::size_t(rng.range(1, 200));
            Guarded<Zmx16u> a(n);
            Guarded<Zmx16s> b(n), d(n);
            for (std::size_t i = 0; i < n; ++i) {
                // Full range, small products, and powers of two: ties.
                a[i] = Zmx16u(round % 3 == 0   ? rng.range(0, 65535)
                              : round % 3 == 1 ? rng.range(0, 20)
                                               : 1 << rng.range(0, 15));
                b[i] = Zmx16s(round % 2 == 0 ? rng.range(-32768, 32767) : rng.range(-40, 40));
                if (rng.oneIn(30)) a[i] = 65535;
                if (rng.oneIn(30)) b[i] = Zmx16s(rng.oneIn(2) ? -32768 : 32767);
            }
            std::vector<Zmx16s> expected;
            for (std::size_t i = 0; i < n; ++i) expected.push_back(model::scaledProduct(a[i], b[i], scale));
            ASSERT_EQ(zmxsMul_16u16s_Sfs(a.data(), b.data(), d.data(), int(n), scale), zmxStsNoErr);
            ASSERT_TRUE(sameBytes(expected, d.copy())) << "scale " << scale;
            // In place, as the library calls it.
            ASSERT_EQ(zmxsMul_16u16s_Sfs(a.data(), b.data(), b.data(), int(n), scale), zmxStsNoErr);
            ASSERT_TRUE(sameBytes(expected, b.copy())) << "scale " << scale;
        }
}

namespace {

struct Quotients {
    std::vector<Zmx16u> q;
    ZmxStatus status;
};
Quotients divide(std::vector<Zmx16u> d, int val) {
    std::vector<Zmx16u> out(d.size(), 99);
    const ZmxStatus status = zmxsDivCRev_16u(d.data(), Zmx16u(val), out.data(), int(d.size()));
    EXPECT_EQ(zmxsDivCRev_16u_I(Zmx16u(val), d.data(), int(d.size())), status);
    EXPECT_EQ(d, out) << "in place";
    return {out, status};
}

} // namespace

TEST(Quotients, Literal) {
    EXPECT_EQ(divide({2}, 1).q[0], 0);
    EXPECT_EQ(divide({2}, 3).q[0], 2);
    EXPECT_EQ(divide({2}, 5).q[0], 2);
    EXPECT_EQ(divide({1}, 65535).q[0], 65535);
    const Quotients zero = divide({3, 0, 9}, 0);
    EXPECT_EQ(zero.q, (std::vector<Zmx16u>{0, 0, 0}));
    EXPECT_EQ(zero.status, zmxStsDivByZero);
    EXPECT_EQ(divide({3, 9}, 0).q, (std::vector<Zmx16u>{0, 0}));
    EXPECT_EQ(divide({3, 9}, 0).status, zmxStsNoErr);
    const Quotients five = divide({1, 0, 2, 5}, 5);
    EXPECT_EQ(five.q, (std::vector<Zmx16u>{5, 65535, 2, 1}));
    EXPECT_EQ(five.status, zmxStsDivByZero);
    EXPECT_EQ(divide({5}, 5).status, zmxStsNoErr);
    // 49153 / 32769 is 1.49998: an odd quotient whose fraction is just under a half is lifted; an even one is not.
    EXPECT_EQ((49153u << 16) / 32769, 0x17FFFu);
    EXPECT_EQ(divide({32769}, 49153).q[0], 2);
    EXPECT_EQ((32767u << 16) / 65535, 0x7FFFu);
    EXPECT_EQ(divide({65535}, 32767).q[0], 0);
}

TEST(Quotients, EveryDivisorAndEveryDividend) {
    std::vector<Zmx16u> d(65536), out(65536);
    for (std::size_t i = 0; i < d.size(); ++i) d[i] = Zmx16u(i);
    for (int val : {1, 2, 3, 255, 256, 32767, 32768, 32769, 65534, 65535}) {
        ASSERT_EQ(zmxsDivCRev_16u(d.data(), Zmx16u(val), out.data(), 65536), zmxStsDivByZero);
        for (std::size_t i = 0; i < d.size(); ++i)
            ASSERT_EQ(out[i], model::quotient(Zmx16u(val), d[i])) << val << " / " << i;
        ASSERT_EQ(zmxsDivCRev_16u(d.data() + 1, Zmx16u(val), out.data(), 65535), zmxStsNoErr);
    }
    const std::vector<Zmx16u> few{1, 2, 3, 4, 5, 7, 8, 10, 255, 256, 32768, 43691, 65535};
    for (int val = 1; val < 65536; ++val) {
        ASSERT_EQ(zmxsDivCRev_16u(few.data(), Zmx16u(val), out.data(), int(few.size())), zmxStsNoErr);
        for (std::size_t i = 0; i < few.size(); ++i) ASSERT_EQ(out[i], model::quotient(Zmx16u(val), few[i])) << val;
    }
}

// --- rectangles
// -----------------------------------------------------------------------------------------------------------

TEST(Rectangles, BytesWidened) {
    Rng rng(238);
    SCOPED_TRACE("seed 238");
    for (int i = 0; i < 300; ++i) {
        const ZmxiSize roi{int(rng.range(1, 40)), int(rng.range(1, 8))};
        // One in three without gaps on either side: the rows run on.
        const int srcStep = roi.width + (i % 3 ? int(rng.range(0, 5)) : 0);
        const int dstStep = i % 3 ? 2 * roi.width + int(rng.range(0, 5)) : 2 * srcStep;
        const auto flush = i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart;
        Guarded<Zmx8u> src(rng.vec<Zmx8u>(std::size_t(srcStep * (roi.height - 1) + roi.width), 0, 255), flush);
        Guarded<Zmx8u> dst(std::size_t(dstStep * (roi.height - 1) + 2 * roi.width), flush);
        dst.fill(0x5A);
        std::vector<Zmx8u> expected = dst.copy();
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x) {
                const Zmx16u v = src[std::size_t(y * srcStep + x)];
                std::memcpy(&expected[std::size_t(y * dstStep + 2 * x)], &v, 2);
            }
        ASSERT_EQ(zmxiConvert_8u16u_C1R(src.data(), srcStep, reinterpret_cast<Zmx16u*>(dst.data()), dstStep, roi),
                  zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected, dst.copy()));
    }
}

TEST(Rectangles, BitsMasked) {
    Rng rng(239);
    SCOPED_TRACE("seed 239");
    for (int i = 0; i < 300; ++i) {
        const ZmxiSize roi{int(rng.range(1, 40)), int(rng.range(1, 8))};
        const int srcStep = 4 * roi.width + int(rng.range(0, 6)), dstStep = 4 * roi.width + int(rng.range(0, 6));
        const Zmx32s mask = i % 3 ? Zmx32s(rng.next()) : Zmx32s(0x7FFFFFFF);
        const auto flush = i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart;
        Guarded<Zmx8u> src(std::size_t(srcStep * (roi.height - 1) + 4 * roi.width), flush);
        Guarded<Zmx8u> dst(std::size_t(dstStep * (roi.height - 1) + 4 * roi.width), flush);
        rng.bytes(src.data(), src.size());
        dst.fill(0x5A);
        std::vector<Zmx8u> expected = dst.copy(), inPlace = src.copy();
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x) {
                Zmx32s v;
                std::memcpy(&v, src.data() + y * srcStep + 4 * x, 4);
                v &= mask;
                std::memcpy(&expected[std::size_t(y * dstStep + 4 * x)], &v, 4);
                std::memcpy(&inPlace[std::size_t(y * srcStep + 4 * x)], &v, 4);
            }
        ASSERT_EQ(zmxiAndC_32s_C1R(reinterpret_cast<const Zmx32s*>(src.data()), srcStep, mask,
                                   reinterpret_cast<Zmx32s*>(dst.data()), dstStep, roi),
                  zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected, dst.copy()));
        ASSERT_EQ(zmxiAndC_32s_C1IR(mask, reinterpret_cast<Zmx32s*>(src.data()), srcStep, roi), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(inPlace, src.copy()));
    }
}

TEST(Thresholds, EqualSamplesAreNeverReplaced) {
    Zmx16u v[4] = {4095, 4096, 65535, 0};
    ASSERT_EQ(zmxiThreshold_16u_C1IR(v, 8, {4, 1}, 4095, zmxCmpGreater), zmxStsNoErr);
    EXPECT_TRUE(sameBytes(std::vector<Zmx16u>{4095, 4095, 4095, 0}, std::vector<Zmx16u>(v, v + 4)));
    Zmx16u d[4];
    ASSERT_EQ(zmxiThreshold_Val_16u_C1R(v, 8, d, 8, {4, 1}, 4095, 7, zmxCmpGreater), zmxStsNoErr);
    EXPECT_TRUE(sameBytes(v, d, 8));
    ASSERT_EQ(zmxiThreshold_Val_16u_C1R(v, 8, d, 8, {4, 1}, 4095, 60000, zmxCmpLess), zmxStsNoErr);
    EXPECT_EQ(d[3], 60000);
    EXPECT_EQ(d[0], 4095);
    // Unsigned: 0x8000 is above 0x7FFF.
    v[0] = 0x8000;
    ASSERT_EQ(zmxiThreshold_16u_C1IR(v, 8, {1, 1}, 0x7FFF, zmxCmpGreater), zmxStsNoErr);
    EXPECT_EQ(v[0], 0x7FFF);
}

TEST(Thresholds, AgainstTheModel) {
    Rng rng(240);
    SCOPED_TRACE("seed 240");
    for (int i = 0; i < 800; ++i) {
        const ZmxiSize roi{int(rng.range(1, 20)), int(rng.range(1, 6))};
        // Odd steps lose their last byte at each row; very small ones make rows overlap.
        const int srcStep = i % 5 ? 2 * roi.width + int(rng.range(0, 7)) : int(rng.range(1, 2 * roi.width));
        const int dstStep = i % 7 ? 2 * roi.width + int(rng.range(0, 7)) : int(rng.range(1, 2 * roi.width));
        const auto extent = [&](int step) { return std::size_t(step / 2 * 2 * (roi.height - 1) + 2 * roi.width); };
        const bool greater = i % 2;
        const auto mode = greater ? zmxCmpGreater : zmxCmpLess;
        const Zmx16u bound = Zmx16u(i % 3 ? rng.range(0, 65535) : rng.range(0, 1) * 65535), value = Zmx16u(rng.next());
        const auto flush = i % 4 < 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart;
        // At an even address that is not a multiple of four as well.
        const std::size_t lead = 2 * std::size_t(rng.range(0, 1));
        Guarded<Zmx8u> src(lead + extent(srcStep), flush), dst(lead + extent(dstStep), flush);
        rng.bytes(src.data(), src.size());
        for (std::size_t k = lead; k < src.size(); k += 2)
            if (rng.oneIn(4)) std::memcpy(src.data() + k, &bound, 2);
        rng.bytes(dst.data(), dst.size());
        std::vector<Zmx8u> expected = dst.copy(), inPlace = src.copy();
        auto* s = reinterpret_cast<Zmx16u*>(src.data() + lead);
        auto* d = reinterpret_cast<Zmx16u*>(dst.data() + lead);

        model::threshold(src.data() + lead, srcStep, expected.data() + lead, dstStep, roi, bound, value, greater);
        ASSERT_EQ(zmxiThreshold_Val_16u_C1R(s, srcStep, d, dstStep, roi, bound, value, mode), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected, dst.copy()));
        model::threshold(src.data() + lead, srcStep, expected.data() + lead, dstStep, roi, bound, bound, greater);
        ASSERT_EQ(zmxiThreshold_16u_C1R(s, srcStep, d, dstStep, roi, bound, mode), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected, dst.copy()));
        model::threshold(inPlace.data() + lead, srcStep, inPlace.data() + lead, srcStep, roi, bound, bound, greater);
        ASSERT_EQ(zmxiThreshold_16u_C1IR(s, srcStep, roi, bound, mode), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(inPlace, src.copy()));
    }
}
