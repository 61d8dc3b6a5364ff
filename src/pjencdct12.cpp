// pjencdct12.cpp - samples of up to 12 bits to quantised coefficients: one 8x8 block at a call.
//
// They go through the transform in single precision and a product with the reciprocal of the quantiser as a float.
// SPDX-License-Identifier: BSD-2-Clause
#include "pidct88f.h"
#include "pjargs.h"
#include "pjrows.h"
#include "psconvert.h"

using namespace zmx;

ZmxStatus zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(const Zmx16u* pSrc, int srcStep, Zmx16s* pDst,
                                               const Zmx32f* pQuantFwdTable) {
    // The table comes last: required.
    if (ZmxStatus bad = Args().ptr(pSrc, pDst).step(srcStep).ptr(pQuantFwdTable)) return bad;
    dct::BlockSingle samples, block;
    for (int y = 0; y < 8; ++y) {
        const Zmx8u* const row = rowAt(pSrc, srcStep, y);
        for (int x = 0; x < 8; ++x)
            samples.at[8 * y + x] = Zmx32f(load<Zmx16u>(row, x) - 2048); // half of the range of 12 bits
    }
    dct::forward(samples.at, block.at);
    // Two products, each rounded; ties go to the even neighbour.
    for (std::size_t k = 0; k < 64; ++k)
        pDst[k] = nearest<Zmx16s>(rounded(rounded(block.at[k] * dct::tab_norm_fwd[k]) * pQuantFwdTable[k]));
    return zmxStsNoErr;
}
