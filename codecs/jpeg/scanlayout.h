// scanlayout.h - which data units a scan codes, and in which order (ITU-T T.81, A.2).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/format.h"

namespace codecs::jpeg {

struct ScanLayout {
    // A unit of the MCUs of a scan.
    struct Part {
        int inScan, component; // which component, by its place in the scan and in the frame
        int x, y;              // where in the part of the MCU that is its component's
        int h, v;              // the size of that part, in units
        int columns, rows;     // units of the component that hold samples of the picture

        // Whether this unit of an MCU is one of those; if not it only fills the MCU up. Asked of every unit: the divisions
        // that the numbers take are done once.
        bool inPicture(int column, int row) const { return column * h + x < columns && row * v + y < rows; }
    };
    int columns, rows; // of MCUs
    int rowHeight;     // of an MCU in the picture
    std::vector<Part> mcu;

    ScanLayout(const Frame& frame, const Scan& scan) {
        // One component alone comes unit by unit, without those that only fill up MCUs (A.2.2).
        const bool alone = scan.components.size() == 1;
        const Component& first = frame.components[std::size_t(scan.components[0].index)];
        columns = alone ? frame.blockColumns(first) : frame.mcuColumns();
        rows = alone ? frame.blockRows(first) : frame.mcuRows();
        rowHeight = frame.unit() * frame.vMax / (alone ? first.v : 1);
        for (int i = 0; i < int(scan.components.size()); ++i) {
            const int index = scan.components[std::size_t(i)].index;
            const Component& c = frame.components[std::size_t(index)];
            const int h = alone ? 1 : c.h, v = alone ? 1 : c.v;
            for (int k = 0; k < h * v; ++k)
                mcu.push_back({i, index, k % h, k / h, h, v, frame.blockColumns(c), frame.blockRows(c)});
        }
    }
};

// Calls `mcu(column, row)` for each, and `restart()` between intervals of so many of them; 0: there are none.
template <class Mcu, class Restart> void eachMcu(int columns, int rows, int interval, Mcu mcu, Restart restart) {
    int left = interval;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x) {
            if (interval && left-- == 0) {
                restart();
                left = interval - 1;
            }
            mcu(x, y);
        }
}

} // namespace codecs::jpeg
