// The level shifts of 128: values, order of argument tests, rows in memory, and the sharing out of rows.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/levelshift.h"
#include "tests/jpeg/support/sharing.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"
#include "tests/support/threads.cpp"
#include "zmxj.h"

#include <algorithm>
#include <numeric>
#include <omp.h>

namespace {

struct Add {
    using Src = Zmx16s;
    using Dst = Zmx8u;
    static constexpr auto shift = zmxiAdd128_JPEG_16s8u_C1R;
    static Dst model(Src v) { return model::add128(v); }
    static constexpr std::uint64_t kDigest = 0xF4A8E08AD9F81F48u;
};
struct Sub {
    using Src = Zmx8u;
    using Dst = Zmx16s;
    static constexpr auto shift = zmxiSub128_JPEG_8u16s_C1R;
    static Dst model(Src v) { return model::sub128(v); }
    static constexpr std::uint64_t kDigest = 0x0477A949411F1AF3u;
};

template <class T> const T* as(const Zmx8u* p) { return reinterpret_cast<const T*>(p); }
template <class T> T* as(Zmx8u* p) { return reinterpret_cast<T*>(p); }

// A rectangle in bytes, no longer than it must be.
std::size_t extent(int step, ZmxiSize roi, std::size_t element) {
    return std::size_t(step) * std::size_t(roi.height - 1) + std::size_t(roi.width) * element;
}

template <class Way> void plainShift(const Zmx8u* src, int srcStep, Zmx8u* dst, int dstStep, ZmxiSize roi) {
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            typename Way::Src s;
            std::memcpy(&s, src + std::ptrdiff_t(y) * srcStep + std::ptrdiff_t(sizeof s) * x, sizeof s);
            const typename Way::Dst d = Way::model(s);
            std::memcpy(dst + std::ptrdiff_t(y) * dstStep + std::ptrdiff_t(sizeof d) * x, &d, sizeof d);
        }
}

// One call on fresh random buffers, compared with the model, what lies between the rows included.
template <class Way> void compare(Rng& rng, ZmxiSize roi, int srcStep, int dstStep, GuardedBlock::Flush flush) {
    Guarded<Zmx8u> src(extent(srcStep, roi, sizeof(typename Way::Src)), flush);
    Guarded<Zmx8u> dst(extent(dstStep, roi, sizeof(typename Way::Dst)), flush);
    rng.bytes(src.data(), src.size());
    for (std::size_t i = 0; i + 1 < src.size(); i += 2)
        if (sizeof(typename Way::Src) == 2 && rng.oneIn(2)) {
            const Zmx16s near = Zmx16s(rng.range(-140, 140));
            std::memcpy(src.data() + i, &near, 2);
        }
    rng.bytes(dst.data(), dst.size());
    const std::vector<Zmx8u> srcBefore = src.copy();
    std::vector<Zmx8u> expected = dst.copy();
    plainShift<Way>(src.data(), srcStep, expected.data(), dstStep, roi);
    ASSERT_EQ(Way::shift(as<typename Way::Src>(src.data()), srcStep, as<typename Way::Dst>(dst.data()), dstStep, roi),
              zmxStsNoErr);
    ASSERT_TRUE(sameBytes(expected, dst.copy()))
        << roi.width << " by " << roi.height << ", steps " << srcStep << " and " << dstStep;
    ASSERT_TRUE(sameBytes(srcBefore, src.copy()));
}

} // namespace

template <class Way> class LevelShiftRows : public ::testing::Test {};
using Ways = ::testing::Types<Add, Sub>;
TYPED_TEST_SUITE(LevelShiftRows, Ways);

TEST(LevelShift, AddSaturates) {
    const Zmx16s src[6] = {127, 128, -128, -129, 32767, -32768};
    const Zmx8u expected[6] = {255, 255, 0, 0, 255, 0};
    Zmx8u dst[6];
    ASSERT_EQ(zmxiAdd128_JPEG_16s8u_C1R(src, 12, dst, 6, {6, 1}), zmxStsNoErr);
    EXPECT_TRUE(sameBytes(expected, dst, 6));
}

TEST(LevelShift, SubWidens) {
    const Zmx8u src[3] = {0, 128, 255};
    const Zmx16s expected[3] = {-128, 0, 127};
    Zmx16s dst[3];
    ASSERT_EQ(zmxiSub128_JPEG_8u16s_C1R(src, 3, dst, 6, {3, 1}), zmxStsNoErr);
    EXPECT_TRUE(sameBytes(expected, dst, 6));
}

TEST(LevelShift, EveryValue) {
    std::vector<Zmx16s> wide(65536);
    std::iota(wide.begin(), wide.end(), Zmx16s(-32768));
    std::vector<Zmx8u> narrow(65536);
    ASSERT_EQ(zmxiAdd128_JPEG_16s8u_C1R(wide.data(), 512, narrow.data(), 256, {256, 256}), zmxStsNoErr);
    for (int v = -32768; v <= 32767; ++v)
        ASSERT_EQ(narrow[std::size_t(v + 32768)], v < -128 ? 0 : v > 127 ? 255 : v + 128) << v;
    std::vector<Zmx8u> bytes(256);
    std::iota(bytes.begin(), bytes.end(), Zmx8u(0));
    ASSERT_EQ(zmxiSub128_JPEG_8u16s_C1R(bytes.data(), 16, wide.data(), 32, {16, 16}), zmxStsNoErr);
    for (int v = 0; v < 256; ++v) ASSERT_EQ(wide[std::size_t(v)], v - 128);
}

TYPED_TEST(LevelShiftRows, EachPointerIsFollowedByItsStep) {
    using Src = typename TypeParam::Src;
    using Dst = typename TypeParam::Dst;
    const std::vector<Src> src(16, Src(1));
    std::vector<Dst> dst(16, Dst(99));
    const int before = threadsAsked();
    checkOrder({kNull, kStep, kNull, kStep, kSize, kSize}, [&](const Bad& bad) {
        return TypeParam::shift(bad.null(0, src.data()), bad.below1(1, 8), bad.null(2, dst.data()), bad.below1(3, 8),
                                {bad.below1(4, 4), bad.below1(5, 2)});
    });
    EXPECT_EQ(dst, std::vector<Dst>(16, Dst(99)));
    EXPECT_EQ(threadsAsked(), before);
}

TYPED_TEST(LevelShiftRows, RowsInMemory) {
    Rng rng(211);
    SCOPED_TRACE("seed 211");
    for (int i = 0; i < 400; ++i) {
        const ZmxiSize roi{int(rng.range(1, i % 3 ? 20 : 70)), int(rng.range(1, 9))};
        const int srcRow = roi.width * int(sizeof(typename TypeParam::Src));
        const int dstRow = roi.width * int(sizeof(typename TypeParam::Dst));
        // From no gap to a gap, odd steps too; and steps so small that rows overlap, where the later row wins.
        const int srcStep = i % 4 == 0 ? int(rng.range(1, srcRow)) : srcRow + int(rng.range(0, 9));
        const int dstStep = i % 5 == 0 ? int(rng.range(1, dstRow)) : dstRow + int(rng.range(0, 9));
        ASSERT_NO_FATAL_FAILURE(
            compare<TypeParam>(rng, roi, srcStep, dstStep, i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart));
    }
    ASSERT_NO_FATAL_FAILURE(compare<TypeParam>(rng, {1, 1}, 1, 1, GuardedBlock::AtEnd));
    ASSERT_NO_FATAL_FAILURE(compare<TypeParam>(rng, {1, 500}, 3, 5, GuardedBlock::AtEnd));
    ASSERT_NO_FATAL_FAILURE(compare<TypeParam>(rng, {5000, 1}, 10000, 10000, GuardedBlock::AtEnd));
    // A single row: its step is tested and then of no account.
    ASSERT_NO_FATAL_FAILURE(compare<TypeParam>(rng, {7, 1}, 2147483647, 1, GuardedBlock::AtEnd));
}

TYPED_TEST(LevelShiftRows, TheSameBytesFromAnyNumberOfThreads) {
    Rng rng(212);
    SCOPED_TRACE("seed 212");
    for (ZmxiSize roi : {ZmxiSize{8, 8}, ZmxiSize{128, 64}, ZmxiSize{8192, 1}, ZmxiSize{129, 64}, ZmxiSize{8193, 1},
                         ZmxiSize{1, 8193}, ZmxiSize{301, 97}, ZmxiSize{3000, 3}})
        ASSERT_NO_FATAL_FAILURE(checkSharing(roi, true, [&] {
            compare<TypeParam>(rng, roi, roi.width * int(sizeof(typename TypeParam::Src)) + 1,
                               roi.width * int(sizeof(typename TypeParam::Dst)) + 3, GuardedBlock::AtEnd);
        }));
}

TYPED_TEST(LevelShiftRows, InsideAnotherRegion) {
    using Src = typename TypeParam::Src;
    using Dst = typename TypeParam::Dst;
    setThreads(3);
    const ZmxiSize roi{200, 90};
    const std::size_t n = 200 * 90;
    const std::vector<Src> src = Rng(213).vec<Src>(n, -300, 300);
    std::vector<Dst> expected(n);
    std::transform(src.begin(), src.end(), expected.begin(), TypeParam::model);
    std::vector<std::vector<Dst>> dst(4, std::vector<Dst>(n));
    std::vector<ZmxStatus> status(4, -1);
#pragma omp parallel for num_threads(4)
    for (int i = 0; i < 4; ++i)
        status[std::size_t(i)] = TypeParam::shift(src.data(), 200 * int(sizeof(Src)), dst[std::size_t(i)].data(),
                                                  200 * int(sizeof(Dst)), roi);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(status[std::size_t(i)], zmxStsNoErr);
        EXPECT_TRUE(sameBytes(expected, dst[std::size_t(i)]));
    }
    setThreads(1);
}

TYPED_TEST(LevelShiftRows, Digest) {
    using Src = typename TypeParam::Src;
    using Dst = typename TypeParam::Dst;
    const std::vector<Src> src = Rng(214).vec<Src>(150 * 70, -400, 400);
    std::vector<Dst> dst(150 * 70);
    ASSERT_EQ(TypeParam::shift(src.data(), 150 * int(sizeof(Src)), dst.data(), 150 * int(sizeof(Dst)), {150, 70}),
              zmxStsNoErr);
    EXPECT_EQ(Digest().add(dst).get(), TypeParam::kDigest) << std::hex << Digest().add(dst).get();
}
