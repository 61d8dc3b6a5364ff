// interpret.h - what the segments of a file mean for those that decode it.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/segmentreader.h"
#include "codecs/picture/picture.h"

namespace codecs::jpeg {

// Goes to the first scan; a file without one, a frame that is not supported, or one of more pixels, is an Error.
void toFirstScan(SegmentReader& reader, std::uint64_t maxPixels);

// The colour of a file is not written in it; these are the customs (JFIF, Adobe TN 5116, component numbers).
Model modelOf(const Header& header);
// The picture of these channels.
Shape shapeFor(int width, int height, int channels, int precision);

// The quantisation table of a component, as it is when the component starts.
QuantTable quantTableOf(const Header& header, const Component& component);

} // namespace codecs::jpeg
