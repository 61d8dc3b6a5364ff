// threads.cpp - stands in for libzmxcore's thread count, and counts parallel regions.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/support/threads.h"

#include "zmxcore.h"

#include <atomic>
#include <dlfcn.h>

namespace {
std::atomic<int> answer{1}, asked{0};
std::atomic<long> regions{0};
} // namespace

void setThreads(int n) { answer = n; }
int threadsAsked() { return asked; }
long regionsOpened() { return regions; }

extern "C" int ownGetNumThreads(void) {
    ++asked;
    return answer;
}

// The entry by which gcc's code opens a region.
extern "C" __attribute__((visibility("default"))) void GOMP_parallel(void (*fn)(void*), void* data, unsigned n,
                                                                     unsigned flags) {
    using Entry = void (*)(void (*)(void*), void*, unsigned, unsigned);
    static const auto real = reinterpret_cast<Entry>(dlsym(RTLD_NEXT, "GOMP_parallel"));
    ++regions;
    real(fn, data, n, flags);
}

bool regionsCounted() {
#ifdef __clang__
    return false;
#else
    return true;
#endif
}
