// planar.cpp - components in memory.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/planar.h"

#include <algorithm>

namespace codecs::jpeg2000 {

PlanarSource::PlanarSource(const PlanarPicture& from) : picture(from) {
    for (const Component& c : from.components)
        areas.push_back(componentRect({from.x0, from.y0, from.x1, from.y1}, {c.depth, c.isSigned, c.dx, c.dy}));
}

void PlanarSource::get(std::size_t component, std::int64_t x, std::int64_t y, std::span<Sample> to) const {
    const Component& c = picture.components[component];
    const Rect& area = areas[component];
    const std::int32_t* from =
        c.samples.data() + std::size_t(y - area.y0) * std::size_t(c.width) + std::size_t(x - area.x0);
    // Samples on their way count from the smallest, whatever the sign.
    const std::int32_t smallest = c.smallest();
    for (std::size_t i = 0; i < to.size(); ++i) to[i] = Sample(from[i] - smallest);
}

PlanarSink::PlanarSink(const Rect& onGrid, const std::vector<Rect>& areas) : grid(onGrid) {
    for (const Rect& r : areas) planes.push_back({r, std::vector<Sample>(r.area())});
}

// Threads put different parts of a plane, and never meet.
void PlanarSink::put(std::size_t component, std::int64_t x, std::int64_t y, std::span<const Sample> samples) {
    Plane& p = planes[component];
    std::copy(samples.begin(), samples.end(),
              p.samples.data() + std::size_t(y - p.area.y0) * std::size_t(p.area.width()) + (x - p.area.x0));
}

std::span<const Sample> PlanarSink::row(std::size_t component, std::int64_t y) const {
    const Plane& p = planes[component];
    const auto width = std::size_t(p.area.width());
    return {p.samples.data() + std::size_t(y - p.area.y0) * width, width};
}

// Samples go back to numbers of their sign, and through the palette where there is one.
PlanarPicture PlanarSink::picture(const ImageSize& size, const ChannelMap& map) const {
    PlanarPicture out;
    out.x0 = std::uint32_t(grid.x0);
    out.y0 = std::uint32_t(grid.y0);
    out.x1 = std::uint32_t(grid.x1);
    out.y1 = std::uint32_t(grid.y1);
    out.colour = map.colour;
    out.alpha = map.alpha;
    out.metadata = map.metadata;
    for (const Channel& channel : map.channels) {
        const SizComponent& k = size.components[channel.component];
        const Plane& plane = planes[channel.component];
        Component c{k.dx, k.dy, channel.depth, channel.isSigned, 0, 0, {}};
        if (!plane.area.empty()) {
            c.width = plane.area.width();
            c.height = plane.area.height();
        }
        const std::int32_t smallest = c.smallest();
        c.samples.reserve(plane.samples.size());
        for (const Sample s : plane.samples)
            c.samples.push_back((channel.palette.empty() ? s : channel.palette[s]) + smallest);
        out.components.push_back(std::move(c));
    }
    return out;
}

} // namespace codecs::jpeg2000
