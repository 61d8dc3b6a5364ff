// decode.cpp - from a file to pixels. A file whose first scan holds all components goes MCU by MCU straight to
// pixels; any other one collects the coefficients of all scans first.
#include "jpeg/blockreader.h"
#include "jpeg/coefficients.h"
#include "jpeg/render.h"

namespace jpeg {

namespace {

// What this decoder cannot do yet, in words; empty: it can.
std::string unsupported(const Frame& frame) {
    switch (frame.sof) {
    case SOF0:
    case SOF1: break;
    case SOF2: return "progressive mode is not supported";
    case SOF3: return "lossless mode is not supported";
    default: return frame.sof < SOF0 + 8 ? "hierarchical mode is not supported" : "arithmetic coding is not supported";
    }
    if (frame.precision != 8) return std::to_string(frame.precision) + "-bit samples are not supported";
    if (frame.components.size() == 2) return "a picture of 2 components is not supported";
    return {};
}

// The colour of a file is not written in it; these are the customs (JFIF, Adobe TN 5116, component numbers).
Model modelOf(const Header& h) {
    const std::vector<Component>& c = h.frame.components;
    if (c.size() == 1) return Model::Grey;
    if (c.size() == 4) return h.adobe == 2 ? Model::Ycck : Model::Cmyk;
    if (h.jfif) return Model::YCbCr;
    if (h.adobe >= 0) return h.adobe == 0 ? Model::Rgb : Model::YCbCr;
    return c[0].id == 'R' && c[1].id == 'G' && c[2].id == 'B' ? Model::Rgb : Model::YCbCr;
}

class Decoding {
public:
    Decoding(const std::uint8_t* bytes, std::size_t n, const DecodeOptions& o, Picture& p)
        : data(bytes), size(n), options(o), picture(p), reader(bytes, n) {}

    void run() {
        if (options.scale != 1 && options.scale != 2 && options.scale != 4 && options.scale != 8)
            throw Error("the scale is 1/1, 1/2, 1/4 or 1/8");
        picture.warnings.clear();
        if (!reader.nextScan()) throw Error("the file holds no scan");
        frame = reader.header().frame;
        if (const std::string what = unsupported(frame); !what.empty()) throw Error(what);
        if (std::size_t(frame.width) * std::size_t(frame.height) > options.maxPixels)
            throw Error("a picture of " + std::to_string(frame.width) + " by " + std::to_string(frame.height) +
                        " pixels, more than the limit allows");
        const Model model = modelOf(reader.header());
        picture.width = divUp(frame.width, options.scale);
        picture.height = divUp(frame.height, options.scale);
        picture.channels = channelsOf(model);
        picture.adobe = reader.header().adobe >= 0;
        picture.pixels.resize(std::size_t(picture.width) * std::size_t(picture.height) * std::size_t(picture.channels));
        tables.resize(frame.components.size());
        seen.assign(frame.components.size(), false);

        if (reader.header().scan.components.size() == frame.components.size()) {
            startScan();
            straight(*makeRenderer(frame, model, tables, options.scale, picture));
        } else {
            Coefficients all(frame);
            collect(all);
            const auto renderer = makeRenderer(frame, model, tables, options.scale, picture);
            Zmx16s* blocks[kMaxBlocks];
            for (int y = 0; y < frame.mcuRows(); ++y)
                for (int x = 0; x < frame.mcuColumns(); ++x) {
                    all.mcu(x, y, blocks);
                    renderer->mcu(blocks, x, y);
                }
        }
    }

private:
    // A block of the MCUs of a scan.
    struct McuBlock {
        int inScan, component; // which component, by its place in the scan and in the frame
        int x, y;              // where in the part of the MCU that is its component's
        int h, v;              // the size of that part, in blocks
    };

    // What a scan of this mode may be, and the quantisation tables as they are when a component starts.
    void startScan() {
        const Header& h = reader.header();
        if (h.scan.first != 0 || h.scan.last != 63 || h.scan.high != 0 || h.scan.low != 0)
            fail(h.scanOffset, "a progressive scan in a sequential file");
        for (const ScanComponent& c : h.scan.components) {
            const auto i = std::size_t(c.index);
            if (seen[i]) fail(h.scanOffset, "component " + std::to_string(frame.components[i].id) + " is coded twice");
            seen[i] = true;
            const int which = frame.components[i].quant;
            const auto& table = h.quant[std::size_t(which)];
            if (!table) fail(h.scanOffset, "quantisation table " + std::to_string(which) + " is missing");
            tables[i] = dequantTableOf(*table);
        }
    }

    // Decodes the scan that the reader has come to. `place` says where a block of an MCU goes; `done` hears of each
    // MCU behind its last block. Blocks that are lost are zero.
    template <class Place, class Done> void decodeScan(Place place, Done done) {
        const std::vector<ScanComponent> parts = reader.header().scan.components;
        // One component alone comes block by block, without those that only fill up MCUs (A.2.2).
        const bool alone = parts.size() == 1;
        const Component& first = frame.components[std::size_t(parts[0].index)];
        const int columns = alone ? frame.blockColumns(first) : frame.mcuColumns();
        const int rows = alone ? frame.blockRows(first) : frame.mcuRows();
        const int rowHeight = 8 * frame.vMax / (alone ? first.v : 1);
        std::vector<McuBlock> mcu;
        for (int i = 0; i < int(parts.size()); ++i) {
            const Component& c = frame.components[std::size_t(parts[std::size_t(i)].index)];
            const int h = alone ? 1 : c.h, v = alone ? 1 : c.v;
            for (int k = 0; k < h * v; ++k) mcu.push_back({i, parts[std::size_t(i)].index, k % h, k / h, h, v});
        }

        BlockReader source(reader.header(), data, size);
        const int interval = source.restartInterval();
        int untilRestart = interval, firstLost = -1, previous = 0;
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < columns; ++x) {
                if (interval && untilRestart-- == 0) {
                    source.restart();
                    untilRestart = interval - 1;
                }
                bool sound = true;
                for (const McuBlock& b : mcu) sound &= source.block(b.inScan, place(b, x, y));
                done(x, y);
                // The MCU before may have ended with the data: only the next one tells.
                if (!sound && firstLost < 0) firstLost = previous;
                previous = y * rowHeight;
            }
        if (firstLost >= 0) warn(source.trouble() + "; rows from " + std::to_string(firstLost) + " on are incomplete");
        else if (!source.trouble().empty()) warn(source.trouble());
        reader.seek(source.end());
    }

    // MCU by MCU to pixels. The components of the scan may stand in another order than those of the frame.
    void straight(Renderer& renderer) {
        alignas(32) Zmx16s coefficients[kMaxBlocks * kBlock];
        const Zmx16s* blocks[kMaxBlocks];
        for (int i = 0; i < kMaxBlocks; ++i) blocks[i] = coefficients + i * kBlock;
        Zmx16s* first[kMaxComponents] = {coefficients}; // of the blocks of each component
        for (std::size_t i = 1; i < frame.components.size(); ++i)
            first[i] = first[i - 1] + frame.components[i - 1].h * frame.components[i - 1].v * kBlock;
        decodeScan([&](const McuBlock& b, int, int) { return first[b.component] + (b.y * b.h + b.x) * kBlock; },
                   [&](int x, int y) { renderer.mcu(blocks, x, y); });
        try {
            if (reader.nextScan()) warn("scans behind the last component are passed over");
        } catch (const Error& e) {
            warn(e.what());
        }
    }

    // The coefficients of all scans.
    void collect(Coefficients& all) {
        try {
            do {
                startScan();
                decodeScan([&](const McuBlock& b, int x, int y) { return all.block(b.component, x * b.h + b.x, y * b.v + b.y); },
                           [](int, int) {});
            } while (reader.nextScan());
        } catch (const Error& e) {
            if (std::count(seen.begin(), seen.end(), true) == 0) throw;
            warn(e.what());
        }
        for (std::size_t i = 0; i < seen.size(); ++i)
            if (!seen[i]) warn("component " + std::to_string(frame.components[i].id) + " is missing");
    }

    void warn(const std::string& what) { picture.warnings.push_back(what); }

    const std::uint8_t* data;
    std::size_t size;
    const DecodeOptions& options;
    Picture& picture;
    Reader reader;
    Frame frame;
    std::vector<DequantTable> tables;
    std::vector<bool> seen;
};

} // namespace

void decode(const std::uint8_t* data, std::size_t size, const DecodeOptions& options, Picture& picture) {
    Decoding(data, size, options, picture).run();
}

Picture decode(const std::uint8_t* data, std::size_t size, const DecodeOptions& options) {
    Picture picture;
    decode(data, size, options, picture);
    return picture;
}

} // namespace jpeg
