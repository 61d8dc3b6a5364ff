// Pictures in memory and in files: containers, depths, CMYK, changes of rows, headerless files, and the measures of
// difference.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/compare.h"
#include "codecs/picture/raw.h"
#include "tests/codecs/support/damage.h"
#include "tests/codecs/support/pictures.h"

#include <cmath>
#include <cstdio>

using namespace codecs;

namespace {

using Numbers = std::vector<unsigned>;

Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }
std::string textOf(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

} // namespace

TEST(Picture, FilesGiveBackWhatTheyWereGiven) {
    const Folder folder;
    for (int maxval : {255, 65535, 4095, 15, 3, 1})
        for (int channels = 1; channels <= 4; ++channels) {
            const Picture picture = noise(shapeOf(13, 7, channels, maxval));
            const bool whole = maxval == 255 || maxval == 65535, grey = channels == 1;
            std::vector<std::string> names{"a.pam"};
            if (channels % 2) names.insert(names.end(), {"a.pgm", "a.ppm", "a.pnm"});
            if (grey && maxval == 1) names.insert(names.end(), {"a.pbm", "a.tif", "a.bmp"});
            if (whole || (grey && maxval < 255)) names.push_back("a.png");
            if (whole) names.insert(names.end(), {"a.tif", "a.TIFF"});
            if (maxval == 255 && channels != 2) names.push_back("a.bmp");
            for (const std::string& name : names) {
                SCOPED_TRACE(name + " of " + std::to_string(channels) + " channels to " + std::to_string(maxval));
                writePicture(folder.file(name), picture);
                expectSame(picture, readPicture(folder.file(name)));
            }
        }
}

TEST(Picture, BandsOfAnySizeAreTheSameFile) {
    for (Container container : {Container::png, Container::tiff, Container::bmp, Container::pam})
        for (int channels : {1, 3, 4}) {
            const Picture picture = noise(shapeOf(19, 23, channels));
            const Bytes once = fileOf(picture, container);
            for (int rows : {1, 2, 23, 100}) {
                EXPECT_EQ(fileOf(picture, container, rows), once);
                PictureSink sink;
                copyRows(*openPicture(std::make_unique<MemorySource>(once)), sink, rows);
                expectSame(sink.picture, picture);
            }
        }
}

TEST(Picture, CmykKeepsItsKind) {
    const Folder folder;
    const Picture picture = noise(cmykShape(5, 4));
    for (const char* name : {"a.pam", "a.tif"}) {
        writePicture(folder.file(name), picture);
        expectSame(picture, readPicture(folder.file(name)));
    }
    for (const char* name : {"a.png", "a.ppm", "a.bmp"}) {
        EXPECT_THROW(writePicture(folder.file(name), picture), FileError);
        EXPECT_FALSE(std::filesystem::exists(folder.file(name)));
    }
    expectSame(changed(picture, withoutAlpha), picture);
}

TEST(Picture, AlphaIsKeptOrRefused) {
    EXPECT_EQ(errorOf([] { fileOf(noise(shapeOf(3, 3, 4)), Container::pnm); }),
              "a PNM file holds no alpha channel; write .png, .tif or .pam");
    EXPECT_NE(errorOf([] { fileOf(noise(shapeOf(3, 3, 2)), Container::bmp); }), "");
    EXPECT_EQ(textOf(fileOf(noise(shapeOf(3, 3, 2)), Container::anymap)).substr(0, 2), "P7");
    EXPECT_EQ(textOf(fileOf(noise(shapeOf(3, 3, 3)), Container::anymap)).substr(0, 2), "P6");
    EXPECT_EQ(textOf(fileOf(noise(shapeOf(3, 3, 1, 1)), Container::anymap)).substr(0, 2), "P4");
}

TEST(Picture, OtherDepthsAreScaled) {
    const auto scaled = [](const Picture& p, int maxval) {
        return changed(p, [&](Rows rows) { return withDepth(std::move(rows), maxval); });
    };
    const Picture deep = made(shapeOf(5, 1, 1, 4095), {0, 4095, 2048, 8, 9});
    EXPECT_EQ(samplesOf(scaled(deep, 255)), (Numbers{0, 255, 128, 0, 1}));
    const Picture bytes = made(shapeOf(5, 1, 1), {0, 1, 128, 254, 255});
    EXPECT_EQ(samplesOf(scaled(bytes, 65535)), (Numbers{0, 257, 32896, 65278, 65535}));
    expectSame(scaled(scaled(bytes, 65535), 255), bytes);
    EXPECT_EQ(samplesOf(scaled(bytes, 1)), (Numbers{0, 0, 1, 1, 1}));
    // Files scale up to the next depth that they have.
    EXPECT_EQ(samplesOf(pictureIn(fileOf(made(shapeOf(5, 1, 1, 5), {0, 1, 2, 4, 5}), Container::png))),
              (Numbers{0, 51, 102, 204, 255}));
    EXPECT_EQ(samplesOf(pictureIn(fileOf(made(shapeOf(3, 1, 1, 4095), {0, 1, 4095}), Container::tiff))),
              (Numbers{0, 16, 65535}));
}

TEST(Picture, ChangesOfRows) {
    const Picture rgb = made(shapeOf(2, 1, 3), {10, 20, 30, 200, 100, 50});
    EXPECT_EQ(samplesOf(changed(rgb, asGrey)), (Numbers{18, 124})); // 0.299 R + 0.587 G + 0.114 B
    const Picture deep = made(shapeOf(2, 1, 3, 65535), {65535, 65535, 65535, 1000, 2000, 3000});
    EXPECT_EQ(samplesOf(changed(deep, asGrey)), (Numbers{65535, 1815}));
    const Picture ga = made(shapeOf(2, 1, 2), {7, 1, 8, 2});
    EXPECT_EQ(samplesOf(changed(ga, withoutAlpha)), (Numbers{7, 8}));
    EXPECT_EQ(samplesOf(changed(ga, asRgb)), (Numbers{7, 7, 7, 1, 8, 8, 8, 2}));
    EXPECT_EQ(samplesOf(changed(ga, inverted)), (Numbers{248, 1, 247, 2}));
    EXPECT_EQ(samplesOf(changed(rgb, withAlpha)), (Numbers{10, 20, 30, 255, 200, 100, 50, 255}));
    EXPECT_EQ(samplesOf(changed(rgb, withRedAndBlueExchanged)), (Numbers{30, 20, 10, 50, 100, 200}));
    const Picture rgba = made(shapeOf(1, 1, 4), {10, 20, 30, 9});
    EXPECT_EQ(samplesOf(changed(rgba, asGrey)), (Numbers{18, 9}));
    // No ink is white; each ink takes its share of what the black leaves.
    const Picture inks = made(cmykShape(3, 1), {0, 0, 0, 0, 255, 0, 51, 0, 0, 255, 0, 51});
    EXPECT_EQ(samplesOf(changed(inks, asRgb)), (Numbers{255, 255, 255, 0, 255, 204, 204, 0, 204}));
    EXPECT_EQ(errorOf([&] { changed(inks, asGrey); }), "only grey and RGB pictures have a luma");
    expectSame(changed(rgb, [](Rows r) { return withDepth(asRgb(withoutAlpha(std::move(r))), 255); }), rgb);
}

TEST(Picture, CropTakesThePart) {
    const Picture picture = noise(shapeOf(9, 8, 3));
    const auto crop = [&](int x, int y, int width, int height) {
        return changed(picture, [&](Rows rows) { return cropped(std::move(rows), x, y, width, height); });
    };
    const Picture part = crop(2, 3, 4, 5);
    ASSERT_EQ(part.shape(), shapeOf(4, 5, 3));
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 12; ++x) EXPECT_EQ(part.at(x, y), picture.at(6 + x, y + 3));
    expectSame(crop(0, 0, 9, 8), picture);
    for (auto [x, y, w, h] :
         {std::array{-1, 0, 2, 2}, {0, -1, 2, 2}, {8, 0, 2, 1}, {0, 8, 1, 1}, {0, 0, 0, 1}, {0, 0, 1, 9}})
        EXPECT_THROW(crop(x, y, w, h), Error);
}

TEST(Picture, HowPicturesDiffer) {
    const Picture a = made(shapeOf(4, 1, 1), {10, 20, 30, 40}), b = made(shapeOf(4, 1, 1), {10, 22, 30, 34});
    EXPECT_TRUE(std::isinf(compare(a, a, 0).psnr));
    EXPECT_EQ(compare(a, a, 0).max, 0);
    EXPECT_EQ(compare(a, a, 0).within, 1);
    const Difference d = compare(a, b, 2);
    EXPECT_EQ(d.max, 6);
    EXPECT_EQ(d.within, 0.75);
    EXPECT_NEAR(d.psnr, 10 * std::log10(255.0 * 255 / 10), 1e-9); // the mean of 0, 4, 0 and 36
    const auto deep = [](const Picture& p) {
        return changed(p, [](Rows rows) { return withDepth(std::move(rows), 65535); });
    };
    EXPECT_NEAR(compare(deep(a), deep(b), 514).psnr, d.psnr, 1e-9);
    EXPECT_EQ(compare(deep(a), deep(b), 514).within, 0.75);
    EXPECT_THROW(compare(a, noise(shapeOf(4, 2, 1)), 0), Error);
    EXPECT_THROW(compare(a, deep(a), 0), Error);
}

TEST(Picture, TroubleIsNamed) {
    const Folder folder;
    const auto reading = [&](const std::string& name, std::uint64_t maxPixels = kMaxPixels) {
        return errorOf([&] { readPicture(folder.file(name), maxPixels); });
    };
    EXPECT_EQ(reading("none.png"), folder.file("none.png") + ": No such file or directory");
    writeFile(folder.file("odd"), Bytes{1, 2, 3});
    EXPECT_EQ(reading("odd"), folder.file("odd") + ": not a PNG, PNM, PAM, TIFF or BMP file");
    writeFile(folder.file("short"), Bytes{'P'});
    EXPECT_EQ(reading("short"), folder.file("short") + ": too short for a picture");
    EXPECT_EQ(errorOf([&] { readPicture(folder.path); }), folder.path + ": Is a directory");
    EXPECT_NE(errorOf([&] { writePicture(folder.file("a.gif"), noise(shapeOf(1, 1, 1))); }).find("ends in"),
              std::string::npos);
    const Picture picture = noise(shapeOf(20, 20, 3));
    for (const char* name : {"cut.png", "cut.ppm", "cut.tif", "cut.bmp"}) {
        writePicture(folder.file(name), picture);
        Bytes bytes = readFile(folder.file(name));
        EXPECT_NE(reading(name, 399).find("more pixels"), std::string::npos) << name;
        EXPECT_EQ(reading(name, 400), "");
        bytes.resize(bytes.size() / 2);
        writeFile(folder.file(name), bytes);
        EXPECT_EQ(reading(name).rfind(folder.file(name) + ": ", 0), 0u) << reading(name);
    }
}

TEST(Pnm, HeadersAsNetpbmReadsThem) {
    const auto read = [](const std::string& text) { return pictureIn(bytesOf(text)); };
    const Picture grey = made(shapeOf(2, 1, 1, 9), {3, 9});
    expectSame(read("P5 2 1 9 \x03\x09"), grey);
    expectSame(read("P5\n# a comment\n2 #another\n1\n\n9\n\x03\x09"), grey);
    expectSame(read("P5\n2 1\n9#c\n\x03\x09"), grey);
    expectSame(read("P2\n2 1\n9\n 3 # more\n9"), grey);
    expectSame(read("P7\n#c\n\nWIDTH 2\nHEIGHT 1\n DEPTH\t1 \nMAXVAL 9\nENDHDR\n\x03\x09"), grey);
    // 1 is black in a PBM file; digits need no space between them.
    expectSame(read("P1 3 2 010\n1 1 0"), made(shapeOf(3, 2, 1, 1), {1, 0, 1, 0, 0, 1}));
    expectSame(read(std::string("P4 9 1\n\x55\x80", 9)), made(shapeOf(9, 1, 1, 1), {1, 0, 1, 0, 1, 0, 1, 0, 0}));
    expectSame(read(std::string("P5 2 1 300\n\x01\x02\0\x05", 15)), made(shapeOf(2, 1, 1, 300), {258, 5}));
    const Picture five = read("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 5\nMAXVAL 255\nTUPLTYPE odd\nENDHDR\nabcde");
    EXPECT_EQ(five.shape().colour, Colour::other);
    EXPECT_EQ(samplesOf(five), (Numbers{'a', 'b', 'c', 'd', 'e'}));
}

TEST(Pnm, WhatIsWrongIsSaid) {
    const auto wrong = [](const std::string& text) { return errorOf([&] { pictureIn(bytesOf(text)); }); };
    EXPECT_NE(wrong("P5 2").find("it ends here"), std::string::npos);
    EXPECT_NE(wrong("P5 x").find("no number"), std::string::npos);
    EXPECT_NE(wrong("P5 2y 1").find("no number"), std::string::npos);
    EXPECT_NE(wrong("P5 99999999999 1 255 ").find("too large"), std::string::npos);
    EXPECT_NE(wrong("P5 1 1 65536 a").find("the largest sample is 65536"), std::string::npos);
    EXPECT_NE(wrong("P5 1 1 0 a").find("the largest sample is 0"), std::string::npos);
    EXPECT_NE(wrong("P5 0 1 255 a").find("a picture of 0 by 1"), std::string::npos);
    EXPECT_NE(wrong("P5 2000 2000 255 a").find("more pixels"), std::string::npos);
    EXPECT_EQ(wrong("P5 2 2 255\nabc"), "the file ends in row 1");
    EXPECT_EQ(wrong("P5 2 2 98\nabca"), "row 1: a sample of 99 goes beyond 98");
    EXPECT_NE(wrong("P2 2 1 9 3").find("row 0: the file ends"), std::string::npos);
    EXPECT_NE(wrong("P2 2 1 9 3 10").find("row 0: a sample goes beyond 9"), std::string::npos);
    EXPECT_NE(wrong("P1 2 1 2").find("a bit is 0 or 1"), std::string::npos);
    EXPECT_NE(wrong("P7\nWIDTH 1\nHIGHT 1\n").find("\"HIGHT\""), std::string::npos);
    EXPECT_NE(wrong("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 0\nMAXVAL 1\nENDHDR\n").find("a depth of 0"), std::string::npos);
    EXPECT_NE(wrong("P7\nWIDTH 1x\n").find("WIDTH has no number"), std::string::npos);
    EXPECT_NE(wrong("P7\nWIDTH 1").find("it ends here"), std::string::npos);
    EXPECT_NE(errorOf([] { fileOf(noise(shapeOf(2, 2, 1)), Container::pbm); }).find("single bits"), std::string::npos);
}

TEST(Picture, DamagedFilesAreReadOrRefused) {
    constexpr std::uint64_t seed = 78;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    int refusals = 0;
    for (Container container : {Container::png, Container::bmp, Container::pnm, Container::pam})
        for (const Shape& shape : {shapeOf(21, 11, 1, 1), shapeOf(21, 11, 3), shapeOf(21, 11, 1, 4095)}) {
            const Bytes good = fileOf(noise(shape), container);
            const auto survives = [&](const Bytes& file) {
                const std::string words = errorOf([&] { pictureIn(file, 1 << 16); });
                EXPECT_EQ(words.find('\n'), std::string::npos) << words;
                refusals += !words.empty();
            };
            for (int round = 0; round < 100; ++round) survives(damaged(good, rng, 4));
            for (std::size_t n = 0; n < good.size(); n += 1 + n / 64)
                survives({good.begin(), good.begin() + std::ptrdiff_t(n)});
        }
    EXPECT_GT(refusals, 300);
}

TEST(Picture, RawFiles) {
    const auto read = [](const Bytes& bytes, int width, int height, RawFormat format) {
        return readRows(*openRaw(std::make_unique<MemorySource>(bytes), width, height, format));
    };
    const auto written = [](const Picture& picture, RawFormat format) {
        return ::written(picture, [&](auto bytes) { return createRaw(std::move(bytes), format); });
    };
    const Bytes two{10, 20, 30, 200, 100, 50};
    const Picture rgb = read(two, 2, 1, RawFormat::rgb), bgr = read(two, 1, 2, RawFormat::bgr),
                  grey = read(two, 3, 2, RawFormat::gray);
    expectSame(rgb, made(shapeOf(2, 1, 3), {10, 20, 30, 200, 100, 50}));
    expectSame(bgr, made(shapeOf(1, 2, 3), {30, 20, 10, 50, 100, 200}));
    expectSame(grey, made(shapeOf(3, 2, 1), {10, 20, 30, 200, 100, 50}));
    EXPECT_EQ(written(rgb, RawFormat::rgb), two);
    EXPECT_EQ(written(rgb, RawFormat::bgr), (Bytes{30, 20, 10, 50, 100, 200}));
    EXPECT_EQ(written(rgb, RawFormat::gray), (Bytes{18, 124}));
    EXPECT_EQ(written(grey, RawFormat::gray), two);
    EXPECT_EQ(written(made(shapeOf(2, 1, 1, 65535), {0, 65535}), RawFormat::rgb), (Bytes{0, 0, 0, 255, 255, 255}));
    EXPECT_EQ(written(made(shapeOf(2, 1, 2), {7, 1, 8, 2}), RawFormat::gray), (Bytes{7, 8})) << "alpha is left out";
    EXPECT_EQ(written(made(shapeOf(1, 1, 2), {7, 1}), RawFormat::bgr), (Bytes{7, 7, 7}));
    EXPECT_EQ(written(made(shapeOf(1, 1, 4), {7, 8, 9, 1}), RawFormat::bgr), (Bytes{9, 8, 7}));

    const Bytes eight{1, 2, 3, 4, 5, 6, 7, 8};
    const Picture inks = read(eight, 1, 2, RawFormat::cmyk);
    expectSame(inks, made(cmykShape(1, 2), {1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(written(inks, RawFormat::cmyk), eight);
    for (RawFormat format : {RawFormat::gray, RawFormat::rgb, RawFormat::bgr})
        EXPECT_THROW(written(inks, format), Error);
    EXPECT_THROW(written(rgb, RawFormat::cmyk), Error);
    for (auto [width, height] : {std::pair{1, 1}, {3, 1}, {2, 2}, {65535, 65535}})
        EXPECT_THROW(read(eight, width, height, RawFormat::cmyk), Error);
}
