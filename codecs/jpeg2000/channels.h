// channels.h - what the components of a codestream mean: the channels of a picture (I.5.3).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/boxes.h"
#include "codecs/jpeg2000/samples.h"

namespace codecs::jpeg2000 {

// A channel: a component as it is, or looked up in a column of the palette.
struct Channel {
    std::size_t component = 0;
    int depth = 8;
    bool isSigned = false;
    std::vector<Sample> palette; // by sample of the component; empty: none
};

struct ChannelMap {
    std::vector<Channel> channels; // colours in their order, then the rest
    int alpha = -1;                // the channel that holds the opacity, or -1
    ColourSpace colour = ColourSpace::unknown;
    Metadata metadata;
    std::vector<std::string> warnings;
};

// By the boxes of a file. With `component` not below 0 it is that component alone, as it is.
ChannelMap channelsOf(const Boxes& boxes, const ImageSize& size, int component);

} // namespace codecs::jpeg2000
