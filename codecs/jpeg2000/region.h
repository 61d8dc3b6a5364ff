// region.h - which parts of a tile-component's resolutions and bands a wanted rectangle asks for.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/geometry.h"

namespace codecs::jpeg2000 {

Rect intersection(const Rect& a, const Rect& b);

// The numbers of a band of the next level down that stand in a part of a resolution.
Rect bandPart(const Rect& part, Orientation o);

// For each resolution up to `resolution` the part that the inverse wavelet works on so that `wanted`, a rectangle of
// the last one, comes out as it would from the whole.
std::vector<Rect> partsFor(const TileComponent& component, int resolution, const Rect& wanted);

} // namespace codecs::jpeg2000
