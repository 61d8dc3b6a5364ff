// primitives.h - plain models of the library's vector and rectangle primitives, an element at a time.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj/types.h"

#include <cstddef>

namespace model {

// A value between two bounds.
template <class T> T limit(T v, T lo, T hi) { return v < lo ? lo : v > hi ? hi : v; }
inline Zmx8u limit8u(int v) { return Zmx8u(limit(v, 0, 255)); }
inline Zmx16s limit16s(int v) { return Zmx16s(limit(v, -32768, 32767)); }

// A sum or product of two singles that was formed in double precision (exact or innocuously rounded), rounded to
// single precision, on a processor that keeps wider values in registers too.
Zmx32f single(double v);

// The product of two elements, saturated.
Zmx16s product(Zmx16s a, Zmx16s b);

// The product of two elements times two to the power of minus scale, ties to the even neighbour, saturated. Left
// shifts take the saturated product.
Zmx16s scaledProduct(Zmx16u a, Zmx16s b, int scale);

// Floating-point to integer: 0 towards zero, 1 to nearest with ties to the even neighbour, else to nearest with
// ties away from zero.
Zmx16s toInt16(Zmx32f v, int mode, int scale);
Zmx16u toUint16(Zmx32f v, int mode, int scale);

// val divided by d: 65535 for a zero d, 0 for a zero val.
Zmx16u quotient(Zmx16u val, Zmx16u d);

// Elements of size bytes each, copied one by one from the first to the last, whatever overlaps.
void copyForward(const void* src, void* dst, std::size_t count, std::size_t size);

// A rectangle of 16-bit samples: those greater than the bound (or less than it) become value. Steps lose their
// lowest bit.
void threshold(const Zmx8u* src, int srcStep, Zmx8u* dst, int dstStep, ZmxiSize roi, Zmx16u bound, Zmx16u value,
               bool greater);

} // namespace model
