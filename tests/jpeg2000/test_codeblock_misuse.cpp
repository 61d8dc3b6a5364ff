// Code blocks when a caller goes on after a failure, and what lies behind the bytes that are told. All memory that the
// library asks for ends at a guard page.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/codeblock.h"
#include "tests/jpeg2000/support/codeblock.h"
#include "tests/support/extremes.h"
#include "tests/support/guardedmemory.cpp"

#include <map>

namespace {

using Bytes = std::vector<Zmx8u>;

constexpr Zmx32u kDecoderExtras =
    ZMX_CB_CONCEAL_DAMAGE | ZMX_CB_KEEP_DST | ZMX_CB_KEEP_MIDPOINT | ZMX_CB_ERROR_PREDICTION;

ZmxiSize randomSize(Rng& rng, int most) {
    const int width = int(rng.range(1, most)), height = int(rng.range(1, most));
    return {width, height};
}

} // namespace

// ---- the store

// A block of which a segment comes out empty behind bytes that were on their way: its dummy byte is never stored.
TEST(CodeBlockMisuse, NothingChangesBehindTheBytesTold) {
    const BlockSamples samples = {0x1B,       0x80000035, 0x1F,       0x80000006, 0x80000026,
                                  0x80000020, 0xE,        0x80000039, 0x80000032, 0x38};
    const Zmx32u style = ZMX_CB_VERTICALLY_CAUSAL | ZMX_CB_TERMINATE_ALL;
    EncoderState state({5, 2});
    for (int capacity = 1; capacity < 60; ++capacity)
        for (Zmx8u fill : {0x5C, 0x00, 0xFF}) {
            loadBlock(state, samples, {5, 2}, choice(style, ZMX_MQ_TERM_NEAR_OPTIMAL));
            for (int more = 1; more;) {
                Guarded<Zmx8u> dst(static_cast<std::size_t>(capacity));
                dst.fill(fill);
                int n = capacity;
                ASSERT_EQ(zmxiEncodeStoreBits_JPEG2K_1u(dst.data(), &n, state, &more), zmxStsNoErr);
                ASSERT_LE(n, capacity);
                for (std::size_t i = std::size_t(n); i < dst.size(); ++i)
                    ASSERT_EQ(dst[i], fill) << "byte " << i << " behind " << n << " of " << capacity;
            }
        }
}

// Every call that fails leaves the block as it was: in between, after the end, and ahead of a load.
TEST(CodeBlockMisuse, EncoderAfterFailures) {
    Rng rng(0x6501);
    EncoderState state({12, 12});
    Zmx8u byte[4];
    const Zmx32s sample = 5;
    const auto fail = [&] {
        int n = 0, more = 7, a = 0, rate = 0;
        double dist = 0;
        switch (rng.range(0, 8)) {
        case 0:
            EXPECT_EQ(zmxiEncodeStoreBits_JPEG2K_1u(byte, &n, state, &more), zmxStsSizeErr);
            break;
        case 1:
            n = INT_MIN;
            EXPECT_EQ(zmxiEncodeStoreBits_JPEG2K_1u(byte, &n, state, &more), zmxStsSizeErr);
            break;
        case 2:
            n = 4;
            EXPECT_EQ(zmxiEncodeStoreBits_JPEG2K_1u(byte, &n, state, nullptr), zmxStsNullPtrErr);
            break;
        case 3:
            EXPECT_EQ(zmxiEncodeGetRate_JPEG2K(state, rng.oneIn(2) ? -1 : INT_MAX, &rate), zmxStsBadPassNumberErr);
            break;
        case 4:
            EXPECT_EQ(zmxiEncodeGetDist_JPEG2K(state, rng.oneIn(2) ? -1 : 93, &dist), zmxStsBadPassNumberErr);
            break;
        case 5:
            EXPECT_EQ(zmxiEncodeGetTermPassLen_JPEG2K(state, rng.oneIn(2) ? INT_MIN : 93, &rate),
                      zmxStsBadPassNumberErr);
            break;
        case 6:
            EXPECT_EQ(zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(&sample, 0, {1, 1}, state, 0, 31, 0, 0, 0, &a, &a, &a),
                      zmxStsStepErr);
            break;
        case 7:
            EXPECT_EQ(zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(&sample, 4, {0, 1}, state, 0, 31, 0, 0, 0, &a, &a, &a),
                      zmxStsSizeErr);
            break;
        default:
            EXPECT_EQ(zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(nullptr, 4, {1, 1}, state, 0, 31, 0, 0, 0, &a, &a, &a),
                      zmxStsNullPtrErr);
        }
        EXPECT_EQ(more, 7);
    };
    fail(); // nothing loaded yet
    for (int turn = 0; turn < 400; ++turn) {
        SCOPED_TRACE(turn);
        const ZmxiSize size = randomSize(rng, 12);
        const BlockSamples samples = randomBlock(rng, size.width, size.height, int(rng.range(1, 12)));
        const EncodeChoice how = choice(Zmx32u(rng.range(0, 63)), turn % 3);
        model::BlockEncoder plain;
        plain.load(samples.data(), size.width * 4, size, 0, 31, how.termination, how.style);
        loadBlock(state, samples, size, how);
        bool more = true;
        for (int ended = 0; ended < 3; ended += !more) {
            if (rng.oneIn(2)) fail();
            const int capacity = int(rng.range(1, 30));
            Guarded<Zmx8u> dst(static_cast<std::size_t>(capacity));
            dst.fill(0x5C);
            Bytes expected(std::size_t(capacity), 0x5C);
            const int count = plain.store(expected.data(), capacity, more);
            int n = capacity, notFinished = 9;
            ASSERT_EQ(zmxiEncodeStoreBits_JPEG2K_1u(dst.data(), &n, state, &notFinished), zmxStsNoErr);
            ASSERT_EQ(n, count);
            ASSERT_EQ(notFinished, more ? 1 : 0);
            ASSERT_TRUE(sameBytes(expected, dst.copy()));
        }
        for (int i = 0; i < plain.passCount(); ++i) {
            int rate = -1;
            ASSERT_EQ(zmxiEncodeGetRate_JPEG2K(state, i, &rate), zmxStsNoErr);
            ASSERT_EQ(rate, plain.rate(i));
        }
        if (HasFailure()) return;
    }
}

// ---- the decoder

namespace {

// A decoder in a state flush with a guard page, its destination too, and the model of both.
struct DecoderTwin {
    DecoderState state;
    std::unique_ptr<Guarded<Zmx8u>> dst;
    Bytes expected;
    model::BlockDecoder plain;
    bool attached = false, damaged = false;

    DecoderTwin(ZmxiSize largest, GuardedBlock::Flush flush) : state(largest, flush) {}

    void attach(Rng& rng, ZmxiSize size, int subband, int planes, Zmx32u style) {
        const int step = size.width * 4 + 4 * int(rng.range(0, 2));
        expected.resize(std::size_t(step) * std::size_t(size.height - 1) + std::size_t(size.width) * 4);
        rng.bytes(expected.data(), expected.size());
        dst = std::make_unique<Guarded<Zmx8u>>(expected);
        ASSERT_EQ(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(reinterpret_cast<Zmx32s*>(dst->data()), step, size, state,
                                                         subband, planes, style),
                  zmxStsNoErr);
        plain.attach(expected.data(), step, size, subband, planes, style);
        attached = true;
        damaged = false;
    }
    void passes(int n) {
        ASSERT_EQ(zmxiDecodeCBProgrSetPassCounter_JPEG2K(n, state), zmxStsNoErr);
        plain.passCounter = n;
    }
    ZmxStatus step(const Bytes& segment) {
        Guarded<Zmx8u> src(segment);
        const ZmxStatus s = zmxiDecodeCBProgrStep_JPEG2K(src.data(), int(segment.size()), state);
        EXPECT_EQ(s, attached ? plain.step(segment.data(), int(segment.size())) : ZmxStatus(zmxStsCBNotAttachedErr));
        EXPECT_TRUE(!damaged || s == zmxStsCBDamagedErr) << "it sticks";
        damaged = s == zmxStsCBDamagedErr;
        return s;
    }
    void check() {
        if (!attached) return;
        ASSERT_TRUE(sameBytes(expected, dst->copy()));
        ASSERT_EQ(state.passCounter(), plain.passCounter);
        ASSERT_EQ(state.bitPlane(), plain.plane);
    }
};

} // namespace

TEST(CodeBlockMisuse, DecoderAfterFailures) {
    Rng rng(0x6502);
    std::map<ZmxStatus, int> statuses;
    for (int turn = 0; turn < 500; ++turn) {
        SCOPED_TRACE(turn);
        DecoderTwin d({9, 9}, rng.oneIn(2) ? GuardedBlock::AtEnd : GuardedBlock::AtStart);
        for (int call = 0; call < 40; ++call) {
            const ZmxiSize size = randomSize(rng, 9);
            const int planes = int(rng.range(0, 12)), subband = int(rng.range(-1, 4)), count = int(rng.range(-2, 30));
            const Zmx32u style = Zmx32u(rng.range(0, 31)) | (Zmx32u(rng.next()) & kDecoderExtras);
            Bytes segment(std::size_t(rng.range(1, 20)));
            rng.bytes(segment.data(), segment.size());
            Zmx32s sample = 0;
            switch (rng.range(0, 9)) {
            case 0:
                d.attach(rng, size, subband, planes, style);
                d.passes(count);
                break;
            case 1:
                d.passes(count);
                break;
            case 2: // tries that fail leave all as it was
                EXPECT_EQ(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(&sample, 0, size, d.state, 0, 3, style),
                          zmxStsStepErr);
                EXPECT_EQ(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(&sample, 4, {1, -1}, d.state, 0, 3, style),
                          zmxStsSizeErr);
                break;
            case 3:
                EXPECT_EQ(zmxiDecodeCBProgrStep_JPEG2K(nullptr, 4, d.state), zmxStsNullPtrErr);
                EXPECT_EQ(zmxiDecodeCBProgrGetPassCounter_JPEG2K(d.state, nullptr), zmxStsNullPtrErr);
                break;
            default:
                ++statuses[d.step(segment)];
            }
            d.check();
            if (HasFailure()) return;
        }
    }
    for (ZmxStatus s : {zmxStsNoErr, zmxStsCBNotAttachedErr, zmxStsCBDamagedErr}) EXPECT_GT(statuses[s], 300) << s;
    EXPECT_EQ(statuses.size(), 3u);
}

// Flags that hold anything: a state that has never been attached, and is told to keep them. Whatever is decoded then,
// it stays in its memory.
TEST(CodeBlockMisuse, FlagsOfAnyContent) {
    Rng rng(0x6503);
    for (int turn = 0; turn < 600; ++turn) {
        const ZmxiSize size = randomSize(rng, 9);
        int bytes = 0;
        ASSERT_EQ(zmxiDecodeGetBufSize_JPEG2K(size, &bytes), zmxStsNoErr);
        GuardedBlock memory(std::size_t(bytes),
                            turn % 2 && bytes % 8 == 0 ? GuardedBlock::AtEnd : GuardedBlock::AtStart);
        rng.bytes(memory.data(), memory.size());
        if (turn % 3 == 0) std::memset(memory.data(), 0xFF, memory.size());
        auto* const state = reinterpret_cast<ZmxiDecodeCBProgrState*>(memory.data());
        Guarded<Zmx32s> dst(std::size_t(size.width) * std::size_t(size.height));
        Guarded<Zmx8u> src(60);
        rng.bytes(src.data(), src.size());
        const std::vector<int> lengths(15, 4);
        const ZmxStatus s = zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(
            src.data(), dst.data(), size.width * 4, size, turn % 4, int(rng.range(1, 31)), 40, lengths.data(), 15,
            Zmx32u(rng.range(0, 31)) | ZMX_CB_KEEP_FLAGS | (Zmx32u(rng.next()) & kDecoderExtras), nullptr, state);
        ASSERT_TRUE(s == zmxStsNoErr || s == zmxStsCBDamagedErr) << s;
    }
}
