// decode.cpp - a file to a picture: boxes, codestream, then tile by tile.
#include "codecs/jpeg2000/boxes.h"
#include "codecs/jpeg2000/tiledecoder.h"

namespace codecs::jpeg2000 {

namespace {

PlanarPicture decodeCodestream(ByteView file, const DecodeOptions& options) {
    Codestream stream = readCodestream(file, options.maxPixels);
    PlanarPicture picture = emptyPicture(stream.size, options.reduce);
    picture.warnings = std::move(stream.warnings);
    // What no tile fills is mid-grey.
    for (Component& c : picture.components)
        c.samples.assign(std::size_t(c.width) * std::size_t(c.height), c.isSigned ? 0 : 1 << (c.depth - 1));
    TileDecoder decoder(stream, options, picture);
    int missing = stream.size.tiles();
    for (const auto& [index, data] : stream.tiles) {
        try {
            decoder.decode(index, data);
            --missing;
        } catch (const Error& e) {
            picture.warnings.push_back("tile " + std::to_string(index) + ": " + e.what());
        }
    }
    if (missing == stream.size.tiles()) throw Error("no tile can be decoded");
    if (missing > 0) picture.warnings.push_back(std::to_string(missing) + " tiles are missing");
    return picture;
}

} // namespace

PlanarPicture decode(ByteView file, const DecodeOptions& options) {
    if (options.reduce < 0 || options.reduce > kMaxLevels || options.layers < 0)
        throw Error("no such resolution or layer");
    const Boxes boxes = readBoxes(file);
    PlanarPicture picture = decodeCodestream(boxes.codestream, options);
    applyBoxes(boxes, picture);
    return picture;
}

} // namespace codecs::jpeg2000
