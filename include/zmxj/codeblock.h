/* codeblock.h - JPEG2000 code-block coding (tier 1): the decoder in steps and in one call, the encoder in two halves.
 *
 * Samples are 32-bit sign-magnitude words, not two's complement: bit 31 is the sign (1 is negative), bits 0 to 30 are
 * the magnitude. The caller converts to and from the numbers of its wavelet.
 *
 * A code block is coded in passes: a lone cleanup on the topmost bit plane that is not all zero, then significance
 * propagation, magnitude refinement and cleanup on each plane below it (ISO/IEC 15444-1 Annex D). Passes are joined
 * into codeword segments, whose lengths the caller carries.
 */
#ifndef ZMXJ_CODEBLOCK_H
#define ZMXJ_CODEBLOCK_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Code-block styles. The values are this library's own, not the bits of the code-block style byte of a COD or COC
 * marker segment (ISO/IEC 15444-1 Table A.19): the caller maps one to the other. */
enum {
    ZMX_CB_VERTICALLY_CAUSAL = 0x1,     /* the first row of a stripe does not report its significance upwards */
    ZMX_CB_SELECTIVE_BYPASS = 0x2,      /* from the fifth coded plane on, only cleanup passes are MQ coded */
    ZMX_CB_TERMINATE_ALL = 0x4,         /* every pass is its own codeword segment */
    ZMX_CB_RESET_CTX = 0x8,             /* contexts return to their initial states after each pass */
    ZMX_CB_SEGMENTATION_SYMBOLS = 0x10, /* each cleanup pass ends in the symbol 1010 */
    ZMX_CB_LOSSLESS = 0x20,             /* encoder: distortions of the lowest plane are those of exact samples */
    ZMX_CB_CONCEAL_DAMAGE = 0x10000,    /* one-call decoder: after damage, rebuild from the planes above */
    ZMX_CB_KEEP_DST = 0x20000,          /* decoder: attaching does not zero the destination */
    ZMX_CB_KEEP_MIDPOINT = 0x40000,     /* one-call decoder: samples keep their midpoint bits */
    ZMX_CB_KEEP_FLAGS = 0x80000,        /* decoder: attaching does not zero the significance flags */
    ZMX_CB_ERROR_PREDICTION = 0x100000  /* decoder: MQ segments are tested for predictable termination */
};

/* How the encoder ends an MQ codeword segment; every other value is a flush too. */
enum {
    ZMX_MQ_TERM_FLUSH = 0,        /* the full flush of ISO/IEC 15444-1 C.2.9 */
    ZMX_MQ_TERM_NEAR_OPTIMAL = 1, /* the shortest string of bytes that the decoder completes with 0xFF */
    ZMX_MQ_TERM_EASY = 2          /* predictable: what ZMX_CB_ERROR_PREDICTION in a decoder asks for */
};

/* The state of a code block under decoding; its contents are the library's. */
typedef struct ZmxiDecodeCBProgrState ZmxiDecodeCBProgrState;

/* The state of the code-block encoder; its contents are the library's. */
typedef struct ZmxiEncodeState_JPEG2K ZmxiEncodeState_JPEG2K;

/** Tells how many bytes the state of a code block of a size takes.
 *
 *  \param size   the largest width and height of a block that will be attached, in samples
 *  \param pSize  receives the byte count of the buffer for zmxiDecodeCBProgrInit_JPEG2K; 0 if an int cannot tell it
 *  \return zmxStsSizeErr if the height or the width is below 1; zmxStsNullPtrErr if pSize is null; zmxStsSizeErr if an
 *          int cannot tell the byte count
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrGetStateSize_JPEG2K(ZmxiSize size, int* pSize);
/* The same under the name that goes with zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R. */
ZMXJ_API ZmxStatus zmxiDecodeGetBufSize_JPEG2K(ZmxiSize size, int* pSize);

/** Makes a decoder state, with no code block attached, of a buffer of the caller.
 *
 *  \param pState  a buffer as large as zmxiDecodeCBProgrGetStateSize_JPEG2K says, aligned for pointers
 *  \return zmxStsNullPtrErr if pState is null
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrInit_JPEG2K(ZmxiDecodeCBProgrState* pState);

/** Allocates a decoder state with no code block attached.
 *
 *  \param ppState  receives the state, which zmxiDecodeCBProgrFree_JPEG2K releases; null if there is no memory
 *  \param size     the largest width and height of a block that will be attached, in samples
 *  \return zmxStsNullPtrErr if ppState is null; zmxStsSizeErr if the height or the width is below 1;
 *          zmxStsMemAllocErr if there is no memory
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrInitAlloc_JPEG2K(ZmxiDecodeCBProgrState** ppState, ZmxiSize size);

/** Releases a state of zmxiDecodeCBProgrInitAlloc_JPEG2K.
 *
 *  \return zmxStsNullPtrErr if pState is null; zmxStsContextMatchErr if it is not a decoder state
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrFree_JPEG2K(ZmxiDecodeCBProgrState* pState);

/** Attaches a code block to a decoder state. Contexts and flags start afresh, earlier damage is forgotten, and the
 *  pass counter is 0, so that steps do nothing until zmxiDecodeCBProgrSetPassCounter_JPEG2K has been called.
 *
 *  \param pDst        the block's samples, sign-magnitude; zeroed first unless ZMX_CB_KEEP_DST is set. The state
 *                     refers to it until the last step
 *  \param dstStep     bytes from one row to the next
 *  \param size        the block's width and height in samples; not above the size that the state was made for
 *  \param pState      a state from Init or InitAlloc
 *  \param subband     0 LL, 1 LH (vertically high-pass), 2 HL (horizontally high-pass), 3 HH
 *  \param nBitPlanes  how many magnitude bit planes are coded: 0 to 31. A larger number is not refused; shifts by a
 *                     plane number then count modulo 32
 *  \param cbStyle     an or of ZMX_CB_... values
 *  \return zmxStsNullPtrErr if pState is null; zmxStsContextMatchErr if it is not a decoder state; zmxStsNullPtrErr if
 *          pDst is null; zmxStsStepErr if dstStep is below 1; zmxStsSizeErr if the height or the width is below 1
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(Zmx32s* pDst, int dstStep, ZmxiSize size,
                                                          ZmxiDecodeCBProgrState* pState, int subband, int nBitPlanes,
                                                          Zmx32u cbStyle);

/** Sets how many coding passes the steps to come may decode. Without ZMX_CB_TERMINATE_ALL a codeword segment has
 *  several passes, and the count should be given for whole segments: a step that runs out of it in the middle of a
 *  bit plane does not remember where it stopped.
 *
 *  \param nPasses  the count; 0 or less lets no pass run
 *  \return zmxStsNullPtrErr if pState is null; zmxStsContextMatchErr if it is not a decoder state
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrSetPassCounter_JPEG2K(int nPasses, ZmxiDecodeCBProgrState* pState);

/** Tells how many coding passes the steps to come may still decode.
 *
 *  \return zmxStsNullPtrErr if pState or pnPasses is null; zmxStsContextMatchErr if pState is not a decoder state
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrGetPassCounter_JPEG2K(const ZmxiDecodeCBProgrState* pState, int* pnPasses);

/** Tells the bit plane of the next pass: the number of planes minus 1 after an attach, below 0 when all are decoded.
 *
 *  \return zmxStsNullPtrErr if pState is null; zmxStsContextMatchErr if it is not a decoder state; zmxStsNullPtrErr if
 *          pBitPlane is null
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrGetCurBitPlaneNum_JPEG2K(const ZmxiDecodeCBProgrState* pState, int* pBitPlane);

/** Decodes one codeword segment of the attached code block (ISO/IEC 15444-1 Annex D). A short segment is no fault:
 *  it goes on as if 0xFF bytes followed. With the pass counter at 0 or all planes decoded, nothing is read or changed.
 *  While planes are missing the magnitudes carry the midpoint of what is open.
 *
 *  \param pSrc    the segment
 *  \param srcLen  its length in bytes; below 1 counts as empty
 *  \return zmxStsNullPtrErr if pSrc or pState is null; zmxStsContextMatchErr if pState is not a decoder state, or does
 *          not hold what one can; zmxStsCBNotAttachedErr if it has no code block; zmxStsCBDamagedErr if the block was found damaged, now (by a
 *          test that cbStyle asks for, or by the end of a raw segment) or earlier since the attach
 */
ZMXJ_API ZmxStatus zmxiDecodeCBProgrStep_JPEG2K(const Zmx8u* pSrc, int srcLen, ZmxiDecodeCBProgrState* pState);

/** Decodes a whole code block from its codeword segments, which follow each other in memory. Then clears the midpoint
 *  bits below the last plane reached, unless ZMX_CB_KEEP_MIDPOINT is set.
 *
 *  \param pSrc            the first segment
 *  \param pDst            the block's samples, sign-magnitude
 *  \param dstStep         bytes from one row to the next
 *  \param size            the block's width and height in samples
 *  \param subband         0 LL, 1 LH, 2 HL, 3 HH
 *  \param nBitPlanes      how many magnitude bit planes are coded, as for zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R
 *  \param nPasses         how many coding passes the segments have in all
 *  \param pTermLen        nTerms segment lengths in bytes
 *  \param nTerms          how many segments there are; below 1 nothing is decoded
 *  \param cbStyle         an or of ZMX_CB_... values. With ZMX_CB_CONCEAL_DAMAGE a damaged block keeps the planes above
 *                         the damaged one, with a midpoint below them
 *  \param pErrorBitPlane  may be null; receives the plane where damage was found, and is not written without damage
 *  \param pState          a buffer of the size that zmxiDecodeGetBufSize_JPEG2K says, aligned for pointers
 *  \return zmxStsNullPtrErr if pSrc or pState is null; zmxStsSizeErr if the height or the width is below 1;
 *          zmxStsNullPtrErr if pTermLen or pDst is null; zmxStsStepErr if dstStep is below 1; zmxStsCBDamagedErr if the
 *          block was found damaged
 */
ZMXJ_API ZmxStatus zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(const Zmx8u* pSrc, Zmx32s* pDst, int dstStep, ZmxiSize size,
                                                        int subband, int nBitPlanes, int nPasses, const int* pTermLen,
                                                        int nTerms, Zmx32u cbStyle, int* pErrorBitPlane,
                                                        ZmxiDecodeCBProgrState* pState);

/** Allocates an encoder state.
 *
 *  \param ppState  receives the state, which zmxiEncodeFree_JPEG2K releases; null if there is no memory
 *  \param size     the largest width and height of a block that will be loaded, in samples
 *  \return zmxStsNullPtrErr if ppState is null; zmxStsSizeErr if the height or the width is below 1;
 *          zmxStsMemAllocErr if there is no memory
 */
ZMXJ_API ZmxStatus zmxiEncodeInitAlloc_JPEG2K(ZmxiEncodeState_JPEG2K** ppState, ZmxiSize size);

/** Releases a state of zmxiEncodeInitAlloc_JPEG2K. The one function that does not look whether it is one.
 *
 *  \return zmxStsNullPtrErr if pState is null
 */
ZMXJ_API ZmxStatus zmxiEncodeFree_JPEG2K(ZmxiEncodeState_JPEG2K* pState);

/** Runs all coding passes of a code block and records their decisions, which zmxiEncodeStoreBits_JPEG2K_1u turns into
 *  bytes. Distortions are ready afterwards, rates and segment lengths only after the store. Forgets the block before.
 *
 *  \param pSrc          the block's samples, sign-magnitude
 *  \param srcStep       bytes from one row to the next
 *  \param size          the block's width and height in samples; not above the size that the state was made for
 *  \param pState        a state from zmxiEncodeInitAlloc_JPEG2K
 *  \param subband       0 LL, 1 LH, 2 HL, 3 HH
 *  \param magnBits      how many bits of the magnitude are coded, counted from bit 30 down: 0 to 31. The planes below
 *                       31 - magnBits are fraction bits, which only the distortions see
 *  \param mqTermType    a ZMX_MQ_TERM_... value
 *  \param reserved      not used
 *  \param codeStyle     an or of ZMX_CB_VERTICALLY_CAUSAL to ZMX_CB_LOSSLESS
 *  \param pSfBits       receives the bit length of the largest magnitude, counted from bit 0; 0 for an all-zero block
 *  \param pnPasses      receives the number of passes; 0 if nothing reaches plane 31 - magnBits
 *  \param pnTermPasses  receives the number of codeword segments; 1 for a block without passes, or 0 if
 *                       ZMX_CB_TERMINATE_ALL is set
 *  \return zmxStsNullPtrErr if pState is null; zmxStsContextMatchErr if it is not an encoder state; zmxStsNullPtrErr if
 *          pSfBits, pnPasses or pnTermPasses is null; zmxStsSizeErr if the height or the width is below 1;
 *          zmxStsNullPtrErr if pSrc is null; zmxStsStepErr if srcStep is below 1
 */
ZMXJ_API ZmxStatus zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, ZmxiSize size,
                                                          ZmxiEncodeState_JPEG2K* pState, int subband, int magnBits,
                                                          int mqTermType, int reserved, Zmx32u codeStyle, int* pSfBits,
                                                          int* pnPasses, int* pnTermPasses);

/** Writes the next bytes of the loaded code block, whose segments follow each other. To be called until it reports the
 *  end; buffers may be as small as one byte.
 *
 *  \param pDst          receives the bytes
 *  \param pDstLen       the capacity of pDst in bytes; receives how many were written
 *  \param pState        a state with a loaded block
 *  \param pIsNotFinish  receives 1 if another call is needed, 0 at the end of the block
 *  \return zmxStsNullPtrErr if pState is null; zmxStsContextMatchErr if it is not an encoder state; zmxStsNullPtrErr if
 *          pDst, pDstLen or pIsNotFinish is null; zmxStsSizeErr if the capacity is below 1; zmxStsContextMatchErr if the
 *          state does not hold what one can, which only something else that wrote to it brings about
 */
ZMXJ_API ZmxStatus zmxiEncodeStoreBits_JPEG2K_1u(Zmx8u* pDst, int* pDstLen, ZmxiEncodeState_JPEG2K* pState,
                                                 int* pIsNotFinish);

/** Tells the length of a codeword segment; known when the store has reached its end.
 *
 *  \param termNum  the segment, from 0
 *  \param pLen     receives its length in bytes, which may be 0
 *  \return zmxStsNullPtrErr if pState is null; zmxStsContextMatchErr if it is not an encoder state; zmxStsNullPtrErr if
 *          pLen is null; zmxStsBadPassNumberErr if there is no such segment
 */
ZMXJ_API ZmxStatus zmxiEncodeGetTermPassLen_JPEG2K(const ZmxiEncodeState_JPEG2K* pState, int termNum, int* pLen);

/** Tells where the stream can be cut behind a pass; known when the store has reached its end.
 *
 *  \param passNum  the pass, from 0
 *  \param pRate    receives how many bytes from the start of the block decode it and the passes before it
 *  \return zmxStsNullPtrErr if pState is null; zmxStsContextMatchErr if it is not an encoder state; zmxStsNullPtrErr if
 *          pRate is null; zmxStsBadPassNumberErr if there is no such pass
 */
ZMXJ_API ZmxStatus zmxiEncodeGetRate_JPEG2K(const ZmxiEncodeState_JPEG2K* pState, int passNum, int* pRate);

/** Tells by how much a pass and those before it reduce the squared error of the block, in units of the square of
 *  plane 31 - magnBits; known after the load. A lowest pass may make it smaller again.
 *
 *  \param passNum  the pass, from 0
 *  \param pDist    receives the reduction
 *  \return zmxStsNullPtrErr if pState is null; zmxStsContextMatchErr if it is not an encoder state; zmxStsNullPtrErr if
 *          pDist is null; zmxStsBadPassNumberErr if there is no such pass
 */
ZMXJ_API ZmxStatus zmxiEncodeGetDist_JPEG2K(const ZmxiEncodeState_JPEG2K* pState, int passNum, double* pDist);

#ifdef __cplusplus
}
#endif

#endif /* ZMXJ_CODEBLOCK_H */
