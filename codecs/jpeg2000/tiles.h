// tiles.h - all tiles of a codestream that are wanted, from the top down.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/tiledecoder.h"

namespace codecs::jpeg2000 {

// Gives warnings. Tiles that are missing or broken are grey.
std::vector<std::string> decodeTiles(const Scope& scope, SampleSink& sink, int threads);

} // namespace codecs::jpeg2000
