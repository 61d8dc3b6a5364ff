// guardedmemory.cpp - stands in for libzmxcore's allocator: every block ends at a guard page, so that one byte too far
// is a crash.
//
// Including this into a test program puts these definitions ahead of the libraries' own.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/support/guarded.h"
#include "zmxcore.h"

#include <map>
#include <memory>

namespace {
std::map<void*, std::unique_ptr<GuardedBlock>>& guardedBlocks() {
    static std::map<void*, std::unique_ptr<GuardedBlock>> blocks;
    return blocks;
}
} // namespace

extern "C" void* zmxMalloc(int len) {
    auto block = std::make_unique<GuardedBlock>(std::size_t(len));
    void* p = block->data();
    guardedBlocks()[p] = std::move(block);
    return p;
}

extern "C" void zmxFree(void* ptr) { guardedBlocks().erase(ptr); }
