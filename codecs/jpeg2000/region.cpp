// region.cpp - from a wanted rectangle down the resolutions.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/region.h"

#include "codecs/jpeg2000/filters.h"

namespace codecs::jpeg2000 {

Rect intersection(const Rect& a, const Rect& b) {
    return {std::max(a.x0, b.x0), std::max(a.y0, b.y0), std::min(a.x1, b.x1), std::min(a.y1, b.y1)};
}

Rect bandPart(const Rect& part, Orientation o) {
    // Low numbers stand at even places, high ones at odd places: 2k + 1 is number k.
    const int x = o == HL || o == HH ? 0 : 1, y = o == LH || o == HH ? 0 : 1;
    return {(part.x0 + x) / 2, (part.y0 + y) / 2, (part.x1 + x) / 2, (part.y1 + y) / 2};
}

std::vector<Rect> partsFor(const TileComponent& component, int resolution, const Rect& wanted) {
    // Each level adds the reach of the filter to what the level above asks for.
    std::vector<Rect> parts(std::size_t(resolution) + 1);
    Rect rect = wanted;
    for (int r = resolution; r >= 0; --r) {
        // What a filter makes of the edges of a part stays outside the rectangle within it.
        if (r > 0 && !rect.empty())
            rect = intersection({rect.x0 - kReach, rect.y0 - kReach, rect.x1 + kReach, rect.y1 + kReach},
                                component.resolutions[std::size_t(r)].rect);
        parts[std::size_t(r)] = rect;
        rect = bandPart(rect, LL);
    }
    return parts;
}

} // namespace codecs::jpeg2000
