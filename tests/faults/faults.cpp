// faults.cpp - preloaded ahead of a command (LD_PRELOAD): one call of the system fails, or does only a part.
//
//   ZMX_FAULT="KIND N HOW"   the N-th call of a kind: memory, open, read, write, close, rename or map. HOW is a number of
//                            errno, or "short" for a read or write of one byte. N of 0: none.
//   ZMX_FAULT_COUNTS=FILE    how many calls of each kind there were, a line each, written at the end
//
// Calls count from main() on. What stdio and the C library do inside themselves does not pass here.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/support/glibcmemory.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/types.h>

namespace {

enum Kind { kMemory, kOpen, kRead, kWrite, kClose, kRename, kMap, kKinds };
constexpr std::array<const char*, kKinds> kNames = {"memory", "open", "read", "write", "close", "rename", "map"};
constexpr int kShort = -1;

std::array<std::atomic<long>, kKinds> calls;
std::atomic<bool> armed{false};
int kindOfFault = kKinds, error = 0;
long call = 0;

// 0: the call is to be done.
int faultOf(Kind kind) {
    if (!armed) return 0;
    return ++calls[kind] == call && kind == kindOfFault ? error : 0;
}

template <class Function> Function next(const char* name) { return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name)); }

void readWishes() {
    const char* const text = std::getenv("ZMX_FAULT");
    char kind[16] = "", how[16] = "";
    if (!text || std::sscanf(text, "%15s %ld %15s", kind, &call, how) != 3) return;
    for (int k = 0; k < kKinds; ++k)
        if (std::strcmp(kNames[std::size_t(k)], kind) == 0) kindOfFault = k;
    error = std::strcmp(how, "short") == 0 ? kShort : std::atoi(how);
}

void tellCounts() {
    armed = false;
    const char* const path = std::getenv("ZMX_FAULT_COUNTS");
    FILE* const file = path ? std::fopen(path, "w") : nullptr;
    if (!file) return;
    for (std::size_t k = 0; k < kKinds; ++k) std::fprintf(file, "%s %ld\n", kNames[k], calls[k].load());
    std::fclose(file);
}

int (*theirMain)(int, char**, char**);
int ourMain(int argc, char** argv, char** environment) {
    readWishes();
    std::atexit(tellCounts);
    armed = true;
    return theirMain(argc, argv, environment);
}

// One that gives -1 and errno, or acts on one byte, or on all.
template <class Work> auto guarded(Kind kind, std::size_t bytes, Work work) -> decltype(work(bytes)) {
    const int fault = faultOf(kind);
    if (fault == 0) return work(bytes);
    if (fault == kShort) return work(bytes < 1 ? bytes : 1);
    errno = fault;
    return -1;
}
template <class Work> int guarded(Kind kind, Work work) {
    return int(guarded(kind, 0, [&](std::size_t) { return work(); }));
}

// libtiff 4.5 reads behind its list of tags where it could not grow it: what it asks for itself never fails.
[[maybe_unused]] bool noMemory(const void* caller) {
    if (!armed) return false;
    static const CodeRange libtiff("libtiff");
    if (libtiff.holds(caller)) return false;
    const int fault = faultOf(kMemory);
    if (fault) errno = fault;
    return fault != 0;
}

int openBy(const char* name, const char* path, int flags, va_list more) {
    const int mode = flags & O_CREAT ? va_arg(more, int) : 0;
    return guarded(kOpen, [&] { return next<int (*)(const char*, int, ...)>(name)(path, flags, mode); });
}

} // namespace

extern "C" {

int __libc_start_main(int (*main)(int, char**, char**), int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*loaderFini)(), void* stackEnd) {
    theirMain = main;
    using Start = int (*)(int (*)(int, char**, char**), int, char**, void (*)(), void (*)(), void (*)(), void*);
    return next<Start>("__libc_start_main")(ourMain, argc, argv, init, fini, loaderFini, stackEnd);
}

int open(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const int fd = openBy("open", path, flags, more);
    va_end(more);
    return fd;
}
int open64(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const int fd = openBy("open64", path, flags, more);
    va_end(more);
    return fd;
}
int mkstemp(char* name) {
    return guarded(kOpen, [&] { return next<int (*)(char*)>("mkstemp")(name); });
}
int mkstemp64(char* name) {
    return guarded(kOpen, [&] { return next<int (*)(char*)>("mkstemp64")(name); });
}
ssize_t read(int fd, void* to, std::size_t n) {
    return guarded(kRead, n,
                   [&](std::size_t some) { return next<ssize_t (*)(int, void*, std::size_t)>("read")(fd, to, some); });
}
ssize_t pread(int fd, void* to, std::size_t n, off_t at) {
    return guarded(kRead, n, [&](std::size_t some) {
        return next<ssize_t (*)(int, void*, std::size_t, off_t)>("pread")(fd, to, some, at);
    });
}
ssize_t write(int fd, const void* from, std::size_t n) {
    return guarded(kWrite, n, [&](std::size_t some) {
        return next<ssize_t (*)(int, const void*, std::size_t)>("write")(fd, from, some);
    });
}
ssize_t pwrite(int fd, const void* from, std::size_t n, off_t at) {
    return guarded(kWrite, n, [&](std::size_t some) {
        return next<ssize_t (*)(int, const void*, std::size_t, off_t)>("pwrite")(fd, from, some, at);
    });
}
// What fails is closed nevertheless.
int close(int fd) {
    const int done = next<int (*)(int)>("close")(fd);
    return guarded(kClose, [&] { return done; });
}
int rename(const char* from, const char* to) noexcept {
    return guarded(kRename, [&] { return next<int (*)(const char*, const char*)>("rename")(from, to); });
}
void* mmap(void* at, std::size_t n, int protection, int flags, int fd, off_t offset) noexcept {
    if (fd >= 0)
        if (const int fault = faultOf(kMap)) {
            errno = fault;
            return reinterpret_cast<void*>(-1);
        }
    return next<void* (*)(void*, std::size_t, int, int, int, off_t)>("mmap")(at, n, protection, flags, fd, offset);
}

#ifdef ZMX_COUNT_MEMORY
void* malloc(std::size_t n) { return noMemory(__builtin_return_address(0)) ? nullptr : __libc_malloc(n); }
void* calloc(std::size_t count, std::size_t n) {
    return noMemory(__builtin_return_address(0)) ? nullptr : __libc_calloc(count, n);
}
void* realloc(void* p, std::size_t n) { return noMemory(__builtin_return_address(0)) ? nullptr : __libc_realloc(p, n); }
void* aligned_alloc(std::size_t alignment, std::size_t n) {
    return noMemory(__builtin_return_address(0)) ? nullptr : __libc_memalign(alignment, n);
}
int posix_memalign(void** p, std::size_t alignment, std::size_t n) {
    void* const block = aligned_alloc(alignment, n);
    if (block) *p = block;
    return block ? 0 : ENOMEM;
}
#endif
}
