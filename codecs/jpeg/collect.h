// collect.h - the coefficients of all scans of a file, sequential or progressive.
#pragma once

#include "codecs/jpeg/coefficients.h"
#include "codecs/jpeg/decodescan.h"
#include "codecs/jpeg/reader.h"

#include <functional>

namespace jpeg {

// The colour of a file is not written in it; these are the customs (JFIF, Adobe TN 5116, component numbers).
Model modelOf(const Header& header);

// Throws when a frame is not supported or has more than `maxPixels`.
void checkFrame(const Frame& frame, std::size_t maxPixels);

// The quantisation table of a component, as it is when the component starts.
QuantTable quantTableOf(const Header& header, const Component& component);
// Goes to the first scan; a file without one is an Error.
void firstScan(Reader& reader);

// How many blocks the scans of a picture may visit before the rest of them is passed over. A hundred scans of
// everything, or for small pictures whatever a lawful script can ask for: each of 64 coefficients of 14 bits,
// in each of 4 components, coded alone.
std::size_t scanBudget(const Frame& frame);

// Reads on from the first scan, to which `reader` has come. `afterScan(file)` may be empty.
CoefficientFile collect(Reader& reader, const std::uint8_t* data, std::size_t size, Warnings& warnings,
                        const std::function<void(CoefficientFile&)>& afterScan = {});

} // namespace jpeg
