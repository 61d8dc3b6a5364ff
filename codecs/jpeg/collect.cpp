// collect.cpp - scan after scan into one store of coefficients. Damage costs what it hits: a scan that is
// missing or broken leaves the coefficients as the scans before it have made them.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/collect.h"

#include "codecs/jpeg/blockreader.h"
#include "codecs/jpeg/decodescan.h"
#include "codecs/jpeg/interpret.h"
#include "codecs/jpeg/progressivereader.h"

namespace codecs::jpeg {

std::size_t scanBudget(const Frame& frame) {
    // Usual scripts visit a block ten times; a hundred are more than anyone has a use for. A small picture may have more,
    // as its blocks are soon gone through.
    const std::size_t blocks =
        std::size_t(frame.mcuColumns()) * std::size_t(frame.mcuRows()) * std::size_t(frame.blocksInMcu());
    return std::max(100 * blocks, std::size_t(1) << 24);
}

namespace {

class Collecting {
public:
    Collecting(SegmentReader& r, Warnings& w)
        : reader(r), warnings(w), file(r.header().frame), budget(scanBudget(file.frame)),
          low(file.frame.components.size()) {
        for (auto& component : low) component.fill(kUnseen);
        file.model = modelOf(reader.header());
    }

    // Trouble in the first scan is an Error, as nothing is there to be shown; later it is a warning.
    CoefficientFile run(const std::function<void(CoefficientFile&)>& afterScan) {
        int scans = 0;
        try {
            do {
                start();
                if (!affordable()) break;
                // A transcoder keeps the interval that counted last.
                file.restart = reader.header().restart;
                if (file.frame.progressive())
                    decode<ProgressiveReader>();
                else
                    decode<BlockReader>();
                ++scans;
                if (afterScan) afterScan(file);
            } while (reader.nextScan());
        } catch (const Error& e) {
            if (scans == 0) throw;
            warnings.push_back(e.what());
        }
        finish();
        return std::move(file);
    }

private:
    static constexpr int kUnseen = -1;

    // What a scan of this mode may be. The first one of a component fixes its quantisation table.
    void start() {
        const Header& h = reader.header();
        const Scan& s = h.scan;
        if (file.frame.progressive())
            checkProgressive(h);
        else if (s.first != 0 || s.last != 63 || s.high != 0 || s.low != 0)
            fail(h.scanOffset, "a progressive scan in a sequential file");
        for (const ScanComponent& c : s.components) {
            const auto i = std::size_t(c.index);
            const Component& component = file.frame.components[i];
            const bool fresh = std::count(low[i].begin(), low[i].end(), kUnseen) == kBlock;
            if (!fresh && !file.frame.progressive())
                fail(h.scanOffset, "component " + std::to_string(component.id) + " is coded twice");
            if (fresh) file.quant[i] = quantTableOf(h, component);
            follow(h, i);
        }
    }

    // The bands and bits that a progressive scan may code (G.1.1.1).
    static void checkProgressive(const Header& h) {
        const Scan& s = h.scan;
        // DC alone, of any components; or AC of one. The lower bit is 0 to 13 (Table B.3).
        const bool band = s.first == 0 ? s.last == 0 : s.first <= s.last && s.last <= 63 && s.components.size() == 1;
        const bool bits = s.low <= 13 && (s.high == 0 || s.high == s.low + 1);
        if (!band || !bits)
            fail(h.scanOffset, "no progressive scan: coefficients " + std::to_string(s.first) + " to " +
                                   std::to_string(s.last) + " of " + std::to_string(s.components.size()) +
                                   " components, bits " + std::to_string(s.high) + " to " + std::to_string(s.low));
    }

    // Keeps the lowest bit that the scans have come to, and tells of scans that do not follow one another.
    void follow(const Header& h, std::size_t component) {
        const Scan& s = h.scan;
        bool astray = s.first > 0 && low[component][0] == kUnseen;
        // A first scan has the upper bit 0, and nothing may be known yet; a refinement goes on where the last one ended.
        for (int k = s.first; k <= s.last; ++k) {
            int& l = low[component][std::size_t(k)];
            astray |= (l == kUnseen ? 0 : l) != s.high || (l == 0 && s.high == 0);
            l = s.low;
        }
        if (astray && file.frame.progressive())
            warnings.push_back("byte " + std::to_string(h.scanOffset) + ": a scan out of turn");
    }

    // Each visit of a block is paid for: a few bytes can ask for a scan of the whole picture.
    bool affordable() {
        const ScanLayout layout(file.frame, reader.header().scan);
        const std::size_t cost = std::size_t(layout.columns) * std::size_t(layout.rows) * layout.mcu.size();
        if (cost > budget) {
            warnings.push_back("byte " + std::to_string(reader.header().scanOffset) +
                               ": too many scans; the rest is passed over");
            return false;
        }
        budget -= cost;
        return true;
    }

    // Every scan, sequential or progressive, works on the same blocks.
    template <class Source> void decode() {
        Source source(reader.header(), reader.data());
        decodeScan(
            source, ScanLayout(file.frame, reader.header().scan),
            [&](const ScanLayout::Part& p, int x, int y) {
                return file.blocks.block(p.component, x * p.h + p.x, y * p.v + p.y);
            },
            [](int, int) {}, warnings);
        source.finish();
    }

    // What is missing keeps its zeros: mid-grey.
    void finish() {
        for (std::size_t i = 0; i < low.size(); ++i)
            if (low[i][0] == kUnseen)
                warnings.push_back("component " + std::to_string(file.frame.components[i].id) + " is missing");
        file.application = reader.header().application;
    }

    SegmentReader& reader;
    Warnings& warnings;
    CoefficientFile file;
    std::size_t budget;
    std::vector<std::array<int, kBlock>> low; // of each coefficient of each component: the lowest bit known
};

} // namespace

CoefficientFile collect(SegmentReader& reader, Warnings& warnings,
                        const std::function<void(CoefficientFile&)>& afterScan) {
    return Collecting(reader, warnings).run(afterScan);
}

} // namespace codecs::jpeg
