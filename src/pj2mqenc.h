// pj2mqenc.h - the decisions of a code block, and the coders that turn them into bytes: MQ (ISO/IEC 15444-1
// C.2) with its terminations, and raw.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pj2mqprobest.h"
#include "pjwrap.h"

namespace zmx {

inline constexpr int kMaxPasses = 110;
inline constexpr int kFifoSize = 16;

struct EncCoderState {
    // The output path of the MQ coder.
    Zmx32u byteFIFO[kFifoSize]; // bytes not yet handed to the caller
    int fifoCount;              // bytes written into byteFIFO
    int fifoRead;               // bytes taken out of it
    Zmx32u curByte;             // the byte under construction (B of the standard)
    Zmx32u dropFirstByte;       // the next byte out is the dummy ahead of a segment, and is dropped

    // The MQ coder.
    Zmx32u areg; // interval register
    Zmx32u creg; // code register: 27 bits, and the carry in bit 27
    int ct;      // shifts left before the next byte-out
    Zmx32u ctxState[kContexts];
    Zmx32u ctxMPS[kContexts];
    int bytesOut; // byte-outs in this segment

    // The raw coder.
    Zmx32u rawLastFF; // the byte just finished was 0xFF
    Zmx32u rawByte;   // the byte under construction
    int rawBitPos;    // position of its next bit, 7 down to 0
    int rawBytesOut;

    // The current pass.
    const Zmx8u* pPassDecisions;
    const Zmx8u* pPassContexts;
    int passDecisionCount;
    int passDecisionPos; // decisions already coded
    int passBytes;       // bytes delivered
    Zmx32u mqPending;    // the MQ coder holds decisions not yet terminated
    int mqTermType;      // ZMX_MQ_TERM_...
    Zmx32u passIsRaw;

    // All passes of the block.
    Zmx8u* pContexts;  // context of each decision; 0, and not looked at, for those of raw passes
    Zmx8u* pDecisions; // 0 or 1
    int passCount;
    int passDecisions[kMaxPasses]; // decisions per pass
    int passLen[kMaxPasses];       // bytes per pass, filled by the store
    int passRaw[kMaxPasses];       // 1 for a raw pass
    int passRate[kMaxPasses];      // cumulative rate at the end of each pass, filled by the store
    int totalBytes;                // bytes of finished passes
    int decisionCount;             // decisions in all
    int decisionBase;              // index of the first decision of the current pass
    int curPass;                   // the pass that the store is at
    Zmx32u resetCtx;               // ZMX_CB_RESET_CTX, as it stands in the style
    Zmx32u termAll;                // ZMX_CB_TERMINATE_ALL, as it stands in the style
};

// A cleanup on the plane of bit 30, and three passes on each of the planes below it.
inline constexpr int kMostPasses = 1 + 3 * 30;
static_assert(kMostPasses <= kMaxPasses);

// The number of recorded passes, whatever has been done to the state.
inline int passesOf(const EncCoderState& coder) { return clamp(coder.passCount, 0, kMostPasses); }

// Whether a codeword segment ends with a recorded pass: MQ and raw passes never share one.
inline bool endsSegment(const EncCoderState& coder, int pass) {
    return coder.termAll || pass == coder.passCount - 1 || coder.passRaw[pass] != coder.passRaw[pass + 1];
}

// The number of codeword segments of the recorded passes.
inline int segmentCount(const EncCoderState& coder) {
    if (!coder.passCount) return coder.termAll ? 0 : 1; // no pass is one segment of no bytes, unless all are terminated
    int n = 0;
    for (int i = 0; i < passesOf(coder); ++i) n += endsSegment(coder, i);
    return n;
}

// Makes the pass at curPass, whose decisions begin at decisionBase, the one to be stored next.
inline void enterPass(EncCoderState& coder) {
    coder.passDecisionPos = coder.passBytes = 0;
    if (coder.curPass == coder.passCount) return;
    coder.pPassDecisions = coder.pDecisions + coder.decisionBase;
    coder.pPassContexts = coder.pContexts + coder.decisionBase;
    coder.passDecisionCount = coder.passDecisions[coder.curPass];
    coder.passIsRaw = Zmx32u(coder.passRaw[coder.curPass]);
}

namespace mq {

// BYTEOUT (C.2.7): settles the carry, pushes the finished byte, and takes the next one from the code
// register. Returns the number of its bits, which are the shifts to the next call. Behind a 0xFF there is
// room for the carry to come: the byte has seven bits, and the carry that the register holds already is the
// eighth.
template <class Push> [[gnu::always_inline]] inline int byteOut(Zmx32u& creg, Zmx32u& curByte, Push push) {
    if (curByte != 0xFF) {
        curByte += creg >> 27;
        creg &= 0x7FFFFFF;
    }
    const int bits = curByte == 0xFF ? 7 : 8;
    push(curByte);
    curByte = creg >> (27 - bits);
    creg &= (1u << (27 - bits)) - 1;
    return bits;
}

// INITENC (C.2.8): readies the MQ coder for a segment; the contexts stay as they are.
void initEnc(EncCoderState* state);

// Ends an MQ segment by the method of mqTermType. Its last bytes go into the queue, which must be empty.
void terminate(EncCoderState* state);

} // namespace mq

// Coding of the current pass into pDst, of capacity *pLen; *pLen becomes the bytes written, which are also
// added to passBytes. Nothing is coded once the buffer is full. Without termination, MQ or raw: returns the
// number of decisions still uncoded.
int decEncoderEncode(EncCoderState* state, Zmx8u* pDst, int* pLen);
// With termination, MQ: returns 0 when the pass is terminated and all its bytes are delivered.
int decEncoderMQEncodeAndTerminate(EncCoderState* state, Zmx8u* pDst, int* pLen);
// With termination, raw: the same.
int rawEncodeAndTerminate(EncCoderState* state, Zmx8u* pDst, int* pLen);

// Whether the raw coder holds bits of an unfinished byte.
bool rawBitsPending(const EncCoderState* state);

} // namespace zmx
