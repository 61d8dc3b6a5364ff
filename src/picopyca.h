// picopyca.h - rectangles copied, widened and masked.
//
// The order of the argument tests is not the same for all: each line tells.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

// Null, sizes, steps: the sizes come before the steps.
ZmxStatus zmxiConvert_8u16u_C1R(const Zmx8u* pSrc, int srcStep, Zmx16u* pDst, int dstStep, ZmxiSize roiSize);

// Null, sizes; the steps are not tested. Overlapping rows behave as in zmxsCopy_8u.
ZmxStatus zmxiCopy_16s_C1R(const Zmx16s* pSrc, int srcStep, Zmx16s* pDst, int dstStep, ZmxiSize roiSize);

// As the above. The elements are copied as bits, so that any 32-bit type may stand there.
ZmxStatus zmxiCopy_32f_C1R(const void* pSrc, int srcStep, void* pDst, int dstStep, ZmxiSize roiSize);

// Each element AND value. Null, steps, sizes.
ZmxStatus zmxiAndC_32s_C1R(const Zmx32s* pSrc, int srcStep, Zmx32s value, Zmx32s* pDst, int dstStep, ZmxiSize roiSize);
ZmxStatus zmxiAndC_32s_C1IR(Zmx32s value, Zmx32s* pSrcDst, int srcDstStep, ZmxiSize roiSize);

} // namespace zmx
