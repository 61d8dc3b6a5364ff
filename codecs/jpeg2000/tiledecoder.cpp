// tiledecoder.cpp - a tile goes from top to bottom in stripes: while threads decode the code blocks of one stripe,
// others take the one before through the wavelet; then its rows become samples.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/tiledecoder.h"

#include "codecs/jpeg2000/colour.h"
#include "codecs/jpeg2000/packetreader.h"
#include "codecs/jpeg2000/parallel.h"

#include <algorithm>
#include <array>

namespace codecs::jpeg2000 {

namespace {

constexpr int kStripeRows = 16; // few enough to stay in the cache between the steps, enough to share out
constexpr int kBunch = 8;       // rows that a thread turns into samples at a time
constexpr std::size_t kMostWarnings = 20;

// The pieces as one; they are joined in `memory` where there are several.
ByteView join(const std::vector<ByteView>& pieces, Bytes& memory) {
    if (pieces.size() == 1) return pieces[0];
    for (const ByteView& s : pieces) memory.insert(memory.end(), s.begin(), s.end());
    return memory;
}

// The packet headers that a tile keeps apart from its packets, in PPM or PPT segments (A.7.4, A.7.5).
bool joinPackedHeaders(const TileData& data, Bytes& memory) {
    bool found = !data.packedHeaders.empty();
    for (const auto& part : data.packedHeaders) memory.insert(memory.end(), part.begin(), part.end());
    for (const Segment& s : data.segments)
        if (s.marker == PPT && !s.content.empty()) {
            memory.insert(memory.end(), s.content.begin() + 1, s.content.end());
            found = true;
        }
    return found;
}

// A tile of more precincts and code blocks than this is refused. A code block takes a bit of a packet header where its
// packet is not empty, so that a short file cannot ask for memory without end.
std::size_t partsLimit(const TileData& data) {
    std::size_t bytes = 0;
    for (const ByteView& b : data.bodies) bytes += b.size();
    constexpr std::size_t some = std::size_t(1) << 20, perByte = 8;
    return some + perByte * bytes;
}

} // namespace

Rect Scope::samples(std::size_t c, const Rect& area) const {
    return reducedRect(componentRect(intersection(area, window), stream.size.components[c]), reduce);
}

TileDecoder::TileDecoder(const Scope& wanted, SampleSink& to, int team)
    : scope(wanted), sink(to), threads(team), blockDecoders(std::size_t(team)) {}

void TileDecoder::warn(int tile, const std::string& what) {
    if (warnings.size() < kMostWarnings) warnings.push_back("tile " + std::to_string(tile) + ": " + what);
}

// A tile that breaks off is decoded as far as it goes.
void TileDecoder::readPackets(Work& work, const TileData& data) {
    const bool apart = joinPackedHeaders(data, work.packetHeaders);
    PacketReader reader(work.tile, work.headers, {join(data.bodies, work.bodies), work.packetHeaders, apart},
                        scope.layers > 0 ? scope.layers : kMaxLayers, scope.reduce);
    bool complete = true;
    try {
        forEachPacket(scope.stream.size, work.tile, work.headers,
                      [&](const PacketId& id) { return complete = reader.read(id); });
        if (!complete) warn(work.index, "packets are missing");
    } catch (const Error& e) {
        warn(work.index, e.what());
    }
    work.streams = std::move(reader.blocks);
}

void TileDecoder::makeComponents(Work& work) {
    const ImageSize& size = scope.stream.size;
    const HeaderSet& h = work.headers;
    // A component transform ties the first three components together.
    const auto alike = [&](std::size_t c) {
        const SizComponent &a = size.components[c], &b = size.components[0];
        return a.dx == b.dx && a.dy == b.dy && a.depth == b.depth && h.coding[c].reversible == h.coding[0].reversible;
    };
    const std::size_t count = size.components.size();
    work.colour = h.tile.colourTransform && count >= 3 && alike(1) && alike(2);
    if (h.tile.colourTransform && !work.colour)
        warn(work.index, "a component transform of components that differ is left out");
    // One of three that are tied together takes all three.
    const bool firstThree = work.colour && (scope.wants(0) || scope.wants(1) || scope.wants(2));
    work.components.resize(count);
    for (std::size_t c = 0; c < count; ++c) {
        if (!scope.wants(c) && !(firstThree && c < 3)) continue;
        const int depth = size.components[c].depth;
        const Road road = roadOf(h.coding[c].reversible, depth, work.colour && c < 3);
        const CodedComponent coded{
            c, work.tile.components[c], work.streams[c], {h.coding[c], h.quant[c], h.roiShift[c], depth, road}};
        work.components[c] = std::make_unique<ComponentDecoder>(coded, scope.samples(c, work.tile.rect), scope.reduce);
    }
}

// Rows of each component above the end of each stripe; the first entry is that of the beginning.
std::vector<std::vector<int>> TileDecoder::stripesOf(const std::vector<Rect>& areas) const {
    int most = 0;
    for (const Rect& r : areas) most = std::max(most, r.empty() ? 0 : r.height());
    const int stripes = (most + kStripeRows - 1) / kStripeRows;
    std::vector<std::vector<int>> rows;
    for (int s = 0; s <= stripes; ++s) {
        rows.emplace_back();
        for (const Rect& r : areas)
            rows.back().push_back(s == 0 || r.empty() ? 0 : int(std::int64_t(r.height()) * s / stripes));
    }
    return rows;
}

void TileDecoder::runJobs(Work& work, const std::vector<BlockJob>& jobs, const std::vector<int>& rows) {
    // Components first, as they take longest.
    const std::size_t components = rows.empty() ? 0 : work.components.size();
    parallelFor(components + jobs.size(), threads, [&](std::size_t i, int thread) {
        if (i < components) {
            if (work.components[i]) work.components[i]->advance(rows[i]);
            return;
        }
        const BlockJob& job = jobs[i - components];
        if (!work.components[job.component]->decode(job, blockDecoders[std::size_t(thread)])) ++work.damaged;
    });
}

// From the top down: the code blocks of stripe s + 1 while stripe s goes through the wavelet.
void TileDecoder::run(Work& work, bool inBands) {
    std::vector<Rect> areas;
    for (const auto& c : work.components) areas.push_back(c ? c->area() : Rect{});
    const auto rows = stripesOf(areas);
    const auto ask = [&](std::size_t s) {
        std::vector<BlockJob> jobs;
        for (std::size_t c = 0; s < rows.size() && c < areas.size(); ++c)
            if (work.components[c]) work.components[c]->need(rows[s][c], jobs);
        return jobs;
    };
    const std::size_t lead = scope.lead;
    // Nothing is there for the wavelet yet.
    runJobs(work, ask(1), {});
    for (std::size_t s = 1; s < rows.size(); ++s) {
        runJobs(work, ask(s + 1), rows[s]);
        if (inBands) sink.open(areas[lead].y0 + rows[s - 1][lead], areas[lead].y0 + rows[s][lead]);
        putRows(work, rows[s - 1], rows[s]);
        if (inBands) sink.close();
    }
    if (work.damaged > 0) warn(work.index, std::to_string(work.damaged) + " damaged code blocks");
}

// The rows of the stripe at hand as samples.
void TileDecoder::putRows(const Work& work, const std::vector<int>& from, const std::vector<int>& to) {
    struct Job {
        std::size_t first, count; // components
        int y, end;
    };
    std::vector<Job> jobs;
    for (std::size_t c = 0; c < work.components.size();) {
        const std::size_t count = work.colour && c == 0 ? 3 : 1;
        for (int y = from[c]; work.components[c] && y < to[c]; y += kBunch)
            jobs.push_back({c, count, y, std::min(y + kBunch, to[c])});
        c += count;
    }
    parallelFor(jobs.size(), threads, [&](std::size_t i, int) {
        const Job& job = jobs[i];
        onRoad(work.components[job.first]->road(), [&]<Road R>() {
            for (int y = job.y; y < job.end; ++y) putRow<R>(work, job.first, job.count, y);
        });
    });
}

// A row of one component, or of three that a transform ties together, in parts that stay in the cache from the
// wavelet's numbers to the sink.
template <Road R> void TileDecoder::putRow(const Work& work, std::size_t first, std::size_t count, int y) {
    std::array<std::array<Number<R>, kColourChunk>, 3> numbers;
    std::array<Sample, kColourChunk> samples;
    const Rect& area = work.components[first]->area();
    for (int x = 0; x < area.width(); x += kColourChunk) {
        const int part = std::min(kColourChunk, area.width() - x);
        for (std::size_t c = 0; c < count; ++c)
            work.components[first + c]->copyRow<R>(x, y, {numbers[c].data(), std::size_t(part)});
        if (count == 3) {
            Number<R>* const rows[3] = {numbers[0].data(), numbers[1].data(), numbers[2].data()};
            inverseColour<R>(rows, part, work.components[first]->depth());
        }
        for (std::size_t c = 0; c < count; ++c) {
            if (!scope.wants(first + c)) continue;
            const std::span<Sample> to(samples.data(), std::size_t(part));
            toSamples<R>(numbers[c].data(), work.components[first + c]->depth(), to);
            sink.put(first + c, area.x0 + x, area.y0 + y, to);
        }
    }
}

void TileDecoder::decode(int index, const TileData& data, bool inBands) {
    Work work;
    work.index = index;
    // The whole layout: packets can only be told apart in their order. Blocks that nobody wants cost no more than that.
    work.headers = tileHeaders(scope.stream, data);
    work.tile = layOutTile(scope.stream.size, work.headers, index, partsLimit(data));
    readPackets(work, data);
    makeComponents(work);
    run(work, inBands);
}

void TileDecoder::fill(int index, bool inBands) {
    const Rect tile = tileRect(scope.stream.size, index);
    std::vector<Rect> areas;
    for (std::size_t c = 0; c < scope.stream.size.components.size(); ++c)
        areas.push_back(scope.wants(c) ? scope.samples(c, tile) : Rect{});
    const auto rows = stripesOf(areas);
    const std::size_t lead = scope.lead;
    std::vector<Sample> grey;
    for (std::size_t s = 1; s < rows.size(); ++s) {
        if (inBands) sink.open(areas[lead].y0 + rows[s - 1][lead], areas[lead].y0 + rows[s][lead]);
        for (std::size_t c = 0; c < areas.size(); ++c) {
            grey.assign(areas[c].empty() ? 0 : std::size_t(areas[c].width()),
                        Sample(1 << (scope.stream.size.components[c].depth - 1)));
            for (int y = rows[s - 1][c]; y < rows[s][c]; ++y) sink.put(c, areas[c].x0, areas[c].y0 + y, grey);
        }
        if (inBands) sink.close();
    }
}

} // namespace codecs::jpeg2000
