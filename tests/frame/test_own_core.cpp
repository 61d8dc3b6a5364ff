// libzmxcore: memory, and the count of processors that a process may use.
// SPDX-License-Identifier: BSD-2-Clause
#include "linux.h"
#include "zmxcore.h"

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sched.h>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

using namespace zmx;

namespace {
std::size_t refusedBelow = 0; // bytes of a mask
bool noMask = false;          // no memory for one
} // namespace

// These stand in for the C library's.
extern "C" cpu_set_t* __sched_cpualloc(std::size_t processors) noexcept {
    return noMask ? nullptr : static_cast<cpu_set_t*>(std::malloc(CPU_ALLOC_SIZE(processors)));
}
extern "C" int sched_getaffinity(pid_t pid, std::size_t bytes, cpu_set_t* set) noexcept {
    if (bytes < refusedBelow) return errno = EINVAL, -1;
    const long written = syscall(SYS_sched_getaffinity, pid, bytes, set);
    if (written < 0) return -1;
    std::memset(reinterpret_cast<char*>(set) + written, 0, bytes - std::size_t(written));
    return 0;
}

TEST(CoreMemory, BlocksAreAlignedTo64Bytes) {
    for (int len : {1, 2, 63, 64, 65, 1000, 1 << 20}) {
        void* p = zmxMalloc(len);
        ASSERT_NE(p, nullptr) << len;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 64, 0u) << len;
        std::memset(p, 0x5A, std::size_t(len));
        zmxFree(p);
    }
}

TEST(CoreMemory, LengthBelowOneGivesNull) {
    EXPECT_EQ(zmxMalloc(0), nullptr);
    EXPECT_EQ(zmxMalloc(-1), nullptr);
    EXPECT_EQ(zmxMalloc(INT_MIN), nullptr);
}

TEST(CoreMemory, FreeOfNullIsHarmless) { EXPECT_NO_FATAL_FAILURE(zmxFree(nullptr)); }

TEST(CoreThreads, CountIsPositiveAndWithinTheAffinityMask) {
    const int n = ownGetNumThreads();
    EXPECT_GE(n, 1);
    EXPECT_LE(n, affinityCount());
    EXPECT_EQ(n, ownGetNumThreads());
}

TEST(CoreThreads, AffinityMaskIsCounted) {
    cpu_set_t before, one;
    ASSERT_EQ(sched_getaffinity(0, sizeof before, &before), 0);
    CPU_ZERO(&one);
    for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu)
        if (CPU_ISSET(cpu, &before)) {
            CPU_SET(cpu, &one);
            break;
        }
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    EXPECT_EQ(affinityCount(), 1);
    ASSERT_EQ(sched_setaffinity(0, sizeof before, &before), 0);
    EXPECT_EQ(affinityCount(), CPU_COUNT(&before));
}

// The kernel refuses a mask that is smaller than its own. Where it refuses all, the processors that are online count.
TEST(CoreThreads, MasksThatAreRefused) {
    const int known = affinityCount();
    for (std::size_t least : {CPU_SETSIZE / 8 + 1, 2 * CPU_SETSIZE / 8 + 1, 100'000}) {
        refusedBelow = least;
        EXPECT_EQ(affinityCount(), known) << least;
    }
    refusedBelow = std::size_t(-1);
    EXPECT_EQ(affinityCount(), sysconf(_SC_NPROCESSORS_ONLN));
    refusedBelow = 0;
    noMask = true;
    EXPECT_EQ(affinityCount(), sysconf(_SC_NPROCESSORS_ONLN));
    noMask = false;
}

TEST(CoreThreads, AQuotaLeavesNoMoreThanThereAre) {
    EXPECT_EQ(withinQuota(0, 7), 7);
    EXPECT_EQ(withinQuota(3, 7), 3);
    EXPECT_EQ(withinQuota(8, 7), 7);
}

TEST(CoreThreads, QuotaIsRoundedUpToWholeProcessors) {
    EXPECT_EQ(quotaFromCpuMax("max 100000\n"), 0);
    EXPECT_EQ(quotaFromCpuMax("200000 100000\n"), 2);
    EXPECT_EQ(quotaFromCpuMax("150000 100000\n"), 2);
    EXPECT_EQ(quotaFromCpuMax("1 100000\n"), 1);
    EXPECT_EQ(quotaFromCpuMax(""), 0);
    EXPECT_EQ(quotaFromCpuMax("100000 0"), 0);
    EXPECT_EQ(quotaFromCpuMax("9000000000000000000 1"), INT_MAX);
    EXPECT_EQ(quotaFromCpuMax("-5 100000"), 0);
}

namespace {
void put(const std::filesystem::path& file, const char* text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << text;
}
} // namespace

TEST(CoreThreads, TheTightestQuotaOnTheWayToTheRootHolds) {
    // A folder of its own, as the test may run several times at once.
    std::string name = (std::filesystem::path(::testing::TempDir()) / "zmx_cgroup_XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    const std::filesystem::path root = name;
    put(root / "a/cpu.max", "300000 100000\n");
    put(root / "a/b/cpu.max", "max 100000\n");
    EXPECT_EQ(quotaOfCgroup(root, "0::/a/b\n"), 3);
    put(root / "a/b/cpu.max", "700000 100000\n");
    EXPECT_EQ(quotaOfCgroup(root, "0::/a/b\n"), 3);
    put(root / "a/b/cpu.max", "100000 100000\n");
    EXPECT_EQ(quotaOfCgroup(root, "0::/a/b\n"), 1);
    EXPECT_EQ(quotaOfCgroup(root, "0::/a\n"), 3);
    EXPECT_EQ(quotaOfCgroup(root, "0::/\n"), 0);
    put(root / "cpu.max", "200000 100000\n"); // a container's own root
    EXPECT_EQ(quotaOfCgroup(root, "0::/\n"), 2);
    EXPECT_EQ(quotaOfCgroup(root, "0::/not/there\n"), 2);
    put(root / "cpu/x/cpu.cfs_quota_us", "400000\n"); // version 1
    put(root / "cpu/x/cpu.cfs_period_us", "100000\n");
    EXPECT_EQ(quotaOfCgroup(root, "4:cpuacct,cpu:/x\n"), 4);
    put(root / "cpu/x/cpu.cfs_quota_us", "-1\n");
    EXPECT_EQ(quotaOfCgroup(root, "4:cpuacct,cpu:/x\n"), 0);
    EXPECT_EQ(quotaOfCgroup(root, "4:memory:/x\n"), 0);
    EXPECT_EQ(quotaOfCgroup(root, "nonsense"), 0);
    EXPECT_EQ(quotaOfCgroup(root, "0:half"), 0);
    EXPECT_EQ(quotaOfCgroup(root, "0::"), 2);
    EXPECT_EQ(quotaOfCgroup(root, "0::no-slash"), 0);
    std::filesystem::remove_all(root);
}
