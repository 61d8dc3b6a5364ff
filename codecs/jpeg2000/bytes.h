// bytes.h - big-endian numbers in memory, read and written.
#pragma once

#include "codecs/jpeg2000/jpeg2000.h"

namespace jpeg2000 {

// A part of a file; the file outlives it.
struct Span {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
};

// Reads within a part of a file; going past its end throws. `name` says what is being read.
class ByteReader {
    Span span;
    std::size_t pos = 0;
    const char* name;

public:
    ByteReader(Span s, const char* what) : span(s), name(what) {}
    std::size_t left() const { return span.size - pos; }
    std::size_t position() const { return pos; }
    Span take(std::size_t n) {
        if (n > left()) throw Error(std::string(name) + " ends early");
        pos += n;
        return {span.data + pos - n, n};
    }
    std::uint32_t number(int bytes) {
        const Span s = take(std::size_t(bytes));
        std::uint32_t v = 0;
        for (int i = 0; i < bytes; ++i) v = v << 8 | s.data[i];
        return v;
    }
    int u8() { return int(number(1)); }
    int u16() { return int(number(2)); }
    std::uint32_t u32() { return number(4); }
    Span rest() { return take(left()); }
};

class ByteWriter {
    std::vector<std::uint8_t>& out;

public:
    explicit ByteWriter(std::vector<std::uint8_t>& to) : out(to) {}
    void number(std::uint32_t v, int bytes) {
        for (int i = bytes - 1; i >= 0; --i) out.push_back(std::uint8_t(v >> 8 * i));
    }
    void u8(unsigned v) { number(v, 1); }
    void u16(unsigned v) { number(v, 2); }
    void u32(std::uint32_t v) { number(v, 4); }
    void bytes(const std::vector<std::uint8_t>& b) { out.insert(out.end(), b.begin(), b.end()); }
    std::size_t size() const { return out.size(); }
    // Writes over what has been written before.
    void patch32(std::size_t at, std::uint32_t v) {
        for (int i = 0; i < 4; ++i) out[at + std::size_t(i)] = std::uint8_t(v >> (24 - 8 * i));
    }
};

} // namespace jpeg2000
