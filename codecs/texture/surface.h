// surface.h - pictures to texture blocks and back, and the levels of a chain.
#pragma once

#include "codecs/picture/image.h"
#include "codecs/texture/dds.h"

namespace dds {

// A texture of one layer: the picture alone, or with its whole chain of levels. BC7 is not among the formats that can
// be encoded.
Texture encode(const Image& picture, Format format, bool chain);

// One picture of a texture, with alpha where the format has any. A YCoCg picture is turned back into RGB.
Image decode(const Texture& texture, int layer, int level);

} // namespace dds
