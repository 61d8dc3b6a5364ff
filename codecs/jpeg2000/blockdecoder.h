// blockdecoder.h - single code blocks through the library's tier-1 decoder, and back to numbers (annexes D and E).
#pragma once

#include "codecs/jpeg2000/codewords.h"
#include "codecs/jpeg2000/quantiser.h"
#include "codecs/jpeg2000/wavelet.h"

namespace codecs::jpeg2000 {

// Decodes blocks one by one; one for each thread.
class BlockDecoder {
    std::vector<std::uint64_t> state;
    std::vector<std::int32_t> words; // of the block, sign-magnitude
    Bytes joined;

    ByteView bytesOf(const BlockStream& stream);

public:
    // Decodes into the block's place in the plane, which is zero before. Tells whether it was sound.
    bool decode(const BlockStream& stream, const Block& block, Orientation o, unsigned style, const BandCoding& coding,
                Plane& plane);
};

} // namespace codecs::jpeg2000
