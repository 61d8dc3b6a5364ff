// JPEG files into other files: turns, mirrors and cuts of coefficients; and what stands around the coefficients: tables
// from a text, a height behind the scan, metadata in its segments.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/coefficients.h"
#include "codecs/jpeg/quantise.h"
#include "codecs/jpeg/segmentreader.h"
#include "codecs/jpeg/standard.h"
#include "codecs/jpeg/turn.h"
#include "codecs/picture/orientation.h"
#include "tests/codecs/support/damage.h"
#include "tests/codecs/support/jpeg.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"

#include <gtest/gtest.h>

namespace {

using codecs::Metadata;
using codecs::Resolution;
using codecs::Turn;
using jpeg::EncodeOptions;
using jpeg::TranscodeOptions;

constexpr Turn kTurns[] = {Turn::none,      Turn::mirror,  Turn::half,       Turn::flip,
                           Turn::transpose, Turn::quarter, Turn::transverse, Turn::threeQuarters};
Turn opposite(Turn turn) {
    return turn == Turn::quarter ? Turn::threeQuarters : turn == Turn::threeQuarters ? Turn::quarter : turn;
}

Bytes noise(int width, int height, int channels) {
    Rng rng(5);
    Bytes out;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c)
                out.push_back(std::uint8_t(3 * x + 2 * y * (c + 1) + int(rng.range(0, 30))));
    return out;
}
Bytes encode(int width, int height, int channels, const std::vector<jpeg::Factors>& factors, int quality = 85) {
    EncodeOptions o;
    o.factors = factors;
    o.quality = quality;
    return jpeg::encode(picture(noise(width, height, channels), width, height, channels), o);
}
Bytes turned(const Bytes& file, Turn turn, bool trim = false) {
    TranscodeOptions o;
    o.turn = turn;
    o.trim = trim;
    return transcode(file, o).file;
}
// Pixels with chroma repeated, so that each belongs to its own unit.
Seen plain(const Bytes& file) {
    jpeg::DecodeOptions o;
    o.upsampling = jpeg::Upsampling::plain;
    return decoded(file, o);
}

struct Kind {
    int channels;
    std::vector<jpeg::Factors> factors;
};
const std::vector<Kind> kKinds = {{1, {}},
                                  {3, {{1, 1}}},
                                  {3, {{2, 1}}},
                                  {3, {{2, 2}}},
                                  {3, {{1, 2}, {1, 1}, {1, 2}}},
                                  {4, {{2, 2}, {1, 1}, {1, 1}, {2, 2}}}};

} // namespace

TEST(JpegTranscode, TurnsAreUndoneByTheirOpposites) {
    for (const Kind& kind : kKinds)
        for (auto [width, height] : {std::pair{16, 16}, {32, 48}, {64, 16}}) {
            const Bytes file = encode(width, height, kind.channels, kind.factors);
            const Bytes plainly = transcode(file, {}).file;
            for (Turn turn : kTurns) {
                SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height) + ", turn " +
                             std::to_string(int(turn)));
                const Bytes other = turned(file, turn);
                const bool exchanged = codecs::stepsOf(turn).exchanged;
                EXPECT_EQ(decoded(other, {}).width, exchanged ? height : width);
                if (turn != Turn::none) {
                    EXPECT_NE(other, plainly);
                }
                EXPECT_EQ(turned(other, opposite(turn)), plainly);
            }
        }
}

// Each pixel where it belongs; the transforms of a block and of the block on its side round differently by one.
TEST(JpegTranscode, TurnsMovePixels) {
    for (const Kind& kind : {kKinds[0], kKinds[1], kKinds[3]}) {
        const int width = 48, height = 32;
        const Bytes file = encode(width, height, kind.channels, kind.factors);
        const Seen before = plain(file);
        for (Turn turn : kTurns) {
            SCOPED_TRACE(int(turn));
            const Seen after = plain(turned(file, turn));
            const int n = kind.channels;
            int most = 0;
            for (int y = 0; y < after.height; ++y)
                for (int x = 0; x < after.width; ++x) {
                    int u = x, v = y;
                    switch (turn) { // where it comes from
                    case Turn::none:
                        break;
                    case Turn::mirror:
                        u = width - 1 - x;
                        break;
                    case Turn::half:
                        u = width - 1 - x, v = height - 1 - y;
                        break;
                    case Turn::flip:
                        v = height - 1 - y;
                        break;
                    case Turn::transpose:
                        u = y, v = x;
                        break;
                    case Turn::quarter: // the left column becomes the top row, from right to left
                        u = y, v = height - 1 - x;
                        break;
                    case Turn::transverse:
                        u = width - 1 - y, v = height - 1 - x;
                        break;
                    case Turn::threeQuarters:
                        u = width - 1 - y, v = x;
                        break;
                    }
                    for (int c = 0; c < n; ++c)
                        most = std::max(most, std::abs(after.pixels[std::size_t((y * after.width + x) * n + c)] -
                                                       before.pixels[std::size_t((v * width + u) * n + c)]));
                }
            EXPECT_LE(most, n == 1 ? 1 : 3);
        }
    }
}

TEST(JpegTranscode, PartsOfUnitsAreNotTurned) {
    const Bytes file = encode(37, 50, 3, {{2, 2}});
    for (Turn turn : {Turn::mirror, Turn::half, Turn::threeQuarters, Turn::transverse})
        EXPECT_NE(refusalOf([&] { turned(file, turn); }).find("width, 37, is no multiple of 16"), std::string::npos);
    EXPECT_NE(refusalOf([&] { turned(file, Turn::flip); }).find("its last 2 can be cut off"), std::string::npos);
    EXPECT_NE(refusalOf([&] { turned(file, Turn::quarter); }).find("height, 50"), std::string::npos);
    EXPECT_EQ(turned(turned(file, Turn::transpose), Turn::transpose), transcode(file, {}).file);
    const auto size = [&](Turn turn) {
        const Seen s = decoded(turned(file, turn, true), {});
        return std::pair(s.width, s.height);
    };
    EXPECT_EQ(size(Turn::mirror), std::pair(32, 50));
    EXPECT_EQ(size(Turn::half), std::pair(32, 48));
    EXPECT_EQ(size(Turn::quarter), std::pair(48, 37));
    EXPECT_EQ(size(Turn::threeQuarters), std::pair(50, 32));
    // Nothing would be left.
    EXPECT_NE(refusalOf([&] { turned(encode(9, 40, 3, {{2, 2}}), Turn::mirror, true); }), "");
}

TEST(JpegTranscode, PartsBeginWithAUnit) {
    for (const Kind& kind : {kKinds[0], kKinds[2], kKinds[3]}) {
        const Bytes file = encode(75, 66, kind.channels, kind.factors);
        const Seen whole = plain(file);
        const int n = kind.channels, unitWidth = n == 1 ? 8 : 16,
                  unitHeight = kind.factors.empty() || kind.factors[0].v == 1 ? 8 : 16;
        for (const jpeg::Part& p :
             {jpeg::Part{16, 16, 20, 17}, {0, 0, 75, 66}, {33, 50, 42, 16}, {74, 65, 1, 1}, {5, 7, 11, 3}}) {
            TranscodeOptions o;
            o.part = p;
            const jpeg::Transcoded t = transcode(file, o);
            const int left = p.x / unitWidth * unitWidth, top = p.y / unitHeight * unitHeight;
            EXPECT_EQ(t.warnings.size(), std::size_t(left != p.x || top != p.y));
            const Seen part = plain(t.file);
            ASSERT_EQ(part.width, p.width + p.x - left);
            ASSERT_EQ(part.height, p.height + p.y - top);
            Bytes want;
            for (int y = top; y < top + part.height; ++y)
                want.insert(want.end(), whole.pixels.begin() + (y * 75 + left) * n,
                            whole.pixels.begin() + (y * 75 + left + part.width) * n);
            EXPECT_TRUE(sameBytes(want, part.pixels));
        }
        for (const jpeg::Part& p :
             {jpeg::Part{-1, 0, 5, 5}, {0, 0, 76, 1}, {70, 0, 6, 1}, {0, 66, 1, 1}, {0, 0, 0, 5}, {0, 0, 5, -1}}) {
            TranscodeOptions o;
            o.part = p;
            EXPECT_NE(refusalOf([&] { transcode(file, o); }).find("not inside"), std::string::npos);
        }
    }
}

TEST(JpegTranscode, TheOrientationIsFollowed) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        codecs::Picture source = picture(noise(48, 32, 3), 48, 32, 3);
        codecs::setOrientation(source.metadata, orientation);
        source.metadata.resolution = Resolution{72, 144, Resolution::Unit::inch};
        const Bytes file = jpeg::encode(source);
        ASSERT_EQ(codecs::orientationOf(jpeg::decode(file).picture.metadata), orientation);
        TranscodeOptions o;
        o.upright = true;
        const Bytes upright = transcode(file, o).file;
        const codecs::Picture after = jpeg::decode(upright).picture;
        EXPECT_EQ(codecs::orientationOf(after.metadata), 1);
        const bool lying = orientation >= 5;
        EXPECT_EQ(after.shape().width, lying ? 32 : 48);
        EXPECT_EQ(after.metadata.resolution,
                  (Resolution{lying ? 144.0 : 72.0, lying ? 72.0 : 144.0, Resolution::Unit::inch}));
        // As the pixels themselves are turned; transforms round by the direction.
        const codecs::Picture before = jpeg::decode(file).picture;
        codecs::PictureSource rows(before);
        const Seen want = seen(codecs::readRows(*codecs::upright(codecs::borrowed(rows))));
        EXPECT_GT(psnr(want.pixels, seen(after).pixels), 45);
        // A turn of the user's own leaves the orientation as it is.
        EXPECT_EQ(codecs::orientationOf(jpeg::decode(turned(file, Turn::half)).picture.metadata), orientation);
    }
}

TEST(JpegTranscode, TablesOfATextAreThoseOfTheFile) {
    std::string text = "# luma\n";
    for (int i = 0; i < 64; ++i) text += std::to_string(i + 1) + (i % 8 == 7 ? "\n" : ", ");
    const std::vector<jpeg::QuantTable> one = jpeg::parseTables(text);
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0][0], 1); // zig-zag: (0, 0), (0, 1), (1, 0), (2, 0), (1, 1), (0, 2)
    EXPECT_EQ(one[0][1], 2);
    EXPECT_EQ(one[0][2], 9);
    EXPECT_EQ(one[0][3], 17);
    EXPECT_EQ(one[0][4], 10);
    EXPECT_EQ(one[0][63], 64);
    EXPECT_EQ(jpeg::transposedTable(jpeg::transposedTable(one[0])), one[0]);
    EXPECT_EQ(jpeg::transposedTable(one[0])[1], 9);
    for (int quality : {1, 25, 50, 75, 100}) {
        EncodeOptions o;
        o.tables = text + text;
        o.quality = quality;
        const Bytes file = jpeg::encode(picture(noise(16, 16, 3), 16, 16, 3), o);
        codecs::MemorySource source(file);
        jpeg::SegmentReader reader(source);
        ASSERT_TRUE(reader.nextScan());
        for (int k : {0, 1}) EXPECT_EQ(*reader.header().quant[std::size_t(k)], jpeg::scaledTable(one[0], quality, 8));
    }
    // The usual tables as the library scales them.
    for (int quality = 1; quality <= 100; ++quality) {
        std::array<Zmx8u, 64> raw;
        std::copy(jpeg::kLumaQuant.begin(), jpeg::kLumaQuant.end(), raw.begin());
        ASSERT_EQ(zmxiQuantFwdRawTableInit_JPEG_8u(raw.data(), quality), zmxStsNoErr);
        EXPECT_TRUE(std::equal(raw.begin(), raw.end(), jpeg::scaledTable(jpeg::kLumaQuant, quality, 8).begin()));
    }
    // One for each component, of words in 12 bits.
    std::string three = text + text;
    for (int i = 0; i < 64; ++i) three += " 600";
    EncodeOptions o;
    o.tables = three;
    o.quality = 50;
    const codecs::Picture deep = picture(Words(16 * 16 * 3, 1234), 16, 16, 3, 12);
    const Bytes file = jpeg::encode(deep, o);
    EXPECT_EQ(seen(jpeg::decode(file).picture).wide.size(), 16u * 16 * 3);
    EXPECT_NE(jpeg::describe(file).find("component 3: sampling 1x1, quantisation table 1"), std::string::npos)
        << "equal tables share one: " << jpeg::describe(file);
}

TEST(JpegTranscode, BadTablesAreRefusedInOneLine) {
    std::string good;
    for (int i = 0; i < 64; ++i) good += "16 ";
    for (const auto& [text, words] : {std::pair<std::string, const char*>{" ", "0 numbers"},
                                      {"16 17", "2 numbers"},
                                      {good + "1", "65 numbers"},
                                      {good + good + good + good + good, "320 numbers"},
                                      {"0 " + good, "1 to 65535"},
                                      {"65536 " + good, "1 to 65535"},
                                      {"99999999999999999999 " + good, "1 to 65535"},
                                      {"16 -1 " + good, "number 2 is none"},
                                      {"x", "number 1 is none"},
                                      {good + good + good + good, "4 quantisation tables, but the picture has 3"}}) {
        EncodeOptions o;
        o.tables = text;
        const std::string said = refusalOf([&] { jpeg::encode(picture(noise(8, 8, 3), 8, 8, 3), o); });
        EXPECT_NE(said.find(words), std::string::npos) << text << ": " << said;
        EXPECT_EQ(said.find('\n'), std::string::npos);
    }
}

// A frame of no height, and the height in a segment behind the first scan (ITU-T T.81, B.2.5).
TEST(JpegTranscode, AHeightBehindTheScan) {
    const auto moved = [](Bytes file, int height) {
        std::size_t sof = 2, data = 0;
        while (!jpeg::isFrame(file[sof + 1])) sof += 2 + std::size_t(file[sof + 2] << 8 | file[sof + 3]);
        file[sof + 5] = file[sof + 6] = 0;
        for (data = sof; file[data + 1] != jpeg::SOS;) data += 2 + std::size_t(file[data + 2] << 8 | file[data + 3]);
        data += 2 + std::size_t(file[data + 2] << 8 | file[data + 3]);
        while (file[data] != 0xFF || file[data + 1] == 0 || jpeg::isRestart(file[data + 1])) ++data;
        const Bytes dnl{0xFF, jpeg::DNL, 0, 4, std::uint8_t(height >> 8), std::uint8_t(height)};
        file.insert(file.begin() + std::ptrdiff_t(data), dnl.begin(), dnl.end());
        return file;
    };
    EncodeOptions progressive, lossless, restarts, scans;
    progressive.progressive = true;
    lossless.lossless = 4;
    restarts.restart = 2;
    scans.scans = "0;1;2;";
    for (const EncodeOptions& o : {EncodeOptions(), progressive, lossless, restarts, scans}) {
        const Bytes file = jpeg::encode(picture(noise(50, 300, 3), 50, 300, 3), o);
        const Seen want = decoded(file, {}), got = decoded(moved(file, 300), {});
        EXPECT_EQ(got.height, 300);
        EXPECT_TRUE(got.warnings.empty()) << got.warnings[0];
        EXPECT_TRUE(sameBytes(want.pixels, got.pixels));
        EXPECT_NE(refusalOf([&] { decoded(moved(file, 0), {}); }).find("no height"), std::string::npos);
        if (o.lossless) continue;
        EXPECT_EQ(transcode(moved(file, 300), {}).file, transcode(file, {}).file);
    }
}

// Luma that is coarser than chroma is a grey picture of half the size: of neutral pixels, each four times, the one that
// they were made of.
TEST(JpegTranscode, LumaThatIsCoarserThanChroma) {
    constexpr int w = 23, h = 19;
    const Bytes grey = noise(w, h, 1);
    Bytes large;
    for (int y = 0; y < 2 * h - 1; ++y)
        for (int x = 0; x < 2 * w - 1; ++x) large.insert(large.end(), 3, grey[std::size_t(y / 2 * w + x / 2)]);
    EncodeOptions o;
    o.factors = {{1, 1}, {2, 2}, {1, 1}};
    TranscodeOptions luma;
    luma.grey = true;
    const Seen got = decoded(transcode(jpeg::encode(picture(large, 2 * w - 1, 2 * h - 1, 3), o), luma).file, {});
    EXPECT_EQ(got.width, w);
    EXPECT_EQ(got.height, h);
    EXPECT_TRUE(sameBytes(got.pixels, decoded(jpeg::encode(picture(grey, w, h, 1), {}), {}).pixels));
}
