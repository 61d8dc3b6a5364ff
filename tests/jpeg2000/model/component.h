// The component transforms pixel by pixel, as the formulas read.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj/types.h"

#include <array>

namespace model {

template <class T> using Pixel = std::array<T, 3>;

// R, G, B to Y, B - G, R - G and back; Zmx16s and Zmx32s.
template <class T> Pixel<T> rctForward(Pixel<T> rgb);
template <class T> Pixel<T> rctInverse(Pixel<T> ydd);

// R, G, B to Y, Cb, Cr and back; Zmx16s and Zmx32s in fixed point, Zmx32f in extended precision.
template <class T> Pixel<T> ictForward(Pixel<T> rgb);
template <class T> Pixel<T> ictInverse(Pixel<T> ycc);

} // namespace model
