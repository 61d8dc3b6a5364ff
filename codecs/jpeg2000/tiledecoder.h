// tiledecoder.h - the tiles of a codestream one by one: packets, code blocks, wavelet, components.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/codestream.h"
#include "codecs/jpeg2000/componentdecoder.h"
#include "codecs/jpeg2000/samples.h"

#include <atomic>

namespace codecs::jpeg2000 {

// What of a codestream is wanted.
struct Scope {
    const Codestream& stream;
    Rect window; // on the reference grid
    int reduce = 0, layers = 0;
    std::vector<bool> wanted; // by component
    std::size_t lead = 0;     // the component whose rows make the bands of a sink

    bool wants(std::size_t c) const { return wanted[c]; }
    // The samples of a component within a rectangle of the reference grid.
    Rect samples(std::size_t c, const Rect& area) const;
};

class TileDecoder {
    const Scope& scope;
    SampleSink& sink;
    const int threads;
    std::vector<BlockDecoder> blockDecoders; // by thread

    // What there is of the tile under work.
    struct Work {
        int index;
        HeaderSet headers;
        Tile tile;
        Bytes bodies, packetHeaders; // of several tile-parts, joined
        std::vector<std::vector<BlockStream>> streams;
        std::vector<std::unique_ptr<ComponentDecoder>> components; // null: not wanted
        bool colour = false;                                       // the first three go through a component transform
        std::atomic<int> damaged{0};
    };
    void warn(int tile, const std::string& what);
    void readPackets(Work& work, const TileData& data);
    void makeComponents(Work& work);
    void run(Work& work, bool inBands);
    void runJobs(Work& work, const std::vector<BlockJob>& jobs, const std::vector<int>& rows);
    void putRows(const Work& work, const std::vector<int>& from, const std::vector<int>& to);
    template <Road R> void putRow(const Work& work, std::size_t first, std::size_t count, int y);
    std::vector<std::vector<int>> stripesOf(const std::vector<Rect>& areas) const;

public:
    std::vector<std::string> warnings;

    TileDecoder(const Scope& wanted, SampleSink& to, int team);
    // Puts the wanted part of a tile. With `inBands` it opens and closes the sink's rows as it goes, else they are
    // open already. An Error leaves the sink as it was.
    void decode(int index, const TileData& data, bool inBands);
    // Puts mid-grey there.
    void fill(int index, bool inBands);
};

} // namespace codecs::jpeg2000
