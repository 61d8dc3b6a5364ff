// quantiser.cpp - step sizes of bands, and style bits in the library's terms.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/quantiser.h"

#include <algorithm>
#include <cmath>

namespace codecs::jpeg2000 {

namespace {

constexpr int kWordPlanes = 31, kFractionPlanes = 6;

} // namespace

double stepOf(const StepSize& s, int depth, Orientation o) {
    const int gain = o == LL ? 0 : o == HH ? 2 : 1; // log2 of Table E.1
    return std::ldexp(1 + s.mantissa / 2048.0, depth + gain - s.exponent);
}

BandCoding ComponentCoding::band(const BandPlace& place) const {
    const StepSize s = quant.step(place.resolution, place.index);
    BandCoding c;
    c.bitPlanes = quant.guardBits + s.exponent - 1;
    c.roiShift = roiShift;
    if (isReversible(road)) return c;
    c.step = float(std::ldexp(stepOf(s, depth, place.orientation), fractionBits(road)));
    // The library's words have 31 bits for what is coded, a guard bit more, and fractions.
    c.fractionPlanes = std::clamp(kWordPlanes - (c.bitPlanes + 1 + roiShift), 0, kFractionPlanes);
    return c;
}

Zmx32u libraryStyle(unsigned style) {
    const auto bit = [style](unsigned ours, Zmx32u theirs) { return style & ours ? theirs : 0; };
    return bit(kStyleBypass, ZMX_CB_SELECTIVE_BYPASS) | bit(kStyleReset, ZMX_CB_RESET_CTX) |
           bit(kStyleTerminateAll, ZMX_CB_TERMINATE_ALL) | bit(kStyleCausal, ZMX_CB_VERTICALLY_CAUSAL) |
           bit(kStyleSegmentation, ZMX_CB_SEGMENTATION_SYMBOLS);
}

} // namespace codecs::jpeg2000
