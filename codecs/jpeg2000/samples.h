// samples.h - the samples of a picture on their way into an encoder and out of a decoder, component by component.
//
// A sample counts from the smallest that its component can hold, so that signed and unsigned ones look alike: 0 to
// 2^depth - 1. Places are those of the component itself: the reference grid over its dx and dy (B.2), and halved as
// often as a decoder leaves out resolutions.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/geometry.h"

#include <span>

namespace codecs::jpeg2000 {

using Sample = std::uint16_t;

// Where an encoder takes samples from, from the top down.
class SampleSource {
public:
    virtual ~SampleSource() = default;
    // Rows of the reference grid from `from` to `to` are wanted next, those above `from` no more.
    virtual void advance(std::int64_t from, std::int64_t to) = 0;
    // The samples of a component from (x, y) on, within the rows that are there. Threads may ask at the same time.
    virtual void get(std::size_t component, std::int64_t x, std::int64_t y, std::span<Sample> to) const = 0;
};

// Where a decoder puts samples.
class SampleSink {
public:
    virtual ~SampleSink() = default;
    // The next rows of the first component, from y0 to y1, will be put; then they are complete.
    virtual void open(std::int64_t y0, std::int64_t y1) = 0;
    virtual void close() = 0;
    // Samples of a component from (x, y) on. Threads may put at the same time.
    virtual void put(std::size_t component, std::int64_t x, std::int64_t y, std::span<const Sample> samples) = 0;
};

} // namespace codecs::jpeg2000
