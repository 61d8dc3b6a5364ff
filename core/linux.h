// linux.h - how many processors a process may really use on Linux; the parts that a test can reach.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <string>

namespace zmx {

// The CPU quota that a control group's files grant, in whole processors rounded up, or 0 for no limit.
// `cpuMax` is the text of cgroup v2's cpu.max ("QUOTA PERIOD" or "max PERIOD").
int quotaFromCpuMax(const std::string& cpuMax);

// The tightest quota over a cgroup v2 path and all of its parents below `root`, or 0 for no limit.
// `procSelfCgroup` is the text of /proc/self/cgroup.
int quotaOfCgroup(const std::string& root, const std::string& procSelfCgroup);

// How many processors are left of so many by a quota, or by 0 for no limit.
int withinQuota(int quota, int processors);

// Processors in the affinity mask of this process, at least 1.
int affinityCount();

} // namespace zmx
