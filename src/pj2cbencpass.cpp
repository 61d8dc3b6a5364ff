// pj2cbencpass.cpp - the coding passes of the encoder: a decision is taken from a sample and recorded, and
// the distortion that it removes is added up.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2cbencpass.h"

#include "pj2cbpasses.h"
#include "pjrows.h"

#include <algorithm>
#include <cstring>

namespace zmx {
namespace {

// The distortion of one pass, by a table indexed with the magnitude from the plane downwards: the six bits
// below the plane when a sample turns significant, and the plane's own bit ahead of them in a refinement.
class Distortion {
    const Zmx32s* const table;
    const Zmx32u mask, right, left;
    Zmx32u sum = 0; // wraps only in blocks larger than the standard allows

public:
    explicit Distortion(const ZmxiEncodeState_JPEG2K& s)
        : table(s.pDistLUT), mask(s.distMask), right(s.distShiftRight), left(s.distShiftLeft) {}

    [[gnu::always_inline]] void add(Zmx32u sample) { sum += Zmx32u(table[(sample >> right << left) & mask]); }
    Zmx32s total() const { return Zmx32s(sum); }
};

// The coder of MQ passes, as pj2cbpasses.h asks for it: every decision goes into the arrays with its context.
class MqRecording {
    Zmx8u* const decisions;
    Zmx8u* const contexts;
    const Zmx32u* const zeroCoding;
    const int plane;

public:
    using Sample = const Zmx8u;
    static constexpr bool marksRefined = true;
    static constexpr int isRaw = 0;

    std::ptrdiff_t count = 0;
    Distortion distortion;

    [[gnu::always_inline]] MqRecording(const ZmxiEncodeState_JPEG2K& s, const EncodedBlock& block, int p)
        : decisions(s.pCoder->pDecisions + s.pCoder->decisionCount),
          contexts(s.pCoder->pContexts + s.pCoder->decisionCount), zeroCoding(block.zeroCodingLUT), plane(p),
          distortion(s) {}

    [[gnu::always_inline]] bool significant(Zmx32u half, Sample* sample) {
        const Zmx32u bit = load<Zmx32u>(sample, 0) >> plane & 1;
        record(zeroCoding[half & 0xFF], bit);
        return bit;
    }
    [[gnu::always_inline]] Zmx32u sign(Zmx32u half, Sample* sample) {
        // Decided is not the sign, but whether the neighbours foretell it wrongly.
        const Zmx32u prediction = SignCodingLUT[half >> 4 & 0x1FF];
        const Zmx32u v = load<Zmx32u>(sample, 0);
        record(prediction & 15, v >> 31 ^ prediction >> 31);
        distortion.add(v);
        return v >> 31;
    }
    [[gnu::always_inline]] void refine(Zmx32u half, Sample* sample) {
        const Zmx32u v = load<Zmx32u>(sample, 0);
        record(MagnRefineLUT[half & 0x1FF], v >> plane & 1);
        distortion.add(v);
    }
    [[gnu::always_inline]] int firstOf4(Sample* sample, std::ptrdiff_t step) {
        const auto bit = [=, this](int row) { return load<Zmx32u>(sample + row * step, 0) >> plane & 1; };
        const Zmx32u rows = bit(0) << 3 | bit(1) << 2 | bit(2) << 1 | bit(3);
        record(kRunLengthContext, rows != 0);
        if (!rows) return 4;
        const int first = std::countl_zero(rows) - 28;
        number(Zmx32u(first), 2);
        return first;
    }
    // A number of so many decisions under the uniform context, the high bit first.
    [[gnu::always_inline]] void number(Zmx32u n, int bits) {
        while (bits--) record(kUniformContext, n >> bits & 1);
    }

private:
    [[gnu::always_inline]] void record(Zmx32u context, Zmx32u decision) {
        decisions[count] = Zmx8u(decision);
        contexts[count] = Zmx8u(context);
        ++count;
    }
};

// That of raw passes: no contexts, and signs as they are.
class RawRecording {
    Zmx8u* const decisions;
    const int plane;

public:
    using Sample = const Zmx8u;
    static constexpr bool marksRefined = false; // no MQ refinement can follow that would ask for it
    static constexpr int isRaw = 1;

    std::ptrdiff_t count = 0;
    Distortion distortion;

    [[gnu::always_inline]] RawRecording(const ZmxiEncodeState_JPEG2K& s, const EncodedBlock&, int p)
        : decisions(s.pCoder->pDecisions + s.pCoder->decisionCount), plane(p), distortion(s) {}

    [[gnu::always_inline]] bool significant(Zmx32u, Sample* sample) {
        return record(load<Zmx32u>(sample, 0) >> plane & 1);
    }
    [[gnu::always_inline]] Zmx32u sign(Zmx32u, Sample* sample) { // no prediction
        const Zmx32u v = load<Zmx32u>(sample, 0);
        distortion.add(v);
        return record(v >> 31);
    }
    [[gnu::always_inline]] void refine(Zmx32u, Sample* sample) {
        const Zmx32u v = load<Zmx32u>(sample, 0);
        distortion.add(v);
        record(v >> plane & 1);
    }

private:
    [[gnu::always_inline]] Zmx32u record(Zmx32u decision) {
        decisions[count++] = Zmx8u(decision);
        return decision;
    }
};

enum class Step { Significance, Refinement };

// Chooses the table of the pass and where in a magnitude its index begins.
void beginPass(ZmxiEncodeState_JPEG2K& s, Step step, int plane) {
    const bool exact = s.lossless && plane == s.basePlane;
    if (step == Step::Refinement) {
        s.pDistLUT = (exact ? FmLossless_LUT : FmLossy_LUT).data();
        s.distMask = 127;
    } else {
        s.pDistLUT = (exact ? FsLossless_LUT : FsLossy_LUT).data();
        s.distMask = 63;
    }
    s.distShiftRight = Zmx32u(std::max(plane - 6, 0));
    s.distShiftLeft = Zmx32u(std::max(6 - plane, 0));
}

// Books the decisions and the distortion of a pass, and opens the entry of the next.
template <class Coder> void endPass(ZmxiEncodeState_JPEG2K& s, const Coder& recording) {
    EncCoderState& coder = *s.pCoder;
    // They have no contexts, and get one all the same: so every decision has, and none that memory held before is
    // ever taken for one.
    if (Coder::isRaw) std::memset(coder.pContexts + coder.decisionCount, 0, std::size_t(recording.count));
    coder.decisionCount += int(recording.count);
    coder.passRaw[coder.passCount] = Coder::isRaw;
    coder.passDecisions[coder.passCount] = coder.decisionCount - coder.decisionBase;
    coder.decisionBase = coder.decisionCount;
    ++coder.passCount;

    s.passDist[s.passIndex] = recording.distortion.total();
    s.passDistExp[s.passIndex] = s.distExp;
    s.passDist[++s.passIndex] = 0;
}

// The block as a pass walks it; its flags begin behind the border.
CodedBlock<const Zmx8u> codedBlock(const ZmxiEncodeState_JPEG2K& s, const EncodedBlock& block) {
    const std::ptrdiff_t stride = flagRowBytes(block.size.width) / 4;
    return {reinterpret_cast<const Zmx8u*>(block.pSrc),
            block.srcStep,
            block.size.width,
            block.size.height,
            s.pFlags + stride + 1,
            stride,
            block.causal ? 0 : ~0u};
}

template <class Coder> void significancePass(ZmxiEncodeState_JPEG2K& s, const EncodedBlock& block, int plane) {
    beginPass(s, Step::Significance, plane);
    Coder coder(s, block, plane);
    CodingPass<Coder>(coder, codedBlock(s, block)).significancePropagation();
    endPass(s, coder);
}

template <class Coder> void refinementPass(ZmxiEncodeState_JPEG2K& s, const EncodedBlock& block, int plane) {
    beginPass(s, Step::Refinement, plane);
    Coder coder(s, block, plane);
    CodingPass<Coder>(coder, codedBlock(s, block)).magnitudeRefinement();
    endPass(s, coder);
}

} // namespace

void significancePropagation(ZmxiEncodeState_JPEG2K* state, const EncodedBlock& block, int plane) {
    significancePass<MqRecording>(*state, block, plane);
}

void magnitudeRefinement(ZmxiEncodeState_JPEG2K* state, const EncodedBlock& block, int plane) {
    refinementPass<MqRecording>(*state, block, plane);
}

void cleanup(ZmxiEncodeState_JPEG2K* state, const EncodedBlock& block, int plane, bool segmentationSymbols) {
    beginPass(*state, Step::Significance, plane);
    MqRecording coder(*state, block, plane);
    CodingPass<MqRecording>(coder, codedBlock(*state, block)).cleanup();
    if (segmentationSymbols) coder.number(0b1010, 4);
    endPass(*state, coder);
}

void significancePropagationRaw(ZmxiEncodeState_JPEG2K* state, const EncodedBlock& block, int plane) {
    significancePass<RawRecording>(*state, block, plane);
}

void magnitudeRefinementRaw(ZmxiEncodeState_JPEG2K* state, const EncodedBlock& block, int plane) {
    refinementPass<RawRecording>(*state, block, plane);
}

} // namespace zmx
