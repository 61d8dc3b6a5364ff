/* tiff.h - rows of TIFF: PackBits run-length coding (TIFF 6.0, section 9), and 16-bit samples as two planes of bytes.
 *
 * A PackBits stream is a sequence of packets, each opening with a signed header byte h:
 *   0 to 127     the next h + 1 bytes stand as they are
 *   -127 to -1   the next byte is repeated 1 - h times
 *   -128         nothing; passed over by the decoder, never written by the encoder
 */
#ifndef ZMXJ_TIFF_H
#define ZMXJ_TIFF_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Packs one row by PackBits.
 *
 *  A run of exactly two bytes between two literals is absorbed into the literal packet where that holds fewer than 126
 *  bytes, which saves a header.
 *
 *  \param pSrc     the row, srcLen bytes
 *  \param srcLen   bytes of the row, at least 1
 *  \param pDst     the stream
 *  \param pDstPos  in and out: the index in the stream where the next packet goes, 0 or more
 *  \param dstLen   size of the stream buffer from its start, at least 1
 *  \return zmxStsNullPtrErr for pSrc, pDstPos, pDst; zmxStsSizeErr for srcLen, dstLen; zmxStsUnderRunErr when a packet does
 *          not fit: *pDstPos is then where that packet would have begun, and the packets ahead of it stay. A start beyond
 *          dstLen or below 0 gives the same status and leaves *pDstPos alone
 */
ZMXJ_API ZmxStatus zmxiPackBitsRow_TIFF_8u_C1(const Zmx8u* pSrc, int srcLen, Zmx8u* pDst, int* pDstPos, int dstLen);

/** Unpacks one row of PackBits.
 *
 *  No packet may cross the end of the row. The value byte of a run may lie at index srcLen: one byte behind the stream is
 *  to be readable.
 *
 *  \param pSrc     the stream
 *  \param pSrcPos  in and out: the index in the stream of the next packet, 0 or more
 *  \param srcLen   size of the stream from its start, at least 1
 *  \param pDst     the row, dstLen bytes
 *  \param dstLen   bytes of the row, at least 1
 *  \return zmxStsNullPtrErr for pSrc, pSrcPos, pDst; zmxStsSizeErr for srcLen, dstLen; zmxStsUnderRunErr when the stream ends
 *          ahead of the row or a packet goes beyond the stream or the row: *pSrcPos is then behind the header of that
 *          packet, and the bytes of the earlier packets stay. A start below 0 gives the same status
 */
ZMXJ_API ZmxStatus zmxiUnpackBitsRow_TIFF_8u_C1(const Zmx8u* pSrc, int* pSrcPos, int srcLen, Zmx8u* pDst, int dstLen);

/** Splits 16-bit samples into a plane of their second bytes in memory and one of their first (on a little-endian machine
 *  high and low bytes).
 *
 *  \param pSrc  len samples
 *  \param pDst  two planes of len bytes; the two pointers are not tested
 *  \param len   number of samples, at least 1
 *  \return zmxStsNullPtrErr for pSrc, pDst; zmxStsStepErr (not a size error) for len
 */
ZMXJ_API ZmxStatus zmxiSplitRow_TIFF_16u8u_C1(const Zmx16u* pSrc, Zmx8u* const pDst[2], int len);

/** Joins two planes of bytes into 16-bit samples: the inverse of zmxiSplitRow_TIFF_16u8u_C1.
 *
 *  \param pSrc  two planes of len bytes; the two pointers are not tested
 *  \param pDst  len samples
 *  \param len   number of samples, at least 1
 *  \return zmxStsNullPtrErr for pSrc, pDst; zmxStsStepErr (not a size error) for len
 */
ZMXJ_API ZmxStatus zmxiJoinRow_TIFF_8u16u_C1(const Zmx8u* const pSrc[2], Zmx16u* pDst, int len);

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_TIFF_H */
