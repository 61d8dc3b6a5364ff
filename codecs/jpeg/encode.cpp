// encode.cpp - from pixels to a file. A baseline file of one scan with the standard Huffman tables goes MCU
// by MCU straight into the file; every other one goes by way of its coefficients.
#include "codecs/jpeg/lossless.h"
#include "codecs/jpeg/scanlayout.h"
#include "codecs/jpeg/scanwriter.h"
#include "codecs/jpeg/standard.h"
#include "codecs/jpeg/transform.h"
#include "codecs/jpeg/units.h"
#include "codecs/jpeg/writer.h"

namespace jpeg {

namespace {

Model modelFor(int channels, const EncodeOptions& options) {
    switch (channels) {
    case 1:
        return Model::Grey;
    case 3:
        return options.rgb ? Model::Rgb : Model::YCbCr;
    case 4:
        return options.ycck ? Model::Ycck : Model::Cmyk;
    default:
        throw Error("a picture of " + std::to_string(channels) + " channels; supported are 1, 3 and 4");
    }
}

// Sampling factors that a user has given.
std::vector<Component> componentsWith(const std::vector<Factors>& factors, Model model) {
    std::vector<Component> components = componentsOf(model, 1, 1);
    if (factors.size() > components.size()) throw Error("sampling factors of more components than the picture has");
    for (std::size_t i = 0; i < factors.size(); ++i) {
        const Factors& f = factors[i];
        if (f.h < 1 || f.h > kMaxFactor || f.v < 1 || f.v > kMaxFactor)
            throw Error("sampling factors are 1 to 4, not " + std::to_string(f.h) + "x" + std::to_string(f.v));
        components[i].h = f.h;
        components[i].v = f.v;
    }
    if (components.size() == 1) components[0].h = components[0].v = 1; // one component is not sampled (A.2.2)
    return components;
}

Frame frameFor(int width, int height, int precision, Model model, const EncodeOptions& options) {
    Frame frame;
    frame.width = width;
    frame.height = height;
    frame.precision = precision;
    const bool chroma = isChroma(model, 1);
    frame.components = !options.factors.empty()
                           ? componentsWith(options.factors, model)
                           : componentsOf(model, chroma && options.sampling != Sampling::s444 ? 2 : 1,
                                          chroma && options.sampling == Sampling::s420 ? 2 : 1);
    for (int i = 0; i < int(frame.components.size()); ++i) frame.components[std::size_t(i)].quant = isChroma(model, i);
    frame.setMaxima();
    return frame;
}

Road roadFor(const EncodeOptions& options) {
    return options.fast ? Road::units : options.dct == Dct::integer ? Road::integer : Road::single;
}

void writeApplication(Output& out, Model model) {
    switch (model) {
    case Model::Grey:
    case Model::YCbCr:
        return writeJfif(out);
    case Model::Ycck:
        return writeAdobe(out, 2);
    default:
        return writeAdobe(out, 0);
    }
}

// Baseline, in one scan, with the standard tables.
std::vector<std::uint8_t> encodeStraight(const Frame& frame, Model model, Transformer& transformer,
                                         const Quantiser (&quantisers)[2], int restart) {
    const int used = isChroma(model, 1) ? 2 : 1; // tables of each kind
    const HuffmanTable* const dc[2] = {&kLumaDc, used > 1 ? &kChromaDc : nullptr};
    const HuffmanTable* const ac[2] = {&kLumaAc, used > 1 ? &kChromaAc : nullptr};
    Output out;
    out.reserve(1024 + std::size_t(frame.width) * std::size_t(frame.height) / 4);
    out.marker(SOI);
    writeApplication(out, model);
    for (int t = 0; t < used; ++t) writeQuantTable(out, t, quantisers[t].table());
    writeFrame(out, frame);
    for (int t = 0; t < used; ++t) {
        writeHuffmanTable(out, 0, t, *dc[t]);
        writeHuffmanTable(out, 1, t, *ac[t]);
    }
    if (restart) writeRestartInterval(out, restart);
    const Scan scan = sequentialScript(frame, model)[0];
    writeScan(out, frame, scan);

    const ScanLayout layout(frame, scan);
    BlockWriter writer(out, dc, ac);
    alignas(32) Zmx16s coefficients[kMaxBlocks * kBlock];
    Zmx16s* blocks[kMaxBlocks];
    for (int i = 0; i < kMaxBlocks; ++i) blocks[i] = coefficients + i * kBlock;
    int restarts = 0;
    eachMcu(
        layout.columns, layout.rows, restart,
        [&](int x, int y) {
            transformer.mcu(x, y, blocks);
            for (std::size_t k = 0; k < layout.mcu.size(); ++k)
                writer.block(blocks[k], layout.mcu[k].component, isChroma(model, layout.mcu[k].component));
        },
        [&] {
            writer.finishInterval();
            out.marker(RST0 + (restarts++ & 7));
        });
    writer.finishInterval();
    out.marker(EOI);
    return out.take();
}

template <class Sample>
std::vector<std::uint8_t> encodeSamples(const Sample* pixels, int width, int height, int channels, int precision,
                                        const EncodeOptions& options) {
    if (width < 1 || width > 65535 || height < 1 || height > 65535)
        throw Error("a picture of " + std::to_string(width) + " by " + std::to_string(height) +
                    "; a JPEG file holds 1 to 65535 a side");
    if (options.quality < 1 || options.quality > 100) throw Error("the quality is 1 to 100");
    if (options.restart < 0 || options.restart > 65535) throw Error("a restart interval is 0 to 65535 MCUs");
    if (options.lossless) return encodeLossless(pixels, width, height, channels, precision, options);
    if (precision != (sizeof(Sample) == 1 ? 8 : 12))
        throw Error(std::to_string(precision) + "-bit samples; the DCT modes have 8 and 12 bits");

    const Model model = modelFor(channels, options);
    const Frame frame = frameFor(width, height, precision, model, options);
    const Quantiser quantisers[2] = {{kLumaQuant, options.quality}, {kChromaQuant, options.quality}};
    const bool scripted = options.progressive || !options.scans.empty();
    const auto transformer = makeTransformer(pixels, frame, model, quantisers, roadFor(options));
    if (!scripted && !options.optimize && precision == 8 && sequentialScript(frame, model).size() == 1)
        return encodeStraight(frame, model, *transformer, quantisers, options.restart);

    CoefficientFile file(frame);
    file.model = model;
    file.restart = options.restart;
    for (std::size_t i = 0; i < frame.components.size(); ++i)
        file.quant[i] = quantisers[frame.components[i].quant].table();
    Output application;
    writeApplication(application, model);
    file.application = application.take();
    Zmx16s* blocks[kMaxBlocks];
    eachMcu(
        frame.mcuColumns(), frame.mcuRows(), 0,
        [&](int x, int y) {
            file.blocks.mcu(x, y, blocks);
            transformer->mcu(x, y, blocks);
        },
        [] {});
    file.blocks.fillPadding();
    return writeFile(file, scriptFor(file, options.scans, options.progressive));
}

} // namespace

std::vector<std::uint8_t> encode(const std::uint8_t* pixels, int width, int height, int channels,
                                 const EncodeOptions& options) {
    return encodeSamples(pixels, width, height, channels, 8, options);
}

std::vector<std::uint8_t> encode(const std::uint16_t* pixels, int width, int height, int channels, int precision,
                                 const EncodeOptions& options) {
    return encodeSamples(pixels, width, height, channels, precision, options);
}

} // namespace jpeg
