// memory.h - stands in for libzmxcore's allocator: counts blocks and fails on demand.
//
// Linking memory.cpp into a test program puts these definitions ahead of the libraries' own.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

// The n-th allocation from now (1 is the next) fails, and so do all later ones; 0: none fails.
void failAllocation(int n);

int allocationsMade();     // calls of zmxMalloc since the start, failed ones included
int blocksHeld();          // blocks not yet given back
int lastAllocationBytes(); // what the last call of zmxMalloc asked for
int nullsFreed();          // calls of zmxFree with a null pointer
