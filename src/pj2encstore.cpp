// pj2encstore.cpp - the second half of the code-block encoder: its passes become bytes, through buffers of
// any size, with the rate at which the stream can be cut behind each pass and the length of each codeword
// segment.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2encstate.h"

#include <limits>

namespace zmx {

// How many bytes beyond those that have left the coder decode the current pass, which is at its end. An upper
// bound by the registers as they stand: the coder runs on undisturbed.
static int rateSlack(const EncCoderState& s) {
    if (s.passIsRaw) return rawBitsPending(&s);
    if (!s.mqPending) return 0;
    const int limit = s.curByte >= 0xFE ? 22 : 23;
    // Bytes that a full buffer left in the queue count too, so that rates do not depend on the size of
    // buffers.
    const int queued = s.fifoCount - s.fifoRead;
    return queued + (27 - s.ct > limit ? 5 : 4) - (s.bytesOut == 0);
}

// Books a pass that is finished, and goes on to the next.
static void endPass(EncCoderState& s) {
    s.totalBytes += s.passBytes;
    const int slack = rateSlack(s);
    s.passRate[s.curPass] = s.totalBytes + slack;
    // An exact rate may come out below earlier bounds; rates do not decrease.
    if (slack == 0)
        for (int i = s.curPass; i > 0 && s.passRate[i] < s.passRate[i - 1]; --i) s.passRate[i - 1] = s.passRate[i];
    s.passLen[s.curPass] = s.passBytes;
    s.decisionBase += s.passDecisions[s.curPass];
    ++s.curPass;
    enterPass(s);
    if (s.resetCtx) mq::setInitialContexts(s.ctxState, s.ctxMPS); // behind raw passes too
}

// All passes from the current one on, as far as the buffer takes them; *pLen becomes the bytes written.
static void encBufEncodeTermLastPass(EncCoderState* state, Zmx8u* pDst, int* pLen) {
    int written = 0;
    while (state->curPass < state->passCount && written < *pLen) {
        const auto code = !endsSegment(*state, state->curPass) ? decEncoderEncode
                          : state->passIsRaw                   ? rawEncodeAndTerminate
                                                               : decEncoderMQEncodeAndTerminate;
        int len = *pLen - written;
        const int unfinished = code(state, pDst + written, &len);
        written += len;
        if (!unfinished) endPass(*state);
    }
    *pLen = written;
}

// A truncation point does not stay behind a 0xFF, which the decoder supplies itself. Looks at the finished
// passes that end in the bytes of this call.
static void keepRatesOffFF(EncCoderState& s, const Zmx8u* dst, int written) {
    if (!written) return;
    const int end = s.totalBytes + s.passBytes;
    const int start = end - written;
    for (int i = 0; i < s.curPass; ++i) {
        int& rate = s.passRate[i];
        if (rate > start && rate <= end && dst[rate - 1 - start] == 0xFF) --rate;
    }
}

// Whether the pass to be stored and the coders' registers can be what a load and the stores since have left. By
// this no access leaves the arrays; only a state that something else has written to can fail it.
static bool isSound(const EncCoderState& s) {
    if (s.passCount != passesOf(s) || s.curPass < 0 || s.curPass > s.passCount) return false;
    if (s.curPass == s.passCount) return true; // nothing is left to be stored

    int all = 0, base = 0; // decisions: of all passes, and ahead of the current one
    for (int i = 0; i < s.passCount; ++i) {
        if (i == s.curPass) base = all;
        if (s.passDecisions[i] < 0 || s.passDecisions[i] > s.decisionCount - all) return false;
        all += s.passDecisions[i];
    }
    const bool pass = all == s.decisionCount && base == s.decisionBase && s.pPassDecisions == s.pDecisions + base &&
                      s.pPassContexts == s.pContexts + base && s.passDecisionPos >= 0 &&
                      s.passDecisionPos <= s.passDecisionCount && s.passDecisionCount == s.passDecisions[s.curPass];
    constexpr int most = std::numeric_limits<int>::max() / 4; // bytes, with room for those to come
    const bool counts = s.totalBytes >= 0 && s.totalBytes <= most && s.passBytes >= 0 && s.passBytes <= most;
    const bool queue = s.fifoRead >= 0 && s.fifoRead <= s.fifoCount && s.fifoCount <= kFifoSize;
    const bool mq = s.areg >= 0x8000 && s.areg <= 0xFFFF && s.ct >= 1 && s.ct <= 12 && s.creg >> (28 - s.ct) == 0 &&
                    s.curByte <= 0xFF && s.bytesOut >= 0 && s.bytesOut <= most && mq::areContexts(s.ctxState, s.ctxMPS);
    const bool raw =
        s.rawBitPos >= 0 && s.rawBitPos <= (s.rawLastFF ? 6 : 7) && s.rawBytesOut >= 0 && s.rawBytesOut <= most;
    return pass && counts && queue && mq && raw;
}

} // namespace zmx

using namespace zmx;

ZmxStatus zmxiEncodeStoreBits_JPEG2K_1u(Zmx8u* pDst, int* pDstLen, ZmxiEncodeState_JPEG2K* pState, int* pIsNotFinish) {
    if (ZmxStatus bad = stateArgs(pState).ptr(pDst, pDstLen, pIsNotFinish)) return bad;
    if (ZmxStatus bad = Args().size(*pDstLen)) return bad;
    EncCoderState& coder = *pState->pCoder;
    if (!isSound(coder)) return zmxStsContextMatchErr;
    encBufEncodeTermLastPass(&coder, pDst, pDstLen);
    keepRatesOffFF(coder, pDst, *pDstLen);
    *pIsNotFinish = coder.curPass != coder.passCount;
    return zmxStsNoErr;
}

ZmxStatus zmxiEncodeGetTermPassLen_JPEG2K(const ZmxiEncodeState_JPEG2K* pState, int termNum, int* pLen) {
    if (ZmxStatus bad = stateArgs(pState).ptr(pLen)) return bad;
    const EncCoderState& coder = *pState->pCoder;
    if (termNum < 0 || termNum >= segmentCount(coder)) return zmxStsBadPassNumberErr;
    int pass = 0;
    for (int skipped = 0; skipped < termNum; ++pass) skipped += endsSegment(coder, pass);
    *pLen = 0;
    for (; pass < passesOf(coder); ++pass) {
        *pLen = wrapAdd(*pLen, coder.passLen[pass]);
        if (endsSegment(coder, pass)) break;
    }
    return zmxStsNoErr;
}
