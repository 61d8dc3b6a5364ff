// The TIFF codec: round trips of every kind of pixel, every layout of libtiff's making, broken files of every kind.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/tiff/tiff.h"
#include "tests/codecs/support/pictures.h"

#include <cstdio>
#include <cstring>
#include <tiffio.h>

using namespace codecs;

namespace {

// Stripes, ramps and noise.
Picture striped(const Shape& shape) {
    Rng rng(31);
    Picture picture(shape);
    for (int y = 0; y < shape.height; ++y)
        for (int x = 0; x < shape.width; ++x)
            for (int c = 0; c < shape.channels; ++c) {
                const int kind = (x / 9 + y / 5 + c) % 3;
                const auto v = kind == 0   ? shape.maxval
                               : kind == 1 ? (x + y) % (shape.maxval + 1)
                                           : rng.range(0, shape.maxval);
                picture.set(x * shape.channels + c, y, unsigned(v));
            }
    return picture;
}

Bytes encoded(const Picture& picture, const codecs::tiff::EncodeOptions& options = {}) {
    MemorySink file;
    PictureSource rows(picture);
    codecs::tiff::encode(rows, file, options);
    return std::move(file.bytes);
}
Picture decoded(const Bytes& file, std::uint64_t maxPixels = 1 << 20) {
    MemorySource source(file);
    PictureSink rows;
    codecs::tiff::decode(source, rows, maxPixels);
    return std::move(rows.picture);
}

// The message with which a file is refused; empty when it is decoded.
std::string refusal(const Bytes& file, std::uint64_t maxPixels = 1 << 20) {
    return errorOf([&] { decoded(file, maxPixels); });
}
void expectOneLine(const std::string& message) {
    EXPECT_EQ(message.rfind("TIFF: ", 0), 0u) << message;
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    EXPECT_LT(message.size(), 500u) << message;
}
void expectRefused(const Bytes& file, const std::string& words) {
    const std::string message = refusal(file);
    EXPECT_NE(message, "");
    EXPECT_NE(message.find(words), std::string::npos) << message;
}

std::uint32_t number(const Bytes& b, std::size_t at, int bytes) {
    std::uint32_t v = 0;
    for (int i = bytes; i-- > 0;) v = v << 8 | b[at + std::size_t(i)];
    return v;
}
Bytes withNumber(Bytes b, std::size_t at, std::uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) b[at + std::size_t(i)] = std::uint8_t(v >> 8 * i);
    return b;
}

// Where the entry of a tag stands in the one directory of a file of ours (little-endian), and its values.
std::size_t entry(const Bytes& b, int tag) {
    const std::size_t directory = number(b, 4, 4);
    for (std::uint32_t i = 0; i < number(b, directory, 2); ++i)
        if (number(b, directory + 2 + 12 * i, 2) == std::uint32_t(tag)) return directory + 2 + 12 * i;
    ADD_FAILURE() << "no tag " << tag;
    return directory + 2;
}
Bytes withTag(const Bytes& b, int tag, std::uint32_t value) { return withNumber(b, entry(b, tag) + 8, value, 4); }

constexpr int kWidth = 256, kHeight = 257, kCompression = 259, kPhotometric = 262, kStripOffsets = 273,
              kRowsPerStrip = 278, kStripByteCounts = 279, kPlanar = 284;

} // namespace

TEST(Tiff, RoundTripsOfEveryKind) {
    for (int maxval : {1, 255, 65535})
        for (int channels = 1; channels <= (maxval == 1 ? 1 : 5); ++channels)
            for (auto [width, height] : {std::pair{1, 1}, {1, 40}, {40, 1}, {7, 5}, {8, 9}, {129, 33}, {400, 20}})
                for (int rows : {0, 1, 7, 1000})
                    for (bool split : {false, true}) {
                        if (split && maxval != 65535) continue;
                        SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height) + ", " +
                                     std::to_string(channels) + " channels to " + std::to_string(maxval) + ", rows " +
                                     std::to_string(rows));
                        Shape shape = shapeOf(width, height, channels, maxval);
                        if (channels == 5) shape = {width, height, 4, maxval, Colour::cmyk, false};
                        const Picture in = striped(shape);
                        expectSame(in, decoded(encoded(in, {rows, split})));
                    }
}

// What libtiff packs in its own layouts.
TEST(Tiff, TilesAndPlanesOfLibtiff) {
    const Folder folder;
    const std::string path = folder.file("a.tif");
    for (int bits : {1, 8, 16})
        for (bool planar : {false, true})
            for (int tile : {0, 16, 64})
                for (const char* order : {"wl", "wb"})
                    for (int fill : {FILLORDER_MSB2LSB, FILLORDER_LSB2MSB}) {
                        const Picture in = striped(shapeOf(50, 21, 3, (1 << bits) - 1));
                        TIFF* t = TIFFOpen(path.c_str(), order);
                        for (auto [tag, value] : {std::pair{TIFFTAG_IMAGEWIDTH, 50},
                                                  {TIFFTAG_IMAGELENGTH, 21},
                                                  {TIFFTAG_BITSPERSAMPLE, bits},
                                                  {TIFFTAG_SAMPLESPERPIXEL, 3},
                                                  {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB},
                                                  {TIFFTAG_PLANARCONFIG, planar ? 2 : 1},
                                                  {TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS},
                                                  {TIFFTAG_FILLORDER, fill}})
                            TIFFSetField(t, std::uint32_t(tag), value);
                        if (tile) {
                            TIFFSetField(t, TIFFTAG_TILEWIDTH, tile);
                            TIFFSetField(t, TIFFTAG_TILELENGTH, tile);
                        } else {
                            TIFFSetField(t, TIFFTAG_ROWSPERSTRIP, 4);
                        }
                        const int width = tile ? tile : 50, height = tile ? tile : 4, planes = planar ? 3 : 1;
                        std::uint32_t piece = 0;
                        for (int p = 0; p < planes; ++p)
                            for (int top = 0; top < 21; top += height)
                                for (int left = 0; left < 50; left += width) {
                                    Bytes bytes;
                                    for (int y = top; y < (tile ? top + height : std::min(top + height, 21)); ++y) {
                                        unsigned held = 0;
                                        int n = 0;
                                        for (int x = left; x < left + width; ++x)
                                            for (int c = p; c < p + 3 / planes; ++c) {
                                                const unsigned v = x < 50 && y < 21 ? in.at(3 * x + c, y) : 0;
                                                const auto word = std::uint16_t(v);
                                                held = held << 1 | (v & 1);
                                                if (bits == 16)
                                                    bytes.insert(bytes.end(),
                                                                 reinterpret_cast<const std::uint8_t*>(&word),
                                                                 reinterpret_cast<const std::uint8_t*>(&word) + 2);
                                                else if (bits == 8 || ++n % 8 == 0)
                                                    bytes.push_back(std::uint8_t(bits == 8 ? v : held));
                                            }
                                        if (n % 8) bytes.push_back(std::uint8_t(held << (8 - n % 8)));
                                    }
                                    const auto size = tmsize_t(bytes.size());
                                    ASSERT_EQ((tile ? TIFFWriteEncodedTile : TIFFWriteEncodedStrip)(t, piece++,
                                                                                                    bytes.data(), size),
                                              size);
                                }
                        TIFFClose(t);
                        SCOPED_TRACE(std::to_string(bits) + " bits, planar " + std::to_string(planar) + ", tile " +
                                     std::to_string(tile) + ", " + order + ", fill " + std::to_string(fill));
                        expectSame(in, decoded(readFile(path)));
                    }
}

TEST(Tiff, OtherDepthsAreScaledUp) {
    const Picture few = decoded(encoded(made(shapeOf(5, 1, 1, 15), {0, 1, 7, 14, 15})));
    EXPECT_EQ(few.shape().maxval, 255);
    EXPECT_EQ(samplesOf(few), (std::vector<unsigned>{0, 17, 119, 238, 255}));
    const Picture deep = decoded(encoded(made(shapeOf(5, 1, 1, 4095), {0, 1, 2048, 4094, 4095})));
    EXPECT_EQ(deep.shape().maxval, 65535);
    EXPECT_EQ(samplesOf(deep), (std::vector<unsigned>{0, 16, 32776, 65519, 65535}));
}

TEST(Tiff, TheBytesOfASmallFile) {
    const Bytes b = encoded(made(shapeOf(8, 2, 1), {1, 1, 1, 1, 2, 3, 4, 5, 9, 8, 8, 7, 6, 6, 6, 6}));
    EXPECT_EQ(Bytes(b.begin(), b.begin() + 4), (Bytes{'I', 'I', 42, 0}));
    const std::size_t at = number(b, entry(b, kStripOffsets) + 8, 4), n = number(b, entry(b, kStripByteCounts) + 8, 4);
    // Rows are packed apart: no packet crosses from one to the next.
    EXPECT_EQ(Bytes(b.begin() + std::ptrdiff_t(at), b.begin() + std::ptrdiff_t(at + n)),
              (Bytes{0xFD, 1, 3, 2, 3, 4, 5, 3, 9, 8, 8, 7, 0xFD, 6}));
    EXPECT_EQ(number(b, entry(b, kCompression) + 8, 2), 32773u);
    // Bits, the first in the top one; the last byte is filled up with zeros.
    const Bytes bits = encoded(made(shapeOf(9, 1, 1, 1), {1, 0, 0, 0, 0, 0, 1, 0, 1}));
    EXPECT_EQ(Bytes(bits.begin() + 8, bits.begin() + 11), (Bytes{1, 0x82, 0x80}));
    // High bytes apart from low ones, under a scheme of their own.
    const Bytes split = encoded(made(shapeOf(3, 1, 1, 65535), {0x1201, 0x1202, 0x1203}), {0, true});
    EXPECT_EQ(Bytes(split.begin() + 8, split.begin() + 14), (Bytes{0xFE, 0x12, 2, 1, 2, 3}));
    EXPECT_EQ(number(split, entry(split, kCompression) + 8, 2), 64816u);
}

TEST(Tiff, SplitRowsAreSmallerWhereHighBytesAreSmooth) {
    Rng rng(33);
    const Picture in = made(shapeOf(500, 40, 1, 65535), rng.vec<std::uint16_t>(500 * 40, 0x4200, 0x42FF));
    const Bytes split = encoded(in, {0, true});
    EXPECT_LT(split.size(), encoded(in).size() * 6 / 10);
    expectSame(decoded(split), in);
}

TEST(Tiff, TheLongestPackedRowsFit) {
    // Two pairs and a single byte: the form that packing makes longest.
    std::vector<unsigned> row;
    for (unsigned i = 0; i < 2 * 5003; ++i) row.push_back(unsigned("aabbc"[i % 5003 % 5]) + i % 5003 / 5 % 2);
    const Picture in = made(shapeOf(5003, 2, 1), row);
    const Bytes file = encoded(in);
    expectSame(decoded(file), in);
    EXPECT_GT(file.size(), 12000u);
}

// A strip of more than is held at once, and rows that are packed much longer than they need be.
TEST(Tiff, StripsOfAnySize) {
    const Picture in = noise(shapeOf(700, 900, 1));
    expectSame(decoded(encoded(in, {900, false})), in);
    Bytes file = encoded(made(shapeOf(2000, 1, 1), std::vector<unsigned>(2000, 7)));
    const std::size_t at = number(file, entry(file, kStripOffsets) + 8, 4);
    ASSERT_EQ(at, 8u);
    Bytes strip(100000, 0x80); // packets of nothing
    for (int i = 0; i < 2000; ++i) strip.insert(strip.end(), {0, std::uint8_t(i)});
    const std::size_t start = file.size();
    file.insert(file.end(), strip.begin(), strip.end());
    file = withTag(withTag(file, kStripOffsets, std::uint32_t(start)), kStripByteCounts, std::uint32_t(strip.size()));
    file = withNumber(withNumber(file, entry(file, kStripByteCounts) + 2, 4, 2), entry(file, kStripOffsets) + 2, 4, 2);
    const Picture out = decoded(file);
    for (int x = 0; x < 2000; ++x) ASSERT_EQ(out.at(x, 0), unsigned(x) % 256);
}

TEST(Tiff, WhatCannotBeWritten) {
    EXPECT_NE(errorOf([] { encoded(striped(shapeOf(4, 4, 1)), {0, true}); }).find("16 bits"), std::string::npos);
    EXPECT_NE(errorOf([] {
                  encoded(striped({4, 4, 5, 255, Colour::other, false}));
              }).find("grey, RGB or CMYK"),
              std::string::npos);
}

TEST(Tiff, BrokenFilesSayWhatAndWhere) {
    expectRefused(Bytes{}, "not readable");
    expectRefused(Bytes(100, 'x'), "not readable");
    const Bytes good = encoded(striped(shapeOf(64, 20, 3)), {8, false});
    ASSERT_EQ(refusal(good), "");

    // Sizes.
    expectRefused(withTag(good, kWidth, 0xFFFF), "65535 by 20: more pixels than the limit");
    expectRefused(withTag(good, kHeight, 0xFFFFFFFF), "more pixels than the limit");
    expectRefused(withTag(good, kWidth, 50000), "50000 by 20 cannot be in a file of");
    expectRefused(withTag(good, kWidth, 0), "size is zero");
    expectRefused(withTag(good, kWidth, 65), "strip 0, row ");
    expectRefused(withTag(good, kWidth, 63), "strip 0, row ");
    expectRefused(withTag(good, kHeight, 40), "strip 2, row 20: the strip ends inside the row");
    expectRefused(withTag(good, kRowsPerStrip, 0), "");
    EXPECT_NE(refusal(good, 64 * 20 - 1).find("more pixels than the limit"), std::string::npos);

    // Kinds that are not supported.
    expectRefused(withTag(good, kCompression, 1), "Compression 1 is not supported");
    expectRefused(withTag(good, kCompression, 5), "Compression 5 is not supported");
    expectRefused(withTag(good, kCompression, 64816), "split rows of samples that have not 16 bits");
    expectRefused(withTag(good, kPhotometric, 5), "SamplesPerPixel 3");
    expectRefused(withTag(good, kPhotometric, 6), "PhotometricInterpretation 6");
    expectRefused(withTag(good, kPlanar, 2), "strip ");

    // Strips.
    const std::size_t counts = number(good, entry(good, kStripByteCounts) + 8, 4);
    const int width = number(good, entry(good, kStripByteCounts) + 2, 2) == 3 ? 2 : 4;
    const auto withCount = [&](int strip, std::uint32_t bytes) {
        return withNumber(good, counts + std::size_t(width * strip), bytes, width);
    };
    const std::uint32_t second = number(good, counts + std::size_t(width), width);
    expectRefused(withCount(1, 0), "strip 1: it has no bytes");
    expectRefused(withCount(1, 0xFFF0), "strip 1: 65520 bytes in a file of " + std::to_string(good.size()));
    expectRefused(withCount(1, second - 1), "strip 1, row 15");
    expectRefused(withCount(1, 1), "strip 1, row 8: ");
    EXPECT_EQ(refusal(withCount(1, second + 1)), "") << "bytes behind the last row are nobody's";
    Bytes packet = good;
    packet[8] = 0x81; // a run of 128 bytes, and more of them
    packet[10] = 0x81;
    expectRefused(packet, "strip 0, row 0: the packet at byte 2 goes beyond the row or the strip");
}

TEST(Tiff, EveryTruncation) {
    Bytes b = encoded(striped(shapeOf(9, 5, 3)), {2, false});
    while (!b.empty()) {
        b.pop_back();
        const std::string message = refusal(b);
        ASSERT_NE(message, "") << b.size() << " bytes";
        expectOneLine(message);
        ASSERT_FALSE(HasFailure()) << b.size() << " bytes";
    }
}

TEST(Tiff, RandomDamage) {
    constexpr std::uint64_t seed = 34;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    int refused = 0;
    for (const auto& [shape, split] : {std::pair{shapeOf(21, 11, 1, 1), false},
                                       {shapeOf(21, 11, 1), false},
                                       {shapeOf(21, 11, 2, 65535), true},
                                       {shapeOf(21, 11, 3), false}}) {
        const Bytes good = encoded(striped(shape), {3, split});
        const std::size_t directory = number(good, 4, 4);
        for (int round = 0; round < 200; ++round) {
            Bytes b = good;
            for (std::int64_t k = rng.range(1, 3); k > 0; --k)
                b[std::size_t(rng.range(rng.oneIn(2) ? std::int64_t(directory) : 0, std::int64_t(b.size()) - 1))] =
                    std::uint8_t(rng.range(0, 255));
            if (const std::string message = refusal(b); !message.empty()) {
                ++refused;
                expectOneLine(message);
            }
            ASSERT_FALSE(HasFailure()) << "round " << round;
        }
    }
    EXPECT_GT(refused, 200);
}
