// tiledecoder.h - the tiles of a codestream one by one into a picture: packets, code blocks, wavelet, components.
#pragma once

#include "codecs/jpeg2000/blockdecoder.h"
#include "codecs/jpeg2000/codestream.h"
#include "codecs/jpeg2000/packetreader.h"

namespace codecs::jpeg2000 {

// The components of the picture that a codestream holds, without their samples.
PlanarPicture emptyPicture(const ImageSize& size, int reduce);

class TileDecoder {
    const Codestream& stream;
    const DecodeOptions& options;
    const int threads;
    PlanarPicture& picture;
    std::vector<BlockDecoder> blockDecoders; // by thread

    struct Work; // what there is of the tile under work
    void warn(const Work& work, const std::string& what);
    int reduction(const CodingStyle& style) const;
    void readPackets(const Work& work, PacketReader& reader);
    void decodeBlocks(Work& work, const PacketReader& reader);
    void inverseWavelets(Work& work);
    void inverseColours(Work& work);
    void place(Work& work, std::size_t c);

public:
    // The samples go into `to`, which is as emptyPicture() makes it with room for them.
    TileDecoder(const Codestream& from, const DecodeOptions& o, PlanarPicture& to);
    void decode(int index, const TileData& data);
};

} // namespace codecs::jpeg2000
