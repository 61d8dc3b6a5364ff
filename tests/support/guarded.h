// guarded.h - buffers between inaccessible pages, and planes whose margins are checked.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

// A block of memory with an inaccessible page on each side. It stands flush against the page behind it or the one
// ahead of it, so that one byte too far is a crash. The slack on the other side of the block is filled with a
// pattern that is checked at the end.
class GuardedBlock {
public:
    enum Flush { AtEnd, AtStart };
    explicit GuardedBlock(std::size_t bytes, Flush flush = AtEnd);
    ~GuardedBlock();
    GuardedBlock(const GuardedBlock&) = delete;
    GuardedBlock& operator=(const GuardedBlock&) = delete;

    std::uint8_t* data() { return block; }
    std::size_t size() const { return bytes; }

private:
    std::uint8_t* map;
    std::size_t mapBytes, pageBytes, bytes;
    std::uint8_t* block;
};

// An array of T flush against a guard page. T may be narrower than the alignment that flushness needs: with AtEnd
// the address of the first element is a multiple of sizeof(T) because pages are.
template <class T> class Guarded {
    GuardedBlock block;

public:
    explicit Guarded(std::size_t n, GuardedBlock::Flush flush = GuardedBlock::AtEnd) : block(n * sizeof(T), flush) {}
    Guarded(const std::vector<T>& v, GuardedBlock::Flush flush = GuardedBlock::AtEnd) : Guarded(v.size(), flush) {
        if (!v.empty()) std::memcpy(block.data(), v.data(), v.size() * sizeof(T));
    }
    T* data() { return reinterpret_cast<T*>(block.data()); }
    T& operator[](std::size_t i) { return data()[i]; }
    std::size_t size() const { return block.size() / sizeof(T); }
    std::vector<T> copy() { return std::vector<T>(data(), data() + size()); }
    void fill(T v) {
        for (std::size_t i = 0; i < size(); ++i) data()[i] = v;
    }
};

// Compares two byte ranges and shows the first difference with its surroundings.
::testing::AssertionResult sameBytes(const void* expected, const void* actual, std::size_t bytes);

template <class T>::testing::AssertionResult sameBytes(const std::vector<T>& expected, const std::vector<T>& actual) {
    if (expected.size() != actual.size())
        return ::testing::AssertionFailure() << "sizes differ: " << expected.size() << " and " << actual.size();
    return sameBytes(expected.data(), actual.data(), expected.size() * sizeof(T));
}
