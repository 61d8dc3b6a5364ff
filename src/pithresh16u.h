// pithresh16u.h - samples beyond a threshold replaced.
//
// Argument tests: the mode (zmxStsNotSupportedModeErr), null, sizes, steps. A step counts whole elements: the last byte
// of an odd one is lost at each row.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

// Which samples are replaced. No other value is supported.
enum ZmxCmpOp : Zmx32s {
    zmxCmpLess = 0,    // those less than the threshold
    zmxCmpGreater = 4, // those greater than the threshold
};

ZmxStatus zmxiThreshold_Val_16u_C1R(const Zmx16u* pSrc, int srcStep, Zmx16u* pDst, int dstStep, ZmxiSize roiSize,
                                    Zmx16u threshold, Zmx16u value, ZmxCmpOp cmpOp);

// The same with a value equal to the threshold.
ZmxStatus zmxiThreshold_16u_C1R(const Zmx16u* pSrc, int srcStep, Zmx16u* pDst, int dstStep, ZmxiSize roiSize,
                                Zmx16u threshold, ZmxCmpOp cmpOp);
ZmxStatus zmxiThreshold_16u_C1IR(Zmx16u* pSrcDst, int srcDstStep, ZmxiSize roiSize, Zmx16u threshold, ZmxCmpOp cmpOp);

} // namespace zmx
