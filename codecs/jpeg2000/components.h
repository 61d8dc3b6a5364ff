// components.h - between a picture's samples and the planes that the wavelet works on: level shift and component
// transforms (annex G).
#pragma once

#include "codecs/jpeg2000/wavelet.h"

namespace codecs::jpeg2000 {

// Fixed point of a tile-component: none on the reversible road, fraction bits on the other.
constexpr int planeFraction(bool reversible, int depth) { return reversible ? 0 : waveletFraction(depth); }

// RCT or ICT over the first three planes, which agree in shape, depth and road.
void forwardColour(std::vector<Plane>& planes, bool reversible, int depth);
void inverseColour(std::vector<Plane>& planes, bool reversible, int depth);

// Samples of a component within a tile, to a plane around 0 with fraction bits.
void toPlane(const Component& from, int x, int y, Plane& plane, int fraction);
// And back, rounded and limited to what the depth can hold.
void fromPlane(Plane& plane, Component& to, int x, int y, int fraction);

} // namespace codecs::jpeg2000
