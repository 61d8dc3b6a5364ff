// The reversible 5/3 wavelet against its model: whole planes, kernels, column lifting. Also the line model by
// itself.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/wavelet53.h"
#include "tests/jpeg2000/support/wavelet_checks.h"
#include "zmxj/wavelet.h"

#include <gtest/gtest.h>

namespace {

constexpr PlaneFns<Zmx16s> kPlanes16{zmxiWTFwd_B53_JPEG2K_16s_C1IR,
                                     zmxiWTInv_B53_JPEG2K_16s_C1IR,
                                     zmxiWTFwd_B53_JPEG2K_16s_C1R,
                                     zmxiWTInv_B53_JPEG2K_16s_C1R,
                                     zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR,
                                     zmxiWTGetBufSize_B53_JPEG2K_16s_C1R,
                                     model::forward53<Zmx16s>,
                                     model::inverse53<Zmx16s>,
                                     model::lineSize53<Zmx16s>,
                                     model::bandSize53<Zmx16s>};
constexpr PlaneFns<Zmx32s> kPlanes32{zmxiWTFwd_B53_JPEG2K_32s_C1IR,
                                     zmxiWTInv_B53_JPEG2K_32s_C1IR,
                                     zmxiWTFwd_B53_JPEG2K_32s_C1R,
                                     zmxiWTInv_B53_JPEG2K_32s_C1R,
                                     zmxiWTGetBufSize_B53_JPEG2K_32s_C1IR,
                                     zmxiWTGetBufSize_B53_JPEG2K_32s_C1R,
                                     model::forward53<Zmx32s>,
                                     model::inverse53<Zmx32s>,
                                     model::lineSize53<Zmx32s>,
                                     model::bandSize53<Zmx32s>};

// How far the kernels read.
constexpr Reach kForward0{2, 1}, kForward1{1, 2};
constexpr InverseReach kInverse0{{0, 1}, {1, 1}}, kInverse1{{1, 0}, {1, 1}};

template <class T, class Fn> auto sixRows(Fn fn) {
    return [fn](T* const* r, int width) { return fn(r[0], r[1], r[2], r[3], r[4], r[5], width); };
}

template <class T> std::vector<T> lineOf(model::Line<T>& line, int from, int to) {
    std::vector<T> v;
    for (int i = from; i <= to; ++i) v.push_back(line[i]);
    return v;
}

using V16 = std::vector<Zmx16s>;
using V32 = std::vector<Zmx32s>;

} // namespace

TEST(WaveletLine, MirrorsOnce) {
    V16 v{10, 20, 30};
    model::Line<Zmx16s> line(3);
    model::readExt(model::Stroke<Zmx16s>{v.data(), 1}, line, 3, 2, 2);
    EXPECT_EQ(lineOf(line, -2, 4), (V16{30, 20, 10, 20, 30, 20, 10}));
}

TEST(WaveletLine, MirrorsShortLinesRepeatedly) {
    auto extended = [](V16 v) {
        const int n = int(v.size());
        model::Line<Zmx16s> line(n);
        model::readExt4(model::Stroke<Zmx16s>{v.data(), 1}, line, n);
        return lineOf(line, -4, n + 3);
    };
    EXPECT_EQ(extended({0, 1}), (V16{0, 1, 0, 1, 0, 1, 0, 1, 0, 1}));
    EXPECT_EQ(extended({0, 1, 2}), (V16{0, 1, 2, 1, 0, 1, 2, 1, 0, 1, 2}));
    EXPECT_EQ(extended({0, 1, 2, 3}), (V16{2, 3, 2, 1, 0, 1, 2, 3, 2, 1, 0, 1}));
}

TEST(WaveletLine, BandsOfALine) {
    model::Line<Zmx16s> line(5);
    for (int i = 0; i < 5; ++i) line[i] = Zmx16s(i);
    V16 v(5);
    const model::Stroke<Zmx16s> s{v.data(), 1};
    model::writeInterleave(line, s, 1, 5);
    EXPECT_EQ(v, (V16{1, 3, 0, 2, 4}));
    model::writeInterleave(line, s, 0, 5);
    EXPECT_EQ(v, (V16{0, 2, 4, 1, 3}));
    model::Line<Zmx16s> back(5);
    model::readInterleaveExt(s, back, 5, 0, 1, 2);
    EXPECT_EQ(lineOf(back, -1, 6), (V16{1, 0, 1, 2, 3, 4, 3, 2}));
    model::readInterleaveExt4(model::Stroke<Zmx16s>{v.data(), 2}, back, 2, 1); // samples 0 and 4, in a column
    EXPECT_EQ(lineOf(back, -4, 5), (V16{4, 0, 4, 0, 4, 0, 4, 0, 4, 0}));
}

TEST(Wavelet53, PlanesAgreeWithTheModel) {
    checkPlanes(kPlanes16, 12, 40, 531);
    checkPlanes(kPlanes32, 12, 40, 532);
}

TEST(Wavelet53, LinesOfAllLengthsAgreeWithTheModel) {
    checkLines(kPlanes16, 533);
    checkLines(kPlanes32, 538);
}

TEST(Wavelet53, ScratchSizes) {
    checkSizes(kPlanes16, 534);
    checkSizes(kPlanes32, 535);
    EXPECT_EQ(sizeOf(zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR, 2, 2), 0);
    EXPECT_EQ(sizeOf(zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR, 3, 1), 14);
    EXPECT_EQ(sizeOf(zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR, 1, 3), 14);
    EXPECT_EQ(sizeOf(zmxiWTGetBufSize_B53_JPEG2K_32s_C1IR, 3, 2), 28);
    EXPECT_EQ(sizeOf(zmxiWTGetBufSize_B53_JPEG2K_32s_C1R, 3, 2), 92);
    EXPECT_EQ(sizeOf(zmxiWTGetBufSize_B53_JPEG2K_16s_C1R, 2, 2), 64);
}

TEST(Wavelet53, WorkedLines) {
    EXPECT_EQ(row(zmxiWTFwd_B53_JPEG2K_16s_C1IR, V16{10, 4}, 0), (V16{7, -6}));
    EXPECT_EQ(row(zmxiWTInv_B53_JPEG2K_16s_C1IR, V16{7, -6}, 0), (V16{10, 4}));
    EXPECT_EQ(row(zmxiWTFwd_B53_JPEG2K_32s_C1IR, V32{10, 4}, 0), (V32{7, -6}));
    EXPECT_EQ(row(zmxiWTInv_B53_JPEG2K_32s_C1IR, V32{7, -6}, 0), (V32{10, 4}));
    EXPECT_EQ(column(zmxiWTFwd_B53_JPEG2K_16s_C1IR, V16{10, 4}, 0), (V16{7, -6}));
    // At an odd origin the second sample is the even one; its low value still comes first.
    EXPECT_EQ(row(zmxiWTFwd_B53_JPEG2K_16s_C1IR, V16{4, 10}, 1), (V16{7, -6}));
    EXPECT_EQ(row(zmxiWTInv_B53_JPEG2K_16s_C1IR, V16{7, -6}, 1), (V16{4, 10}));
    EXPECT_EQ(column(zmxiWTFwd_B53_JPEG2K_32s_C1IR, V32{4, 10}, -5), (V32{7, -6}));
    // In a pair the difference of 16-bit samples stays whole for the low value: 32767 - -32768 is 65535,
    // stored as -1.
    EXPECT_EQ(row(zmxiWTFwd_B53_JPEG2K_16s_C1IR, V16{-32768, 32767}, 0), (V16{0, -1}));
    // In longer lines the cut difference enters the low value.
    EXPECT_EQ(row(zmxiWTFwd_B53_JPEG2K_16s_C1IR, V16{-32768, 32767, -32768}, 0), (V16{-32768, -32768, -1}));
    EXPECT_EQ(row(zmxiWTFwd_B53_JPEG2K_32s_C1IR, V32{-32768, 32767, -32768}, 0), (V32{0, 0, 65535}));
    // A ramp has no high band but at its mirrored end.
    EXPECT_EQ(row(zmxiWTFwd_B53_JPEG2K_32s_C1IR, V32{0, 10, 20, 30, 40, 50}, 0), (V32{0, 20, 43, 0, 0, 10}));
    EXPECT_EQ(row(zmxiWTFwd_B53_JPEG2K_32s_C1IR, V32{0, 10, 20, 30, 40}, 1), (V32{8, 33, -10, 0, 10}))
        << "two low, three high";
    EXPECT_EQ(row(zmxiWTFwd_B53_JPEG2K_32s_C1IR, V32{1, 2, 3}, 0), (V32{1, 3, 0}));
}

TEST(Wavelet53, SingleSamples) {
    Zmx8u none[1];
    const ZmxiRect odd{1, 1, 1, 1}, even{0, 0, 1, 1}, oddX{3, 2, 1, 1};
    Zmx16s v = 100;
    EXPECT_EQ(zmxiWTFwd_B53_JPEG2K_16s_C1IR(&v, 1, &odd, none), zmxStsNoErr);
    EXPECT_EQ(v, 400) << "doubled in either direction";
    EXPECT_EQ(zmxiWTInv_B53_JPEG2K_16s_C1IR(&v, 1, &odd, none), zmxStsNoErr);
    EXPECT_EQ(v, 100);
    EXPECT_EQ(zmxiWTFwd_B53_JPEG2K_16s_C1IR(&v, 1, &even, none), zmxStsNoErr);
    EXPECT_EQ(v, 100);
    EXPECT_EQ(zmxiWTFwd_B53_JPEG2K_16s_C1IR(&v, 1, &oddX, none), zmxStsNoErr);
    EXPECT_EQ(v, 200);
    v = 20000;
    EXPECT_EQ(zmxiWTFwd_B53_JPEG2K_16s_C1IR(&v, 1, &oddX, none), zmxStsNoErr);
    EXPECT_EQ(v, 40000 - 65536) << "the product wraps";
    v = -7;
    EXPECT_EQ(zmxiWTInv_B53_JPEG2K_16s_C1IR(&v, 1, &oddX, none), zmxStsNoErr);
    EXPECT_EQ(v, -3) << "toward zero";
    Zmx32s w = INT_MAX;
    EXPECT_EQ(zmxiWTFwd_B53_JPEG2K_32s_C1IR(&w, 1, &oddX, none), zmxStsNoErr);
    EXPECT_EQ(w, -2);
    w = INT_MIN;
    EXPECT_EQ(zmxiWTInv_B53_JPEG2K_32s_C1IR(&w, 1, &odd, none), zmxStsNoErr);
    EXPECT_EQ(w, INT_MIN / 4);
}

TEST(Wavelet53, EmptyRectanglesAreAcceptedInPlace) {
    Zmx8u none[64];
    for (int height : {0, -1, -5}) {
        V32 v{1, 2, 3, 4};
        const ZmxiRect r{0, 1, 4, height};
        EXPECT_EQ(zmxiWTFwd_B53_JPEG2K_32s_C1IR(v.data(), 16, &r, none), zmxStsNoErr);
        EXPECT_EQ(v, (V32{2, 4, 6, 8})) << "row 0 is doubled at an odd origin";
        EXPECT_EQ(zmxiWTInv_B53_JPEG2K_32s_C1IR(v.data(), 16, &r, none), zmxStsNoErr);
        EXPECT_EQ(v, (V32{1, 2, 3, 4}));
        const ZmxiRect even{1, 0, 4, height};
        EXPECT_EQ(zmxiWTFwd_B53_JPEG2K_32s_C1IR(v.data(), 16, &even, none), zmxStsNoErr);
        EXPECT_EQ(v, (V32{1, 2, 3, 4}));
    }
    for (int width : {0, -1}) {
        V16 v{1, 2, 3, 4};
        const ZmxiRect r{1, 1, width, 4};
        EXPECT_EQ(zmxiWTFwd_B53_JPEG2K_16s_C1IR(v.data(), 2, &r, none), zmxStsNoErr);
        EXPECT_EQ(v, (V16{2, 4, 6, 8})) << "column 0 likewise";
        EXPECT_EQ(zmxiWTInv_B53_JPEG2K_16s_C1IR(v.data(), 2, &r, none), zmxStsNoErr);
        EXPECT_EQ(v, (V16{1, 2, 3, 4}));
    }
    V16 v{1};
    const ZmxiRect nothing{1, 1, 0, 0};
    EXPECT_EQ(zmxiWTFwd_B53_JPEG2K_16s_C1IR(v.data(), 2, &nothing, none), zmxStsNoErr);
    EXPECT_EQ(v, V16{1});
}

namespace {

template <class T> void checkPerfectReconstruction(const PlaneFns<T>& f, int magnitude, std::uint64_t seed) {
    SCOPED_TRACE(seed);
    Rng rng(seed);
    std::vector<Zmx8u> scratch(200000);
    for (int turn = 0; turn < 300; ++turn) {
        const ZmxiRect r{int(rng.range(0, 1)), int(rng.range(0, 1)), int(rng.range(1, 60)), int(rng.range(1, 60))};
        SCOPED_TRACE(::testing::Message() << r.x << ',' << r.y << ' ' << r.width << 'x' << r.height);
        const auto v = rng.vec<T>(std::size_t(r.width * r.height), -magnitude, magnitude);
        auto a = v;
        const int s = int(sizeof(T)), step = r.width * s;
        ASSERT_EQ(f.forward(a.data(), step, &r, scratch.data()), zmxStsNoErr);
        const auto transformed = a;
        ASSERT_EQ(f.inverse(a.data(), step, &r, scratch.data()), zmxStsNoErr);
        ASSERT_EQ(a, v);
        const int bw = (r.width + 1) / 2, n = bw * ((r.height + 1) / 2), steps[4] = {bw * s, bw * s, bw * s, bw * s};
        std::vector<T> bands(std::size_t(4 * n), T(0x55));
        T* const to[4] = {bands.data(), bands.data() + n, bands.data() + 2 * n, bands.data() + 3 * n};
        const T* const from[4] = {to[0], to[1], to[2], to[3]};
        ASSERT_EQ(f.forwardBands(v.data(), step, &r, to, steps, scratch.data()), zmxStsNoErr);
        ASSERT_EQ(f.inverseBands(from, steps, a.data(), step, &r, scratch.data()), zmxStsNoErr);
        ASSERT_EQ(a, v);
        // Band 0 is the top left corner whatever the phases: at an odd origin of odd size its last column is
        // the first high one.
        for (int y = 0; y < (r.height + 1) / 2; ++y)
            for (int x = 0; x < bw; ++x)
                ASSERT_EQ(bands[std::size_t(y * bw + x)], transformed[std::size_t(y * r.width + x)]);
    }
}

} // namespace

TEST(Wavelet53, ComesBackExactly) {
    checkPerfectReconstruction(kPlanes16, 4000, 536);
    checkPerfectReconstruction(kPlanes32, 1 << 27, 537);
}

TEST(Wavelet53, BandsAreDisplacedAtAnOddOriginOfOddSize) {
    // Lows 8 and 33, highs -10, 0 and 10: band 0 takes three columns, so the first high one comes with it.
    const V32 v{0, 10, 20, 30, 40};
    V32 low(3), high(2), none(3);
    Zmx8u scratch[128];
    Zmx32s* const to[4] = {low.data(), none.data(), high.data(), none.data()};
    const int steps[4] = {12, 12, 8, 8};
    const ZmxiRect r{1, 0, 5, 1};
    EXPECT_EQ(zmxiWTFwd_B53_JPEG2K_32s_C1R(v.data(), 20, &r, to, steps, scratch), zmxStsNoErr);
    EXPECT_EQ(low, (V32{8, 33, -10}));
    EXPECT_EQ(high, (V32{0, 10}));
}

TEST(Wavelet53, RowKernelsAgreeWithTheModel) {
    checkForwardKernel<Zmx16s>(zmxiWTFwdRow_B53_JPEG2K_16s_C1R, model::forwardLine53, false, kForward0, kForward1, 400,
                               541);
    checkForwardKernel<Zmx32s>(zmxiWTFwdRow_B53_JPEG2K_32s_C1R, model::forwardLine53, false, kForward0, kForward1, 400,
                               542);
    checkInverseKernel<Zmx16s>(zmxiWTInvRow_B53_JPEG2K_16s_C1R, model::inverseLine53, false, kInverse0, kInverse1, 400,
                               543);
    checkInverseKernel<Zmx32s>(zmxiWTInvRow_B53_JPEG2K_32s_C1R, model::inverseLine53, false, kInverse0, kInverse1, 400,
                               544);
}

TEST(Wavelet53, ColumnKernelsAgreeWithTheModel) {
    checkForwardKernel<Zmx16s>(zmxiWTFwdCol_B53_JPEG2K_16s_C1R, model::forwardLine53, true, kForward0, kForward1, 400,
                               545);
    checkForwardKernel<Zmx32s>(zmxiWTFwdCol_B53_JPEG2K_32s_C1R, model::forwardLine53, true, kForward0, kForward1, 400,
                               546);
    checkInverseKernel<Zmx16s>(zmxiWTInvCol_B53_JPEG2K_16s_C1R, model::inverseLine53, true, kInverse0, kInverse1, 400,
                               547);
    checkInverseKernel<Zmx32s>(zmxiWTInvCol_B53_JPEG2K_32s_C1R, model::inverseLine53, true, kInverse0, kInverse1, 400,
                               548);
}

namespace {

// Low row -1 stands one step of the high band ahead of low row 0, the other low rows follow by their own
// step.
template <class T> void checkFirstLowRow(InverseKernel<T> fn) {
    constexpr int w = 3, h = 4;
    Rng rng(551);
    const auto low = rng.vec<T>(200, -5000, 5000), high = rng.vec<T>(200, -5000, 5000);
    const int lowRow = 5, highRow = 9; // samples in a row
    const int first = 20;
    std::vector<T> out(2 * h * w);
    ASSERT_EQ(fn(&low[first], lowRow * int(sizeof(T)), &high[first], highRow * int(sizeof(T)), {w, h}, out.data(),
                 w * int(sizeof(T)), 1),
              zmxStsNoErr);
    for (int x = 0; x < w; ++x) {
        model::Line<T> l(h), d(h);
        for (int r = 0; r < h; ++r) l[r] = low[std::size_t(first + r * lowRow + x)];
        l[-1] = low[std::size_t(first - highRow + x)];
        for (int r = -1; r <= h; ++r) d[r] = high[std::size_t(first + r * highRow + x)];
        T want[2 * h];
        model::inverseLine53(&l[0], &d[0], want, h, 1);
        for (int r = 0; r < 2 * h; ++r) ASSERT_EQ(out[std::size_t(r * w + x)], want[r]) << r << ' ' << x;
    }
}

} // namespace

TEST(Wavelet53, FirstLowRowIsFoundByTheStepOfTheHighBand) {
    checkFirstLowRow(zmxiWTInvCol_B53_JPEG2K_16s_C1R);
    checkFirstLowRow(zmxiWTInvCol_B53_JPEG2K_32s_C1R);
}

TEST(Wavelet53, AnyPhaseButZeroIsOdd) {
    const V16 x{9, 1, 5, 8, 2, 7, 3, 4, 6};
    V16 one(4), two(4);
    EXPECT_EQ(zmxiWTFwdRow_B53_JPEG2K_16s_C1R(&x[2], 18, &one[0], 4, &one[2], 4, {2, 1}, 1), zmxStsNoErr);
    EXPECT_EQ(zmxiWTFwdRow_B53_JPEG2K_16s_C1R(&x[2], 18, &two[0], 4, &two[2], 4, {2, 1}, 2), zmxStsNoErr);
    EXPECT_EQ(one, two);
    EXPECT_EQ(one, (V16{7, 5, 1, -5}));
}

TEST(Wavelet53, ColumnLiftingAgreesWithTheModel) {
    auto forward16 = sixRows<Zmx16s>(zmxiWTFwdColLift_B53_JPEG2K_16s_C1);
    auto forward32 = sixRows<Zmx32s>(zmxiWTFwdColLift_B53_JPEG2K_32s_C1);
    auto inverse16 = sixRows<Zmx16s>(zmxiWTInvColLift_B53_JPEG2K_16s_C1);
    auto inverse32 = sixRows<Zmx32s>(zmxiWTInvColLift_B53_JPEG2K_32s_C1);
    // At an edge one source row serves for two.
    checkLift<Zmx16s, 6>(forward16, sixRows<Zmx16s>(model::forwardLift53<Zmx16s>), {{0, 2}}, 561);
    checkLift<Zmx32s, 6>(forward32, sixRows<Zmx32s>(model::forwardLift53<Zmx32s>), {{0, 2}}, 562);
    checkLift<Zmx16s, 6>(inverse16, sixRows<Zmx16s>(model::inverseLift53<Zmx16s>), {{1, 2}}, 563);
    checkLift<Zmx32s, 6>(inverse32, sixRows<Zmx32s>(model::inverseLift53<Zmx32s>), {{1, 2}}, 564);
}

TEST(Wavelet53, TheFirstBadArgumentDecides) {
    checkPlaneArguments(kPlanes16);
    checkPlaneArguments(kPlanes32);
    checkKernelArguments<Zmx16s>({zmxiWTFwdRow_B53_JPEG2K_16s_C1R, zmxiWTFwdCol_B53_JPEG2K_16s_C1R},
                                 {zmxiWTInvRow_B53_JPEG2K_16s_C1R, zmxiWTInvCol_B53_JPEG2K_16s_C1R});
    checkKernelArguments<Zmx32s>({zmxiWTFwdRow_B53_JPEG2K_32s_C1R, zmxiWTFwdCol_B53_JPEG2K_32s_C1R},
                                 {zmxiWTInvRow_B53_JPEG2K_32s_C1R, zmxiWTInvCol_B53_JPEG2K_32s_C1R});
    checkLiftArguments<Zmx16s, 6>(sixRows<Zmx16s>(zmxiWTFwdColLift_B53_JPEG2K_16s_C1));
    checkLiftArguments<Zmx32s, 6>(sixRows<Zmx32s>(zmxiWTFwdColLift_B53_JPEG2K_32s_C1));
    checkLiftArguments<Zmx16s, 6>(sixRows<Zmx16s>(zmxiWTInvColLift_B53_JPEG2K_16s_C1));
    checkLiftArguments<Zmx32s, 6>(sixRows<Zmx32s>(zmxiWTInvColLift_B53_JPEG2K_32s_C1));
}

TEST(Wavelet53, TheSameBytesInEveryBuild) {
    EXPECT_EQ(planeDigest(kPlanes16, 32767), 0x895389FC9EBFAC1Bu);
    EXPECT_EQ(planeDigest(kPlanes32, 1 << 30), 0x8E6820191EFC7DD6u);
    EXPECT_EQ(kernelDigest<Zmx16s>(zmxiWTFwdRow_B53_JPEG2K_16s_C1R, false, 32767), 0x5734AA56A97BC637u);
    EXPECT_EQ(kernelDigest<Zmx32s>(zmxiWTFwdRow_B53_JPEG2K_32s_C1R, false, 1 << 30), 0x07165FC1CE3AAFF4u);
    EXPECT_EQ(kernelDigest<Zmx16s>(zmxiWTFwdCol_B53_JPEG2K_16s_C1R, true, 32767), 0xAA1062EC21DC1F8Eu);
    EXPECT_EQ(kernelDigest<Zmx32s>(zmxiWTFwdCol_B53_JPEG2K_32s_C1R, true, 1 << 30), 0xA3048D304085FF21u);
    EXPECT_EQ(kernelDigest<Zmx16s>(zmxiWTInvRow_B53_JPEG2K_16s_C1R, false, 32767), 0x1CB434EEB72FF75Cu);
    EXPECT_EQ(kernelDigest<Zmx32s>(zmxiWTInvRow_B53_JPEG2K_32s_C1R, false, 1 << 30), 0x52A24FB813CE2C03u);
    EXPECT_EQ(kernelDigest<Zmx16s>(zmxiWTInvCol_B53_JPEG2K_16s_C1R, true, 32767), 0x2CC1CA4FB7894E6Fu);
    EXPECT_EQ(kernelDigest<Zmx32s>(zmxiWTInvCol_B53_JPEG2K_32s_C1R, true, 1 << 30), 0x62112880DC0A7338u);
    EXPECT_EQ((liftDigest<Zmx16s, 6>(sixRows<Zmx16s>(zmxiWTFwdColLift_B53_JPEG2K_16s_C1), 32767)), 0x1DE308253CC7546Bu);
    EXPECT_EQ((liftDigest<Zmx32s, 6>(sixRows<Zmx32s>(zmxiWTFwdColLift_B53_JPEG2K_32s_C1), 1 << 30)),
              0x84891BB22F86B048u);
    EXPECT_EQ((liftDigest<Zmx16s, 6>(sixRows<Zmx16s>(zmxiWTInvColLift_B53_JPEG2K_16s_C1), 32767)), 0xD568B8081CC79B80u);
    EXPECT_EQ((liftDigest<Zmx32s, 6>(sixRows<Zmx32s>(zmxiWTInvColLift_B53_JPEG2K_32s_C1), 1 << 30)),
              0x672660170CBB7CA6u);
}
