// scanwriter.h - coefficients to a file, by a script.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/script.h"

namespace codecs::jpeg {

// Writes the whole file, with Huffman tables made for each scan.
void writeFile(const CoefficientFile& file, const Script& script, ByteSink& sink);

} // namespace codecs::jpeg
