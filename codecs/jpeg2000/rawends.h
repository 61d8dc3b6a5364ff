// rawends.h - raw codeword segments whose ends are not those that the library's decoder wants to see.
//
// The library takes a raw segment for damaged unless the bits behind its last decision alternate, 0 first. Part 1 asks
// for that padding with predictable termination alone: without it an encoder may pad as it likes, or leave out bytes
// of ones at the end, which a decoder supplies (D.4.2, D.6). Such blocks are sound, and mending the ends shows it.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/codewords.h"
#include "zmxj.h"

namespace codecs::jpeg2000 {

// The codeword segments of a block, behind each other.
struct Segments {
    Bytes bytes;
    std::vector<int> lengths;
};

// What the library's decoder is told of a block besides its segments.
struct BlockCall {
    ZmxiSize size;
    int subband, planes, passes;
    Zmx32u flags;
    unsigned style; // BlockStyle
};

// The segments with ends that pass, up to the first one that none can be found for. `words` (a block's samples) and
// `state` are the decoder's, and hold nothing of worth afterwards.
Segments mendRawEnds(ByteView bytes, std::span<const int> lengths, const BlockCall& call, std::span<std::int32_t> words,
                     std::span<std::uint64_t> state);

} // namespace codecs::jpeg2000
