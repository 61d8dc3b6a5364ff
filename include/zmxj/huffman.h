/** \file
 *  huffman.h - JPEG Huffman tables, bit states and sequential block coding.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_HUFFMAN_H
#define ZMXJ_HUFFMAN_H

#include "types.h"

/** \defgroup huffman Huffman tables, bit states and sequential blocks (JPEG)
 *  Tables and bit states are opaque blocks, aligned for 32-bit words. Either the caller provides the memory that GetBufSize
 *  reports and calls Init, or InitAlloc takes the memory and Free gives it back. A table is read-only once built and may be
 *  shared among threads. A bit state serves one stream: initialise it before a scan and after each restart marker.
 *
 *  Entropy-coded data (ITU-T T.81, B.1.1.5): a data byte 0xFF stands in the stream as 0xFF 0x00; a marker is 0xFF, more
 *  0xFF as fill, and its code, which the decoders hand back without parsing anything behind it.
 *
 *  **First values.** Ahead of a scan the caller sets the position to its first byte, `*pMarker` and each `*pLastDC` to 0,
 *  and initialises the bit state. Behind a restart marker it sets `*pMarker` and each `*pLastDC` to 0, and initialises the
 *  bit state again; the position already stands right.
 *
 *  **Where the position stands.** A reader runs ahead: up to four bytes behind the last bit used may sit in the state, and
 *  the position is behind them. Once `*pMarker` is not 0, the position stands on the byte behind that marker, whether its
 *  turn has come or not: no byte is read while it is not 0, and the bits that are held still serve. All blocks of a restart
 *  interval that are undamaged therefore decode before the marker counts.
 *
 *  **What can be resumed.** zmxStsOutOfBufErr is not a pause: bits that were taken ahead of it are used up. To decode
 *  data that arrive in pieces, keep a copy of the bit state, the position, the predictions and (in progressive refinement)
 *  the block ahead of each call, put them back when it answers zmxStsOutOfBufErr, and call again with more data. In the same
 *  way an encoder: bytes of the failed call stay in the destination, and a call repeated with a copy of the state, the
 *  position and the predictions writes them again. zmxStsDCTRangeErr, zmxStsErr and zmxStsHuffTableErr are final for the
 *  restart interval: look for the next restart marker, and begin with first values there.
 *
 *  A status of the coding itself leaves what was read, written and stored up to there. Everything runs on the calling
 *  thread.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** \struct ZmxiDecodeHuffmanSpec
 *  A Huffman table in the form that decoders use. Its contents are the library's.
 */
typedef struct ZmxiDecodeHuffmanSpec ZmxiDecodeHuffmanSpec;
/** \struct ZmxiEncodeHuffmanSpec
 *  A Huffman table in the form that encoders use. Its contents are the library's.
 */
typedef struct ZmxiEncodeHuffmanSpec ZmxiEncodeHuffmanSpec;
/** \struct ZmxiDecodeHuffmanState
 *  A bit reader: bits taken from the stream and not yet used, and the end-of-band run of a progressive scan. Its
 *  contents are the library's.
 */
typedef struct ZmxiDecodeHuffmanState ZmxiDecodeHuffmanState;
/** \struct ZmxiEncodeHuffmanState
 *  A bit writer: pending bits, and the end-of-band run and correction bits of a progressive scan. Its contents are
 *  the library's.
 */
typedef struct ZmxiEncodeHuffmanState ZmxiEncodeHuffmanState;

/** Tells the size of a decoder table.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param pSize  out: the size in bytes, the same on every call of one library; it may differ in another
 *  \return  zmxStsNullPtrErr when pSize is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u(int* pSize);
/** Builds a decoder table from the lists of a DHT segment (ITU-T T.81, B.2.4.2 and Annex C).
 *
 *  A code of all ones, which the standard reserves, is accepted.
 *
 *  \par Buffers
 *  The two lists are at any address and are not kept. The table is aligned for 32-bit words.
 *
 *  \param pListBits     BITS: 16 counts; entry i is the number of codes of length i + 1
 *  \param pListVals     HUFFVAL: as many symbols as there are codes, in the order of the codes, at most 256
 *  \param pDecHuffSpec  out: the table, in memory of the size that zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u() tells
 *  \return  zmxStsNullPtrErr when pListBits, pListVals or pDecHuffSpec is null; zmxStsHuffTableErr when there are
 *           more than 256 codes, or more codes of up to 8 bits than there is room for (the table is then not to be
 *           used); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanSpecInit_JPEG_8u(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                                     ZmxiDecodeHuffmanSpec* pDecHuffSpec);
/** Allocates a decoder table and builds it from the lists of a DHT segment.
 *
 *  The table is stored in *ppDecHuffSpec whether it could be built or not; zmxiDecodeHuffmanSpecFree_JPEG_8u() gives
 *  it back.
 *
 *  \par Buffers
 *  The two lists are at any address and are not kept.
 *
 *  \param pListBits      BITS: 16 counts; entry i is the number of codes of length i + 1
 *  \param pListVals      HUFFVAL: as many symbols as there are codes, in the order of the codes, at most 256
 *  \param ppDecHuffSpec  out: the table; left as it was when there is no memory
 *  \return  zmxStsNullPtrErr when pListBits, pListVals or ppDecHuffSpec is null, or there is no memory;
 *           zmxStsHuffTableErr when there are more than 256 codes, or more codes of up to 8 bits than there is room
 *           for (the table is then not to be used); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                                          ZmxiDecodeHuffmanSpec** ppDecHuffSpec);
/** Gives back a decoder table that InitAlloc took.
 *
 *  \par Buffers
 *  The block is not to be used afterwards.
 *
 *  \param pDecHuffSpec  what InitAlloc stored; not memory of the caller
 *  \return  zmxStsNullPtrErr when pDecHuffSpec is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanSpecFree_JPEG_8u(ZmxiDecodeHuffmanSpec* pDecHuffSpec);

/** Tells the size of a bit reader.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param pSize  out: the size in bytes, the same on every call of one library; it may differ in another
 *  \return  zmxStsNullPtrErr when pSize is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanStateGetBufSize_JPEG_8u(int* pSize);
/** Initialises a bit reader: no bits held, no end-of-band run.
 *
 *  \par Buffers
 *  Memory of the caller is aligned for 32-bit words.
 *
 *  \param pDecHuffState  out: memory of the size that zmxiDecodeHuffmanStateGetBufSize_JPEG_8u() tells
 *  \return  zmxStsNullPtrErr when pDecHuffState is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanStateInit_JPEG_8u(ZmxiDecodeHuffmanState* pDecHuffState);
/** Allocates a bit reader and initialises it.
 *
 *  zmxiDecodeHuffmanStateFree_JPEG_8u() gives it back.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param ppDecHuffState  out: the state; left as it was when there is no memory
 *  \return  zmxStsNullPtrErr when ppDecHuffState is null, or there is no memory; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanStateInitAlloc_JPEG_8u(ZmxiDecodeHuffmanState** ppDecHuffState);
/** Gives back a bit reader that InitAlloc took.
 *
 *  \par Buffers
 *  The block is not to be used afterwards.
 *
 *  \param pDecHuffState  what InitAlloc stored; not memory of the caller
 *  \return  zmxStsNullPtrErr when pDecHuffState is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanStateFree_JPEG_8u(ZmxiDecodeHuffmanState* pDecHuffState);

/** Tells the size of an encoder table.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param pSize  out: the size in bytes, the same on every call of one library; it may differ in another
 *  \return  zmxStsNullPtrErr when pSize is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanSpecGetBufSize_JPEG_8u(int* pSize);
/** Builds an encoder table from the lists of a DHT segment (ITU-T T.81, Annex C).
 *
 *  Of a symbol listed twice the last code stands.
 *
 *  \par Buffers
 *  The two lists are at any address and are not kept. The table is aligned for 32-bit words.
 *
 *  \param pListBits     BITS: 16 counts; entry i is the number of codes of length i + 1
 *  \param pListVals     HUFFVAL: as many symbols as there are codes, in the order of the codes, at most 256
 *  \param pEncHuffSpec  out: the table, in memory of the size that zmxiEncodeHuffmanSpecGetBufSize_JPEG_8u() tells
 *  \return  zmxStsNullPtrErr when pListBits, pListVals or pEncHuffSpec is null; zmxStsHuffTableErr when there are
 *           more than 256 codes, or codes reach all ones of their length: stricter than the decoder's table (the
 *           table is then not to be used); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanSpecInit_JPEG_8u(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                                     ZmxiEncodeHuffmanSpec* pEncHuffSpec);
/** Allocates an encoder table and builds it from the lists of a DHT segment.
 *
 *  The table is stored in *ppEncHuffSpec whether it could be built or not; zmxiEncodeHuffmanSpecFree_JPEG_8u() gives
 *  it back.
 *
 *  \par Buffers
 *  The two lists are at any address and are not kept.
 *
 *  \param pListBits      BITS: 16 counts; entry i is the number of codes of length i + 1
 *  \param pListVals      HUFFVAL: as many symbols as there are codes, in the order of the codes, at most 256
 *  \param ppEncHuffSpec  out: the table; left as it was when there is no memory
 *  \return  zmxStsNullPtrErr when pListBits, pListVals or ppEncHuffSpec is null, or there is no memory;
 *           zmxStsHuffTableErr when there are more than 256 codes, or codes reach all ones of their length: stricter
 *           than the decoder's table (the table is then not to be used); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                                          ZmxiEncodeHuffmanSpec** ppEncHuffSpec);
/** Gives back an encoder table that InitAlloc took.
 *
 *  \par Buffers
 *  The block is not to be used afterwards.
 *
 *  \param pEncHuffSpec  what InitAlloc stored; not memory of the caller
 *  \return  zmxStsNullPtrErr when pEncHuffSpec is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanSpecFree_JPEG_8u(ZmxiEncodeHuffmanSpec* pEncHuffSpec);

/** Tells the size of a bit writer.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param pSize  out: the size in bytes, the same on every call of one library; it may differ in another
 *  \return  zmxStsNullPtrErr when pSize is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanStateGetBufSize_JPEG_8u(int* pSize);
/** Initialises a bit writer: no bits pending, no end-of-band run, no correction bits.
 *
 *  \par Buffers
 *  Memory of the caller is aligned for 32-bit words.
 *
 *  \param pEncHuffState  out: memory of the size that zmxiEncodeHuffmanStateGetBufSize_JPEG_8u() tells
 *  \return  zmxStsNullPtrErr when pEncHuffState is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanStateInit_JPEG_8u(ZmxiEncodeHuffmanState* pEncHuffState);
/** Allocates a bit writer and initialises it.
 *
 *  zmxiEncodeHuffmanStateFree_JPEG_8u() gives it back.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param ppEncHuffState  out: the state; left as it was when there is no memory
 *  \return  zmxStsNullPtrErr when ppEncHuffState is null, or there is no memory; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(ZmxiEncodeHuffmanState** ppEncHuffState);
/** Gives back a bit writer that InitAlloc took.
 *
 *  \par Buffers
 *  The block is not to be used afterwards.
 *
 *  \param pEncHuffState  what InitAlloc stored; not memory of the caller
 *  \return  zmxStsNullPtrErr when pEncHuffState is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanStateFree_JPEG_8u(ZmxiEncodeHuffmanState* pEncHuffState);

/** Makes the lists of an optimal table from symbol frequencies (ITU-T T.81, K.2): no code longer than 16 bits, none
 *  of all ones.
 *
 *  The lists go into a DHT segment and into the two Init functions as they are.
 *
 *  Frequencies are counts from 0 to 1000000000. A symbol is looked at only while its frequency, or the sum of those
 *  that were joined to it, is at most 1000000000: let all counts together stay at or below that, or halve them
 *  (rounding up, so that none becomes 0). Very uneven frequencies, as in the Fibonacci sequence, give codes longer
 *  than 32 bits ahead of limiting, which is an error.
 *
 *  \par Buffers
 *  Frequencies aligned for 32-bit words, lists at any address. Nothing overlaps.
 *
 *  \param pStatistics  257 frequencies, of which the last is not looked at: it stands for the reserved symbol. The
 *                      counting functions take their array as `Zmx32u*`: cast the pointer, the bits are the same
 *  \param pListBits    out: BITS, 16 counts
 *  \param pListVals    out: HUFFVAL, up to 256 symbols, as many as have a frequency other than 0; let it be 256 long
 *  \return  zmxStsNullPtrErr when pStatistics, pListBits or pListVals is null; zmxStsHuffTableErr when a code is
 *           longer than 32 bits ahead of limiting; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanRawTableInit_JPEG_8u(const Zmx32s* pStatistics, Zmx8u* pListBits, Zmx8u* pListVals);

/** Decodes a block of a sequential scan (ITU-T T.81, F.2.2).
 *
 *  \par Buffers
 *  The stream at any address; the block aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc           the start of the entropy-coded data
 *  \param nSrcLen        its length in bytes; 0 is legal
 *  \param pSrcCurrPos    in and out: the position in it, in bytes; the caller sets it to the first byte of the scan
 *                        (0, or behind the marker of a restart)
 *  \param pDst           out: 64 coefficients in natural order, all of them written
 *  \param pLastDC        in and out: the DC prediction of the component; the caller sets it to 0 ahead of the scan
 *                        and behind each restart marker
 *  \param pMarker        in and out: 0 while no marker has been met, then its second byte, and the position stands
 *                        behind it; the caller sets it to 0 first, and again behind a marker
 *  \param pDcTable       the table of DC symbols
 *  \param pAcTable       the table of AC symbols; it may be pDcTable
 *  \param pDecHuffState  the bit reader, initialised ahead of the scan and behind each restart marker
 *  \return  zmxStsNullPtrErr when pSrc is null; zmxStsBadArgErr when nSrcLen is below 0; zmxStsNullPtrErr when
 *           pSrcCurrPos, pDst, pLastDC, pMarker, pDcTable, pAcTable or pDecHuffState is null; zmxStsOutOfBufErr when
 *           the source ended before the bits needed; zmxStsDCTRangeErr when too few bits stand ahead of a marker, or
 *           the table does not hold a code; zmxStsErr when a run ends more than 8 positions behind the block (up to
 *           there it ends on element 63); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffman8x8_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                                      Zmx16s* pLastDC, int* pMarker,
                                                      const ZmxiDecodeHuffmanSpec* pDcTable,
                                                      const ZmxiDecodeHuffmanSpec* pAcTable,
                                                      ZmxiDecodeHuffmanState* pDecHuffState);
/** Decodes a block of a sequential scan that ends in a marker, without a test for the end of the source.
 *
 *  The marker may be looked at well before its turn, nothing behind it ever is. When the bits run out at a marker in
 *  front of a code, the status is zmxStsNoErr and the block stays as far as it got. Not resumable: data that end
 *  elsewhere are read beyond their end.
 *
 *  \par Buffers
 *  The stream at any address; the block aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc                     the start of the entropy-coded data, which a marker ends
 *  \param pSrcBitsLen              in and out: the position in bits; the caller sets it to 8 times the first byte.
 *                                  On return it stands on the next unread byte. It is stored when the block has
 *                                  ended, also ahead of a marker among the AC coefficients
 *  \param pDst                     out: 64 coefficients in natural order, all of them written
 *  \param pLastDC                  in and out: the DC prediction of the component; the caller sets it to 0 ahead of
 *                                  the scan and behind each restart marker
 *  \param pMarker                  in and out: 0 while no marker has been met, then its second byte; no byte is read
 *                                  while it is above 0. The caller sets it to 0 first
 *  \param pPrefetchedBits          in and out: the bits read and not yet used, the newest byte lowest; the caller
 *                                  sets it to 0 ahead of the scan
 *  \param pNumValidPrefetchedBits  in and out: how many of them count; the caller sets it to 0 ahead of the scan.
 *                                  Data that end inside a code may leave it negative, and the next call refuses that
 *  \param pDcTable                 the table of DC symbols
 *  \param pAcTable                 the table of AC symbols; it may be pDcTable
 *  \return  zmxStsNullPtrErr when pSrc or pSrcBitsLen is null; zmxStsBadArgErr when *pSrcBitsLen is below 0;
 *           zmxStsNullPtrErr when pDst, pLastDC, pMarker, pPrefetchedBits or pNumValidPrefetchedBits is null;
 *           zmxStsBadArgErr when *pNumValidPrefetchedBits is below 0; zmxStsNullPtrErr when pDcTable or pAcTable is
 *           null; zmxStsDCTRangeErr when the table does not hold a code; zmxStsOutOfBufErr when no bits are left for
 *           a value; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(const Zmx8u* pSrc, int* pSrcBitsLen, Zmx16s* pDst,
                                                             Zmx16s* pLastDC, int* pMarker, Zmx32u* pPrefetchedBits,
                                                             Zmx32s* pNumValidPrefetchedBits,
                                                             const ZmxiDecodeHuffmanSpec* pDcTable,
                                                             const ZmxiDecodeHuffmanSpec* pAcTable);

/** Encodes a block of a sequential scan (ITU-T T.81, F.1.2), or flushes.
 *
 *  A block takes at most 514 bytes: 257 of bits, each perhaps followed by a stuffing zero; 418 with the categories
 *  of 8-bit pictures (DC up to 11, AC up to 10). A flush takes at most 2. With that much room zmxStsOutOfBufErr
 *  cannot occur.
 *
 *  \par Buffers
 *  The stream at any address; the block aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc           64 coefficients in natural order; not looked at in a flush
 *  \param pDst           the start of the destination
 *  \param dstLenBytes    its length in bytes, at least 1
 *  \param pDstCurrPos    in and out: the position in it, in bytes; the caller sets it to where the scan begins
 *  \param pLastDC        in and out: the DC prediction of the component; the caller sets it to 0 ahead of the scan
 *                        and behind each restart marker; not looked at in a flush
 *  \param pDcTable       the table of DC symbols; not looked at in a flush
 *  \param pAcTable       the table of AC symbols; it may be pDcTable; not looked at in a flush
 *  \param pEncHuffState  the bit writer, initialised ahead of the scan; a flush leaves it so
 *  \param bFlushState    not 0: nothing is coded; what is pending is written out, the last byte filled with
 *                        one-bits, and the state initialised
 *  \return  zmxStsNullPtrErr when pDst is null; zmxStsSizeErr when dstLenBytes is below 1; zmxStsNullPtrErr when
 *           pDstCurrPos or pEncHuffState is null; zmxStsNullPtrErr when bFlushState is 0 and pSrc, pLastDC, pDcTable
 *           or pAcTable is null; zmxStsOutOfBufErr when the destination is full; zmxStsHuffTableErr when the table
 *           holds no code for a symbol; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffman8x8_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                      int* pDstCurrPos, Zmx16s* pLastDC,
                                                      const ZmxiEncodeHuffmanSpec* pDcTable,
                                                      const ZmxiEncodeHuffmanSpec* pAcTable,
                                                      ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);
/** Encodes a block of a sequential scan without a state and without a test for the end of the destination.
 *
 *  The destination must have room for the worst block: 514 bytes, or 418 with the categories of 8-bit pictures, and
 *  one byte more. Behind the last bit the byte under the position is zero; at the end of the scan the caller fills
 *  it with one-bits, and stuffs a zero behind it if it became 0xFF. A symbol without a code is passed over.
 *
 *  \par Buffers
 *  The stream at any address; the block aligned for 16-bit elements, tables and states for 32-bit words. Nothing
 *  overlaps.
 *
 *  \param pSrc         64 coefficients in natural order
 *  \param pDst         the start of the destination
 *  \param pDstBitsLen  in and out: the position in bits; the caller sets it to 8 times the first byte of the scan
 *  \param pLastDC      in and out: the DC prediction of the component; the caller sets it to 0 ahead of the scan and
 *                      behind each restart marker
 *  \param pDcTable     the table of DC symbols
 *  \param pAcTable     the table of AC symbols; it may be pDcTable
 *  \return  zmxStsNullPtrErr when pSrc, pDst, pDstBitsLen, pLastDC, pDcTable or pAcTable is null; zmxStsBadArgErr
 *           when *pDstBitsLen is below 0; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int* pDstBitsLen,
                                                             Zmx16s* pLastDC, const ZmxiEncodeHuffmanSpec* pDcTable,
                                                             const ZmxiEncodeHuffmanSpec* pAcTable);

/** Counts the symbols of a block of a sequential scan, for zmxiEncodeHuffmanRawTableInit_JPEG_8u().
 *
 *  \par Buffers
 *  The block aligned for 16-bit elements, counts for 32-bit words. Nothing overlaps.
 *
 *  \param pSrc           64 coefficients in natural order
 *  \param pDcStatistics  in and out: the count of each DC symbol, 0 to 15; the caller clears it ahead of the first
 *                        block, and makes it 257 entries long when it goes to the optimal table (which takes it as
 *                        `const Zmx32s*`: cast it)
 *  \param pAcStatistics  in and out: the count of each AC symbol, 0 to 255; cleared by the caller, 257 entries long and
 *                        cast in the same way
 *  \param pLastDC        in and out: the DC prediction of the component; the caller sets it to 0 ahead of the scan
 *                        and behind each restart marker
 *  \return  zmxStsNullPtrErr when pSrc, pDcStatistics, pAcStatistics or pLastDC is null; zmxStsDCTRangeErr when a DC
 *           category is above 15, or an AC category above 14; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiGetHuffmanStatistics8x8_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pDcStatistics,
                                                           Zmx32u* pAcStatistics, Zmx16s* pLastDC);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_HUFFMAN_H */
