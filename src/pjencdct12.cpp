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
    alignas(32) Zmx16u held[64]; // aligned, which the rows of the caller need not be
    for (int y = 0; y < 8; ++y) std::memcpy(held + 8 * y, rowAt(pSrc, srcStep, y), 8 * sizeof *held);
    dct::BlockSingle samples, block;
    for (int k = 0; k < 64; ++k) samples.at[k] = Zmx32f(held[k] - 2048); // half of the range of 12 bits
    dct::forward(samples.at, block.at);
    alignas(32) Zmx16s quantised[64];
    // Two products, each rounded; ties go to the even neighbour.
    for (std::size_t k = 0; k < 64; ++k)
        quantised[k] = nearest<Zmx16s>(rounded(rounded(block.at[k] * dct::tab_norm_fwd[k]) * pQuantFwdTable[k]));
    std::memcpy(pDst, quantised, sizeof quantised);
    return zmxStsNoErr;
}
