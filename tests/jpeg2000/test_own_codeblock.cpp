// Inside the code-block coder: the context tables entry by entry, and the words of the flag plane.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2cbencpass.h"
#include "pj2cbflags.h"
#include "pj2decstate.h"
#include "tests/jpeg2000/model/codeblock.h"
#include "tests/jpeg2000/support/codeblock.h"

#include <cstddef>
#include <cstdint>

using namespace zmx;

namespace {

// ISO/IEC 15444-1 Table D.1, columns LL and LH: the label by the significant neighbours across (0 to 2,
// down), up and down (0 to 2, groups) and on the diagonals (0 to 4).
const char* const kLabels[3] = {
    "01222 33333 44444", // none across: V = 0, 1, 2
    "56666 77777 77777", // one
    "88888 88888 88888", // two
};
// The column HH: by the diagonals (down), and by the other four together.
const char* const kDiagonalLabels[5] = {"01222", "34555", "67777", "88888", "88888"};

int count(int index, int a, int b) { return (index >> a & 1) + (index >> b & 1); }

// The flag words of a state as (row pair, column), -1 being the border.
class FlagWords {
    const ZmxiDecodeCBProgrState* s;

public:
    explicit FlagWords(const ZmxiDecodeCBProgrState* state) : s(state) {}
    Zmx32u at(int f, int x) const {
        Zmx32u v;
        std::memcpy(
            &v, reinterpret_cast<const Zmx8u*>(s->flagPlane.pFlags) + s->flagPlane.flagStride * (f + 1) + (x + 1) * 4,
            4);
        return v;
    }
};

} // namespace

TEST(ContextTables, ZeroCoding) {
    EXPECT_EQ(ZeroCodingLUT_LxHy.size(), 256u);
    EXPECT_EQ(ZeroCodingLUT_HxLy.size(), 256u);
    EXPECT_EQ(ZeroCodingLUT_HxHy.size(), 256u);
    for (int i = 0; i < 256; ++i) {
        const int h = count(i, 6, 7), v = count(i, 4, 5), d = count(i, 0, 1) + count(i, 2, 3);
        EXPECT_EQ(int(ZeroCodingLUT_LxHy[std::size_t(i)]), kLabels[h][6 * v + d] - '0' + 2) << i;
        EXPECT_EQ(int(ZeroCodingLUT_HxLy[std::size_t(i)]), kLabels[v][6 * h + d] - '0' + 2) << i;
        EXPECT_EQ(int(ZeroCodingLUT_HxHy[std::size_t(i)]), kDiagonalLabels[d][h + v] - '0' + 2) << i;
    }
}

TEST(ContextTables, SignCoding) {
    ASSERT_EQ(SignCodingLUT.size(), 512u);
    // Table D.3: by the contributions across (-1 to 1) and up and down (-1 to 1), the context and the
    // prediction.
    const int context[3][3] = {{15, 14, 13}, {12, 11, 12}, {13, 14, 15}};
    const Zmx32u predicted[3][3] = {{1, 1, 1}, {1, 0, 0}, {0, 0, 0}};
    for (int i = 0; i < 511; ++i) {
        const auto half = [&](int bit) { return i >> (bit - 4) & 1; };
        const auto one = [&](int significant, int negative) {
            return half(significant) ? (half(negative) ? -1 : 1) : 0;
        };
        const int h = std::clamp(one(6, 11) + one(7, 12), -1, 1), v = std::clamp(one(4, 9) + one(5, 10), -1, 1);
        const Zmx32u entry = SignCodingLUT[std::size_t(i)];
        // A neighbour that is negative without being significant does not occur.
        const bool occurs =
            (half(4) || !half(9)) && (half(5) || !half(10)) && (half(6) || !half(11)) && (half(7) || !half(12));
        if (!occurs) continue;
        EXPECT_EQ(int(entry & 15), context[h + 1][v + 1]) << i;
        EXPECT_EQ(entry >> 31, predicted[h + 1][v + 1]) << i;
        EXPECT_EQ(entry & 0x7FFFFFF0, 0u) << i;
        if (i != (511 ^ 16)) {
            EXPECT_EQ(entry, SignCodingLUT[std::size_t(i ^ 16)]) << "a refinement before changes nothing";
        }
    }
    EXPECT_EQ(SignCodingLUT[511], 0u);
}

TEST(ContextTables, Refinement) {
    ASSERT_EQ(MagnRefineLUT.size(), 512u);
    for (int i = 0; i < 512; ++i) EXPECT_EQ(MagnRefineLUT[std::size_t(i)], i & 256 ? 18u : i & 255 ? 17u : 16u) << i;
}

TEST(DistortionTables, Entries) {
    for (int k = 0; k < 64; ++k) {
        EXPECT_EQ(FsLossless_LUT[std::size_t(k)], 2 * (64 + k) * (64 + k));
        EXPECT_EQ(FsLossy_LUT[std::size_t(k)], 6144 + 384 * k);
    }
    for (int k = 0; k < 128; ++k) {
        EXPECT_EQ(FmLossless_LUT[std::size_t(k)], 2 * (64 - k) * (64 - k));
        EXPECT_EQ(FmLossy_LUT[std::size_t(k)], k < 64 ? 6144 - 128 * k : 128 * k - 10240);
        EXPECT_EQ(FmLossy_LUT[std::size_t(k)] < 0, k >= 49 && k <= 79);
    }
    EXPECT_EQ(FsLossless_LUT.size() + FsLossy_LUT.size(), 128u);
    EXPECT_EQ(FmLossless_LUT.size() + FmLossy_LUT.size(), 256u);
}

// One sample of a block that is significant, wherever it stands: what the words around it say afterwards. The
// cleanup has taken the visited bits away again.
TEST(FlagPlane, OneSample) {
    constexpr Zmx32u kMarks = 0x40004000;
    struct Update {
        int f, x;
        Zmx32u positive, negative;
    };
    const Update even[] = {{0, 0, 0x2020C000, 0x2420C000},   {0, 1, 0x20082080, 0x20083080},
                           {0, -1, 0x20042040, 0x20042840},  {-1, 0, 0x20100000, 0x22100000},
                           {-1, -1, 0x20010000, 0x20010000}, {-1, 1, 0x20020000, 0x20020000}};
    const Update odd[] = {{0, 0, 0xC0002010, 0xC0002210},  {0, 1, 0x20802002, 0x30802002},
                          {0, -1, 0x20402001, 0x28402001}, {1, 0, 0x2020, 0x2420},
                          {1, -1, 0x2004, 0x2004},         {1, 1, 0x2008, 0x2008}};
    const ZmxiSize size{5, 11};
    for (Zmx32u style : {Zmx32u(0), Zmx32u(ZMX_CB_VERTICALLY_CAUSAL)})
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                for (int negative : {0, 1}) {
                    SCOPED_TRACE(::testing::Message()
                                 << "at " << x << ' ' << y << " negative " << negative << " style " << style);
                    BlockSamples samples(55), decoded(55);
                    samples[std::size_t(y * 5 + x)] = 1 | Zmx32u(negative) << 31;
                    model::BlockEncoder e;
                    e.load(samples.data(), 20, size, 0, 31, 0, style);
                    std::vector<Zmx8u> bytes(64);
                    bool more;
                    const int length = e.store(bytes.data(), 64, more);
                    DecoderState state(size);
                    ASSERT_EQ(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(bytes.data(),
                                                                   reinterpret_cast<Zmx32s*>(decoded.data()), 20, size,
                                                                   0, 1, 1, &length, 1, style, nullptr, state),
                              zmxStsNoErr);
                    ASSERT_EQ(decoded, samples);
                    const FlagWords words(state);
                    for (int f = -1; f < 7; ++f)
                        for (int column = -1; column < 6; ++column) {
                            Zmx32u expected = 0;
                            for (const Update& u : y % 2 ? odd : even)
                                if (f == y / 2 + u.f && column == x + u.x)
                                    expected = negative ? u.negative : u.positive;
                            // The first row of a stripe does not report upwards.
                            if (style && y % 4 == 0 && f < y / 2) expected = 0;
                            ASSERT_EQ(words.at(f, column), expected & ~kMarks) << f << ' ' << column;
                        }
                }
}

// A significance pass leaves marks on what it has coded.
TEST(FlagPlane, VisitedMarks) {
    // Plane 1: the first sample. Plane 0: its neighbours are visited, of which the one to the right turns
    // significant and is negative.
    const BlockSamples samples = {2, 0x80000001, 0, 0};
    model::BlockEncoder e;
    e.load(samples.data(), 16, {4, 1}, 0, 31, 0, 0);
    std::vector<Zmx8u> bytes(64);
    bool more;
    const int length = e.store(bytes.data(), 64, more);
    DecoderState state({4, 1});
    BlockSamples decoded(4);
    ASSERT_EQ(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(bytes.data(), reinterpret_cast<Zmx32s*>(decoded.data()), 16, {4, 1},
                                                   0, 2, 2, &length, 1, ZMX_CB_KEEP_MIDPOINT, nullptr, state),
              zmxStsNoErr);
    EXPECT_EQ(decoded, (BlockSamples{3, 0x80000001, 0, 0}));
    FlagWords words(state);
    EXPECT_EQ(words.at(0, 0), 0x20208000u | 0x20042840u);
    EXPECT_EQ(words.at(0, 1), 0x20082080u | 0x2420C000u);
    EXPECT_EQ(words.at(0, 2), 0x20083080u | 0x4000u) << "visited on 0 too";
    EXPECT_EQ(words.at(0, 3), 0u);
    // The refinement marks the first sample, and the cleanup takes the marks of the visits away.
    ASSERT_EQ(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(bytes.data(), reinterpret_cast<Zmx32s*>(decoded.data()), 16, {4, 1},
                                                   0, 2, 4, &length, 1, 0, nullptr, state),
              zmxStsNoErr);
    EXPECT_EQ(decoded, samples);
    EXPECT_EQ(words.at(0, 0), 0x20208000u | 0x20042840u | 0x100u);
    EXPECT_EQ(words.at(0, 1), 0x20082080u | 0x24208000u);
    EXPECT_EQ(words.at(0, 2), 0x20083080u);
}

// Raw refinements leave no mark.
TEST(FlagPlane, RawRefinementLeavesNoMark) {
    const BlockSamples samples = {0x3F};
    for (Zmx32u style : {Zmx32u(0), Zmx32u(ZMX_CB_SELECTIVE_BYPASS)}) {
        model::BlockEncoder e;
        e.load(samples.data(), 4, {1, 1}, 0, 31, 0, style);
        std::vector<Zmx8u> bytes(64);
        bool more;
        e.store(bytes.data(), 64, more);
        DecoderState state({1, 1});
        Zmx32s decoded = 0;
        // All flags but those of the raw planes 1 and 0 are forgotten: attached anew with the first of them
        // next.
        ASSERT_EQ(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(&decoded, 4, {1, 1}, state, 0, 6, style), zmxStsNoErr);
        ASSERT_EQ(zmxiDecodeCBProgrSetPassCounter_JPEG2K(100, state), zmxStsNoErr);
        ASSERT_EQ(zmxiDecodeCBProgrStep_JPEG2K(bytes.data(), e.segmentLength(0), state), zmxStsNoErr);
        if (!style) continue;
        ZmxiDecodeCBProgrState* s = state;
        Zmx32u* word =
            reinterpret_cast<Zmx32u*>(reinterpret_cast<Zmx8u*>(s->flagPlane.pFlags) + s->flagPlane.flagStride) + 1;
        EXPECT_EQ(*word & 0x8100u, 0x8100u) << "refined in the planes before";
        *word &= ~0x100u;
        ASSERT_EQ(zmxiDecodeCBProgrStep_JPEG2K(bytes.data() + e.segmentLength(0), e.segmentLength(1), state),
                  zmxStsNoErr);
        EXPECT_EQ(*word & 0x8100u, 0x8000u);
    }
}

// What an attach sets.
TEST(FlagPlane, Attach) {
    const ZmxiSize size{7, 5};
    for (Zmx32u style : {Zmx32u(0), Zmx32u(ZMX_CB_KEEP_FLAGS), Zmx32u(ZMX_CB_SELECTIVE_BYPASS)})
        for (std::size_t shift : {0, 8, 16, 24}) {
            int bytes = 0;
            ASSERT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K(size, &bytes), zmxStsNoErr);
            EXPECT_EQ(bytes, 64 * 5 + int(sizeof(ZmxiDecodeCBProgrState)) + 32);
            // Flush with a guard page at its end for every alignment.
            GuardedBlock memory(std::size_t(bytes) + 64, GuardedBlock::AtStart);
            std::memset(memory.data(), 0xEE, memory.size());
            Zmx8u* const base = memory.data() + shift;
            auto* s = reinterpret_cast<ZmxiDecodeCBProgrState*>(base);
            ASSERT_EQ(zmxiDecodeCBProgrInit_JPEG2K(s), zmxStsNoErr);
            EXPECT_EQ(s->magic, 0x434D4150u);
            EXPECT_EQ(s->attached, 0);
            const auto* area = reinterpret_cast<const Zmx8u*>(s->pFlagArea);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(area) % 32, 0u);
            EXPECT_GE(area - base, std::ptrdiff_t(sizeof *s));
            EXPECT_LT(area - base, std::ptrdiff_t(sizeof *s) + 32);
            Zmx32s dst[35];
            ASSERT_EQ(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(dst, 28, size, s, 0, 9, style), zmxStsNoErr);
            EXPECT_EQ(s->flagPlane.pFlags, s->pFlagArea);
            EXPECT_EQ(s->flagPlane.flagStride, 64);
            EXPECT_EQ(s->pBlock, &s->block);
            EXPECT_EQ(s->pFlagPlaneRec, &s->flagPlane);
            EXPECT_EQ(s->stripeStep, 28 * 4);
            EXPECT_EQ(s->flagStripeStep, 64 * 2);
            EXPECT_TRUE(s->offsetN == -64 && s->offsetS == 64 && s->offsetNW == -68 && s->offsetNE == -60 &&
                        s->offsetSW == 60 && s->offsetSE == 68);
            EXPECT_EQ(s->curBitPlane, 8);
            EXPECT_EQ(s->bypassPlane, style == ZMX_CB_SELECTIVE_BYPASS ? 5 : 0);
            EXPECT_EQ(s->cbStyle, style);
            EXPECT_TRUE(s->attached == 1 && s->passCounter == 0 && s->passState == 0 && s->damaged == 0);
            // Five rows of a border, seven words and a border; the rest of each stride is left alone.
            for (int f = 0; f < 5; ++f)
                for (int i = 0; i < 64; ++i)
                    ASSERT_EQ(area[f * 64 + i], i < 36 && style != ZMX_CB_KEEP_FLAGS ? 0 : 0xEE) << f << ' ' << i;
            EXPECT_EQ(area[5 * 64], 0xEE);
        }
}

TEST(FlagPlane, BypassPlane) {
    DecoderState state({1, 1});
    Zmx32s dst;
    for (int planes = 0; planes <= 31; ++planes)
        for (Zmx32u style : {Zmx32u(0), Zmx32u(ZMX_CB_SELECTIVE_BYPASS)}) {
            ASSERT_EQ(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(&dst, 4, {1, 1}, state, 0, planes, style), zmxStsNoErr);
            const ZmxiDecodeCBProgrState* s = state;
            EXPECT_EQ(s->bypassPlane, style && planes > 4 ? planes - 4 : 0) << planes;
        }
}

TEST(FlagPlane, TableOfTheSubband) {
    DecoderState state({1, 1});
    Zmx32s dst;
    for (int subband : {0, 1, 2, 3, 4, -1, 1000}) {
        ASSERT_EQ(zmxiDecodeCBProgrAttach_JPEG2K_32s_C1R(&dst, 4, {1, 1}, state, subband, 1, 0), zmxStsNoErr);
        const ZmxiDecodeCBProgrState* s = state;
        const auto& table = subband == 2 ? ZeroCodingLUT_HxLy : subband == 3 ? ZeroCodingLUT_HxHy : ZeroCodingLUT_LxHy;
        EXPECT_TRUE(std::equal(table.begin(), table.end(), s->pZeroCodingLUT)) << subband;
    }
}

// What a load leaves in the state.
TEST(EncoderState, Load) {
    EncoderState state({9, 9});
    const ZmxiEncodeState_JPEG2K* s = state;
    EXPECT_EQ(s->magic, 0x4C4D5344u);
    const BlockSamples samples = {0x21, 0x80000003, 0, 0};
    const EncodeChoice how{0, 30, 7, ZMX_CB_SELECTIVE_BYPASS | ZMX_CB_LOSSLESS};
    const CodedBlock c = encodeBlock(state, samples, {2, 2}, how);
    EXPECT_EQ(c.sfBits, 6);
    EXPECT_EQ(s->basePlane, 1);
    EXPECT_EQ(s->pCoder->passCount, 13);
    EXPECT_EQ(s->pCoder->curPass, 13);
    EXPECT_EQ(s->pCoder->mqTermType, 7);
    // Planes 5 to 1: exponents 2 (p - 1) - 13; plane 1 is raw.
    const int exponents[] = {-5, -7, -7, -7, -9, -9, -9, -11, -11, -11, -13, -13, -13};
    for (int i = 0; i < 13; ++i) {
        EXPECT_EQ(s->passDistExp[i], exponents[i]) << i;
        EXPECT_EQ(s->pCoder->passRaw[i], i == 10 || i == 11) << i;
    }
    int decisions = 0;
    for (int i = 0; i < 13; ++i) decisions += s->pCoder->passDecisions[i];
    EXPECT_EQ(decisions, s->pCoder->decisionCount);
    // The first pass: four samples of two rows have no run; 1 and its sign, and zeros under the contexts of a
    // significant neighbour below, beside and across.
    EXPECT_EQ(s->pCoder->passDecisions[0], 5);
    const Zmx8u values[] = {1, 0, 0, 0, 0}, contexts[] = {2, 11, 5, 7, 3};
    EXPECT_TRUE(std::equal(values, values + 5, s->pCoder->pDecisions));
    EXPECT_TRUE(std::equal(contexts, contexts + 5, s->pCoder->pContexts));
}
