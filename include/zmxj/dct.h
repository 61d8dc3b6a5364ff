/** \file
 *  dct.h - quantisation tables, and 8x8 blocks between samples and quantised DCT coefficients.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_DCT_H
#define ZMXJ_DCT_H

#include "types.h"

/** \defgroup dct DCT and quantisation
 *  8x8 blocks between samples and quantised DCT coefficients, and the tables for that.
 *
 *  A block is 64 elements in natural order (row by row). Coefficients are scaled as in ITU-T T.81, A.3.3: a block of the
 *  constant v has a DC coefficient of 8v.
 *
 *  Tables of the 8-bit paths are 64 Zmx16u in natural order, made by zmxiQuantFwdTableInit_JPEG_8u16u() (32768 / divisor)
 *  and zmxiQuantInvTableInit_JPEG_8u16u() (the divisors). The inverse table is read as signed: a divisor above 32767 is
 *  outside its domain. Tables of the 12-bit paths are 64 Zmx32f in natural order that the caller makes: forward,
 *  1 / divisor; inverse, the divisors.
 *
 *  To quantise is to multiply by the forward table, divide by 32768, round to nearest with ties to even, and saturate to 16
 *  bits. To dequantise is to multiply by the inverse table and saturate to 16 bits. The integer transforms work in 32 bits
 *  that wrap and keep 16 between their two passes: samples beyond the 8-bit range may wrap. Everything runs on the calling
 *  thread.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Forward DCT and quantisation of a block.
 *
 *  \par Buffers
 *  Block and table aligned for 16-bit elements. pDst may be pSrc; the table overlaps neither.
 *
 *  \param pSrc            64 samples around zero
 *  \param pDst            64 quantised coefficients
 *  \param pQuantFwdTable  64 reciprocals in natural order, from zmxiQuantFwdTableInit_JPEG_8u16u()
 *  \return  zmxStsNullPtrErr when pSrc, pDst or pQuantFwdTable is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDCTQuantFwd8x8_JPEG_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst, const Zmx16u* pQuantFwdTable);
/** Forward DCT and quantisation of a block, in place.
 *
 *  \par Buffers
 *  Block and table aligned for 16-bit elements. They do not overlap.
 *
 *  \param pSrcDst         64 samples around zero, replaced by 64 quantised coefficients
 *  \param pQuantFwdTable  64 reciprocals in natural order, from zmxiQuantFwdTableInit_JPEG_8u16u()
 *  \return  zmxStsNullPtrErr when pSrcDst or pQuantFwdTable is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDCTQuantFwd8x8_JPEG_16s_C1I(Zmx16s* pSrcDst, const Zmx16u* pQuantFwdTable);

/** Level shift by 128, forward DCT and quantisation of 8 rows of 8 samples of a picture.
 *
 *  \par Buffers
 *  The picture at any address and with any step; block and table aligned for their elements. They do not overlap.
 *
 *  \param pSrc            the top-left sample, 0..255
 *  \param srcStep         bytes between the starts of two source rows, at least 1
 *  \param pDst            64 quantised coefficients
 *  \param pQuantFwdTable  64 reciprocals in natural order, from zmxiQuantFwdTableInit_JPEG_8u16u()
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when srcStep is below 1; zmxStsNullPtrErr when
 *           pQuantFwdTable is null (the table comes last); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(const Zmx8u* pSrc, int srcStep, Zmx16s* pDst,
                                                       const Zmx16u* pQuantFwdTable);
/** Level shift by 2048, forward DCT and quantisation of 8 rows of 8 samples of up to 12 bits.
 *
 *  Single-precision DCT, multiplication by the table, rounding to nearest with ties to even, saturation to 16 bits.
 *
 *  \par Buffers
 *  The picture at any address and with any step; block and table aligned for their elements. They do not overlap.
 *
 *  \param pSrc            the top-left sample, 0..4095
 *  \param srcStep         bytes between the starts of two source rows, at least 1
 *  \param pDst            64 quantised coefficients
 *  \param pQuantFwdTable  64 factors in natural order that the caller makes: 1 / divisor
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when srcStep is below 1; zmxStsNullPtrErr when
 *           pQuantFwdTable is null (the table comes last); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(const Zmx16u* pSrc, int srcStep, Zmx16s* pDst,
                                                        const Zmx32f* pQuantFwdTable);

/** Dequantisation and inverse DCT of a block.
 *
 *  \par Buffers
 *  Block and table aligned for 16-bit elements. pDst may be pSrc; the table overlaps neither.
 *
 *  \param pSrc            64 quantised coefficients
 *  \param pDst            64 samples around zero
 *  \param pQuantInvTable  64 divisors in natural order, from zmxiQuantInvTableInit_JPEG_8u16u()
 *  \return  zmxStsNullPtrErr when pSrc, pDst or pQuantInvTable is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDCTQuantInv8x8_JPEG_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst, const Zmx16u* pQuantInvTable);
/** Dequantisation and inverse DCT of a block, in place.
 *
 *  \par Buffers
 *  Block and table aligned for 16-bit elements. They do not overlap.
 *
 *  \param pSrcDst         64 quantised coefficients, replaced by 64 samples around zero
 *  \param pQuantInvTable  64 divisors in natural order, from zmxiQuantInvTableInit_JPEG_8u16u()
 *  \return  zmxStsNullPtrErr when pSrcDst or pQuantInvTable is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDCTQuantInv8x8_JPEG_16s_C1I(Zmx16s* pSrcDst, const Zmx16u* pQuantInvTable);

/** Dequantisation, inverse DCT, level shift by 128 and saturation to 0..255, into a picture.
 *
 *  \par Buffers
 *  The picture at any address and with any step; block and table aligned for their elements. They do not overlap.
 *
 *  \param pSrc            64 quantised coefficients
 *  \param pDst            the top-left sample; 8 rows of 8 samples are written
 *  \param dstStep         bytes between the starts of two destination rows, at least 1
 *  \param pQuantInvTable  64 divisors in natural order, from zmxiQuantInvTableInit_JPEG_8u16u()
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when dstStep is below 1; zmxStsNullPtrErr when
 *           pQuantInvTable is null (the table comes last); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep,
                                                       const Zmx16u* pQuantInvTable);
/** The inverse for a block of which only DC counts: every sample is (coefficient x divisor >> 3) + 128, saturated.
 *
 *  The product is not saturated first, the shift takes the floor; nothing but element 0 of block and table is read.
 *
 *  \par Buffers
 *  The picture at any address and with any step; block and table aligned for their elements. They do not overlap.
 *
 *  \param pSrc            64 quantised coefficients
 *  \param pDst            the top-left sample; 8 rows of 8 samples are written
 *  \param dstStep         bytes between the starts of two destination rows, at least 1
 *  \param pQuantInvTable  64 divisors in natural order, from zmxiQuantInvTableInit_JPEG_8u16u()
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when dstStep is below 1; zmxStsNullPtrErr when
 *           pQuantInvTable is null (the table comes last); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep,
                                                           const Zmx16u* pQuantInvTable);
/** The inverse for a block that is zero outside its top-left 2x2 corner.
 *
 *  What stands outside has no effect.
 *
 *  \par Buffers
 *  The picture at any address and with any step; block and table aligned for their elements. They do not overlap.
 *
 *  \param pSrc            64 quantised coefficients
 *  \param pDst            the top-left sample; 8 rows of 8 samples are written
 *  \param dstStep         bytes between the starts of two destination rows, at least 1
 *  \param pQuantInvTable  64 divisors in natural order, from zmxiQuantInvTableInit_JPEG_8u16u()
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when dstStep is below 1; zmxStsNullPtrErr when
 *           pQuantInvTable is null (the table comes last); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep,
                                                           const Zmx16u* pQuantInvTable);
/** The inverse for a block that is zero outside its top-left 4x4 corner.
 *
 *  What stands outside has no effect; the result may differ from that of the full transform in the last bit.
 *
 *  \par Buffers
 *  The picture at any address and with any step; block and table aligned for their elements. They do not overlap.
 *
 *  \param pSrc            64 quantised coefficients
 *  \param pDst            the top-left sample; 8 rows of 8 samples are written
 *  \param dstStep         bytes between the starts of two destination rows, at least 1
 *  \param pQuantInvTable  64 divisors in natural order, from zmxiQuantInvTableInit_JPEG_8u16u()
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when dstStep is below 1; zmxStsNullPtrErr when
 *           pQuantInvTable is null (the table comes last); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep,
                                                           const Zmx16u* pQuantInvTable);
/** The inverse to a picture of a quarter of the width and height.
 *
 *  Dequantisation, reduced transform, level shift by 128, saturation to 0..255.
 *
 *  \par Buffers
 *  The picture at any address and with any step; block and table aligned for their elements. They do not overlap.
 *
 *  \param pSrc            64 quantised coefficients
 *  \param pDst            the top-left sample; 2 rows of 2 samples are written
 *  \param dstStep         bytes between the starts of two destination rows, at least 1
 *  \param pQuantInvTable  64 divisors in natural order, from zmxiQuantInvTableInit_JPEG_8u16u()
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when dstStep is below 1; zmxStsNullPtrErr when
 *           pQuantInvTable is null (the table comes last); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep,
                                                            const Zmx16u* pQuantInvTable);
/** The inverse to a picture of half the width and height.
 *
 *  Dequantisation, reduced transform, level shift by 128, saturation to 0..255.
 *
 *  \par Buffers
 *  The picture at any address and with any step; block and table aligned for their elements. They do not overlap.
 *
 *  \param pSrc            64 quantised coefficients
 *  \param pDst            the top-left sample; 4 rows of 4 samples are written
 *  \param dstStep         bytes between the starts of two destination rows, at least 1
 *  \param pQuantInvTable  64 divisors in natural order, from zmxiQuantInvTableInit_JPEG_8u16u()
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when dstStep is below 1; zmxStsNullPtrErr when
 *           pQuantInvTable is null (the table comes last); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R(const Zmx16s* pSrc, Zmx8u* pDst, int dstStep,
                                                            const Zmx16u* pQuantInvTable);
/** The inverse for samples of up to 12 bits: level shift by 2048, saturation to 0..4095.
 *
 *  Multiplication by the table, single-precision inverse DCT, rounding to nearest with ties to even.
 *
 *  \par Buffers
 *  The picture at any address and with any step; block and table aligned for their elements. They do not overlap.
 *
 *  \param pSrc            64 quantised coefficients
 *  \param pDst            the top-left sample; 8 rows of 8 samples are written
 *  \param dstStep         bytes between the starts of two destination rows, at least 1
 *  \param pQuantInvTable  64 factors in natural order that the caller makes: the divisors
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when dstStep is below 1; zmxStsNullPtrErr when
 *           pQuantInvTable is null (the table comes last); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(const Zmx16s* pSrc, Zmx16u* pDst, int dstStep,
                                                        const Zmx32f* pQuantInvTable);

/** Quantises 64 coefficients in place.
 *
 *  \par Buffers
 *  Block and table aligned for 16-bit elements. They do not overlap.
 *
 *  \param pSrcDst         64 coefficients, replaced by quantised ones
 *  \param pQuantFwdTable  64 reciprocals in natural order, from zmxiQuantFwdTableInit_JPEG_8u16u()
 *  \return  zmxStsNullPtrErr when pSrcDst or pQuantFwdTable is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiQuantFwd8x8_JPEG_16s_C1I(Zmx16s* pSrcDst, const Zmx16u* pQuantFwdTable);

/** Dequantises 64 coefficients in place.
 *
 *  \par Buffers
 *  Block and table aligned for 16-bit elements. They do not overlap.
 *
 *  \param pSrcDst         64 quantised coefficients, replaced by coefficients
 *  \param pQuantInvTable  64 divisors in natural order, from zmxiQuantInvTableInit_JPEG_8u16u()
 *  \return  zmxStsNullPtrErr when pSrcDst or pQuantInvTable is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiQuantInv8x8_JPEG_16s_C1I(Zmx16s* pSrcDst, const Zmx16u* pQuantInvTable);

/** Scales a raw table by a quality factor, in place.
 *
 *  With scale 5000 / quality below 50 and 200 - 2 quality from 50 up, each entry becomes (entry x scale + 50) / 100,
 *  limited to 1..255. Quality 50 leaves it as it was (but for zero entries, which become 1), 100 gives all ones, and
 *  so does more until the 32-bit products wrap (above four millions).
 *
 *  \par Buffers
 *  Any address will do.
 *
 *  \param pQuantRawTable  64 divisors; their order does not matter
 *  \param qualityFactor   1 or more, 100 being the best; there is no upper limit
 *  \return  zmxStsNullPtrErr when pQuantRawTable is null; zmxStsBadArgErr when qualityFactor is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiQuantFwdRawTableInit_JPEG_8u(Zmx8u* pQuantRawTable, int qualityFactor);

/** Makes the forward table of the 8-bit paths: 32768 / divisor to the nearest integer, ties to even.
 *
 *  \par Buffers
 *  The raw table at any address, the other aligned for 16-bit elements. They do not overlap.
 *
 *  \param pQuantRawTable  64 divisors in zig-zag order, as in a DQT segment (ITU-T T.81, B.2.4.1)
 *  \param pQuantFwdTable  out: 64 reciprocals in natural order; the entry of a zero divisor is 65535
 *  \return  zmxStsNullPtrErr when pQuantRawTable or pQuantFwdTable is null; zmxStsDivByZero, a warning, when a
 *           divisor was zero (the table is complete); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiQuantFwdTableInit_JPEG_8u16u(const Zmx8u* pQuantRawTable, Zmx16u* pQuantFwdTable);

/** Makes the inverse table of the 8-bit paths: the divisors themselves.
 *
 *  \par Buffers
 *  The raw table at any address, the other aligned for 16-bit elements. They do not overlap.
 *
 *  \param pQuantRawTable  64 divisors in zig-zag order, as in a DQT segment (ITU-T T.81, B.2.4.1)
 *  \param pQuantInvTable  out: 64 divisors in natural order
 *  \return  zmxStsNullPtrErr when pQuantRawTable or pQuantInvTable is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiQuantInvTableInit_JPEG_8u16u(const Zmx8u* pQuantRawTable, Zmx16u* pQuantInvTable);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_DCT_H */
