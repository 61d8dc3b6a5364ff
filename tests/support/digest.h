// digest.h - a 64-bit digest (FNV-1a) of outputs, for expectations that hold in every build.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class Digest {
    std::uint64_t h = 0xCBF29CE484222325u;

public:
    Digest& add(const void* p, std::size_t n) {
        const auto* b = static_cast<const std::uint8_t*>(p);
        for (std::size_t i = 0; i < n; ++i) h = (h ^ b[i]) * 0x100000001B3u;
        return *this;
    }
    template <class T> Digest& add(const std::vector<T>& v) { return add(v.data(), v.size() * sizeof(T)); }
    Digest& value(std::int64_t v) { return add(&v, sizeof v); }
    std::uint64_t get() const { return h; }
};
