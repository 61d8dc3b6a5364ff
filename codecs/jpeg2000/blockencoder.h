// blockencoder.h - numbers of a band through quantisation and the library's tier-1 encoder (annexes D and E).
#pragma once

#include "codecs/jpeg2000/codewords.h"
#include "codecs/jpeg2000/quantiser.h"
#include "codecs/jpeg2000/wavelet.h"

#include <memory>

namespace codecs::jpeg2000 {

// Encodes blocks one by one; one for each thread.
class BlockEncoder {
    struct Free {
        void operator()(ZmxiEncodeState_JPEG2K* s) const { zmxiEncodeFree_JPEG2K(s); }
    };
    std::unique_ptr<ZmxiEncodeState_JPEG2K, Free> state;
    std::vector<std::int32_t> words; // of the block, sign-magnitude
    Bytes buffer;                    // what the library has stored of the block

    double quantise(Plane& plane, const Block& block, const BandCoding& coding);
    void store();
    void takePasses(CodedBlock& out, unsigned style, int passes, int segments);

public:
    BlockEncoder(int maxWidth, int maxHeight);
    CodedBlock encode(Plane& plane, const Block& block, Orientation o, unsigned style, const BandCoding& coding);
};

} // namespace codecs::jpeg2000
