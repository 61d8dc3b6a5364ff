// The JPEG2000 codec: round trips over all options, rates, rare marker segments and boxes, and broken files.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/codecs/support/jpeg2000pictures.h"
#include "tests/support/digest.h"

#include <gtest/gtest.h>

namespace {

using namespace codecs;
using namespace codecs::jpeg2000;
using namespace jpeg2000test;

EncodeOptions randomOptions(Rng& rng, const Wanted& s) {
    EncodeOptions o;
    o.levels = int(rng.range(0, 6));
    o.blockWidth = 4 << rng.range(0, 4);
    o.blockHeight = 4 << rng.range(0, 4);
    o.progression = Progression(rng.range(0, 4));
    o.style = unsigned(rng.range(0, 63));
    o.colourTransform = rng.oneIn(2);
    if (rng.oneIn(2)) {
        o.tileX = std::uint32_t(rng.range(0, s.x0));
        o.tileY = std::uint32_t(rng.range(0, s.y0));
        o.tileWidth = s.x0 - o.tileX + std::uint32_t(rng.range(9, 50));
        o.tileHeight = s.y0 - o.tileY + std::uint32_t(rng.range(9, 50));
    }
    for (int i = int(rng.range(0, 3)); i > 0; --i) o.precincts.push_back({2 << rng.range(2, 7), 2 << rng.range(2, 7)});
    o.sop = rng.oneIn(3);
    o.eph = rng.oneIn(3);
    o.tilePartsByResolution = rng.oneIn(3);
    o.packedHeaders = PackedHeaders(rng.oneIn(2) ? 0 : rng.range(1, 2));
    if (rng.oneIn(2)) o.rates = {0.5, 2, everything};
    o.jp2 = rng.oneIn(2);
    o.threads = int(rng.range(1, 3));
    return o;
}

TEST(Jpeg2000, LosslessInRandomOptions) {
    for (std::uint64_t seed = 1; seed <= 120; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Wanted s;
        s.width = int(rng.range(1, 70));
        s.height = int(rng.range(1, 70));
        s.components = int(rng.range(1, 5));
        s.depth = int(rng.range(1, 16));
        s.isSigned = rng.oneIn(3) && s.depth > 1;
        s.x0 = std::uint32_t(rng.range(0, 40));
        s.y0 = std::uint32_t(rng.range(0, 40));
        if (s.width > 3 && s.height > 3 && rng.oneIn(3)) {
            s.dx = int(rng.range(1, 3));
            s.dy = int(rng.range(1, 3));
        }
        const PlanarPicture p = picture(s, seed);
        const PlanarPicture back = decoded(encode(p, randomOptions(rng, s)));
        expectSame(p, back);
    }
}

TEST(Jpeg2000, NoiseOfFullRangeIsLossless) {
    for (const int depth : {1, 2, 7, 8, 12, 15, 16}) {
        SCOPED_TRACE(depth);
        Rng rng{std::uint64_t(depth)};
        PlanarPicture p = picture({.width = 67, .height = 65, .components = 3, .depth = depth});
        for (Component& c : p.components)
            for (auto& v : c.samples) v = rng.oneIn(2) ? c.smallest() : c.largest();
        expectSame(p, decoded(encode(p)));
    }
}

TEST(Jpeg2000, LossyAtEveryOrigin) {
    for (std::uint32_t x = 0; x < 4; ++x)
        for (std::uint32_t y = 0; y < 4; ++y) {
            SCOPED_TRACE(testing::Message() << x << ',' << y);
            for (const int depth : {8, 16}) {
                const PlanarPicture p =
                    picture({.width = 61, .height = 43, .components = 3, .depth = depth, .x0 = x, .y0 = y});
                EncodeOptions o;
                o.reversible = false;
                o.baseStep = 0.25;
                o.tileWidth = 30;
                o.tileHeight = 22;
                EXPECT_GT(psnr(p, decoded(encode(p, o))), 57);
            }
        }
}

TEST(Jpeg2000, LinesAndSinglePoints) {
    for (const auto& [w, h] : {std::pair{1, 1}, {1, 9}, {9, 1}, {2, 2}, {1, 2}, {3, 1}})
        for (const std::uint32_t at : {0u, 1u}) {
            SCOPED_TRACE(testing::Message() << w << " x " << h << " at " << at);
            const PlanarPicture p = picture({.width = w, .height = h, .x0 = at, .y0 = at});
            expectSame(p, decoded(encode(p)));
            EncodeOptions o;
            o.reversible = false;
            o.baseStep = 0.1;
            EXPECT_GT(psnr(p, decoded(encode(p, o))), 55);
        }
}

TEST(Jpeg2000, RatesAreMetFromBelow) {
    const PlanarPicture p = picture({.width = 320, .height = 240, .components = 3});
    for (const bool reversible : {true, false})
        for (const double rate : {0.25, 0.5, 1.0, 2.0}) {
            EncodeOptions o;
            o.reversible = reversible;
            o.rates = {rate};
            o.jp2 = false;
            const double target = rate * 320 * 240 / 8;
            const auto size = double(encode(p, o).size());
            EXPECT_LE(size, target);
            EXPECT_GT(size, 0.94 * target) << rate;
        }
}

TEST(Jpeg2000, EachLayerImprovesThePicture) {
    const PlanarPicture p = picture({.width = 160, .height = 120, .components = 3});
    EncodeOptions o;
    o.reversible = false;
    o.rates = {0.2, 0.5, 1, 3};
    const Bytes file = encode(p, o);
    double last = 0;
    for (int n = 1; n <= 4; ++n) {
        const double now = psnr(p, decoded(file, {.layers = n}));
        EXPECT_GT(now, last + 0.2) << n;
        last = now;
    }
    EXPECT_EQ(psnr(p, decoded(file)), last);
}

TEST(Jpeg2000, QualityTargetsAreMet) {
    const PlanarPicture p = picture({.width = 160, .height = 120, .components = 3});
    for (const double target : {30.0, 36.0, 42.0, 52.0}) {
        EncodeOptions o;
        o.reversible = false;
        o.psnrs = {target};
        EXPECT_NEAR(psnr(p, decoded(encode(p, o))), target, 0.1);
    }
}

// Rows that pass by wait in a file for what a picture in memory is asked at once.
TEST(Jpeg2000, QualityTargetsMakeTheSameFileOfRowsThatPassBy) {
    for (const int maxval : {255, 4095, 1000}) {
        Picture p(shapeOf(90, 70, 3, maxval));
        Rng rng(3);
        for (int y = 0; y < 70; ++y)
            for (int x = 0; x < 270; ++x) p.set(x, y, unsigned((x * x / 50 + y * 3 + rng.range(0, 9)) * maxval / 2000));
        EncodeOptions o;
        o.reversible = false;
        o.psnrs = {32, 40};
        o.samplingX = 2;
        o.x0 = 7;
        o.y0 = 9;
        o.tileWidth = maxval == 255 ? 0 : 40;
        PictureSource rows(p);
        MemorySink file;
        const std::size_t told = encode(rows, file, o).size();
        EXPECT_EQ(told, std::size_t(maxval == 1000)); // 1023 it is
        EXPECT_TRUE(file.bytes == encode(p, o));
        const Picture q = decode(file.bytes).picture;
        EXPECT_EQ(q.shape().maxval, maxval == 1000 ? 1023 : maxval);
    }
}

TEST(Jpeg2000, ReducedResolutions) {
    const PlanarPicture p = picture({.width = 61, .height = 47, .components = 2, .x0 = 3, .y0 = 5});
    EncodeOptions o;
    o.tileWidth = 25;
    o.tileHeight = 31;
    o.levels = 3;
    const Bytes file = encode(p, o);
    for (int n = 1; n <= 4; ++n) {
        const PlanarPicture q = decoded(file, {.reduce = n});
        const auto up = [n](std::uint32_t a) { return int((a + (1u << n) - 1) >> n); };
        EXPECT_EQ(q.components[0].width, up(64) - up(3));
        EXPECT_EQ(q.components[0].height, up(52) - up(5));
        double mean = 0, whole = 0;
        for (const int v : q.components[0].samples) mean += v;
        for (const int v : p.components[0].samples) whole += v;
        EXPECT_NEAR(mean / double(q.components[0].samples.size()), whole / double(p.components[0].samples.size()), 12);
    }
}

TEST(Jpeg2000, ThreadsDoNotChangeAByte) {
    const PlanarPicture p = picture({.width = 150, .height = 130, .components = 3});
    for (const bool reversible : {true, false}) {
        EncodeOptions o;
        o.reversible = reversible;
        o.rates = {0.5, 1.5};
        o.blockWidth = o.blockHeight = 16;
        o.threads = 1;
        const Bytes one = encode(p, o);
        const PlanarPicture back = decoded(one, {.threads = 1});
        for (const int threads : {2, 3, 8}) {
            o.threads = threads;
            EXPECT_EQ(encode(p, o), one) << threads;
            expectSame(decoded(one, {.threads = threads}), back);
        }
    }
}

// ---- marker segments that the encoder does not write

EncodeOptions bare() {
    EncodeOptions o;
    o.jp2 = false;
    o.colourTransform = false;
    return o;
}

TEST(Jpeg2000, AComponentsOwnSegmentsCountMore) {
    const PlanarPicture p = picture({.components = 3});
    EncodeOptions o = bare();
    o.levels = 3;
    o.style = kStyleBypass | kStyleSegmentation;
    Bytes file = encode(p, o);
    const std::size_t cod = find(file, {0xFF, 0x52}), qcd = find(file, {0xFF, 0x5C});
    const Bytes style(file.begin() + long(cod) + 9, file.begin() + long(cod) + 14);
    const Bytes steps(file.begin() + long(qcd) + 4, file.begin() + long(qcd) + 4 + 11);
    file[cod + 9] = 1; // what all components share is wrong for each of them
    file[cod + 12] = 0;
    file[qcd + 5] = 0x08;
    for (std::uint8_t c = 0; c < 3; ++c) {
        Bytes coc{0xFF, 0x53, 0, 9, c, 0}, qcc{0xFF, 0x5D, 0, 14, c};
        coc.insert(coc.end(), style.begin(), style.end());
        qcc.insert(qcc.end(), steps.begin(), steps.end());
        // Ahead of COD, behind QCD, and in the tile's header: in each place it counts.
        if (c == 0)
            insert(file, find(file, {0xFF, 0x52}), coc);
        else
            insert(file, find(file, {0xFF, 0x90}), coc);
        if (c < 2)
            insert(file, find(file, {0xFF, 0x90}), qcc);
        else {
            const std::size_t sot = find(file, {0xFF, 0x90});
            insert(file, sot + 12, qcc);
            file[sot + 9] = std::uint8_t(file[sot + 9] + qcc.size());
            if (file[sot + 9] < qcc.size()) ++file[sot + 8];
        }
    }
    const PlanarPicture back = decoded(file);
    expectSame(p, back);
}

// A region only comes earlier: once all is there, every number is what it would have been without.
TEST(Jpeg2000, RegionOfInterestLeavesTheNumbersAsTheyAre) {
    for (const bool reversible : {true, false})
        for (const int depth : {7, 8, 12})
            for (const Window& w : {Window{1, 1, 5, 5}, {10, 12, 8, 9}, {0, 0, 60, 44}}) {
                SCOPED_TRACE(testing::Message() << reversible << ' ' << depth << ' ' << w.x);
                PlanarPicture p = picture({.components = 3, .depth = depth, .x0 = 3});
                Rng rng(77);
                for (std::int32_t& v : p.components[1].samples) v = int(rng.range(0, p.components[1].largest()));
                EncodeOptions o;
                o.reversible = reversible;
                const PlanarPicture plain = decoded(encode(p, o));
                o.region = w;
                expectSame(decoded(encode(p, o)), plain);
            }
}

TEST(Jpeg2000, RegionOfInterestByMaxshift) {
    // Samples of 8 bits, which the decoder is to find, stored as coefficients of 16: those of the region 8 planes up.
    PlanarPicture stored = picture({.width = 20, .height = 16, .depth = 16, .isSigned = true});
    PlanarPicture expected = picture({.width = 20, .height = 16, .depth = 8, .isSigned = true});
    auto& s = stored.components[0].samples;
    auto& e = expected.components[0].samples;
    for (std::size_t i = 0; i < s.size(); ++i) {
        e[i] = int(i * 37 % 255) - 127;
        s[i] = i % 20 < 9 ? e[i] * 256 : e[i];
    }
    EncodeOptions o = bare();
    o.levels = 0;
    Bytes file = encode(stored, o);
    file[find(file, {0xFF, 0x51}) + 40] = 0x80 | 7;     // 8 bits, signed
    file[find(file, {0xFF, 0x5C}) + 5] = (16 - 8) << 3; // planes without the shift
    insert(file, find(file, {0xFF, 0x90}), {0xFF, 0x5E, 0, 5, 0, 0, 8});
    expectSame(expected, decoded(file));
}

TEST(Jpeg2000, ProgressionChanges) {
    const PlanarPicture p = picture({.components = 3});
    EncodeOptions o = bare();
    o.levels = 4;
    o.rates = {1, 3, everything};
    o.changes = {
        {0, 0, 1, 5, 3, Progression::CPRL}, {0, 0, 3, 3, 2, Progression::RLCP}, {0, 0, 3, 5, 3, Progression::PCRL}};
    const PlanarPicture back = decoded(encode(p, o));
    expectSame(p, back);
}

TEST(Jpeg2000, PalettesAndChannelDefinitions) {
    PlanarPicture p = picture({.width = 6, .height = 1, .components = 2, .depth = 2});
    p.components[0].samples = {0, 1, 2, 3, 1, 0};
    p.components[1].samples = {3, 2, 1, 0, 3, 2};
    Bytes file = encode(p, {.colourTransform = false});
    // Four entries of three colours; blue first, then opacity from the second component, green, red.
    const Bytes pclr{0, 0, 0, 8 + 6 + 12, 'p', 'c', 'l', 'r', 0,  4,  3,  7,  7,
                     7, 1, 2, 3,          11,  12,  13,  21,  22, 23, 31, 32, 33};
    const Bytes cmap{0, 0, 0, 24, 'c', 'm', 'a', 'p', 0, 0, 1, 2, 0, 1, 0, 0, 0, 0, 1, 1, 0, 0, 1, 0};
    const Bytes cdef{0, 0, 0, 34, 'c', 'd', 'e', 'f', 0, 4, 0, 0, 0, 0, 0, 3, 0,
                     1, 0, 1, 0,  0,   0,   2,   0,   0, 0, 2, 0, 3, 0, 0, 0, 1};
    const std::size_t header = find(file, {'j', 'p', '2', 'h'}) - 4, codestream = find(file, {'j', 'p', '2', 'c'}) - 4;
    for (const Bytes& box : {cdef, cmap, pclr}) insert(file, codestream, box);
    file[header + 3] = std::uint8_t(file[header + 3] + 84);
    const PlanarPicture back = decoded(file);
    ASSERT_EQ(back.components.size(), 4u);
    EXPECT_EQ(back.alpha, 3);
    EXPECT_EQ(back.components[0].samples, (std::vector<std::int32_t>{1, 11, 21, 31, 11, 1}));
    EXPECT_EQ(back.components[1].samples, (std::vector<std::int32_t>{2, 12, 22, 32, 12, 2}));
    EXPECT_EQ(back.components[2].samples, (std::vector<std::int32_t>{3, 13, 23, 33, 13, 3}));
    EXPECT_EQ(back.components[3].samples, p.components[1].samples);
    EXPECT_EQ(back.components[0].depth, 8);
}

TEST(Jpeg2000, OpacityIsToldInAJp2File) {
    PlanarPicture p = picture({.components = 4});
    p.alpha = 3;
    const PlanarPicture back = decoded(encode(p));
    EXPECT_EQ(back.alpha, 3);
    EXPECT_EQ(back.colour, ColourSpace::sRgb);
    expectSame(p, back);
}

TEST(Jpeg2000, DepthsThatDiffer) {
    PlanarPicture p = picture({.components = 3});
    const PlanarPicture deep = picture({.components = 1, .depth = 12, .isSigned = true});
    p.components[1] = deep.components[0];
    expectSame(p, decoded(encode(p)));
    EXPECT_NE(describe(encode(p)).find("12 bits signed"), std::string::npos);
}

TEST(Jpeg2000, WrongPicturesAndOptionsAreRefused) {
    const PlanarPicture p = picture({});
    const auto refused = [&](auto change) {
        EncodeOptions o;
        PlanarPicture q = p;
        change(o, q);
        EXPECT_THROW(encode(q, o), Error);
    };
    refused([](EncodeOptions& o, PlanarPicture&) { o.levels = 33; });
    refused([](EncodeOptions& o, PlanarPicture&) { o.blockWidth = 48; });
    refused([](EncodeOptions& o, PlanarPicture&) { o.blockWidth = 128; });
    refused([](EncodeOptions& o, PlanarPicture&) { o.precincts = {{1, 64}}; });
    refused([](EncodeOptions& o, PlanarPicture&) { o.tileX = 1; });
    refused([](EncodeOptions& o, PlanarPicture&) { o.baseStep = 0.01; });
    refused([](EncodeOptions&, PlanarPicture& q) { q.components[0].samples[5] = 256; });
    refused([](EncodeOptions&, PlanarPicture& q) { q.components[0].samples.pop_back(); });
    refused([](EncodeOptions&, PlanarPicture& q) { q.components[0].depth = 17; });
    refused([](EncodeOptions&, PlanarPicture& q) { q.components.clear(); });
    refused([](EncodeOptions&, PlanarPicture& q) { q.x1 = q.x0; });
}

// ---- broken files

constexpr std::size_t smallLimit = 1 << 16;

// Decodes or throws an Error; the shape of what comes out is that of the header.
void survive(const Bytes& file) {
    try {
        const PlanarPicture p = decodePlanes(file, {.maxPixels = smallLimit, .threads = 1}).picture;
        for (const Component& c : p.components)
            ASSERT_EQ(c.samples.size(), std::size_t(c.width) * std::size_t(c.height));
    } catch (const Error& e) {
        EXPECT_STRNE(e.what(), "");
        EXPECT_EQ(std::string(e.what()).find('\n'), std::string::npos);
    }
}

Bytes smallFile(PackedHeaders packed) {
    EncodeOptions o;
    o.levels = 2;
    o.tileWidth = o.tileHeight = 24;
    o.rates = {4, everything};
    o.packedHeaders = packed;
    o.sop = o.eph = true;
    o.style = kStyleBypass | kStylePredictable | kStyleSegmentation;
    return encode(picture({.width = 31, .height = 27, .components = 3}), o);
}

TEST(Jpeg2000, EveryLengthOfAFile) {
    for (const PackedHeaders packed : {PackedHeaders::none, PackedHeaders::main, PackedHeaders::tile}) {
        const Bytes file = smallFile(packed);
        for (std::size_t n = 0; n < file.size(); ++n) survive(Bytes(file.begin(), file.begin() + long(n)));
    }
}

TEST(Jpeg2000, TheBestOfATruncatedFile) {
    const PlanarPicture p = picture({.width = 120, .height = 100, .components = 3});
    EncodeOptions o;
    o.rates = {0.5, 1, 2, 4, everything};
    const Bytes file = encode(p, o);
    double last = 0;
    for (const std::size_t part : {8, 4, 2}) {
        const auto [back, warnings] = decodePlanes(ByteView(file).first(file.size() / part));
        EXPECT_FALSE(warnings.empty());
        const double now = psnr(p, back);
        EXPECT_GT(now, last);
        last = now;
    }
    EXPECT_GT(last, 28);
}

TEST(Jpeg2000, WrongBytes) {
    for (const PackedHeaders packed : {PackedHeaders::none, PackedHeaders::main, PackedHeaders::tile}) {
        const Bytes file = smallFile(packed);
        Rng rng(11);
        for (int i = 0; i < 1500; ++i) {
            Bytes broken = file;
            // Half of the changes are in the headers.
            for (int n = int(rng.range(1, 3)); n > 0; --n)
                broken[std::size_t(rng.range(0, rng.oneIn(2) ? 250 : std::int64_t(file.size()) - 1))] =
                    std::uint8_t(rng.range(0, 255));
            survive(broken);
        }
    }
}

TEST(Jpeg2000, AbsurdSizesAreRefused) {
    EncodeOptions o = bare();
    const Bytes file = encode(picture({}), o);
    const std::size_t siz = find(file, {0xFF, 0x51});
    const auto with = [&](std::size_t at, std::initializer_list<std::uint8_t> bytes) {
        Bytes b = file;
        std::copy(bytes.begin(), bytes.end(), b.begin() + long(siz + at));
        return b;
    };
    const std::initializer_list<std::uint8_t> huge{0x7F, 0xFF, 0xFF, 0xFF}, zero{0, 0, 0, 0};
    EXPECT_THROW(decoded(with(6, huge)), Error); // width: more than the limit with a height of 44
    EXPECT_THROW(decoded(with(6, {0xFF, 0xFF, 0xFF, 0xFF})), Error);
    EXPECT_THROW(decoded(with(6, zero)), Error);
    EXPECT_THROW(decoded(with(14, huge)), Error);   // origin behind the end
    EXPECT_THROW(decoded(with(22, zero)), Error);   // tiles without a width
    EXPECT_THROW(decoded(with(30, huge)), Error);   // grid of tiles behind the image
    EXPECT_THROW(decoded(with(38, {0, 0})), Error); // no components
    EXPECT_THROW(decoded(with(38, {0xFF, 0xFF})), Error);
    EXPECT_THROW(decoded(with(40, {37})), Error); // 38 bits
    EXPECT_THROW(decoded(with(41, {0})), Error);  // a sampling of 0
    EXPECT_THROW(decoded(file, {.maxPixels = 60 * 44 - 1}), Error);
    EXPECT_NO_THROW(decoded(file, {.maxPixels = 60 * 44}));
    // A tile for each sample is allowed, and most of them are missing.
    EXPECT_FALSE(decodePlanes(with(22, {0, 0, 0, 1, 0, 0, 0, 1})).warnings.empty());
}

// ---- the same bytes from every build

TEST(Jpeg2000, DigestsOfFiles) {
    const PlanarPicture p = picture({.width = 130, .height = 90, .components = 3, .x0 = 3, .y0 = 1});
    EncodeOptions o;
    const Bytes lossless = encode(p, o);
    o.reversible = false;
    o.rates = {0.5, 1.5};
    const Bytes lossy = encode(p, o);
    Digest a, b, c;
    a.add(lossless.data(), lossless.size());
    b.add(lossy.data(), lossy.size());
    for (const Component& k : decoded(lossy).components)
        c.add(k.samples.data(), k.samples.size() * sizeof(std::int32_t));
    EXPECT_EQ(a.get(), 17304542299584221200u);
    EXPECT_EQ(b.get(), 15129323227657476530u);
    EXPECT_EQ(c.get(), 10202929680073956777u);
}

} // namespace
