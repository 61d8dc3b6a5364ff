// codestreamwriter.h - headers and encoded tiles to the bytes of a codestream.
#pragma once

#include "codecs/jpeg2000/codewords.h"
#include "codecs/jpeg2000/numbers.h"

namespace codecs::jpeg2000 {

class CodestreamWriter {
    const ImageSize& size;
    const HeaderSet& headers;
    const EncodeOptions& options;
    ByteSink& sink;

    // The packets of a part of a tile, and the packet headers where they are kept apart.
    struct TilePart {
        Bytes body, headers;
    };
    std::vector<TilePart> partsOf(const EncodedTile& tile) const;
    void writeQuantization(ByteWriter& out, int guardBits) const;
    Bytes mainHeader() const;
    void write(const EncodedTile& tile, const std::vector<TilePart>& parts);

public:
    // The headers may change until begin() and stay from there on.
    CodestreamWriter(const ImageSize& imageSize, const HeaderSet& set, const EncodeOptions& o, ByteSink& to)
        : size(imageSize), headers(set), options(o), sink(to) {}
    // From SOC to the first SOT.
    void begin();
    // A tile whose layers are settled.
    void write(const EncodedTile& tile) { write(tile, partsOf(tile)); }
    void end();
    // All at once, as packet headers in the main header ask for.
    void write(const std::vector<EncodedTile>& tiles);
};

// Bytes of all headers of a codestream of so many tiles with one tile-part each.
std::size_t headerBytes(const ImageSize& size, const HeaderSet& headers, const EncodeOptions& options);

} // namespace codecs::jpeg2000
