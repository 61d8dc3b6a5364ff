// The bracket of the 9/7 wavelet of 32-bit samples (src/pj2wt97ext.cpp): each inequality of its bound, in interval arithmetic.
//
// What is proved. Let M bound the samples in magnitude, and let an output v be made in double precision. The same output made
// with a 64-bit significand lies between v - t and v + t for t = 2^-46 M, and v - t and v + t as they are computed in double
// precision still enclose it. Where both truncate to one integer, that is the integer of the extended number.
//
// How. Every number of the lifting has a bound of its magnitude, in units of M, and one of how far it is off, in units of
// e M with e = 2^-53. A product or a sum is off by what its operands were off by, and by the rounding of its result: no more than
// u e times its magnitude, where u = 1 + 2^-10 covers results that are rounded twice (32-bit x86), and the magnitude is that of
// what was computed, error included. All of it is done on intervals whose ends are moved outwards after each operation.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2wt97const.h"

#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using zmx::wt97::kFloatSteps;

// A number that is not below 0, known to lie between two doubles.
struct Interval {
    double low, high;

    constexpr Interval(double v) : low(v), high(v) {}
    Interval(double from, double to) : low(from), high(to) {}
};
double down(double v) { return std::nextafter(v, -std::numeric_limits<double>::infinity()); }
double up(double v) { return std::nextafter(v, std::numeric_limits<double>::infinity()); }
Interval operator+(Interval a, Interval b) { return {down(a.low + b.low), up(a.high + b.high)}; }
Interval operator*(Interval a, Interval b) { return {down(a.low * b.low), up(a.high * b.high)}; } // neither below 0
bool atMost(Interval a, double limit) { return a.high <= limit; }

// The unit of rounding, of both precisions, in units of M.
constexpr double kDouble = 0x1p-53, kExtended = 0x1p-64;
const Interval kTwice(1 + 0x1p-10);

// A number of the lifting, in one of the precisions: the most that it can be in magnitude, and be off.
struct Number {
    Interval size;  // in units of M
    Interval error; // in units of `unit` M
    double unit;

    // What was computed may be larger than what it stands for.
    Interval computed() const { return size + error * Interval(unit); }
    // With the rounding of the last operation.
    Number rounded() const { return {size, error + kTwice * computed(), unit}; }
};
Number operator+(const Number& a, const Number& b) {
    return Number{a.size + b.size, a.error + b.error, a.unit}.rounded();
}
// By a constant, which is a float, and the same float in both precisions.
Number operator*(const Number& a, float constant) {
    const Interval c(std::fabs(double(constant)));
    return Number{a.size * c, a.error * c, a.unit}.rounded();
}
Number lift(const Number& centre, float c, const Number& side) { return centre + (side + side) * c; }

Number sample(double unit) { return {1, 0, unit}; }
// Two samples are added as integers: nothing is off. A sum that wraps is no larger than one that does not.
Number sumOfSamples(double unit) { return {2, 0, unit}; }

struct Forward {
    Number a, b, g, d, low, high;
    explicit Forward(double unit)
        : a(sample(unit) + sumOfSamples(unit) * kFloatSteps.alpha), b(lift(sample(unit), kFloatSteps.beta, a)),
          g(lift(a, kFloatSteps.gamma, b)), d(lift(b, kFloatSteps.delta, g)), low(d * kFloatSteps.oneOverK),
          high(g * kFloatSteps.k) {}
};
struct Inverse {
    Number s, b, a, even, odd;
    explicit Inverse(double unit)
        : s(sample(unit) * kFloatSteps.oneOverK), b(lift(sample(unit) * kFloatSteps.k, kFloatSteps.delta, s)),
          a(lift(s, kFloatSteps.gamma, b)), even(lift(b, kFloatSteps.beta, a)), odd(lift(a, kFloatSteps.alpha, even)) {}
};

void expectWithin(const Number& n, double size, double error, const char* name) {
    EXPECT_TRUE(atMost(n.size, size)) << name << ": " << n.size.high << " M";
    EXPECT_TRUE(atMost(n.error, error)) << name << ": off by " << n.error.high << " e M";
    // And not by far: a bound that grows is to be looked at.
    EXPECT_GE(n.size.low, 0.9 * size) << name;
    EXPECT_GE(n.error.low, 0.9 * error) << name;
}

// The table at the head of src/pj2wt97ext.cpp, entry by entry.
TEST(Wavelet97Bounds, ForwardStepsAreBoundedAsStated) {
    const Forward f(kDouble);
    expectWithin(f.a, 4.2, 7.4, "A");
    expectWithin(f.b, 1.5, 3.2, "B");
    expectWithin(f.g, 6.8, 25, "G");
    expectWithin(f.d, 7.5, 45, "D");
    expectWithin(f.low, 6.1, 43, "low");
    expectWithin(f.high, 8.3, 39, "high");
}
TEST(Wavelet97Bounds, InverseStepsAreBoundedAsStated) {
    const Inverse i(kDouble);
    expectWithin(i.s, 0.82, 0.82, "S");
    expectWithin(i.b, 2.0, 5.4, "B");
    expectWithin(i.a, 4.3, 22, "A");
    expectWithin(i.even, 2.5, 11, "even");
    expectWithin(i.odd, 12, 84, "odd");
}

// What one output asks of t, in units of e M: the double is off, the extended number is off, and the two ends of the bracket are
// rounded when they are computed; t itself is a power of two and exact.
Interval needed(const Number& made, const Number& extended) {
    const Interval inExtended = extended.error * Interval(kExtended / kDouble);
    const Interval end = made.computed() + Interval(0x1p-46);
    return made.error + inExtended + kTwice * end;
}

TEST(Wavelet97Bounds, TheBracketHoldsTheExtendedNumber) {
    constexpr double t = 0x1p-46 / kDouble; // in units of e M
    static_assert(t == 128);
    const Forward f(kDouble), fx(kExtended);
    const Inverse i(kDouble), ix(kExtended);
    EXPECT_TRUE(atMost(needed(f.low, fx.low), t));
    EXPECT_TRUE(atMost(needed(f.high, fx.high), t));
    EXPECT_TRUE(atMost(needed(i.even, ix.even), t));
    EXPECT_TRUE(atMost(needed(i.odd, ix.odd), t));
    // A quarter of it would not do: the test can tell.
    EXPECT_FALSE(atMost(needed(i.odd, ix.odd), t / 4));
}

// The plain truncation serves samples below 2^27: no output, and neither end of its bracket, leaves 32 bits. The bound M is the power
// of two above all magnitudes, so it is 2^27 at the most.
TEST(Wavelet97Bounds, OutputsOfSmallSamplesStayWithin32Bits) {
    const Interval m(0x1p27);
    for (const Number& n : {Forward(kDouble).low, Forward(kDouble).high, Inverse(kDouble).even, Inverse(kDouble).odd}) {
        const Interval end = n.computed() * m + Interval(0x1p-46) * m;
        EXPECT_TRUE(atMost(end * kTwice, 0x1p31 - 1));
    }
    EXPECT_FALSE(atMost(Inverse(kDouble).odd.size * Interval(0x1p28), 0x1p31 - 1));
}

// The measure of samples: the or of all magnitudes, where that of a negative sample is one less. The next power of two is above
// both.
TEST(Wavelet97Bounds, TheBoundOfSamplesIsOne) {
    for (const std::int64_t v :
         {std::int64_t(0), std::int64_t(1), std::int64_t(-1), std::int64_t(-2), std::int64_t(4095), std::int64_t(-4096),
          std::int64_t(-4097), std::int64_t(2147483647), std::int64_t(-2147483648)}) {
        const auto bits = std::uint32_t(std::int32_t(v) ^ (std::int32_t(v) >> 31));
        const auto bound = std::int64_t(std::bit_ceil(std::uint64_t(bits) + 1));
        EXPECT_LE(std::abs(v), bound) << v;
    }
}

} // namespace
