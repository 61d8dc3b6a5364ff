// decodescan.h - the walk over one scan that all readers of blocks share.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/jpeg.h"
#include "codecs/jpeg/scanlayout.h"

namespace codecs::jpeg {

// Decodes the scan of `source`. `place(part, column, row)` says where a unit of an MCU goes; `done(column,
// row)` hears of each MCU behind its last unit.
template <class Source, class Place, class Done>
void decodeScan(Source& source, const ScanLayout& layout, Place place, Done done, Warnings& warnings) {
    int firstLost = -1, previous = 0;
    eachMcu(
        layout.columns, layout.rows, source.restartInterval(),
        [&](int x, int y) {
            bool sound = true;
            for (const ScanLayout::Part& p : layout.mcu) sound &= source.block(p.inScan, place(p, x, y));
            done(x, y);
            // The MCU before may have ended with the data: only the next one tells.
            if (!sound && firstLost < 0) firstLost = previous;
            previous = y * layout.rowHeight;
        },
        [&] { source.restart(); });
    if (firstLost >= 0)
        warnings.push_back(source.trouble() + "; rows from " + std::to_string(firstLost) + " on are incomplete");
    else if (!source.trouble().empty())
        warnings.push_back(source.trouble());
}

} // namespace codecs::jpeg
