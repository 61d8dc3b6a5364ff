/* wavelet.h - one level of the JPEG2000 wavelets: the reversible 5/3 and the irreversible 9/7 filter (ISO/IEC 15444-1,
 * annex F).
 *
 * There are three levels of service:
 *   whole planes    C1IR in place, C1R between a plane and four bands; they mirror the edges by themselves
 *   kernels         FwdRow, InvRow, FwdCol, InvCol: the caller has extended the data past the edges
 *   column lifting  FwdColLift, InvColLift: one stage over rows that the caller holds in a ring
 *
 * Of the position of a tile only the parity of x and y counts: even absolute positions are low-pass, odd ones high-pass. A
 * kernel takes a phase instead: 0 when the first sample is low-pass, anything else when it is high-pass. Steps are distances
 * in bytes between rows. Scratch buffers have the size that the matching GetBufSize function reports, and need no alignment.
 *
 * In place, and for a line of n samples, the low band comes first, (n + 1) / 2 samples at an even origin and n / 2 at an odd
 * one, then the high band. The forms on four bands take band 0 low-low, 1 low-high, 2 high-low, 3 high-high (horizontal
 * first). Their widths are (w + 1) / 2 for bands 0 and 1 and w / 2 for bands 2 and 3, their heights (h + 1) / 2 for bands 0
 * and 2 and h / 2 for bands 1 and 3, whatever the phases: at an odd origin of odd size the last sample of a low band is the
 * first one of the high band. Forward and inverse share that, so that going through both stays exact. */
#ifndef ZMXJ_WAVELET_H
#define ZMXJ_WAVELET_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The reversible 5/3 filter.
 *
 * Forward: d(2k+1) = x(2k+1) - ((x(2k) + x(2k+2)) >> 1), then s(2k) = x(2k) + ((d(2k-1) + d(2k+1) + 2) >> 2); the inverse
 * undoes both. 32-bit sums wrap; 16-bit samples are added in 32 bits and every d and s is cut to 16 bits. */

/** Transforms a plane in place: all columns, then all rows.
 *
 *  Lines of one sample at an odd origin are doubled.
 *
 *  \param pSrcDst     samples of the tile, replaced by its bands
 *  \param srcDstStep  bytes between rows, at least 1
 *  \param pTileRect   origin and size; the size is not tested, and a width or height of 0 is accepted
 *  \param pBuffer     scratch memory
 *  \return zmxStsNullPtrErr for pSrcDst; zmxStsStepErr for srcDstStep; zmxStsNullPtrErr for pTileRect, pBuffer
 */
ZMXJ_API ZmxStatus zmxiWTFwd_B53_JPEG2K_16s_C1IR(Zmx16s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);
/** As zmxiWTFwd_B53_JPEG2K_16s_C1IR, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTFwd_B53_JPEG2K_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);
/** The inverse of zmxiWTFwd_B53_JPEG2K_16s_C1IR: all rows, then all columns. Same arguments and statuses. */
ZMXJ_API ZmxStatus zmxiWTInv_B53_JPEG2K_16s_C1IR(Zmx16s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);
/** As zmxiWTInv_B53_JPEG2K_16s_C1IR, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTInv_B53_JPEG2K_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);

/** Transforms a plane into four bands.
 *
 *  \param pSrc       samples of the tile
 *  \param srcStep    bytes between source rows, at least 1
 *  \param pTileRect  origin and size, at least 1 x 1
 *  \param pDst       four bands
 *  \param dstStep    bytes between the rows of each band, at least 1
 *  \param pBuffer    scratch memory
 *  \return zmxStsNullPtrErr for pSrc, pDst, dstStep, pTileRect, pBuffer; zmxStsStepErr for srcStep; zmxStsNullPtrErr for the
 *          elements of pDst; zmxStsStepErr for those of dstStep; zmxStsSizeErr for the width, the height
 */
ZMXJ_API ZmxStatus zmxiWTFwd_B53_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, const ZmxiRect* pTileRect,
                                                Zmx16s* const pDst[4], const int dstStep[4], Zmx8u* pBuffer);
/** As zmxiWTFwd_B53_JPEG2K_16s_C1R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTFwd_B53_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, const ZmxiRect* pTileRect,
                                                Zmx32s* const pDst[4], const int dstStep[4], Zmx8u* pBuffer);

/** Brings four bands back into a plane.
 *
 *  \param pSrc       four bands
 *  \param srcStep    bytes between the rows of each band, at least 1
 *  \param pDst       samples of the tile
 *  \param dstStep    bytes between destination rows, at least 1
 *  \param pTileRect  origin and size, at least 1 x 1
 *  \param pBuffer    scratch memory
 *  \return zmxStsNullPtrErr for pSrc, pDst, srcStep, pTileRect, pBuffer; zmxStsStepErr for dstStep; zmxStsNullPtrErr for the
 *          elements of pSrc; zmxStsStepErr for those of srcStep; zmxStsSizeErr for the width, the height
 */
ZMXJ_API ZmxStatus zmxiWTInv_B53_JPEG2K_16s_C1R(const Zmx16s* const pSrc[4], const int srcStep[4], Zmx16s* pDst,
                                                int dstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer);
/** As zmxiWTInv_B53_JPEG2K_16s_C1R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTInv_B53_JPEG2K_32s_C1R(const Zmx32s* const pSrc[4], const int srcStep[4], Zmx32s* pDst,
                                                int dstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer);

/** Tells the bytes of scratch memory that a whole-plane function needs.
 *
 *  \param pTileRect  size of the tile; not tested
 *  \param pSize      receives the byte count; 0 where both sides of the tile are below 3 (forms in place)
 *  \return zmxStsNullPtrErr for pTileRect, pSize
 */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR(const ZmxiRect* pTileRect, int* pSize);
/** As zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_B53_JPEG2K_32s_C1IR(const ZmxiRect* pTileRect, int* pSize);
/** As zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR, for the forms on four bands. */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_B53_JPEG2K_16s_C1R(const ZmxiRect* pTileRect, int* pSize);
/** As zmxiWTGetBufSize_B53_JPEG2K_16s_C1R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_B53_JPEG2K_32s_C1R(const ZmxiRect* pTileRect, int* pSize);

/** Lifts extended rows into their bands: 2 w samples of each row give w low and w high ones.
 *
 *  \param pSrc         sample 0 of the first row; at phase 0 samples -2 to 2 w are read, otherwise -1 to 2 w + 1
 *  \param srcStep      bytes between source rows, at least 1
 *  \param pDstLow      low band, dstRoiSize samples
 *  \param dstLowStep   bytes between its rows, at least 1
 *  \param pDstHigh     high band, dstRoiSize samples
 *  \param dstHighStep  bytes between its rows, at least 1
 *  \param dstRoiSize   size of one band, at least 1 x 1
 *  \param phase        0: sample 0 is low-pass; otherwise high-pass
 *  \return zmxStsNullPtrErr for the pointers; zmxStsStepErr for the steps; zmxStsSizeErr for the height, the width
 */
ZMXJ_API ZmxStatus zmxiWTFwdRow_B53_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, Zmx16s* pDstLow, int dstLowStep,
                                                   Zmx16s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);
/** As zmxiWTFwdRow_B53_JPEG2K_16s_C1R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTFwdRow_B53_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, Zmx32s* pDstLow, int dstLowStep,
                                                   Zmx32s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);
/** As zmxiWTFwdRow_B53_JPEG2K_16s_C1R, down the columns: 2 h rows give h low and h high ones. */
ZMXJ_API ZmxStatus zmxiWTFwdCol_B53_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, Zmx16s* pDstLow, int dstLowStep,
                                                   Zmx16s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);
/** As zmxiWTFwdCol_B53_JPEG2K_16s_C1R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTFwdCol_B53_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, Zmx32s* pDstLow, int dstLowStep,
                                                   Zmx32s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);

/** Rebuilds rows from extended bands: w low and w high samples give 2 w.
 *
 *  \param pSrcLow      sample 0 of the low band; at phase 0 samples 0 to w are read, otherwise -1 to w - 1
 *  \param srcLowStep   bytes between its rows, at least 1
 *  \param pSrcHigh     sample 0 of the high band; samples -1 to w are read
 *  \param srcHighStep  bytes between its rows, at least 1
 *  \param srcRoiSize   size of one band, at least 1 x 1
 *  \param pDst         destination rows of 2 w samples
 *  \param dstStep      bytes between destination rows, at least 1
 *  \param phase        0: destination sample 0 is low-pass; otherwise high-pass
 *  \return zmxStsNullPtrErr for the pointers; zmxStsStepErr for the steps; zmxStsSizeErr for the height, the width
 */
ZMXJ_API ZmxStatus zmxiWTInvRow_B53_JPEG2K_16s_C1R(const Zmx16s* pSrcLow, int srcLowStep, const Zmx16s* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx16s* pDst, int dstStep,
                                                   int phase);
/** As zmxiWTInvRow_B53_JPEG2K_16s_C1R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTInvRow_B53_JPEG2K_32s_C1R(const Zmx32s* pSrcLow, int srcLowStep, const Zmx32s* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx32s* pDst, int dstStep,
                                                   int phase);
/** As zmxiWTInvRow_B53_JPEG2K_16s_C1R, down the columns. With a non-zero phase low row -1 is looked for srcHighStep, not
 *  srcLowStep, ahead of row 0. */
ZMXJ_API ZmxStatus zmxiWTInvCol_B53_JPEG2K_16s_C1R(const Zmx16s* pSrcLow, int srcLowStep, const Zmx16s* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx16s* pDst, int dstStep,
                                                   int phase);
/** As zmxiWTInvCol_B53_JPEG2K_16s_C1R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTInvCol_B53_JPEG2K_32s_C1R(const Zmx32s* pSrcLow, int srcLowStep, const Zmx32s* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx32s* pDst, int dstStep,
                                                   int phase);

/** Makes one high and one low row.
 *
 *  \param pSrc0      row 2 k of the source; so pSrc1 is row 2 k + 1 and pSrc2 row 2 k + 2
 *  \param pDstLow0   receives low row 2 k
 *  \param pSrcHigh0  high row 2 k - 1, made by the call before
 *  \param pDstHigh1  receives high row 2 k + 1
 *  \param width      samples of a row, at least 1
 *  \return zmxStsNullPtrErr for the pointers; zmxStsSizeErr for width
 */
ZMXJ_API ZmxStatus zmxiWTFwdColLift_B53_JPEG2K_16s_C1(const Zmx16s* pSrc0, const Zmx16s* pSrc1, const Zmx16s* pSrc2,
                                                      Zmx16s* pDstLow0, const Zmx16s* pSrcHigh0, Zmx16s* pDstHigh1,
                                                      int width);
/** As zmxiWTFwdColLift_B53_JPEG2K_16s_C1, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTFwdColLift_B53_JPEG2K_32s_C1(const Zmx32s* pSrc0, const Zmx32s* pSrc1, const Zmx32s* pSrc2,
                                                      Zmx32s* pDstLow0, const Zmx32s* pSrcHigh0, Zmx32s* pDstHigh1,
                                                      int width);

/** Rebuilds two rows.
 *
 *  \param pSrcLow1   low row 2 k + 2
 *  \param pSrcHigh0  high row 2 k + 1
 *  \param pSrcHigh1  high row 2 k + 3
 *  \param pSrc0      row 2 k, rebuilt by the call before
 *  \param pDst1      receives row 2 k + 1
 *  \param pDst2      receives row 2 k + 2
 *  \param width      samples of a row, at least 1
 *  \return zmxStsNullPtrErr for the pointers; zmxStsSizeErr for width
 */
ZMXJ_API ZmxStatus zmxiWTInvColLift_B53_JPEG2K_16s_C1(const Zmx16s* pSrcLow1, const Zmx16s* pSrcHigh0,
                                                      const Zmx16s* pSrcHigh1, const Zmx16s* pSrc0, Zmx16s* pDst1,
                                                      Zmx16s* pDst2, int width);
/** As zmxiWTInvColLift_B53_JPEG2K_16s_C1, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTInvColLift_B53_JPEG2K_32s_C1(const Zmx32s* pSrcLow1, const Zmx32s* pSrcHigh0,
                                                      const Zmx32s* pSrcHigh1, const Zmx32s* pSrc0, Zmx32s* pDst1,
                                                      Zmx32s* pDst2, int width);

/* ---- The irreversible 9/7 filter.
 *
 * Forward: A(2k+1) = x(2k+1) + alpha (x(2k) + x(2k+2)), B(2k) = x(2k) + beta (A(2k-1) + A(2k+1)), G(2k+1) = A(2k+1) + gamma
 * (B(2k) + B(2k+2)), D(2k) = B(2k) + delta (G(2k-1) + G(2k+1)), low = D / K, high = K G, with alpha -1.5861343, beta
 * -0.052980117, gamma 0.8829111, delta 0.44350687, K 1.2301741. Number systems:
 *   whole planes, 16s  14 fractional bits, each term rounded, every value cut to 16 bits; nothing saturates
 *   whole planes, 32s  a 64-bit significand from the first step to the output, which is limited to 32 bits and truncated
 *                      toward zero
 *   kernels, 16s       16 fractional bits, exact products, every step saturated to 16 bits
 *   kernels, 32s       16 fractional bits, 64-bit products, every step cut to 32 bits
 *   kernels, 32f       a 64-bit significand, rounded to 32-bit float wherever a value is stored in a row
 * A kernel call of one output pair (width 1 of a row, height 1 of a column) applies the filter taps directly. */

/** Transforms a plane in place: all columns, then all rows.
 *
 *  Unlike the 5/3 filter, at an odd origin the high band comes first, in the direction concerned. At an odd length its last
 *  sample then replaces the first low one, and the last sample of the line keeps its value. Hence only an even origin is
 *  brought back by zmxiWTInv_D97_JPEG2K_16s_C1IR. Lines of one sample at an odd origin are doubled.
 *
 *  \param pSrcDst     samples of the tile, replaced by its bands
 *  \param srcDstStep  bytes between rows, at least 1
 *  \param pTileRect   origin and size; the size is not tested, and a width or height of 0 is accepted
 *  \param pBuffer     scratch memory
 *  \return zmxStsNullPtrErr for pSrcDst; zmxStsStepErr for srcDstStep; zmxStsNullPtrErr for pTileRect, pBuffer
 */
ZMXJ_API ZmxStatus zmxiWTFwd_D97_JPEG2K_16s_C1IR(Zmx16s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);
/** As zmxiWTFwd_D97_JPEG2K_16s_C1IR, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTFwd_D97_JPEG2K_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);
/** The inverse transform in place: all rows, then all columns; the low band comes first at every origin. Arguments and
 *  statuses as zmxiWTFwd_D97_JPEG2K_16s_C1IR. */
ZMXJ_API ZmxStatus zmxiWTInv_D97_JPEG2K_16s_C1IR(Zmx16s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);
/** As zmxiWTInv_D97_JPEG2K_16s_C1IR, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTInv_D97_JPEG2K_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, const ZmxiRect* pTileRect,
                                                 Zmx8u* pBuffer);

/** Transforms a plane into four bands. Arguments and statuses as zmxiWTFwd_B53_JPEG2K_16s_C1R. */
ZMXJ_API ZmxStatus zmxiWTFwd_D97_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, const ZmxiRect* pTileRect,
                                                Zmx16s* const pDst[4], const int dstStep[4], Zmx8u* pBuffer);
/** As zmxiWTFwd_D97_JPEG2K_16s_C1R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTFwd_D97_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, const ZmxiRect* pTileRect,
                                                Zmx32s* const pDst[4], const int dstStep[4], Zmx8u* pBuffer);
/** Brings four bands back into a plane. Arguments and statuses as zmxiWTInv_B53_JPEG2K_16s_C1R. */
ZMXJ_API ZmxStatus zmxiWTInv_D97_JPEG2K_16s_C1R(const Zmx16s* const pSrc[4], const int srcStep[4], Zmx16s* pDst,
                                                int dstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer);
/** As zmxiWTInv_D97_JPEG2K_16s_C1R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTInv_D97_JPEG2K_32s_C1R(const Zmx32s* const pSrc[4], const int srcStep[4], Zmx32s* pDst,
                                                int dstStep, const ZmxiRect* pTileRect, Zmx8u* pBuffer);

/** Tells the bytes of scratch memory that a whole-plane function needs, as zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR does; 0 where
 *  both sides of the tile are below 2 (forms in place). */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_D97_JPEG2K_16s_C1IR(const ZmxiRect* pTileRect, int* pSize);
/** As zmxiWTGetBufSize_D97_JPEG2K_16s_C1IR, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_D97_JPEG2K_32s_C1IR(const ZmxiRect* pTileRect, int* pSize);
/** As zmxiWTGetBufSize_D97_JPEG2K_16s_C1IR, for the forms on four bands. */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_D97_JPEG2K_16s_C1R(const ZmxiRect* pTileRect, int* pSize);
/** As zmxiWTGetBufSize_D97_JPEG2K_16s_C1R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTGetBufSize_D97_JPEG2K_32s_C1R(const ZmxiRect* pTileRect, int* pSize);

/** Lifts extended rows into their bands: 2 w samples of each row give w low and w high ones.
 *
 *  At phase 0 samples -4 to 2 w + 2 of each source row are read, otherwise -3 to 2 w + 3. Otherwise arguments and statuses as
 *  zmxiWTFwdRow_B53_JPEG2K_16s_C1R.
 */
ZMXJ_API ZmxStatus zmxiWTFwdRow_D97_JPEG2K_16s_C1R(const Zmx16s* pSrc, int srcStep, Zmx16s* pDstLow, int dstLowStep,
                                                   Zmx16s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);
/** As zmxiWTFwdRow_D97_JPEG2K_16s_C1R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTFwdRow_D97_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, Zmx32s* pDstLow, int dstLowStep,
                                                   Zmx32s* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);
/** As zmxiWTFwdRow_D97_JPEG2K_16s_C1R, for floats. */
ZMXJ_API ZmxStatus zmxiWTFwdRow_D97_JPEG2K_32f_C1R(const Zmx32f* pSrc, int srcStep, Zmx32f* pDstLow, int dstLowStep,
                                                   Zmx32f* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);
/** As zmxiWTFwdRow_D97_JPEG2K_32f_C1R, down the columns: 2 h rows give h low and h high ones. */
ZMXJ_API ZmxStatus zmxiWTFwdCol_D97_JPEG2K_32f_C1R(const Zmx32f* pSrc, int srcStep, Zmx32f* pDstLow, int dstLowStep,
                                                   Zmx32f* pDstHigh, int dstHighStep, ZmxiSize dstRoiSize, int phase);

/** Rebuilds rows from extended bands: w low and w high samples give 2 w.
 *
 *  At phase 0 low samples -1 to w + 1 are read, otherwise -2 to w; high samples -2 to w + 1. Otherwise arguments and statuses as
 *  zmxiWTInvRow_B53_JPEG2K_16s_C1R.
 */
ZMXJ_API ZmxStatus zmxiWTInvRow_D97_JPEG2K_16s_C1R(const Zmx16s* pSrcLow, int srcLowStep, const Zmx16s* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx16s* pDst, int dstStep,
                                                   int phase);
/** As zmxiWTInvRow_D97_JPEG2K_16s_C1R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTInvRow_D97_JPEG2K_32s_C1R(const Zmx32s* pSrcLow, int srcLowStep, const Zmx32s* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx32s* pDst, int dstStep,
                                                   int phase);
/** As zmxiWTInvRow_D97_JPEG2K_16s_C1R, for floats. */
ZMXJ_API ZmxStatus zmxiWTInvRow_D97_JPEG2K_32f_C1R(const Zmx32f* pSrcLow, int srcLowStep, const Zmx32f* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx32f* pDst, int dstStep,
                                                   int phase);
/** As zmxiWTInvRow_D97_JPEG2K_32f_C1R, down the columns. */
ZMXJ_API ZmxStatus zmxiWTInvCol_D97_JPEG2K_32f_C1R(const Zmx32f* pSrcLow, int srcLowStep, const Zmx32f* pSrcHigh,
                                                   int srcHighStep, ZmxiSize srcRoiSize, Zmx32f* pDst, int dstStep,
                                                   int phase);

/** One stage of the forward pipeline over rows; with r the stages so far:
 *
 *  \param pSrc0         source row 2 r + 2; pSrc1 is row 2 r + 3 and pSrc2 row 2 r + 4
 *  \param pSrcDstLow0   B(2 r), becomes low row r
 *  \param pDstLow1      receives B(2 r + 2): pSrcDstLow0 of the next call
 *  \param pSrcDstHigh0  G(2 r - 1), becomes high row r - 1
 *  \param pSrcDstHigh1  A(2 r + 1), becomes G(2 r + 1): pSrcDstHigh0 of the next call
 *  \param pDstHigh2     receives A(2 r + 3): pSrcDstHigh1 of the next call
 *  \param width         samples of a row, at least 1
 *  \return zmxStsNullPtrErr for the pointers; zmxStsSizeErr for width
 */
ZMXJ_API ZmxStatus zmxiWTFwdColLift_D97_JPEG2K_16s_C1(const Zmx16s* pSrc0, const Zmx16s* pSrc1, const Zmx16s* pSrc2,
                                                      Zmx16s* pSrcDstLow0, Zmx16s* pDstLow1, Zmx16s* pSrcDstHigh0,
                                                      Zmx16s* pSrcDstHigh1, Zmx16s* pDstHigh2, int width);
/** As zmxiWTFwdColLift_D97_JPEG2K_16s_C1, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTFwdColLift_D97_JPEG2K_32s_C1(const Zmx32s* pSrc0, const Zmx32s* pSrc1, const Zmx32s* pSrc2,
                                                      Zmx32s* pSrcDstLow0, Zmx32s* pDstLow1, Zmx32s* pSrcDstHigh0,
                                                      Zmx32s* pSrcDstHigh1, Zmx32s* pDstHigh2, int width);
/** As zmxiWTFwdColLift_D97_JPEG2K_16s_C1, for floats. */
ZMXJ_API ZmxStatus zmxiWTFwdColLift_D97_JPEG2K_32f_C1(const Zmx32f* pSrc0, const Zmx32f* pSrc1, const Zmx32f* pSrc2,
                                                      Zmx32f* pSrcDstLow0, Zmx32f* pDstLow1, Zmx32f* pSrcDstHigh0,
                                                      Zmx32f* pSrcDstHigh1, Zmx32f* pDstHigh2, int width);

/** One stage of the inverse pipeline over rows:
 *
 *  \param pSrcLow0   low row n + 1
 *  \param pSrcHigh0  high row n
 *  \param pSrcHigh1  high row n + 1
 *  \param pSrc0      row 2 n - 2 of the result
 *  \param pSrcDst1   A(2 n - 1), becomes row 2 n - 1
 *  \param pSrcDst2   B(2 n), becomes row 2 n
 *  \param pDst3      receives A(2 n + 1): pSrcDst1 of the next call
 *  \param pDst4      receives B(2 n + 2): pSrcDst2 of the next call
 *  \param width      samples of a row, at least 1
 *  \return zmxStsNullPtrErr for the pointers; zmxStsSizeErr for width
 */
ZMXJ_API ZmxStatus zmxiWTInvColLift_D97_JPEG2K_16s_C1(const Zmx16s* pSrcLow0, const Zmx16s* pSrcHigh0,
                                                      const Zmx16s* pSrcHigh1, const Zmx16s* pSrc0, Zmx16s* pSrcDst1,
                                                      Zmx16s* pSrcDst2, Zmx16s* pDst3, Zmx16s* pDst4, int width);
/** As zmxiWTInvColLift_D97_JPEG2K_16s_C1, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiWTInvColLift_D97_JPEG2K_32s_C1(const Zmx32s* pSrcLow0, const Zmx32s* pSrcHigh0,
                                                      const Zmx32s* pSrcHigh1, const Zmx32s* pSrc0, Zmx32s* pSrcDst1,
                                                      Zmx32s* pSrcDst2, Zmx32s* pDst3, Zmx32s* pDst4, int width);
/** As zmxiWTInvColLift_D97_JPEG2K_16s_C1, for floats. */
ZMXJ_API ZmxStatus zmxiWTInvColLift_D97_JPEG2K_32f_C1(const Zmx32f* pSrcLow0, const Zmx32f* pSrcHigh0,
                                                      const Zmx32f* pSrcHigh1, const Zmx32f* pSrc0, Zmx32f* pSrcDst1,
                                                      Zmx32f* pSrcDst2, Zmx32f* pDst3, Zmx32f* pDst4, int width);

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_WAVELET_H */
