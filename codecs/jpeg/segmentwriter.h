// segmentwriter.h - the segments of a JPEG file (ITU-T T.81, B.2).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/format.h"
#include "codecs/jpeg/output.h"

namespace codecs::jpeg {

// How many pixels a unit of length has: 0 none, so that the numbers give the shape of a pixel; 1 inch, 2 centimetre.
struct Density {
    int unit = 0, x = 1, y = 1;
};
void writeJfif(Output& out, const Density& density);
void writeAdobe(Output& out, int transform);
void writeQuantTable(Output& out, int number, const QuantTable& table);
enum class TableClass { dc, ac };
void writeHuffmanTable(Output& out, TableClass kind, int number, const HuffmanTable& table);
void writeFrame(Output& out, const Frame& frame);
void writeRestartInterval(Output& out, int mcus);
void writeScan(Output& out, const Frame& frame, const Scan& scan);

} // namespace codecs::jpeg
