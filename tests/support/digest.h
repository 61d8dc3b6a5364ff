// digest.h - a 64-bit digest (FNV-1a) of outputs, for expectations that hold in every build and byte order.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

// Values count as their bytes from the low end upward.
class Digest {
    std::uint64_t h = 0xCBF29CE484222325u;

public:
    template <class T> Digest& add(const std::vector<T>& values) {
        for (const T v : values) {
            if constexpr (std::is_same_v<T, float>)
                number(std::bit_cast<std::uint32_t>(v), sizeof v);
            else if constexpr (std::is_same_v<T, double>)
                number(std::bit_cast<std::uint64_t>(v), sizeof v);
            else
                number(std::uint64_t(v), sizeof v);
        }
        return *this;
    }
    // `bytes` bytes of values of one type.
    template <class T> Digest& add(const T* values, std::size_t bytes) {
        return add(std::vector<T>(values, values + bytes / sizeof(T)));
    }
    // A state that is made of 32-bit words.
    Digest& words(const void* state, std::size_t bytes) {
        std::vector<std::uint32_t> all(bytes / sizeof(std::uint32_t));
        std::memcpy(all.data(), state, all.size() * sizeof(std::uint32_t));
        return add(all);
    }
    Digest& value(std::int64_t v) { return number(std::uint64_t(v), sizeof v); }
    std::uint64_t get() const { return h; }

private:
    Digest& number(std::uint64_t v, std::size_t bytes) {
        for (std::size_t i = 0; i < bytes; ++i) h = (h ^ (v >> 8 * i & 255)) * 0x100000001B3u;
        return *this;
    }
};
