// pnm.cpp - PBM, PGM, PPM and PAM files, plain and raw.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/formats.h"
#include "wasm/src/format.h"

namespace web {
namespace {

bool fits(ByteView file) { return file.size() > 2 && file[0] == 'P' && file[1] >= '1' && file[1] <= '7'; }

Info info(ByteView file) {
    Info info = rowsInfo(*codecs::openPnm(sourceOf(file), UINT64_MAX), "PNM");
    info.mode = {'P', char(file[1])};
    return info;
}

Decoded decode(ByteView file, const Request& request) {
    return decodeRows(codecs::openPnm(sourceOf(file), request.maxPixels), request);
}

// PAM holds what the others do not: alpha, and four channels.
Warnings encode(codecs::RowSource& rows, codecs::ByteSink& file, Options& o) {
    o.checkAllUsed("pnm");
    const codecs::Shape& shape = rows.shape();
    const bool plain = !shape.alpha && (shape.colour == codecs::Colour::grey || shape.colour == codecs::Colour::rgb);
    return writeContainer(rows,
                          codecs::createPnm(borrowed(file), plain ? codecs::Container::pnm : codecs::Container::pam));
}

} // namespace

extern const Format kPnm;
const Format kPnm = {"pnm", fits, info, decode, encode};

} // namespace web
