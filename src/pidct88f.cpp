// pidct88f.cpp - the single-precision 8x8 forward and inverse DCT, for samples of more than 8 bits, in place.
// SPDX-License-Identifier: BSD-2-Clause
#include "pidct88f.h"

#include "pidct.h"
#include "pjargs.h"

namespace zmx {

using namespace dct;

ZmxStatus zmxiDCT8x8Fwd_32f_C1I(Zmx32f* pSrcDst) {
    if (ZmxStatus bad = Args().ptr(pSrcDst)) return bad;
    BlockSingle block;
    forward(pSrcDst, block.at);
    for (std::size_t k = 0; k < 64; ++k) pSrcDst[k] = rounded(block.at[k] * tab_norm_fwd[k]);
    return zmxStsNoErr;
}

ZmxStatus zmxiDCT8x8Inv_32f_C1I(Zmx32f* pSrcDst) {
    if (ZmxStatus bad = Args().ptr(pSrcDst)) return bad;
    BlockSingle block;
    for (std::size_t k = 0; k < 64; ++k) block.at[k] = rounded(pSrcDst[k] * tab_norm_inv[k]);
    inverse(block.at, pSrcDst);
    return zmxStsNoErr;
}

} // namespace zmx
