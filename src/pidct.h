// pidct.h - the 8x8 discrete cosine transforms of blocks in natural order.
//
// pidct88i has the integer pair, pidct8844i the reduced inverse forms, pidct88f the single-precision pair. Every
// function tests its pointers (zmxStsNullPtrErr) and then cannot fail. The integer transforms wrap in 32 bits and keep
// 16 between their passes. A constant block of v has a DC coefficient of 8v.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

// Integer, 64 elements; the two pointers of the first may be equal.
ZmxStatus zmxiDCT8x8Fwd_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst);
ZmxStatus zmxiDCT8x8Fwd_16s_C1I(Zmx16s* pSrcDst);
ZmxStatus zmxiDCT8x8Inv_16s_C1I(Zmx16s* pSrcDst);

// Inverse, plus levelShift, less than minValue gives minValue, maxValue or more gives maxValue; 8 rows dstStep bytes
// apart. After the pointers the step is tested (zmxStsStepErr).
ZmxStatus zmxiDCT8x8InvLSClip_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep, Zmx16s levelShift, Zmx8u minValue,
                                        Zmx8u maxValue);

// Inverse of a block of which only the 4x4 or 2x2 corner counts; full 8x8 result.
ZmxStatus zmxiDCT8x8Inv_4x4_16s_C1I(Zmx16s* pSrcDst);
ZmxStatus zmxiDCT8x8Inv_2x2_16s_C1I(Zmx16s* pSrcDst);

// Inverse to a smaller picture, packed into the first 16 or 4 elements; the others keep their input.
ZmxStatus zmxiDCT8x8To4x4Inv_16s_C1I(Zmx16s* pSrcDst);
ZmxStatus zmxiDCT8x8To2x2Inv_16s_C1I(Zmx16s* pSrcDst);

// Single precision.
ZmxStatus zmxiDCT8x8Fwd_32f_C1I(Zmx32f* pSrcDst);
ZmxStatus zmxiDCT8x8Inv_32f_C1I(Zmx32f* pSrcDst);

} // namespace zmx
