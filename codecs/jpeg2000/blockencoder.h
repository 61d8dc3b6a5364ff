// blockencoder.h - numbers of a band through quantisation and the library's tier-1 encoder (annexes D and E).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/codewords.h"
#include "codecs/jpeg2000/quantiser.h"

#include <memory>

namespace codecs::jpeg2000 {

// Encodes blocks one by one; one for each thread.
class BlockEncoder {
    struct Free {
        void operator()(ZmxiEncodeState_JPEG2K* s) const { zmxiEncodeFree_JPEG2K(s); }
    };
    std::unique_ptr<ZmxiEncodeState_JPEG2K, Free> state;
    int stateWidth = 0, stateHeight = 0; // of the largest block that it has room for
    std::vector<std::int32_t> words;     // of the block, sign-magnitude
    std::size_t filled = 0;              // of them, by rows so far
    Bytes buffer;                        // what the library has stored of it
    ZmxiSize size{0, 0};
    double residual = 0; // squared error that is left once all planes are coded, in units of the squared step

    void store();
    void takePasses(CodedBlock& out, unsigned style, int passes, int segments);

public:
    BlockEncoder();
    // A block begins; its rows follow from the top, then it is encoded.
    void begin(const Block& block);
    template <Road R> void quantise(std::span<const Number<R>> row, const BandCoding& coding);
    // Lifts `count` numbers of the last row, from x on, into the planes of a region of interest.
    void raise(int x, int count, const BandCoding& coding);
    CodedBlock encode(Orientation o, const CodingStyle& style, const BandCoding& coding);
};

} // namespace codecs::jpeg2000
