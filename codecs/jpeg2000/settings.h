// settings.h - what an encoder has been asked for, as the parameters of marker segments.
#pragma once

#include "codecs/jpeg2000/geometry.h"

namespace codecs::jpeg2000 {

// The size of a picture and its tiles; a picture or a grid of tiles that cannot be is refused.
ImageSize sizeOf(const PlanarPicture& picture, const EncodeOptions& options);

// The rest of a main header. Options that cannot be are refused.
HeaderSet headersOf(const ImageSize& size, const EncodeOptions& options);

// Norm of the basis functions of a band, for the weight of its errors.
double normOf(bool reversible, int levels, int resolution, Orientation o);

} // namespace codecs::jpeg2000
