// tileencoder.cpp - a tile goes from top to bottom in stripes: while some threads take the rows of a stripe through
// the wavelet, others encode the code blocks that the stripe before has made complete.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/tileencoder.h"

#include "codecs/jpeg2000/colour.h"
#include "codecs/jpeg2000/norms.h"
#include "codecs/jpeg2000/parallel.h"

#include <algorithm>
#include <array>

namespace codecs::jpeg2000 {

namespace {

constexpr int kStripeRows = 16; // few enough to stay in the cache between the steps, enough to share out
constexpr int kBunch = 8;       // rows that a thread takes from the source at a time

} // namespace

TileEncoder::TileEncoder(const ImageSize& imageSize, const HeaderSet& set, const Rect& regionOfInterest,
                         SampleSource& from, int team)
    : size(imageSize), headers(set), region(regionOfInterest), source(from), threads(team),
      blockEncoders(std::size_t(team)) {}

std::vector<TileEncoder::Part> TileEncoder::partsOf(const Tile& tile) const {
    std::vector<Part> parts;
    for (std::size_t c = 0; c < tile.components.size(); ++c) {
        const int depth = size.components[c].depth;
        const CodingStyle& style = headers.coding[c];
        const Road road = roadOf(style.reversible, depth, headers.tile.colourTransform && c < 3);
        parts.push_back(
            {{style, headers.quant[c], headers.roiShift[c], depth, road}, nullptr, makeRows(road, 0, 0), {}});
    }
    // The analysis refers to its part, which stays where it is from here on.
    for (std::size_t c = 0; c < parts.size(); ++c)
        if (!tile.components[c].rect.empty())
            parts[c].analysis = makeAnalysis(c, tile.components[c], parts[c].coding,
                                             componentRect(intersection(region, tile.rect), size.components[c]));
    return parts;
}

// One row of a component, or of three that a transform ties together, from the source to numbers.
template <Road R>
void TileEncoder::fillRow(std::vector<Part>& parts, std::size_t first, std::size_t count, int y) const {
    std::array<Sample, kColourChunk> samples;
    const Rect& area = parts[first].rows;
    for (int x = 0; x < area.width(); x += kColourChunk) {
        const int part = std::min(kColourChunk, area.width() - x);
        Number<R>* rows[3] = {};
        for (std::size_t i = 0; i < count; ++i) {
            const std::span<Sample> to(samples.data(), std::size_t(part));
            source.get(first + i, area.x0 + x, area.y0 + y, to);
            rows[i] = rowsOn<R>(parts[first + i].stripe)[y] + x;
            fromSamples<R>(to, size.components[first + i].depth, rows[i]);
        }
        // The three rows are in the cache: transformed here, they are not read again.
        if (count == 3) forwardColour<R>(rows, part, size.components[first].depth);
    }
}

void TileEncoder::fill(std::vector<Part>& parts) {
    struct Job {
        std::size_t first, count;
        int y, end;
    };
    std::vector<Job> jobs;
    for (std::size_t c = 0; c < parts.size();) {
        const std::size_t count = headers.tile.colourTransform && c == 0 ? 3 : 1;
        const int height = parts[c].rows.empty() ? 0 : parts[c].rows.height();
        for (std::size_t i = c; height > 0 && i < c + count; ++i)
            onRoad(parts[i].coding.road,
                   [&]<Road R>() { rowsOn<R>(parts[i].stripe).reset(height, parts[i].rows.width()); });
        for (int y = 0; y < height; y += kBunch) jobs.push_back({c, count, y, std::min(y + kBunch, height)});
        c += count;
    }
    parallelFor(jobs.size(), threads, [&](std::size_t i, int) {
        const Job& job = jobs[i];
        onRoad(parts[job.first].coding.road, [&]<Road R>() {
            for (int y = job.y; y < job.end; ++y) fillRow<R>(parts, job.first, job.count, y);
        });
    });
}

// What an error of one step in a block comes to in the picture, squared.
double TileEncoder::weightOf(const ComponentCoding& coding, std::size_t c, const BlockJob& job, Orientation o) const {
    const bool reversible = coding.style.reversible;
    const double step = reversible ? 1 : stepOf(coding.quant.step(job.resolution, job.band), coding.depth, o);
    // An error of one component comes out in three (G.2, G.3).
    const double colour = headers.tile.colourTransform && c < 3 ? colourNorm(reversible, c) : 1;
    const double error = step * colour * bandNorm(reversible, coding.style.levels, job.resolution, o);
    return error * error;
}

void TileEncoder::runJobs(EncodedTile& tile, std::vector<Part>& parts, const std::vector<BlockJob>& jobs, bool push) {
    // Components first, as they take longest.
    const std::size_t components = push ? parts.size() : 0;
    parallelFor(components + jobs.size(), threads, [&](std::size_t i, int thread) {
        if (i < components) {
            if (!parts[i].rows.empty()) parts[i].analysis->push(parts[i].stripe, parts[i].rows.height());
            return;
        }
        const BlockJob& job = jobs[i - components];
        const Part& part = parts[job.component];
        CodedBlock& coded = tile.blocks[job.component][job.block];
        coded = part.analysis->encode(job, blockEncoders[std::size_t(thread)]);
        const Resolution& r = tile.layout.components[job.component].resolutions[std::size_t(job.resolution)];
        coded.weight = weightOf(part.coding, job.component, job, r.bands[std::size_t(job.band)].orientation);
    });
}

EncodedTile TileEncoder::encode(int index, bool inBands) {
    EncodedTile out;
    out.index = index;
    out.layout = layOutTile(size, headers, index, ~std::size_t(0) >> 1);
    for (const TileComponent& tc : out.layout.components) out.blocks.emplace_back(tc.blocks.size());
    std::vector<Part> parts = partsOf(out.layout);
    std::vector<BlockJob> jobs;
    const auto complete = [&] {
        jobs.clear();
        for (Part& p : parts)
            if (p.analysis) p.analysis->complete(jobs);
    };
    const Rect& tile = out.layout.rect;
    for (std::int64_t y = tile.y0; y < tile.y1; y += kStripeRows) {
        const Rect rows{tile.x0, y, tile.x1, std::min(y + kStripeRows, tile.y1)};
        if (inBands) source.advance(rows.y0, rows.y1);
        for (std::size_t c = 0; c < parts.size(); ++c) parts[c].rows = componentRect(rows, size.components[c]);
        fill(parts);
        runJobs(out, parts, jobs, true);
        complete();
    }
    // The blocks of the last stripe have no stripe behind them.
    runJobs(out, parts, jobs, false);
    return out;
}

} // namespace codecs::jpeg2000
