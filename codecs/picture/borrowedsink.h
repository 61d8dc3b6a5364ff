// borrowedsink.h - a sink that stays with the caller, for what takes one over.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytes.h"

namespace codecs {

class BorrowedSink final : public ByteSink {
public:
    explicit BorrowedSink(ByteSink& sink) : to(sink) {}

    void write(ByteView bytes) override { to.write(bytes); }
    void finish() override { to.finish(); }
    std::uint64_t position() const override { return to.position(); }
    bool seekable() const override { return to.seekable(); }
    void patch(std::uint64_t at, ByteView bytes) override { to.patch(at, bytes); }
    std::size_t readBack(std::uint64_t at, std::span<std::uint8_t> bytes) override { return to.readBack(at, bytes); }

private:
    ByteSink& to;
};

} // namespace codecs
