// zmxcore.cpp - memory for libzmxjpx.
#include "zmxcore.h"

#include <cstdlib>

namespace {
constexpr std::size_t kAlignment = 64; // a cache line
} // namespace

void* zmxMalloc(int len) {
    if (len < 1) return nullptr;
    // aligned_alloc wants a multiple of the alignment; the sum cannot overflow, len being an int.
    const std::size_t bytes = (std::size_t(len) + kAlignment - 1) / kAlignment * kAlignment;
    return std::aligned_alloc(kAlignment, bytes);
}

void zmxFree(void* ptr) { std::free(ptr); }
