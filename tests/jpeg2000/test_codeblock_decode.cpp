// The code-block decoder: arguments, life of a state, and samples, statuses and counters against the plain
// model.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/codeblock.h"
#include "tests/jpeg2000/support/codeblock.h"
#include "tests/support/digest.h"
#include "tests/support/rounds.h"

#include <algorithm>
#include <climits>

namespace {

using Bytes = std::vector<Zmx8u>;
using Lengths = std::vector<int>;

static_assert(ZMX_CB_VERTICALLY_CAUSAL == model::Causal && ZMX_CB_SELECTIVE_BYPASS == model::Bypass &&
              ZMX_CB_TERMINATE_ALL == model::TermAll && ZMX_CB_RESET_CTX == model::ResetCtx &&
              ZMX_CB_SEGMENTATION_SYMBOLS == model::SegSym && ZMX_CB_LOSSLESS == model::Lossless &&
              ZMX_CB_CONCEAL_DAMAGE == model::Conceal && ZMX_CB_KEEP_DST == model::KeepDst &&
              ZMX_CB_KEEP_MIDPOINT == model::KeepMidpoint && ZMX_CB_KEEP_FLAGS == model::KeepFlags &&
              ZMX_CB_ERROR_PREDICTION == model::ErrorPrediction);
constexpr Zmx32u kCodingStyles = 32; // the five flags that both sides have

// A block to decode, however it came about.
struct Stream {
    ZmxiSize size{1, 1};
    int subband = 0, planes = 0, passes = 0;
    Zmx32u style = 0;
    Bytes bytes;
    Lengths lengths;
    // Never null, also when there are none.
    const int* lengthArray() const {
        static const int none = 0;
        return lengths.empty() ? &none : lengths.data();
    }
};

// What a random stream is to be. (In braces, so that what is drawn for it is drawn in the same order by every
// compiler.)
struct Plan {
    ZmxiSize size;
    int bits, subband, termination;
    Zmx32u style;
};

// A block of random samples, coded by the model.
Stream randomStream(Rng& rng, const Plan& plan) {
    const ZmxiSize size = plan.size;
    const BlockSamples samples = randomBlock(rng, size.width, size.height, plan.bits);
    model::BlockEncoder e;
    e.load(samples.data(), size.width * 4, size, plan.subband, 31, plan.termination, plan.style);
    Stream s{size, plan.subband, e.significantBits(), e.passCount(), plan.style, Bytes(1 << 18), {}};
    bool more = false;
    s.bytes.resize(std::size_t(e.store(s.bytes.data(), int(s.bytes.size()), more)));
    EXPECT_FALSE(more);
    for (int i = 0; i < e.segments(); ++i) s.lengths.push_back(e.segmentLength(i));
    return s;
}

ZmxiSize randomSize(Rng& rng, int most) {
    return {int(rng.range(1, rng.oneIn(3) ? 3 : most)), int(rng.range(1, rng.oneIn(3) ? 5 : most))};
}

void damage(Rng& rng, Stream& s) {
    for (int n = int(rng.range(1, 3)); n > 0 && !s.bytes.empty(); --n)
        s.bytes[std::size_t(rng.range(0, int(s.bytes.size()) - 1))] = Zmx8u(rng.oneIn(3) ? 0xFF : rng.range(0, 255));
}

// The rows of a destination: the same in both, flush with guard pages, filled with one pattern.
struct Destination {
    int step;
    std::size_t bytes;
    Guarded<Zmx8u> actual;
    Bytes expected;
    Destination(Rng& rng, ZmxiSize size, int dstStep, GuardedBlock::Flush flush)
        : step(dstStep), bytes(std::size_t(step) * std::size_t(size.height - 1) + std::size_t(size.width) * 4),
          actual(bytes, flush), expected(bytes) {
        rng.bytes(expected.data(), bytes);
        std::copy(expected.begin(), expected.end(), actual.data());
    }
    Zmx32s* dst() { return reinterpret_cast<Zmx32s*>(actual.data()); }
    ::testing::AssertionResult same() { return sameBytes(expected.data(), actual.data(), bytes); }
};

GuardedBlock::Flush anyFlush(Rng& rng) { return rng.oneIn(2) ? GuardedBlock::AtEnd : GuardedBlock::AtStart; }

// One call, library and model.
class OneCall {
    FlushBytes atEnd{1 << 18, GuardedBlock::AtEnd}, atStart{1 << 18, GuardedBlock::AtStart};

public:
    void compare(Rng& rng, const Stream& s, int passes, int step, ZmxiDecodeCBProgrState* state,
                 model::BlockDecoder& decoder) {
        Destination d(rng, s.size, step, step % 4 ? GuardedBlock::AtStart : anyFlush(rng));
        const Zmx8u* bytes = (rng.oneIn(2) ? atEnd : atStart).put(s.bytes);
        int expectedPlane = -77, plane = -77;
        const ZmxStatus expected = decoder.block(bytes, d.expected.data(), step, s.size, s.subband, s.planes, passes,
                                                 s.lengths, s.style, expectedPlane);
        ASSERT_EQ(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(bytes, d.dst(), step, s.size, s.subband, s.planes, passes,
                                                       s.lengthArray(), int(s.lengths.size()), s.style, &plane, state),
                  expected);
        ASSERT_EQ(plane, expectedPlane) << "written after damage only";
        ASSERT_TRUE(d.same());
        int left = -77, current = -77;
        ASSERT_EQ(zmxiDecodeCBProgrGetPassCounter_JPEG2K(state, &left), zmxStsNoErr);
        ASSERT_EQ(zmxiDecodeCBProgrGetCurBitPlaneNum_JPEG2K(state, &current), zmxStsNoErr);
        ASSERT_EQ(left, decoder.passCounter);
        ASSERT_EQ(current, decoder.plane);
    }
    void compare(Rng& rng, const Stream& s, int passes) {
        DecoderState state(s.size, anyFlush(rng));
        model::BlockDecoder decoder;
        compare(rng, s, passes, s.size.width * 4, state, decoder);
    }
};

int tightStep(ZmxiSize s) { return s.width * 4; }

} // namespace

// ---- sizes

TEST(CodeBlockDecoder, StateSize) {
    int one = 0, n = 0;
    ASSERT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K({1, 1}, &one), zmxStsNoErr);
    const int fixed = one - 32 * 3; // a stride of 32, and one row pair with its borders
    EXPECT_GT(fixed, 32);
    for (ZmxiSize s : {ZmxiSize{1, 2}, ZmxiSize{6, 1}, ZmxiSize{7, 3}, ZmxiSize{14, 4}, ZmxiSize{15, 5},
                       ZmxiSize{64, 64}, ZmxiSize{1024, 4}, ZmxiSize{4, 1024}, ZmxiSize{64, 63}}) {
        SCOPED_TRACE(s.width);
        const int stride = (s.width * 4 + 8 + 31) / 32 * 32;
        ASSERT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K(s, &n), zmxStsNoErr);
        EXPECT_EQ(n, stride * ((s.height + 1) / 2 + 2) + fixed);
        int same = 0;
        ASSERT_EQ(zmxiDecodeGetBufSize_JPEG2K(s, &same), zmxStsNoErr);
        EXPECT_EQ(same, n);
    }
    ASSERT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K({6, 2}, &n), zmxStsNoErr);
    EXPECT_EQ(n, one) << "six columns and their borders fill a stride of 32";
    ASSERT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K({7, 2}, &n), zmxStsNoErr);
    EXPECT_EQ(n, one + 32 * 3);
}

TEST(CodeBlockDecoder, ArgumentsOfStateSize) {
    for (auto f : {zmxiDecodeCBProgrGetStateSize_JPEG2K, zmxiDecodeGetBufSize_JPEG2K}) {
        int n = 5;
        // The size comes first.
        checkOrder({kSize, kSize, kNull}, [&](const Bad& bad) {
            return f({bad.below1(0, 1), bad.below1(1, 1)}, bad.null(2, &n));
        });
        EXPECT_EQ(n, 5);
    }
}

// ---- arguments

TEST(CodeBlockDecoder, MagicWord) {
    DecoderState state({4, 4});
    Zmx32u word;
    std::memcpy(&word, static_cast<ZmxiDecodeCBProgrState*>(state), sizeof word);
    EXPECT_EQ(word, 0x434D4150u);
}

TEST(CodeBlockDecoder, ArgumentsOfInitAndFree) {
    EXPECT_EQ(zmxiDecodeCBProgrInit_JPEG2K(nullptr), zmxStsNullPtrErr);
    ZmxiDecodeCBProgrState* p = reinterpret_cast<ZmxiDecodeCBProgrState*>(&p);
    ZmxiDecodeCBProgrState* const before = p;
    checkOrder({kNull, kSize, kSize}, [&](const Bad& bad) {
        return zmxiDecodeCBProgrInitAlloc_JPEG2K(bad.null(0, &p), {bad.below1(1, 1), bad.below1(2, 1)});
    });
    EXPECT_EQ(p, before);
    EXPECT_EQ(zmxiDecodeCBProgrFree_JPEG2K(nullptr), zmxStsNullPtrErr);
    ASSERT_EQ(zmxiDecodeCBProgrInitAlloc_JPEG2K(&p, {3, 3}), zmxStsNoErr);
    *reinterpret_cast<Zmx8u*>(p) ^= 1;
    EXPECT_EQ(zmxiDecodeCBProgrFree_JPEG2K(p), zmxStsContextMatchErr);
    *reinterpret_cast<Zmx8u*>(p) ^= 1;
    EXPECT_EQ(zmxiDecodeCBProgrFree_JPEG2K(p), zmxStsNoErr);
}

TEST(CodeBlockDecoder, ArgumentsOfAttach) {
    DecoderState good({4, 4}), foreign({4, 4});
    *reinterpret_cast<Zmx8u*>(static_cast<ZmxiDecodeCBProgrState*>(foreign)) ^= 1;
    Guarded<Zmx32s> dst(16);
    dst.fill(0x77);
    const auto attach = [&](Zmx32s* d, int step, ZmxiSize size, ZmxiDecodeCBProgrState* s) {
        return zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(d, step, size, s, 0, 3, 0);
    };
    checkOrder({kNull, kContext, kNull, kStep, kSize, kSize}, [&](const Bad& bad) {
        return attach(bad.null(2, dst.data()), bad.below1(3, 16), {bad.below1(4, 4), bad.below1(5, 4)},
                      stateOf(bad, 0, good, 1, foreign));
    });
    EXPECT_EQ(dst[0], 0x77);
    const Zmx8u byte = 0;
    EXPECT_EQ(zmxiDecodeCBProgrStep_JPEG2K(&byte, 1, good), zmxStsCBNotAttachedErr) << "no attach has succeeded";
    EXPECT_EQ(attach(dst.data(), 16, {4, 4}, good), zmxStsNoErr);
    EXPECT_EQ(dst[0], 0);
    EXPECT_EQ(good.passCounter(), 0);
    EXPECT_EQ(good.bitPlane(), 2);
}

TEST(CodeBlockDecoder, ArgumentsOfTheOthers) {
    DecoderState good({4, 4}), foreign({4, 4});
    *reinterpret_cast<Zmx8u*>(static_cast<ZmxiDecodeCBProgrState*>(foreign)) ^= 1;
    int n = 42;
    checkOrder({kNull, kContext}, [&](const Bad& bad) {
        return zmxiDecodeCBProgrSetPassCounter_JPEG2K(1, stateOf(bad, 0, good, 1, foreign));
    });
    // Both pointers come first.
    checkOrder({kNull, kNull, kContext}, [&](const Bad& bad) {
        return zmxiDecodeCBProgrGetPassCounter_JPEG2K(stateOf(bad, 0, good, 2, foreign), bad.null(1, &n));
    });
    // Here the magic word does.
    checkOrder({kNull, kContext, kNull}, [&](const Bad& bad) {
        return zmxiDecodeCBProgrGetCurBitPlaneNum_JPEG2K(stateOf(bad, 0, good, 1, foreign), bad.null(2, &n));
    });
    EXPECT_EQ(n, 42);
    const Zmx8u byte = 0;
    checkOrder({kNull, kNull, kContext}, [&](const Bad& bad) {
        return zmxiDecodeCBProgrStep_JPEG2K(bad.null(0, &byte), 1, stateOf(bad, 1, good, 2, foreign));
    });
    EXPECT_EQ(zmxiDecodeCBProgrStep_JPEG2K(&byte, 1, good), zmxStsCBNotAttachedErr);
    EXPECT_EQ(zmxiDecodeCBProgrSetPassCounter_JPEG2K(-12, good), zmxStsNoErr);
    EXPECT_EQ(good.passCounter(), -12);
}

TEST(CodeBlockDecoder, ArgumentsOfTheOneCall) {
    DecoderState state({4, 4});
    Guarded<Zmx32s> dst(16);
    dst.fill(0x77);
    const Zmx8u byte = 0;
    const int length = 1;
    int plane = 42;
    const auto call = [&](const Zmx8u* src, Zmx32s* d, int step, ZmxiSize size, const int* lengths,
                          ZmxiDecodeCBProgrState* s) {
        return zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(src, d, step, size, 0, 1, 1, lengths, 1, 0, &plane, s);
    };
    // Sizes ahead of the other pointers.
    checkOrder({kNull, kNull, kSize, kSize, kNull, kNull, kStep}, [&](const Bad& bad) {
        return call(bad.null(0, &byte), bad.null(4, dst.data()), bad.below1(6, 16),
                    {bad.below1(2, 4), bad.below1(3, 4)}, bad.null(5, &length),
                    bad.null(1, static_cast<ZmxiDecodeCBProgrState*>(state)));
    });
    EXPECT_EQ(dst[0], 0x77);
    EXPECT_EQ(plane, 42);
    // The state needs no Init before; any bytes do.
    std::memset(static_cast<ZmxiDecodeCBProgrState*>(state), 0xEE, 64);
    EXPECT_EQ(call(&byte, dst.data(), 16, {4, 4}, &length, state), zmxStsNoErr);
    EXPECT_EQ(plane, 42);
    // No error plane is asked for.
    const Zmx8u wrong[] = {0, 0, 0, 0};
    const int four = 4;
    EXPECT_EQ(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(wrong, dst.data(), 16, {4, 4}, 0, 1, 1, &four, 1,
                                                   ZMX_CB_SEGMENTATION_SYMBOLS, nullptr, state),
              zmxStsCBDamagedErr);
}

// ---- life of a state

TEST(CodeBlockDecoder, AStepBeforeThePassCountDoesNothing) {
    DecoderState state({4, 4});
    Guarded<Zmx32s> dst(16);
    ASSERT_EQ(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(dst.data(), 16, {4, 4}, state, 0, 5, 0), zmxStsNoErr);
    GuardedBlock unread(1);
    const Zmx8u* const guard = unread.data() + 1;
    EXPECT_EQ(zmxiDecodeCBProgrStep_JPEG2K(guard, 100, state), zmxStsNoErr);
    EXPECT_EQ(state.bitPlane(), 4);
    EXPECT_EQ(state.passCounter(), 0);
    ASSERT_EQ(zmxiDecodeCBProgrSetPassCounter_JPEG2K(-1, state), zmxStsNoErr);
    EXPECT_EQ(zmxiDecodeCBProgrStep_JPEG2K(guard, 100, state), zmxStsNoErr);
    EXPECT_EQ(state.passCounter(), -1);
    for (Zmx32s v : dst.copy()) EXPECT_EQ(v, 0);
    // With a count it does: an empty segment under contexts at their start is still a segment.
    ASSERT_EQ(zmxiDecodeCBProgrSetPassCounter_JPEG2K(1, state), zmxStsNoErr);
    EXPECT_EQ(zmxiDecodeCBProgrStep_JPEG2K(guard, 0, state), zmxStsNoErr);
    EXPECT_EQ(state.passCounter(), 0);
}

TEST(CodeBlockDecoder, NoPlanes) {
    for (int planes : {0, -1, -1000}) {
        DecoderState state({4, 4});
        Guarded<Zmx32s> dst(16);
        dst.fill(-1);
        GuardedBlock unread(1);
        const Zmx8u* const guard = unread.data() + 1;
        ASSERT_EQ(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(dst.data(), 16, {4, 4}, state, 0, planes, 0), zmxStsNoErr);
        ASSERT_EQ(zmxiDecodeCBProgrSetPassCounter_JPEG2K(10, state), zmxStsNoErr);
        EXPECT_EQ(zmxiDecodeCBProgrStep_JPEG2K(guard, 9, state), zmxStsNoErr);
        EXPECT_EQ(state.passCounter(), 10);
        EXPECT_EQ(state.bitPlane(), planes - 1);
        dst.fill(-1);
        const int lengths[] = {3, 4};
        int plane = 42;
        EXPECT_EQ(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(guard, dst.data(), 16, {4, 4}, 0, planes, 9, lengths, 2, 0,
                                                       &plane, state),
                  zmxStsNoErr);
        EXPECT_EQ(plane, 42);
        for (Zmx32s v : dst.copy()) EXPECT_EQ(v, 0);
    }
}

TEST(CodeBlockDecoder, NoSegments) {
    DecoderState state({2, 2});
    GuardedBlock unread(1);
    for (int nTerms : {0, -1, INT_MIN}) {
        Guarded<Zmx32s> dst(4);
        dst.fill(-1);
        const int length = 1;
        EXPECT_EQ(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(unread.data() + 1, dst.data(), 8, {2, 2}, 0, 3, 5, &length,
                                                       nTerms, 0, nullptr, state),
                  zmxStsNoErr);
        for (Zmx32s v : dst.copy()) EXPECT_EQ(v, 0);
    }
}

// More passes than planes: it stops below plane 0, and the segments that are left are not read.
TEST(CodeBlockDecoder, MorePassesThanPlanes) {
    Rng rng(0x6201);
    for (Zmx32u style = 0; style < kCodingStyles; ++style) {
        SCOPED_TRACE(style);
        Stream s = randomStream(rng, {{7, 9}, 7, 1, 0, style});
        std::vector<Zmx32s> samples[2];
        for (int more : {0, 1}) {
            Guarded<Zmx8u> bytes(s.bytes);
            Lengths lengths = s.lengths;
            if (more) lengths.insert(lengths.end(), {1000, 1000});
            DecoderState state(s.size);
            Guarded<Zmx32s> dst(63);
            EXPECT_EQ(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(bytes.data(), dst.data(), 28, s.size, 1, s.planes,
                                                           s.passes + 3 * more, lengths.data(), int(lengths.size()),
                                                           style, nullptr, state),
                      zmxStsNoErr);
            if (more) {
                EXPECT_EQ(state.bitPlane(), -1);
                EXPECT_EQ(state.passCounter(), 3);
            }
            samples[more] = dst.copy();
        }
        EXPECT_TRUE(sameBytes(samples[0], samples[1]));
    }
}

TEST(CodeBlockDecoder, DamageSticksUntilTheNextAttach) {
    DecoderState state({4, 4});
    Guarded<Zmx32s> dst(16);
    const Zmx8u wrong[] = {0, 0, 0, 0};
    const auto attach = [&] {
        ASSERT_EQ(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(dst.data(), 16, {4, 4}, state, 0, 3,
                                                         ZMX_CB_SEGMENTATION_SYMBOLS | ZMX_CB_TERMINATE_ALL),
                  zmxStsNoErr);
        ASSERT_EQ(zmxiDecodeCBProgrSetPassCounter_JPEG2K(7, state), zmxStsNoErr);
    };
    attach();
    EXPECT_EQ(zmxiDecodeCBProgrStep_JPEG2K(wrong, 4, state), zmxStsCBDamagedErr);
    EXPECT_EQ(state.bitPlane(), 2) << "the plane of the damage";
    const auto after = dst.copy();
    GuardedBlock unread(1);
    EXPECT_EQ(zmxiDecodeCBProgrStep_JPEG2K(unread.data() + 1, 4, state), zmxStsCBDamagedErr);
    ASSERT_EQ(zmxiDecodeCBProgrSetPassCounter_JPEG2K(0, state), zmxStsNoErr);
    EXPECT_EQ(zmxiDecodeCBProgrStep_JPEG2K(wrong, 4, state), zmxStsCBDamagedErr) << "ahead of the count";
    EXPECT_TRUE(sameBytes(after, dst.copy()));
    attach();
    EXPECT_EQ(state.bitPlane(), 2);
    const Stream good = [] {
        Rng rng(1);
        return randomStream(rng, {{4, 4}, 3, 0, 0, ZMX_CB_SEGMENTATION_SYMBOLS | ZMX_CB_TERMINATE_ALL});
    }();
    EXPECT_EQ(zmxiDecodeCBProgrStep_JPEG2K(good.bytes.data(), good.lengths[0], state), zmxStsNoErr);
}

// Attaching zeroes the samples but nothing between the rows, or with the flag nothing at all.
TEST(CodeBlockDecoder, AttachZeroesTheRowsAlone) {
    for (Zmx32u style : {Zmx32u(0), Zmx32u(ZMX_CB_KEEP_DST)}) {
        DecoderState state({3, 3});
        Guarded<Zmx8u> dst(20 * 2 + 12);
        dst.fill(0xEE);
        ASSERT_EQ(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(reinterpret_cast<Zmx32s*>(dst.data()), 20, {3, 3}, state, 0, 3,
                                                         style),
                  zmxStsNoErr);
        for (std::size_t i = 0; i < dst.size(); ++i) EXPECT_EQ(dst[i], !style && i % 20 < 12 ? 0 : 0xEE) << i;
    }
}

// ---- known samples

namespace {

// Decodes a stream of the model in one call and gives the samples.
std::vector<Zmx32u> decode(const Stream& s, int passes, Zmx32u style, ZmxStatus expected = zmxStsNoErr,
                           int* plane = nullptr) {
    DecoderState state(s.size);
    Guarded<Zmx32s> dst(std::size_t(s.size.width) * std::size_t(s.size.height));
    EXPECT_EQ(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(s.bytes.data(), dst.data(), tightStep(s.size), s.size, s.subband,
                                                   s.planes, passes, s.lengthArray(), int(s.lengths.size()), style,
                                                   plane, state),
              expected);
    return std::vector<Zmx32u>(dst.data(), dst.data() + dst.size());
}

Stream streamOf(const BlockSamples& samples, ZmxiSize size, Zmx32u style) {
    model::BlockEncoder e;
    e.load(samples.data(), tightStep(size), size, 0, 31, ZMX_MQ_TERM_EASY, style);
    Stream s{size, 0, e.significantBits(), e.passCount(), style, Bytes(4096), {}};
    bool more;
    s.bytes.resize(std::size_t(e.store(s.bytes.data(), 4096, more)));
    for (int i = 0; i < e.segments(); ++i) s.lengths.push_back(e.segmentLength(i));
    return s;
}

} // namespace

TEST(CodeBlockDecoder, Midpoints) {
    // 13 and -6 (1101 and 0110), by passes: 1 is plane 3, 4 plane 2, 7 plane 1, 10 plane 0.
    const Stream s = streamOf({13, 0x80000006}, {2, 1}, 0);
    ASSERT_EQ(s.passes, 10);
    const Zmx32u keep = ZMX_CB_KEEP_MIDPOINT, minus = 0x80000000;
    EXPECT_EQ(decode(s, 1, keep), (BlockSamples{12, 0}));
    EXPECT_EQ(decode(s, 1, 0), (BlockSamples{8, 0}));
    EXPECT_EQ(decode(s, 2, keep), (BlockSamples{12, minus | 6})); // significance of plane 2
    EXPECT_EQ(decode(s, 2, 0), (BlockSamples{12, minus | 4}));    // the midpoint of plane 3 is the plane's own bit
    EXPECT_EQ(decode(s, 3, keep), (BlockSamples{14, minus | 6}));
    EXPECT_EQ(decode(s, 4, 0), (BlockSamples{12, minus | 4}));
    EXPECT_EQ(decode(s, 7, keep), (BlockSamples{13, minus | 7}));
    EXPECT_EQ(decode(s, 7, 0), (BlockSamples{12, minus | 6}));
    EXPECT_EQ(decode(s, 10, 0), (BlockSamples{13, minus | 6})) << "exact at plane 0";
    EXPECT_EQ(decode(s, 10, keep), (BlockSamples{13, minus | 6}));
}

// With every pass terminated a cleanup moves on to the next plane at once, so that one midpoint bit stays.
TEST(CodeBlockDecoder, MidpointsWithEveryPassTerminated) {
    const Stream s = streamOf({13, 0x80000006}, {2, 1}, ZMX_CB_TERMINATE_ALL);
    EXPECT_EQ(decode(s, 1, ZMX_CB_TERMINATE_ALL), (BlockSamples{12, 0}));
    EXPECT_EQ(decode(s, 4, ZMX_CB_TERMINATE_ALL), (BlockSamples{14, 0x80000006}));
    EXPECT_EQ(decode(s, 10, ZMX_CB_TERMINATE_ALL), (BlockSamples{13, 0x80000006}));
}

TEST(CodeBlockDecoder, Concealment) {
    // Three samples in four planes, each pass a segment; the segment of the cleanup of plane 1 is spoilt.
    const Zmx32u style = ZMX_CB_TERMINATE_ALL | ZMX_CB_SEGMENTATION_SYMBOLS;
    Stream s = streamOf({13, 0x80000006, 0x80000001}, {3, 1}, style);
    ASSERT_EQ(s.lengths.size(), 10u);
    int start = 0;
    for (int i = 0; i < 6; ++i) start += s.lengths[std::size_t(i)];
    int plane = -7;
    bool found = false;
    std::vector<Zmx32u> kept, concealed;
    for (int byte = 0; byte < 256 && !found; ++byte) {
        for (int i = 0; i < s.lengths[6]; ++i) s.bytes[std::size_t(start + i)] = Zmx8u(byte);
        model::BlockDecoder d;
        BlockSamples out(3);
        int errorPlane = -7;
        found = d.block(s.bytes.data(), out.data(), 12, s.size, 0, 4, 10, s.lengths, style, errorPlane) != 0;
    }
    ASSERT_TRUE(found);
    kept = decode(s, 10, style | ZMX_CB_KEEP_MIDPOINT, zmxStsCBDamagedErr, &plane);
    EXPECT_EQ(plane, 1);
    concealed = decode(s, 10, style | ZMX_CB_CONCEAL_DAMAGE, zmxStsCBDamagedErr, &plane);
    EXPECT_EQ(plane, 1);
    // Planes 3 and 2 stand, plane 1 has the midpoint whatever was decoded there, below it is nothing; what is
    // insignificant above plane 1 is +0.
    EXPECT_EQ(concealed[0], 12u | 2u);
    EXPECT_EQ(concealed[1], 0x80000000u | 4u | 2u);
    EXPECT_TRUE(concealed[2] == 0 || (concealed[2] & 0x7FFFFFFF) == 2) << concealed[2];
    EXPECT_EQ(decode(s, 10, style | ZMX_CB_CONCEAL_DAMAGE | ZMX_CB_KEEP_MIDPOINT, zmxStsCBDamagedErr), concealed);
}

// A negative sample whose magnitude lies below the damaged plane comes out as +0.
TEST(CodeBlockDecoder, ConcealmentDropsTheSignOfNothing) {
    // The destination is kept: what it holds takes the place of decoded samples.
    const Zmx32u style = ZMX_CB_SEGMENTATION_SYMBOLS | ZMX_CB_KEEP_DST;
    const Zmx8u wrong[] = {0, 0, 0, 0};
    const int four = 4;
    for (Zmx32u conceal : {Zmx32u(0), Zmx32u(ZMX_CB_CONCEAL_DAMAGE)}) {
        BlockSamples samples = {0x80000003, 0x80000004, 5, 0x80000000, 12, 0xFFFFFFFF};
        DecoderState state({6, 1});
        BlockSamples expected = samples;
        model::BlockDecoder d;
        int expectedPlane = -7, plane = -7;
        ASSERT_EQ(d.block(wrong, expected.data(), 24, {6, 1}, 0, 4, 1, {4}, style | conceal, expectedPlane),
                  zmxStsCBDamagedErr);
        ASSERT_EQ(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(wrong, reinterpret_cast<Zmx32s*>(samples.data()), 24, {6, 1}, 0,
                                                       4, 1, &four, 1, style | conceal, &plane, state),
                  zmxStsCBDamagedErr);
        EXPECT_EQ(plane, 3);
        EXPECT_EQ(samples, expected);
        int zeros = 0;
        for (Zmx32u v : samples) {
            EXPECT_EQ(v & 7, 0u) << "nothing below plane 3";
            if (conceal) {
                EXPECT_TRUE(v == 0 || (v & 8)) << v;
            }
            zeros += v == 0;
        }
        if (conceal) {
            EXPECT_GT(zeros, 0);
        }
    }
}

// With both on, the termination test's answer replaces the segmentation symbol's.
TEST(CodeBlockDecoder, TheTerminationTestOverridesTheSegmentationSymbol) {
    // Coded without the symbol, so that four decisions too many are read: 1010 by chance only.
    Rng rng(0x6204);
    int symbolFound = 0, overridden = 0;
    for (int n = 0; n < 200; ++n) {
        SCOPED_TRACE(n);
        Stream s = randomStream(rng, {{4, 4}, 1, 0, ZMX_MQ_TERM_EASY, 0});
        if (s.passes != 1) continue;
        const Zmx32u both = ZMX_CB_SEGMENTATION_SYMBOLS | ZMX_CB_ERROR_PREDICTION;
        ZmxStatus st[2];
        for (int i = 0; i < 2; ++i) {
            const Zmx32u style = i ? both : Zmx32u(ZMX_CB_SEGMENTATION_SYMBOLS);
            DecoderState state(s.size);
            BlockSamples expected(16);
            Guarded<Zmx32s> dst(16);
            int plane = 0;
            const ZmxStatus status = model::BlockDecoder().block(s.bytes.data(), expected.data(), 16, s.size, 0, 1, 1,
                                                                 s.lengths, style, plane);
            st[i] = zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(s.bytes.data(), dst.data(), 16, s.size, 0, 1, 1,
                                                         s.lengths.data(), 1, style, &plane, state);
            ASSERT_EQ(st[i], status);
        }
        symbolFound += st[0] == zmxStsCBDamagedErr;
        overridden += st[0] == zmxStsCBDamagedErr && st[1] == zmxStsNoErr;
    }
    EXPECT_GT(symbolFound, 20);
    EXPECT_GT(overridden, 0);
}

// The raw test of the end: the bits left over alternate from 0.
TEST(CodeBlockDecoder, RawTermination) {
    // Six planes of one sample: plane 1 and plane 0 are raw.
    const Zmx32u style = ZMX_CB_SELECTIVE_BYPASS | ZMX_CB_TERMINATE_ALL;
    Stream s = streamOf({0x3F}, {1, 1}, style);
    ASSERT_EQ(s.planes, 6);
    ASSERT_EQ(s.passes, 16);
    // Raw refinement of plane 1, pass 11: one bit 1, then 0101010.
    std::size_t at = 0;
    for (std::size_t i = 0; i < 11; ++i) at += std::size_t(s.lengths[i]);
    ASSERT_EQ(s.lengths[11], 1);
    EXPECT_EQ(s.bytes[at], 0xAA);
    EXPECT_EQ(decode(s, 16, style), (BlockSamples{0x3F}));
    for (int byte = 0; byte < 256; ++byte) {
        s.bytes[at] = Zmx8u(byte);
        int plane = -7;
        decode(s, 12, style, (byte & 0x7F) == 0x2A ? zmxStsNoErr : zmxStsCBDamagedErr, &plane);
        EXPECT_EQ(plane, (byte & 0x7F) == 0x2A ? -7 : 1) << byte;
    }
}

// Planes of raw passes begin with the fifth.
TEST(CodeBlockDecoder, WhereBypassBegins) {
    Rng rng(0x6205);
    for (int planes = 1; planes <= 6; ++planes) {
        const BlockSamples samples(20, (1u << planes) - 1);
        const ZmxiSize size{5, 4};
        const Stream plain = streamOf(samples, size, 0), bypass = streamOf(samples, size, ZMX_CB_SELECTIVE_BYPASS);
        EXPECT_EQ(bypass.lengths.size(), planes <= 4 ? 1u : planes == 5 ? 3u : 5u);
        EXPECT_EQ(decode(bypass, bypass.passes, ZMX_CB_SELECTIVE_BYPASS), samples);
        if (planes <= 4) {
            EXPECT_EQ(decode(plain, plain.passes, ZMX_CB_SELECTIVE_BYPASS), samples) << "no raw pass";
        }
    }
}

// ---- against the model

TEST(CodeBlockDecoder, EveryStyleSubbandTerminationAndPassCount) {
    Rng rng(0x6211);
    OneCall one;
    for (Zmx32u style = 0; style < kCodingStyles; style += shortened() ? 5 : 1)
        for (int subband = 0; subband < 4; ++subband)
            for (int termination = 0; termination < 9; ++termination) {
                SCOPED_TRACE(::testing::Message()
                             << "style " << style << " subband " << subband << " termination " << termination);
                Stream s =
                    randomStream(rng, {randomSize(rng, 11), int(rng.range(1, 9)), subband, termination % 3, style});
                const Zmx32u extra[] = {0, ZMX_CB_KEEP_MIDPOINT, ZMX_CB_KEEP_DST, ZMX_CB_ERROR_PREDICTION,
                                        ZMX_CB_CONCEAL_DAMAGE | ZMX_CB_ERROR_PREDICTION};
                for (int passes = -1; passes <= s.passes + 1; ++passes) {
                    s.style = style | extra[rng.range(0, 4)];
                    ASSERT_NO_FATAL_FAILURE(one.compare(rng, s, passes)) << passes;
                }
            }
}

TEST(CodeBlockDecoder, EveryExtraFlag) {
    Rng rng(0x6212);
    OneCall one;
    for (int n = 0; n < rounds(6); ++n)
        for (Zmx32u style = 0; style < kCodingStyles; ++style)
            for (Zmx32u extra = 0; extra < 32; ++extra) {
                SCOPED_TRACE(::testing::Message() << n << " style " << style << " extra " << extra);
                Stream s = randomStream(rng, {randomSize(rng, 7), int(rng.range(1, 7)), int(rng.range(-1, 4)),
                                              int(rng.range(0, 2)), style});
                s.style = style | extra << 16;
                if (n % 2) damage(rng, s);
                s.style &= ~Zmx32u(ZMX_CB_KEEP_FLAGS); // for which see below
                ASSERT_NO_FATAL_FAILURE(one.compare(rng, s, s.passes - int(rng.range(0, 3))));
            }
}

// A block goes on from the flags, and perhaps the samples, of the one before it.
TEST(CodeBlockDecoder, KeptFlags) {
    Rng rng(0x6213);
    OneCall one;
    for (int n = 0; n < rounds(1500); ++n) {
        SCOPED_TRACE(n);
        const ZmxiSize size = randomSize(rng, 10);
        DecoderState state(size);
        model::BlockDecoder decoder;
        for (int i = 0; i < 4; ++i) {
            Stream s = randomStream(rng, {size, int(rng.range(1, 7)), int(rng.range(0, 3)), int(rng.range(0, 2)),
                                          Zmx32u(rng.range(0, 31))});
            if (i) s.style |= ZMX_CB_KEEP_FLAGS | (rng.oneIn(2) ? ZMX_CB_KEEP_DST : 0);
            ASSERT_NO_FATAL_FAILURE(
                one.compare(rng, s, s.passes - int(rng.range(0, 4)), tightStep(size), state, decoder));
        }
    }
}

// Steps that are no multiple of the samples' size, and wide ones; what stands between the rows stays.
TEST(CodeBlockDecoder, AnyRowStep) {
    Rng rng(0x6214);
    OneCall one;
    for (int n = 0; n < 600; ++n) {
        SCOPED_TRACE(n);
        Stream s = randomStream(
            rng, {randomSize(rng, 9), int(rng.range(1, 6)), int(rng.range(0, 3)), 0, Zmx32u(rng.range(0, 31))});
        s.style |= Zmx32u(rng.range(0, 7)) << 16;
        if (n % 3 == 0) damage(rng, s);
        DecoderState state(s.size);
        model::BlockDecoder decoder;
        const int step = tightStep(s.size) + int(rng.range(0, 40));
        ASSERT_NO_FATAL_FAILURE(one.compare(rng, s, s.passes, step, state, decoder)) << step;
    }
}

// The step is not compared with the width: rows may lie over each other.
TEST(CodeBlockDecoder, OverlappingRows) {
    Rng rng(0x6215);
    OneCall one;
    for (int n = 0; n < 300; ++n) {
        SCOPED_TRACE(n);
        Stream s = randomStream(rng, {{int(rng.range(2, 9)), int(rng.range(2, 9))},
                                      int(rng.range(1, 6)),
                                      int(rng.range(0, 3)),
                                      0,
                                      Zmx32u(rng.range(0, 31))});
        DecoderState state(s.size);
        model::BlockDecoder decoder;
        const int step = int(rng.range(1, tightStep(s.size) - 1));
        ASSERT_NO_FATAL_FAILURE(one.compare(rng, s, s.passes - int(rng.range(0, 3)), step, state, decoder)) << step;
    }
}

TEST(CodeBlockDecoder, LargeAndThinBlocks) {
    Rng rng(0x6216);
    OneCall one;
    for (ZmxiSize size : {ZmxiSize{64, 64}, ZmxiSize{1024, 4}, ZmxiSize{4, 1024}, ZmxiSize{64, 1}, ZmxiSize{1, 64},
                          ZmxiSize{63, 61}, ZmxiSize{32, 6}, ZmxiSize{3, 3}, ZmxiSize{1, 1}})
        for (int n = 0; n < 4; ++n) {
            SCOPED_TRACE(::testing::Message() << size.width << " by " << size.height);
            Stream s =
                randomStream(rng, {size, n == 3 ? 31 : int(rng.range(1, 12)), n, n % 3, Zmx32u(rng.range(0, 31))});
            ASSERT_NO_FATAL_FAILURE(one.compare(rng, s, s.passes));
            damage(rng, s);
            s.style |= ZMX_CB_ERROR_PREDICTION;
            ASSERT_NO_FATAL_FAILURE(one.compare(rng, s, s.passes));
        }
}

TEST(CodeBlockDecoder, DamagedAndRandomSegments) {
    Rng rng(0x6217);
    OneCall one;
    int damaged = 0;
    for (int n = 0; n < rounds(200); ++n)
        for (Zmx32u style = 0; style < kCodingStyles; ++style) {
            SCOPED_TRACE(::testing::Message() << n << " style " << style);
            Stream s = randomStream(
                rng, {randomSize(rng, 10), int(rng.range(1, 8)), int(rng.range(0, 3)), int(rng.range(0, 2)), style});
            s.style |= Zmx32u(rng.range(0, 7)) << 16;
            s.style |= rng.oneIn(2) ? ZMX_CB_ERROR_PREDICTION : 0;
            s.style &= ~Zmx32u(ZMX_CB_KEEP_FLAGS);
            if (n % 2) {
                damage(rng, s);
            } else {
                // Bytes and lengths of no meaning; negative ones are empty segments that take the next one
                // back.
                s.bytes.resize(std::size_t(rng.range(1, 60)));
                rng.bytes(s.bytes.data(), s.bytes.size());
                if (rng.oneIn(3))
                    for (Zmx8u& b : s.bytes)
                        if (rng.oneIn(3)) b = 0xFF;
                s.lengths.clear();
                s.planes = int(rng.range(0, 31));
                s.passes = int(rng.range(0, 100));
                for (int at = 0, left = int(rng.range(0, 40)); left > 0; --left) {
                    const int length = int(rng.range(rng.oneIn(5) ? -at : 0, int(s.bytes.size()) - at));
                    s.lengths.push_back(rng.oneIn(2) ? std::min(length, 2) : length);
                    at += s.lengths.back();
                }
            }
            ASSERT_NO_FATAL_FAILURE(one.compare(rng, s, s.passes));
            ++damaged;
        }
    EXPECT_EQ(damaged, rounds(200) * 32);
}

// Step by step, with counts that are set anew in the middle of planes and segments, each segment flush with a
// guard page.
TEST(CodeBlockDecoder, Steps) {
    Rng rng(0x6218);
    FlushBytes atEnd(1 << 16, GuardedBlock::AtEnd), atStart(1 << 16, GuardedBlock::AtStart);
    int damages = 0;
    for (int n = 0; n < rounds(200); ++n)
        for (Zmx32u style = 0; style < kCodingStyles; ++style) {
            SCOPED_TRACE(::testing::Message() << n << " style " << style);
            Stream s = randomStream(
                rng, {randomSize(rng, 9), int(rng.range(1, 8)), int(rng.range(0, 3)), int(rng.range(0, 2)), style});
            s.style |= rng.oneIn(2) ? ZMX_CB_ERROR_PREDICTION : 0;
            if (n % 4 == 3) damage(rng, s);
            DecoderState state(s.size, anyFlush(rng));
            model::BlockDecoder decoder;
            Destination d(rng, s.size, tightStep(s.size), anyFlush(rng));
            decoder.attach(d.expected.data(), d.step, s.size, s.subband, s.planes, s.style);
            ASSERT_EQ(
                zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(d.dst(), d.step, s.size, state, s.subband, s.planes, s.style),
                zmxStsNoErr);
            const bool whole = n % 4 == 0;
            const auto count = [&](int passes) {
                decoder.passCounter = passes;
                ASSERT_EQ(zmxiDecodeCBProgrSetPassCounter_JPEG2K(passes, state), zmxStsNoErr);
            };
            count(whole ? s.passes : int(rng.range(0, 4)));
            const Zmx8u* p = s.bytes.data();
            for (int length : s.lengths) {
                const Zmx8u* segment = (rng.oneIn(2) ? atEnd : atStart).put(p, std::size_t(length));
                const ZmxStatus expected = decoder.step(segment, length);
                ASSERT_EQ(zmxiDecodeCBProgrStep_JPEG2K(segment, length, state), expected);
                ASSERT_EQ(state.passCounter(), decoder.passCounter);
                ASSERT_EQ(state.bitPlane(), decoder.plane);
                ASSERT_TRUE(d.same());
                damages += expected != 0;
                p += length;
                if (!whole && rng.oneIn(2)) count(int(rng.range(-1, 5)));
            }
        }
    EXPECT_GT(damages, rounds(20));
}

namespace {

// A block of random bytes, decoded with so many planes and passes; the library's answer is the model's.
struct AnyPlanes {
    const ZmxiSize size{5, 9};
    Bytes bytes = Bytes(64);
    Lengths lengths = Lengths(16, 4);
    int passes = 16;
    ZmxStatus status = zmxStsNoErr;
    int plane = 0; // of the next pass

    std::vector<Zmx32s> decode(Rng& rng, int planes, Zmx32u style) {
        DecoderState state(size, anyFlush(rng));
        Guarded<Zmx32s> dst(45, anyFlush(rng));
        Guarded<Zmx8u> segments(bytes);
        int errorPlane = -77, expectedErrorPlane = -77;
        status = zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(segments.data(), dst.data(), 20, size, 0, planes, passes,
                                                      lengths.data(), int(lengths.size()), style, &errorPlane, state);
        plane = state.bitPlane();
        std::vector<Zmx32s> expected(45);
        model::BlockDecoder decoder;
        EXPECT_EQ(status, decoder.block(bytes.data(), expected.data(), 20, size, 0, planes, passes, lengths, style,
                                        expectedErrorPlane));
        EXPECT_EQ(errorPlane, expectedErrorPlane);
        EXPECT_EQ(plane, decoder.plane);
        const std::vector<Zmx32s> got(dst.data(), dst.data() + 45);
        EXPECT_EQ(got, expected);
        return got;
    }
};

} // namespace

// Not tested, not refused: of a count of planes that no sample has room for, plane numbers count modulo 32, and nothing
// else is hurt.
TEST(CodeBlockDecoder, TooManyPlanesCountModulo32) {
    Rng rng(0x6219);
    int damaged = 0;
    for (int planes : {32, 33, 37, 40, 63, 64, 65, 95, 96, 97, 1000, INT_MAX, INT_MIN})
        for (Zmx32u style = 0; style < kCodingStyles; ++style) {
            SCOPED_TRACE(::testing::Message() << planes << " style " << style);
            AnyPlanes block;
            rng.bytes(block.bytes.data(), block.bytes.size());
            block.decode(rng, planes, style | (rng.oneIn(2) ? ZMX_CB_CONCEAL_DAMAGE | ZMX_CB_ERROR_PREDICTION : 0));
            ASSERT_FALSE(HasFailure());
            damaged += block.status != zmxStsNoErr;
        }
    EXPECT_GT(damaged, 40);
}

// The same in words that do without a model: the first pass gives what it gives of 32 planes fewer.
TEST(CodeBlockDecoder, TheFirstOfTooManyPlanesIsThe32ndBelowIt) {
    Rng rng(0x621A);
    std::ptrdiff_t significant = 0;
    for (int planes = 1; planes <= 31; ++planes) {
        SCOPED_TRACE(planes);
        AnyPlanes block;
        block.passes = 1;
        rng.bytes(block.bytes.data(), block.bytes.size());
        const std::vector<Zmx32s> first = block.decode(rng, planes, ZMX_CB_KEEP_MIDPOINT);
        significant += std::ranges::count_if(first, [](Zmx32s v) { return v != 0; });
        const Zmx32u magnitude = planes == 1 ? 1 : 3u << (planes - 2);
        for (Zmx32s v : first) EXPECT_TRUE(v == 0 || (Zmx32u(v) & 0x7FFFFFFF) == magnitude) << v;
        for (int more : {32, 64, 320}) {
            EXPECT_EQ(block.decode(rng, planes + more, ZMX_CB_KEEP_MIDPOINT), first) << more;
            EXPECT_EQ(block.status, zmxStsNoErr);
            EXPECT_EQ(block.plane, planes + more - 1) << "the number itself is not reduced";
        }
    }
    EXPECT_GT(significant, 100);
}

// ---- digest

TEST(CodeBlockDecoder, Digest) {
    Rng rng(0x62D1);
    Digest digest;
    for (Zmx32u style = 0; style < kCodingStyles; ++style)
        for (int n = 0; n < 4; ++n) {
            Stream s = randomStream(rng, {randomSize(rng, 20), int(rng.range(1, 10)), n, n % 3, style});
            s.style |= n == 3 ? ZMX_CB_CONCEAL_DAMAGE | ZMX_CB_ERROR_PREDICTION : n == 2 ? ZMX_CB_KEEP_MIDPOINT : 0;
            if (n == 3) damage(rng, s);
            DecoderState state(s.size);
            std::vector<Zmx32s> dst(std::size_t(s.size.width) * std::size_t(s.size.height));
            int plane = -1;
            digest.value(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(s.bytes.data(), dst.data(), tightStep(s.size), s.size,
                                                              s.subband, s.planes, s.passes - n, s.lengths.data(),
                                                              int(s.lengths.size()), s.style, &plane, state));
            digest.add(dst).value(plane).value(state.passCounter()).value(state.bitPlane());
        }
    EXPECT_EQ(digest.get(), 3355599720547720828u);
}
