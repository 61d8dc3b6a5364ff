// Single code blocks of the JPEG2000 codec: raw segments that end otherwise than the library's decoder wants them to.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/blockdecoder.h"
#include "codecs/jpeg2000/blockencoder.h"
#include "tests/support/rng.h"

#include <gtest/gtest.h>

namespace {

using namespace codecs;
using namespace codecs::jpeg2000;

constexpr int kPlanes = 14; // of the band; blocks have fewer

struct Segment {
    Bytes bytes;
    int firstPass, passes;
    bool raw;
};

// A block of noise, as large as its seed says, and its codeword segments.
struct Example {
    int width, height;
    std::vector<std::int32_t> numbers;
    CodingStyle style;
    int bitPlanes = 0;
    std::vector<Segment> segments;

    Block block() const { return {0, 0, std::uint16_t(width), std::uint16_t(height), 0, 0}; }
    Example(std::uint64_t seed, unsigned blockStyle) {
        Rng rng(seed);
        width = int(rng.range(1, 24));
        height = int(rng.range(1, 24));
        const std::int64_t reach = std::int64_t(1) << rng.range(5, 10);
        for (int i = 0; i < width * height; ++i)
            numbers.push_back(rng.oneIn(3) ? 0 : std::int32_t(rng.range(-reach, reach)));
        style.style = blockStyle;
        BlockEncoder encoder;
        encoder.begin(block());
        for (int y = 0; y < height; ++y)
            encoder.quantise<Road::wide>(std::span(numbers).subspan(std::size_t(y * width), std::size_t(width)), {});
        const CodedBlock coded = encoder.encode(LL, style, {});
        bitPlanes = coded.bitPlanes;
        std::uint32_t begin = 0;
        int first = 0;
        for (int pass = 0; pass < int(coded.passes.size()); ++pass) {
            const CodedBlock::Pass& p = coded.passes[std::size_t(pass)];
            if (!p.ends) continue;
            const bool raw = (blockStyle & kStyleBypass) && first >= 10 && (first - 10) % 3 != 2;
            segments.push_back(
                {Bytes(coded.bytes.begin() + begin, coded.bytes.begin() + p.rate), first, pass + 1 - first, raw});
            begin = p.rate;
            first = pass + 1;
        }
    }

    BlockStream stream(const Bytes& bytes, const std::vector<Segment>& all) const {
        BlockStream s;
        for (const Segment& g : all) s.codewords.push_back({g.passes, g.passes, int(g.bytes.size())});
        s.pieces = {bytes};
        s.zeroPlanes = std::uint8_t(kPlanes - bitPlanes);
        return s;
    }
    // Through the codec; `samples` gets what comes out.
    BlockDecoder::Result decode(const std::vector<Segment>& all, std::vector<std::int32_t>& samples) const {
        Bytes bytes;
        for (const Segment& g : all) bytes.insert(bytes.end(), g.bytes.begin(), g.bytes.end());
        BlockDecoder decoder;
        BandCoding coding;
        coding.bitPlanes = kPlanes;
        const auto result = decoder.decode(stream(bytes, all), block(), LL, style.style, coding);
        samples.resize(numbers.size());
        for (int y = 0; result != BlockDecoder::Result::empty && y < height; ++y)
            decoder.take<Road::wide>(0, y, coding,
                                     std::span(samples).subspan(std::size_t(y * width), std::size_t(width)));
        return result;
    }
    // The samples after the first `count` segments, by the library alone, which does not conceal them.
    std::vector<std::int32_t> wordsAfter(const std::vector<Segment>& all, std::size_t count) const {
        Bytes bytes(1);
        bytes.clear();
        std::vector<int> lengths;
        int passes = 0, size = 0;
        for (std::size_t i = 0; i < count; ++i) {
            bytes.insert(bytes.end(), all[i].bytes.begin(), all[i].bytes.end());
            lengths.push_back(int(all[i].bytes.size()));
            passes += all[i].passes;
        }
        zmxiDecodeGetBufSize_JPEG2K({width, height}, &size);
        std::vector<std::uint64_t> state(std::size_t(size) / 8 + 1);
        std::vector<std::int32_t> words(numbers.size());
        zmxiDecodeCodeBlock_JPEG2K_1u32s_C1R(bytes.data(), words.data(), width * 4, {width, height}, 0, bitPlanes,
                                             passes, lengths.data(), int(count), libraryStyle(style.style), nullptr,
                                             reinterpret_cast<ZmxiDecodeCBProgrState*>(state.data()));
        return words;
    }
    // How many bits at the end of segment `i` no decision comes from.
    int unusedBits(std::size_t i) const {
        std::vector<Segment> tried = segments;
        const std::vector<std::int32_t> right = wordsAfter(tried, i + 1);
        int unused = 0;
        for (int bits = 1; bits <= 7; ++bits)
            for (const int fill : {0, 0xFF}) {
                const int mask = (1 << bits) - 1;
                tried[i].bytes.back() = std::uint8_t((segments[i].bytes.back() & ~mask) | (fill & mask));
                if (wordsAfter(tried, i + 1) != right) return unused;
                unused += fill == 0xFF;
            }
        return unused;
    }
};

// What an encoder does with the end of a raw segment of which `unused` bits are free.
using Habit = void (*)(Bytes& segment, int unused);
std::uint8_t low(int bits) { return std::uint8_t((1 << bits) - 1); }

void padWithZeros(Bytes& s, int unused) { s.back() = std::uint8_t(s.back() & ~low(unused)); }
void padWithOnes(Bytes& s, int unused) { s.back() = std::uint8_t(s.back() | low(unused)); }
void padTheOtherWay(Bytes& s, int unused) { s.back() = std::uint8_t(s.back() ^ low(unused)); }
void flipTheLastBit(Bytes& s, int unused) { s.back() = std::uint8_t(s.back() ^ (unused > 0)); }
// Bytes of ones, which a decoder supplies, need not be there. Behind 0xFF there are seven of them.
void leaveOnesOut(Bytes& s, int unused) {
    padWithOnes(s, unused);
    if (s.back() == 0xFF)
        s.pop_back();
    else if (s.size() >= 2 && s.back() == 0x7F && s[s.size() - 2] == 0xFF)
        s.erase(s.end() - 2, s.end());
}

constexpr unsigned kStyles[] = {kStyleBypass, kStyleBypass | kStyleTerminateAll, kStyleBypass | kStyleSegmentation,
                                kStyleBypass | kStyleCausal | kStyleReset};

TEST(Jpeg2000Blocks, RawSegmentsMayEndAsTheyLike) {
    int segments = 0, shortened = 0;
    for (const Habit habit : {padWithZeros, padWithOnes, padTheOtherWay, flipTheLastBit, leaveOnesOut})
        for (const unsigned style : kStyles)
            for (std::uint64_t seed = 1; seed <= 40; ++seed) {
                const Example e(seed, style);
                std::vector<Segment> ended = e.segments;
                for (std::size_t i = 0; i < ended.size(); ++i)
                    if (ended[i].raw && !ended[i].bytes.empty()) {
                        habit(ended[i].bytes, e.unusedBits(i));
                        ++segments;
                        shortened += ended[i].bytes.size() < e.segments[i].bytes.size();
                    }
                std::vector<std::int32_t> samples;
                EXPECT_EQ(e.decode(ended, samples), BlockDecoder::Result::sound) << style << ' ' << seed;
                EXPECT_EQ(samples, e.numbers) << style << ' ' << seed;
            }
    EXPECT_GT(segments, 2000);
    EXPECT_GT(shortened, 20);
}

TEST(Jpeg2000Blocks, WithPredictableTerminationTheyMayNot) {
    int damaged = 0;
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
        const Example e(seed, kStyleBypass | kStylePredictable);
        std::vector<std::int32_t> samples;
        EXPECT_EQ(e.decode(e.segments, samples), BlockDecoder::Result::sound);
        EXPECT_EQ(samples, e.numbers);
        for (std::size_t i = 0; i < e.segments.size(); ++i) {
            if (!e.segments[i].raw || e.segments[i].bytes.empty() || e.unusedBits(i) == 0) continue;
            std::vector<Segment> ended = e.segments;
            flipTheLastBit(ended[i].bytes, 1);
            EXPECT_EQ(e.decode(ended, samples), BlockDecoder::Result::damaged);
            ++damaged;
        }
    }
    EXPECT_GT(damaged, 50);
}

// A wrong segmentation symbol is damage whatever becomes of the raw segments around it.
TEST(Jpeg2000Blocks, DamageStaysDamage) {
    int damaged = 0, tried = 0;
    for (std::uint64_t seed = 1; seed <= 60; ++seed) {
        const Example e(seed, kStyleBypass | kStyleSegmentation);
        if (e.segments[0].bytes.size() < 8) continue;
        std::vector<Segment> broken = e.segments;
        broken[0].bytes[broken[0].bytes.size() / 2] ^= 0x10;
        std::vector<std::int32_t> samples;
        damaged += e.decode(broken, samples) == BlockDecoder::Result::damaged;
        ++tried;
    }
    EXPECT_GT(damaged, tried * 9 / 10);
}

} // namespace
