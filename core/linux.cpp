// linux.cpp - how many processors this process may really use: those of its affinity mask, within the quota of its
// control group.
// SPDX-License-Identifier: BSD-2-Clause
#include "linux.h"

#include "system.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sched.h>
#include <sstream>
#include <unistd.h>

namespace zmx {

int usableProcessors() {
    const int quota = quotaOfCgroup("/sys/fs/cgroup", [] {
        std::ifstream in("/proc/self/cgroup");
        return std::string(std::istreambuf_iterator<char>(in), {});
    }());
    return withinQuota(quota, affinityCount());
}

namespace {

std::string textOf(const std::string& path) {
    std::ifstream in(path);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// Whole processors for a quota of microseconds in a period, rounded up; 0 where either makes no sense.
int processors(long long quota, long long period) {
    if (quota <= 0 || period <= 0) return 0;
    return int(std::min<long long>((quota - 1) / period + 1, INT_MAX));
}

int tighter(int a, int b) { return a == 0 ? b : b == 0 ? a : std::min(a, b); }

} // namespace

int withinQuota(int quota, int processors) { return quota > 0 ? std::min(quota, processors) : processors; }

int quotaFromCpuMax(const std::string& cpuMax) {
    std::istringstream in(cpuMax);
    long long quota = 0, period = 0;
    if (!(in >> quota >> period)) return 0; // "max", or no such file
    return processors(quota, period);
}

int quotaOfCgroup(const std::string& root, const std::string& procSelfCgroup) {
    int best = 0;
    std::istringstream lines(procSelfCgroup);
    for (std::string line; std::getline(lines, line);) {
        // Lines read ID:CONTROLLERS:PATH; version 2 is the one with ID 0 and no controllers.
        const auto first = line.find(':'), second = line.find(':', first + 1);
        if (first == std::string::npos || second == std::string::npos) continue;
        const std::string controllers = line.substr(first + 1, second - first - 1);
        const bool v1 = ("," + controllers + ",").find(",cpu,") != std::string::npos;
        if (!v1 && !controllers.empty()) continue;
        // A quota holds for all that is below it, so every folder up to the root counts. Inside a container the
        // path may not exist under the mount; the walk then still ends at the root, which is the container's own.
        for (std::string path = line.substr(second + 1);; path.erase(path.rfind('/'))) {
            if (v1) {
                const std::string dir = root + "/cpu" + path;
                best = tighter(best, processors(std::atoll(textOf(dir + "/cpu.cfs_quota_us").c_str()),
                                                std::atoll(textOf(dir + "/cpu.cfs_period_us").c_str())));
            } else {
                best = tighter(best, quotaFromCpuMax(textOf(root + path + "/cpu.max")));
            }
            if (path.empty() || path.rfind('/') == std::string::npos) break;
        }
    }
    return best;
}

int affinityCount() {
    // The kernel refuses a mask that is too small, so larger ones are tried in turn.
    for (int cpus = CPU_SETSIZE; cpus <= (1 << 20); cpus *= 2) {
        cpu_set_t* set = CPU_ALLOC(std::size_t(cpus));
        if (!set) break;
        const std::size_t bytes = CPU_ALLOC_SIZE(std::size_t(cpus));
        const bool known = sched_getaffinity(0, bytes, set) == 0;
        const int count = known ? CPU_COUNT_S(bytes, set) : 0;
        CPU_FREE(set);
        if (known) return std::max(count, 1);
    }
    return int(std::max(sysconf(_SC_NPROCESSORS_ONLN), 1L));
}

} // namespace zmx
