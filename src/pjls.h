// pjls.h - the level shifts behind zmxiAdd128_JPEG_16s8u_C1R and zmxiSub128_JPEG_8u16s_C1R, without argument tests.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjrows.h"

namespace zmx {

void ownpj_Add128_JPEG_16s8u_C1R(const Zmx16s* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize);
void ownpj_Sub128_JPEG_8u16s_C1R(const Zmx8u* pSrc, int srcStep, Zmx16s* pDst, int dstStep, ZmxiSize roiSize);

// The lesser and the greater of two 16-bit values, in the form that becomes one vector operation.
constexpr Zmx16s lesser(Zmx16s a, Zmx16s b) { return a < b ? a : b; }
constexpr Zmx16s greater(Zmx16s a, Zmx16s b) { return a > b ? a : b; }

// A sample plus 128, saturated to 0..255; limited ahead of the sum, which then fits 16 bits.
constexpr Zmx16s shiftedUp(Zmx16s v) { return Zmx16s(lesser(greater(v, -128), 127) + 128); }

// A sample minus 128: no saturation is possible.
constexpr Zmx16s shiftedDown(Zmx8u v) { return Zmx16s(v - 128); }

} // namespace zmx
