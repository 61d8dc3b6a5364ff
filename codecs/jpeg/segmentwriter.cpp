// segmentwriter.cpp - the segments of a JPEG file (ITU-T T.81, B.2).
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/segmentwriter.h"

#include <numeric>
#include <string_view>

namespace codecs::jpeg {

namespace {

// The length of a segment counts itself (B.1.1.4).
void segment(Output& out, int marker, int payload) {
    out.marker(marker);
    out.word(2 + payload);
}

// Four bits each.
int nibbles(int high, int low) { return high << 4 | low; }

} // namespace

void writeJfif(Output& out, const Density& density) {
    segment(out, APP0, 14);
    for (char c : std::string_view("JFIF\0", 5)) out.byte(c);
    out.word(0x0101); // version 1.1
    out.byte(density.unit);
    out.word(density.x);
    out.word(density.y);
    out.word(0); // no thumbnail
}

// Adobe Technical Note 5116: version, two words of flags, and how the colours were transformed.
void writeAdobe(Output& out, int transform) {
    segment(out, APP14, 12);
    for (char c : std::string_view("Adobe")) out.byte(c);
    out.word(100); // version
    out.word(0);
    out.word(0);
    out.byte(transform);
}

// Tables of words only where an entry needs them: baseline files have none.
void writeQuantTable(Output& out, int number, const QuantTable& table) {
    const bool words = *std::max_element(table.begin(), table.end()) > 255;
    segment(out, DQT, words ? 129 : 65);
    out.byte(nibbles(words, number));
    for (std::uint16_t q : table) words ? out.word(q) : out.byte(q);
}

// B.2.4.2.
void writeHuffmanTable(Output& out, TableClass kind, int number, const HuffmanTable& table) {
    const int count = std::accumulate(table.bits.begin(), table.bits.end(), 0);
    segment(out, DHT, 17 + count);
    out.byte(nibbles(kind == TableClass::ac, number));
    for (std::uint8_t n : table.bits) out.byte(n);
    for (int i = 0; i < count; ++i) out.byte(table.vals[std::size_t(i)]);
}

void writeFrame(Output& out, const Frame& frame) {
    segment(out, frame.sof, 6 + 3 * int(frame.components.size()));
    out.byte(frame.precision);
    out.word(frame.height);
    out.word(frame.width);
    out.byte(int(frame.components.size()));
    for (const Component& c : frame.components) {
        out.byte(c.id);
        out.byte(nibbles(c.h, c.v));
        out.byte(c.quant);
    }
}

void writeRestartInterval(Output& out, int mcus) {
    segment(out, DRI, 2);
    out.word(mcus);
}

// B.2.3.
void writeScan(Output& out, const Frame& frame, const Scan& scan) {
    segment(out, SOS, 4 + 2 * int(scan.components.size()));
    out.byte(int(scan.components.size()));
    for (const ScanComponent& c : scan.components) {
        out.byte(frame.components[std::size_t(c.index)].id);
        out.byte(nibbles(c.dc, c.ac));
    }
    out.byte(scan.first);
    out.byte(scan.last);
    out.byte(nibbles(scan.high, scan.low));
}

} // namespace codecs::jpeg
