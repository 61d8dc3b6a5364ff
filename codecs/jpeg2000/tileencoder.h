// tileencoder.h - one tile of a picture: components, wavelet, code blocks; not yet packets.
#pragma once

#include "codecs/jpeg2000/blockencoder.h"

namespace codecs::jpeg2000 {

class TileEncoder {
    const PlanarPicture& picture;
    const ImageSize& size;
    const HeaderSet& headers;
    const int threads;
    std::vector<std::unique_ptr<BlockEncoder>> blockEncoders; // by thread

    void transform(const Tile& tile, std::size_t c, Plane& plane, int team) const;
    std::vector<Plane> planesOf(const Tile& tile) const;
    CodedBlock encodeBlock(const Tile& tile, std::size_t c, std::size_t b, Plane& plane, int thread);

public:
    TileEncoder(const PlanarPicture& from, const ImageSize& imageSize, const HeaderSet& set, int team);
    EncodedTile encode(int index);
};

} // namespace codecs::jpeg2000
