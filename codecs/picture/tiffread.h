// tiffread.h - the rows of a TIFF file, whatever decodes its pieces.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/convert.h"
#include "codecs/picture/tiffpieces.h"

namespace codecs {

// `pieces` decodes the strips and tiles; it may refuse the file.
Rows openTiffWith(std::unique_ptr<ByteSource> bytes, std::uint64_t maxPixels, MakePieces pieces);

} // namespace codecs
