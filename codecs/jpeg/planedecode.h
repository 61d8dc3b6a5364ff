// planedecode.h - coefficients to pixels by planes of the components of a row of MCUs, whatever the depth of a sample.
//
// Chroma of a lower rate is enlarged a row at a time, each from one row of its plane or two. A row that lies between two
// rows of MCUs waits for the second of them: bands then end a row above the MCUs.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/roads.h"

#include <cstring>

namespace codecs::jpeg {

// `Depth` knows the samples:
//   Sample, Table                           what holds one; the divisors of a component
//   table(t)                                the latter of what the file says
//   inverse(block, samples, step, t, side)  coefficients to `side` x `side` samples, rows `step` bytes apart
//   smooth(row, width, to)                  twice as many samples by the triangle filter
//   smooth(near, far, width, to)            the same between two rows
//   join(rows, pixels, width)               rows of the components to a row of pixels, colours converted
//   pixelBytes
template <class Depth> class PlaneDecoder final : public DecodeRoad {
    using Sample = typename Depth::Sample;

public:
    PlaneDecoder(const Frame& frame, const DequantTables& tables, const DecodeOptions& options, const Depth& d)
        : depth(d), width(divUp(frame.width, options.scale)), height(divUp(frame.height, options.scale)),
          mcuHeight(8 / options.scale * frame.vMax), mcuRows(frame.mcuRows()) {
        for (std::size_t i = 0; i < frame.components.size(); ++i) {
            parts.emplace_back(frame, frame.components[i], Depth::table(tables[i]), options);
            if (parts.back().rowsMix()) delay = 1;
        }
        pixels.resize(std::size_t(width) * std::size_t(depth.pixelBytes) * std::size_t(mcuHeight + delay));
    }

    // Samples go where they lie in their plane.
    void mcu(int column, const Zmx16s* const* blocks) override {
        for (Part& p : parts)
            for (int y = 0; y < p.v; ++y)
                for (int x = 0; x < p.h; ++x)
                    Depth::inverse(*blocks++, p.row(y * p.side) + (std::ptrdiff_t(column) * p.h + x) * p.side,
                                   p.step * int(sizeof(Sample)), p.table, p.side);
    }

    // Rows are enlarged and converted while their samples are in the cache.
    Band unload() override {
        const bool last = ++mcuRow == mcuRows;
        const int end = last ? height : std::min(height, mcuRow * mcuHeight - delay), rows = std::max(end - top, 0);
        const std::ptrdiff_t rowBytes = std::ptrdiff_t(width) * depth.pixelBytes;
        for (int y = 0; y < rows; ++y, ++top) {
            const Sample* from[kMaxComponents];
            for (std::size_t i = 0; i < parts.size(); ++i) from[i] = parts[i].enlarged(top);
            depth.join(from, pixels.data() + y * rowBytes, width);
        }
        for (Part& p : parts) p.advance();
        return {pixels.data(), rowBytes, rows};
    }

private:
    enum class Ratio { one, two, other };

    // The plane of a component: the rows of a row of MCUs, and the last one ahead of them.
    struct Part {
        int h, v, side; // blocks of an MCU, and samples of a block
        typename Depth::Table table;
        int step, width, height; // of a row; samples that belong to the picture
        int hMax, vMax;          // of an MCU in its samples times h, v
        bool smooth;
        Ratio across, down;
        int first = 0; // the row of the component that the present row of MCUs begins with
        std::vector<Sample> samples;
        int wide; // samples of a whole row of MCUs
        std::vector<Sample> line;
        int lineOf = -1; // the row that was enlarged, when it was one alone

        Part(const Frame& frame, const Component& c, const typename Depth::Table& t, const DecodeOptions& options)
            : h(c.h), v(c.v), side(sideOf(frame, c, options.scale)), table(t), step(frame.mcuColumns() * h * side),
              width(divUp(frame.width * h * side, frame.hMax * 8)),
              height(divUp(frame.height * v * side, frame.vMax * 8)), hMax(frame.hMax * 8 / options.scale),
              vMax(frame.vMax * 8 / options.scale), smooth(options.upsampling == Upsampling::smooth && !options.fast),
              across(ratio(h * side, hMax)), down(ratio(v * side, vMax)),
              samples(std::size_t(step) * std::size_t(1 + v * side)), wide(frame.mcuColumns() * hMax),
              line(std::size_t(std::max(wide, 4))) {
            // Rows of one or two samples have no inner ones; and only what is two to one both ways, or one, is smooth.
            smooth = smooth && across != Ratio::other && down != Ratio::other && (across == Ratio::one || width > 2);
        }

        // A reduced picture can have the chroma in full: from a larger transform of the smaller component.
        static int sideOf(const Frame& frame, const Component& c, int scale) {
            int side = 8 / scale;
            while (side < 8 && frame.hMax * 8 / scale % (2 * side * c.h) == 0 &&
                   frame.vMax * 8 / scale % (2 * side * c.v) == 0)
                side *= 2;
            return side;
        }
        static Ratio ratio(int own, int full) {
            return own == full ? Ratio::one : 2 * own == full ? Ratio::two : Ratio::other;
        }
        bool rowsMix() const { return smooth && down == Ratio::two; }

        Sample* row(int y) { return samples.data() + std::ptrdiff_t(1 + y) * step; } // of the present row of MCUs

        // What stands for row `y` of the picture.
        const Sample* enlarged(int y) {
            const int near = std::min(y * v * side / vMax, height - 1);
            const Sample* const from = row(near - first);
            if (across == Ratio::one && !rowsMix()) return from;
            if (rowsMix()) {
                const int far = std::clamp(y % 2 != 0 ? near + 1 : near - 1, 0, height - 1);
                between(from, row(far - first), y % 2);
            } else if (near != lineOf) {
                lineOf = near;
                alone(from);
            }
            return line.data();
        }
        void between(const Sample* near, const Sample* far, int odd) {
            if (across == Ratio::two) return Depth::smooth(near, far, width, line.data());
            for (int x = 0; x < width; ++x) line[std::size_t(x)] = Sample((3 * near[x] + far[x] + 1 + odd) >> 2);
        }
        void alone(const Sample* from) {
            if (smooth) return Depth::smooth(from, width, line.data());
            Sample* const to = line.data();
            if (across == Ratio::two)
                for (int x = 0; x < width; ++x) to[2 * x] = to[2 * x + 1] = from[x];
            else
                for (int x = 0; x < wide; ++x) to[x] = from[x * h * side / hMax];
        }

        // The last row becomes the one ahead.
        void advance() {
            std::memcpy(samples.data(), row(v * side - 1), std::size_t(step) * sizeof(Sample));
            first += v * side;
        }
    };

    const Depth depth;
    const int width, height, mcuHeight, mcuRows;
    int delay = 0;           // rows that wait for the next row of MCUs
    int mcuRow = 0, top = 0; // rows of MCUs and of pixels that are done
    std::vector<Part> parts;
    Samples pixels;
};

} // namespace codecs::jpeg
