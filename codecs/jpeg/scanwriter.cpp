// scanwriter.cpp - every scan in two passes: one counts the symbols, which gives its tables, one writes them.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/scanwriter.h"

#include "codecs/jpeg/huffman.h"
#include "codecs/jpeg/scanlayout.h"
#include "codecs/jpeg/segmentwriter.h"

namespace codecs::jpeg {

namespace {

constexpr int kTables = 2; // of each class: luma and the rest, chroma

// One pass over a scan. A block's share of it goes through one of the members below, which know the five
// kinds of scan; the library counts or writes.
class Pass {
public:
    explicit Pass(const Scan& s) : scan(s), state(newEncodeState()) {}
    virtual ~Pass() = default;
    virtual ZmxStatus block(const Zmx16s* block, int component, int table) = 0;
    // The end of the scan or of a restart interval.
    virtual ZmxStatus flush(int table) = 0;

protected:
    enum Kind { Sequential, DcFirst, DcRefine, AcFirst, AcRefine };
    // By band and bits, as ITU-T T.81, G.1.2 tells them apart.
    Kind kind() const {
        return isSequential(scan) ? Sequential
               : scan.first == 0  ? (scan.high ? DcRefine : DcFirst)
               : scan.high        ? AcRefine
                                  : AcFirst;
    }
    // Differences of DC begin anew with each interval (F.1.1.5.1).
    void forget() { std::fill_n(lastDc, kMaxComponents, Zmx16s(0)); }

    const Scan& scan;
    EncodeState state;
    Zmx16s lastDc[kMaxComponents] = {};
};

// Which symbols a scan has, and how often.
class Counting final : public Pass {
public:
    using Pass::Pass;
    SymbolCounts dc[kTables]{}, ac[kTables]{};

    ZmxStatus block(const Zmx16s* b, int component, int t) override {
        switch (kind()) {
        case Sequential:
            return zmxiGetHuffmanStatistics8x8_JPEG_16s_C1(b, dc[t].data(), ac[t].data(), &lastDc[component]);
        case DcFirst:
            return zmxiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(b, dc[t].data(), &lastDc[component], scan.low);
        // Bits alone: there is nothing to make a table of (G.1.2.1.1).
        case DcRefine:
            return zmxStsNoErr;
        default:
            return band(b, t, 0);
        }
    }
    ZmxStatus flush(int t) override {
        forget();
        return scan.first > 0 ? band(nullptr, t, 1) : zmxStsNoErr;
    }

private:
    // The last call of a pass gives no block: a run that has not ended is counted then.
    ZmxStatus band(const Zmx16s* b, int t, int last) {
        const auto count = kind() == AcFirst ? zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1
                                             : zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1;
        return count(b, ac[t].data(), scan.first, scan.last, scan.low, state.get(), last);
    }
};

// The scan itself, with tables made of what was counted.
class Writing final : public Pass {
public:
    Writing(const Scan& s, Output& o) : Pass(s), out(o) {}
    EncodeSpec dc[kTables], ac[kTables];

    ZmxStatus block(const Zmx16s* b, int component, int t) override { return write(b, component, t, 0); }
    ZmxStatus flush(int t) override {
        forget();
        return write(nullptr, 0, t, 1);
    }

private:
    static constexpr int kRoom = int(kWorstBlock);

    // Into the room behind the output, as much as it comes to.
    ZmxStatus write(const Zmx16s* b, int component, int t, int last) {
        Zmx8u* to = out.reserve(kRoom);
        int at = 0;
        const ZmxStatus status = code(b, to, &at, component, t, last);
        out.advance(std::size_t(at));
        return status;
    }
    // A null block with `last` set ends the interval.
    ZmxStatus code(const Zmx16s* b, Zmx8u* to, int* at, int component, int t, int last) {
        Zmx16s* const dcAt = &lastDc[component];
        switch (kind()) {
        case Sequential:
            return zmxiEncodeHuffman8x8_JPEG_16s1u_C1(b, to, kRoom, at, dcAt, dc[t].get(), ac[t].get(), state.get(),
                                                      last);
        case DcFirst:
            return zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(b, to, kRoom, at, dcAt, scan.low, dc[t].get(),
                                                              state.get(), last);
        case DcRefine:
            return zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(b, to, kRoom, at, scan.low, state.get(), last);
        case AcFirst:
            return zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(b, to, kRoom, at, scan.first, scan.last, scan.low,
                                                              ac[t].get(), state.get(), last);
        default:
            return zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(b, to, kRoom, at, scan.first, scan.last, scan.low,
                                                               ac[t].get(), state.get(), last);
        }
    }

    Output& out;
};

// Segments around the scans.
class FileWriter {
public:
    FileWriter(const CoefficientFile& f, ByteSink& sink) : file(f), frame(f.frame), out(sink) {}

    void write(const Script& script) {
        out.marker(SOI);
        // Segments of applications stand first, as JFIF wants it (T.871, 10.1).
        out.append(file.application);
        const bool words = quantTables();
        // Baseline has samples of 8 bits and tables of bytes, and all else that is sequential is extended (B.2.2).
        frame.sof = !isSequential(script[0]) ? SOF2 : words || frame.precision != 8 ? SOF1 : SOF0;
        writeFrame(out, frame);
        if (file.restart) writeRestartInterval(out, file.restart);
        int number = 0;
        for (const Scan& s : script) {
            ++number;
            if (!scan(s))
                throw Error("scan " + std::to_string(number) +
                            ": coefficients too large for it; begin at a higher bit or take a lower quality");
        }
        out.marker(EOI);
        out.flush();
    }

private:
    // Components with equal tables share one. True: there is one of words.
    bool quantTables() {
        std::vector<QuantTable> written;
        bool words = false;
        for (std::size_t i = 0; i < frame.components.size(); ++i) {
            const QuantTable& table = file.quant[i];
            const auto same = std::find(written.begin(), written.end(), table);
            frame.components[i].quant = int(same - written.begin());
            if (same != written.end()) continue;
            writeQuantTable(out, int(written.size()), table);
            written.push_back(table);
            words |= *std::max_element(table.begin(), table.end()) > 255;
        }
        return words;
    }

    // False when a coefficient does not fit the scan. Tables that no component of it uses are not written.
    bool scan(const Scan& s) {
        const ScanLayout layout(frame, s);
        Counting counting(s);
        // A coefficient of more bits than a category counts is what a pass can stumble over.
        if (!pass(counting, s, layout, [] {})) return false;
        Writing writing(s, out);
        const bool dcCodes = s.first == 0 && s.high == 0, acCodes = s.last > 0;
        for (int t = 0; t < kTables; ++t) {
            if (std::none_of(s.components.begin(), s.components.end(),
                             [t](const ScanComponent& c) { return c.dc == t; }))
                continue;
            if (dcCodes) writing.dc[t] = table(TableClass::dc, t, counting.dc[t]);
            if (acCodes) writing.ac[t] = table(TableClass::ac, t, counting.ac[t]);
        }
        writeScan(out, frame, s);
        int restarts = 0;
        return pass(writing, s, layout, [&] { out.marker(RST0 + (restarts++ & 7)); });
    }

    // The table goes into the file and into the coder.
    EncodeSpec table(TableClass cls, int number, const SymbolCounts& counts) {
        const HuffmanTable t = optimalTable(counts);
        writeHuffmanTable(out, cls, number, t);
        return encodeSpecOf(t);
    }

    // Takes the blocks of a scan through a pass, in their order, with the ends of its intervals.
    template <class Restart> bool pass(Pass& p, const Scan& s, const ScanLayout& layout, Restart restart) {
        bool sound = true;
        // A band belongs to one component; no other kind of scan has codes to flush.
        const int band = s.components[0].ac;
        eachMcu(
            layout.columns, layout.rows, file.restart,
            [&](int x, int y) {
                for (const ScanLayout::Part& part : layout.mcu)
                    sound =
                        sound && p.block(file.blocks.block(part.component, x * part.h + part.x, y * part.v + part.y),
                                         part.inScan, s.components[std::size_t(part.inScan)].dc) == zmxStsNoErr;
            },
            [&] {
                sound = sound && p.flush(band) == zmxStsNoErr;
                restart();
            });
        return sound && p.flush(band) == zmxStsNoErr;
    }

    const CoefficientFile& file;
    Frame frame;
    Output out;
};

} // namespace

void writeFile(const CoefficientFile& file, const Script& script, ByteSink& sink) {
    FileWriter(file, sink).write(script);
}

} // namespace codecs::jpeg
