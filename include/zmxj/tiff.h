/** \file
 *  tiff.h - rows of TIFF: PackBits run-length coding, and 16-bit samples as two planes of bytes.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_TIFF_H
#define ZMXJ_TIFF_H

#include "types.h"

/** \defgroup tiff TIFF rows
 *  PackBits run-length coding (TIFF 6.0, section 9), and 16-bit samples as two planes of bytes.
 *
 *  A PackBits stream is a sequence of packets, each opening with a signed header byte h:
 *
 *  | h          | what follows                                                       |
 *  |------------|--------------------------------------------------------------------|
 *  | 0 to 127   | the next h + 1 bytes stand as they are                             |
 *  | -127 to -1 | the next byte is repeated 1 - h times                              |
 *  | -128       | nothing; passed over by the decoder, never written by the encoder  |
 *
 *  Everything runs on the calling thread.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Packs one row by PackBits.
 *
 *  A run of exactly two bytes between two literals is absorbed into the literal packet where that holds fewer than
 *  126 bytes, which saves a header.
 *
 *  A row of n bytes takes at most n + (n + 4) / 5 bytes: the worst is two runs of two and a lone byte, over and over.
 *
 *  \par Buffers
 *  Any address will do. Row and stream do not overlap.
 *
 *  \param pSrc     the row, srcLen bytes
 *  \param srcLen   bytes of the row, at least 1
 *  \param pDst     the stream
 *  \param pDstPos  in and out: the index in the stream where the next packet goes, in bytes; the caller sets it to 0
 *                  ahead of the first row
 *  \param dstLen   size of the stream buffer in bytes, from its start, at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pDstPos or pDst is null; zmxStsSizeErr when srcLen or dstLen is below 1;
 *           zmxStsUnderRunErr when a packet does not fit (*pDstPos is then where that packet would have begun, and
 *           the packets ahead of it stay), or *pDstPos is below 0 or above dstLen (and stays); zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiPackBitsRow_TIFF_8u_C1(const Zmx8u* pSrc, int srcLen, Zmx8u* pDst, int* pDstPos, int dstLen);

/** Unpacks one row of PackBits.
 *
 *  No packet may cross the end of the row. The value byte of a run may lie at index srcLen: one byte behind the
 *  stream is to be readable.
 *
 *  \par Buffers
 *  Any address will do. Stream and row do not overlap.
 *
 *  \param pSrc     the stream
 *  \param pSrcPos  in and out: the index in the stream of the next packet, in bytes; the caller sets it to 0 ahead
 *                  of the first row
 *  \param srcLen   size of the stream in bytes, from its start, at least 1
 *  \param pDst     the row, dstLen bytes
 *  \param dstLen   bytes of the row, at least 1
 *  \return  zmxStsNullPtrErr when pSrc, pSrcPos or pDst is null; zmxStsSizeErr when srcLen or dstLen is below 1;
 *           zmxStsUnderRunErr when the stream ends ahead of the row, a packet goes beyond the stream or the row
 *           (*pSrcPos is then behind the header of that packet, and the bytes of the earlier packets stay), or
 *           *pSrcPos is below 0; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiUnpackBitsRow_TIFF_8u_C1(const Zmx8u* pSrc, int* pSrcPos, int srcLen, Zmx8u* pDst, int dstLen);

/** Splits 16-bit samples into a plane of their second bytes in memory and one of their first (on a little-endian
 *  machine high and low bytes).
 *
 *  \par Buffers
 *  Any address will do. Samples and planes do not overlap.
 *
 *  \param pSrc  len samples
 *  \param pDst  two planes of len bytes; the two pointers are not tested
 *  \param len   number of samples, at least 1
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr (not a size error) when len is below 1;
 *           zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiSplitRow_TIFF_16u8u_C1(const Zmx16u* pSrc, Zmx8u* const pDst[2], int len);

/** Joins two planes of bytes into 16-bit samples: the inverse of zmxiSplitRow_TIFF_16u8u_C1().
 *
 *  \par Buffers
 *  Any address will do. Planes and samples do not overlap.
 *
 *  \param pSrc  two planes of len bytes; the two pointers are not tested
 *  \param pDst  len samples
 *  \param len   number of samples, at least 1
 *  \return  zmxStsNullPtrErr when pSrc or pDst is null; zmxStsStepErr (not a size error) when len is below 1;
 *           zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiJoinRow_TIFF_8u16u_C1(const Zmx8u* const pSrc[2], Zmx16u* pDst, int len);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_TIFF_H */
