// bytes.cpp - streams of bytes in memory.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/bytes.h"

#include <algorithm>

namespace codecs {
namespace {

std::size_t copyAt(ByteView from, std::uint64_t at, std::span<std::uint8_t> to) {
    if (at >= from.size()) return 0;
    const ByteView there = from.subspan(std::size_t(at));
    const std::size_t n = std::min(there.size(), to.size());
    std::copy_n(there.begin(), n, to.begin());
    return n;
}

} // namespace

std::size_t MemorySource::readAt(std::uint64_t from, std::span<std::uint8_t> to) { return copyAt(bytes, from, to); }

void MemorySink::patch(std::uint64_t at, ByteView with) {
    bytes.resize(std::max(bytes.size(), std::size_t(at) + with.size()));
    std::copy(with.begin(), with.end(), bytes.begin() + std::ptrdiff_t(at));
}

std::size_t MemorySink::readBack(std::uint64_t at, std::span<std::uint8_t> to) { return copyAt(bytes, at, to); }

} // namespace codecs
