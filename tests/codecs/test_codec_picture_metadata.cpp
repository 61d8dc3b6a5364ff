// What travels beside the samples: EXIF taken apart and put together, orientation and turned pixels, and the way of
// profile, EXIF, XMP and resolution through files.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/exif.h"
#include "codecs/picture/orientation.h"
#include "tests/codecs/support/damage.h"
#include "tests/codecs/support/pictures.h"

using namespace codecs;

namespace {

Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

ExifEntry textEntry(std::uint16_t tag, const std::string& text) {
    ExifEntry e;
    e.tag = tag;
    e.type = 2;
    e.value = bytesOf(text);
    e.value.push_back(0);
    e.count = e.value.size();
    return e;
}
ExifEntry directoryEntry(std::uint16_t tag, ExifDirectory children) {
    ExifEntry e;
    e.tag = tag;
    e.type = 4;
    e.count = 1;
    e.children = std::move(children);
    return e;
}

// A camera's EXIF: text, a number, a fraction, and directories within.
ExifDirectory cameraExif() {
    ExifEntry exposure;
    exposure.tag = 33434;
    exposure.type = 5;
    exposure.count = 1;
    exposure.value = {1, 0, 0, 0, 125, 0, 0, 0};
    return {textEntry(kExifMake, "Maker of boxes"), textEntry(kExifModel, "B1"), shortEntry(kExifOrientation, 6),
            directoryEntry(kExifDetails, {exposure, directoryEntry(kExifInterop, {textEntry(1, "R98")})}),
            directoryEntry(kExifGps, {shortEntry(30, 1)})};
}

void expectSameDirectory(const ExifDirectory& a, const ExifDirectory& b) {
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a[i].tag, b[i].tag);
        EXPECT_EQ(a[i].value, b[i].value);
        expectSameDirectory(a[i].children, b[i].children);
    }
}

// A profile that says no more than that it is one of this kind of pictures.
Bytes profile(bool colour) {
    Bytes p(256);
    Rng(3).bytes(p.data() + 152, 104); // what libpng can compress to less than 92 bytes it calls too short
    const auto text = [&](std::size_t at, const char* word) { std::copy_n(word, 4, p.begin() + std::ptrdiff_t(at)); };
    p[2] = 1;
    p[131] = 1; // one tag: a copyright of no words
    text(132, "cprt");
    p[139] = 144;
    p[143] = 112;
    text(144, "text");
    p[8] = 4;
    text(12, "mntr");
    text(16, colour ? "RGB " : "GRAY");
    text(20, "XYZ ");
    text(36, "acsp");
    const std::uint8_t d50[] = {0, 0, 0xF6, 0xD6, 0, 1, 0, 0, 0, 0, 0xD3, 0x2D};
    std::copy(std::begin(d50), std::end(d50), p.begin() + 68);
    return p;
}

Picture withMetadata(const Shape& shape) {
    Picture picture = noise(shape);
    picture.metadata = {profile(shape.colour == Colour::rgb), serialiseExif(cameraExif()), bytesOf("<x:xmpmeta/>"),
                        Resolution{300, 150, Resolution::Unit::inch}};
    return picture;
}

// What a sink had to say about a picture.
std::vector<std::string> lostIn(const Picture& picture, Container container) {
    const auto sink = createPicture(std::make_unique<MemorySink>(), container);
    writeRows(picture, *sink);
    return sink->warnings();
}

} // namespace

TEST(Exif, ComesApartAndTogether) {
    const Bytes blob = serialiseExif(cameraExif());
    const auto read = parseExif(blob);
    ASSERT_TRUE(read);
    expectSameDirectory(*read, cameraExif());
    EXPECT_EQ(serialiseExif(*read), blob);
    // As BigTIFF has it, behind a header of its own.
    Bytes big{'I', 'I', 43, 0, 8, 0, 0, 0, 16, 0, 0, 0, 0, 0, 0, 0};
    const Bytes directory = serialiseDirectory(cameraExif(), 16, true);
    big.insert(big.end(), directory.begin(), directory.end());
    const auto fromBig = parseExif(big);
    ASSERT_TRUE(fromBig);
    expectSameDirectory(*fromBig, cameraExif());
}

TEST(Exif, OfTheOtherByteOrder) {
    const Bytes blob{'M',  'M',  0, 42, 0, 0, 0, 8, 0, 2,          // two entries
                     1,    18,   0, 3,  0, 0, 0, 1, 0, 5, 0, 0,    // orientation 5
                     0x82, 0x9A, 0, 5,  0, 0, 0, 1, 0, 0, 0, 38,   // exposure
                     0,    0,    0, 0,  0, 0, 0, 1, 0, 0, 0, 200}; // 1/200
    const auto read = parseExif(blob);
    ASSERT_TRUE(read);
    EXPECT_EQ(findEntry(*read, kExifOrientation)->value, (Bytes{5, 0}));
    EXPECT_EQ(findEntry(*read, 33434)->value, (Bytes{1, 0, 0, 0, 200, 0, 0, 0}));
    Metadata m{{}, blob, {}, {}};
    EXPECT_EQ(orientationOf(m), 5);
    setOrientation(m, 7);
    EXPECT_EQ(orientationOf(m), 7);
    Bytes expected = blob;
    expected[19] = 7;
    EXPECT_EQ(m.exif, expected) << "nothing else has changed";
}

TEST(Exif, DamageIsNoExif) {
    constexpr std::uint64_t seed = 79;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    const Bytes good = serialiseExif(cameraExif());
    int refused = 0;
    for (int round = 0; round < 2000; ++round) refused += !parseExif(damaged(good, rng, 3));
    EXPECT_GT(refused, 200);
    // The last directory ends with the word that says that none follows, which is not looked for.
    for (std::size_t n = 0; n + 4 < good.size(); ++n) EXPECT_FALSE(parseExif(ByteView(good).first(n))) << n;
    // A directory within itself.
    Bytes circle = serialiseExif({directoryEntry(kExifDetails, {})});
    std::fill_n(circle.begin() + 18, 4, std::uint8_t(0));
    circle[18] = 8;
    EXPECT_FALSE(parseExif(circle));
}

TEST(Orientation, IsMadeWhereThereIsNone) {
    Metadata m;
    EXPECT_EQ(orientationOf(m), 1);
    setOrientation(m, 1);
    EXPECT_TRUE(m.exif.empty());
    setOrientation(m, 8);
    EXPECT_EQ(orientationOf(m), 8);
    m.exif = serialiseExif({textEntry(kExifMake, "X")});
    setOrientation(m, 3);
    EXPECT_EQ(orientationOf(m), 3);
    EXPECT_EQ(findEntry(*parseExif(m.exif), kExifMake)->value, (Bytes{'X', 0}));
    m.exif = serialiseExif({shortEntry(kExifOrientation, 9)});
    EXPECT_EQ(orientationOf(m), 1) << "no such orientation";
}

TEST(Orientation, PixelsAreTurned) {
    // Where pixel (x, y) of the upright picture stands in one of `width` by `height`, by the words of the standard: the
    // first row is the top, bottom, left or right, and so is the first column.
    const auto source = [](int orientation, int x, int y, int width, int height) -> std::pair<int, int> {
        switch (orientation) {
        case 2:
            return {width - 1 - x, y};
        case 3:
            return {width - 1 - x, height - 1 - y};
        case 4:
            return {x, height - 1 - y};
        case 5:
            return {y, x};
        case 6:
            return {y, height - 1 - x};
        case 7:
            return {width - 1 - y, height - 1 - x};
        case 8:
            return {width - 1 - y, x};
        default:
            return {x, y};
        }
    };
    for (int orientation = 1; orientation <= 8; ++orientation)
        for (const Shape& shape : {shapeOf(7, 5, 1), shapeOf(6, 9, 3), shapeOf(3, 4, 4, 65535), shapeOf(40, 300, 1)}) {
            SCOPED_TRACE(orientation);
            Picture picture = noise(shape);
            picture.metadata.resolution = Resolution{300, 150, Resolution::Unit::inch};
            setOrientation(picture.metadata, orientation);
            const Picture turned = changed(picture, upright);
            auto bytes =
                written(picture, [](auto b) { return uprightBefore(createPicture(std::move(b), Container::pam)); });
            expectSame(pictureIn(bytes), turned);
            EXPECT_EQ(orientationOf(turned.metadata), 1);
            const bool quarter = orientation > 4;
            ASSERT_EQ(turned.shape().width, quarter ? shape.height : shape.width);
            ASSERT_EQ(turned.shape().height, quarter ? shape.width : shape.height);
            EXPECT_EQ(turned.metadata.resolution->x, quarter ? 150 : 300);
            for (int y = 0; y < turned.shape().height; ++y)
                for (int x = 0; x < turned.shape().width; ++x) {
                    const auto [u, v] = source(orientation, x, y, shape.width, shape.height);
                    for (int c = 0; c < shape.channels; ++c)
                        ASSERT_EQ(turned.at(x * shape.channels + c, y), picture.at(u * shape.channels + c, v));
                }
        }
}

TEST(Metadata, TravelsThroughPngAndTiff) {
    for (const Shape& shape : {shapeOf(9, 7, 3), shapeOf(9, 7, 1, 65535), shapeOf(9, 7, 4)})
        for (Container container : {Container::png, Container::tiff}) {
            const Picture picture = withMetadata(shape);
            const Metadata& m = picture.metadata;
            EXPECT_TRUE(lostIn(picture, container).empty());
            const Picture back = pictureIn(fileOf(picture, container));
            expectSame(back, picture);
            EXPECT_EQ(back.metadata.icc, m.icc);
            EXPECT_EQ(back.metadata.xmp, m.xmp);
            expectSameDirectory(*parseExif(back.metadata.exif), cameraExif());
            ASSERT_TRUE(back.metadata.resolution);
            const Resolution r = back.metadata.resolution->in(Resolution::Unit::inch);
            EXPECT_NEAR(r.x, 300, 0.02);
            EXPECT_NEAR(r.y, 150, 0.02);
            // And from one into the other.
            const Container other = container == Container::png ? Container::tiff : Container::png;
            const Picture there = pictureIn(fileOf(back, other));
            EXPECT_EQ(there.metadata.icc, m.icc);
            EXPECT_EQ(there.metadata.xmp, m.xmp);
            expectSameDirectory(*parseExif(there.metadata.exif), cameraExif());
            EXPECT_NEAR(there.metadata.resolution->in(Resolution::Unit::inch).x, 300, 0.02);
            EXPECT_TRUE(changed(picture, stripped).metadata.empty());
        }
}

TEST(Metadata, WhatIsLostIsSaid) {
    const Picture picture = withMetadata(shapeOf(4, 4, 3));
    using Lines = std::vector<std::string>;
    EXPECT_EQ(lostIn(picture, Container::pnm),
              Lines{"a PNM or PAM file has no place for: colour profile, EXIF, XMP, resolution"});
    EXPECT_EQ(lostIn(picture, Container::bmp), Lines{"a BMP file has no place for: colour profile, EXIF, XMP"});
    EXPECT_EQ(pictureIn(fileOf(picture, Container::bmp)).metadata.resolution->in(Resolution::Unit::inch).x,
              11811 * 0.0254);
    EXPECT_TRUE(lostIn(noise(shapeOf(4, 4, 3)), Container::pnm).empty());
    Picture squares = noise(shapeOf(4, 4, 1));
    squares.metadata.resolution = Resolution{1, 1, Resolution::Unit::none};
    EXPECT_TRUE(lostIn(squares, Container::pnm).empty()) << "square pixels go without saying";
    // A grey profile for a picture of colours, which libpng does not take.
    Picture odd = noise(shapeOf(4, 4, 3));
    odd.metadata.icc = profile(false);
    EXPECT_EQ(lostIn(odd, Container::png), Lines{"PNG has no place for this colour profile"});
}

TEST(Metadata, UnitsOfLength) {
    using Unit = Resolution::Unit;
    const Resolution inches{254, 127, Unit::inch};
    EXPECT_NEAR(inches.in(Unit::metre).x, 10000, 1e-9);
    EXPECT_NEAR(inches.in(Unit::centimetre).y, 50, 1e-9);
    EXPECT_NEAR((Resolution{10000, 1, Unit::metre}.in(Unit::inch).x), 254, 1e-9);
    EXPECT_EQ((Resolution{2, 1, Unit::none}.in(Unit::inch)), (Resolution{2, 1, Unit::none}));
}

// libtiff hands it out as a float, which has more digits than what was written.
TEST(Metadata, ResolutionsOfTiffAreTheNumbersThatWereWritten) {
    Picture picture = withMetadata({4, 3, 3, 255, Colour::rgb, false});
    picture.metadata.resolution = Resolution{118.11, 59.06, Resolution::Unit::centimetre};
    const Resolution back = *pictureIn(fileOf(picture, Container::tiff)).metadata.resolution;
    EXPECT_EQ(back.unit, Resolution::Unit::centimetre);
    EXPECT_EQ(back.x, 118.11);
    EXPECT_EQ(back.y, 59.06);
}
