/** \file
 *  mcu.h - conversions of one minimum coded unit between pixels and zero-centred 8x8 blocks.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_MCU_H
#define ZMXJ_MCU_H

#include "types.h"

/** \defgroup mcu Conversions of single units (MCU)
 *  One minimum coded unit at a time between pixels and zero-centred 8x8 blocks: chroma sampling, colour, level shift and
 *  saturation in one pass.
 *
 *  The digits in the names tell the chroma sampling: 444 and 422 are 4:4:4 and 4:2:2, and 411 is 4:2:0, where a chroma
 *  sample covers two pixels across and two down.
 *
 *  A block is 64 Zmx16s in natural order, row by row. The blocks of one plane of a unit follow one another:
 *
 *  | unit | pixels  | planes 0 and 3                                           | planes 1 and 2 |
 *  |------|---------|----------------------------------------------------------|----------------|
 *  | 444  | 8 x 8   | 1 block                                                  | 1 block each   |
 *  | 422  | 16 x 8  | 2 blocks: left, right                                    | 1 block each   |
 *  | 411  | 16 x 16 | 4 blocks: top left, top right, bottom left, bottom right | 1 block each   |
 *
 *  One chroma sample stands for the 1, 2 (side by side) or 4 (square) pixels that it covers. Everything runs on the
 *  calling thread. A unit at the edge of a picture goes through a buffer of the caller.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Converts one decoded 444 unit (8 x 8 pixels) to bytes R, G, B.
 *
 *  With floor() for the arithmetic shift right by 16 of a 32-bit product that wraps, and no rounding term:
 *
 *      R = saturate(Y + floor( 91881 Cr              / 65536) + 128)
 *      G = saturate(Y + floor((-22554 Cb - 46802 Cr) / 65536) + 128)
 *      B = saturate(Y + floor(116130 Cb              / 65536) + 128)
 *
 *  Samples are nominally -128..127; every 16-bit value is legal. Chroma is replicated. The full rectangle of the
 *  unit is written.
 *
 *  \par Buffers
 *  Pixels at any address and with any step, also of 16 bits; blocks aligned for 16-bit elements. Source and
 *  destination do not overlap.
 *
 *  \param pSrcMCU  the planes Y, Cb, Cr of the unit; planes 1 and 2 have one block, the first as many as the unit
 *                  has 8 x 8 pixels
 *  \param pDst     the top-left pixel of the unit; three bytes a pixel
 *  \param dstStep  bytes between the starts of two destination rows, at least 1; less than the unit is wide is
 *                  accepted, and rows then overlay each other
 *  \return  zmxStsNullPtrErr when pSrcMCU, pDst or a plane of pSrcMCU is null; zmxStsStepErr when dstStep is below
 *           1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);
/** Converts one decoded 422 unit (16 x 8 pixels) to bytes R, G, B.
 *  \copydetails zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiYCbCr422ToRGBLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);
/** Converts one decoded 411 unit (16 x 16 pixels) to bytes R, G, B.
 *  \copydetails zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiYCbCr411ToRGBLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);

/** Converts one decoded 444 unit (8 x 8 pixels) to bytes B, G, R.
 *  \copydetails zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiYCbCr444ToBGRLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);
/** Converts one decoded 422 unit (16 x 8 pixels) to bytes B, G, R.
 *  \copydetails zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiYCbCr422ToBGRLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);
/** Converts one decoded 411 unit (16 x 16 pixels) to bytes B, G, R.
 *  \copydetails zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiYCbCr411ToBGRLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);

/** Converts one decoded 444 unit (8 x 8 pixels) to 16-bit pixels, blue in bits 0 to 4, green 5 to 9, red 10 to 14.
 *
 *  R, G, B are those of zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R(); their low bits are cut off, bit 15 is zero. The full
 *  rectangle of the unit is written.
 *
 *  \par Buffers
 *  Pixels at any address and with any step, also of 16 bits; blocks aligned for 16-bit elements. Source and
 *  destination do not overlap.
 *
 *  \param pSrcMCU  the planes Y, Cb, Cr of the unit; planes 1 and 2 have one block, the first as many as the unit
 *                  has 8 x 8 pixels
 *  \param pDst     the top-left pixel of the unit; one 16-bit word a pixel
 *  \param dstStep  bytes between the starts of two destination rows, at least 1; less than the unit is wide is
 *                  accepted, and rows then overlay each other
 *  \return  zmxStsNullPtrErr when pSrcMCU, pDst or a plane of pSrcMCU is null; zmxStsStepErr when dstStep is below
 *           1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiYCbCr444ToBGR555LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep);
/** Converts one decoded 422 unit (16 x 8 pixels) to 16-bit pixels, blue in bits 0 to 4, green 5 to 9, red 10 to 14.
 *  \copydetails zmxiYCbCr444ToBGR555LS_MCU_16s16u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiYCbCr422ToBGR555LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep);
/** Converts one decoded 411 unit (16 x 16 pixels) to 16-bit pixels, blue in bits 0 to 4, green 5 to 9, red 10 to 14.
 *  \copydetails zmxiYCbCr444ToBGR555LS_MCU_16s16u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiYCbCr411ToBGR555LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep);

/** Converts one decoded 444 unit (8 x 8 pixels) to 16-bit pixels, blue in bits 0 to 4, green 5 to 10, red 11 to 15.
 *
 *  R, G, B are those of zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R(); their low bits are cut off. The full rectangle of the
 *  unit is written.
 *
 *  \par Buffers
 *  Pixels at any address and with any step, also of 16 bits; blocks aligned for 16-bit elements. Source and
 *  destination do not overlap.
 *
 *  \param pSrcMCU  the planes Y, Cb, Cr of the unit; planes 1 and 2 have one block, the first as many as the unit
 *                  has 8 x 8 pixels
 *  \param pDst     the top-left pixel of the unit; one 16-bit word a pixel
 *  \param dstStep  bytes between the starts of two destination rows, at least 1; less than the unit is wide is
 *                  accepted, and rows then overlay each other
 *  \return  zmxStsNullPtrErr when pSrcMCU, pDst or a plane of pSrcMCU is null; zmxStsStepErr when dstStep is below
 *           1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiYCbCr444ToBGR565LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep);
/** Converts one decoded 422 unit (16 x 8 pixels) to 16-bit pixels, blue in bits 0 to 4, green 5 to 10, red 11 to 15.
 *  \copydetails zmxiYCbCr444ToBGR565LS_MCU_16s16u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiYCbCr422ToBGR565LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep);
/** Converts one decoded 411 unit (16 x 16 pixels) to 16-bit pixels, blue in bits 0 to 4, green 5 to 10, red 11 to
 *  15.
 *  \copydetails zmxiYCbCr444ToBGR565LS_MCU_16s16u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiYCbCr411ToBGR565LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep);

/** Converts one decoded 444 unit (8 x 8 pixels) to bytes C, M, Y, K.
 *
 *  C, M, Y are 255 minus the saturated R, G, B of zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R(). K is the low byte of the
 *  plane-3 sample plus 128: alone of the four it wraps and does not saturate. The full rectangle of the unit is
 *  written.
 *
 *  \par Buffers
 *  Pixels at any address and with any step, also of 16 bits; blocks aligned for 16-bit elements. Source and
 *  destination do not overlap.
 *
 *  \param pSrcMCU  the planes Y, Cb, Cr, K of the unit; planes 1 and 2 have one block, the others as many as the
 *                  unit has 8 x 8 pixels
 *  \param pDst     the top-left pixel of the unit; four bytes a pixel
 *  \param dstStep  bytes between the starts of two destination rows, at least 1; less than the unit is wide is
 *                  accepted, and rows then overlay each other
 *  \return  zmxStsNullPtrErr when pSrcMCU, pDst or a plane of pSrcMCU is null; zmxStsStepErr when dstStep is below
 *           1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiYCCK444ToCMYKLS_MCU_16s8u_P4C4R(const Zmx16s* const pSrcMCU[4], Zmx8u* pDst, int dstStep);
/** Converts one decoded 422 unit (16 x 8 pixels) to bytes C, M, Y, K.
 *  \copydetails zmxiYCCK444ToCMYKLS_MCU_16s8u_P4C4R
 */
ZMXJ_API ZmxStatus zmxiYCCK422ToCMYKLS_MCU_16s8u_P4C4R(const Zmx16s* const pSrcMCU[4], Zmx8u* pDst, int dstStep);
/** Converts one decoded 411 unit (16 x 16 pixels) to bytes C, M, Y, K.
 *  \copydetails zmxiYCCK444ToCMYKLS_MCU_16s8u_P4C4R
 */
ZMXJ_API ZmxStatus zmxiYCCK411ToCMYKLS_MCU_16s8u_P4C4R(const Zmx16s* const pSrcMCU[4], Zmx8u* pDst, int dstStep);

/** Writes one decoded 444 unit (8 x 8 pixels) as bytes Y, Cb, Cr, without a colour conversion.
 *
 *  Each sample plus 128, saturated; the chroma is replicated. The full rectangle of the unit is written.
 *
 *  \par Buffers
 *  Pixels at any address and with any step, also of 16 bits; blocks aligned for 16-bit elements. Source and
 *  destination do not overlap.
 *
 *  \param pSrcMCU  the planes Y, Cb, Cr of the unit; planes 1 and 2 have one block, the first as many as the unit
 *                  has 8 x 8 pixels
 *  \param pDst     the top-left pixel of the unit; three bytes a pixel
 *  \param dstStep  bytes between the starts of two destination rows, at least 1; less than the unit is wide is
 *                  accepted, and rows then overlay each other
 *  \return  zmxStsNullPtrErr when pSrcMCU, pDst or a plane of pSrcMCU is null; zmxStsStepErr when dstStep is below
 *           1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiSampleUp444LS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);
/** Writes one decoded 422 unit (16 x 8 pixels) as bytes Y, Cb, Cr, without a colour conversion.
 *  \copydetails zmxiSampleUp444LS_MCU_16s8u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiSampleUp422LS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);
/** Writes one decoded 411 unit (16 x 16 pixels) as bytes Y, Cb, Cr, without a colour conversion.
 *  \copydetails zmxiSampleUp444LS_MCU_16s8u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiSampleUp411LS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);

/** Writes one decoded 422 unit (16 x 8 pixels) as 4:2:2 pairs: Y of pixel 2j, Cb j, Y of pixel 2j + 1, Cr j.
 *
 *  Each sample plus 128, saturated. The full rectangle of the unit is written.
 *
 *  \par Buffers
 *  Pixels at any address and with any step, also of 16 bits; blocks aligned for 16-bit elements. Source and
 *  destination do not overlap.
 *
 *  \param pSrcMCU  the planes Y (two blocks), Cb and Cr (one block each) of the unit
 *  \param pDst     the top-left pair of the unit; 8 pairs of four bytes a row
 *  \param dstStep  bytes between the starts of two destination rows, at least 1; less than 32 is accepted, and rows
 *                  then overlay each other
 *  \return  zmxStsNullPtrErr when pSrcMCU, pDst or a plane of pSrcMCU is null; zmxStsStepErr when dstStep is below
 *           1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiJoin422LS_MCU_16s8u_P3C2R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);

/** Cuts one 444 unit (8 x 8 pixels) out of bytes R, G, B.
 *
 *  With SR, SG, SB the sums over the n = 1, 2 or 4 pixels of a chroma sample (444, 422, 411), the floor being taken
 *  in all three lines, with no rounding term:
 *
 *      Y  = floor((19595 R + 38470 G + 7471 B) / 65536) - 128
 *      Cb = floor((-11059 SR - 21709 SG + 32768 SB) / (65536 n))
 *      Cr = floor((32768 SR - 27439 SG - 5329 SB) / (65536 n))
 *
 *  The full rectangle of the unit is read.
 *
 *  \par Buffers
 *  Pixels at any address and with any step, also of 16 bits; blocks aligned for 16-bit elements. Source and
 *  destination do not overlap.
 *
 *  \param pSrc     the top-left pixel of the unit; three bytes a pixel
 *  \param srcStep  bytes between the starts of two source rows, at least 1
 *  \param pDstMCU  the planes Y, Cb, Cr of the unit; planes 1 and 2 have one block, the first as many as the unit
 *                  has 8 x 8 pixels
 *  \return  zmxStsNullPtrErr when pSrc or pDstMCU is null; zmxStsStepErr when srcStep is below 1; zmxStsNullPtrErr
 *           when a plane of pDstMCU is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** Cuts one 422 unit (16 x 8 pixels) out of bytes R, G, B. \copydetails zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R */
ZMXJ_API ZmxStatus zmxiRGBToYCbCr422LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** Cuts one 411 unit (16 x 16 pixels) out of bytes R, G, B. \copydetails zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R */
ZMXJ_API ZmxStatus zmxiRGBToYCbCr411LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);

/** Cuts one 444 unit (8 x 8 pixels) out of bytes B, G, R. \copydetails zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R */
ZMXJ_API ZmxStatus zmxiBGRToYCbCr444LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** Cuts one 422 unit (16 x 8 pixels) out of bytes B, G, R. \copydetails zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R */
ZMXJ_API ZmxStatus zmxiBGRToYCbCr422LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** Cuts one 411 unit (16 x 16 pixels) out of bytes B, G, R. \copydetails zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R */
ZMXJ_API ZmxStatus zmxiBGRToYCbCr411LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);

/** Cuts one 444 unit (8 x 8 pixels) out of 16-bit pixels, blue in bits 0 to 4, green 5 to 9, red 10 to 14.
 *
 *  Fields are widened with zeros below and go through the formulas of zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R(); bit 15
 *  is ignored. The full rectangle of the unit is read.
 *
 *  \par Buffers
 *  Pixels at any address and with any step, also of 16 bits; blocks aligned for 16-bit elements. Source and
 *  destination do not overlap.
 *
 *  \param pSrc     the top-left pixel of the unit; one 16-bit word a pixel
 *  \param srcStep  bytes between the starts of two source rows, at least 1
 *  \param pDstMCU  the planes Y, Cb, Cr of the unit; planes 1 and 2 have one block, the first as many as the unit
 *                  has 8 x 8 pixels
 *  \return  zmxStsNullPtrErr when pSrc or pDstMCU is null; zmxStsStepErr when srcStep is below 1; zmxStsNullPtrErr
 *           when a plane of pDstMCU is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiBGR555ToYCbCr444LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** Cuts one 422 unit (16 x 8 pixels) out of 16-bit pixels, blue in bits 0 to 4, green 5 to 9, red 10 to 14.
 *  \copydetails zmxiBGR555ToYCbCr444LS_MCU_16u16s_C3P3R
 */
ZMXJ_API ZmxStatus zmxiBGR555ToYCbCr422LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** Cuts one 411 unit (16 x 16 pixels) out of 16-bit pixels, blue in bits 0 to 4, green 5 to 9, red 10 to 14.
 *  \copydetails zmxiBGR555ToYCbCr444LS_MCU_16u16s_C3P3R
 */
ZMXJ_API ZmxStatus zmxiBGR555ToYCbCr411LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);

/** Cuts one 444 unit (8 x 8 pixels) out of 16-bit pixels, blue in bits 0 to 4, green 5 to 10, red 11 to 15.
 *
 *  Fields are widened with zeros below and go through the formulas of zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R(). The
 *  full rectangle of the unit is read.
 *
 *  \par Buffers
 *  Pixels at any address and with any step, also of 16 bits; blocks aligned for 16-bit elements. Source and
 *  destination do not overlap.
 *
 *  \param pSrc     the top-left pixel of the unit; one 16-bit word a pixel
 *  \param srcStep  bytes between the starts of two source rows, at least 1
 *  \param pDstMCU  the planes Y, Cb, Cr of the unit; planes 1 and 2 have one block, the first as many as the unit
 *                  has 8 x 8 pixels
 *  \return  zmxStsNullPtrErr when pSrc or pDstMCU is null; zmxStsStepErr when srcStep is below 1; zmxStsNullPtrErr
 *           when a plane of pDstMCU is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiBGR565ToYCbCr444LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** Cuts one 422 unit (16 x 8 pixels) out of 16-bit pixels, blue in bits 0 to 4, green 5 to 10, red 11 to 15.
 *  \copydetails zmxiBGR565ToYCbCr444LS_MCU_16u16s_C3P3R
 */
ZMXJ_API ZmxStatus zmxiBGR565ToYCbCr422LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** Cuts one 411 unit (16 x 16 pixels) out of 16-bit pixels, blue in bits 0 to 4, green 5 to 10, red 11 to 15.
 *  \copydetails zmxiBGR565ToYCbCr444LS_MCU_16u16s_C3P3R
 */
ZMXJ_API ZmxStatus zmxiBGR565ToYCbCr411LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);

/** Cuts one 444 unit (8 x 8 pixels) out of bytes C, M, Y, K.
 *
 *  R, G, B are 255 minus C, M, Y and go through the formulas of zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R(); plane 3
 *  receives K minus 128 for every pixel. The full rectangle of the unit is read.
 *
 *  \par Buffers
 *  Pixels at any address and with any step, also of 16 bits; blocks aligned for 16-bit elements. Source and
 *  destination do not overlap.
 *
 *  \param pSrc     the top-left pixel of the unit; four bytes a pixel
 *  \param srcStep  bytes between the starts of two source rows, at least 1
 *  \param pDstMCU  the planes Y, Cb, Cr, K of the unit; planes 1 and 2 have one block, the others as many as the
 *                  unit has 8 x 8 pixels
 *  \return  zmxStsNullPtrErr when pSrc or pDstMCU is null; zmxStsStepErr when srcStep is below 1; zmxStsNullPtrErr
 *           when a plane of pDstMCU is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiCMYKToYCCK444LS_MCU_8u16s_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[4]);
/** Cuts one 422 unit (16 x 8 pixels) out of bytes C, M, Y, K. \copydetails zmxiCMYKToYCCK444LS_MCU_8u16s_C4P4R */
ZMXJ_API ZmxStatus zmxiCMYKToYCCK422LS_MCU_8u16s_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[4]);
/** Cuts one 411 unit (16 x 16 pixels) out of bytes C, M, Y, K. \copydetails zmxiCMYKToYCCK444LS_MCU_8u16s_C4P4R */
ZMXJ_API ZmxStatus zmxiCMYKToYCCK411LS_MCU_8u16s_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[4]);

/** Cuts one 444 unit (8 x 8 pixels) out of bytes Y, Cb, Cr, without a colour conversion.
 *
 *  Luma minus 128; chroma is the floor of the mean of the samples minus 128 over the pixels that share it, with no
 *  rounding term. The full rectangle of the unit is read.
 *
 *  \par Buffers
 *  Pixels at any address and with any step, also of 16 bits; blocks aligned for 16-bit elements. Source and
 *  destination do not overlap.
 *
 *  \param pSrc     the top-left pixel of the unit; three bytes a pixel
 *  \param srcStep  bytes between the starts of two source rows, at least 1
 *  \param pDstMCU  the planes Y, Cb, Cr of the unit; planes 1 and 2 have one block, the first as many as the unit
 *                  has 8 x 8 pixels
 *  \return  zmxStsNullPtrErr when pSrc or pDstMCU is null; zmxStsStepErr when srcStep is below 1; zmxStsNullPtrErr
 *           when a plane of pDstMCU is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiSampleDown444LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** Cuts one 422 unit (16 x 8 pixels) out of bytes Y, Cb, Cr, without a colour conversion.
 *  \copydetails zmxiSampleDown444LS_MCU_8u16s_C3P3R
 */
ZMXJ_API ZmxStatus zmxiSampleDown422LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** Cuts one 411 unit (16 x 16 pixels) out of bytes Y, Cb, Cr, without a colour conversion.
 *  \copydetails zmxiSampleDown444LS_MCU_8u16s_C3P3R
 */
ZMXJ_API ZmxStatus zmxiSampleDown411LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);

/** Cuts one 422 unit (16 x 8 pixels) out of 4:2:2 pairs: Y of pixel 2j, Cb j, Y of pixel 2j + 1, Cr j.
 *
 *  Each byte minus 128. The full rectangle of the unit is read.
 *
 *  \par Buffers
 *  Pixels at any address and with any step, also of 16 bits; blocks aligned for 16-bit elements. Source and
 *  destination do not overlap.
 *
 *  \param pSrc     the top-left pair of the unit; 8 pairs of four bytes a row
 *  \param srcStep  bytes between the starts of two source rows, at least 1
 *  \param pDstMCU  the planes Y (two blocks), Cb and Cr (one block each) of the unit
 *  \return  zmxStsNullPtrErr when pSrc or pDstMCU is null; zmxStsStepErr when srcStep is below 1; zmxStsNullPtrErr
 *           when a plane of pDstMCU is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiSplit422LS_MCU_8u16s_C2P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_MCU_H */
