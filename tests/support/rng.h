// rng.h - random test data that is the same in every build and on every run.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// SplitMix64. The seed is fixed in the test; SCOPED_TRACE it, so that a failure names it.
class Rng {
    std::uint64_t state;

public:
    explicit Rng(std::uint64_t seed) : state(seed) {}
    std::uint64_t next() {
        std::uint64_t z = (state += 0x9E3779B97F4A7C15u);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }
    // A whole number from lo to hi, both included.
    std::int64_t range(std::int64_t lo, std::int64_t hi) {
        const std::uint64_t span = std::uint64_t(hi) - std::uint64_t(lo) + 1;
        return std::int64_t(std::uint64_t(lo) + (span ? next() % span : next()));
    }
    bool oneIn(int n) { return range(1, n) == 1; }
    void bytes(void* p, std::size_t n) {
        auto* b = static_cast<std::uint8_t*>(p);
        for (std::size_t i = 0; i < n; ++i) b[i] = std::uint8_t(next() >> 32);
    }
    template <class T> std::vector<T> vec(std::size_t n, std::int64_t lo, std::int64_t hi) {
        std::vector<T> v(n);
        for (T& x : v) x = T(range(lo, hi));
        return v;
    }
};
