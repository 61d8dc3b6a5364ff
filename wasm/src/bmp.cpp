// bmp.cpp - BMP files.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/formats.h"
#include "wasm/src/format.h"

namespace web {
namespace {

Info info(ByteView file) { return rowsInfo(*codecs::openBmp(sourceOf(file), UINT64_MAX), "BMP"); }

Decoded decode(ByteView file, const Request& request) {
    return decodeRows(codecs::openBmp(sourceOf(file), request.maxPixels), request);
}

Warnings encode(codecs::RowSource& rows, codecs::ByteSink& file, Options& o) {
    o.checkAllUsed("bmp");
    return writeContainer(rows, codecs::createBmp(borrowed(file)));
}

} // namespace

extern const Format kBmp;
const Format kBmp = {"bmp", [](ByteView file) { return beginsWith(file, "BM"); }, info, decode, encode};

} // namespace web
