// hardfloats.cpp - floats at rounding boundaries, found by whole numbers only.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/hardfloats.h"

namespace {

// A number of 24 significant bits, or of more on the way, times a power of two.
struct Scaled {
    std::int64_t significand; // with the sign
    int exponent;
};

Scaled scaled(std::uint32_t bits) {
    const auto magnitude = std::int64_t((bits & 0x7FFFFF) | 0x800000);
    return {bits >> 31 ? -magnitude : magnitude, int(bits >> 23 & 255) - 150};
}
std::uint32_t bitsOf(Scaled v) {
    const auto magnitude = std::uint32_t(v.significand < 0 ? -v.significand : v.significand);
    return std::uint32_t(v.significand < 0) << 31 | std::uint32_t(v.exponent + 150) << 23 | (magnitude & 0x7FFFFF);
}
std::int64_t magnitudeOf(Scaled v) { return v.significand < 0 ? -v.significand : v.significand; }

// The float x for which weight times x comes next to `target` from the side of zero. The target keeps what is missing,
// in units of a lower power of two; that is less than 2^25 of them.
Scaled takeAway(Scaled& target, Scaled weight) {
    if (target.significand == 0) return {1 << 23, -140}; // something tiny instead
    // 48 bits by 24 bits make a quotient of 24 or 25.
    for (; magnitudeOf(target) < std::int64_t(1) << 47; --target.exponent) target.significand *= 2;
    Scaled x{target.significand / weight.significand, target.exponent - weight.exponent};
    if (magnitudeOf(x) >= 1 << 24) {
        x.significand /= 2;
        ++x.exponent;
    }
    const int up = x.exponent + weight.exponent - target.exponent; // 0 or 1
    target.significand -= x.significand * weight.significand * (1 << up);
    return x;
}

} // namespace

HardTriple hardTriple(Random& random, std::uint32_t wa, std::uint32_t wb, std::uint32_t wc) {
    const int sign = random.oneIn(2) ? 1 : -1;
    const Scaled a{sign * std::int64_t(random.range(1 << 23, (1 << 24) - 1)), random.range(-30, -10)};
    const Scaled weight = scaled(wa), product{a.significand * weight.significand, a.exponent + weight.exponent};
    // The middle between two floats next to the product, which has 47 or 48 bits; the rest is for b and c.
    const int top = magnitudeOf(product) >> 47 ? 47 : 46, ulp = top - 23;
    const std::int64_t middle = product.significand / (std::int64_t(1) << ulp) * (std::int64_t(1) << ulp) +
                                (product.significand < 0 ? -1 : 1) * (std::int64_t(1) << (ulp - 1));
    Scaled rest{middle - product.significand, product.exponent};
    const Scaled b = takeAway(rest, scaled(wb));
    // A little more or less than the middle: 54 to 62 bits below the first bit of the sum.
    const int below = product.exponent + top - random.range(54, 62) - rest.exponent;
    if (below >= 0 && below < 46) rest.significand += (std::int64_t(1) << below) * (random.oneIn(2) ? 1 : -1);
    const Scaled c = takeAway(rest, scaled(wc));
    return {bitsOf(a), bitsOf(b), bitsOf(c)};
}
