// pjrows.h - rows of rectangles: where a row begins, elements at any address, words of bytes in a fixed order, and the
// two ways to run a row loop.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjwrap.h"
#include "zmxcore.h"
#include "zmxj.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace zmx {

// Row y of a plane. Rows are bytes: a step need not be a multiple of the element size.
inline const Zmx8u* rowAt(const void* p, int step, int y) {
    return static_cast<const Zmx8u*>(p) + std::ptrdiff_t(step) * y;
}
inline Zmx8u* rowAt(void* p, int step, int y) { return static_cast<Zmx8u*>(p) + std::ptrdiff_t(step) * y; }

// Element x of a row of T at any address; the compiler turns these into plain (vector) loads and stores.
template <class T> inline T load(const Zmx8u* row, std::ptrdiff_t x) {
    T v;
    std::memcpy(&v, row + std::ptrdiff_t(sizeof v) * x, sizeof v);
    return v;
}
template <class T> inline void store(Zmx8u* row, std::ptrdiff_t x, T v) {
    std::memcpy(row + std::ptrdiff_t(sizeof v) * x, &v, sizeof v);
}

// A word whose bytes mean something each, the first one its lowest: what a machine with the other byte order makes of
// such a word in memory, and what it has to put there. Samples and packed 16-bit pixels are native words; the bytes of
// streams, of blocks and of neighbouring 8-bit samples are not. Compilers make one instruction of the loop.
template <class T> constexpr T littleEndian(T v) {
    if constexpr (std::endian::native == std::endian::little) return v;
    static_assert(std::is_unsigned_v<T>);
    T other = 0;
    for (std::size_t i = 0; i < sizeof v; ++i) other = T(other | T(v >> 8 * i & 255) << 8 * (sizeof v - 1 - i));
    return other;
}
template <class T> inline T loadLE(const Zmx8u* bytes, std::ptrdiff_t x) { return littleEndian(load<T>(bytes, x)); }
template <class T> inline void storeLE(Zmx8u* bytes, std::ptrdiff_t x, T v) { store(bytes, x, littleEndian(v)); }

// Regions of at most this many samples never open a parallel region.
inline constexpr int kSerialMax = 8192;

// A row loop on the calling thread.
struct Serial {
    template <class Row> static void rows(ZmxiSize roi, Row row) {
        for (int y = 0; y < roi.height; ++y) row(y);
    }
};

// The team for so many rows by the count that the application's libzmxcore answers. A count below 1 is none. What OpenMP's
// runtime cannot start ends the process, so the team has its limit; more threads than rows would only look on.
constexpr int kMostThreads = 256;
constexpr int teamFor(int count, int rows) { return std::clamp(count, 1, rows < kMostThreads ? rows : kMostThreads); }

// A row loop shared out to a team: each thread takes one contiguous run of rows, and rows do not depend on each
// other. Only the row-parallel functions use it. The row body should call a function that takes its pointers and
// width by value: a sample loop written inside the lambda is not vectorised once OpenMP has outlined it.
struct Parallel {
    template <class Row> static void rows(ZmxiSize roi, Row row) {
        [[maybe_unused]] const int threads = teamFor(ownGetNumThreads(), roi.height); // asked at every size
        // The product is a 32-bit one that wraps: a huge region may count as a small one.
        if (wrapMul(roi.width, roi.height) <= kSerialMax) return Serial::rows(roi, row);
#pragma omp parallel for schedule(static) num_threads(threads)
        for (int y = 0; y < roi.height; ++y) row(y);
    }
};

} // namespace zmx
