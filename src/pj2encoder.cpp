// pj2encoder.cpp - the code-block encoder: the state's life, the load of a block, which runs all its coding
// passes, and what is known of them. The passes are in pj2cbencpass.cpp, the storing of the bytes in
// pj2encstore.cpp.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2cbencpass.h"

#include "pj2cbflags.h"
#include "pjrows.h"
#include "pjx87.h"
#include "psalloc.h"

#include <algorithm>
#include <bit>

namespace zmx {

// Bytes of each decision array for a column of four samples: more than 31 planes can record.
static constexpr int kDecisionsPerColumn = 1090;

// A zero-filled or raw block of memory; null also for a size that an int cannot tell.
static void* allocate(std::int64_t bytes) { return bytes <= kMostBytes ? zmxsMalloc_8u(int(bytes)) : nullptr; }
template <class T> static T* allocateZeroed() {
    void* p = allocate(sizeof(T));
    return p ? static_cast<T*>(std::memset(p, 0, sizeof(T))) : nullptr;
}
static void release(void* p) {
    if (p) zmxsFree(p);
}

// Frees what there is of a state.
static void releaseState(ZmxiEncodeState_JPEG2K* state) {
    release(state->pFlags);
    if (state->pCoder) {
        release(state->pCoder->pDecisions);
        release(state->pCoder->pContexts);
        release(state->pCoder);
    }
    release(state);
}

// A state with its four blocks of memory, or nothing.
static ZmxiEncodeState_JPEG2K* newState(ZmxiSize size) {
    auto* state = allocateZeroed<ZmxiEncodeState_JPEG2K>();
    if (!state) return nullptr;
    if ((state->pCoder = allocateZeroed<EncCoderState>())) {
        const std::int64_t decisions = bytesOf(size.width, kDecisionsPerColumn * ((size.height + std::int64_t(3)) / 4));
        EncCoderState& coder = *state->pCoder;
        coder.pDecisions = static_cast<Zmx8u*>(allocate(decisions));
        if (coder.pDecisions) coder.pContexts = static_cast<Zmx8u*>(allocate(decisions));
        if (coder.pContexts) state->pFlags = static_cast<Zmx32u*>(allocate(flagPlaneBytes(size)));
    }
    if (!state->pFlags) {
        releaseState(state);
        return nullptr;
    }
    state->magic = kEncoderMagic;
    return state;
}

} // namespace zmx

using namespace zmx;

ZmxStatus zmxiEncodeInitAlloc_JPEG2K(ZmxiEncodeState_JPEG2K** ppState, ZmxiSize size) {
    if (ZmxStatus bad = Args().ptr(ppState).size(size)) return bad;
    *ppState = newState(size);
    return *ppState ? zmxStsNoErr : zmxStsMemAllocErr;
}

ZmxStatus zmxiEncodeFree_JPEG2K(ZmxiEncodeState_JPEG2K* pState) {
    // The magic word is not looked at, unlike everywhere else: required here.
    if (ZmxStatus bad = Args().ptr(pState)) return bad;
    releaseState(pState);
    return zmxStsNoErr;
}

namespace zmx {

// The bit length of the largest magnitude.
static int magnitudeBits(const Zmx32s* src, int srcStep, ZmxiSize size) {
    Zmx32u all = 0;
    for (int y = 0; y < size.height; ++y) {
        const Zmx8u* row = rowAt(src, srcStep, y);
        for (int x = 0; x < size.width; ++x) all |= load<Zmx32u>(row, x);
    }
    return std::bit_width(all & 0x7FFFFFFF);
}

// What a load begins with; the arrays of decisions stay.
static void resetCoder(EncCoderState& coder, int mqTermType, Zmx32u codeStyle) {
    mq::initEnc(&coder);
    mq::setInitialContexts(coder.ctxState, coder.ctxMPS);
    coder.mqPending = 0;
    coder.mqTermType = mqTermType;
    coder.rawLastFF = coder.rawByte = 0;
    coder.rawBitPos = 7;
    coder.rawBytesOut = 0;
    coder.passCount = coder.decisionCount = coder.decisionBase = coder.curPass = 0;
    coder.resetCtx = codeStyle & ZMX_CB_RESET_CTX;
    coder.termAll = codeStyle & ZMX_CB_TERMINATE_ALL;
}

// All coding passes, from the plane of the highest magnitude bit down to the base plane.
static void runPasses(ZmxiEncodeState_JPEG2K* state, const EncodedBlock& block, int sfBits, Zmx32u codeStyle) {
    const bool symbols = codeStyle & ZMX_CB_SEGMENTATION_SYMBOLS;
    // The four planes from the top on are MQ coded throughout.
    const int bypassBelow = codeStyle & ZMX_CB_SELECTIVE_BYPASS ? sfBits - 4 : 0;
    const int top = sfBits - 1;
    const int last = std::max(state->basePlane, 0); // a magnitude has no planes below 0
    for (int plane = top; plane >= last; --plane) {
        if (plane < bypassBelow) {
            significancePropagationRaw(state, block, plane);
            magnitudeRefinementRaw(state, block, plane);
        } else if (plane < top) {
            significancePropagation(state, block, plane);
            magnitudeRefinement(state, block, plane);
        }
        cleanup(state, block, plane, symbols);
        state->distExp = wrapSub(state->distExp, 2);
    }
}

} // namespace zmx

ZmxStatus zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(const Zmx32s* pSrc, int srcStep, ZmxiSize size,
                                                 ZmxiEncodeState_JPEG2K* pState, int subband, int magnBits,
                                                 int mqTermType, int /*reserved*/, Zmx32u codeStyle, int* pSfBits,
                                                 int* pnPasses, int* pnTermPasses) {
    // The results and the size ahead of the source: required here.
    if (ZmxStatus bad = stateArgs(pState).ptr(pSfBits, pnPasses, pnTermPasses).size(size).ptr(pSrc).step(srcStep))
        return bad;
    clearFlagPlane(pState->pFlags, size);
    EncCoderState& coder = *pState->pCoder;
    resetCoder(coder, mqTermType, codeStyle);

    const int sfBits = *pSfBits = magnitudeBits(pSrc, srcStep, size);
    pState->passIndex = pState->passDist[0] = 0;
    pState->lossless = codeStyle & ZMX_CB_LOSSLESS;
    pState->basePlane = wrapSub(31, magnBits);
    // Twice the plane above the base plane, as errors are squared, less the 13 fraction bits of the tables.
    pState->distExp = wrapSub(wrapMul(2, wrapSub(sfBits - 1, pState->basePlane)), 13);
    const EncodedBlock block{pSrc, srcStep, size, zeroCodingLUT(subband), (codeStyle & ZMX_CB_VERTICALLY_CAUSAL) != 0};
    runPasses(pState, block, sfBits, codeStyle);

    *pnPasses = coder.passCount;
    *pnTermPasses = segmentCount(coder);
    // The store begins at the first pass.
    coder.totalBytes = coder.decisionBase = coder.curPass = 0;
    if (coder.passCount) enterPass(coder);
    return zmxStsNoErr;
}

ZmxStatus zmxiEncodeGetRate_JPEG2K(const ZmxiEncodeState_JPEG2K* pState, int passNum, int* pRate) {
    if (ZmxStatus bad = stateArgs(pState).ptr(pRate)) return bad;
    if (passNum < 0 || passNum >= passesOf(*pState->pCoder)) return zmxStsBadPassNumberErr;
    *pRate = pState->pCoder->passRate[passNum];
    return zmxStsNoErr;
}

namespace zmx {

// Two to a power, with a factor that is a signed 32-bit number whose shift counts modulo 32: required. An
// exponent of 31 gives a negative power, and one above 31 begins anew.
static double wrappedPower(int exponent) {
    const auto shifted = [](Zmx32u n) { return Zmx32s(1u << (n & 31)); };
    return exponent > 0 ? shifted(Zmx32u(exponent)) : 1.0 / shifted(-Zmx32u(exponent));
}

// The sum of the first passes in double precision, and whether nothing was rounded: what is left of each sum without
// one of its terms is the other one.
static bool exactDistortion(const ZmxiEncodeState_JPEG2K& state, int passes, double& sum) {
    bool exact = !kDoubleOnX87; // which may hold more than a double, and store less
    sum = 0;
    for (int i = 0; i < passes; ++i) {
        const double term = state.passDist[i] * wrappedPower(state.passDistExp[i]), next = sum + term;
        exact &= next - sum == term && next - term == sum;
        sum = next;
    }
    return exact;
}

} // namespace zmx

ZmxStatus zmxiEncodeGetDist_JPEG2K(const ZmxiEncodeState_JPEG2K* pState, int passNum, double* pDist) {
    if (ZmxStatus bad = stateArgs(pState).ptr(pDist)) return bad;
    if (passNum < 0 || passNum >= passesOf(*pState->pCoder)) return zmxStsBadPassNumberErr;
    if (exactDistortion(*pState, passNum + 1, *pDist)) return zmxStsNoErr;
    SoftExtended sum; // rounded to a double once, at the end: required
    for (int i = 0; i <= passNum; ++i)
        sum = sum + SoftExtended(pState->passDist[i]) * SoftExtended(wrappedPower(pState->passDistExp[i]));
    *pDist = double(sum);
    return zmxStsNoErr;
}
