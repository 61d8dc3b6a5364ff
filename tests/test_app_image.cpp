// Pictures in memory and in files: containers, depths, CMYK, and the measures of difference.
#include "image/image.h"
#include "support/rng.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

// A folder of one test's own, removed behind it.
struct Folder {
    std::string path;
    Folder() {
        path = (std::filesystem::temp_directory_path() / "zmx-image-XXXXXX").string();
        if (!mkdtemp(path.data())) std::abort();
    }
    ~Folder() { std::filesystem::remove_all(path); }
    std::string file(const std::string& name) const { return path + "/" + name; }
};

Image noise(int width, int height, int channels, int maxval) {
    Rng rng(1);
    return {width, height, channels, maxval, rng.vec<std::uint16_t>(std::size_t(width * height * channels), 0, maxval)};
}

void expectSame(const Image& a, const Image& b) {
    EXPECT_EQ(a.width, b.width);
    EXPECT_EQ(a.height, b.height);
    EXPECT_EQ(a.channels, b.channels);
    EXPECT_EQ(a.maxval, b.maxval);
    EXPECT_EQ(a.cmyk, b.cmyk);
    EXPECT_EQ(a.samples, b.samples);
}

} // namespace

TEST(Image, FilesGiveBackWhatTheyWereGiven) {
    const Folder folder;
    for (int maxval : {255, 65535, 4095, 1})
        for (int channels = 1; channels <= 4; ++channels) {
            const Image image = noise(13, 7, channels, maxval);
            std::vector<std::string> names{"a.pam"};
            if (channels % 2) names.push_back(channels == 1 ? "a.pgm" : "a.ppm");
            if (maxval == 255 || maxval == 65535) names.push_back("a.png");
            for (const std::string& name : names) {
                SCOPED_TRACE(name + " of " + std::to_string(channels) + " channels to " + std::to_string(maxval));
                writeImage(folder.file(name), image);
                expectSame(image, readImage(folder.file(name)));
            }
        }
}

TEST(Image, CmykKeepsItsKind) {
    const Folder folder;
    Image image = noise(5, 4, 4, 255);
    image.cmyk = true;
    writeImage(folder.file("a.pam"), image);
    expectSame(image, readImage(folder.file("a.pam")));
    EXPECT_THROW(writeImage(folder.file("a.png"), image), ImageError);
    EXPECT_EQ(withoutAlpha(image).channels, 4);
    image.cmyk = false;
    EXPECT_EQ(withoutAlpha(image).channels, 3);
    expectSame(withoutAlpha(noise(3, 3, 3, 255)), noise(3, 3, 3, 255));
}

TEST(Image, OtherDepthsAreScaledToBytes) {
    Image image{5, 1, 1, 4095, {0, 4095, 2048, 8, 9}};
    EXPECT_EQ(to8bit(image), (std::vector<std::uint8_t>{0, 255, 128, 0, 1}));
    image.maxval = 255;
    image.samples = {0, 1, 128, 254, 255};
    EXPECT_EQ(to8bit(image), (std::vector<std::uint8_t>{0, 1, 128, 254, 255}));
}

TEST(Image, CropTakesThePart) {
    const Image image = noise(9, 8, 3, 255);
    const Image part = crop(image, 2, 3, 4, 5);
    ASSERT_EQ(part.width, 4);
    ASSERT_EQ(part.height, 5);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 12; ++x) EXPECT_EQ(part.row(y)[x], image.row(y + 3)[6 + x]);
    expectSame(crop(image, 0, 0, 9, 8), image);
    for (auto [x, y, w, h] : {std::array{-1, 0, 2, 2}, {0, -1, 2, 2}, {8, 0, 2, 1}, {0, 8, 1, 1}, {0, 0, 0, 1}, {0, 0, 1, 9}})
        EXPECT_THROW(crop(image, x, y, w, h), ImageError);
}

TEST(Image, HowPicturesDiffer) {
    const Image a{4, 1, 1, 255, {10, 20, 30, 40}};
    Image b = a;
    EXPECT_TRUE(std::isinf(psnr(a, b)));
    EXPECT_EQ(compare(a, b, 0).max, 0);
    EXPECT_EQ(compare(a, b, 0).within, 1);
    b.samples = {10, 22, 30, 34};
    const Difference d = compare(a, b, 2);
    EXPECT_EQ(d.max, 6);
    EXPECT_EQ(d.within, 0.75);
    EXPECT_NEAR(d.psnr, 10 * std::log10(255.0 * 255 / 10), 1e-9); // the mean of 0, 4, 0 and 36
    EXPECT_THROW(compare(a, noise(4, 2, 1, 255), 0), ImageError);
    EXPECT_THROW(compare(a, noise(4, 1, 1, 65535), 0), ImageError);
}

TEST(Image, TroubleIsNamed) {
    const Folder folder;
    const auto message = [](auto call) -> std::string {
        try {
            call();
        } catch (const ImageError& e) {
            return e.what();
        }
        return "";
    };
    EXPECT_NE(message([&] { readImage(folder.file("none.png")); }).find("none.png: No such file"), std::string::npos);
    writeBytes(folder.file("odd"), {1, 2, 3});
    EXPECT_NE(message([&] { readImage(folder.file("odd")); }).find("neither a PNG nor a PNM"), std::string::npos);
    writeBytes(folder.file("short"), {'P'});
    EXPECT_NE(message([&] { readImage(folder.file("short")); }).find("too short"), std::string::npos);
    EXPECT_NE(message([&] { writeImage(folder.file("a.gif"), noise(1, 1, 1, 255)); }).find("ends in"), std::string::npos);
    const Image image = noise(20, 20, 3, 255);
    for (const char* name : {"cut.png", "cut.ppm"}) {
        writeImage(folder.file(name), image);
        std::vector<std::uint8_t> bytes = readBytes(folder.file(name));
        EXPECT_NE(message([&] { readImage(folder.file(name), 399); }).find("more pixels"), std::string::npos) << name;
        bytes.resize(bytes.size() / 2);
        writeBytes(folder.file(name), bytes);
        EXPECT_NE(message([&] { readImage(folder.file(name)); }).find(name), std::string::npos);
    }
}

TEST(Image, BytesOfAnyCount) {
    const Folder folder;
    for (std::size_t n : {0u, 1u, 65535u, 65536u, 65537u, 200000u}) {
        std::vector<std::uint8_t> bytes(n);
        Rng(9).bytes(bytes.data(), n);
        writeBytes(folder.file("b"), bytes);
        EXPECT_EQ(readBytes(folder.file("b")), bytes);
    }
}
