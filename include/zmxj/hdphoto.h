/** \file
 *  hdphoto.h - the HD Photo core transform: reversible 4x4 integer lifting (ITU-T T.832, clause 9.9).
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_HDPHOTO_H
#define ZMXJ_HDPHOTO_H

#include "types.h"

/** \defgroup hdphoto HD Photo core transform
 *  Reversible 4x4 integer lifting (ITU-T T.832, clause 9.9), on rectangles and on macroblocks. Blocks are independent: the
 *  second stage over the DC values and the overlap filters are the caller's. Everything runs on the calling thread.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Transforms every 4x4 block of a rectangle, in place.
 *
 *  The coefficient at position (0, 0) of a 4x4 block is its DC, with a gain of 4; the others stay where the lifting
 *  leaves them. Sums wrap in 32 bits; as long as none does, the inverse brings every sample back exactly.
 *
 *  \par Buffers
 *  Any address will do, also for a step that is no multiple of four.
 *
 *  \param pSrcDst     roiSize samples, replaced by coefficients
 *  \param srcDstStep  bytes between the starts of two rows, at least 4 x width; compared as an unsigned number, so
 *                     that a negative one is accepted
 *  \param roiSize     width and height in samples, each a multiple of 4 and at least 4
 *  \return  zmxStsNullPtrErr when pSrcDst is null; zmxStsSizeErr when the width or the height is below 1;
 *           zmxStsStepErr when srcDstStep is below 4 x width, as unsigned numbers; zmxStsSizeErr when the width or
 *           the height is not a multiple of 4; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiPCTFwd_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, ZmxiSize roiSize);

/** Transforms the 4x4 blocks of 16 x 16 samples (width x height), in place.
 *
 *  The coefficient at position (0, 0) of a 4x4 block is its DC, with a gain of 4; the others stay where the lifting
 *  leaves them. Sums wrap in 32 bits; as long as none does, the inverse brings every sample back exactly.
 *
 *  \par Buffers
 *  Any address will do, also for a step that is no multiple of four.
 *
 *  \param pSrcDst     16 rows of 16 samples, replaced by coefficients
 *  \param srcDstStep  bytes between the starts of two rows, at least 64; compared as an unsigned number, so that a
 *                     negative one is accepted
 *  \return  zmxStsNullPtrErr when pSrcDst is null; zmxStsStepErr when srcDstStep is below 64, as an unsigned number;
 *           zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiPCTFwd16x16_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep);
/** Transforms the 4x4 blocks of 8 x 16 samples (width x height), in place.
 *
 *  Otherwise as zmxiPCTFwd16x16_HDP_32s_C1IR().
 *
 *  \par Buffers
 *  Any address will do, also for a step that is no multiple of four.
 *
 *  \param pSrcDst     16 rows of 8 samples, replaced by coefficients
 *  \param srcDstStep  bytes between the starts of two rows, at least 32; compared as an unsigned number, so that a
 *                     negative one is accepted
 *  \return  zmxStsNullPtrErr when pSrcDst is null; zmxStsStepErr when srcDstStep is below 32, as an unsigned number;
 *           zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiPCTFwd8x16_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep);
/** Transforms the 4x4 blocks of 8 x 8 samples (width x height), in place.
 *
 *  Otherwise as zmxiPCTFwd16x16_HDP_32s_C1IR().
 *
 *  \par Buffers
 *  Any address will do, also for a step that is no multiple of four.
 *
 *  \param pSrcDst     8 rows of 8 samples, replaced by coefficients
 *  \param srcDstStep  bytes between the starts of two rows, at least 32; compared as an unsigned number, so that a
 *                     negative one is accepted
 *  \return  zmxStsNullPtrErr when pSrcDst is null; zmxStsStepErr when srcDstStep is below 32, as an unsigned number;
 *           zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiPCTFwd8x8_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep);

/** Brings every 4x4 block of a rectangle back, in place: the inverse of zmxiPCTFwd_HDP_32s_C1IR().
 *
 *  Sums wrap in 32 bits.
 *
 *  \par Buffers
 *  Any address will do, also for a step that is no multiple of four.
 *
 *  \param pSrcDst     roiSize coefficients, replaced by samples
 *  \param srcDstStep  bytes between the starts of two rows, at least 4 x width; compared as an unsigned number, so
 *                     that a negative one is accepted
 *  \param roiSize     width and height in samples, each a multiple of 4 and at least 4
 *  \return  zmxStsNullPtrErr when pSrcDst is null; zmxStsSizeErr when the width or the height is below 1;
 *           zmxStsStepErr when srcDstStep is below 4 x width, as unsigned numbers; zmxStsSizeErr when the width or
 *           the height is not a multiple of 4; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiPCTInv_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, ZmxiSize roiSize);
/** Brings back the 4x4 blocks of 16 x 16 samples (width x height), in place.
 *
 *  Sums wrap in 32 bits.
 *
 *  \par Buffers
 *  Any address will do, also for a step that is no multiple of four.
 *
 *  \param pSrcDst     16 rows of 16 coefficients, replaced by samples
 *  \param srcDstStep  bytes between the starts of two rows, at least 64; compared as an unsigned number, so that a
 *                     negative one is accepted
 *  \return  zmxStsNullPtrErr when pSrcDst is null; zmxStsStepErr when srcDstStep is below 64, as an unsigned number;
 *           zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiPCTInv16x16_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep);
/** Brings back the 4x4 blocks of 8 x 16 samples (width x height), in place.
 *
 *  Otherwise as zmxiPCTInv16x16_HDP_32s_C1IR().
 *
 *  \par Buffers
 *  Any address will do, also for a step that is no multiple of four.
 *
 *  \param pSrcDst     16 rows of 8 coefficients, replaced by samples
 *  \param srcDstStep  bytes between the starts of two rows, at least 32; compared as an unsigned number, so that a
 *                     negative one is accepted
 *  \return  zmxStsNullPtrErr when pSrcDst is null; zmxStsStepErr when srcDstStep is below 32, as an unsigned number;
 *           zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiPCTInv8x16_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep);
/** Brings back the 4x4 blocks of 8 x 8 samples (width x height), in place.
 *
 *  Otherwise as zmxiPCTInv16x16_HDP_32s_C1IR().
 *
 *  \par Buffers
 *  Any address will do, also for a step that is no multiple of four.
 *
 *  \param pSrcDst     8 rows of 8 coefficients, replaced by samples
 *  \param srcDstStep  bytes between the starts of two rows, at least 32; compared as an unsigned number, so that a
 *                     negative one is accepted
 *  \return  zmxStsNullPtrErr when pSrcDst is null; zmxStsStepErr when srcDstStep is below 32, as an unsigned number;
 *           zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiPCTInv8x8_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_HDPHOTO_H */
