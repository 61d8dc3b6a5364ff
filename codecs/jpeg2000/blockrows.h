// blockrows.h - the rows of code blocks of a band: which blocks they hold, and their numbers while they are in use.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/numberrows.h"
#include "codecs/jpeg2000/quantiser.h"
#include "codecs/jpeg2000/region.h"

namespace codecs::jpeg2000 {

// A code block to be coded, and where its band keeps the numbers.
struct BlockJob {
    std::size_t component;
    int resolution, band; // band: index in its resolution
    std::size_t row;      // of blocks
    std::uint32_t block;  // of the component
};

template <class T> class BlockRows {
    struct Row {
        std::int64_t y0 = 0, y1 = 0;
        std::vector<std::uint32_t> blocks;
        NumberRows<T> numbers;
    };
    const TileComponent& layout;
    const BandPlace place;
    const Rect part; // of the band, outside of which nothing is kept
    std::vector<Row> rows;
    std::vector<NumberRows<T>> spare; // memory of rows that are done

    int heightLog() const {
        return layout.resolutions[std::size_t(place.resolution)].bands[std::size_t(place.index)].blockHeightLog;
    }

public:
    BlockRows(const TileComponent& component, const BandPlace& where, const Rect& wanted)
        : layout(component), place(where), part(wanted) {
        const int log = heightLog();
        const std::int64_t first = part.y0 >> log, last = ceilShift(part.y1, log);
        rows.resize(part.y1 > part.y0 ? std::size_t(last - first) : 0);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            rows[i].y0 = std::max((first + std::int64_t(i)) << log, part.y0);
            rows[i].y1 = std::min((first + std::int64_t(i) + 1) << log, part.y1);
        }
    }
    // A block of the band; one that lies outside the part does not count.
    void add(std::uint32_t index) {
        if (!within(index).empty())
            rows[std::size_t((layout.blocks[index].y0 >> heightLog()) - (part.y0 >> heightLog()))].blocks.push_back(
                index);
    }

    const Rect& area() const { return part; }
    std::size_t size() const { return rows.size(); }
    std::int64_t begin(std::size_t row) const { return rows[row].y0; }
    std::int64_t end(std::size_t row) const { return rows[row].y1; }
    // The rectangle of a block within the part.
    Rect within(std::uint32_t index) const {
        const Block& b = layout.blocks[index];
        return intersection({b.x0, b.y0, b.x0 + b.width, b.y0 + b.height}, part);
    }
    T* numbers(std::size_t row, std::int64_t y) { return rows[row].numbers[int(y - rows[row].y0)]; }

    void tell(std::size_t component, std::size_t row, std::vector<BlockJob>& jobs) const {
        for (const std::uint32_t b : rows[row].blocks)
            jobs.push_back({component, place.resolution, place.index, row, b});
    }
    // A row has its numbers from open() to close().
    void open(std::size_t row) {
        if (!spare.empty()) {
            rows[row].numbers = std::move(spare.back());
            spare.pop_back();
        }
        rows[row].numbers.reset(int(rows[row].y1 - rows[row].y0), part.width());
    }
    void close(std::size_t row) { spare.push_back(std::move(rows[row].numbers)); }
};

} // namespace codecs::jpeg2000
