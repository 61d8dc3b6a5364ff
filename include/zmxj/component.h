/** \file
 *  component.h - the component transforms of JPEG2000 (ISO/IEC 15444-1, annex G).
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_COMPONENT_H
#define ZMXJ_COMPONENT_H

#include "types.h"

/** \defgroup component Component transforms (JPEG2000)
 *  The reversible (RCT) and the irreversible (ICT) transform of three components (ISO/IEC 15444-1, annex G). Pixels are
 *  three samples R, G, B. The planes of the transformed form are RCT Y, B - G, R - G; ICT Y, Cb, Cr. Nothing saturates.
 *
 *  **RCT.** Y = (R + 2 G + B) >> 2; back G = Y - ((D1 + D2) >> 2), R = D2 + G, B = D1 + G with D1 = B - G, D2 = R - G.
 *
 *  **ICT, integers.** Weights with 14 fractional bits; each scaled sum plus 8192, shifted right by 14:
 *
 *      Y  =  4899 R + 9617 G + 1868 B          R = Y + 22970 Cr
 *      Cb = -2765 R - 5427 G + 8192 B          G = Y - 5638 Cb - 11700 Cr
 *      Cr =  8192 R - 6860 G - 1332 B          B = Y + 29032 Cb
 *
 *  **ICT, floating point.** Single-precision constants 0.299 0.587 0.114, -0.16875 -0.33126 0.5, 0.5 -0.41869 -0.08131;
 *  back 1.402, -0.34413 -0.71414, 1.772. The two directions are not exact inverses.
 *
 *  The three planes of a group share one step. Everything runs on the calling thread.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Reversible transform of 16-bit samples, pixels to planes.
 *
 *  Sums are kept to the width of the sample and wrap; as long as none does, the inverse is exact.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     roiSize pixels of three samples R, G, B
 *  \param srcStep  bytes between the starts of two rows of pixels, at least 1; less than a row is accepted
 *  \param pDst     three planes of roiSize samples, in the order of the head of this page
 *  \param dstStep  bytes between the starts of two rows of every plane, at least 1; less than a row is accepted
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst or a plane of pDst is null; zmxStsStepErr when srcStep or dstStep is
 *           below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiRCTFwd_JPEG2K_16s_C3P3R(const Zmx16s* pSrc, int srcStep, Zmx16s* const pDst[3], int dstStep,
                                               ZmxiSize roiSize);
/** Reversible transform of 32-bit samples, pixels to planes. \copydetails zmxiRCTFwd_JPEG2K_16s_C3P3R */
ZMXJ_API ZmxStatus zmxiRCTFwd_JPEG2K_32s_C3P3R(const Zmx32s* pSrc, int srcStep, Zmx32s* const pDst[3], int dstStep,
                                               ZmxiSize roiSize);

/** Reversible transform of 16-bit samples, planes in place.
 *
 *  Sums are kept to the width of the sample and wrap; as long as none does, the inverse is exact.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The three planes do not overlap each
 *  other.
 *
 *  \param pSrcDst     three planes of roiSize samples, replaced in place
 *  \param srcDstStep  bytes between the starts of two rows of every plane, at least 1; less than a row is accepted
 *  \param roiSize     width and height in samples, each at least 1
 *  \return  zmxStsNullPtrErr when pSrcDst or a plane of pSrcDst is null; zmxStsStepErr when srcDstStep is below 1;
 *           zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiRCTFwd_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);
/** Reversible transform of 32-bit samples, planes in place. \copydetails zmxiRCTFwd_JPEG2K_16s_P3IR */
ZMXJ_API ZmxStatus zmxiRCTFwd_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);

/** Inverse reversible transform of 16-bit samples, planes to pixels.
 *
 *  Sums are kept to the width of the sample and wrap; as long as none does, the inverse is exact.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     three planes of roiSize samples, in the order of the head of this page
 *  \param srcStep  bytes between the starts of two rows of every plane, at least 1; less than a row is accepted
 *  \param pDst     roiSize pixels of three samples R, G, B
 *  \param dstStep  bytes between the starts of two rows of pixels, at least 1; less than a row is accepted
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst or a plane of pSrc is null; zmxStsStepErr when srcStep or dstStep is
 *           below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiRCTInv_JPEG2K_16s_P3C3R(const Zmx16s* const pSrc[3], int srcStep, Zmx16s* pDst, int dstStep,
                                               ZmxiSize roiSize);
/** Inverse reversible transform of 32-bit samples, planes to pixels. \copydetails zmxiRCTInv_JPEG2K_16s_P3C3R */
ZMXJ_API ZmxStatus zmxiRCTInv_JPEG2K_32s_P3C3R(const Zmx32s* const pSrc[3], int srcStep, Zmx32s* pDst, int dstStep,
                                               ZmxiSize roiSize);
/** Inverse reversible transform of 16-bit samples, planes in place. \copydetails zmxiRCTFwd_JPEG2K_16s_P3IR */
ZMXJ_API ZmxStatus zmxiRCTInv_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);
/** Inverse reversible transform of 32-bit samples, planes in place. \copydetails zmxiRCTFwd_JPEG2K_16s_P3IR */
ZMXJ_API ZmxStatus zmxiRCTInv_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);

/** Irreversible transform in floating point, pixels to planes.
 *
 *  Each sum is taken from left to right with a 64-bit significand and rounded once, when it is stored. Nothing is
 *  limited.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     roiSize pixels of three samples R, G, B
 *  \param srcStep  bytes between the starts of two rows of pixels, at least 1; less than a row is accepted
 *  \param pDst     three planes of roiSize samples, in the order of the head of this page
 *  \param dstStep  bytes between the starts of two rows of every plane, at least 1; less than a row is accepted
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst or a plane of pDst is null; zmxStsStepErr when srcStep or dstStep is
 *           below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiICTFwd_JPEG2K_32f_C3P3R(const Zmx32f* pSrc, int srcStep, Zmx32f* const pDst[3], int dstStep,
                                               ZmxiSize roiSize);
/** Irreversible transform in floating point, planes in place.
 *
 *  Each sum is taken from left to right with a 64-bit significand and rounded once, when it is stored. Nothing is
 *  limited.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The three planes do not overlap each
 *  other.
 *
 *  \param pSrcDst     three planes of roiSize samples, replaced in place
 *  \param srcDstStep  bytes between the starts of two rows of every plane, at least 1; less than a row is accepted
 *  \param roiSize     width and height in samples, each at least 1
 *  \return  zmxStsNullPtrErr when pSrcDst or a plane of pSrcDst is null; zmxStsStepErr when srcDstStep is below 1;
 *           zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiICTFwd_JPEG2K_32f_P3IR(Zmx32f* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);
/** Irreversible transform of 16-bit samples in fixed point, planes in place.
 *
 *  14 fractional bits; 8192 is added ahead of the shift. 32-bit products and sums wrap: samples of magnitude below
 *  2^17 forward and of 73,968 back are safe. Results are kept to the width of the sample.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. The three planes do not overlap each
 *  other.
 *
 *  \param pSrcDst     three planes of roiSize samples, replaced in place
 *  \param srcDstStep  bytes between the starts of two rows of every plane, at least 1; less than a row is accepted
 *  \param roiSize     width and height in samples, each at least 1
 *  \return  zmxStsNullPtrErr when pSrcDst or a plane of pSrcDst is null; zmxStsStepErr when srcDstStep is below 1;
 *           zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiICTFwd_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);
/** Irreversible transform of 32-bit samples in fixed point, planes in place.
 *  \copydetails zmxiICTFwd_JPEG2K_16s_P3IR
 */
ZMXJ_API ZmxStatus zmxiICTFwd_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);

/** Inverse irreversible transform in floating point, planes to pixels.
 *
 *  Each sum is taken from left to right with a 64-bit significand and rounded once, when it is stored. Nothing is
 *  limited.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     three planes of roiSize samples, in the order of the head of this page
 *  \param srcStep  bytes between the starts of two rows of every plane, at least 1; less than a row is accepted
 *  \param pDst     roiSize pixels of three samples R, G, B
 *  \param dstStep  bytes between the starts of two rows of pixels, at least 1; less than a row is accepted
 *  \param roiSize  width and height in pixels, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDst or a plane of pSrc is null; zmxStsStepErr when srcStep or dstStep is
 *           below 1; zmxStsSizeErr when the width or the height of roiSize is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiICTInv_JPEG2K_32f_P3C3R(const Zmx32f* const pSrc[3], int srcStep, Zmx32f* pDst, int dstStep,
                                               ZmxiSize roiSize);
/** Inverse irreversible transform in floating point, planes in place. \copydetails zmxiICTFwd_JPEG2K_32f_P3IR */
ZMXJ_API ZmxStatus zmxiICTInv_JPEG2K_32f_P3IR(Zmx32f* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);
/** Inverse irreversible transform of 16-bit samples in fixed point, planes in place.
 *  \copydetails zmxiICTFwd_JPEG2K_16s_P3IR
 */
ZMXJ_API ZmxStatus zmxiICTInv_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);
/** Inverse irreversible transform of 32-bit samples in fixed point, planes in place.
 *  \copydetails zmxiICTFwd_JPEG2K_16s_P3IR
 */
ZMXJ_API ZmxStatus zmxiICTInv_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_COMPONENT_H */
