// pj2decstate.h - the state of a code block under decoding. It is the caller's memory: between calls it holds the
// block, its flag plane, the coders of the segment under way, and which pass comes next.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pj2mqdec.h"

namespace zmx {

// Where the samples of a block are.
struct CodeBlockRec {
    Zmx32s* pDst; // first sample
    int width;
    int height;
    int dstStep; // bytes from row to row
};

// Where its flags are; the words are described in pj2cbflags.h.
struct FlagPlaneRec {
    Zmx32u* pFlags; // base of the plane: the top left word of its border
    int flagStride; // bytes from flag row to flag row
};

// Bits of a raw segment, from the top of each byte; behind a 0xFF the top bit is passed over.
struct RawBitReader {
    const Zmx8u* pData;
    int dataLen;
    int bytePos;
    int bitIndex; // of the next bit in curByte; -1 when a new byte is needed
    Zmx8u curByte;
};

inline constexpr Zmx32u kDecoderMagic = 0x434D4150; // "PAMC" in little-endian memory

// The next pass. A value outside the list counts as CleanupNext.
enum PassState : int {
    CleanupNext = 0,
    RefinementNext = 1,
    SignificanceNext = 2,
    BypassCleanupNext = 3, // MQ cleanup of a plane whose other passes were raw
    RawRefinementNext = 4,
    RawSignificanceNext = 5
};

} // namespace zmx

// The fixed fields; the flag plane follows them on a 32-byte boundary.
struct ZmxiDecodeCBProgrState {
    Zmx32u magic;
    zmx::CodeBlockRec block;
    const zmx::CodeBlockRec* pBlock;

    // The plane of the pass, and what follows from it.
    int curBitPlane;      // of the next pass; below zero the block is finished
    Zmx32u planeOne;      // its bit
    Zmx32u planeNewSig;   // magnitude of a sample that turns significant: its bit and the midpoint bit
    Zmx32u planeHalf;     // the midpoint bit
    Zmx32u planeKeepMask; // the bits that a refinement keeps

    // Cursors of the scan. They stand at its start when a pass begins, and mean nothing between passes.
    int stripeRow;
    Zmx32s* pSample;
    int stripeStep; // bytes from stripe to stripe
    Zmx32s* pStripe;
    Zmx32s* pColumn;
    Zmx32s* pColumnEnd;
    const zmx::FlagPlaneRec* pFlagPlaneRec;
    const Zmx32u* pZeroCodingLUT; // of the block's subband
    Zmx32u* pFlagStripe;
    Zmx32u* pFlagColumn;
    Zmx32u* pFlagWord;
    int flagStripeStep;
    int offsetN, offsetS, offsetNW, offsetNE, offsetSW, offsetSE; // bytes from a flag word to its neighbours

    zmx::FlagPlaneRec flagPlane; // the flag plane in use
    Zmx32u* pFlagArea;           // its storage

    zmx::MQDecoderState mq;
    zmx::RawBitReader raw;
    int passState;   // a PassState
    int passCounter; // passes still allowed
    int bypassPlane; // planes below this one are raw
    Zmx32u cbStyle;
    int damaged;
    int attached;
};
