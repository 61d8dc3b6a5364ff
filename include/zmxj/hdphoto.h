/* hdphoto.h - the HD Photo core transform: reversible 4x4 integer lifting (ITU-T T.832, clause 9.9). */
#ifndef ZMXJ_HDPHOTO_H
#define ZMXJ_HDPHOTO_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Transforms every 4x4 block of a rectangle, in place.
 *
 *  The coefficient at position (0, 0) of a block is its DC, with a gain of 4; the others stay where the lifting leaves
 *  them. Sums wrap in 32 bits; as long as none does, zmxiPCTInv_HDP_32s_C1IR brings every sample back exactly. Blocks are
 *  independent: the second stage over the DC values and the overlap filters are the caller's.
 *
 *  \param pSrcDst     roiSize samples, replaced by coefficients
 *  \param srcDstStep  bytes between rows; compared as an unsigned number, so that a negative one is accepted
 *  \param roiSize     width and height, multiples of 4
 *  \return zmxStsNullPtrErr for pSrcDst; zmxStsSizeErr for a width or height below 1; zmxStsStepErr for a step below
 *          4 x width; zmxStsSizeErr for a width or height that is not a multiple of 4
 */
ZMXJ_API ZmxStatus zmxiPCTFwd_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, ZmxiSize roiSize);

/** Transforms a macroblock of 16 x 16 samples, in place, as zmxiPCTFwd_HDP_32s_C1IR does.
 *
 *  \return zmxStsNullPtrErr for pSrcDst; zmxStsStepErr for a step below 64 (unsigned)
 */
ZMXJ_API ZmxStatus zmxiPCTFwd16x16_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep);
/** As zmxiPCTFwd16x16_HDP_32s_C1IR, 8 samples wide and 16 high; the least step is 32. */
ZMXJ_API ZmxStatus zmxiPCTFwd8x16_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep);
/** As zmxiPCTFwd16x16_HDP_32s_C1IR, 8 samples wide and 8 high; the least step is 32. */
ZMXJ_API ZmxStatus zmxiPCTFwd8x8_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep);

/** The inverse of zmxiPCTFwd_HDP_32s_C1IR, with the same arguments and statuses. */
ZMXJ_API ZmxStatus zmxiPCTInv_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep, ZmxiSize roiSize);
/** The inverse of zmxiPCTFwd16x16_HDP_32s_C1IR, with the same arguments and statuses. */
ZMXJ_API ZmxStatus zmxiPCTInv16x16_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep);
/** The inverse of zmxiPCTFwd8x16_HDP_32s_C1IR, with the same arguments and statuses. */
ZMXJ_API ZmxStatus zmxiPCTInv8x16_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep);
/** The inverse of zmxiPCTFwd8x8_HDP_32s_C1IR, with the same arguments and statuses. */
ZMXJ_API ZmxStatus zmxiPCTInv8x8_HDP_32s_C1IR(Zmx32s* pSrcDst, int srcDstStep);

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_HDPHOTO_H */
