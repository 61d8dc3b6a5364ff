// The frame inside the library: argument tests, wrapping arithmetic, the row loops, and the road to memory.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjrows.h"
#include "psalloc.h"
#include "tests/support/byteorder.h"
#include "tests/support/memory.cpp"
#include "tests/support/threads.cpp"

#include <algorithm>
#include <atomic>
#include <climits>
#include <gtest/gtest.h>
#include <mutex>
#include <numeric>
#include <omp.h>
#include <set>
#include <thread>
#include <vector>

using namespace zmx;

TEST(Frame, TheFirstFailingTestDecides) {
    int x = 0;
    int* const planes[3] = {&x, nullptr, &x};
    EXPECT_EQ(ZmxStatus(Args().ptr(&x).step(1).size(1)), zmxStsNoErr);
    EXPECT_EQ(ZmxStatus(Args().ptr(nullptr).step(0).size(0)), zmxStsNullPtrErr);
    EXPECT_EQ(ZmxStatus(Args().ptr(&x).step(0).size(0)), zmxStsStepErr);
    EXPECT_EQ(ZmxStatus(Args().ptr(&x).step(-1)), zmxStsStepErr);
    EXPECT_EQ(ZmxStatus(Args().size(ZmxiSize{1, 0})), zmxStsSizeErr);
    EXPECT_EQ(ZmxStatus(Args().size(ZmxiSize{0, 1})), zmxStsSizeErr);
    EXPECT_EQ(ZmxStatus(Args().planes(planes, 3).step(0)), zmxStsNullPtrErr);
    EXPECT_EQ(ZmxStatus(Args().planes(planes, 1).step(0)), zmxStsStepErr);
    // A failed test of the array keeps the elements from being looked at.
    EXPECT_EQ(ZmxStatus(Args().ptr(nullptr).planes(static_cast<int* const*>(nullptr), 3)), zmxStsNullPtrErr);
    EXPECT_EQ(ZmxStatus(Args().arg(true).ptr(nullptr)), zmxStsBadArgErr);
}

TEST(Frame, WrappingArithmetic) {
    EXPECT_EQ(wrapAdd(INT_MAX, 1), INT_MIN);
    EXPECT_EQ(wrapSub(INT_MIN, 1), INT_MAX);
    EXPECT_EQ(wrapMul(65536, 65536), 0);
    EXPECT_EQ(wrapMul(0x10001, 0x10001), 0x20001);
    EXPECT_EQ(wrap16s(32768), -32768);
    EXPECT_EQ(wrap16s(-32769), 32767);
    EXPECT_EQ(saturate8u(-1), 0);
    EXPECT_EQ(saturate8u(256), 255);
    EXPECT_EQ(saturate16s(40000), 32767);
    EXPECT_EQ(saturate16s(-40000), -32768);
}

TEST(Frame, ElementsAtAnyAddress) {
    Zmx8u row[16] = {};
    store(row + 1, 1, Zmx16s(-2));
    EXPECT_EQ(row[kLittleEndian ? 3 : 4], 0xFE);
    EXPECT_EQ(row[kLittleEndian ? 4 : 3], 0xFF);
    EXPECT_EQ(load<Zmx16s>(row + 1, 1), -2);
    EXPECT_EQ(rowAt(row, 5, 2) - row, 10);
}

namespace {

// Runs a region and tells in how many of its rows a parallel region was open, and which threads took part.
struct Watched {
    int inRegion = 0;
    std::vector<int> seen;
    std::set<std::thread::id> threads;
};
Watched watch(ZmxiSize roi) {
    Watched r;
    std::mutex lock;
    r.seen.assign(std::size_t(roi.height), 0);
    Parallel::rows(roi, [&](int y) {
        std::lock_guard hold(lock);
        r.inRegion += omp_get_level() > 0;
        r.seen[std::size_t(y)] += 1;
        r.threads.insert(std::this_thread::get_id());
    });
    return r;
}

} // namespace

TEST(Frame, UpTo8192SamplesNoRegionIsOpened) {
    for (ZmxiSize roi : {ZmxiSize{1, 1}, ZmxiSize{128, 64}, ZmxiSize{8192, 1}, ZmxiSize{1, 8192}}) {
        setThreads(7);
        const int before = threadsAsked();
        const long opened = regionsOpened();
        const Watched r = watch(roi);
        EXPECT_EQ(r.inRegion, 0) << roi.width << " by " << roi.height;
        EXPECT_EQ(threadsAsked(), before + 1) << "the thread count is asked at every size";
        EXPECT_EQ(regionsOpened(), opened);
        EXPECT_EQ(std::accumulate(r.seen.begin(), r.seen.end(), 0), roi.height);
    }
}

TEST(Frame, Above8192SamplesOneRegionIsOpened) {
    for (ZmxiSize roi : {ZmxiSize{129, 64}, ZmxiSize{8193, 1}, ZmxiSize{1, 8193}})
        for (int threads : {1, 2, 7}) {
            setThreads(threads);
            const int before = threadsAsked();
            const long opened = regionsOpened();
            const Watched r = watch(roi);
            EXPECT_EQ(r.inRegion, roi.height) << roi.width << " by " << roi.height;
            EXPECT_EQ(threadsAsked(), before + 1);
            if (regionsCounted()) {
                EXPECT_EQ(regionsOpened(), opened + 1);
            }
            for (int n : r.seen) ASSERT_EQ(n, 1) << "each row once";
            EXPECT_LE(int(r.threads.size()), threads);
            if (roi.height >= 64) {
                EXPECT_EQ(int(r.threads.size()), threads);
            }
        }
}

// A count that no honest libzmxcore answers still does all rows, once each.
TEST(Frame, AThreadCountThatLies) {
    for (int threads : {0, -1, INT_MIN, 1'000'000, INT_MAX})
        for (ZmxiSize roi : {ZmxiSize{8193, 1}, ZmxiSize{300, 31}, ZmxiSize{30, 300}}) {
            SCOPED_TRACE(::testing::Message() << threads << " threads for " << roi.height << " rows");
            setThreads(threads);
            const Watched r = watch(roi);
            for (int n : r.seen) ASSERT_EQ(n, 1);
            EXPECT_EQ(r.inRegion, roi.height);
            EXPECT_LE(int(r.threads.size()), threads < 1 ? 1 : std::min(roi.height, 256));
        }
    EXPECT_EQ(teamFor(7, 100), 7);
    EXPECT_EQ(teamFor(7, 3), 3);
    EXPECT_EQ(teamFor(0, 3), 1);
    EXPECT_EQ(teamFor(INT_MAX, INT_MAX), 256);
}

TEST(Frame, TheProductWraps) {
    // 65536 x 65536 is 0 in 32 bits, so the loop stays on this thread; the body runs for rows only.
    setThreads(2);
    int rows = 0, level = 0;
    Parallel::rows(ZmxiSize{65536, 65536}, [&](int) {
        ++rows;
        level += omp_get_level();
    });
    EXPECT_EQ(rows, 65536);
    EXPECT_EQ(level, 0);
}

TEST(Frame, InsideAnotherRegion) {
    setThreads(2);
    std::atomic<int> rows{0};
#pragma omp parallel num_threads(2)
    Parallel::rows(ZmxiSize{129, 64}, [&](int) { ++rows; });
    EXPECT_EQ(rows, 2 * 64);
}

TEST(Frame, MemoryOfNoLengthIsNotAskedFor) {
    const int before = allocationsMade();
    EXPECT_EQ(zmxsMalloc_8u(0), nullptr);
    EXPECT_EQ(zmxsMalloc_8u(-1), nullptr);
    EXPECT_EQ(zmxsMalloc_8u(INT_MIN), nullptr);
    EXPECT_EQ(allocationsMade(), before);
    for (int len : {1, 5}) {
        const int sofar = allocationsMade();
        Zmx8u* p = zmxsMalloc_8u(len);
        ASSERT_NE(p, nullptr) << len;
        EXPECT_EQ(allocationsMade(), sofar + 1);
        EXPECT_EQ(lastAllocationBytes(), len);
        zmxsFree(p);
    }
    EXPECT_EQ(blocksHeld(), 0);
    zmxsFree(nullptr);
    EXPECT_EQ(nullsFreed(), 1) << "a null pointer is handed on";
    failAllocation(1);
    EXPECT_EQ(zmxsMalloc_8u(5), nullptr);
    failAllocation(0);
}
