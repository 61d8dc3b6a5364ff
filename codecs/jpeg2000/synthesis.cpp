// synthesis.cpp - levels that pull rows from the level below, down to the lowest band.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/synthesis.h"

#include "codecs/jpeg2000/filters.h"

namespace codecs::jpeg2000 {

namespace {

constexpr int kRing = 8; // rows that a level keeps: the filters look at up to seven of them

// One level: the rows of a part of a resolution, from those of the resolution below and three bands.
template <Road R> class Level final : public RowFeed<Number<R>> {
    using T = Number<R>;
    const Line across, down;
    RowFeed<T>& lower;
    std::int64_t skip, left; // rows and columns of the level below that are there for its own filter's sake
    NumberRows<T> ring;      // rows that are filtered across; row p in p % kRing
    InverseColumns<R> columns;
    std::int64_t fetched, stage, given; // next row to filter across, next stage, next row to give away

    T* nextLow() {
        for (; skip > 0; --skip) lower.next();
        return lower.next() + left;
    }
    // A row across: of LL and HL numbers at even places, of LH and HH ones at odd places (F.3.4).
    void fetch() {
        // A line of one number has a low one or a high one; the band of the other is empty.
        const bool low = across.lows() > 0, high = across.highs() > 0;
        T *l = nullptr, *h = nullptr;
        if (fetched & 1) {
            if (low) l = bands[1].next();
            if (high) h = bands[2].next();
        } else {
            if (low) l = nextLow();
            if (high) h = bands[0].next();
        }
        inverseRow<R>(across, l, h, ring[int(fetched++ % kRing)]);
    }
    // The row that stands at p, or for it beyond an edge. It is in the ring, as the filters look no further than that.
    T* row(std::int64_t p) {
        p = down.mirrored(p);
        while (fetched <= p) fetch();
        return ring[int(p % kRing)];
    }

public:
    std::vector<BandReader<R>> bands; // HL, LH, HH

    // `below` gives the rows of `lowerPart`.
    Level(const Rect& part, const Rect& lowerPart, RowFeed<T>& below)
        : across{part.x0, part.x1}, down{part.y0, part.y1}, lower(below), skip(bandPart(part, LL).y0 - lowerPart.y0),
          left(bandPart(part, LL).x0 - lowerPart.x0), ring(kRing, part.width()), columns(part.width()),
          fetched(down.begin), stage((down.begin >> 1) - InverseColumns<R>::kLead), given(down.begin) {}

    // Which row of numbers, low or high, is the first that the rows above `until` do not ask for.
    std::int64_t reach(std::int64_t until) const {
        // The first stages look at rows behind the edge by way of those within.
        return std::min(down.end, std::max(until, down.begin + kReach) + kReach);
    }

    T* next() override {
        if (down.size() == 1) {
            T* only = row(given++);
            if (down.phase() == 1)
                for (int x = 0; x < across.size(); ++x) only[x] = halved(only[x]);
            return only;
        }
        while (2 * (stage - 1) < given) {
            columns.stage(stage, [this](std::int64_t p) { return row(p); });
            ++stage;
        }
        const bool odd = given & 1;
        ++given;
        return odd ? columns.odd() : columns.even();
    }
};

template <Road R> class SynthesisOn final : public Synthesis {
    const CodedComponent& component;
    const Rect wanted;
    std::vector<Rect> parts;                       // by resolution
    std::unique_ptr<BandReader<R>> lowest;         // the LL band
    std::vector<std::unique_ptr<Level<R>>> levels; // from the lowest up
    RowFeed<Number<R>>* top;
    std::int64_t y; // of the next row of the top part

    BandReader<R>& bandOf(int resolution, int index) {
        return resolution == 0 ? *lowest : levels[std::size_t(resolution) - 1]->bands[std::size_t(index)];
    }
    void makeLevel(int resolution) {
        const Rect& part = parts[std::size_t(resolution)];
        auto level = std::make_unique<Level<R>>(part, parts[std::size_t(resolution) - 1], *top);
        for (int b = 0; b < 3; ++b) {
            constexpr Orientation orientations[] = {HL, LH, HH};
            const Orientation o = orientations[b];
            level->bands.emplace_back(component, BandPlace{resolution, b, o}, bandPart(part, o));
        }
        top = level.get();
        levels.push_back(std::move(level));
    }

public:
    SynthesisOn(const CodedComponent& from, int resolution, const Rect& rect)
        : component(from), wanted(rect), parts(partsFor(from.layout, resolution, rect)),
          lowest(std::make_unique<BandReader<R>>(from, BandPlace{0, 0, LL}, parts[0])), top(lowest.get()),
          y(parts.back().y0) {
        for (int r = 1; r <= resolution; ++r) makeLevel(r);
        for (std::uint32_t b = 0; b < component.layout.blocks.size(); ++b) {
            const Block& block = component.layout.blocks[b];
            // Blocks beside the part are left out by their band, those of higher resolutions here.
            if (block.resolution <= resolution) bandOf(block.resolution, block.band).add(b);
        }
    }

    void need(int until, std::vector<BlockJob>& jobs) override {
        // From the top level down: each asks its bands for rows, and the level below for half of them.
        std::int64_t end = wanted.y0 + until;
        for (std::size_t i = levels.size(); i-- > 0;) {
            const std::int64_t rows = levels[i]->reach(end);
            levels[i]->bands[0].need((rows + 1) / 2, jobs);
            levels[i]->bands[1].need(rows / 2, jobs);
            levels[i]->bands[2].need(rows / 2, jobs);
            end = (rows + 1) / 2;
        }
        lowest->need(end, jobs);
    }
    bool decode(const BlockJob& job, BlockDecoder& decoder) override {
        return bandOf(job.resolution, job.band).decode(job, decoder);
    }
    void take(int rows, AnyRows& to) override {
        for (; y < wanted.y0; ++y) top->next(); // what is there for the filter's sake
        const std::int64_t left = wanted.x0 - parts.back().x0;
        for (int i = 0; i < rows; ++i, ++y) {
            const Number<R>* row = top->next() + left;
            std::copy(row, row + wanted.width(), rowsOn<R>(to)[i]);
        }
    }
};

} // namespace

std::unique_ptr<Synthesis> makeSynthesis(const CodedComponent& component, int resolution, const Rect& wanted) {
    return onRoad(component.coding.road, [&]<Road R>() -> std::unique_ptr<Synthesis> {
        return std::make_unique<SynthesisOn<R>>(component, resolution, wanted);
    });
}

} // namespace codecs::jpeg2000
