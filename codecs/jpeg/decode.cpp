// decode.cpp - from a file to pixels. A sequential file whose first scan holds all components goes MCU by MCU
// straight to pixels; any other one collects the coefficients of all scans first. Lossless files have no
// coefficients.
#include "codecs/jpeg/blockreader.h"
#include "codecs/jpeg/collect.h"
#include "codecs/jpeg/lossless.h"
#include "codecs/jpeg/render.h"

namespace jpeg {

namespace {

class Decoding {
public:
    Decoding(const std::uint8_t* bytes, std::size_t n, const DecodeOptions& o, Picture& p)
        : data(bytes), size(n), options(o), picture(p), reader(bytes, n) {}

    void run() {
        if (options.scale != 1 && options.scale != 2 && options.scale != 4 && options.scale != 8)
            throw Error("the scale is 1/1, 1/2, 1/4 or 1/8");
        picture.warnings.clear();
        firstScan(reader);
        const Frame frame = reader.header().frame;
        checkFrame(frame, options.maxPixels);
        const bool packed = options.packing != Packing::none;
        picture.adobe = reader.header().adobe >= 0;
        if (frame.lossless()) {
            if (options.scale != 1) throw Error("a lossless file is decoded at its full size only");
            if (packed) throw Error("a lossless file has no packed pixels");
            decodeLossless(reader, data, size, picture);
            tell();
            return;
        }
        const Model model = modelOf(reader.header());
        picture.shape(divUp(frame.width, options.scale), divUp(frame.height, options.scale),
                      packed ? 1 : channelsOf(model), packed ? 16 : frame.precision);
        if (!frame.progressive() && reader.header().scan.components.size() == frame.components.size()) {
            straight(frame, model);
            tell();
        } else {
            const auto render = [&](CoefficientFile& file) { renderAll(file); };
            if (options.afterScan)
                collect(reader, data, size, picture.warnings, [&](CoefficientFile& file) { render(file), tell(); });
            else {
                CoefficientFile file = collect(reader, data, size, picture.warnings);
                render(file);
            }
        }
    }

private:
    void tell() {
        if (options.afterScan) options.afterScan(picture);
    }

    // MCU by MCU to pixels. The components of the scan may stand in another order than those of the frame.
    void straight(const Frame& frame, Model model) {
        const Header& h = reader.header();
        if (h.scan.first != 0 || h.scan.last != 63 || h.scan.high != 0 || h.scan.low != 0)
            fail(h.scanOffset, "a progressive scan in a sequential file");
        std::vector<DequantTable> tables;
        for (const Component& c : frame.components) tables.push_back(dequantTableOf(quantTableOf(h, c)));
        const auto renderer = makeRenderer(frame, model, tables, options, picture);
        alignas(32) Zmx16s coefficients[kMaxBlocks * kBlock];
        const Zmx16s* blocks[kMaxBlocks];
        for (int i = 0; i < kMaxBlocks; ++i) blocks[i] = coefficients + i * kBlock;
        Zmx16s* first[kMaxComponents] = {coefficients}; // of the blocks of each component
        for (std::size_t i = 1; i < frame.components.size(); ++i)
            first[i] = first[i - 1] + frame.components[i - 1].h * frame.components[i - 1].v * kBlock;
        BlockReader source(h, data, size);
        decodeScan(
            source, ScanLayout(frame, h.scan),
            [&](const ScanLayout::Part& p, int, int) { return first[p.component] + (p.y * p.h + p.x) * kBlock; },
            [&](int x, int y) { renderer->mcu(blocks, x, y); }, picture.warnings);
        renderer->finish();
        reader.seek(source.end());
        try {
            if (reader.nextScan()) picture.warnings.push_back("scans behind the last component are passed over");
        } catch (const Error& e) {
            picture.warnings.push_back(e.what());
        }
    }

    void renderAll(CoefficientFile& file) {
        std::vector<DequantTable> tables;
        for (const QuantTable& table : file.quant) tables.push_back(dequantTableOf(table));
        const auto renderer = makeRenderer(file.frame, file.model, tables, options, picture);
        Zmx16s* blocks[kMaxBlocks];
        for (int y = 0; y < file.frame.mcuRows(); ++y)
            for (int x = 0; x < file.frame.mcuColumns(); ++x) {
                file.blocks.mcu(x, y, blocks);
                renderer->mcu(blocks, x, y);
            }
        renderer->finish();
    }

    const std::uint8_t* data;
    std::size_t size;
    const DecodeOptions& options;
    Picture& picture;
    Reader reader;
};

} // namespace

void Picture::shape(int w, int h, int c, int bits) {
    width = w;
    height = h;
    channels = c;
    precision = bits;
    const std::size_t n = std::size_t(w) * std::size_t(h) * std::size_t(c);
    pixels.resize(bits == 8 ? n : 0);
    wide.resize(bits == 8 ? 0 : n);
}

void decode(const std::uint8_t* data, std::size_t size, const DecodeOptions& options, Picture& picture) {
    Decoding(data, size, options, picture).run();
}

Picture decode(const std::uint8_t* data, std::size_t size, const DecodeOptions& options) {
    Picture picture;
    decode(data, size, options, picture);
    return picture;
}

} // namespace jpeg
