// guarded.cpp - buffers between inaccessible pages.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/support/guarded.h"

#include <cstdio>
#include <cstdlib>
#include <iomanip>
#include <sstream>
#include <sys/mman.h>
#include <unistd.h>

namespace {
constexpr std::uint8_t kSlack = 0xA7;
}

GuardedBlock::GuardedBlock(std::size_t n, Flush flush) : pageBytes(std::size_t(sysconf(_SC_PAGESIZE))), bytes(n) {
    const std::size_t inner = (n + pageBytes - 1) / pageBytes * pageBytes;
    mapBytes = inner + 2 * pageBytes;
    void* p = mmap(nullptr, mapBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) {
        std::perror("mmap");
        std::abort();
    }
    map = static_cast<std::uint8_t*>(p);
    std::memset(map + pageBytes, kSlack, inner);
    mprotect(map, pageBytes, PROT_NONE);
    mprotect(map + pageBytes + inner, pageBytes, PROT_NONE);
    block = flush == AtEnd ? map + pageBytes + inner - n : map + pageBytes;
}

GuardedBlock::~GuardedBlock() {
    const std::uint8_t* lo = map + pageBytes;
    const std::uint8_t* hi = map + mapBytes - pageBytes;
    for (const std::uint8_t* p = lo; p < hi; ++p) {
        if (p == block) p += bytes;
        if (p >= hi) break;
        if (*p != kSlack) {
            ADD_FAILURE() << "a byte outside the buffer was written, at offset " << (p - block);
            break;
        }
    }
    munmap(map, mapBytes);
}

::testing::AssertionResult sameBytes(const void* expected, const void* actual, std::size_t bytes) {
    if (bytes == 0 || std::memcmp(expected, actual, bytes) == 0) return ::testing::AssertionSuccess();
    const auto* e = static_cast<const std::uint8_t*>(expected);
    const auto* a = static_cast<const std::uint8_t*>(actual);
    std::size_t at = 0;
    while (e[at] == a[at]) ++at;
    std::ostringstream out;
    out << "first difference at byte " << at << " of " << bytes << std::hex << std::setfill('0');
    const std::size_t from = at < 8 ? 0 : at - 8, to = at + 8 < bytes ? at + 8 : bytes;
    out << "\n  expected:";
    for (std::size_t i = from; i < to; ++i) out << (i == at ? " >" : " ") << std::setw(2) << int(e[i]);
    out << "\n  actual:  ";
    for (std::size_t i = from; i < to; ++i) out << (i == at ? " >" : " ") << std::setw(2) << int(a[i]);
    return ::testing::AssertionFailure() << out.str();
}
