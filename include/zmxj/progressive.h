/* progressive.h - progressive JPEG block coding. */
#ifndef ZMXJ_PROGRESSIVE_H
#define ZMXJ_PROGRESSIVE_H

#include "huffman.h"
#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A block's share of one scan of a progressive picture (ITU-T T.81, Annex G). Arguments common to all are those of
 * huffman.h; the other ones are
 *
 *   Ss, Se   the first and last zig-zag position of the band, 1 to 63
 *   Al       the bit position of the successive approximation, 0 to 13
 *
 * The end-of-band run, and in refinement scans the correction bits behind it, live in the bit state from block to
 * block. */

/** Decodes the first scan of a DC coefficient. Nothing else of the block is touched.
 *
 *  \param pDst      in and out: 64 coefficients, kept by the caller from scan to scan
 *  \param pLastDC   in and out: the DC prediction, ahead of the shift by Al
 *  \param pDcTable  the table of DC symbols
 *  \return          zmxStsNullPtrErr (pSrc), zmxStsSizeErr (nSrcLen below 1), zmxStsNullPtrErr (pSrcCurrPos, pDst,
 *                   pLastDC, pMarker), zmxStsBadArgErr (Al), zmxStsNullPtrErr (pDcTable, pDecHuffState); then
 *                   zmxStsOutOfBufErr, zmxStsDCTRangeErr, zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos,
                                                              Zmx16s* pDst, Zmx16s* pLastDC, int* pMarker, int Al,
                                                              const ZmxiDecodeHuffmanSpec* pDcTable,
                                                              ZmxiDecodeHuffmanState* pDecHuffState);
/** Decodes a refinement scan of a DC coefficient: one bit, which sets bit Al of element 0 or leaves it.
 *
 *  \return  zmxStsNullPtrErr (pSrc), zmxStsSizeErr (nSrcLen below 1), zmxStsNullPtrErr (pSrcCurrPos, pDst, pMarker),
 *           zmxStsBadArgErr (Al), zmxStsNullPtrErr (pDecHuffState); then zmxStsOutOfBufErr, zmxStsDCTRangeErr, zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos,
                                                               Zmx16s* pDst, int* pMarker, int Al,
                                                               ZmxiDecodeHuffmanState* pDecHuffState);
/** Decodes the first scan of a band of AC coefficients: stores those that are not zero, and touches no other.
 *
 *  \param pDst      in and out: 64 coefficients. A damaged stream may write outside the band, not outside the block
 *  \param pAcTable  the table of AC symbols
 *  \return          zmxStsNullPtrErr (pSrc), zmxStsSizeErr (nSrcLen below 1), zmxStsNullPtrErr (pSrcCurrPos, pDst,
 *                   pMarker), zmxStsBadArgErr (Ss, Se, Al), zmxStsNullPtrErr (pAcTable, pDecHuffState); then
 *                   zmxStsOutOfBufErr, zmxStsDCTRangeErr, zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos,
                                                              Zmx16s* pDst, int* pMarker, int Ss, int Se, int Al,
                                                              const ZmxiDecodeHuffmanSpec* pAcTable,
                                                              ZmxiDecodeHuffmanState* pDecHuffState);
/** Decodes a refinement scan of a band of AC coefficients: corrects those that are not zero by one bit each, and stores
 *  new ones of magnitude 1 at bit Al. Arguments and statuses as the first scan. */
ZMXJ_API ZmxStatus zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos,
                                                               Zmx16s* pDst, int* pMarker, int Ss, int Se, int Al,
                                                               const ZmxiDecodeHuffmanSpec* pAcTable,
                                                               ZmxiDecodeHuffmanState* pDecHuffState);

/** Encodes the first scan of a DC coefficient, or flushes.
 *
 *  \param pSrc      64 coefficients in natural order, of which the first counts
 *  \param pLastDC   in and out: the DC prediction, behind the shift by Al
 *  \param pDcTable  the table of DC symbols
 *  \return          zmxStsNullPtrErr (pDst), zmxStsSizeErr (dstLenBytes below 1), zmxStsNullPtrErr (pDstCurrPos,
 *                   pEncHuffState); without bFlushState zmxStsNullPtrErr (pSrc, pLastDC), zmxStsBadArgErr (Al),
 *                   zmxStsNullPtrErr (pDcTable); then zmxStsOutOfBufErr, zmxStsDCTRangeErr (a category above 11),
 *                   zmxStsHuffTableErr, zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                              int* pDstCurrPos, Zmx16s* pLastDC, int Al,
                                                              const ZmxiEncodeHuffmanSpec* pDcTable,
                                                              ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);
/** Encodes a refinement scan of a DC coefficient, bit Al of its two's complement form; or flushes.
 *
 *  \return  zmxStsNullPtrErr (pDst), zmxStsSizeErr (dstLenBytes below 1), zmxStsNullPtrErr (pDstCurrPos, pEncHuffState);
 *           without bFlushState zmxStsNullPtrErr (pSrc), zmxStsBadArgErr (Al); then zmxStsOutOfBufErr, zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                               int* pDstCurrPos, int Al,
                                                               ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);
/** Encodes the first scan of a band of AC coefficients, magnitudes shifted right by Al; or flushes.
 *
 *  The end-of-band run is held back until a block with a coefficient, a run of 32767, or the flush.
 *
 *  \param pSrc      64 coefficients in natural order
 *  \param pAcTable  the table of AC symbols, which a flush needs as well
 *  \return          zmxStsNullPtrErr (pDst), zmxStsSizeErr (dstLenBytes below 1), zmxStsNullPtrErr (pDstCurrPos,
 *                   pAcTable, pEncHuffState); without bFlushState zmxStsNullPtrErr (pSrc), zmxStsBadArgErr (Ss, Se, Al);
 *                   then zmxStsOutOfBufErr, zmxStsDCTRangeErr (a category above 11, a run that has no symbol),
 *                   zmxStsHuffTableErr, zmxStsNoErr. A flush reports the write that fills the last byte
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                              int* pDstCurrPos, int Ss, int Se, int Al,
                                                              const ZmxiEncodeHuffmanSpec* pAcTable,
                                                              ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);
/** Encodes a refinement scan of a band of AC coefficients, or flushes. Arguments and statuses as the first scan, but a
 *  flush reports the run too. The correction bits of known coefficients are held back with the run that they follow, up
 *  to 937 of them at the end of a block. Where they could not be written and a caller goes on all the same, up to 1024
 *  are held; a block for whose bits there is no room then has them written first, or fails with the status of that. */
ZMXJ_API ZmxStatus zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                               int* pDstCurrPos, int Ss, int Se, int Al,
                                                               const ZmxiEncodeHuffmanSpec* pAcTable,
                                                               ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);

/** Counts the symbol of a DC coefficient in its first scan.
 *
 *  \param pSrc           64 coefficients, of which the first counts
 *  \param pDcStatistics  in and out: the count of each symbol; the caller clears it
 *  \param pLastDC        in and out: the DC prediction, behind the shift by Al
 *  \return               zmxStsNullPtrErr (pSrc, pDcStatistics, pLastDC), zmxStsBadArgErr (Al), zmxStsDCTRangeErr (a
 *                        category above 11), zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pDcStatistics,
                                                                   Zmx16s* pLastDC, int Al);
/** Counts the symbols of the first scan of a band of AC coefficients. The state holds the run, as in the encoder; the
 *  passes of counting and of writing each begin with a state of their own, and end with a flush.
 *
 *  \param pSrc           64 coefficients
 *  \param pAcStatistics  in and out: the count of each symbol; the caller clears it
 *  \param pEncHuffState  the bit writer, of which no bit is written
 *  \param bFlushState    not 0: the run is counted and the state initialised
 *  \return               zmxStsNullPtrErr (pAcStatistics, pEncHuffState); without bFlushState zmxStsNullPtrErr (pSrc),
 *                        zmxStsBadArgErr (Ss, Se, Al); then zmxStsDCTRangeErr (a category above 10, one less than the
 *                        encoder's limit; a run that has no symbol), zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pAcStatistics, int Ss,
                                                                   int Se, int Al,
                                                                   ZmxiEncodeHuffmanState* pEncHuffState,
                                                                   int bFlushState);
/** Counts the symbols of a refinement scan of a band of AC coefficients. Arguments and statuses as for the first scan,
 *  but no coefficient is out of range. */
ZMXJ_API ZmxStatus zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pAcStatistics, int Ss,
                                                                    int Se, int Al,
                                                                    ZmxiEncodeHuffmanState* pEncHuffState,
                                                                    int bFlushState);

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_PROGRESSIVE_H */
