// pizigzag.h - blocks reordered.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

// 64 elements from zig-zag to natural order; the two blocks are distinct. A null pointer gives zmxStsNullPtrErr.
ZmxStatus zmxiZigzagInv8x8_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst);

} // namespace zmx
