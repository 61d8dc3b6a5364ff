// manythreads.cpp - every function of libzmxjpx from several threads at once, each with buffers and states of its own: the
// digests are those of one thread alone. What the threads must not share, a thread sanitizer sees (scripts/threads).
//
//   zmx_many_threads [THREADS]      4 of them unless told
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/groups.h"

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <thread>

namespace {

constexpr std::size_t kMany = std::size(kGroups);

// All groups, beginning with one of them, so that threads meet in the same functions and in different ones.
std::vector<Report> everythingFrom(std::size_t first) {
    std::vector<Report> reports(kMany);
    for (std::size_t i = 0; i < kMany; ++i) kGroups[(first + i) % kMany].digests(reports[(first + i) % kMany]);
    return reports;
}

int differences(const std::vector<Report>& alone, const std::vector<Report>& together) {
    int different = 0;
    for (std::size_t g = 0; g < kMany; ++g)
        for (std::size_t i = 0; i < alone[g].lines.size(); ++i)
            if (i >= together[g].lines.size() || together[g].lines[i].digest != alone[g].lines[i].digest) {
                std::printf("different: %s\n", alone[g].lines[i].name.c_str());
                ++different;
            }
    return different;
}

} // namespace

int main(int count, char** arguments) {
    const int threads = count > 1 ? std::atoi(arguments[1]) : 4;
    std::vector<std::vector<Report>> together(std::size_t(threads < 2 ? 2 : threads));
    std::vector<std::thread> team;
    // Two begin with each group.
    for (std::size_t t = 0; t < together.size(); ++t)
        team.emplace_back([&, t] { together[t] = everythingFrom(t / 2 * 7); });
    for (std::thread& t : team) t.join();
    const std::vector<Report> alone = everythingFrom(0);
    std::size_t digests = 0;
    int different = 0;
    for (const Report& r : alone) digests += r.lines.size();
    for (const auto& reports : together) different += differences(alone, reports);
    std::printf("%zu digests on each of %zu threads, %d different\n", digests, together.size(), different);
    return different != 0 || digests < 300;
}
