// collect.h - the coefficients of all scans of a file, sequential or progressive.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/coefficients.h"
#include "codecs/jpeg/jpeg.h"
#include "codecs/jpeg/segmentreader.h"

namespace codecs::jpeg {

// How many blocks the scans of a picture may visit before the rest of them is passed over. A hundred scans of
// everything, or for small pictures whatever a lawful script can ask for: each of 64 coefficients of 14 bits,
// in each of 4 components, coded alone.
std::size_t scanBudget(const Frame& frame);

// Reads on from the first scan, to which `reader` has come. `afterScan(file)` may be empty.
CoefficientFile collect(SegmentReader& reader, Warnings& warnings,
                        const std::function<void(CoefficientFile&)>& afterScan = {});

} // namespace codecs::jpeg
