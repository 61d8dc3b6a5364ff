/** \file
 *  resampling.h - chroma resampling of whole planes and of rows, by two in one direction or both.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_RESAMPLING_H
#define ZMXJ_RESAMPLING_H

#include "types.h"

/** \defgroup resampling Chroma resampling
 *  H2V1 is two to one in the horizontal direction only, H2V2 in both. Upsampling is by the triangle filter (weights 3/4
 *  and 1/4), downsampling by the box filter (the mean). The rounding terms are part of the result:
 *
 *  | functions                           | term added ahead of the shift                 |
 *  |-------------------------------------|-----------------------------------------------|
 *  | up, H2V1                            | 1, 2 alternating                              |
 *  | up, H2V2                            | 8, 7 alternating                              |
 *  | down, rectangles                    | H2V1 1, H2V2 3                                |
 *  | down, rows                          | H2V1 0, 1 alternating; H2V2 1, 2 alternating  |
 *
 *  The rectangle forms of upsampling have no edges: they read one sample beyond each end of a row, and H2V2 one row
 *  beyond each end of the plane, as the caller arranged them. The row forms treat the ends by themselves.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Doubles a plane horizontally, by the triangle filter.
 *
 *  With i = x / 2, even x give (3 s[i] + s[i-1] + 1) >> 2, odd x (3 s[i] + s[i+1] + 2) >> 2. Runs on the calling
 *  thread at any size.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc        source plane; of each row the samples -1 to dstRoiSize.width / 2 are read: one ahead of it
 *                     and, for an even width, one behind it, as the caller arranged them
 *  \param srcStep     bytes between the starts of two source rows, at least 1
 *  \param srcRoiSize  width and height of the source in samples, each at least 1; tested, and not used
 *  \param pDst        destination plane, dstRoiSize samples
 *  \param dstStep     bytes between the starts of two destination rows, at least 1
 *  \param dstRoiSize  width and height of the destination in samples, each at least 1; it alone decides what is read
 *  \return  zmxStsNullPtrErr when pSrc is null; zmxStsStepErr when srcStep is below 1; zmxStsSizeErr when the width
 *           or the height of srcRoiSize is below 1; zmxStsNullPtrErr when pDst is null; zmxStsStepErr when dstStep
 *           is below 1; zmxStsSizeErr when the width or the height of dstRoiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiSampleUpH2V1_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst,
                                                int dstStep, ZmxiSize dstRoiSize);

/** Doubles a plane in both directions, by the triangle filter.
 *
 *  Row y lies near source row y / 2, and further from the row before (even y) or behind (odd y) it. With c = 3 near
 *  + far and i = x / 2, even x give (3 c[i] + c[i-1] + 8) >> 4, odd x (3 c[i] + c[i+1] + 7) >> 4. A destination of
 *  more than 8192 samples is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc        source plane; the row ahead of it and, for an even height, the one behind it are read too, and
 *                     of each row one sample ahead and, for an even width, one behind
 *  \param srcStep     bytes between the starts of two source rows, at least 1
 *  \param srcRoiSize  width and height of the source in samples, each at least 1; tested, and not used
 *  \param pDst        destination plane, dstRoiSize samples
 *  \param dstStep     bytes between the starts of two destination rows, at least 1
 *  \param dstRoiSize  width and height of the destination in samples, each at least 1; it alone decides what is read
 *  \return  zmxStsNullPtrErr when pSrc is null; zmxStsStepErr when srcStep is below 1; zmxStsSizeErr when the width
 *           or the height of srcRoiSize is below 1; zmxStsNullPtrErr when pDst is null; zmxStsStepErr when dstStep
 *           is below 1; zmxStsSizeErr when the width or the height of dstRoiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiSampleUpH2V2_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst,
                                                int dstStep, ZmxiSize dstRoiSize);

/** Halves a plane horizontally, by the box filter: (s[2x] + s[2x+1] + 1) >> 1.
 *
 *  A destination of more than 8192 samples is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc        source plane; of each row twice the destination width is read
 *  \param srcStep     bytes between the starts of two source rows, at least 1
 *  \param srcRoiSize  width and height of the source in samples, each at least 1; tested, and not used
 *  \param pDst        destination plane, dstRoiSize samples
 *  \param dstStep     bytes between the starts of two destination rows, at least 1
 *  \param dstRoiSize  width and height of the destination in samples, each at least 1; it alone decides what is read
 *  \return  zmxStsNullPtrErr when pSrc is null; zmxStsStepErr when srcStep is below 1; zmxStsSizeErr when the width
 *           or the height of srcRoiSize is below 1; zmxStsNullPtrErr when pDst is null; zmxStsStepErr when dstStep
 *           is below 1; zmxStsSizeErr when the width or the height of dstRoiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiSampleDownH2V1_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst,
                                                  int dstStep, ZmxiSize dstRoiSize);

/** Halves a plane in both directions, by the box filter: the sum of four samples plus 3, shifted right by 2.
 *
 *  A destination of more than 8192 samples is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc        source plane; twice the destination width and height are read
 *  \param srcStep     bytes between the starts of two source rows, at least 1
 *  \param srcRoiSize  width and height of the source in samples, each at least 1; tested, and not used
 *  \param pDst        destination plane, dstRoiSize samples
 *  \param dstStep     bytes between the starts of two destination rows, at least 1
 *  \param dstRoiSize  width and height of the destination in samples, each at least 1; it alone decides what is read
 *  \return  zmxStsNullPtrErr when pSrc is null; zmxStsStepErr when srcStep is below 1; zmxStsSizeErr when the width
 *           or the height of srcRoiSize is below 1; zmxStsNullPtrErr when pDst is null; zmxStsStepErr when dstStep
 *           is below 1; zmxStsSizeErr when the width or the height of dstRoiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiSampleDownH2V2_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst,
                                                  int dstStep, ZmxiSize dstRoiSize);

/** Doubles one row, by the triangle filter.
 *
 *  As zmxiSampleUpH2V1_JPEG_8u_C1R() inside, with the first and the last result copied from the source.
 *
 *  \par Buffers
 *  Any address will do. Source and destination do not overlap.
 *
 *  \param pSrc      srcWidth samples; for a width of 1 its two neighbours are read too
 *  \param srcWidth  samples of a source row, at least 1
 *  \param pDst      2 srcWidth samples; four for a width of 1
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsSizeErr when srcWidth is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiSampleUpRowH2V1_Triangle_JPEG_8u_C1(const Zmx8u* pSrc, int srcWidth, Zmx8u* pDst);

/** Makes one row of double width from the nearer and the farther source row, by the triangle filter.
 *
 *  As zmxiSampleUpH2V2_JPEG_8u_C1R() inside, with the sums at the two ends taken fourfold. The two source rows may
 *  be the same one.
 *
 *  \par Buffers
 *  Any address will do. Source and destination do not overlap.
 *
 *  \param pSrc1     the nearer row, srcWidth samples (two for a width of 1)
 *  \param pSrc2     the farther row, srcWidth samples (two for a width of 1)
 *  \param srcWidth  samples of a source row, at least 1; a width of 1 is done as one of 2
 *  \param pDst      2 srcWidth samples; four for a width of 1
 *  \return  zmxStsNullPtrErr when pSrc1, pSrc2 or pDst is null; zmxStsSizeErr when srcWidth is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiSampleUpRowH2V2_Triangle_JPEG_8u_C1(const Zmx8u* pSrc1, const Zmx8u* pSrc2, int srcWidth,
                                                           Zmx8u* pDst);

/** Halves one row, by the box filter.
 *
 *  (s[2x] + s[2x+1] + b) >> 1 with b = 0, 1, 0, 1 and so on from the start of the call.
 *
 *  \par Buffers
 *  Any address will do. Source and destination do not overlap.
 *
 *  \param pSrc      srcWidth samples; with an odd width one more is read
 *  \param srcWidth  samples of a source row, at least 1
 *  \param pDst      (srcWidth + 1) / 2 samples
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsSizeErr when srcWidth is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiSampleDownRowH2V1_Box_JPEG_8u_C1(const Zmx8u* pSrc, int srcWidth, Zmx8u* pDst);

/** Halves two rows into one, by the box filter.
 *
 *  The sum of four samples plus b, shifted right by 2, with b = 1, 2, 1, 2 and so on from the start of the call. The
 *  two source rows may be the same one.
 *
 *  \par Buffers
 *  Any address will do. Source and destination do not overlap.
 *
 *  \param pSrc1     the upper row, srcWidth samples; with an odd width one more is read
 *  \param pSrc2     the lower row, srcWidth samples; with an odd width one more is read
 *  \param srcWidth  samples of a source row, at least 1
 *  \param pDst      (srcWidth + 1) / 2 samples
 *  \return  zmxStsNullPtrErr when pSrc1, pSrc2 or pDst is null; zmxStsSizeErr when srcWidth is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiSampleDownRowH2V2_Box_JPEG_8u_C1(const Zmx8u* pSrc1, const Zmx8u* pSrc2, int srcWidth,
                                                        Zmx8u* pDst);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_RESAMPLING_H */
