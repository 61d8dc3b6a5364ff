// bench_team.h - how many threads the row-parallel functions use in a benchmark.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

// While it lives, ownGetNumThreads() answers this many; otherwise as many as there are processors.
class Team {
public:
    explicit Team(int threads);
    ~Team();
    Team(const Team&) = delete;
    Team& operator=(const Team&) = delete;

    static int all();
};

// Benchmarks of plane functions, whose arguments are width, height and threads. They run on one thread, by
// processor time, on a region of 8192 samples and on a picture; and what shares out its rows runs the picture
// on all, by the clock.
struct PlaneBenchmark {
    const char* name;
    void (*run)(benchmark::State&);
    bool shared = false;
};
inline bool registerAll(const std::vector<PlaneBenchmark>& benchmarks) {
    for (const PlaneBenchmark& b : benchmarks) {
        benchmark::RegisterBenchmark(b.name, b.run)->Args({128, 64, 1})->Args({1920, 1080, 1});
        if (b.shared)
            benchmark::RegisterBenchmark((std::string(b.name) + "/team").c_str(), b.run)
                ->Args({1920, 1080, Team::all()})
                ->UseRealTime();
    }
    return true;
}
