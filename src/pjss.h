// pjss.h - the argument tests that the rectangle forms of resampling share.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjargs.h"

namespace zmx {

// Source and destination each with pointer, step and size in a row: required. The source size plays no further part.
inline Args rectangleArgs(const void* src, int srcStep, ZmxiSize srcRoi, const void* dst, int dstStep,
                          ZmxiSize dstRoi) {
    return Args().ptr(src).step(srcStep).size(srcRoi).ptr(dst).step(dstStep).size(dstRoi);
}

} // namespace zmx
