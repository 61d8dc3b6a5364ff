// planar.h - pictures whose components stand apart in memory, as sources and sinks of samples.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/channels.h"
#include "codecs/jpeg2000/samples.h"

namespace codecs::jpeg2000 {

class PlanarSource final : public SampleSource {
    const PlanarPicture& picture;
    std::vector<Rect> areas; // by component

public:
    explicit PlanarSource(const PlanarPicture& from);
    void advance(std::int64_t, std::int64_t) override {}
    void get(std::size_t component, std::int64_t x, std::int64_t y, std::span<Sample> to) const override;
};

// Gathers components as they are in the codestream.
class PlanarSink final : public SampleSink {
    struct Plane {
        Rect area;
        std::vector<Sample> samples;
    };
    const Rect grid;
    std::vector<Plane> planes; // by component; without samples where it is not wanted

public:
    // `areas` are those of the components, empty ones where they are not wanted.
    PlanarSink(const Rect& onGrid, const std::vector<Rect>& areas);
    void open(std::int64_t, std::int64_t) override {}
    void close() override {}
    void put(std::size_t component, std::int64_t x, std::int64_t y, std::span<const Sample> samples) override;

    const Rect& window() const { return grid; } // on the reference grid
    const Rect& area(std::size_t component) const { return planes[component].area; }
    // The samples of a row; y counts as in put().
    std::span<const Sample> row(std::size_t component, std::int64_t y) const;
    // The picture that the channels make.
    PlanarPicture picture(const ImageSize& size, const ChannelMap& map) const;
};

} // namespace codecs::jpeg2000
