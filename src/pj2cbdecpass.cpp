// pj2cbdecpass.cpp - the coding passes of the decoder: what a decision is when it comes from an MQ or a raw
// segment.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2cbdecpass.h"

#include "pj2cbpasses.h"
#include "pjrows.h"

namespace zmx {
namespace {

// What a pass works with, set down in the state; the scan itself runs in locals.
void beginPass(ZmxiDecodeCBProgrState& s) {
    // The plane's masks. The sign survives a refinement: planeKeepMask has bit 31.
    s.planeOne = atPlane(1, s.curBitPlane);
    s.planeNewSig = atPlane(3, s.curBitPlane) >> 1;
    s.planeHalf = s.planeOne >> 1;
    s.planeKeepMask = atPlane(~0u, s.curBitPlane) << 1;

    s.stripeRow = 0;
    s.pSample = s.pStripe = s.pColumn = s.block.pDst;
    s.pColumnEnd = s.block.pDst + s.block.width;
    s.pFlagStripe = s.pFlagColumn = s.pFlagWord = s.flagPlane.pFlags + s.flagPlane.flagStride / 4 + 1;
}

// The block as a pass walks it.
CodedBlock<Zmx8u> codedBlock(const ZmxiDecodeCBProgrState& s, bool causal) {
    return {reinterpret_cast<Zmx8u*>(s.pStripe), s.block.dstStep, s.block.width, s.block.height, s.pFlagStripe,
            s.flagPlane.flagStride / 4,          causal ? 0 : ~0u};
}

// The samples of a plane: midpoints stand in for the planes to come.
struct PlaneSamples {
    const Zmx32u one, newSig, half, keep;

    explicit PlaneSamples(const ZmxiDecodeCBProgrState& s)
        : one(s.planeOne), newSig(s.planeNewSig), half(s.planeHalf), keep(s.planeKeepMask) {}

    // Assigned, not merged.
    void turnSignificant(Zmx8u* sample, Zmx32u negative) const { store(sample, 0, negative << 31 | newSig); }
    void refine(Zmx8u* sample, Zmx32u bit) const {
        store(sample, 0, (load<Zmx32u>(sample, 0) & keep) | (one & -bit) | half);
    }
};

// Decisions of an MQ segment. The contexts are an object of their own beside the coder, whose members then
// stay in registers: an array indexed at run time would hold all of them in memory.
class MqDecoding {
    const PlaneSamples samples;
    const Zmx32u* const zeroCoding;
    MQDecoderState& state;
    mq::Contexts& contexts;
    // The context of all refinements but a sample's first. Most refinements in a row come under it, and each
    // waits for what the one before made of it: held apart, it need not go through memory.
    mq::Context laterRefinement;
    mq::Decoder mq;

public:
    using Sample = Zmx8u;
    static constexpr bool marksRefined = true;

    [[gnu::always_inline]] MqDecoding(ZmxiDecodeCBProgrState& s, mq::Contexts& c)
        : samples(s), zeroCoding(s.pZeroCodingLUT), state(s.mq), contexts(c),
          laterRefinement(c.at[kLaterRefinementContext]), mq(s.mq) {}
    [[gnu::always_inline]] ~MqDecoding() {
        contexts.at[kLaterRefinementContext] = laterRefinement;
        contexts.save(state.ctxState, state.ctxMPS);
    }
    MqDecoding(const MqDecoding&) = delete;
    MqDecoding& operator=(const MqDecoding&) = delete;

    [[gnu::always_inline]] bool significant(Zmx32u half, Sample*) { return decode(zeroCoding[half & 0xFF]); }
    [[gnu::always_inline]] Zmx32u sign(Zmx32u half, Sample* sample) {
        const Zmx32u prediction = SignCodingLUT[half >> 4 & 0x1FF];
        const Zmx32u negative = decode(prediction & 15) ^ prediction >> 31;
        samples.turnSignificant(sample, negative);
        return negative;
    }
    [[gnu::always_inline]] void refine(Zmx32u half, Sample* sample) {
        samples.refine(sample, half & kRefined ? mq.decode(laterRefinement) : decode(MagnRefineLUT[half & 0x1FF]));
    }
    [[gnu::always_inline]] int firstOf4(Sample*, std::ptrdiff_t) {
        return decode(kRunLengthContext) ? int(number(2)) : 4;
    }
    // A number of so many decisions under the uniform context, the high bit first.
    [[gnu::always_inline]] Zmx32u number(int bits) {
        Zmx32u n = 0;
        while (bits--) n = n << 1 | decode(kUniformContext);
        return n;
    }

private:
    [[gnu::always_inline]] Zmx32u decode(Zmx32u context) { return mq.decode(contexts.at[context]); }
};

// Decisions of a raw segment: bits, one each.
class RawDecoding {
    const PlaneSamples samples;
    RawBitReader& state;
    RawBitReader raw;

public:
    using Sample = Zmx8u;
    static constexpr bool marksRefined = false; // no MQ refinement can follow that would ask for it

    [[gnu::always_inline]] explicit RawDecoding(ZmxiDecodeCBProgrState& s) : samples(s), state(s.raw), raw(s.raw) {}
    [[gnu::always_inline]] ~RawDecoding() { state = raw; }
    RawDecoding(const RawDecoding&) = delete;
    RawDecoding& operator=(const RawDecoding&) = delete;

    [[gnu::always_inline]] bool significant(Zmx32u, Sample*) { return bit(); }
    [[gnu::always_inline]] Zmx32u sign(Zmx32u, Sample* sample) { // no prediction
        const Zmx32u negative = bit();
        samples.turnSignificant(sample, negative);
        return negative;
    }
    [[gnu::always_inline]] void refine(Zmx32u, Sample* sample) { samples.refine(sample, bit()); }

private:
    [[gnu::always_inline]] Zmx32u bit() {
        if (raw.bitIndex < 0) {
            raw.bitIndex = raw.curByte == 0xFF ? 6 : 7; // a stuffed bit is passed over
            raw.curByte = raw.bytePos < raw.dataLen ? raw.pData[raw.bytePos] : 0xFF;
            ++raw.bytePos;
        }
        return raw.curByte >> raw.bitIndex-- & 1;
    }
};

// The end of an MQ pass.
int endMqPass(ZmxiDecodeCBProgrState& s, bool reset, bool errorPrediction) {
    const int damaged = errorPrediction ? mqDecoderCheckErrPredTerm(&s.mq) : 0;
    if (reset) mqDecoderResetCtx(&s.mq);
    return damaged;
}

// Whether the bits left in the last raw byte are not the 0101... of an error-free termination.
int rawTerminationDamaged(const RawBitReader& raw) {
    if (raw.bitIndex < 0) return 0;
    const int left = raw.curByte & ((2 << raw.bitIndex) - 1);
    return left != 0x55 >> (7 - raw.bitIndex);
}

} // namespace

int significancePropagation(ZmxiDecodeCBProgrState* state, bool causal, bool reset, bool errorPrediction) {
    beginPass(*state);
    {
        mq::Contexts contexts(state->mq.ctxState, state->mq.ctxMPS);
        MqDecoding coder(*state, contexts);
        CodingPass<MqDecoding>(coder, codedBlock(*state, causal)).significancePropagation();
    }
    return endMqPass(*state, reset, errorPrediction);
}

int magnitudeRefinement(ZmxiDecodeCBProgrState* state, bool reset, bool errorPrediction) {
    beginPass(*state);
    {
        mq::Contexts contexts(state->mq.ctxState, state->mq.ctxMPS);
        MqDecoding coder(*state, contexts);
        CodingPass<MqDecoding>(coder, codedBlock(*state, false)).magnitudeRefinement();
    }
    return endMqPass(*state, reset, errorPrediction);
}

int cleanup(ZmxiDecodeCBProgrState* state, bool causal, bool segmentationSymbols, bool reset, bool errorPrediction) {
    beginPass(*state);
    bool wrongSymbol = false;
    {
        mq::Contexts contexts(state->mq.ctxState, state->mq.ctxMPS);
        MqDecoding coder(*state, contexts);
        CodingPass<MqDecoding>(coder, codedBlock(*state, causal)).cleanup();
        if (segmentationSymbols) wrongSymbol = coder.number(4) != 0b1010;
    }
    // With both tests on, the termination's answer replaces the symbol's, which then goes unreported:
    // required.
    const int damaged = endMqPass(*state, reset, errorPrediction);
    return errorPrediction ? damaged : wrongSymbol;
}

int significancePropagationRaw(ZmxiDecodeCBProgrState* state, bool causal, bool terminated) {
    beginPass(*state);
    {
        RawDecoding coder(*state);
        CodingPass<RawDecoding>(coder, codedBlock(*state, causal)).significancePropagation();
    }
    return terminated ? rawTerminationDamaged(state->raw) : 0;
}

int magnitudeRefinementRaw(ZmxiDecodeCBProgrState* state) {
    beginPass(*state);
    {
        RawDecoding coder(*state);
        CodingPass<RawDecoding>(coder, codedBlock(*state, false)).magnitudeRefinement();
    }
    return rawTerminationDamaged(state->raw);
}

} // namespace zmx
