// colour.h - between samples and the numbers that the wavelet works on: level shift and component transforms (annex
// G), on parts of rows that fit a cache.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/road.h"
#include "codecs/jpeg2000/samples.h"

namespace codecs::jpeg2000 {

constexpr int kColourChunk = 1024; // numbers of a row that are worked on at a time, at the most

// Samples of a depth to numbers around 0.
template <Road R> void fromSamples(std::span<const Sample> samples, int depth, Number<R>* to);
// And back, rounded and limited to what the depth can hold.
template <Road R> void toSamples(const Number<R>* from, int depth, std::span<Sample> samples);

// RCT or ICT over three rows of `count` numbers of one depth, in place.
template <Road R> void forwardColour(Number<R>* const rows[3], int count, int depth);
template <Road R> void inverseColour(Number<R>* const rows[3], int count, int depth);

} // namespace codecs::jpeg2000
