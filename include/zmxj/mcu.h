/* mcu.h - conversions of one minimum coded unit between pixels and zero-centred 8x8 blocks. */
#ifndef ZMXJ_MCU_H
#define ZMXJ_MCU_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The digits in the names tell the chroma sampling: 444 and 422 are 4:4:4 and 4:2:2, and 411 is 4:2:0, where a chroma
 * sample covers two pixels across and two down.
 *
 * A block is 64 Zmx16s in natural order, row by row. The blocks of one plane of a unit follow one another:
 *
 *   unit  pixels   planes 0 and 3                                             planes 1 and 2
 *   444    8 x 8   1 block                                                    1 block each
 *   422   16 x 8   2 blocks: left, right                                      1 block each
 *   411   16 x 16  4 blocks: top left, top right, bottom left, bottom right   1 block each
 *
 * One chroma sample stands for the 1, 2 (side by side) or 4 (square) pixels that it covers. A packed 16-bit pixel has
 * blue in its low bits: BGR555 is blue 0-4, green 5-9, red 10-14; BGR565 is blue 0-4, green 5-10, red 11-15. */

/** Converts one decoded unit to pixels: replicates the chroma, converts the colour, adds 128, saturates.
 *
 *  With floor() for the arithmetic shift right by 16 of a 32-bit product that wraps, and no rounding term:
 *
 *      R = saturate(Y + floor( 91881 Cr              / 65536) + 128)
 *      G = saturate(Y + floor((-22554 Cb - 46802 Cr) / 65536) + 128)
 *      B = saturate(Y + floor(116130 Cb              / 65536) + 128)
 *
 *  Samples are nominally -128..127; every 16-bit value is legal. The full rectangle of the unit is written.
 *
 *  \param pSrcMCU  the planes Y, Cb, Cr of the unit
 *  \param pDst     the top-left pixel of the unit; this one writes the bytes R, G, B
 *  \param dstStep  bytes between the starts of two destination rows; it may be less than the unit is wide
 *  \return         zmxStsNullPtrErr (pSrcMCU, pDst, then each plane in order), zmxStsStepErr (dstStep below 1),
 *                  zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);
/** The same for a 422 unit. */
ZMXJ_API ZmxStatus zmxiYCbCr422ToRGBLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);
/** The same for a 411 unit. */
ZMXJ_API ZmxStatus zmxiYCbCr411ToRGBLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);

/** As zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R, to the bytes B, G, R. */
ZMXJ_API ZmxStatus zmxiYCbCr444ToBGRLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);
/** The same for a 422 unit. */
ZMXJ_API ZmxStatus zmxiYCbCr422ToBGRLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);
/** The same for a 411 unit. */
ZMXJ_API ZmxStatus zmxiYCbCr411ToBGRLS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);

/** As zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R, to 16-bit pixels, 555 packing: low bits are cut off, bit 15 is zero. */
ZMXJ_API ZmxStatus zmxiYCbCr444ToBGR555LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep);
/** The same for a 422 unit. */
ZMXJ_API ZmxStatus zmxiYCbCr422ToBGR555LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep);
/** The same for a 411 unit. */
ZMXJ_API ZmxStatus zmxiYCbCr411ToBGR555LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep);

/** As zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R, to 16-bit pixels, 565 packing: low bits are cut off. */
ZMXJ_API ZmxStatus zmxiYCbCr444ToBGR565LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep);
/** The same for a 422 unit. */
ZMXJ_API ZmxStatus zmxiYCbCr422ToBGR565LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep);
/** The same for a 411 unit. */
ZMXJ_API ZmxStatus zmxiYCbCr411ToBGR565LS_MCU_16s16u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx16u* pDst, int dstStep);

/** Converts one decoded YCCK unit to the bytes C, M, Y, K.
 *
 *  C, M, Y are 255 minus the saturated R, G, B of zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R. K is the low byte of the
 *  plane-3 sample plus 128: alone of the four it wraps and does not saturate.
 *
 *  \param pSrcMCU  the planes Y, Cb, Cr, K of the unit
 *  \param pDst     the top-left pixel of the unit
 *  \param dstStep  bytes between the starts of two destination rows
 *  \return         zmxStsNullPtrErr (pSrcMCU, pDst, then each plane in order), zmxStsStepErr (dstStep below 1),
 *                  zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiYCCK444ToCMYKLS_MCU_16s8u_P4C4R(const Zmx16s* const pSrcMCU[4], Zmx8u* pDst, int dstStep);
/** The same for a 422 unit. */
ZMXJ_API ZmxStatus zmxiYCCK422ToCMYKLS_MCU_16s8u_P4C4R(const Zmx16s* const pSrcMCU[4], Zmx8u* pDst, int dstStep);
/** The same for a 411 unit. */
ZMXJ_API ZmxStatus zmxiYCCK411ToCMYKLS_MCU_16s8u_P4C4R(const Zmx16s* const pSrcMCU[4], Zmx8u* pDst, int dstStep);

/** Writes the three planes of one decoded unit as the bytes Y, Cb, Cr of its pixels: each sample plus 128,
 *  saturated, the chroma replicated, no colour conversion.
 *
 *  \param pSrcMCU  the planes Y, Cb, Cr of the unit
 *  \param pDst     the top-left pixel of the unit
 *  \param dstStep  bytes between the starts of two destination rows
 *  \return         zmxStsNullPtrErr (pSrcMCU, pDst, then each plane in order), zmxStsStepErr (dstStep below 1),
 *                  zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiSampleUp444LS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);
/** The same for a 422 unit. */
ZMXJ_API ZmxStatus zmxiSampleUp422LS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);
/** The same for a 411 unit. */
ZMXJ_API ZmxStatus zmxiSampleUp411LS_MCU_16s8u_P3C3R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);

/** Writes one decoded 422 unit as 4:2:2 pairs: luma of pixel 2j, Cb j, luma of pixel 2j+1, Cr j, each sample plus
 *  128, saturated. A row is 32 bytes. Arguments and statuses as for zmxiSampleUp422LS_MCU_16s8u_P3C3R. */
ZMXJ_API ZmxStatus zmxiJoin422LS_MCU_16s8u_P3C2R(const Zmx16s* const pSrcMCU[3], Zmx8u* pDst, int dstStep);

/** Cuts one unit out of an image of RGB pixels: converts the colour, sums the chroma over the pixels that share a
 *  sample, centres on zero. Blocks as above.
 *
 *  With SR, SG, SB the sums over the n = 1, 2 or 4 pixels of a chroma sample (444, 422, 411), the floor being taken
 *  in all three lines, with no rounding term:
 *
 *      Y  = floor((19595 R + 38470 G + 7471 B) / 65536) - 128
 *      Cb = floor((-11059 SR - 21709 SG + 32768 SB) / (65536 n))
 *      Cr = floor((32768 SR - 27439 SG - 5329 SB) / (65536 n))
 *
 *  \param pSrc     the top-left pixel of the unit; this one reads the bytes R, G, B
 *  \param srcStep  bytes between the starts of two source rows
 *  \param pDstMCU  the planes Y, Cb, Cr of the unit
 *  \return         zmxStsNullPtrErr (pSrc, pDstMCU), zmxStsStepErr (srcStep below 1), then zmxStsNullPtrErr (each
 *                  plane in order): the step stands ahead of the planes; zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** The same for a 422 unit. */
ZMXJ_API ZmxStatus zmxiRGBToYCbCr422LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** The same for a 411 unit. */
ZMXJ_API ZmxStatus zmxiRGBToYCbCr411LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);

/** As zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R, from the bytes B, G, R. */
ZMXJ_API ZmxStatus zmxiBGRToYCbCr444LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** The same for a 422 unit. */
ZMXJ_API ZmxStatus zmxiBGRToYCbCr422LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** The same for a 411 unit. */
ZMXJ_API ZmxStatus zmxiBGRToYCbCr411LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);

/** As zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R, from 16-bit pixels, 555 packing: zeros below each field, bit 15 ignored. */
ZMXJ_API ZmxStatus zmxiBGR555ToYCbCr444LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** The same for a 422 unit. */
ZMXJ_API ZmxStatus zmxiBGR555ToYCbCr422LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** The same for a 411 unit. */
ZMXJ_API ZmxStatus zmxiBGR555ToYCbCr411LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);

/** As zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R, from 16-bit pixels, 565 packing: zeros below each field. */
ZMXJ_API ZmxStatus zmxiBGR565ToYCbCr444LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** The same for a 422 unit. */
ZMXJ_API ZmxStatus zmxiBGR565ToYCbCr422LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** The same for a 411 unit. */
ZMXJ_API ZmxStatus zmxiBGR565ToYCbCr411LS_MCU_16u16s_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);

/** Cuts one unit out of an image of CMYK pixels: R, G, B are 255 minus C, M, Y and go through the formulas of
 *  zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R; plane 3 receives K minus 128 for every pixel.
 *
 *  \param pSrc     the top-left pixel of the unit, bytes C, M, Y, K
 *  \param srcStep  bytes between the starts of two source rows
 *  \param pDstMCU  the planes Y, Cb, Cr, K of the unit
 *  \return         zmxStsNullPtrErr (pSrc, pDstMCU), zmxStsStepErr (srcStep below 1), then zmxStsNullPtrErr (each
 *                  plane in order): the step stands ahead of the planes; zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiCMYKToYCCK444LS_MCU_8u16s_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[4]);
/** The same for a 422 unit. */
ZMXJ_API ZmxStatus zmxiCMYKToYCCK422LS_MCU_8u16s_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[4]);
/** The same for a 411 unit. */
ZMXJ_API ZmxStatus zmxiCMYKToYCCK411LS_MCU_8u16s_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[4]);

/** Cuts one unit out of an image of Y, Cb, Cr bytes, with no colour conversion: luma minus 128; chroma the floor of
 *  the mean of the samples minus 128 over the pixels that share it, with no rounding term.
 *
 *  \param pSrc     the top-left pixel of the unit, bytes Y, Cb, Cr
 *  \param srcStep  bytes between the starts of two source rows
 *  \param pDstMCU  the planes Y, Cb, Cr of the unit
 *  \return         zmxStsNullPtrErr (pSrc, pDstMCU), zmxStsStepErr (srcStep below 1), then zmxStsNullPtrErr (each
 *                  plane in order): the step stands ahead of the planes; zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiSampleDown444LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** The same for a 422 unit. */
ZMXJ_API ZmxStatus zmxiSampleDown422LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);
/** The same for a 411 unit. */
ZMXJ_API ZmxStatus zmxiSampleDown411LS_MCU_8u16s_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);

/** Cuts one 422 unit out of an image of 4:2:2 pairs (luma of pixel 2j, Cb j, luma of pixel 2j+1, Cr j): each byte
 *  minus 128. Arguments and statuses as for zmxiSampleDown422LS_MCU_8u16s_C3P3R. */
ZMXJ_API ZmxStatus zmxiSplit422LS_MCU_8u16s_C2P3R(const Zmx8u* pSrc, int srcStep, Zmx16s* const pDstMCU[3]);

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_MCU_H */
