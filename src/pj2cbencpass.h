// pj2cbencpass.h - the coding passes of the encoder, and the tables of the distortion that they remove.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pj2encstate.h"

namespace zmx {

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

// Tables of the squared error that a coding step removes, with 13 fraction bits, by the magnitude in units of
// the plane. Fs: a sample turns significant; index: the six bits below the plane. Fm: a refinement; index:
// the plane's bit and the six below it. Lossless: the sample is exact afterwards; lossy: it becomes the
// midpoint of its interval.
inline constexpr auto FsLossless_LUT = tableOf<64>([](int k) { return 2 * (64 + k) * (64 + k); });
inline constexpr auto FsLossy_LUT = tableOf<64>([](int k) { return 6144 + 384 * k; });
inline constexpr auto FmLossless_LUT = tableOf<128>([](int k) { return 2 * (64 - k) * (64 - k); });
inline constexpr auto FmLossy_LUT = tableOf<128>([](int k) { return k < 64 ? 6144 - 128 * k : 128 * k - 10240; });

} // namespace zmx
