// smallstack.cpp - every function of libzmxjpx on a stack of 64 KiB with a page behind it that nothing may touch, what the
// digests need for themselves included. It prints how deep each group went.
//
//   zmx_small_stack         the exit code is 0 when all digests have been made; a stack that is too small is a crash
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/groups.h"

#include <algorithm>
#include <cstdio>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr std::size_t kStack = 64 * 1024;
constexpr unsigned char kPaint = 0xA5;

// One group, made on a thread of its own.
struct Run {
    const Group& group;
    Report report;
};

void* make(void* run) {
    auto* r = static_cast<Run*>(run);
    r->group.digests(r->report);
    return nullptr;
}

// How many bytes of the stack a group has touched; 0 if it could not be run.
std::size_t depthOf(Run& run, unsigned char* stack) {
    std::fill(stack, stack + kStack, kPaint);
    pthread_attr_t attributes;
    pthread_t thread;
    if (pthread_attr_init(&attributes) != 0 || pthread_attr_setstack(&attributes, stack, kStack) != 0 ||
        pthread_create(&thread, &attributes, make, &run) != 0 || pthread_join(thread, nullptr) != 0)
        return 0;
    pthread_attr_destroy(&attributes);
    return std::size_t(stack + kStack - std::find_if(stack, stack + kStack, [](auto b) { return b != kPaint; }));
}

} // namespace

int main() {
    const auto page = std::size_t(sysconf(_SC_PAGESIZE));
    void* const map = mmap(nullptr, page + kStack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (map == MAP_FAILED || mprotect(map, page, PROT_NONE) != 0) return 1;
    std::size_t digests = 0;
    for (const Group& group : kGroups) {
        Run run{group, {}};
        const std::size_t depth = depthOf(run, static_cast<unsigned char*>(map) + page);
        std::printf("%6zu bytes of stack: %s, %zu digests\n", depth, group.name, run.report.lines.size());
        if (depth == 0 || run.report.lines.empty()) return 1;
        digests += run.report.lines.size();
    }
    std::printf("%zu digests\n", digests);
    return digests < 300;
}
