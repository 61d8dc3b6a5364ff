// pjdecdct.cpp - quantised coefficients to samples: one 8x8 block at a call.
//
// The way back of pjencdct, samples of up to 12 bits left out (pjdecdct12), and the scaled forms: 4x4 and 2x2 in a name
// tell which corner of the coefficients counts, To4x4 and To2x2 how large the result is. The block is copied on the
// way: the source stays.
// SPDX-License-Identifier: BSD-2-Clause
#include "pidct.h"
#include "pidct88.h"
#include "pjargs.h"
#include "pjls.h"
#include "pjquant.h"
#include "psmul.h"

namespace zmx {

// All 64 products are formed, whatever the transform reads. The table is read as signed: required. Products that leave
// 16 bits are rare: only a block that holds one is saturated.
static void dequantise(const Zmx16s* __restrict src, Zmx16s* __restrict dst, const Zmx16u* __restrict table) {
    Zmx16s beyond = 0;
    for (int i = 0; i < 64; ++i) {
        // Two products, for vectors have one for either half.
        const Zmx16s a = src[i], b = Zmx16s(table[i]);
        const Zmx16s low = Zmx16s(Zmx32u(a) * Zmx32u(b)), high = Zmx16s(a * b >> 16), sign = Zmx16s(low >> 15);
        dst[i] = low;
        beyond = Zmx16s(beyond | (high ^ sign));
    }
    if (beyond) [[unlikely]]
        zmxsMul_16s(src, reinterpret_cast<const Zmx16s*>(table), dst, 64);
}

} // namespace zmx

using namespace zmx;

ZmxStatus zmxiDCTQuantInv8x8_JPEG_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst, const Zmx16u* pQuantInvTable) {
    if (ZmxStatus bad = Args().ptr(pSrc, pDst, pQuantInvTable)) return bad;
    Block16s block;
    dequantise(pSrc, block.at, pQuantInvTable);
    dct_8x8_inv_16s(block.at, pDst, isSmall(pSrc)); // a zero has a zero product: the source tells as well
    return zmxStsNoErr;
}

ZmxStatus zmxiDCTQuantInv8x8_JPEG_16s_C1I(Zmx16s* pSrcDst, const Zmx16u* pQuantInvTable) {
    return zmxiDCTQuantInv8x8_JPEG_16s_C1(pSrcDst, pSrcDst, pQuantInvTable);
}

namespace zmx {

// The order of the tests of all functions with a row step: the table comes last. Required.
static ZmxStatus tested(const void* src, const void* dst, int dstStep, const void* table) {
    return Args().ptr(src, dst).step(dstStep).ptr(table);
}

} // namespace zmx

ZmxStatus zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep,
                                              const Zmx16u* pQuantInvTable) {
    if (ZmxStatus bad = tested(pSrc, pDst, dstStep, pQuantInvTable)) return bad;
    Block16s block;
    dequantise(pSrc, block.at, pQuantInvTable);
    zmxiDCT8x8Inv_16s_C1I(block.at);
    // What zmxiDCT8x8InvLSClip_16s8u_C1R does, with a level shift and bounds that are known.
    Zmx8u samples[64]; // which no row overlaps: for all that a compiler knows, one may lie over the block
    for (int i = 0; i < 64; ++i) samples[i] = Zmx8u(shiftedUp(block.at[i]));
    for (int y = 0; y < 8; ++y) std::memcpy(rowAt(pDst, dstStep, y), samples + std::ptrdiff_t(8) * y, 8);
    return zmxStsNoErr;
}

namespace zmx {

// Dequantisation, a transform in place that leaves Size rows of Size samples, level shift.
template <int Size>
static ZmxStatus toSamples(const Zmx16s* src, Zmx8u* dst, int dstStep, const Zmx16u* table,
                           ZmxStatus (*transform)(Zmx16s*)) {
    if (ZmxStatus bad = tested(src, dst, dstStep, table)) return bad;
    Block16s block;
    dequantise(src, block.at, table);
    transform(block.at);
    ownpj_Add128_JPEG_16s8u_C1R(block.at, Size * int(sizeof(Zmx16s)), dst, dstStep, {Size, Size});
    return zmxStsNoErr;
}

} // namespace zmx

ZmxStatus zmxiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep,
                                                  const Zmx16u* pQuantInvTable) {
    return toSamples<8>(pSrc, pDst, dstStep, pQuantInvTable, zmxiDCT8x8Inv_2x2_16s_C1I);
}
ZmxStatus zmxiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep,
                                                  const Zmx16u* pQuantInvTable) {
    return toSamples<8>(pSrc, pDst, dstStep, pQuantInvTable, zmxiDCT8x8Inv_4x4_16s_C1I);
}
ZmxStatus zmxiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep,
                                                   const Zmx16u* pQuantInvTable) {
    return toSamples<2>(pSrc, pDst, dstStep, pQuantInvTable, zmxiDCT8x8To2x2Inv_16s_C1I);
}
ZmxStatus zmxiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep,
                                                   const Zmx16u* pQuantInvTable) {
    return toSamples<4>(pSrc, pDst, dstStep, pQuantInvTable, zmxiDCT8x8To4x4Inv_16s_C1I);
}

ZmxStatus zmxiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep,
                                                  const Zmx16u* pQuantInvTable) {
    if (ZmxStatus bad = tested(pSrc, pDst, dstStep, pQuantInvTable)) return bad;
    // Unlike in the other forms the table entry is unsigned, the product keeps its 32 bits, and the shift rounds
    // downward.
    const Zmx8u sample = saturate8u((pQuantInvTable[0] * pSrc[0] >> 3) + 128);
    for (int y = 0; y < 8; ++y) std::memset(rowAt(pDst, dstStep, y), sample, 8);
    return zmxStsNoErr;
}
