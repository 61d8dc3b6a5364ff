// coefficients.h - the quantised coefficients of a whole picture, for files whose components do not come
// block by block together, and for encoders that look at a picture twice.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/format.h"
#include "codecs/picture/bytes.h"

namespace codecs::jpeg {

class Coefficients {
public:
    explicit Coefficients(const Frame& f) : frame(f) {
        for (const Component& c : frame.components) {
            const std::size_t columns = std::size_t(frame.mcuColumns()) * std::size_t(c.h);
            planes.push_back(
                {columns, std::vector<Zmx16s>(columns * std::size_t(frame.mcuRows()) * std::size_t(c.v) * kBlock)});
        }
    }

    // A block of a component, by its place in the component; all that lie in whole MCUs are there.
    Zmx16s* block(int component, int column, int row) {
        Plane& p = planes[std::size_t(component)];
        return p.coefficients.data() + (std::size_t(row) * p.columns + std::size_t(column)) * kBlock;
    }
    const Zmx16s* block(int component, int column, int row) const {
        return const_cast<Coefficients*>(this)->block(component, column, row);
    }

    // The blocks of an MCU of the frame, component by component, each row by row.
    void mcu(int column, int row, Zmx16s** blocks) {
        for (int i = 0; i < int(frame.components.size()); ++i) {
            const Component& c = frame.components[std::size_t(i)];
            for (int y = 0; y < c.v; ++y)
                for (int x = 0; x < c.h; ++x) *blocks++ = block(i, column * c.h + x, row * c.v + y);
        }
    }

    // Calls `visit(component, block)` for the blocks that hold samples of the picture.
    template <class Visit> void eachVisible(Visit visit) const {
        for (int i = 0; i < int(frame.components.size()); ++i) {
            const Component& c = frame.components[std::size_t(i)];
            for (int y = 0; y < frame.blockRows(c); ++y)
                for (int x = 0; x < frame.blockColumns(c); ++x) visit(i, block(i, x, y));
        }
    }

    // Gives the blocks that only fill up MCUs the DC of the one that is coded before them and nothing else, which costs
    // the fewest bits. Scans of one component have never held them.
    void fillPadding();
    // A number that tells the visible coefficients of one picture from those of another (FNV-1a on four at a time).
    std::uint64_t digest() const;

private:
    struct Plane {
        std::size_t columns;
        std::vector<Zmx16s> coefficients;
    };
    Frame frame;
    std::vector<Plane> planes;
};

// What a file of the DCT modes holds, however it is coded.
struct CoefficientFile {
    Frame frame; // its Component::quant are not looked at
    Model model = Model::grey;
    std::vector<QuantTable> quant; // of each component
    int restart = 0;
    Bytes application; // the APPn and COM segments
    Coefficients blocks;

    explicit CoefficientFile(const Frame& f) : frame(f), quant(f.components.size()), blocks(f) {}
};

} // namespace codecs::jpeg
