// memory.h - how much memory is in use, and the most there has been.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <cstddef>

namespace hostile {

// Whether it is counted at all: the sanitizers have an allocator of their own.
extern const bool memoryIsCounted;
std::size_t memoryInUse();
// The most since the last call of restartPeak().
std::size_t peakMemory();
void restartPeak();

} // namespace hostile
