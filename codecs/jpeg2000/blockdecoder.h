// blockdecoder.h - single code blocks through the library's tier-1 decoder, and back to numbers (annexes D and E).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/quantiser.h"
#include "codecs/jpeg2000/rawends.h"

namespace codecs::jpeg2000 {

// Decodes blocks one by one; one for each thread.
class BlockDecoder {
    std::vector<std::uint64_t> state;
    std::vector<std::int32_t> words; // of the block, sign-magnitude
    int width = 0;
    Bytes joined;
    std::vector<int> lengths; // of the codeword segments

    ByteView bytesOf(const BlockStream& stream);
    bool call(ByteView bytes, std::span<const int> segments, const BlockCall& call);

public:
    // What became of a block: nothing of it is there, or it is decoded, or it is decoded as far as it is sound.
    enum class Result { empty, sound, damaged };
    Result decode(const BlockStream& stream, const Block& block, Orientation o, unsigned style,
                  const BandCoding& coding);
    // Numbers of the decoded block, from (x, y) of it on.
    template <Road R> void take(int x, int y, const BandCoding& coding, std::span<Number<R>> to);
};

} // namespace codecs::jpeg2000
