// pjqnttbl.h - what the two quantisation tables share: the raw table in natural order.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "picopyca.h"
#include "pizigzag.h"

namespace zmx {

// Widens a raw table, which stands in zig-zag order, and puts it into natural order.
inline void naturalOrder(const Zmx8u* raw, Zmx16u* table) {
    Zmx16u wide[64];
    zmxiConvert_8u16u_C1R(raw, 8, wide, 16, {8, 8});
    zmxiZigzagInv8x8_16s_C1(reinterpret_cast<const Zmx16s*>(wide), reinterpret_cast<Zmx16s*>(table));
}

} // namespace zmx
