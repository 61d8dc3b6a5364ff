/* huffman.h - JPEG Huffman tables, bit states and sequential block coding. */
#ifndef ZMXJ_HUFFMAN_H
#define ZMXJ_HUFFMAN_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Tables and bit states are opaque blocks, aligned for 32-bit words. Either the caller provides the memory that
 * GetBufSize reports and calls Init, or InitAlloc takes the memory and Free gives it back. A table is read-only once
 * built and may be shared among threads. A bit state serves one stream: initialise it before a scan and after each
 * restart marker. */
typedef struct ZmxiDecodeHuffmanSpec ZmxiDecodeHuffmanSpec;   /* decoder table */
typedef struct ZmxiEncodeHuffmanSpec ZmxiEncodeHuffmanSpec;   /* encoder table */
typedef struct ZmxiDecodeHuffmanState ZmxiDecodeHuffmanState; /* bit reader */
typedef struct ZmxiEncodeHuffmanState ZmxiEncodeHuffmanState; /* bit writer */

/* Entropy-coded data (ITU-T T.81, B.1.1.5). A data byte 0xFF stands in the stream as 0xFF 0x00; a marker is 0xFF, more
 * 0xFF as fill, and its code, which the decoders hand back without parsing anything behind it.
 *
 * Arguments that every decoder takes:
 *
 *   pSrc           the start of the entropy-coded data
 *   nSrcLen        its length in bytes
 *   pSrcCurrPos    in and out: the position in it, in bytes. The reader runs ahead: up to four bytes behind the last
 *                  bit used may already sit in the state
 *   pMarker        in and out: 0 while no marker has been met, then its second byte; no byte is read while it is not 0.
 *                  The caller clears it
 *   pDecHuffState  the bit reader
 *
 * and every encoder:
 *
 *   pDst           the start of the destination
 *   dstLenBytes    its length in bytes
 *   pDstCurrPos    in and out: the position in it, in bytes
 *   pEncHuffState  the bit writer
 *   bFlushState    not 0: nothing is coded; what is pending is written out, the last byte filled with one-bits, and the
 *                  state initialised
 *
 * A status of the coding itself leaves what was read, written and stored up to there:
 *
 *   zmxStsOutOfBufErr    the source ended before the bits needed; the destination is full
 *   zmxStsDCTRangeErr    too few bits ahead of a marker, or a code that the table does not hold; in the encoders a value
 *                        out of the range of its coding mode
 *   zmxStsHuffTableErr   a symbol for which the table holds no code */

/** The size of a decoder table.
 *
 *  \param pSize  out: bytes
 *  \return       zmxStsNullPtrErr, zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u(int* pSize);
/** Builds a decoder table from the lists of a DHT segment (ITU-T T.81, B.2.4.2 and Annex C).
 *
 *  \param pListBits     BITS: 16 counts; entry i is the number of codes of length i + 1
 *  \param pListVals     HUFFVAL: as many symbols as there are codes, in the order of the codes
 *  \param pDecHuffSpec  out: the table. A code of all ones, which the standard reserves, is accepted
 *  \return              zmxStsNullPtrErr (any pointer), zmxStsHuffTableErr (more than 256 codes, or more codes of up to
 *                       8 bits than there is room for), zmxStsNoErr. A table that failed is not to be used
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanSpecInit_JPEG_8u(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                                     ZmxiDecodeHuffmanSpec* pDecHuffSpec);
/** Allocates a decoder table and builds it. It is stored in *ppDecHuffSpec whether it could be built or not.
 *
 *  \return  zmxStsNullPtrErr (any pointer, or a failed allocation, which leaves *ppDecHuffSpec as it was), then as Init
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                                          ZmxiDecodeHuffmanSpec** ppDecHuffSpec);
/** Gives back what InitAlloc took.
 *
 *  \return  zmxStsNullPtrErr, zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanSpecFree_JPEG_8u(ZmxiDecodeHuffmanSpec* pDecHuffSpec);

/** The size of a bit reader; as zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u. */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanStateGetBufSize_JPEG_8u(int* pSize);
/** Initialises a bit reader: no bits held, no end-of-band run.
 *
 *  \return  zmxStsNullPtrErr, zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanStateInit_JPEG_8u(ZmxiDecodeHuffmanState* pDecHuffState);
/** Allocates a bit reader and initialises it.
 *
 *  \return  zmxStsNullPtrErr (the pointer, or a failed allocation, which leaves *ppDecHuffState as it was), zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanStateInitAlloc_JPEG_8u(ZmxiDecodeHuffmanState** ppDecHuffState);
/** Gives back what InitAlloc took; as zmxiDecodeHuffmanSpecFree_JPEG_8u. */
ZMXJ_API ZmxStatus zmxiDecodeHuffmanStateFree_JPEG_8u(ZmxiDecodeHuffmanState* pDecHuffState);

/** The size of an encoder table; as zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u. */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanSpecGetBufSize_JPEG_8u(int* pSize);
/** Builds an encoder table from the lists of a DHT segment.
 *
 *  \param pListBits     BITS: 16 counts
 *  \param pListVals     HUFFVAL; of a symbol listed twice the last code stands
 *  \param pEncHuffSpec  out: the table
 *  \return              zmxStsNullPtrErr (any pointer), zmxStsHuffTableErr (more than 256 codes, or codes that reach all
 *                       ones of their length: stricter than the decoder's table), zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanSpecInit_JPEG_8u(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                                     ZmxiEncodeHuffmanSpec* pEncHuffSpec);
/** Allocates an encoder table and builds it; as zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u. */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                                          ZmxiEncodeHuffmanSpec** ppEncHuffSpec);
/** Gives back what InitAlloc took; as zmxiDecodeHuffmanSpecFree_JPEG_8u. */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanSpecFree_JPEG_8u(ZmxiEncodeHuffmanSpec* pEncHuffSpec);

/** The size of a bit writer; as zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u. */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanStateGetBufSize_JPEG_8u(int* pSize);
/** Initialises a bit writer: no bits pending, no end-of-band run; as zmxiDecodeHuffmanStateInit_JPEG_8u. */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanStateInit_JPEG_8u(ZmxiEncodeHuffmanState* pEncHuffState);
/** Allocates a bit writer and initialises it; as zmxiDecodeHuffmanStateInitAlloc_JPEG_8u. */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(ZmxiEncodeHuffmanState** ppEncHuffState);
/** Gives back what InitAlloc took; as zmxiDecodeHuffmanSpecFree_JPEG_8u. */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanStateFree_JPEG_8u(ZmxiEncodeHuffmanState* pEncHuffState);

/** Makes the lists of an optimal table from symbol frequencies (ITU-T T.81, K.2): no code longer than 16 bits, none of
 *  all ones. The lists go into a DHT segment and into the two Init functions as they are.
 *
 *  \param pStatistics  257 frequencies, of which the last is not looked at: it stands for the reserved symbol
 *  \param pListBits    out: BITS, 16 counts
 *  \param pListVals    out: HUFFVAL, up to 256 symbols, as many as have a frequency other than 0
 *  \return             zmxStsNullPtrErr (any pointer), zmxStsHuffTableErr (a code longer than 32 bits before limiting),
 *                      zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffmanRawTableInit_JPEG_8u(const Zmx32s* pStatistics, Zmx8u* pListBits, Zmx8u* pListVals);

/** Decodes a block of a sequential scan (ITU-T T.81, F.2.2).
 *
 *  \param pDst      out: 64 coefficients in natural order, all of them written
 *  \param pLastDC   in and out: the DC prediction of the component; the caller clears it at a restart
 *  \param pDcTable  the table of DC symbols
 *  \param pAcTable  the table of AC symbols
 *  \return          zmxStsNullPtrErr (pSrc), zmxStsBadArgErr (nSrcLen below 0; 0 is legal), zmxStsNullPtrErr (the other
 *                   pointers in order); then zmxStsOutOfBufErr, zmxStsDCTRangeErr, zmxStsErr (a run that ends more than 8
 *                   positions behind the block; up to there it ends on element 63), zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffman8x8_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                                      Zmx16s* pLastDC, int* pMarker,
                                                      const ZmxiDecodeHuffmanSpec* pDcTable,
                                                      const ZmxiDecodeHuffmanSpec* pAcTable,
                                                      ZmxiDecodeHuffmanState* pDecHuffState);
/** The same for data that end in a marker, without a test for the end of the source. The marker may be looked at well
 *  before its turn, nothing behind it ever is.
 *
 *  \param pSrcBitsLen              in and out: the position in bits; on return it stands on the next unread byte. It is
 *                                  stored when the block has ended, also ahead of a marker among the AC coefficients
 *  \param pDst                     out: 64 coefficients
 *  \param pLastDC                  in and out: the DC prediction
 *  \param pMarker                  in and out: no byte is read while it is above 0
 *  \param pPrefetchedBits          in and out: the bits read and not yet used, the newest byte lowest; 0 at the start
 *  \param pNumValidPrefetchedBits  in and out: how many of them count; 0 at the start. Data that end inside a code may
 *                                  leave it negative
 *  \param pDcTable                 the table of DC symbols
 *  \param pAcTable                 the table of AC symbols
 *  \return  zmxStsNullPtrErr (pSrc, pSrcBitsLen), zmxStsBadArgErr (a position below 0), zmxStsNullPtrErr (pDst, pLastDC,
 *           pMarker, pPrefetchedBits, pNumValidPrefetchedBits), zmxStsBadArgErr (a count below 0), zmxStsNullPtrErr (the
 *           tables); then zmxStsDCTRangeErr (an invalid code), zmxStsOutOfBufErr (no bits for a value), zmxStsNoErr, also
 *           when the bits run out at a marker in front of a code: the block stays as far as it got
 */
ZMXJ_API ZmxStatus zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(const Zmx8u* pSrc, int* pSrcBitsLen, Zmx16s* pDst,
                                                             Zmx16s* pLastDC, int* pMarker, Zmx32u* pPrefetchedBits,
                                                             Zmx32s* pNumValidPrefetchedBits,
                                                             const ZmxiDecodeHuffmanSpec* pDcTable,
                                                             const ZmxiDecodeHuffmanSpec* pAcTable);

/** Encodes a block of a sequential scan (ITU-T T.81, F.1.2), or flushes.
 *
 *  \param pSrc      64 coefficients in natural order
 *  \param pLastDC   in and out: the DC prediction of the component
 *  \param pDcTable  the table of DC symbols
 *  \param pAcTable  the table of AC symbols
 *  \return          zmxStsNullPtrErr (pDst), zmxStsSizeErr (dstLenBytes below 1), zmxStsNullPtrErr (pDstCurrPos,
 *                   pEncHuffState; without bFlushState pSrc, pLastDC, pDcTable, pAcTable, which a flush does not need);
 *                   then zmxStsOutOfBufErr, zmxStsHuffTableErr, zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffman8x8_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes,
                                                      int* pDstCurrPos, Zmx16s* pLastDC,
                                                      const ZmxiEncodeHuffmanSpec* pDcTable,
                                                      const ZmxiEncodeHuffmanSpec* pAcTable,
                                                      ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState);
/** The same without a state and without a test for the end of the destination, which must have room for the worst
 *  block. Behind the last bit the byte under the position is zero; the caller fills it at the end of the scan.
 *
 *  \param pSrc         64 coefficients
 *  \param pDst         the start of the destination
 *  \param pDstBitsLen  in and out: the position in bits
 *  \param pLastDC      in and out: the DC prediction
 *  \param pDcTable     the table of DC symbols
 *  \param pAcTable     the table of AC symbols
 *  \return             zmxStsNullPtrErr (any pointer, in order), zmxStsBadArgErr (a position below 0), zmxStsNoErr; a
 *                      symbol without a code is passed over
 */
ZMXJ_API ZmxStatus zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int* pDstBitsLen,
                                                             Zmx16s* pLastDC, const ZmxiEncodeHuffmanSpec* pDcTable,
                                                             const ZmxiEncodeHuffmanSpec* pAcTable);

/** Counts the symbols of a block of a sequential scan, for zmxiEncodeHuffmanRawTableInit_JPEG_8u.
 *
 *  \param pSrc           64 coefficients
 *  \param pDcStatistics  in and out: the count of each DC symbol; the caller clears it, and makes it 257 entries long
 *                        when it goes to the optimal table
 *  \param pAcStatistics  in and out: the count of each AC symbol, likewise
 *  \param pLastDC        in and out: the DC prediction
 *  \return               zmxStsNullPtrErr (any pointer, in order), zmxStsDCTRangeErr (a DC category above 15, or an AC
 *                        category above 14), zmxStsNoErr
 */
ZMXJ_API ZmxStatus zmxiGetHuffmanStatistics8x8_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pDcStatistics,
                                                           Zmx32u* pAcStatistics, Zmx16s* pLastDC);

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_HUFFMAN_H */
