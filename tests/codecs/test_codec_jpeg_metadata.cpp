// What travels beside the samples of a JPEG file: through the encoder, the decoder and the transcoder.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/segmentreader.h"
#include "codecs/picture/exif.h"
#include "tests/codecs/support/damage.h"
#include "tests/codecs/support/jpeg.h"
#include "tests/support/rng.h"

#include <gtest/gtest.h>

namespace {

using codecs::Metadata;
using codecs::Resolution;
using jpeg::EncodeOptions;
using jpeg::TranscodeOptions;

Bytes noise(int width, int height, int channels) {
    Rng rng(5);
    return rng.vec<std::uint8_t>(std::size_t(width) * std::size_t(height) * std::size_t(channels), 0, 255);
}

} // namespace

namespace {

// Metadata of every kind, in sizes that need one segment or several.
Metadata someMetadata(std::size_t profileBytes) {
    Rng rng(9);
    Metadata m;
    m.icc = rng.vec<std::uint8_t>(profileBytes, 0, 255);
    codecs::setOrientation(m, 6);
    m.xmp = {'<', 'x', '>'};
    m.resolution = Resolution{300, 150, Resolution::Unit::inch};
    return m;
}

} // namespace

TEST(JpegMetadata, MetadataThereAndBack) {
    EncodeOptions progressive, lossless;
    progressive.progressive = true;
    lossless.lossless = 1;
    for (int channels : {1, 3, 4})
        for (const EncodeOptions& o : {EncodeOptions(), progressive, lossless})
            for (std::size_t profile : {1u, 65519u, 65520u, 200000u}) {
                if (o.lossless && channels == 3) continue; // has no place for the resolution
                codecs::Picture source = picture(noise(16, 9, channels), 16, 9, channels);
                source.metadata = someMetadata(profile);
                const Bytes file = jpeg::encode(source, o);
                const jpeg::Decoded back = jpeg::decode(file);
                EXPECT_TRUE(back.warnings.empty());
                EXPECT_EQ(back.picture.metadata, source.metadata);
                if (o.lossless) continue;
                TranscodeOptions t;
                EXPECT_EQ(jpeg::decode(transcode(file, t).file).picture.metadata, source.metadata);
                t.strip = true;
                const jpeg::Decoded bare = jpeg::decode(transcode(file, t).file);
                EXPECT_TRUE(bare.picture.metadata.empty());
                EXPECT_EQ(seen(bare.picture).pixels, seen(back.picture).pixels) << "the colours are still known";
            }
}

TEST(JpegMetadata, WhatNoFileHolds) {
    const auto warnings = [](const Metadata& m, const EncodeOptions& o) {
        codecs::Picture source = picture(noise(8, 8, 3), 8, 8, 3);
        source.metadata = m;
        codecs::PictureSource rows(source);
        codecs::MemorySink file;
        const jpeg::Warnings told = jpeg::encode(rows, file, o);
        EXPECT_TRUE(jpeg::decode(file.bytes).warnings.empty());
        return told;
    };
    EncodeOptions rgb;
    rgb.rgb = true;
    Metadata m = someMetadata(10);
    EXPECT_TRUE(warnings(m, {}).empty());
    EXPECT_EQ(warnings(m, rgb).size(), 1u);
    m.exif.resize(65527);
    m.xmp.resize(65504);
    EXPECT_TRUE(warnings(m, {}).empty());
    m.exif.resize(65528);
    m.xmp.resize(65505);
    EXPECT_EQ(warnings(m, {}).size(), 2u);
    m.icc.resize(255 * 65519 + 1);
    EXPECT_EQ(warnings(m, {}).size(), 3u);
    Metadata far;
    far.resolution = Resolution{1e7, 1e7, Resolution::Unit::inch};
    EXPECT_EQ(warnings(far, {}).size(), 1u);
    far.resolution = Resolution{2835, 2835, Resolution::Unit::metre};
    EXPECT_TRUE(warnings(far, {}).empty());
}

TEST(JpegMetadata, ResolutionsInWholeNumbers) {
    const auto through = [](const Resolution& r) {
        codecs::Picture source = picture(noise(8, 8, 1), 8, 8, 1);
        source.metadata.resolution = r;
        return jpeg::decode(jpeg::encode(source)).picture.metadata.resolution;
    };
    using Unit = Resolution::Unit;
    EXPECT_EQ(through({72, 72, Unit::inch}), (Resolution{72, 72, Unit::inch}));
    EXPECT_EQ(through({118, 119, Unit::centimetre}), (Resolution{118, 119, Unit::centimetre}));
    EXPECT_EQ(through({118.11, 59.06, Unit::centimetre}), (Resolution{300, 150, Unit::inch}));
    EXPECT_EQ(through({11811, 11811, Unit::metre}), (Resolution{300, 300, Unit::inch}));
    EXPECT_EQ(through({4, 3, Unit::none}), (Resolution{4, 3, Unit::none}));
    EXPECT_EQ(through({1.5, 1, Unit::none}), (Resolution{15, 10, Unit::none}));
    EXPECT_EQ(through({1, 1, Unit::none}), std::nullopt) << "which is what a file says that knows nothing";
}

// A profile may come in any order; one with a part missing is none.
TEST(JpegMetadata, PartsOfAProfile) {
    codecs::Picture source = picture(noise(8, 8, 3), 8, 8, 3);
    source.metadata = someMetadata(150000);
    const Bytes file = jpeg::encode(source);
    std::vector<std::pair<std::size_t, std::size_t>> parts;
    for (std::size_t at = 2; file[at + 1] != jpeg::SOS;) {
        const std::size_t next = at + 2 + std::size_t(file[at + 2] << 8 | file[at + 3]);
        if (file[at + 1] == jpeg::APP2) parts.emplace_back(at, next);
        at = next;
    }
    ASSERT_EQ(parts.size(), 3u);
    const auto put = [&](std::initializer_list<std::size_t> order) {
        Bytes out(file.begin(), file.begin() + std::ptrdiff_t(parts[0].first));
        for (std::size_t i : order)
            out.insert(out.end(), file.begin() + std::ptrdiff_t(parts[i].first),
                       file.begin() + std::ptrdiff_t(parts[i].second));
        out.insert(out.end(), file.begin() + std::ptrdiff_t(parts[2].second), file.end());
        return jpeg::decode(out);
    };
    EXPECT_EQ(put({2, 0, 1}).picture.metadata.icc, source.metadata.icc);
    EXPECT_TRUE(put({2, 0, 1}).warnings.empty());
    const jpeg::Decoded without = put({2, 0});
    EXPECT_TRUE(without.picture.metadata.icc.empty());
    ASSERT_EQ(without.warnings.size(), 1u);
    EXPECT_NE(without.warnings[0].find("part 2 of the colour profile"), std::string::npos);
}

// EXIF of one directory in either byte order.
namespace {

struct Tag {
    unsigned tag, type, count, value;
};
Bytes exifOf(bool little, const std::vector<Tag>& tags, const std::vector<unsigned>& behind = {}) {
    Bytes out;
    const auto put = [&](unsigned v, int size) {
        for (int i = 0; i < size; ++i) out.push_back(std::uint8_t(v >> 8 * (little ? i : size - 1 - i)));
    };
    out.assign(2, little ? 'I' : 'M');
    put(42, 2);
    put(8, 4);
    put(unsigned(tags.size()), 2);
    for (const Tag& t : tags) {
        put(t.tag, 2);
        put(t.type, 2);
        put(t.count, 4);
        if (t.type == 3 && t.count == 1) { // a number of 16 bits stands at the beginning of its four bytes
            put(t.value, 2);
            put(0, 2);
        } else {
            put(t.value, 4);
        }
    }
    put(0, 4);
    for (unsigned v : behind) put(v, 4);
    return out;
}
Metadata through(const Bytes& exif, const TranscodeOptions& how) {
    codecs::Picture source = picture(noise(16, 16, 1), 16, 16, 1);
    source.metadata.exif = exif;
    return jpeg::decode(transcode(jpeg::encode(source), how).file).picture.metadata;
}

} // namespace

TEST(JpegMetadata, ResolutionOfACamera) {
    constexpr unsigned kShort = 3, kFraction = 5;
    for (bool little : {true, false}) {
        SCOPED_TRACE(little);
        // Three entries: fractions stand from byte 50 on.
        const auto resolution = [&](unsigned across, unsigned down, unsigned below, unsigned unit) {
            const Bytes exif =
                exifOf(little, {{282, kFraction, 1, 50}, {283, kFraction, 1, 58}, {296, kShort, 1, unit}},
                       {across, below, down, below});
            return through(exif, {}).resolution;
        };
        using Unit = Resolution::Unit;
        EXPECT_EQ(resolution(300, 150, 1, 2), (Resolution{300, 150, Unit::inch}));
        EXPECT_EQ(resolution(1181, 1181, 10, 3), (Resolution{118.1, 118.1, Unit::centimetre}));
        EXPECT_EQ(resolution(4, 3, 1, 1), (Resolution{4, 3, Unit::none}));
        EXPECT_EQ(resolution(0x80000000, 0xFFFFFFFE, 2, 2), (Resolution{0x40000000, 0x7FFFFFFF, Unit::inch}));
        EXPECT_EQ(resolution(3, 3, 1, 1), std::nullopt);
        EXPECT_EQ(resolution(300, 300, 0, 2), std::nullopt);
        EXPECT_EQ(resolution(0, 300, 1, 2), std::nullopt);
        EXPECT_EQ(resolution(300, 300, 1, 4), std::nullopt);
        EXPECT_EQ(through(exifOf(little, {{282, kFraction, 1, 26}}, {72, 1}), {}).resolution, std::nullopt);
    }
    // A JFIF segment that tells a density is the one that counts.
    codecs::Picture source = picture(noise(16, 16, 1), 16, 16, 1);
    source.metadata.exif = exifOf(true, {{282, kFraction, 1, 38}, {283, kFraction, 1, 46}}, {300, 1, 300, 1});
    EXPECT_EQ(jpeg::decode(jpeg::encode(source)).picture.metadata.resolution,
              (Resolution{300, 300, Resolution::Unit::inch}));
    source.metadata.resolution = Resolution{96, 96, Resolution::Unit::inch};
    EXPECT_EQ(jpeg::decode(jpeg::encode(source)).picture.metadata.resolution, source.metadata.resolution);
}

// Files whose orientation is no single number of 16 bits are turned by what it begins with, and told to be upright.
TEST(JpegMetadata, OrientationsOfOtherTypes) {
    TranscodeOptions how;
    how.upright = true;
    for (bool little : {true, false})
        for (const Tag& tag : {Tag{274, 3, 1, 3}, {274, 3, 2, little ? 3u : 3u << 16}, {274, 4, 1, 3}}) {
            const Bytes exif = exifOf(little, {{271, 2, 3, 0}, tag});
            const codecs::Metadata before = through(exif, {}), after = through(exif, how);
            EXPECT_EQ(codecs::orientationOf(before), 3);
            EXPECT_EQ(codecs::orientationOf(after), 1);
            const auto directory = codecs::parseExif(after.exif);
            ASSERT_TRUE(directory);
            EXPECT_EQ(directory->size(), 2u) << "and the maker";
        }
}

// An EXIF that grows beyond a segment by what is written into it is lost, which is told: two tags share their text here.
TEST(JpegMetadata, NoRoomForAnotherOrientation) {
    constexpr unsigned kText = 40000, kBehind = 50;
    codecs::Picture source = picture(noise(16, 16, 1), 16, 16, 1);
    source.metadata.exif = exifOf(true, {{271, 2, kText, kBehind}, {272, 2, kText, kBehind}, {274, 3, 2, 3}});
    source.metadata.exif.resize(kBehind + kText, 'x');
    TranscodeOptions how;
    how.upright = true;
    const jpeg::Transcoded t = transcode(jpeg::encode(source), how);
    ASSERT_EQ(t.warnings.size(), 1u);
    EXPECT_NE(t.warnings[0].find("does not fit a segment"), std::string::npos);
    EXPECT_TRUE(jpeg::decode(t.file).picture.metadata.exif.empty());
}

TEST(JpegMetadata, DamagedSegments) {
    Rng rng(77);
    codecs::Picture source = picture(noise(24, 17, 3), 24, 17, 3);
    source.metadata = someMetadata(300);
    const Bytes file = jpeg::encode(source);
    for (int round = 0; round < 2000; ++round) {
        const Bytes bad = damaged(file, rng, 4);
        TranscodeOptions o;
        o.maxPixels = 1 << 13;
        o.turn = codecs::Turn(rng.range(0, 7));
        o.upright = rng.oneIn(2);
        o.trim = true;
        o.strip = rng.oneIn(4);
        if (rng.oneIn(3)) o.part = jpeg::Part{int(rng.range(-2, 20)), int(rng.range(-2, 20)), 5, 5};
        const std::string said = refusalOf([&] { transcode(bad, o); });
        EXPECT_EQ(said.find('\n'), std::string::npos);
    }
}
