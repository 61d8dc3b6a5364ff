// SPDX-License-Identifier: BSD-2-Clause
#include "tests/frame/model/primitives.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace model {

namespace {

// A number as it is, rounded to an integer; ties by mode.
double roundedTo(double v, int mode) {
    const double whole = std::floor(std::fabs(v)), rest = std::fabs(v) - whole;
    const bool odd = std::fmod(whole, 2.0) == 1.0;
    bool up = false; // away from zero
    if (mode == 0)
        up = false;
    else if (mode == 1)
        up = rest > 0.5 || (rest == 0.5 && odd);
    else
        up = rest >= 0.5;
    return std::copysign(whole + (up ? 1 : 0), v);
}

// The power of two is a chain of single factors in a range of 15 bits of exponent: below its least denormal, 2^-16445, it
// is zero, and from 2^16384 on infinite. In between its products with floats go out of the range of doubles, to zero or
// to infinity, only where they are that as integers, too.
double scaled(Zmx32f v, int scale) {
    if (scale > 16445) return v * 0.0;
    if (scale <= -16384) return v * std::numeric_limits<double>::infinity();
    return std::ldexp(double(v), -scale);
}

int toInteger(Zmx32f v, int mode, int scale, int lo, int hi) {
    const double x = scaled(v, scale);
    if (std::isnan(x)) return 0;
    if (x >= hi) return hi;
    if (x <= lo) return lo;
    return int(roundedTo(x, mode));
}

} // namespace

Zmx32f single(double v) {
    volatile Zmx32f held = Zmx32f(v);
    return held;
}

Zmx16s product(Zmx16s a, Zmx16s b) { return limit16s(int(a) * int(b)); }

Zmx16s scaledProduct(Zmx16u a, Zmx16s b, int scale) {
    const std::int64_t p = std::int64_t(a) * b;
    if (scale >= 32) return 0;
    if (scale < -14) return Zmx16s(p == 0 ? 0 : p < 0 ? -32768 : 32767);
    if (scale <= 0) {
        std::int64_t v = limit16s(int(p));
        for (int i = 0; i < -scale; ++i) v *= 2;
        return limit16s(int(v));
    }
    const std::int64_t unit = std::int64_t(1) << scale;
    std::int64_t whole = p / unit, rest = p % unit;
    if (rest < 0) {
        rest += unit;
        --whole;
    }
    if (2 * rest > unit || (2 * rest == unit && whole % 2 != 0)) ++whole;
    return limit16s(int(whole));
}

Zmx16s toInt16(Zmx32f v, int mode, int scale) { return Zmx16s(toInteger(v, mode, scale, -32768, 32767)); }
Zmx16u toUint16(Zmx32f v, int mode, int scale) { return Zmx16u(toInteger(v, mode, scale, 0, 65535)); }

Zmx16u quotient(Zmx16u val, Zmx16u d) {
    if (val == 0) return 0;
    if (d == 0) return 65535;
    const std::uint32_t q = (std::uint32_t(val) << 16) / d, b = q >> 16 & 1;
    return Zmx16u((q + 2 * b + 32767) >> 16);
}

void copyForward(const void* src, void* dst, std::size_t count, std::size_t size) {
    for (std::size_t i = 0; i < count; ++i) {
        Zmx8u element[8];
        std::memcpy(element, static_cast<const Zmx8u*>(src) + i * size, size);
        std::memcpy(static_cast<Zmx8u*>(dst) + i * size, element, size);
    }
}

void threshold(const Zmx8u* src, int srcStep, Zmx8u* dst, int dstStep, ZmxiSize roi, Zmx16u bound, Zmx16u value,
               bool greater) {
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            Zmx16u v;
            std::memcpy(&v, src + std::ptrdiff_t(y) * (srcStep / 2 * 2) + 2 * x, 2);
            if (greater ? v > bound : v < bound) v = value;
            std::memcpy(dst + std::ptrdiff_t(y) * (dstStep / 2 * 2) + 2 * x, &v, 2);
        }
}

} // namespace model
