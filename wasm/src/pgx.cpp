// pgx.cpp - PGX files: one component of JPEG2000's test pictures (ISO/IEC 15444-4, B.2).
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/pgx.h"

#include "wasm/src/format.h"

namespace web {
namespace {

namespace jpeg2000 = codecs::jpeg2000;

Info info(ByteView file) {
    const jpeg2000::Component c = jpeg2000::readPgx(file);
    Info info;
    info.width = c.width;
    info.height = c.height;
    info.components.push_back({c.width, c.height, c.depth, c.isSigned, 1, 1});
    info.colour = "grey";
    info.lossless = true;
    info.text = "PGX, " + std::to_string(c.width) + " x " + std::to_string(c.height) + ", " + std::to_string(c.depth) +
                (c.isSigned ? " bits, signed\n" : " bits\n");
    return info;
}

// Signed samples are moved up, as those of JPEG2000 are.
codecs::Picture pictureOf(const jpeg2000::Component& c) {
    codecs::Picture picture(codecs::shapeOf(c.width, c.height, 1, (1 << c.depth) - 1));
    std::size_t at = 0;
    for (int y = 0; y < c.height; ++y)
        for (int x = 0; x < c.width; ++x) picture.set(x, y, unsigned(c.samples[at++] - c.smallest()));
    return picture;
}

Decoded decode(ByteView file, const Request& request) {
    const jpeg2000::Component c = jpeg2000::readPgx(file);
    codecs::checkSize(std::uint64_t(c.width), std::uint64_t(c.height), request.maxPixels);
    const codecs::Picture picture = pictureOf(c);
    Decoded decoded = decodeRows(std::make_unique<codecs::PictureSource>(picture), request);
    decoded.isSigned = c.isSigned;
    return decoded;
}

} // namespace

extern const Format kPgx;
const Format kPgx = {"pgx", [](ByteView file) { return beginsWith(file, "PG "); }, info, decode, nullptr};

} // namespace web
