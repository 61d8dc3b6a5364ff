// SoftExtended against the x87 unit, operation by operation and bit by bit; and a digest of its results, which ties the
// processors that have no such unit to those that have it.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjextended.h"
#include "pjx87.h"
#include "tests/support/digest.h"
#include "tests/support/rng.h"
#include "tests/support/rounds.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

namespace zmx {

// A number as the unit stores it: the significand, and above it the exponent and the sign.
struct ExtendedBits {
    std::uint64_t significand;
    std::uint16_t top;

    static ExtendedBits of(SoftExtended v) {
        const bool least = v.exponent == 1 && v.significand >> 63 == 0; // a zero or a denormal
        return {v.significand, std::uint16_t((least ? 0 : v.exponent) | v.negative << 15)};
    }
    SoftExtended soft() const {
        const int exponent = top & 0x7FFF;
        return {top >> 15 != 0, exponent ? exponent : 1, significand};
    }
    friend bool operator==(const ExtendedBits&, const ExtendedBits&) = default;
    friend std::ostream& operator<<(std::ostream& out, const ExtendedBits& b) {
        return out << std::hex << b.top << ':' << b.significand << std::dec;
    }
};

} // namespace zmx

namespace {

using zmx::ExtendedBits;
using zmx::SoftExtended;

// Numbers of every kind; those near each other in magnitude, whose sums cancel and round, are the most frequent ones.
// A signalling NaN does not occur: no conversion makes one.
ExtendedBits anyNumber(Rng& rng) {
    constexpr std::uint64_t top = std::uint64_t(1) << 63;
    int exponent = 16383 + int(rng.range(-70, 70));
    std::uint64_t significand = rng.next() | top;
    switch (rng.range(0, 19)) {
    case 0: // zero
        exponent = 0, significand = 0;
        break;
    case 1: // infinity
        exponent = 0x7FFF, significand = top;
        break;
    case 2: // NaNs of any payload, and of few
        exponent = 0x7FFF, significand |= top >> 1;
        if (rng.oneIn(2)) significand &= top | top >> 1 | 3;
        break;
    case 3: // denormals
        exponent = 0, significand = (significand & ~top) >> rng.range(0, 62);
        break;
    case 4: // the least and the largest exponents
        exponent = int(rng.oneIn(2) ? rng.range(1, 3) : rng.range(32764, 32766));
        break;
    case 5: // products around the ends of the range
        exponent = int(rng.oneIn(2) ? rng.range(8150, 8250) : rng.range(24500, 24650));
        break;
    case 6:
        exponent = int(rng.range(1, 32766));
        break;
    case 7: // few bits, so that halves are frequent
    case 8:
    case 9:
        significand &= ~std::uint64_t(0) << rng.range(1, 63);
        break;
    case 10:
        significand = top | std::uint64_t(rng.range(0, 3));
        break;
    case 11:
        significand = ~std::uint64_t(0) - std::uint64_t(rng.range(0, 3));
        break;
    case 12: // floats
        significand &= ~std::uint64_t(0) << 40;
        break;
    case 13: // whole numbers
        significand &= ~std::uint64_t(0) << (63 - (exponent = 16383 + int(rng.range(0, 63))) + 16383);
        break;
    default:
        break;
    }
    return {exponent ? significand | top : significand, std::uint16_t(exponent | int(rng.range(0, 1)) << 15)};
}
// Now and then of the same exponent or significand as another one.
ExtendedBits anyPartner(Rng& rng, const ExtendedBits& a) {
    ExtendedBits b = anyNumber(rng);
    if (rng.oneIn(6)) b = {a.significand, std::uint16_t(rng.oneIn(2) ? a.top : a.top ^ 0x8000)};
    if (rng.oneIn(6) && (a.top & 0x7FFF) != 0x7FFF && (b.top & 0x7FFF) != 0x7FFF)
        b = {(a.top & 0x7FFF ? b.significand | std::uint64_t(1) << 63 : b.significand << 1 >> 1), a.top};
    return b;
}
std::uint64_t anyBits(Rng& rng, std::uint64_t exponentBits) {
    const std::uint64_t v = rng.next();
    return rng.oneIn(4) ? v & ~exponentBits : rng.oneIn(4) ? v | exponentBits : v;
}
double anyDouble(Rng& rng) { return std::bit_cast<double>(anyBits(rng, 0x7FF0000000000000u)); }
float anyFloat(Rng& rng) { return std::bit_cast<float>(Zmx32u(anyBits(rng, 0x7F800000u))); }

} // namespace

#if ZMX_HAS_X87
namespace {

long double hard(const ExtendedBits& b) {
    long double v = 0;
    std::memcpy(&v, &b.significand, 8);
    std::memcpy(reinterpret_cast<char*>(&v) + 8, &b.top, 2);
    return v;
}
ExtendedBits bitsOf(long double v) {
    ExtendedBits b;
    std::memcpy(&b.significand, &v, 8);
    std::memcpy(&b.top, reinterpret_cast<const char*>(&v) + 8, 2);
    return b;
}
template <class T> bool sameBits(T a, T b) { return std::memcmp(&a, &b, sizeof a) == 0; }

} // namespace

TEST(Extended, OperationsAgreeWithTheUnit) {
    Rng rng(801);
    const int cases = rounds(500'000);
    for (int i = 0; i < cases; ++i) {
        const ExtendedBits a = anyNumber(rng), b = anyPartner(rng, a);
        const volatile long double x = hard(a), y = hard(b);
        const SoftExtended s = a.soft(), t = b.soft();
        ASSERT_EQ(ExtendedBits::of(s), a);
        ASSERT_EQ(ExtendedBits::of(s + t), bitsOf(x + y)) << a << " + " << b;
        ASSERT_EQ(ExtendedBits::of(s - t), bitsOf(x - y)) << a << " - " << b;
        ASSERT_EQ(ExtendedBits::of(s * t), bitsOf(x * y)) << a << " * " << b;
        ASSERT_EQ(ExtendedBits::of(-s), bitsOf(-x)) << a;
        ASSERT_EQ(s < t, x < y) << a << " < " << b;
        ASSERT_EQ(s > t, x > y) << a << " > " << b;
        ASSERT_EQ(s == t, x == y) << a << " == " << b;
    }
}

TEST(Extended, ConversionsAgreeWithTheUnit) {
    Rng rng(802);
    const int cases = rounds(500'000);
    for (int i = 0; i < cases; ++i) {
        ExtendedBits a = anyNumber(rng);
        if (rng.oneIn(2) && a.top & 0x7FFF) { // of the range of floats and doubles, with halves of theirs
            const int reach = rng.oneIn(2) ? 160 : 1090;
            a.top = std::uint16_t((a.top & 0x8000) | (16383 + int(rng.range(-reach, reach))));
            a.significand |= std::uint64_t(1) << 63;
            if (rng.oneIn(2)) a.significand &= ~std::uint64_t(0) << (rng.oneIn(2) ? 39 : 10);
        }
        const volatile long double x = hard(a);
        const SoftExtended s = a.soft();
        ASSERT_TRUE(sameBits(float(s), float(x))) << a << ' ' << float(s) << ", not " << float(x);
        ASSERT_TRUE(sameBits(double(s), double(x))) << a << ' ' << double(s) << ", not " << double(x);
        if (x > -2147483649.0L && x < 2147483648.0L) {
            ASSERT_EQ(Zmx32s(s), Zmx32s(x)) << a;
        }
        const volatile double d = anyDouble(rng);
        ASSERT_EQ(ExtendedBits::of(double(d)), bitsOf(d)) << std::hexfloat << d;
        const volatile float f = anyFloat(rng);
        ASSERT_EQ(ExtendedBits::of(float(f)), bitsOf(f)) << std::hexfloat << f;
        const volatile auto n = std::int64_t(rng.next()) >> rng.range(0, 63);
        ASSERT_EQ(ExtendedBits::of(std::int64_t(n)), bitsOf(n)) << n;
        ASSERT_EQ(ExtendedBits::of(Zmx32s(n)), bitsOf(Zmx32s(n))) << n;
    }
}
#endif

// The values that bound the rules.
// Differences of which only the last of all bits is left, and none.
TEST(Extended, NothingLeftButTheLastBit) {
    const SoftExtended one(1.0), below = one - SoftExtended(0x1p-64);
    EXPECT_EQ(double(one - below), 0x1p-64);
    EXPECT_EQ(double(below - one), -0x1p-64);
    EXPECT_EQ(double(below - below), 0.0);
}

TEST(Extended, WorkedValues) {
    using limits = std::numeric_limits<double>;
    const auto bits = [](SoftExtended v) { return ExtendedBits::of(v); };
    const SoftExtended one = 1, inf = limits::infinity(), ulp = 0x1p-63, zero = 0;
    EXPECT_EQ(bits(one), (ExtendedBits{std::uint64_t(1) << 63, 0x3FFF}));
    EXPECT_EQ(bits(one + ulp), (ExtendedBits{(std::uint64_t(1) << 63) + 1, 0x3FFF}));
    EXPECT_EQ(bits(one + ulp * 0.5), bits(one)) << "a tie goes to the even one";
    EXPECT_EQ(bits(one + ulp * 1.5), bits(one + ulp * 2)) << "upwards, too";
    EXPECT_EQ(bits(one - ulp * 0.25), bits(one)) << "a tie below a power of two";
    EXPECT_EQ(bits(one - ulp * 0.5), (ExtendedBits{~std::uint64_t(0), 0x3FFE}));
    EXPECT_EQ(bits(one - one), (ExtendedBits{0, 0}));
    EXPECT_EQ(bits(-zero - zero), (ExtendedBits{0, 0x8000}));
    EXPECT_EQ(bits(-zero + zero), (ExtendedBits{0, 0}));
    EXPECT_EQ(bits(inf - inf), (ExtendedBits{std::uint64_t(3) << 62, 0xFFFF}))
        << "the NaN of the unit's own is negative";
    EXPECT_EQ(bits(inf * zero), (ExtendedBits{std::uint64_t(3) << 62, 0xFFFF}));
    const SoftExtended signalling = std::bit_cast<float>(0x7F800001u), quiet = std::bit_cast<float>(0xFFC00002u);
    EXPECT_EQ(bits(signalling), (ExtendedBits{(std::uint64_t(3) << 62) + (std::uint64_t(1) << 40), 0x7FFF}));
    EXPECT_EQ(bits(signalling + quiet), bits(quiet)) << "the larger significand";
    EXPECT_EQ(bits(quiet - signalling), bits(quiet)) << "a NaN keeps its sign";
    EXPECT_EQ(bits(-quiet * quiet), bits(-quiet)) << "the positive one of two that are alike";
    EXPECT_EQ(std::bit_cast<Zmx32u>(float(SoftExtended(std::bit_cast<float>(0x7FA00000u)))), 0x7FE00000u);
    EXPECT_EQ(float(one + SoftExtended(0x1p-24)), 1.0f);
    EXPECT_EQ(float(one + SoftExtended(0x1p-24) + ulp), 1.0f + 0x1p-23f) << "the 64th bit decides a tie";
    EXPECT_EQ(Zmx32s(SoftExtended(-2147483648.0)), -2147483647 - 1);
    EXPECT_EQ(Zmx32s(SoftExtended(-0.999)), 0);
    EXPECT_EQ(float(SoftExtended(3) * SoftExtended(0.5f) - SoftExtended(2.0)), -0.5f);
}

// All results of a hundred thousand pairs, and of conversions. The digest is that of the unit, wherever the test runs.
TEST(Extended, TheSameResultsOnEveryProcessor) {
    Rng rng(803);
    Digest digest;
    const auto add = [&](SoftExtended v) {
        const ExtendedBits b = ExtendedBits::of(v);
        digest.value(std::int64_t(b.significand)).value(b.top);
    };
    for (int i = 0; i < 100000; ++i) {
        const ExtendedBits a = anyNumber(rng), b = anyPartner(rng, a);
        add(a.soft() + b.soft());
        add(a.soft() - b.soft());
        add(a.soft() * b.soft());
        digest.value(std::bit_cast<Zmx32s>(float(a.soft()))).value(std::bit_cast<std::int64_t>(double(a.soft())));
        add(anyDouble(rng));
        add(anyFloat(rng));
        add(std::int64_t(rng.next()) >> rng.range(0, 63));
    }
    EXPECT_EQ(digest.get(), 0x62E8D978B8D442Eu);
}
