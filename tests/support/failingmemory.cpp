// failingmemory.cpp - an allocator of which one request fails.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/support/failingmemory.h"

#include "tests/support/glibcmemory.h"
#include "zmxcore.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> requests, blocks, failing;

bool fails() { return ++requests == failing; }
void* taken(void* p) {
    if (p) ++blocks;
    return p;
}
void given(const void* p) {
    if (p) --blocks;
}

} // namespace

void failRequest(long n) {
    failing = n;
    requests = 0;
}
long requestsMade() { return requests; }
long blocksInUse() { return blocks; }

#ifdef ZMX_COUNT_MEMORY

namespace {

// libtiff 4.5 reads behind its list of tags where it could not grow it: what it asks for itself never fails.
bool failsFor(const void* caller) {
    static const CodeRange libtiff("libtiff");
    return !libtiff.holds(caller) && fails();
}

} // namespace

extern "C" {
void* malloc(std::size_t n) {
    if (!failsFor(__builtin_return_address(0))) return taken(__libc_malloc(n));
    errno = ENOMEM;
    return nullptr;
}
void* calloc(std::size_t count, std::size_t n) {
    if (!failsFor(__builtin_return_address(0))) return taken(__libc_calloc(count, n));
    errno = ENOMEM;
    return nullptr;
}
void* realloc(void* p, std::size_t n) {
    if (failsFor(__builtin_return_address(0))) {
        errno = ENOMEM;
        return nullptr; // the block stays as it is
    }
    void* const other = __libc_realloc(p, n);
    if (other || n == 0) given(p);
    return taken(other);
}
void* memalign(std::size_t alignment, std::size_t n) {
    if (!fails()) return taken(__libc_memalign(alignment, n));
    errno = ENOMEM;
    return nullptr;
}
void* aligned_alloc(std::size_t alignment, std::size_t n) { return memalign(alignment, n); }
int posix_memalign(void** p, std::size_t alignment, std::size_t n) {
    void* const block = memalign(alignment, n);
    if (!block) return ENOMEM;
    *p = block;
    return 0;
}
void free(void* p) {
    given(p);
    __libc_free(p);
}
}

#else

void* operator new(std::size_t n) {
    if (void* const p = fails() ? nullptr : taken(std::malloc(n ? n : 1))) return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t n) { return operator new(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
    return fails() ? nullptr : taken(std::malloc(n ? n : 1));
}
void operator delete(void* p) noexcept {
    given(p);
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept { operator delete(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { operator delete(p); }
void operator delete[](void* p) noexcept { operator delete(p); }
void operator delete[](void* p, std::size_t) noexcept { operator delete(p); }

extern "C" void* zmxMalloc(int len) { return fails() ? nullptr : taken(std::malloc(std::size_t(len))); }
extern "C" void zmxFree(void* ptr) {
    given(ptr);
    std::free(ptr);
}

#endif
