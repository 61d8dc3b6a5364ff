// bandwriter.h - the rows of a band into code blocks.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/blockencoder.h"
#include "codecs/jpeg2000/blockrows.h"

namespace codecs::jpeg2000 {

// A place for rows of numbers, one after the other: the next row is filled where next() says, with room for one number
// more, and then taken.
template <class T> class RowTarget {
public:
    virtual ~RowTarget() = default;
    virtual T* next() = 0;
    virtual void taken() = 0;
};

template <Road R> class BandWriter final : public RowTarget<Number<R>> {
    using T = Number<R>;
    const TileComponent& layout;
    const ComponentCoding& component;
    const BandPlace place;
    const BandCoding coding;
    const Rect roi; // what a region of interest asks for
    BlockRows<T> rows;
    std::size_t closed = 0, told = 0, current = 0; // rows of blocks
    std::int64_t y;                                // of the next row of numbers

public:
    BandWriter(const TileComponent& tc, const ComponentCoding& how, const BandPlace& where, const Rect& band,
               const Rect& region)
        : layout(tc), component(how), place(where), coding(how.band(where)), roi(region), rows(tc, where, band),
          y(band.y0) {}
    void add(std::uint32_t block) { rows.add(block); }

    T* next() override {
        if (y == rows.begin(current)) rows.open(current);
        return rows.numbers(current, y);
    }
    void taken() override {
        if (++y == rows.end(current)) ++current;
    }

    // Tells the blocks that have become complete, each once. Those told before are encoded, and their memory goes.
    void complete(std::size_t index, std::vector<BlockJob>& jobs) {
        for (; closed < told; ++closed) rows.close(closed);
        for (; told < current; ++told) rows.tell(index, told, jobs);
    }
    CodedBlock encode(const BlockJob& job, BlockEncoder& encoder) {
        const Block& block = layout.blocks[job.block];
        // Coefficients of a region of interest come above all others (H.2.2).
        const Rect raised = intersection(roi, rows.within(job.block));
        encoder.begin(block);
        for (int i = 0; i < block.height; ++i) {
            const std::int64_t at = block.y0 + i;
            encoder.quantise<R>({rows.numbers(job.row, at) + (block.x0 - rows.area().x0), block.width}, coding);
            if (!raised.empty() && at >= raised.y0 && at < raised.y1)
                encoder.raise(int(raised.x0 - block.x0), raised.width(), coding);
        }
        return encoder.encode(place.orientation, component.style, coding);
    }
};

} // namespace codecs::jpeg2000
