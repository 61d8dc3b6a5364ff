// bmprle.h - the run-length codes of BMP files.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/picture.h"

namespace codecs {

// Unpacks runs of 8 or 4 bits into the rows of `places`, the last row first. What the runs pass by is place 0; where
// they end early, the rest is.
void unpackBmpRuns(ByteSource& bytes, int bits, Picture& places);

} // namespace codecs
