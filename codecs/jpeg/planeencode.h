// planeencode.h - pixels to coefficients by planes of the components of a row of MCUs, whatever the depth of a sample.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/roads.h"

#include <numeric>

namespace codecs::jpeg {

// `Depth` knows the samples:
//   Sample                                  what holds one
//   split(pixels, rows, width)              a row of pixels to rows of the components, colours converted
//   halve(near, far, width, to)             a row of half the width from two rows; false: it has no such function
//   halve(row, width, to)                   the same from one row
//   forward(samples, step, block, q)        8x8 samples, rows `step` bytes apart, to quantised coefficients
template <class Depth> class PlaneEncoder final : public EncodeRoad {
    using Sample = typename Depth::Sample;

public:
    PlaneEncoder(const Frame& f, const Quantisers& q, const Depth& d)
        : frame(f), quantisers(q), depth(d), step(8 * f.hMax * f.mcuColumns()), rows(8 * f.vMax) {
        for (const Component& c : frame.components) {
            Part& p = parts.emplace_back(Part{c, {}, {}});
            p.full.resize(std::size_t(step) * std::size_t(rows));
            if (!isFull(c)) p.reduced.resize(std::size_t(smallStep(c)) * std::size_t(8 * c.v));
        }
    }

    // Planes are made of all rows at once, so that their ends are met once a row and not once a block.
    void load(const Band& pixels) override {
        for (int y = 0; y < pixels.rows; ++y) {
            Sample* to[kMaxComponents] = {};
            for (std::size_t i = 0; i < parts.size(); ++i) to[i] = parts[i].full.data() + std::ptrdiff_t(y) * step;
            depth.split(reinterpret_cast<const Sample*>(pixels.row(y)), to, frame.width);
        }
        for (Part& p : parts) {
            extend(p.full.data(), pixels.rows);
            if (!isFull(p.component)) reduce(p, divUp(pixels.rows * p.component.v, frame.vMax));
        }
    }

    // The level shift is part of the transform.
    void mcu(int column, Zmx16s* const* blocks) override {
        for (const Part& p : parts) {
            const Component& c = p.component;
            const bool full = isFull(c);
            const int width = full ? step : smallStep(c);
            const Sample* const from = (full ? p.full : p.reduced).data() + std::ptrdiff_t(8) * c.h * column;
            for (int y = 0; y < c.v; ++y)
                for (int x = 0; x < c.h; ++x)
                    depth.forward(from + std::ptrdiff_t(8) * y * width + 8 * x, width * int(sizeof(Sample)), *blocks++,
                                  quantisers[std::size_t(c.quant)]);
        }
    }

private:
    struct Part {
        Component component;
        std::vector<Sample> full, reduced; // at the rate of the picture, and at its own
    };

    bool isFull(const Component& c) const { return c.h == frame.hMax && c.v == frame.vMax; }
    int smallStep(const Component& c) const { return 8 * c.h * frame.mcuColumns(); }

    // Where the picture ends it goes on with its last column and its last row, which costs the fewest bits.
    void extend(Sample* plane, int inside) const {
        for (int y = 0; y < inside; ++y) {
            Sample* const line = plane + std::ptrdiff_t(y) * step;
            std::fill(line + frame.width, line + step, line[frame.width - 1]);
        }
        const Sample* const last = plane + std::ptrdiff_t(inside - 1) * step;
        for (int y = inside; y < rows; ++y) std::copy_n(last, step, plane + std::ptrdiff_t(y) * step);
    }

    // `inside` rows are of the picture; the last of them goes on below it here too.
    void reduce(Part& p, int inside) const {
        const Component& c = p.component;
        const bool half = 2 * c.h == frame.hMax, fullRows = c.v == frame.vMax, halfRows = 2 * c.v == frame.vMax;
        for (int y = 0; y < 8 * c.v; ++y) {
            Sample* const to = p.reduced.data() + std::ptrdiff_t(y) * smallStep(c);
            if (y >= inside) {
                std::copy_n(to - smallStep(c), smallStep(c), to);
                continue;
            }
            const Sample* const from = p.full.data() + std::ptrdiff_t(y) * (fullRows ? 1 : 2) * step;
            if (half && fullRows && depth.halve(from, step, to)) continue;
            if (half && halfRows && depth.halve(from, from + step, step, to)) continue;
            mean(p, y, to);
        }
    }

    // The means of the samples that each sample of a smaller component touches.
    void mean(const Part& p, int y, Sample* to) const {
        const Component& c = p.component;
        const int top = y * frame.vMax / c.v, bottom = divUp((y + 1) * frame.vMax, c.v);
        for (int x = 0; x < smallStep(c); ++x) {
            const int left = x * frame.hMax / c.h, right = divUp((x + 1) * frame.hMax, c.h);
            int sum = 0;
            for (int v = top; v < bottom; ++v) {
                const Sample* const line = p.full.data() + std::ptrdiff_t(v) * step;
                sum = std::accumulate(line + left, line + right, sum);
            }
            const int n = (bottom - top) * (right - left);
            to[x] = Sample((sum + n / 2) / n);
        }
    }

    const Frame frame;
    const Quantisers quantisers;
    const Depth depth;
    const int step, rows; // of a plane at the rate of the picture
    std::vector<Part> parts;
};

} // namespace codecs::jpeg
