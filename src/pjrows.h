// pjrows.h - rows of rectangles: where a row begins, elements at any address, and the two ways to run a row loop.
#pragma once

#include "pjwrap.h"
#include "zmxcore.h"
#include "zmxj.h"

#include <cstddef>
#include <cstring>

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

// Regions of at most this many samples never open a parallel region.
inline constexpr int kSerialMax = 8192;

// A row loop on the calling thread.
struct Serial {
    template <class Row> static void rows(ZmxiSize roi, Row row) {
        for (int y = 0; y < roi.height; ++y) row(y);
    }
};

// A row loop shared out to a team: each thread takes one contiguous run of rows, and rows do not depend on each
// other. Only the row-parallel functions use it. The row body should call a function that takes its pointers and
// width by value: a sample loop written inside the lambda is not vectorised once OpenMP has outlined it.
struct Parallel {
    template <class Row> static void rows(ZmxiSize roi, Row row) {
        [[maybe_unused]] const int threads = ownGetNumThreads(); // asked at every size
        // The product is a 32-bit one that wraps: a huge region may count as a small one.
        if (wrapMul(roi.width, roi.height) <= kSerialMax) return Serial::rows(roi, row);
#pragma omp parallel for schedule(static) num_threads(threads)
        for (int y = 0; y < roi.height; ++y) row(y);
    }
};

} // namespace zmx
