// tiles.cpp - rows of tiles, with threads sharing the tiles of a row or the work within a tile.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/tiles.h"

#include "codecs/jpeg2000/parallel.h"

namespace codecs::jpeg2000 {

namespace {

// The tiles of a codestream that a window touches.
class Tiles {
    const Scope& scope;
    SampleSink& sink;
    const int threads;
    int firstColumn, lastColumn, firstRow, lastRow;
    int present = 0, missing = 0;
    std::vector<std::string> warnings;

    int indexOf(int column, int row) const { return row * scope.stream.size.tilesAcross() + column; }

    // Whether the tile holds any samples: where components are subsampled some tiles do not, and need not be there.
    bool holdsSamples(int index) const {
        const Rect tile = tileRect(scope.stream.size, index);
        for (std::size_t c = 0; c < scope.stream.size.components.size(); ++c)
            if (scope.wants(c) && !scope.samples(c, tile).empty()) return true;
        return false;
    }
    // A tile that is not there, or cannot be decoded, is grey.
    // Tells whether the tile was there.
    bool decodeTile(int index, TileDecoder& decoder, bool inBands) {
        const auto found = scope.stream.tiles.find(index);
        try {
            if (found != scope.stream.tiles.end()) {
                decoder.decode(index, found->second, inBands);
                return true;
            }
        } catch (const Error& e) {
            decoder.warnings.push_back("tile " + std::to_string(index) + ": " + e.what());
        }
        decoder.fill(index, inBands);
        return false;
    }
    void count(int index, bool there) {
        if (there)
            ++present;
        else if (holdsSamples(index))
            ++missing;
    }
    void take(std::vector<std::string>& from) {
        warnings.insert(warnings.end(), from.begin(), from.end());
        from.clear();
    }

    // A row of tiles, with threads sharing the tiles.
    void decodeSide(int row, std::vector<TileDecoder>& decoders) {
        const std::size_t tiles = std::size_t(lastColumn - firstColumn) + 1;
        std::vector<char> there(tiles);
        std::vector<std::vector<std::string>> told(tiles); // in the order of tiles, whichever comes first
        parallelFor(tiles, int(decoders.size()), [&](std::size_t i, int thread) {
            TileDecoder& decoder = decoders[std::size_t(thread)];
            there[i] = decodeTile(indexOf(firstColumn + int(i), row), decoder, false);
            told[i].swap(decoder.warnings);
        });
        for (std::size_t i = 0; i < tiles; ++i) {
            count(indexOf(firstColumn + int(i), row), there[i]);
            take(told[i]);
        }
    }

public:
    Tiles(const Scope& wanted, SampleSink& to, int team) : scope(wanted), sink(to), threads(team) {
        const ImageSize& s = scope.stream.size;
        const Rect& w = scope.window;
        // B-7 the other way round: the tiles of the corners.
        firstColumn = int((w.x0 - s.tileX) / s.tileWidth);
        lastColumn = int((w.x1 - 1 - s.tileX) / s.tileWidth);
        firstRow = int((w.y0 - s.tileY) / s.tileHeight);
        lastRow = int((w.y1 - 1 - s.tileY) / s.tileHeight);
    }

    std::vector<std::string> decode() {
        const int columns = lastColumn - firstColumn + 1;
        const bool share = columns >= threads && threads > 1; // a tile for a thread, or all threads for a tile
        std::vector<TileDecoder> decoders;
        for (int t = 0; t < (share ? threads : 1); ++t) decoders.emplace_back(scope, sink, share ? 1 : threads);
        for (int row = firstRow; row <= lastRow; ++row) {
            // A tile as wide as the window goes out in stripes; of several the row must be complete.
            if (columns == 1) {
                const int index = indexOf(firstColumn, row);
                count(index, decodeTile(index, decoders[0], true));
                take(decoders[0].warnings);
                continue;
            }
            const Rect rows = scope.samples(scope.lead, tileRect(scope.stream.size, indexOf(firstColumn, row)));
            sink.open(rows.y0, rows.y1);
            decodeSide(row, decoders);
            sink.close();
        }
        // A picture of nothing but grey is none.
        if (present == 0 && missing > 0) throw Error("no tile can be decoded");
        if (missing > 0) warnings.push_back(std::to_string(missing) + " tiles are missing");
        return warnings;
    }
};

} // namespace

std::vector<std::string> decodeTiles(const Scope& scope, SampleSink& sink, int threads) {
    return Tiles(scope, sink, threads).decode();
}

} // namespace codecs::jpeg2000
