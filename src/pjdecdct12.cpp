// pjdecdct12.cpp - quantised coefficients to samples of up to 12 bits: one 8x8 block at a call.
//
// The way back of pjencdct12.
// SPDX-License-Identifier: BSD-2-Clause
#include "pidct88f.h"
#include "pithresh16u.h"
#include "pjargs.h"
#include "pjrows.h"
#include "psconvert.h"

using namespace zmx;

ZmxStatus zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(const Zmx16s* pSrc, Zmx16u* pDst, int dstStep,
                                               const Zmx32f* pQuantInvTable) {
    // The table comes last: required.
    if (ZmxStatus bad = Args().ptr(pSrc, pDst).step(dstStep).ptr(pQuantInvTable)) return bad;
    constexpr Zmx16u kMost = 4095;
    dct::BlockSingle block, samples;
    // Two products, each rounded.
    for (std::size_t k = 0; k < 64; ++k)
        block.at[k] = rounded(rounded(Zmx32f(pSrc[k]) * pQuantInvTable[k]) * dct::tab_norm_inv[k]);
    dct::inverse(block.at, samples.at);
    alignas(32) Zmx16u rows[64];
    for (int k = 0; k < 64; ++k)
        rows[k] = nearest<Zmx16u>(rounded(samples.at[k] + 2048)); // half of the range of 12 bits
    // The limit goes over what has been written, by whole samples: at an odd step it stands beside the rows. Required.
    const bool beside = dstStep % 2 != 0;
    if (!beside)
        for (Zmx16u& sample : rows) sample = sample > kMost ? kMost : sample;
    for (int y = 0; y < 8; ++y) std::memcpy(rowAt(pDst, dstStep, y), rows + 8 * y, 8 * sizeof *rows);
    return beside ? zmxiThreshold_16u_C1IR(pDst, dstStep, {8, 8}, kMost, zmxCmpGreater) : zmxStsNoErr;
}
