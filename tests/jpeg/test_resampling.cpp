// Chroma resampling by two, rectangles and rows: values, what lies outside, order of argument tests, rows in
// memory, and the sharing out of rows.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/resampling.h"
#include "tests/jpeg/support/sharing.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"
#include "tests/support/threads.cpp"
#include "zmxj.h"

#include <numeric>
#include <string>

namespace {

// What a rectangle function reads for `n` samples of the destination in one direction: the samples from lo to
// hi.
struct Reach {
    int lo, hi;
};
Reach same(int n) { return {0, n - 1}; }
Reach doubled(int n) { return {-1, n / 2}; } // the last of an odd number is an even position: nothing behind it
Reach halved(int n) { return {0, 2 * n - 1}; }

struct Rectangle {
    const char* name;
    ZmxStatus (*call)(const Zmx8u*, int, ZmxiSize, Zmx8u*, int, ZmxiSize);
    int (*model)(model::Plane, int x, int y);
    Reach (*columns)(int);
    Reach (*rows)(int);
    bool shared;
    std::uint64_t digest;
};
void PrintTo(const Rectangle& r, std::ostream* out) { *out << r.name; }

const Rectangle rectangles[] = {
    {"UpH2V1", zmxiSampleUpH2V1_JPEG_8u_C1R, model::upH2V1, doubled, same, false, 0x6D0AAB5E8C8A7DF7u},
    {"UpH2V2", zmxiSampleUpH2V2_JPEG_8u_C1R, model::upH2V2, doubled, doubled, true, 0x561766DBC7E52F81u},
    {"DownH2V1", zmxiSampleDownH2V1_JPEG_8u_C1R, model::downH2V1, halved, same, true, 0x4B1F57F7ACE95B22u},
    {"DownH2V2", zmxiSampleDownH2V2_JPEG_8u_C1R, model::downH2V2, halved, halved, true, 0x64E59936F4FADF34u},
};

// A random source of exactly what is read, between guard pages.
struct Source {
    Reach columns, rows;
    int step;
    Guarded<Zmx8u> block;

    Source(const Rectangle& f, ZmxiSize dst, int gap, GuardedBlock::Flush flush, Rng& rng)
        : columns(f.columns(dst.width)), rows(f.rows(dst.height)), step(columns.hi - columns.lo + 1 + gap),
          block(std::size_t(rows.hi - rows.lo) * std::size_t(step) + std::size_t(columns.hi - columns.lo + 1), flush) {
        rng.bytes(block.data(), block.size());
    }
    const Zmx8u* origin() { return block.data() - rows.lo * step - columns.lo; }
};

class Resampling : public ::testing::TestWithParam<Rectangle> {
protected:
    void compare(Rng& rng, ZmxiSize size, int srcGap, int dstStep, GuardedBlock::Flush flush) {
        const Rectangle& f = GetParam();
        Source src(f, size, srcGap, flush, rng);
        Guarded<Zmx8u> dst(std::size_t(dstStep) * std::size_t(size.height - 1) + std::size_t(size.width), flush);
        rng.bytes(dst.data(), dst.size());
        const std::vector<Zmx8u> before = src.block.copy();
        std::vector<Zmx8u> expected = dst.copy();
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                expected[std::size_t(y) * std::size_t(dstStep) + std::size_t(x)] =
                    Zmx8u(f.model({src.origin(), src.step}, x, y));
        // The stated size of the source is of no account.
        const ZmxiSize stated{int(rng.range(1, 50)), int(rng.range(1, 50))};
        ASSERT_EQ(f.call(src.origin(), src.step, stated, dst.data(), dstStep, size), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected, dst.copy()))
            << size.width << " by " << size.height << ", steps " << src.step << " and " << dstStep;
        ASSERT_TRUE(sameBytes(before, src.block.copy()));
    }
};
INSTANTIATE_TEST_SUITE_P(Rectangles, Resampling, ::testing::ValuesIn(rectangles),
                         [](const auto& test) { return std::string(test.param.name); });

// The row forms, all with two sources.
struct RowForm {
    const char* name;
    int sources;
    ZmxStatus (*call)(const Zmx8u*, const Zmx8u*, int, Zmx8u*);
    void (*model)(const Zmx8u*, const Zmx8u*, int, Zmx8u*);
    Reach (*reach)(int); // what is read of a source
    int (*results)(int);
    std::uint64_t digest;
};
void PrintTo(const RowForm& r, std::ostream* out) { *out << r.name; }

template <auto f> auto twoSources(const Zmx8u* s, const Zmx8u*, int width, Zmx8u* d) { return f(s, width, d); }
int twice(int width) { return width == 1 ? 4 : 2 * width; }
int half(int width) { return (width + 1) / 2; }
Reach pairs(int width) { return {0, (width - 1) | 1}; }

const RowForm rowForms[] = {
    {"UpRowH2V1_Triangle", 1, twoSources<zmxiSampleUpRowH2V1_Triangle_JPEG_8u_C1>, twoSources<model::upRowH2V1>,
     [](int n) {
         return n == 1 ? Reach{-1, 1} : Reach{0, n - 1};
     },
     twice, 0x3C6D26D39A4DB7E1u},
    {"UpRowH2V2_Triangle", 2, zmxiSampleUpRowH2V2_Triangle_JPEG_8u_C1, model::upRowH2V2,
     [](int n) {
         return n == 1 ? Reach{0, 1} : Reach{0, n - 1};
     },
     twice, 0xA9EF011A51A140F7u},
    {"DownRowH2V1_Box", 1, twoSources<zmxiSampleDownRowH2V1_Box_JPEG_8u_C1>, twoSources<model::downRowH2V1>, pairs,
     half, 0x433280928BADE9E6u},
    {"DownRowH2V2_Box", 2, zmxiSampleDownRowH2V2_Box_JPEG_8u_C1, model::downRowH2V2, pairs, half, 0x1519B1CC90C51B10u},
};

class ResamplingRow : public ::testing::TestWithParam<RowForm> {};
INSTANTIATE_TEST_SUITE_P(RowForms, ResamplingRow, ::testing::ValuesIn(rowForms),
                         [](const auto& test) { return std::string(test.param.name); });

using Bytes = std::vector<Zmx8u>;

// The first `n` results of a rectangle form for rows that lie one behind the other; the origin is at (x, y)
// in them.
Bytes resampled(const Rectangle& f, const std::vector<Bytes>& rows, int x, int y, ZmxiSize size) {
    Bytes all;
    for (const Bytes& r : rows) all.insert(all.end(), r.begin(), r.end());
    const int step = int(rows[0].size());
    Guarded<Zmx8u> src(all), dst(std::size_t(size.width * size.height));
    EXPECT_EQ(f.call(src.data() + y * step + x, step, {1, 1}, dst.data(), size.width, size), zmxStsNoErr);
    return dst.copy();
}
const Rectangle &upH2V1 = rectangles[0], &upH2V2 = rectangles[1], &downH2V1 = rectangles[2], &downH2V2 = rectangles[3];

Bytes row(const RowForm& f, const Bytes& src1, const Bytes& src2, int width) {
    Guarded<Zmx8u> dst(std::size_t(f.results(width)));
    EXPECT_EQ(f.call(src1.data(), src2.data(), width, dst.data()), zmxStsNoErr);
    return dst.copy();
}
const RowForm &upRowH2V1 = rowForms[0], &upRowH2V2 = rowForms[1], &downRowH2V1 = rowForms[2],
              &downRowH2V2 = rowForms[3];

} // namespace

TEST(ResamplingValues, TriangleCountsWhatLiesOutside) {
    EXPECT_EQ(resampled(upH2V1, {{0, 10, 20, 30, 0}}, 1, 0, {6, 1}), (Bytes{7, 13, 17, 23, 27, 23}));
    EXPECT_EQ(resampled(upH2V1, {{255, 10, 20, 30, 255}}, 1, 0, {6, 1}), (Bytes{71, 13, 17, 23, 27, 86}));
}

TEST(ResamplingValues, TriangleRowHasEnds) {
    EXPECT_EQ(row(upRowH2V1, {10, 20, 30}, {}, 3), (Bytes{10, 13, 17, 23, 27, 30}));
    EXPECT_EQ(row(upRowH2V1, {10, 20}, {}, 2), (Bytes{10, 13, 17, 20}));
}

// Sums that only one of the terms carries over.
TEST(ResamplingValues, TermsOfTheTriangle) {
    // 3 * 0 + 2: a term of 2 carries, 1 does not; 3 * 1 + 0: either carries; 3 * 0 + 3 likewise.
    EXPECT_EQ(resampled(upH2V1, {{2, 0, 2}}, 1, 0, {2, 1}), (Bytes{0, 1}));
    EXPECT_EQ(resampled(upH2V1, {{3, 0, 3}}, 1, 0, {2, 1}), (Bytes{1, 1}));
    EXPECT_EQ(resampled(upH2V1, {{1, 0, 1}}, 1, 0, {2, 1}), (Bytes{0, 0}));
    EXPECT_EQ(row(upRowH2V1, {0, 2, 0}, {}, 3), (Bytes{0, 1, 1, 2, 0, 0}));

    // Column sums of 8 beside 0: a term of 8 carries, 7 does not; 9 is enough for both, 7 for neither.
    const auto centre = [](Zmx8u nearSide, Zmx8u farSide) {
        return resampled(upH2V2, {{farSide, 0, farSide}, {nearSide, 0, nearSide}}, 1, 1, {2, 1});
    };
    EXPECT_EQ(centre(2, 2), (Bytes{1, 0}));
    EXPECT_EQ(centre(3, 0), (Bytes{1, 1}));
    EXPECT_EQ(centre(2, 1), (Bytes{0, 0}));
    EXPECT_EQ(row(upRowH2V2, {0, 2, 0}, {0, 2, 0}, 3), (Bytes{0, 0, 2, 1, 1, 0}));
    // The ends take their column fourfold: 4 * 2 + 8 carries at the start, 4 * 2 + 7 does not at the end.
    EXPECT_EQ(row(upRowH2V2, {0, 0}, {2, 2}, 2), (Bytes{1, 0, 1, 0}));
}

TEST(ResamplingValues, NearAndFarRow) {
    // Row 0 looks at the row before, row 1 at the row behind.
    const std::vector<Bytes> rows{{100, 100, 100}, {40, 40, 40}, {0, 0, 0}};
    EXPECT_EQ(resampled(upH2V2, rows, 1, 1, {2, 2}), (Bytes{55, 55, 30, 30}));
    EXPECT_EQ(row(upRowH2V2, {40, 40}, {100, 100}, 2), (Bytes{55, 55, 55, 55}));
    EXPECT_EQ(row(upRowH2V2, {100, 100}, {40, 40}, 2), (Bytes{85, 85, 85, 85}));
}

TEST(ResamplingValues, RowOfOneSample) {
    // Four results; the samples on both sides of the one count.
    const Bytes around{80, 20, 60};
    Guarded<Zmx8u> four(4);
    ASSERT_EQ(zmxiSampleUpRowH2V1_Triangle_JPEG_8u_C1(around.data() + 1, 1, four.data()), zmxStsNoErr);
    EXPECT_EQ(four.copy(), (Bytes{20, 30, 35, 20}));
    const Bytes one{20, 60}, two{40, 100};
    EXPECT_EQ(row(upRowH2V2, one, two, 1), row(upRowH2V2, one, two, 2));
    EXPECT_EQ(row(upRowH2V2, one, two, 1), (Bytes{25, 36, 59, 70}));
}

TEST(ResamplingValues, Box) {
    EXPECT_EQ(resampled(downH2V1, {{1, 2, 1, 2}}, 0, 0, {2, 1}), (Bytes{2, 2})) << "no alternation";
    EXPECT_EQ(resampled(downH2V2, {{0, 0}, {0, 1}}, 0, 0, {1, 1}), (Bytes{1}));
    EXPECT_EQ(resampled(downH2V2, {{0, 0}, {0, 0}}, 0, 0, {1, 1}), (Bytes{0}));
    EXPECT_EQ(resampled(downH2V2, {{0, 1, 255, 255, 1, 0}, {0, 0, 255, 255, 0, 0}}, 0, 0, {3, 1}), (Bytes{1, 255, 1}));
}

TEST(ResamplingValues, BoxRowAlternates) {
    EXPECT_EQ(row(downRowH2V1, {1, 2, 1, 2}, {}, 4), (Bytes{1, 2}));
    EXPECT_EQ(row(downRowH2V1, {1, 2, 1, 2, 1, 2}, {}, 6), (Bytes{1, 2, 1}));
    EXPECT_EQ(row(downRowH2V2, {0, 0, 0, 0}, {1, 1, 1, 1}, 4), (Bytes{0, 1}));
    EXPECT_EQ(row(downRowH2V2, {0, 0, 0, 0, 0, 0}, {1, 2, 1, 1, 2, 1}, 6), (Bytes{1, 1, 1}));
    // It begins anew with each call.
    for (int i = 0; i < 3; ++i) EXPECT_EQ(row(downRowH2V1, {1, 2}, {}, 2), (Bytes{1}));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(row(downRowH2V2, {1, 1}, {0, 0}, 2), (Bytes{0}));
}

TEST(ResamplingValues, OddBoxRowReadsOneMore) {
    EXPECT_EQ(row(downRowH2V1, {4, 8, 100, 50}, {}, 3), (Bytes{6, 75}));
    EXPECT_EQ(row(downRowH2V2, {4, 8, 100, 60}, {4, 8, 100, 60}, 3), (Bytes{6, 80}));
}

// Every pair of samples at every position of the H2V1 forms.
TEST(ResamplingValues, EveryPair) {
    for (int a = 0; a < 256; ++a) {
        Bytes rows[2] = {Bytes(1024), Bytes(1024)};
        for (std::size_t i = 0; i < 512; ++i) {
            rows[0][2 * i] = rows[1][2 * i + 1] = Zmx8u(a);
            rows[0][2 * i + 1] = rows[1][2 * i] = Zmx8u(i / 2);
        }
        for (const Bytes& s : rows) {
            Bytes up(2044), down(512), rowUp(2048), rowDown(512);
            ASSERT_EQ(zmxiSampleUpH2V1_JPEG_8u_C1R(s.data() + 1, 1024, {1022, 1}, up.data(), 2044, {2044, 1}),
                      zmxStsNoErr);
            ASSERT_EQ(zmxiSampleDownH2V1_JPEG_8u_C1R(s.data(), 1024, {1024, 1}, down.data(), 512, {512, 1}),
                      zmxStsNoErr);
            ASSERT_EQ(zmxiSampleUpRowH2V1_Triangle_JPEG_8u_C1(s.data(), 1024, rowUp.data()), zmxStsNoErr);
            ASSERT_EQ(zmxiSampleDownRowH2V1_Box_JPEG_8u_C1(s.data(), 1024, rowDown.data()), zmxStsNoErr);
            Bytes expected(2044), half512(512), expectedRow(2048);
            for (int x = 0; x < 2044; ++x) expected[std::size_t(x)] = Zmx8u(model::upH2V1({s.data() + 1, 1024}, x, 0));
            ASSERT_TRUE(sameBytes(expected, up));
            for (int x = 0; x < 512; ++x) half512[std::size_t(x)] = Zmx8u(model::downH2V1({s.data(), 1024}, x, 0));
            ASSERT_TRUE(sameBytes(half512, down));
            model::upRowH2V1(s.data(), 1024, expectedRow.data());
            ASSERT_TRUE(sameBytes(expectedRow, rowUp));
            model::downRowH2V1(s.data(), 1024, half512.data());
            ASSERT_TRUE(sameBytes(half512, rowDown));
        }
    }
}

TEST_P(Resampling, ArgumentsAreTestedAsTheyStand) {
    const Bytes src(64, 1);
    Bytes dst(64, 99);
    const int before = threadsAsked();
    checkOrder({kNull, kStep, kSize, kSize, kNull, kStep, kSize, kSize}, [&](const Bad& bad) {
        return GetParam().call(bad.null(0, src.data() + 20), bad.below1(1, 8), {bad.below1(2, 2), bad.below1(3, 2)},
                               bad.null(4, dst.data()), bad.below1(5, 8), {bad.below1(6, 2), bad.below1(7, 2)});
    });
    EXPECT_EQ(dst, Bytes(64, 99));
    EXPECT_EQ(threadsAsked(), before);
}

TEST_P(ResamplingRow, ArgumentsAreTestedAsTheyStand) {
    const Bytes src(16, 1);
    Bytes dst(16, 99);
    const bool two = GetParam().sources == 2;
    // The second source is there for two rows alone.
    std::vector<ZmxStatus> tests(two ? 3u : 2u, kNull);
    tests.push_back(kSize);
    const int behindSources = two ? 2 : 1;
    checkOrder(tests, [&](const Bad& bad) {
        return GetParam().call(bad.null(0, src.data()), bad.null(two ? 1 : -1, src.data()),
                               bad.below1(behindSources + 1, 4), bad.null(behindSources, dst.data()));
    });
    EXPECT_EQ(dst, Bytes(16, 99));
}

TEST_P(Resampling, RowsInMemory) {
    Rng rng(231);
    SCOPED_TRACE("seed 231");
    for (int i = 0; i < 400; ++i) {
        const ZmxiSize size{int(rng.range(1, i % 3 ? 20 : 150)), int(rng.range(1, 9))};
        // From no gap to a gap, and steps so small that rows overlap, where the later row wins.
        const int least = GetParam().columns(size.width).hi - GetParam().columns(size.width).lo;
        const int srcGap = i % 4 == 0 ? -int(rng.range(0, least)) : int(rng.range(0, 9));
        const int dstStep = i % 5 == 0 ? int(rng.range(1, size.width)) : size.width + int(rng.range(0, 9));
        ASSERT_NO_FATAL_FAILURE(
            compare(rng, size, srcGap, dstStep, i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart));
    }
    for (ZmxiSize size : {ZmxiSize{1, 1}, ZmxiSize{2, 1}, ZmxiSize{1, 2}, ZmxiSize{2, 2}, ZmxiSize{1, 501},
                          ZmxiSize{5001, 1}, ZmxiSize{5000, 1}})
        for (auto flush : {GuardedBlock::AtEnd, GuardedBlock::AtStart})
            ASSERT_NO_FATAL_FAILURE(compare(rng, size, 0, size.width, flush));
}

TEST_P(ResamplingRow, EveryWidth) {
    Rng rng(232);
    SCOPED_TRACE("seed 232");
    const RowForm& f = GetParam();
    std::vector<int> widths(140);
    std::iota(widths.begin(), widths.end(), 1);
    // Rows may be worked through in runs: from one below some hundreds of results to one above two and three times them.
    for (int run : {256, 512, 1024, 2048, 3072})
        for (int off = -2; off <= 2; ++off) widths.push_back(run + off);
    for (int width : widths)
        for (auto flush : {GuardedBlock::AtEnd, GuardedBlock::AtStart}) {
            const Reach reach = f.reach(width);
            const std::size_t n = std::size_t(reach.hi - reach.lo + 1);
            Guarded<Zmx8u> src1(rng.vec<Zmx8u>(n, 0, 255), flush), src2(rng.vec<Zmx8u>(n, 0, 255), flush);
            Guarded<Zmx8u> dst(std::size_t(f.results(width)), flush);
            Bytes expected = dst.copy();
            const Bytes before1 = src1.copy(), before2 = src2.copy();
            f.model(src1.data() - reach.lo, src2.data() - reach.lo, width, expected.data());
            ASSERT_EQ(f.call(src1.data() - reach.lo, src2.data() - reach.lo, width, dst.data()), zmxStsNoErr);
            ASSERT_TRUE(sameBytes(expected, dst.copy())) << width;
            ASSERT_EQ(before1, src1.copy());
            ASSERT_EQ(before2, src2.copy());
        }
}

TEST_P(Resampling, TheSameBytesFromAnyNumberOfThreads) {
    Rng rng(233);
    SCOPED_TRACE("seed 233");
    for (ZmxiSize size : {ZmxiSize{8, 8}, ZmxiSize{128, 64}, ZmxiSize{8192, 1}, ZmxiSize{8193, 1}, ZmxiSize{1, 8193},
                          ZmxiSize{2731, 3}, ZmxiSize{301, 97}})
        ASSERT_NO_FATAL_FAILURE(
            checkSharing(size, GetParam().shared, [&] { compare(rng, size, 1, size.width + 3, GuardedBlock::AtEnd); }));
}

// The destination's size decides whether rows are shared out, not the source's.
TEST_P(Resampling, TheDestinationDecidesAboutThreads) {
    const Bytes src(6 * 200);
    Bytes dst(16);
    const long opened = regionsOpened();
    ASSERT_EQ(GetParam().call(src.data() + 201, 200, {10000, 10000}, dst.data(), 2, {2, 2}), zmxStsNoErr);
    EXPECT_EQ(regionsOpened(), opened);
}

TEST_P(ResamplingRow, OnTheCallingThread) {
    const RowForm& f = GetParam();
    const Bytes src(20002);
    Bytes dst(40000);
    const int askedBefore = threadsAsked();
    const long opened = regionsOpened();
    ASSERT_EQ(f.call(src.data(), src.data(), 20000, dst.data()), zmxStsNoErr);
    EXPECT_EQ(threadsAsked(), askedBefore);
    EXPECT_EQ(regionsOpened(), opened);
}

TEST_P(Resampling, InsideAnotherRegion) {
    Rng rng(236);
    SCOPED_TRACE("seed 236");
    setThreads(3);
    const ZmxiSize size{111, 76};
    Source src(GetParam(), size, 0, GuardedBlock::AtEnd, rng);
    std::vector<Bytes> dst(4, Bytes(111 * 76));
    std::vector<ZmxStatus> status(4, -1);
#pragma omp parallel for num_threads(4)
    for (std::size_t i = 0; i < 4; ++i)
        status[i] = GetParam().call(src.origin(), src.step, {1, 1}, dst[i].data(), 111, size);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(status[i], zmxStsNoErr);
        EXPECT_TRUE(sameBytes(dst[0], dst[i]));
    }
    for (int y = 0; y < 76; ++y)
        for (int x = 0; x < 111; ++x)
            ASSERT_EQ(dst[0][std::size_t(111 * y + x)], GetParam().model({src.origin(), src.step}, x, y));
    setThreads(1);
}

TEST_P(Resampling, Digest) {
    Rng rng(234);
    const ZmxiSize size{151, 71};
    Source src(GetParam(), size, 0, GuardedBlock::AtEnd, rng);
    Bytes dst(151 * 71);
    ASSERT_EQ(GetParam().call(src.origin(), src.step, {1, 1}, dst.data(), 151, size), zmxStsNoErr);
    EXPECT_EQ(Digest().add(dst).get(), GetParam().digest) << std::hex << Digest().add(dst).get();
}

TEST_P(ResamplingRow, Digest) {
    Rng rng(235);
    const Bytes src1 = rng.vec<Zmx8u>(1001, 0, 255), src2 = rng.vec<Zmx8u>(1001, 0, 255);
    const Bytes dst = row(GetParam(), src1, src2, 1000);
    EXPECT_EQ(Digest().add(dst).get(), GetParam().digest) << std::hex << Digest().add(dst).get();
}
