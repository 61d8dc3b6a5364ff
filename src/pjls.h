// pjls.h - the level shifts behind zmxiAdd128_JPEG_16s8u_C1R and zmxiSub128_JPEG_8u16s_C1R, without argument tests.
#pragma once

#include "zmxj.h"

void ownpj_Add128_JPEG_16s8u_C1R(const Zmx16s* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize);
void ownpj_Sub128_JPEG_8u16s_C1R(const Zmx8u* pSrc, int srcStep, Zmx16s* pDst, int dstStep, ZmxiSize roiSize);
