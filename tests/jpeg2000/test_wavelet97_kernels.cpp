// The row kernels, column kernels and column lifting of the 9/7 wavelet against their model, in three number
// systems.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/wavelet97.h"
#include "tests/jpeg2000/support/wavelet_checks.h"
#include "zmxj/wavelet.h"

#include <bit>
#include <gtest/gtest.h>

namespace {

constexpr Reach kForward0{4, 3}, kForward1{3, 4};
constexpr InverseReach kInverse0{{1, 2}, {2, 2}}, kInverse1{{2, 1}, {2, 2}};

template <class T, class Fn> auto eightRows(Fn fn) {
    return [fn](T* const* r, int width) { return fn(r[0], r[1], r[2], r[3], r[4], r[5], r[6], r[7], width); };
}

using V16 = std::vector<Zmx16s>;

// One pair of outputs of a row kernel; x[0] of the call is element 4, and the samples of a band begin at
// element 2.
template <class T> std::array<T, 2> pair(ForwardKernel<T> fn, std::array<T, 10> x, int phase) {
    std::array<T, 2> out{};
    EXPECT_EQ(fn(&x[4], 1, &out[0], 1, &out[1], 1, {1, 1}, phase), zmxStsNoErr);
    return out;
}
template <class T> std::array<T, 2> pair(InverseKernel<T> fn, std::array<T, 5> low, std::array<T, 5> high, int phase) {
    std::array<T, 2> out{};
    EXPECT_EQ(fn(&low[2], 1, &high[2], 1, {1, 1}, out.data(), 1, phase), zmxStsNoErr);
    return out;
}

} // namespace

TEST(Wavelet97Kernels, RowsAgreeWithTheModel) {
    checkForwardKernel<Zmx16s>(zmxiWTFwdRow_D97_JPEG2K_16s_C1R, model::forwardLine97, false, kForward0, kForward1, 600,
                               601);
    checkForwardKernel<Zmx32s>(zmxiWTFwdRow_D97_JPEG2K_32s_C1R, model::forwardLine97, false, kForward0, kForward1, 600,
                               602);
    checkInverseKernel<Zmx16s>(zmxiWTInvRow_D97_JPEG2K_16s_C1R, model::inverseLine97, false, kInverse0, kInverse1, 600,
                               604);
    checkInverseKernel<Zmx32s>(zmxiWTInvRow_D97_JPEG2K_32s_C1R, model::inverseLine97, false, kInverse0, kInverse1, 600,
                               605);
}

TEST(Wavelet97Kernels, FloatRowsAgreeWithTheModel) {
    checkForwardKernel<Zmx32f>(zmxiWTFwdRow_D97_JPEG2K_32f_C1R, model::forwardLine97, false, kForward0, kForward1, 600,
                               603);
    checkInverseKernel<Zmx32f>(zmxiWTInvRow_D97_JPEG2K_32f_C1R, model::inverseLine97, false, kInverse0, kInverse1, 600,
                               606);
}

TEST(Wavelet97Kernels, FloatColumnsAgreeWithTheModel) {
    checkForwardKernel<Zmx32f>(zmxiWTFwdCol_D97_JPEG2K_32f_C1R, model::forwardLine97, true, kForward0, kForward1, 600,
                               607);
    checkInverseKernel<Zmx32f>(zmxiWTInvCol_D97_JPEG2K_32f_C1R, model::inverseLine97, true, kInverse0, kInverse1, 600,
                               608);
}

TEST(Wavelet97Kernels, ColumnLiftingAgreesWithTheModel) {
    // At an edge the caller mirrors: a source row serves for two, and so does a high row.
    checkLift<Zmx16s, 8>(eightRows<Zmx16s>(zmxiWTFwdColLift_D97_JPEG2K_16s_C1),
                         eightRows<Zmx16s>(model::forwardLift97<Zmx16s>), {{0, 2}}, 611);
    checkLift<Zmx32s, 8>(eightRows<Zmx32s>(zmxiWTFwdColLift_D97_JPEG2K_32s_C1),
                         eightRows<Zmx32s>(model::forwardLift97<Zmx32s>), {{0, 2}}, 612);
    checkLift<Zmx32f, 8>(eightRows<Zmx32f>(zmxiWTFwdColLift_D97_JPEG2K_32f_C1),
                         eightRows<Zmx32f>(model::forwardLift97<Zmx32f>), {{0, 2}}, 613);
    checkLift<Zmx16s, 8>(eightRows<Zmx16s>(zmxiWTInvColLift_D97_JPEG2K_16s_C1),
                         eightRows<Zmx16s>(model::inverseLift97<Zmx16s>), {{1, 2}}, 614);
    checkLift<Zmx32s, 8>(eightRows<Zmx32s>(zmxiWTInvColLift_D97_JPEG2K_32s_C1),
                         eightRows<Zmx32s>(model::inverseLift97<Zmx32s>), {{1, 2}}, 615);
    checkLift<Zmx32f, 8>(eightRows<Zmx32f>(zmxiWTInvColLift_D97_JPEG2K_32f_C1),
                         eightRows<Zmx32f>(model::inverseLift97<Zmx32f>), {{1, 2}}, 616);
}

TEST(Wavelet97Kernels, DirectTapsOfOnePair) {
    // The low sum of 16-bit samples leaves 32 bits and comes out positive; the exact one would be far below
    // -32768.
    EXPECT_EQ((pair<Zmx16s>(zmxiWTFwdRow_D97_JPEG2K_16s_C1R,
                            {-32768, 32767, 32767, -32768, -32768, -32768, 32767, 32767, -32768}, 0))[0],
              20306);
    // Each tap by itself, in units of 2^-16.
    const int low[] = {39515, 17489, -5126, -1105, 1753}, high[] = {73078, -38749, -3771, 5982};
    const int lowBack[] = {73078, 38750, -3771, -5981}, highBack[] = {39515, -17489, -5126, 1105, 1753};
    for (int at = -4; at <= 4; ++at) {
        std::array<Zmx32s, 10> x{};
        x[std::size_t(4 + at)] = 65536;
        const auto even = pair<Zmx32s>(zmxiWTFwdRow_D97_JPEG2K_32s_C1R, x, 0);
        EXPECT_EQ(even[0], low[std::abs(at)]) << at;
        EXPECT_EQ(even[1], at >= -2 ? high[std::abs(at - 1)] : 0) << at;
        if (at == -4) continue; // not read in the other phase
        const auto odd = pair<Zmx32s>(zmxiWTFwdRow_D97_JPEG2K_32s_C1R, x, 1);
        EXPECT_EQ(odd[0], low[std::abs(at - 1)]) << at;
        EXPECT_EQ(odd[1], at <= 3 ? high[std::abs(at)] : 0) << at;
    }
    for (int at = -2; at <= 2; ++at) {
        std::array<Zmx32s, 5> one{}, none{};
        one[std::size_t(2 + at)] = 65536;
        // Low sample i stands at 2 i and high sample i at 2 i + 1, or the other way round.
        const auto l0 = pair<Zmx32s>(zmxiWTInvRow_D97_JPEG2K_32s_C1R, one, none, 0),
                   h0 = pair<Zmx32s>(zmxiWTInvRow_D97_JPEG2K_32s_C1R, none, one, 0);
        const auto l1 = pair<Zmx32s>(zmxiWTInvRow_D97_JPEG2K_32s_C1R, one, none, 1),
                   h1 = pair<Zmx32s>(zmxiWTInvRow_D97_JPEG2K_32s_C1R, none, one, 1);
        auto tap = [](const auto& taps, int distance) {
            return std::abs(distance) < int(std::size(taps)) ? taps[std::abs(distance)] : 0;
        };
        EXPECT_EQ(l0[0], tap(lowBack, 2 * at)) << at;
        EXPECT_EQ(l0[1], tap(lowBack, 2 * at - 1)) << at;
        EXPECT_EQ(h0[0], tap(highBack, 2 * at + 1)) << at;
        EXPECT_EQ(h0[1], tap(highBack, 2 * at)) << at;
        EXPECT_EQ(l1[0], tap(lowBack, 2 * at + 1)) << at;
        EXPECT_EQ(l1[1], tap(lowBack, 2 * at)) << at;
        EXPECT_EQ(h1[0], tap(highBack, 2 * at)) << at;
        EXPECT_EQ(h1[1], tap(highBack, 2 * at - 1)) << at;
    }
    // Every term of 32-bit samples is rounded by itself: two taps of less than a half each stay nothing.
    EXPECT_EQ((pair<Zmx32s>(zmxiWTFwdRow_D97_JPEG2K_32s_C1R, {0, 0, 0, 1, 0, 0, 0, 0, 0}, 0))[0], 0);
    EXPECT_EQ((pair<Zmx16s>(zmxiWTFwdRow_D97_JPEG2K_16s_C1R, {0, 0, 0, 1, 1, 0, 0, 0, 0}, 0))[0], 1);
    // High and inverse outputs are limited on both sides.
    EXPECT_EQ((pair<Zmx16s>(zmxiWTFwdRow_D97_JPEG2K_16s_C1R, {0, 0, 0, 0, 0, 32767, 0, 0, 0}, 0))[1], 32767);
    EXPECT_EQ((pair<Zmx16s>(zmxiWTFwdRow_D97_JPEG2K_16s_C1R, {0, 0, 0, 0, 0, -32768, 0, 0, 0}, 0))[1], -32768);
    EXPECT_EQ((pair<Zmx16s>(zmxiWTInvRow_D97_JPEG2K_16s_C1R, {0, 0, -32768, 0, 0}, {}, 0))[0], -32768);
    EXPECT_EQ((pair<Zmx16s>(zmxiWTInvRow_D97_JPEG2K_16s_C1R, {0, 0, 32767, 0, 0}, {}, 0))[0], 32767);
    // The float taps.
    std::array<Zmx32f, 10> x{};
    x[4] = 1;
    const auto f = pair<Zmx32f>(zmxiWTFwdRow_D97_JPEG2K_32f_C1R, x, 0);
    EXPECT_EQ(std::bit_cast<Zmx32u>(f[0]), 0x3F1A5ADEu);
    EXPECT_EQ(std::bit_cast<Zmx32u>(f[1]), 0xBF175D96u);
}

TEST(Wavelet97Kernels, ConstantLineSaturatesAtTheFirstStep) {
    // A is 32767 - 103949 * 65534 / 65536 = -71176, limited to -32768, and so on from there.
    V16 x(24, 32767), low(6), high(6);
    EXPECT_EQ(zmxiWTFwdRow_D97_JPEG2K_16s_C1R(&x[4], 2, low.data(), 2, high.data(), 2, {6, 1}, 0), zmxStsNoErr);
    // B = 32767 + 3472 = 32767 limited; G = -32768 + 57862 = 25092; high = 25092 K = 30868; low = (53274 B +
    // 23627 * 50184) >> 16, limited.
    for (int i = 0; i < 6; ++i) {
        // The last one is limited before it is scaled; the first one has the wrapped G(-1) beside it, which
        // is -32768.
        EXPECT_EQ(low[std::size_t(i)], i == 0 ? 23869 : i < 5 ? 32767 : 26636) << i;
        EXPECT_EQ(high[std::size_t(i)], 30868) << i;
    }
}

TEST(Wavelet97Kernels, TheTermAheadOfARowWraps) {
    // Phase 0: B(-2) + B(0) beyond 37,113 takes the gamma term out of 32 bits. That term makes G(-1), which
    // enters low 0 only.
    V16 x(20, 0), low(4), high(4);
    x[2] = 30000; // x[-2]
    x[4] = 30000; // x[0]
    x[1] = x[3] = x[5] = 30000;
    EXPECT_EQ(zmxiWTFwdRow_D97_JPEG2K_16s_C1R(&x[4], 2, low.data(), 2, high.data(), 2, {4, 1}, 0), zmxStsNoErr);
    V16 wantLow(4), wantHigh(4);
    model::forwardLine97(&x[4], wantLow.data(), wantHigh.data(), 4, 0);
    EXPECT_EQ(low, wantLow);
    // The same samples two further on take the exact term.
    V16 moved(22, 0), low2(5), high2(5);
    std::copy(x.begin(), x.end(), moved.begin() + 2);
    EXPECT_EQ(zmxiWTFwdRow_D97_JPEG2K_16s_C1R(&moved[4], 2, low2.data(), 2, high2.data(), 2, {5, 1}, 0), zmxStsNoErr);
    EXPECT_NE(low2[1], low[0]);
    EXPECT_EQ(low2[2], low[1]);
}

// Sums that end in a half go up, in the terms that wrap as well. Random samples hardly come by one; each of these lines does.
TEST(Wavelet97Kernels, TiesOfTheTermsThatWrapGoUp) {
    const struct {
        V16 x; // from element -4 on
        int low0;
    } forward[] = {{{-6660, -6658, -6657, -6658, -6661, -6663, -6660, -6659, -6662, -6661, -6661}, -6661},
                   {{-6661, -6657, -6657, -6660, -6661, -6655, -6655, -6660, -6655, -6660, -6656}, -6660},
                   {{-6656, -6656, -6660, -6659, -6659, -6660, -6655, -6660, -6660, -6660, -6657}, -6658}};
    for (const auto& c : forward) {
        V16 low(2), high(2), wantLow(2), wantHigh(2);
        EXPECT_EQ(zmxiWTFwdRow_D97_JPEG2K_16s_C1R(&c.x[4], 2, low.data(), 2, high.data(), 2, {2, 1}, 0), zmxStsNoErr);
        EXPECT_EQ(low[0], c.low0);
        model::forwardLine97(&c.x[4], wantLow.data(), wantHigh.data(), 2, 0);
        EXPECT_EQ(low, wantLow);
        EXPECT_EQ(high, wantHigh);
    }
    const struct {
        V16 low, high; // from element -2 on
        V16 x;
    } inverse[] = {
        {{-16959, -16956, -16954, -16954, -16953, -16955},
         {-2656, -5032, 4968, 4918, 2667, 338},
         {-17493, -28207, -20949, 28465}},
        {{3810, 3810, 3804, 3809, 3810, 3804}, {-61, -3008, -2114, -1425, -6848, 2225}, {5145, 2694, 4588, 3633}},
        {{3364, 3362, 3360, 3362, 3362, 3365}, {3319, -2213, -2534, 818, 979, 5806}, {4697, 2058, 3800, 4074}}};
    for (const auto& c : inverse) {
        V16 x(4), want(4);
        EXPECT_EQ(zmxiWTInvRow_D97_JPEG2K_16s_C1R(&c.low[2], 2, &c.high[2], 2, {2, 1}, x.data(), 2, 0), zmxStsNoErr);
        EXPECT_EQ(x, c.x);
        model::inverseLine97(&c.low[2], &c.high[2], want.data(), 2, 0);
        EXPECT_EQ(x, want);
    }
}

TEST(Wavelet97Kernels, AnyPhaseButZeroIsOdd) {
    Rng rng(621);
    const auto x = rng.vec<Zmx16s>(24, -3000, 3000);
    V16 one(8), two(8);
    EXPECT_EQ(zmxiWTFwdRow_D97_JPEG2K_16s_C1R(&x[4], 2, &one[0], 2, &one[4], 2, {4, 1}, 1), zmxStsNoErr);
    EXPECT_EQ(zmxiWTFwdRow_D97_JPEG2K_16s_C1R(&x[4], 2, &two[0], 2, &two[4], 2, {4, 1}, 2), zmxStsNoErr);
    EXPECT_EQ(one, two);
}

TEST(Wavelet97Kernels, TheFirstBadArgumentDecides) {
    checkKernelArguments<Zmx16s>({zmxiWTFwdRow_D97_JPEG2K_16s_C1R}, {zmxiWTInvRow_D97_JPEG2K_16s_C1R});
    checkKernelArguments<Zmx32s>({zmxiWTFwdRow_D97_JPEG2K_32s_C1R}, {zmxiWTInvRow_D97_JPEG2K_32s_C1R});
    checkKernelArguments<Zmx32f>({zmxiWTFwdRow_D97_JPEG2K_32f_C1R, zmxiWTFwdCol_D97_JPEG2K_32f_C1R},
                                 {zmxiWTInvRow_D97_JPEG2K_32f_C1R, zmxiWTInvCol_D97_JPEG2K_32f_C1R});
    checkLiftArguments<Zmx16s, 8>(eightRows<Zmx16s>(zmxiWTFwdColLift_D97_JPEG2K_16s_C1));
    checkLiftArguments<Zmx32s, 8>(eightRows<Zmx32s>(zmxiWTFwdColLift_D97_JPEG2K_32s_C1));
    checkLiftArguments<Zmx32f, 8>(eightRows<Zmx32f>(zmxiWTFwdColLift_D97_JPEG2K_32f_C1));
    checkLiftArguments<Zmx16s, 8>(eightRows<Zmx16s>(zmxiWTInvColLift_D97_JPEG2K_16s_C1));
    checkLiftArguments<Zmx32s, 8>(eightRows<Zmx32s>(zmxiWTInvColLift_D97_JPEG2K_32s_C1));
    checkLiftArguments<Zmx32f, 8>(eightRows<Zmx32f>(zmxiWTInvColLift_D97_JPEG2K_32f_C1));
}

TEST(Wavelet97Kernels, TheSameBytesInEveryBuild) {
    EXPECT_EQ(kernelDigest<Zmx16s>(zmxiWTFwdRow_D97_JPEG2K_16s_C1R, false, 32767), 0x53D370A1BB5987C6u);
    EXPECT_EQ(kernelDigest<Zmx32s>(zmxiWTFwdRow_D97_JPEG2K_32s_C1R, false, 1 << 30), 0xFF04BD8C40CE0B74u);
    EXPECT_EQ(kernelDigest<Zmx32f>(zmxiWTFwdRow_D97_JPEG2K_32f_C1R, false, 1 << 20), 0xF3D7B7DC67222C65u);
    EXPECT_EQ(kernelDigest<Zmx32f>(zmxiWTFwdCol_D97_JPEG2K_32f_C1R, true, 1 << 20), 0xDA17FCDF1276E1E2u);
    EXPECT_EQ(kernelDigest<Zmx16s>(zmxiWTInvRow_D97_JPEG2K_16s_C1R, false, 32767), 0x6153AA4DE1C0E2EBu);
    EXPECT_EQ(kernelDigest<Zmx32s>(zmxiWTInvRow_D97_JPEG2K_32s_C1R, false, 1 << 30), 0x201A752D8B71FD3Du);
    EXPECT_EQ(kernelDigest<Zmx32f>(zmxiWTInvRow_D97_JPEG2K_32f_C1R, false, 1 << 20), 0x7E6FA69EE5CAEB55u);
    EXPECT_EQ(kernelDigest<Zmx32f>(zmxiWTInvCol_D97_JPEG2K_32f_C1R, true, 1 << 20), 0xADABCAD535AEFD45u);
    EXPECT_EQ((liftDigest<Zmx16s, 8>(eightRows<Zmx16s>(zmxiWTFwdColLift_D97_JPEG2K_16s_C1), 32767)),
              0x8938BC0570FF833Au);
    EXPECT_EQ((liftDigest<Zmx32s, 8>(eightRows<Zmx32s>(zmxiWTFwdColLift_D97_JPEG2K_32s_C1), 1 << 30)),
              0xB53BA5242CD20A2Eu);
    EXPECT_EQ((liftDigest<Zmx32f, 8>(eightRows<Zmx32f>(zmxiWTFwdColLift_D97_JPEG2K_32f_C1), 1 << 20)),
              0xFBD24AD7D828BDBEu);
    EXPECT_EQ((liftDigest<Zmx16s, 8>(eightRows<Zmx16s>(zmxiWTInvColLift_D97_JPEG2K_16s_C1), 32767)),
              0xC1E52B1E4782BF7Fu);
    EXPECT_EQ((liftDigest<Zmx32s, 8>(eightRows<Zmx32s>(zmxiWTInvColLift_D97_JPEG2K_32s_C1), 1 << 30)),
              0xB22B418A81F50772u);
    EXPECT_EQ((liftDigest<Zmx32f, 8>(eightRows<Zmx32f>(zmxiWTInvColLift_D97_JPEG2K_32f_C1), 1 << 20)),
              0x6A2DB5E954F0B0B9u);
}
