// png.cpp - PNG files.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/formats.h"
#include "wasm/src/format.h"

namespace web {
namespace {

Info info(ByteView file) { return rowsInfo(*codecs::openPng(sourceOf(file), UINT64_MAX), "PNG"); }

Decoded decode(ByteView file, const Request& request) {
    return decodeRows(codecs::openPng(sourceOf(file), request.maxPixels), request);
}

Warnings encode(codecs::RowSource& rows, codecs::ByteSink& file, Options& o) {
    o.checkAllUsed("png");
    return writeContainer(rows, codecs::createPng(borrowed(file)));
}

} // namespace

extern const Format kPng;
const Format kPng = {"png", [](ByteView file) { return beginsWith(file, "\x89PNG"); }, info, decode, encode};

} // namespace web
