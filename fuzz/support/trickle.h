// trickle.h - bytes that come a few at a time.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/bytes.h"

#include <algorithm>

namespace fuzz {

// Hands out no more than it was asked for, so that every border of a window is met.
class Trickle final : public codecs::ByteSource {
public:
    explicit Trickle(codecs::ByteView all) : bytes(all) {}
    codecs::ByteView view(std::size_t wanted) override { return bytes.whole().subspan(at()).first(few(wanted)); }
    void skip(std::uint64_t n) override { bytes.skip(n); }
    std::uint64_t position() const override { return bytes.position(); }
    bool isPipe() const override { return false; }
    std::uint64_t size() override { return bytes.size(); }
    std::size_t readAt(std::uint64_t from, std::span<std::uint8_t> to) override { return bytes.readAt(from, to); }
    codecs::ByteView whole() override { return bytes.whole(); }

private:
    std::size_t at() const { return std::size_t(bytes.position()); }
    std::size_t few(std::size_t wanted) {
        return std::min(std::max<std::size_t>(wanted, 1), bytes.whole().size() - at());
    }
    codecs::MemorySource bytes;
};

} // namespace fuzz
