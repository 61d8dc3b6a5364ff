// The MQ coder by itself: registers and bytes against the plain model, a published test sequence, the ends of
// segments.
// SPDX-License-Identifier: BSD-2-Clause
#include "pj2mqdec.h"
#include "pj2mqenc.h"
#include "tests/jpeg2000/model/mq.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"
#include "tests/support/rounds.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <vector>

using namespace zmx;

namespace {

using Bytes = std::vector<Zmx8u>;

// ITU-T T.88 Annex H.2, ahead of the marker that closes it there. All decisions are in one context that
// begins in row 0.
const Bytes kPlain = {0x00, 0x02, 0x00, 0x51, 0x00, 0x00, 0x00, 0xC0, 0x03, 0x52, 0x87, 0x2A, 0xAA, 0xAA, 0xAA, 0xAA,
                      0x82, 0xC0, 0x20, 0x00, 0xFC, 0xD7, 0x9E, 0xF6, 0xBF, 0x7F, 0xED, 0x90, 0x4F, 0x46, 0xA3, 0xBF};
const Bytes kCoded = {0x84, 0xC7, 0x3B, 0xFC, 0xE1, 0xA1, 0x43, 0x04, 0x02, 0x20, 0x00, 0x00, 0x41, 0x0D,
                      0xBB, 0x86, 0xF4, 0x31, 0x7F, 0xFF, 0x88, 0xFF, 0x37, 0x47, 0x1A, 0xDB, 0x6A, 0xDF};
constexpr int kOneContext = 3;

struct Decisions {
    Bytes values, contexts;
    void add(int value, int context) {
        values.push_back(Zmx8u(value));
        contexts.push_back(Zmx8u(context));
    }
    std::size_t size() const { return values.size(); }
};

Decisions plainDecisions() {
    Decisions d;
    for (Zmx8u byte : kPlain)
        for (int i = 7; i >= 0; --i) d.add(byte >> i & 1, kOneContext);
    return d;
}

// Decisions as they come: contexts of a few, values that lean to one side by an amount of the context.
Decisions randomDecisions(Rng& rng, int most) {
    Decisions d;
    const int n = int(rng.range(0, most)), contexts = int(rng.range(1, 19)), skew = int(rng.range(1, 30));
    const std::uint64_t favourites = rng.next();
    for (int i = 0; i < n; ++i) {
        const std::uint64_t r = rng.next();
        const int context = int((r & 0xFFFF) % unsigned(contexts));
        const int common = int(favourites >> context & 1);
        d.add((r >> 16 & 0xFFFF) % unsigned(skew) == 0 ? 1 - common : common, context);
    }
    return d;
}

// A coder at the start of a pass, as a load leaves it.
struct Coder : EncCoderState {
    explicit Coder(int method) : EncCoderState() {
        areg = 0x8000;
        ct = 12;
        dropFirstByte = 1;
        rawBitPos = 7;
        mqTermType = method;
        std::copy_n(owniInitialCtxIndexes_JPEG2K, kContexts, ctxState);
        std::copy_n(owniInitialMPS_JPEG2K, kContexts, ctxMPS);
    }
    void pass(const Decisions& d) {
        pPassDecisions = d.values.data();
        pPassContexts = d.contexts.data();
        passDecisionCount = int(d.size());
        passDecisionPos = 0;
        passBytes = 0;
    }
    // All of the pass, in pieces of a capacity.
    template <class Encode> Bytes run(Encode encode, int capacity) {
        Bytes all, piece(static_cast<std::size_t>(capacity));
        for (int left = 1, calls = 0; left && calls < 100000; ++calls) {
            int n = capacity;
            left = encode(this, piece.data(), &n);
            all.insert(all.end(), piece.begin(), piece.begin() + n);
        }
        EXPECT_EQ(passBytes, int(all.size()));
        return all;
    }
    Bytes terminated(const Decisions& d, int capacity = 4096) {
        pass(d);
        return run(decEncoderMQEncodeAndTerminate, capacity);
    }
};

Bytes modelTerminated(model::MqContexts& contexts, const Decisions& d, int method) {
    model::MqEncoder e;
    for (std::size_t i = 0; i < d.size(); ++i) e.encode(contexts, d.contexts[i], d.values[i]);
    if (e.pending) e.terminate(method);
    return e.out;
}

void resetContexts(MQDecoderState& s) { mqDecoderResetCtx(&s); }

::testing::AssertionResult sameState(const model::MqDecoder& m, const model::MqContexts& x, const MQDecoderState& s) {
    if (m.a != s.areg || m.c != s.creg || m.ct != s.ct || m.at != s.bytePos || m.marker != (s.markerFound != 0))
        return ::testing::AssertionFailure() << std::hex << "registers: expected " << m.a << ' ' << m.c << ' ' << m.ct
                                             << ' ' << m.at << ' ' << m.marker << ", actual " << s.areg << ' ' << s.creg
                                             << ' ' << s.ct << ' ' << s.bytePos << ' ' << s.markerFound;
    for (int i = 0; i < kContexts; ++i)
        if (Zmx32u(x.row[i]) != s.ctxState[i] || Zmx32u(x.mps[i]) != s.ctxMPS[i])
            return ::testing::AssertionFailure() << "context " << i;
    return ::testing::AssertionSuccess();
}

} // namespace

TEST(MqTables, AreTheStandards) {
    for (int i = 0; i < 47; ++i) {
        EXPECT_EQ(owniEstimator_JPEG2K[i].qe, model::kQe[i].qe) << i;
        EXPECT_EQ(owniEstimator_JPEG2K[i].nmps, model::kQe[i].nmps) << i;
        EXPECT_EQ(owniEstimator_JPEG2K[i].nlps, model::kQe[i].nlps) << i;
        EXPECT_EQ(owniEstimator_JPEG2K[i].flip, Zmx32u(model::kQe[i].flips)) << i;
    }
    const Zmx32u rows[][5] = {
        {0, 0x5601, 1, 1, 1}, {5, 0x0221, 38, 33, 0}, {45, 1, 45, 43, 0}, {46, 0x5601, 46, 46, 0}};
    for (const auto& r : rows) {
        const auto& e = owniEstimator_JPEG2K[r[0]];
        EXPECT_TRUE(e.qe == r[1] && e.nmps == r[2] && e.nlps == r[3] && e.flip == r[4]) << r[0];
    }
    for (int i = 0; i < 19; ++i) {
        EXPECT_EQ(owniInitialCtxIndexes_JPEG2K[i], i == 0 ? 46u : i == 1 ? 3u : i == 2 ? 4u : 0u);
        EXPECT_EQ(owniInitialMPS_JPEG2K[i], 0u);
    }
}

TEST(MqDecoder, TheSequenceOfT88) {
    Guarded<Zmx8u> segment(kCoded);
    MQDecoderState s{};
    mqDecoderResetCtx(&s);
    mqDecoderInit(&s, segment.data(), int(segment.size()));
    // The first line of the published trace, in the complement that this register holds.
    EXPECT_EQ(s.areg, 0x8000u);
    EXPECT_EQ(s.creg, ((0x84u ^ 0xFF) << 16 | (0xFF00u - (0xC7u << 8))) << 7);
    EXPECT_EQ(s.ct, 1u);
    const Decisions d = plainDecisions();
    for (std::size_t i = 0; i < d.size(); ++i) ASSERT_EQ(mqDecoderDecode(&s, kOneContext), d.values[i]) << i;
}

TEST(MqEncoder, TheSequenceOfT88) {
    const Decisions d = plainDecisions();
    Coder coder(ZMX_MQ_TERM_FLUSH);
    EXPECT_TRUE(sameBytes(kCoded, coder.terminated(d)));
    model::MqContexts contexts;
    EXPECT_TRUE(sameBytes(kCoded, modelTerminated(contexts, d, model::FullFlush)));
}

TEST(MqDecoder, AnEmptySegmentIsAMarker) {
    for (int length : {0, -1, INT_MIN}) {
        MQDecoderState s{};
        resetContexts(s);
        GuardedBlock nothing(1, GuardedBlock::AtEnd);
        mqDecoderInit(&s, nothing.data() + 1, length); // the guard page
        EXPECT_EQ(s.dataLen, length);
        EXPECT_EQ(s.bytePos, 0);
        EXPECT_EQ(s.markerFound, 1u);
        EXPECT_EQ(s.areg, 0x8000u);
        EXPECT_EQ(s.creg, 0u);
        EXPECT_EQ(s.ct, 1u);
        for (int i = 0; i < 1000; ++i) mqDecoderDecode(&s, i % 19);
        EXPECT_EQ(s.bytePos, 0);
    }
}

TEST(MqDecoder, OneByte) {
    Guarded<Zmx8u> segment(Bytes{0x5A});
    MQDecoderState s{};
    resetContexts(s);
    mqDecoderInit(&s, segment.data(), 1);
    EXPECT_EQ(s.bytePos, 1);
    EXPECT_EQ(s.markerFound, 0u);
    EXPECT_EQ(s.creg, (0x5Au ^ 0xFF) << 23);
    EXPECT_EQ(s.ct, 1u);
    while (!s.markerFound && s.ct) mqDecoderDecode(&s, 0);
    for (int i = 0; i < 8; ++i) mqDecoderDecode(&s, 0);
    EXPECT_EQ(s.bytePos, 1);
    EXPECT_EQ(s.markerFound, 1u);
}

TEST(MqDecoder, StuffedBitsAndMarkers) {
    struct {
        Bytes bytes;
        int bytePos;
        Zmx32u ct, marker, creg;
    } const cases[] = {
        {{0xFF, 0x8F, 0x12}, 1, 0, 0, (0xFE00u - (0x8Fu << 9)) << 7}, // the register wraps below zero
        {{0xFF, 0x00, 0x12}, 1, 0, 0, 0xFE00u << 7},
        {{0xFF, 0x90, 0x12}, 0, 1, 1, 0},
        {{0xFF, 0xFF, 0x12}, 0, 1, 1, 0},
        {{0x00, 0xFF, 0x12}, 1, 1, 0, 0xFF0000u << 7},
    };
    for (const auto& c : cases) {
        MQDecoderState s{};
        resetContexts(s);
        Guarded<Zmx8u> segment(c.bytes);
        mqDecoderInit(&s, segment.data(), int(segment.size()));
        EXPECT_EQ(s.bytePos, c.bytePos);
        EXPECT_EQ(s.ct, c.ct);
        EXPECT_EQ(s.markerFound, c.marker);
        EXPECT_EQ(s.creg, c.creg);
    }
    // Behind a marker nothing is consumed, however much follows.
    Bytes bytes(64, 0x33);
    bytes[10] = 0xFF;
    bytes[11] = 0x90;
    MQDecoderState s{};
    resetContexts(s);
    mqDecoderInit(&s, bytes.data(), 64);
    for (int i = 0; i < 1000; ++i) mqDecoderDecode(&s, i % 19);
    EXPECT_EQ(s.bytePos, 10);
    EXPECT_EQ(s.markerFound, 1u);
    // 0xFF 0x8F is data.
    bytes[11] = 0x8F;
    mqDecoderInit(&s, bytes.data(), 64);
    for (int i = 0; i < 1000; ++i) mqDecoderDecode(&s, 0);
    EXPECT_EQ(s.bytePos, 64);
}

TEST(MqDecoder, StartingASegmentLeavesTheContexts) {
    MQDecoderState s{};
    for (int i = 0; i < 19; ++i) {
        s.ctxState[i] = Zmx32u(i + 20);
        s.ctxMPS[i] = Zmx32u(i & 1);
    }
    s.markerFound = 1;
    s.bytePos = 77;
    mqDecoderInit(&s, kCoded.data(), int(kCoded.size()));
    for (int i = 0; i < 19; ++i) EXPECT_TRUE(s.ctxState[i] == Zmx32u(i + 20) && s.ctxMPS[i] == Zmx32u(i & 1));
    EXPECT_EQ(s.markerFound, 0u);
    EXPECT_EQ(s.bytePos, 1);
    const Zmx32u a = s.areg, c = s.creg;
    mqDecoderResetCtx(&s);
    for (int i = 0; i < 19; ++i) EXPECT_TRUE(s.ctxState[i] == owniInitialCtxIndexes_JPEG2K[i] && s.ctxMPS[i] == 0u);
    EXPECT_TRUE(s.areg == a && s.creg == c) << "a reset is of the contexts alone";
}

TEST(MqDecoder, RegisterByRegisterOnAnyBytes) {
    Rng rng(0x6101);
    for (int n = 0; n < rounds(3000); ++n) {
        SCOPED_TRACE(n);
        Bytes bytes(std::size_t(rng.range(0, 24)));
        rng.bytes(bytes.data(), bytes.size());
        for (Zmx8u& b : bytes)
            if (rng.oneIn(4)) b = Zmx8u(rng.oneIn(2) ? 0xFF : rng.range(0x8E, 0x91));
        Guarded<Zmx8u> segment(bytes, rng.oneIn(2) ? GuardedBlock::AtEnd : GuardedBlock::AtStart);
        const int length = int(bytes.size());
        model::MqDecoder m;
        model::MqContexts x;
        MQDecoderState s{};
        resetContexts(s);
        m.start(bytes.data(), length);
        mqDecoderInit(&s, segment.data(), length);
        ASSERT_TRUE(sameState(m, x, s));
        const int decisions = int(rng.range(0, 300));
        for (int i = 0; i < decisions; ++i) {
            const int context = int(rng.range(0, 18));
            ASSERT_EQ(m.decode(x, context), mqDecoderDecode(&s, context)) << i;
            ASSERT_TRUE(sameState(m, x, s)) << i;
        }
        EXPECT_EQ(s.ctxState[0], 46u) << "the uniform context does not adapt";
        ASSERT_EQ(m.endsWrongly() ? 1 : 0, mqDecoderCheckErrPredTerm(&s));
        ASSERT_TRUE(sameState(m, x, s)) << "after the test";
    }
}

// From any registers: what takes long to come up, such as the ends of intervals that meet exactly.
TEST(MqDecoder, AnyRegisters) {
    Rng rng(0x6102);
    const Bytes bytes = {0x12, 0xFF, 0x34, 0xFF, 0x8F, 0xFF, 0x90, 0x56};
    for (int n = 0; n < rounds(200000); ++n) {
        const int context = int(rng.range(0, 18));
        model::MqDecoder m;
        model::MqContexts x;
        MQDecoderState s{};
        m.start(bytes.data(), int(bytes.size()));
        mqDecoderInit(&s, bytes.data(), int(bytes.size()));
        for (int i = 0; i < kContexts; ++i) {
            s.ctxState[i] = Zmx32u(x.row[i] = int(rng.range(0, 46)));
            s.ctxMPS[i] = Zmx32u(x.mps[i] = int(rng.range(0, 1)));
        }
        const Zmx32u qe = model::kQe[x.row[context]].qe;
        s.areg = m.a = rng.oneIn(4) ? std::min(0x8000 + qe, 0xFFFFu) : Zmx32u(rng.range(0x8000, 0xFFFF));
        Zmx32u high = Zmx32u(rng.range(0, rng.oneIn(4) ? 0xFFFF : m.a - 1));
        if (rng.oneIn(2)) high = m.a - qe + Zmx32u(rng.range(-1, 1));
        s.creg = m.c = high << 16 | Zmx32u(rng.range(0, 0xFFFF));
        s.ct = m.ct = Zmx32u(rng.range(0, 8));
        s.bytePos = m.at = int(rng.range(0, 8));
        ASSERT_EQ(m.decode(x, context), mqDecoderDecode(&s, context)) << n;
        ASSERT_TRUE(sameState(m, x, s)) << n;
        ASSERT_EQ(m.endsWrongly() ? 1 : 0, mqDecoderCheckErrPredTerm(&s)) << n;
        ASSERT_TRUE(sameState(m, x, s)) << n;
    }
}

// Every way through the test of the end, from registers set by hand.
TEST(MqDecoder, TheTestOfTheEnd) {
    struct State {
        Bytes bytes;
        int bytePos;
        Zmx32u ct, marker, a, c;
        int answer;
    };
    const State cases[] = {
        {{0x12, 0x34}, 0, 0, 0, 0x8000, 0x40000000, 1}, // not at 0xFF
        {{0xFF, 0x34}, 0, 3, 0, 0x8000, 0x40000000, 1}, // bits left
        {{0xFF, 0x34}, 0, 1, 0, 0x8000, 0x40000000, 1},
        {{0xFF, 0x8F}, 0, 0, 0, 0x8000, 0x7FFF0000, 1}, // data behind the 0xFF
        {{0xFF, 0x90}, 0, 0, 0, 0x8000, 0x7FFF0000, 0}, // a marker behind it
        {{0xFF, 0x90}, 0, 0, 0, 0x8000, 0x7EFF0000, 1}, // 0x8000 - 0x100 is above the register
        {{0xFF, 0x90}, 0, 0, 0, 0x8000, 0x7F000000, 0}, // and now it is not
        {{0x12, 0x34}, 2, 0, 0, 0x8000, 0x7F000000, 0}, // the end of the segment counts as a marker
        {{0x12, 0x34}, 2, 2, 1, 0x8000, 0x40000000, 0}, // 0x8000 >> 1
        {{0x12, 0x34}, 2, 2, 1, 0x8000, 0x3FFF0000, 1},
        {{0x12, 0x34}, 0, 1, 1, 0x8000, 0x00000000, 0}, // a marker met and one bit left: well
    };
    for (const State& c : cases) {
        SCOPED_TRACE(&c - cases);
        MQDecoderState s{};
        resetContexts(s);
        Guarded<Zmx8u> segment(c.bytes);
        s.pData = segment.data();
        s.dataLen = int(segment.size());
        s.bytePos = c.bytePos;
        s.ct = c.ct;
        s.markerFound = c.marker;
        s.areg = c.a;
        s.creg = c.c;
        EXPECT_EQ(mqDecoderCheckErrPredTerm(&s), c.answer);
        if (c.marker && c.ct == 1) {
            EXPECT_TRUE(s.areg == c.a && s.creg == c.c && s.ct == c.ct && s.bytePos == c.bytePos && s.markerFound == 1);
        }
    }
}

TEST(MqEncoder, BytesAndRegistersOfTheModel) {
    Rng rng(0x6401);
    for (int n = 0; n < rounds(6000); ++n) {
        SCOPED_TRACE(n);
        const int method = n % 4 == 3 ? (n % 8 == 3 ? -1 : 77) : n % 4; // every other number is a flush
        const int capacity = n % 3 == 0 ? 1 : n % 3 == 1 ? int(rng.range(2, 5)) : 4096;
        Coder coder(method);
        model::MqContexts contexts;
        // Several segments with the contexts going on.
        for (int segment = 0; segment < 4; ++segment) {
            const Decisions d = randomDecisions(rng, n % 5 ? 60 : 600);
            ASSERT_TRUE(sameBytes(modelTerminated(contexts, d, method), coder.terminated(d, capacity))) << segment;
            for (int i = 0; i < kContexts; ++i) {
                ASSERT_EQ(coder.ctxState[i], Zmx32u(contexts.row[i]));
                ASSERT_EQ(coder.ctxMPS[i], Zmx32u(contexts.mps[i]));
            }
            // Ready for the next segment.
            ASSERT_EQ(coder.areg, 0x8000u);
            ASSERT_EQ(coder.creg, 0u);
            ASSERT_EQ(coder.ct, 12);
            ASSERT_EQ(coder.curByte, 0u);
            ASSERT_EQ(coder.bytesOut, 0);
            ASSERT_EQ(coder.dropFirstByte, 1u);
            ASSERT_EQ(coder.mqPending, 0u);
        }
    }
}

// A pass that is not terminated leaves the coder running.
TEST(MqEncoder, WithoutTermination) {
    Rng rng(0x6402);
    for (int n = 0; n < rounds(2000); ++n) {
        SCOPED_TRACE(n);
        const int method = n % 3, capacity = n % 2 ? 4096 : int(rng.range(1, 3));
        Coder coder(method);
        model::MqEncoder e;
        model::MqContexts contexts;
        Bytes expected, actual;
        for (int pass = 0; pass < 3; ++pass) {
            const Decisions d = randomDecisions(rng, 100);
            for (std::size_t i = 0; i < d.size(); ++i) e.encode(contexts, d.contexts[i], d.values[i]);
            coder.pass(d);
            const Bytes bytes = coder.run(decEncoderEncode, capacity);
            actual.insert(actual.end(), bytes.begin(), bytes.end());
            ASSERT_EQ(coder.areg, e.a);
            ASSERT_EQ(coder.creg, e.c);
            ASSERT_EQ(coder.ct, e.ct);
            ASSERT_EQ(coder.curByte, e.b);
            ASSERT_EQ(coder.bytesOut, e.bytesOut);
            ASSERT_EQ(coder.mqPending != 0, e.pending);
            ASSERT_EQ(coder.passDecisionPos, coder.passDecisionCount);
        }
        const Bytes rest = coder.terminated(Decisions(), capacity);
        actual.insert(actual.end(), rest.begin(), rest.end());
        if (e.pending) e.terminate(method);
        ASSERT_TRUE(sameBytes(e.out, actual));
    }
}

// From any registers that a coder can have: the carries into a 0xFF and the long runs of 0xFF that take long
// to come up.
TEST(MqEncoder, TerminationsFromAnyRegisters) {
    Rng rng(0x6404);
    for (int n = 0; n < rounds(60000); ++n) {
        SCOPED_TRACE(n);
        const int method = n % 3;
        Coder coder(method);
        model::MqEncoder e;
        e.ct = int(rng.range(1, 12));
        // At the last byte-out the code register was left below its byte, so that the interval, shifted up to
        // the next byte-out, ends less than a byte's carry above bit 27.
        const Zmx32u end = (0x8000000u + 0x1000000u) >> e.ct;
        e.a = Zmx32u(rng.range(0x8000, std::min(0xFFFFu, end)));
        const Zmx32u most = end - e.a;
        e.c = Zmx32u(rng.range(0, most));
        if (rng.oneIn(2)) e.c = most - std::min(most, Zmx32u(rng.range(0, 0x30000)) >> rng.range(0, 17));
        if (rng.oneIn(4)) e.c = std::min(most, (0x8000000u >> e.ct) - Zmx32u(rng.range(0, 0x8000)));
        e.b = Zmx32u(rng.oneIn(3) ? 0xFF : rng.range(0xFD - (rng.oneIn(2) ? 0xFD : 0), 0xFF));
        e.bytesOut = int(rng.range(1, 5));
        e.pending = true;
        e.ahead = false;
        coder.areg = e.a;
        coder.creg = e.c;
        coder.ct = e.ct;
        coder.curByte = e.b;
        coder.bytesOut = e.bytesOut;
        coder.mqPending = 1;
        coder.dropFirstByte = 0;
        e.terminate(method);
        ASSERT_TRUE(sameBytes(e.out, coder.terminated(Decisions())));
    }
}

TEST(MqEncoder, NoDecisionsNoBytes) {
    for (int method : {0, 1, 2}) {
        Coder coder(method);
        EXPECT_TRUE(coder.terminated(Decisions(), 1).empty());
        EXPECT_EQ(coder.mqPending, 0u);
    }
}

// Raw passes: bytes of eight bits, seven behind a 0xFF.
TEST(RawCoder, PacksBits) {
    struct {
        Bytes bits;
        Bytes bytes;
        Zmx32u rawByte, lastFF;
        int bitPos;
    } const cases[] = {
        {{1, 0, 1}, {}, 0xA0, 0, 4},
        {{1, 1, 1, 1, 1, 1, 1, 1}, {0xFF}, 0, 1, 6},
        {{1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, {0xFF}, 0x60, 1, 4},
        {{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0}, {0xFF, 0x7F}, 0, 0, 6},
        {{0, 0, 0, 0, 0, 0, 0, 1, 1}, {0x01}, 0x80, 0, 6},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        Coder coder(0);
        Decisions d{c.bits, Bytes(c.bits.size())};
        coder.passIsRaw = 1;
        coder.pass(d);
        const Bytes bytes = coder.run(decEncoderEncode, 16);
        EXPECT_TRUE(sameBytes(c.bytes, bytes));
        // Behind 0xFF 0x7F there are eight bits to a byte again.
        EXPECT_EQ(coder.rawLastFF, c.lastFF);
        EXPECT_EQ(coder.rawBitPos, c.bitPos);
        EXPECT_EQ(coder.rawByte, c.rawByte);
        EXPECT_EQ(coder.rawBytesOut, int(c.bytes.size()));
    }
}

namespace {

struct Ends {
    long segments = 0, wrong = 0, bytes = 0;
};

// Short segments one after the other, the contexts going on. Each decodes to what went in, and none ends in
// 0xFF. The bytes of all methods are for the same decisions.
Ends closeAndTest(int method, int segments) {
    Rng rng(0x6403);
    Coder coder(method);
    Ends ends;
    Bytes room(64);
    for (int n = 0; n < segments; ++n) {
        const Decisions d = randomDecisions(rng, n % 16 ? 12 : 60);
        MQDecoderState s{};
        std::copy_n(coder.ctxState, kContexts, s.ctxState);
        std::copy_n(coder.ctxMPS, kContexts, s.ctxMPS);
        coder.pass(d);
        int length = int(room.size()), differing = 0;
        EXPECT_EQ(decEncoderMQEncodeAndTerminate(&coder, room.data(), &length), 0);
        mqDecoderInit(&s, room.data(), length);
        for (std::size_t i = 0; i < d.size(); ++i) differing += mqDecoderDecode(&s, d.contexts[i]) != d.values[i];
        EXPECT_EQ(differing, 0);
        EXPECT_FALSE(length && room[std::size_t(length) - 1] == 0xFF);
        if (::testing::Test::HasFailure()) {
            ADD_FAILURE() << "segment " << n;
            break;
        }
        ends.segments += d.size() > 0;
        ends.wrong += mqDecoderCheckErrPredTerm(&s);
        ends.bytes += length;
    }
    return ends;
}

} // namespace

// All that the easy termination closes passes the test of the end; the other two methods often do not.
TEST(MqTermination, AMillionSegments) {
    const Ends easy = closeAndTest(ZMX_MQ_TERM_EASY, rounds(1000000));
    EXPECT_GT(easy.segments, rounds(900000));
    EXPECT_EQ(easy.wrong, 0);
}

TEST(MqTermination, TheOtherMethods) {
    const Ends flush = closeAndTest(ZMX_MQ_TERM_FLUSH, rounds(100000)),
               shortest = closeAndTest(ZMX_MQ_TERM_NEAR_OPTIMAL, rounds(100000)),
               easy = closeAndTest(ZMX_MQ_TERM_EASY, rounds(100000));
    EXPECT_GT(flush.wrong, flush.segments / 10);
    EXPECT_GT(shortest.wrong, shortest.segments / 10);
    EXPECT_LT(shortest.bytes, easy.bytes);
    EXPECT_LT(shortest.bytes, flush.bytes);
}
