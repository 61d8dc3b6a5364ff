// bandreader.h - the rows of a band from its code blocks.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/blockdecoder.h"
#include "codecs/jpeg2000/blockrows.h"

namespace codecs::jpeg2000 {

// Rows of numbers, one after the other. A row holds until the next one is asked for; its margins are the asker's.
template <class T> class RowFeed {
public:
    virtual ~RowFeed() = default;
    virtual T* next() = 0;
};

// A component of a tile as far as bands are concerned.
struct CodedComponent {
    std::size_t index;
    const TileComponent& layout;
    const std::vector<BlockStream>& streams; // by block of the layout
    ComponentCoding coding;
};

template <Road R> class BandReader final : public RowFeed<Number<R>> {
    using T = Number<R>;
    const CodedComponent& component;
    const BandPlace place;
    const BandCoding coding;
    BlockRows<T> rows;
    std::size_t told = 0, current = 0; // rows of blocks
    std::int64_t y;                    // of the next row of numbers

public:
    // The part `wanted` of a band.
    BandReader(const CodedComponent& from, const BandPlace& where, const Rect& wanted)
        : component(from), place(where), coding(from.coding.band(where)), rows(from.layout, where, wanted),
          y(wanted.y0) {}
    void add(std::uint32_t block) { rows.add(block); }

    // Tells the blocks that hold rows of numbers above `until`, each once.
    void need(std::int64_t until, std::vector<BlockJob>& jobs) {
        for (; told < rows.size() && rows.begin(told) < until; ++told) {
            rows.open(told);
            rows.tell(component.index, told, jobs);
        }
    }
    // Decodes one of them; tells whether it was sound.
    bool decode(const BlockJob& job, BlockDecoder& decoder) {
        const Block& block = component.layout.blocks[job.block];
        const auto result = decoder.decode(component.streams[job.block], block, place.orientation,
                                           component.coding.style.style, coding);
        const Rect part = rows.within(job.block);
        for (std::int64_t at = part.y0; at < part.y1; ++at) {
            const std::span<T> to(rows.numbers(job.row, at) + (part.x0 - rows.area().x0), std::size_t(part.width()));
            if (result == BlockDecoder::Result::empty)
                std::fill(to.begin(), to.end(), T(0));
            else
                decoder.take<R>(int(part.x0 - block.x0), int(at - block.y0), coding, to);
        }
        return result != BlockDecoder::Result::damaged;
    }

    T* next() override {
        if (y >= rows.end(current)) rows.close(current++);
        return rows.numbers(current, y++);
    }
};

} // namespace codecs::jpeg2000
