// memory.cpp - the C library's allocator with a count around it, for this program and every library that it loads.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/hostile/memory.h"

#include "tests/support/glibcmemory.h"

#include <atomic>

#ifdef ZMX_COUNT_MEMORY
#include <cerrno>
#include <cstdlib>
#include <malloc.h>
#endif

namespace hostile {

namespace {

std::atomic<std::size_t> used, most;

} // namespace

std::size_t memoryInUse() { return used; }
std::size_t peakMemory() { return most; }
void restartPeak() { most = used.load(); }

#ifdef ZMX_COUNT_MEMORY
const bool memoryIsCounted = true;

namespace {

void* taken(void* p) {
    if (p == nullptr) return p;
    const std::size_t now = used += malloc_usable_size(p);
    std::size_t before = most;
    while (before < now && !most.compare_exchange_weak(before, now)) {
    }
    return p;
}
void given(void* p) {
    if (p != nullptr) used -= malloc_usable_size(p);
}

} // namespace
#else
const bool memoryIsCounted = false;
#endif

} // namespace hostile

#ifdef ZMX_COUNT_MEMORY
extern "C" {
void* malloc(std::size_t n) { return hostile::taken(__libc_malloc(n)); }
void* calloc(std::size_t count, std::size_t n) { return hostile::taken(__libc_calloc(count, n)); }
void* realloc(void* p, std::size_t n) {
    hostile::given(p);
    void* const other = __libc_realloc(p, n);
    if (other == nullptr && n > 0) hostile::taken(p); // it is still there
    return hostile::taken(other);
}
void* memalign(std::size_t alignment, std::size_t n) { return hostile::taken(__libc_memalign(alignment, n)); }
void* aligned_alloc(std::size_t alignment, std::size_t n) { return memalign(alignment, n); }
int posix_memalign(void** p, std::size_t alignment, std::size_t n) {
    *p = memalign(alignment, n);
    return *p == nullptr ? ENOMEM : 0;
}
void free(void* p) {
    hostile::given(p);
    __libc_free(p);
}
}
#endif
