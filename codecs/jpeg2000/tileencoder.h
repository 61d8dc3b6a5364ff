// tileencoder.h - one tile of a picture: components, wavelet, code blocks; not yet packets.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/analysis.h"
#include "codecs/jpeg2000/samples.h"

namespace codecs::jpeg2000 {

class TileEncoder {
    const ImageSize& size;
    const HeaderSet& headers;
    const Rect region; // of interest
    SampleSource& source;
    const int threads;
    std::vector<BlockEncoder> blockEncoders; // by thread

    // A component of the tile under work.
    struct Part {
        ComponentCoding coding;
        std::unique_ptr<Analysis> analysis;
        AnyRows stripe;
        Rect rows; // of the component, in the stripe
    };
    std::vector<Part> partsOf(const Tile& tile) const;
    void fill(std::vector<Part>& parts);
    template <Road R> void fillRow(std::vector<Part>& parts, std::size_t first, std::size_t count, int y) const;
    void runJobs(EncodedTile& tile, std::vector<Part>& parts, const std::vector<BlockJob>& jobs, bool push);
    double weightOf(const ComponentCoding& coding, std::size_t c, const BlockJob& job, Orientation o) const;

public:
    // The region of interest is on the reference grid, or empty.
    TileEncoder(const ImageSize& imageSize, const HeaderSet& set, const Rect& regionOfInterest, SampleSource& from,
                int team);
    // With `inBands` it asks the source for rows as it goes, else they are there already.
    EncodedTile encode(int index, bool inBands);
};

} // namespace codecs::jpeg2000
