// losslessdecode.cpp - lossless files to pixels, row of MCUs by row of MCUs. A file of one scan goes on to the sink row by
// row; several scans meet in a whole picture.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/interpret.h"
#include "codecs/jpeg/intervals.h"
#include "codecs/jpeg/lossless.h"
#include "codecs/jpeg/metadata.h"
#include "codecs/jpeg/scanlayout.h"

namespace codecs::jpeg {

namespace {

// The coded differences of a scan.
class DifferenceReader final : public StateReader {
public:
    DifferenceReader(const Header& header, ByteSource& source)
        : StateReader(header, source), count(int(header.scan.components.size())) {
        for (int i = 0; i < count; ++i) {
            const int number = header.scan.components[std::size_t(i)].dc;
            owned[std::size_t(i)] = decodeSpecOf(header.dc[std::size_t(number)], "DC", number, header.scanOffset);
            tables[i] = owned[std::size_t(i)].get();
        }
        open();
    }
    // A row of each component, sample by sample.
    bool rows(Zmx16s* const* to, int width) {
        const std::size_t worst = kWorstDifference * std::size_t(width) * std::size_t(count) + kReadAhead;
        return read(worst, [&](const Zmx8u* from, int length, int* at, int* marker, ZmxiDecodeHuffmanState* state) {
            return zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4(from, length, at, to, width, count, marker, tables, state);
        });
    }
    bool one(int component, Zmx16s* to) {
        constexpr std::size_t worst = kWorstDifference + kReadAhead;
        return read(worst, [&](const Zmx8u* from, int length, int* at, int* marker, ZmxiDecodeHuffmanState* state) {
            return zmxiDecodeHuffmanOne_JPEG_1u16s_C1(from, length, at, to, marker, tables[component], state);
        });
    }

private:
    // What the decoder may have taken in behind the last code.
    static constexpr std::size_t kReadAhead = 16;

    int count;
    std::array<DecodeSpec, kMaxComponents> owned;
    const ZmxiDecodeHuffmanSpec* tables[kMaxComponents] = {};
};

// The rows of pixels that a row of MCUs covers or, when several scans add to them, of the whole picture; mid-grey where
// nothing has come.
class Canvas {
public:
    Canvas(const Frame& f, bool w)
        : shape(shapeFor(f.width, f.height, int(f.components.size()), f.precision)), whole(w),
          rows(whole ? f.height : std::min(f.vMax, f.height)), pixels(shape.rowBytes() * std::size_t(rows)) {
        clear();
    }

    const Shape shape;
    const bool whole;

    template <class Sample> Sample* row(int y) {
        return reinterpret_cast<Sample*>(pixels.data() + shape.rowBytes() * std::size_t(y - top));
    }
    // Hands on the rows up to `end`; what follows stands in their place.
    void give(RowSink& to, int end) {
        to.write({pixels.data(), std::ptrdiff_t(shape.rowBytes()), end - top});
        top = end;
        clear();
    }

private:
    void clear() {
        const int middle = (shape.maxval + 1) / 2;
        if (shape.wide())
            std::fill_n(reinterpret_cast<std::uint16_t*>(pixels.data()), pixels.size() / 2, std::uint16_t(middle));
        else
            std::fill(pixels.begin(), pixels.end(), std::uint8_t(middle));
    }

    const int rows;
    int top = 0;
    Samples pixels;
};

// The samples of one component, with the row above and the differences of the present row of MCUs.
struct Lines {
    int width = 0; // with the samples that fill up MCUs
    std::vector<Zmx16s> differences, current, above;
};

// Scan after scan, each of one component or several (H.2).
class LosslessDecoding {
public:
    LosslessDecoding(SegmentReader& r, RowSink& s, Warnings& w)
        : reader(r), sink(s), warnings(w), frame(r.header().frame),
          canvas(frame, r.header().scan.components.size() < frame.components.size()), seen(frame.components.size()) {}

    void run() {
        // The first scan must be sound; what is wrong behind it costs the components that are not there yet.
        bool any = false;
        try {
            do {
                scan();
                any = true;
            } while (reader.nextScan());
        } catch (const Error& e) {
            if (!any) throw;
            warnings.push_back(e.what());
        }
        for (std::size_t i = 0; i < seen.size(); ++i)
            if (!seen[i]) warnings.push_back("component " + std::to_string(frame.components[i].id) + " is missing");
        if (canvas.whole) {
            sink.begin(canvas.shape, metadataOf(reader.header().application, warnings));
            canvas.give(sink, frame.height);
        }
        sink.finish();
    }

private:
    // The predictor and the point transform stand where other modes have bands and bits (B.2.3).
    LosslessRows rules() const {
        const Header& h = reader.header();
        const Scan& s = h.scan;
        if (s.first < 1 || s.first > 7) fail(h.scanOffset, "predictor " + std::to_string(s.first));
        if (s.low >= frame.precision || s.last != 0 || s.high != 0)
            fail(h.scanOffset, "a scan of another mode in a lossless file");
        return {frame.precision, s.first, s.low};
    }

    void scan() {
        const LosslessRows how = rules();
        const Header& h = reader.header();
        for (const ScanComponent& c : h.scan.components) {
            const auto i = std::size_t(c.index);
            if (seen[i]) fail(h.scanOffset, "component " + std::to_string(frame.components[i].id) + " is coded twice");
            seen[i] = true;
        }
        const ScanLayout layout(frame, h.scan);
        // Rows are predicted from the one above: an interval has to begin with one (H.1.1).
        if (h.restart % layout.columns != 0)
            fail(h.scanOffset, "a restart interval of other than whole rows in a lossless file");
        DifferenceReader source(h, reader.data());
        if (!canvas.whole) sink.begin(canvas.shape, metadataOf(h.application, warnings));
        const int firstLost = scanRows(source, layout, how, h.restart / layout.columns);
        if (firstLost >= 0)
            warnings.push_back(source.trouble() + "; rows from " + std::to_string(firstLost) + " on are incomplete");
        else if (!source.trouble().empty())
            warnings.push_back(source.trouble());
        source.finish();
    }

    // The first row of the picture that is lost, or a negative number.
    int scanRows(DifferenceReader& source, const ScanLayout& layout, const LosslessRows& how, int rowsInInterval) {
        std::vector<Lines> parts = rowsFor(layout);
        int firstLost = -1;
        for (int y = 0; y < layout.rows; ++y) {
            const bool first = y == 0 || (rowsInInterval && y % rowsInInterval == 0);
            if (first && y > 0) source.restart();
            if (read(source, layout, parts)) {
                for (const ScanLayout::Part& p : layout.mcu)
                    if (p.x == 0) reconstruct(parts[std::size_t(p.inScan)], p, y, first && p.y == 0, how);
            } else if (firstLost < 0) {
                firstLost = y * layout.rowHeight;
            }
            if (!canvas.whole) canvas.give(sink, std::min((y + 1) * layout.rowHeight, frame.height));
        }
        return firstLost;
    }

    // Room for each component of the scan; those that it has not stay empty.
    static std::vector<Lines> rowsFor(const ScanLayout& layout) {
        std::vector<Lines> parts(kMaxComponents);
        for (const ScanLayout::Part& p : layout.mcu) {
            Lines& r = parts[std::size_t(p.inScan)];
            r.width = layout.columns * p.h;
            r.differences.resize(std::size_t(r.width * p.v));
            r.current.resize(std::size_t(r.width));
            r.above.resize(std::size_t(r.width));
        }
        return parts;
    }

    // The differences of a row of MCUs.
    static bool read(DifferenceReader& source, const ScanLayout& layout, std::vector<Lines>& parts) {
        // Without sampling the order of the data is that of the samples, and a call takes all of them.
        const bool plain =
            std::all_of(layout.mcu.begin(), layout.mcu.end(), [](const ScanLayout::Part& p) { return p.h * p.v == 1; });
        if (plain) {
            Zmx16s* to[kMaxComponents];
            for (std::size_t i = 0; i < kMaxComponents; ++i) to[i] = parts[i].differences.data();
            return source.rows(to, layout.columns);
        }
        for (int x = 0; x < layout.columns; ++x)
            for (const ScanLayout::Part& p : layout.mcu) {
                Lines& r = parts[std::size_t(p.inScan)];
                if (!source.one(p.inScan, &r.differences[std::size_t(p.y * r.width + x * p.h + p.x)])) return false;
            }
        return true;
    }

    // Row `p.y` of a component's part of row `y` of MCUs.
    void reconstruct(Lines& r, const ScanLayout::Part& p, int y, bool first, const LosslessRows& how) {
        const Zmx16s* differences = r.differences.data() + p.y * r.width;
        // The first row has no one above it: its samples are predicted from the left, the first of them by the middle
        // of the range (H.1.2.1).
        if (first)
            zmxiReconstructPredFirstRow_JPEG_16s_C1(differences, r.current.data(), r.width, how.precision,
                                                    how.firstRowTransform());
        else
            zmxiReconstructPredRow_JPEG_16s_C1(differences, r.above.data(), r.current.data(), r.width, how.predictor);
        if (canvas.shape.wide())
            show<std::uint16_t>(r.current, p.component, y * p.v + p.y, how);
        else
            show<std::uint8_t>(r.current, p.component, y * p.v + p.y, how);
        r.current.swap(r.above);
    }

    // Into the pixels that row `at` of a component covers; samples of smaller components are repeated.
    template <class Sample> void show(const std::vector<Zmx16s>& row, int component, int at, const LosslessRows& how) {
        const Component& c = frame.components[std::size_t(component)];
        const int top = divUp(at * frame.vMax, c.v), bottom = std::min(divUp((at + 1) * frame.vMax, c.v), frame.height);
        const std::size_t channels = frame.components.size(), width = std::size_t(frame.width);
        for (int y = top; y < bottom; ++y) {
            Sample* const to = canvas.row<Sample>(y) + component;
            const auto fill = [&](auto column) {
                for (std::size_t x = 0; x < width; ++x) to[x * channels] = Sample(how.sample(row[column(x)]));
            };
            // The ratio of most files is 1, and needs no division.
            if (c.h == frame.hMax)
                fill([](std::size_t x) { return x; });
            else
                fill([&](std::size_t x) { return x * std::size_t(c.h) / std::size_t(frame.hMax); });
        }
    }

    SegmentReader& reader;
    RowSink& sink;
    Warnings& warnings;
    const Frame frame;
    Canvas canvas;
    std::vector<bool> seen;
};

} // namespace

void decodeLossless(SegmentReader& reader, RowSink& picture, Warnings& warnings) {
    LosslessDecoding(reader, picture, warnings).run();
}

} // namespace codecs::jpeg
