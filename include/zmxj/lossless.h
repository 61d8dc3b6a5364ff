/* lossless.h - lossless JPEG row coding. */
#ifndef ZMXJ_LOSSLESS_H
#define ZMXJ_LOSSLESS_H

#include "huffman.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Lossless JPEG (ITU-T T.81, Annex H). Samples and differences are 16-bit values, and sums and differences of them are
 * kept to 16 bits. The point transform of the samples is the caller's. */

/** Differences of the first row of a picture or restart interval: the first sample to the middle of the range,
 *  2 to the power of P - Pt - 1, each other sample to its left neighbour.
 *
 *  \param pSrc    nWidth samples
 *  \param pDst    nWidth differences; not pSrc
 *  \param nWidth  samples in the row
 *  \param P       the precision of the samples, 2 to 16 bits
 *  \param Pt      the point transform, 0 or more; from P upward there is no meaningful middle (the exponent counts modulo
 *                 32), which is not refused
 *  \return        zmxStsNullPtrErr (pSrc, pDst), zmxStsSizeErr (nWidth below 1), zmxStsBadArgErr (P, Pt), zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiDiffPredFirstRow_JPEG_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst, int nWidth, int P, int Pt);
/** The inverse: samples of pDst from the differences of pSrc. */
ZMXJ_API ZmxStatus zmxiReconstructPredFirstRow_JPEG_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst, int nWidth, int P, int Pt);

/** Differences of a later row to a prediction (ITU-T T.81, Table H.1) from Ra to the left, Rb above, Rc above Ra:
 *
 *      1: Ra   2: Rb   3: Rc   4: Ra + Rb - Rc   5: Ra + ((Rb - Rc) >> 1)   6: Rb + ((Ra - Rc) >> 1)   7: (Ra + Rb) >> 1
 *
 *  The first sample of a row is predicted by the one above, whatever the predictor. Halved terms are those of signed
 *  16-bit samples in 32 bits.
 *
 *  \param pSrc       nWidth samples
 *  \param pPrevRow   nWidth samples of the row above
 *  \param pDst       nWidth differences; not pSrc
 *  \param nWidth     samples in the row
 *  \param predictor  1 to 7
 *  \return           zmxStsNullPtrErr (pSrc, pPrevRow, pDst), zmxStsSizeErr (nWidth below 1), zmxStsBadArgErr (predictor),
 *                    zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiDiffPredRow_JPEG_16s_C1(const Zmx16s* pSrc, const Zmx16s* pPrevRow, Zmx16s* pDst, int nWidth,
                                               int predictor);
/** The inverse: samples of pDst from the differences of pSrc; pPrevRow is the reconstructed row above. */
ZMXJ_API ZmxStatus zmxiReconstructPredRow_JPEG_16s_C1(const Zmx16s* pSrc, const Zmx16s* pPrevRow, Zmx16s* pDst,
                                                      int nWidth, int predictor);

/** Decodes one difference (ITU-T T.81, H.2.2). The common arguments are those of huffman.h.
 *
 *  \param pDst           out: the difference. The symbol 16, or above, is -32768 and has no further bits
 *  \param pDecHuffTable  the table of the symbols
 *  \return               zmxStsNullPtrErr (pSrc), zmxStsSizeErr (nSrcLen below 1), zmxStsNullPtrErr (the other pointers in
 *                        order); then zmxStsOutOfBufErr, zmxStsDCTRangeErr, zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanOne_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                                      int* pMarker, const ZmxiDecodeHuffmanSpec* pDecHuffTable,
                                                      ZmxiDecodeHuffmanState* pDecHuffState);
/** Decodes a row of differences, interleaved sample by sample over up to four planes.
 *
 *  \param pDstPlanes      nPlanes rows of nWidth differences
 *  \param nWidth          samples in a row
 *  \param nPlanes         the number of planes; those behind the fourth are neither coded nor looked at
 *  \param pDecHuffTables  a table for each plane
 *  \return                zmxStsNullPtrErr (pSrc), zmxStsSizeErr (nSrcLen below 1), zmxStsNullPtrErr (pSrcCurrPos,
 *                         pDstPlanes), zmxStsSizeErr (nWidth, nPlanes below 1), zmxStsNullPtrErr (pMarker,
 *                         pDecHuffTables, pDecHuffState, then the row and the table of each plane); then
 *                         zmxStsOutOfBufErr, zmxStsDCTRangeErr, zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos,
                                                        Zmx16s* const pDstPlanes[4], int nWidth, int nPlanes,
                                                        int* pMarker,
                                                        const ZmxiDecodeHuffmanSpec* const pDecHuffTables[4],
                                                        ZmxiDecodeHuffmanState* pDecHuffState);

/** Encodes one difference (ITU-T T.81, H.1.2.2), or flushes.
 *
 *  \param pSrc           the difference
 *  \param pEncHuffTable  the table of the symbols
 *  \return               zmxStsNullPtrErr (pDst), zmxStsSizeErr (dstLenBytes below 1), zmxStsNullPtrErr (pDstCurrPos,
 *                        pEncHuffState; without bFlushState pSrc, pEncHuffTable); then zmxStsOutOfBufErr,
 *                        zmxStsHuffTableErr, zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanOne_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                      int* pDstCurrPos, const ZmxiEncodeHuffmanSpec* pEncHuffTable,
                                                      ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);
/** Encodes a row of differences, interleaved sample by sample over up to four planes; or flushes.
 *
 *  \param pSrcPlanes      nPlanes rows of nWidth differences
 *  \param nWidth          samples in a row
 *  \param nPlanes         the number of planes; those behind the fourth are neither coded nor looked at
 *  \param pEncHuffTables  a table for each plane
 *  \return                zmxStsNullPtrErr (pDst), zmxStsSizeErr (dstLenBytes below 1), zmxStsNullPtrErr (pDstCurrPos,
 *                         pEncHuffState); without bFlushState zmxStsNullPtrErr (pSrcPlanes), zmxStsSizeErr (nWidth,
 *                         nPlanes below 1), zmxStsNullPtrErr (pEncHuffTables, then the row and the table of each plane);
 *                         then zmxStsOutOfBufErr, zmxStsHuffTableErr, zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(const Zmx16s* const pSrcPlanes[4], int nWidth, int nPlanes,
                                                        Zmx8u* pDst, int dstLenBytes, int* pDstCurrPos,
                                                        const ZmxiEncodeHuffmanSpec* const pEncHuffTables[4],
                                                        ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);

/** Counts the symbol of one difference, for zmxiEncodeHuffmanRawTableInit_JPEG_8u.
 *
 *  \param pSrc         the difference
 *  \param pStatistics  in and out: the count of each symbol; the caller clears it
 *  \return             zmxStsNullPtrErr (pSrc, pStatistics), zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiGetHuffmanStatisticsOne_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pStatistics);

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_LOSSLESS_H */
