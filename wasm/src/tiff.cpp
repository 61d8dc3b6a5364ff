// tiff.cpp - TIFF files: PackBits by the library's own rows, all else by libtiff.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/tiff/tiff.h"

#include "codecs/picture/formats.h"
#include "codecs/picture/tifflayout.h"
#include "wasm/src/format.h"

namespace web {
namespace {

bool fits(ByteView file) { return beginsWith(file, "II") || beginsWith(file, "MM"); }

int compressionOf(const codecs::TiffFile& file) {
    return file.tag<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
}

codecs::Rows open(ByteView file, std::uint64_t maxPixels) {
    codecs::MemorySource source(file);
    const int compression = compressionOf(codecs::TiffFile(source));
    if (compression == codecs::tiff::kPackBits || compression == codecs::tiff::kSplitPackBits)
        return codecs::tiff::open(sourceOf(file), maxPixels);
    return codecs::openTiff(sourceOf(file), maxPixels);
}

std::string nameOf(int compression) {
    switch (compression) {
    case COMPRESSION_NONE:
        return "not compressed";
    case COMPRESSION_CCITTRLE:
    case COMPRESSION_CCITTRLEW:
        return "CCITT Huffman";
    case COMPRESSION_CCITTFAX3:
        return "CCITT Group 3";
    case COMPRESSION_CCITTFAX4:
        return "CCITT Group 4";
    case COMPRESSION_LZW:
        return "LZW";
    case COMPRESSION_ADOBE_DEFLATE:
    case COMPRESSION_DEFLATE:
        return "Deflate";
    case codecs::tiff::kPackBits:
        return "PackBits";
    case codecs::tiff::kSplitPackBits:
        return "PackBits in split rows";
    default:
        return "compression " + std::to_string(compression);
    }
}

Info info(ByteView file) {
    codecs::MemorySource source(file);
    const codecs::TiffFile tiff(source);
    const codecs::TiffLayout layout = codecs::layoutOf(tiff, UINT64_MAX);
    Info info = rowsInfo(*open(file, UINT64_MAX), "TIFF");
    info.mode = nameOf(compressionOf(tiff));
    if (layout.colour == codecs::TiffColour::palette) info.colour = "palette";
    if (layout.tiled) {
        const std::int64_t width = layout.pieceWidth, height = layout.pieceHeight;
        info.tiles = Tiles{width, height, (info.width + width - 1) / width, (info.height + height - 1) / height};
    }
    info.text += info.mode + (layout.tiled ? ", tiles of " : ", strips of ") + std::to_string(layout.pieceWidth) +
                 " x " + std::to_string(layout.pieceHeight) + (layout.planar ? ", channels apart\n" : "\n");
    return info;
}

Decoded decode(ByteView file, const Request& request) {
    if (request.layers) throw codecs::Error("layers: TIFF files have none");
    return decodeRows(open(file, request.maxPixels), request);
}

Warnings encode(codecs::RowSource& rows, codecs::ByteSink& file, Options& o) {
    const std::string compression = o.text("compression", "deflate");
    o.checkAllUsed("tiff");
    if (compression == "packbits") return codecs::tiff::encode(rows, file);
    if (compression != "deflate") throw codecs::Error("compression: deflate or packbits, not " + compression);
    return writeContainer(rows, codecs::createTiff(borrowed(file)));
}

} // namespace

extern const Format kTiff;
const Format kTiff = {"tiff", fits, info, decode, encode};

} // namespace web
