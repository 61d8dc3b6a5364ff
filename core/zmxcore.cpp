// zmxcore.cpp - the three functions that libzmxjpx takes its memory and its thread count from.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxcore.h"

#include "system.h"

#include <atomic>

using namespace zmx;

namespace {
constexpr std::size_t kAlignment = 64; // a cache line
} // namespace

void* zmxMalloc(int len) { return len < 1 ? nullptr : allocateAligned(std::size_t(len), kAlignment); }

void zmxFree(void* ptr) { releaseAligned(ptr); }

int ownGetNumThreads(void) {
    // 0 until it is known. Two first callers at once find the same number; a local static would wait for one of them,
    // and needs the C++ runtime for that.
    static std::atomic<int> count{0};
    int known = count.load(std::memory_order_relaxed);
    if (known == 0) count.store(known = usableProcessors(), std::memory_order_relaxed);
    return known;
}
