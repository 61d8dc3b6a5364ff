// input.h - what the fuzz targets share: a condition that must hold, and numbers out of the bytes of an input.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytes.h"

#include <cstdlib>

namespace fuzz {

inline void require(bool holds) {
    if (!holds) std::abort();
}

// Takes an input apart from its front; behind its end there are zeros.
class Input {
    codecs::ByteView bytes;

public:
    Input(const std::uint8_t* data, std::size_t size) : bytes(data, size) {}
    unsigned byte() {
        if (bytes.empty()) return 0;
        const unsigned b = bytes[0];
        bytes = bytes.subspan(1);
        return b;
    }
    unsigned word() {
        const unsigned high = byte();
        return high << 8 | byte();
    }
    // One of `n` choices, from 0.
    int below(int n) { return int(byte()) % n; }
    bool flag() { return byte() & 1; }
    codecs::ByteView take(std::size_t n) {
        const codecs::ByteView part = bytes.first(n < bytes.size() ? n : bytes.size());
        bytes = bytes.subspan(part.size());
        return part;
    }
    codecs::ByteView rest() const { return bytes; }
};

} // namespace fuzz
