// rowoutput.cpp - interleaving, depths and colours on the way to a sink of rows.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/rowoutput.h"

#include <algorithm>

namespace codecs::jpeg2000 {

namespace {

// Two channels are grey with opacity, three a picture in colours, four the same with opacity unless the file says that
// they are inks: most files of four that say nothing have opacity there.
Shape shapeOfChannels(const ChannelMap& map, const Rect& area) {
    need(!area.empty(), "a picture without samples");
    const int n = int(channelsShown(map));
    int depth = 1;
    for (std::size_t k = 0; k < std::size_t(n); ++k) depth = std::max(depth, map.channels[k].depth);
    Shape shape = codecs::shapeOf(area.width(), area.height(), n, (1 << depth) - 1);
    const bool inks = n == 4 && map.colour == ColourSpace::cmyk;
    shape.alpha = n % 2 == 0 && !inks;
    shape.colour = n <= 2 ? Colour::grey : inks ? Colour::cmyk : Colour::rgb;
    return shape;
}

// One channel of a row.
template <class Out> void spread(std::span<const Sample> from, const std::vector<Sample>& table, Out* to, int step) {
    if (table.empty())
        for (const Sample s : from) {
            *to = Out(s);
            to += step;
        }
    else
        for (const Sample s : from) {
            *to = Out(table[s]);
            to += step;
        }
}

} // namespace

RowOutput::RowOutput(RowSink& to, const ChannelMap& channels, const ImageSize& size, const Rect& where)
    : sink(to), map(channels), area(where), shape(shapeOfChannels(channels, where)) {
    for (std::size_t k = 0; k < channelsShown(map); ++k) {
        const Channel& c = map.channels[k];
        const int own = (1 << c.depth) - 1;
        std::vector<Sample> table = c.palette;
        // Full range stays full range: the largest sample becomes the largest.
        if (own != shape.maxval) {
            // Without a palette a table of one step for each sample; with one, its entries are scaled.
            if (table.empty())
                for (int v = 0; v < 1 << size.components[c.component].depth; ++v) table.push_back(Sample(v));
            for (Sample& v : table) v = Sample((std::int64_t(v) * shape.maxval + own / 2) / own);
        }
        tables.push_back(std::move(table));
    }
    sink.begin(shape, map.metadata);
}

void RowOutput::open(std::int64_t y0, std::int64_t y1) {
    top = y0;
    bottom = y1;
    // As many rows as a tile or a stripe has, whatever the height of the picture.
    band.resize(shape.rowBytes() * std::size_t(y1 - y0));
}

void RowOutput::close() {
    if (bottom == top) return;
    if (map.colour == ColourSpace::sYcc && shape.colour == Colour::rgb) fromYcc();
    sink.write({band.data(), std::ptrdiff_t(shape.rowBytes()), int(bottom - top)});
}

void RowOutput::put(std::size_t component, std::int64_t x, std::int64_t y, std::span<const Sample> samples) {
    std::uint8_t* const row = band.data() + shape.rowBytes() * std::size_t(y - top);
    const int step = shape.channels;
    for (int k = 0; k < step; ++k) {
        if (map.channels[std::size_t(k)].component != component) continue;
        // A palette makes several channels of one component.
        const std::vector<Sample>& table = tables[std::size_t(k)];
        const std::ptrdiff_t at = (x - area.x0) * step + k;
        if (shape.wide())
            spread(samples, table, reinterpret_cast<std::uint16_t*>(row) + at, step);
        else
            spread(samples, table, row + at, step);
    }
}

// YCbCr of full range (IEC 61966-2-1, annex G) to RGB.
void RowOutput::fromYcc() {
    const double half = (shape.maxval + 1) / 2;
    const auto pixels = [&](auto* p, std::size_t count) {
        const auto limited = [&](double v) {
            return std::remove_reference_t<decltype(*p)>(std::clamp(v + 0.5, 0.0, double(shape.maxval)));
        };
        for (; count > 0; --count, p += shape.channels) {
            const double y = p[0], cb = p[1] - half, cr = p[2] - half;
            p[0] = limited(y + 1.402 * cr);
            p[1] = limited(y - 0.344136 * cb - 0.714136 * cr);
            p[2] = limited(y + 1.772 * cb);
        }
    };
    const std::size_t count = std::size_t(shape.width) * std::size_t(bottom - top);
    if (shape.wide())
        pixels(reinterpret_cast<std::uint16_t*>(band.data()), count);
    else
        pixels(band.data(), count);
}

bool inStep(const ChannelMap& map, const ImageSize& size) {
    const SizComponent& first = size.components[map.channels[0].component];
    return std::all_of(map.channels.begin(), map.channels.begin() + std::ptrdiff_t(channelsShown(map)),
                       [&](const Channel& c) {
                           const SizComponent& k = size.components[c.component];
                           return k.dx == first.dx && k.dy == first.dy;
                       });
}

void repeatRows(const PlanarSink& planes, const ChannelMap& map, const ImageSize& size, int reduce, RowSink& sink) {
    // The finest grid of the components counts, which the samples of the others cover.
    SizComponent finest{8, false, 255, 255};
    Rect area;
    for (std::size_t k = 0; k < channelsShown(map); ++k) {
        const std::size_t c = map.channels[k].component;
        finest.dx = std::min(finest.dx, size.components[c].dx);
        finest.dy = std::min(finest.dy, size.components[c].dy);
    }
    area = reducedRect(componentRect(planes.window(), finest), reduce);
    RowOutput out(sink, map, size, area);
    std::vector<Sample> row(std::size_t(area.empty() ? 0 : area.width()));
    for (std::int64_t y = area.y0; y < area.y1; ++y) {
        out.open(y, y + 1);
        for (std::size_t c = 0; c < size.components.size(); ++c) {
            const Rect& own = planes.area(c);
            if (own.empty()) continue;
            const SizComponent& k = size.components[c];
            const std::span<const Sample> from = planes.row(c, std::clamp(y * finest.dy / k.dy, own.y0, own.y1 - 1));
            // The sample at or ahead of a place on the finest grid; the first one serves what lies ahead of it.
            for (std::int64_t x = area.x0; x < area.x1; ++x)
                row[std::size_t(x - area.x0)] =
                    from[std::size_t(std::clamp(x * finest.dx / k.dx, own.x0, own.x1 - 1) - own.x0)];
            out.put(c, area.x0, y, row);
        }
        out.close();
    }
}

} // namespace codecs::jpeg2000
