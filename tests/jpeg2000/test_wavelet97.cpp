// The irreversible 9/7 wavelet on whole planes against its model.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/wavelet97.h"
#include "tests/jpeg2000/support/wavelet_checks.h"
#include "tests/support/rounds.h"
#include "zmxj/wavelet.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>

namespace {

constexpr PlaneFns<Zmx16s> kPlanes16{zmxiWTFwd_D97_JPEG2K_16s_C1IR,
                                     zmxiWTInv_D97_JPEG2K_16s_C1IR,
                                     zmxiWTFwd_D97_JPEG2K_16s_C1R,
                                     zmxiWTInv_D97_JPEG2K_16s_C1R,
                                     zmxiWTGetBufSize_D97_JPEG2K_16s_C1IR,
                                     zmxiWTGetBufSize_D97_JPEG2K_16s_C1R,
                                     model::forward97<Zmx16s>,
                                     model::inverse97<Zmx16s>,
                                     model::lineSize97<Zmx16s>,
                                     model::bandSize97<Zmx16s>};
constexpr PlaneFns<Zmx32s> kPlanes32{zmxiWTFwd_D97_JPEG2K_32s_C1IR,
                                     zmxiWTInv_D97_JPEG2K_32s_C1IR,
                                     zmxiWTFwd_D97_JPEG2K_32s_C1R,
                                     zmxiWTInv_D97_JPEG2K_32s_C1R,
                                     zmxiWTGetBufSize_D97_JPEG2K_32s_C1IR,
                                     zmxiWTGetBufSize_D97_JPEG2K_32s_C1R,
                                     model::forward97<Zmx32s>,
                                     model::inverse97<Zmx32s>,
                                     model::lineSize97<Zmx32s>,
                                     model::bandSize97<Zmx32s>};

using V16 = std::vector<Zmx16s>;
using V32 = std::vector<Zmx32s>;

} // namespace

TEST(Wavelet97, PlanesAgreeWithTheModel) {
    checkPlanes(kPlanes16, 12, 40, 571);
    checkPlanes(kPlanes32, 12, 40, 572);
}

TEST(Wavelet97, LinesOfAllLengthsAgreeWithTheModel) {
    checkLines(kPlanes16, 573);
    checkLines(kPlanes32, 576);
}

// Lines are worked through in runs: one below, at and above multiples of a power of two, either way round.
TEST(Wavelet97, LinesAroundTheEndsOfRuns) {
    Rng rng(0x5A97);
    for (int run : {64, 128, 256, 260, 512, 520})
        for (int n = run - 2; n <= run + 2; ++n)
            for (int phases = 0; phases < 4; ++phases)
                for (const ZmxiSize s : {ZmxiSize{n, 1}, ZmxiSize{n, 3}, ZmxiSize{1, n}}) {
                    SCOPED_TRACE(::testing::Message() << n << ", " << phases);
                    checkInPlace(rng, kPlanes32, {phases & 1, phases >> 1, s.width, s.height},
                                 kCharacters[rng.range(0, 5)]);
                    if (HasFatalFailure()) return;
                }
}

TEST(Wavelet97, ScratchSizes) {
    checkSizes(kPlanes16, 574);
    checkSizes(kPlanes32, 575);
    EXPECT_EQ(sizeOf(zmxiWTGetBufSize_D97_JPEG2K_16s_C1IR, 2, 1), 20);
    EXPECT_EQ(sizeOf(zmxiWTGetBufSize_D97_JPEG2K_16s_C1IR, 1, 1), 0);
    EXPECT_EQ(sizeOf(zmxiWTGetBufSize_D97_JPEG2K_32s_C1IR, 2, 1), 40);
    EXPECT_EQ(sizeOf(zmxiWTGetBufSize_D97_JPEG2K_32s_C1R, 2, 1), 72);
    EXPECT_EQ(sizeOf(zmxiWTGetBufSize_D97_JPEG2K_16s_C1R, 1, 1), 32);
}

TEST(Wavelet97, SingleSamples) {
    Zmx8u none[1];
    const ZmxiRect odd{1, 1, 1, 1}, even{0, 0, 1, 1}, oddY{2, 3, 1, 1};
    Zmx16s v = 100;
    EXPECT_EQ(zmxiWTFwd_D97_JPEG2K_16s_C1IR(&v, 1, &even, none), zmxStsNoErr);
    EXPECT_EQ(v, 100);
    EXPECT_EQ(zmxiWTFwd_D97_JPEG2K_16s_C1IR(&v, 1, &oddY, none), zmxStsNoErr);
    EXPECT_EQ(v, 200);
    v = -7;
    EXPECT_EQ(zmxiWTInv_D97_JPEG2K_16s_C1IR(&v, 1, &oddY, none), zmxStsNoErr);
    EXPECT_EQ(v, -3) << "toward zero";
    v = 20000;
    EXPECT_EQ(zmxiWTFwd_D97_JPEG2K_16s_C1IR(&v, 1, &oddY, none), zmxStsNoErr);
    EXPECT_EQ(v, 40000 - 65536);
    Zmx32s w = 100;
    EXPECT_EQ(zmxiWTFwd_D97_JPEG2K_32s_C1IR(&w, 1, &odd, none), zmxStsNoErr);
    EXPECT_EQ(w, 400);
    w = -7;
    EXPECT_EQ(zmxiWTInv_D97_JPEG2K_32s_C1IR(&w, 1, &odd, none), zmxStsNoErr);
    EXPECT_EQ(w, -1);
}

TEST(Wavelet97, EmptyRectanglesAreAcceptedInPlace) {
    Zmx8u none[64];
    for (int height : {0, -1}) {
        V32 v{1, 2, 3, 4};
        const ZmxiRect r{0, 1, 4, height};
        EXPECT_EQ(zmxiWTFwd_D97_JPEG2K_32s_C1IR(v.data(), 16, &r, none), zmxStsNoErr);
        EXPECT_EQ(v, (V32{2, 4, 6, 8}));
        EXPECT_EQ(zmxiWTInv_D97_JPEG2K_32s_C1IR(v.data(), 16, &r, none), zmxStsNoErr);
        EXPECT_EQ(v, (V32{1, 2, 3, 4}));
    }
    for (int width : {0, -1}) {
        V16 v{1, 2, 3, 4, 5, 6};
        const ZmxiRect r{1, 1, width, 6};
        EXPECT_EQ(zmxiWTFwd_D97_JPEG2K_16s_C1IR(v.data(), 2, &r, none), zmxStsNoErr);
        EXPECT_EQ(v, (V16{2, 4, 6, 8, 10, 12}));
        EXPECT_EQ(zmxiWTInv_D97_JPEG2K_16s_C1IR(v.data(), 2, &r, none), zmxStsNoErr);
        EXPECT_EQ(v, (V16{1, 2, 3, 4, 5, 6}));
    }
}

TEST(Wavelet97, ShortLinesAreFiltered) {
    // Two samples go through the filter on a, b, a, b ..., not through a difference: 1000, 0 has the low
    // value 500 and a bit.
    const V32 pair = row(zmxiWTFwd_D97_JPEG2K_32s_C1IR, V32{1000, 0}, 0);
    EXPECT_EQ(pair, (V32{500, -999}));
    EXPECT_EQ(row(zmxiWTFwd_D97_JPEG2K_16s_C1IR, V16{1000, 0}, 0), (V16{500, -1000}));
    // A flat line has no high band; what the constants leave of it is truncated in one system and rounded in
    // the other.
    for (int n = 2; n <= 9; ++n)
        for (int x : {0, 1}) {
            const V16 flat(std::size_t(n), Zmx16s(1000));
            const V16 t = row(zmxiWTFwd_D97_JPEG2K_16s_C1IR, flat, x);
            for (int i = 0; i < n; ++i) {
                const bool high = x ? i < (n + 1) / 2 - (n & 1) : i >= (n + 1) / 2;
                if (x && (n & 1) && i >= n / 2) continue; // the overwritten place and the one left alone
                EXPECT_NEAR(t[std::size_t(i)], high ? 0 : 1000, 1) << n << ' ' << x << ' ' << i;
            }
        }
}

TEST(Wavelet97, FourteenFractionalBitsWrap) {
    for (int n : {9, 17}) {
        V16 v(std::size_t(n), 0);
        v[5] = 32767;
        const V16 t = row(zmxiWTFwd_D97_JPEG2K_16s_C1IR, v, 0);
        EXPECT_EQ(t[std::size_t((n + 1) / 2 + 2)], -28999);
        EXPECT_EQ(column(zmxiWTFwd_D97_JPEG2K_16s_C1IR, v, 0), t);
    }
}

TEST(Wavelet97, AtAnOddOriginTheHighBandComesFirst) {
    // An impulse far from the ends: its even neighbours make the low band, which stands behind the high one.
    for (int n : {6, 10}) {
        V16 v(std::size_t(n), Zmx16s(1000));
        const V16 t = row(zmxiWTFwd_D97_JPEG2K_16s_C1IR, v, 1);
        for (int i = 0; i < n; ++i) EXPECT_NEAR(t[std::size_t(i)], i < n / 2 ? 0 : 1000, 1);
        EXPECT_EQ(column(zmxiWTFwd_D97_JPEG2K_16s_C1IR, v, 1), t);
        V32 w(std::size_t(n), 1000);
        const V32 u = row(zmxiWTFwd_D97_JPEG2K_32s_C1IR, w, 1);
        for (int i = 0; i < n; ++i) EXPECT_NEAR(u[std::size_t(i)], i < n / 2 ? 0 : 1000, 1);
    }
    // Of five samples the last high one replaces the first low one, and the last sample of the line is left
    // alone.
    const V32 in{1000, 1000, 1000, 1000, 1234};
    V32 t = row(zmxiWTFwd_D97_JPEG2K_32s_C1IR, in, 1);
    EXPECT_EQ(t[4], 1234);
    const V16 in16{1000, 1000, 1000, 1000, 1000};
    const V16 t16 = row(zmxiWTFwd_D97_JPEG2K_16s_C1IR, in16, 1);
    EXPECT_EQ(t16[4], 1000);
    for (int i : {0, 1, 2}) EXPECT_NEAR(t16[std::size_t(i)], 0, 1);
    EXPECT_NEAR(t16[3], 1000, 1);
    EXPECT_EQ(column(zmxiWTFwd_D97_JPEG2K_32s_C1IR, in, 1), t);
}

TEST(Wavelet97, OutputsAreLimitedAndTruncated) {
    EXPECT_EQ(model::toSample(2147483648.0), INT_MIN) << "passes both comparisons";
    EXPECT_EQ(model::toSample(2147483648.5), INT_MAX);
    EXPECT_EQ(model::toSample(2147483647.9), INT_MAX);
    EXPECT_EQ(model::toSample(-2147483648.0), INT_MIN);
    EXPECT_EQ(model::toSample(-1e18), INT_MIN);
    EXPECT_EQ(model::toSample(-2.9), -2);
    EXPECT_EQ(model::toSample(2.9), 2);
    // The high value of one great odd sample is past 32 bits; the first sum of two neighbours wraps instead.
    V32 v(9, 0);
    v[3] = INT_MAX;
    EXPECT_EQ(row(zmxiWTFwd_D97_JPEG2K_32s_C1IR, v, 0)[6], INT_MAX);
    v[3] = INT_MIN;
    EXPECT_EQ(row(zmxiWTFwd_D97_JPEG2K_32s_C1IR, v, 0)[6], INT_MIN);
    EXPECT_EQ(row(zmxiWTInv_D97_JPEG2K_32s_C1IR, V32{INT_MAX, INT_MAX, INT_MAX, INT_MIN, INT_MIN}, 0)[2], INT_MAX);
    // 2^30 on both sides of an odd sample: the sum is -2^31, so A is positive where it would have been
    // negative.
    const V32 t = row(zmxiWTFwd_D97_JPEG2K_32s_C1IR, V32(8, 1 << 30), 0);
    for (int i = 4; i < 8; ++i) EXPECT_EQ(t[std::size_t(i)], INT_MAX);
}

namespace {

template <class T>
void checkNearReconstruction(const PlaneFns<T>& f, int magnitude, int tolerance, std::uint64_t seed) {
    SCOPED_TRACE(seed);
    Rng rng(seed);
    std::vector<Zmx8u> scratch(200000);
    for (int turn = 0; turn < 200; ++turn) {
        const ZmxiRect r{0, 2 * int(rng.range(-5, 5)), int(rng.range(1, 60)), int(rng.range(1, 60))};
        SCOPED_TRACE(::testing::Message() << r.width << 'x' << r.height);
        const auto v = rng.vec<T>(std::size_t(r.width * r.height), -magnitude, magnitude);
        auto a = v;
        ASSERT_EQ(f.forward(a.data(), r.width * int(sizeof(T)), &r, scratch.data()), zmxStsNoErr);
        ASSERT_EQ(f.inverse(a.data(), r.width * int(sizeof(T)), &r, scratch.data()), zmxStsNoErr);
        for (std::size_t i = 0; i < v.size(); ++i) ASSERT_NEAR(v[i], a[i], tolerance) << i;
    }
}

} // namespace

TEST(Wavelet97, ComesBackNearlyFromAnEvenOrigin) {
    checkNearReconstruction(kPlanes16, 3000, 8, 581);
    checkNearReconstruction(kPlanes32, 1 << 20, 8, 582);
}

TEST(Wavelet97, TheFirstBadArgumentDecides) {
    checkPlaneArguments(kPlanes16);
    checkPlaneArguments(kPlanes32);
}

namespace {

// Rows whose outputs lie at or next to whole numbers, where a truncation turns on the last bits; the plane is
// two samples high at most, so that the other direction is plain.
class HardRows {
    Rng rng;

    // Coefficients near multiples of the scales: n K and n / K lie close to whole numbers for these n.
    std::vector<Zmx32s> nearWhole;

public:
    explicit HardRows(std::uint64_t seed) : rng(seed) {
        for (const double scale :
             {1.2301741, 0.8128931, double(1.2301741F), double(0.8128931F), 1.0 / double(1.2301741F)})
            for (Zmx32s n = 1; n < 2000000 && nearWhole.size() < 3000; ++n) {
                const double x = n * scale;
                if (std::abs(x - double(std::int64_t(x + 0.5))) < 2e-6) nearWhole.push_back(n);
            }
    }
    Zmx32s hard() {
        const Zmx32s v = nearWhole[std::size_t(rng.range(0, std::int64_t(nearWhole.size()) - 1))];
        return rng.oneIn(2) ? v : -v;
    }
    void fill(std::vector<Zmx32s>& row) {
        const auto kind = rng.range(0, 9);
        const auto magnitude = std::int64_t(1) << rng.range(1, 31);
        const Zmx32s value = Zmx32s(rng.range(-magnitude, magnitude - 1)), slope = Zmx32s(rng.range(-1000, 1000));
        const Zmx32s powers = Zmx32s(Zmx32u(1) << rng.range(0, 31));
        for (std::size_t i = 0; i < row.size(); ++i) switch (kind) {
            case 0:
                row[i] = value;
                break; // flat
            case 1:
                row[i] = Zmx32s(Zmx32u(value) + Zmx32u(slope) * Zmx32u(i));
                break; // ramp
            case 2:
                row[i] = rng.oneIn(12) ? hard() : 0;
                break; // sparse, near whole
            case 3:
                row[i] = rng.oneIn(12) ? powers : 0;
                break; // a power of two
            case 4:
                row[i] = Zmx32s(rng.range(-255, 255));
                break;
            case 5:
                row[i] = i < row.size() / 2 ? value : hard();
                break; // a step between flats
            case 6:
                row[i] = Zmx32s((rng.oneIn(2) ? 1 : -1) * rng.range(1 << 26, INT_MAX));
                break;
            case 7:
                row[i] = Zmx32s(rng.range(INT_MAX - 9, INT_MAX)) * (i & 1 ? -1 : 1);
                break; // near the limits
            case 8:
                row[i] = i & 1 ? -value / 2 : value / 2;
                break; // all high band
            default:
                row[i] = Zmx32s(rng.range(-magnitude, magnitude - 1));
                break;
            }
    }
};

void stressPlanes(long samples, std::uint64_t seed) {
    SCOPED_TRACE(seed);
    HardRows rows(seed);
    Rng rng(seed + 1);
    constexpr int kLongest = 512;
    std::vector<Zmx8u> scratch(4 * kLongest + 64);
    for (long done = 0; done < samples;) {
        const int n = int(rng.range(2, kLongest)), lines = n < 32 ? 1 : int(rng.range(1, 3));
        const bool down = rng.oneIn(3), forward = rng.oneIn(2);
        const ZmxiRect r{int(rng.range(0, 1)), int(rng.range(0, 1)), down ? lines : n, down ? n : lines};
        model::Grid<Zmx32s> want(r.width, r.height);
        std::vector<Zmx32s> line(static_cast<std::size_t>(n));
        for (int k = 0; k < lines; ++k) {
            rows.fill(line);
            for (int i = 0; i < n; ++i) (down ? want.at(k, i) : want.at(i, k)) = line[std::size_t(i)];
        }
        auto v = want.v;
        (forward ? model::forward97<Zmx32s> : model::inverse97<Zmx32s>)(want, r);
        ASSERT_EQ((forward ? kPlanes32.forward : kPlanes32.inverse)(v.data(), 4 * r.width, &r, scratch.data()),
                  zmxStsNoErr);
        ASSERT_TRUE(sameBytes(want.v, v))
            << (forward ? "forward " : "inverse ") << r.x << ',' << r.y << ' ' << r.width << 'x' << r.height;
        done += long(v.size());
    }
}

} // namespace

// The truncation to whole numbers agrees with the extended form where it hangs on the last bits.
TEST(Wavelet97, HardTruncationsAgreeWithTheExtendedForm) { stressPlanes(rounds(400'000), 591); }

// Flat planes of every small value and of many large ones.
TEST(Wavelet97, FlatPlanesAgreeWithTheExtendedForm) {
    Rng rng(592);
    Zmx8u scratch[256];
    const int small = rounds(3000), large = rounds(3000);
    for (int i = -small; i < small + large; ++i) {
        const Zmx32s value = i < small ? i : Zmx32s(rng.next());
        for (const bool forward : {true, false}) {
            const ZmxiRect r{i & 1, 0, 7, 6};
            model::Grid<Zmx32s> want(7, 6);
            for (Zmx32s& v : want.v) v = value;
            auto v = want.v;
            (forward ? model::forward97<Zmx32s> : model::inverse97<Zmx32s>)(want, r);
            ASSERT_EQ((forward ? kPlanes32.forward : kPlanes32.inverse)(v.data(), 28, &r, scratch), zmxStsNoErr);
            ASSERT_TRUE(sameBytes(want.v, v)) << value << ' ' << forward;
        }
    }
}

namespace {

// One output in the middle of a line, straight from the lifting steps: low and high ones of the forward
// transform, even and odd ones of the inverse.
struct MiddleOutput {
    const std::vector<long double>& x;
    long double a(int k) const {
        return x[std::size_t(k)] - 1.5861343F * (x[std::size_t(k - 1)] + x[std::size_t(k + 1)]);
    }
    long double b(int k) const { return x[std::size_t(k)] - 0.052980117F * (a(k - 1) + a(k + 1)); }
    long double g(int k) const { return a(k) + 0.8829111F * (b(k - 1) + b(k + 1)); }
    long double forward(int k) const {
        return k & 1 ? g(k) * 1.2301741F : (b(k) + 0.44350687F * (g(k - 1) + g(k + 1))) * 0.8128931F;
    }
    long double s(int k) const { return x[std::size_t(k)] * (k & 1 ? 0.8128931F : 1.2301741F); }
    long double backB(int k) const { return s(k) - 0.44350687F * (s(k - 1) + s(k + 1)); }
    long double backA(int k) const { return s(k) - 0.8829111F * (backB(k - 1) + backB(k + 1)); }
    long double even(int k) const { return backB(k) + 0.052980117F * (backA(k - 1) + backA(k + 1)); }
    long double inverse(int k) const { return k & 1 ? backA(k) + 1.5861343F * (even(k - 1) + even(k + 1)) : even(k); }
};

long double fraction(long double v) { return v - std::floor(v); }

// Changes two samples a little, so that the output lies as near to a whole number as they can bring it.
template <class Output> void bringNearWhole(std::vector<long double>& x, int near, Output output) {
    constexpr int kReach = 2000;
    const long double base = output(x);
    auto weight = [&](int j) {
        std::vector<long double> one(x.size());
        one[std::size_t(j)] = 1;
        return output(one);
    };
    const long double w0 = weight(near), w1 = weight(near + 1);
    std::vector<std::pair<long double, int>> steps;
    for (int d = -kReach; d <= kReach; ++d) steps.push_back({fraction(w0 * d), d});
    std::sort(steps.begin(), steps.end());
    long double best = 1;
    int d0 = 0, d1 = 0;
    for (int d = -kReach; d <= kReach; ++d) {
        const long double rest = fraction(-(base + w1 * d));
        const auto at = std::lower_bound(steps.begin(), steps.end(), std::pair{rest, -kReach});
        for (auto it = at == steps.begin() ? at : at - 1; it != steps.end() && it <= at; ++it)
            if (const long double off = std::abs(it->first - rest); off < best) best = off, d0 = it->second, d1 = d;
    }
    x[std::size_t(near)] += d0;
    x[std::size_t(near + 1)] += d1;
}

} // namespace

// Samples up to 2^27, the most that is not computed in extended precision outright, with one output a few
// units of the last place of a double from a whole number.
TEST(Wavelet97, OutputsMadeToLieAtWholeNumbers) {
    constexpr int n = 32, middle = 14;
    Rng rng(593);
    Zmx8u scratch[4 * n + 64];
    const ZmxiRect r{0, 0, n, 1};
    const int cases = rounds(200);
    for (int i = 0; i < cases; ++i) {
        const bool forward = i & 1;
        const int k = middle + (i >> 1 & 1);
        std::vector<long double> x(n);
        for (auto& v : x) v = static_cast<long double>(rng.range(-(1 << 27) + 5000, (1 << 27) - 5000));
        bringNearWhole(x, k, [=](const auto& line) {
            return forward ? MiddleOutput{line}.forward(k) : MiddleOutput{line}.inverse(k);
        });
        model::Grid<Zmx32s> want(n, 1);
        for (int j = 0; j < n; ++j) want.at(forward ? j : j / 2 + (j & 1) * n / 2, 0) = Zmx32s(x[std::size_t(j)]);
        auto v = want.v;
        (forward ? model::forward97<Zmx32s> : model::inverse97<Zmx32s>)(want, r);
        ASSERT_EQ((forward ? kPlanes32.forward : kPlanes32.inverse)(v.data(), 4 * n, &r, scratch), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(want.v, v)) << i;
    }
}

TEST(Wavelet97, TheSameBytesInEveryBuild) {
    EXPECT_EQ(planeDigest(kPlanes16, 20000), 0xC902F51D9D9526CAu);
    EXPECT_EQ(planeDigest(kPlanes32, 1 << 20), 0x15163305193A69A2u);
    EXPECT_EQ(planeDigest(kPlanes32, INT_MAX), 0x209B482A79A088DAu);
}
