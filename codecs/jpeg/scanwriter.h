// scanwriter.h - coefficients to a file, by a script.
#pragma once

#include "codecs/jpeg/script.h"

namespace jpeg {

// The whole file, with Huffman tables made for each scan.
std::vector<std::uint8_t> writeFile(const CoefficientFile& file, const Script& script);

} // namespace jpeg
