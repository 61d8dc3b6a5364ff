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
}

void RowInput::get(std::size_t component, std::int64_t x, std::int64_t y, std::span<Sample> to) const {
    const SizComponent& c = size.components[component];
    const Shape& shape = source.shape();
    // Every dx-th pixel of the row, counted on the reference grid.
    const std::ptrdiff_t at = std::ptrdiff_t(x * c.dx - size.x0) * shape.channels + std::ptrdiff_t(component);
    const std::ptrdiff_t step = std::ptrdiff_t(c.dx) * shape.channels;
    const int row = int(y * c.dy - top);
    const auto take = [&](const auto* from) {
        for (Sample& s : to) {
            s = *from;
            from += step;
        }
    };
    if (shape.wide())
        take(band.words(row) + at);
    else
        take(band.row(row) + at);
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
