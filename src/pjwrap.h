// pjwrap.h - arithmetic that is meant to wrap, said in so many words, and saturation.
//
// Everywhere else signed overflow is a mistake, and the sanitizers are there to catch it.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

#include <type_traits>

namespace zmx {

// Signed sums, differences and products modulo two to the power of their width (32 or 64 bits).
template <class T> constexpr T wrapAdd(T a, T b) {
    static_assert(sizeof(T) >= sizeof(int) && std::is_integral_v<T>);
    using U = std::make_unsigned_t<T>;
    return T(U(a) + U(b));
}
template <class T> constexpr T wrapSub(T a, T b) {
    static_assert(sizeof(T) >= sizeof(int) && std::is_integral_v<T>);
    using U = std::make_unsigned_t<T>;
    return T(U(a) - U(b));
}
template <class T> constexpr T wrapMul(T a, T b) {
    static_assert(sizeof(T) >= sizeof(int) && std::is_integral_v<T>);
    using U = std::make_unsigned_t<T>;
    return T(U(a) * U(b));
}

// The sum of two samples in 32 bits, where that of 32-bit samples wraps. Narrower ones are added as they are: the sum
// fits, and halving what went through unsigned numbers is a signed operation that gcc 12 for arm64 makes an unsigned one.
template <class T> constexpr Zmx32s sumOf(T a, T b) {
    if constexpr (sizeof(T) < sizeof(Zmx32s))
        return a + b;
    else
        return wrapAdd<Zmx32s>(a, b);
}

// The low 16 bits of a value, read back with their sign.
constexpr Zmx16s wrap16s(Zmx32s v) { return Zmx16s(Zmx16u(v)); }

constexpr int clamp(int v, int lo, int hi) { return v < lo ? lo : v > hi ? hi : v; }
constexpr Zmx8u saturate8u(int v) { return Zmx8u(clamp(v, 0, 255)); }
constexpr Zmx16s saturate16s(int v) { return Zmx16s(clamp(v, -32768, 32767)); }

} // namespace zmx
