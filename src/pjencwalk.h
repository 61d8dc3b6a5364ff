// pjencwalk.h - what the JPEG block encoders share: the symbol of zeros, and the DC coefficient.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

inline constexpr int kZeroRun = 240; // the symbol of 16 zeros

// The difference of a DC coefficient to its prediction, both behind an arithmetic shift by Al, and the next
// prediction.
inline int differenceDC(const Zmx16s* pSrc, Zmx16s* pLastDC, int Al = 0) {
    const int t = pSrc[0] >> Al;
    const int diff = t - *pLastDC;
    *pLastDC = Zmx16s(t);
    return diff;
}

} // namespace zmx
