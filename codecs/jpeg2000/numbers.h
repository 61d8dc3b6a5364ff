// numbers.h - big-endian numbers in memory, read and written.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytes.h"

namespace codecs::jpeg2000 {

// Throws an Error unless something holds.
inline void need(bool good, const char* otherwise) {
    if (!good) throw Error(otherwise);
}

// Reads within a part of a file; going past its end throws. `name` says what is being read.
class ByteReader {
    ByteView bytes;
    std::size_t pos = 0;
    const char* name;

public:
    ByteReader(ByteView part, const char* what) : bytes(part), name(what) {}
    std::size_t left() const { return bytes.size() - pos; }
    std::size_t position() const { return pos; }
    ByteView take(std::size_t n) {
        if (n > left()) throw Error(std::string(name) + " ends early");
        pos += n;
        return bytes.subspan(pos - n, n);
    }
    std::uint32_t number(int width) {
        std::uint32_t v = 0;
        for (const std::uint8_t b : take(std::size_t(width))) v = v << 8 | b;
        return v;
    }
    int u8() { return int(number(1)); }
    int u16() { return int(number(2)); }
    std::uint32_t u32() { return number(4); }
    ByteView rest() { return take(left()); }
};

// Writes at the end of bytes that grow.
class ByteWriter {
    Bytes& out;

public:
    explicit ByteWriter(Bytes& to) : out(to) {}
    void number(std::uint32_t v, int width) {
        for (int i = width - 1; i >= 0; --i) out.push_back(std::uint8_t(v >> 8 * i));
    }
    void u8(unsigned v) { number(v, 1); }
    void u16(unsigned v) { number(v, 2); }
    void u32(std::uint32_t v) { number(v, 4); }
    void bytes(ByteView more) { out.insert(out.end(), more.begin(), more.end()); }
    std::size_t size() const { return out.size(); }
    // Writes over what has been written before.
    void patch32(std::size_t at, std::uint32_t v) {
        for (int i = 0; i < 4; ++i) out[at + std::size_t(i)] = std::uint8_t(v >> (24 - 8 * i));
    }
};

} // namespace codecs::jpeg2000
