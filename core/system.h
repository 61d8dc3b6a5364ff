// system.h - what libzmxcore asks of the system. Each function has one definition in a build: memory in posix.cpp or
// windows.cpp, processors in linux.cpp, processors.cpp (other POSIX systems) or windows.cpp.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <cstddef>

namespace zmx {

// A block at a multiple of `alignment`, a power of two that pointers fit in; null when there is no memory.
void* allocateAligned(std::size_t bytes, std::size_t alignment);
// Gives such a block back; a null pointer is harmless.
void releaseAligned(void* block);

// How many processors this process may use, at least 1.
int usableProcessors();

} // namespace zmx
