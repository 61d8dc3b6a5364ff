// pidctmul.h - the multipliers of the 8x8 transforms, each made by its rule from cosines of multiples of pi/16.
//
// The integer transforms follow the flow graph of C. Loeffler, A. Ligtenberg and G. Moschytz, "Practical fast 1-D DCT
// algorithms with 11 multiplications" (ICASSP 1989). Its steps, in the order of the forward transform:
//   butterflies    of the samples, which part the even from the odd results, and of the sums once more
//   even rotation  by 6 pi/16 and the root of two, for the results 2 and 6
//   root of two    on the outer two differences; the graph has it on the results 3 and 5, and the inverse keeps it there
//   odd butterflies
//   odd rotations  by pi/16 for the results 1 and 7, and by 3 pi/16 for the results 3 and 5
// The inverse takes the same steps back. The numbers that stand are asserted: they are part of the interface.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

#include <cstdint>
#include <numbers>

namespace zmx::dct {

// ---- the rules

// cos(k pi/16), by its series: fifteen terms leave less than 1e-17 up to pi.
constexpr double cosine(int k) {
    const double x = (k % 32) * (std::numbers::pi / 16) - (k % 32 > 16 ? 2 * std::numbers::pi : 0);
    double sum = 0, term = 1;
    for (int n = 0; n < 30; n += 2) {
        sum += term;
        term *= -x * x / ((n + 1) * (n + 2));
    }
    return sum;
}
constexpr double magnitude(double v) { return v < 0 ? -v : v; }
inline constexpr double kRoot2 = std::numbers::sqrt2;

// A magnitude with so many fraction bits, rounded.
constexpr Zmx32u fixed(double v, int bits) { return Zmx32u(magnitude(v) * (1 << bits) + 0.5); }

// A rotation in three products: with w = both (x + y) it is w + minus x and w - plus y, or the same with a minus that is
// taken away. Its cosine and sine are a and b, in units of `factor`.
struct Rotation {
    Zmx32u both, minus, plus;
    constexpr bool operator==(const Rotation&) const = default;
};
constexpr Rotation rotation(int a, int b, int bits, double factor = 1) {
    return {fixed(factor * cosine(a), bits), fixed(factor * (cosine(a) - cosine(b)), bits),
            fixed(factor * (cosine(a) + cosine(b)), bits)};
}

// ---- the full transforms: 15 fraction bits, but 12 behind operands that are eight times as large already

inline constexpr Rotation kEven = rotation(6, 2, 15, kRoot2);
static_assert(kEven == Rotation{17734, 25080, 60547});

inline constexpr Rotation kOddBy1 = rotation(7, 1, 15), kOddBy3 = rotation(3, 5, 15); // inverse
static_assert(kOddBy1 == Rotation{6393, 25746, 38531} && kOddBy3 == Rotation{27246, 9041, 45451});

inline constexpr Rotation kOddBy1Of8 = rotation(7, 1, 12), kOddBy3Of8 = rotation(3, 5, 12); // forward
static_assert(kOddBy1Of8 == Rotation{799, 3218, 4816} && kOddBy3Of8 == Rotation{3406, 1130, 5681});

inline constexpr Zmx32u kRoot2With15 = fixed(kRoot2, 15), kRoot2With12 = fixed(kRoot2, 12);
static_assert(kRoot2With15 == 46341 && kRoot2With12 == 5793);

// ---- the inverse of a corner: with the other inputs zero a rotation is one product an output

inline constexpr Zmx32u kCos1 = fixed(cosine(1), 15), kCos3 = fixed(cosine(3), 15), kCos5 = fixed(cosine(5), 15),
                        kCos7 = fixed(cosine(7), 15);
static_assert(kCos1 == 32138 && kCos3 == 27246 && kCos5 == 18205 && kCos7 == 6393);
inline constexpr Zmx32u kEvenOuter = fixed(kRoot2 * cosine(2), 15), kEvenInner = fixed(kRoot2 * cosine(6), 15);
static_assert(kEvenOuter == 42813 && kEvenInner == 17734);
// Rounded as a whole, two of them are one less than the sums that the full transform multiplies with.
static_assert(kCos1 + 1 == kOddBy1.both + kOddBy1.minus && kEvenOuter + 1 == kEven.both + kEven.minus);

// ---- the inverse to a smaller picture: a point is the mean of the neighbours in whose place it stands

// What a full vector of coefficient k has at sample n, the mean of it over the samples from n on.
constexpr double meanOf(int count, int n, int k) {
    double sum = 0;
    for (int i = n; i < n + count; ++i) sum += cosine((2 * i + 1) * k);
    return kRoot2 * sum / count;
}

// The outer and the inner points of four, by the coefficient. Coefficient 4 cancels itself, and 2 and 6 do so but for
// their sign.
template <int K> inline constexpr Zmx32u kOuterOf4 = fixed(meanOf(2, 0, K), 15);
template <int K> inline constexpr Zmx32u kInnerOf4 = fixed(meanOf(2, 2, K), 15);
static_assert(kOuterOf4<1> == 41991 && kOuterOf4<3> == 14745 && kOuterOf4<5> == 9852 && kOuterOf4<7> == 8352);
static_assert(kInnerOf4<1> == 17393 && kInnerOf4<3> == 35598 && kInnerOf4<5> == 23786 && kInnerOf4<7> == 3460);
static_assert(kOuterOf4<2> == 30274 && kOuterOf4<6> == 12540 && kOuterOf4<4> == 0);
static_assert(kInnerOf4<2> == kOuterOf4<2> && kInnerOf4<6> == kOuterOf4<6> && kInnerOf4<4> == 0);

// The points of two, with one bit more. That of coefficient 5 stands one below its rule: required.
template <int K> inline constexpr Zmx32u kPointOf2 = fixed(meanOf(4, 0, K), 16) - (K == 5);
static_assert(kPointOf2<1> == 59384 && kPointOf2<3> == 20853 && kPointOf2<5> == 13932 && kPointOf2<7> == 11812);
static_assert(kPointOf2<2> == 0 && kPointOf2<4> == 0 && kPointOf2<6> == 0);

// ---- where the integer passes begin to wrap

// Sums and products wrap in 32 bits, and so do no harm before a shift: what counts is the number ahead of it. With all
// inputs at m and the worst signs it is `gain` m. The first pass shifts by 12 and keeps 16 bits, the second by 21.
constexpr int largestInput(std::int64_t gain, int half) { return int((0x7FFFFFFF - std::int64_t(half)) / gain); }
constexpr int largestKept(std::int64_t gain) { return int(((std::int64_t(32768) << 12) - 1 - 2048) / gain); }

// The forward transform: the results 2 and 6 gain most, four inputs going into each operand of their rotation. Samples
// of 8 bits give at most 8192 behind the first pass, and nothing wraps; 16 bits hold it up to samples of 511, the sum of
// eight of them taken eight times.
inline constexpr std::int64_t kForwardGain = 4 * (kEven.both + kEven.minus) + 4 * kEven.both;
static_assert(kForwardGain == 242192 && (kForwardGain * 128 + 2048) >> 12 < 8192 && 8 * 8 * 128 == 8192);
static_assert(largestInput(kForwardGain, 1 << 20) == 8862 && largestKept(kForwardGain) == 554 && 8 * 8 * 511 < 32768);

// The inverse: results 0 and 7. Coefficients of up to 548 with any signs leave 16 bits behind the first pass; those of a
// block that comes from samples of 8 bits leave eight times 128 times the root of 8, or 2897, and the second pass has
// three times the room.
inline constexpr std::int64_t kInverseOdd =
    kOddBy1.both + kOddBy1.minus + kOddBy1.both + 2 * kOddBy3.both - kOddBy3.minus;
inline constexpr std::int64_t kInverseGain =
    2 * 32768 + (kEven.both + kEven.minus) + kEven.both + (kInverseOdd * kRoot2With12 + 4095) / 4096;
static_assert(kInverseOdd == 83983 && kInverseGain == 244862);
static_assert(largestInput(kInverseGain, 1 << 20) == 8765 && largestKept(kInverseGain) == 548);

// ---- the transforms in single precision

// They are scaled: the rotations are reduced to one multiplier each, and a factor of each result, taken once for both
// directions of the block, makes good for it.
inline constexpr Zmx32f kHalfRoot2 = Zmx32f(1 / kRoot2), kRoot2Single = Zmx32f(kRoot2);
inline constexpr Zmx32f kTan2 = Zmx32f(cosine(6) / cosine(2)), kSec2 = Zmx32f(1 / cosine(2));
inline constexpr Zmx32f kTwoCos6 = Zmx32f(2 * cosine(6)), kRoot2Cos6 = Zmx32f(kRoot2 * cosine(6));
static_assert(kHalfRoot2 == 0.70710677f && kRoot2Single == 1.4142135f && kTan2 == 0.41421357f && kSec2 == 1.0823922f);
static_assert(kTwoCos6 == 0.76536685f && kRoot2Cos6 == 0.5411961f);

// The factors as they stand. They are near what the rule gives, but not its nearest decimals.
using Factors = double[8];
inline constexpr Factors kForwardFactors = {0.35355339, 0.23549484, 0.27059805, 0.27778512,
                                            0.35355339, 0.41573479, 0.65328146, 1.18391256};
inline constexpr Factors kInverseFactors = {0.35355339, 0.90612749, 0.46193979, 0.76817773,
                                            0.35355339, 0.51327996, 0.19134172, 0.18023997};

// A forward factor is half the cosine that the outermost sample has in a result, by the number that the flow has there;
// an inverse one is half the cosine that the result has in the outermost difference, by the flow's.
constexpr bool isFactor(double stands, int k, double flow) {
    return magnitude(stands - (k % 8 ? cosine(k) : 1 / kRoot2) / 2 / flow) < 5e-8;
}
constexpr bool areForward(const Factors& f) {
    const double sec = 1 / cosine(2), tan = cosine(6) / cosine(2), half = 1 / kRoot2;
    return isFactor(f[0], 0, 1) && isFactor(f[1], 1, sec + 1) && isFactor(f[2], 2, 1 + half) &&
           isFactor(f[3], 3, sec + tan) && isFactor(f[4], 4, 1) && isFactor(f[5], 5, sec - tan) &&
           isFactor(f[6], 6, 1 - half) && isFactor(f[7], 7, sec - 1);
}
constexpr bool areInverse(const Factors& f) {
    const double odd = kRoot2 * cosine(6);
    return isFactor(f[0], 0, 1) && isFactor(f[1], 1, odd) && isFactor(f[2], 2, 1) && isFactor(f[3], 3, odd) &&
           isFactor(f[4], 4, 1) && isFactor(f[5], 5, odd) && isFactor(f[6], 6, 1) && isFactor(f[7], 7, odd);
}
static_assert(areForward(kForwardFactors) && areInverse(kInverseFactors));

} // namespace zmx::dct
