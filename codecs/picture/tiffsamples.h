// tiffsamples.h - what stands packed in strips and tiles as samples: first each number by itself, then whole pixels.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/storedrows.h"
#include "codecs/picture/tifflayout.h"

namespace codecs {

// Numbers of a packed row, `count` of them from number `first` on, every one `stride` samples after the one before, as bytes
// or, where TiffLayout::rawMaxval() is above 255, as words.
using GatherSamples = void (*)(const std::uint8_t* packed, std::size_t first, std::size_t count, int bits,
                               std::uint8_t* to, std::size_t stride);
GatherSamples gatherOf(const TiffLayout& layout);

// Rows of gathered samples as rows of the picture; none where they are it. May set the depth of the colours of a palette.
UnpackRow finishOf(const TiffFile& file, TiffLayout& layout);

} // namespace codecs
