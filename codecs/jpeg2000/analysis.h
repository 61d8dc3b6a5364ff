// analysis.h - a tile-component from rows of numbers to code blocks: the wavelet level by level, and the bands.
//
// It works from the top down as rows come, and keeps no more of them than the filters look at, besides the code blocks
// that are not complete.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/bandwriter.h"

#include <memory>

namespace codecs::jpeg2000 {

class Analysis {
public:
    virtual ~Analysis() = default;
    // The next rows of the tile-component.
    virtual void push(const AnyRows& rows, int count) = 0;
    // Tells the code blocks that have become complete, each once in all calls. All that were told before are encoded.
    virtual void complete(std::vector<BlockJob>& jobs) = 0;
    // Encodes one of them. Threads may do so at the same time, and while push() works on other rows.
    virtual CodedBlock encode(const BlockJob& job, BlockEncoder& encoder) = 0;
};

// `layout` and `coding` outlive it. `region` is the part of the component that is a region of interest, or empty.
std::unique_ptr<Analysis> makeAnalysis(std::size_t component, const TileComponent& layout,
                                       const ComponentCoding& coding, const Rect& region);

} // namespace codecs::jpeg2000
