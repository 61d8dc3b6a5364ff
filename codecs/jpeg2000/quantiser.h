// quantiser.h - how the numbers of a band are quantised (annex E), and what its code blocks look like to the library.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/geometry.h"
#include "codecs/jpeg2000/road.h"
#include "zmxj.h"

namespace codecs::jpeg2000 {

// How the numbers of a band are quantised.
struct BandCoding {
    int bitPlanes = 0; // Mb of E-2
    float step = 1;    // in units of the road's least bit, 1 on the reversible ones
    int roiShift = 0;
    int fractionPlanes = 0; // of an encoder, below the coded ones: they tell how far off each decision is
};

// Step size of a band (E-3) in units of the picture's samples.
double stepOf(const StepSize& s, int depth, Orientation o);

// Where a band is in a component's marker segments.
struct BandPlace {
    int resolution, index; // index in its resolution
    Orientation orientation;
};

// What marker segments say of a component, and its depth.
struct ComponentCoding {
    const CodingStyle& style;
    const Quantization& quant;
    int roiShift, depth;
    Road road;

    BandCoding band(const BandPlace& place) const;
};

constexpr std::uint32_t kSignBit = 0x80000000u; // of the library's sign-magnitude words

// A style byte of the codestream in the library's own bits.
Zmx32u libraryStyle(unsigned style);

// The library numbers bands by what is high-pass first vertically.
constexpr int librarySubband(Orientation o) { return o == HL ? 2 : o == LH ? 1 : o == HH ? 3 : 0; }

} // namespace codecs::jpeg2000
