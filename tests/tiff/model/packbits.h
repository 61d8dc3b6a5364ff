// packbits.h - PackBits rows, a byte at a time. Positions are wide enough for every sum of them.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

#include <vector>

namespace model {

// What a call leaves behind: its status, the position, and the whole destination.
struct PackBitsResult {
    ZmxStatus status;
    int pos;
    std::vector<Zmx8u> dst;
};

// `dst` is the buffer of dstLen bytes as it was ahead of the call.
PackBitsResult packBits(const Zmx8u* src, int srcLen, std::vector<Zmx8u> dst, int pos);

// `src` holds one byte more than srcLen, which a run at the very end may read.
PackBitsResult unpackBits(const Zmx8u* src, int pos, int srcLen, std::vector<Zmx8u> dst);

} // namespace model
