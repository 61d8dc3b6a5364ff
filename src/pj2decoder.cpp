// pj2decoder.cpp - the code-block decoder's exported functions: the state's life, the steps through the
// codeword segments, and the decoding of a whole block in one call. The coding passes are in
// pj2cbdecpass.cpp.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2cbdecpass.h"

#include "pj2cbflags.h"
#include "pjargs.h"
#include "pjrows.h"
#include "psalloc.h"

#include <cstdint>

namespace zmx {

static constexpr int kFlagAlignment = 32; // bytes; the plane stands behind the fixed fields

// Null, then the magic word: the head of most functions' tests.
static Args stateArgs(const ZmxiDecodeCBProgrState* state) {
    return Args().ptr(state).test(state && state->magic != kDecoderMagic, zmxStsContextMatchErr);
}

// Bytes of a state; 0, which no allocation satisfies, for a block so large that an int cannot tell them.
static int stateSize(ZmxiSize size) {
    const std::int64_t bytes = flagPlaneBytes(size) + int(sizeof(ZmxiDecodeCBProgrState)) + kFlagAlignment;
    return bytes <= kMostBytes ? int(bytes) : 0;
}

} // namespace zmx

using namespace zmx;

ZmxStatus zmxiDecodeCBProgrGetStateSize_JPEG2K(ZmxiSize size, int* pSize) {
    // The size ahead of the pointer: required here.
    if (ZmxStatus bad = Args().size(size).ptr(pSize)) return bad;
    *pSize = stateSize(size);
    return *pSize ? zmxStsNoErr : zmxStsSizeErr;
}

ZmxStatus zmxiDecodeGetBufSize_JPEG2K(ZmxiSize size, int* pSize) {
    return zmxiDecodeCBProgrGetStateSize_JPEG2K(size, pSize);
}

ZmxStatus zmxiDecodeCBProgrInit_JPEG2K(ZmxiDecodeCBProgrState* pState) {
    if (ZmxStatus bad = Args().ptr(pState)) return bad;
    pState->magic = kDecoderMagic;
    pState->attached = 0;
    const auto end = reinterpret_cast<std::uintptr_t>(pState + 1);
    const auto padding = -end % kFlagAlignment;
    pState->pFlagArea = reinterpret_cast<Zmx32u*>(reinterpret_cast<Zmx8u*>(pState + 1) + padding);
    return zmxStsNoErr;
}

ZmxStatus zmxiDecodeCBProgrInitAlloc_JPEG2K(ZmxiDecodeCBProgrState** ppState, ZmxiSize size) {
    if (ZmxStatus bad = Args().ptr(ppState).size(size)) return bad;
    *ppState = reinterpret_cast<ZmxiDecodeCBProgrState*>(zmxsMalloc_8u(stateSize(size)));
    return *ppState ? zmxiDecodeCBProgrInit_JPEG2K(*ppState) : zmxStsMemAllocErr;
}

ZmxStatus zmxiDecodeCBProgrFree_JPEG2K(ZmxiDecodeCBProgrState* pState) {
    if (ZmxStatus bad = stateArgs(pState)) return bad;
    zmxsFree(pState);
    return zmxStsNoErr;
}

ZmxStatus zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(Zmx32s* pDst, int dstStep, ZmxiSize size,
                                                 ZmxiDecodeCBProgrState* pState, int subband, int nBitPlanes,
                                                 Zmx32u cbStyle) {
    if (ZmxStatus bad = stateArgs(pState).ptr(pDst).step(dstStep).size(size)) return bad;
    ZmxiDecodeCBProgrState& s = *pState;
    s.cbStyle = cbStyle;
    s.block = {pDst, size.width, size.height, dstStep};
    if (!(cbStyle & ZMX_CB_KEEP_DST))
        for (int y = 0; y < size.height; ++y) std::memset(rowAt(pDst, dstStep, y), 0, std::size_t(size.width) * 4);

    // The flag plane and its geometry, of which the fields from pBlock to offsetSE tell the same in other words.
    const int stride = int(flagRowBytes(size.width));
    s.flagPlane = {s.pFlagArea, stride};
    if (!(cbStyle & ZMX_CB_KEEP_FLAGS)) clearFlagPlane(s.pFlagArea, size);
    mqDecoderResetCtx(&s.mq);

    s.pBlock = &s.block;
    s.pFlagPlaneRec = &s.flagPlane;
    s.stripeStep = wrapMul(dstStep, 4);
    s.flagStripeStep = wrapMul(stride, 2);
    s.offsetN = -stride;
    s.offsetS = stride;
    s.offsetNW = -stride - 4;
    s.offsetNE = -stride + 4;
    s.offsetSW = stride - 4;
    s.offsetSE = stride + 4;
    s.pZeroCodingLUT = zeroCodingLUT(subband);

    // The four planes from the top on are MQ coded throughout.
    s.bypassPlane = cbStyle & ZMX_CB_SELECTIVE_BYPASS && nBitPlanes > 4 ? nBitPlanes - 4 : 0;
    s.attached = 1;
    s.curBitPlane = wrapSub(nBitPlanes, 1);
    s.passCounter = 0;
    s.passState = CleanupNext;
    s.damaged = 0;
    return zmxStsNoErr;
}

ZmxStatus zmxiDecodeCBProgrSetPassCounter_JPEG2K(int nPasses, ZmxiDecodeCBProgrState* pState) {
    if (ZmxStatus bad = stateArgs(pState)) return bad;
    pState->passCounter = nPasses;
    return zmxStsNoErr;
}

ZmxStatus zmxiDecodeCBProgrGetPassCounter_JPEG2K(const ZmxiDecodeCBProgrState* pState, int* pnPasses) {
    // Both pointers ahead of the magic word, unlike its sibling below: required.
    if (ZmxStatus bad = Args().ptr(pState, pnPasses)) return bad;
    if (ZmxStatus bad = stateArgs(pState)) return bad;
    *pnPasses = pState->passCounter;
    return zmxStsNoErr;
}

ZmxStatus zmxiDecodeCBProgrGetCurBitPlaneNum_JPEG2K(const ZmxiDecodeCBProgrState* pState, int* pBitPlane) {
    if (ZmxStatus bad = stateArgs(pState).ptr(pBitPlane)) return bad;
    *pBitPlane = pState->curBitPlane;
    return zmxStsNoErr;
}

namespace zmx {
// The segment of one step as its passes see it: the styles, and what a pass that finds damage leaves behind.
// Each of the functions below returns whether the block is damaged.
namespace {

struct Step {
    ZmxiDecodeCBProgrState& s;
    const Zmx8u* src;
    int len;
    const bool causal = s.cbStyle & ZMX_CB_VERTICALLY_CAUSAL;
    const bool reset = s.cbStyle & ZMX_CB_RESET_CTX;
    const bool symbols = s.cbStyle & ZMX_CB_SEGMENTATION_SYMBOLS;
    const bool prediction = s.cbStyle & ZMX_CB_ERROR_PREDICTION;

    void startMq() { mqDecoderInit(&s.mq, src, len); }
    void startRaw() { s.raw = {src, len, 0, -1, 0}; }

    // Every pass is a segment. The state moves on even from a damaged pass, which no caller can notice.
    bool onePass() {
        --s.passCounter;
        switch (s.passState) {
        case SignificanceNext:
            startMq();
            s.passState = RefinementNext;
            return significancePropagation(&s, causal, reset, prediction);
        case RefinementNext:
            startMq();
            s.passState = CleanupNext;
            return magnitudeRefinement(&s, reset, prediction);
        case RawSignificanceNext:
            startRaw();
            s.passState = RawRefinementNext;
            return significancePropagationRaw(&s, causal, true);
        case RawRefinementNext:
            startRaw();
            s.passState = BypassCleanupNext;
            return magnitudeRefinementRaw(&s);
        default:
            startMq();
            if (cleanup(&s, causal, symbols, reset, prediction)) return true;
            --s.curBitPlane;
            s.passState = s.passState != BypassCleanupNext && s.curBitPlane >= s.bypassPlane ? SignificanceNext
                                                                                             : RawSignificanceNext;
            return false;
        }
    }

    // A segment runs to where MQ and raw passes meet. Where the count of passes ends inside a plane is not
    // remembered.
    bool oneSegment(int& passes) {
        switch (s.passState) {
        case BypassCleanupNext:
            startMq();
            if (cleanup(&s, causal, symbols, reset, prediction)) return true;
            if (--passes > 0) nextPlaneIsRaw();
            return false;
        case RawSignificanceNext:
            startRaw();
            if (significancePropagationRaw(&s, causal, false)) return true; // unreachable: nothing is looked for
            if (--passes <= 0) return false;
            if (magnitudeRefinementRaw(&s)) return true;
            s.passState = BypassCleanupNext;
            --passes;
            return false;
        default:
            startMq();
            return planesToBypass(passes);
        }
    }

private:
    bool planesToBypass(int& passes) {
        for (;;) {
            // The segment ends with its last plane, so only there a termination can be tested.
            const bool last = s.curBitPlane == s.bypassPlane;
            if (cleanup(&s, causal, symbols, reset, prediction && last)) return true;
            --passes;
            if (s.curBitPlane <= s.bypassPlane) {
                if (passes > 0) nextPlaneIsRaw();
                return false;
            }
            if (passes <= 0) return false;
            --s.curBitPlane;
            if (significancePropagation(&s, causal, reset, false)) return true; // unreachable: nothing is looked for
            if (--passes <= 0) return false;
            if (magnitudeRefinement(&s, reset, false)) return true; // unreachable: nothing is looked for
            if (--passes <= 0) return false;
        }
    }

    void nextPlaneIsRaw() {
        --s.curBitPlane;
        s.passState = RawSignificanceNext;
    }
};

} // namespace
} // namespace zmx

ZmxStatus zmxiDecodeCBProgrStep_JPEG2K(const Zmx8u* pSrc, int srcLen, ZmxiDecodeCBProgrState* pState) {
    if (ZmxStatus bad = Args().ptr(pSrc)) return bad;
    if (ZmxStatus bad = stateArgs(pState)) return bad;
    if (!pState->attached) return zmxStsCBNotAttachedErr;
    if (pState->damaged) return zmxStsCBDamagedErr;
    if (pState->passCounter <= 0 || pState->curBitPlane < 0) return zmxStsNoErr;

    if (!mq::areContexts(pState->mq.ctxState, pState->mq.ctxMPS)) return zmxStsContextMatchErr;

    Step step{*pState, pSrc, srcLen};
    if (pState->cbStyle & ZMX_CB_TERMINATE_ALL) {
        pState->damaged = step.onePass();
    } else {
        int passes = pState->passCounter;
        pState->damaged = step.oneSegment(passes);
        pState->passCounter = passes;
    }
    return pState->damaged ? zmxStsCBDamagedErr : zmxStsNoErr;
}

namespace zmx {

// Calls sample(word) for each sample of a block and stores what it returns.
template <class Sample> static void forEachSample(Zmx32s* dst, int dstStep, ZmxiSize size, Sample sample) {
    for (int y = 0; y < size.height; ++y) {
        Zmx8u* row = rowAt(dst, dstStep, y);
        for (int x = 0; x < size.width; ++x) store(row, x, sample(load<Zmx32u>(row, x)));
    }
}

} // namespace zmx

ZmxStatus zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(const Zmx8u* pSrc, Zmx32s* pDst, int dstStep, ZmxiSize size, int subband,
                                               int nBitPlanes, int nPasses, const int* pTermLen, int nTerms,
                                               Zmx32u cbStyle, int* pErrorBitPlane, ZmxiDecodeCBProgrState* pState) {
    // The size amid the pointers: required here.
    if (ZmxStatus bad = Args().ptr(pSrc, pState).size(size).ptr(pTermLen, pDst).step(dstStep)) return bad;
    zmxiDecodeCBProgrInit_JPEG2K(pState);
    zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(pDst, dstStep, size, pState, subband, nBitPlanes, cbStyle);
    zmxiDecodeCBProgrSetPassCounter_JPEG2K(nPasses, pState);

    ZmxStatus status = zmxStsNoErr;
    for (int i = 0; i < nTerms && !status; ++i) {
        status = zmxiDecodeCBProgrStep_JPEG2K(pSrc, pTermLen[i], pState);
        pSrc += pTermLen[i];
    }

    // Bits below the last plane that was decoded are midpoints, which the caller may not want.
    const int plane = pState->curBitPlane;
    const Zmx32u keep = atPlane(~0u, plane);
    if (status == zmxStsCBDamagedErr) {
        if (pErrorBitPlane) *pErrorBitPlane = plane;
        // What is open below the planes kept is rebuilt as its midpoint; a sample of which nothing is left
        // loses its sign.
        if (cbStyle & ZMX_CB_CONCEAL_DAMAGE) {
            const Zmx32u midpoint = atPlane(1, plane);
            forEachSample(pDst, dstStep, size, [=](Zmx32u v) {
                v &= keep;
                return v & 0x7FFFFFFF ? v | midpoint : 0;
            });
        }
    }
    if (!(cbStyle & ZMX_CB_KEEP_MIDPOINT) && plane >= 1)
        forEachSample(pDst, dstStep, size, [=](Zmx32u v) { return v & keep; });
    return status;
}
