// SPDX-License-Identifier: BSD-2-Clause
// byteorder.h - the order of bytes in words, for tests that draw words, or digest them, byte by byte.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

inline constexpr bool kLittleEndian = std::endian::native == std::endian::little;

// Bytes of 16-bit words between little-endian order, which such digests hold for, and that of this processor.
inline void exchangeOrder(std::uint8_t* bytes, std::size_t n) {
    for (std::size_t i = 0; !kLittleEndian && i + 1 < n; i += 2) std::swap(bytes[i], bytes[i + 1]);
}
