// dds.cpp - DDS texture files.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/texture/texture.h"
#include "wasm/src/format.h"

namespace web {
namespace {

namespace texture = codecs::texture;

Info info(ByteView file) {
    codecs::MemorySource source(file);
    const texture::Texture t = texture::readHeader(source);
    Info info;
    info.width = t.width;
    info.height = t.height;
    const bool opaque = t.format == texture::Format::ycocgDxt5;
    info.components.assign(opaque ? 3 : 4, {t.width, t.height, 8, false, 1, 1});
    info.colour = "rgb";
    info.alpha = !opaque;
    info.mode = texture::nameOf(t.format);
    info.levels = t.levels - 1;
    info.layers = t.layers;
    info.text = texture::describe(t);
    return info;
}

Decoded decode(ByteView file, const Request& request) {
    codecs::MemorySource source(file);
    const texture::Texture t = texture::readHeader(source);
    codecs::checkSize(std::uint64_t(t.width), std::uint64_t(t.height), request.maxPixels);
    PartSink sink(request);
    texture::decode(source, t, sink, {request.layers.value_or(0), request.reduce});
    Decoded decoded;
    decoded.picture = std::move(sink.picture);
    return decoded;
}

Warnings encode(codecs::RowSource& rows, codecs::ByteSink& file, Options& o) {
    const std::string name = o.text("texture", rows.shape().alpha ? "dxt5" : "dxt1");
    const bool chain = o.flag("mips");
    o.checkAllUsed("dds");
    return texture::encode(rows, file, {texture::formatNamed(name), chain});
}

} // namespace

extern const Format kDds;
const Format kDds = {"dds", [](ByteView file) { return beginsWith(file, "DDS "); }, info, decode, encode};

} // namespace web
