// psconvert.h - vectors between integers and single precision.
//
// Argument tests: null pointers in order, then a length below 1.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

// How a float becomes an integer; every value but the first two means zmxRndFinancial.
enum ZmxRoundMode : Zmx32s {
    zmxRndZero = 0,      // towards zero
    zmxRndNear = 1,      // to nearest, ties to the even neighbour
    zmxRndFinancial = 2, // to nearest, ties away from zero
};

ZmxStatus zmxsConvert_16s32f(const Zmx16s* pSrc, Zmx32f* pDst, int len);
ZmxStatus zmxsConvert_16u32f(const Zmx16u* pSrc, Zmx32f* pDst, int len);

// Each element times two to the power of minus scaleFactor, rounded and saturated; a NaN gives 0.
ZmxStatus zmxsConvert_32f16s_Sfs(const Zmx32f* pSrc, Zmx16s* pDst, int len, ZmxRoundMode rndMode, int scaleFactor);
ZmxStatus zmxsConvert_32f16u_Sfs(const Zmx32f* pSrc, Zmx16u* pDst, int len, ZmxRoundMode rndMode, int scaleFactor);

} // namespace zmx
