// reader.cpp - the segments of a JPEG file (ITU-T T.81, B.2). Every length and number in them is checked
// here, so that the modules behind it may rely on a Header.
#include "codecs/jpeg/reader.h"

#include <cstdio>
#include <cstring>

namespace jpeg {

void fail(std::size_t offset, const std::string& what) { throw Error("byte " + std::to_string(offset) + ": " + what); }

std::size_t findMarker(const std::uint8_t* data, std::size_t size, std::size_t from) {
    while (from + 1 < size) {
        const auto* p = static_cast<const std::uint8_t*>(std::memchr(data + from, 0xFF, size - 1 - from));
        if (!p) break;
        from = std::size_t(p - data);
        // 0xFF 0x00 is a data byte, a second 0xFF makes the first one a fill byte.
        if (data[from + 1] != 0x00 && data[from + 1] != 0xFF) return from;
        from += data[from + 1] == 0x00 ? 2 : 1;
    }
    return size;
}

namespace {

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

Reader::Reader(const std::uint8_t* bytes, std::size_t n, std::string* lines) : data(bytes), size(n), log(lines) {
    if (n < 2 || bytes[0] != 0xFF || bytes[1] != SOI) fail(0, "not a JPEG file: no SOI marker");
    pos = 2;
}

bool Reader::nextScan() {
    for (;;) {
        const int marker = nextMarker();
        if (marker == EOI) return note(at, "EOI"), false;
        if (marker == SOI || marker == TEM || isRestart(marker)) continue; // no segment behind these
        segment(marker);
        pos = end;
        if (marker == SOS) return true;
    }
}

int Reader::nextMarker() {
    at = findMarker(data, size, pos);
    if (at == size) fail(size, "the file ends without an EOI marker");
    pos = at + 2;
    return data[at + 1];
}

void Reader::segment(int marker) {
    end = size;
    if (size - pos < 2) fail(at, nameOf(marker) + " segment: the file ends in it");
    const int length = word();
    if (length < 2) fail(at, nameOf(marker) + " segment: length " + std::to_string(length));
    if (std::size_t(length - 2) > size - pos) fail(at, nameOf(marker) + " segment: the file ends in it");
    end = pos + std::size_t(length - 2);
    if (marker != SOS) note(at, nameOf(marker) + ", " + std::to_string(length) + " bytes");
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
        fail(at, "DNL segment: a height behind the scan is not supported");
    case DAC:
        fail(at, "DAC segment: arithmetic coding is not supported");
    default:
        break;
    }
    if (isFrame(marker)) return frame(marker);
    if (marker == COM || (marker >= APP0 && marker <= APP15)) head.application.push_back({at, end});
    if (marker >= APP0 && marker <= APP15) return application(marker);
}

int Reader::byte() {
    if (pos >= end) fail(at, nameOf(data[at + 1]) + " segment: too short");
    return data[pos++];
}
int Reader::word() {
    const int high = byte();
    return high << 8 | byte();
}

void Reader::note(std::size_t offset, const std::string& what) {
    if (log) *log += "  " + std::to_string(offset) + ": " + what + "\n";
}

void Reader::frame(int marker) {
    if (!head.frame.components.empty()) fail(at, "a second frame header");
    Frame f;
    f.sof = marker;
    f.precision = byte();
    f.height = word();
    f.width = word();
    if (f.width == 0) fail(at, "a picture of no width");
    if (f.height == 0) fail(at, "a picture of no height (a height behind the scan is not supported)");
    const int count = byte();
    if (count < 1 || count > kMaxComponents) fail(at, std::to_string(count) + " components; supported are 1 to 4");
    for (int i = 0; i < count; ++i) {
        Component c;
        c.id = byte();
        const int factors = byte();
        c.h = factors >> 4;
        c.v = factors & 15;
        c.quant = byte();
        if (c.h < 1 || c.h > kMaxFactor || c.v < 1 || c.v > kMaxFactor)
            fail(at, "component " + std::to_string(i) + ": sampling factors " + std::to_string(c.h) + "x" +
                         std::to_string(c.v));
        if (c.quant > 3) fail(at, "component " + std::to_string(i) + ": quantisation table " + std::to_string(c.quant));
        for (const Component& other : f.components)
            if (other.id == c.id) fail(at, "two components with the number " + std::to_string(c.id));
        f.components.push_back(c);
    }
    if (count == 1) f.components[0].h = f.components[0].v = 1; // one component has no one to be sampled against (A.2.2)
    f.setMaxima();
    head.frame = f;
}

void Reader::quantTables() {
    while (more()) {
        const int which = byte(), wide = which >> 4;
        if (wide > 1 || (which & 15) > 3) fail(at, "DQT segment: table " + std::to_string(which));
        QuantTable& table = head.quant[std::size_t(which & 15)].emplace();
        for (std::uint16_t& q : table) q = std::uint16_t(wide ? word() : byte());
    }
}

void Reader::huffmanTables() {
    while (more()) {
        const int which = byte();
        if ((which >> 4) > 1 || (which & 15) > 3) fail(at, "DHT segment: table " + std::to_string(which));
        HuffmanTable table;
        int count = 0;
        for (std::uint8_t& n : table.bits) count += n = std::uint8_t(byte());
        if (count > 256) fail(at, "DHT segment: " + std::to_string(count) + " codes in a table");
        for (int i = 0; i < count; ++i) table.vals[std::size_t(i)] = std::uint8_t(byte());
        (which >> 4 ? head.ac : head.dc)[std::size_t(which & 15)] = table;
    }
}

void Reader::scan() {
    if (head.frame.components.empty()) fail(at, "a scan ahead of the frame header");
    Scan s;
    const int count = byte();
    if (count < 1 || count > int(head.frame.components.size()))
        fail(at, "a scan of " + std::to_string(count) + " components");
    int blocks = 0;
    for (int i = 0; i < count; ++i) {
        const int id = byte(), tables = byte();
        ScanComponent c{-1, tables >> 4, tables & 15};
        for (std::size_t k = 0; k < head.frame.components.size(); ++k)
            if (head.frame.components[k].id == id) c.index = int(k);
        if (c.index < 0) fail(at, "a scan of component " + std::to_string(id) + ", which the frame has not");
        for (const ScanComponent& other : s.components)
            if (other.index == c.index) fail(at, "a scan with component " + std::to_string(id) + " twice");
        if (c.dc > 3 || c.ac > 3)
            fail(at, "a scan with Huffman tables " + std::to_string(c.dc) + " and " + std::to_string(c.ac));
        const Component& component = head.frame.components[std::size_t(c.index)];
        blocks += component.h * component.v;
        s.components.push_back(c);
    }
    if (count > 1 && blocks > 10) fail(at, "a scan with more than 10 blocks in an MCU");
    s.first = byte();
    s.last = byte();
    const int approximation = byte();
    s.high = approximation >> 4;
    s.low = approximation & 15;
    head.scan = s;
    head.scanOffset = at;
    head.dataOffset = end;
    note(at, "SOS, " + std::to_string(count) + " of " + std::to_string(head.frame.components.size()) +
                 " components, coefficients " + std::to_string(s.first) + " to " + std::to_string(s.last));
}

void Reader::application(int marker) {
    const auto starts = [&](const char* text, std::size_t n) {
        return end - pos >= n && std::memcmp(data + pos, text, n) == 0;
    };
    if (marker == APP0 && starts("JFIF", 5)) head.jfif = true;
    if (marker == APP14 && starts("Adobe", 5) && end - pos >= 12) head.adobe = data[pos + 11];
}

} // namespace jpeg
