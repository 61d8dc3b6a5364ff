// pjdecwalk.h - what the JPEG block decoders share: the way through a block, and the DC coefficient.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjbitread.h"
#include "pjwrap.h"
#include "pjzigzag.h"

namespace zmx {

namespace zigzag {

// The zig-zag walk as far as a damaged stream can carry it: a run of 15 from position 63 ends on 78. Behind
// the eight spare entries of own_pj_izigzag_index every step stays on element 63 as well, so that no decoder
// leaves its block.
inline constexpr auto reach = tableOf<80>([](int k) { return Zmx8u(step(k)); });

} // namespace zigzag

// Decodes a DC coefficient into the prediction, which is kept to 16 bits.
inline ZmxStatus decodeDC(BitReader& in, Zmx16s* pLastDC, const ZmxiDecodeHuffmanSpec& table) {
    int symbol;
    if (ZmxStatus failed = ownpj_DecodeHuffSymbol(in, &symbol, table)) return failed;
    if (symbol == 0) return zmxStsNoErr;
    const int s = symbol & 15;
    if (ZmxStatus failed = need(in, s)) return failed;
    *pLastDC = wrap16s(*pLastDC + extend(in.take(s), s));
    return zmxStsNoErr;
}

} // namespace zmx
