// pj2encstate.h - the state of the code-block encoder. A load fills it with the decisions of all passes and the
// distortion that each removes; the store takes the decisions out of the coder state, byte by byte.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pj2mqenc.h"
#include "pjargs.h"

namespace zmx {

inline constexpr Zmx32u kEncoderMagic = 0x4C4D5344; // "DSML" in little-endian memory

inline constexpr int kMaxDistPasses = 109;
static_assert(kMostPasses < kMaxDistPasses, "there is one more of which the distortion is being added up");

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

} // namespace zmx
