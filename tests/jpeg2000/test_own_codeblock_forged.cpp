// The code-block coders on states that something else has written to: every number in them at its extremes, pointers
// and the geometry of an attached block excepted, which say where memory is. All memory ends at a guard page.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2decstate.h"
#include "pj2encstate.h"
#include "tests/jpeg2000/support/codeblock.h"
#include "tests/support/extremes.h"
#include "tests/support/guardedmemory.cpp"
#include "tests/support/rounds.h"

#include <cstddef>
#include <iterator>

using namespace zmx;

namespace {

using Bytes = std::vector<Zmx8u>;

// The 32-bit words of a block of memory but for the fields at these places.
struct Field {
    std::size_t offset, bytes;
};
std::vector<std::size_t> wordsBut(std::size_t bytes, std::initializer_list<Field> excepted) {
    std::vector<std::size_t> words;
    for (std::size_t at = 0; at < bytes; at += 4) {
        bool spared = false;
        for (const Field& f : excepted) spared = spared || (at >= f.offset && at < f.offset + f.bytes);
        if (!spared) words.push_back(at);
    }
    return words;
}

// Calls with(offset, value) for each word of a block and each extreme, in a fresh copy of what it holds now; in short for
// every fifth extreme, others for the next word.
template <class Block, class With> void forge(Block* block, const std::vector<std::size_t>& words, With with) {
    const Block kept = *block;
    const std::size_t step = shortened() ? 5 : 1;
    for (std::size_t offset : words)
        for (std::size_t i = offset / 4 % step; i < std::size(kExtremes); i += step) {
            const int value = kExtremes[i];
            setField(block, offset, value);
            with(offset, value);
            *block = kept;
            if (::testing::Test::HasFailure()) {
                ADD_FAILURE() << "the word at " << offset << " was " << value;
                return;
            }
        }
}

} // namespace

TEST(ForgedCodeBlocks, Decoder) {
    using State = ZmxiDecodeCBProgrState;
    const std::size_t pointer = sizeof(void*);
    const auto words = wordsBut(sizeof(State), {{offsetof(State, magic), 4},
                                                {offsetof(State, block), sizeof(CodeBlockRec)},
                                                {offsetof(State, pBlock), pointer},
                                                {offsetof(State, pSample), pointer},
                                                {offsetof(State, pStripe), pointer},
                                                {offsetof(State, pColumn), pointer},
                                                {offsetof(State, pColumnEnd), pointer},
                                                {offsetof(State, pFlagPlaneRec), pointer},
                                                {offsetof(State, pZeroCodingLUT), pointer},
                                                {offsetof(State, pFlagStripe), pointer},
                                                {offsetof(State, pFlagColumn), pointer},
                                                {offsetof(State, pFlagWord), pointer},
                                                {offsetof(State, flagPlane), sizeof(FlagPlaneRec)},
                                                {offsetof(State, pFlagArea), pointer},
                                                {offsetof(State, mq.pData), pointer},
                                                {offsetof(State, raw.pData), pointer}});
    const ZmxiSize size{5, 6};
    Rng rng(0x6601);
    int refused = 0;
    for (int style :
         {0, int(ZMX_CB_SELECTIVE_BYPASS), ZMX_CB_TERMINATE_ALL | ZMX_CB_SELECTIVE_BYPASS | ZMX_CB_RESET_CTX,
          ZMX_CB_SEGMENTATION_SYMBOLS | ZMX_CB_ERROR_PREDICTION})
        for (int stepsBefore : {0, 1, 2}) {
            DecoderState state(size);
            Guarded<Zmx32s> dst(30);
            Guarded<Zmx8u> src(7);
            rng.bytes(src.data(), src.size());
            State* const s = state;
            ASSERT_EQ(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(dst.data(), 20, size, s, 0, 7, Zmx32u(style)),
                      zmxStsNoErr);
            ASSERT_EQ(zmxiDecodeCBProgrSetPassCounter_JPEG2K(9, s), zmxStsNoErr);
            for (int i = 0; i < stepsBefore; ++i) zmxiDecodeCBProgrStep_JPEG2K(src.data(), 7, s);
            forge(s, words, [&](std::size_t offset, int value) {
                for (int i = 0; i < 3; ++i) {
                    const ZmxStatus status = zmxiDecodeCBProgrStep_JPEG2K(src.data(), i == 2 ? -1 : 7, s);
                    EXPECT_TRUE(status == zmxStsNoErr || status == zmxStsCBDamagedErr ||
                                status == zmxStsCBNotAttachedErr || status == zmxStsContextMatchErr)
                        << status;
                    if (status == zmxStsContextMatchErr) {
                        ++refused;
                        EXPECT_TRUE(offset >= offsetof(State, mq.ctxState) && offset < offsetof(State, mq.markerFound));
                        EXPECT_TRUE(value < 0 || value > 1) << "0 and 1 are a row and a symbol";
                    }
                }
            });
            if (HasFailure()) return;
        }
    EXPECT_GT(refused, shortened() ? 200 : 1000);
}

namespace {

// What of a store, the getters and a load has a meaning on any state: no more bytes than told.
void callAll(ZmxiEncodeState_JPEG2K* s, Rng& rng, int* refused) {
    for (int call = 0; call < 2; ++call) {
        const int capacity = int(rng.range(1, call ? 400 : 5));
        static Guarded<Zmx8u> room(400);
        std::fill(room.data(), room.data() + 400, Zmx8u(0x5C));
        Zmx8u* const dst = room.data() + 400 - capacity;
        int n = capacity, more = 7;
        const ZmxStatus status = zmxiEncodeStoreBits_JPEG2K_1u(dst, &n, s, &more);
        if (status == zmxStsContextMatchErr) {
            ++*refused;
            EXPECT_EQ(n, capacity);
            EXPECT_EQ(more, 7);
            n = 0;
        } else {
            EXPECT_EQ(status, zmxStsNoErr);
            EXPECT_TRUE(n >= 0 && n <= capacity) << n;
        }
        EXPECT_EQ(std::count(room.data(), dst, 0x5C), dst - room.data());
        EXPECT_EQ(std::count(dst + n, dst + capacity, 0x5C), capacity - n);
    }
    for (int pass : {0, 1, 6, 90, 91, 108, 109, 110, INT_MAX, -1}) {
        int number = 0;
        double dist = 0;
        for (ZmxStatus status : {zmxiEncodeGetRate_JPEG2K(s, pass, &number), zmxiEncodeGetDist_JPEG2K(s, pass, &dist),
                                 zmxiEncodeGetTermPassLen_JPEG2K(s, pass, &number)})
            EXPECT_TRUE(status == zmxStsNoErr || status == zmxStsBadPassNumberErr) << status;
    }
}

} // namespace

TEST(ForgedCodeBlocks, Encoder) {
    const std::size_t pointer = sizeof(void*);
    const auto coderWords = wordsBut(sizeof(EncCoderState), {{offsetof(EncCoderState, pPassDecisions), pointer},
                                                             {offsetof(EncCoderState, pPassContexts), pointer},
                                                             {offsetof(EncCoderState, pContexts), pointer},
                                                             {offsetof(EncCoderState, pDecisions), pointer}});
    const auto words = wordsBut(sizeof(ZmxiEncodeState_JPEG2K), {{offsetof(ZmxiEncodeState_JPEG2K, magic), 4},
                                                                 {offsetof(ZmxiEncodeState_JPEG2K, pCoder), pointer},
                                                                 {offsetof(ZmxiEncodeState_JPEG2K, pDistLUT), pointer},
                                                                 {offsetof(ZmxiEncodeState_JPEG2K, pFlags), pointer}});
    const ZmxiSize size{4, 4};
    Rng rng(0x6602);
    int refused = 0;
    BlockSamples samples = randomBlock(rng, 4, 4, 7);
    samples[0] = 0x7F;
    for (int style :
         {0, int(ZMX_CB_SELECTIVE_BYPASS), ZMX_CB_TERMINATE_ALL | ZMX_CB_SELECTIVE_BYPASS | ZMX_CB_RESET_CTX})
        for (int stored : {0, 1, 9, 1000}) {
            EncoderState state(size);
            ZmxiEncodeState_JPEG2K* const s = state;
            loadBlock(s, samples, size, choice(Zmx32u(style), stored % 3));
            Bytes before(1000);
            int n = stored, more = 0;
            const ZmxStatus first = stored ? zmxiEncodeStoreBits_JPEG2K_1u(before.data(), &n, s, &more) : zmxStsNoErr;
            ASSERT_EQ(first, zmxStsNoErr);
            forge(s->pCoder, coderWords, [&](std::size_t, int) { callAll(s, rng, &refused); });
            // What the store leaves in the coder is put back as well.
            const EncCoderState kept = *s->pCoder;
            forge(s, words, [&](std::size_t, int) {
                callAll(s, rng, &refused);
                *s->pCoder = kept;
            });
            if (HasFailure()) return;
            // A load makes it good again.
            const CodedBlock again = encodeBlock(s, samples, size, choice(Zmx32u(style), 1));
            EncoderState fresh(size);
            EXPECT_EQ(again.bytes, encodeBlock(fresh, samples, size, choice(Zmx32u(style), 1)).bytes);
        }
    EXPECT_GT(refused, shortened() ? 200 : 1000);
}

// Each bound of what a store goes on from, alone.
TEST(ForgedCodeBlocks, AStoreRefusesWhatDoesNotFitTogether) {
    const ZmxiSize size{4, 4};
    Rng rng(0x6605);
    EncoderState state(size);
    ZmxiEncodeState_JPEG2K* const s = state;
    BlockSamples samples = randomBlock(rng, 4, 4, 7);
    samples[0] = 0x7F;
    loadBlock(s, samples, size, choice(ZMX_CB_SELECTIVE_BYPASS, 1));
    EncCoderState& coder = *s->pCoder;
    const EncCoderState kept = coder;
    const auto refused = [&](auto change) {
        change();
        Zmx8u bytes[4] = {7, 7, 7, 7};
        int n = 4, more = -1;
        const ZmxStatus status = zmxiEncodeStoreBits_JPEG2K_1u(bytes, &n, s, &more);
        const bool untouched = n == 4 && more == -1 && bytes[0] == 7;
        coder = kept;
        return status == zmxStsContextMatchErr && untouched;
    };
    constexpr int beyond = INT_MAX / 4 + 1;
    EXPECT_FALSE(refused([] {}));
    EXPECT_TRUE(refused([&] { ++coder.decisionCount; }));
    EXPECT_TRUE(refused([&] { ++coder.decisionBase; }));
    EXPECT_TRUE(refused([&] { ++coder.pPassDecisions; }));
    EXPECT_TRUE(refused([&] { ++coder.pPassContexts; }));
    EXPECT_TRUE(refused([&] { coder.passDecisionPos = -1; }));
    EXPECT_TRUE(refused([&] { coder.passDecisionPos = coder.passDecisionCount + 1; }));
    EXPECT_TRUE(refused([&] { --coder.passDecisionCount; }));
    EXPECT_TRUE(refused([&] { coder.passDecisions[0] = -1; }));
    EXPECT_TRUE(refused([&] { coder.passDecisions[0] = INT_MAX; }));
    EXPECT_TRUE(refused([&] { coder.totalBytes = -1; }));
    EXPECT_TRUE(refused([&] { coder.totalBytes = beyond; }));
    EXPECT_TRUE(refused([&] { coder.passBytes = -1; }));
    EXPECT_TRUE(refused([&] { coder.passBytes = beyond; }));
    EXPECT_TRUE(refused([&] { coder.fifoRead = -1; }));
    EXPECT_TRUE(refused([&] { coder.fifoRead = coder.fifoCount + 1; }));
    EXPECT_TRUE(refused([&] { coder.fifoCount = kFifoSize + 1; }));
    EXPECT_TRUE(refused([&] { coder.areg = 0x7FFF; }));
    EXPECT_TRUE(refused([&] { coder.areg = 0x10000; }));
    EXPECT_TRUE(refused([&] { coder.ct = 0; }));
    EXPECT_TRUE(refused([&] { coder.ct = 13; }));
    EXPECT_TRUE(refused([&] { coder.creg = 0x8000000; }));
    EXPECT_TRUE(refused([&] { coder.curByte = 0x100; }));
    EXPECT_TRUE(refused([&] { coder.bytesOut = -1; }));
    EXPECT_TRUE(refused([&] { coder.bytesOut = beyond; }));
    EXPECT_TRUE(refused([&] { coder.rawBitPos = -1; }));
    EXPECT_TRUE(refused([&] { coder.rawBitPos = 8; }));
    EXPECT_TRUE(refused([&] { coder.rawLastFF = 1, coder.rawBitPos = 7; }));
    EXPECT_TRUE(refused([&] { coder.rawBytesOut = -1; }));
    EXPECT_TRUE(refused([&] { coder.rawBytesOut = beyond; }));
}

// Distortions so far apart that a sum in double precision loses a term, from either side.
TEST(ForgedCodeBlocks, SumsOfDistortionsThatLoseATerm) {
    const ZmxiSize size{4, 4};
    Rng rng(0x6606);
    EncoderState state(size);
    ZmxiEncodeState_JPEG2K* const s = state;
    loadBlock(s, randomBlock(rng, 4, 4, 7), size, choice(0, 1));
    for (int i = 0; i < kMaxDistPasses; ++i) s->passDist[i] = s->passDistExp[i] = 0;
    const auto sumOf = [&](int dist0, int exp0, int dist1, int exp1) {
        s->passDist[0] = dist0, s->passDistExp[0] = exp0;
        s->passDist[1] = dist1, s->passDistExp[1] = exp1;
        double sum = -1;
        EXPECT_EQ(zmxiEncodeGetDist_JPEG2K(s, 1, &sum), zmxStsNoErr);
        return sum;
    };
    EXPECT_EQ(sumOf(1, 0, 1, 0), 2 * sumOf(1, 0, 0, 0));
    EXPECT_EQ(sumOf(1, 0, 1 << 30, 30), sumOf(0, 0, 1 << 30, 30));
    EXPECT_EQ(sumOf(1 << 30, 30, 1, 0), sumOf(1 << 30, 30, 0, 0));
}

// A block of zeros has no pass: one segment without a byte, or none where all passes are terminated.
TEST(ForgedCodeBlocks, SegmentsOfNoPass) {
    const ZmxiSize size{4, 4};
    EncoderState state(size);
    for (Zmx32u style : {Zmx32u(0), Zmx32u(ZMX_CB_TERMINATE_ALL)}) {
        loadBlock(state, BlockSamples(16), size, choice(style, 1));
        int length = -1;
        EXPECT_EQ(zmxiEncodeGetTermPassLen_JPEG2K(state, 0, &length), style ? zmxStsBadPassNumberErr : zmxStsNoErr);
        EXPECT_EQ(length, style ? -1 : 0);
    }
}

// A load resets whatever stands in the numbers.
TEST(ForgedCodeBlocks, LoadIntoAnyState) {
    const std::size_t pointer = sizeof(void*);
    const auto coderWords = wordsBut(sizeof(EncCoderState), {{offsetof(EncCoderState, pPassDecisions), pointer},
                                                             {offsetof(EncCoderState, pPassContexts), pointer},
                                                             {offsetof(EncCoderState, pContexts), pointer},
                                                             {offsetof(EncCoderState, pDecisions), pointer}});
    Rng rng(0x6603);
    const ZmxiSize size{4, 5};
    EncoderState state(size), fresh(size);
    ZmxiEncodeState_JPEG2K* const s = state;
    for (int turn = 0; turn < 300; ++turn) {
        for (std::size_t offset : coderWords) setField(s->pCoder, offset, int(rng.next()));
        const BlockSamples samples = randomBlock(rng, 4, 5, int(rng.range(1, 31)));
        const EncodeChoice how = choice(Zmx32u(rng.range(0, 63)), turn % 3);
        const CodedBlock actual = encodeBlock(s, samples, size, how), expected = encodeBlock(fresh, samples, size, how);
        ASSERT_EQ(actual.bytes, expected.bytes);
        ASSERT_EQ(actual.rates, expected.rates);
        ASSERT_EQ(actual.lengths, expected.lengths);
        ASSERT_EQ(actual.distortions, expected.distortions);
    }
}

// Registers of any content that a store goes on with: the three terminations end, and their bytes fit the queue.
TEST(ForgedCodeBlocks, TerminationsOfAnyRegisters) {
    Rng rng(0x6604);
    int most = 0;
    for (int turn = 0; turn < rounds(300000); ++turn) {
        EncCoderState c = {};
        c.areg = Zmx32u(rng.oneIn(4) ? 0x8000 + rng.range(0, 3) : rng.range(0x8000, 0xFFFF));
        c.ct = int(rng.range(1, 12));
        const std::int64_t end = std::int64_t(1) << (28 - c.ct);
        c.creg = Zmx32u(rng.oneIn(3) ? end - rng.range(1, 0x10000) : rng.range(0, end - 1));
        c.curByte = Zmx32u(rng.oneIn(2) ? rng.range(253, 255) : rng.range(0, 255));
        c.mqPending = 1;
        c.mqTermType = turn % 3;
        mq::terminate(&c);
        ASSERT_LE(c.fifoCount, 6) << turn;
        most = std::max(most, c.fifoCount);
        for (int i = 0; i < c.fifoCount; ++i) ASSERT_LE(c.byteFIFO[i], 255u) << turn;
    }
    EXPECT_GT(most, 2);
}
