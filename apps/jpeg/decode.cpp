// decode.cpp - from a file to pixels. A file whose first scan holds all components goes MCU by MCU straight to
// pixels; any other one collects the coefficients of all scans first.
#include "jpeg/blockreader.h"
#include "jpeg/coefficients.h"
#include "jpeg/render.h"

#include <numeric>

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
            const auto renderer = makeRenderer(frame, model, tables, options.scale, picture);
            straight(*renderer);
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

    // The components of such a scan may stand in another order than those of the frame.
    void straight(Renderer& renderer) {
        std::vector<int> owner; // of each block of an MCU: its component in the scan
        alignas(32) Zmx16s coefficients[kMaxBlocks * kBlock];
        std::vector<Zmx16s*> order;         // blocks as the scan has them
        const Zmx16s* blocks[kMaxBlocks];   // and as the frame has them
        std::vector<int> first(frame.components.size());
        int count = 0;
        for (std::size_t i = 0; i < first.size(); ++i) {
            first[i] = count;
            for (int k = frame.components[i].h * frame.components[i].v; k > 0; --k, ++count) blocks[count] = coefficients + count * kBlock;
        }
        const Scan& scan = reader.header().scan;
        for (std::size_t s = 0; s < scan.components.size(); ++s) {
            const auto i = std::size_t(scan.components[s].index);
            for (int k = 0; k < frame.components[i].h * frame.components[i].v; ++k) {
                owner.push_back(int(s));
                order.push_back(coefficients + (first[i] + k) * kBlock);
            }
        }
        BlockReader source(reader.header(), data, size);
        eachMcu(source, frame.mcuColumns(), frame.mcuRows(), 8 * frame.vMax, true, [&](int x, int y) {
            bool sound = true;
            for (std::size_t k = 0; k < order.size(); ++k) sound &= source.block(owner[k], order[k]);
            renderer.mcu(blocks, x, y);
            return sound;
        });
        finish(source);
        try {
            if (reader.nextScan()) warn("scans behind the last component are passed over");
        } catch (const Error& e) {
            warn(e.what());
        }
    }

    void collect(Coefficients& all) {
        try {
            do {
                startScan();
                scanInto(all);
            } while (reader.nextScan());
        } catch (const Error& e) {
            if (std::count(seen.begin(), seen.end(), true) == 0) throw;
            warn(e.what());
        }
        for (std::size_t i = 0; i < seen.size(); ++i)
            if (!seen[i]) warn("component " + std::to_string(frame.components[i].id) + " is missing");
    }

    void scanInto(Coefficients& all) {
        BlockReader source(reader.header(), data, size);
        const std::vector<ScanComponent> parts = reader.header().scan.components;
        if (parts.size() == 1) {
            // One component alone comes block by block, without those that only fill up MCUs (A.2.2).
            const int i = parts[0].index;
            const Component& c = frame.components[std::size_t(i)];
            eachMcu(source, frame.blockColumns(c), frame.blockRows(c), 8 * frame.vMax / c.v, false,
                    [&](int x, int y) { return source.block(0, all.block(i, x, y)); });
        } else {
            eachMcu(source, frame.mcuColumns(), frame.mcuRows(), 8 * frame.vMax, false, [&](int x, int y) {
                bool sound = true;
                for (std::size_t s = 0; s < parts.size(); ++s) {
                    const Component& c = frame.components[std::size_t(parts[s].index)];
                    for (int k = 0; k < c.h * c.v; ++k)
                        sound &= source.block(int(s), all.block(parts[s].index, x * c.h + k % c.h, y * c.v + k / c.h));
                }
                return sound;
            });
        }
        finish(source);
    }

    // Calls `mcu` for all MCUs of a scan, with the restarts between them, until nothing more can come (`all`: to
    // the last, blocks then being zero). Says from which row on blocks were lost.
    template <class Mcu> void eachMcu(BlockReader& source, int columns, int rows, int rowHeight, bool all, Mcu mcu) {
        int untilRestart = source.restartInterval(), firstLost = -1, previous = 0;
        for (int y = 0; y < rows && (all || !source.over()); ++y)
            for (int x = 0; x < columns; ++x) {
                if (source.restartInterval() && untilRestart-- == 0) {
                    source.restart();
                    untilRestart = source.restartInterval() - 1;
                }
                // The MCU before may have ended with the data: only the next one tells.
                if (!mcu(x, y) && firstLost < 0) firstLost = previous;
                previous = y * rowHeight;
            }
        if (firstLost >= 0) warn(source.trouble() + "; rows from " + std::to_string(firstLost) + " on are incomplete");
        else if (!source.trouble().empty()) warn(source.trouble());
    }

    void finish(const BlockReader& source) { reader.seek(source.end()); }
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
