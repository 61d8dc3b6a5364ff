// TIFF files of libtiff's making, in every layout and kind of samples, against the pictures that went in.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/picture/orientation.h"
#include "tests/codecs/support/damage.h"
#include "tests/codecs/support/pictures.h"

#include <cmath>
#include <cstring>
#include <tiffio.h>

using namespace codecs;

namespace {

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
    std::vector<std::uint16_t> extra = {}; // ExtraSamples
};

// The samples of a row of a piece as libtiff takes them: bits packed from the top, words and floats of this machine.
Bytes packed(const std::vector<unsigned>& samples, const Tags& tags, int maxval) {
    Bytes out;
    unsigned held = 0;
    int bits = 0;
    for (unsigned v : samples) {
        if (tags.format == SAMPLEFORMAT_IEEEFP) {
            const double value = double(v) / maxval;
            const float single = float(value);
            const auto* p = tags.bits == 64 ? reinterpret_cast<const std::uint8_t*>(&value)
                                            : reinterpret_cast<const std::uint8_t*>(&single);
            out.insert(out.end(), p, p + tags.bits / 8);
        } else if (tags.bits == 16 || tags.bits == 32) {
            const std::uint32_t wide = tags.bits == 32 ? v * 65537u : v;
            const auto narrow = std::uint16_t(v);
            const auto* p = tags.bits == 32 ? reinterpret_cast<const std::uint8_t*>(&wide)
                                            : reinterpret_cast<const std::uint8_t*>(&narrow);
            out.insert(out.end(), p, p + tags.bits / 8);
        } else {
            held = held << tags.bits | v;
            for (bits += tags.bits; bits >= 8; bits -= 8) out.push_back(std::uint8_t(held >> (bits - 8)));
        }
    }
    if (bits > 0) out.push_back(std::uint8_t(held << (8 - bits)));
    return out;
}

void writePieces(TIFF* tiff, const Layout& layout, const Tags& tags, const Picture& picture) {
    const Shape& s = picture.shape();
    const int width = layout.tile ? layout.tile : s.width, height = layout.tile ? layout.tile : layout.rowsPerStrip;
    const int planes = layout.planar ? s.channels : 1, channels = s.channels / planes;
    std::uint32_t number = 0;
    for (int plane = 0; plane < planes; ++plane)
        for (int top = 0; top < s.height; top += height)
            for (int left = 0; left < s.width; left += width) {
                Bytes piece;
                for (int y = 0; y < (layout.tile ? height : std::min(height, s.height - top)); ++y) {
                    std::vector<unsigned> row(std::size_t(width * channels), 1); // 1: beyond the picture
                    for (int x = 0; x < std::min(width, s.width - left) && top + y < s.height; ++x)
                        for (int c = 0; c < channels; ++c)
                            row[std::size_t(x * channels + c)] =
                                picture.at((left + x) * s.channels + plane + c, top + y);
                    const Bytes bytes = packed(row, tags, s.maxval);
                    piece.insert(piece.end(), bytes.begin(), bytes.end());
                }
                const auto size = tmsize_t(piece.size());
                ASSERT_EQ(
                    (layout.tile ? TIFFWriteEncodedTile : TIFFWriteEncodedStrip)(tiff, number++, piece.data(), size),
                    size);
            }
}

// What else a test wants to set.
using More = std::function<void(TIFF*)>;

void writeByLibtiff(const std::string& path, const Layout& layout, const Tags& tags, const Picture& picture,
                    const More& more = {}) {
    TIFF* tiff = TIFFOpen(path.c_str(), layout.order);
    ASSERT_NE(tiff, nullptr);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.shape().width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.shape().height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, tags.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, picture.shape().channels);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, tags.photometric);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, layout.compression);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, layout.planar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    if (tags.inks) TIFFSetField(tiff, TIFFTAG_INKSET, tags.inks);
    if (tags.format) TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, tags.format);
    if (tags.orientation) TIFFSetField(tiff, TIFFTAG_ORIENTATION, tags.orientation);
    if (!tags.dots.empty()) TIFFSetField(tiff, TIFFTAG_DOTRANGE, tags.dots[0], tags.dots[1]);
    if (!tags.extra.empty()) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, int(tags.extra.size()), tags.extra.data());
    if (layout.tile) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, layout.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, layout.tile);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, layout.rowsPerStrip);
    }
    if (more) more(tiff);
    writePieces(tiff, layout, tags, picture);
    TIFFClose(tiff);
}

// A file of one test's own.
class Tiffs : public ::testing::Test {
protected:
    Folder folder;
    const std::string path = folder.file("a.tif");

    Picture read() const { return readPicture(path, 1 << 20); }
    std::string refusal(std::uint64_t maxPixels = 1 << 20) const {
        return errorOf([&] { readPicture(path, maxPixels); });
    }
    std::vector<std::string> warnings() const {
        const Rows rows = openPicture(path);
        readRows(*rows);
        return rows->warnings();
    }
};

} // namespace

TEST_F(Tiffs, OfEveryLayout) {
    for (const auto& [photometric, shape] : {std::pair{PHOTOMETRIC_MINISBLACK, shapeOf(37, 19, 1)},
                                             {PHOTOMETRIC_MINISBLACK, shapeOf(37, 19, 2)},
                                             {PHOTOMETRIC_RGB, shapeOf(37, 19, 3)},
                                             {PHOTOMETRIC_RGB, shapeOf(37, 19, 4)},
                                             {PHOTOMETRIC_SEPARATED, cmykShape(37, 19)}})
        for (int bits : {8, 16})
            for (int compression : {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_PACKBITS})
                for (bool planar : {false, true})
                    for (int tile : {0, 16, 32})
                        for (const char* order : {"wl", "wb", "w8"}) {
                            SCOPED_TRACE(std::to_string(shape.channels) + " channels of " + std::to_string(bits) +
                                         " bits, compression " + std::to_string(compression) + ", planar " +
                                         std::to_string(planar) + ", tile " + std::to_string(tile) + " " + order);
                            Shape deep = shape;
                            deep.maxval = (1 << bits) - 1;
                            const Picture picture = noise(deep);
                            writeByLibtiff(path, {compression, planar, tile, 3, order}, {photometric, bits}, picture);
                            expectSame(picture, read());
                        }
}

TEST_F(Tiffs, OfAnyBitsASample) {
    for (int bits : {1, 2, 3, 4, 5, 6, 7, 9, 10, 12, 14})
        for (int channels : {1, 3})
            for (bool planar : {false, true})
                for (int tile : {0, 16}) {
                    SCOPED_TRACE(std::to_string(bits) + " bits, " + std::to_string(channels) + " channels, planar " +
                                 std::to_string(planar) + ", tile " + std::to_string(tile));
                    const Picture picture = noise(shapeOf(37, 19, channels, (1 << bits) - 1));
                    writeByLibtiff(path, {COMPRESSION_LZW, planar, tile, 5, "wb"},
                                   {channels == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB, bits}, picture);
                    expectSame(picture, read());
                }
}

TEST_F(Tiffs, OfFloatsAndOf32Bits) {
    const Picture picture = noise(shapeOf(21, 9, 3, 65535));
    for (const char* order : {"wl", "wb"})
        for (int tile : {0, 16}) {
            for (int bits : {32, 64}) {
                writeByLibtiff(path, {COMPRESSION_NONE, tile > 0, tile, 4, order},
                               {PHOTOMETRIC_RGB, bits, {}, 0, SAMPLEFORMAT_IEEEFP}, picture);
                expectSame(picture, read());
            }
            writeByLibtiff(path, {COMPRESSION_ADOBE_DEFLATE, false, tile, 4, order}, {PHOTOMETRIC_RGB, 32}, picture);
            expectSame(picture, read());
            EXPECT_EQ(warnings(), std::vector<std::string>{"samples of 32 bits are kept to 16"});
        }
    // Half precision: 0, 1/2, 1, the least number, -1, infinity, no number.
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    for (auto [tag, value] : {std::pair{TIFFTAG_IMAGEWIDTH, 7},
                              {TIFFTAG_IMAGELENGTH, 1},
                              {TIFFTAG_BITSPERSAMPLE, 16},
                              {TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP},
                              {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK}})
        TIFFSetField(tiff, std::uint32_t(tag), value);
    std::uint16_t row[] = {0, 0x3800, 0x3C00, 1, 0xBC00, 0x7C00, 0xFE00};
    EXPECT_EQ(TIFFWriteEncodedStrip(tiff, 0, row, sizeof row), tmsize_t(sizeof row));
    TIFFClose(tiff);
    EXPECT_EQ(samplesOf(read()), (std::vector<unsigned>{0, 32768, 65535, 0, 0, 65535, 0}));
}

TEST_F(Tiffs, OfPalettes) {
    for (int bits : {1, 2, 4, 8})
        for (unsigned widened : {256u, 257u, 1u, 0u}) {
            std::uint16_t map[3][256];
            Rng rng(5);
            for (auto& colour : map)
                for (std::uint16_t& v : colour)
                    v = std::uint16_t(widened ? unsigned(rng.range(0, 255)) * widened : unsigned(rng.range(0, 65535)));
            map[0][0] = 255; // the first colours tell the kinds apart
            map[0][0] = std::uint16_t(widened ? 255 * widened : 0x1234);
            const Picture places = noise(shapeOf(29, 13, 1, (1 << bits) - 1));
            writeByLibtiff(path, {COMPRESSION_LZW, false, bits == 8 ? 16 : 0}, {PHOTOMETRIC_PALETTE, bits}, places,
                           [&](TIFF* t) { TIFFSetField(t, TIFFTAG_COLORMAP, map[0], map[1], map[2]); });
            const Picture picture = read();
            ASSERT_EQ(picture.shape(), shapeOf(29, 13, 3, widened ? 255 : 65535)) << bits << " bits, " << widened;
            for (int y = 0; y < 13; ++y)
                for (int x = 0; x < 29; ++x)
                    for (int c = 0; c < 3; ++c)
                        ASSERT_EQ(picture.at(3 * x + c, y), map[c][places.at(x, y)] / (widened ? widened : 1));
        }
}

TEST_F(Tiffs, UpsideDownScales) {
    // White on a scale is 0; ink is there where DotRange says so.
    for (int channels : {1, 2}) {
        const Picture grey = noise(shapeOf(9, 5, channels));
        writeByLibtiff(path, {}, {PHOTOMETRIC_MINISWHITE}, grey);
        expectSame(changed(grey, inverted), read());
    }
    const Picture bitmap = noise(shapeOf(19, 5, 1, 1));
    writeByLibtiff(path, {COMPRESSION_CCITTFAX4}, {PHOTOMETRIC_MINISWHITE, 1}, bitmap);
    expectSame(inverse(bitmap), read());
    const Picture inks = noise(cmykShape(9, 5));
    for (int ink : {0, INKSET_CMYK}) {
        writeByLibtiff(path, {}, {PHOTOMETRIC_SEPARATED, 8, {0, 255}, ink}, inks);
        expectSame(inks, read());
        writeByLibtiff(path, {}, {PHOTOMETRIC_SEPARATED, 8, {255, 0}, ink}, inks);
        expectSame(inverse(inks), read());
    }
}

TEST_F(Tiffs, ChannelsBehindTheColours) {
    // Colours that are multiplied by alpha are divided by it; none is left where it is 0.
    const Picture product = made(shapeOf(4, 1, 2), {100, 200, 50, 255, 0, 0, 250, 100});
    writeByLibtiff(path, {}, {PHOTOMETRIC_MINISBLACK, 8, {}, 0, 0, 0, {EXTRASAMPLE_ASSOCALPHA}}, product);
    EXPECT_EQ(samplesOf(read()), (std::vector<unsigned>{128, 200, 50, 255, 0, 0, 255, 100}));
    writeByLibtiff(path, {}, {PHOTOMETRIC_MINISBLACK, 8, {}, 0, 0, 0, {EXTRASAMPLE_UNASSALPHA}}, product);
    expectSame(product, read());
    Shape six = shapeOf(5, 4, 6);
    const Picture many = noise(six);
    writeByLibtiff(path, {}, {PHOTOMETRIC_RGB, 8, {}, 0, 0, 0, {2, 0, 0}}, many);
    EXPECT_EQ(warnings(), std::vector<std::string>{"2 further channels are left out"});
    const Picture kept = read();
    ASSERT_EQ(kept.shape(), shapeOf(5, 4, 4));
    for (int y = 0; y < 4; ++y)
        for (int i = 0; i < 20; ++i) EXPECT_EQ(kept.at(i, y), many.at(i / 4 * 6 + i % 4, y));
    Shape inksAndAlpha{5, 4, 5, 255, Colour::cmyk, true};
    const Picture inks = noise(inksAndAlpha);
    writeByLibtiff(path, {}, {PHOTOMETRIC_SEPARATED}, inks);
    expectSame(inks, read());
    writePicture(folder.file("b.tif"), inks);
    expectSame(inks, readPicture(folder.file("b.tif")));
}

TEST_F(Tiffs, OfYCbCr) {
    // Grey in YCbCr is its luma, whatever the subsampling; a colour comes out as the formula has it.
    struct Colours {
        std::uint8_t y, cb, cr, red, green, blue;
    };
    for (const Colours& c : {Colours{90, 128, 128, 90, 90, 90}, {76, 85, 255, 254, 0, 0}, {150, 44, 21, 0, 255, 1}})
        for (int sub : {1, 2}) {
            TIFF* tiff = TIFFOpen(path.c_str(), "w");
            for (auto [tag, value] : {std::pair{TIFFTAG_IMAGEWIDTH, 8},
                                      {TIFFTAG_IMAGELENGTH, 6},
                                      {TIFFTAG_BITSPERSAMPLE, 8},
                                      {TIFFTAG_SAMPLESPERPIXEL, 3},
                                      {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_YCBCR},
                                      {TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG},
                                      {TIFFTAG_ROWSPERSTRIP, 2}})
                TIFFSetField(tiff, std::uint32_t(tag), value);
            TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, sub, sub);
            Bytes strip;
            for (int i = 0; i < 16 / (sub * sub); ++i) {
                strip.insert(strip.end(), std::size_t(sub * sub), c.y);
                strip.insert(strip.end(), {c.cb, c.cr});
            }
            for (unsigned s = 0; s < 3; ++s)
                EXPECT_EQ(TIFFWriteEncodedStrip(tiff, s, strip.data(), tmsize_t(strip.size())), tmsize_t(strip.size()));
            TIFFClose(tiff);
            const Picture picture = read();
            ASSERT_EQ(picture.shape(), shapeOf(8, 6, 3));
            const unsigned want[] = {c.red, c.green, c.blue};
            for (int y = 0; y < 6; ++y)
                for (int i = 0; i < 24; ++i) EXPECT_NEAR(picture.at(i, y), want[i % 3], 2) << i << ", " << y;
        }
}

TEST_F(Tiffs, OfJpegStripsAndTiles) {
    if (!TIFFIsCODECConfigured(COMPRESSION_JPEG)) GTEST_SKIP() << "libtiff without JPEG";
    Picture ramp(shapeOf(48, 32, 3));
    for (int y = 0; y < 32; ++y)
        for (int i = 0; i < 144; ++i) ramp.set(i, y, unsigned(40 + i % 3 * 50 + i / 3 + y));
    for (int tile : {0, 16}) {
        // libtiff converts on the way in where it is told that RGB comes.
        writeByLibtiff(path, {COMPRESSION_JPEG, false, tile, 16}, {PHOTOMETRIC_YCBCR}, ramp, [](TIFF* t) {
            TIFFSetField(t, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
            TIFFSetField(t, TIFFTAG_JPEGQUALITY, 95);
        });
        const Picture picture = read();
        ASSERT_EQ(picture.shape(), ramp.shape());
        for (int y = 0; y < 32; ++y)
            for (int i = 0; i < 144; ++i) EXPECT_NEAR(picture.at(i, y), ramp.at(i, y), 6) << i << ", " << y;
    }
}

TEST_F(Tiffs, OrientationIsKept) {
    const Picture picture = noise(shapeOf(5, 4, 3));
    for (int orientation = 1; orientation <= 8; ++orientation) {
        writeByLibtiff(path, {}, {PHOTOMETRIC_RGB, 8, {}, 0, 0, orientation}, picture);
        expectSame(picture, read());
        EXPECT_EQ(orientationOf(read().metadata), orientation);
    }
}

TEST_F(Tiffs, TheFirstOfSeveralPictures) {
    const Picture picture = noise(shapeOf(5, 4, 1));
    writeByLibtiff(path, {}, {PHOTOMETRIC_MINISBLACK}, picture);
    EXPECT_TRUE(warnings().empty());
    writeByLibtiff(path, {COMPRESSION_NONE, false, 0, 3, "a"}, {PHOTOMETRIC_MINISBLACK}, noise(shapeOf(9, 9, 1)));
    EXPECT_EQ(warnings(), std::vector<std::string>{"only the first of its pictures is read"});
    expectSame(picture, read());
}

TEST_F(Tiffs, WhatIsNotSupportedIsNamed) {
    const auto refused = [&](const Tags& tags, const Picture& picture, const std::string& words) {
        writeByLibtiff(path, {}, tags, picture);
        EXPECT_EQ(refusal(), path + ": TIFF: " + words);
    };
    const Picture rgb = noise(shapeOf(4, 4, 3));
    refused({PHOTOMETRIC_ITULAB}, rgb, "PhotometricInterpretation 10 is not supported");
    refused({PHOTOMETRIC_SEPARATED, 8, {}, INKSET_MULTIINK}, noise(cmykShape(4, 4)), "InkSet 2 is not supported");
    refused({PHOTOMETRIC_SEPARATED}, rgb, "SamplesPerPixel 3 is not supported");
    refused({PHOTOMETRIC_RGB}, noise(shapeOf(4, 4, 1)), "SamplesPerPixel 1 is not supported");
    refused({PHOTOMETRIC_RGB, 8, {}, 0, SAMPLEFORMAT_INT}, rgb, "SampleFormat 2 is not supported");
    refused({PHOTOMETRIC_RGB, 8, {}, 0, SAMPLEFORMAT_COMPLEXINT}, rgb, "SampleFormat 5 is not supported");
    const std::vector<std::uint16_t> map(256, 77);
    writeByLibtiff(path, {}, {PHOTOMETRIC_PALETTE}, noise(shapeOf(4, 4, 2)),
                   [&](TIFF* t) { TIFFSetField(t, TIFFTAG_COLORMAP, map.data(), map.data(), map.data()); });
    EXPECT_EQ(refusal(), path + ": TIFF: SamplesPerPixel 2 is not supported");
    writeByLibtiff(path, {COMPRESSION_NONE, false, 64}, {PHOTOMETRIC_RGB}, rgb);
    EXPECT_EQ(refusal(4095), path + ": TIFF: tiles of more pixels than the limit allows");
    EXPECT_EQ(refusal(4096), "");
    EXPECT_EQ(refusal(15), path + ": TIFF: a picture of 4 by 4: more pixels than the limit allows");
}

TEST_F(Tiffs, ThatCannotBeWritten) {
    const auto message = [](const std::string& name) {
        return errorOf([&] { writePicture(name, noise(shapeOf(300, 300, 3, 65535))); });
    };
    EXPECT_EQ(message("/nowhere/x.tif"), "/nowhere/x.tif: No such file or directory");
    if (!std::filesystem::exists("/dev/full")) return;
    std::filesystem::create_symlink("/dev/full", folder.file("full.tif"));
    EXPECT_EQ(message(folder.file("full.tif")), folder.file("full.tif") + ": No space left on device");
}

TEST_F(Tiffs, DamagedOnes) {
    constexpr std::uint64_t seed = 77;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    const std::pair<Layout, Tags> kinds[] = {{{COMPRESSION_LZW, false, 0, 3, "w"}, {PHOTOMETRIC_SEPARATED}},
                                             {{COMPRESSION_ADOBE_DEFLATE, true, 16, 0, "wb"}, {PHOTOMETRIC_SEPARATED}},
                                             {{COMPRESSION_PACKBITS, true, 0, 5, "w"}, {PHOTOMETRIC_SEPARATED}},
                                             {{COMPRESSION_NONE, false, 0, 4, "w"}, {PHOTOMETRIC_RGB}},
                                             {{COMPRESSION_NONE, false, 16, 0, "w8"}, {PHOTOMETRIC_SEPARATED}}};
    int refusals = 0;
    for (const auto& [layout, tags] : kinds) {
        writeByLibtiff(path, layout, tags, noise(cmykShape(21, 11)));
        const Bytes good = readFile(path);
        const auto survives = [&](const Bytes& file) {
            const std::string words = errorOf([&] { pictureIn(file, 1 << 16); });
            EXPECT_EQ(words.find('\n'), std::string::npos) << words;
            refusals += !words.empty();
        };
        for (int round = 0; round < 150; ++round) survives(damaged(good, rng, 4));
        for (std::size_t n = 0; n < good.size(); n += 1 + n / 64)
            survives({good.begin(), good.begin() + std::ptrdiff_t(n)});
    }
    EXPECT_GT(refusals, 150);
}
