/** \file
 *  progressive.h - progressive JPEG block coding.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_PROGRESSIVE_H
#define ZMXJ_PROGRESSIVE_H

#include "huffman.h"
#include "types.h"

/** \defgroup progressive Progressive blocks (JPEG)
 *  A block's share of one scan of a progressive picture (ITU-T T.81, Annex G). The end-of-band run, and in refinement scans
 *  the correction bits behind it, live in the bit state from block to block. Tables and bit states are those of
 *  \ref huffman, and so are the rules on first values, positions and markers. Everything runs on the calling thread.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Decodes the first scan of a DC coefficient. Nothing else of the block is touched.
 *
 *  \par Buffers
 *  The stream at any address; the block aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc           the start of the entropy-coded data
 *  \param nSrcLen        its length in bytes, at least 1
 *  \param pSrcCurrPos    in and out: the position in it, in bytes; the caller sets it to the first byte of the scan
 *                        (0, or behind the marker of a restart)
 *  \param pDst           in and out: 64 coefficients, kept by the caller from scan to scan and zero ahead of the
 *                        first
 *  \param pLastDC        in and out: the DC prediction, ahead of the shift by Al; the caller sets it to 0 ahead of
 *                        the scan and behind each restart marker
 *  \param pMarker        in and out: 0 while no marker has been met, then its second byte, and the position stands
 *                        behind it; the caller sets it to 0 first, and again behind a marker
 *  \param Al             the bit position of the successive approximation, 0 to 13
 *  \param pDcTable       the table of DC symbols
 *  \param pDecHuffState  the bit reader, initialised ahead of the scan and behind each restart marker
 *  \return  zmxStsNullPtrErr when pSrc is null; zmxStsSizeErr when nSrcLen is below 1; zmxStsNullPtrErr when
 *           pSrcCurrPos, pDst, pLastDC or pMarker is null; zmxStsBadArgErr when Al is outside 0 to 13;
 *           zmxStsNullPtrErr when pDcTable or pDecHuffState is null; zmxStsOutOfBufErr when the source ended before
 *           the bits needed; zmxStsDCTRangeErr when too few bits stand ahead of a marker, or the table does not hold
 *           a code; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos,
                                                              Zmx16s* pDst, Zmx16s* pLastDC, int* pMarker, int Al,
                                                              const ZmxiDecodeHuffmanSpec* pDcTable,
                                                              ZmxiDecodeHuffmanState* pDecHuffState);
/** Decodes a refinement scan of a DC coefficient: one bit, which sets bit Al of element 0 or leaves it.
 *
 *  \par Buffers
 *  The stream at any address; the block aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc           the start of the entropy-coded data
 *  \param nSrcLen        its length in bytes, at least 1
 *  \param pSrcCurrPos    in and out: the position in it, in bytes; the caller sets it to the first byte of the scan
 *                        (0, or behind the marker of a restart)
 *  \param pDst           in and out: 64 coefficients, of which the first counts
 *  \param pMarker        in and out: 0 while no marker has been met, then its second byte, and the position stands
 *                        behind it; the caller sets it to 0 first, and again behind a marker
 *  \param Al             the bit position of the successive approximation, 0 to 13
 *  \param pDecHuffState  the bit reader, initialised ahead of the scan and behind each restart marker
 *  \return  zmxStsNullPtrErr when pSrc is null; zmxStsSizeErr when nSrcLen is below 1; zmxStsNullPtrErr when
 *           pSrcCurrPos, pDst or pMarker is null; zmxStsBadArgErr when Al is outside 0 to 13; zmxStsNullPtrErr when
 *           pDecHuffState is null; zmxStsOutOfBufErr when the source ended before the bits needed; zmxStsDCTRangeErr
 *           when no bit stands ahead of a marker; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos,
                                                               Zmx16s* pDst, int* pMarker, int Al,
                                                               ZmxiDecodeHuffmanState* pDecHuffState);
/** Decodes the first scan of a band of AC coefficients: stores those that are not zero, and touches no other.
 *
 *  A damaged stream may write outside the band, not outside the block. A block inside an end-of-band run reads no
 *  bit.
 *
 *  \par Buffers
 *  The stream at any address; the block aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc           the start of the entropy-coded data
 *  \param nSrcLen        its length in bytes, at least 1
 *  \param pSrcCurrPos    in and out: the position in it, in bytes; the caller sets it to the first byte of the scan
 *                        (0, or behind the marker of a restart)
 *  \param pDst           in and out: 64 coefficients, kept by the caller from scan to scan and zero ahead of the
 *                        first
 *  \param pMarker        in and out: 0 while no marker has been met, then its second byte, and the position stands
 *                        behind it; the caller sets it to 0 first, and again behind a marker
 *  \param Ss             the first zig-zag position of the band, 1 to 63
 *  \param Se             the last zig-zag position of the band, Ss to 63
 *  \param Al             the bit position of the successive approximation, 0 to 13
 *  \param pAcTable       the table of AC symbols
 *  \param pDecHuffState  the bit reader, initialised ahead of the scan and behind each restart marker
 *  \return  zmxStsNullPtrErr when pSrc is null; zmxStsSizeErr when nSrcLen is below 1; zmxStsNullPtrErr when
 *           pSrcCurrPos, pDst or pMarker is null; zmxStsBadArgErr when Ss is outside 1 to 63, Se outside Ss to 63,
 *           or Al outside 0 to 13; zmxStsNullPtrErr when pAcTable or pDecHuffState is null; zmxStsOutOfBufErr when
 *           the source ended before the bits needed; zmxStsDCTRangeErr when too few bits stand ahead of a marker, or
 *           the table does not hold a code; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos,
                                                              Zmx16s* pDst, int* pMarker, int Ss, int Se, int Al,
                                                              const ZmxiDecodeHuffmanSpec* pAcTable,
                                                              ZmxiDecodeHuffmanState* pDecHuffState);
/** Decodes a refinement scan of a band of AC coefficients: corrects those that are not zero by one bit each, and
 *  stores new ones of magnitude 1 at bit Al.
 *
 *  A damaged stream may write outside the band, not outside the block. A status of the data leaves some coefficients
 *  corrected: a repeated call needs a copy of the block.
 *
 *  \par Buffers
 *  The stream at any address; the block aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc           the start of the entropy-coded data
 *  \param nSrcLen        its length in bytes, at least 1
 *  \param pSrcCurrPos    in and out: the position in it, in bytes; the caller sets it to the first byte of the scan
 *                        (0, or behind the marker of a restart)
 *  \param pDst           in and out: 64 coefficients, kept by the caller from scan to scan and zero ahead of the
 *                        first
 *  \param pMarker        in and out: 0 while no marker has been met, then its second byte, and the position stands
 *                        behind it; the caller sets it to 0 first, and again behind a marker
 *  \param Ss             the first zig-zag position of the band, 1 to 63
 *  \param Se             the last zig-zag position of the band, Ss to 63
 *  \param Al             the bit position of the successive approximation, 0 to 13
 *  \param pAcTable       the table of AC symbols
 *  \param pDecHuffState  the bit reader, initialised ahead of the scan and behind each restart marker
 *  \return  zmxStsNullPtrErr when pSrc is null; zmxStsSizeErr when nSrcLen is below 1; zmxStsNullPtrErr when
 *           pSrcCurrPos, pDst or pMarker is null; zmxStsBadArgErr when Ss is outside 1 to 63, Se outside Ss to 63,
 *           or Al outside 0 to 13; zmxStsNullPtrErr when pAcTable or pDecHuffState is null; zmxStsOutOfBufErr when
 *           the source ended before the bits needed; zmxStsDCTRangeErr when too few bits stand ahead of a marker, or
 *           the table does not hold a code; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos,
                                                               Zmx16s* pDst, int* pMarker, int Ss, int Se, int Al,
                                                               const ZmxiDecodeHuffmanSpec* pAcTable,
                                                               ZmxiDecodeHuffmanState* pDecHuffState);

/** Encodes the first scan of a DC coefficient, or flushes.
 *
 *  Writes at most 8 bytes, 2 in a flush.
 *
 *  \par Buffers
 *  The stream at any address; the block aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc           64 coefficients in natural order, of which the first counts; not looked at in a flush
 *  \param pDst           the start of the destination
 *  \param dstLenBytes    its length in bytes, at least 1
 *  \param pDstCurrPos    in and out: the position in it, in bytes; the caller sets it to where the scan begins
 *  \param pLastDC        in and out: the DC prediction, behind the shift by Al; the caller sets it to 0 ahead of the
 *                        scan and behind each restart marker; not looked at in a flush
 *  \param Al             the bit position of the successive approximation, 0 to 13
 *  \param pDcTable       the table of DC symbols; not looked at in a flush
 *  \param pEncHuffState  the bit writer, initialised ahead of the scan; a flush leaves it so
 *  \param bFlushState    not 0: nothing is coded; what is pending is written out, the last byte filled with
 *                        one-bits, and the state initialised
 *  \return  zmxStsNullPtrErr when pDst is null; zmxStsSizeErr when dstLenBytes is below 1; zmxStsNullPtrErr when
 *           pDstCurrPos or pEncHuffState is null; zmxStsNullPtrErr when bFlushState is 0 and pSrc or pLastDC is
 *           null; zmxStsBadArgErr when bFlushState is 0 and Al is outside 0 to 13; zmxStsNullPtrErr when bFlushState
 *           is 0 and pDcTable is null; zmxStsOutOfBufErr when the destination is full; zmxStsDCTRangeErr when the
 *           category is above 11; zmxStsHuffTableErr when the table holds no code for a symbol; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                              int* pDstCurrPos, Zmx16s* pLastDC, int Al,
                                                              const ZmxiEncodeHuffmanSpec* pDcTable,
                                                              ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);
/** Encodes a refinement scan of a DC coefficient, bit Al of its two's complement form; or flushes.
 *
 *  Writes at most 2 bytes.
 *
 *  \par Buffers
 *  The stream at any address; the block aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc           64 coefficients in natural order, of which the first counts; not looked at in a flush
 *  \param pDst           the start of the destination
 *  \param dstLenBytes    its length in bytes, at least 1
 *  \param pDstCurrPos    in and out: the position in it, in bytes; the caller sets it to where the scan begins
 *  \param Al             the bit position of the successive approximation, 0 to 13
 *  \param pEncHuffState  the bit writer, initialised ahead of the scan; a flush leaves it so
 *  \param bFlushState    not 0: nothing is coded; what is pending is written out, the last byte filled with
 *                        one-bits, and the state initialised
 *  \return  zmxStsNullPtrErr when pDst is null; zmxStsSizeErr when dstLenBytes is below 1; zmxStsNullPtrErr when
 *           pDstCurrPos or pEncHuffState is null; zmxStsNullPtrErr when bFlushState is 0 and pSrc is null;
 *           zmxStsBadArgErr when bFlushState is 0 and Al is outside 0 to 13; zmxStsOutOfBufErr when the destination
 *           is full; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                               int* pDstCurrPos, int Al,
                                                               ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);
/** Encodes the first scan of a band of AC coefficients, magnitudes shifted right by Al; or flushes.
 *
 *  The end-of-band run is held back until a block with a coefficient, a run of 32767, or the flush. A call writes at
 *  most 450 bytes. A flush answers with the status of the write that fills the last byte.
 *
 *  \par Buffers
 *  The stream at any address; the block aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc           64 coefficients in natural order; not looked at in a flush
 *  \param pDst           the start of the destination
 *  \param dstLenBytes    its length in bytes, at least 1
 *  \param pDstCurrPos    in and out: the position in it, in bytes; the caller sets it to where the scan begins
 *  \param Ss             the first zig-zag position of the band, 1 to 63
 *  \param Se             the last zig-zag position of the band, Ss to 63
 *  \param Al             the bit position of the successive approximation, 0 to 13
 *  \param pAcTable       the table of AC symbols, which a flush needs as well
 *  \param pEncHuffState  the bit writer, initialised ahead of the scan; a flush leaves it so
 *  \param bFlushState    not 0: nothing is coded; what is pending is written out, the last byte filled with
 *                        one-bits, and the state initialised
 *  \return  zmxStsNullPtrErr when pDst is null; zmxStsSizeErr when dstLenBytes is below 1; zmxStsNullPtrErr when
 *           pDstCurrPos, pAcTable or pEncHuffState is null; zmxStsNullPtrErr when bFlushState is 0 and pSrc is null;
 *           zmxStsBadArgErr when bFlushState is 0 and Ss is outside 1 to 63, Se outside Ss to 63, or Al outside 0 to
 *           13; zmxStsOutOfBufErr when the destination is full; zmxStsDCTRangeErr when a category is above 11, or a
 *           run has no symbol; zmxStsHuffTableErr when the table holds no code for a symbol; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                              int* pDstCurrPos, int Ss, int Se, int Al,
                                                              const ZmxiEncodeHuffmanSpec* pAcTable,
                                                              ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);
/** Encodes a refinement scan of a band of AC coefficients, or flushes.
 *
 *  The correction bits of known coefficients are held back with the run that they follow, up to 937 of them at the
 *  end of a block. Where they could not be written and a caller goes on all the same, up to 1024 are held; a block
 *  for whose bits there is no room then has them written first, or fails with the status of that. A call writes at
 *  most 600 bytes. A flush answers for the run too.
 *
 *  \par Buffers
 *  The stream at any address; the block aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc           64 coefficients in natural order; not looked at in a flush
 *  \param pDst           the start of the destination
 *  \param dstLenBytes    its length in bytes, at least 1
 *  \param pDstCurrPos    in and out: the position in it, in bytes; the caller sets it to where the scan begins
 *  \param Ss             the first zig-zag position of the band, 1 to 63
 *  \param Se             the last zig-zag position of the band, Ss to 63
 *  \param Al             the bit position of the successive approximation, 0 to 13
 *  \param pAcTable       the table of AC symbols, which a flush needs as well
 *  \param pEncHuffState  the bit writer, initialised ahead of the scan; a flush leaves it so
 *  \param bFlushState    not 0: nothing is coded; what is pending is written out, the last byte filled with
 *                        one-bits, and the state initialised
 *  \return  zmxStsNullPtrErr when pDst is null; zmxStsSizeErr when dstLenBytes is below 1; zmxStsNullPtrErr when
 *           pDstCurrPos, pAcTable or pEncHuffState is null; zmxStsNullPtrErr when bFlushState is 0 and pSrc is null;
 *           zmxStsBadArgErr when bFlushState is 0 and Ss is outside 1 to 63, Se outside Ss to 63, or Al outside 0 to
 *           13; zmxStsOutOfBufErr when the destination is full; zmxStsDCTRangeErr when a run has no symbol;
 *           zmxStsHuffTableErr when the table holds no code for a symbol; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                               int* pDstCurrPos, int Ss, int Se, int Al,
                                                               const ZmxiEncodeHuffmanSpec* pAcTable,
                                                               ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);

/** Counts the symbol of a DC coefficient in its first scan.
 *
 *  \par Buffers
 *  The block aligned for 16-bit elements, counts and state for 32-bit words. Nothing overlaps.
 *
 *  \param pSrc           64 coefficients in natural order, of which the first counts
 *  \param pDcStatistics  in and out: the count of each symbol, 0 to 11; the caller clears it ahead of the first
 *                        block, and makes it 257 entries long when it goes to
 *                        zmxiEncodeHuffmanRawTableInit_JPEG_8u() (which takes it as `const Zmx32s*`: cast it)
 *  \param pLastDC        in and out: the DC prediction, behind the shift by Al; the caller sets it to 0 ahead of the
 *                        scan and behind each restart marker
 *  \param Al             the bit position of the successive approximation, 0 to 13
 *  \return  zmxStsNullPtrErr when pSrc, pDcStatistics or pLastDC is null; zmxStsBadArgErr when Al is outside 0 to
 *           13; zmxStsDCTRangeErr when the category is above 11; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pDcStatistics,
                                                                   Zmx16s* pLastDC, int Al);
/** Counts the symbols of the first scan of a band of AC coefficients.
 *
 *  Categories end at 10 here, one less than in the encoder.
 *
 *  \par Buffers
 *  The block aligned for 16-bit elements, counts and state for 32-bit words. Nothing overlaps.
 *
 *  \param pSrc           64 coefficients in natural order; not looked at in a flush
 *  \param pAcStatistics  in and out: the count of each symbol, 0 to 255; the caller clears it ahead of the first
 *                        block, and makes it 257 entries long when it goes to
 *                        zmxiEncodeHuffmanRawTableInit_JPEG_8u() (which takes it as `const Zmx32s*`: cast it)
 *  \param Ss             the first zig-zag position of the band, 1 to 63
 *  \param Se             the last zig-zag position of the band, Ss to 63
 *  \param Al             the bit position of the successive approximation, 0 to 13
 *  \param pEncHuffState  a bit writer, of which no bit is written: it holds the run as in the encoder. The passes of
 *                        counting and of writing each begin with an initialised state
 *  \param bFlushState    not 0: the run is counted and the state initialised; both passes end with that
 *  \return  zmxStsNullPtrErr when pAcStatistics or pEncHuffState is null; zmxStsNullPtrErr when bFlushState is 0 and
 *           pSrc is null; zmxStsBadArgErr when bFlushState is 0 and Ss is outside 1 to 63, Se outside Ss to 63, or
 *           Al outside 0 to 13; zmxStsDCTRangeErr when a category is above 10, or a run has no symbol; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pAcStatistics, int Ss,
                                                                   int Se, int Al,
                                                                   ZmxiEncodeHuffmanState* pEncHuffState,
                                                                   int bFlushState);
/** Counts the symbols of a refinement scan of a band of AC coefficients.
 *
 *  No coefficient is out of range.
 *
 *  \par Buffers
 *  The block aligned for 16-bit elements, counts and state for 32-bit words. Nothing overlaps.
 *
 *  \param pSrc           64 coefficients in natural order; not looked at in a flush
 *  \param pAcStatistics  in and out: the count of each symbol, 0 to 255; the caller clears it ahead of the first
 *                        block, and makes it 257 entries long when it goes to
 *                        zmxiEncodeHuffmanRawTableInit_JPEG_8u() (which takes it as `const Zmx32s*`: cast it)
 *  \param Ss             the first zig-zag position of the band, 1 to 63
 *  \param Se             the last zig-zag position of the band, Ss to 63
 *  \param Al             the bit position of the successive approximation, 0 to 13
 *  \param pEncHuffState  a bit writer, of which no bit is written: it holds the run as in the encoder. The passes of
 *                        counting and of writing each begin with an initialised state
 *  \param bFlushState    not 0: the run is counted and the state initialised; both passes end with that
 *  \return  zmxStsNullPtrErr when pAcStatistics or pEncHuffState is null; zmxStsNullPtrErr when bFlushState is 0 and
 *           pSrc is null; zmxStsBadArgErr when bFlushState is 0 and Ss is outside 1 to 63, Se outside Ss to 63, or
 *           Al outside 0 to 13; zmxStsDCTRangeErr when a run has no symbol; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pAcStatistics, int Ss,
                                                                    int Se, int Al,
                                                                    ZmxiEncodeHuffmanState* pEncHuffState,
                                                                    int bFlushState);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_PROGRESSIVE_H */
