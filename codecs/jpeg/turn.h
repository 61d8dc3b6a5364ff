// turn.h - pictures turned, mirrored and cut at the edges of units, by their coefficients alone.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/coefficients.h"
#include "codecs/jpeg/jpeg.h"

namespace codecs::jpeg {

// The luma of a picture of YCbCr, which is a grey one; a grey one stays. An Error when it is neither.
CoefficientFile withoutChroma(CoefficientFile file);
// An Error when a side would begin with a part of a unit, unless such parts may be cut off.
CoefficientFile turned(CoefficientFile file, Turn turn, bool trim);
// An Error when the part is not inside. Tells where it begins when that is not where it was to.
CoefficientFile cropped(CoefficientFile file, const Part& part, Warnings& warnings);

} // namespace codecs::jpeg
