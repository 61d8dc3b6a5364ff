// segmentwriter.h - the segments of a JPEG file (ITU-T T.81, B.2).
#pragma once

#include "codecs/jpeg/format.h"
#include "codecs/jpeg/output.h"

namespace codecs::jpeg {

void writeJfif(Output& out);
void writeAdobe(Output& out, int transform);
void writeQuantTable(Output& out, int number, const QuantTable& table);
enum class TableClass { dc, ac };
void writeHuffmanTable(Output& out, TableClass kind, int number, const HuffmanTable& table);
void writeFrame(Output& out, const Frame& frame);
void writeRestartInterval(Output& out, int mcus);
void writeScan(Output& out, const Frame& frame, const Scan& scan);

} // namespace codecs::jpeg
