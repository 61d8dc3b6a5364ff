// jpeg2000.cpp - JPEG2000 files and codestreams (ISO/IEC 15444-1).
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/jpeg2000.h"

#include "codecs/jpeg2000/channels.h"
#include "codecs/jpeg2000/codestream.h"
#include "wasm/src/format.h"

#include <algorithm>
#include <limits>

namespace web {
namespace {

namespace jpeg2000 = codecs::jpeg2000;

constexpr const char* kOrders[] = {"LRCP", "RLCP", "RPCL", "PCRL", "CPRL"}; // Table A.16

bool fits(ByteView file) {
    using namespace std::string_view_literals;
    return beginsWith(file, "\xFF\x4F\xFF\x51") || beginsWith(file, "\0\0\0\x0CjP  \r\n\x87\n"sv);
}

Info info(ByteView file) {
    const jpeg2000::Boxes boxes = jpeg2000::readBoxes(file);
    const jpeg2000::Codestream stream = jpeg2000::readMainHeader(boxes.codestream);
    const jpeg2000::ImageSize& size = stream.size;
    const jpeg2000::ChannelMap map = jpeg2000::channelsOf(boxes, size, -1);
    constexpr const char* colours[] = {"unknown", "grey", "rgb", "ycbcr", "cmyk"};
    Info info;
    info.width = std::int64_t(size.x1) - size.x0;
    info.height = std::int64_t(size.y1) - size.y0;
    const jpeg2000::Rect all{size.x0, size.y0, size.x1, size.y1};
    for (const jpeg2000::SizComponent& c : size.components) {
        const jpeg2000::Rect area = jpeg2000::componentRect(all, c);
        info.components.push_back({area.width(), area.height(), c.depth, c.isSigned, c.dx, c.dy});
    }
    info.colour = boxes.palette.entries.empty() ? colours[int(map.colour)] : "palette";
    info.alpha = map.alpha >= 0;
    info.mode = kOrders[int(stream.main.tile.progression)];
    info.levels = jpeg2000::kMaxLevels;
    info.lossless = true;
    for (const jpeg2000::CodingStyle& style : stream.main.coding) {
        info.levels = std::min(info.levels, style.levels);
        info.lossless = info.lossless && style.reversible;
    }
    info.layers = stream.main.tile.layers;
    if (size.tiles() > 1) info.tiles = Tiles{size.tileWidth, size.tileHeight, size.tilesAcross(), size.tilesDown()};
    info.metadata = boxes.metadata;
    info.warnings = boxes.warnings;
    info.text = jpeg2000::describe(file);
    return info;
}

Decoded decode(ByteView file, const Request& request) {
    jpeg2000::DecodeOptions options;
    options.reduce = request.reduce;
    options.layers = request.layers.value_or(0);
    options.component = request.component.value_or(-1);
    options.maxPixels = request.maxPixels;
    options.threads = 1;
    if (request.window)
        options.window = {request.window->x, request.window->y, request.window->width, request.window->height};
    codecs::MemorySource source(file);
    codecs::PictureSink sink;
    Decoded decoded;
    decoded.warnings = jpeg2000::decode(source, sink, options);
    decoded.damaged = !decoded.warnings.empty();
    decoded.picture = std::move(sink.picture);
    const jpeg2000::Boxes boxes = jpeg2000::readBoxes(file);
    const jpeg2000::ImageSize size = jpeg2000::readMainHeader(boxes.codestream).size;
    decoded.isSigned = jpeg2000::channelsOf(boxes, size, options.component).channels.at(0).isSigned;
    return decoded;
}

jpeg2000::Progression orderNamed(const std::string& name) {
    for (int i = 0; i < 5; ++i)
        if (name == kOrders[i]) return jpeg2000::Progression(i);
    throw codecs::Error("progression: no such order: " + name);
}

// Two numbers, or one that stands for both.
template <class T> void readSides(Options& o, const std::string& name, T& width, T& height) {
    const std::vector<double> sides = o.numbers(name);
    if (sides.empty()) return;
    for (const double side : sides)
        if (sides.size() > 2 || side != double(T(side)) || side < 0)
            throw codecs::Error(name + ": not one or two sizes");
    width = T(sides.front());
    height = T(sides.back());
}

Warnings encode(codecs::RowSource& rows, codecs::ByteSink& file, Options& o) {
    jpeg2000::EncodeOptions options;
    options.rates = o.numbers("rate");
    options.ratios = o.numbers("ratio");
    options.psnrs = o.numbers("psnr");
    // As the command has it: 0 stands for everything.
    for (double& rate : options.rates)
        if (rate == 0) rate = std::numeric_limits<double>::infinity();
    const int kinds = int(!options.rates.empty()) + int(!options.ratios.empty()) + int(!options.psnrs.empty());
    if (kinds > 1) throw codecs::Error("one of rate, ratio and psnr");
    options.reversible = o.flag("lossless", kinds == 0);
    options.levels = int(o.number("levels", 5, 0, 32));
    readSides(o, "tile", options.tileWidth, options.tileHeight);
    readSides(o, "block", options.blockWidth, options.blockHeight);
    options.progression = orderNamed(o.text("progression", "LRCP"));
    options.colourTransform = o.flag("colourTransform", true);
    options.jp2 = !o.flag("codestream");
    options.threads = 1;
    o.checkAllUsed("jpeg2000");
    return jpeg2000::encode(rows, file, options);
}

} // namespace

extern const Format kJpeg2000;
const Format kJpeg2000 = {"jpeg2000", fits, info, decode, encode};

} // namespace web
