// tiffwrite.h - the tags that every TIFF file of ours has.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/tifffile.h"

namespace codecs {

// Size, channels and colours; `bits` of a sample: 1, 8 or 16.
void writePictureTags(const TiffFile& file, const Shape& shape, int bits);

} // namespace codecs
