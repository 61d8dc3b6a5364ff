// Quantisation tables, and the way from samples to quantised coefficients and back.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/frame/model/primitives.h"
#include "tests/jpeg/model/dct.h"
#include "tests/jpeg/model/quant.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"
#include "tests/support/rounds.h"
#include "tests/support/threads.cpp"
#include "zmxj.h"

#include <array>
#include <cmath>
#include <limits>

namespace {

using model::Extent;
using Block = std::array<Zmx16s, 64>;
using Raw = std::array<Zmx8u, 64>;
using Table = std::array<Zmx16u, 64>;
using Table12 = std::array<Zmx32f, 64>;

Block anyBlock(Rng& rng) {
    const int reaches[] = {1, 10, 128, 1024, 2048, 32768};
    const int reach = reaches[rng.range(0, 5)], sparse = rng.oneIn(2) ? int(rng.range(2, 30)) : 1;
    Block b{};
    for (Zmx16s& v : b)
        if (rng.oneIn(sparse)) v = Zmx16s(rng.range(-reach, reach - 1));
    return b;
}

// Reciprocals or divisors: such as the library makes, or any bits.
Table anyTable(Rng& rng, bool forward) {
    Table t;
    const bool any = rng.oneIn(4);
    const int top = rng.oneIn(2) ? 255 : 16;
    for (Zmx16u& v : t) {
        const int d = int(rng.range(1, top));
        v = Zmx16u(any ? rng.range(0, 65535) : forward ? model::quotient(32768, Zmx16u(d)) : d);
    }
    return t;
}
Table flatTable(int v) {
    Table t;
    t.fill(Zmx16u(v));
    return t;
}

std::size_t extent(int step, int rows, int rowBytes) {
    return std::size_t(step) * std::size_t(rows - 1) + std::size_t(rowBytes);
}

// The inverse functions with a picture of 8-bit samples.
struct Decoder {
    const char* name;
    Extent extent;
    ZmxStatus (*call)(const Zmx16s*, Zmx8u*, int, const Zmx16u*);
    int asks; // how often it asks for the thread count
};
const Decoder kDecoders[] = {
    {"whole block", Extent::Full, zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R, 0},
    {"DC only", Extent::DcOnly, zmxiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R, 0},
    {"2x2 corner", Extent::Corner2x2, zmxiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R, 1},
    {"4x4 corner", Extent::Corner4x4, zmxiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R, 1},
    {"to 2x2", Extent::To2x2, zmxiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R, 1},
    {"to 4x4", Extent::To4x4, zmxiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R, 1},
};

// The picture that a lone DC coefficient gives.
std::vector<Zmx8u> decodeDc(const Decoder& d, int coefficient, int divisor) {
    Block src{};
    src[0] = Zmx16s(coefficient);
    const int n = model::pictureSize(d.extent);
    std::vector<Zmx8u> dst(std::size_t(n * n));
    EXPECT_EQ(d.call(src.data(), dst.data(), n, flatTable(divisor).data()), zmxStsNoErr);
    return dst;
}
std::vector<Zmx8u> flatPicture(const Decoder& d, int v) {
    const int n = model::pictureSize(d.extent);
    return std::vector<Zmx8u>(std::size_t(n * n), Zmx8u(v));
}

} // namespace

// --- tables -------------------------------------------------------------------------------------------------------

TEST(QualityScaling, LiteralFactors) {
    const auto scaled = [](int entry, int quality) {
        Raw raw;
        raw.fill(Zmx8u(entry));
        EXPECT_EQ(zmxiQuantFwdRawTableInit_JPEG_8u(raw.data(), quality), zmxStsNoErr);
        for (Zmx8u v : raw) EXPECT_EQ(v, raw[0]);
        return int(raw[0]);
    };
    EXPECT_EQ(scaled(16, 1), 255); // scale 5000
    EXPECT_EQ(scaled(5, 1), 250);
    EXPECT_EQ(scaled(6, 1), 255);
    EXPECT_EQ(scaled(0, 1), 1);
    EXPECT_EQ(scaled(100, 49), 102); // scale 102
    EXPECT_EQ(scaled(100, 50), 100);
    EXPECT_EQ(scaled(100, 51), 98);
    EXPECT_EQ(scaled(24, 49), 24); // 24.48 + 0.5
    EXPECT_EQ(scaled(25, 49), 26); // 25.5 + 0.5
    EXPECT_EQ(scaled(16, 75), 8);
    EXPECT_EQ(scaled(11, 75), 6); // 5.5 is rounded up
    EXPECT_EQ(scaled(255, 99), 5);
    EXPECT_EQ(scaled(255, 100), 1);
    EXPECT_EQ(scaled(255, 101), 1);
    EXPECT_EQ(scaled(255, 4000000), 1);
    for (int entry = 1; entry < 256; ++entry) EXPECT_EQ(scaled(entry, 50), entry);
    EXPECT_EQ(scaled(0, 50), 1);
}

TEST(QualityScaling, EveryQualityAndEveryEntry) {
    std::vector<int> qualities;
    for (int q = 1; q <= 200; ++q) qualities.push_back(q);
    // Far beyond 100 the products wrap in 32 bits.
    for (int q : {1000, 100000, 4210000, 4300000, 8500000, 100000000, 1073741823, 1073741824, 1500000000, 2147483646,
                  2147483647})
        qualities.push_back(q);
    for (int q : qualities)
        for (int base = 0; base < 256; base += 64) {
            Guarded<Zmx8u> raw(64);
            for (int i = 0; i < 64; ++i) raw[std::size_t(i)] = Zmx8u(base + i);
            std::vector<Zmx8u> expected = raw.copy();
            model::scaleRawTable(expected.data(), q);
            ASSERT_EQ(zmxiQuantFwdRawTableInit_JPEG_8u(raw.data(), q), zmxStsNoErr);
            ASSERT_TRUE(sameBytes(expected, raw.copy())) << "quality " << q << ", entries from " << base;
        }
}

TEST(QualityScaling, ArgumentTests) {
    Raw raw;
    raw.fill(7);
    checkOrder({kNull, kBadArg}, [&](const Bad& bad) {
        return zmxiQuantFwdRawTableInit_JPEG_8u(bad.null(0, raw.data()), bad.below1(1, 75));
    });
    for (Zmx8u v : raw) EXPECT_EQ(v, 7);
}

TEST(QuantTables, EveryDivisor) {
    for (int base = 0; base < 256; base += 64) {
        Raw raw;
        for (int i = 0; i < 64; ++i) raw[std::size_t(i)] = Zmx8u(base + i);
        Table forward, inverse;
        EXPECT_EQ(zmxiQuantFwdTableInit_JPEG_8u16u(raw.data(), forward.data()),
                  base == 0 ? zmxStsDivByZero : zmxStsNoErr);
        EXPECT_EQ(zmxiQuantInvTableInit_JPEG_8u16u(raw.data(), inverse.data()), zmxStsNoErr);
        for (int k = 0; k < 64; ++k) {
            const int d = base + k;
            const std::size_t natural = std::size_t(model::kZigzag[k]);
            EXPECT_EQ(inverse[natural], d);
            // 32768 / d to nearest, ties to even; the two ways to say it agree on every divisor.
            int q = d ? 32768 / d : 65535;
            const int rest = d ? 32768 % d : 0;
            q += 2 * rest > d || (rest && 2 * rest == d && q % 2);
            EXPECT_EQ(forward[natural], q) << d;
            EXPECT_EQ(model::quotient(32768, Zmx16u(d)), q) << d;
        }
    }
    Raw raw{};
    Table t;
    raw[0] = 1, raw[1] = 2, raw[2] = 3, raw[63] = 255;
    EXPECT_EQ(zmxiQuantFwdTableInit_JPEG_8u16u(raw.data(), t.data()), zmxStsDivByZero);
    EXPECT_EQ(t[0], 32768);
    EXPECT_EQ(t[1], 16384);
    EXPECT_EQ(t[8], 10923);
    EXPECT_EQ(t[63], 129);
    EXPECT_EQ(t[16], 65535);
}

TEST(QuantTables, ARawZeroIsLiftedOnlyByScaling) {
    Raw raw;
    raw.fill(10);
    raw[2] = 0;
    Table t;
    EXPECT_EQ(zmxiQuantFwdTableInit_JPEG_8u16u(raw.data(), t.data()), zmxStsDivByZero);
    EXPECT_EQ(t[8], 65535);
    EXPECT_EQ(t[1], 3277);
    ASSERT_EQ(zmxiQuantFwdRawTableInit_JPEG_8u(raw.data(), 50), zmxStsNoErr);
    EXPECT_EQ(raw[2], 1);
    EXPECT_EQ(zmxiQuantFwdTableInit_JPEG_8u16u(raw.data(), t.data()), zmxStsNoErr);
    EXPECT_EQ(t[8], 32768);
}

TEST(QuantTables, WithinTheCallersTables) {
    Rng rng(281);
    SCOPED_TRACE("seed 281");
    for (auto flush : {GuardedBlock::AtEnd, GuardedBlock::AtStart}) {
        Guarded<Zmx8u> raw(rng.vec<Zmx8u>(64, 0, 255), flush);
        const std::vector<Zmx8u> before = raw.copy();
        Guarded<Zmx16u> t(64, flush);
        std::vector<Zmx16u> expected(64);
        const ZmxStatus status = model::forwardTable(raw.data(), expected.data());
        EXPECT_EQ(zmxiQuantFwdTableInit_JPEG_8u16u(raw.data(), t.data()), status);
        EXPECT_TRUE(sameBytes(expected, t.copy()));
        model::inverseTable(raw.data(), expected.data());
        EXPECT_EQ(zmxiQuantInvTableInit_JPEG_8u16u(raw.data(), t.data()), zmxStsNoErr);
        EXPECT_TRUE(sameBytes(expected, t.copy()));
        EXPECT_TRUE(sameBytes(before, raw.copy()));
    }
    Raw raw{};
    Table t = flatTable(99);
    checkOrder({kNull, kNull}, [&](const Bad& bad) {
        const ZmxStatus st = zmxiQuantFwdTableInit_JPEG_8u16u(bad.null(0, raw.data()), bad.null(1, t.data()));
        EXPECT_EQ(zmxiQuantInvTableInit_JPEG_8u16u(bad.null(0, raw.data()), bad.null(1, t.data())), st);
        return st;
    });
    EXPECT_EQ(t, flatTable(99));
}

// --- coefficients in place
// ----------------------------------------------------------------------------------------------

TEST(Quantising, AReciprocalOf32768ReproducesEveryCoefficient) {
    const Table one = flatTable(32768);
    for (int base = -32768; base <= 32767; base += 64) {
        Block b, expected;
        for (int i = 0; i < 64; ++i) b[std::size_t(i)] = expected[std::size_t(i)] = Zmx16s(base + i);
        ASSERT_EQ(zmxiQuantFwd8x8_JPEG_16s_C1I(b.data(), one.data()), zmxStsNoErr);
        ASSERT_EQ(b, expected);
    }
}

TEST(Quantising, TiesToEvenAndSaturation) {
    Block b{};
    b[0] = 1, b[1] = 3, b[2] = 5, b[3] = -1, b[4] = -3, b[5] = -5, b[6] = 32767, b[7] = -32768;
    Table t = flatTable(16384); // a half
    t[6] = t[7] = 65535;
    ASSERT_EQ(zmxiQuantFwd8x8_JPEG_16s_C1I(b.data(), t.data()), zmxStsNoErr);
    EXPECT_EQ(std::vector<Zmx16s>(b.begin(), b.begin() + 8), (std::vector<Zmx16s>{0, 2, 2, 0, -2, -2, 32767, -32768}));
}

TEST(Quantising, DequantisingReadsTheTableAsSigned) {
    Block b{};
    b[0] = 3, b[1] = 300, b[2] = -300, b[3] = 1, b[4] = 1, b[5] = -1;
    Table t = flatTable(200);
    t[3] = 65535, t[4] = t[5] = 32768;
    ASSERT_EQ(zmxiQuantInv8x8_JPEG_16s_C1I(b.data(), t.data()), zmxStsNoErr);
    EXPECT_EQ(std::vector<Zmx16s>(b.begin(), b.begin() + 6),
              (std::vector<Zmx16s>{600, 32767, -32768, -1, -32768, 32767}));
}

TEST(Quantising, EveryCoefficientByEveryDivisor) {
    Block b, forward, back;
    for (int d = 0; d < 256; d += shortened() ? 17 : 1) {
        const Table reciprocal = flatTable(model::quotient(32768, Zmx16u(d))), divisor = flatTable(d);
        for (int base = -32768; base <= 32767; base += 64) {
            for (std::size_t k = 0; k < 64; ++k) {
                b[k] = Zmx16s(base + int(k));
                forward[k] = model::scaledProduct(reciprocal[k], b[k], 15);
                back[k] = model::product(b[k], Zmx16s(d));
            }
            const Block input = b;
            ASSERT_EQ(zmxiQuantFwd8x8_JPEG_16s_C1I(b.data(), reciprocal.data()), zmxStsNoErr);
            ASSERT_TRUE(sameBytes(forward.data(), b.data(), 128)) << "divisor " << d << ", from " << base;
            b = input;
            ASSERT_EQ(zmxiQuantInv8x8_JPEG_16s_C1I(b.data(), divisor.data()), zmxStsNoErr);
            ASSERT_TRUE(sameBytes(back.data(), b.data(), 128)) << "divisor " << d << ", from " << base;
        }
    }
}

TEST(Quantising, AgainstTheModel) {
    Rng rng(282);
    SCOPED_TRACE("seed 282");
    for (int i = 0; i < 500; ++i) {
        const Block b = anyBlock(rng);
        const Table f = anyTable(rng, true), d = anyTable(rng, false);
        const auto flush = i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart;
        Guarded<Zmx16s> block(std::vector<Zmx16s>(b.begin(), b.end()), flush);
        Guarded<Zmx16u> table(std::vector<Zmx16u>(f.begin(), f.end()), flush);
        Block expected = b;
        model::quantise(expected.data(), f.data());
        ASSERT_EQ(zmxiQuantFwd8x8_JPEG_16s_C1I(block.data(), table.data()), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected.data(), block.data(), 128));
        std::memcpy(table.data(), d.data(), 128);
        model::dequantise(expected.data(), d.data());
        ASSERT_EQ(zmxiQuantInv8x8_JPEG_16s_C1I(block.data(), table.data()), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected.data(), block.data(), 128));
    }
}

// --- order of argument tests
// --------------------------------------------------------------------------------------------

TEST(DctArguments, PointersOnly) {
    Block src{}, dst{};
    src.fill(3);
    dst.fill(99);
    const Block before = src, untouched = dst;
    const Table t = flatTable(1);
    checkOrder({kNull, kNull, kNull}, [&](const Bad& bad) {
        const ZmxStatus st =
            zmxiDCTQuantFwd8x8_JPEG_16s_C1(bad.null(0, src.data()), bad.null(1, dst.data()), bad.null(2, t.data()));
        EXPECT_EQ(
            zmxiDCTQuantInv8x8_JPEG_16s_C1(bad.null(0, src.data()), bad.null(1, dst.data()), bad.null(2, t.data())),
            st);
        return st;
    });
    for (auto f : {zmxiDCTQuantFwd8x8_JPEG_16s_C1I, zmxiDCTQuantInv8x8_JPEG_16s_C1I, zmxiQuantFwd8x8_JPEG_16s_C1I,
                   zmxiQuantInv8x8_JPEG_16s_C1I})
        checkOrder({kNull, kNull}, [&](const Bad& bad) { return f(bad.null(0, src.data()), bad.null(1, t.data())); });
    EXPECT_EQ(src, before);
    EXPECT_EQ(dst, untouched);
}

TEST(DctArguments, TheTableComesBehindTheStep) {
    // Source, destination, step, table.
    const std::vector<ZmxStatus> order{kNull, kNull, kStep, kNull};
    const Table t = flatTable(1);
    Table12 t12;
    t12.fill(1);
    Block coefficients{};
    coefficients.fill(3);
    const Block before = coefficients;
    std::vector<Zmx8u> picture(256, 0x5A);
    const std::vector<Zmx8u> untouched = picture;
    auto* wide = reinterpret_cast<Zmx16u*>(picture.data());
    const int calls = threadsAsked();
    checkOrder(order, [&](const Bad& bad) {
        return zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(bad.null(0, picture.data()), bad.below1(2, 8),
                                                   bad.null(1, coefficients.data()), bad.null(3, t.data()));
    });
    checkOrder(order, [&](const Bad& bad) {
        return zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(bad.null(0, wide), bad.below1(2, 16),
                                                    bad.null(1, coefficients.data()), bad.null(3, t12.data()));
    });
    for (const Decoder& d : kDecoders) {
        SCOPED_TRACE(d.name);
        checkOrder(order, [&](const Bad& bad) {
            return d.call(bad.null(0, coefficients.data()), bad.null(1, picture.data()), bad.below1(2, 8),
                          bad.null(3, t.data()));
        });
    }
    checkOrder(order, [&](const Bad& bad) {
        return zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(bad.null(0, coefficients.data()), bad.null(1, wide),
                                                    bad.below1(2, 16), bad.null(3, t12.data()));
    });
    EXPECT_EQ(coefficients, before);
    EXPECT_EQ(picture, untouched);
    EXPECT_EQ(threadsAsked(), calls);
}

// --- blocks of 8-bit samples
// ------------------------------------------------------------------------------------------

TEST(ForwardDct, ConstantBlocks) {
    std::vector<Zmx8u> src(64, 228);
    Block dst;
    ASSERT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(src.data(), 8, dst.data(), flatTable(32768).data()), zmxStsNoErr);
    Block expected{};
    expected[0] = 800;
    EXPECT_EQ(dst, expected);
    // Divisor 16: 2048.
    ASSERT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(src.data(), 8, dst.data(), flatTable(2048).data()), zmxStsNoErr);
    expected[0] = 50;
    EXPECT_EQ(dst, expected);
    Block samples;
    samples.fill(100);
    ASSERT_EQ(zmxiDCTQuantFwd8x8_JPEG_16s_C1I(samples.data(), flatTable(2048).data()), zmxStsNoErr);
    EXPECT_EQ(samples, expected);
}

TEST(ForwardDct, AgainstTheModel) {
    Rng rng(283);
    SCOPED_TRACE("seed 283");
    for (int i = 0; i < 800; ++i) {
        const auto flush = i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart;
        const Table f = anyTable(rng, true);
        Guarded<Zmx16u> table(std::vector<Zmx16u>(f.begin(), f.end()), flush);
        Guarded<Zmx16s> dst(64, flush);

        const int step = i % 5 ? 8 + int(rng.range(0, 9)) : int(rng.range(1, 8));
        Guarded<Zmx8u> src(rng.vec<Zmx8u>(extent(step, 8, 8), i % 3 ? 0 : 100, i % 3 == 1 ? 10 : 255), flush);
        const std::vector<Zmx8u> srcBefore = src.copy();
        Block expected;
        model::encodeBlock(src.data(), step, expected.data(), f.data());
        ASSERT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(src.data(), step, dst.data(), table.data()), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected.data(), dst.data(), 128)) << "block " << i;
        ASSERT_TRUE(sameBytes(srcBefore, src.copy()));

        const Block b = anyBlock(rng);
        Guarded<Zmx16s> samples(std::vector<Zmx16s>(b.begin(), b.end()), flush);
        expected = b;
        model::dctForward(expected.data());
        model::quantise(expected.data(), f.data());
        ASSERT_EQ(zmxiDCTQuantFwd8x8_JPEG_16s_C1(samples.data(), dst.data(), table.data()), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected.data(), dst.data(), 128)) << "block " << i;
        ASSERT_TRUE(sameBytes(b.data(), samples.data(), 128));
        ASSERT_EQ(zmxiDCTQuantFwd8x8_JPEG_16s_C1I(samples.data(), table.data()), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected.data(), samples.data(), 128)) << "in place, block " << i;
        ASSERT_TRUE(sameBytes(f.data(), table.data(), 128));
    }
}

TEST(ForwardDct, BlackAndWhite) {
    // Every pattern of black and white in a row, and every choice of rows in which it is inverted: among them are
    // both extremes of every sum in either pass.
    const Table one = flatTable(32768);
    for (int pattern = 0; pattern < 256; ++pattern)
        for (int inverted = 0; inverted < 256; ++inverted) {
            Block samples, expected, actual;
            Raw src;
            for (int k = 0; k < 64; ++k) {
                const int white = (pattern >> k % 8 ^ inverted >> k / 8) & 1;
                src[std::size_t(k)] = white ? 255 : 0;
                samples[std::size_t(k)] = white ? 127 : -128;
            }
            model::encodeBlock(src.data(), 8, expected.data(), one.data());
            ASSERT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(src.data(), 8, actual.data(), one.data()), zmxStsNoErr);
            ASSERT_TRUE(actual == expected) << pattern << ", " << inverted;
            ASSERT_EQ(zmxiDCTQuantFwd8x8_JPEG_16s_C1(samples.data(), actual.data(), one.data()), zmxStsNoErr);
            ASSERT_TRUE(actual == expected) << pattern << ", " << inverted;
        }
}

TEST(InverseDct, ADcCoefficientAloneGivesAFlatPicture) {
    for (const Decoder& d : kDecoders) {
        SCOPED_TRACE(d.name);
        EXPECT_EQ(decodeDc(d, 0, 1), flatPicture(d, 128));
        EXPECT_EQ(decodeDc(d, 50, 16), flatPicture(d, 228));
        EXPECT_EQ(decodeDc(d, -64, 16), flatPicture(d, 0));
        EXPECT_EQ(decodeDc(d, 64, 16), flatPicture(d, 255));
    }
}

TEST(InverseDct, TheDcFormRoundsToTheFloor) {
    EXPECT_EQ(decodeDc(kDecoders[1], -3, 1), flatPicture(kDecoders[1], 127));
    EXPECT_EQ(decodeDc(kDecoders[0], -3, 1), flatPicture(kDecoders[0], 128));
    EXPECT_EQ(decodeDc(kDecoders[1], 7, 1), flatPicture(kDecoders[1], 128));
    EXPECT_EQ(decodeDc(kDecoders[1], 8, 1), flatPicture(kDecoders[1], 129));
    EXPECT_EQ(decodeDc(kDecoders[1], -8, 1), flatPicture(kDecoders[1], 127));
    EXPECT_EQ(decodeDc(kDecoders[1], -9, 1), flatPicture(kDecoders[1], 126));
}

TEST(InverseDct, OnlyTheDcFormKeepsTheWholeProduct) {
    EXPECT_EQ(decodeDc(kDecoders[1], 2000, 100), flatPicture(kDecoders[1], 255));
    // The table is unsigned here and signed in the others: 65535 is -1 there.
    EXPECT_EQ(decodeDc(kDecoders[1], 32767, 65535), flatPicture(kDecoders[1], 255));
    EXPECT_EQ(decodeDc(kDecoders[1], -32768, 65535), flatPicture(kDecoders[1], 0));
    EXPECT_EQ(decodeDc(kDecoders[0], -80, 65535), flatPicture(kDecoders[0], 138));
    EXPECT_EQ(decodeDc(kDecoders[1], -80, 65535), flatPicture(kDecoders[1], 0));
}

TEST(InverseDct, TheDcFormReadsOneElement) {
    for (auto flush : {GuardedBlock::AtEnd, GuardedBlock::AtStart}) {
        Guarded<Zmx16s> src(std::vector<Zmx16s>{-3}, flush);
        Guarded<Zmx16u> table(std::vector<Zmx16u>{8}, flush);
        std::vector<Zmx8u> dst(64);
        ASSERT_EQ(zmxiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R(src.data(), dst.data(), 8, table.data()), zmxStsNoErr);
        EXPECT_EQ(dst, std::vector<Zmx8u>(64, 125));
    }
}

TEST(InverseDct, AgainstTheModel) {
    Rng rng(284);
    SCOPED_TRACE("seed 284");
    for (const Decoder& d : kDecoders)
        for (int i = 0; i < 400; ++i) {
            SCOPED_TRACE(d.name);
            const auto flush = i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart;
            const Block b = anyBlock(rng);
            const Table q = i % 3 ? flatTable(int(rng.range(1, 3))) : anyTable(rng, false);
            const int n = model::pictureSize(d.extent);
            const int step = i % 5 ? n + int(rng.range(0, 9)) : int(rng.range(1, n));
            Guarded<Zmx16s> src(std::vector<Zmx16s>(b.begin(), b.end()), flush);
            Guarded<Zmx16u> table(std::vector<Zmx16u>(q.begin(), q.end()), flush);
            Guarded<Zmx8u> dst(extent(step, n, n), flush);
            dst.fill(0x5A);
            std::vector<Zmx8u> expected = dst.copy();
            model::decodeBlock(d.extent, b.data(), expected.data(), step, q.data());
            ASSERT_EQ(d.call(src.data(), dst.data(), step, table.data()), zmxStsNoErr);
            ASSERT_TRUE(sameBytes(expected, dst.copy())) << "block " << i << ", step " << step;
            ASSERT_TRUE(sameBytes(b.data(), src.data(), 128));
            ASSERT_TRUE(sameBytes(q.data(), table.data(), 128));
        }
}

TEST(InverseDct, SamplesAroundZero) {
    Rng rng(285);
    SCOPED_TRACE("seed 285");
    for (int i = 0; i < 500; ++i) {
        const auto flush = i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart;
        const Block b = anyBlock(rng);
        const Table q = anyTable(rng, false);
        Guarded<Zmx16s> src(std::vector<Zmx16s>(b.begin(), b.end()), flush), dst(64, flush);
        Guarded<Zmx16u> table(std::vector<Zmx16u>(q.begin(), q.end()), flush);
        Block expected = b;
        model::dequantise(expected.data(), q.data());
        model::dctInverse(expected.data());
        ASSERT_EQ(zmxiDCTQuantInv8x8_JPEG_16s_C1(src.data(), dst.data(), table.data()), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected.data(), dst.data(), 128));
        ASSERT_TRUE(sameBytes(b.data(), src.data(), 128));
        ASSERT_EQ(zmxiDCTQuantInv8x8_JPEG_16s_C1I(src.data(), table.data()), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected.data(), src.data(), 128)) << "in place";
    }
}

TEST(RoundTrip, WithDivisorsOfOne) {
    Rng rng(286);
    SCOPED_TRACE("seed 286");
    Raw raw;
    raw.fill(99);
    Table forward, inverse;
    ASSERT_EQ(zmxiQuantFwdRawTableInit_JPEG_8u(raw.data(), 100), zmxStsNoErr);
    ASSERT_EQ(zmxiQuantFwdTableInit_JPEG_8u16u(raw.data(), forward.data()), zmxStsNoErr);
    ASSERT_EQ(zmxiQuantInvTableInit_JPEG_8u16u(raw.data(), inverse.data()), zmxStsNoErr);
    for (int i = 0; i < 200; ++i) {
        const std::vector<Zmx8u> src = rng.vec<Zmx8u>(64, 0, 255);
        std::vector<Zmx8u> back(64);
        Block b;
        ASSERT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(src.data(), 8, b.data(), forward.data()), zmxStsNoErr);
        ASSERT_EQ(zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R(b.data(), back.data(), 8, inverse.data()), zmxStsNoErr);
        for (std::size_t k = 0; k < 64; ++k) ASSERT_NEAR(src[k], back[k], 2);
    }
}

TEST(DctThreads, TheLevelShiftAsksForThreadsAndOpensNoRegion) {
    setThreads(7);
    const long opened = regionsOpened();
    const Table t = flatTable(1);
    Block b{};
    std::vector<Zmx8u> picture(128);
    int calls = threadsAsked();
    ASSERT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(picture.data(), 8, b.data(), t.data()), zmxStsNoErr);
    EXPECT_EQ(threadsAsked(), calls + 1);
    for (const Decoder& d : kDecoders) {
        calls = threadsAsked();
        ASSERT_EQ(d.call(b.data(), picture.data(), 8, t.data()), zmxStsNoErr);
        EXPECT_EQ(threadsAsked(), calls + d.asks) << d.name;
    }
    EXPECT_EQ(regionsOpened(), opened);
    setThreads(1);
}

// --- blocks of 12-bit samples
// -------------------------------------------------------------------------------------------

TEST(TwelveBits, ConstantBlocks) {
    Table12 one, sixteenth;
    one.fill(1);
    sixteenth.fill(1.0f / 16);
    for (const auto& [sample, dc] :
         {std::pair(2048, 0), std::pair(4095, 16376), std::pair(0, -16384), std::pair(2148, 800)}) {
        const std::vector<Zmx16u> src(64, Zmx16u(sample));
        Block b, expected{};
        ASSERT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(src.data(), 16, b.data(), one.data()), zmxStsNoErr);
        expected[0] = Zmx16s(dc);
        EXPECT_EQ(b, expected) << sample;
        std::vector<Zmx16u> back(64);
        ASSERT_EQ(zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(b.data(), back.data(), 16, one.data()), zmxStsNoErr);
        EXPECT_EQ(back, src);
        ASSERT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(src.data(), 16, b.data(), sixteenth.data()), zmxStsNoErr);
        EXPECT_EQ(b[0], dc == 16376 ? 1024 : dc / 16) << "1023.5 goes to the even neighbour";
    }
}

TEST(TwelveBits, Saturation) {
    Table12 t;
    t.fill(1);
    Block b{};
    std::vector<Zmx16u> dst(64);
    for (const auto& [dc, sample] :
         {std::pair(-16392, 0), std::pair(-32768, 0), std::pair(16376, 4095), std::pair(16384, 4095),
          std::pair(32767, 4095), std::pair(4, 2048), std::pair(12, 2050), std::pair(-4, 2048)}) {
        b[0] = Zmx16s(dc);
        ASSERT_EQ(zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(b.data(), dst.data(), 16, t.data()), zmxStsNoErr);
        EXPECT_EQ(dst, std::vector<Zmx16u>(64, Zmx16u(sample))) << dc;
    }
    // A table that sends the result far beyond 16 bits, and one that makes no number of it.
    b[0] = 1;
    for (const auto& [factor, sample] :
         {std::pair(1e30f, 4095), std::pair(-1e30f, 0), std::pair(std::numeric_limits<Zmx32f>::quiet_NaN(), 0)}) {
        t[0] = factor;
        ASSERT_EQ(zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(b.data(), dst.data(), 16, t.data()), zmxStsNoErr);
        EXPECT_EQ(dst, std::vector<Zmx16u>(64, Zmx16u(sample))) << factor;
    }
    // Forward: samples above 12 bits are not refused, and coefficients saturate.
    const std::vector<Zmx16u> white(64, 65535), black(64, 0);
    t.fill(1);
    ASSERT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(white.data(), 16, b.data(), t.data()), zmxStsNoErr);
    EXPECT_EQ(b[0], 32767);
    t.fill(3);
    ASSERT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(black.data(), 16, b.data(), t.data()), zmxStsNoErr);
    EXPECT_EQ(b[0], -32768);
    EXPECT_EQ(b[1], 0);
    t.fill(std::numeric_limits<Zmx32f>::quiet_NaN());
    ASSERT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(black.data(), 16, b.data(), t.data()), zmxStsNoErr);
    EXPECT_EQ(b, Block{});
}

TEST(TwelveBits, AgainstTheModel) {
    Rng rng(287);
    SCOPED_TRACE("seed 287");
    for (int i = 0; i < 1000; ++i) {
        const auto flush = i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart;
        Guarded<Zmx32f> table(64, flush);
        const bool exotic = i % 4 == 0;
        for (int k = 0; k < 64; ++k) {
            const int d = int(rng.range(1, 255));
            table[std::size_t(k)] = exotic      ? Zmx32f(rng.range(-100000, 100000)) / 777
                                    : i % 8 < 4 ? 1.0f / Zmx32f(d)
                                                : Zmx32f(d);
        }
        const std::vector<Zmx32f> tableBefore = table.copy();

        const int step = i % 5 ? 16 + int(rng.range(0, 9)) : int(rng.range(1, 16));
        Guarded<Zmx8u> src(extent(step, 8, 16), flush);
        rng.bytes(src.data(), src.size());
        if (i % 3)
            for (std::size_t k = 0; k + 1 < src.size(); k += 2) src[k + 1] &= 15; // 12 bits, for an even step
        const std::vector<Zmx8u> srcBefore = src.copy();
        Guarded<Zmx16s> coefficients(64, flush);
        Block expected;
        model::encodeBlock12(src.data(), step, expected.data(), table.data());
        ASSERT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(reinterpret_cast<const Zmx16u*>(src.data()), step,
                                                       coefficients.data(), table.data()),
                  zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected.data(), coefficients.data(), 128)) << "forward, block " << i;
        ASSERT_TRUE(sameBytes(srcBefore, src.copy()));

        const Block b = anyBlock(rng);
        std::memcpy(coefficients.data(), b.data(), 128);
        // With an odd step the limit of 4095 stands beside the rows, so that it reaches into the gaps.
        Guarded<Zmx8u> dst(extent(step, 8, 16), flush);
        rng.bytes(dst.data(), dst.size());
        std::vector<Zmx8u> picture = dst.copy();
        model::decodeBlock12(b.data(), picture.data(), step, table.data());
        ASSERT_EQ(zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(coefficients.data(), reinterpret_cast<Zmx16u*>(dst.data()), step,
                                                       table.data()),
                  zmxStsNoErr);
        ASSERT_TRUE(sameBytes(picture, dst.copy())) << "inverse, block " << i << ", step " << step;
        ASSERT_TRUE(sameBytes(b.data(), coefficients.data(), 128));
        ASSERT_TRUE(sameBytes(tableBefore, table.copy()));
    }
}

TEST(TwelveBits, EverySampleComesBack) {
    Rng rng(288);
    SCOPED_TRACE("seed 288");
    Table12 one;
    one.fill(1);
    for (int i = 0; i < 200; ++i) {
        const std::vector<Zmx16u> src = rng.vec<Zmx16u>(64, 0, 4095);
        std::vector<Zmx16u> back(64);
        Block b;
        ASSERT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(src.data(), 16, b.data(), one.data()), zmxStsNoErr);
        std::array<double, 64> exact;
        for (std::size_t k = 0; k < 64; ++k) exact[k] = src[k] - 2048.0;
        model::dctForward(exact.data());
        for (std::size_t k = 0; k < 64; ++k) ASSERT_NEAR(exact[k], b[k], 0.51);
        ASSERT_EQ(zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(b.data(), back.data(), 16, one.data()), zmxStsNoErr);
        for (std::size_t k = 0; k < 64; ++k) ASSERT_NEAR(src[k], back[k], 2);
    }
}

// --- the same bytes from every build
// ------------------------------------------------------------------------------------

namespace {

// One call on pseudo-random input, whose output goes into the digest.
using Round = void (*)(Rng&, Digest&);

template <auto Function, bool Forward> void blockRound(Rng& rng, Digest& d) {
    const Block b = anyBlock(rng);
    Block out;
    const Table t = anyTable(rng, Forward);
    EXPECT_EQ(Function(b.data(), out.data(), t.data()), zmxStsNoErr);
    d.add(out.data(), sizeof out);
}
template <auto Function, bool Forward> void inPlaceRound(Rng& rng, Digest& d) {
    Block b = anyBlock(rng);
    EXPECT_EQ(Function(b.data(), anyTable(rng, Forward).data()), zmxStsNoErr);
    d.add(b.data(), sizeof b);
}
template <auto Function> void pictureRound(Rng& rng, Digest& d) {
    const Block b = anyBlock(rng);
    std::vector<Zmx8u> out(extent(11, 8, 8));
    EXPECT_EQ(Function(b.data(), out.data(), 11, anyTable(rng, false).data()), zmxStsNoErr);
    d.add(out);
}
template <auto Function> void tableRound(Rng& rng, Digest& d) {
    const std::vector<Zmx8u> raw = rng.vec<Zmx8u>(64, 0, 255);
    Table t;
    d.value(Function(raw.data(), t.data()));
    d.add(t.data(), sizeof t);
}
Table12 anyTable12(Rng& rng, Zmx32f unit) {
    Table12 t;
    for (Zmx32f& v : t) v = Zmx32f(rng.range(1, 4096)) / unit;
    return t;
}

struct Digested {
    const char* name;
    Round round;
    std::uint64_t expected;
};
const Digested kDigested[] = {
    {"zmxiDCTQuantFwd8x8_JPEG_16s_C1", blockRound<zmxiDCTQuantFwd8x8_JPEG_16s_C1, true>, 0x6ECDEAC586F13682},
    {"zmxiDCTQuantFwd8x8_JPEG_16s_C1I", inPlaceRound<zmxiDCTQuantFwd8x8_JPEG_16s_C1I, true>, 0x6ECDEAC586F13682},
    {"zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R",
     [](Rng& rng, Digest& d) {
         const auto src = rng.vec<Zmx8u>(extent(11, 8, 8), 0, 255);
         Block out;
         EXPECT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(src.data(), 11, out.data(), anyTable(rng, true).data()),
                   zmxStsNoErr);
         d.add(out.data(), sizeof out);
     },
     0x366DF0186D55A835},
    {"zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R",
     [](Rng& rng, Digest& d) {
         const auto src = rng.vec<Zmx16u>(8 * 9, 0, 4095);
         Block out;
         EXPECT_EQ(zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(src.data(), 18, out.data(), anyTable12(rng, 1024).data()),
                   zmxStsNoErr);
         d.add(out.data(), sizeof out);
     },
     0xDEE3548C08C365FE},
    {"zmxiDCTQuantInv8x8_JPEG_16s_C1", blockRound<zmxiDCTQuantInv8x8_JPEG_16s_C1, false>, 0xB9F7FD2AC49878B5},
    {"zmxiDCTQuantInv8x8_JPEG_16s_C1I", inPlaceRound<zmxiDCTQuantInv8x8_JPEG_16s_C1I, false>, 0xB9F7FD2AC49878B5},
    {"zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R", pictureRound<zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R>, 0xF3B9789126F62E90},
    {"zmxiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R", pictureRound<zmxiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R>,
     0x4618B23E7E8EDF45},
    {"zmxiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R", pictureRound<zmxiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R>,
     0x10F22B57E3400F40},
    {"zmxiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R", pictureRound<zmxiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R>,
     0xC2F049F3DAB48618},
    {"zmxiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R", pictureRound<zmxiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R>,
     0x78E5FA78E4EF406D},
    {"zmxiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R", pictureRound<zmxiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R>,
     0x90A36E800FF91593},
    {"zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R",
     [](Rng& rng, Digest& d) {
         const Block b = anyBlock(rng);
         std::vector<Zmx16u> out(8 * 9);
         EXPECT_EQ(zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(b.data(), out.data(), 18, anyTable12(rng, 64).data()),
                   zmxStsNoErr);
         d.add(out);
     },
     0xDD3292EEFFD0C4D4},
    {"zmxiQuantFwdRawTableInit_JPEG_8u",
     [](Rng& rng, Digest& d) {
         std::vector<Zmx8u> raw = rng.vec<Zmx8u>(64, 0, 255);
         EXPECT_EQ(zmxiQuantFwdRawTableInit_JPEG_8u(raw.data(), int(rng.range(1, 110))), zmxStsNoErr);
         d.add(raw);
     },
     0x5D1D4D00C7882DAB},
    {"zmxiQuantFwdTableInit_JPEG_8u16u", tableRound<zmxiQuantFwdTableInit_JPEG_8u16u>, 0xBE3A4EE4297F7A9D},
    {"zmxiQuantInvTableInit_JPEG_8u16u", tableRound<zmxiQuantInvTableInit_JPEG_8u16u>, 0xBE78751B4100445B},
    {"zmxiQuantFwd8x8_JPEG_16s_C1I", inPlaceRound<zmxiQuantFwd8x8_JPEG_16s_C1I, true>, 0xE66401478F005B2B},
    {"zmxiQuantInv8x8_JPEG_16s_C1I", inPlaceRound<zmxiQuantInv8x8_JPEG_16s_C1I, false>, 0x937C63798E1A8588},
};

} // namespace

TEST(DctDigests, EveryFunction) {
    for (const Digested& one : kDigested) {
        Rng rng(289);
        Digest d;
        for (int i = 0; i < 40; ++i) one.round(rng, d);
        EXPECT_EQ(d.get(), one.expected) << one.name << std::hex << " 0x" << d.get();
    }
}
