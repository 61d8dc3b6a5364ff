// pj2mqenc.cpp - the decision coders of the encoder, MQ and raw, which go through buffers of any size. The
// terminations of MQ segments are in pj2mqterm.cpp.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2mqenc.h"

#include <algorithm>
#include <bit>

namespace zmx {
namespace {

// The caller's buffer for one call.
class Output {
    EncCoderState& state;
    Zmx8u* const begin;
    Zmx8u* const end;
    int* const written;

public:
    Zmx8u* at;

    Output(EncCoderState& s, Zmx8u* dst, int* len) : state(s), begin(dst), end(dst + *len), written(len), at(dst) {}
    ~Output() {
        *written = int(at - begin);
        state.passBytes += *written;
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    int space() const { return int(end - at); }

    // Hands over what stands in the queue; says whether there was room for all of it.
    bool drain() {
        if (state.dropFirstByte && state.fifoRead < state.fifoCount) {
            state.dropFirstByte = 0;
            ++state.fifoRead;
        }
        while (state.fifoRead < state.fifoCount && at < end) *at++ = Zmx8u(state.byteFIFO[state.fifoRead++]);
        if (state.fifoRead < state.fifoCount) return false;
        state.fifoRead = state.fifoCount = 0;
        return true;
    }
};

// The most bytes that a decision puts out. Qe, and so the interval, is 1 or more: a renormalisation brings bit 15 up
// by 15 shifts or fewer, and behind the first byte each takes seven bits or eight.
constexpr int kMostShifts = 15, kBytesOfDecision = 3;
static_assert(kBytesOfDecision == 1 + (kMostShifts - 1) / 7);

// ENCODE (C.2.2) with CODEMPS, CODELPS and RENORME: codes decisions of the current pass until they are all coded or the output has come to `stop`, behind which
// there must be room for kBytesOfDecision - 1 bytes more.
//
// An MPS that needs no renormalisation takes Qe from areg and adds it to creg, so the upper end of the
// interval, their sum, stays. It is held here in creg's place: the common decision works on areg alone.
Zmx8u* codeDecisions(EncCoderState& s, Zmx8u* out, const Zmx8u* stop) {
    mq::Contexts contexts(s.ctxState, s.ctxMPS);
    Zmx32u areg = s.areg;
    Zmx32u top = s.creg + s.areg;
    Zmx32u curByte = s.curByte;
    int ct = s.ct;
    bool kept = !s.dropFirstByte;

    const Zmx8u* decision = s.pPassDecisions + s.passDecisionPos;
    const Zmx8u* context = s.pPassContexts + s.passDecisionPos;
    const Zmx8u* const end = s.pPassDecisions + s.passDecisionCount;
    while (decision != end) {
        mq::Context& held = contexts.at[*context++];
        const mq::Context c = held;
        const Zmx32u isLps = mq::mpsOf(c) ^ *decision++;
        const Zmx32u qe = mq::qeOf(c) >> 16;
        areg -= qe;
        if (areg >> 15 > isLps) continue; // an MPS, and still normalised

        // Which of the four exchanges it is cannot be foretold, so it is worked out without branches.
        const Zmx32u lower = -(Zmx32u(areg < qe) ^ isLps); // a mask: the interval becomes its lower part
        top -= areg & lower;
        areg ^= (areg ^ qe) & lower;
        held = mq::nextOf(c, isLps);

        int shifts = std::countl_zero(areg) - 16;
        if (shifts < ct) {
            areg <<= shifts;
            top <<= shifts;
            ct -= shifts;
            continue;
        }
        do {
            areg <<= ct;
            Zmx32u creg = (top << ct) - areg;
            shifts -= ct;
            ct = mq::byteOut(creg, curByte, [&](Zmx32u byte) {
                if (kept) *out++ = Zmx8u(byte); // not even in passing: behind the bytes told nothing changes
                kept = true;
                ++s.bytesOut;
            });
            top = creg + areg;
        } while (shifts >= ct);
        areg <<= shifts;
        top <<= shifts;
        ct -= shifts;
        if (out >= stop) break;
    }

    s.mqPending = 1; // there was a decision: callers see to it
    s.passDecisionPos = int(decision - s.pPassDecisions);
    s.areg = areg;
    s.creg = top - areg;
    s.curByte = curByte;
    s.ct = ct;
    s.dropFirstByte = !kept;
    contexts.save(s.ctxState, s.ctxMPS);
    return out;
}

bool decisionsLeft(const EncCoderState& s) { return s.passDecisionPos < s.passDecisionCount; }

// Codes while there are decisions and space. The last bytes of the buffer are filled by way of the queue,
// which holds what a decision puts out beyond the end.
void codeMq(EncCoderState& s, Output& output) {
    output.drain();
    while (decisionsLeft(s) && output.space() > 0) {
        if (output.space() >= kBytesOfDecision) {
            output.at = codeDecisions(s, output.at, output.at + output.space() - (kBytesOfDecision - 1));
        } else {
            Zmx8u bytes[kBytesOfDecision];
            const Zmx8u* const last = codeDecisions(s, bytes, bytes + 1);
            s.fifoCount = int(std::copy<const Zmx8u*>(bytes, last, s.byteFIFO) - s.byteFIFO);
            output.drain();
        }
    }
}

// Packs decisions from the top of each byte; behind a 0xFF the top bit stays zero.
void codeRaw(EncCoderState& s, Output& output) {
    while (decisionsLeft(s) && output.space() > 0) {
        const Zmx8u* decision = s.pPassDecisions + s.passDecisionPos;
        const int n = std::min(s.rawBitPos + 1, s.passDecisionCount - s.passDecisionPos);
        for (int i = 0; i < n; ++i) s.rawByte |= Zmx32u(decision[i] & 1) << s.rawBitPos--;
        s.passDecisionPos += n;
        if (s.rawBitPos < 0) {
            *output.at++ = Zmx8u(s.rawByte);
            ++s.rawBytesOut;
            s.rawLastFF = s.rawByte == 0xFF;
            s.rawBitPos = s.rawLastFF ? 6 : 7;
            s.rawByte = 0;
        }
    }
}

} // namespace

namespace mq {

void initEnc(EncCoderState* state) {
    state->areg = 0x8000;
    state->creg = 0;
    state->ct = 12;
    state->curByte = 0;
    state->bytesOut = state->fifoCount = state->fifoRead = 0;
    state->dropFirstByte = 1;
}

} // namespace mq

int decEncoderEncode(EncCoderState* state, Zmx8u* pDst, int* pLen) {
    Output output(*state, pDst, pLen);
    if (state->passIsRaw)
        codeRaw(*state, output);
    else
        codeMq(*state, output);
    return state->passDecisionCount - state->passDecisionPos;
}

int decEncoderMQEncodeAndTerminate(EncCoderState* state, Zmx8u* pDst, int* pLen) {
    Output output(*state, pDst, pLen);
    codeMq(*state, output);
    if (decisionsLeft(*state)) return 1;
    if (state->mqPending) {
        if (output.space() < 1) return 1;
        mq::terminate(state);
    }
    if (!output.drain()) return 1;
    mq::initEnc(state);
    return 0;
}

int rawEncodeAndTerminate(EncCoderState* state, Zmx8u* pDst, int* pLen) {
    Output output(*state, pDst, pLen);
    codeRaw(*state, output);
    if (decisionsLeft(*state) || output.space() < 1) return 1;
    // The free bits take the pattern 0101..., which the decoder's test expects.
    if (rawBitsPending(state)) *output.at++ = Zmx8u(state->rawByte | 0x2A >> (6 - state->rawBitPos));
    state->rawBitPos = 7;
    state->rawLastFF = state->rawByte = 0;
    return 0;
}

bool rawBitsPending(const EncCoderState* state) { return state->rawBitPos != (state->rawLastFF ? 6 : 7); }

} // namespace zmx
