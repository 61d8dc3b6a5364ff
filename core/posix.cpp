// posix.cpp - memory on POSIX systems.
// SPDX-License-Identifier: BSD-2-Clause
#include "system.h"

#include <cstdlib>

namespace zmx {

void* allocateAligned(std::size_t bytes, std::size_t alignment) {
    void* block = nullptr;
    return posix_memalign(&block, alignment, bytes) == 0 ? block : nullptr;
}

void releaseAligned(void* block) { std::free(block); }

} // namespace zmx
