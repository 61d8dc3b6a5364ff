// losslessdecode.cpp - lossless files to pixels, row of MCUs by row of MCUs.
#include "codecs/jpeg/intervals.h"
#include "codecs/jpeg/lossless.h"
#include "codecs/jpeg/scanlayout.h"

namespace jpeg {

namespace {

class DifferenceReader final : public StateReader {
public:
    DifferenceReader(const Header& header, const std::uint8_t* bytes, std::size_t n)
        : StateReader(header, bytes, n), count(int(header.scan.components.size())) {
        for (int i = 0; i < count; ++i) {
            const int number = header.scan.components[std::size_t(i)].dc;
            owned[std::size_t(i)] = decodeSpecOf(header.dc[std::size_t(number)], "DC", number, header.scanOffset);
            tables[i] = owned[std::size_t(i)].get();
        }
        open(header.dataOffset);
    }
    // A row of each component, sample by sample.
    bool rows(Zmx16s* const* to, int width) {
        return !lost && check(zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4(source, length, &at, to, width, count, &marker,
                                                                   tables, state()));
    }
    bool one(int component, Zmx16s* to) {
        return !lost &&
               check(zmxiDecodeHuffmanOne_JPEG_1u16s_C1(source, length, &at, to, &marker, tables[component], state()));
    }

private:
    int count;
    std::array<DecodeSpec, kMaxComponents> owned;
    const ZmxiDecodeHuffmanSpec* tables[kMaxComponents] = {};
};

// The samples of one component, with the row above and the differences of the present rows of MCUs.
struct Rows {
    int width = 0; // with the samples that fill up MCUs
    std::vector<Zmx16s> differences, current, above;
};

class LosslessDecoding {
public:
    LosslessDecoding(Reader& r, const std::uint8_t* d, std::size_t n, Picture& p)
        : reader(r), data(d), size(n), frame(r.header().frame), picture(p) {
        picture.shape(frame.width, frame.height, int(frame.components.size()), frame.precision);
        std::fill(picture.pixels.begin(), picture.pixels.end(), std::uint8_t(128));
        std::fill(picture.wide.begin(), picture.wide.end(), std::uint16_t(1 << (frame.precision - 1)));
        seen.assign(frame.components.size(), false);
    }

    void run() {
        bool any = false;
        try {
            do {
                scan();
                any = true;
            } while (reader.nextScan());
        } catch (const Error& e) {
            if (!any) throw;
            picture.warnings.push_back(e.what());
        }
        for (std::size_t i = 0; i < seen.size(); ++i)
            if (!seen[i])
                picture.warnings.push_back("component " + std::to_string(frame.components[i].id) + " is missing");
    }

private:
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
        if (h.restart % layout.columns != 0)
            fail(h.scanOffset, "a restart interval of other than whole rows in a lossless file");
        const int rowsInInterval = h.restart / layout.columns;
        std::vector<Rows> parts = rowsFor(layout);
        DifferenceReader source(h, data, size);
        int firstLost = -1;
        for (int y = 0; y < layout.rows; ++y) {
            const bool first = y == 0 || (rowsInInterval && y % rowsInInterval == 0);
            if (first && y > 0) source.restart();
            if (!read(source, layout, parts)) {
                if (firstLost < 0) firstLost = y * layout.rowHeight;
                continue;
            }
            for (const ScanLayout::Part& p : layout.mcu)
                if (p.x == 0) reconstruct(parts[std::size_t(p.inScan)], p, y, first && p.y == 0, how);
        }
        if (firstLost >= 0)
            picture.warnings.push_back(source.trouble() + "; rows from " + std::to_string(firstLost) +
                                       " on are incomplete");
        else if (!source.trouble().empty())
            picture.warnings.push_back(source.trouble());
        reader.seek(source.end());
    }

    static std::vector<Rows> rowsFor(const ScanLayout& layout) {
        std::vector<Rows> parts(kMaxComponents);
        for (const ScanLayout::Part& p : layout.mcu) {
            Rows& r = parts[std::size_t(p.inScan)];
            r.width = layout.columns * p.h;
            r.differences.resize(std::size_t(r.width * p.v));
            r.current.resize(std::size_t(r.width));
            r.above.resize(std::size_t(r.width));
        }
        return parts;
    }

    // The differences of a row of MCUs.
    static bool read(DifferenceReader& source, const ScanLayout& layout, std::vector<Rows>& parts) {
        const bool plain =
            std::all_of(layout.mcu.begin(), layout.mcu.end(), [](const ScanLayout::Part& p) { return p.h * p.v == 1; });
        if (plain) {
            Zmx16s* to[kMaxComponents];
            for (std::size_t i = 0; i < kMaxComponents; ++i) to[i] = parts[i].differences.data();
            return source.rows(to, layout.columns);
        }
        for (int x = 0; x < layout.columns; ++x)
            for (const ScanLayout::Part& p : layout.mcu) {
                Rows& r = parts[std::size_t(p.inScan)];
                if (!source.one(p.inScan, &r.differences[std::size_t(p.y * r.width + x * p.h + p.x)])) return false;
            }
        return true;
    }

    // Row `p.y` of a component's part of row `y` of MCUs.
    void reconstruct(Rows& r, const ScanLayout::Part& p, int y, bool first, const LosslessRows& how) {
        const Zmx16s* differences = r.differences.data() + p.y * r.width;
        if (first)
            zmxiReconstructPredFirstRow_JPEG_16s_C1(differences, r.current.data(), r.width, how.precision,
                                                    how.firstRowTransform());
        else
            zmxiReconstructPredRow_JPEG_16s_C1(differences, r.above.data(), r.current.data(), r.width, how.predictor);
        show(r.current, p, y * p.v + p.y, how);
        r.current.swap(r.above);
    }

    // Into the pixels that the row covers; samples of smaller components are repeated.
    void show(const std::vector<Zmx16s>& row, const ScanLayout::Part& p, int at, const LosslessRows& how) {
        if (frame.precision == 8)
            show(row, p, at, how, picture.pixels);
        else
            show(row, p, at, how, picture.wide);
    }
    template <class Sample>
    void show(const std::vector<Zmx16s>& row, const ScanLayout::Part& p, int at, const LosslessRows& how,
              std::vector<Sample>& samples) {
        const Component& c = frame.components[std::size_t(p.component)];
        const int top = divUp(at * frame.vMax, c.v), bottom = std::min(divUp((at + 1) * frame.vMax, c.v), frame.height);
        const std::size_t channels = frame.components.size(), width = std::size_t(frame.width);
        for (int y = top; y < bottom; ++y) {
            Sample* to = samples.data() + std::size_t(y) * width * channels + std::size_t(p.component);
            const auto fill = [&](auto column) {
                for (std::size_t x = 0; x < width; ++x) to[x * channels] = Sample(how.sample(row[column(x)]));
            };
            if (c.h == frame.hMax)
                fill([](std::size_t x) { return x; });
            else
                fill([&](std::size_t x) { return x * std::size_t(c.h) / std::size_t(frame.hMax); });
        }
    }

    Reader& reader;
    const std::uint8_t* data;
    std::size_t size;
    const Frame frame;
    Picture& picture;
    std::vector<bool> seen;
};

} // namespace

void decodeLossless(Reader& reader, const std::uint8_t* data, std::size_t size, Picture& picture) {
    LosslessDecoding(reader, data, size, picture).run();
}

} // namespace jpeg
