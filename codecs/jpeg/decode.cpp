// decode.cpp - from a file to pixels. A sequential file whose first scan holds all components goes MCU by MCU to pixels,
// a row of them at a time; any other one collects the coefficients of all scans first. Lossless files have no
// coefficients.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/blockreader.h"
#include "codecs/jpeg/collect.h"
#include "codecs/jpeg/decodescan.h"
#include "codecs/jpeg/inks.h"
#include "codecs/jpeg/interpret.h"
#include "codecs/jpeg/lossless.h"
#include "codecs/jpeg/metadata.h"
#include "codecs/jpeg/roads.h"

namespace codecs::jpeg {

namespace {

// The last row of MCUs of a reduced picture may hold none of its pixels.
void giveRow(DecodeRoad& road, RowSink& to) {
    const Band rows = road.unload();
    if (rows.rows > 0) to.write(rows);
}

class Decoding {
public:
    Decoding(ByteSource& file, const DecodeOptions& o) : options(o), reader(file) {
        if (options.scale != 1 && options.scale != 2 && options.scale != 4 && options.scale != 8)
            throw Error("the scale is 1/1, 1/2, 1/4 or 1/8");
        toFirstScan(reader, options.maxPixels);
    }

    Warnings run(RowSink& sink) {
        if (frame().lossless())
            lossless(sink);
        else if (isStraight())
            straight(sink);
        else
            collected(sink);
        return std::move(warnings);
    }

private:
    const Frame& frame() const { return reader.header().frame; }
    // All that the picture is comes in one scan.
    bool isStraight() const {
        return !frame().progressive() && reader.header().scan.components.size() == frame().components.size();
    }

    // A file of one scan: its picture is the one behind it.
    template <class Render> void single(RowSink& sink, Render render) const {
        if (!options.afterScan) return withInks(sink, render);
        PictureSink whole;
        withInks(whole, render);
        options.afterScan(whole.picture);
        writeRows(whole.picture, sink);
    }
    // Calls `render` with a sink that turns inks over where the file holds them so.
    template <class Render> void withInks(RowSink& sink, Render render) const {
        if (frame().components.size() != 4 || reader.header().adobe < 0) return render(sink);
        InkSink inks(sink);
        render(inks);
    }

    // Reduced sizes and packed words come of transforms and of colours; a lossless file has neither.
    void lossless(RowSink& sink) {
        if (options.scale != 1) throw Error("a lossless file is decoded at its full size only");
        if (options.packing != Packing::none) throw Error("a lossless file has no packed pixels");
        single(sink, [&](RowSink& to) { decodeLossless(reader, to, warnings); });
    }

    void straight(RowSink& sink) {
        single(sink, [&](RowSink& to) { decodeStraight(to); });
        // What stands behind the one scan that was wanted.
        try {
            if (reader.nextScan()) warnings.push_back("scans behind the last component are passed over");
        } catch (const Error& e) {
            warnings.push_back(e.what());
        }
    }

    // The components of the scan may stand in another order than those of the frame.
    void decodeStraight(RowSink& to) {
        const Header& h = reader.header();
        // Band and bits mean nothing in sequential files, but are fixed there (B.2.3).
        if (h.scan.first != 0 || h.scan.last != 63 || h.scan.high != 0 || h.scan.low != 0)
            fail(h.scanOffset, "a progressive scan in a sequential file");
        DequantTables tables;
        for (const Component& c : h.frame.components) tables.push_back(dequantTableOf(quantTableOf(h, c)));
        const auto road = makeDecodeRoad(h.frame, modelOf(h), tables, options);
        McuBlocks room;
        const auto blocks = room.pointers();
        Zmx16s* first[kMaxComponents] = {blocks[0]}; // of the blocks of each component
        for (std::size_t i = 1; i < h.frame.components.size(); ++i)
            first[i] = first[i - 1] + h.frame.components[i - 1].h * h.frame.components[i - 1].v * kBlock;
        BlockReader source(h, reader.data());
        const ScanLayout layout(h.frame, h.scan);
        to.begin(shape(modelOf(h)), metadataOf(h.application, warnings));
        decodeScan(
            source, layout,
            [&](const ScanLayout::Part& p, int, int) { return first[p.component] + (p.y * p.h + p.x) * kBlock; },
            [&](int x, int) {
                road->mcu(x, blocks.data());
                // Behind the last MCU of a row its pixels are there.
                if (x + 1 == layout.columns) giveRow(*road, to);
            },
            warnings);
        to.finish();
        source.finish();
    }

    // Scans that add to each other: the picture is made when all are there, and for those who watch behind each.
    void collected(RowSink& sink) {
        CoefficientFile file = collect(reader, warnings, [&](CoefficientFile& soFar) {
            // What is known so far is a picture of its own, without what travels beside it.
            if (!options.afterScan) return;
            PictureSink picture;
            withInks(picture, [&](RowSink& to) { render(soFar, {}, to); });
            options.afterScan(picture.picture);
        });
        // Segments between scans count as well; all of them are known by now.
        const Metadata metadata = metadataOf(file.application, warnings);
        withInks(sink, [&](RowSink& to) { render(file, metadata, to); });
    }

    // Pixels of coefficients, a row of MCUs at a time.
    void render(CoefficientFile& file, const Metadata& metadata, RowSink& to) const {
        DequantTables tables;
        for (const QuantTable& table : file.quant) tables.push_back(dequantTableOf(table));
        const auto road = makeDecodeRoad(file.frame, file.model, tables, options);
        to.begin(shape(file.model), metadata);
        Zmx16s* blocks[kMaxBlocks];
        for (int y = 0; y < file.frame.mcuRows(); ++y) {
            for (int x = 0; x < file.frame.mcuColumns(); ++x) {
                file.blocks.mcu(x, y, blocks);
                road->mcu(x, blocks);
            }
            giveRow(*road, to);
        }
        to.finish();
    }

    // Packed words are one channel of 16 bits.
    Shape shape(Model model) const {
        const bool packed = options.packing != Packing::none;
        return shapeFor(divUp(frame().width, options.scale), divUp(frame().height, options.scale),
                        packed ? 1 : channelsOf(model), packed ? 16 : frame().precision);
    }

    const DecodeOptions& options;
    SegmentReader reader;
    Warnings warnings;
};

} // namespace

Warnings decode(ByteSource& file, RowSink& picture, const DecodeOptions& options) {
    return Decoding(file, options).run(picture);
}

Decoded decode(ByteView file, const DecodeOptions& options) {
    MemorySource source(file);
    PictureSink sink;
    Warnings warnings = decode(source, sink, options);
    return {std::move(sink.picture), std::move(warnings)};
}

} // namespace codecs::jpeg
