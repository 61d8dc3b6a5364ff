// pj2mqdec.cpp - the MQ decoder's routines on its state; the decisions themselves are in the header.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2mqdec.h"

namespace zmx {

void mqDecoderInit(MQDecoderState* state, const Zmx8u* pData, int dataLen) {
    state->pData = pData;
    state->dataLen = dataLen;
    state->bytePos = 0;
    state->markerFound = 0;
    mq::Bytes bytes(*state);
    Zmx32u creg = (bytes.current() ^ 0xFF) << 16;
    const Zmx32u ct = bytes.byteIn(creg);
    bytes.save(*state);
    state->areg = 0x8000;
    state->creg = creg << 7;
    state->ct = ct - 7;
}

int mqDecoderDecode(MQDecoderState* state, int context) {
    mq::Contexts contexts(state->ctxState, state->ctxMPS);
    const Zmx32u decision = mq::Decoder(*state).decode(contexts.at[context]);
    contexts.save(state->ctxState, state->ctxMPS);
    return int(decision);
}

// The bits that a predictable termination leaves unread make one more decision, with a probability set by
// their number, a certain one. All bytes up to the 0xFF or the marker behind the segment must have been
// taken.
int mqDecoderCheckErrPredTerm(MQDecoderState* state) {
    const mq::Bytes bytes(*state);
    if (bytes.current() < 0xFF && !bytes.markerFound()) return 1;
    if (state->ct != 0) {
        if (!bytes.markerFound()) return 1;
        if (state->ct == 1) return 0;
    } else {
        if (!bytes.markerFound() && bytes.next() <= 0x8F) return 1;
        state->ct = 8;
    }
    const Zmx32u shifts = state->ct - 1;
    const Zmx32u qe = 0x8000u >> shifts;
    state->areg -= qe;
    if (state->areg > state->creg >> 16) return 1;
    state->creg -= state->areg << 16;
    // Renormalised in one go: as many shifts as there are bits but one, so no byte-in falls due.
    state->areg = qe << shifts;
    state->creg <<= shifts;
    state->ct = 1;
    return 0;
}

void mqDecoderResetCtx(MQDecoderState* state) { mq::setInitialContexts(state->ctxState, state->ctxMPS); }

} // namespace zmx
