// posix.cpp - memory on POSIX systems.
// SPDX-License-Identifier: BSD-2-Clause
#include "system.h"

#include <cstdlib>

namespace zmx {

void* allocateAligned(std::size_t bytes, std::size_t alignment) {
    // C11 asks for whole multiples of the alignment.
    return std::aligned_alloc(alignment, (bytes + alignment - 1) / alignment * alignment);
}

void releaseAligned(void* block) { std::free(block); }

} // namespace zmx
