// The JPEG codec: round trips in every option, the roads of other encoders' files, and broken files of every
// kind.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/blockreader.h"
#include "codecs/jpeg/blockwriter.h"
#include "codecs/jpeg/coefficients.h"
#include "codecs/jpeg/segmentwriter.h"
#include "tests/codecs/support/damage.h"
#include "tests/codecs/support/jpeg.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numeric>

namespace {

using jpeg::EncodeOptions;
using jpeg::Sampling;

// Smooth waves with some texture, different in each channel.
Bytes waves(int width, int height, int channels, int texture = 4) {
    Rng rng(7);
    Bytes pixels;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c) {
                const double v = 128 + 60 * std::sin(0.09 * x + c) + 50 * std::cos(0.07 * y - 0.5 * c);
                pixels.push_back(std::uint8_t(std::clamp(int(v) + int(rng.range(-texture, texture)), 0, 255)));
            }
    return pixels;
}

Seen decode(const Bytes& file, int scale = 1, std::size_t maxPixels = 1 << 20) {
    jpeg::DecodeOptions options;
    options.scale = scale;
    options.maxPixels = maxPixels;
    return decoded(file, options);
}

// The message with which a file is refused; empty when it is decoded.
std::string refusal(const Bytes& file, std::size_t maxPixels = 1 << 20) {
    return refusalOf([&] { decode(file, 1, maxPixels); });
}
void expectRefused(const Bytes& file, const char* words) {
    EXPECT_NE(refusal(file).find(words), std::string::npos) << refusal(file);
}

// The segments of a file ahead of its data: offset of the marker and of the next one.
struct Segment {
    int marker;
    std::size_t begin, end;
};
std::vector<Segment> segmentsOf(const Bytes& file) {
    std::vector<Segment> out;
    for (std::size_t at = 2; file[at + 1] != jpeg::EOI;) {
        const std::size_t next = at + 2 + std::size_t(file[at + 2] << 8 | file[at + 3]);
        out.push_back({file[at + 1], at, next});
        if (file[at + 1] == jpeg::SOS) break;
        at = next;
    }
    return out;
}
Segment find(const Bytes& file, int marker) {
    for (const Segment& s : segmentsOf(file))
        if (s.marker == marker) return s;
    ADD_FAILURE() << "no such segment";
    return {};
}
Bytes without(Bytes file, const Segment& s) {
    file.erase(file.begin() + std::ptrdiff_t(s.begin), file.begin() + std::ptrdiff_t(s.end));
    return file;
}

struct Kind {
    const char* name;
    int channels;
    bool rgb, ycck;
};
const Kind kKinds[] = {{"grey", 1, false, false},
                       {"YCbCr", 3, false, false},
                       {"RGB", 3, true, false},
                       {"CMYK", 4, false, false},
                       {"YCCK", 4, false, true}};

EncodeOptions optionsFor(const Kind& kind, int quality = 90, Sampling sampling = Sampling::s420) {
    EncodeOptions o;
    o.quality = quality;
    o.sampling = sampling;
    o.rgb = kind.rgb;
    o.ycck = kind.ycck;
    return o;
}
Bytes encode(int width, int height, const Kind& kind, const EncodeOptions& o) {
    return jpeg::encode(picture(waves(width, height, kind.channels), width, height, kind.channels), o);
}
const Kind& kColour = kKinds[1];

} // namespace

TEST(Jpeg, RoundTripsInEveryOption) {
    for (const Kind& kind : kKinds)
        for (Sampling sampling : {Sampling::s444, Sampling::s422, Sampling::s420})
            for (auto [width, height] : {std::pair{1, 1}, {8, 8}, {16, 16}, {17, 15}, {7, 50}, {65, 33}})
                for (int quality : {10, 90, 100})
                    for (int variant = 0; variant < 4; ++variant) {
                        SCOPED_TRACE(std::string(kind.name) + " " + std::to_string(width) + "x" +
                                     std::to_string(height) + " quality " + std::to_string(quality) + " sampling " +
                                     std::to_string(int(sampling)) + " variant " + std::to_string(variant));
                        EncodeOptions o = optionsFor(kind, quality, sampling);
                        o.optimize = variant & 1;
                        o.restart = variant & 2 ? 3 : 0;
                        const Bytes pixels = waves(width, height, kind.channels, 0);
                        const Bytes file = jpeg::encode(picture(pixels, width, height, kind.channels), o);
                        const Seen p = decode(file);
                        ASSERT_EQ(p.width, width);
                        ASSERT_EQ(p.height, height);
                        ASSERT_EQ(p.channels, kind.channels);
                        EXPECT_EQ(jpeg::describe(file).find("Adobe transform") != std::string::npos,
                                  kind.rgb || kind.channels == 4);
                        EXPECT_TRUE(p.warnings.empty()) << p.warnings[0];
                        // Each channel is another wave, so chroma that is subsampled loses more.
                        EXPECT_GT(psnr(pixels, p.pixels), quality == 10 ? 21 : 30);
                        if (variant == 0) continue;
                        o.optimize = false;
                        o.restart = 0;
                        EXPECT_TRUE(sameBytes(
                            decode(jpeg::encode(picture(pixels, width, height, kind.channels), o)).pixels, p.pixels))
                            << "coding must not change the picture";
                    }
}

TEST(Jpeg, QualityAndSamplingOrderTheSizes) {
    const Kind& kind = kColour;
    std::size_t last = 0;
    double fidelity = 0;
    for (int quality : {1, 5, 25, 50, 75, 90, 100}) {
        const Bytes file = encode(96, 80, kind, optionsFor(kind, quality));
        EXPECT_GT(file.size(), last);
        last = file.size();
        const double now = psnr(waves(96, 80, 3), decode(file).pixels);
        EXPECT_GT(now, fidelity - 0.1) << quality;
        fidelity = now;
    }
    EXPECT_GT(encode(96, 80, kind, optionsFor(kind, 90, Sampling::s444)).size(),
              encode(96, 80, kind, optionsFor(kind, 90, Sampling::s422)).size());
    EncodeOptions o = optionsFor(kind);
    const std::size_t standard = encode(96, 80, kind, o).size();
    o.optimize = true;
    EXPECT_LT(encode(96, 80, kind, o).size(), standard);
}

TEST(Jpeg, AtQuality100TheCodecIsNearlyLossless) {
    // Grey and RGB have no colour conversion; noise of full range makes the largest coefficients there are.
    for (const Kind& kind : {kKinds[0], kKinds[2], kKinds[3]}) {
        Rng rng(11);
        const Bytes noise = rng.vec<std::uint8_t>(std::size_t(40 * 40 * kind.channels), 0, 1);
        Bytes pixels;
        for (std::uint8_t v : noise) pixels.push_back(v ? 255 : 0);
        const Seen p = decode(jpeg::encode(picture(pixels, 40, 40, kind.channels), optionsFor(kind, 100)));
        ASSERT_EQ(p.pixels.size(), pixels.size());
        for (std::size_t i = 0; i < pixels.size(); ++i)
            ASSERT_NEAR(p.pixels[i], pixels[i], 3) << kind.name << " sample " << i;
    }
}

// By units, whose conversion drops what is below a whole number and repeats the chroma; by planes nothing is dropped.
TEST(Jpeg, FastDecodingDoesNotRound) {
    for (Sampling sampling : {Sampling::s444, Sampling::s422, Sampling::s420})
        for (int quality : {50, 90, 95}) {
            SCOPED_TRACE(std::to_string(int(sampling)) + " quality " + std::to_string(quality));
            const Bytes file = encode(70, 45, kColour, optionsFor(kColour, quality, sampling));
            jpeg::DecodeOptions fast, plain;
            fast.fast = true;
            plain.upsampling = jpeg::Upsampling::plain;
            const Bytes rounded = decoded(file, plain).pixels, dropped = decoded(file, fast).pixels;
            long sum = 0;
            int most = 0;
            for (std::size_t i = 0; i < rounded.size(); ++i) {
                sum += rounded[i] - dropped[i];
                most = std::max(most, std::abs(rounded[i] - dropped[i]));
            }
            EXPECT_GT(double(sum) / double(rounded.size()), 0.2);
            EXPECT_LE(most, 1);
        }
}

// Every value of a flat picture comes back at every size: nothing is cut off.
TEST(Jpeg, FlatPicturesStayAsTheyAre) {
    for (int value = 0; value < 256; ++value) {
        const Bytes pixels(16 * 16, std::uint8_t(value));
        const Bytes file = jpeg::encode(picture(pixels, 16, 16, 1), optionsFor(kKinds[0], 100));
        for (int scale : {1, 2, 4, 8})
            EXPECT_EQ(decode(file, scale).pixels, Bytes(std::size_t(256 / (scale * scale)), std::uint8_t(value)));
    }
}

TEST(Jpeg, TheSameBytesFromEveryBuild) {
    Digest files, pixels;
    for (const Kind& kind : kKinds)
        for (Sampling sampling : {Sampling::s444, Sampling::s422, Sampling::s420})
            for (int quality : {20, 85}) {
                EncodeOptions o = optionsFor(kind, quality, sampling);
                o.optimize = quality == 85;
                // Whole numbers only: the waves come from sin(), which may differ.
                Rng rng(3);
                Bytes source;
                for (int i = 0; i < 45 * 37; ++i)
                    for (int c = 0; c < kind.channels; ++c)
                        source.push_back(std::uint8_t((i % 45) * 3 + (i / 45) * (c + 1) + int(rng.range(0, 15))));
                const Bytes file = jpeg::encode(picture(source, 45, 37, kind.channels), o);
                files.add(file);
                for (int scale : {1, 2, 4, 8}) pixels.add(decode(file, scale).pixels);
            }
    EXPECT_EQ(files.get(), 8635079370244885681u);
    EXPECT_EQ(pixels.get(), 15741795246952625822u);
}

TEST(Jpeg, ReducedSizes) {
    for (const Kind& kind : kKinds)
        for (Sampling sampling : {Sampling::s444, Sampling::s422, Sampling::s420})
            for (int scale : {2, 4, 8}) {
                SCOPED_TRACE(std::string(kind.name) + " 1/" + std::to_string(scale));
                const int width = 64, height = 48;
                const Bytes pixels = waves(width, height, kind.channels, 0);
                const Seen p = decode(
                    jpeg::encode(picture(pixels, width, height, kind.channels), optionsFor(kind, 95, sampling)), scale);
                ASSERT_EQ(p.width, width / scale);
                ASSERT_EQ(p.height, height / scale);
                Bytes mean;
                for (int y = 0; y < p.height; ++y)
                    for (int x = 0; x < p.width; ++x)
                        for (int c = 0; c < kind.channels; ++c) {
                            int sum = 0;
                            for (int i = 0; i < scale * scale; ++i)
                                sum += pixels[std::size_t(
                                    ((y * scale + i / scale) * width + x * scale + i % scale) * kind.channels + c)];
                            mean.push_back(std::uint8_t(sum / (scale * scale)));
                        }
                EXPECT_GT(psnr(mean, p.pixels), sampling == Sampling::s444 || kind.channels == 1 ? 36 : 26);
            }
    const Bytes odd = encode(65, 33, kColour, optionsFor(kColour));
    for (auto [scale, width, height] : {std::array{2, 33, 17}, {4, 17, 9}, {8, 9, 5}}) {
        EXPECT_EQ(decode(odd, scale).width, width);
        EXPECT_EQ(decode(odd, scale).height, height);
    }
    EXPECT_THROW(decode(odd, 3), codecs::Error);
}

namespace {

// Codes the blocks of an interleaved file again, as the given scans of components.
Bytes inScans(const Bytes& file, const std::vector<std::vector<int>>& scans, int restart) {
    codecs::MemorySource bytes(file);
    jpeg::SegmentReader reader(bytes);
    EXPECT_TRUE(reader.nextScan());
    const jpeg::Header header = reader.header();
    const jpeg::Frame& frame = header.frame;
    jpeg::Coefficients all(frame);
    jpeg::BlockReader source(header, bytes);
    for (int y = 0; y < frame.mcuRows(); ++y)
        for (int x = 0; x < frame.mcuColumns(); ++x)
            for (int i = 0; i < int(frame.components.size()); ++i) {
                const jpeg::Component& c = frame.components[std::size_t(i)];
                for (int k = 0; k < c.h * c.v; ++k)
                    EXPECT_TRUE(source.block(i, all.block(i, x * c.h + k % c.h, y * c.v + k / c.h)));
            }
    codecs::MemorySink sink;
    jpeg::Output out(sink);
    for (std::size_t i = 0; i < header.scanOffset; ++i) out.byte(file[i]);
    if (restart) jpeg::writeRestartInterval(out, restart);
    const jpeg::BlockWriter::Tables dc{&*header.dc[0], &*header.dc[1]}, ac{&*header.ac[0], &*header.ac[1]};
    for (const std::vector<int>& parts : scans) {
        jpeg::Scan scan;
        for (int i : parts) scan.components.push_back({i, i > 0, i > 0});
        jpeg::writeScan(out, frame, scan);
        jpeg::BlockWriter writer(out, dc, ac);
        const jpeg::Component& alone = frame.components[std::size_t(parts[0])];
        const bool single = parts.size() == 1;
        const int columns = single ? frame.blockColumns(alone) : frame.mcuColumns(),
                  rows = single ? frame.blockRows(alone) : frame.mcuRows();
        for (int n = 0; n < columns * rows; ++n) {
            if (restart && n && n % restart == 0) {
                writer.finishInterval();
                out.marker(jpeg::RST0 + (n / restart - 1) % 8);
            }
            const int x = n % columns, y = n / columns;
            for (int i : parts) {
                const jpeg::Component& c = frame.components[std::size_t(i)];
                const int h = single ? 1 : c.h, v = single ? 1 : c.v;
                for (int k = 0; k < h * v; ++k) writer.block(all.block(i, x * h + k % h, y * v + k / h), i, i > 0);
            }
        }
        writer.finishInterval();
    }
    out.marker(jpeg::EOI);
    out.flush();
    return sink.bytes;
}

} // namespace

TEST(Jpeg, ScansOfTheirOwn) {
    for (Sampling sampling : {Sampling::s444, Sampling::s422, Sampling::s420})
        for (auto [width, height] : {std::pair{1, 1}, {17, 15}, {65, 33}, {40, 72}})
            for (int restart : {0, 1, 5}) {
                const Bytes file = encode(width, height, kColour, optionsFor(kColour, 80, sampling));
                const Bytes expected = decode(file).pixels;
                for (const std::vector<std::vector<int>>& scans : {std::vector<std::vector<int>>{{0}, {1}, {2}},
                                                                   {{2}, {0}, {1}},
                                                                   {{0}, {1, 2}},
                                                                   {{0, 1}, {2}},
                                                                   {{2, 1, 0}}}) {
                    const Seen p = decode(inScans(file, scans, restart));
                    EXPECT_TRUE(p.warnings.empty()) << p.warnings[0];
                    EXPECT_TRUE(sameBytes(expected, p.pixels))
                        << width << "x" << height << " in " << scans.size() << " scans";
                }
            }
}

TEST(Jpeg, AMissingScanIsAWarning) {
    const Bytes file = encode(33, 33, kColour, optionsFor(kColour));
    const Seen p = decode(inScans(file, {{0}, {2}}, 0));
    ASSERT_EQ(p.warnings.size(), 1u);
    EXPECT_NE(p.warnings[0].find("component 2 is missing"), std::string::npos);
    const Seen twice = decode(inScans(file, {{0}, {0}}, 0));
    EXPECT_NE(twice.warnings.at(0).find("coded twice"), std::string::npos);
}

TEST(Jpeg, TablesOfWords) {
    // The same divisors in a DQT segment of 16-bit entries, as extended sequential files have them.
    Bytes file = encode(33, 20, kColour, optionsFor(kColour, 30));
    const Bytes expected = decode(file).pixels;
    for (const Segment& s : segmentsOf(file)) {
        if (s.marker != jpeg::DQT) continue;
        Bytes wide{0xFF, jpeg::DQT, 0, 131, std::uint8_t(0x10 | file[s.begin + 4])};
        for (std::size_t i = s.begin + 5; i < s.end; ++i) wide.insert(wide.end(), {0, file[i]});
        file.insert(file.begin() + std::ptrdiff_t(s.end), wide.begin(), wide.end());
        for (std::size_t i = s.begin + 5; i < s.end; ++i) file[i] = 1; // what stands there first is replaced
        break;
    }
    file[find(file, jpeg::SOF0).begin + 1] = jpeg::SOF1;
    EXPECT_TRUE(sameBytes(expected, decode(file).pixels));
}

TEST(Jpeg, OneComponentHasNoSampling) {
    Bytes file = encode(33, 20, kKinds[0], optionsFor(kKinds[0]));
    const Bytes expected = decode(file).pixels;
    file[find(file, jpeg::SOF0).begin + 11] = 0x22;
    EXPECT_TRUE(sameBytes(expected, decode(file).pixels));
}

TEST(Jpeg, TheLastByteIsStuffedToo) {
    // Of many small files some end in a byte of ones.
    Rng rng(21);
    int stuffed = 0;
    for (int round = 0; round < 1500; ++round) {
        const auto pixels = rng.vec<std::uint8_t>(64, 0, 255);
        const Bytes file = jpeg::encode(picture(pixels, 8, 8, 1), optionsFor(kKinds[0], 97));
        const std::size_t n = file.size();
        ASSERT_EQ(file[n - 2], 0xFF);
        ASSERT_NE(file[n - 3], 0xFF) << "the byte ahead of the marker would be a fill byte";
        stuffed += file[n - 4] == 0xFF && file[n - 3] == 0x00;
        ASSERT_TRUE(decode(file).warnings.empty());
    }
    EXPECT_GT(stuffed, 0);
}

TEST(Jpeg, WhatCannotBeEncodedIsRefused) {
    const Bytes pixels(4 * 4 * 4, 100);
    EncodeOptions o;
    EXPECT_THROW(jpeg::encode(picture(pixels, 0, 4, 3), o), codecs::Error);
    EXPECT_THROW(jpeg::encode(picture(Bytes(3 * 65536), 1, 65536, 3), o), codecs::Error);
    EXPECT_THROW(jpeg::encode(picture(pixels, 4, 4, 2), o), codecs::Error);
    EXPECT_THROW(jpeg::encode(codecs::Picture(codecs::shapeOf(4, 4, 5)), o), codecs::Error);
    for (int channels : {2, 4})
        for (int lossless : {0, 1}) {
            o.lossless = lossless;
            const codecs::Picture alpha(codecs::shapeOf(4, 4, channels));
            EXPECT_NE(refusalOf([&] { jpeg::encode(alpha, o); }).find("alpha"), std::string::npos);
        }
    o.lossless = 0;
    o.quality = 0;
    EXPECT_THROW(jpeg::encode(picture(pixels, 4, 4, 3), o), codecs::Error);
    o.quality = 101;
    EXPECT_THROW(jpeg::encode(picture(pixels, 4, 4, 3), o), codecs::Error);
    o.quality = 50;
    o.restart = 65536;
    EXPECT_THROW(jpeg::encode(picture(pixels, 4, 4, 3), o), codecs::Error);
}

TEST(Jpeg, WhatIsNotSupportedIsNamed) {
    const Bytes file = encode(16, 16, kColour, optionsFor(kColour));
    const std::size_t sof = find(file, jpeg::SOF0).begin;
    const auto with = [&](std::size_t at, int value) {
        Bytes f = file;
        f[at] = std::uint8_t(value);
        return f;
    };
    expectRefused(with(sof + 1, 0xC2), "progressive");
    expectRefused(with(sof + 1, 0xC3), "predictor 0");
    expectRefused(with(sof + 1, 0xC5), "hierarchical");
    expectRefused(with(sof + 1, 0xC9), "arithmetic");
    expectRefused(with(sof + 4, 12), "12-bit");
    expectRefused(with(sof + 6, 0), "no height");
    expectRefused(with(sof + 8, 0), "no width");
    expectRefused(with(sof + 9, 5), "components");
    expectRefused(with(sof + 11, 0x52), "sampling");
    expectRefused(Bytes({1, 2, 3}), "SOI");
    expectRefused(Bytes({0xFF, 0xD8, 0xFF, 0xD9}), "no scan");
    expectRefused(Bytes(), "SOI");
}

TEST(Jpeg, MissingTablesAreNamed) {
    const Bytes file = encode(16, 16, kColour, optionsFor(kColour));
    int seen = 0;
    for (const Segment& s : segmentsOf(file))
        if (s.marker == jpeg::DQT || s.marker == jpeg::DHT) {
            expectRefused(without(file, s), "missing");
            ++seen;
        }
    EXPECT_EQ(seen, 6);
    expectRefused(without(file, find(file, jpeg::SOF0)), "ahead of the frame");
    expectRefused(without(file, find(file, jpeg::SOS)), "no scan");
}

TEST(Jpeg, AbsurdSizesAreRefusedBeforeMemoryIsTaken) {
    Bytes file = encode(16, 16, kColour, optionsFor(kColour));
    const std::size_t sof = find(file, jpeg::SOF0).begin;
    for (std::size_t i = 5; i < 9; ++i) file[sof + i] = 0xFF;
    expectRefused(file, "65535 by 65535");
    EXPECT_NE(refusal(file, std::size_t(1) << 28), "");
    // As many pixels as the limit allows, and next to no data: the rest is grey, and it is said.
    file[sof + 5] = 0, file[sof + 6] = 255;
    file[sof + 7] = 0, file[sof + 8] = 255;
    const Seen p = decode(file, 1, 255 * 255);
    EXPECT_EQ(p.pixels.size(), 255u * 255 * 3);
    EXPECT_EQ(p.pixels.back(), 128);
    EXPECT_FALSE(p.warnings.empty());
    EXPECT_NE(refusal(file, 255 * 255 - 1), "");
}

TEST(Jpeg, EveryTruncation) {
    for (const Kind& kind : kKinds)
        for (int restart : {0, 2}) {
            EncodeOptions o = optionsFor(kind, 40);
            o.restart = restart;
            const Bytes file = encode(35, 50, kind, o);
            const Bytes whole = decode(file).pixels;
            const std::size_t data = find(file, jpeg::SOS).end;
            std::size_t rowsBefore = 0;
            for (std::size_t n = 0; n < file.size(); ++n) {
                SCOPED_TRACE(std::string(kind.name) + " cut to " + std::to_string(n) + " of " +
                             std::to_string(file.size()));
                const Bytes cut(file.begin(), file.begin() + std::ptrdiff_t(n));
                if (n < data) {
                    EXPECT_NE(refusal(cut), "");
                    continue;
                }
                const Seen p = decode(cut);
                EXPECT_FALSE(p.warnings.empty());
                ASSERT_EQ(p.pixels.size(), whole.size());
                // Rows decoded so far are those of the whole picture, and there are no fewer than with fewer
                // bytes.
                const std::size_t rowBytes = std::size_t(35 * kind.channels);
                const std::size_t same =
                    std::size_t(std::mismatch(whole.begin(), whole.end(), p.pixels.begin()).first - whole.begin()) /
                    rowBytes;
                EXPECT_GE(same + 1, rowsBefore);
                rowsBefore = same;
                const std::size_t at = p.warnings[0].find("rows from ");
                if (at != std::string::npos) {
                    // The row ahead of what is missing already leans on its chroma.
                    EXPECT_GE(same + 1, std::stoul(p.warnings[0].substr(at + 10)));
                }
            }
            EXPECT_GE(rowsBefore, 49u) << "the EOI marker alone is no part of the picture";
        }
}

namespace {

// Neither crash nor hang; a picture has the size that its header says, a refusal has words.
void survives(const Bytes& file) {
    constexpr std::size_t limit = 1 << 14;
    for (int scale : {1, 4}) {
        try {
            const Seen p = decode(file, scale, limit);
            EXPECT_EQ(p.pixels.size(), std::size_t(p.width) * std::size_t(p.height) * std::size_t(p.channels));
            EXPECT_LE(p.pixels.size(), 4 * limit);
        } catch (const codecs::Error& e) {
            EXPECT_GT(std::string(e.what()).size(), 5u);
        }
    }
    try {
        EXPECT_FALSE(jpeg::describe(file).empty());
    } catch (const codecs::Error&) {
    }
}

} // namespace

TEST(Jpeg, EachSegmentDamagedInTurn) {
    for (const Kind& kind : {kKinds[1], kKinds[4]}) {
        EncodeOptions o = optionsFor(kind, 50, Sampling::s422);
        o.restart = 2;
        const Bytes file = encode(20, 20, kind, o);
        for (const Segment& s : segmentsOf(file)) {
            survives(without(file, s));
            Bytes twice = file;
            twice.insert(twice.begin() + std::ptrdiff_t(s.end), file.begin() + std::ptrdiff_t(s.begin),
                         file.begin() + std::ptrdiff_t(s.end));
            survives(twice);
            const auto length = int(s.end - s.begin - 2);
            for (int other : {0, 1, 2, 3, length - 1, length + 1, 0x7FFF, 0xFFFF}) {
                Bytes f = file;
                f[s.begin + 2] = std::uint8_t(other >> 8);
                f[s.begin + 3] = std::uint8_t(other);
                survives(f);
            }
            for (std::size_t at = s.begin; at < s.end && at < s.begin + 40; ++at)
                for (int flip : {1, 0x10, 0x80, 0xFF}) {
                    Bytes f = file;
                    f[at] = std::uint8_t(f[at] ^ flip);
                    survives(f);
                }
        }
    }
}

TEST(Jpeg, RandomDamage) {
    Rng rng(2024);
    const Bytes plain = encode(40, 40, kColour, optionsFor(kColour, 60));
    EncodeOptions o = optionsFor(kKinds[4], 60);
    o.restart = 1;
    o.optimize = true;
    const Bytes files[] = {plain, inScans(plain, {{0}, {1, 2}}, 3), encode(40, 40, kKinds[4], o),
                           encode(40, 40, kKinds[0], optionsFor(kKinds[0]))};
    for (int round = 0; round < 1500; ++round) {
        survives(damaged(files[rng.range(0, 3)], rng, 6));
        if (HasFailure()) FAIL() << "round " << round;
    }
}

TEST(Jpeg, RandomDataBehindASoundHeader) {
    Rng rng(5);
    for (int round = 0; round < 300; ++round) {
        EncodeOptions o = optionsFor(kKinds[rng.range(0, 4)], 60, Sampling(rng.range(0, 2)));
        o.restart = int(rng.range(0, 2));
        Bytes f = encode(30, 30, kKinds[o.ycck ? 4 : o.rgb ? 2 : 1], o);
        f.resize(find(f, jpeg::SOS).end);
        const auto noise = rng.vec<std::uint8_t>(std::size_t(rng.range(0, 800)), 0, 255);
        f.insert(f.end(), noise.begin(), noise.end());
        survives(f);
    }
}

TEST(Jpeg, RestartsKeepDamageInItsInterval) {
    EncodeOptions o = optionsFor(kKinds[0], 90);
    o.restart = 6; // a row of blocks
    const Bytes pixels = waves(48, 160, 1);
    const Bytes file = jpeg::encode(picture(pixels, 48, 160, 1), o), whole = decode(file).pixels;
    std::vector<std::size_t> marks; // of the restart markers
    for (std::size_t at = find(file, jpeg::SOS).end; at + 1 < file.size(); ++at)
        if (file[at] == 0xFF && jpeg::isRestart(file[at + 1])) marks.push_back(at);
    ASSERT_EQ(marks.size(), 19u);
    const auto rowsLost = [&](const Bytes& damaged) {
        const Seen p = decode(damaged);
        EXPECT_FALSE(p.warnings.empty());
        std::vector<int> rows;
        for (int r = 0; r < 20; ++r)
            if (!std::equal(whole.begin() + r * 8 * 48, whole.begin() + (r + 1) * 8 * 48,
                            p.pixels.begin() + r * 8 * 48))
                rows.push_back(r);
        return rows;
    };
    Bytes f = file; // the data of row 3 end early
    f.erase(f.begin() + std::ptrdiff_t(marks[2] + 8), f.begin() + std::ptrdiff_t(marks[3]));
    EXPECT_EQ(rowsLost(f), std::vector<int>{3});
    f = file; // a marker is gone: row 3 is followed by data of row 4, and its number tells
    f.erase(f.begin() + std::ptrdiff_t(marks[3]), f.begin() + std::ptrdiff_t(marks[3] + 2));
    EXPECT_EQ(rowsLost(f), std::vector<int>{4});
    f = file; // so are a row and both of its markers but one
    f.erase(f.begin() + std::ptrdiff_t(marks[3]), f.begin() + std::ptrdiff_t(marks[5]));
    EXPECT_EQ(rowsLost(f), (std::vector<int>{4, 5}));
    f = file; // the number of a marker is damaged
    f[marks[6] + 1] = jpeg::RST0 + 2;
    EXPECT_EQ(rowsLost(f), std::vector<int>{});
    f[marks[6] + 1] = jpeg::RST0; // as if two were lost: row 7 lands two further down, then the numbers are right again
    EXPECT_EQ(rowsLost(f), (std::vector<int>{7, 8, 9}));
    f = file; // what looks like a marker within the data of row 9 is none
    f[marks[8] + 6] = 0xFF;
    f[marks[8] + 7] = 0x20;
    EXPECT_EQ(rowsLost(f), std::vector<int>{9});
}

TEST(Jpeg, DescribeSaysWhatTheFileIs) {
    EncodeOptions o = optionsFor(kColour);
    o.restart = 7;
    const Bytes file = encode(33, 21, kColour, o);
    const std::string text = jpeg::describe(file);
    for (const char* words : {"size: 33 by 21", "baseline, Huffman coding", "component 1: sampling 2x2",
                              "restart interval: 7", "JFIF", "scans: 1", "EOI"})
        EXPECT_NE(text.find(words), std::string::npos) << words << " in\n" << text;
    const std::string cut = jpeg::describe(codecs::ByteView(file).first(file.size() - 2));
    EXPECT_NE(cut.find("trouble: byte " + std::to_string(file.size() - 2)), std::string::npos) << cut;
}
