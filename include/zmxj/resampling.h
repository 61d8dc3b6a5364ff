/* resampling.h - chroma resampling of whole planes and of rows, by two in one direction or both.
 *
 * H2V1 is two to one in the horizontal direction only, H2V2 in both. Upsampling is by the triangle filter (weights 3/4 and
 * 1/4), downsampling by the box filter (the mean). The rounding terms are part of the result:
 *   up H2V1 1, 2 alternating; up H2V2 8, 7 alternating; down H2V1 1 and H2V2 3 in the rectangle forms; down H2V1 0, 1 and
 *   H2V2 1, 2 alternating in the row forms.
 *
 * The rectangle forms of upsampling have no edges: they read one sample beyond each end of a row, and H2V2 one row beyond
 * each end of the plane, as the caller arranged them. The row forms treat the ends by themselves. */
#ifndef ZMXJ_RESAMPLING_H
#define ZMXJ_RESAMPLING_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Doubles a plane horizontally. With i = x / 2, even x give (3 s[i] + s[i-1] + 1) >> 2, odd x (3 s[i] + s[i+1] + 2) >> 2.
 *
 *  \param pSrc        source plane; in each row the sample ahead of it and, for an even width, the one behind are read
 *  \param srcStep     bytes between source rows, at least 1
 *  \param srcRoiSize  size of the source, at least 1 x 1; tested, and not used
 *  \param pDst        destination plane of dstRoiSize samples
 *  \param dstStep     bytes between destination rows, at least 1
 *  \param dstRoiSize  size of the destination, at least 1 x 1; it alone decides what is read
 *  \return in argument order: zmxStsNullPtrErr for pSrc, zmxStsStepErr for srcStep, zmxStsSizeErr for the source width and
 *          height, and the same again for pDst, dstStep and the destination size
 */
ZMXJ_API ZmxStatus zmxiSampleUpH2V1_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst,
                                                int dstStep, ZmxiSize dstRoiSize);

/** Doubles a plane in both directions. Row y lies near source row y / 2 and further from the row before (even y) or behind
 *  (odd y) it; with c = 3 near + far and i = x / 2, even x give (3 c[i] + c[i-1] + 8) >> 4, odd x (3 c[i] + c[i+1] + 7) >> 4.
 *  Rows are shared out to a team of threads when the destination has more than 8192 samples. Arguments and statuses as
 *  zmxiSampleUpH2V1_JPEG_8u_C1R; the row ahead of the source and the one behind it are read too. */
ZMXJ_API ZmxStatus zmxiSampleUpH2V2_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst,
                                                int dstStep, ZmxiSize dstRoiSize);

/** Halves a plane horizontally: (s[2x] + s[2x+1] + 1) >> 1. Rows are shared out as above. Arguments and statuses as
 *  zmxiSampleUpH2V1_JPEG_8u_C1R; each source row is read to twice the destination width. */
ZMXJ_API ZmxStatus zmxiSampleDownH2V1_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst,
                                                  int dstStep, ZmxiSize dstRoiSize);

/** Halves a plane in both directions: the sum of four samples plus 3, shifted right by 2. Otherwise as
 *  zmxiSampleDownH2V1_JPEG_8u_C1R; twice the destination height is read. */
ZMXJ_API ZmxStatus zmxiSampleDownH2V2_JPEG_8u_C1R(const Zmx8u* pSrc, int srcStep, ZmxiSize srcRoiSize, Zmx8u* pDst,
                                                  int dstStep, ZmxiSize dstRoiSize);

/** Doubles one row: as zmxiSampleUpH2V1_JPEG_8u_C1R inside, with the first and the last result copied from the source.
 *
 *  \param pSrc      srcWidth samples; for a width of 1 its two neighbours are read too
 *  \param srcWidth  samples of the source, at least 1
 *  \param pDst      2 srcWidth samples; four for a width of 1
 *  \return zmxStsNullPtrErr for pSrc, pDst; zmxStsSizeErr for srcWidth
 */
ZMXJ_API ZmxStatus zmxiSampleUpRowH2V1_Triangle_JPEG_8u_C1(const Zmx8u* pSrc, int srcWidth, Zmx8u* pDst);

/** Doubles one row from the nearer and the farther source row: as zmxiSampleUpH2V2_JPEG_8u_C1R inside, with the sums at the
 *  ends taken fourfold.
 *
 *  \param pSrc1     the nearer row, srcWidth samples (two for a width of 1)
 *  \param pSrc2     the farther row, likewise
 *  \param srcWidth  samples of a source row, at least 1; a width of 1 is done as one of 2
 *  \param pDst      2 srcWidth samples; four for a width of 1
 *  \return zmxStsNullPtrErr for pSrc1, pSrc2, pDst; zmxStsSizeErr for srcWidth
 */
ZMXJ_API ZmxStatus zmxiSampleUpRowH2V2_Triangle_JPEG_8u_C1(const Zmx8u* pSrc1, const Zmx8u* pSrc2, int srcWidth,
                                                           Zmx8u* pDst);

/** Halves one row: (s[2x] + s[2x+1] + b) >> 1 with b = 0, 1, 0, 1 and so on from the start of the call.
 *
 *  \param pSrc      srcWidth samples; with an odd width one more is read
 *  \param srcWidth  samples of the source, at least 1
 *  \param pDst      (srcWidth + 1) / 2 samples
 *  \return zmxStsNullPtrErr for pSrc, pDst; zmxStsSizeErr for srcWidth
 */
ZMXJ_API ZmxStatus zmxiSampleDownRowH2V1_Box_JPEG_8u_C1(const Zmx8u* pSrc, int srcWidth, Zmx8u* pDst);

/** Halves two rows into one: the sum of four samples plus b, shifted right by 2, with b = 1, 2, 1, 2 and so on from the start
 *  of the call. Statuses for pSrc1, pSrc2, pDst, srcWidth; otherwise as zmxiSampleDownRowH2V1_Box_JPEG_8u_C1. */
ZMXJ_API ZmxStatus zmxiSampleDownRowH2V2_Box_JPEG_8u_C1(const Zmx8u* pSrc1, const Zmx8u* pSrc2, int srcWidth,
                                                        Zmx8u* pDst);

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_RESAMPLING_H */
