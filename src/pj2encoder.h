// pj2encoder.h - the state of the code-block encoder.
#pragma once

#include "pj2mqenc.h"
#include "pjargs.h"
#include "pjwrap.h"

namespace zmx {

inline constexpr Zmx32u kEncoderMagic = 0x4C4D5344; // "DSML" in memory

inline constexpr int kMaxDistPasses = 109;

} // namespace zmx

struct ZmxiEncodeState_JPEG2K {
    Zmx32u magic;
    zmx::EncCoderState* pCoder;           // owned
    int passDist[zmx::kMaxDistPasses];    // integer distortion reduction of each pass
    int passDistExp[zmx::kMaxDistPasses]; // the power of two that scales it
    int distExp;                          // that of the current plane
    const Zmx32s* pDistLUT;               // table of the pass under way
    Zmx32u distMask;                      // 63 for significance coding, 127 for refinement
    int passIndex;                        // pass under way
    Zmx32u lossless;                      // ZMX_CB_LOSSLESS, as it stands in the style
    Zmx32u distShiftRight;                // the plane minus 6, not below 0
    Zmx32u distShiftLeft;                 // 6 minus the plane, not below 0
    int basePlane;                        // 31 minus magnBits: the lowest coded plane
    Zmx32u* pFlags;                       // flag plane, owned
};

namespace zmx {

// Null, then the magic word: the head of most functions' tests.
inline Args stateArgs(const ZmxiEncodeState_JPEG2K* state) {
    return Args().ptr(state).test(state && state->magic != kEncoderMagic, zmxStsContextMatchErr);
}

// The block under encoding.
struct EncodedBlock {
    const Zmx32s* pSrc;
    int srcStep;
    ZmxiSize size;
    const Zmx32u* zeroCodingLUT;
    bool causal;
};

// The coding passes on a bit plane. Each records its decisions and the distortion that it removes.
void significancePropagation(ZmxiEncodeState_JPEG2K* state, const EncodedBlock& block, int plane);
void magnitudeRefinement(ZmxiEncodeState_JPEG2K* state, const EncodedBlock& block, int plane);
void cleanup(ZmxiEncodeState_JPEG2K* state, const EncodedBlock& block, int plane, bool segmentationSymbols);
void significancePropagationRaw(ZmxiEncodeState_JPEG2K* state, const EncodedBlock& block, int plane);
void magnitudeRefinementRaw(ZmxiEncodeState_JPEG2K* state, const EncodedBlock& block, int plane);

// A cleanup on the plane of bit 30, and three passes on each of the planes below it.
inline constexpr int kMostPasses = 1 + 3 * 30;
static_assert(kMostPasses < kMaxDistPasses && kMostPasses <= kMaxPasses, "of which there is one more being added up");

// The number of recorded passes, whatever has been done to the state.
inline int passesOf(const EncCoderState& coder) { return clamp(coder.passCount, 0, kMostPasses); }

// Whether a codeword segment ends with a recorded pass: MQ and raw passes never share one.
inline bool endsSegment(const EncCoderState& coder, int pass) {
    return coder.termAll || pass == coder.passCount - 1 || coder.passRaw[pass] != coder.passRaw[pass + 1];
}

// The number of codeword segments of the recorded passes.
int segmentCount(const EncCoderState& coder);

// Makes the pass at curPass, whose decisions begin at decisionBase, the one to be stored next.
void enterPass(EncCoderState& coder);

// All passes from the current one on, as far as the buffer takes them; *pLen becomes the bytes written.
void encBufEncodeTermLastPass(EncCoderState* state, Zmx8u* pDst, int* pLen);

// Tables of the squared error that a coding step removes, with 13 fraction bits, by the magnitude in units of
// the plane. Fs: a sample turns significant; index: the six bits below the plane. Fm: a refinement; index:
// the plane's bit and the six below it. Lossless: the sample is exact afterwards; lossy: it becomes the
// midpoint of its interval.
inline constexpr auto FsLossless_LUT = tableOf<64>([](int k) { return 2 * (64 + k) * (64 + k); });
inline constexpr auto FsLossy_LUT = tableOf<64>([](int k) { return 6144 + 384 * k; });
inline constexpr auto FmLossless_LUT = tableOf<128>([](int k) { return 2 * (64 - k) * (64 - k); });
inline constexpr auto FmLossy_LUT = tableOf<128>([](int k) { return k < 64 ? 6144 - 128 * k : 128 * k - 10240; });

} // namespace zmx
