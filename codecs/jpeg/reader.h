// reader.h - walks the segments of a JPEG file and keeps what they say.
#pragma once

#include "codecs/jpeg/format.h"

#include <optional>

namespace jpeg {

// Throws an Error that names the place.
[[noreturn]] void fail(std::size_t offset, const std::string& what);

// Where the next marker stands, from `from` on: the offset of its last 0xFF; `size` when there is none.
std::size_t findMarker(const std::uint8_t* data, std::size_t size, std::size_t from);

// Everything that the segments up to a scan have defined.
struct Header {
    Frame frame;
    std::array<std::optional<QuantTable>, 4> quant;
    std::array<std::optional<HuffmanTable>, 4> dc, ac;
    int restart = 0; // MCUs in an interval; 0: no restart markers
    bool jfif = false;
    int adobe = -1; // the transform of the Adobe marker; -1: no such marker
    std::vector<std::pair<std::size_t, std::size_t>> application; // where the APPn and COM segments stand
    Scan scan;
    std::size_t scanOffset = 0; // of the SOS marker
    std::size_t dataOffset = 0; // of the entropy-coded data
};

class Reader {
public:
    // Each segment adds a line to `log`.
    Reader(const std::uint8_t* data, std::size_t size, std::string* log = nullptr);

    // Reads on to the data of the next scan; false: there is none up to the end of the image.
    bool nextScan();
    // Goes on from here: the offset of the marker behind the data of a scan.
    void seek(std::size_t offset) { pos = offset; }
    const Header& header() const { return head; }

private:
    int nextMarker();
    void segment(int marker);
    void frame(int marker);
    void quantTables();
    void huffmanTables();
    void scan();
    void application(int marker);

    bool more() const { return pos < end; }
    int byte();
    int word();
    void note(std::size_t offset, const std::string& what);

    const std::uint8_t* data;
    std::size_t size;
    std::size_t pos = 0;
    std::size_t at = 0;  // the marker of the present segment
    std::size_t end = 0; // of the present segment
    std::string* log;
    Header head;
};

} // namespace jpeg
