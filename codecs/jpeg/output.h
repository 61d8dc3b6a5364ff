// output.h - the bytes of a file on their way into a sink, with room behind them, so that a coder without bounds can
// write there.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytes.h"

#include <algorithm>

namespace codecs::jpeg {

class Output {
public:
    explicit Output(ByteSink& s) : sink(s), bytes(kBuffer) {}

    // At least `room` bytes may be written at the pointer returned; then advance(). The first of them is what it was
    // behind the last byte: a coder may have begun it.
    std::uint8_t* reserve(std::size_t room) {
        if (bytes.size() - used < room) [[unlikely]]
            drain(room);
        return bytes.data() + used;
    }
    void advance(std::size_t n) { used += n; }
    void byte(int v) {
        *reserve(1) = std::uint8_t(v);
        ++used;
    }
    void word(int v) { byte(v >> 8), byte(v & 0xFF); }
    void marker(int m) { byte(0xFF), byte(m); }
    void append(ByteView more) {
        drain(1);
        sink.write(more);
    }
    // Hands on what is held back; the sink is not finished by it.
    void flush() { drain(1); }

private:
    static constexpr std::size_t kBuffer = 1 << 16;

    void drain(std::size_t room) {
        sink.write({bytes.data(), used});
        const std::uint8_t begun = used < bytes.size() ? bytes[used] : std::uint8_t(0);
        bytes.resize(std::max(kBuffer, room));
        bytes[0] = begun;
        used = 0;
    }

    ByteSink& sink;
    Bytes bytes;
    std::size_t used = 0;
};

} // namespace codecs::jpeg
