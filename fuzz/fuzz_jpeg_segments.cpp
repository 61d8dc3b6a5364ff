// The walk over the segments of a JPEG file, without decoding a scan: whatever it accepts stands within the limits that
// the codec relies on, and a reader that sees few bytes at a time finds the same.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/metadata.h"
#include "codecs/jpeg/segmentreader.h"
#include "fuzz/support/input.h"
#include "fuzz/support/mutator.h"
#include "fuzz/support/trickle.h"

#include <cstring>

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    return fuzz::mutateJpeg(data, size, most, seed);
}

namespace {

namespace jpeg = codecs::jpeg;
using fuzz::require;

void checkFrame(const jpeg::Frame& f) {
    require(f.width > 0 && f.width < 65536 && f.height > 0 && f.height < 65536);
    require(!f.components.empty() && f.components.size() <= std::size_t(jpeg::kMaxComponents));
    require(f.precision >= 0 && f.precision < 256); // what a mode can do its decoder says
    for (const jpeg::Component& c : f.components) {
        require(c.h >= 1 && c.h <= jpeg::kMaxFactor && c.v >= 1 && c.v <= jpeg::kMaxFactor);
        require(c.quant >= 0 && c.quant < 4);
        require(f.blockColumns(c) <= f.mcuColumns() * c.h && f.blockRows(c) <= f.mcuRows() * c.v);
    }
}

void checkScan(const jpeg::Header& h) {
    require(!h.scan.components.empty() && h.scan.components.size() <= h.frame.components.size());
    for (const jpeg::ScanComponent& c : h.scan.components) {
        require(c.index >= 0 && std::size_t(c.index) < h.frame.components.size());
        require(c.dc >= 0 && c.dc < 4 && c.ac >= 0 && c.ac < 4);
    }
    // What they mean in its mode only the decoder of a scan tells.
    require(h.scan.first >= 0 && h.scan.first < 256 && h.scan.last >= 0 && h.scan.last < 256);
    require(h.scan.low >= 0 && h.scan.low < 16 && h.scan.high >= 0 && h.scan.high < 16);
}

// How many scans there are, and where each begins; what ends the walk is the last word.
std::string walk(codecs::ByteSource& source, std::string* log) {
    std::string found;
    try {
        jpeg::SegmentReader reader(source, log);
        while (found.size() < 4096 && reader.nextScan()) {
            checkFrame(reader.header().frame);
            checkScan(reader.header());
            found += std::to_string(reader.header().scanOffset) + " ";
        }
        for (const jpeg::ApplicationSegment& s : jpeg::segmentsOf(reader.header().application))
            require(s.all.size() == s.body.size() + 4);
    } catch (const codecs::Error& e) {
        require(std::strchr(e.what(), '\n') == nullptr);
        found += e.what();
    }
    return found;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    codecs::MemorySource whole({data, size});
    fuzz::Trickle few({data, size});
    std::string log;
    require(walk(whole, &log) == walk(few, nullptr));
    return 0;
}
