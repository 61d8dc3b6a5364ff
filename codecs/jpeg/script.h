// script.h - which scans a file is made of.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/coefficients.h"

#include <string>

namespace codecs::jpeg {

using Script = std::vector<Scan>;

// All components in one scan or, where an MCU would be too large, a scan for each.
Script sequentialScript(const Frame& frame, Model model);
// Rough luma and all chroma first, then the rest of the luma, then what is missing bit by bit. Coefficients
// that are too large for a first scan with their two lowest bits left out begin with fewer bits.
Script usualScript(const CoefficientFile& file);
// From the text of a script (see docs/jpeg-modes.md). An Error names the scan at fault.
Script parseScript(const std::string& text, const Frame& frame, Model model);
// What the options of an encoder ask for: a script's text, the usual one, or none.
Script scriptFor(const CoefficientFile& file, const std::string& text, bool progressive);
inline bool isSequential(const Scan& s) { return s.first == 0 && s.last == 63; }

} // namespace codecs::jpeg
