// pjextended.h - extended precision on any processor: numbers with a 64-bit significand and 15 bits of exponent, in
// integer arithmetic alone, with the results of the x87 unit bit for bit.
//
// Sums, differences and products are rounded once, to nearest, ties to even. Denormal numbers are kept; what is too
// large becomes an infinity. Of two NaNs the one with the larger significand is the result, or the positive one of two
// that differ in sign alone; an operation without a result makes the negative NaN that has no payload. Conversions to
// this type are exact, but they quiet a signalling NaN.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjbits.h"
#include "zmxj.h"

#include <bit>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

namespace zmx {

class SoftExtended {
    // The magnitude is significand * 2^(exponent - kBias - 63). The top bit of the significand is set, but for zeros
    // and denormals, which have exponent 1. Infinities (the top bit alone) and NaNs have exponent kSpecial.
    std::uint64_t significand = 0;
    int exponent = 1;
    bool negative = false;

    friend struct ExtendedBits; // of the tests, which make and take apart any number

    static constexpr int kBias = 16383, kSpecial = 32767;
    static constexpr std::uint64_t kTop = std::uint64_t(1) << 63, kQuiet = std::uint64_t(3) << 62;

    constexpr SoftExtended(bool minus, int exp, std::uint64_t bits)
        : significand(bits), exponent(exp), negative(minus) {}

public:
    constexpr SoftExtended() = default;
    constexpr SoftExtended(Zmx32f v) : SoftExtended(widened<Zmx32f, Zmx32u>(v)) {}
    constexpr SoftExtended(double v) : SoftExtended(widened<double, std::uint64_t>(v)) {}
    template <class Int, std::enable_if_t<std::is_integral_v<Int>, int> = 0>
    constexpr SoftExtended(Int v) : negative(v < 0) {
        if (v == 0) return;
        const std::uint64_t magnitude = negative ? 0 - std::uint64_t(v) : std::uint64_t(v);
        const int shift = std::countl_zero(magnitude);
        significand = magnitude << shift;
        exponent = kBias + 63 - shift;
    }

    // Rounded once, to nearest, ties to even; denormals are rounded where they end.
    explicit constexpr operator Zmx32f() const { return narrowed<Zmx32f, Zmx32u>(); }
    explicit constexpr operator double() const { return narrowed<double, std::uint64_t>(); }
    // Truncates toward zero. The value has to fit: there is no integer for the others.
    explicit constexpr operator Zmx32s() const {
        const int fraction = kBias + 63 - exponent; // bits behind the point
        const Zmx32u whole = fraction > 63 ? 0 : Zmx32u(significand >> fraction);
        return Zmx32s(negative ? 0 - whole : whole); // -2^31 is among them
    }

    friend constexpr SoftExtended operator-(SoftExtended a) { return {!a.negative, a.exponent, a.significand}; }
    // The smaller exponent is brought to the larger one, which leaves no more than 128 bits that count.
    friend constexpr SoftExtended operator+(SoftExtended a, SoftExtended b) {
        if (a.exponent == kSpecial || b.exponent == kSpecial) return specialSum(a, b);
        if (a.exponent < b.exponent) std::swap(a, b);
        Wide w = shiftedRight({b.significand, 0}, a.exponent - b.exponent);
        int exp = a.exponent;
        if (a.negative == b.negative) {
            w.high += a.significand;
            if (w.high < a.significand) {
                w = shiftedRight(w, 1);
                w.high |= kTop;
                ++exp;
            }
            return rounded(a.negative, exp, w);
        }
        // Only one of two numbers with the same exponent may turn out the smaller one; then nothing was shifted out.
        const bool minus = a.negative;
        const bool borrow = w.low != 0, swapped = !borrow && w.high > a.significand;
        w = swapped ? Wide{w.high - a.significand, 0} : Wide{a.significand - w.high - borrow, 0 - w.low};
        if (w.high == 0 && w.low == 0) return {};
        const int zeros = w.high ? std::countl_zero(w.high) : 64 + std::countl_zero(w.low);
        const int shift = zeros < exp ? zeros : exp - 1; // no further than the denormals
        return rounded(minus != swapped, exp - shift, shiftedLeft(w, shift));
    }
    // Not a + -b: a NaN keeps its sign.
    friend constexpr SoftExtended operator-(SoftExtended a, SoftExtended b) { return b.isNan() ? a + b : a + -b; }
    // A product of two top bits has 127 or 128 bits. Below the least exponent it is a denormal, rounded where it ends.
    friend constexpr SoftExtended operator*(SoftExtended a, SoftExtended b) {
        const bool minus = a.negative != b.negative;
        if (a.exponent == kSpecial || b.exponent == kSpecial) return specialProduct(a, b);
        if (a.significand == 0 || b.significand == 0) return {minus, 1, 0};
        const int za = std::countl_zero(a.significand), zb = std::countl_zero(b.significand); // not 0 in denormals
        Wide w = product(a.significand << za, b.significand << zb);
        int exp = a.exponent - za + b.exponent - zb - kBias + 1;
        if (w.high < kTop) {
            w = shiftedLeft(w, 1);
            --exp;
        }
        if (exp >= 1) return rounded(minus, exp, w);
        return rounded(minus, 1, shiftedRight(w, 1 - exp));
    }

    // A NaN is neither equal to nor less than anything; zeros are equal.
    friend constexpr bool operator==(SoftExtended a, SoftExtended b) {
        if (a.isNan() || b.isNan()) return false;
        if ((a.significand | b.significand) == 0) return true;
        return a.negative == b.negative && a.exponent == b.exponent && a.significand == b.significand;
    }
    friend constexpr bool operator<(SoftExtended a, SoftExtended b) {
        if (a.isNan() || b.isNan() || (a.significand | b.significand) == 0) return false;
        if (a.negative != b.negative) return a.negative;
        if (a.negative) std::swap(a, b);
        return a.exponent != b.exponent ? a.exponent < b.exponent : a.significand < b.significand;
    }
    friend constexpr bool operator>(SoftExtended a, SoftExtended b) { return b < a; }

private:
    // ---- significands on the way to a result
    //
    // 128 bits, the low half behind the significand. Bits that leave it to the right stay as the lowest one.
    struct Wide {
        std::uint64_t high, low;
    };
    static constexpr Wide shiftedRight(Wide w, int n) {
        if (n == 0) return w;
        if (n < 64) return {w.high >> n, w.high << (64 - n) | w.low >> n | ((w.low << (64 - n)) != 0)};
        if (n == 64) return {0, w.high | (w.low != 0)};
        if (n < 128) return {0, w.high >> (n - 64) | ((w.high << (128 - n) | w.low) != 0)};
        return {0, (w.high | w.low) != 0};
    }
    static constexpr Wide shiftedLeft(Wide w, int n) {
        if (n == 0) return w;
        if (n < 64) return {w.high << n | w.low >> (64 - n), w.low << n};
        return {w.low << (n - 64), 0};
    }
    // In halves of 32 bits, none of whose sums leaves 64.
    static constexpr Wide product(std::uint64_t a, std::uint64_t b) {
        const std::uint64_t a0 = Zmx32u(a), a1 = a >> 32, b0 = Zmx32u(b), b1 = b >> 32;
        const std::uint64_t low = a0 * b0, mid0 = a1 * b0 + (low >> 32), mid1 = a0 * b1 + Zmx32u(mid0);
        return {a1 * b1 + (mid0 >> 32) + (mid1 >> 32), mid1 << 32 | Zmx32u(low)};
    }
    // The low half decides: more than a half, or a half under an odd number, goes up. A denormal that comes to have the
    // top bit is the least normal number, with the same exponent here.
    static constexpr SoftExtended rounded(bool minus, int exp, Wide w) {
        if (w.low > kTop || (w.low == kTop && w.high % 2 != 0))
            if (++w.high == 0) {
                w.high = kTop;
                ++exp;
            }
        return exp < kSpecial ? SoftExtended(minus, exp, w.high) : SoftExtended(minus, kSpecial, kTop);
    }

    // ---- what is not a number, or infinite

    constexpr bool isNan() const { return exponent == kSpecial && significand != kTop; }
    // Of one NaN or two.
    static constexpr SoftExtended nanOf(SoftExtended a, SoftExtended b) {
        if (!a.isNan()) return b;
        if (!b.isNan()) return a;
        if (a.significand == b.significand) return a.negative ? b : a;
        return a.significand > b.significand ? a : b;
    }
    static constexpr SoftExtended specialSum(SoftExtended a, SoftExtended b) {
        if (a.isNan() || b.isNan()) return nanOf(a, b);
        if (a.exponent == b.exponent && a.negative != b.negative) return {true, kSpecial, kQuiet};
        return a.exponent == kSpecial ? a : b;
    }
    static constexpr SoftExtended specialProduct(SoftExtended a, SoftExtended b) {
        if (a.isNan() || b.isNan()) return nanOf(a, b);
        if (a.significand == 0 || b.significand == 0) return {true, kSpecial, kQuiet};
        return {a.negative != b.negative, kSpecial, kTop};
    }

    // ---- floats and doubles: a sign, a field of the exponent (0 for zeros and denormals, all ones for infinities and
    // NaNs), and the significand without its top bit.
    //
    // F is a float or a double, Bits an unsigned integer of its size.
    template <class F, class Bits> static constexpr SoftExtended widened(F v) {
        constexpr int digits = std::numeric_limits<F>::digits, special = 2 * std::numeric_limits<F>::max_exponent - 1;
        const Bits bits = bitCast<Bits>(v);
        const int field = int(bits >> (digits - 1)) & special;
        const std::uint64_t fraction = std::uint64_t(bits) << (64 - digits) & ~kTop;
        const bool minus = bits >> (8 * sizeof(Bits) - 1) != 0;
        constexpr int bias = kBias - std::numeric_limits<F>::max_exponent + 1;
        if (field == special) return {minus, kSpecial, fraction ? fraction | kQuiet : kTop};
        if (field != 0) return {minus, field + bias, fraction | kTop};
        if (fraction == 0) return {minus, 1, 0};
        const int shift = std::countl_zero(fraction);
        return {minus, 1 + bias - shift, fraction << shift};
    }
    template <class F, class Bits> constexpr F narrowed() const {
        constexpr int digits = std::numeric_limits<F>::digits, width = int(8 * sizeof(Bits));
        constexpr int special = 2 * std::numeric_limits<F>::max_exponent - 1;
        constexpr Bits infinity = Bits(special) << (digits - 1);
        const Bits sign = Bits(negative) << (width - 1);
        const int field = exponent - kBias + std::numeric_limits<F>::max_exponent - 1;
        if (isNan()) return bitCast<F>(Bits(sign | infinity | Bits(significand << 1 >> (65 - digits))));
        if (field >= special) return bitCast<F>(Bits(sign | infinity));
        // A denormal has the exponent of field 1. Rounding up may carry into the next field, which is then right.
        const int lost = 64 - digits + (field < 1 ? 1 - field : 0);
        if (lost > 64) return bitCast<F>(sign);
        const Wide w = shiftedRight({significand, 0}, lost);
        const bool up = w.low > kTop || (w.low == kTop && w.high % 2 != 0);
        const Bits whole = Bits(w.high + up);
        return bitCast<F>(Bits(sign | (field < 1 ? whole : whole + (Bits(field - 1) << (digits - 1)))));
    }
};

} // namespace zmx
