// coefficients.h - the quantised coefficients of a whole picture, for files whose components do not come block by
// block together, and for encoders that look at a picture twice.
#pragma once

#include "jpeg/format.h"

namespace jpeg {

class Coefficients {
public:
    explicit Coefficients(const Frame& f) : frame(f) {
        for (const Component& c : frame.components) {
            const std::size_t columns = std::size_t(frame.mcuColumns()) * std::size_t(c.h);
            planes.push_back({columns, std::vector<Zmx16s>(columns * std::size_t(frame.mcuRows()) * std::size_t(c.v) * kBlock)});
        }
    }

    // A block of a component, by its place in the component; all that lie in whole MCUs are there.
    Zmx16s* block(int component, int column, int row) {
        Plane& p = planes[std::size_t(component)];
        return p.coefficients.data() + (std::size_t(row) * p.columns + std::size_t(column)) * kBlock;
    }

    // The blocks of an MCU of the frame, component by component, each row by row.
    void mcu(int column, int row, Zmx16s** blocks) {
        for (int i = 0; i < int(frame.components.size()); ++i) {
            const Component& c = frame.components[std::size_t(i)];
            for (int y = 0; y < c.v; ++y)
                for (int x = 0; x < c.h; ++x) *blocks++ = block(i, column * c.h + x, row * c.v + y);
        }
    }

private:
    struct Plane {
        std::size_t columns;
        std::vector<Zmx16s> coefficients;
    };
    const Frame& frame;
    std::vector<Plane> planes;
};

} // namespace jpeg
