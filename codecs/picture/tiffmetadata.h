// tiffmetadata.h - what travels beside the samples, in and out of the tags of a TIFF file.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/tifffile.h"

namespace codecs {

Metadata readMetadata(const TiffFile& file);
// To be called ahead of the first strip.
void writeMetadata(TiffFile& file, const Metadata& metadata);

} // namespace codecs
