// packets.h - what the two directions of packet headers share (B.10).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/geometry.h"
#include "codecs/jpeg2000/tagtree.h"

#include <bit>

namespace codecs::jpeg2000 {

inline int floorLog2(unsigned v) { return int(std::bit_width(v)) - 1; }

// The tag trees of a precinct.
struct PrecinctTrees {
    TagTree inclusion[3], zeroPlanes[3]; // by band
    bool made = false;

    void make(const Precinct& p) {
        for (int b = 0; b < 3; ++b)
            if (p.grids[b].across > 0) {
                inclusion[b] = TagTree(p.grids[b].across, p.grids[b].down);
                zeroPlanes[b] = inclusion[b];
            }
        made = true;
    }
};

} // namespace codecs::jpeg2000
