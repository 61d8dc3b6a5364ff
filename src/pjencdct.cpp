// pjencdct.cpp - samples to quantised coefficients: one 8x8 block at a call.
//
// Samples of 8 bits go through the integer transform and a quantiser of 16-bit reciprocals, samples of up to 12 bits
// through the transform in single precision and a product with the reciprocal as a float. LS in a name is the level
// shift, which comes first.
// SPDX-License-Identifier: BSD-2-Clause
#include "pidct.h"
#include "pidct88.h"
#include "pjargs.h"
#include "pjls.h"
#include "pjquant.h"
#include "psconvert.h"
#include "psmul.h"

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

namespace zmx {

// The order of the tests of all functions with a row step: the table comes last. Required.
static ZmxStatus tested(const void* src, int srcStep, const void* dst, const void* table) {
    return Args().ptr(src, dst).step(srcStep).ptr(table);
}

} // namespace zmx

ZmxStatus zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(const Zmx8u* pSrc, int srcStep, Zmx16s* pDst,
                                              const Zmx16u* pQuantFwdTable) {
    if (ZmxStatus bad = tested(pSrc, srcStep, pDst, pQuantFwdTable)) return bad;
    // The samples are shifted into the destination, and the rest goes on in place.
    ownpj_Sub128_JPEG_8u16s_C1R(pSrc, srcStep, pDst, 16, {8, 8});
    return zmxiDCTQuantFwd8x8_JPEG_16s_C1I(pDst, pQuantFwdTable);
}

ZmxStatus zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(const Zmx16u* pSrc, int srcStep, Zmx16s* pDst,
                                               const Zmx32f* pQuantFwdTable) {
    if (ZmxStatus bad = tested(pSrc, srcStep, pDst, pQuantFwdTable)) return bad;
    Zmx32f block[64];
    // Rows of 16-bit samples stand at any address, so they are not handed to a vector primitive.
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) block[8 * y + x] = load<Zmx16u>(rowAt(pSrc, srcStep, y), x);
    zmxsSubC_32f_I(2048, block, 64); // half of the range of 12 bits
    zmxiDCT8x8Fwd_32f_C1I(block);
    zmxsMul_32f_I(pQuantFwdTable, block, 64);
    zmxsConvert_32f16s_Sfs(block, pDst, 64, zmxRndNear, 0); // ties to the even neighbour
    return zmxStsNoErr;
}
