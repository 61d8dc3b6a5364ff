/** \file
 *  wavelet97.h - one level of the irreversible 9/7 wavelet of JPEG2000.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_WAVELET97_H
#define ZMXJ_WAVELET97_H

#include "types.h"

/** \defgroup wavelet97 The irreversible 9/7 filter
 *  \ingroup wavelet
 *  Forward:
 *
 *      A(2k+1) = x(2k+1) + alpha (x(2k) + x(2k+2))
 *      B(2k)   = x(2k) + beta (A(2k-1) + A(2k+1))
 *      G(2k+1) = A(2k+1) + gamma (B(2k) + B(2k+2))
 *      D(2k)   = B(2k) + delta (G(2k-1) + G(2k+1))
 *      low = D / K, high = K G
 *
 *  with alpha -1.5861343, beta -0.052980117, gamma 0.8829111, delta 0.44350687, K 1.2301741. Number systems:
 *
 *  | functions         | numbers                                                                                     |
 *  |-------------------|---------------------------------------------------------------------------------------------|
 *  | whole planes, 16s | 14 fractional bits, each term rounded, every value cut to 16 bits; nothing saturates        |
 *  | whole planes, 32s | a 64-bit significand up to the output, limited to 32 bits and truncated toward zero         |
 *  | kernels, 16s      | 16 fractional bits, exact products, every step saturated to 16 bits                         |
 *  | kernels, 32s      | 16 fractional bits, 64-bit products, every step cut to 32 bits                              |
 *  | kernels, 32f      | a 64-bit significand, rounded to 32-bit float wherever a value is stored in a row           |
 *
 *  A kernel call of one output pair (width 1 of a row, height 1 of a column) applies the filter taps directly. Bands,
 *  positions and phases: see \ref wavelet.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Transforms a plane of 16-bit samples in place: all columns, then all rows.
 *
 *  Unlike the 5/3 filter, at an odd origin the high band comes first, in the direction concerned. At an odd length
 *  its last sample then replaces the first low one, and the last sample of the line keeps its value. Hence only an
 *  even origin is brought back by the inverse in place. Lines of one sample at an odd origin are doubled.
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
ZMXJ_API ZmxStatus zmxiWTFwd_D97_JPEG2K_16s_C1IR(Zmx16s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);
/** Transforms a plane of 32-bit samples in place: all columns, then all rows.
 *  \copydetails zmxiWTFwd_D97_JPEG2K_16s_C1IR
 */
ZMXJ_API ZmxStatus zmxiWTFwd_D97_JPEG2K_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);
/** Brings a plane of 16-bit samples back in place: all rows, then all columns.
 *
 *  The low band comes first at every origin.
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
ZMXJ_API ZmxStatus zmxiWTInv_D97_JPEG2K_16s_C1IR(Zmx16s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);
/** Brings a plane of 32-bit samples back in place: all rows, then all columns.
 *  \copydetails zmxiWTInv_D97_JPEG2K_16s_C1IR
 */
ZMXJ_API ZmxStatus zmxiWTInv_D97_JPEG2K_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);

/** Transforms a plane of 16-bit samples into four bands. \copydetails zmxiWTFwd_B53_JPEG2K_16s_C1R */
ZMXJ_API ZmxStatus zmxiWTFwd_D97_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, const ZmxiRect* pTileRect,
                                                Zmx16s* const pDst[4], const int dstStep[4], Zmx8u* pBuffer);
/** Transforms a plane of 32-bit samples into four bands. \copydetails zmxiWTFwd_B53_JPEG2K_16s_C1R */
ZMXJ_API ZmxStatus zmxiWTFwd_D97_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, const ZmxiRect* pTileRect,
                                                Zmx32s* const pDst[4], const int dstStep[4], Zmx8u* pBuffer);
/** Brings four bands of 16-bit samples back into a plane. \copydetails zmxiWTInv_B53_JPEG2K_16s_C1R */
ZMXJ_API ZmxStatus zmxiWTInv_D97_JPEG2K_16s_C1R(const Zmx16s* const pSrc[4], const int srcStep[4], Zmx16s* pDst,
                                                int dstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer);
/** Brings four bands of 32-bit samples back into a plane. \copydetails zmxiWTInv_B53_JPEG2K_16s_C1R */
ZMXJ_API ZmxStatus zmxiWTInv_D97_JPEG2K_32s_C1R(const Zmx32s* const pSrc[4], const int srcStep[4], Zmx32s* pDst,
                                                int dstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer);

/** Tells the bytes of scratch memory for the transforms of 16-bit samples in place.
 *
 *  2 n + 16 for 16-bit and 4 n + 32 for 32-bit samples, n being the longer side; 0 where both sides of the tile are
 *  below 2, and then the transforms still want a pointer that is not null. 32-bit arithmetic, which wraps for absurd
 *  sizes.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param pTileRect  size of the tile; not tested
 *  \param pSize      out: the size in bytes
 *  \return  zmxStsNullPtrErr when pTileRect or pSize is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_D97_JPEG2K_16s_C1IR(const ZmxiRect* pTileRect, int* pSize);
/** Tells the bytes of scratch memory for the transforms of 32-bit samples in place.
 *  \copydetails zmxiWTGetBufSize_D97_JPEG2K_16s_C1IR
 */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_D97_JPEG2K_32s_C1IR(const ZmxiRect* pTileRect, int* pSize);
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
ZMXJ_API ZmxStatus zmxiWTGetBufSize_D97_JPEG2K_16s_C1R(const ZmxiRect* pTileRect, int* pSize);
/** Tells the bytes of scratch memory for the transforms of 32-bit samples on four bands.
 *  \copydetails zmxiWTGetBufSize_D97_JPEG2K_16s_C1R
 */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_D97_JPEG2K_32s_C1R(const ZmxiRect* pTileRect, int* pSize);

/** Lifts extended rows of 16-bit samples into their bands: 2 w samples of each row give w low and w high ones.
 *
 *  The caller has extended the source past the edges.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The bands overlap neither each other
 *  nor the source.
 *
 *  \param pSrc         sample 0 of the first row; at phase 0 samples -4 to 2 w + 2 of each row are read, otherwise
 *                      -3 to 2 w + 3
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
ZMXJ_API ZmxStatus zmxiWTFwdRow_D97_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, Zmx16s* pDstLow, int dstLowStep,
                                                   Zmx16s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);
/** Lifts extended rows of 32-bit samples into their bands: 2 w samples of each row give w low and w high ones.
 *  \copydetails zmxiWTFwdRow_D97_JPEG2K_16s_C1R
 */
ZMXJ_API ZmxStatus zmxiWTFwdRow_D97_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, Zmx32s* pDstLow, int dstLowStep,
                                                   Zmx32s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);
/** Lifts extended rows of floats into their bands: 2 w samples of each row give w low and w high ones.
 *  \copydetails zmxiWTFwdRow_D97_JPEG2K_16s_C1R
 */
ZMXJ_API ZmxStatus zmxiWTFwdRow_D97_JPEG2K_32f_C1R(const Zmx32f* pSrc, int srcStep, Zmx32f* pDstLow, int dstLowStep,
                                                   Zmx32f* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);
/** Lifts extended columns of floats into their bands: 2 h rows give h low and h high ones.
 *
 *  The caller has extended the source past the edges.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The bands overlap neither each other
 *  nor the source.
 *
 *  \param pSrc         row 0; at phase 0 rows -4 to 2 h + 2 are read, otherwise -3 to 2 h + 3
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
ZMXJ_API ZmxStatus zmxiWTFwdCol_D97_JPEG2K_32f_C1R(const Zmx32f* pSrc, int srcStep, Zmx32f* pDstLow, int dstLowStep,
                                                   Zmx32f* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);

/** Rebuilds rows of 16-bit samples from extended bands: w low and w high samples give 2 w.
 *
 *  The caller has extended the bands past the edges.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The destination overlaps neither band.
 *
 *  \param pSrcLow      sample 0 of the low band; at phase 0 samples -1 to w + 1 of each row are read, otherwise -2
 *                      to w
 *  \param srcLowStep   bytes between the starts of two of its rows, at least 1
 *  \param pSrcHigh     sample 0 of the high band; samples -2 to w + 1 of each row are read
 *  \param srcHighStep  bytes between the starts of two of its rows, at least 1
 *  \param srcRoiSize   size of one band in samples, each side at least 1: w and h
 *  \param pDst         destination, 2 w samples a row and h rows
 *  \param dstStep      bytes between the starts of two destination rows, at least 1
 *  \param phase        0: destination sample 0 is low-pass; otherwise high-pass
 *  \return  zmxStsNullPtrErr when pSrcLow, pSrcHigh or pDst is null; zmxStsStepErr when srcLowStep, srcHighStep or
 *           dstStep is below 1; zmxStsSizeErr when the height or the width of srcRoiSize is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiWTInvRow_D97_JPEG2K_16s_C1R(const Zmx16s* pSrcLow, int srcLowStep, const Zmx16s* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx16s* pDst, int dstStep,
                                                   int phase);
/** Rebuilds rows of 32-bit samples from extended bands: w low and w high samples give 2 w.
 *  \copydetails zmxiWTInvRow_D97_JPEG2K_16s_C1R
 */
ZMXJ_API ZmxStatus zmxiWTInvRow_D97_JPEG2K_32s_C1R(const Zmx32s* pSrcLow, int srcLowStep, const Zmx32s* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx32s* pDst, int dstStep,
                                                   int phase);
/** Rebuilds rows of floats from extended bands: w low and w high samples give 2 w.
 *  \copydetails zmxiWTInvRow_D97_JPEG2K_16s_C1R
 */
ZMXJ_API ZmxStatus zmxiWTInvRow_D97_JPEG2K_32f_C1R(const Zmx32f* pSrcLow, int srcLowStep, const Zmx32f* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx32f* pDst, int dstStep,
                                                   int phase);
/** Rebuilds columns of floats from extended bands: h low and h high rows give 2 h.
 *
 *  The caller has extended the bands past the edges.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The destination overlaps neither band.
 *
 *  \param pSrcLow      row 0 of the low band; at phase 0 rows -1 to h + 1 are read, otherwise -2 to h
 *  \param srcLowStep   bytes between the starts of two of its rows, at least 1
 *  \param pSrcHigh     row 0 of the high band; rows -2 to h + 1 are read
 *  \param srcHighStep  bytes between the starts of two of its rows, at least 1
 *  \param srcRoiSize   size of one band in samples, each side at least 1: w and h
 *  \param pDst         destination, 2 h rows of w samples
 *  \param dstStep      bytes between the starts of two destination rows, at least 1
 *  \param phase        0: destination row 0 is low-pass; otherwise high-pass
 *  \return  zmxStsNullPtrErr when pSrcLow, pSrcHigh or pDst is null; zmxStsStepErr when srcLowStep, srcHighStep or
 *           dstStep is below 1; zmxStsSizeErr when the height or the width of srcRoiSize is below 1; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiWTInvCol_D97_JPEG2K_32f_C1R(const Zmx32f* pSrcLow, int srcLowStep, const Zmx32f* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx32f* pDst, int dstStep,
                                                   int phase);

/** One stage of the forward pipeline over rows of 16-bit samples.
 *
 *  A, B, G are the intermediate rows of the head of this page; r is the number of stages so far. The caller mirrors
 *  rows at the edges.
 *
 *  \par Buffers
 *  Any address will do. No row of the call overlaps another.
 *
 *  \param pSrc0         source row 2 r + 2
 *  \param pSrc1         source row 2 r + 3
 *  \param pSrc2         source row 2 r + 4
 *  \param pSrcDstLow0   in B(2 r), out low row r
 *  \param pDstLow1      out: B(2 r + 2), pSrcDstLow0 of the next call
 *  \param pSrcDstHigh0  in G(2 r - 1), out high row r - 1
 *  \param pSrcDstHigh1  in A(2 r + 1), out G(2 r + 1), pSrcDstHigh0 of the next call
 *  \param pDstHigh2     out: A(2 r + 3), pSrcDstHigh1 of the next call
 *  \param width         samples of a row, at least 1
 *  \return  zmxStsNullPtrErr when pSrc0, pSrc1, pSrc2, pSrcDstLow0, pDstLow1, pSrcDstHigh0, pSrcDstHigh1 or
 *           pDstHigh2 is null; zmxStsSizeErr when width is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiWTFwdColLift_D97_JPEG2K_16s_C1(const Zmx16s* pSrc0, const Zmx16s* pSrc1, const Zmx16s* pSrc2,
                                                      Zmx16s* pSrcDstLow0, Zmx16s* pDstLow1, Zmx16s* pSrcDstHigh0,
                                                      Zmx16s* pSrcDstHigh1, Zmx16s* pDstHigh2, int width);
/** One stage of the forward pipeline over rows of 32-bit samples. \copydetails zmxiWTFwdColLift_D97_JPEG2K_16s_C1 */
ZMXJ_API ZmxStatus zmxiWTFwdColLift_D97_JPEG2K_32s_C1(const Zmx32s* pSrc0, const Zmx32s* pSrc1, const Zmx32s* pSrc2,
                                                      Zmx32s* pSrcDstLow0, Zmx32s* pDstLow1, Zmx32s* pSrcDstHigh0,
                                                      Zmx32s* pSrcDstHigh1, Zmx32s* pDstHigh2, int width);
/** One stage of the forward pipeline over rows of floats. \copydetails zmxiWTFwdColLift_D97_JPEG2K_16s_C1 */
ZMXJ_API ZmxStatus zmxiWTFwdColLift_D97_JPEG2K_32f_C1(const Zmx32f* pSrc0, const Zmx32f* pSrc1, const Zmx32f* pSrc2,
                                                      Zmx32f* pSrcDstLow0, Zmx32f* pDstLow1, Zmx32f* pSrcDstHigh0,
                                                      Zmx32f* pSrcDstHigh1, Zmx32f* pDstHigh2, int width);

/** One stage of the inverse pipeline over rows of 16-bit samples.
 *
 *  A, B are the intermediate rows of the head of this page; n is the number of stages so far. The caller mirrors
 *  rows at the edges.
 *
 *  \par Buffers
 *  Any address will do. No row of the call overlaps another.
 *
 *  \param pSrcLow0   low row n + 1
 *  \param pSrcHigh0  high row n
 *  \param pSrcHigh1  high row n + 1
 *  \param pSrc0      row 2 n - 2 of the result
 *  \param pSrcDst1   in A(2 n - 1), out row 2 n - 1
 *  \param pSrcDst2   in B(2 n), out row 2 n
 *  \param pDst3      out: A(2 n + 1), pSrcDst1 of the next call
 *  \param pDst4      out: B(2 n + 2), pSrcDst2 of the next call
 *  \param width      samples of a row, at least 1
 *  \return  zmxStsNullPtrErr when pSrcLow0, pSrcHigh0, pSrcHigh1, pSrc0, pSrcDst1, pSrcDst2, pDst3 or pDst4 is null;
 *           zmxStsSizeErr when width is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiWTInvColLift_D97_JPEG2K_16s_C1(const Zmx16s* pSrcLow0, const Zmx16s* pSrcHigh0,
                                                      const Zmx16s* pSrcHigh1, const Zmx16s* pSrc0, Zmx16s* pSrcDst1,
                                                      Zmx16s* pSrcDst2, Zmx16s* pDst3, Zmx16s* pDst4, int width);
/** One stage of the inverse pipeline over rows of 32-bit samples. \copydetails zmxiWTInvColLift_D97_JPEG2K_16s_C1 */
ZMXJ_API ZmxStatus zmxiWTInvColLift_D97_JPEG2K_32s_C1(const Zmx32s* pSrcLow0, const Zmx32s* pSrcHigh0,
                                                      const Zmx32s* pSrcHigh1, const Zmx32s* pSrc0, Zmx32s* pSrcDst1,
                                                      Zmx32s* pSrcDst2, Zmx32s* pDst3, Zmx32s* pDst4, int width);
/** One stage of the inverse pipeline over rows of floats. \copydetails zmxiWTInvColLift_D97_JPEG2K_16s_C1 */
ZMXJ_API ZmxStatus zmxiWTInvColLift_D97_JPEG2K_32f_C1(const Zmx32f* pSrcLow0, const Zmx32f* pSrcHigh0,
                                                      const Zmx32f* pSrcHigh1, const Zmx32f* pSrc0, Zmx32f* pSrcDst1,
                                                      Zmx32f* pSrcDst2, Zmx32f* pDst3, Zmx32f* pDst4, int width);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_WAVELET97_H */
