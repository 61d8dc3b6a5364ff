// bits.h - the bits of packet headers (B.10.1): a byte behind 0xFF has seven.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/jpeg2000/numbers.h"

namespace codecs::jpeg2000 {

// Reads from the highest bit of each byte down.
class BitReader {
    ByteView bytes;
    std::size_t pos = 0;
    unsigned byte = 0;
    int left = 0; // unread bits of `byte`

public:
    explicit BitReader(ByteView header) : bytes(header) {}
    bool bit() {
        if (left == 0) {
            if (pos == bytes.size()) throw Error("a packet header ends early");
            // No marker may come about in a header, so that a bit of 0 is stuffed behind eight ones (B.10.1).
            left = byte == 0xFF ? 7 : 8;
            byte = bytes[pos++];
        }
        return byte >> --left & 1;
    }
    unsigned bits(int n) {
        unsigned v = 0;
        while (n-- > 0) v = v << 1 | unsigned(bit());
        return v;
    }
    // Ends the header: the byte of zeros that must follow a last 0xFF goes too. Tells how many bytes it took.
    std::size_t finish() {
        if (byte == 0xFF && pos < bytes.size()) ++pos;
        return pos;
    }
};

// And back.
class BitWriter {
    Bytes& out;
    unsigned byte = 0;
    int free = 8;

    void push() {
        out.push_back(std::uint8_t(byte));
        free = byte == 0xFF ? 7 : 8;
        byte = 0;
    }

public:
    explicit BitWriter(Bytes& to) : out(to) {}
    void bit(bool b) {
        byte |= unsigned(b) << --free;
        if (free == 0) push();
    }
    void bits(unsigned v, int n) {
        while (n-- > 0) bit(v >> n & 1);
    }
    // Fills up with zeros; a byte of zeros follows a last 0xFF.
    void finish() {
        if (free < 8) push();
    }
};

} // namespace codecs::jpeg2000
