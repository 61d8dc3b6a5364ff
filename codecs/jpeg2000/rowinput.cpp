// rowinput.cpp - channels taken out of interleaved rows, every so many of them where a component is subsampled.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/rowinput.h"

#include "codecs/jpeg2000/numbers.h"

#include <bit>

namespace codecs::jpeg2000 {

void RowInput::advance(std::int64_t from, std::int64_t to) {
    // A source that is whole in memory has been advanced to its end at once.
    if (from >= top && to <= bottom) return;
    need(from == bottom, "rows of the picture out of their order");
    band = source.next(int(to - from));
    need(band.rows == to - from, "a picture that ends early");
    top = from;
    bottom = to;
    if (kept) keep();
}

// Rows without gaps, whatever their step in the band.
void RowInput::keep() const {
    const std::size_t bytes = source.shape().rowBytes();
    const bool close = band.step == std::ptrdiff_t(bytes);
    for (int y = 0; y < band.rows; y += close ? band.rows : 1)
        kept->writeAt(std::uint64_t(top + y - size.y0) * bytes,
                      {band.row(y), bytes * std::size_t(close ? band.rows : 1)});
}

void RowInput::get(std::size_t component, std::int64_t x, std::int64_t y, std::span<Sample> to) const {
    const SizComponent& c = size.components[component];
    const Shape& shape = source.shape();
    // Every dx-th pixel of the row, counted on the reference grid.
    const std::ptrdiff_t at = std::ptrdiff_t(x * c.dx - size.x0) * shape.channels + std::ptrdiff_t(component);
    const std::ptrdiff_t step = std::ptrdiff_t(c.dx) * shape.channels;
    const std::int64_t row = y * c.dy;
    Band from = band;
    Samples again;
    if (row >= top && row < bottom)
        from.data = band.row(int(row - top));
    else { // one that has gone by
        need(kept && row < top, "rows of the picture out of their order");
        again.resize(shape.rowBytes());
        need(kept->readAt(std::uint64_t(row - size.y0) * again.size(), again) == again.size(),
             "a temporary file that was cut");
        from.data = again.data();
    }
    const auto take = [&](const auto* p) {
        for (Sample& s : to) {
            s = *p;
            p += step;
        }
    };
    if (shape.wide())
        take(from.words(0) + at);
    else
        take(from.row(0) + at);
}

// Colour differences may have fewer samples than the picture, and so may all inks but the first.
std::vector<SizComponent> componentsOf(const Shape& shape, const EncodeOptions& options) {
    std::vector<SizComponent> components;
    for (int k = 0; k < shape.channels; ++k) {
        const bool sampled = k > 0 && (k < 3 || shape.colour == Colour::cmyk);
        components.push_back({int(std::bit_width(unsigned(shape.maxval))), options.asSigned,
                              sampled ? options.samplingX : 1, sampled ? options.samplingY : 1});
    }
    return components;
}

} // namespace codecs::jpeg2000
