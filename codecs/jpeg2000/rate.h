// rate.h - post-compression rate-distortion optimisation: which passes of which code block go into which layer.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/packetwriter.h"

namespace codecs::jpeg2000 {

struct RateTarget {
    std::vector<double> bytes;  // of all packets up to the end of each layer; infinite for everything
    std::vector<double> errors; // or: squared error of the picture at the end of each layer
};

// Fills in layerPasses of every block. Without any target there is one layer of everything.
void allocateLayers(std::vector<EncodedTile>& tiles, const ImageSize& size, const HeaderSet& headers,
                    const RateTarget& target);

} // namespace codecs::jpeg2000
