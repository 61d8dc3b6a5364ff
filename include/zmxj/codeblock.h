/** \file
 *  codeblock.h - JPEG2000 code-block coding (tier 1): the decoder in steps and in one call, the encoder in two halves.
 */
/* SPDX-License-Identifier: BSD-2-Clause */
#ifndef ZMXJ_CODEBLOCK_H
#define ZMXJ_CODEBLOCK_H

#include "types.h"

/** \defgroup codeblock Code blocks (JPEG2000)
 *  Tier 1 of JPEG2000: the decoder in steps and in one call, the encoder in two halves.
 *
 *  Samples are 32-bit sign-magnitude words, not two's complement: bit 31 is the sign (1 is negative), bits 0 to 30 the
 *  magnitude. The caller converts to and from the numbers of its wavelet. The encoder takes a magnitude as a number with
 *  31 - magnBits fraction bits below the lowest plane that it codes; the decoder gives it with that plane as bit 0.
 *
 *  A code block is coded in passes: a lone cleanup on the topmost bit plane that is not all zero, then significance
 *  propagation, magnitude refinement and cleanup on each plane below it (ISO/IEC 15444-1 Annex D): 3 planes - 2 passes in
 *  all. Passes are joined into codeword segments, whose lengths the caller carries.
 *
 *  States, unless they come from InitAlloc, are buffers of the caller aligned for pointers. A state serves one code block
 *  at a time. Everything runs on the calling thread; blocks can be coded in parallel with a state for each thread.
 *  \{
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Code-block styles. The values are this library's own, not the bits of the code-block style byte of a COD or COC
 * marker segment (ISO/IEC 15444-1 Table A.19): the caller maps one to the other. */
enum {
    ZMX_CB_VERTICALLY_CAUSAL = 0x1,     /**< the first row of a stripe does not report its significance upwards */
    ZMX_CB_SELECTIVE_BYPASS = 0x2,      /**< from the fifth coded plane on, only cleanup passes are MQ coded */
    ZMX_CB_TERMINATE_ALL = 0x4,         /**< every pass is its own codeword segment */
    ZMX_CB_RESET_CTX = 0x8,             /**< contexts return to their initial states after each pass */
    ZMX_CB_SEGMENTATION_SYMBOLS = 0x10, /**< each cleanup pass ends in the symbol 1010 */
    ZMX_CB_LOSSLESS = 0x20,             /**< encoder: distortions of the lowest plane are those of exact samples */
    ZMX_CB_CONCEAL_DAMAGE = 0x10000,    /**< one-call decoder: after damage, rebuild from the planes above */
    ZMX_CB_KEEP_DST = 0x20000,          /**< decoder: attaching does not zero the destination */
    ZMX_CB_KEEP_MIDPOINT = 0x40000,     /**< one-call decoder: samples keep their midpoint bits */
    ZMX_CB_KEEP_FLAGS = 0x80000,        /**< decoder: attaching does not zero the significance flags */
    ZMX_CB_ERROR_PREDICTION = 0x100000  /**< decoder: MQ segments are tested for predictable termination */
};

/** How the encoder ends an MQ codeword segment; every other value is a flush too. */
enum {
    ZMX_MQ_TERM_FLUSH = 0,        /**< the full flush of ISO/IEC 15444-1 C.2.9 */
    ZMX_MQ_TERM_NEAR_OPTIMAL = 1, /**< the shortest string of bytes that the decoder completes with 0xFF */
    ZMX_MQ_TERM_EASY = 2          /**< predictable: what ZMX_CB_ERROR_PREDICTION in a decoder asks for */
};

/** \struct ZmxiDecodeCBProgrState
 *  The state of a code block under decoding. Its contents are the library's.
 */
typedef struct ZmxiDecodeCBProgrState ZmxiDecodeCBProgrState;

/** \struct ZmxiEncodeState_JPEG2K
 *  The state of the code-block encoder. Its contents are the library's.
 */
typedef struct ZmxiEncodeState_JPEG2K ZmxiEncodeState_JPEG2K;

/** Tells how many bytes the state for code blocks of a size takes.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param size   the largest width and height of a block that will be attached, in samples, each at least 1
 *  \param pSize  out: bytes; 0 where an int cannot tell them (100,000 x 100,000 samples are too many)
 *  \return  zmxStsSizeErr when the width or the height of size is below 1; zmxStsNullPtrErr when pSize is null;
 *           zmxStsSizeErr when an int cannot tell the byte count; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrGetStateSize_JPEG2K(ZmxiSize size, int* pSize);
/** Tells how many bytes the buffer of zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R() takes: the same as
 *  zmxiDecodeCBProgrGetStateSize_JPEG2K().
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param size   the largest width and height of a block that will be attached, in samples, each at least 1
 *  \param pSize  out: bytes; 0 where an int cannot tell them (100,000 x 100,000 samples are too many)
 *  \return  zmxStsSizeErr when the width or the height of size is below 1; zmxStsNullPtrErr when pSize is null;
 *           zmxStsSizeErr when an int cannot tell the byte count; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeGetBufSize_JPEG2K(ZmxiSize size, int* pSize);

/** Makes a decoder state, with no code block attached, of a buffer of the caller.
 *
 *  \par Buffers
 *  The buffer is aligned for pointers, and stays where it is: a copy of it is no state.
 *
 *  \param pState  a buffer as large as zmxiDecodeCBProgrGetStateSize_JPEG2K() says
 *  \return  zmxStsNullPtrErr when pState is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrInit_JPEG2K(ZmxiDecodeCBProgrState* pState);

/** Allocates a decoder state with no code block attached.
 *
 *  zmxiDecodeCBProgrFree_JPEG2K() releases it.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param ppState  out: the state; null if there is no memory
 *  \param size     the largest width and height of a block that will be attached, in samples, each at least 1
 *  \return  zmxStsNullPtrErr when ppState is null; zmxStsSizeErr when the width or the height of size is below 1;
 *           zmxStsMemAllocErr when there is no memory, or an int cannot tell the byte count; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrInitAlloc_JPEG2K(ZmxiDecodeCBProgrState** ppState, ZmxiSize size);

/** Releases a state of zmxiDecodeCBProgrInitAlloc_JPEG2K().
 *
 *  \par Buffers
 *  The state is not to be used afterwards.
 *
 *  \param pState  the state; not a buffer of the caller
 *  \return  zmxStsNullPtrErr when pState is null; zmxStsContextMatchErr when pState is not a decoder state;
 *           zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrFree_JPEG2K(ZmxiDecodeCBProgrState* pState);

/** Attaches a code block to a decoder state.
 *
 *  Contexts and flags start afresh, earlier damage is forgotten, and the pass counter is 0, so that steps do nothing
 *  until zmxiDecodeCBProgrSetPassCounter_JPEG2K() has been called.
 *
 *  A size above the one that the state was made for is not tested: it overruns the state.
 *
 *  \par Buffers
 *  Samples at any address and with any step. Samples and state do not overlap.
 *
 *  \param pDst        the block's samples, sign-magnitude, bit 0 being the lowest coded plane; zeroed first unless
 *                     ZMX_CB_KEEP_DST is set. The state refers to it until the last step
 *  \param dstStep     bytes between the starts of two rows, at least 1
 *  \param size        the block's width and height in samples, each at least 1
 *  \param pState      a state from Init or InitAlloc
 *  \param subband     0 LL, 1 LH (vertically high-pass), 2 HL (horizontally high-pass), 3 HH; any other value counts
 *                     as 0
 *  \param nBitPlanes  how many magnitude bit planes are coded: 0 to 31. From an encoder of this library: max(0,
 *                     sfBits - (31 - magnBits)), with the sfBits that it answered and the magnBits that it was
 *                     given. A larger number is not refused; shifts by a plane number then count modulo 32
 *  \param cbStyle     an or of ZMX_CB_... values
 *  \return  zmxStsNullPtrErr when pState is null; zmxStsContextMatchErr when pState is not a decoder state;
 *           zmxStsNullPtrErr when pDst is null; zmxStsStepErr when dstStep is below 1; zmxStsSizeErr when the width
 *           or the height of size is below 1; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(Zmx32s* pDst, int dstStep, ZmxiSize size,
                                                          ZmxiDecodeCBProgrState* pState, int subband, int nBitPlanes,
                                                          Zmx32u cbStyle);

/** Sets how many coding passes the steps to come may decode.
 *
 *  Without ZMX_CB_TERMINATE_ALL a codeword segment has several passes, and the count should be given for whole
 *  segments: a step that runs out of it in the middle of a bit plane does not remember where it stopped.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param nPasses  the count; 0 or less lets no pass run
 *  \param pState   a decoder state
 *  \return  zmxStsNullPtrErr when pState is null; zmxStsContextMatchErr when pState is not a decoder state;
 *           zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrSetPassCounter_JPEG2K(int nPasses, ZmxiDecodeCBProgrState* pState);

/** Tells how many coding passes the steps to come may still decode.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param pState    a decoder state
 *  \param pnPasses  out: the count
 *  \return  zmxStsNullPtrErr when pState or pnPasses is null; zmxStsContextMatchErr when pState is not a decoder
 *           state; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrGetPassCounter_JPEG2K(const ZmxiDecodeCBProgrState* pState, int* pnPasses);

/** Tells the bit plane of the next pass.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param pState     a decoder state
 *  \param pBitPlane  out: the number of planes minus 1 after an attach, below 0 when all are decoded
 *  \return  zmxStsNullPtrErr when pState is null; zmxStsContextMatchErr when pState is not a decoder state;
 *           zmxStsNullPtrErr when pBitPlane is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrGetCurBitPlaneNum_JPEG2K(const ZmxiDecodeCBProgrState* pState, int* pBitPlane);

/** Decodes one codeword segment of the attached code block (ISO/IEC 15444-1 Annex D).
 *
 *  A short segment is no fault: it goes on as if 0xFF bytes followed. With the pass counter at 0 or all planes
 *  decoded, nothing is read or changed. While planes are missing the magnitudes carry the midpoint of what is open.
 *
 *  \par Buffers
 *  The segment is at any address. It does not overlap samples or state.
 *
 *  \param pSrc    the segment
 *  \param srcLen  its length in bytes; below 1 counts as empty
 *  \param pState  a decoder state with a code block
 *  \return  zmxStsNullPtrErr when pSrc or pState is null; zmxStsContextMatchErr when pState is not a decoder state,
 *           or does not hold what one can; zmxStsCBNotAttachedErr when it has no code block; zmxStsCBDamagedErr when
 *           the block was found damaged, now (by a test that cbStyle asks for, or by the end of a raw segment) or
 *           earlier since the attach; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrStep_JPEG2K(const Zmx8u* pSrc, int srcLen, ZmxiDecodeCBProgrState* pState);

/** Decodes a whole code block from its codeword segments, which follow each other in memory.
 *
 *  Then clears the midpoint bits below the last plane reached, unless ZMX_CB_KEEP_MIDPOINT is set. With
 *  ZMX_CB_CONCEAL_DAMAGE a damaged block keeps the planes above the damaged one, with a midpoint below them.
 *
 *  A size above the one that the buffer was made for is not tested: it overruns the buffer.
 *
 *  \par Buffers
 *  Segments at any address, samples at any address and with any step, the buffer aligned for pointers. Nothing
 *  overlaps.
 *
 *  \param pSrc            the first segment
 *  \param pDst            the block's samples, sign-magnitude, bit 0 being the lowest coded plane
 *  \param dstStep         bytes between the starts of two rows, at least 1
 *  \param size            the block's width and height in samples, each at least 1
 *  \param subband         0 LL, 1 LH (vertically high-pass), 2 HL (horizontally high-pass), 3 HH; any other value
 *                         counts as 0
 *  \param nBitPlanes      how many magnitude bit planes are coded: 0 to 31. From an encoder of this library: max(0,
 *                         sfBits - (31 - magnBits)), with the sfBits that it answered and the magnBits that it was
 *                         given. A larger number is not refused; shifts by a plane number then count modulo 32
 *  \param nPasses         how many coding passes the segments have in all
 *  \param pTermLen        nTerms segment lengths in bytes
 *  \param nTerms          how many segments there are; below 1 nothing is decoded
 *  \param cbStyle         an or of ZMX_CB_... values
 *  \param pErrorBitPlane  out: the plane where damage was found, not written without damage; may be null
 *  \param pState          a buffer of the size that zmxiDecodeGetBufSize_JPEG2K() says; it need not be initialised
 *  \return  zmxStsNullPtrErr when pSrc or pState is null; zmxStsSizeErr when the width or the height of size is
 *           below 1; zmxStsNullPtrErr when pTermLen or pDst is null; zmxStsStepErr when dstStep is below 1;
 *           zmxStsCBDamagedErr when the block was found damaged; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(const Zmx8u* pSrc, Zmx32s* pDst, int dstStep, ZmxiSize size,
                                                        int subband, int nBitPlanes, int nPasses, const int* pTermLen,
                                                        int nTerms, Zmx32u cbStyle, int* pErrorBitPlane,
                                                        ZmxiDecodeCBProgrState* pState);

/** Allocates an encoder state.
 *
 *  zmxiEncodeFree_JPEG2K() releases it.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param ppState  out: the state; null if there is no memory
 *  \param size     the largest width and height of a block that will be loaded, in samples, each at least 1
 *  \return  zmxStsNullPtrErr when ppState is null; zmxStsSizeErr when the width or the height of size is below 1;
 *           zmxStsMemAllocErr when there is no memory, or an int cannot tell a byte count; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeInitAlloc_JPEG2K(ZmxiEncodeState_JPEG2K** ppState, ZmxiSize size);

/** Releases a state of zmxiEncodeInitAlloc_JPEG2K(). The one function that does not look whether it is one.
 *
 *  \par Buffers
 *  The state is not to be used afterwards.
 *
 *  \param pState  the state
 *  \return  zmxStsNullPtrErr when pState is null; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeFree_JPEG2K(ZmxiEncodeState_JPEG2K* pState);

/** Runs all coding passes of a code block and records their decisions, which zmxiEncodeStoreBits_JPEG2K_1u() turns
 *  into bytes.
 *
 *  Distortions are ready afterwards, rates and segment lengths only after the store. Forgets the block before.
 *
 *  Of a magnitude the planes 31 - magnBits and above are coded; the planes below are fraction bits, which only the
 *  distortions see. In a decoder plane 31 - magnBits is bit 0 of a sample, and nBitPlanes is max(0, sfBits - (31 -
 *  magnBits)). So integers without a fraction take magnBits 31, and come back bit for bit.
 *
 *  A size above the one that the state was made for is not tested: it overruns the state.
 *
 *  \par Buffers
 *  Samples at any address and with any step. Samples and state do not overlap.
 *
 *  \param pSrc          the block's samples, sign-magnitude
 *  \param srcStep       bytes between the starts of two rows, at least 1
 *  \param size          the block's width and height in samples, each at least 1
 *  \param pState        a state from zmxiEncodeInitAlloc_JPEG2K()
 *  \param subband       0 LL, 1 LH (vertically high-pass), 2 HL (horizontally high-pass), 3 HH; any other value
 *                       counts as 0
 *  \param magnBits      how many bits of the magnitude are coded, counted from bit 30 down: 0 to 31
 *  \param mqTermType    a ZMX_MQ_TERM_... value
 *  \param reserved      not used
 *  \param codeStyle     an or of ZMX_CB_VERTICALLY_CAUSAL to ZMX_CB_LOSSLESS
 *  \param pSfBits       out: the bit length of the largest magnitude, counted from bit 0; 0 for an all-zero block
 *  \param pnPasses      out: the number of passes; 0 if nothing reaches plane 31 - magnBits
 *  \param pnTermPasses  out: the number of codeword segments; 1 for a block without passes, or 0 if
 *                       ZMX_CB_TERMINATE_ALL is set
 *  \return  zmxStsNullPtrErr when pState is null; zmxStsContextMatchErr when pState is not an encoder state;
 *           zmxStsNullPtrErr when pSfBits, pnPasses or pnTermPasses is null; zmxStsSizeErr when the width or the
 *           height of size is below 1; zmxStsNullPtrErr when pSrc is null; zmxStsStepErr when srcStep is below 1;
 *           zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, ZmxiSize size,
                                                          ZmxiEncodeState_JPEG2K* pState, int subband, int magnBits,
                                                          int mqTermType, int reserved, Zmx32u codeStyle, int* pSfBits,
                                                          int* pnPasses, int* pnTermPasses);

/** Writes the next bytes of the loaded code block, whose segments follow each other.
 *
 *  To be called until it reports the end; buffers may be as small as one byte, and the bytes are the same. So no
 *  worst case need be known: noise of 64 x 64 samples in all 31 planes takes some 17,200 bytes, a twentieth more
 *  than the samples themselves.
 *
 *  \par Buffers
 *  The bytes are at any address. They do not overlap the state.
 *
 *  \param pDst          receives the bytes
 *  \param pDstLen       in and out: the capacity of pDst in bytes, at least 1; then how many were written
 *  \param pState        a state with a loaded block
 *  \param pIsNotFinish  out: 1 if another call is needed, 0 at the end of the block
 *  \return  zmxStsNullPtrErr when pState is null; zmxStsContextMatchErr when pState is not an encoder state;
 *           zmxStsNullPtrErr when pDst, pDstLen or pIsNotFinish is null; zmxStsSizeErr when the capacity is below 1;
 *           zmxStsContextMatchErr when the state does not hold what one can, which only something else that wrote to
 *           it brings about; zmxStsNoErr otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeStoreBits_JPEG2K_1u(Zmx8u* pDst, int* pDstLen, ZmxiEncodeState_JPEG2K* pState,
                                                 int* pIsNotFinish);

/** Tells the length of a codeword segment; known when the store has reached its end.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param pState   an encoder state with a loaded block
 *  \param termNum  the segment, from 0
 *  \param pLen     out: its length in bytes, which may be 0
 *  \return  zmxStsNullPtrErr when pState is null; zmxStsContextMatchErr when pState is not an encoder state;
 *           zmxStsNullPtrErr when pLen is null; zmxStsBadPassNumberErr when there is no such segment; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeGetTermPassLen_JPEG2K(const ZmxiEncodeState_JPEG2K* pState, int termNum, int* pLen);

/** Tells where the stream can be cut behind a pass; known when the store has reached its end.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param pState   an encoder state with a loaded block
 *  \param passNum  the pass, from 0
 *  \param pRate    out: how many bytes from the start of the block decode it and the passes before it
 *  \return  zmxStsNullPtrErr when pState is null; zmxStsContextMatchErr when pState is not an encoder state;
 *           zmxStsNullPtrErr when pRate is null; zmxStsBadPassNumberErr when there is no such pass; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeGetRate_JPEG2K(const ZmxiEncodeState_JPEG2K* pState, int passNum, int* pRate);

/** Tells by how much a pass and those before it reduce the squared error of the block; known after the load. A
 *  lowest pass may make it smaller again.
 *
 *  \par Buffers
 *  Nothing overlaps.
 *
 *  \param pState   an encoder state with a loaded block
 *  \param passNum  the pass, from 0
 *  \param pDist    out: the reduction, in units of the square of plane 31 - magnBits
 *  \return  zmxStsNullPtrErr when pState is null; zmxStsContextMatchErr when pState is not an encoder state;
 *           zmxStsNullPtrErr when pDist is null; zmxStsBadPassNumberErr when there is no such pass; zmxStsNoErr
 *           otherwise
 */
ZMXJ_API ZmxStatus zmxiEncodeGetDist_JPEG2K(const ZmxiEncodeState_JPEG2K* pState, int passNum, double* pDist);

#ifdef __cplusplus
}
#endif

/** \} */

#endif /* ZMXJ_CODEBLOCK_H */
