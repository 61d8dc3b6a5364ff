/** \file
 *  levelshift.h - the level shift ahead of the forward and behind the inverse DCT.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_LEVELSHIFT_H
#define ZMXJ_LEVELSHIFT_H

#include "types.h"

/** \defgroup levelshift Level shift
 *  Samples of a JPEG picture are centred on zero ahead of the forward DCT, and moved back behind the inverse one.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Adds 128 to each sample and saturates the sum to 0..255: back from the samples around zero that an inverse DCT
 *  gives (ITU-T T.81, A.3.1).
 *
 *  Every value of the source is legal. A region of more than 8192 samples is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     source samples around zero, roiSize of them
 *  \param srcStep  bytes between the starts of two source rows, at least 1
 *  \param pDst     destination samples, roiSize of them
 *  \param dstStep  bytes between the starts of two destination rows, at least 1
 *  \param roiSize  width and height in samples, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc is null; zmxStsStepErr when srcStep is below 1; zmxStsNullPtrErr when pDst is
 *           null; zmxStsStepErr when dstStep is below 1; zmxStsSizeErr when the width or the height of roiSize is
 *           below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiAdd128_JPEG_16s8u_C1R(const Zmx16s* pSrc, int srcStep, Zmx8u* pDst, int dstStep,
                                             ZmxiSize roiSize);

/** Takes 128 from each sample, ahead of a forward DCT: 0..255 becomes -128..127 (ITU-T T.81, A.3.1).
 *
 *  Nothing can saturate. A region of more than 8192 samples is shared out to a team of threads.
 *
 *  \par Buffers
 *  Any address and any step will do, also for elements of two and four bytes. Source and destination do not overlap.
 *
 *  \param pSrc     source samples 0..255, roiSize of them
 *  \param srcStep  bytes between the starts of two source rows, at least 1
 *  \param pDst     destination samples around zero, roiSize of them
 *  \param dstStep  bytes between the starts of two destination rows, at least 1
 *  \param roiSize  width and height in samples, each at least 1
 *  \return  zmxStsNullPtrErr when pSrc is null; zmxStsStepErr when srcStep is below 1; zmxStsNullPtrErr when pDst is
 *           null; zmxStsStepErr when dstStep is below 1; zmxStsSizeErr when the width or the height of roiSize is
 *           below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiSub128_JPEG_8u16s_C1R(const Zmx8u* pSrc, int srcStep, Zmx16s* pDst, int dstStep,
                                             ZmxiSize roiSize);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_LEVELSHIFT_H */
