// settings.h - what an encoder has been asked for, as the parameters of marker segments.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/geometry.h"

namespace codecs::jpeg2000 {

// The size of a picture with its tiles; a picture or a grid of tiles that cannot be is refused. `area` is that of the
// picture on the reference grid.
ImageSize sizeOf(const Rect& area, const std::vector<SizComponent>& components, const EncodeOptions& options);

// The rest of a main header. Options that cannot be are refused.
HeaderSet headersOf(const ImageSize& size, const EncodeOptions& options);

} // namespace codecs::jpeg2000
