// front.cpp - the calls of JavaScript: bytes and options in, an answer out. Nothing is thrown across this border.
//
// The answer of the last call stays until the next one, or until zmx_web_release(). Its first word says whether the call failed;
// then its text is the message, and else JSON. Behind them stand bytes: the samples or the file, colour profile, EXIF and XMP.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"
#include "codecs/picture/orientation.h"
#include "wasm/src/answer.h"
#include "wasm/src/format.h"
#include "wasm/src/json.h"
#include "wasm/src/source.h"

#include <bit>
#include <cstdlib>

namespace web {
namespace {

const Format& formatOf(ByteView file) {
    for (const Format* format : kFormats)
        if (format->fits(file)) return *format;
    throw codecs::Error("a file of no kind that is known here");
}

const Format& formatNamed(const std::string& name) {
    for (const Format* format : kFormats)
        if (format->name == name && format->encode) return *format;
    throw codecs::Error("format: such files are not written: " + name);
}

void addResolution(Json& json, const codecs::Metadata& metadata) {
    if (!metadata.resolution) return;
    constexpr const char* units[] = {"none", "inch", "centimetre", "metre"};
    Json resolution;
    resolution.addReal("x", metadata.resolution->x);
    resolution.addReal("y", metadata.resolution->y);
    resolution.addText("unit", units[int(metadata.resolution->unit)]);
    json.addRaw("resolution", resolution.text());
}

std::string componentsText(const Info& info) {
    std::vector<std::string> components;
    for (const ComponentInfo& c : info.components) {
        Json json;
        json.add("width", c.width);
        json.add("height", c.height);
        json.add("bits", c.bits);
        json.addFlag("signed", c.isSigned);
        json.add("dx", c.dx);
        json.add("dy", c.dy);
        components.push_back(json.text());
    }
    return listed(components);
}

std::string tilesText(const std::optional<Tiles>& tiles) {
    if (!tiles) return "null";
    Json json;
    json.add("width", tiles->width);
    json.add("height", tiles->height);
    json.add("across", tiles->across);
    json.add("down", tiles->down);
    return json.text();
}

std::string infoText(const Format& format, const Info& info) {
    Json json;
    json.addText("format", format.name);
    json.add("width", info.width);
    json.add("height", info.height);
    json.addRaw("components", componentsText(info));
    json.addText("colour", info.colour);
    json.addFlag("alpha", info.alpha);
    json.add("levels", info.levels);
    json.add("layers", info.layers);
    json.addRaw("tiles", tilesText(info.tiles));
    json.addFlag("progressive", info.progressive);
    json.addFlag("lossless", info.lossless);
    json.addText("mode", info.mode);
    json.addText("text", info.text);
    json.add("icc", std::int64_t(info.metadata.icc.size()));
    json.add("exif", std::int64_t(info.metadata.exif.size()));
    json.add("xmp", std::int64_t(info.metadata.xmp.size()));
    if (info.metadata.resolution)
        addResolution(json, info.metadata);
    else
        json.addRaw("resolution", "null");
    json.add("orientation", codecs::orientationOf(info.metadata));
    json.addTexts("warnings", info.warnings);
    return json.text();
}

std::string pictureText(const Decoded& decoded) {
    const codecs::Shape& s = decoded.picture.shape();
    constexpr const char* colours[] = {"grey", "rgb", "cmyk", "other"};
    Json json;
    json.add("width", s.width);
    json.add("height", s.height);
    json.add("channels", s.channels);
    json.add("bits", std::bit_width(unsigned(s.maxval)));
    json.addFlag("signed", decoded.isSigned);
    json.addText("colour", std::string(colours[int(s.colour)]) + (s.alpha ? "a" : ""));
    addResolution(json, decoded.picture.metadata);
    json.add("orientation", codecs::orientationOf(decoded.picture.metadata));
    json.addTexts("warnings", decoded.warnings);
    json.addFlag("damaged", decoded.damaged);
    return json.text();
}

Answer decode(ByteView file, Options& options) {
    const Request request(options);
    const bool strict = options.flag("strict") || !options.flag("damage", true);
    options.checkAllUsed("decode");
    Decoded decoded = formatOf(file).decode(file, request);
    // The first warning decides: what comes behind it may follow from it.
    if (strict && !decoded.warnings.empty()) throw codecs::Error(decoded.warnings.front());
    Answer answer;
    answer.text = pictureText(decoded);
    answer.picture = std::move(decoded.picture);
    return answer;
}

Answer encode(const std::uint8_t* samples, std::size_t size, Options& options) {
    ViewSource rows(samples, size, options);
    const Format& format = formatNamed(options.text("format"));
    codecs::MemorySink sink;
    const Warnings warnings = format.encode(rows, sink, options);
    Json json;
    json.addTexts("warnings", warnings);
    Answer answer;
    answer.text = json.text();
    answer.file = std::move(sink.bytes);
    return answer;
}

// A turn to the right by so many degrees, and a mirror behind it.
codecs::Turn turnOf(std::int64_t degrees, const std::string& flip) {
    using codecs::Turn;
    static constexpr Turn turns[3][4] = {{Turn::none, Turn::quarter, Turn::half, Turn::threeQuarters},
                                         {Turn::mirror, Turn::transpose, Turn::flip, Turn::transverse},
                                         {Turn::flip, Turn::transverse, Turn::mirror, Turn::transpose}};
    if (degrees % 90 != 0) throw codecs::Error("rotate: 0, 90, 180 or 270, not " + std::to_string(degrees));
    if (flip != "" && flip != "horizontal" && flip != "vertical")
        throw codecs::Error("flip: horizontal or vertical, not " + flip);
    return turns[flip.empty() ? 0 : flip == "horizontal" ? 1 : 2][degrees / 90];
}

Answer transcode(ByteView file, Options& o) {
    namespace jpeg = codecs::jpeg;
    jpeg::TranscodeOptions options;
    options.progressive = o.flag("progressive");
    options.restart = int(o.number("restart", -1, -1, 65535));
    options.upright = o.flag("orient");
    if (options.upright && (o.has("rotate") || o.has("flip"))) throw codecs::Error("orient, or rotate and flip");
    const std::int64_t degrees = o.number("rotate", 0, 0, 270);
    options.turn = turnOf(degrees, o.text("flip"));
    options.trim = o.flag("trim");
    options.grey = o.flag("grey");
    options.strip = o.flag("strip");
    options.maxPixels = std::uint64_t(o.number("maxPixels", std::int64_t(1) << 28, 1, std::int64_t(1) << 40));
    if (const auto part = o.tuple("crop", 4)) {
        for (const std::int64_t n : *part)
            if (n < 0 || n > 65535) throw codecs::Error("crop: not a part of a picture");
        options.part = jpeg::Part{int((*part)[0]), int((*part)[1]), int((*part)[2]), int((*part)[3])};
    }
    o.checkAllUsed("transcode");
    jpeg::Transcoded result = jpeg::transcode(file, options);
    // This cannot happen; a file that is taken for lossless must not rest on that.
    if (result.before != result.after) throw codecs::Error("the coefficients have changed");
    Json json;
    json.addTexts("warnings", result.warnings);
    Answer answer;
    answer.text = json.text();
    answer.file = std::move(result.file);
    return answer;
}

} // namespace
} // namespace web

extern "C" {

using web::Answer;

const std::uint32_t* zmx_web_info(const std::uint8_t* bytes, std::size_t size) {
    return web::answered([&] {
        const web::Format& format = web::formatOf({bytes, size});
        Answer answer;
        answer.text = web::infoText(format, format.info({bytes, size}));
        return answer;
    });
}

const std::uint32_t* zmx_web_decode(const std::uint8_t* bytes, std::size_t size, const char* lines,
                                    std::size_t length) {
    return web::answered([&] {
        web::Options options({lines, length});
        return web::decode({bytes, size}, options);
    });
}

const std::uint32_t* zmx_web_encode(const std::uint8_t* samples, std::size_t size, const char* lines,
                                    std::size_t length) {
    return web::answered([&] {
        web::Options options({lines, length});
        return web::encode(samples, size, options);
    });
}

const std::uint32_t* zmx_web_transcode(const std::uint8_t* bytes, std::size_t size, const char* lines,
                                       std::size_t length) {
    return web::answered([&] {
        web::Options options({lines, length});
        return web::transcode({bytes, size}, options);
    });
}

void zmx_web_release() { web::release(); }

} // extern "C"
