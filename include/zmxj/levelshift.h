/* levelshift.h - the level shift ahead of the forward and behind the inverse DCT. */
#ifndef ZMXJ_LEVELSHIFT_H
#define ZMXJ_LEVELSHIFT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Adds 128 to each sample and saturates the sum to 0..255: back from the samples around zero that an inverse
 *  DCT gives (ITU-T T.81, A.3.1).
 *
 *  Every value of the source is legal. A region of more than 8192 samples is shared out to a team of threads.
 *
 *  \param pSrc     source samples around zero
 *  \param srcStep  bytes between the starts of two source rows
 *  \param pDst     destination samples
 *  \param dstStep  bytes between the starts of two destination rows
 *  \param roiSize  size of the region in samples
 *  \return         in this order, each pointer directly followed by its step:
 *                  zmxStsNullPtrErr (pSrc), zmxStsStepErr (srcStep below 1),
 *                  zmxStsNullPtrErr (pDst), zmxStsStepErr (dstStep below 1),
 *                  zmxStsSizeErr (width, then height, below 1); zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiAdd128_JPEG_16s8u_C1R(const Zmx16s* pSrc, int srcStep, Zmx8u* pDst, int dstStep,
                                             ZmxiSize roiSize);

/** Takes 128 from each sample, ahead of a forward DCT: 0..255 becomes -128..127 (ITU-T T.81, A.3.1).
 *
 *  A region of more than 8192 samples is shared out to a team of threads.
 *
 *  \param pSrc     source samples
 *  \param srcStep  bytes between the starts of two source rows
 *  \param pDst     destination samples, around zero
 *  \param dstStep  bytes between the starts of two destination rows
 *  \param roiSize  size of the region in samples
 *  \return         tests and statuses as for zmxiAdd128_JPEG_16s8u_C1R
 */
ZMXJ_API ZmxStatus zmxiSub128_JPEG_8u16s_C1R(const Zmx8u* pSrc, int srcStep, Zmx16s* pDst, int dstStep,
                                             ZmxiSize roiSize);

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_LEVELSHIFT_H */
