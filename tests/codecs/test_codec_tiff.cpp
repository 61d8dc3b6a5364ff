// The tiff and hdp commands' insides: round trips of every kind of pixel, broken files of every kind, and the
// coefficients of pictures.
#include "codecs/hdphoto/hdphoto.h"
#include "codecs/tiff/rows.h"
#include "codecs/tiff/tiff.h"
#include "tests/support/rng.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <unistd.h>

namespace {

using tif::Bytes;

// A file of this process in the temporary folder, gone at the end.
struct TempFile {
    std::string path = ::testing::TempDir() + "zmx_tiff_" + std::to_string(getpid()) + ".tif";
    ~TempFile() { std::remove(path.c_str()); }

    Bytes bytes() const {
        std::ifstream in(path, std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(in), {});
    }
    void put(const Bytes& b) const {
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(b.data()), std::streamsize(b.size()));
    }
};

// Stripes, ramps and noise.
Image picture(int width, int height, int channels, int maxval) {
    Rng rng(31);
    Image image{width, height, channels, maxval, {}};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c) {
                const int kind = (x / 9 + y / 5 + c) % 3;
                image.samples.push_back(std::uint16_t(kind == 0   ? maxval
                                                      : kind == 1 ? (x + y) % (maxval + 1)
                                                                  : rng.range(0, maxval)));
            }
    return image;
}

// The message with which a file is refused; empty when it is decoded.
std::string refusal(const TempFile& file, std::size_t maxPixels = 1 << 20) {
    try {
        tif::read(file.path, maxPixels);
        return {};
    } catch (const tif::Error& e) {
        return e.what();
    }
}
std::string refusal(const TempFile& file, const Bytes& bytes) {
    file.put(bytes);
    return refusal(file);
}
void expectOneLine(const TempFile& file, const std::string& message) {
    EXPECT_EQ(message.rfind(file.path + ": TIFF: ", 0), 0u) << message;
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    EXPECT_LT(message.size(), 500u) << message;
}
::testing::AssertionResult refused(const TempFile& file, const Bytes& bytes, const std::string& words) {
    const std::string message = refusal(file, bytes);
    if (!message.empty() && message.find(words) != std::string::npos) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "not for \"" << words << "\" but: " << message;
}

std::uint32_t number(const Bytes& b, std::size_t at, int bytes) {
    std::uint32_t v = 0;
    std::memcpy(&v, b.data() + at, std::size_t(bytes));
    return v;
}

// Where the entry of a tag stands in the one directory of a file of ours (little-endian), and its values.
std::size_t entry(const Bytes& b, int tag) {
    const std::size_t directory = number(b, 4, 4);
    for (std::uint32_t i = 0; i < number(b, directory, 2); ++i)
        if (number(b, directory + 2 + 12 * i, 2) == std::uint32_t(tag)) return directory + 2 + 12 * i;
    ADD_FAILURE() << "no tag " << tag;
    return directory + 2;
}
Bytes withTag(Bytes b, int tag, std::uint32_t value) {
    std::memcpy(b.data() + entry(b, tag) + 8, &value, 4);
    return b;
}
Bytes withTagNumber(Bytes b, int tag, int newTag) {
    std::memcpy(b.data() + entry(b, tag), &newTag, 2);
    return b;
}

constexpr int kWidth = 256, kHeight = 257, kCompression = 259, kPhotometric = 262, kStripOffsets = 273,
              kOrientation = 274, kRowsPerStrip = 278, kStripByteCounts = 279, kPlanar = 284;

} // namespace

TEST(Tiff, RoundTripsOfEveryKind) {
    const TempFile file;
    for (int maxval : {1, 255, 65535})
        for (int channels = 1; channels <= (maxval == 1 ? 1 : 4); ++channels)
            for (auto [width, height] : {std::pair{1, 1}, {1, 40}, {40, 1}, {7, 5}, {8, 9}, {129, 33}, {400, 20}})
                for (int rows : {0, 1, 7, 1000})
                    for (bool split : {false, true}) {
                        if (split && maxval != 65535) continue;
                        SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height) + ", " +
                                     std::to_string(channels) + " channels to " + std::to_string(maxval) + ", rows " +
                                     std::to_string(rows));
                        const Image in = picture(width, height, channels, maxval);
                        tif::write(file.path, in, {rows, split});
                        const Image out = tif::read(file.path);
                        ASSERT_EQ(out.width, width);
                        ASSERT_EQ(out.height, height);
                        ASSERT_EQ(out.channels, channels);
                        ASSERT_EQ(out.maxval, maxval);
                        ASSERT_EQ(out.samples, in.samples);
                    }
}

TEST(Tiff, OtherDepthsAreScaledUp) {
    const TempFile file;
    Image in{5, 1, 1, 15, {0, 1, 7, 14, 15}};
    tif::write(file.path, in);
    EXPECT_EQ(tif::read(file.path).maxval, 255);
    EXPECT_EQ(tif::read(file.path).samples, (std::vector<std::uint16_t>{0, 17, 119, 238, 255}));
    in.maxval = 4095;
    in.samples = {0, 1, 2048, 4094, 4095};
    tif::write(file.path, in);
    EXPECT_EQ(tif::read(file.path).maxval, 65535);
    EXPECT_EQ(tif::read(file.path).samples, (std::vector<std::uint16_t>{0, 16, 32776, 65519, 65535}));
}

TEST(Tiff, TheBytesOfASmallFile) {
    const TempFile file;
    tif::write(file.path, {8, 2, 1, 255, {1, 1, 1, 1, 2, 3, 4, 5, 9, 8, 8, 7, 6, 6, 6, 6}});
    const Bytes b = file.bytes();
    EXPECT_EQ(Bytes(b.begin(), b.begin() + 4), (Bytes{'I', 'I', 42, 0}));
    const std::size_t at = number(b, entry(b, kStripOffsets) + 8, 4), n = number(b, entry(b, kStripByteCounts) + 8, 4);
    // Rows are packed apart: no packet crosses from one to the next.
    EXPECT_EQ(Bytes(b.begin() + std::ptrdiff_t(at), b.begin() + std::ptrdiff_t(at + n)),
              (Bytes{0xFD, 1, 3, 2, 3, 4, 5, 3, 9, 8, 8, 7, 0xFD, 6}));
    EXPECT_EQ(number(b, entry(b, kCompression) + 8, 2), 32773u);
    // Bits, the first in the top one; the last byte is filled up with zeros.
    tif::write(file.path, {9, 1, 1, 1, {1, 0, 0, 0, 0, 0, 1, 0, 1}});
    const Bytes bits = file.bytes();
    EXPECT_EQ(Bytes(bits.begin() + 8, bits.begin() + 11), (Bytes{1, 0x82, 0x80}));
    // High bytes apart from low ones, under a scheme of their own.
    tif::write(file.path, {3, 1, 1, 65535, {0x1201, 0x1202, 0x1203}}, {0, true});
    const Bytes split = file.bytes();
    EXPECT_EQ(Bytes(split.begin() + 8, split.begin() + 14), (Bytes{0xFE, 0x12, 2, 1, 2, 3}));
    EXPECT_EQ(number(split, entry(split, kCompression) + 8, 2), 64816u);
}

TEST(Tiff, SplitRowsAreSmallerWhereHighBytesAreSmooth) {
    const TempFile file;
    Image in{500, 40, 1, 65535, {}};
    Rng rng(33);
    for (int i = 0; i < 500 * 40; ++i) in.samples.push_back(std::uint16_t(0x4200 + rng.range(0, 255)));
    tif::write(file.path, in);
    const std::size_t plain = file.bytes().size();
    tif::write(file.path, in, {0, true});
    EXPECT_LT(file.bytes().size(), plain * 6 / 10);
    EXPECT_EQ(tif::read(file.path).samples, in.samples);
}

TEST(Tiff, TheLongestPackedRowsFit) {
    // Two pairs and a single byte: the form that packing makes longest.
    const TempFile file;
    Image in{5003, 2, 1, 255, {}};
    for (int i = 0; i < 2 * 5003; ++i) in.samples.push_back(std::uint16_t("aabbc"[i % 5003 % 5] + i % 5003 / 5 % 2));
    tif::write(file.path, in);
    EXPECT_EQ(tif::read(file.path).samples, in.samples);
    EXPECT_GT(file.bytes().size(), 12000u);
}

TEST(Tiff, WhatCannotBeWritten) {
    const TempFile file;
    const auto message = [&](const std::string& path, const Image& image, tif::EncodeOptions options) -> std::string {
        try {
            tif::write(path, image, options);
            return {};
        } catch (const tif::Error& e) {
            return e.what();
        }
    };
    EXPECT_NE(message(file.path, picture(4, 4, 1, 255), {0, true}).find("16 bits"), std::string::npos);
    Image inks = picture(4, 4, 4, 255);
    inks.cmyk = true;
    EXPECT_NE(message(file.path, inks, {}).find("CMYK"), std::string::npos);
    EXPECT_NE(message("/nowhere/x.tif", picture(4, 4, 1, 255), {}).find("/nowhere/x.tif"), std::string::npos);
    EXPECT_EQ(message("/nowhere/x.tif", picture(4, 4, 1, 255), {}).find('\n'), std::string::npos);
    EXPECT_NE(message("/dev/full", picture(40, 40, 3, 255), {}).find("/dev/full"), std::string::npos);
}

TEST(Tiff, BrokenFilesSayWhatAndWhere) {
    const TempFile file;
    EXPECT_TRUE(refused(TempFile{"/nowhere/x.tif"}, Bytes{}, "/nowhere/x.tif"));
    EXPECT_TRUE(refused(file, Bytes{}, "not readable"));
    EXPECT_TRUE(refused(file, Bytes(100, 'x'), "not readable"));
    tif::write(file.path, picture(64, 20, 3, 255), {8, false});
    const Bytes good = file.bytes();
    ASSERT_EQ(refusal(file, good), "");

    // Sizes.
    EXPECT_TRUE(refused(file, withTag(good, kWidth, 0xFFFF), "65535 by 20: more pixels than the limit"));
    EXPECT_TRUE(refused(file, withTag(good, kHeight, 0xFFFFFFFF), "more pixels than the limit"));
    EXPECT_TRUE(refused(file, withTag(good, kWidth, 50000), "50000 by 20 cannot be in a file of"));
    EXPECT_TRUE(refused(file, withTag(good, kWidth, 0), "size is zero"));
    EXPECT_TRUE(refused(file, withTag(good, kWidth, 65), "strip 0, row "));
    EXPECT_TRUE(refused(file, withTag(good, kWidth, 63), "strip 0, row "));
    EXPECT_TRUE(refused(file, withTag(good, kHeight, 40), "strip 2, row 20: the strip ends inside the row"));
    EXPECT_TRUE(refused(file, withTag(good, kRowsPerStrip, 0), "\"RowsPerStrip\""));
    EXPECT_NE(refusal(file), "");
    file.put(good);
    EXPECT_NE(refusal(file, 64 * 20 - 1).find("more pixels than the limit"), std::string::npos);

    // Kinds that are not supported.
    EXPECT_TRUE(refused(file, withTag(good, kCompression, 1), "Compression 1 is not supported"));
    EXPECT_TRUE(refused(file, withTag(good, kCompression, 5), "Compression 5 is not supported"));
    EXPECT_TRUE(refused(file, withTag(good, kCompression, 64816), "split rows of samples that have not 16 bits"));
    EXPECT_TRUE(refused(file, withTag(good, kPhotometric, 5), "PhotometricInterpretation 5"));
    EXPECT_TRUE(refused(file, withTag(good, kPhotometric, 6), "PhotometricInterpretation 6"));
    EXPECT_TRUE(refused(file, withTag(good, kPhotometric, 1), "SamplesPerPixel 3"));
    EXPECT_TRUE(refused(file, withTag(good, kPlanar, 2), "PlanarConfiguration 2"));
    EXPECT_TRUE(refused(file, withTagNumber(withTag(good, kPlanar, 3), kPlanar, kOrientation), "Orientation 3"));

    // Strips.
    const std::size_t counts = number(good, entry(good, kStripByteCounts) + 8, 4);
    const std::size_t width = number(good, entry(good, kStripByteCounts) + 2, 2) == 3 ? 2 : 4;
    const auto withCount = [&](int strip, std::uint32_t bytes) {
        Bytes b = good;
        std::memcpy(b.data() + counts + width * std::size_t(strip), &bytes, width);
        return b;
    };
    const std::uint32_t second = number(good, counts + width, int(width));
    EXPECT_TRUE(refused(file, withCount(1, 0), "strip 1: it has no bytes"));
    EXPECT_TRUE(
        refused(file, withCount(1, 0xFFF0), "strip 1: 65520 bytes in a file of " + std::to_string(good.size())));
    EXPECT_TRUE(refused(file, withCount(1, second - 1), "strip 1, row 15"));
    EXPECT_TRUE(refused(file, withCount(1, 1), "strip 1, row 8: "));
    EXPECT_EQ(refusal(file, withCount(1, second + 1)), "") << "bytes behind the last row are nobody's";
    Bytes packet = good;
    packet[8] = 0x81; // a run of 128 bytes, and more of them
    packet[10] = 0x81;
    EXPECT_TRUE(refused(file, packet, "strip 0, row 0: the packet at byte 2 goes beyond the row or the strip"));
}

TEST(Tiff, EveryTruncation) {
    const TempFile file;
    tif::write(file.path, picture(9, 5, 3, 255), {2, false});
    Bytes b = file.bytes();
    while (!b.empty()) {
        b.pop_back();
        const std::string message = refusal(file, b);
        ASSERT_NE(message, "") << b.size() << " bytes";
        expectOneLine(file, message);
        ASSERT_FALSE(HasFailure()) << b.size() << " bytes";
    }
}

TEST(Tiff, RandomDamage) {
    constexpr std::uint64_t seed = 34;
    SCOPED_TRACE(seed);
    Rng rng(seed);
    const TempFile file;
    int refused = 0;
    for (int kind = 0; kind < 4; ++kind) {
        tif::write(file.path,
                   picture(21, 11, kind < 2 ? 1 : kind,
                           kind == 0   ? 1
                           : kind == 2 ? 65535
                                       : 255),
                   {3, kind == 2});
        const Bytes good = file.bytes();
        const std::size_t directory = number(good, 4, 4);
        for (int round = 0; round < 200; ++round) {
            Bytes b = good;
            for (std::int64_t k = rng.range(1, 3); k > 0; --k)
                b[std::size_t(rng.range(rng.oneIn(2) ? std::int64_t(directory) : 0, std::int64_t(b.size()) - 1))] =
                    std::uint8_t(rng.range(0, 255));
            if (const std::string message = refusal(file, b); !message.empty()) {
                ++refused;
                expectOneLine(file, message);
            }
            ASSERT_FALSE(HasFailure()) << "kind " << kind << ", round " << round;
        }
    }
    EXPECT_GT(refused, 200);
}

TEST(Hdp, AFlatPictureHasItsEnergyInTheDc) {
    const hdp::Energy e = hdp::measure(Image{9, 5, 1, 255, std::vector<std::uint16_t>(45, 138)});
    EXPECT_EQ(e.blocks, 6u) << "3 by 2, the last ones continued";
    EXPECT_EQ(e.lost, 0u);
    EXPECT_EQ(e.mean[0], 1600.0) << "10 above the middle, with a gain of 4";
    for (std::size_t i = 1; i < 16; ++i) EXPECT_EQ(e.mean[i], 0.0);
    EXPECT_EQ(e.coefficients.width, 12);
    EXPECT_EQ(e.coefficients.height, 8);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 12; ++x) EXPECT_EQ(e.coefficients.row(y)[x], x < 3 && y < 2 ? 138 : 128);
}

TEST(Hdp, ARampAsItsCoefficients) {
    Image image{4, 4, 1, 255, {}};
    for (int i = 0; i < 16; ++i) image.samples.push_back(std::uint16_t(128 + i));
    const hdp::Energy e = hdp::measure(image);
    const int coefficients[16] = {30, 0, -17, 0, 0, 0, 0, -2, -4, 0, 0, 0, 0, -1, 0, 0};
    for (std::size_t i = 0; i < 16; ++i) EXPECT_EQ(e.mean[i], double(coefficients[i]) * coefficients[i]) << i;
    EXPECT_EQ(e.coefficients.samples[2], 128 - 17);
    EXPECT_EQ(e.coefficients.samples[0], 128 + 30 / 4);
}

TEST(Hdp, EveryKindComesBack) {
    for (int maxval : {1, 255, 4095, 65535})
        for (int channels = 1; channels <= 4; ++channels)
            for (auto [width, height] : {std::pair{1, 1}, {3, 50}, {64, 64}, {101, 7}}) {
                const hdp::Energy e = hdp::measure(picture(width, height, channels, maxval));
                EXPECT_EQ(e.lost, 0u);
                EXPECT_EQ(e.blocks, std::size_t((width + 3) / 4 * ((height + 3) / 4) * channels));
                EXPECT_TRUE(e.mean[0] > 0 || maxval == 1) << "a single bit is 0 or -1 about its middle";
            }
}
