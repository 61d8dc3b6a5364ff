// encode.cpp - from pixels to a baseline file of one interleaved scan.
#include "jpeg/coefficients.h"
#include "jpeg/standard.h"
#include "jpeg/units.h"
#include "jpeg/writer.h"

#include <cstring>

namespace jpeg {

namespace {

Model modelFor(int channels, const EncodeOptions& options) {
    switch (channels) {
    case 1: return Model::Grey;
    case 3: return options.rgb ? Model::Rgb : Model::YCbCr;
    case 4: return options.ycck ? Model::Ycck : Model::Cmyk;
    default: throw Error("a picture of " + std::to_string(channels) + " channels; supported are 1, 3 and 4");
    }
}

// Chroma has tables of its own, for quantisation and for Huffman coding.
int tableOf(Model model, int component) {
    return (model == Model::YCbCr || model == Model::Ycck) && (component == 1 || component == 2);
}

Frame frameFor(int width, int height, Model model, const EncodeOptions& options) {
    Frame frame;
    frame.width = width;
    frame.height = height;
    const bool chroma = tableOf(model, 1) != 0;
    frame.components = componentsOf(model, chroma && options.sampling != Sampling::s444 ? 2 : 1,
                                    chroma && options.sampling == Sampling::s420 ? 2 : 1);
    for (int i = 0; i < int(frame.components.size()); ++i) frame.components[std::size_t(i)].quant = tableOf(model, i);
    frame.setMaxima();
    return frame;
}

// Divisors for a quality, as the file holds them and as the library multiplies by them.
struct Quantiser {
    std::array<std::uint8_t, 64> raw;
    std::array<Zmx16u, 64> forward;

    Quantiser(const std::array<std::uint8_t, 64>& base, int quality) : raw(base) {
        zmxiQuantFwdRawTableInit_JPEG_8u(raw.data(), quality);
        zmxiQuantFwdTableInit_JPEG_8u16u(raw.data(), forward.data());
    }
};

// Cuts MCUs out of a picture and transforms them.
class Transformer {
public:
    Transformer(const std::uint8_t* p, const Frame& f, const Unit& u, const Quantiser (&quantisers)[2])
        : pixels(p), frame(f), unit(u), channels(channelsOf(u.model)) {
        for (std::size_t i = 0; i < frame.components.size(); ++i) {
            const Component& c = frame.components[i];
            planes[i] = samples + count * kBlock;
            for (int k = c.h * c.v; k > 0; --k) table[count++] = quantisers[c.quant].forward.data();
        }
    }

    // Into `blocks`, component by component, each row by row.
    void mcu(int column, int row, Zmx16s* const* blocks) {
        const int width = 8 * unit.h, height = 8 * unit.v, step = frame.width * channels;
        const Zmx8u* at = pixels + std::size_t(row * height) * std::size_t(step) + std::size_t(column * width * channels);
        const int inside = std::min(width, frame.width - column * width);
        const int below = std::min(height, frame.height - row * height);
        if (inside == width && below == height) {
            unit.fromPixels(at, step, planes);
        } else {
            repeatEdge(at, step, inside, below);
            unit.fromPixels(edge, kEdgeStep, planes);
        }
        for (int i = 0; i < count; ++i) zmxiDCTQuantFwd8x8_JPEG_16s_C1(samples + i * kBlock, blocks[i], table[i]);
    }

    int blocks() const { return count; }

private:
    static constexpr int kBlocks = 10, kEdgeStep = 16 * 4;

    // A partial unit, filled up with its last column and its last row, which costs the fewest bits.
    void repeatEdge(const Zmx8u* at, int step, int inside, int below) {
        for (int y = 0; y < 8 * unit.v; ++y) {
            Zmx8u* to = edge + y * kEdgeStep;
            std::memcpy(to, at + std::ptrdiff_t(std::min(y, below - 1)) * step, std::size_t(inside * channels));
            for (int x = inside * channels; x < 8 * unit.h * channels; ++x) to[x] = to[x - channels];
        }
    }

    const std::uint8_t* pixels;
    const Frame& frame;
    const Unit& unit;
    int channels, count = 0;
    const Zmx16u* table[kBlocks];
    Zmx16s* planes[kMaxComponents];
    alignas(32) Zmx16s samples[kBlocks * kBlock];
    Zmx8u edge[16 * kEdgeStep];
};

// Calls `mcu(column, row)` for each, and `restart(number)` between intervals.
template <class Mcu, class Restart> void eachMcu(const Frame& frame, int interval, Mcu mcu, Restart restart) {
    int n = 0;
    for (int y = 0; y < frame.mcuRows(); ++y)
        for (int x = 0; x < frame.mcuColumns(); ++x, ++n) {
            if (interval && n && n % interval == 0) restart(n / interval - 1);
            mcu(x, y);
        }
}

// Which component a block of an MCU belongs to.
std::vector<int> ownersOf(const Frame& frame) {
    std::vector<int> owners;
    for (int i = 0; i < int(frame.components.size()); ++i)
        owners.insert(owners.end(), std::size_t(frame.components[std::size_t(i)].h * frame.components[std::size_t(i)].v), i);
    return owners;
}

using Tables = std::array<HuffmanTable, 2>; // 0: luma and the rest, 1: chroma

// The tables that code the picture in the fewest bits.
void optimalTables(const Frame& frame, int interval, Coefficients& all, Tables& dc, Tables& ac) {
    const std::vector<int> owners = ownersOf(frame);
    std::array<Zmx32u, 257> dcCounts[2]{}, acCounts[2]{}; // the last entry is the table builder's own
    Zmx16s lastDc[kMaxComponents] = {};
    Zmx16s* blocks[kMaxBlocks];
    eachMcu(
        frame, interval,
        [&](int x, int y) {
            all.mcu(x, y, blocks);
            for (std::size_t k = 0; k < owners.size(); ++k) {
                const int c = owners[k], table = frame.components[std::size_t(c)].quant;
                zmxiGetHuffmanStatistics8x8_JPEG_16s_C1(blocks[k], dcCounts[table].data(), acCounts[table].data(), &lastDc[c]);
            }
        },
        [&](int) { std::fill_n(lastDc, kMaxComponents, Zmx16s(0)); });
    const auto build = [](const std::array<Zmx32u, 257>& counts, HuffmanTable& table) {
        std::array<Zmx32s, 257> statistics;
        std::copy(counts.begin(), counts.end(), statistics.begin());
        if (zmxiEncodeHuffmanRawTableInit_JPEG_8u(statistics.data(), table.bits.data(), table.vals.data()) != zmxStsNoErr)
            throw Error("no Huffman table fits the picture");
    };
    for (std::size_t t = 0; t < 2; ++t) build(dcCounts[t], dc[t]), build(acCounts[t], ac[t]);
}

void writeHeader(Output& out, Model model) {
    out.marker(SOI);
    switch (model) {
    case Model::Grey:
    case Model::YCbCr: return writeJfif(out);
    case Model::Ycck: return writeAdobe(out, 2);
    default: return writeAdobe(out, 0);
    }
}

} // namespace

std::vector<std::uint8_t> encode(const std::uint8_t* pixels, int width, int height, int channels, const EncodeOptions& options) {
    if (width < 1 || width > 65535 || height < 1 || height > 65535)
        throw Error("a picture of " + std::to_string(width) + " by " + std::to_string(height) + "; a JPEG file holds 1 to 65535 a side");
    if (options.quality < 1 || options.quality > 100) throw Error("the quality is 1 to 100");
    if (options.restart < 0 || options.restart > 65535) throw Error("a restart interval is 0 to 65535 MCUs");
    const Model model = modelFor(channels, options);
    const Frame frame = frameFor(width, height, model, options);
    const Quantiser quantisers[2] = {{kLumaQuant, options.quality}, {kChromaQuant, options.quality}};
    const std::vector<int> owners = ownersOf(frame);
    const std::size_t used = tableOf(model, 1) ? 2 : 1; // tables of each kind
    Transformer transformer(pixels, frame, *unitFor(model, frame.components), quantisers);

    // Tables made for the picture need all of its coefficients ahead of the first code.
    Tables dc{kLumaDc, kChromaDc}, ac{kLumaAc, kChromaAc};
    std::unique_ptr<Coefficients> all;
    Zmx16s* blocks[kMaxBlocks];
    if (options.optimize) {
        all = std::make_unique<Coefficients>(frame);
        eachMcu(
            frame, 0,
            [&](int x, int y) {
                all->mcu(x, y, blocks);
                transformer.mcu(x, y, blocks);
            },
            [](int) {});
        optimalTables(frame, options.restart, *all, dc, ac);
    }

    Output out;
    out.reserve(1024 + std::size_t(width) * std::size_t(height) / 4);
    writeHeader(out, model);
    for (std::size_t t = 0; t < used; ++t) writeQuantTable(out, int(t), quantisers[t].raw);
    writeFrame(out, frame);
    for (std::size_t t = 0; t < used; ++t) {
        writeHuffmanTable(out, 0, int(t), dc[t]);
        writeHuffmanTable(out, 1, int(t), ac[t]);
    }
    if (options.restart) writeRestartInterval(out, options.restart);
    Scan scan;
    for (int i = 0; i < int(frame.components.size()); ++i) scan.components.push_back({i, tableOf(model, i), tableOf(model, i)});
    writeScan(out, frame, scan);

    const HuffmanTable* const dcTables[2] = {&dc[0], used > 1 ? &dc[1] : nullptr};
    const HuffmanTable* const acTables[2] = {&ac[0], used > 1 ? &ac[1] : nullptr};
    BlockWriter writer(out, dcTables, acTables);
    alignas(32) Zmx16s coefficients[kMaxBlocks * kBlock];
    for (int i = 0; i < kMaxBlocks; ++i) blocks[i] = coefficients + i * kBlock;
    eachMcu(
        frame, options.restart,
        [&](int x, int y) {
            if (all) all->mcu(x, y, blocks);
            else transformer.mcu(x, y, blocks);
            for (std::size_t k = 0; k < owners.size(); ++k) writer.block(blocks[k], owners[k], tableOf(model, owners[k]));
        },
        [&](int number) {
            writer.finishInterval();
            out.marker(RST0 + (number & 7));
        });
    writer.finishInterval();
    out.marker(EOI);
    return out.take();
}

} // namespace jpeg
