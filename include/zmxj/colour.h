/* colour.h - colour conversion of whole planes. */
#ifndef ZMXJ_COLOUR_H
#define ZMXJ_COLOUR_H

#include "types.h"

/* Colour conversion of whole planes, fixed point with 16 fractional bits (ITU-T T.871, clause 7).
 *
 * From YCbCr, for each pixel, every result saturated to 0..255:
 *   R = Y + ((91881 (Cr - 128) + 32768) >> 16)
 *   G = Y + ((-22554 (Cb - 128) - 46802 (Cr - 128) + 32768) >> 16)
 *   B = Y + ((116130 (Cb - 128) + 32768) >> 16)
 * To YCbCr (no result leaves 0..255):
 *   Y  = (19595 R + 38470 G + 7471 B + 32768) >> 16
 *   Cb = (-11059 R - 21709 G + 32768 B + 8421375) >> 16
 *   Cr = (32768 R - 27439 G - 5329 B + 8421375) >> 16
 * The two are not exact inverses of each other. CMYK stands for 255 minus R, G and B; K is copied. The conversions of
 * single units in mcu.h have no rounding terms, and differ.
 *
 * Packed pixels are 16-bit words; the letters of the name run from the low bits upward. BGR555: blue in bits 0 to 4, green 5
 * to 9, red 10 to 14. BGR565: blue in bits 0 to 4, green 5 to 10, red 11 to 15. RGB555 and RGB565 have red and blue
 * exchanged. On the way out samples are truncated and bit 15 of 555 is 0; on the way in fields are widened with zeros below
 * and bit 15 of 555 is ignored.
 *
 * Steps are distances in bytes between rows; one step serves all planes of a group. A destination may be its own source:
 * the same pointers and steps. The functions on 8-bit samples share their rows out to a team of threads when width times
 * height exceeds 8192. */

#ifdef __cplusplus
extern "C" {
#endif

/** Planes Y, Cb, Cr to planes R, G, B.
 *
 *  \param pSrc     planes Y, Cb, Cr, each of roiSize samples
 *  \param srcStep  bytes between rows of every source plane, at least 1
 *  \param pDst     planes R, G, B, each of roiSize samples
 *  \param dstStep  bytes between rows of every destination plane, at least 1
 *  \param roiSize  size in pixels, at least 1 x 1
 *  \return zmxStsNullPtrErr for pSrc, pDst, then the planes of pSrc and of pDst; zmxStsStepErr for srcStep, dstStep;
 *          zmxStsSizeErr for the width, the height
 */
ZMXJ_API ZmxStatus zmxiYCbCrToRGB_JPEG_8u_P3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* const pDst[3],
                                              int dstStep, ZmxiSize roiSize);

/** Planes Y, Cb, Cr, K to planes C, M, Y, K. Arguments and statuses as zmxiYCbCrToRGB_JPEG_8u_P3R, with four planes. */
ZMXJ_API ZmxStatus zmxiYCCKToCMYK_JPEG_8u_P4R(const Zmx8u* const pSrc[4], int srcStep, Zmx8u* const pDst[4],
                                              int dstStep, ZmxiSize roiSize);

/** Planes Y, Cb, Cr to pixels of bytes R, G, B.
 *
 *  \param pSrc     planes Y, Cb, Cr, each of roiSize samples
 *  \param srcStep  bytes between rows of every source plane, at least 1
 *  \param pDst     roiSize pixels of three bytes
 *  \param dstStep  bytes between destination rows, at least 1
 *  \param roiSize  size in pixels, at least 1 x 1
 *  \return zmxStsNullPtrErr for pSrc, pDst, then the planes of pSrc; zmxStsStepErr for srcStep, dstStep; zmxStsSizeErr for
 *          the width, the height
 */
ZMXJ_API ZmxStatus zmxiYCbCrToRGB_JPEG_8u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* pDst, int dstStep,
                                                ZmxiSize roiSize);

/** Planes Y, Cb, Cr to pixels of bytes B, G, R. Otherwise as zmxiYCbCrToRGB_JPEG_8u_P3C3R. */
ZMXJ_API ZmxStatus zmxiYCbCrToBGR_JPEG_8u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* pDst, int dstStep,
                                                ZmxiSize roiSize);

/** Planes Y, Cb, Cr, K to pixels of bytes C, M, Y, K. Otherwise as zmxiYCbCrToRGB_JPEG_8u_P3C3R, with four planes. */
ZMXJ_API ZmxStatus zmxiYCCKToCMYK_JPEG_8u_P4C4R(const Zmx8u* const pSrc[4], int srcStep, Zmx8u* pDst, int dstStep,
                                                ZmxiSize roiSize);

/** Planes Y, Cb, Cr to packed pixels, one 16-bit word each; dstStep is in bytes. Otherwise as zmxiYCbCrToRGB_JPEG_8u_P3C3R,
 *  but on the calling thread at any size. */
ZMXJ_API ZmxStatus zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst,
                                                      int dstStep, ZmxiSize roiSize);
/** As zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R, with red in the low bits. */
ZMXJ_API ZmxStatus zmxiYCbCrToRGB555_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst,
                                                      int dstStep, ZmxiSize roiSize);
/** As zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R, with six bits of green. */
ZMXJ_API ZmxStatus zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst,
                                                      int dstStep, ZmxiSize roiSize);
/** As zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R, with red in the low bits. */
ZMXJ_API ZmxStatus zmxiYCbCrToRGB565_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst,
                                                      int dstStep, ZmxiSize roiSize);

/** 4:2:2 pairs Y, Cb, Y, Cr to pixels of bytes R, G, B.
 *
 *  Whole pairs are read and written: with an odd width one pixel beyond it on both sides.
 *
 *  \param pSrc     rows of (width + 1) / 2 pairs of four bytes
 *  \param srcStep  bytes between source rows; not tested: 0 or below overlays the rows or runs backward
 *  \param pDst     rows of (width + 1) / 2 pairs of six bytes
 *  \param dstStep  bytes between destination rows; not tested
 *  \param roiSize  size in pixels, at least 1 x 1
 *  \return zmxStsNullPtrErr for pSrc, pDst; zmxStsSizeErr for the width, the height
 */
ZMXJ_API ZmxStatus zmxiYCbCr422ToRGB_JPEG_8u_C2C3R(const Zmx8u* pSrc, int srcStep, Zmx8u* pDst, int dstStep,
                                                   ZmxiSize roiSize);

/** Pixels of bytes R, G, B to the plane Y.
 *
 *  \param pSrc     roiSize pixels of three bytes
 *  \param srcStep  bytes between source rows, at least 1
 *  \param pDst     plane Y of roiSize samples
 *  \param dstStep  bytes between destination rows, at least 1
 *  \param roiSize  size in pixels, at least 1 x 1
 *  \return zmxStsNullPtrErr for pSrc, pDst; zmxStsStepErr for srcStep, dstStep; zmxStsSizeErr for the width, the height
 */
ZMXJ_API ZmxStatus zmxiRGBToY_JPEG_8u_C3C1R(const Zmx8u* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize);
/** Pixels of bytes B, G, R to the plane Y. Otherwise as zmxiRGBToY_JPEG_8u_C3C1R. */
ZMXJ_API ZmxStatus zmxiBGRToY_JPEG_8u_C3C1R(const Zmx8u* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize);

/** Planes R, G, B to the plane Y. As zmxiRGBToY_JPEG_8u_C3C1R, but the order of tests is pSrc, its planes, pDst, srcStep,
 *  dstStep, width, height. */
ZMXJ_API ZmxStatus zmxiRGBToY_JPEG_8u_P3C1R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* pDst, int dstStep,
                                            ZmxiSize roiSize);

/** Pixels of bytes R, G, B to planes Y, Cb, Cr.
 *
 *  \param pSrc     roiSize pixels of three bytes
 *  \param srcStep  bytes between source rows, at least 1
 *  \param pDst     planes Y, Cb, Cr, each of roiSize samples
 *  \param dstStep  bytes between rows of every destination plane, at least 1
 *  \param roiSize  size in pixels, at least 1 x 1
 *  \return zmxStsNullPtrErr for pSrc, pDst, then the planes of pDst; zmxStsStepErr for srcStep, dstStep; zmxStsSizeErr for
 *          the width, the height
 */
ZMXJ_API ZmxStatus zmxiRGBToYCbCr_JPEG_8u_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                                ZmxiSize roiSize);
/** Pixels of bytes B, G, R to planes Y, Cb, Cr. Otherwise as zmxiRGBToYCbCr_JPEG_8u_C3P3R. */
ZMXJ_API ZmxStatus zmxiBGRToYCbCr_JPEG_8u_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                                ZmxiSize roiSize);
/** Pixels of bytes C, M, Y, K to planes Y, Cb, Cr, K. Otherwise as zmxiRGBToYCbCr_JPEG_8u_C3P3R, with four planes. */
ZMXJ_API ZmxStatus zmxiCMYKToYCCK_JPEG_8u_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx8u* const pDst[4], int dstStep,
                                                ZmxiSize roiSize);

/** Planes R, G, B to planes Y, Cb, Cr.
 *
 *  \param pSrc     planes R, G, B, each of roiSize samples
 *  \param srcStep  bytes between rows of every source plane, at least 1
 *  \param pDst     planes Y, Cb, Cr, each of roiSize samples
 *  \param dstStep  bytes between rows of every destination plane, at least 1
 *  \param roiSize  size in pixels, at least 1 x 1
 *  \return zmxStsNullPtrErr for pSrc, pDst, then the planes of pSrc and of pDst; zmxStsStepErr for srcStep, dstStep;
 *          zmxStsSizeErr for the width, the height
 */
ZMXJ_API ZmxStatus zmxiRGBToYCbCr_JPEG_8u_P3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* const pDst[3],
                                              int dstStep, ZmxiSize roiSize);
/** Planes C, M, Y, K to planes Y, Cb, Cr, K. Otherwise as zmxiRGBToYCbCr_JPEG_8u_P3R, with four planes. */
ZMXJ_API ZmxStatus zmxiCMYKToYCCK_JPEG_8u_P4R(const Zmx8u* const pSrc[4], int srcStep, Zmx8u* const pDst[4],
                                              int dstStep, ZmxiSize roiSize);

/** Packed pixels to planes Y, Cb, Cr; srcStep is in bytes. Otherwise as zmxiRGBToYCbCr_JPEG_8u_C3P3R, but on the calling
 *  thread at any size. */
ZMXJ_API ZmxStatus zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3],
                                                      int dstStep, ZmxiSize roiSize);
/** As zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R, with blue in the low bits. */
ZMXJ_API ZmxStatus zmxiBGR555ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3],
                                                      int dstStep, ZmxiSize roiSize);
/** As zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R, with six bits of green. */
ZMXJ_API ZmxStatus zmxiRGB565ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3],
                                                      int dstStep, ZmxiSize roiSize);
/** As zmxiRGB565ToYCbCr_JPEG_16u8u_C3P3R, with blue in the low bits. */
ZMXJ_API ZmxStatus zmxiBGR565ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3],
                                                      int dstStep, ZmxiSize roiSize);

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_COLOUR_H */
