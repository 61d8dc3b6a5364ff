// codestreamwriter.h - headers and encoded tiles to the bytes of a codestream.
#pragma once

#include "codecs/jpeg2000/codewords.h"

namespace codecs::jpeg2000 {

class CodestreamWriter {
    const ImageSize& size;
    const HeaderSet& headers;
    const EncodeOptions& options;

    // The packets of a part of a tile, and the packet headers where they are kept apart.
    struct TilePart {
        Bytes body, headers;
    };
    std::vector<TilePart> partsOf(const EncodedTile& tile) const;
    void writeTile(Bytes& bytes, int index, const std::vector<TilePart>& parts) const;

public:
    CodestreamWriter(const ImageSize& imageSize, const HeaderSet& set, const EncodeOptions& o)
        : size(imageSize), headers(set), options(o) {}
    // From SOC to the first SOT, without packet headers.
    Bytes mainHeader() const;
    // From SOC to EOC. The layers of all blocks are settled.
    Bytes write(const std::vector<EncodedTile>& tiles) const;
};

} // namespace codecs::jpeg2000
