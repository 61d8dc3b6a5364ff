// Rows of 16-bit samples as two planes of bytes, and back.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/support/arguments.h"
#include "tests/support/byteorder.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"
#include "zmxj.h"

#include <climits>

namespace {

// The planes are the second and the first byte of each sample in memory: high and low on a little-endian processor.
constexpr int kHigh = kLittleEndian ? 0 : 1, kLow = 1 - kHigh;

// Two planes in that order.
template <class Byte> struct Halves {
    Byte* planes[2];
    Halves(Byte* high, Byte* low) {
        planes[kHigh] = high;
        planes[kLow] = low;
    }
};

} // namespace

TEST(TiffRows, HighBytesThenLowBytes) {
    const Zmx16u samples[] = {0x0000, 0x1234, 0xFF00, 0x00FF, 0xABCD};
    Zmx8u high[5], low[5];
    ASSERT_EQ(zmxiSplitRow_TIFF_16u8u_C1(samples, Halves<Zmx8u>(high, low).planes, 5), zmxStsNoErr);
    const Zmx8u expectedHigh[] = {0x00, 0x12, 0xFF, 0x00, 0xAB}, expectedLow[] = {0x00, 0x34, 0x00, 0xFF, 0xCD};
    EXPECT_TRUE(sameBytes(expectedHigh, high, 5));
    EXPECT_TRUE(sameBytes(expectedLow, low, 5));
    Zmx16u joined[5];
    ASSERT_EQ(zmxiJoinRow_TIFF_8u16u_C1(Halves<const Zmx8u>(high, low).planes, joined, 5), zmxStsNoErr);
    EXPECT_TRUE(sameBytes(samples, joined, sizeof samples));
    ASSERT_EQ(zmxiJoinRow_TIFF_8u16u_C1(Halves<const Zmx8u>(low, high).planes, joined, 5), zmxStsNoErr);
    EXPECT_EQ(joined[1], 0x3412);
}

TEST(TiffRows, EveryLengthAgainstTheBytes) {
    constexpr std::uint64_t seed = 824;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (auto flush : {GuardedBlock::AtEnd, GuardedBlock::AtStart})
        for (std::size_t n = 1; n <= 300; ++n) {
            Guarded<Zmx16u> samples(rng.vec<Zmx16u>(n, 0, 65535), flush), joined(n, flush);
            Guarded<Zmx8u> second(n, flush), first(n, flush);
            Zmx8u* const planes[2] = {second.data(), first.data()};
            ASSERT_EQ(zmxiSplitRow_TIFF_16u8u_C1(samples.data(), planes, int(n)), zmxStsNoErr);
            const auto* bytes = reinterpret_cast<const Zmx8u*>(samples.data());
            for (std::size_t i = 0; i < n; ++i) {
                ASSERT_EQ(second[i], bytes[2 * i + 1]) << n;
                ASSERT_EQ(first[i], bytes[2 * i]) << n;
            }
            ASSERT_EQ(zmxiJoinRow_TIFF_8u16u_C1(planes, joined.data(), int(n)), zmxStsNoErr);
            ASSERT_EQ(joined.copy(), samples.copy()) << n;
        }
}

TEST(TiffRows, EverySample) {
    std::vector<Zmx16u> all(65536), back(65536);
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = Zmx16u(i);
    std::vector<Zmx8u> high(65536), low(65536);
    const Halves<Zmx8u> halves(high.data(), low.data());
    ASSERT_EQ(zmxiSplitRow_TIFF_16u8u_C1(all.data(), halves.planes, 65536), zmxStsNoErr);
    for (std::size_t i = 0; i < all.size(); ++i) {
        ASSERT_EQ(high[i], i >> 8);
        ASSERT_EQ(low[i], i & 255);
    }
    ASSERT_EQ(zmxiJoinRow_TIFF_8u16u_C1(halves.planes, back.data(), 65536), zmxStsNoErr);
    EXPECT_EQ(back, all);
}

TEST(TiffRows, Arguments) {
    Zmx16u samples[4] = {};
    Zmx8u bytes[8] = {};
    Zmx8u* const planes[2] = {bytes, bytes + 4};
    Zmx8u* const nulls[2] = {nullptr, nullptr};
    for (int bad : {0, -1, INT_MIN}) {
        // A length below 1 is a step error here, not a size error, and the planes are not looked at.
        EXPECT_EQ(zmxiSplitRow_TIFF_16u8u_C1(samples, planes, bad), zmxStsStepErr);
        EXPECT_EQ(zmxiJoinRow_TIFF_8u16u_C1(planes, samples, bad), zmxStsStepErr);
        EXPECT_EQ(zmxiSplitRow_TIFF_16u8u_C1(samples, nulls, bad), zmxStsStepErr);
        EXPECT_EQ(zmxiJoinRow_TIFF_8u16u_C1(nulls, samples, bad), zmxStsStepErr);
    }
    checkOrder({kNull, kNull, kStep}, [&](const Bad& bad) {
        return zmxiSplitRow_TIFF_16u8u_C1(bad.null(0, samples), bad.null(1, planes), bad.below1(2, 4));
    });
    checkOrder({kNull, kNull, kStep}, [&](const Bad& bad) {
        return zmxiJoinRow_TIFF_8u16u_C1(bad.null(0, planes), bad.null(1, samples), bad.below1(2, 4));
    });
}

TEST(TiffRows, TheSameBytesFromEveryBuild) {
    Rng rng(825);
    const std::vector<Zmx16u> samples = rng.vec<Zmx16u>(1001, 0, 65535);
    std::vector<Zmx8u> planes(2002);
    zmxiSplitRow_TIFF_16u8u_C1(samples.data(), Halves<Zmx8u>(planes.data(), planes.data() + 1001).planes, 1001);
    EXPECT_EQ(Digest().add(planes).get(), 0x3DFD1EFA61E3A8BAu);
    const std::vector<Zmx8u> bytes = rng.vec<Zmx8u>(2002, 0, 255);
    std::vector<Zmx16u> joined(1001);
    zmxiJoinRow_TIFF_8u16u_C1(Halves<const Zmx8u>(bytes.data(), bytes.data() + 1001).planes, joined.data(), 1001);
    EXPECT_EQ(Digest().add(joined).get(), 0xD6C858646E6463E7u);
}
