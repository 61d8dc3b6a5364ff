// The modes of the JPEG codec beyond baseline: progressive files and scan scripts, transcoding, 12 bits,
// every sampling, lossless files; and broken files of each kind.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/huffman.h"
#include "codecs/jpeg/segmentreader.h"
#include "codecs/jpeg/segmentwriter.h"
#include "tests/codecs/support/damage.h"
#include "tests/codecs/support/jpeg.h"
#include "tests/support/digest.h"
#include "tests/support/rng.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

using jpeg::EncodeOptions;

// Slopes with some texture, in whole numbers, so that every build sees the same ones.
template <class Sample = std::uint8_t> std::vector<Sample> slopes(int width, int height, int channels, int bits = 8) {
    Rng rng(7);
    const int top = (1 << bits) - 1;
    std::vector<Sample> samples;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c) {
                const int wave = (x * (3 + c) + y * 2) % 128, v = (wave < 64 ? wave : 127 - wave) * top / 80;
                samples.push_back(Sample(std::clamp(v + int(rng.range(0, top / 24)), 0, top)));
            }
    return samples;
}

Seen decode(const Bytes& file, int scale = 1) {
    jpeg::DecodeOptions o;
    o.scale = scale;
    o.maxPixels = 1 << 23;
    return decoded(file, o);
}
Seen sound(const Bytes& file) {
    const Seen p = decode(file);
    EXPECT_TRUE(p.warnings.empty()) << p.warnings[0];
    return p;
}
Bytes encode(int width, int height, int channels, const EncodeOptions& o) {
    return jpeg::encode(picture(slopes(width, height, channels), width, height, channels), o);
}
std::string modeOf(const Bytes& file) {
    const std::string text = jpeg::describe(file);
    const std::size_t at = text.find("mode: ") + 6;
    return text.substr(at, text.find(',', at) - at);
}
int scansOf(const Bytes& file) {
    const std::string text = jpeg::describe(file);
    return std::stoi(text.substr(text.find("scans: ") + 7));
}

EncodeOptions progressive(int restart = 0) {
    EncodeOptions o;
    o.progressive = true;
    o.restart = restart;
    return o;
}
EncodeOptions scripted(const std::string& text) {
    EncodeOptions o;
    o.scans = text;
    return o;
}
EncodeOptions losslessWith(int predictor, int restart = 0, int shift = 0) {
    EncodeOptions o;
    o.lossless = predictor;
    o.restart = restart;
    o.pointTransform = shift;
    return o;
}
const char* const kBits = "# bit by bit\n0,1,2: 0-0, 0, 3;\n0: 1-2, 0, 2; 0: 3-63, 0, 4; 0: 3-63, 4, 3;\n"
                          "1: 1-63, 0, 0; 2: 1-5, 0, 1; 2: 6-63, 0, 1; 2: 1-63, 1, 0; 0: 3-63, 3, 2;\n"
                          "0 1 2: 0-0 3 2; 0: 0-0, 2, 1; 1,2: 0-0, 2, 1; 0,1,2: 0-0, 1, 0;\n"
                          "0: 1-63, 2, 1; 0: 1-63, 1, 0";

} // namespace

TEST(JpegModes, EveryScriptKeepsTheCoefficients) {
    struct Sampled {
        int channels;
        std::vector<jpeg::Factors> factors;
    };
    const Sampled kinds[] = {{1, {}},
                             {3, {{1, 1}}},
                             {3, {{2, 1}}},
                             {3, {{2, 2}}},
                             {3, {{1, 2}, {1, 1}, {1, 2}}},
                             {3, {{4, 4}, {2, 1}, {1, 4}}},
                             {4, {{2, 2}, {1, 1}, {1, 1}, {2, 2}}}};
    for (const Sampled& kind : kinds)
        for (auto [width, height] : {std::pair{1, 1}, {8, 8}, {17, 15}, {7, 50}, {65, 33}})
            for (int restart : {0, 1, 5}) {
                SCOPED_TRACE(std::to_string(kind.channels) + " channels, " + std::to_string(width) + "x" +
                             std::to_string(height) + ", restart " + std::to_string(restart));
                EncodeOptions o = progressive(restart);
                o.factors = kind.factors;
                o.quality = 92;
                const Bytes file = encode(width, height, kind.channels, o);
                EXPECT_EQ(modeOf(file), "progressive");
                const Seen picture = sound(file);
                std::vector<jpeg::TranscodeOptions> forms(4);
                forms[1].restart = 2;
                forms[2].progressive = true;
                forms[2].restart = 3;
                forms[3].scans = kind.channels == 3 && kind.factors[0].h < 4 ? kBits
                                 : kind.channels == 1                        ? "0: 0-0,0,0; 0: 1-63, 0, 0;"
                                 : kind.channels == 3                        ? "0;1;2"
                                                                             : "0;1;2;3";
                for (const jpeg::TranscodeOptions& form : forms) {
                    const jpeg::Transcoded t = transcode(file, form);
                    EXPECT_TRUE(t.warnings.empty());
                    EXPECT_EQ(sound(t.file).pixels, picture.pixels);
                    // And back, into the very same bytes.
                    jpeg::TranscodeOptions back;
                    back.progressive = true;
                    back.restart = restart;
                    EXPECT_EQ(transcode(t.file, back).file, file);
                }
            }
}

TEST(JpegModes, ScriptsMakeTheirScans) {
    EXPECT_EQ(scansOf(encode(40, 30, 3, progressive())), 10);
    EXPECT_EQ(scansOf(encode(40, 30, 1, progressive())), 6);
    EXPECT_EQ(scansOf(encode(40, 30, 3, scripted(kBits))), 15);
    EXPECT_EQ(scansOf(encode(40, 30, 3, scripted("0,2; 1;"))), 2);
    EXPECT_EQ(modeOf(encode(40, 30, 3, scripted("0,2; 1;"))), "baseline");
    const Bytes file = encode(40, 30, 3, scripted("0,2; 1;"));
    EXPECT_EQ(sound(file).pixels, sound(encode(40, 30, 3, progressive())).pixels);
}

TEST(JpegModes, BadScriptsAreRefusedInOneLine) {
    const std::pair<const char*, const char*> scripts[] = {
        {" # nothing\n", "holds no scan"},
        {"0,1,2: 0-0, 0, 1; 0: 1-63, 0, 0; x", "scan 3: a component is missing"},
        {"3;", "scan 1: component 3"},
        {"99999999999999999999;", "component 1000"},
        {"1,0;", "out of order"},
        {"0,0;", "out of order"},
        {"0,1,2: 0-0, 0, 0; 0: 5-4, 0, 0;", "scan 2: no band"},
        {"0,1,2: 0-0, 0, 0; 0: 1-64, 0, 0;", "no band"},
        {"0,1,2: 0-5, 0, 0;", "DC and AC coefficients together"},
        {"0,1,2: 0-0, 0, 0; 0,1: 1-63, 0, 0;", "AC coefficients of several"},
        {"0: 1-63, 0, 0;", "ahead of the DC"},
        {"0,1,2: 0-0, 0, 14;", "bits that no scan"},
        {"0,1,2: 0-0, 3, 1;", "bits that no scan"},
        {"0,1,2: 0-0, 1, 0;", "refined out of turn"},
        {"0,1,2: 0-0, 0, 1; 0: 0-0, 0, 1;", "begins twice"},
        {"0,1,2: 0-63, 0, 1;", "sequential scan of some"},
        {"0; 1,2: 0-0, 0, 0;", "mixes"},
        {"0,1: 0-0, 0, 0;", "leaves out the DC coefficients of component 2"},
        {"0,1,2: 0 0, 0, 0;", "hyphen"},
        {"0,1,2: 0-, 0;", "bit is missing"},
        {"0,1,2: 0-0, 0, 0 0: 1-63, 0, 0;", "semicolon"},
    };
    for (const auto& [text, words] : scripts) {
        const std::string said = refusalOf([&, t = text] { encode(16, 16, 3, scripted(t)); });
        EXPECT_NE(said.find(words), std::string::npos) << text << ": '" << said << "'";
        EXPECT_EQ(said.find('\n'), std::string::npos);
    }
    EncodeOptions o = scripted("0,1,2;");
    o.factors = {{4, 4}};
    EXPECT_NE(refusalOf([&] { encode(16, 16, 3, o); }).find("more than 10 blocks"), std::string::npos);
}

TEST(JpegModes, MissingRefinementsLeaveARoughPicture) {
    const Bytes source = slopes(64, 48, 3);
    EncodeOptions o = scripted("0,1,2: 0-0, 0, 2; 0: 1-63, 0, 3; 1: 1-20, 0, 1;");
    o.quality = 95;
    const Bytes rough = jpeg::encode(picture(source, 64, 48, 3), o);
    o = progressive();
    o.quality = 95;
    const Bytes whole = jpeg::encode(picture(source, 64, 48, 3), o);
    const double a = psnr(source, sound(rough).pixels, 255), b = psnr(source, sound(whole).pixels, 255);
    EXPECT_GT(a, 15);
    EXPECT_GT(b, a + 3);
    jpeg::TranscodeOptions t;
    t.progressive = true;
    EXPECT_EQ(sound(transcode(rough, t).file).pixels, sound(rough).pixels);
}

// A run of blocks ends with its interval, whatever its code says.
TEST(JpegModes, RunsDoNotCrossRestarts) {
    Bytes source(64 * 16, 128); // a row of flat blocks, then one with texture in each
    const Bytes texture = slopes(64, 8, 1);
    std::copy(texture.begin(), texture.end(), source.begin() + 64 * 8);
    EncodeOptions o = scripted("0: 0-0, 0, 0; 0: 1-63, 0, 0;");
    o.restart = 8;
    Bytes file = jpeg::encode(picture(source, 64, 16, 1), o);
    const Bytes want = sound(file).pixels;

    codecs::MemorySource bytes(file);
    jpeg::SegmentReader reader(bytes);
    ASSERT_TRUE(reader.nextScan() && reader.nextScan());
    const jpeg::Header& h = reader.header();
    ASSERT_EQ(h.scan.first, 1);
    const std::size_t dataOffset = std::size_t(bytes.position());
    ASSERT_TRUE(jpeg::toMarker(bytes));
    const std::size_t next = std::size_t(bytes.position());
    ASSERT_TRUE(jpeg::isRestart(file[next + 1]));
    const jpeg::EncodeSpec table = jpeg::encodeSpecOf(*h.ac[0]);
    const jpeg::EncodeState state = jpeg::newEncodeState();
    const Zmx16s flat[64] = {};
    Zmx8u longRun[16];
    int at = 0;
    for (int i = 0; i < 15; ++i) // the same code as for 8 blocks, with other bits
        ASSERT_EQ(
            zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(flat, longRun, 16, &at, 1, 63, 0, table.get(), state.get(), 0),
            zmxStsNoErr);
    ASSERT_EQ(zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(flat, longRun, 16, &at, 1, 63, 0, table.get(), state.get(), 1),
              zmxStsNoErr);
    const Bytes original(file.begin() + std::ptrdiff_t(dataOffset), file.begin() + std::ptrdiff_t(next));
    const Bytes replaced(longRun, longRun + at);
    ASSERT_NE(original, replaced);
    file.erase(file.begin() + std::ptrdiff_t(dataOffset), file.begin() + std::ptrdiff_t(next));
    file.insert(file.begin() + std::ptrdiff_t(dataOffset), replaced.begin(), replaced.end());
    EXPECT_EQ(sound(file).pixels, want);
}

TEST(JpegModes, PicturesAfterEachScan) {
    const Bytes file = encode(50, 40, 3, progressive(4));
    std::vector<Bytes> pictures;
    jpeg::DecodeOptions o;
    o.afterScan = [&](const codecs::Picture& p) { pictures.push_back(seen(p).pixels); };
    const Seen last = decoded(file, o);
    ASSERT_EQ(pictures.size(), 10u);
    EXPECT_EQ(pictures.back(), last.pixels);
    for (std::size_t i = 1; i < pictures.size(); ++i) EXPECT_NE(pictures[i], pictures[i - 1]) << "scan " << i;
    EXPECT_GT(psnr(pictures[8], last.pixels, 255), psnr(pictures[0], last.pixels, 255) + 10);
    // A file of one scan, and a lossless one, have one picture.
    for (const Bytes& single : {encode(20, 20, 3, {}), encode(20, 20, 3, losslessWith(1))}) {
        pictures.clear();
        decoded(single, o);
        EXPECT_EQ(pictures.size(), 1u);
    }
}

TEST(JpegModes, EverySampling) {
    Bytes source; // without texture, which chroma loses
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 70; ++x)
            source.insert(source.end(), {std::uint8_t(x * 3), std::uint8_t(y * 4), std::uint8_t(x + y)});
    for (int h = 1; h <= 4; ++h)
        for (int v = 1; v <= 4; ++v)
            for (int other = 0; other < 3; ++other) {
                SCOPED_TRACE(std::to_string(h) + "x" + std::to_string(v) + " with " + std::to_string(other));
                EncodeOptions o;
                o.quality = 95;
                o.factors = {{h, v}, {1, 1}, {other ? 3 : 1, other == 2 ? 2 : 1}};
                o.optimize = other;
                const Bytes file = jpeg::encode(picture(source, 70, 60, 3), o);
                EXPECT_GT(psnr(source, sound(file).pixels, 255), 25);
                o.progressive = true;
                o.restart = 3;
                EXPECT_GT(psnr(source, sound(jpeg::encode(picture(source, 70, 60, 3), o)).pixels, 255), 25);
            }
    EncodeOptions o;
    for (const jpeg::Factors& bad : {jpeg::Factors{0, 1}, {5, 1}, {1, 0}, {1, 5}}) {
        o.factors = {bad};
        EXPECT_THROW(encode(8, 8, 3, o), codecs::Error);
    }
    o.factors.assign(4, {1, 1});
    EXPECT_THROW(encode(8, 8, 3, o), codecs::Error);
}

TEST(JpegModes, TwelveBits) {
    for (int channels : {1, 3, 4})
        for (auto [width, height] : {std::pair{1, 1}, {8, 8}, {33, 21}})
            for (int form = 0; form < 4; ++form)
                for (int quality : {60, 100}) {
                    SCOPED_TRACE(std::to_string(channels) + " channels, " + std::to_string(width) + "x" +
                                 std::to_string(height) + ", form " + std::to_string(form) + ", quality " +
                                 std::to_string(quality));
                    EncodeOptions o = form == 1 ? progressive() : form == 2 ? progressive(2) : EncodeOptions();
                    o.sampling = jpeg::Sampling::s444;
                    o.quality = quality;
                    o.ycck = form == 2;
                    o.restart = form == 3 ? 3 : o.restart;
                    const Words source = slopes<std::uint16_t>(width, height, channels, 12);
                    const Bytes file = jpeg::encode(picture(source, width, height, channels, 12), o);
                    EXPECT_EQ(modeOf(file), o.progressive ? "progressive" : "extended sequential");
                    const Seen p = sound(file);
                    EXPECT_EQ(p.maxval, 4095);
                    EXPECT_TRUE(p.pixels.empty());
                    EXPECT_GT(psnr(source, p.wide, 4095), quality == 100 ? 62 : 33);
                    jpeg::TranscodeOptions t;
                    t.progressive = !o.progressive;
                    const jpeg::Transcoded other = transcode(file, t);
                    EXPECT_EQ(sound(other.file).wide, p.wide);
                    for (int scale : {2, 4, 8}) {
                        const Seen small = decode(file, scale);
                        EXPECT_EQ(small.width, jpeg::divUp(width, scale));
                        EXPECT_EQ(small.wide.size(), std::size_t(small.width * small.height * channels));
                    }
                }
    // A constant goes through exactly, at any divisor that divides it.
    const Words flat(16 * 16, 2048 + 512);
    EncodeOptions finest;
    finest.quality = 100;
    EXPECT_EQ(sound(jpeg::encode(picture(flat, 16, 16, 1, 12), finest)).wide, flat);
    const Words few(4, 0);
    for (int bits : {2, 7, 9, 11, 13, 16}) EXPECT_THROW(jpeg::encode(picture(few, 2, 2, 1, bits)), codecs::Error);
}

// The largest coefficients need more low bits left out of their first scan than usual.
TEST(JpegModes, TwelveBitsAtTheirLargest) {
    Rng rng(3);
    Words source;
    for (int i = 0; i < 64 * 64; ++i) source.push_back(rng.range(0, 1) ? 4095 : 0);
    EncodeOptions o = progressive();
    o.quality = 100;
    const Bytes file = jpeg::encode(picture(source, 64, 64, 1, 12), o);
    EXPECT_GT(scansOf(file), 6);
    EXPECT_GT(psnr(source, sound(file).wide, 4095), 60);
    o = scripted("0: 0-0, 0, 5; 0: 1-63, 0, 0;");
    o.quality = 100;
    const std::string said = refusalOf([&] { jpeg::encode(picture(source, 64, 64, 1, 12), o); });
    EXPECT_NE(said.find("scan 2: coefficients too large"), std::string::npos) << said;
}

TEST(JpegModes, LosslessInEveryPrecision) {
    Rng rng(9);
    for (int bits = 2; bits <= 16; ++bits)
        for (int predictor = 1; predictor <= 7; ++predictor)
            for (int channels = 1; channels <= 4; ++channels)
                for (int variant = 0; variant < 3; ++variant) {
                    SCOPED_TRACE(std::to_string(bits) + " bits, predictor " + std::to_string(predictor) + ", " +
                                 std::to_string(channels) + " channels, variant " + std::to_string(variant));
                    const int width = variant == 2 ? 1 : 19, height = 11, shift = variant == 1 ? bits / 3 : 0;
                    Words source = variant == 0 ? slopes<std::uint16_t>(width, height, channels, bits) : Words();
                    if (variant > 0)
                        for (int i = 0; i < width * height * channels; ++i)
                            source.push_back(std::uint16_t(rng.range(0, (1 << bits) - 1)));
                    const EncodeOptions o = losslessWith(predictor, variant ? 3 * width : 0, shift);
                    const Bytes file = jpeg::encode(picture(source, width, height, channels, bits), o);
                    const Seen p = sound(file);
                    EXPECT_EQ(p.maxval, (1 << bits) - 1);
                    EXPECT_EQ(p.channels, channels);
                    // Files hold inks turned over: the bits that are left out come back as ones.
                    const int inks = channels == 4 ? (1 << bits) - 1 : 0;
                    for (std::uint16_t& s : source) s = std::uint16_t(((s ^ inks) >> shift << shift) ^ inks);
                    const Words got = bits <= 8 ? Words(p.pixels.begin(), p.pixels.end()) : p.wide;
                    ASSERT_EQ(got, source);
                }
}

TEST(JpegModes, WhatLosslessRefuses) {
    const Words source(20, 0), large(20, 512);
    const auto said = [&](const Words& s, int channels, int bits, const EncodeOptions& o) {
        return refusalOf([&] { jpeg::encode(picture(s, 2, 2, channels, bits), o); });
    };
    EXPECT_EQ(said(source, 4, 16, losslessWith(7)), "");
    EXPECT_NE(said(source, 0, 8, losslessWith(1)), "");
    EXPECT_NE(said(source, 5, 8, losslessWith(1)), "");
    EXPECT_NE(said(source, 1, 1, losslessWith(1)), "");
    EXPECT_NE(said(source, 1, 17, losslessWith(1)), "");
    EXPECT_NE(said(source, 1, 8, losslessWith(8)), "");
    EXPECT_NE(said(source, 1, 8, losslessWith(-1)), "");
    EXPECT_NE(said(source, 1, 8, losslessWith(1, 0, 8)), "");
    EXPECT_NE(said(source, 1, 8, losslessWith(1, 3)), "");
    EXPECT_NE(said(large, 1, 9, losslessWith(1)), "");
    const Bytes file = encode(16, 16, 1, losslessWith(1));
    EXPECT_THROW(decode(file, 2), codecs::Error);
    EXPECT_THROW(transcode(file, {}), codecs::Error);
}

// A scan of three components, two of them subsampled, coded by hand with one table: the first difference is
// one, all others are zero, so that every sample of the first component is one above the first prediction.
TEST(JpegModes, LosslessSubsampled) {
    for (int units : {9 * 6 * 6, 9 * 6 * 6 - 1}) {
        jpeg::Frame frame;
        frame.sof = jpeg::SOF3;
        frame.width = 17;
        frame.height = 12;
        frame.components = {{1, 2, 2, 0}, {2, 1, 1, 0}, {3, 1, 1, 0}};
        codecs::MemorySink sink;
        jpeg::Output out(sink);
        out.marker(jpeg::SOI);
        jpeg::writeFrame(out, frame);
        jpeg::HuffmanTable table;
        table.bits[0] = table.bits[1] = 1; // symbol 0 is the bit 0, symbol 1 the bits 10
        table.vals[1] = 1;
        jpeg::writeHuffmanTable(out, jpeg::TableClass::dc, 0, table);
        jpeg::Scan scan;
        scan.components = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}};
        scan.first = 1;
        scan.last = 0;
        jpeg::writeScan(out, frame, scan);
        const int bits = 3 + units - 1;
        out.byte(0xA0);
        for (int i = 1; i < bits / 8; ++i) out.byte(0);
        out.byte(0xFF >> bits % 8);
        out.marker(jpeg::EOI);
        out.flush();
        const Seen p = decode(sink.bytes);
        Bytes want;
        for (int i = 0; i < 17 * 12; ++i) want.insert(want.end(), {129, 128, 128});
        if (units == 9 * 6 * 6) {
            EXPECT_EQ(p.pixels, want);
        }
        EXPECT_EQ(p.warnings.empty(), units == 9 * 6 * 6);
    }
}

namespace {

std::vector<Bytes> smallFiles() {
    EncodeOptions deep = progressive(3);
    deep.quality = 98;
    const Words words = slopes<std::uint16_t>(24, 20, 3, 12), sixteen = slopes<std::uint16_t>(13, 9, 2, 16);
    EncodeOptions odd = progressive();
    odd.factors = {{3, 2}, {1, 1}, {2, 1}};
    return {encode(30, 22, 3, progressive()),
            encode(30, 22, 1, progressive(2)),
            encode(30, 22, 3, scripted(kBits)),
            encode(20, 20, 3, scripted("0; 1,2;")),
            encode(20, 20, 3, odd),
            jpeg::encode(picture(words, 24, 20, 3, 12), deep),
            jpeg::encode(picture(words, 24, 20, 3, 12)),
            encode(15, 11, 3, losslessWith(4, 30)),
            jpeg::encode(picture(sixteen, 13, 9, 2, 16), losslessWith(7))};
}

// Neither crash nor hang; a picture has the size that its header says, a refusal is one line.
void survives(const Bytes& file) {
    const auto tried = [](auto call) {
        const std::string said = refusalOf(call);
        EXPECT_EQ(said.find('\n'), std::string::npos);
    };
    tried([&] {
        jpeg::DecodeOptions o;
        o.maxPixels = 1 << 13;
        const Seen p = decoded(file, o);
        EXPECT_EQ(p.pixels.size() + p.wide.size(), std::size_t(p.width * p.height * p.channels));
    });
    tried([&] {
        jpeg::TranscodeOptions o;
        o.maxPixels = 1 << 13;
        o.progressive = file.size() & 1;
        const jpeg::Transcoded t = jpeg::transcode(file, o);
        EXPECT_EQ(t.before, t.after);
    });
}

} // namespace

TEST(JpegModes, EveryTruncation) {
    for (const Bytes& file : smallFiles()) {
        const Seen whole = decode(file);
        int refused = 0;
        for (std::size_t n = 0; n < file.size(); ++n) {
            const Bytes cut(file.begin(), file.begin() + std::ptrdiff_t(n));
            survives(cut);
            Seen p;
            if (!refusalOf([&] { p = decode(cut); }).empty()) {
                ++refused;
                continue;
            }
            EXPECT_FALSE(p.warnings.empty()) << n << " of " << file.size();
            EXPECT_EQ(p.pixels.size(), whole.pixels.size());
            EXPECT_EQ(p.wide.size(), whole.wide.size());
        }
        // Only what is cut ahead of the first data cannot be shown.
        codecs::MemorySource bytes(file);
        jpeg::SegmentReader reader(bytes);
        ASSERT_TRUE(reader.nextScan());
        EXPECT_EQ(std::uint64_t(refused), bytes.position());
    }
}

TEST(JpegModes, DamagedBytes) {
    Rng rng(2025);
    const std::vector<Bytes> files = smallFiles();
    for (int round = 0; round < 1200; ++round) {
        survives(damaged(files[std::size_t(rng.range(0, int(files.size()) - 1))], rng, 5));
        if (HasFailure()) FAIL() << "round " << round;
    }
}

TEST(JpegModes, ScansThatNoFileHas) {
    const Bytes file = encode(16, 16, 3, progressive());
    codecs::MemorySource bytes(file);
    jpeg::SegmentReader reader(bytes);
    ASSERT_TRUE(reader.nextScan());
    const std::size_t behind = std::size_t(bytes.position()); // of the first, the DC scan of all components
    const auto with = [&](int first, int last, int bits) {
        Bytes f = file;
        f[behind - 3] = std::uint8_t(first);
        f[behind - 2] = std::uint8_t(last);
        f[behind - 1] = std::uint8_t(bits);
        return refusalOf([&] { decode(f); });
    };
    EXPECT_EQ(with(0, 0, 0x01), "");
    for (const auto& [first, last, bits] : {std::array{0, 1, 0x01},
                                            {0, 63, 0},
                                            {1, 63, 0},
                                            {1, 0, 0},
                                            {64, 64, 0},
                                            {0, 0, 0x0E},
                                            {0, 0, 0x31},
                                            {0, 0, 0x11}})
        EXPECT_NE(with(first, last, bits).find("no progressive scan"), std::string::npos)
            << first << " " << last << " " << bits;
    // A scan twice: decoded, and said.
    codecs::MemorySource again(file);
    jpeg::SegmentReader second(again);
    ASSERT_TRUE(second.nextScan() && second.nextScan());
    Bytes twice = file;
    const std::size_t from = second.header().scanOffset;
    ASSERT_TRUE(jpeg::toMarker(again));
    const std::size_t to = std::size_t(again.position());
    twice.insert(twice.begin() + std::ptrdiff_t(to), file.begin() + std::ptrdiff_t(from),
                 file.begin() + std::ptrdiff_t(to));
    const Seen p = decode(twice);
    ASSERT_FALSE(p.warnings.empty());
    EXPECT_NE(p.warnings[0].find("out of turn"), std::string::npos);
}

// Thousands of scans of a large empty picture cost next to no bytes: the work has a limit.
TEST(JpegModes, TheWorkOfScansIsLimited) {
    const Bytes source(1024 * 1024, 128);
    const Bytes file = jpeg::encode(picture(source, 1024, 1024, 1), scripted("0: 0-0, 0, 0; 0: 1-63, 0, 0;"));
    codecs::MemorySource bytes(file);
    jpeg::SegmentReader reader(bytes);
    ASSERT_TRUE(reader.nextScan() && reader.nextScan());
    const std::size_t from = reader.header().scanOffset;
    const Bytes scan(file.begin() + std::ptrdiff_t(from), file.end() - 2);
    ASSERT_LT(scan.size(), 30u);
    Bytes many(file.begin(), file.end() - 2);
    for (int i = 0; i < 20000; ++i) many.insert(many.end(), scan.begin(), scan.end());
    many.insert(many.end(), {0xFF, jpeg::EOI});
    int scans = 0;
    jpeg::DecodeOptions o;
    const Seen p = decoded(many, o);
    for (const std::string& w : p.warnings) scans += w.find("out of turn") != std::string::npos;
    EXPECT_EQ(p.pixels, source);
    EXPECT_NE(p.warnings.back().find("too many scans"), std::string::npos) << p.warnings.back();
    EXPECT_EQ(scans, (1 << 24) / (128 * 128) - 1); // all but the two lawful ones, and the one past the limit
}

// Any number of bytes 0xFF may stand ahead of a marker (ITU-T T.81, B.1.1.2), an empty interval may not.
TEST(JpegModes, FillBytesAheadOfMarkers) {
    for (const Bytes& file : {encode(30, 22, 3, progressive(2)), encode(15, 11, 3, losslessWith(4, 30))}) {
        Bytes filled, emptied = file;
        std::vector<std::ptrdiff_t> marks;
        for (std::size_t at = 0; at < file.size(); ++at) {
            if (at + 1 < file.size() && file[at] == 0xFF && jpeg::isRestart(file[at + 1])) {
                marks.push_back(std::ptrdiff_t(at));
                filled.insert(filled.end(), {0xFF, 0xFF});
            }
            filled.push_back(file[at]);
        }
        ASSERT_GT(marks.size(), 1u);
        emptied.erase(emptied.begin() + marks[0] + 2, emptied.begin() + marks[1]);
        const Seen p = sound(file), q = sound(filled);
        EXPECT_EQ(q.pixels, p.pixels);
        const Seen lost = decode(emptied);
        ASSERT_FALSE(lost.warnings.empty());
        EXPECT_NE(lost.warnings[0].find("end too early"), std::string::npos) << lost.warnings[0];
    }
}

TEST(JpegModes, OtherSegmentsAreKept) {
    Bytes file = encode(20, 20, 3, {});
    const Bytes comment{0xFF, 0xFE, 0, 6, 'z', 'm', 'x', '!'};
    file.insert(file.begin() + 2, comment.begin(), comment.end());
    jpeg::TranscodeOptions o;
    o.progressive = true;
    const Bytes out = transcode(file, o).file;
    EXPECT_NE(std::search(out.begin(), out.end(), comment.begin(), comment.end()), out.end());
    EXPECT_EQ(sound(out).pixels, sound(file).pixels);
}

TEST(JpegModes, TheSameBytesFromEveryBuild) {
    Digest files, pictures;
    for (const Bytes& file : smallFiles()) {
        files.add(file);
        const Seen p = decode(file);
        pictures.add(p.pixels);
        pictures.add(p.wide);
    }
    EXPECT_EQ(files.get(), 16408016665244159720u);
    EXPECT_EQ(pictures.get(), 542978791884181693u);
}
