/** \file
 *  wavelet53.h - one level of the reversible 5/3 wavelet of JPEG2000.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_WAVELET53_H
#define ZMXJ_WAVELET53_H

#include "types.h"

/** \defgroup wavelet53 The reversible 5/3 filter
 *  \ingroup wavelet
 *  Forward: d(2k+1) = x(2k+1) - ((x(2k) + x(2k+2)) >> 1), then s(2k) = x(2k) + ((d(2k-1) + d(2k+1) + 2) >> 2); the inverse
 *  undoes both. 32-bit sums wrap; 16-bit samples are added in 32 bits and every d and s is cut to 16 bits. Bands, positions
 *  and phases: see \ref wavelet.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Transforms a plane of 16-bit samples in place: all columns, then all rows.
 *
 *  Lines of one sample at an odd origin are doubled.
 *
 *  \par Buffers
 *  Any address and any step will do, also for the scratch memory. The scratch memory does not overlap the plane.
 *
 *  \param pSrcDst     samples of the tile, replaced by its bands
 *  \param srcDstStep  bytes between the starts of two rows, at least 1
 *  \param pTileRect   origin and size in samples; the size is not tested, and a width or height of 0 is accepted
 *  \param pBuffer     scratch memory of the size that the GetBufSize function of the same form tells; not null, not
 *                     even for 0 bytes
 *  \return  zmxStsNullPtrErr when pSrcDst is null; zmxStsStepErr when srcDstStep is below 1; zmxStsNullPtrErr when
 *           pTileRect or pBuffer is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiWTFwd_B53_JPEG2K_16s_C1IR(Zmx16s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);
/** Transforms a plane of 32-bit samples in place: all columns, then all rows.
 *  \copydetails zmxiWTFwd_B53_JPEG2K_16s_C1IR
 */
ZMXJ_API ZmxStatus zmxiWTFwd_B53_JPEG2K_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);
/** Brings a plane of 16-bit samples back in place: all rows, then all columns.
 *
 *  The inverse of the transform in place.
 *
 *  \par Buffers
 *  Any address and any step will do, also for the scratch memory. The scratch memory does not overlap the plane.
 *
 *  \param pSrcDst     bands of the tile, replaced by its samples
 *  \param srcDstStep  bytes between the starts of two rows, at least 1
 *  \param pTileRect   origin and size in samples; the size is not tested, and a width or height of 0 is accepted
 *  \param pBuffer     scratch memory of the size that the GetBufSize function of the same form tells; not null, not
 *                     even for 0 bytes
 *  \return  zmxStsNullPtrErr when pSrcDst is null; zmxStsStepErr when srcDstStep is below 1; zmxStsNullPtrErr when
 *           pTileRect or pBuffer is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiWTInv_B53_JPEG2K_16s_C1IR(Zmx16s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);
/** Brings a plane of 32-bit samples back in place: all rows, then all columns.
 *  \copydetails zmxiWTInv_B53_JPEG2K_16s_C1IR
 */
ZMXJ_API ZmxStatus zmxiWTInv_B53_JPEG2K_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);

/** Transforms a plane of 16-bit samples into four bands.
 *
 *  The bands and their sizes are told at the head of this page.
 *
 *  \par Buffers
 *  Any address and any step will do, also for the scratch memory. Nothing overlaps.
 *
 *  \param pSrc       samples of the tile
 *  \param srcStep    bytes between the starts of two source rows, at least 1
 *  \param pTileRect  origin and size in samples, each side at least 1
 *  \param pDst       four bands
 *  \param dstStep    four steps: bytes between the starts of two rows of each band, each at least 1
 *  \param pBuffer    scratch memory of the size that the GetBufSize function of the same form tells; not null, not
 *                    even for 0 bytes
 *  \return  zmxStsNullPtrErr when pSrc, pDst, dstStep, pTileRect or pBuffer is null; zmxStsStepErr when srcStep is
 *           below 1; zmxStsNullPtrErr when a band of pDst is null; zmxStsStepErr when a step of dstStep is below 1;
 *           zmxStsSizeErr when the width or the height of pTileRect is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiWTFwd_B53_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, const ZmxiRect* pTileRect,
                                                Zmx16s* const pDst[4], const int dstStep[4], Zmx8u* pBuffer);
/** Transforms a plane of 32-bit samples into four bands. \copydetails zmxiWTFwd_B53_JPEG2K_16s_C1R */
ZMXJ_API ZmxStatus zmxiWTFwd_B53_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, const ZmxiRect* pTileRect,
                                                Zmx32s* const pDst[4], const int dstStep[4], Zmx8u* pBuffer);

/** Brings four bands of 16-bit samples back into a plane.
 *
 *  The bands and their sizes are told at the head of this page.
 *
 *  \par Buffers
 *  Any address and any step will do, also for the scratch memory. Nothing overlaps.
 *
 *  \param pSrc       four bands
 *  \param srcStep    four steps: bytes between the starts of two rows of each band, each at least 1
 *  \param pDst       samples of the tile
 *  \param dstStep    bytes between the starts of two destination rows, at least 1
 *  \param pTileRect  origin and size in samples, each side at least 1
 *  \param pBuffer    scratch memory of the size that the GetBufSize function of the same form tells; not null, not
 *                    even for 0 bytes
 *  \return  zmxStsNullPtrErr when pSrc, pDst, srcStep, pTileRect or pBuffer is null; zmxStsStepErr when dstStep is
 *           below 1; zmxStsNullPtrErr when a band of pSrc is null; zmxStsStepErr when a step of srcStep is below 1;
 *           zmxStsSizeErr when the width or the height of pTileRect is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiWTInv_B53_JPEG2K_16s_C1R(const Zmx16s* const pSrc[4], const int srcStep[4], Zmx16s* pDst,
                                                int dstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer);
/** Brings four bands of 32-bit samples back into a plane. \copydetails zmxiWTInv_B53_JPEG2K_16s_C1R */
ZMXJ_API ZmxStatus zmxiWTInv_B53_JPEG2K_32s_C1R(const Zmx32s* const pSrc[4], const int srcStep[4], Zmx32s* pDst,
                                                int dstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer);

/** Tells the bytes of scratch memory for the transforms of 16-bit samples in place.
 *
 *  2 n + 8 for 16-bit and 4 n + 16 for 32-bit samples, n being the longer side; 0 where both sides of the tile are
 *  below 3, and then the transforms still want a pointer that is not null. 32-bit arithmetic, which wraps for absurd
 *  sizes.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param pTileRect  size of the tile; not tested
 *  \param pSize      out: the size in bytes
 *  \return  zmxStsNullPtrErr when pTileRect or pSize is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR(const ZmxiRect* pTileRect, int* pSize);
/** Tells the bytes of scratch memory for the transforms of 32-bit samples in place.
 *  \copydetails zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR
 */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_B53_JPEG2K_32s_C1IR(const ZmxiRect* pTileRect, int* pSize);
/** Tells the bytes of scratch memory for the transforms of 16-bit samples on four bands.
 *
 *  That of the form in place, and a whole plane with rows rounded up to 32 bytes. The answer is a 32-bit number that
 *  wraps, without a status: let the two together stay below 2^31 bytes (23,000 x 23,000 samples of 32 bits fit,
 *  23,170 x 23,170 answer a negative number, 100,000 x 100,000 nonsense), or work in tiles.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param pTileRect  size of the tile; not tested
 *  \param pSize      out: the size in bytes
 *  \return  zmxStsNullPtrErr when pTileRect or pSize is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_B53_JPEG2K_16s_C1R(const ZmxiRect* pTileRect, int* pSize);
/** Tells the bytes of scratch memory for the transforms of 32-bit samples on four bands.
 *  \copydetails zmxiWTGetBufSize_B53_JPEG2K_16s_C1R
 */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_B53_JPEG2K_32s_C1R(const ZmxiRect* pTileRect, int* pSize);

/** Lifts extended rows of 16-bit samples into their bands: 2 w samples of each row give w low and w high ones.
 *
 *  The caller has extended the source past the edges.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The bands overlap neither each other
 *  nor the source.
 *
 *  \param pSrc         sample 0 of the first row; at phase 0 samples -2 to 2 w of each row are read, otherwise -1 to
 *                      2 w + 1
 *  \param srcStep      bytes between the starts of two source rows, at least 1
 *  \param pDstLow      low band, dstRoiSize samples
 *  \param dstLowStep   bytes between the starts of two of its rows, at least 1
 *  \param pDstHigh     high band, dstRoiSize samples
 *  \param dstHighStep  bytes between the starts of two of its rows, at least 1
 *  \param dstRoiSize   size of one band in samples, each side at least 1: w and h
 *  \param phase        0: source sample or row 0 is low-pass; otherwise high-pass
 *  \return  zmxStsNullPtrErr when pSrc, pDstLow or pDstHigh is null; zmxStsStepErr when srcStep, dstLowStep or
 *           dstHighStep is below 1; zmxStsSizeErr when the height or the width of dstRoiSize is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiWTFwdRow_B53_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, Zmx16s* pDstLow, int dstLowStep,
                                                   Zmx16s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);
/** Lifts extended rows of 32-bit samples into their bands: 2 w samples of each row give w low and w high ones.
 *  \copydetails zmxiWTFwdRow_B53_JPEG2K_16s_C1R
 */
ZMXJ_API ZmxStatus zmxiWTFwdRow_B53_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, Zmx32s* pDstLow, int dstLowStep,
                                                   Zmx32s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);
/** Lifts extended columns of 16-bit samples into their bands: 2 h rows give h low and h high ones.
 *
 *  The caller has extended the source past the edges.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The bands overlap neither each other
 *  nor the source.
 *
 *  \param pSrc         row 0; at phase 0 rows -2 to 2 h are read, otherwise -1 to 2 h + 1
 *  \param srcStep      bytes between the starts of two source rows, at least 1
 *  \param pDstLow      low band, dstRoiSize samples
 *  \param dstLowStep   bytes between the starts of two of its rows, at least 1
 *  \param pDstHigh     high band, dstRoiSize samples
 *  \param dstHighStep  bytes between the starts of two of its rows, at least 1
 *  \param dstRoiSize   size of one band in samples, each side at least 1: w and h
 *  \param phase        0: source sample or row 0 is low-pass; otherwise high-pass
 *  \return  zmxStsNullPtrErr when pSrc, pDstLow or pDstHigh is null; zmxStsStepErr when srcStep, dstLowStep or
 *           dstHighStep is below 1; zmxStsSizeErr when the height or the width of dstRoiSize is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiWTFwdCol_B53_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, Zmx16s* pDstLow, int dstLowStep,
                                                   Zmx16s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);
/** Lifts extended columns of 32-bit samples into their bands: 2 h rows give h low and h high ones.
 *  \copydetails zmxiWTFwdCol_B53_JPEG2K_16s_C1R
 */
ZMXJ_API ZmxStatus zmxiWTFwdCol_B53_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, Zmx32s* pDstLow, int dstLowStep,
                                                   Zmx32s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);

/** Rebuilds rows of 16-bit samples from extended bands: w low and w high samples give 2 w.
 *
 *  The caller has extended the bands past the edges.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The destination overlaps neither band.
 *
 *  \param pSrcLow      sample 0 of the low band; at phase 0 samples 0 to w of each row are read, otherwise -1 to w -
 *                      1
 *  \param srcLowStep   bytes between the starts of two of its rows, at least 1
 *  \param pSrcHigh     sample 0 of the high band; samples -1 to w of each row are read
 *  \param srcHighStep  bytes between the starts of two of its rows, at least 1
 *  \param srcRoiSize   size of one band in samples, each side at least 1: w and h
 *  \param pDst         destination, 2 w samples a row and h rows
 *  \param dstStep      bytes between the starts of two destination rows, at least 1
 *  \param phase        0: destination sample 0 is low-pass; otherwise high-pass
 *  \return  zmxStsNullPtrErr when pSrcLow, pSrcHigh or pDst is null; zmxStsStepErr when srcLowStep, srcHighStep or
 *           dstStep is below 1; zmxStsSizeErr when the height or the width of srcRoiSize is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiWTInvRow_B53_JPEG2K_16s_C1R(const Zmx16s* pSrcLow, int srcLowStep, const Zmx16s* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx16s* pDst, int dstStep,
                                                   int phase);
/** Rebuilds rows of 32-bit samples from extended bands: w low and w high samples give 2 w.
 *  \copydetails zmxiWTInvRow_B53_JPEG2K_16s_C1R
 */
ZMXJ_API ZmxStatus zmxiWTInvRow_B53_JPEG2K_32s_C1R(const Zmx32s* pSrcLow, int srcLowStep, const Zmx32s* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx32s* pDst, int dstStep,
                                                   int phase);
/** Rebuilds columns of 16-bit samples from extended bands: h low and h high rows give 2 h.
 *
 *  The caller has extended the bands past the edges. With a non-zero phase low row -1 is looked for srcHighStep, not
 *  srcLowStep, ahead of row 0: let the two steps be equal.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The destination overlaps neither band.
 *
 *  \param pSrcLow      row 0 of the low band; at phase 0 rows 0 to h are read, otherwise -1 to h - 1
 *  \param srcLowStep   bytes between the starts of two of its rows, at least 1
 *  \param pSrcHigh     row 0 of the high band; rows -1 to h are read
 *  \param srcHighStep  bytes between the starts of two of its rows, at least 1
 *  \param srcRoiSize   size of one band in samples, each side at least 1: w and h
 *  \param pDst         destination, 2 h rows of w samples
 *  \param dstStep      bytes between the starts of two destination rows, at least 1
 *  \param phase        0: destination row 0 is low-pass; otherwise high-pass
 *  \return  zmxStsNullPtrErr when pSrcLow, pSrcHigh or pDst is null; zmxStsStepErr when srcLowStep, srcHighStep or
 *           dstStep is below 1; zmxStsSizeErr when the height or the width of srcRoiSize is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiWTInvCol_B53_JPEG2K_16s_C1R(const Zmx16s* pSrcLow, int srcLowStep, const Zmx16s* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx16s* pDst, int dstStep,
                                                   int phase);
/** Rebuilds columns of 32-bit samples from extended bands: h low and h high rows give 2 h.
 *  \copydetails zmxiWTInvCol_B53_JPEG2K_16s_C1R
 */
ZMXJ_API ZmxStatus zmxiWTInvCol_B53_JPEG2K_32s_C1R(const Zmx32s* pSrcLow, int srcLowStep, const Zmx32s* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx32s* pDst, int dstStep,
                                                   int phase);

/** Makes one high and one low row of 16-bit samples.
 *
 *  One stage of a pipeline over rows, k counting the stages; the caller mirrors rows at the edges.
 *
 *  \par Buffers
 *  Any address will do. A row that is written overlaps no other row of the call.
 *
 *  \param pSrc0      row 2 k of the source
 *  \param pSrc1      row 2 k + 1 of the source
 *  \param pSrc2      row 2 k + 2 of the source
 *  \param pDstLow0   out: low row 2 k
 *  \param pSrcHigh0  high row 2 k - 1, made by the call before
 *  \param pDstHigh1  out: high row 2 k + 1
 *  \param width      samples of a row, at least 1
 *  \return  zmxStsNullPtrErr when pSrc0, pSrc1, pSrc2, pDstLow0, pSrcHigh0 or pDstHigh1 is null; zmxStsSizeErr when
 *           width is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiWTFwdColLift_B53_JPEG2K_16s_C1(const Zmx16s* pSrc0, const Zmx16s* pSrc1, const Zmx16s* pSrc2,
                                                      Zmx16s* pDstLow0, const Zmx16s* pSrcHigh0, Zmx16s* pDstHigh1,
                                                      int width);
/** Makes one high and one low row of 32-bit samples. \copydetails zmxiWTFwdColLift_B53_JPEG2K_16s_C1 */
ZMXJ_API ZmxStatus zmxiWTFwdColLift_B53_JPEG2K_32s_C1(const Zmx32s* pSrc0, const Zmx32s* pSrc1, const Zmx32s* pSrc2,
                                                      Zmx32s* pDstLow0, const Zmx32s* pSrcHigh0, Zmx32s* pDstHigh1,
                                                      int width);

/** Rebuilds two rows of 16-bit samples.
 *
 *  One stage of a pipeline over rows, k counting the stages; the caller mirrors rows at the edges.
 *
 *  \par Buffers
 *  Any address will do. A row that is written overlaps no other row of the call.
 *
 *  \param pSrcLow1   low row 2 k + 2
 *  \param pSrcHigh0  high row 2 k + 1
 *  \param pSrcHigh1  high row 2 k + 3
 *  \param pSrc0      row 2 k, rebuilt by the call before
 *  \param pDst1      out: row 2 k + 1
 *  \param pDst2      out: row 2 k + 2
 *  \param width      samples of a row, at least 1
 *  \return  zmxStsNullPtrErr when pSrcLow1, pSrcHigh0, pSrcHigh1, pSrc0, pDst1 or pDst2 is null; zmxStsSizeErr when
 *           width is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiWTInvColLift_B53_JPEG2K_16s_C1(const Zmx16s* pSrcLow1, const Zmx16s* pSrcHigh0,
                                                      const Zmx16s* pSrcHigh1, const Zmx16s* pSrc0, Zmx16s* pDst1,
                                                      Zmx16s* pDst2, int width);
/** Rebuilds two rows of 32-bit samples. \copydetails zmxiWTInvColLift_B53_JPEG2K_16s_C1 */
ZMXJ_API ZmxStatus zmxiWTInvColLift_B53_JPEG2K_32s_C1(const Zmx32s* pSrcLow1, const Zmx32s* pSrcHigh0,
                                                      const Zmx32s* pSrcHigh1, const Zmx32s* pSrc0, Zmx32s* pDst1,
                                                      Zmx32s* pDst2, int width);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_WAVELET53_H */
