// The colour conversions of whole planes, all 22 of them: values, layouts, order of argument tests, rows in
// memory, and the sharing out of rows.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/support/conversions.h"
#include "tests/jpeg/support/sharing.h"
#include "tests/support/arguments.h"
#include "tests/support/byteorder.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"
#include "tests/support/rounds.h"
#include "tests/support/threads.cpp"
#include "zmxj.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>

namespace {

using model::Pixel4;
using namespace conversion;

class Colour : public ::testing::TestWithParam<Conversion> {
protected:
    const Conversion& way() const { return GetParam(); }

    // The pixels of a row that are touched.
    int touched(int width) const { return way().from == Layout::Pairs422 ? (width + 1) & ~1 : width; }
    int srcRow(int width) const { return touched(width) * pixelBytes(way().from); }
    int dstRow(int width) const { return touched(width) * pixelBytes(way().to); }

    void compare(Rng& rng, ZmxiSize size, int srcStep, int dstStep, GuardedBlock::Flush flush) const;
};

std::string nameOf(const ::testing::TestParamInfo<Conversion>& info) { return info.param.name; }
INSTANTIATE_TEST_SUITE_P(Conversions, Colour, ::testing::ValuesIn(conversions), nameOf);

// From planes to as many planes.
class PlanarColour : public Colour {};

std::vector<Conversion> planarConversions() {
    std::vector<Conversion> planar;
    for (const Conversion& c : conversions)
        if (c.from == c.to) planar.push_back(c);
    return planar;
}
INSTANTIATE_TEST_SUITE_P(Conversions, PlanarColour, ::testing::ValuesIn(planarConversions()), nameOf);

// The planes of a layout, each between guard pages and no longer than it must be. Row 0 is the last in memory
// if the step is below 0.
class Picture {
    std::vector<std::unique_ptr<Guarded<Zmx8u>>> blocks;
    Layout layout;
    int step;
    std::size_t first;

public:
    Picture(Layout pixels, ZmxiSize size, int rowBytes, int rowStep, GuardedBlock::Flush flush, Rng& rng)
        : layout(pixels), step(rowStep) {
        const std::size_t rows = std::size_t(step < 0 ? -step : step) * std::size_t(size.height - 1);
        first = step < 0 ? rows : 0;
        for (int i = 0; i < planesOf(layout); ++i) {
            blocks.push_back(std::make_unique<Guarded<Zmx8u>>(rows + std::size_t(rowBytes), flush));
            rng.bytes(blocks.back()->data(), blocks.back()->size());
        }
    }
    model::Rows rows() const {
        model::Rows r{layout, {}, step};
        for (std::size_t i = 0; i < blocks.size(); ++i) r.plane[i] = blocks[i]->data() + first;
        return r;
    }
    std::vector<std::vector<Zmx8u>> copy() {
        std::vector<std::vector<Zmx8u>> c;
        for (auto& b : blocks) c.push_back(b->copy());
        return c;
    }
    // The same rows in a copy.
    model::Rows rowsIn(std::vector<std::vector<Zmx8u>>& c) const {
        model::Rows r{layout, {}, step};
        for (std::size_t i = 0; i < c.size(); ++i) r.plane[i] = c[i].data() + first;
        return r;
    }
};

// One call on fresh random planes, compared with the model, what lies between the rows included.
void Colour::compare(Rng& rng, ZmxiSize size, int srcStep, int dstStep, GuardedBlock::Flush flush) const {
    Picture src(way().from, size, srcRow(size.width), srcStep, flush, rng);
    Picture dst(way().to, size, dstRow(size.width), dstStep, flush, rng);
    const auto before = src.copy();
    auto expected = dst.copy();
    plain(way(), src.rows(), dst.rowsIn(expected), size);
    const auto s = src.rows(), d = dst.rows();
    ASSERT_EQ(way().call(s.plane.data(), srcStep, d.plane.data(), dstStep, size), zmxStsNoErr);
    const auto got = dst.copy();
    for (std::size_t i = 0; i < got.size(); ++i)
        ASSERT_TRUE(sameBytes(expected[i], got[i])) << "plane " << i << " of " << size.width << " by " << size.height
                                                    << ", steps " << srcStep << " and " << dstStep;
    ASSERT_EQ(before, src.copy());
}

// A pixel of the planar conversions, of YCCK if it has a K.
Pixel4 rgbOf(Pixel4 ycc, Call f = call<zmxiYCbCrToRGB_JPEG_8u_P3R>, std::size_t planes = 3) {
    Zmx8u src[4], dst[4] = {};
    const Zmx8u* s[4] = {&src[0], &src[1], &src[2], &src[3]};
    Zmx8u* d[4] = {&dst[0], &dst[1], &dst[2], &dst[3]};
    for (std::size_t i = 0; i < 4; ++i) src[i] = Zmx8u(ycc[i]);
    EXPECT_EQ(f(s, 1, d, 1, {1, 1}), zmxStsNoErr);
    for (std::size_t i = planes; i < 4; ++i) EXPECT_EQ(dst[i], 0);
    return {dst[0], dst[1], dst[2], dst[3]};
}
Pixel4 yccOf(Pixel4 rgb) { return rgbOf(rgb, call<zmxiRGBToYCbCr_JPEG_8u_P3R>); }
Pixel4 cmykOf(Pixel4 ycck) { return rgbOf(ycck, call<zmxiYCCKToCMYK_JPEG_8u_P4R>, 4); }
Pixel4 ycckOf(Pixel4 cmyk) { return rgbOf(cmyk, call<zmxiCMYKToYCCK_JPEG_8u_P4R>, 4); }

template <class F> Zmx16u packedOf(F f, Zmx8u y, Zmx8u cb, Zmx8u cr) {
    const Zmx8u* const src[3] = {&y, &cb, &cr};
    Zmx16u word = 0xA5A5;
    EXPECT_EQ(f(src, 1, &word, 2, {1, 1}), zmxStsNoErr);
    return word;
}
template <class F> Pixel4 unpacked(F f, Zmx16u word) {
    Zmx8u y, cb, cr;
    Zmx8u* const dst[3] = {&y, &cb, &cr};
    EXPECT_EQ(f(&word, 2, dst, 1, {1, 1}), zmxStsNoErr);
    return {y, cb, cr};
}

} // namespace

TEST(ColourValues, FromYCbCr) {
    EXPECT_EQ(rgbOf({128, 128, 128}), (Pixel4{128, 128, 128}));
    EXPECT_EQ(rgbOf({76, 85, 255}), (Pixel4{254, 0, 0}));
    EXPECT_EQ(rgbOf({150, 44, 21}), (Pixel4{0, 255, 1}));
    EXPECT_EQ(rgbOf({29, 255, 107}), (Pixel4{0, 0, 254}));
    EXPECT_EQ(rgbOf({100, 0, 255}), (Pixel4{255, 53, 0}));
    EXPECT_EQ(rgbOf({200, 255, 0}), (Pixel4{21, 248, 255}));
    EXPECT_EQ(rgbOf({255, 128, 255})[0], 255) << "saturated";
    EXPECT_EQ(rgbOf({0, 128, 0})[0], 0) << "saturated";
}

TEST(ColourValues, NeutralPixels) {
    for (int y = 0; y < 256; ++y) {
        ASSERT_EQ(rgbOf({y, 128, 128}), (Pixel4{y, y, y}));
        ASSERT_EQ(yccOf({y, y, y}), (Pixel4{y, 128, 128}));
    }
}

TEST(ColourValues, ToYCbCr) {
    EXPECT_EQ(yccOf({0, 0, 0}), (Pixel4{0, 128, 128}));
    EXPECT_EQ(yccOf({255, 255, 255}), (Pixel4{255, 128, 128}));
    EXPECT_EQ(yccOf({255, 0, 0}), (Pixel4{76, 85, 255}));
    EXPECT_EQ(yccOf({0, 255, 0}), (Pixel4{150, 44, 21}));
    EXPECT_EQ(yccOf({0, 0, 255}), (Pixel4{29, 255, 107}));
    EXPECT_EQ(yccOf({128, 128, 128}), (Pixel4{128, 128, 128}));
    EXPECT_EQ(yccOf({200, 100, 50}), (Pixel4{124, 86, 182}));
}

TEST(ColourValues, PrimariesDoNotComeBack) {
    EXPECT_EQ(rgbOf(yccOf({255, 0, 0})), (Pixel4{254, 0, 0}));
    EXPECT_EQ(rgbOf(yccOf({0, 255, 0})), (Pixel4{0, 255, 1}));
    EXPECT_EQ(rgbOf(yccOf({0, 0, 255})), (Pixel4{0, 0, 254}));
}

TEST(ColourValues, FourColours) {
    EXPECT_EQ(cmykOf({255, 128, 128, 77}), (Pixel4{0, 0, 0, 77}));
    EXPECT_EQ(cmykOf({0, 128, 128, 77}), (Pixel4{255, 255, 255, 77}));
    EXPECT_EQ(cmykOf({76, 85, 255, 0}), (Pixel4{1, 255, 255, 0})) << "the complement of what was saturated";
    EXPECT_EQ(ycckOf({0, 0, 0, 9}), (Pixel4{255, 128, 128, 9}));
    EXPECT_EQ(ycckOf({255, 255, 255, 9}), (Pixel4{0, 128, 128, 9}));

    const Zmx8u cmyk[8] = {0, 0, 0, 9, 255, 255, 255, 9};
    Zmx8u ycck[4][2];
    Zmx8u* const planes[4] = {ycck[0], ycck[1], ycck[2], ycck[3]};
    ASSERT_EQ(zmxiCMYKToYCCK_JPEG_8u_C4P4R(cmyk, 8, planes, 2, {2, 1}), zmxStsNoErr);
    const Zmx8u expected[4][2] = {{255, 0}, {128, 128}, {128, 128}, {9, 9}};
    EXPECT_TRUE(sameBytes(expected, ycck, sizeof ycck));
    Zmx8u back[8];
    ASSERT_EQ(zmxiYCCKToCMYK_JPEG_8u_P4C4R(planes, 2, back, 8, {2, 1}), zmxStsNoErr);
    EXPECT_TRUE(sameBytes(cmyk, back, sizeof back));
}

TEST(ColourValues, BytesOfAPixel) {
    const Zmx8u y = 76, cb = 85, cr = 255;
    const Zmx8u* const src[3] = {&y, &cb, &cr};
    const Zmx8u rgb[3] = {254, 0, 0}, bgr[3] = {0, 0, 254};
    Zmx8u dst[3];
    ASSERT_EQ(zmxiYCbCrToRGB_JPEG_8u_P3C3R(src, 1, dst, 3, {1, 1}), zmxStsNoErr);
    EXPECT_TRUE(sameBytes(rgb, dst, 3));
    ASSERT_EQ(zmxiYCbCrToBGR_JPEG_8u_P3C3R(src, 1, dst, 3, {1, 1}), zmxStsNoErr);
    EXPECT_TRUE(sameBytes(bgr, dst, 3));

    const Zmx8u pixel[3] = {200, 100, 50};
    ASSERT_EQ(zmxiRGBToY_JPEG_8u_C3C1R(pixel, 3, dst, 1, {1, 1}), zmxStsNoErr);
    EXPECT_EQ(dst[0], 124);
    ASSERT_EQ(zmxiBGRToY_JPEG_8u_C3C1R(pixel, 3, dst, 1, {1, 1}), zmxStsNoErr);
    EXPECT_EQ(dst[0], (19595 * 50 + 38470 * 100 + 7471 * 200 + 32768) >> 16);
}

TEST(ColourValues, PackedWords) {
    EXPECT_EQ(packedOf(zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R, 255, 128, 128), 0xFFFF);
    EXPECT_EQ(packedOf(zmxiYCbCrToRGB565_JPEG_8u16u_P3C3R, 255, 128, 128), 0xFFFF);
    EXPECT_EQ(packedOf(zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R, 255, 128, 128), 0x7FFF);
    EXPECT_EQ(packedOf(zmxiYCbCrToRGB555_JPEG_8u16u_P3C3R, 255, 128, 128), 0x7FFF);
    // (200, 255, 0) is (21, 248, 255): 2, 31 of 5 or 62 of 6, 31.
    EXPECT_EQ(packedOf(zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R, 200, 255, 0), 31 | 31 << 5 | 2 << 10);
    EXPECT_EQ(packedOf(zmxiYCbCrToRGB555_JPEG_8u16u_P3C3R, 200, 255, 0), 2 | 31 << 5 | 31 << 10);
    EXPECT_EQ(packedOf(zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R, 200, 255, 0), 31 | 62 << 5 | 2 << 11);
    EXPECT_EQ(packedOf(zmxiYCbCrToRGB565_JPEG_8u16u_P3C3R, 200, 255, 0), 2 | 62 << 5 | 31 << 11);
    // Truncated, not rounded: 7 and 135 leave nothing of their low bits.
    EXPECT_EQ(packedOf(zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R, 7, 128, 128), 0);
    EXPECT_EQ(packedOf(zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R, 7, 128, 128), 1 << 5);
    EXPECT_EQ(packedOf(zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R, 135, 128, 128), 16 | 16 << 5 | 16 << 10);
}

TEST(ColourValues, PackedWordsBack) {
    EXPECT_EQ(unpacked(zmxiBGR555ToYCbCr_JPEG_16u8u_C3P3R, 0x7FFF), (Pixel4{248, 128, 128}));
    EXPECT_EQ(unpacked(zmxiBGR555ToYCbCr_JPEG_16u8u_C3P3R, 0xFFFF), (Pixel4{248, 128, 128})) << "bit 15 is ignored";
    EXPECT_EQ(unpacked(zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R, 0xFFFF), (Pixel4{248, 128, 128}));
    EXPECT_EQ(unpacked(zmxiBGR565ToYCbCr_JPEG_16u8u_C3P3R, 0xFFFF), yccOf({248, 252, 248}));
    EXPECT_EQ(unpacked(zmxiRGB565ToYCbCr_JPEG_16u8u_C3P3R, 0xFFFF), yccOf({248, 252, 248}));
    // One field each.
    EXPECT_EQ(unpacked(zmxiBGR555ToYCbCr_JPEG_16u8u_C3P3R, 3), yccOf({0, 0, 24}));
    EXPECT_EQ(unpacked(zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R, 3), yccOf({24, 0, 0}));
    EXPECT_EQ(unpacked(zmxiBGR565ToYCbCr_JPEG_16u8u_C3P3R, 3 << 5), yccOf({0, 12, 0}));
    EXPECT_EQ(unpacked(zmxiRGB565ToYCbCr_JPEG_16u8u_C3P3R, 3 << 11), yccOf({0, 0, 24}));
}

TEST(ColourValues, EveryPackedWord) {
    std::vector<Zmx16u> words(65536);
    for (std::size_t i = 0; i < words.size(); ++i) words[i] = Zmx16u(i);
    std::vector<Zmx8u> y(65536), cb(65536), cr(65536);
    Zmx8u* const dst[3] = {y.data(), cb.data(), cr.data()};
    const auto check = [&](auto f, int redAt, int green, int blueAt) {
        ASSERT_EQ(f(words.data(), 512, dst, 256, {256, 256}), zmxStsNoErr);
        for (std::size_t i = 0; i < words.size(); ++i) {
            const int w = int(i);
            const Pixel4 rgb{(w >> redAt & 31) * 8, (w >> 5 & ((1 << green) - 1)) << (8 - green),
                             (w >> blueAt & 31) * 8};
            ASSERT_EQ((Pixel4{y[i], cb[i], cr[i]}), model::toYCbCr(rgb)) << std::hex << i;
        }
    };
    check(zmxiBGR555ToYCbCr_JPEG_16u8u_C3P3R, 10, 5, 0);
    check(zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R, 0, 5, 10);
    check(zmxiBGR565ToYCbCr_JPEG_16u8u_C3P3R, 11, 6, 0);
    check(zmxiRGB565ToYCbCr_JPEG_16u8u_C3P3R, 0, 6, 11);
}

TEST(ColourValues, Pairs) {
    // A width of 1 touches a whole pair: four bytes here, six there.
    Guarded<Zmx8u> src(std::vector<Zmx8u>{76, 85, 150, 255}), dst(6);
    ASSERT_EQ(zmxiYCbCr422ToRGB_JPEG_8u_C2C3R(src.data(), 1, dst.data(), 1, {1, 1}), zmxStsNoErr);
    // Both pixels add (178, -76, -76).
    EXPECT_EQ(dst.copy(), (std::vector<Zmx8u>{254, 0, 0, 255, 74, 74}));
}

// All 2^24 triples through the conversions between YCbCr and three colours, against the formulas.
TEST(ColourExhaustive, EveryTriple) {
    constexpr std::size_t n = 65536;
    std::vector<Zmx8u> first(n), second(n), third(n), pixels(3 * n);
    for (std::size_t i = 0; i < n; ++i) {
        pixels[3 * i + 1] = second[i] = Zmx8u(i >> 8);
        pixels[3 * i + 2] = third[i] = Zmx8u(i);
    }
    const Zmx8u* const src[3] = {first.data(), second.data(), third.data()};
    std::vector<Zmx8u> out[3] = {std::vector<Zmx8u>(n), std::vector<Zmx8u>(n), std::vector<Zmx8u>(n)};
    Zmx8u* const dst[3] = {out[0].data(), out[1].data(), out[2].data()};
    std::vector<Zmx8u> rgb(3 * n), grey(n);
    std::vector<Zmx16u> bgr565(n), rgb555(n);
    const ZmxiSize size{256, 256};
    const auto same = [&](const std::vector<Zmx8u>& planes3) {
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t c = 0; c < 3; ++c)
                if (out[c][i] != planes3[3 * i + c]) return false;
        return true;
    };
    std::vector<Zmx8u> expected(3 * n);
    for (int a = 0; a < 256; a += shortened() ? 51 : 1) {
        SCOPED_TRACE(a);
        for (std::size_t i = 0; i < n; ++i) pixels[3 * i] = first[i] = Zmx8u(a);

        for (std::size_t i = 0; i < n; ++i) {
            const Pixel4 v = model::fromYCbCr({a, second[i], third[i], 0});
            for (std::size_t c = 0; c < 3; ++c) expected[3 * i + c] = Zmx8u(v[c]);
        }
        ASSERT_EQ(zmxiYCbCrToRGB_JPEG_8u_P3R(src, 256, dst, 256, size), zmxStsNoErr);
        ASSERT_TRUE(same(expected));
        ASSERT_EQ(zmxiYCbCrToRGB_JPEG_8u_P3C3R(src, 256, rgb.data(), 768, size), zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected, rgb));
        ASSERT_EQ(zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R(src, 256, bgr565.data(), 512, size), zmxStsNoErr);
        ASSERT_EQ(zmxiYCbCrToRGB555_JPEG_8u16u_P3C3R(src, 256, rgb555.data(), 512, size), zmxStsNoErr);
        bool packed = true;
        for (std::size_t i = 0; i < n; ++i) {
            const Zmx8u* p = &expected[3 * i];
            packed &= bgr565[i] == (p[2] >> 3 | p[1] >> 2 << 5 | p[0] >> 3 << 11);
            packed &= rgb555[i] == (p[0] >> 3 | p[1] >> 3 << 5 | p[2] >> 3 << 10);
        }
        ASSERT_TRUE(packed);

        for (std::size_t i = 0; i < n; ++i) {
            const Pixel4 v = model::toYCbCr({a, second[i], third[i], 0});
            for (std::size_t c = 0; c < 3; ++c) {
                ASSERT_TRUE(v[c] >= 0 && v[c] <= 255) << "nothing needs a clamp";
                expected[3 * i + c] = Zmx8u(v[c]);
            }
        }
        ASSERT_EQ(zmxiRGBToYCbCr_JPEG_8u_P3R(src, 256, dst, 256, size), zmxStsNoErr);
        ASSERT_TRUE(same(expected));
        ASSERT_EQ(zmxiRGBToY_JPEG_8u_P3C1R(src, 256, grey.data(), 256, size), zmxStsNoErr);
        ASSERT_EQ(grey, out[0]);
        ASSERT_EQ(zmxiRGBToYCbCr_JPEG_8u_C3P3R(pixels.data(), 768, dst, 256, size), zmxStsNoErr);
        ASSERT_TRUE(same(expected));
    }
}

TEST_P(Colour, FirstBadArgumentDecides) {
    std::vector<ZmxStatus> tests;
    std::string slots; // one for each test: planes as digits, of the source ahead of those of the destination
    const std::string order = way().order;
    for (char what : order) {
        const bool step = what == 'T' || what == 't', size = what == 'W' || what == 'H';
        const int count = what == 's' ? planesOf(way().from) : what == 'd' ? planesOf(way().to) : 1;
        for (int i = 0; i < count; ++i) {
            tests.push_back(step ? kStep : size ? kSize : kNull);
            slots += what == 's' ? char('0' + i) : what == 'd' ? char('4' + i) : what;
        }
    }
    const auto test = [&](char slot) {
        const std::size_t at = slots.find(slot);
        return at == std::string::npos ? -1 : int(at);
    };
    std::vector<Zmx8u> src(64, 1), dst(64, 99);
    const int before = threadsAsked();
    checkOrder(tests, [&](const Bad& bad) {
        const Zmx8u* s[4];
        Zmx8u* d[4];
        for (int i = 0; i < 4; ++i) {
            s[i] = bad.null(test(char('0' + i)), src.data());
            d[i] = bad.null(test(char('4' + i)), dst.data());
        }
        return way().call(bad.null(test('S'), s), bad.below1(test('T'), 16), bad.null(test('D'), d),
                          bad.below1(test('t'), 16), {bad.below1(test('W'), 4), bad.below1(test('H'), 2)});
    });
    EXPECT_EQ(dst, std::vector<Zmx8u>(64, 99));
    EXPECT_EQ(threadsAsked(), before);
}

TEST_P(Colour, RowsInMemory) {
    Rng rng(221);
    SCOPED_TRACE("seed 221");
    for (int i = 0; i < 150; ++i) {
        const ZmxiSize size{int(rng.range(1, i % 3 ? 20 : 100)), int(rng.range(1, 7))};
        const int srcBytes = srcRow(size.width), dstBytes = dstRow(size.width);
        // From no gap to a gap, odd steps too; and steps so small that rows overlap, where the later row
        // wins.
        const int srcStep = i % 4 == 0 ? int(rng.range(1, srcBytes)) : srcBytes + int(rng.range(0, 9));
        const int dstStep = i % 5 == 0 ? int(rng.range(1, dstBytes)) : dstBytes + int(rng.range(0, 9));
        ASSERT_NO_FATAL_FAILURE(
            compare(rng, size, srcStep, dstStep, i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart));
    }
    ASSERT_NO_FATAL_FAILURE(compare(rng, {1, 1}, 1, 1, GuardedBlock::AtEnd));
    ASSERT_NO_FATAL_FAILURE(compare(rng, {1, 300}, 5, 7, GuardedBlock::AtEnd));
    ASSERT_NO_FATAL_FAILURE(compare(rng, {3001, 1}, 1, 1, GuardedBlock::AtStart));
    // The steps of a single row are of no account: no test of the memory that they would lead to.
    std::vector<Zmx8u> src(16), dst(64);
    const Zmx8u* const s[4] = {&src[0], &src[4], &src[8], &src[12]};
    Zmx8u* const d[4] = {&dst[0], &dst[8], &dst[16], &dst[24]};
    EXPECT_EQ(way().call(s, 2147483647, d, 2147483647, {1, 1}), zmxStsNoErr);
}

// 4:2:2 pairs have no tests of steps: rows may overlay each other or run backward.
TEST(ColourPairs, StepsOfZeroAndBelow) {
    Rng rng(222);
    SCOPED_TRACE("seed 222");
    for (int i = 0; i < 200; ++i) {
        const ZmxiSize size{int(rng.range(1, 20)), int(rng.range(1, 6))};
        const int width = (size.width + 1) & ~1;
        const auto step = [&](int row) { return rng.oneIn(3) ? 0 : int(rng.range(-2 * row, rng.oneIn(2) ? -1 : row)); };
        const int srcStep = step(2 * width);
        const int dstStep = step(3 * width);
        Picture src(Layout::Pairs422, size, 2 * width, srcStep, i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart,
                    rng);
        Picture dst(Layout::Rgb, size, 3 * width, dstStep, i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart, rng);
        auto expected = dst.copy();
        model::fromYCbCr(src.rows(), dst.rowsIn(expected), size);
        ASSERT_EQ(zmxiYCbCr422ToRGB_JPEG_8u_C2C3R(src.rows().plane[0], srcStep, dst.rows().plane[0], dstStep, size),
                  zmxStsNoErr);
        ASSERT_TRUE(sameBytes(expected[0], dst.copy()[0])) << "steps " << srcStep << " and " << dstStep;
    }
}

TEST_P(Colour, TheSameBytesFromAnyNumberOfThreads) {
    Rng rng(223);
    SCOPED_TRACE("seed 223");
    for (ZmxiSize size : {ZmxiSize{8, 8}, ZmxiSize{128, 64}, ZmxiSize{8192, 1}, ZmxiSize{8193, 1}, ZmxiSize{1, 8193},
                          ZmxiSize{2731, 3}, ZmxiSize{201, 97}})
        ASSERT_NO_FATAL_FAILURE(checkSharing(size, way().shared, [&] {
            compare(rng, size, srcRow(size.width) + 1, dstRow(size.width) + 3, GuardedBlock::AtEnd);
        }));
}

TEST_P(Colour, InsideAnotherRegion) {
    Rng rng(226);
    SCOPED_TRACE("seed 226");
    setThreads(3);
    const ZmxiSize size{111, 75};
    Picture src(way().from, size, srcRow(size.width), srcRow(size.width), GuardedBlock::AtEnd, rng);
    Picture dst(way().to, size, dstRow(size.width), dstRow(size.width), GuardedBlock::AtEnd, rng);
    auto expected = dst.copy();
    plain(way(), src.rows(), dst.rowsIn(expected), size);
    std::vector<std::vector<std::vector<Zmx8u>>> got(4, dst.copy());
    std::vector<ZmxStatus> status(4, -1);
    const auto s = src.rows();
#pragma omp parallel for num_threads(4)
    for (std::size_t i = 0; i < 4; ++i) {
        const auto d = dst.rowsIn(got[i]);
        status[i] = way().call(s.plane.data(), s.step, d.plane.data(), d.step, size);
    }
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(status[i], zmxStsNoErr);
        EXPECT_EQ(expected, got[i]);
    }
    setThreads(1);
}

// The destination may be the source, plane for plane or turned round.
TEST_P(PlanarColour, InPlace) {
    Rng rng(224);
    SCOPED_TRACE("seed 224");
    for (ZmxiSize size : {ZmxiSize{1, 1}, ZmxiSize{15, 3}, ZmxiSize{67, 5}, ZmxiSize{120, 90}})
        for (int turn = 0; turn < planesOf(way().from); ++turn) {
            setThreads(size.width == 120 ? 2 : 1);
            Picture planes(way().from, size, size.width, size.width + 3, GuardedBlock::AtEnd, rng);
            auto expected = planes.copy();
            const auto turned = [turn, n = planesOf(way().from)](model::Rows rows) {
                std::rotate(rows.plane.begin(), rows.plane.begin() + turn, rows.plane.begin() + n);
                return rows;
            };
            plain(way(), planes.rows(), turned(planes.rowsIn(expected)), size);
            const auto src = planes.rows(), dst = turned(src);
            ASSERT_EQ(way().call(src.plane.data(), src.step, dst.plane.data(), dst.step, size), zmxStsNoErr);
            ASSERT_EQ(expected, planes.copy()) << size.width << " by " << size.height << ", turned by " << turn;
        }
    setThreads(1);
}

namespace {

bool ofWords(Layout l) {
    return l == Layout::Rgb555 || l == Layout::Bgr555 || l == Layout::Rgb565 || l == Layout::Bgr565;
}

} // namespace

TEST_P(Colour, Digest) {
    Rng rng(225);
    const ZmxiSize size{150, 70};
    const int srcStep = srcRow(size.width), dstStep = dstRow(size.width);
    Picture src(way().from, size, srcStep, srcStep, GuardedBlock::AtEnd, rng);
    Picture dst(way().to, size, dstStep, dstStep, GuardedBlock::AtEnd, rng);
    const auto s = src.rows(), d = dst.rows();
    if (ofWords(way().from)) exchangeOrder(s.plane[0], std::size_t(srcStep * size.height));
    if (ofWords(way().to)) exchangeOrder(d.plane[0], std::size_t(dstStep * size.height));
    ASSERT_EQ(way().call(s.plane.data(), srcStep, d.plane.data(), dstStep, size), zmxStsNoErr);
    Digest digest;
    for (auto& plane : dst.copy()) {
        if (ofWords(way().to)) exchangeOrder(plane.data(), plane.size());
        digest.add(plane);
    }
    EXPECT_EQ(digest.get(), way().digest) << std::hex << digest.get();
}
