/* component.h - the component transforms of JPEG2000 (ISO/IEC 15444-1, annex G).
 *
 * Planes of the transformed form: RCT Y, B - G, R - G; ICT Y, Cb, Cr. Pixels are three samples R, G, B. The three planes of a
 * group share one step in bytes; a step smaller than a row is accepted. Nothing saturates in any form.
 *
 *   RCT  Y = (R + 2 G + B) >> 2; back G = Y - ((D1 + D2) >> 2), R = D2 + G, B = D1 + G. Exact as long as no sum wraps.
 *   ICT, integers  weights with 14 fractional bits: Y 4899 9617 1868, Cb -2765 -5427 8192, Cr 8192 -6860 -1332; back
 *        R = Y + 22970 Cr, G = Y - 5638 Cb - 11700 Cr, B = Y + 29032 Cb; each scaled sum plus 8192, shifted right by 14. 32-bit
 *        products and sums wrap: samples of magnitude below 2^17 forward and 73,968 back are safe.
 *   ICT, float  32-bit constants 0.299 0.587 0.114, -0.16875 -0.33126 0.5, 0.5 -0.41869 -0.08131; back 1.402, -0.34413 -0.71414,
 *        1.772; each sum from left to right with a 64-bit significand, rounded once. The two directions are not exact inverses.
 */
#ifndef ZMXJ_COMPONENT_H
#define ZMXJ_COMPONENT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Reversible transform, pixels to planes.
 *
 *  \param pSrc     roiSize pixels of three samples
 *  \param srcStep  bytes between source rows, at least 1
 *  \param pDst     three planes of roiSize samples
 *  \param dstStep  bytes between the rows of every plane, at least 1
 *  \param roiSize  size in pixels, at least 1 x 1
 *  \return zmxStsNullPtrErr for pSrc, pDst, then the planes; zmxStsStepErr for srcStep, dstStep; zmxStsSizeErr for the width,
 *          the height
 */
ZMXJ_API ZmxStatus zmxiRCTFwd_JPEG2K_16s_C3P3R(const Zmx16s* pSrc, int srcStep, Zmx16s* const pDst[3], int dstStep,
                                               ZmxiSize roiSize);
/** As zmxiRCTFwd_JPEG2K_16s_C3P3R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiRCTFwd_JPEG2K_32s_C3P3R(const Zmx32s* pSrc, int srcStep, Zmx32s* const pDst[3], int dstStep,
                                               ZmxiSize roiSize);

/** Reversible transform, planes in place.
 *
 *  \param pSrcDst     three planes of roiSize samples
 *  \param srcDstStep  bytes between the rows of every plane, at least 1
 *  \param roiSize     size in samples, at least 1 x 1
 *  \return zmxStsNullPtrErr for pSrcDst, then the planes; zmxStsStepErr for srcDstStep; zmxStsSizeErr for the width, the height
 */
ZMXJ_API ZmxStatus zmxiRCTFwd_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);
/** As zmxiRCTFwd_JPEG2K_16s_P3IR, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiRCTFwd_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);

/** Inverse reversible transform, planes to pixels.
 *
 *  \param pSrc     three planes of roiSize samples
 *  \param srcStep  bytes between the rows of every plane, at least 1
 *  \param pDst     roiSize pixels of three samples
 *  \param dstStep  bytes between destination rows, at least 1
 *  \param roiSize  size in pixels, at least 1 x 1
 *  \return zmxStsNullPtrErr for pSrc, pDst, then the planes; zmxStsStepErr for srcStep, dstStep; zmxStsSizeErr for the width,
 *          the height
 */
ZMXJ_API ZmxStatus zmxiRCTInv_JPEG2K_16s_P3C3R(const Zmx16s* const pSrc[3], int srcStep, Zmx16s* pDst, int dstStep,
                                               ZmxiSize roiSize);
/** As zmxiRCTInv_JPEG2K_16s_P3C3R, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiRCTInv_JPEG2K_32s_P3C3R(const Zmx32s* const pSrc[3], int srcStep, Zmx32s* pDst, int dstStep,
                                               ZmxiSize roiSize);
/** Inverse reversible transform, planes in place. Arguments and statuses as zmxiRCTFwd_JPEG2K_16s_P3IR. */
ZMXJ_API ZmxStatus zmxiRCTInv_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);
/** As zmxiRCTInv_JPEG2K_16s_P3IR, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiRCTInv_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);

/** Irreversible transform in floating point, pixels to planes. Arguments and statuses as zmxiRCTFwd_JPEG2K_16s_C3P3R. */
ZMXJ_API ZmxStatus zmxiICTFwd_JPEG2K_32f_C3P3R(const Zmx32f* pSrc, int srcStep, Zmx32f* const pDst[3], int dstStep,
                                               ZmxiSize roiSize);
/** Irreversible transform in floating point, planes in place. Arguments and statuses as zmxiRCTFwd_JPEG2K_16s_P3IR. */
ZMXJ_API ZmxStatus zmxiICTFwd_JPEG2K_32f_P3IR(Zmx32f* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);
/** Irreversible transform in fixed point, planes in place. Arguments and statuses as zmxiRCTFwd_JPEG2K_16s_P3IR. */
ZMXJ_API ZmxStatus zmxiICTFwd_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);
/** As zmxiICTFwd_JPEG2K_16s_P3IR, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiICTFwd_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);

/** Inverse irreversible transform in floating point, planes to pixels. Arguments and statuses as
 *  zmxiRCTInv_JPEG2K_16s_P3C3R. */
ZMXJ_API ZmxStatus zmxiICTInv_JPEG2K_32f_P3C3R(const Zmx32f* const pSrc[3], int srcStep, Zmx32f* pDst, int dstStep,
                                               ZmxiSize roiSize);
/** Inverse irreversible transform in floating point, planes in place. Arguments and statuses as zmxiRCTFwd_JPEG2K_16s_P3IR. */
ZMXJ_API ZmxStatus zmxiICTInv_JPEG2K_32f_P3IR(Zmx32f* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);
/** Inverse irreversible transform in fixed point, planes in place. Arguments and statuses as zmxiRCTFwd_JPEG2K_16s_P3IR. */
ZMXJ_API ZmxStatus zmxiICTInv_JPEG2K_16s_P3IR(Zmx16s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);
/** As zmxiICTInv_JPEG2K_16s_P3IR, for 32-bit samples. */
ZMXJ_API ZmxStatus zmxiICTInv_JPEG2K_32s_P3IR(Zmx32s* const pSrcDst[3], int srcDstStep, ZmxiSize roiSize);

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_COMPONENT_H */
