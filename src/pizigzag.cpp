// pizigzag.cpp - blocks reordered.
// SPDX-License-Identifier: BSD-2-Clause
#include "pizigzag.h"

#include "pjargs.h"
#include "pjzigzag.h"

namespace zmx {

ZmxStatus zmxiZigzagInv8x8_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst) {
    if (ZmxStatus bad = Args().ptr(pSrc, pDst)) return bad;
    for (std::size_t n = 0; n < zigzag_index_Fwd.size(); ++n) pDst[n] = pSrc[zigzag_index_Fwd[n]];
    return zmxStsNoErr;
}

} // namespace zmx
