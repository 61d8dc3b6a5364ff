// The component transforms against their model, pixel by pixel, in all sixteen forms.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/component.h"
#include "tests/jpeg2000/support/strided.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/rounds.h"
#include "zmxj/component.h"

#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

namespace {

template <class T> using PixelFn = model::Pixel<T> (*)(model::Pixel<T>);
template <class T> using Pack = ZmxStatus (*)(const T*, int, T* const[3], int, ZmxiSize);
template <class T> using Unpack = ZmxStatus (*)(const T* const[3], int, T*, int, ZmxiSize);
template <class T> using InPlace = ZmxStatus (*)(T* const[3], int, ZmxiSize);

// Where the three samples of a pixel stand: in one interleaved image, or in three planes.
template <class T> struct Layout {
    std::vector<std::uint8_t>* bytes[3];
    std::size_t first;
    int step, spread;
    std::uint8_t* at(int c, int x, int y) const {
        return bytes[c]->data() + (spread == 3 ? std::size_t(c) * sizeof(T) : 0) + first + std::size_t(y * step) +
               std::size_t(x * spread) * sizeof(T);
    }
};
template <class T> void runModel(PixelFn<T> fn, const Layout<T>& src, const Layout<T>& dst, ZmxiSize roi) {
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            model::Pixel<T> p;
            for (int c = 0; c < 3; ++c) std::memcpy(&p[std::size_t(c)], src.at(c, x, y), sizeof(T));
            p = fn(p);
            for (int c = 0; c < 3; ++c) std::memcpy(dst.at(c, x, y), &p[std::size_t(c)], sizeof(T));
        }
}

// Memory of one image or plane: `step` may be shorter than a row.
std::size_t extent(int step, ZmxiSize roi, std::size_t rowBytes) {
    return std::size_t(step * (roi.height - 1)) + rowBytes;
}

template <class T> struct Block {
    std::vector<std::uint8_t> bytes;
    Guarded<std::uint8_t> memory;
    Block(Rng& rng, Character kind, std::size_t n, GuardedBlock::Flush flush) : bytes(n), memory(n, flush) {
        rng.bytes(bytes.data(), n);
        Samples<T> samples(rng, kind);
        for (std::size_t i = 0; i + sizeof(T) <= n; i += sizeof(T)) {
            const T v = samples.next();
            std::memcpy(bytes.data() + i, &v, sizeof v);
        }
        std::memcpy(memory.data(), bytes.data(), n);
    }
    T* data() { return reinterpret_cast<T*>(memory.data()); }
    ::testing::AssertionResult same() { return sameBytes(bytes, memory.copy()); }
};

// A size, a step (now and then shorter than the row) and the side on which the guard page is.
struct Draw {
    ZmxiSize roi;
    Character kind;
    GuardedBlock::Flush flush;
    Rng& rng;
    Draw(Rng& r, int turn)
        : roi{int(r.range(1, turn % 16 ? 40 : 700)), int(r.range(1, 6))}, kind(kCharacters[r.range(0, 5)]),
          flush(r.oneIn(2) ? GuardedBlock::AtEnd : GuardedBlock::AtStart), rng(r) {}
    int step(std::size_t rowBytes) const {
        return rng.oneIn(6) ? int(rng.range(1, std::int64_t(rowBytes))) : int(rowBytes) + int(rng.range(0, 7));
    }
};

template <class T> void checkPack(Pack<T> fn, PixelFn<T> pixel, std::uint64_t seed) {
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (int turn = 0; turn < 300; ++turn) {
        const Draw d(rng, turn);
        const std::size_t srcRow = std::size_t(d.roi.width) * 3 * sizeof(T), dstRow = srcRow / 3;
        const int srcStep = d.step(srcRow), dstStep = d.step(dstRow);
        Block<T> src(rng, d.kind, extent(srcStep, d.roi, srcRow), d.flush);
        const std::size_t n = extent(dstStep, d.roi, dstRow);
        Block<T> a(rng, d.kind, n, d.flush), b(rng, d.kind, n, d.flush), c(rng, d.kind, n, d.flush);
        runModel<T>(pixel, {{&src.bytes, &src.bytes, &src.bytes}, 0, srcStep, 3},
                    {{&a.bytes, &b.bytes, &c.bytes}, 0, dstStep, 1}, d.roi);
        T* const planes[3] = {a.data(), b.data(), c.data()};
        ASSERT_EQ(fn(src.data(), srcStep, planes, dstStep, d.roi), zmxStsNoErr);
        ASSERT_TRUE(src.same() && a.same() && b.same() && c.same())
            << turn << ": " << d.roi.width << " x " << d.roi.height;
    }
}

template <class T> void checkUnpack(Unpack<T> fn, PixelFn<T> pixel, std::uint64_t seed) {
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (int turn = 0; turn < 300; ++turn) {
        const Draw d(rng, turn);
        const std::size_t dstRow = std::size_t(d.roi.width) * 3 * sizeof(T), srcRow = dstRow / 3;
        const int srcStep = d.step(srcRow), dstStep = d.step(dstRow);
        Block<T> dst(rng, d.kind, extent(dstStep, d.roi, dstRow), d.flush);
        const std::size_t n = extent(srcStep, d.roi, srcRow);
        Block<T> a(rng, d.kind, n, d.flush), b(rng, d.kind, n, d.flush), c(rng, d.kind, n, d.flush);
        runModel<T>(pixel, {{&a.bytes, &b.bytes, &c.bytes}, 0, srcStep, 1},
                    {{&dst.bytes, &dst.bytes, &dst.bytes}, 0, dstStep, 3}, d.roi);
        const T* const planes[3] = {a.data(), b.data(), c.data()};
        ASSERT_EQ(fn(planes, srcStep, dst.data(), dstStep, d.roi), zmxStsNoErr);
        ASSERT_TRUE(dst.same() && a.same() && b.same() && c.same())
            << turn << ": " << d.roi.width << " x " << d.roi.height;
    }
}

template <class T> void checkInPlace(InPlace<T> fn, PixelFn<T> pixel, std::uint64_t seed) {
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (int turn = 0; turn < 300; ++turn) {
        const Draw d(rng, turn);
        const std::size_t row = std::size_t(d.roi.width) * sizeof(T);
        // Rows of floats that overlap by parts of samples would make signalling NaNs; those are for another
        // test.
        const int step = std::is_same_v<T, Zmx32f> ? int(row) + int(rng.range(0, 7)) : d.step(row);
        const std::size_t n = extent(step, d.roi, row);
        Block<T> a(rng, d.kind, n, d.flush), b(rng, d.kind, n, d.flush), c(rng, d.kind, n, d.flush);
        const Layout<T> planesOf{{&a.bytes, &b.bytes, &c.bytes}, 0, step, 1};
        for (int y = 0; y < d.roi.height; ++y) // samples at the places of this step
            for (int x = 0; x < d.roi.width; ++x)
                for (int k = 0; k < 3; ++k) {
                    const T v = Samples<T>(rng, d.kind).next();
                    std::memcpy(planesOf.at(k, x, y), &v, sizeof v);
                }
        std::memcpy(a.memory.data(), a.bytes.data(), n);
        std::memcpy(b.memory.data(), b.bytes.data(), n);
        std::memcpy(c.memory.data(), c.bytes.data(), n);
        runModel<T>(pixel, planesOf, planesOf, d.roi);
        T* const planes[3] = {a.data(), b.data(), c.data()};
        ASSERT_EQ(fn(planes, step, d.roi), zmxStsNoErr);
        ASSERT_TRUE(a.same() && b.same() && c.same()) << turn << ": " << d.roi.width << " x " << d.roi.height;
    }
}

// One pixel through an in-place form.
template <class T> model::Pixel<T> once(InPlace<T> fn, model::Pixel<T> p) {
    T* const planes[3] = {&p[0], &p[1], &p[2]};
    EXPECT_EQ(fn(planes, 1, {1, 1}), zmxStsNoErr);
    return p;
}

} // namespace

TEST(Component, ReversibleAgreesWithTheModel) {
    checkPack<Zmx16s>(zmxiRCTFwd_JPEG2K_16s_C3P3R, model::rctForward<Zmx16s>, 511);
    checkPack<Zmx32s>(zmxiRCTFwd_JPEG2K_32s_C3P3R, model::rctForward<Zmx32s>, 512);
    checkInPlace<Zmx16s>(zmxiRCTFwd_JPEG2K_16s_P3IR, model::rctForward<Zmx16s>, 513);
    checkInPlace<Zmx32s>(zmxiRCTFwd_JPEG2K_32s_P3IR, model::rctForward<Zmx32s>, 514);
    checkUnpack<Zmx16s>(zmxiRCTInv_JPEG2K_16s_P3C3R, model::rctInverse<Zmx16s>, 515);
    checkUnpack<Zmx32s>(zmxiRCTInv_JPEG2K_32s_P3C3R, model::rctInverse<Zmx32s>, 516);
    checkInPlace<Zmx16s>(zmxiRCTInv_JPEG2K_16s_P3IR, model::rctInverse<Zmx16s>, 517);
    checkInPlace<Zmx32s>(zmxiRCTInv_JPEG2K_32s_P3IR, model::rctInverse<Zmx32s>, 518);
}

TEST(Component, IrreversibleAgreesWithTheModel) {
    checkPack<Zmx32f>(zmxiICTFwd_JPEG2K_32f_C3P3R, model::ictForward<Zmx32f>, 521);
    checkInPlace<Zmx32f>(zmxiICTFwd_JPEG2K_32f_P3IR, model::ictForward<Zmx32f>, 522);
    checkInPlace<Zmx16s>(zmxiICTFwd_JPEG2K_16s_P3IR, model::ictForward<Zmx16s>, 523);
    checkInPlace<Zmx32s>(zmxiICTFwd_JPEG2K_32s_P3IR, model::ictForward<Zmx32s>, 524);
    checkUnpack<Zmx32f>(zmxiICTInv_JPEG2K_32f_P3C3R, model::ictInverse<Zmx32f>, 525);
    checkInPlace<Zmx32f>(zmxiICTInv_JPEG2K_32f_P3IR, model::ictInverse<Zmx32f>, 526);
    checkInPlace<Zmx16s>(zmxiICTInv_JPEG2K_16s_P3IR, model::ictInverse<Zmx16s>, 527);
    checkInPlace<Zmx32s>(zmxiICTInv_JPEG2K_32s_P3IR, model::ictInverse<Zmx32s>, 528);
}

TEST(Component, ReversibleWorkedValues) {
    using P16 = model::Pixel<Zmx16s>;
    using P32 = model::Pixel<Zmx32s>;
    // The difference 65535 is cut, not limited; Y = (32767 - 65536) >> 2.
    EXPECT_EQ(once(zmxiRCTFwd_JPEG2K_16s_P3IR, P16{32767, -32768, 0}), (P16{-8193, -32768, -1}));
    EXPECT_EQ(once(zmxiRCTFwd_JPEG2K_32s_P3IR, P32{32767, -32768, 0}), (P32{-8193, 32768, 65535}));
    EXPECT_EQ(once(zmxiRCTFwd_JPEG2K_16s_P3IR, P16{0, 0, -1}), (P16{-1, -1, 0})) << "a floor, not a truncation";
    EXPECT_EQ(once(zmxiRCTFwd_JPEG2K_16s_P3IR, P16{3, 0, 0}), (P16{0, 0, 3})) << "nor a rounding";
    EXPECT_EQ(once(zmxiRCTInv_JPEG2K_16s_P3IR, P16{-1, -1, 0}), (P16{0, 0, -1}));
    EXPECT_EQ(once(zmxiRCTFwd_JPEG2K_32s_P3IR, P32{INT_MAX, INT_MAX, INT_MAX}), (P32{-1, 0, 0})) << "32-bit sums wrap";
    EXPECT_EQ(once(zmxiRCTInv_JPEG2K_32s_P3IR, P32{0, INT_MAX, 1}), (P32{536870913, 536870912, -1610612737}));
}

TEST(Component, ReversibleComesBackAsLongAsNoSumWraps) {
    Rng rng(531);
    for (int i = 0; i < 20000; ++i) {
        const model::Pixel<Zmx16s> p{Zmx16s(rng.range(-16384, 16383)), Zmx16s(rng.range(-16384, 16383)),
                                     Zmx16s(rng.range(-16384, 16383))};
        ASSERT_EQ(once(zmxiRCTInv_JPEG2K_16s_P3IR, once(zmxiRCTFwd_JPEG2K_16s_P3IR, p)), p);
        const std::int64_t m = 1 << 29;
        const model::Pixel<Zmx32s> q{Zmx32s(rng.range(-m, m - 1)), Zmx32s(rng.range(-m, m - 1)),
                                     Zmx32s(rng.range(-m, m - 1))};
        ASSERT_EQ(once(zmxiRCTInv_JPEG2K_32s_P3IR, once(zmxiRCTFwd_JPEG2K_32s_P3IR, q)), q);
    }
}

TEST(Component, FixedPointWorkedValues) {
    using P16 = model::Pixel<Zmx16s>;
    using P32 = model::Pixel<Zmx32s>;
    for (int v = -32768; v <= 32767; ++v)
        ASSERT_EQ(once(zmxiICTFwd_JPEG2K_16s_P3IR, P16{Zmx16s(v), Zmx16s(v), Zmx16s(v)}), (P16{Zmx16s(v), 0, 0}));
    // Halves go up in both signs: Cb of blue alone is exactly half of it.
    EXPECT_EQ(once(zmxiICTFwd_JPEG2K_16s_P3IR, P16{0, 0, 1})[1], 1);
    EXPECT_EQ(once(zmxiICTFwd_JPEG2K_16s_P3IR, P16{0, 0, -1})[1], 0);
    EXPECT_EQ(once(zmxiICTFwd_JPEG2K_16s_P3IR, P16{3, 0, 0})[2], 2);
    EXPECT_EQ(once(zmxiICTFwd_JPEG2K_16s_P3IR, P16{-3, 0, 0})[2], -1);
    EXPECT_EQ(once(zmxiICTFwd_JPEG2K_16s_P3IR, P16{100, 200, 50}), (P16{153, -58, -38}));
    EXPECT_EQ(once(zmxiICTInv_JPEG2K_16s_P3IR, P16{0, 0, 32767}), (P16{Zmx16s(45939 - 65536), -23399, 0}))
        << "cut, not limited";
    // The last samples whose product fits, and the first whose does not.
    EXPECT_EQ(once(zmxiICTInv_JPEG2K_32s_P3IR, P32{0, 73969, 0})[2], 131071);
    EXPECT_EQ(once(zmxiICTInv_JPEG2K_32s_P3IR, P32{0, 73970, 0})[2], 131073 - 262144);
    EXPECT_EQ(once(zmxiICTFwd_JPEG2K_32s_P3IR, P32{131071, 131071, 131071}), (P32{131071, 0, 0}));
    EXPECT_EQ(once(zmxiICTFwd_JPEG2K_32s_P3IR, P32{131072, 131072, 131072}), (P32{-131072, 0, 0}));
}

TEST(Component, FloatWorkedValues) {
    using F = model::Pixel<Zmx32f>;
    auto bits = [](F p) {
        return std::array<Zmx32u, 3>{std::bit_cast<Zmx32u>(p[0]), std::bit_cast<Zmx32u>(p[1]),
                                     std::bit_cast<Zmx32u>(p[2])};
    };
    // Each constant by itself.
    EXPECT_EQ(bits(once(zmxiICTFwd_JPEG2K_32f_P3IR, F{1, 0, 0})),
              (std::array<Zmx32u, 3>{0x3E991687, 0xBE2CCCCD, 0x3F000000}));
    EXPECT_EQ(bits(once(zmxiICTFwd_JPEG2K_32f_P3IR, F{0, 1, 0})),
              (std::array<Zmx32u, 3>{0x3F1645A2, 0xBEA99AE9, 0xBED65E89}));
    EXPECT_EQ(bits(once(zmxiICTFwd_JPEG2K_32f_P3IR, F{0, 0, 1})),
              (std::array<Zmx32u, 3>{0x3DE978D5, 0x3F000000, 0xBDA685DB}));
    EXPECT_EQ(bits(once(zmxiICTInv_JPEG2K_32f_P3IR, F{0, 1, 0})), (std::array<Zmx32u, 3>{0, 0xBEB031CF, 0x3FE2D0E5}));
    EXPECT_EQ(bits(once(zmxiICTInv_JPEG2K_32f_P3IR, F{0, 0, 1})), (std::array<Zmx32u, 3>{0x3FB374BC, 0xBF36D1E1, 0}));
    EXPECT_EQ(once(zmxiICTInv_JPEG2K_32f_P3IR, F{5, 0, 0}), (F{5, 5, 5}));
    // The range is not limited.
    EXPECT_EQ(once(zmxiICTFwd_JPEG2K_32f_P3IR, F{1e30F, 1e30F, 1e30F})[0], 1e30F);
    EXPECT_TRUE(std::isinf(once(zmxiICTInv_JPEG2K_32f_P3IR, F{0, 3e38F, 0})[2]));
    // The two directions are near inverses only.
    const F back = once(zmxiICTInv_JPEG2K_32f_P3IR, once(zmxiICTFwd_JPEG2K_32f_P3IR, F{200, 100, 50}));
    EXPECT_NEAR(back[0], 200, 0.01);
    EXPECT_NEAR(back[1], 100, 0.01);
    EXPECT_NEAR(back[2], 50, 0.01);
}

namespace {

bool sameFloat(Zmx32f a, Zmx32f b) {
    return std::isnan(a) ? std::isnan(b) : std::bit_cast<Zmx32u>(a) == std::bit_cast<Zmx32u>(b);
}

// Floats that are hard to round once: halves between two floats, cancelling sums, infinities and NaNs, the
// smallest and the largest numbers.
Zmx32f hardFloat(Rng& rng, const model::Pixel<Zmx32f>& p, int c) {
    static const Zmx32u weights[] = {0x3E991687, 0x3F1645A2, 0x3DE978D5, 0xBE2CCCCD, 0x3EA99AE9, 0x3ED65E89,
                                     0x3DA685DB, 0x3FB374BC, 0x3EB031CF, 0x3F36D1E1, 0x3FE2D0E5};
    switch (rng.range(0, 7)) {
    case 0:
        return Zmx32f(rng.range(-255, 255));
    case 1:
        return std::bit_cast<Zmx32f>(Zmx32u(rng.next())); // any bits at all
    case 2:
        return std::ldexp(Zmx32f(rng.range(-3, 3)), int(rng.range(-149, 127))); // few bits, any magnitude
    case 3:
        return c ? -p[std::size_t(c - 1)] : 0; // cancels
    case 4:
        return c ? p[0] * std::ldexp(1.0F, -int(rng.range(20, 27))) : 1; // half a unit of the other
    case 5:
        return Zmx32f(1) / std::bit_cast<Zmx32f>(weights[rng.range(0, 10)]);
    case 6:
        return c ? -p[0] * std::bit_cast<Zmx32f>(weights[rng.range(0, 10)]) : Zmx32f(rng.range(1, 1 << 24));
    default:
        return std::bit_cast<Zmx32f>(Zmx32u(rng.range(0, 1) << 31 | rng.range(0x30000000, 0x4F000000)));
    }
}

void stressFloats(InPlace<Zmx32f> fn, PixelFn<Zmx32f> pixel, int rounds, std::uint64_t seed) {
    SCOPED_TRACE(seed);
    Rng rng(seed);
    constexpr int n = 509;
    std::vector<Zmx32f> planes[3] = {std::vector<Zmx32f>(n), std::vector<Zmx32f>(n), std::vector<Zmx32f>(n)};
    std::vector<model::Pixel<Zmx32f>> in(n);
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < n; ++i) {
            for (int c = 0; c < 3; ++c)
                in[i][std::size_t(c)] =
                    round & 1
                        ? hardFloat(rng, in[i], c)
                        : std::bit_cast<Zmx32f>(Zmx32u(rng.range(0, 1) << 31 | rng.range(0x3F000000, 0x44000000)));
            for (std::size_t c = 0; c < 3; ++c) planes[c][i] = in[i][c];
        }
        Zmx32f* const p[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
        ASSERT_EQ(fn(p, 4 * n, {n, 1}), zmxStsNoErr);
        for (std::size_t i = 0; i < n; ++i) {
            const auto want = pixel(in[i]);
            for (std::size_t c = 0; c < 3; ++c)
                ASSERT_TRUE(sameFloat(want[c], planes[c][i]))
                    << std::hexfloat << in[i][0] << ' ' << in[i][1] << ' ' << in[i][2] << ": output " << c << ' '
                    << want[c] << ", not " << planes[c][i];
        }
    }
}

} // namespace

TEST(Component, FloatsAreRoundedOnceOnHardPixels) {
    stressFloats(zmxiICTFwd_JPEG2K_32f_P3IR, model::ictForward<Zmx32f>, rounds(1000), 541);
    stressFloats(zmxiICTInv_JPEG2K_32f_P3IR, model::ictInverse<Zmx32f>, rounds(1000), 542);
}

namespace {

template <class T> void checkArguments(Pack<T> pack, Unpack<T> unpack, std::initializer_list<InPlace<T>> inPlace) {
    const std::vector<T> fresh(12, T(7));
    std::vector<T> pixels = fresh, planes = fresh;
    const auto plane = [&planes](const Bad& bad, int test, int c) { return bad.null(test, planes.data() + 4 * c); };
    // pSrc, pDst, the planes, srcStep, dstStep, width, height.
    const std::vector<ZmxStatus> order{kNull, kNull, kNull, kNull, kNull, kStep, kStep, kSize, kSize};
    if (pack)
        checkOrder(order, [&](const Bad& bad) {
            T* const p[3] = {plane(bad, 2, 0), plane(bad, 3, 1), plane(bad, 4, 2)};
            return pack(bad.null(0, pixels.data()), bad.below1(5, 12), bad.null(1, p), bad.below1(6, 4),
                        {bad.below1(7, 1), bad.below1(8, 1)});
        });
    if (unpack)
        checkOrder(order, [&](const Bad& bad) {
            const T* const p[3] = {plane(bad, 2, 0), plane(bad, 3, 1), plane(bad, 4, 2)};
            return unpack(bad.null(0, p), bad.below1(5, 12), bad.null(1, pixels.data()), bad.below1(6, 4),
                          {bad.below1(7, 1), bad.below1(8, 1)});
        });
    for (InPlace<T> fn : inPlace)
        checkOrder({kNull, kNull, kNull, kNull, kStep, kSize, kSize}, [&](const Bad& bad) {
            T* const p[3] = {plane(bad, 1, 0), plane(bad, 2, 1), plane(bad, 3, 2)};
            return fn(bad.null(0, p), bad.below1(4, 4), {bad.below1(5, 1), bad.below1(6, 1)});
        });
    EXPECT_EQ(pixels, fresh) << "nothing is written";
    EXPECT_EQ(planes, fresh) << "nothing is written";
}

} // namespace

TEST(Component, TheFirstBadArgumentDecides) {
    checkArguments<Zmx16s>(zmxiRCTFwd_JPEG2K_16s_C3P3R, zmxiRCTInv_JPEG2K_16s_P3C3R,
                           {zmxiRCTFwd_JPEG2K_16s_P3IR, zmxiRCTInv_JPEG2K_16s_P3IR, zmxiICTFwd_JPEG2K_16s_P3IR,
                            zmxiICTInv_JPEG2K_16s_P3IR});
    checkArguments<Zmx32s>(zmxiRCTFwd_JPEG2K_32s_C3P3R, zmxiRCTInv_JPEG2K_32s_P3C3R,
                           {zmxiRCTFwd_JPEG2K_32s_P3IR, zmxiRCTInv_JPEG2K_32s_P3IR, zmxiICTFwd_JPEG2K_32s_P3IR,
                            zmxiICTInv_JPEG2K_32s_P3IR});
    checkArguments<Zmx32f>(zmxiICTFwd_JPEG2K_32f_C3P3R, zmxiICTInv_JPEG2K_32f_P3C3R,
                           {zmxiICTFwd_JPEG2K_32f_P3IR, zmxiICTInv_JPEG2K_32f_P3IR});
}

namespace {

template <class T> std::vector<T> picture(std::uint64_t seed) {
    Rng rng(seed);
    std::vector<T> v(3 * 64 * 33);
    for (T& x : v)
        x = std::is_same_v<T, Zmx32f> ? T(double(rng.range(-40000, 40000)) / 64) : T(rng.range(-20000, 20000));
    return v;
}
template <class T> std::uint64_t digestInPlace(InPlace<T> fn) {
    auto v = picture<T>(551);
    T* const p[3] = {v.data(), v.data() + 64 * 33, v.data() + 2 * 64 * 33};
    EXPECT_EQ(fn(p, 64 * sizeof(T), {64, 33}), zmxStsNoErr);
    return Digest().add(v).get();
}
template <class T> std::uint64_t digestPack(Pack<T> fn) {
    auto v = picture<T>(552), out = picture<T>(553);
    T* const p[3] = {out.data(), out.data() + 64 * 33, out.data() + 2 * 64 * 33};
    EXPECT_EQ(fn(v.data(), 3 * 64 * sizeof(T), p, 64 * sizeof(T), {64, 33}), zmxStsNoErr);
    return Digest().add(out).get();
}
template <class T> std::uint64_t digestUnpack(Unpack<T> fn) {
    auto v = picture<T>(554), out = picture<T>(555);
    const T* const p[3] = {v.data(), v.data() + 64 * 33, v.data() + 2 * 64 * 33};
    EXPECT_EQ(fn(p, 64 * sizeof(T), out.data(), 3 * 64 * sizeof(T), {64, 33}), zmxStsNoErr);
    return Digest().add(out).get();
}

} // namespace

TEST(Component, TheSameBytesInEveryBuild) {
    EXPECT_EQ(digestPack(zmxiRCTFwd_JPEG2K_16s_C3P3R), 0xDF95A0F9AF5926F4u);
    EXPECT_EQ(digestPack(zmxiRCTFwd_JPEG2K_32s_C3P3R), 0xAFC59AA3DE258E14u);
    EXPECT_EQ(digestInPlace(zmxiRCTFwd_JPEG2K_16s_P3IR), 0xFD1F764303516B5Cu);
    EXPECT_EQ(digestInPlace(zmxiRCTFwd_JPEG2K_32s_P3IR), 0xBB57D33F23E575B8u);
    EXPECT_EQ(digestUnpack(zmxiRCTInv_JPEG2K_16s_P3C3R), 0x7E5F98723D579E33u);
    EXPECT_EQ(digestUnpack(zmxiRCTInv_JPEG2K_32s_P3C3R), 0x6C3E67AE747D3FEDu);
    EXPECT_EQ(digestInPlace(zmxiRCTInv_JPEG2K_16s_P3IR), 0x51318672C8E939C2u);
    EXPECT_EQ(digestInPlace(zmxiRCTInv_JPEG2K_32s_P3IR), 0xE6482AF230F5E49Cu);
    EXPECT_EQ(digestPack(zmxiICTFwd_JPEG2K_32f_C3P3R), 0x3FAD298F5E48CE96u);
    EXPECT_EQ(digestInPlace(zmxiICTFwd_JPEG2K_32f_P3IR), 0xBB67216B35645566u);
    EXPECT_EQ(digestInPlace(zmxiICTFwd_JPEG2K_16s_P3IR), 0x4B1B8E6FE8EB89DCu);
    EXPECT_EQ(digestInPlace(zmxiICTFwd_JPEG2K_32s_P3IR), 0x991B684258873C80u);
    EXPECT_EQ(digestUnpack(zmxiICTInv_JPEG2K_32f_P3C3R), 0x145BFAC4518A3670u);
    EXPECT_EQ(digestInPlace(zmxiICTInv_JPEG2K_32f_P3IR), 0x277F79BC32DD42C2u);
    EXPECT_EQ(digestInPlace(zmxiICTInv_JPEG2K_16s_P3IR), 0xADB04807799664BCu);
    EXPECT_EQ(digestInPlace(zmxiICTInv_JPEG2K_32s_P3IR), 0xAB008244600CA976u);
}

// Planes that share memory: pixel after pixel, as if each had a call of its own.
TEST(ComponentFloats, PlanesThatOverlap) {
    Rng rng(0x1C7);
    const int width = 90;
    for (const auto& [p, q, r] : {std::array{0, 5, 120}, {0, 120, 7}, {120, 0, 3}, {0, 120, 240}, {60, 30, 0}})
        for (auto transform : {zmxiICTFwd_JPEG2K_32f_P3IR, zmxiICTInv_JPEG2K_32f_P3IR}) {
            SCOPED_TRACE(::testing::Message() << p << ", " << q << ", " << r);
            std::vector<Zmx32f> whole(400);
            for (Zmx32f& v : whole) v = Zmx32f(rng.range(-1000, 1000));
            std::vector<Zmx32f> single = whole;
            const auto run = [&, p = p, q = q, r = r](std::vector<Zmx32f>& v, int from, int n) {
                Zmx32f* const planes[3] = {&v[std::size_t(p + from)], &v[std::size_t(q + from)],
                                           &v[std::size_t(r + from)]};
                ASSERT_EQ(transform(planes, 4000, {n, 1}), zmxStsNoErr);
            };
            run(whole, 0, width);
            for (int x = 0; x < width; ++x) run(single, x, 1);
            ASSERT_EQ(std::memcmp(whole.data(), single.data(), whole.size() * sizeof(Zmx32f)), 0);
        }
}
