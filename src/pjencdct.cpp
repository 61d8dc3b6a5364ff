// pjencdct.cpp - samples to quantised coefficients: one 8x8 block at a call.
//
// Samples of 8 bits go through the integer transform and a quantiser of 16-bit reciprocals; those of up to 12 bits are in
// pjencdct12.cpp. LS in a name is the level shift, which comes first.
// SPDX-License-Identifier: BSD-2-Clause
#include "pidct.h"
#include "pidct88.h"
#include "pjargs.h"
#include "pjls.h"
#include "pjquant.h"

namespace zmx {

// Each coefficient by the reciprocal of its quantiser (see pjquant.h), in place.
static void quantise(Zmx16s* block, const Zmx16u* table) {
    for (int i = 0; i < 64; ++i) block[i] = quantised(table[i], block[i]);
}

} // namespace zmx

using namespace zmx;

ZmxStatus zmxiDCTQuantFwd8x8_JPEG_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst, const Zmx16u* pQuantFwdTable) {
    if (ZmxStatus bad = Args().ptr(pSrc, pDst, pQuantFwdTable)) return bad;
    zmxiDCT8x8Fwd_16s_C1(pSrc, pDst);
    quantise(pDst, pQuantFwdTable);
    return zmxStsNoErr;
}

ZmxStatus zmxiDCTQuantFwd8x8_JPEG_16s_C1I(Zmx16s* pSrcDst, const Zmx16u* pQuantFwdTable) {
    return zmxiDCTQuantFwd8x8_JPEG_16s_C1(pSrcDst, pSrcDst, pQuantFwdTable);
}

ZmxStatus zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(const Zmx8u* pSrc, int srcStep, Zmx16s* pDst,
                                              const Zmx16u* pQuantFwdTable) {
    // The table comes last: required.
    if (ZmxStatus bad = Args().ptr(pSrc, pDst).step(srcStep).ptr(pQuantFwdTable)) return bad;
    ownGetNumThreads(); // a level shift asks at any size: required
    Block16s samples;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) samples.at[8 * y + x] = shiftedDown(rowAt(pSrc, srcStep, y)[x]);
    return zmxiDCTQuantFwd8x8_JPEG_16s_C1(samples.at, pDst, pQuantFwdTable);
}
