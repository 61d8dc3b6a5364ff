// windows.cpp - memory and processors on Windows.
// SPDX-License-Identifier: BSD-2-Clause
#include "system.h"

#include <bit>
#include <malloc.h>
#include <windows.h>

namespace zmx {

void* allocateAligned(std::size_t bytes, std::size_t alignment) { return _aligned_malloc(bytes, alignment); }

void releaseAligned(void* block) { _aligned_free(block); }

int usableProcessors() {
    // The mask covers the processor group that the process was started in: 64 processors at most. It is 0 for a process
    // that has threads in several groups, which may then use all of them.
    DWORD_PTR ours = 0, all = 0;
    if (GetProcessAffinityMask(GetCurrentProcess(), &ours, &all) && ours != 0)
        return std::popcount(static_cast<unsigned long long>(ours));
    const DWORD count = GetActiveProcessorCount(ALL_PROCESSOR_GROUPS);
    return count > 0 ? int(count) : 1;
}

} // namespace zmx
