// synthesis.h - a tile-component from code blocks to rows of numbers: bands, and the inverse wavelet level by level.
//
// It works from the top down and keeps no more rows than the filters look at, besides the code blocks that are in use.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/bandreader.h"

#include <memory>

namespace codecs::jpeg2000 {

class Synthesis {
public:
    virtual ~Synthesis() = default;
    // Tells the code blocks that the first `until` rows ask for, each once in all calls.
    virtual void need(int until, std::vector<BlockJob>& jobs) = 0;
    // Decodes one of them; tells whether it was sound. Threads may do so at the same time, and while take() works on
    // rows that ask for other blocks.
    virtual bool decode(const BlockJob& job, BlockDecoder& decoder) = 0;
    // The next rows, whose code blocks are all decoded.
    virtual void take(int rows, AnyRows& to) = 0;
};

// For the rectangle `wanted` of a resolution. `component` outlives it.
std::unique_ptr<Synthesis> makeSynthesis(const CodedComponent& component, int resolution, const Rect& wanted);

} // namespace codecs::jpeg2000
