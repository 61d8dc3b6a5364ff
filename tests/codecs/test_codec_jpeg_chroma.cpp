// Chroma of a lower rate in both directions, and packed pixels: the renderers and the transformer of the JPEG codec
// against plain models of resampling and colour. The DCT alone is the library's.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/roads.h"
#include "codecs/jpeg/standard.h"
#include "codecs/jpeg/units.h"
#include "tests/codecs/support/jpeg.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"

#include <gtest/gtest.h>

namespace {

using jpeg::DecodeOptions;
using jpeg::Factors;
using jpeg::Frame;
using jpeg::Model;
using jpeg::Packing;
using jpeg::Upsampling;

std::string name(int width, int height, const std::vector<Factors>& factors) {
    std::string text = std::to_string(width) + " by " + std::to_string(height) + ", sampling";
    for (const Factors& f : factors) text.append(" ").append(std::to_string(10 * f.h + f.v));
    return text;
}

Frame frameOf(int width, int height, const std::vector<Factors>& factors) {
    Frame frame;
    frame.width = width;
    frame.height = height;
    for (const Factors& f : factors) frame.components.push_back({int(frame.components.size()) + 1, f.h, f.v, 0});
    frame.setMaxima();
    return frame;
}

// A plane of samples whose last ones go on for ever.
struct Plane {
    int width, height;
    std::vector<int> samples;

    Plane(int w, int h) : width(w), height(h), samples(std::size_t(w) * std::size_t(h)) {}
    int& at(int x, int y) {
        return samples[std::size_t(std::clamp(y, 0, height - 1)) * std::size_t(width) +
                       std::size_t(std::clamp(x, 0, width - 1))];
    }
};

// The colour of a pixel (ITU-T T.871, clause 7, in 16 fractional bits), of samples up to `top`.
std::vector<int> toColour(Model model, const std::vector<int>& s, int top) {
    if (model != Model::yCbCr && model != Model::ycck) return s;
    const int middle = (top + 1) / 2, cb = s[1] - middle, cr = s[2] - middle;
    const auto sample = [&](int v) { return std::clamp(s[0] + ((v + 32768) >> 16), 0, top); };
    std::vector<int> out{sample(91881 * cr), sample(-22554 * cb - 46802 * cr), sample(116130 * cb)};
    if (model == Model::ycck) out = {top - out[0], top - out[1], top - out[2], s[3]};
    return out;
}

// A picture of coefficients, and the planes that they are samples of.
class Coded {
public:
    Frame frame;
    std::vector<jpeg::DequantTable> tables;

    Coded(const Frame& f, Rng& rng) : frame(f) {
        for (const jpeg::Component& c : frame.components) {
            jpeg::DequantTable table;
            for (Zmx16u& q : table) q = Zmx16u(rng.range(1, 30));
            tables.push_back(table);
            std::vector<Zmx16s> all(std::size_t(frame.mcuColumns() * c.h * frame.mcuRows() * c.v) * 64);
            for (std::size_t i = 0; i < all.size(); ++i)
                all[i] = i % 64 == 0 ? Zmx16s(rng.range(-40, 40)) : rng.oneIn(8) ? Zmx16s(rng.range(-6, 6)) : Zmx16s(0);
            coefficients.push_back(all);
        }
    }

    Zmx16s* block(std::size_t i, int x, int y) {
        return coefficients[i].data() + (y * frame.mcuColumns() * frame.components[i].h + x) * 64;
    }

    Seen rendered(Model model, const DecodeOptions& options) {
        const bool packed = options.packing != Packing::none;
        codecs::PictureSink sink;
        sink.begin(codecs::shapeOf(jpeg::divUp(frame.width, options.scale), jpeg::divUp(frame.height, options.scale),
                                   packed ? 1 : jpeg::channelsOf(model), packed ? 65535 : top()),
                   {});
        const auto road = jpeg::makeDecodeRoad(frame, model, tables, options);
        for (int row = 0; row < frame.mcuRows(); ++row) {
            for (int column = 0; column < frame.mcuColumns(); ++column) {
                std::vector<const Zmx16s*> blocks;
                for (std::size_t i = 0; i < coefficients.size(); ++i) {
                    const jpeg::Component& c = frame.components[i];
                    for (int k = 0; k < c.h * c.v; ++k)
                        blocks.push_back(block(i, column * c.h + k % c.h, row * c.v + k / c.h));
                }
                road->mcu(column, blocks.data());
            }
            sink.write(road->unload());
        }
        sink.finish();
        return seen(sink.picture);
    }

    int top() const { return frame.precision == 8 ? 255 : 4095; }

    // The samples of a block in a row and column at 1/scale: chroma takes a larger transform where that fits in both
    // directions.
    int sideOf(std::size_t i, int scale) const {
        const jpeg::Component& c = frame.components[i];
        int side = 8 / scale;
        while (side < 8 && frame.hMax * 8 / scale % (2 * side * c.h) == 0 &&
               frame.vMax * 8 / scale % (2 * side * c.v) == 0)
            side *= 2;
        return side;
    }
    // A block in `side` x `side` samples.
    std::vector<int> inverse(const Zmx16s* block, std::size_t i, int side) const {
        if (frame.precision == 8) {
            Zmx8u samples[64];
            if (side == 1) return {std::clamp(128 + ((block[0] * tables[i][0] + 4) >> 3), 0, 255)};
            const auto transform = side == 8   ? zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R
                                   : side == 4 ? zmxiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R
                                               : zmxiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R;
            EXPECT_EQ(transform(block, samples, side, tables[i].data()), zmxStsNoErr);
            return {samples, samples + side * side};
        }
        Zmx32f table[64];
        Zmx16u samples[64];
        std::copy(tables[i].begin(), tables[i].end(), table);
        EXPECT_EQ(zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(block, samples, 16, table), zmxStsNoErr);
        std::vector<int> out;
        const int n = 8 / side;
        for (int k = 0; k < side * side; ++k) {
            int sum = 0;
            for (int m = 0; m < n * n; ++m) sum += samples[8 * (k / side * n + m / n) + k % side * n + m % n];
            out.push_back((sum + n * n / 2) / (n * n));
        }
        return out;
    }
    // The samples that belong to the picture.
    Plane samples(std::size_t i, int scale) {
        const jpeg::Component& c = frame.components[i];
        const int side = sideOf(i, scale);
        Plane plane(jpeg::divUp(frame.width * c.h * side, 8 * frame.hMax),
                    jpeg::divUp(frame.height * c.v * side, 8 * frame.vMax));
        for (int by = 0; side * by < plane.height; ++by)
            for (int bx = 0; side * bx < plane.width; ++bx) {
                const std::vector<int> values = inverse(block(i, bx, by), i, side);
                for (int k = 0; k < side * side; ++k)
                    if (side * bx + k % side < plane.width && side * by + k / side < plane.height)
                        plane.at(side * bx + k % side, side * by + k / side) = values[std::size_t(k)];
            }
        return plane;
    }

    // What stands for the pixel (x, y) in the plane of a component.
    int upsampled(Plane& s, std::size_t i, int x, int y, bool smooth, int scale) const {
        const jpeg::Component& c = frame.components[i];
        const int side = sideOf(i, scale), own[2] = {c.h * side, c.v * side},
                  full[2] = {frame.hMax * 8 / scale, frame.vMax * 8 / scale};
        const bool halfWidth = full[0] == 2 * own[0] && s.width > 2, halfHeight = full[1] == 2 * own[1];
        const bool fullWidth = full[0] == own[0], fullHeight = full[1] == own[1];
        const int h = x / 2, v = y / 2, besides = x % 2 ? h + 1 : h - 1, across = y % 2 ? v + 1 : v - 1;
        if (smooth && halfWidth && fullHeight) return (3 * s.at(h, y) + s.at(besides, y) + 1 + x % 2) >> 2;
        if (smooth && fullWidth && halfHeight) return (3 * s.at(x, v) + s.at(x, across) + 1 + y % 2) >> 2;
        if (smooth && halfWidth && halfHeight) {
            const auto column = [&](int n) { return 3 * s.at(n, v) + s.at(n, across); };
            return (3 * column(h) + column(besides) + 8 - x % 2) >> 4;
        }
        return s.at(x * own[0] / full[0], y * own[1] / full[1]);
    }

    // All samples of the picture, of either width.
    std::vector<int> expected(Model model, bool smooth, int scale = 1) {
        std::vector<Plane> planes;
        for (std::size_t i = 0; i < coefficients.size(); ++i) planes.push_back(samples(i, scale));
        std::vector<int> out;
        for (int y = 0; y < jpeg::divUp(frame.height, scale); ++y)
            for (int x = 0; x < jpeg::divUp(frame.width, scale); ++x) {
                std::vector<int> pixel;
                for (std::size_t i = 0; i < planes.size(); ++i)
                    pixel.push_back(upsampled(planes[i], i, x, y, smooth, scale));
                const std::vector<int> colour = toColour(model, pixel, top());
                out.insert(out.end(), colour.begin(), colour.end());
            }
        return out;
    }

private:
    std::vector<std::vector<Zmx16s>> coefficients;
};

DecodeOptions with(Upsampling upsampling, Packing packing = Packing::none, int scale = 1) {
    DecodeOptions o;
    o.upsampling = upsampling;
    o.packing = packing;
    o.scale = scale;
    return o;
}

constexpr std::pair<int, int> kSizes[] = {{1, 1},   {2, 1},   {1, 2},   {3, 3},   {4, 2},    {2, 4},   {5, 5},
                                          {6, 3},   {3, 6},   {7, 9},   {15, 1},  {1, 17},   {16, 16}, {17, 15},
                                          {16, 33}, {33, 16}, {31, 32}, {49, 35}, {1030, 10}};

const std::vector<Factors> kSamplings[] = {{{1, 1}, {1, 1}, {1, 1}}, {{2, 1}, {1, 1}, {1, 1}}, {{1, 2}, {1, 1}, {1, 1}},
                                           {{2, 2}, {1, 1}, {1, 1}}, {{2, 2}, {1, 2}, {2, 1}}, {{4, 2}, {2, 1}, {1, 1}},
                                           {{1, 1}, {2, 2}, {1, 2}}, {{4, 1}, {1, 1}, {2, 1}}};

// The words that a packing makes of RGB.
template <class Sample> Words packed(Packing packing, const std::vector<Sample>& rgb, int channels) {
    Words out;
    for (std::size_t i = 0; i < rgb.size(); i += std::size_t(channels)) {
        const int green = rgb[i + (channels == 3)];
        int low = rgb[i], high = rgb[i + std::size_t(channels - 1)];
        if (packing == Packing::bgr565 || packing == Packing::bgr555) std::swap(low, high);
        const bool six = packing == Packing::rgb565 || packing == Packing::bgr565;
        out.push_back(std::uint16_t(low / 8 + (six ? green / 4 : green / 8) * 32 + high / 8 * (six ? 2048 : 1024)));
    }
    return out;
}
constexpr Packing kPackings[] = {Packing::rgb565, Packing::bgr565, Packing::rgb555, Packing::bgr555};

} // namespace

TEST(JpegChroma, SmoothAcrossUnits) {
    // Two units of flat luma; the chroma goes from 100 to 140 between them.
    const int grey[] = {128, 138, 78}, beforeEdge[] = {128, 134, 96}, behindEdge[] = {128, 127, 132},
              right[] = {128, 124, 149};
    for (bool upright : {false, true}) {
        SCOPED_TRACE(upright);
        Rng rng(1);
        Coded coded(frameOf(upright ? 8 : 32, upright ? 32 : 8, {{upright ? 1 : 2, upright ? 2 : 1}, {1, 1}, {1, 1}}),
                    rng);
        for (std::size_t i = 0; i < 3; ++i) {
            coded.tables[i].fill(1);
            for (int k = 0; k < (i ? 2 : 4); ++k)
                std::fill_n(coded.block(i, upright ? 0 : k, upright ? k : 0), 64, Zmx16s(0));
        }
        *coded.block(1, 0, 0) = 8 * (100 - 128);
        *coded.block(1, !upright, upright) = 8 * (140 - 128);
        const Seen p = coded.rendered(Model::yCbCr, with(Upsampling::smooth));
        for (int n = 0; n < 32; ++n)
            for (int across = 0; across < 8; ++across) {
                const int* want = n < 15 ? grey : n == 15 ? beforeEdge : n == 16 ? behindEdge : right;
                for (int c = 0; c < 3; ++c)
                    EXPECT_EQ(p.pixels[std::size_t(3 * (upright ? 8 * n + across : 32 * across + n) + c)], want[c])
                        << n << " channel " << c;
            }
    }
}

namespace {

// In 8 and 12 bits, at every scale, by both ways of enlarging.
void expectAsTheModel(int width, int height, const std::vector<Factors>& factors, Model model, Rng& rng) {
    for (int precision : {8, 12})
        for (Upsampling upsampling : {Upsampling::smooth, Upsampling::plain})
            for (int scale : {1, 2, 4, 8}) {
                SCOPED_TRACE(name(width, height, factors) + ", model " + std::to_string(int(model)) + ", " +
                             std::to_string(precision) + " bits, 1/" + std::to_string(scale));
                Frame frame = frameOf(width, height, factors);
                frame.precision = precision;
                Coded coded(frame, rng);
                const Seen got = coded.rendered(model, with(upsampling, Packing::none, scale));
                const std::vector<int> samples = precision == 8 ? std::vector<int>(got.pixels.begin(), got.pixels.end())
                                                                : std::vector<int>(got.wide.begin(), got.wide.end());
                ASSERT_TRUE(sameBytes(coded.expected(model, upsampling == Upsampling::smooth, scale), samples));
            }
}

} // namespace

TEST(JpegChroma, SmoothInEverySampling) {
    constexpr std::uint64_t seed = 41;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (const std::vector<Factors>& three : kSamplings)
        for (auto [width, height] : kSizes)
            for (Model model : {Model::yCbCr, Model::rgb, Model::ycck, Model::cmyk}) {
                std::vector<Factors> factors = three;
                if (jpeg::channelsOf(model) == 4) factors.push_back(three[0]);
                expectAsTheModel(width, height, factors, model, rng);
                if (HasFatalFailure()) return;
            }
    for (auto [width, height] : kSizes) expectAsTheModel(width, height, {{1, 1}}, Model::grey, rng);
}

// Rows that are shorter than what a filter takes at once, of components whose ratio is no whole number: the last sample
// of an MCU stands for more of it than belongs to the row.
TEST(JpegChroma, TinyPicturesOfThirds) {
    constexpr std::uint64_t seed = 43;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    const std::vector<Factors> thirds[] = {{{3, 1}, {1, 1}, {1, 1}}, {{3, 1}, {2, 1}, {1, 1}}, {{1, 3}, {1, 1}, {1, 2}},
                                           {{3, 3}, {1, 1}},         {{2, 2}, {3, 1}, {1, 1}}, {{1, 2}, {3, 1}, {2, 1}},
                                           {{3, 2}, {2, 1}},         {{2, 3}, {3, 2}},         {{2, 1}, {3, 3}}};
    for (std::vector<Factors> factors : thirds) {
        factors.resize(3, {1, 1}); // those of 10 blocks and more stand in scans of their own
        for (int width : {1, 2, 3, 4, 5, 8, 9, 24, 25})
            for (int height : {1, 2, 3, 9, 25}) {
                expectAsTheModel(width, height, factors, Model::yCbCr, rng);
                if (HasFatalFailure()) return;
            }
    }
}

TEST(JpegChroma, PackedPixels) {
    constexpr std::uint64_t seed = 42;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    for (Packing packing : kPackings)
        for (auto [width, height] : kSizes) {
            SCOPED_TRACE("packing " + std::to_string(int(packing)));
            const std::vector<Factors>& factors = kSamplings[std::size_t(rng.range(0, 7))];
            for (Model model : {Model::yCbCr, Model::rgb, Model::grey}) {
                const int channels = jpeg::channelsOf(model);
                const std::vector<Factors> of = channels == 1 ? std::vector<Factors>{{1, 1}} : factors;
                SCOPED_TRACE(name(width, height, of) + ", model " + std::to_string(int(model)));
                Coded coded(frameOf(width, height, of), rng);
                for (Upsampling upsampling : {Upsampling::plain, Upsampling::smooth}) {
                    const Seen p = coded.rendered(model, with(upsampling, packing));
                    EXPECT_TRUE(p.pixels.empty());
                    ASSERT_TRUE(sameBytes(
                        packed(packing, coded.expected(model, upsampling == Upsampling::smooth), channels), p.wide));
                }
                for (int scale : {2, 4, 8})
                    ASSERT_TRUE(sameBytes(
                        packed(packing, coded.rendered(model, with(Upsampling::plain, Packing::none, scale)).pixels,
                               channels),
                        coded.rendered(model, with(Upsampling::plain, packing, scale)).wide));
            }
        }
}

TEST(JpegChroma, PackedColoursInTheirBits) {
    // Flat blocks, stored as RGB: all of red, half of green (its top bit), none of blue.
    Rng rng(1);
    Coded coded(frameOf(8, 8, {{1, 1}, {1, 1}, {1, 1}}), rng);
    for (std::size_t i = 0; i < 3; ++i) {
        coded.tables[i].fill(1);
        std::fill_n(coded.block(i, 0, 0), 64, Zmx16s(0));
        *coded.block(i, 0, 0) = Zmx16s(i == 0 ? 8 * 127 : i == 1 ? 0 : -8 * 128);
    }
    const auto first = [&](Model model, Packing packing) {
        const Seen p = coded.rendered(model, with(Upsampling::plain, packing));
        EXPECT_EQ(p.wide, Words(64, p.wide[0]));
        return p.wide[0];
    };
    EXPECT_EQ(first(Model::rgb, Packing::rgb565), 0x041F);
    EXPECT_EQ(first(Model::rgb, Packing::bgr565), 0xFC00);
    EXPECT_EQ(first(Model::rgb, Packing::rgb555), 0x021F);
    EXPECT_EQ(first(Model::rgb, Packing::bgr555), 0x7E00);
    // Y 255, Cb 128 and Cr 0: red 255 - 179 = 76, green and blue 255.
    EXPECT_EQ(first(Model::yCbCr, Packing::rgb565), 0xFFE9);
    EXPECT_EQ(first(Model::yCbCr, Packing::bgr565), 0x4FFF);
    EXPECT_EQ(first(Model::yCbCr, Packing::rgb555), 0x7FE9);
    EXPECT_EQ(first(Model::yCbCr, Packing::bgr555), 0x27FF);
}

TEST(JpegChroma, WhatCannotBePacked) {
    const std::vector<std::uint8_t> pixels(16 * 16 * 4, 100);
    const std::vector<std::uint16_t> words(16 * 16 * 3, 100);
    jpeg::EncodeOptions ycck, lossless;
    ycck.ycck = true;
    lossless.lossless = 1;
    const Bytes files[] = {jpeg::encode(picture(pixels, 16, 16, 4)), jpeg::encode(picture(pixels, 16, 16, 4), ycck),
                           jpeg::encode(picture(words, 16, 16, 3, 12)),
                           jpeg::encode(picture(pixels, 16, 16, 3), lossless),
                           jpeg::encode(picture(pixels, 16, 16, 3))};
    const auto message = [&](int file, const DecodeOptions& o) { return refusalOf([&] { decoded(files[file], o); }); };
    for (Packing packing : kPackings) {
        for (Upsampling upsampling : {Upsampling::plain, Upsampling::smooth}) {
            const DecodeOptions o = with(upsampling, packing);
            EXPECT_EQ(message(0, o), "a CMYK picture has no packed pixels");
            EXPECT_EQ(message(1, o), "a CMYK picture has no packed pixels");
            EXPECT_EQ(message(2, o), "packed pixels are made of 8-bit files only");
            EXPECT_EQ(message(3, o), "a lossless file has no packed pixels");
            EXPECT_EQ(message(4, o), "");
        }
        EXPECT_EQ(message(4, with(Upsampling::plain, packing, 8)), "");
        const Seen p = decoded(files[4], with(Upsampling::plain, packing, 8));
        EXPECT_EQ(p.channels, 1);
        EXPECT_EQ(p.maxval, 65535);
        EXPECT_EQ(p.wide.size(), 4u);
    }
}

namespace {

// The planes of a picture as the encoder is to make them: colours converted with rounding, the last column and the
// last row repeated up to whole MCUs, and chroma the mean of the samples that it covers, whose last row is repeated
// likewise. Where a mean is between two numbers, or has a fraction at all, even columns go down and odd ones up, so that
// the mean of the plane stays.
std::vector<Plane> planesOf(const Frame& frame, Model model, const Bytes& pixels) {
    const int channels = jpeg::channelsOf(model), width = 8 * frame.hMax * frame.mcuColumns(),
              height = 8 * frame.vMax * frame.mcuRows();
    const bool inks = model == Model::ycck;
    std::vector<Plane> planes(std::size_t(channels), Plane(width, height));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const std::uint8_t* p =
                pixels.data() + channels * (std::min(y, frame.height - 1) * frame.width + std::min(x, frame.width - 1));
            for (int i = 0; i < channels; ++i) planes[std::size_t(i)].at(x, y) = p[i];
            if (!jpeg::isChroma(model, 1)) continue;
            const int r = inks ? 255 - p[0] : p[0], g = inks ? 255 - p[1] : p[1], b = inks ? 255 - p[2] : p[2];
            planes[0].at(x, y) = (19595 * r + 38470 * g + 7471 * b + 32768) >> 16;
            planes[1].at(x, y) = (-11059 * r - 21709 * g + 32768 * b + 8421375) >> 16;
            planes[2].at(x, y) = (32768 * r - 27439 * g - 5329 * b + 8421375) >> 16;
        }
    for (std::size_t i = 0; i < planes.size(); ++i) {
        if (!jpeg::isChroma(model, int(i))) continue;
        Plane& from = planes[i];
        Plane to(width / frame.hMax, height / frame.vMax);
        for (int y = 0; y < to.height; ++y)
            for (int x = 0; x < to.width; ++x) {
                int sum = 0;
                const int top = frame.vMax * std::min(y, jpeg::divUp(frame.height, frame.vMax) - 1);
                for (int v = 0; v < frame.vMax; ++v)
                    for (int h = 0; h < frame.hMax; ++h) sum += from.at(frame.hMax * x + h, top + v);
                const int n = frame.hMax * frame.vMax;
                to.at(x, y) = n == 1 ? sum : n == 2 ? (sum + x % 2) / 2 : (sum + 1 + x % 2) / 4;
            }
        from = to;
    }
    return planes;
}

// The coefficients of a picture against those that the library makes of the planes, block by block.
void checkEncoder(int width, int height, Model model, int h, int v, Rng& rng) {
    SCOPED_TRACE(std::to_string(width) + " by " + std::to_string(height) + ", sampling " + std::to_string(h) + "x" +
                 std::to_string(v) + ", model " + std::to_string(int(model)));
    const jpeg::Quantisers quantisers = {jpeg::Quantiser(jpeg::scaledTable(jpeg::kLumaQuant, 100, 8)),
                                         jpeg::Quantiser(jpeg::scaledTable(jpeg::kChromaQuant, 95, 8))};
    Frame frame = frameOf(width, height, {});
    frame.components = jpeg::componentsOf(model, h, v);
    for (int i = 0; i < jpeg::channelsOf(model); ++i) frame.components[std::size_t(i)].quant = jpeg::isChroma(model, i);
    frame.setMaxima();
    const auto pixels = rng.vec<std::uint8_t>(std::size_t(width * height * jpeg::channelsOf(model)), 0, 255);
    std::vector<Plane> planes = planesOf(frame, model, pixels);
    jpeg::EncodeOptions integerly, singly;
    integerly.dct = jpeg::Dct::integer;
    const auto integer = jpeg::makeEncodeRoad(frame, model, quantisers, integerly);
    const auto single = jpeg::makeEncodeRoad(frame, model, quantisers, singly);
    const codecs::Picture source = picture(pixels, width, height, jpeg::channelsOf(model));
    for (int row = 0; row < frame.mcuRows(); ++row) {
        const int top = row * 8 * frame.vMax;
        const codecs::Band band = source.band(top, std::min(8 * frame.vMax, height - top));
        integer->load(band);
        single->load(band);
        for (int column = 0; column < frame.mcuColumns(); ++column) {
            Zmx16s got[2][10][64], *blocks[2][10];
            for (int road = 0; road < 2; ++road)
                for (int k = 0; k < 10; ++k) blocks[road][k] = got[road][k];
            integer->mcu(column, blocks[0]);
            single->mcu(column, blocks[1]);
            int number = 0;
            for (std::size_t i = 0; i < planes.size(); ++i) {
                const jpeg::Component& c = frame.components[i];
                const jpeg::Quantiser& q = quantisers[std::size_t(c.quant)];
                for (int k = 0; k < c.h * c.v; ++k, ++number) {
                    Zmx8u samples[64];
                    Zmx16u wide[64];
                    Zmx16s want[64];
                    const int left = 8 * (column * c.h + k % c.h), down = 8 * (row * c.v + k / c.h);
                    for (int n = 0; n < 64; ++n) {
                        samples[n] = Zmx8u(planes[i].at(left + n % 8, down + n / 8));
                        wide[n] = Zmx16u(samples[n] + 1920); // as far from 2048 as those of 8 bits from 128
                    }
                    zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(samples, 8, want, q.forward.data());
                    ASSERT_TRUE(sameBytes(want, got[0][number], sizeof want))
                        << "component " << i << ", block " << k << " of unit " << column << ", " << row;
                    zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(wide, 16, want, q.reciprocals.data());
                    ASSERT_TRUE(sameBytes(want, got[1][number], sizeof want))
                        << "component " << i << ", block " << k << " of unit " << column << ", " << row;
                }
            }
        }
    }
}

} // namespace

TEST(JpegChroma, TheEncoderTakesMeans) {
    constexpr std::uint64_t seed = 43;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    const std::pair<int, int> more[] = {{1, 8}, {8, 1}, {1, 40}, {40, 1}, {2, 2}, {47, 3}, {3, 47}, {48, 32}};
    std::vector<std::pair<int, int>> sizes(std::begin(kSizes), std::end(kSizes));
    sizes.insert(sizes.end(), std::begin(more), std::end(more));
    for (auto [width, height] : sizes) {
        for (Model model : {Model::yCbCr, Model::ycck})
            for (auto [h, v] : {std::pair{1, 1}, {2, 1}, {2, 2}}) checkEncoder(width, height, model, h, v, rng);
        for (Model model : {Model::grey, Model::rgb, Model::cmyk}) checkEncoder(width, height, model, 1, 1, rng);
    }
    // Wider than what is converted at a time, and taller.
    checkEncoder(8200, 3, Model::yCbCr, 2, 2, rng);
    checkEncoder(1030, 16, Model::ycck, 2, 2, rng);
    checkEncoder(8193, 9, Model::rgb, 1, 1, rng);
}
