// segmentreader.h - walks the segments of a JPEG file (ITU-T T.81, B.2) and keeps what they say.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg/format.h"
#include "codecs/picture/bytes.h"

#include <optional>

namespace codecs::jpeg {

// Moves on to the next marker, so that the source stands on its last 0xFF; false: there is none up to the end.
bool toMarker(ByteSource& source);
// The code of the marker on which the source stands; 0 at the end of the file.
int markerAt(ByteSource& source);

// Everything that the segments up to a scan have defined.
struct Header {
    Frame frame;
    std::array<std::optional<QuantTable>, 4> quant;
    std::array<std::optional<HuffmanTable>, 4> dc, ac;
    int restart = 0; // MCUs in an interval; 0: no restart markers
    bool jfif = false;
    int adobe = -1;    // the transform of the Adobe marker; -1: no such marker
    Bytes application; // the APPn and COM segments, one behind the other
    Scan scan;
    std::uint64_t scanOffset = 0; // of the SOS marker
};

class SegmentReader {
public:
    // Each segment adds a line to `log`.
    explicit SegmentReader(ByteSource& source, std::string* log = nullptr);

    // Reads on until the source stands on the data of the next scan; false: there is none up to the end of the image.
    // Data of a scan that nobody has read are passed over.
    bool nextScan();
    const Header& header() const { return head; }
    ByteSource& data() { return source; }

private:
    int nextMarker();
    int heightBehind();
    void segment(int marker);
    void frame(int marker);
    void components(Frame& f);
    void quantTables();
    void huffmanTables();
    void scan();
    ScanComponent scanComponent(const Scan& s);
    void application(int marker);

    bool more() const { return pos < body.size(); }
    int byte();
    int word();
    void note(const std::string& what);
    [[noreturn]] void fault(const std::string& what) const { fail(at, what); }

    ByteSource& source;
    std::uint64_t at = 0; // the marker of the present segment
    std::string name;     // of it
    ByteView body;        // of it, behind the length
    std::size_t pos = 0;  // in the body
    std::string* log;
    Header head;
};

} // namespace codecs::jpeg
