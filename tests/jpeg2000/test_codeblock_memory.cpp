// The memory of the code-block states: what is taken, what is given back, and every allocation failing in its
// turn.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/support/codeblock.h"
#include "tests/support/memory.cpp"

#include <climits>

TEST(CodeBlockMemory, DecoderState) {
    const int before = blocksHeld(), asked = allocationsMade();
    ZmxiDecodeCBProgrState* p = nullptr;
    ASSERT_EQ(zmxiDecodeCBProgrInitAlloc_JPEG2K(&p, {12, 7}), zmxStsNoErr);
    EXPECT_EQ(allocationsMade(), asked + 1);
    int bytes = 0;
    ASSERT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K({12, 7}, &bytes), zmxStsNoErr);
    EXPECT_EQ(lastAllocationBytes(), bytes);
    EXPECT_EQ(blocksHeld(), before + 1);
    // It is fit for use, and nothing is attached.
    const Zmx8u byte = 0;
    EXPECT_EQ(zmxiDecodeCBProgrStep_JPEG2K(&byte, 1, p), zmxStsCBNotAttachedErr);
    Guarded<Zmx32s> dst(84);
    ASSERT_EQ(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(dst.data(), 48, {12, 7}, p, 0, 4, 0), zmxStsNoErr);
    ASSERT_EQ(zmxiDecodeCBProgrSetPassCounter_JPEG2K(10, p), zmxStsNoErr);
    EXPECT_EQ(zmxiDecodeCBProgrStep_JPEG2K(&byte, 1, p), zmxStsNoErr);
    EXPECT_EQ(allocationsMade(), asked + 1) << "decoding takes no memory";
    ASSERT_EQ(zmxiDecodeCBProgrFree_JPEG2K(p), zmxStsNoErr);
    EXPECT_EQ(blocksHeld(), before);
}

TEST(CodeBlockMemory, NoneForTheDecoder) {
    const int before = blocksHeld();
    ZmxiDecodeCBProgrState* p = reinterpret_cast<ZmxiDecodeCBProgrState*>(&p);
    failAllocation(1);
    EXPECT_EQ(zmxiDecodeCBProgrInitAlloc_JPEG2K(&p, {12, 7}), zmxStsMemAllocErr);
    failAllocation(0);
    EXPECT_EQ(p, nullptr);
    EXPECT_EQ(blocksHeld(), before);
}

TEST(CodeBlockMemory, BadArgumentsAskForNothing) {
    const int asked = allocationsMade();
    ZmxiDecodeCBProgrState* d = nullptr;
    ZmxiEncodeState_JPEG2K* e = nullptr;
    checkOrder({kNull, kSize, kSize}, [&](const Bad& bad) {
        return zmxiDecodeCBProgrInitAlloc_JPEG2K(bad.null(0, &d), {bad.below1(1, 1), bad.below1(2, 1)});
    });
    checkOrder({kNull, kSize, kSize}, [&](const Bad& bad) {
        return zmxiEncodeInitAlloc_JPEG2K(bad.null(0, &e), {bad.below1(1, 1), bad.below1(2, 1)});
    });
    EXPECT_EQ(allocationsMade(), asked);
}

TEST(CodeBlockMemory, EncoderState) {
    for (ZmxiSize size : {ZmxiSize{1, 1}, ZmxiSize{9, 13}, ZmxiSize{64, 64}}) {
        const int before = blocksHeld(), asked = allocationsMade();
        ZmxiEncodeState_JPEG2K* p = nullptr;
        ASSERT_EQ(zmxiEncodeInitAlloc_JPEG2K(&p, size), zmxStsNoErr);
        EXPECT_EQ(allocationsMade(), asked + 5) << "the state, the coder, decisions, contexts, flags";
        EXPECT_EQ(blocksHeld(), before + 5);
        Rng rng(0x6331);
        BlockSamples samples = randomBlock(rng, size.width, size.height, 9);
        samples[0] = 0x155;
        const CodedBlock c = encodeBlock(p, samples, size, EncodeChoice(), 16);
        EXPECT_GT(c.passes, 0);
        EXPECT_EQ(allocationsMade(), asked + 5) << "loading and storing take no memory";
        const int freed = nullsFreed();
        ASSERT_EQ(zmxiEncodeFree_JPEG2K(p), zmxStsNoErr);
        EXPECT_EQ(blocksHeld(), before);
        EXPECT_EQ(nullsFreed(), freed);
    }
}

TEST(CodeBlockMemory, EachAllocationOfTheEncoderFailing) {
    const int before = blocksHeld();
    for (int n = 1; n <= 5; ++n) {
        SCOPED_TRACE(n);
        ZmxiEncodeState_JPEG2K* p = reinterpret_cast<ZmxiEncodeState_JPEG2K*>(&p);
        failAllocation(n);
        EXPECT_EQ(zmxiEncodeInitAlloc_JPEG2K(&p, {9, 9}), zmxStsMemAllocErr);
        failAllocation(0);
        EXPECT_EQ(p, nullptr);
        EXPECT_EQ(blocksHeld(), before);
    }
    ZmxiEncodeState_JPEG2K* p = nullptr;
    failAllocation(6);
    EXPECT_EQ(zmxiEncodeInitAlloc_JPEG2K(&p, {9, 9}), zmxStsNoErr);
    failAllocation(0);
    EXPECT_EQ(zmxiEncodeFree_JPEG2K(p), zmxStsNoErr);
    EXPECT_EQ(blocksHeld(), before);
}

// The two arrays of decisions are for 1090 bytes to each column of four samples.
TEST(CodeBlockMemory, BytesOfTheEncoder) {
    const struct {
        ZmxiSize size;
        int decisions, flags;
    } cases[] = {
        {{1, 1}, 1090, 32 * 3},
        {{7, 5}, 7 * 1090 * 2, 64 * 5},
        {{64, 64}, 64 * 1090 * 16, 288 * 34},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.size.width);
        // The sizes asked for, whatever their order: the allocation at which all stops tells the last.
        std::vector<int> bytes;
        for (int n = 1; n <= 5; ++n) {
            ZmxiEncodeState_JPEG2K* p = nullptr;
            failAllocation(n);
            EXPECT_EQ(zmxiEncodeInitAlloc_JPEG2K(&p, c.size), zmxStsMemAllocErr);
            bytes.push_back(lastAllocationBytes());
        }
        failAllocation(0);
        EXPECT_EQ(std::count(bytes.begin(), bytes.end(), c.decisions), 2);
        EXPECT_EQ(std::count(bytes.begin(), bytes.end(), c.flags), 1);
    }
}

// ---- sizes that an int cannot tell: they are refused, by arithmetic that does not overflow itself

namespace {
// Sizes of which a side or both are as large as can be; and three whose bytes modulo 2^64 are less than a million for
// each array of decisions.
const ZmxiSize kHuge[] = {{INT_MAX, INT_MAX},
                          {INT_MAX, INT_MAX - 1},
                          {INT_MAX - 7, INT_MAX},
                          {INT_MAX, 1},
                          {INT_MAX, 4},
                          {1, INT_MAX},
                          {200000000, 200000000},
                          {1 << 30, 1 << 30},
                          {1 << 29, 4},
                          {1 << 20, 1 << 20},
                          {65536, 65536},
                          {46341, 46341},
                          {1229484435, 55059236},
                          {1339314517, 101088240},
                          {1676085371, 1211653204}};
} // namespace

TEST(CodeBlockMemory, HugeStatesOfTheDecoderAreRefused) {
    const int asked = allocationsMade();
    for (ZmxiSize size : kHuge) {
        SCOPED_TRACE(::testing::Message() << size.width << " by " << size.height);
        int bytes = 77;
        EXPECT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K(size, &bytes), zmxStsSizeErr);
        EXPECT_EQ(bytes, 0) << "which no allocation gives";
        bytes = 77;
        EXPECT_EQ(zmxiDecodeGetBufSize_JPEG2K(size, &bytes), zmxStsSizeErr);
        EXPECT_EQ(bytes, 0);
        EXPECT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K(size, nullptr), zmxStsNullPtrErr);
        ZmxiDecodeCBProgrState* p = reinterpret_cast<ZmxiDecodeCBProgrState*>(&p);
        EXPECT_EQ(zmxiDecodeCBProgrInitAlloc_JPEG2K(&p, size), zmxStsMemAllocErr);
        EXPECT_EQ(p, nullptr);
    }
    EXPECT_EQ(allocationsMade(), asked);
}

TEST(CodeBlockMemory, HugeStatesOfTheEncoderAreRefused) {
    const int before = blocksHeld();
    for (ZmxiSize size : kHuge) {
        SCOPED_TRACE(::testing::Message() << size.width << " by " << size.height);
        const int asked = allocationsMade();
        ZmxiEncodeState_JPEG2K* p = reinterpret_cast<ZmxiEncodeState_JPEG2K*>(&p);
        EXPECT_EQ(zmxiEncodeInitAlloc_JPEG2K(&p, size), zmxStsMemAllocErr);
        EXPECT_EQ(p, nullptr);
        EXPECT_LE(allocationsMade(), asked + 2) << "the state and the coder, and nothing that depends on the size";
        EXPECT_EQ(blocksHeld(), before);
    }
}

// The largest block that is not refused, and one column more.
TEST(CodeBlockMemory, TheLargestStates) {
    int one = 0, bytes = 0;
    ASSERT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K({1, 1}, &one), zmxStsNoErr);
    const int fixed = one - 3 * 32, stride = (INT_MAX - fixed) / 3 / 32 * 32, width = (stride - 8) / 4;
    EXPECT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K({width, 1}, &bytes), zmxStsNoErr);
    EXPECT_EQ(bytes, 3 * stride + fixed);
    EXPECT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K({width + 1, 1}, &bytes), zmxStsSizeErr);
    // Rows: 32 bytes for a pair of them.
    const int rows = (INT_MAX - fixed) / 32, height = 2 * (rows - 2);
    EXPECT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K({1, height}, &bytes), zmxStsNoErr);
    EXPECT_EQ(bytes, 32 * rows + fixed);
    EXPECT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K({1, height + 1}, &bytes), zmxStsSizeErr);

    // What the encoder asks for third: the decisions.
    const auto decisions = [](ZmxiSize size) {
        const int asked = allocationsMade();
        ZmxiEncodeState_JPEG2K* p = nullptr;
        failAllocation(3);
        EXPECT_EQ(zmxiEncodeInitAlloc_JPEG2K(&p, size), zmxStsMemAllocErr);
        failAllocation(0);
        return allocationsMade() - asked < 3 ? 0 : lastAllocationBytes();
    };
    const int columns = INT_MAX / 1090;
    EXPECT_EQ(decisions({columns, 4}), columns * 1090);
    EXPECT_EQ(decisions({columns + 1, 1}), 0);
    EXPECT_EQ(decisions({columns, 5}), 0);
    EXPECT_EQ(decisions({1, 4 * columns}), columns * 1090);
    EXPECT_EQ(decisions({1, 4 * columns + 1}), 0);
}
