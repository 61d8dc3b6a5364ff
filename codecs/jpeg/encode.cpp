// encode.cpp - from pixels to a file. A baseline file of one scan with the standard Huffman tables goes MCU by MCU
// straight into the file; every other one goes by way of its coefficients.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/blockwriter.h"
#include "codecs/jpeg/lossless.h"
#include "codecs/jpeg/metadata.h"
#include "codecs/jpeg/roads.h"
#include "codecs/jpeg/scanlayout.h"
#include "codecs/jpeg/scanwriter.h"
#include "codecs/jpeg/segmentwriter.h"
#include "codecs/jpeg/standard.h"
#include "codecs/jpeg/units.h"
#include "codecs/picture/convert.h"

namespace codecs::jpeg {

namespace {

// Colours as the file stores them: chroma apart, unless someone wants them as they are.
Model modelFor(int channels, const EncodeOptions& options) {
    switch (channels) {
    case 1:
        return Model::grey;
    case 3:
        return options.rgb ? Model::rgb : Model::yCbCr;
    case 4:
        return options.ycck ? Model::ycck : Model::cmyk;
    default:
        throw Error("a picture of " + std::to_string(channels) + " channels; supported are 1, 3 and 4");
    }
}

// Sampling factors that a user has given.
// Those that are not given are 1x1.
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

// The frame header to be. With one quantisation table or two, luma has the first and chroma the second; more are one for
// each component.
Frame frameFor(const Shape& shape, Model model, std::size_t tables, const EncodeOptions& options) {
    Frame frame;
    frame.width = shape.width;
    frame.height = shape.height;
    // The DCT modes have samples of 8 and of 12 bits (B.2.2).
    frame.precision = shape.wide() ? 12 : 8;
    // Only chroma is sampled by itself: of RGB and CMYK every component is sharp.
    const bool chroma = isChroma(model, 1);
    frame.components = !options.factors.empty()
                           ? componentsWith(options.factors, model)
                           : componentsOf(model, chroma && options.sampling != Sampling::s444 ? 2 : 1,
                                          chroma && options.sampling == Sampling::s420 ? 2 : 1);
    for (int i = 0; i < int(frame.components.size()); ++i)
        frame.components[std::size_t(i)].quant = tables > 2 ? i : isChroma(model, i);
    frame.setMaxima();
    return frame;
}

// The divisors of each table of a file. One given table stands for luma alone.
Quantisers quantisersFor(const Shape& shape, Model model, const EncodeOptions& options) {
    std::vector<QuantTable> tables{kLumaQuant, kChromaQuant};
    if (!options.tables.empty()) {
        std::vector<QuantTable> given = parseTables(options.tables);
        if (given.size() == 1) given.push_back(kChromaQuant);
        if (given.size() > 2 && int(given.size()) != channelsOf(model))
            throw Error(std::to_string(given.size()) + " quantisation tables, but the picture has " +
                        std::to_string(channelsOf(model)) + " components");
        tables = std::move(given);
    }
    Quantisers out;
    for (const QuantTable& t : tables) out.emplace_back(scaledTable(t, options.quality, shape.wide() ? 12 : 8));
    return out;
}

// What tells a decoder how the components make a colour, and what else travels with the picture. JFIF is for grey and
// YCbCr; for CMYK it means nothing, and is there when a resolution has to be told.
void writeApplication(Output& out, Model model, const Metadata& metadata, Warnings& warnings) {
    const bool inks = channelsOf(model) == 4;
    const bool jfif = model == Model::grey || model == Model::yCbCr || (inks && metadata.resolution);
    writeMetadata(out, metadata, jfif, warnings);
    if (inks || model == Model::rgb) writeAdobe(out, model == Model::ycck ? 2 : 0);
}

class Encoding {
public:
    Encoding(RowSource& p, const EncodeOptions& o)
        : picture(p), options(o), model(modelFor(p.shape().channels, o)),
          quantisers(quantisersFor(p.shape(), model, o)), frame(frameFor(p.shape(), model, quantisers.size(), o)),
          road(makeEncodeRoad(frame, model, quantisers, options)) {}

    Warnings run(ByteSink& file) {
        const bool scripted = options.progressive || !options.scans.empty();
        // The standard tables have no codes for 12-bit coefficients, and a second scan would need the picture again.
        if (!scripted && !options.optimize && frame.precision == 8 && sequentialScript(frame, model).size() == 1)
            straight(file);
        else
            collected(file);
        return std::move(warnings);
    }

private:
    // Baseline, in one scan, with the standard tables, which hold whatever may come: nothing needs to be known ahead.
    void straight(ByteSink& file) {
        const int used = isChroma(model, 1) ? 2 : 1; // tables of each kind
        const BlockWriter::Tables dc{&kLumaDc, used > 1 ? &kChromaDc : nullptr},
            ac{&kLumaAc, used > 1 ? &kChromaAc : nullptr};
        Output out(file);
        out.marker(SOI);
        writeApplication(out, model, picture.metadata(), warnings);
        const int tables = quantisers.size() > 2 ? int(quantisers.size()) : used;
        for (int t = 0; t < tables; ++t) writeQuantTable(out, t, quantisers[std::size_t(t)].table);
        writeFrame(out, frame);
        for (int t = 0; t < used; ++t) {
            writeHuffmanTable(out, TableClass::dc, t, *dc[std::size_t(t)]);
            writeHuffmanTable(out, TableClass::ac, t, *ac[std::size_t(t)]);
        }
        if (options.restart) writeRestartInterval(out, options.restart);
        const Scan scan = sequentialScript(frame, model)[0];
        writeScan(out, frame, scan);
        BlockWriter writer(out, dc, ac);
        writeBlocks(out, writer, ScanLayout(frame, scan));
        out.marker(EOI);
        out.flush();
    }

    // Row by row: pixels, blocks, bits.
    void writeBlocks(Output& out, BlockWriter& writer, const ScanLayout& layout) {
        McuBlocks room;
        const auto blocks = room.pointers();
        int restarts = 0;
        eachMcu(
            layout.columns, layout.rows, options.restart,
            [&](int x, int y) {
                if (x == 0) loadRow();
                road->mcu(x, blocks.data());
                for (std::size_t k = 0; k < layout.mcu.size(); ++k) {
                    const ScanLayout::Part& p = layout.mcu[k];
                    const int table = isChroma(model, p.component);
                    // A block beyond the edge shows nothing, and is coded as cheaply as can be (A.2.4 leaves it open).
                    if (p.inPicture(x, y))
                        writer.block(blocks[k], p.component, table);
                    else
                        writer.padding(p.component, table);
                }
            },
            [&] {
                writer.finishInterval();
                out.marker(RST0 + (restarts++ & 7));
            });
        writer.finishInterval();
    }

    // The pixels of a row of MCUs. A source that runs dry would leave us with those of the row before.
    void loadRow() {
        const Band band = picture.next(8 * frame.vMax);
        if (band.rows < 1) throw Error("the picture has fewer rows than it says");
        road->load(band);
    }

    // By way of the coefficients of the whole picture, which are gone through once to count and once to write.
    void collected(ByteSink& file) {
        CoefficientFile whole(frame);
        whole.model = model;
        whole.restart = options.restart;
        // Components name tables here; coefficients come with a table each.
        for (std::size_t i = 0; i < frame.components.size(); ++i)
            whole.quant[i] = quantisers[std::size_t(frame.components[i].quant)].table;
        MemorySink application;
        Output segments(application);
        writeApplication(segments, model, picture.metadata(), warnings);
        segments.flush();
        whole.application = std::move(application.bytes);
        Zmx16s* blocks[kMaxBlocks];
        for (int y = 0; y < frame.mcuRows(); ++y) {
            loadRow();
            for (int x = 0; x < frame.mcuColumns(); ++x) {
                whole.blocks.mcu(x, y, blocks);
                road->mcu(x, blocks);
            }
        }
        whole.blocks.fillPadding();
        writeFile(whole, scriptFor(whole, options.scans, options.progressive), file);
    }

    RowSource& picture;
    const EncodeOptions& options;
    const Model model;
    const Quantisers quantisers;
    const Frame frame;
    const std::unique_ptr<EncodeRoad> road;
    Warnings warnings;
};

// What stands in the file: CMYK turned over already.
Warnings encodeStored(RowSource& picture, ByteSink& file, const EncodeOptions& options) {
    const Shape& shape = picture.shape();
    if (shape.width < 1 || shape.width > 65535 || shape.height < 1 || shape.height > 65535)
        throw Error("a picture of " + std::to_string(shape.width) + " by " + std::to_string(shape.height) +
                    "; a JPEG file holds 1 to 65535 a side");
    if (options.quality < 1 || options.quality > 100) throw Error("the quality is 1 to 100");
    if (options.restart < 0 || options.restart > 65535) throw Error("a restart interval is 0 to 65535 MCUs");
    if (options.lossless) return encodeLossless(picture, file, options);
    if (shape.maxval != 255 && shape.maxval != 4095)
        throw Error("samples up to " + std::to_string(shape.maxval) + "; the DCT modes have 8 and 12 bits");
    return Encoding(picture, options).run(file);
}

} // namespace

Warnings encode(RowSource& picture, ByteSink& file, const EncodeOptions& options) {
    const Shape& shape = picture.shape();
    if (shape.alpha) throw Error("a picture with alpha, which a JPEG file does not hold");
    if (shape.colour == Colour::other && !options.lossless)
        throw Error("a picture of " + std::to_string(shape.channels) +
                    " channels that are neither grey, RGB nor CMYK: only lossless files hold such");
    // Adobe's programs store CMYK inverted, and so does everyone else.
    if (shape.colour != Colour::cmyk) return encodeStored(picture, file, options);
    const Rows inks = inverted(borrowed(picture));
    return encodeStored(*inks, file, options);
}

Bytes encode(const Picture& picture, const EncodeOptions& options) {
    return encodedInMemory(picture, [&](RowSource& rows, ByteSink& file) { encode(rows, file, options); });
}

} // namespace codecs::jpeg
