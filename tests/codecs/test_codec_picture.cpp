// Pictures in memory and in files: containers, depths, CMYK, TIFF files of libtiff's making, and the measures of
// difference.
#include "codecs/picture/image.h"
#include "tests/codecs/support/damage.h"
#include "tests/support/rng.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <tiffio.h>

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
            if (maxval == 255 || maxval == 65535) names.insert(names.end(), {"a.png", "a.tif", "a.TIFF"});
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
    for (const char* name : {"a.pam", "a.tif"}) {
        writeImage(folder.file(name), image);
        expectSame(image, readImage(folder.file(name)));
    }
    EXPECT_THROW(writeImage(folder.file("a.png"), image), ImageError);
    EXPECT_THROW(writeImage(folder.file("a.ppm"), image), ImageError);
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
    EXPECT_EQ(scaled(image, 65535).samples, (std::vector<std::uint16_t>{0, 257, 32896, 65278, 65535}));
    EXPECT_EQ(scaled(image, 65535).maxval, 65535);
    EXPECT_EQ(scaled(scaled(image, 65535), 255).samples, image.samples);
}

TEST(Image, CropTakesThePart) {
    const Image image = noise(9, 8, 3, 255);
    const Image part = crop(image, 2, 3, 4, 5);
    ASSERT_EQ(part.width, 4);
    ASSERT_EQ(part.height, 5);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 12; ++x) EXPECT_EQ(part.row(y)[x], image.row(y + 3)[6 + x]);
    expectSame(crop(image, 0, 0, 9, 8), image);
    for (auto [x, y, w, h] :
         {std::array{-1, 0, 2, 2}, {0, -1, 2, 2}, {8, 0, 2, 1}, {0, 8, 1, 1}, {0, 0, 0, 1}, {0, 0, 1, 9}})
        EXPECT_THROW(crop(image, x, y, w, h), ImageError);
}

TEST(Image, HowPicturesDiffer) {
    const auto compare = [](const Image& first, const Image& second, int level) {
        return codecs::compare(pictureFrom(first), pictureFrom(second), level);
    };
    const Image a{4, 1, 1, 255, {10, 20, 30, 40}};
    Image b = a;
    EXPECT_TRUE(std::isinf(compare(a, b, 0).psnr));
    EXPECT_EQ(compare(a, b, 0).max, 0);
    EXPECT_EQ(compare(a, b, 0).within, 1);
    b.samples = {10, 22, 30, 34};
    const codecs::Difference d = compare(a, b, 2);
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
    EXPECT_NE(message([&] { readImage(folder.file("odd")); }).find("not a PNG, PNM, PAM or TIFF file"),
              std::string::npos);
    writeBytes(folder.file("short"), {'P'});
    EXPECT_NE(message([&] { readImage(folder.file("short")); }).find("too short"), std::string::npos);
    EXPECT_NE(message([&] { writeImage(folder.file("a.gif"), noise(1, 1, 1, 255)); }).find("ends in"),
              std::string::npos);
    const Image image = noise(20, 20, 3, 255);
    for (const char* name : {"cut.png", "cut.ppm", "cut.tif"}) {
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

namespace {

// A TIFF file of libtiff's making.
struct Layout {
    int compression = COMPRESSION_NONE;
    bool planar = false;
    int tile = 0;         // the side of a tile; 0: strips
    int rowsPerStrip = 3; // else
    const char* order = "w";
};
struct Tags {
    int photometric, bits = 8;
    std::vector<std::uint16_t> dots = {}; // DotRange
    int inks = 0, format = 0, orientation = 0;
};

template <class Sample> void writePieces(TIFF* tiff, const Layout& layout, const Image& image, int width, int height) {
    const int planes = layout.planar ? image.channels : 1, channels = image.channels / planes;
    std::uint32_t number = 0;
    for (int plane = 0; plane < planes; ++plane)
        for (int top = 0; top < image.height; top += height)
            for (int left = 0; left < image.width; left += width) {
                std::vector<Sample> piece(std::size_t(width * height * channels), Sample(99));
                const int rows = std::min(height, image.height - top), columns = std::min(width, image.width - left);
                for (int y = 0; y < rows; ++y)
                    for (int x = 0; x < columns; ++x)
                        for (int c = 0; c < channels; ++c)
                            piece[std::size_t((y * width + x) * channels + c)] =
                                Sample(image.row(top + y)[(left + x) * image.channels + plane + c]);
                const auto size = tmsize_t(sizeof(Sample)) * width * channels * (layout.tile ? height : rows);
                ASSERT_EQ(
                    (layout.tile ? TIFFWriteEncodedTile : TIFFWriteEncodedStrip)(tiff, number++, piece.data(), size),
                    size);
            }
}

void writeByLibtiff(const std::string& path, const Layout& layout, const Tags& tags, const Image& image) {
    TIFF* tiff = TIFFOpen(path.c_str(), layout.order);
    ASSERT_NE(tiff, nullptr);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, tags.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, image.channels);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, tags.photometric);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, layout.compression);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, layout.planar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    if (tags.inks) TIFFSetField(tiff, TIFFTAG_INKSET, tags.inks);
    if (tags.format) TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, tags.format);
    if (tags.orientation) TIFFSetField(tiff, TIFFTAG_ORIENTATION, tags.orientation);
    if (!tags.dots.empty()) TIFFSetField(tiff, TIFFTAG_DOTRANGE, tags.dots[0], tags.dots[1]);
    if (layout.tile) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, layout.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, layout.tile);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, layout.rowsPerStrip);
    }
    const int width = layout.tile ? layout.tile : image.width, height = layout.tile ? layout.tile : layout.rowsPerStrip;
    if (tags.bits == 16)
        writePieces<std::uint16_t>(tiff, layout, image, width, height);
    else
        writePieces<std::uint8_t>(tiff, layout, image, width, height);
    TIFFClose(tiff);
}

std::string refusal(const std::string& path, std::size_t maxPixels = 1 << 20) {
    try {
        readImage(path, maxPixels);
        return {};
    } catch (const ImageError& e) {
        return e.what();
    }
}

Image inverse(Image image) {
    for (std::uint16_t& s : image.samples) s = std::uint16_t(image.maxval - s);
    return image;
}

} // namespace

TEST(Image, TiffOfEveryLayout) {
    const Folder folder;
    const std::string path = folder.file("a.tif");
    struct Kind {
        int photometric, channels;
    };
    for (const Kind kind : {Kind{PHOTOMETRIC_MINISBLACK, 1},
                            {PHOTOMETRIC_MINISBLACK, 2},
                            {PHOTOMETRIC_RGB, 3},
                            {PHOTOMETRIC_RGB, 4},
                            {PHOTOMETRIC_SEPARATED, 4}})
        for (int bits : {8, 16})
            for (int compression : {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_PACKBITS})
                for (bool planar : {false, true})
                    for (int tile : {0, 16, 32})
                        for (const char* order : {"wl", "wb", "w8"}) {
                            SCOPED_TRACE(std::to_string(kind.channels) + " channels of " + std::to_string(bits) +
                                         " bits, compression " + std::to_string(compression) + ", planar " +
                                         std::to_string(planar) + ", tile " + std::to_string(tile) + " " + order);
                            Image image = noise(37, 19, kind.channels, (1 << bits) - 1);
                            image.cmyk = kind.photometric == PHOTOMETRIC_SEPARATED;
                            writeByLibtiff(path, {compression, planar, tile, 3, order}, {kind.photometric, bits},
                                           image);
                            expectSame(image, readImage(path));
                        }
}

TEST(Image, TiffThatIsUpsideDown) {
    const Folder folder;
    const std::string path = folder.file("a.tif");
    // White on a scale is 0; ink is there where DotRange says so.
    const Image grey = noise(9, 5, 1, 255);
    writeByLibtiff(path, {}, {PHOTOMETRIC_MINISWHITE}, grey);
    expectSame(inverse(grey), readImage(path));
    Image inks = noise(9, 5, 4, 255);
    inks.cmyk = true;
    for (int ink : {0, INKSET_CMYK}) {
        writeByLibtiff(path, {}, {PHOTOMETRIC_SEPARATED, 8, {0, 255}, ink}, inks);
        expectSame(inks, readImage(path));
        writeByLibtiff(path, {}, {PHOTOMETRIC_SEPARATED, 8, {255, 0}, ink}, inks);
        expectSame(inverse(inks), readImage(path));
    }
}

TEST(Image, TiffOfSingleBits) {
    const Folder folder;
    const std::string path = folder.file("a.tif");
    // A row of 11 bits in two bytes, the first bit at the top.
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    for (auto [tag, value] : {std::pair{TIFFTAG_IMAGEWIDTH, 11},
                              {TIFFTAG_IMAGELENGTH, 2},
                              {TIFFTAG_BITSPERSAMPLE, 1},
                              {TIFFTAG_SAMPLESPERPIXEL, 1},
                              {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK},
                              {TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4},
                              {TIFFTAG_ROWSPERSTRIP, 2}})
        TIFFSetField(tiff, std::uint32_t(tag), value);
    std::uint8_t rows[] = {0xA5, 0xC0, 0x0F, 0x20};
    EXPECT_EQ(TIFFWriteEncodedStrip(tiff, 0, rows, 4), 4);
    TIFFClose(tiff);
    expectSame({11, 2, 1, 1, {1, 0, 1, 0, 0, 1, 0, 1, 1, 1, 0, 0, 0, 0, 0, 1, 1, 1, 1, 0, 0, 1}}, readImage(path));
}

TEST(Image, TiffThatIsNotSupportedIsNamed) {
    const Folder folder;
    const std::string path = folder.file("a.tif");
    Image inks = noise(9, 5, 4, 255);
    const auto refused = [&](const Tags& tags, const Image& image, const std::string& words) {
        writeByLibtiff(path, {}, tags, image);
        EXPECT_EQ(refusal(path), path + ": TIFF: " + words);
    };
    refused({PHOTOMETRIC_CIELAB}, noise(4, 4, 3, 255), "PhotometricInterpretation 8 is not supported");
    refused({PHOTOMETRIC_YCBCR}, noise(4, 4, 3, 255), "PhotometricInterpretation 6 is not supported");
    refused({PHOTOMETRIC_SEPARATED, 8, {}, INKSET_MULTIINK}, inks, "InkSet 2 is not supported");
    refused({PHOTOMETRIC_SEPARATED}, noise(4, 4, 3, 255), "SamplesPerPixel 3 is not supported");
    refused({PHOTOMETRIC_SEPARATED}, noise(4, 4, 5, 255), "SamplesPerPixel 5 is not supported");
    refused({PHOTOMETRIC_RGB}, noise(4, 4, 5, 255), "SamplesPerPixel 5 is not supported");
    refused({PHOTOMETRIC_MINISBLACK}, noise(4, 4, 3, 255), "SamplesPerPixel 3 is not supported");
    refused({PHOTOMETRIC_MINISWHITE}, noise(4, 4, 2, 255), "alpha beside a scale from white to black is not supported");
    refused({PHOTOMETRIC_RGB, 8, {}, 0, SAMPLEFORMAT_INT}, noise(4, 4, 3, 255), "SampleFormat 2 is not supported");
    refused({PHOTOMETRIC_RGB, 8, {}, 0, 0, 3}, noise(4, 4, 3, 255), "Orientation 3 is not supported");
    writeByLibtiff(path, {COMPRESSION_NONE, false, 64}, {PHOTOMETRIC_RGB}, noise(4, 4, 3, 255));
    EXPECT_EQ(refusal(path, 4095), path + ": TIFF: tiles of more pixels than the limit allows");
    EXPECT_EQ(refusal(path, 4096), "");
    EXPECT_EQ(refusal(path, 15), path + ": TIFF: a picture of 4 by 4: more pixels than the limit allows");
}

TEST(Image, TiffThatCannotBeWritten) {
    const auto message = [](const std::string& path) -> std::string {
        try {
            writeImage(path, noise(300, 300, 3, 65535));
        } catch (const ImageError& e) {
            return e.what();
        }
        return "";
    };
    EXPECT_EQ(message("/nowhere/x.tif"), "/nowhere/x.tif: No such file or directory");
    if (!std::filesystem::exists("/dev/full")) return;
    const Folder folder;
    std::filesystem::create_symlink("/dev/full", folder.file("full.tif"));
    EXPECT_EQ(message(folder.file("full.tif")), folder.file("full.tif") + ": No space left on device");
}

TEST(Image, DamagedTiff) {
    constexpr std::uint64_t seed = 77;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    const Folder folder;
    const std::string path = folder.file("a.tif");
    const Layout layouts[] = {{COMPRESSION_LZW, false, 0, 3, "w"},
                              {COMPRESSION_ADOBE_DEFLATE, true, 16, 0, "wb"},
                              {COMPRESSION_PACKBITS, true, 0, 5, "w"},
                              {COMPRESSION_NONE, false, 16, 0, "w8"}};
    int refusals = 0;
    for (const Layout& layout : layouts) {
        writeByLibtiff(path, layout, {PHOTOMETRIC_SEPARATED}, noise(21, 11, 4, 255));
        const std::vector<std::uint8_t> good = readBytes(path);
        const auto survives = [&](const std::vector<std::uint8_t>& file) {
            writeBytes(path, file);
            const std::string words = refusal(path, 1 << 16);
            EXPECT_TRUE(words.empty() || words.rfind(path + ": ", 0) == 0) << words;
            EXPECT_EQ(words.find('\n'), std::string::npos) << words;
            refusals += !words.empty();
        };
        for (int round = 0; round < 150; ++round) survives(damaged(good, rng, 4));
        for (std::size_t n = 0; n < good.size(); n += 1 + n / 64)
            survives({good.begin(), good.begin() + std::ptrdiff_t(n)});
    }
    EXPECT_GT(refusals, 150);
}

TEST(Image, RawFiles) {
    const Folder folder;
    const std::string path = folder.file("a.raw");
    using Bytes = std::vector<std::uint8_t>;
    const Bytes two{10, 20, 30, 200, 100, 50};
    writeBytes(path, two);
    const Image rgb = readRaw(path, 2, 1, RawFormat::rgb), bgr = readRaw(path, 1, 2, RawFormat::bgr),
                grey = readRaw(path, 3, 2, RawFormat::gray);
    expectSame(rgb, {2, 1, 3, 255, {10, 20, 30, 200, 100, 50}});
    expectSame(bgr, {1, 2, 3, 255, {30, 20, 10, 50, 100, 200}});
    expectSame(grey, {3, 2, 1, 255, {10, 20, 30, 200, 100, 50}});
    const auto written = [&](const Image& image, RawFormat format) {
        writeRaw(path, image, format);
        return readBytes(path);
    };
    EXPECT_EQ(written(rgb, RawFormat::rgb), two);
    EXPECT_EQ(written(rgb, RawFormat::bgr), (Bytes{30, 20, 10, 50, 100, 200}));
    EXPECT_EQ(written(rgb, RawFormat::gray), (Bytes{18, 124})); // 0.299 R + 0.587 G + 0.114 B
    EXPECT_EQ(written(grey, RawFormat::gray), two);
    EXPECT_EQ(written({2, 1, 1, 65535, {0, 65535}}, RawFormat::rgb), (Bytes{0, 0, 0, 255, 255, 255}));
    EXPECT_EQ(written({2, 1, 2, 255, {7, 1, 8, 2}}, RawFormat::gray), (Bytes{7, 8})) << "alpha is left out";
    EXPECT_EQ(written({1, 1, 2, 255, {7, 1}}, RawFormat::bgr), (Bytes{7, 7, 7}));
    EXPECT_EQ(written({1, 1, 4, 255, {7, 8, 9, 1}}, RawFormat::bgr), (Bytes{9, 8, 7}));

    writeBytes(path, {1, 2, 3, 4, 5, 6, 7, 8});
    const Image inks = readRaw(path, 1, 2, RawFormat::cmyk);
    expectSame(inks, {1, 2, 4, 255, {1, 2, 3, 4, 5, 6, 7, 8}, true});
    EXPECT_EQ(written(inks, RawFormat::cmyk), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    for (RawFormat format : {RawFormat::gray, RawFormat::rgb, RawFormat::bgr})
        EXPECT_THROW(writeRaw(path, inks, format), ImageError);
    EXPECT_THROW(writeRaw(path, rgb, RawFormat::cmyk), ImageError);
    for (auto [width, height] : {std::pair{1, 1}, {3, 1}, {2, 2}, {65535, 65535}})
        EXPECT_THROW(readRaw(path, width, height, RawFormat::cmyk), ImageError);
}
