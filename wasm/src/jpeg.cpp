// jpeg.cpp - JPEG files (ITU-T T.81).
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/jpeg.h"

#include "codecs/jpeg/interpret.h"
#include "codecs/jpeg/metadata.h"
#include "wasm/src/format.h"

namespace web {
namespace {

namespace jpeg = codecs::jpeg;

// By the frame header (Table B.1).
const char* modeOf(const jpeg::Frame& frame) {
    if (frame.lossless()) return "lossless";
    if (frame.progressive()) return "progressive";
    return frame.sof == jpeg::SOF0 ? "baseline" : "extended";
}

Info info(ByteView file) {
    codecs::MemorySource source(file);
    jpeg::SegmentReader reader(source);
    jpeg::toFirstScan(reader, UINT64_MAX);
    const jpeg::Frame& frame = reader.header().frame;
    constexpr const char* models[] = {"grey", "ycbcr", "rgb", "ycck", "cmyk"};
    Info info;
    info.width = frame.width;
    info.height = frame.height;
    for (const jpeg::Component& c : frame.components)
        info.components.push_back({jpeg::divUp(frame.width * c.h, frame.hMax),
                                   jpeg::divUp(frame.height * c.v, frame.vMax), frame.precision, false,
                                   frame.hMax / c.h, frame.vMax / c.v});
    info.colour = models[int(jpeg::modelOf(reader.header()))];
    info.mode = modeOf(frame);
    info.progressive = frame.progressive();
    info.lossless = frame.lossless();
    info.levels = frame.lossless() ? 0 : 3; // blocks of 4x4, 2x2 and 1
    info.metadata = jpeg::metadataOf(reader.header().application, info.warnings);
    jpeg::Warnings trouble;
    info.text = jpeg::describe(file, &trouble);
    info.warnings.insert(info.warnings.end(), trouble.begin(), trouble.end());
    return info;
}

Decoded decode(ByteView file, const Request& request) {
    if (request.layers) throw codecs::Error("layers: JPEG files have none");
    if (request.reduce > 3) throw codecs::Error("reduce: JPEG files are halved three times at the most");
    jpeg::DecodeOptions options;
    options.scale = 1 << request.reduce;
    options.maxPixels = request.maxPixels;
    codecs::MemorySource source(file);
    PartSink sink(request);
    Decoded decoded;
    decoded.warnings = jpeg::decode(source, sink, options);
    decoded.damaged = !decoded.warnings.empty();
    decoded.picture = std::move(sink.picture);
    return decoded;
}

Warnings encode(codecs::RowSource& rows, codecs::ByteSink& file, Options& o) {
    jpeg::EncodeOptions options;
    options.quality = int(o.number("quality", 75, 1, 100));
    const std::string sampling = o.text("sampling", "420");
    if (sampling != "444" && sampling != "422" && sampling != "420")
        throw codecs::Error("sampling: 444, 422 or 420, not " + sampling);
    options.sampling = sampling == "444"   ? jpeg::Sampling::s444
                       : sampling == "422" ? jpeg::Sampling::s422
                                           : jpeg::Sampling::s420;
    options.optimize = o.flag("optimize");
    options.progressive = o.flag("progressive");
    options.fast = o.flag("fast");
    options.restart = int(o.number("restart", 0, 0, 65535));
    options.lossless = int(o.number("lossless", 0, 0, 7));
    options.pointTransform = int(o.number("pointTransform", 0, 0, 15));
    options.rgb = o.flag("rgb");
    options.ycck = o.flag("ycck");
    o.checkAllUsed("jpeg");
    return jpeg::encode(rows, file, options);
}

} // namespace

extern const Format kJpeg;
const Format kJpeg = {"jpeg", [](ByteView file) { return beginsWith(file, "\xFF\xD8"); }, info, decode, encode};

} // namespace web
