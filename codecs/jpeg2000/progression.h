// progression.h - the order of a tile's packets (B.12).
//
// Every order is a sorted list of precincts with the layers at one place: outermost (LRCP), within a resolution
// (RLCP), or innermost (the three others). So one sort by key and one loop serve all five.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/geometry.h"

#include <functional>

namespace codecs::jpeg2000 {

struct PacketId {
    int component, resolution;
    std::size_t precinct;
    int layer;
};

// Calls visit(PacketId) for each packet of a tile, each once, until it returns false. With changes (POC) each of
// them runs through its part, leaving out what has been visited before.
void forEachPacket(const ImageSize& size, const Tile& tile, const HeaderSet& headers,
                   const std::function<bool(const PacketId&)>& visit);

} // namespace codecs::jpeg2000
