// pjround.h - floating-point results with exactly the precision of their type.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

#include <cfloat>

namespace zmx {

// A value rounded to single precision. Where the processor keeps wider values in registers (the x87 unit of
// 32-bit x86) the value goes through memory; elsewhere this is nothing. For one sum, difference or product of
// floats the extra rounding on the way is harmless: 64 significant bits are more than 2 x 24 + 2.
inline Zmx32f rounded(Zmx32f v) {
#if FLT_EVAL_METHOD == 0
    return v;
#else
    volatile Zmx32f held = v;
    return held;
#endif
}

} // namespace zmx
