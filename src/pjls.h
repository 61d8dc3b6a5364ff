// pjls.h - the level shifts behind zmxiAdd128_JPEG_16s8u_C1R and zmxiSub128_JPEG_8u16s_C1R, without argument tests.
#pragma once

#include "pjrows.h"

#include <algorithm>

void ownpj_Add128_JPEG_16s8u_C1R(const Zmx16s* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize);
void ownpj_Sub128_JPEG_8u16s_C1R(const Zmx8u* pSrc, int srcStep, Zmx16s* pDst, int dstStep, ZmxiSize roiSize);

// A sample plus 128, saturated to 0..255; limited ahead of the sum, which then fits 16 bits.
inline Zmx8u shiftedUp(Zmx16s v) { return Zmx8u(std::clamp<Zmx16s>(v, -128, 127) + 128); }

// A sample minus 128: no saturation is possible.
inline Zmx16s shiftedDown(Zmx8u v) { return Zmx16s(v - 128); }
