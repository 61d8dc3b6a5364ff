// Parts of JPEG2000 files: windows, single components, tiles that are not there or not looked at.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/codestream.h"
#include "tests/codecs/support/jpeg2000pictures.h"

namespace {

using namespace jpeg2000test;

std::int64_t up(std::int64_t a, std::int64_t b) { return (a + b - 1) / b; }

// A window of a picture that has been decoded with `reduce` resolutions left out.
PlanarPicture cut(const PlanarPicture& p, const Window& w, int reduce) {
    PlanarPicture out = p;
    for (Component& c : out.components) {
        const auto place = [&](std::int64_t v, int d) { return up(up(v, d), std::int64_t(1) << reduce); };
        const std::int64_t left = place(p.x0 + w.x, c.dx) - place(p.x0, c.dx),
                           right = place(p.x0 + w.x + w.width, c.dx) - place(p.x0, c.dx);
        const std::int64_t top = place(p.y0 + w.y, c.dy) - place(p.y0, c.dy),
                           bottom = place(p.y0 + w.y + w.height, c.dy) - place(p.y0, c.dy);
        std::vector<std::int32_t> samples;
        const std::size_t rows = right > left && bottom > top ? std::size_t(bottom - top) : 0;
        for (std::size_t y = 0; y < rows; ++y) {
            const auto row = c.samples.begin() + (top + std::ptrdiff_t(y)) * c.width;
            samples.insert(samples.end(), row + left, row + right);
        }
        c.samples = samples;
        c.width = rows > 0 ? int(right - left) : 0;
        c.height = int(rows);
    }
    return out;
}

EncodeOptions someOptions(Rng& rng, const Wanted& s) {
    EncodeOptions o;
    o.reversible = rng.oneIn(2);
    o.levels = int(rng.range(0, 5));
    o.blockWidth = 4 << rng.range(0, 3);
    o.blockHeight = 4 << rng.range(0, 3);
    o.progression = Progression(rng.range(0, 4));
    o.colourTransform = rng.oneIn(2);
    if (rng.oneIn(2)) {
        o.tileX = std::uint32_t(rng.range(0, s.x0));
        o.tileY = std::uint32_t(rng.range(0, s.y0));
        o.tileWidth = s.x0 - o.tileX + std::uint32_t(rng.range(15, 70));
        o.tileHeight = s.y0 - o.tileY + std::uint32_t(rng.range(15, 70));
    }
    if (rng.oneIn(2)) o.precincts = {{8 << rng.range(0, 4), 8 << rng.range(0, 4)}};
    if (rng.oneIn(3)) o.rates = {1, 3, everything};
    o.tileLengths = rng.oneIn(2);
    return o;
}

TEST(Jpeg2000Parts, WindowsComeOutAsOfTheWhole) {
    for (std::uint64_t seed = 1; seed <= 150; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Wanted s;
        s.width = int(rng.range(1, 150));
        s.height = int(rng.range(1, 150));
        s.components = int(rng.range(1, 4));
        s.depth = int(rng.range(1, 16));
        s.x0 = std::uint32_t(rng.range(0, 30));
        s.y0 = std::uint32_t(rng.range(0, 30));
        if (s.width > 4 && s.height > 4 && rng.oneIn(3)) {
            s.dx = int(rng.range(1, 3));
            s.dy = int(rng.range(1, 3));
        }
        const Bytes file = encode(picture(s, seed), someOptions(rng, s));
        const int reduce = int(rng.range(0, 3));
        const PlanarPicture whole = decoded(file, {.reduce = reduce});
        for (int i = 0; i < 4; ++i) {
            Window w;
            w.x = rng.range(0, s.width - 1);
            w.y = rng.range(0, s.height - 1);
            w.width = rng.range(1, s.width - w.x);
            w.height = rng.range(1, s.height - w.y);
            SCOPED_TRACE(testing::Message() << w.x << ',' << w.y << ' ' << w.width << " x " << w.height);
            const DecodeOptions options{.reduce = reduce, .window = w, .threads = int(rng.range(1, 3))};
            expectSame(cut(whole, w, reduce), decoded(file, options));
        }
    }
}

// Bytes beyond those that a window needs may be anything.
TEST(Jpeg2000Parts, AWindowReadsNothingElse) {
    const PlanarPicture p = picture({.width = 256, .height = 256});
    EncodeOptions o;
    o.levels = 2;
    o.style = kStyleSegmentation;
    o.blockWidth = o.blockHeight = 16;
    o.jp2 = false;
    Bytes file = encode(p, o);
    // The highest resolution comes last, its blocks row by row: the last eighth is HH of the picture's lower half.
    for (std::size_t i = file.size() * 7 / 8; i < file.size() - 2; ++i) file[i] = std::uint8_t(i * 77);
    EXPECT_FALSE(decodePlanes(file).warnings.empty());
    const Window w{20, 10, 100, 40};
    expectSame(cut(p, w, 0), decoded(file, {.window = w}));
}

TEST(Jpeg2000Parts, WindowsBesideThePictureAreRefused) {
    const Bytes file = encode(picture({.width = 60, .height = 44}));
    for (const Window& w : {Window{60, 0, 1, 1}, Window{0, 44, 1, 1}, Window{59, 0, 2, 1}, Window{0, 43, 1, 2},
                            Window{-1, 0, 2, 2}, Window{0, 0, 0, 1}, Window{0, 0, 1, 0}, Window{1, 1, 1 << 30, 1}})
        EXPECT_THROW(decodePlanes(file, {.window = w}), Error) << w.x << ' ' << w.y;
    EXPECT_NO_THROW(decodePlanes(file, {.window = Window{59, 43, 1, 1}}));
}

// ---- tile-parts

constexpr std::uint8_t kSot = 0x90;

// Where the SOT segments of a codestream stand.
std::vector<std::size_t> tileParts(const Bytes& file) {
    std::vector<std::size_t> places;
    std::size_t at = find(file, {0xFF, kSot, 0, 10});
    while (file[at] == 0xFF && file[at + 1] == kSot) {
        places.push_back(at);
        at += std::size_t(file[at + 6]) << 24 | std::size_t(file[at + 7]) << 16 | std::size_t(file[at + 8]) << 8 |
              file[at + 9];
    }
    return places;
}

EncodeOptions tiled(bool parts = false) {
    EncodeOptions o;
    o.tileWidth = o.tileHeight = 50;
    o.jp2 = false;
    o.tilePartsByResolution = parts;
    if (parts) o.progression = Progression::RLCP;
    return o;
}

TEST(Jpeg2000Parts, TlmLeadsToTheTilesOfAWindow) {
    const PlanarPicture p = picture({.width = 200, .height = 150, .components = 3});
    const Window w{120, 60, 20, 30}; // within tile 6
    for (const bool parts : {false, true}) {
        const Bytes file = encode(p, tiled(parts));
        const std::vector<std::size_t> places = tileParts(file);
        ASSERT_EQ(places.size(), parts ? 12u * 6 : 12u);
        Bytes broken = file;
        for (const std::size_t at : places)
            if (broken[at + 5] != 6 && at != places[0])
                broken[at + 1] = 0; // no SOT any more; the first ends the header
        expectSame(cut(p, w, 0), decoded(broken, {.window = w}));
        EXPECT_FALSE(decodePlanes(broken, {.window = Window{0, 0, 60, 60}}).warnings.empty());
    }
}

TEST(Jpeg2000Parts, WithoutTlmTileByTile) {
    const PlanarPicture p = picture({.width = 200, .height = 150, .components = 3});
    const Window w{120, 60, 20, 30};
    EncodeOptions o = tiled();
    o.tileLengths = false;
    const Bytes file = encode(p, o);
    EXPECT_GT(find(file, {0xFF, 0x55}), tileParts(file)[0]); // none in the header
    expectSame(cut(p, w, 0), decoded(file, {.window = w}));
    // What is wrong within other tiles does not matter.
    Bytes broken = file;
    const std::vector<std::size_t> places = tileParts(file);
    broken[places[0] + 12] = 0;
    expectSame(cut(p, w, 0), decoded(broken, {.window = w}));
}

// TLM segments that do not fit count for nothing.
TEST(Jpeg2000Parts, WrongTlmIsNotBelieved) {
    const PlanarPicture p = picture({.width = 200, .height = 150, .components = 3});
    const Window w{120, 60, 20, 30};
    const Bytes file = encode(p, tiled());
    const std::size_t tlm = find(file, {0xFF, 0x55});
    Rng rng(3);
    for (int i = 0; i < 200; ++i) {
        Bytes broken = file;
        broken[tlm + std::size_t(rng.range(4, 6 + 6 * 12 - 1))] ^= std::uint8_t(1 << rng.range(0, 7));
        expectSame(cut(p, w, 0), decoded(broken, {.window = w}));
    }
}

// Where components are subsampled, tiles may hold no samples; they need not be there.
TEST(Jpeg2000Parts, EmptyTilesAreNotMissing) {
    PlanarPicture p = picture({.width = 9, .height = 7, .components = 1});
    Component& c = p.components[0];
    c.dx = c.dy = 3;
    c.width = c.height = 3;
    c.samples = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    EncodeOptions o;
    o.tileWidth = o.tileHeight = 2;
    o.jp2 = false;
    o.tileLengths = false;
    const Bytes file = encode(p, o);
    expectSame(p, decoded(file));
    const std::vector<std::size_t> places = tileParts(file);
    ASSERT_EQ(places.size(), 20u);
    Bytes less(file.begin(), file.begin() + long(places[0]));
    int left = 0;
    for (std::size_t t = 0; t < places.size(); ++t) {
        const std::size_t end = t + 1 < places.size() ? places[t + 1] : file.size() - 2;
        // Samples stand at 0, 3 and 6, in columns of tiles 0, 1 and 3 and rows 0, 1 and 3.
        if (t % 5 == 2 || t % 5 == 4 || t / 5 == 2) continue;
        less.insert(less.end(), file.begin() + long(places[t]), file.begin() + long(end));
        ++left;
    }
    less.insert(less.end(), {0xFF, 0xD9});
    EXPECT_EQ(left, 9);
    expectSame(p, decoded(less));
    // One that holds samples is missed.
    Bytes fewer = less;
    fewer.erase(fewer.begin() + long(places[0]), fewer.begin() + long(places[1]));
    EXPECT_FALSE(decodePlanes(fewer).warnings.empty());
}

// ---- components

TEST(Jpeg2000Parts, OneComponentIsThatOfTheWhole) {
    for (const bool reversible : {true, false})
        for (const int components : {1, 3, 4}) {
            const PlanarPicture p = picture({.width = 90, .height = 70, .components = components, .x0 = 3, .y0 = 5});
            EncodeOptions o;
            o.reversible = reversible;
            o.tileWidth = o.tileHeight = 64;
            const Bytes file = encode(p, o);
            const PlanarPicture whole = decoded(file);
            for (int c = 0; c < components; ++c) {
                const PlanarPicture one = decoded(file, {.component = c});
                ASSERT_EQ(one.components.size(), 1u);
                EXPECT_EQ(one.components[0].samples, whole.components[std::size_t(c)].samples);
                const Picture rows = decode(file, {.component = c}).picture;
                EXPECT_EQ(rows.shape().channels, 1);
                EXPECT_EQ(int(rows.at(17, 23)), whole.components[std::size_t(c)].samples[23 * 90 + 17]);
            }
            EXPECT_THROW(decodePlanes(file, {.component = components}), Error);
        }
}

TEST(Jpeg2000Parts, PixelsCountNotSamples) {
    const Bytes file = encode(picture({.width = 60, .height = 44, .components = 4}));
    EXPECT_NO_THROW(decodePlanes(file, {.maxPixels = 60 * 44}));
    EXPECT_THROW(decodePlanes(file, {.maxPixels = 60 * 44 - 1}), Error);
    EXPECT_NO_THROW(decodePlanes(file, {.window = Window{1, 1, 10, 10}, .maxPixels = 100}));
    EXPECT_THROW(decodePlanes(file, {.window = Window{1, 1, 10, 10}, .maxPixels = 99}), Error);
    // Many components do not slip through.
    const Bytes many = encode(picture({.width = 60, .height = 44, .components = 9}));
    EXPECT_THROW(decodePlanes(many, {.maxPixels = 60 * 44}), Error);
}

} // namespace
