// pj2mqdec.h - the MQ decoder (ISO/IEC 15444-1 C.3, in the software conventions of Annex J.1): its state and its
// routines for one codeword segment.
#pragma once

#include "pj2mqprobest.h"

struct MQDecoderState {
    const Zmx8u* pData; // the codeword segment
    int dataLen;        // its length; zero or negative reads as empty
    int bytePos;        // index of the byte most recently taken into creg (B of the standard)
    Zmx32u areg;        // interval register, 16 bits, bit 15 set
    Zmx32u creg;        // code register, inverted; its upper 16 bits are compared with areg
    Zmx32u ct;          // bits left in creg before the next byte-in
    Zmx32u ctxState[kContexts]; // per context, its row of owniEstimator_JPEG2K
    Zmx32u ctxMPS[kContexts];   // per context, its more probable symbol
    Zmx32u markerFound;         // a marker has been met in this segment
};

// Starts a codeword segment; the contexts stay as they are.
void mqDecoderInit(MQDecoderState* state, const Zmx8u* pData, int dataLen);

// Decodes one decision under a context, 0 to 18.
int mqDecoderDecode(MQDecoderState* state, int context);

// Whether the segment ended in another way than an error-free predictable termination would have ended it: 1 if so.
// Uses up the state: it is the last thing done with a segment.
int mqDecoderCheckErrPredTerm(MQDecoderState* state);

// Returns all contexts to their initial states.
void mqDecoderResetCtx(MQDecoderState* state);
