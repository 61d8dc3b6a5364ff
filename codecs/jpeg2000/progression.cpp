// progression.cpp - packets in order: precincts sorted by the keys of the progression, layers put in between.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/progression.h"

#include <algorithm>
#include <tuple>

namespace codecs::jpeg2000 {

namespace {

struct Place {
    int component, resolution;
    std::size_t precinct;
    std::int64_t x, y; // of the precinct's corner, on the reference grid
    int* layersDone;
};

// The reference-grid coordinate at which the loops over positions meet a precinct: that of its own corner, or the
// tile's edge for a precinct that begins outside.
std::int64_t positionOf(std::int64_t index, int precinctLog, int levelsAbove, int step, std::int64_t tileEdge) {
    if (index == 0) return tileEdge;
    return std::max((index << precinctLog << levelsAbove) * step, tileEdge);
}

// All precincts of a tile. How many layers of each have been visited is kept for all changes of progression together.
std::vector<Place> placesOf(const ImageSize& size, const Tile& tile, std::vector<std::vector<std::vector<int>>>& done) {
    std::vector<Place> places;
    done.resize(tile.components.size());
    for (std::size_t c = 0; c < tile.components.size(); ++c) {
        const auto& resolutions = tile.components[c].resolutions;
        done[c].resize(resolutions.size());
        for (std::size_t r = 0; r < resolutions.size(); ++r) {
            const Resolution& res = resolutions[r];
            const int above = int(resolutions.size() - 1 - r);
            done[c][r].resize(res.precincts.size());
            for (std::size_t p = 0; p < res.precincts.size(); ++p) {
                const auto i = std::int64_t(p) % res.precinctsAcross, j = std::int64_t(p) / res.precinctsAcross;
                places.push_back({int(c), int(r), p,
                                  positionOf((res.rect.x0 >> res.precinctWidthLog) + i, res.precinctWidthLog, above,
                                             size.components[c].dx, tile.rect.x0),
                                  positionOf((res.rect.y0 >> res.precinctHeightLog) + j, res.precinctHeightLog, above,
                                             size.components[c].dy, tile.rect.y0),
                                  &done[c][r][p]});
            }
        }
    }
    return places;
}

// What the loops of B.12.1 run over, from the outside in.
using Key = std::tuple<std::int64_t, std::int64_t, std::int64_t, std::int64_t, std::size_t>;
Key keyOf(Progression order, const Place& p) {
    switch (order) {
    case Progression::RPCL:
        return {p.resolution, p.y, p.x, p.component, p.precinct};
    case Progression::PCRL:
        return {p.y, p.x, p.component, p.resolution, p.precinct};
    case Progression::CPRL:
        return {p.component, p.y, p.x, p.resolution, p.precinct};
    default:
        return {p.resolution, p.component, 0, 0, p.precinct};
    }
}

// Where the run of precincts ends within which the layers are the outer loop.
std::size_t endOfRun(Progression order, const std::vector<Place>& places, std::size_t begin) {
    // Layers are the outermost loop, or the one within resolutions, or the innermost (B.12.1.1 to B.12.1.5).
    if (order == Progression::LRCP) return places.size();
    std::size_t end = begin + 1;
    if (order == Progression::RLCP)
        while (end < places.size() && places[end].resolution == places[begin].resolution) ++end;
    return end;
}

// One progression; false where the visitor has had enough.
bool run(std::vector<Place> places, Progression order, int layers, const std::function<bool(const PacketId&)>& visit) {
    // Precincts of one key stand as they do in their resolution, since their index is the last part of it.
    std::sort(places.begin(), places.end(),
              [order](const Place& a, const Place& b) { return keyOf(order, a) < keyOf(order, b); });
    for (std::size_t begin = 0, end; begin < places.size(); begin = end) {
        end = endOfRun(order, places, begin);
        for (int layer = 0; layer < layers; ++layer)
            for (std::size_t i = begin; i < end; ++i) {
                const Place& p = places[i];
                if (*p.layersDone > layer) continue;
                *p.layersDone = layer + 1;
                if (!visit({p.component, p.resolution, p.precinct, layer})) return false;
            }
    }
    return true;
}

} // namespace

void forEachPacket(const ImageSize& size, const Tile& tile, const HeaderSet& headers,
                   const std::function<bool(const PacketId&)>& visit) {
    std::vector<std::vector<std::vector<int>>> done;
    const std::vector<Place> places = placesOf(size, tile, done);
    if (headers.changes.empty()) {
        // Without changes there is one run over everything.
        run(places, headers.tile.progression, headers.tile.layers, visit);
        return;
    }
    for (const ProgressionChange& change : headers.changes) {
        std::vector<Place> part;
        // What an earlier change has visited is left out (B.12.2).
        const int layers = std::min(change.layerEnd, headers.tile.layers);
        for (const Place& p : places)
            if (p.component >= change.componentBegin && p.component < change.componentEnd && *p.layersDone < layers &&
                p.resolution >= change.resolutionBegin && p.resolution < change.resolutionEnd)
                part.push_back(p);
        if (!run(std::move(part), change.order, layers, visit)) return;
    }
}

} // namespace codecs::jpeg2000
