// segmentreader.cpp - the segments of a JPEG file (ITU-T T.81, B.2). Every length and number in them is checked here,
// so that the modules behind it may rely on a Header.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/segmentreader.h"

#include <cstdio>
#include <cstring>

namespace codecs::jpeg {

bool toMarker(ByteSource& source) {
    constexpr std::size_t kWindow = 1 << 16;
    for (;;) {
        const ByteView all = source.view(kWindow);
        if (all.size() < 2) return source.skip(all.size()), false;
        // The last byte is only what the one ahead of it needs to be told.
        const void* p = std::memchr(all.data(), 0xFF, all.size() - 1);
        const std::size_t i = p ? std::size_t(static_cast<const std::uint8_t*>(p) - all.data()) : all.size() - 1;
        // Up to here all are data.
        source.skip(i);
        if (!p) continue;
        // 0xFF 0x00 is a data byte, a second 0xFF makes the first one a fill byte.
        if (all[i + 1] != 0x00 && all[i + 1] != 0xFF) return true;
        source.skip(all[i + 1] == 0x00 ? 2 : 1);
    }
}

// Fill bytes have been passed over: the second byte is the code.
int markerAt(ByteSource& source) {
    const ByteView marker = source.view(2);
    return marker.size() < 2 ? 0 : marker[1];
}

namespace {

// The names of Table B.1; those that it reserves by their code.
std::string nameOf(int marker) {
    char other[8];
    if (isFrame(marker)) return "SOF" + std::to_string(marker - SOF0);
    if (marker >= APP0 && marker <= APP15) return "APP" + std::to_string(marker - APP0);
    switch (marker) {
    case DHT:
        return "DHT";
    case DAC:
        return "DAC";
    case SOI:
        return "SOI";
    case EOI:
        return "EOI";
    case SOS:
        return "SOS";
    case DQT:
        return "DQT";
    case DNL:
        return "DNL";
    case DRI:
        return "DRI";
    case COM:
        return "COM";
    default:
        std::snprintf(other, sizeof other, "0xFF%02X", marker);
        return other;
    }
}

} // namespace

// A file begins with SOI, and nothing may stand ahead of it (B.2.1).
SegmentReader::SegmentReader(ByteSource& s, std::string* lines) : source(s), log(lines) {
    const ByteView start = source.view(2);
    if (start.size() < 2 || start[0] != 0xFF || start[1] != SOI) fail(0, "not a JPEG file: no SOI marker");
    source.skip(2);
}

bool SegmentReader::nextScan() {
    for (;;) {
        const int marker = nextMarker();
        if (marker == EOI) return note("EOI"), false;
        if (marker == SOI || marker == TEM || isRestart(marker)) continue; // no segment behind these
        segment(marker);
        source.skip(2 + body.size());
        if (marker != SOS) continue;
        // Of no height: it is told behind the data (B.2.5), which decoders ask for ahead of them.
        if (head.frame.height == 0) head.frame.height = heightBehind();
        return true;
    }
}

// The height that stands behind the data of the scan, in a DNL segment. The source stays where it is.
int SegmentReader::heightBehind() {
    for (std::size_t wanted = 1 << 16;; wanted *= 2) {
        const ByteView all = source.view(wanted);
        for (std::size_t i = 0; i + 1 < all.size(); ++i) {
            // Stuffed bytes, fill bytes and restarts belong to the data (B.1.1.2, B.1.1.5).
            if (all[i] != 0xFF || all[i + 1] == 0x00 || all[i + 1] == 0xFF || isRestart(all[i + 1])) continue;
            if (all[i + 1] == DNL && all.size() - i >= 6 && (all[i + 4] || all[i + 5]))
                return all[i + 4] << 8 | all[i + 5];
            // Another marker, or a DNL segment that says 0. One that is cut off by the window is looked at again.
            if (all[i + 1] != DNL || all.size() - i >= 6)
                fault("a picture of no height, nor is there one behind the scan");
        }
        if (all.size() < wanted) fault("a picture of no height, nor is there one behind the scan");
    }
}

// What lies ahead of a marker is passed over: fill bytes, data of a scan that nobody has read, and rubbish.
int SegmentReader::nextMarker() {
    if (!toMarker(source)) fail(source.position(), "the file ends without an EOI marker");
    at = source.position();
    const int marker = markerAt(source);
    source.skip(2);
    return marker;
}

// Any segment: its length, and what is in it by its marker. Those that mean nothing here are passed over.
void SegmentReader::segment(int marker) {
    name = nameOf(marker);
    ByteView all = source.view(2);
    if (all.size() < 2) fault(name + " segment: the file ends in it");
    const std::size_t length = std::size_t(all[0] << 8 | all[1]);
    if (length < 2) fault(name + " segment: length " + std::to_string(length));
    all = source.view(length);
    if (all.size() < length) fault(name + " segment: the file ends in it");
    body = all.subspan(2, length - 2);
    pos = 0;
    if (marker != SOS) note(name + ", " + std::to_string(length) + " bytes");
    if (isFrame(marker)) return frame(marker);
    if (marker == COM || (marker >= APP0 && marker <= APP15)) return application(marker);
    switch (marker) {
    case DQT:
        return quantTables();
    case DHT:
        return huffmanTables();
    case SOS:
        return scan();
    case DRI:
        head.restart = word();
        return;
    case DNL:
        // Behind the first scan (B.2.5). It was looked for when the frame had no height.
        if (word() != head.frame.height) fault("DNL segment: another height than the frame has");
        return;
    case DAC:
        fault("DAC segment: arithmetic coding is not supported");
    default:
        break;
    }
}

int SegmentReader::byte() {
    if (!more()) fault(name + " segment: too short");
    return body[pos++];
}
int SegmentReader::word() {
    const int high = byte();
    return high << 8 | byte();
}

void SegmentReader::note(const std::string& what) {
    if (log) *log += "  " + std::to_string(at) + ": " + what + "\n";
}

// SOFn (B.2.2). Modes that are not supported are refused by those who decode, so that they can be described.
void SegmentReader::frame(int marker) {
    if (!head.frame.components.empty()) fault("a second frame header");
    Frame f;
    f.sof = marker;
    f.precision = byte();
    f.height = word();
    f.width = word();
    if (f.width == 0) fault("a picture of no width");
    components(f);
    head.frame = f;
}

void SegmentReader::components(Frame& f) {
    // A frame could have 255; no colours are known of more than 4.
    const int count = byte();
    if (count < 1 || count > kMaxComponents) fault(std::to_string(count) + " components; supported are 1 to 4");
    for (int i = 0; i < count; ++i) {
        const std::string which = "component " + std::to_string(i) + ": ";
        Component c;
        c.id = byte();
        const int factors = byte();
        c.h = factors >> 4;
        c.v = factors & 15;
        c.quant = byte();
        if (c.h < 1 || c.h > kMaxFactor || c.v < 1 || c.v > kMaxFactor)
            fault(which + "sampling factors " + std::to_string(c.h) + "x" + std::to_string(c.v));
        // A table may be defined later: whether it is there shows in the first scan of the component.
        if (c.quant > 3) fault(which + "quantisation table " + std::to_string(c.quant));
        for (const Component& other : f.components)
            if (other.id == c.id) fault("two components with the number " + std::to_string(c.id));
        f.components.push_back(c);
    }
    if (count == 1) f.components[0].h = f.components[0].v = 1; // one component has no one to be sampled against (A.2.2)
    f.setMaxima();
}

// DQT (B.2.4.1): tables of bytes or of words. A table may be given anew between scans; components keep theirs.
void SegmentReader::quantTables() {
    while (more()) {
        // Four bits for the size of the divisors, four for the number of the table.
        const int which = byte(), wide = which >> 4;
        if (wide > 1 || (which & 15) > 3) fault("DQT segment: table " + std::to_string(which));
        QuantTable& table = head.quant[std::size_t(which & 15)].emplace();
        for (std::uint16_t& q : table) q = std::uint16_t(wide ? word() : byte());
    }
}

// DHT (B.2.4.2). Whether the counts make a prefix code shows when a scan asks for the table.
void SegmentReader::huffmanTables() {
    // A class, DC or AC, and a number; several tables may share a segment.
    while (more()) {
        const int which = byte();
        if ((which >> 4) > 1 || (which & 15) > 3) fault("DHT segment: table " + std::to_string(which));
        HuffmanTable table;
        // Sixteen counts of codes by their length, then the values in the order of the codes.
        int count = 0;
        for (std::uint8_t& n : table.bits) count += n = std::uint8_t(byte());
        if (count > 256) fault("DHT segment: " + std::to_string(count) + " codes in a table");
        for (int i = 0; i < count; ++i) table.vals[std::size_t(i)] = std::uint8_t(byte());
        (which >> 4 ? head.ac : head.dc)[std::size_t(which & 15)] = table;
    }
}

// SOS (B.2.3). The numbers are kept as they stand: what they may be differs from mode to mode.
void SegmentReader::scan() {
    if (head.frame.components.empty()) fault("a scan ahead of the frame header");
    Scan s;
    const int count = byte();
    if (count < 1 || count > int(head.frame.components.size()))
        fault("a scan of " + std::to_string(count) + " components");
    // Numbers of the frame in their order, with the tables for DC and AC.
    int blocks = 0;
    for (int i = 0; i < count; ++i) {
        s.components.push_back(scanComponent(s));
        const Component& component = head.frame.components[std::size_t(s.components.back().index)];
        blocks += component.h * component.v;
    }
    if (count > 1 && blocks > kMaxScanUnits) fault("a scan with more than 10 blocks in an MCU");
    s.first = byte();
    s.last = byte();
    const int approximation = byte();
    // Where DCT modes have the bits of a refinement, lossless ones have the point transform in the low half.
    s.high = approximation >> 4;
    s.low = approximation & 15;
    head.scan = s;
    head.scanOffset = at;
    note("SOS, " + std::to_string(count) + " of " + std::to_string(head.frame.components.size()) +
         " components, coefficients " + std::to_string(s.first) + " to " + std::to_string(s.last));
}

ScanComponent SegmentReader::scanComponent(const Scan& s) {
    const int id = byte(), tables = byte();
    ScanComponent c{-1, tables >> 4, tables & 15};
    for (std::size_t k = 0; k < head.frame.components.size(); ++k)
        if (head.frame.components[k].id == id) c.index = int(k);
    if (c.index < 0) fault("a scan of component " + std::to_string(id) + ", which the frame has not");
    for (const ScanComponent& other : s.components)
        if (other.index == c.index) fault("a scan with component " + std::to_string(id) + " twice");
    if (c.dc > 3 || c.ac > 3)
        fault("a scan with Huffman tables " + std::to_string(c.dc) + " and " + std::to_string(c.ac));
    return c;
}

// APPn and COM, kept whole for files that are made of this one; two of them tell of the colours.
void SegmentReader::application(int marker) {
    head.application.insert(head.application.end(), {0xFF, std::uint8_t(marker), std::uint8_t((body.size() + 2) >> 8),
                                                     std::uint8_t(body.size() + 2)});
    head.application.insert(head.application.end(), body.begin(), body.end());
    const auto starts = [&](const char* text, std::size_t n) {
        return body.size() >= n && std::memcmp(body.data(), text, n) == 0;
    };
    if (marker == APP0 && starts("JFIF", 5)) head.jfif = true;
    if (marker == APP14 && starts("Adobe", 5) && body.size() >= 12) head.adobe = body[11];
}

} // namespace codecs::jpeg
