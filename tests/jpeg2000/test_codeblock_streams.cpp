// Code blocks cut out of codestreams that another encoder wrote: what they decode to is the picture.
//
// streams/ has the streams; ZMX_CODEBLOCK_STREAMS names another folder with picture.pgm and
// *.j2k.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg2000/model/codeblock.h"
#include "tests/jpeg2000/model/codestream.h"
#include "tests/jpeg2000/support/codeblock.h"

#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

namespace {

std::string folder() {
    if (const char* other = std::getenv("ZMX_CODEBLOCK_STREAMS")) return other;
    return (std::filesystem::path(__FILE__).parent_path() / "streams").string();
}

std::vector<std::string> streams() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder()))
        if (entry.path().extension() == ".j2k") names.push_back(entry.path().string());
    std::sort(names.begin(), names.end());
    return names;
}

// The standard's code-block style byte (Table A.19) in this library's flags.
Zmx32u styleOf(unsigned mode) {
    const Zmx32u flags[6] = {ZMX_CB_SELECTIVE_BYPASS,  ZMX_CB_RESET_CTX,        ZMX_CB_TERMINATE_ALL,
                             ZMX_CB_VERTICALLY_CAUSAL, ZMX_CB_ERROR_PREDICTION, ZMX_CB_SEGMENTATION_SYMBOLS};
    Zmx32u style = 0;
    for (int i = 0; i < 6; ++i)
        if (mode >> i & 1) style |= flags[i];
    return style;
}

struct Plane {
    int width, height;
    std::vector<int> v;
    Plane(int w, int h) : width(w), height(h), v(std::size_t(w) * std::size_t(h)) {}
    int& at(int x, int y) { return v[std::size_t(y) * std::size_t(width) + std::size_t(x)]; }
};

Plane decodeBand(const model::StreamBand& band, Zmx32u style) {
    Plane plane(band.width, band.height);
    for (const model::StreamBlock& b : band.blocks) {
        const ZmxiSize size{b.width, b.height};
        DecoderState state(size);
        Guarded<Zmx32s> samples(std::size_t(b.width) * std::size_t(b.height));
        Guarded<Zmx8u> bytes(b.bytes);
        int errorPlane = -7;
        EXPECT_EQ(zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(bytes.data(), samples.data(), b.width * 4, size,
                                                       band.orientation, b.planes, b.passes, b.lengths.data(),
                                                       int(b.lengths.size()), style, &errorPlane, state),
                  zmxStsNoErr);
        EXPECT_EQ(errorPlane, -7);
        std::vector<Zmx32s> expected(samples.size());
        EXPECT_EQ(model::BlockDecoder().block(b.bytes.data(), expected.data(), b.width * 4, size, band.orientation,
                                              b.planes, b.passes, b.lengths, style, errorPlane),
                  zmxStsNoErr);
        EXPECT_TRUE(sameBytes(expected, samples.copy()));
        for (int y = 0; y < b.height; ++y)
            for (int x = 0; x < b.width; ++x) {
                const Zmx32s v = samples[std::size_t(y) * std::size_t(b.width) + std::size_t(x)];
                plane.at(b.x + x, b.y + y) = v < 0 ? -(v & 0x7FFFFFFF) : v;
            }
    }
    return plane;
}

// The 5/3 synthesis of a line whose first sample is a low-pass one (Annex F.3).
void synthesise(std::vector<int>& line) {
    const int n = int(line.size());
    if (n == 1) return;
    const auto at = [&](int i) -> int& { return line[std::size_t(i < 0 ? -i : i >= n ? 2 * (n - 1) - i : i)]; };
    for (int i = 0; i < n; i += 2) at(i) -= (at(i - 1) + at(i + 1) + 2) >> 2;
    for (int i = 1; i < n; i += 2) at(i) += (at(i - 1) + at(i + 1)) >> 1;
}

Plane synthesise(Plane& ll, Plane& hl, Plane& lh, Plane& hh) {
    Plane all(ll.width + hl.width, ll.height + lh.height);
    for (int y = 0; y < all.height; ++y)
        for (int x = 0; x < all.width; ++x) {
            Plane& from = y % 2 ? (x % 2 ? hh : lh) : (x % 2 ? hl : ll);
            all.at(x, y) = from.at(x / 2, y / 2);
        }
    for (int y = 0; y < all.height; ++y) {
        std::vector<int> line(&all.at(0, y), &all.at(0, y) + all.width);
        synthesise(line);
        std::copy(line.begin(), line.end(), &all.at(0, y));
    }
    for (int x = 0; x < all.width; ++x) {
        std::vector<int> line;
        for (int y = 0; y < all.height; ++y) line.push_back(all.at(x, y));
        synthesise(line);
        for (int y = 0; y < all.height; ++y) all.at(x, y) = line[std::size_t(y)];
    }
    return all;
}

// Segment by segment. A raw segment may end in a byte 0xFF here; the other encoder has one more byte behind
// it then, which is nothing but filling.
void sameSegments(const model::StreamBlock& theirs, const CodedBlock& ours) {
    const std::vector<Zmx8u> filling = {0x2A};
    auto t = theirs.bytes.begin();
    auto o = ours.bytes.begin();
    for (std::size_t i = 0; i < theirs.lengths.size(); ++i) {
        std::vector<Zmx8u> expected(t, t + theirs.lengths[i]), actual(o, o + ours.lengths[i]);
        t += theirs.lengths[i];
        o += ours.lengths[i];
        if (!actual.empty() && actual.back() == 0xFF) actual.insert(actual.end(), filling.begin(), filling.end());
        EXPECT_TRUE(sameBytes(expected, actual)) << "segment " << i;
    }
}

} // namespace

TEST(CodeBlockStreams, DecodeToThePicture) {
    const model::Picture picture = model::readPgm(folder() + "/picture.pgm");
    ASSERT_FALSE(streams().empty());
    for (const std::string& name : streams()) {
        SCOPED_TRACE(name);
        const model::Codestream stream(model::readFile(name));
        ASSERT_EQ(stream.width, picture.width);
        ASSERT_EQ(stream.height, picture.height);
        std::vector<Plane> bands;
        for (const model::StreamBand& band : stream.bands) bands.push_back(decodeBand(band, styleOf(stream.mode)));
        ASSERT_LE(stream.levels, 1);
        const Plane decoded = stream.levels ? synthesise(bands[0], bands[1], bands[2], bands[3]) : bands[0];
        std::vector<Zmx8u> samples;
        for (int v : decoded.v) samples.push_back(Zmx8u(v + 128));
        EXPECT_TRUE(sameBytes(picture.samples, samples));
    }
}

// The other way round. Where the standard leaves no choice of termination, or there is only the flush at the
// end of the block, the bytes are the other encoder's too.
TEST(CodeBlockStreams, EncodeToTheSameBytes) {
    int compared = 0;
    for (const std::string& name : streams()) {
        SCOPED_TRACE(name);
        const model::Codestream stream(model::readFile(name));
        const Zmx32u style = styleOf(stream.mode);
        const bool predictable = stream.mode & 16, oneSegment = !(stream.mode & (1 | 4));
        for (const model::StreamBand& band : stream.bands) {
            Plane plane = decodeBand(band, style);
            for (const model::StreamBlock& b : band.blocks) {
                BlockSamples samples;
                for (int y = 0; y < b.height; ++y)
                    for (int x = 0; x < b.width; ++x) {
                        const int v = plane.at(b.x + x, b.y + y);
                        samples.push_back(v < 0 ? 0x80000000u | Zmx32u(-v) : Zmx32u(v));
                    }
                EncoderState state({b.width, b.height});
                EncodeChoice how;
                how.subband = band.orientation;
                how.style = style & 0x1F;
                how.termination = predictable ? ZMX_MQ_TERM_EASY : ZMX_MQ_TERM_FLUSH;
                const CodedBlock coded = encodeBlock(state, samples, {b.width, b.height}, how);
                EXPECT_EQ(coded.sfBits, b.planes);
                EXPECT_EQ(coded.passes, b.passes);
                ASSERT_EQ(std::size_t(coded.segments), b.lengths.size());
                if (predictable || oneSegment) {
                    sameSegments(b, coded);
                    ++compared;
                }
            }
        }
    }
    EXPECT_GT(compared, 0);
}

// The streams at hand have what the test is for.
TEST(CodeBlockStreams, CoverTheStyles) {
    unsigned modes = 0;
    std::set<int> orientations;
    bool rawSegments = false;
    for (const std::string& name : streams()) {
        const model::Codestream stream(model::readFile(name));
        modes |= stream.mode;
        for (const model::StreamBand& band : stream.bands) {
            orientations.insert(band.orientation);
            for (const model::StreamBlock& b : band.blocks) rawSegments |= stream.mode == 1 && b.lengths.size() > 2;
        }
    }
    EXPECT_EQ(modes, 63u);
    EXPECT_EQ(orientations, (std::set<int>{0, 1, 2, 3}));
    EXPECT_TRUE(rawSegments);
}
