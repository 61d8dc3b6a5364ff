// memory.cpp - stands in for libzmxcore's allocator.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/support/memory.h"

#include "zmxcore.h"

#include <cstdlib>

namespace {
int failAt = 0, made = 0, held = 0, lastBytes = 0, nulls = 0;
bool failing = false;
} // namespace

void failAllocation(int n) {
    failAt = n ? made + n : 0;
    failing = n != 0;
}
int allocationsMade() { return made; }
int blocksHeld() { return held; }
int lastAllocationBytes() { return lastBytes; }
int nullsFreed() { return nulls; }

extern "C" void* zmxMalloc(int len) {
    ++made;
    lastBytes = len;
    if (failing && made >= failAt) return nullptr;
    void* p = std::malloc(std::size_t(len));
    if (p) ++held;
    return p;
}

extern "C" void zmxFree(void* ptr) {
    if (ptr)
        --held;
    else
        ++nulls;
    std::free(ptr);
}
