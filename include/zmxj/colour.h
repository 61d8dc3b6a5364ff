/** \file
 *  colour.h - colour conversion of whole planes.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_COLOUR_H
#define ZMXJ_COLOUR_H

#include "types.h"

/** \defgroup colour Colour conversion of planes
 *  Between YCbCr or YCCK and RGB or CMYK, fixed point with 16 fractional bits (ITU-T T.871, clause 7).
 *
 *  From YCbCr, for each pixel, every result saturated to 0..255:
 *
 *      R = Y + ((91881 (Cr - 128) + 32768) >> 16)
 *      G = Y + ((-22554 (Cb - 128) - 46802 (Cr - 128) + 32768) >> 16)
 *      B = Y + ((116130 (Cb - 128) + 32768) >> 16)
 *
 *  To YCbCr (no result leaves 0..255):
 *
 *      Y  = (19595 R + 38470 G + 7471 B + 32768) >> 16
 *      Cb = (-11059 R - 21709 G + 32768 B + 8421375) >> 16
 *      Cr = (32768 R - 27439 G - 5329 B + 8421375) >> 16
 *
 *  The two are not exact inverses of each other. CMYK stands for 255 minus R, G and B; K is copied. The conversions of
 *  single units (\ref mcu) have no rounding terms, and differ.
 *
 *  Packed pixels are 16-bit words in the byte order of the machine; the letters of the name run from the low bits upward.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Planes Y, Cb, Cr to planes R, G, B.
 *
 *  A region of more than 8192 pixels is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The destination may be the source: the
 *  same three pointers and the same step. They do not overlap in any other way.
 *
 *  \param pSrc     planes Y, Cb, Cr, each of roiSize samples
 *  \param srcStep  bytes between the rows of every source plane, at least 1
 *  \param pDst     planes R, G, B, each of roiSize samples
 *  \param dstStep  bytes between the rows of every destination plane, at least 1
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst, a plane of pSrc or a plane of pDst is null; zmxStsStepErr when srcStep
 *           or dstStep is below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiYCbCrToRGB_JPEG_8u_P3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* const pDst[3],
                                              int dstStep, ZmxiSize roiSize);

/** Planes Y, Cb, Cr, K to planes C, M, Y, K: 255 minus R, G and B; K is copied.
 *
 *  A region of more than 8192 pixels is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The destination may be the source: the
 *  same four pointers and the same step. They do not overlap in any other way.
 *
 *  \param pSrc     planes Y, Cb, Cr, K, each of roiSize samples
 *  \param srcStep  bytes between the rows of every source plane, at least 1
 *  \param pDst     planes C, M, Y, K, each of roiSize samples
 *  \param dstStep  bytes between the rows of every destination plane, at least 1
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst, a plane of pSrc or a plane of pDst is null; zmxStsStepErr when srcStep
 *           or dstStep is below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiYCCKToCMYK_JPEG_8u_P4R(const Zmx8u* const pSrc[4], int srcStep, Zmx8u* const pDst[4],
                                              int dstStep, ZmxiSize roiSize);

/** Planes Y, Cb, Cr to pixels of bytes R, G, B.
 *
 *  A region of more than 8192 pixels is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     planes Y, Cb, Cr, each of roiSize samples
 *  \param srcStep  bytes between the rows of every source plane, at least 1
 *  \param pDst     roiSize pixels of three bytes
 *  \param dstStep  bytes between the starts of two destination rows, at least 1
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst or a plane of pSrc is null; zmxStsStepErr when srcStep or dstStep is
 *           below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiYCbCrToRGB_JPEG_8u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* pDst, int dstStep,
                                                ZmxiSize roiSize);

/** Planes Y, Cb, Cr to pixels of bytes B, G, R. \copydetails zmxiYCbCrToRGB_JPEG_8u_P3C3R */
ZMXJ_API ZmxStatus zmxiYCbCrToBGR_JPEG_8u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* pDst, int dstStep,
                                                ZmxiSize roiSize);

/** Planes Y, Cb, Cr, K to pixels of bytes C, M, Y, K: 255 minus R, G and B; K is copied.
 *
 *  A region of more than 8192 pixels is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     planes Y, Cb, Cr, K, each of roiSize samples
 *  \param srcStep  bytes between the rows of every source plane, at least 1
 *  \param pDst     roiSize pixels of four bytes
 *  \param dstStep  bytes between the starts of two destination rows, at least 1
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst or a plane of pSrc is null; zmxStsStepErr when srcStep or dstStep is
 *           below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiYCCKToCMYK_JPEG_8u_P4C4R(const Zmx8u* const pSrc[4], int srcStep, Zmx8u* pDst, int dstStep,
                                                ZmxiSize roiSize);

/** Planes Y, Cb, Cr to 16-bit pixels: blue in bits 0 to 4, green 5 to 9, red 10 to 14.
 *
 *  Samples are truncated to the width of their field; bit 15 of a 555 pixel is 0. Runs on the calling thread at any
 *  size.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     planes Y, Cb, Cr, each of roiSize samples
 *  \param srcStep  bytes between the rows of every source plane, at least 1
 *  \param pDst     roiSize pixels of one 16-bit word each
 *  \param dstStep  bytes between the starts of two destination rows, at least 1
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst or a plane of pSrc is null; zmxStsStepErr when srcStep or dstStep is
 *           below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst,
                                                      int dstStep, ZmxiSize roiSize);
/** Planes Y, Cb, Cr to 16-bit pixels: red in bits 0 to 4, green 5 to 9, blue 10 to 14.
 *  \copydetails zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiYCbCrToRGB555_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst,
                                                      int dstStep, ZmxiSize roiSize);
/** Planes Y, Cb, Cr to 16-bit pixels: blue in bits 0 to 4, green 5 to 10, red 11 to 15.
 *  \copydetails zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst,
                                                      int dstStep, ZmxiSize roiSize);
/** Planes Y, Cb, Cr to 16-bit pixels: red in bits 0 to 4, green 5 to 10, blue 11 to 15.
 *  \copydetails zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R
 */
ZMXJ_API ZmxStatus zmxiYCbCrToRGB565_JPEG_8u16u_P3C3R(const Zmx8u* const pSrc[3], int srcStep, Zmx16u* pDst,
                                                      int dstStep, ZmxiSize roiSize);

/** 4:2:2 pairs Y, Cb, Y, Cr to pixels of bytes R, G, B.
 *
 *  Whole pairs are read and written: with an odd width one pixel beyond it on both sides. A region of more than 8192
 *  pixels is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     rows of (width + 1) / 2 pairs of four bytes
 *  \param srcStep  bytes between the starts of two source rows; not tested: 0 or below overlays the rows or runs
 *                  backward
 *  \param pDst     rows of (width + 1) / 2 pairs of six bytes
 *  \param dstStep  bytes between the starts of two destination rows; not tested
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsSizeErr when the width or the height of roiSize is
 *           below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiYCbCr422ToRGB_JPEG_8u_C2C3R(const Zmx8u* pSrc, int srcStep, Zmx8u* pDst, int dstStep,
                                                   ZmxiSize roiSize);

/** Pixels of bytes R, G, B to the plane Y.
 *
 *  A region of more than 8192 pixels is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     roiSize pixels of three bytes
 *  \param srcStep  bytes between the starts of two source rows, at least 1
 *  \param pDst     plane Y of roiSize samples
 *  \param dstStep  bytes between the starts of two destination rows, at least 1
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr when srcStep or dstStep is below 1;
 *           zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiRGBToY_JPEG_8u_C3C1R(const Zmx8u* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize);
/** Pixels of bytes B, G, R to the plane Y. \copydetails zmxiRGBToY_JPEG_8u_C3C1R */
ZMXJ_API ZmxStatus zmxiBGRToY_JPEG_8u_C3C1R(const Zmx8u* pSrc, int srcStep, Zmx8u* pDst, int dstStep, ZmxiSize roiSize);

/** Planes R, G, B to the plane Y. Here the planes are tested ahead of pDst.
 *
 *  A region of more than 8192 pixels is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. pDst may be one of the source planes,
 *  with the same step; they do not overlap in any other way.
 *
 *  \param pSrc     planes R, G, B, each of roiSize samples
 *  \param srcStep  bytes between the rows of every source plane, at least 1
 *  \param pDst     plane Y of roiSize samples
 *  \param dstStep  bytes between the starts of two destination rows, at least 1
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, a plane of pSrc or pDst is null; zmxStsStepErr when srcStep or dstStep is
 *           below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiRGBToY_JPEG_8u_P3C1R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* pDst, int dstStep,
                                            ZmxiSize roiSize);

/** Pixels of bytes R, G, B to planes Y, Cb, Cr.
 *
 *  A region of more than 8192 pixels is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     roiSize pixels of three bytes
 *  \param srcStep  bytes between the starts of two source rows, at least 1
 *  \param pDst     planes Y, Cb, Cr, each of roiSize samples
 *  \param dstStep  bytes between the rows of every destination plane, at least 1
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst or a plane of pDst is null; zmxStsStepErr when srcStep or dstStep is
 *           below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiRGBToYCbCr_JPEG_8u_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                                ZmxiSize roiSize);
/** Pixels of bytes B, G, R to planes Y, Cb, Cr. \copydetails zmxiRGBToYCbCr_JPEG_8u_C3P3R */
ZMXJ_API ZmxStatus zmxiBGRToYCbCr_JPEG_8u_C3P3R(const Zmx8u* pSrc, int srcStep, Zmx8u* const pDst[3], int dstStep,
                                                ZmxiSize roiSize);
/** Pixels of bytes C, M, Y, K to planes Y, Cb, Cr, K: R, G, B are 255 minus C, M, Y; K is copied.
 *
 *  A region of more than 8192 pixels is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     roiSize pixels of four bytes
 *  \param srcStep  bytes between the starts of two source rows, at least 1
 *  \param pDst     planes Y, Cb, Cr, K, each of roiSize samples
 *  \param dstStep  bytes between the rows of every destination plane, at least 1
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst or a plane of pDst is null; zmxStsStepErr when srcStep or dstStep is
 *           below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiCMYKToYCCK_JPEG_8u_C4P4R(const Zmx8u* pSrc, int srcStep, Zmx8u* const pDst[4], int dstStep,
                                                ZmxiSize roiSize);

/** Planes R, G, B to planes Y, Cb, Cr.
 *
 *  A region of more than 8192 pixels is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The destination may be the source: the
 *  same three pointers and the same step. They do not overlap in any other way.
 *
 *  \param pSrc     planes R, G, B, each of roiSize samples
 *  \param srcStep  bytes between the rows of every source plane, at least 1
 *  \param pDst     planes Y, Cb, Cr, each of roiSize samples
 *  \param dstStep  bytes between the rows of every destination plane, at least 1
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst, a plane of pSrc or a plane of pDst is null; zmxStsStepErr when srcStep
 *           or dstStep is below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiRGBToYCbCr_JPEG_8u_P3R(const Zmx8u* const pSrc[3], int srcStep, Zmx8u* const pDst[3],
                                              int dstStep, ZmxiSize roiSize);
/** Planes C, M, Y, K to planes Y, Cb, Cr, K: R, G, B are 255 minus C, M, Y; K is copied.
 *
 *  A region of more than 8192 pixels is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The destination may be the source: the
 *  same four pointers and the same step. They do not overlap in any other way.
 *
 *  \param pSrc     planes C, M, Y, K, each of roiSize samples
 *  \param srcStep  bytes between the rows of every source plane, at least 1
 *  \param pDst     planes Y, Cb, Cr, K, each of roiSize samples
 *  \param dstStep  bytes between the rows of every destination plane, at least 1
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst, a plane of pSrc or a plane of pDst is null; zmxStsStepErr when srcStep
 *           or dstStep is below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiCMYKToYCCK_JPEG_8u_P4R(const Zmx8u* const pSrc[4], int srcStep, Zmx8u* const pDst[4],
                                              int dstStep, ZmxiSize roiSize);

/** 16-bit pixels to planes Y, Cb, Cr: red in bits 0 to 4, green 5 to 9, blue 10 to 14.
 *
 *  Fields are widened with zeros below, so that five bits of 31 give 248 and six bits of 63 give 252; bit 15 of a
 *  555 pixel is ignored. Runs on the calling thread at any size.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     roiSize pixels of one 16-bit word each
 *  \param srcStep  bytes between the starts of two source rows, at least 1
 *  \param pDst     planes Y, Cb, Cr, each of roiSize samples
 *  \param dstStep  bytes between the rows of every destination plane, at least 1
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst or a plane of pDst is null; zmxStsStepErr when srcStep or dstStep is
 *           below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3],
                                                      int dstStep, ZmxiSize roiSize);
/** 16-bit pixels to planes Y, Cb, Cr: blue in bits 0 to 4, green 5 to 9, red 10 to 14.
 *  \copydetails zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R
 */
ZMXJ_API ZmxStatus zmxiBGR555ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3],
                                                      int dstStep, ZmxiSize roiSize);
/** 16-bit pixels to planes Y, Cb, Cr: red in bits 0 to 4, green 5 to 10, blue 11 to 15.
 *  \copydetails zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R
 */
ZMXJ_API ZmxStatus zmxiRGB565ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3],
                                                      int dstStep, ZmxiSize roiSize);
/** 16-bit pixels to planes Y, Cb, Cr: blue in bits 0 to 4, green 5 to 10, red 11 to 15.
 *  \copydetails zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R
 */
ZMXJ_API ZmxStatus zmxiBGR565ToYCbCr_JPEG_16u8u_C3P3R(const Zmx16u* pSrc, int srcStep, Zmx8u* const pDst[3],
                                                      int dstStep, ZmxiSize roiSize);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_COLOUR_H */
