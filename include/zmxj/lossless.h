/** \file
 *  lossless.h - lossless JPEG row coding.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_LOSSLESS_H
#define ZMXJ_LOSSLESS_H

#include "huffman.h"
#include "types.h"

/** \defgroup lossless Lossless rows (JPEG)
 *  Lossless JPEG (ITU-T T.81, Annex H): a predictor turns samples into differences, and each difference is a Huffman
 *  symbol with extra bits. Samples and differences are 16-bit values, and sums and differences of them are kept to 16 bits.
 *  The point transform of the samples is the caller's: shift them right by Pt first, and left afterwards.
 *
 *  The predictors, from Ra to the left, Rb above, Rc above Ra:
 *
 *  | predictor | prediction            |
 *  |-----------|-----------------------|
 *  | 1         | Ra                    |
 *  | 2         | Rb                    |
 *  | 3         | Rc                    |
 *  | 4         | Ra + Rb - Rc          |
 *  | 5         | Ra + ((Rb - Rc) >> 1) |
 *  | 6         | Rb + ((Ra - Rc) >> 1) |
 *  | 7         | (Ra + Rb) >> 1        |
 *
 *  Halved terms are those of signed 16-bit samples in 32 bits: with samples above 32767 the predictors 5 to 7 still bring
 *  everything back, but other decoders read such samples as unsigned. Take 1 to 4 for pictures of all 16 bits.
 *
 *  A decoder starts each picture and each restart interval with the first-row form. Tables and bit states are those of
 *  \ref huffman, and so are the rules on positions and markers. Everything runs on the calling thread.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Differences of the first row of a picture or restart interval.
 *
 *  The first sample is predicted by the middle of the range, 2 to the power of P - Pt - 1, each other sample by its
 *  left neighbour.
 *
 *  \par Buffers
 *  Rows aligned for 16-bit elements. pSrc and pDst do not overlap.
 *
 *  \param pSrc    nWidth samples
 *  \param pDst    nWidth differences
 *  \param nWidth  samples in the row, at least 1
 *  \param P       the precision of the samples, 2 to 16 bits
 *  \param Pt      the point transform, 0 or more; from P upward there is no meaningful middle (the exponent counts
 *                 modulo 32), which is not refused
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsSizeErr when nWidth is below 1; zmxStsBadArgErr when P
 *           is outside 2 to 16 or Pt is below 0; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDiffPredFirstRow_JPEG_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst, int nWidth, int P, int Pt);
/** Samples of the first row of a picture or restart interval from its differences.
 *
 *  The inverse of zmxiDiffPredFirstRow_JPEG_16s_C1().
 *
 *  \par Buffers
 *  Rows aligned for 16-bit elements. pSrc and pDst do not overlap.
 *
 *  \param pSrc    nWidth differences
 *  \param pDst    nWidth samples
 *  \param nWidth  samples in the row, at least 1
 *  \param P       the precision of the samples, 2 to 16 bits
 *  \param Pt      the point transform, 0 or more; from P upward there is no meaningful middle (the exponent counts
 *                 modulo 32), which is not refused
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsSizeErr when nWidth is below 1; zmxStsBadArgErr when P
 *           is outside 2 to 16 or Pt is below 0; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiReconstructPredFirstRow_JPEG_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst, int nWidth, int P, int Pt);

/** Differences of a later row to a prediction (ITU-T T.81, Table H.1).
 *
 *  The prediction of the first sample is pPrevRow[0], whatever the predictor; the others come from the table at the
 *  head of this page.
 *
 *  \par Buffers
 *  Rows aligned for 16-bit elements. pSrc, pPrevRow and pDst do not overlap.
 *
 *  \param pSrc       nWidth samples
 *  \param pPrevRow   nWidth samples of the row above
 *  \param pDst       nWidth differences
 *  \param nWidth     samples in the row, at least 1
 *  \param predictor  1 to 7
 *  \return  zmxStsNullPtrErr when pSrc, pPrevRow or pDst is null; zmxStsSizeErr when nWidth is below 1;
 *           zmxStsBadArgErr when predictor is outside 1 to 7; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDiffPredRow_JPEG_16s_C1(const Zmx16s* pSrc, const Zmx16s* pPrevRow, Zmx16s* pDst, int nWidth,
                                               int predictor);
/** Samples of a later row from its differences.
 *
 *  The inverse of zmxiDiffPredRow_JPEG_16s_C1().
 *
 *  \par Buffers
 *  Rows aligned for 16-bit elements. pSrc, pPrevRow and pDst do not overlap.
 *
 *  \param pSrc       nWidth differences
 *  \param pPrevRow   nWidth samples of the reconstructed row above
 *  \param pDst       nWidth samples
 *  \param nWidth     samples in the row, at least 1
 *  \param predictor  1 to 7
 *  \return  zmxStsNullPtrErr when pSrc, pPrevRow or pDst is null; zmxStsSizeErr when nWidth is below 1;
 *           zmxStsBadArgErr when predictor is outside 1 to 7; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiReconstructPredRow_JPEG_16s_C1(const Zmx16s* pSrc, const Zmx16s* pPrevRow, Zmx16s* pDst,
                                                      int nWidth, int predictor);

/** Decodes one difference (ITU-T T.81, H.2.2).
 *
 *  The symbol 16, or above, is -32768 and has no further bits.
 *
 *  \par Buffers
 *  The stream at any address; rows aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc           the start of the entropy-coded data
 *  \param nSrcLen        its length in bytes, at least 1
 *  \param pSrcCurrPos    in and out: the position in it, in bytes; the caller sets it to the first byte of the scan
 *                        (0, or behind the marker of a restart)
 *  \param pDst           out: one difference
 *  \param pMarker        in and out: 0 while no marker has been met, then its second byte, and the position stands
 *                        behind it; the caller sets it to 0 first, and again behind a marker
 *  \param pDecHuffTable  the table of the symbols
 *  \param pDecHuffState  the bit reader, initialised ahead of the scan and behind each restart marker
 *  \return  zmxStsNullPtrErr when pSrc is null; zmxStsSizeErr when nSrcLen is below 1; zmxStsNullPtrErr when
 *           pSrcCurrPos, pDst, pMarker, pDecHuffTable or pDecHuffState is null; zmxStsOutOfBufErr when the source
 *           ended before the bits needed; zmxStsDCTRangeErr when too few bits stand ahead of a marker, or the table
 *           does not hold a code; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanOne_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                                      int* pMarker, const ZmxiDecodeHuffmanSpec* pDecHuffTable,
                                                      ZmxiDecodeHuffmanState* pDecHuffState);
/** Decodes a row of differences, interleaved sample by sample over up to four planes.
 *
 *  A status of the data leaves the differences decoded so far. The symbol 16, or above, is -32768 and has no further
 *  bits.
 *
 *  \par Buffers
 *  The stream at any address; rows aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc            the start of the entropy-coded data
 *  \param nSrcLen         its length in bytes, at least 1
 *  \param pSrcCurrPos     in and out: the position in it, in bytes; the caller sets it to the first byte of the scan
 *                         (0, or behind the marker of a restart)
 *  \param pDstPlanes      nPlanes rows of nWidth differences
 *  \param nWidth          samples in a row, at least 1
 *  \param nPlanes         the number of planes, at least 1; those behind the fourth are neither coded nor looked at
 *  \param pMarker         in and out: 0 while no marker has been met, then its second byte, and the position stands
 *                         behind it; the caller sets it to 0 first, and again behind a marker
 *  \param pDecHuffTables  a table for each plane; they may be the same one
 *  \param pDecHuffState   the bit reader, initialised ahead of the scan and behind each restart marker
 *  \return  zmxStsNullPtrErr when pSrc is null; zmxStsSizeErr when nSrcLen is below 1; zmxStsNullPtrErr when
 *           pSrcCurrPos or pDstPlanes is null; zmxStsSizeErr when nWidth or nPlanes is below 1; zmxStsNullPtrErr
 *           when pMarker, pDecHuffTables, pDecHuffState or the row or the table of a plane is null;
 *           zmxStsOutOfBufErr when the source ended before the bits needed; zmxStsDCTRangeErr when too few bits
 *           stand ahead of a marker, or the table does not hold a code; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos,
                                                        Zmx16s* const pDstPlanes[4], int nWidth, int nPlanes,
                                                        int* pMarker,
                                                        const ZmxiDecodeHuffmanSpec* const pDecHuffTables[4],
                                                        ZmxiDecodeHuffmanState* pDecHuffState);

/** Encodes one difference (ITU-T T.81, H.1.2.2), or flushes.
 *
 *  Writes at most 8 bytes: 7 pending bits, a code of 16 and a value of 15, each byte perhaps followed by a stuffing
 *  zero.
 *
 *  \par Buffers
 *  The stream at any address; rows aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc           one difference; not looked at in a flush
 *  \param pDst           the start of the destination
 *  \param dstLenBytes    its length in bytes, at least 1
 *  \param pDstCurrPos    in and out: the position in it, in bytes; the caller sets it to where the scan begins
 *  \param pEncHuffTable  the table of the symbols; not looked at in a flush
 *  \param pEncHuffState  the bit writer, initialised ahead of the scan; a flush leaves it so
 *  \param bFlushState    not 0: nothing is coded; what is pending is written out, the last byte filled with
 *                        one-bits, and the state initialised
 *  \return  zmxStsNullPtrErr when pDst is null; zmxStsSizeErr when dstLenBytes is below 1; zmxStsNullPtrErr when
 *           pDstCurrPos or pEncHuffState is null; zmxStsNullPtrErr when bFlushState is 0 and pSrc or pEncHuffTable
 *           is null; zmxStsOutOfBufErr when the destination is full; zmxStsHuffTableErr when the table holds no code
 *           for a symbol; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanOne_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                      int* pDstCurrPos, const ZmxiEncodeHuffmanSpec* pEncHuffTable,
                                                      ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);
/** Encodes a row of differences, interleaved sample by sample over up to four planes; or flushes.
 *
 *  Writes at most 8 bytes a difference.
 *
 *  \par Buffers
 *  The stream at any address; rows aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrcPlanes      nPlanes rows of nWidth differences; not looked at in a flush
 *  \param nWidth          samples in a row, at least 1; not looked at in a flush
 *  \param nPlanes         the number of planes, at least 1; those behind the fourth are neither coded nor looked at
 *  \param pDst            the start of the destination
 *  \param dstLenBytes     its length in bytes, at least 1
 *  \param pDstCurrPos     in and out: the position in it, in bytes; the caller sets it to where the scan begins
 *  \param pEncHuffTables  a table for each plane; they may be the same one; not looked at in a flush
 *  \param pEncHuffState   the bit writer, initialised ahead of the scan; a flush leaves it so
 *  \param bFlushState     not 0: nothing is coded; what is pending is written out, the last byte filled with
 *                         one-bits, and the state initialised
 *  \return  zmxStsNullPtrErr when pDst is null; zmxStsSizeErr when dstLenBytes is below 1; zmxStsNullPtrErr when
 *           pDstCurrPos or pEncHuffState is null; zmxStsNullPtrErr when bFlushState is 0 and pSrcPlanes is null;
 *           zmxStsSizeErr when bFlushState is 0 and nWidth or nPlanes is below 1; zmxStsNullPtrErr when bFlushState
 *           is 0 and pEncHuffTables, or the row or the table of a plane, is null; zmxStsOutOfBufErr when the
 *           destination is full; zmxStsHuffTableErr when the table holds no code for a symbol; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(const Zmx16s* const pSrcPlanes[4], int nWidth, int nPlanes,
                                                        Zmx8u* pDst, int dstLenBytes, int* pDstCurrPos,
                                                        const ZmxiEncodeHuffmanSpec* const pEncHuffTables[4],
                                                        ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);

/** Counts the symbol of one difference, for zmxiEncodeHuffmanRawTableInit_JPEG_8u().
 *
 *  \par Buffers
 *  The difference aligned for 16-bit elements, the counts for 32-bit words. They do not overlap.
 *
 *  \param pSrc         one difference
 *  \param pStatistics  in and out: the count of each symbol, 0 to 16; the caller clears it ahead of the first, and
 *                      makes it 257 entries long when it goes to the optimal table (which takes it as `const
 *                      Zmx32s*`: cast it)
 *  \return  zmxStsNullPtrErr when pSrc or pStatistics is null; zmxStsRangeErr when the category exceeds 16, which no
 *           16-bit difference does; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiGetHuffmanStatisticsOne_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pStatistics);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_LOSSLESS_H */
