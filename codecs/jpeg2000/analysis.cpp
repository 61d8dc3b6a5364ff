// analysis.cpp - levels that push rows on to the level below, down to the lowest band.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/analysis.h"

#include "codecs/jpeg2000/filters.h"

namespace codecs::jpeg2000 {

namespace {

constexpr int kRing = 8; // rows that a level keeps: the filters look at up to seven of them

// One level: the rows of a resolution into those of the resolution below and three bands.
template <Road R> class Level final : public RowTarget<Number<R>> {
    using T = Number<R>;
    const Line across, down;
    RowTarget<T>& lower;
    NumberRows<T> ring; // row p in p % kRing
    ForwardColumns<R> columns;
    std::int64_t have, stage; // rows up to here are there; next stage

    const T* row(std::int64_t p) { return ring[int(down.mirrored(p) % kRing)]; }

    // A row that is filtered down its columns goes on across, into a low and a high half.
    void split(T* from, RowTarget<T>& low, RowTarget<T>& high) {
        forwardRow<R>(across, from, across.lows() > 0 ? low.next() : from, across.highs() > 0 ? high.next() : from);
        if (across.lows() > 0) low.taken();
        if (across.highs() > 0) high.taken();
    }
    void splitLow(T* from) { split(from, lower, bands[0]); }
    void splitHigh(T* from) { split(from, bands[1], bands[2]); }

    // Whether all rows that the next stage looks at are there, or stand for ones that are.
    bool ready() const {
        const std::int64_t last = 2 * stage + ForwardColumns<R>::kAhead;
        return down.mirrored(last - 2) < have && down.mirrored(last - 1) < have && down.mirrored(last) < have;
    }
    // One step of the column filter, whose rows go on across and then down to where they belong.
    void run() {
        columns.stage(stage, [this](std::int64_t p) { return row(p); });
        const std::int64_t low = 2 * stage, high = low + ForwardColumns<R>::kHigh;
        if (low >= down.begin && low < down.end) splitLow(columns.low());
        if (high >= down.begin && high < down.end) splitHigh(columns.high());
        ++stage;
    }
    // A single row is not filtered; at an odd place it is a high one, and doubled (F.4.8).
    void single() {
        T* only = ring[int(down.begin % kRing)];
        if (down.phase() == 0) return splitLow(only);
        for (int x = 0; x < across.size(); ++x) only[x] = doubled(only[x]);
        splitHigh(only);
    }

public:
    std::vector<BandWriter<R>> bands; // HL, LH, HH

    Level(const Rect& rect, RowTarget<T>& below)
        : across{rect.x0, rect.x1}, down{rect.y0, rect.y1}, lower(below), ring(kRing, rect.width()),
          columns(rect.width()), have(down.begin), stage((down.begin >> 1) - ForwardColumns<R>::kLead) {}

    T* next() override { return ring[int(have % kRing)]; }
    void taken() override {
        ++have;
        if (down.size() == 1) return single();
        // The last rows are there once the one below the edge would be.
        while (ready() && 2 * stage < down.end + 2) run();
    }
};

template <Road R> class AnalysisOn final : public Analysis {
    const std::size_t component;
    const TileComponent& layout;
    std::unique_ptr<BandWriter<R>> lowest;         // the LL band
    std::vector<std::unique_ptr<Level<R>>> levels; // from the lowest up
    RowTarget<Number<R>>* top;

    BandWriter<R>& bandOf(int resolution, int index) {
        return resolution == 0 ? *lowest : levels[std::size_t(resolution) - 1]->bands[std::size_t(index)];
    }
    template <class Use> void forEachBand(Use use) {
        for (auto& level : levels)
            for (BandWriter<R>& b : level->bands) use(b);
        use(*lowest);
    }

public:
    AnalysisOn(std::size_t index, const TileComponent& tc, const ComponentCoding& coding, const Rect& region)
        : component(index), layout(tc) {
        // Every number that makes a difference within the region is a part of it.
        const std::vector<Rect> roi = partsFor(layout, int(layout.resolutions.size()) - 1, region);
        const auto bandRect = [&](int r, int b) {
            return layout.resolutions[std::size_t(r)].bands[std::size_t(b)].rect;
        };
        lowest = std::make_unique<BandWriter<R>>(layout, coding, BandPlace{0, 0, LL}, bandRect(0, 0), roi[0]);
        top = lowest.get();
        for (int r = 1; r < int(layout.resolutions.size()); ++r) {
            auto level = std::make_unique<Level<R>>(layout.resolutions[std::size_t(r)].rect, *top);
            for (const Orientation o : {HL, LH, HH}) {
                const int b = int(o) - int(HL);
                level->bands.emplace_back(layout, coding, BandPlace{r, b, o}, bandRect(r, b),
                                          bandPart(roi[std::size_t(r)], o));
            }
            top = level.get();
            levels.push_back(std::move(level));
        }
        // Blocks are listed by precincts (B.7); bands want them by rows.
        for (std::uint32_t b = 0; b < layout.blocks.size(); ++b)
            bandOf(layout.blocks[b].resolution, layout.blocks[b].band).add(b);
    }

    void push(const AnyRows& rows, int count) override {
        const NumberRows<Number<R>>& from = rowsOn<R>(rows);
        for (int i = 0; i < count; ++i) {
            std::copy(from[i], from[i] + layout.rect.width(), top->next());
            top->taken();
        }
    }
    void complete(std::vector<BlockJob>& jobs) override {
        forEachBand([&](BandWriter<R>& b) { b.complete(component, jobs); });
    }
    CodedBlock encode(const BlockJob& job, BlockEncoder& encoder) override {
        return bandOf(job.resolution, job.band).encode(job, encoder);
    }
};

} // namespace

std::unique_ptr<Analysis> makeAnalysis(std::size_t component, const TileComponent& layout,
                                       const ComponentCoding& coding, const Rect& region) {
    return onRoad(coding.road, [&]<Road R>() -> std::unique_ptr<Analysis> {
        return std::make_unique<AnalysisOn<R>>(component, layout, coding, region);
    });
}

} // namespace codecs::jpeg2000
