// bench_team.cpp - stands in for libzmxcore's thread count.
// SPDX-License-Identifier: BSD-2-Clause
#include "bench/bench_team.h"

#include "zmxcore.h"

#include <algorithm>
#include <thread>

namespace {
int threadsNow = Team::all();
}

Team::Team(int threads) { threadsNow = threads; }
Team::~Team() { threadsNow = all(); }
int Team::all() {
    static const int processors = std::max(1, int(std::thread::hardware_concurrency()));
    return processors;
}

extern "C" int ownGetNumThreads(void) { return threadsNow; }
