// The conversions between the blocks of one minimum coded unit and its pixels, all 38 of them, against the plain
// model.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/mcu.h"
#include "tests/jpeg/model/word.h"
#include "tests/support/arguments.h"
#include "tests/support/byteorder.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"
#include "zmxj.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

namespace {

using model::Pixel;
using model::Sampling;

// The functions differ in the type of their pixels; here pixels are bytes.
using ToPixels = ZmxStatus (*)(const Zmx16s* const*, Zmx8u*, int);
using FromPixels = ZmxStatus (*)(const Zmx8u*, int, Zmx16s* const*);

template <class T> T pixelOf(ZmxStatus (*)(const Zmx16s* const*, T*, int));
template <class T> T pixelOf(ZmxStatus (*)(const T*, int, Zmx16s* const*));

template <auto f> ZmxStatus toBytes(const Zmx16s* const* planes, Zmx8u* dst, int step) {
    return f(planes, reinterpret_cast<decltype(pixelOf(f))*>(dst), step);
}
template <auto f> ZmxStatus fromBytes(const Zmx8u* src, int step, Zmx16s* const* planes) {
    return f(reinterpret_cast<const decltype(pixelOf(f))*>(src), step, planes);
}

template <class Call> struct Conversion {
    const char* name;
    Call call;
    Sampling sampling;
    Pixel pixel;
    std::uint64_t digest; // of what it gives for the input of digestOf()

    int width() const { return model::unitWidth(sampling); }
    int height() const { return model::unitHeight(sampling); }
    int rowBytes() const { return width() * model::pixelBytes(pixel); }
    int planes() const { return model::planesOf(pixel); }
    int samples(int plane) const { return model::planeSamples(sampling, plane); }
    std::size_t extent(int step) const {
        return std::size_t(step) * std::size_t(height() - 1) + std::size_t(rowBytes());
    }
};
using Decoder = Conversion<ToPixels>;
using Encoder = Conversion<FromPixels>;

using enum Sampling;
using enum Pixel;

const Decoder kDecoders[] = {
    {"YCbCr444ToRGB", toBytes<zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R>, S444, RGB, 0xFCBCA925675B7D00},
    {"YCbCr422ToRGB", toBytes<zmxiYCbCr422ToRGBLS_MCU_16s8u_P3C3R>, S422, RGB, 0xBE4209A59321CAD3},
    {"YCbCr411ToRGB", toBytes<zmxiYCbCr411ToRGBLS_MCU_16s8u_P3C3R>, S411, RGB, 0xC190A8737CBDEAC0},
    {"YCbCr444ToBGR", toBytes<zmxiYCbCr444ToBGRLS_MCU_16s8u_P3C3R>, S444, BGR, 0x8BEE466C021ABE5C},
    {"YCbCr422ToBGR", toBytes<zmxiYCbCr422ToBGRLS_MCU_16s8u_P3C3R>, S422, BGR, 0xAC690ECCC129D047},
    {"YCbCr411ToBGR", toBytes<zmxiYCbCr411ToBGRLS_MCU_16s8u_P3C3R>, S411, BGR, 0xE5A76C18C151E1B0},
    {"YCbCr444ToBGR555", toBytes<zmxiYCbCr444ToBGR555LS_MCU_16s16u_P3C3R>, S444, BGR555, 0x73484DBD8D59DEAF},
    {"YCbCr422ToBGR555", toBytes<zmxiYCbCr422ToBGR555LS_MCU_16s16u_P3C3R>, S422, BGR555, 0x6EEFD2FA1E2A95D9},
    {"YCbCr411ToBGR555", toBytes<zmxiYCbCr411ToBGR555LS_MCU_16s16u_P3C3R>, S411, BGR555, 0xD3AF1D3DFE60E6A0},
    {"YCbCr444ToBGR565", toBytes<zmxiYCbCr444ToBGR565LS_MCU_16s16u_P3C3R>, S444, BGR565, 0xDA790767CDD71C96},
    {"YCbCr422ToBGR565", toBytes<zmxiYCbCr422ToBGR565LS_MCU_16s16u_P3C3R>, S422, BGR565, 0x625D15807CE03ADA},
    {"YCbCr411ToBGR565", toBytes<zmxiYCbCr411ToBGR565LS_MCU_16s16u_P3C3R>, S411, BGR565, 0x43F44D4352CA62D9},
    {"YCCK444ToCMYK", toBytes<zmxiYCCK444ToCMYKLS_MCU_16s8u_P4C4R>, S444, CMYK, 0x8718A1046AFAF0CC},
    {"YCCK422ToCMYK", toBytes<zmxiYCCK422ToCMYKLS_MCU_16s8u_P4C4R>, S422, CMYK, 0xF494A69C1DE1871B},
    {"YCCK411ToCMYK", toBytes<zmxiYCCK411ToCMYKLS_MCU_16s8u_P4C4R>, S411, CMYK, 0x6EE22CAFD450DA7F},
    {"SampleUp444", toBytes<zmxiSampleUp444LS_MCU_16s8u_P3C3R>, S444, YCC, 0x7B7A66A765491E7C},
    {"SampleUp422", toBytes<zmxiSampleUp422LS_MCU_16s8u_P3C3R>, S422, YCC, 0x8F6D1A2F68EAA77E},
    {"SampleUp411", toBytes<zmxiSampleUp411LS_MCU_16s8u_P3C3R>, S411, YCC, 0x1629494D69A72FC8},
    {"Join422", toBytes<zmxiJoin422LS_MCU_16s8u_P3C2R>, S422, Pairs422, 0x804C6772A0CC315D},
};

const Encoder kEncoders[] = {
    {"RGBToYCbCr444", fromBytes<zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R>, S444, RGB, 0x6D9CED3A8737059F},
    {"RGBToYCbCr422", fromBytes<zmxiRGBToYCbCr422LS_MCU_8u16s_C3P3R>, S422, RGB, 0xAD9FF919F9225BF9},
    {"RGBToYCbCr411", fromBytes<zmxiRGBToYCbCr411LS_MCU_8u16s_C3P3R>, S411, RGB, 0x2EE0812BC1DE04FD},
    {"BGRToYCbCr444", fromBytes<zmxiBGRToYCbCr444LS_MCU_8u16s_C3P3R>, S444, BGR, 0xE2FAF421BA675321},
    {"BGRToYCbCr422", fromBytes<zmxiBGRToYCbCr422LS_MCU_8u16s_C3P3R>, S422, BGR, 0xA969158998BF31B1},
    {"BGRToYCbCr411", fromBytes<zmxiBGRToYCbCr411LS_MCU_8u16s_C3P3R>, S411, BGR, 0xA1C225266C0BAC51},
    {"BGR555ToYCbCr444", fromBytes<zmxiBGR555ToYCbCr444LS_MCU_16u16s_C3P3R>, S444, BGR555, 0x107D82E5E82CC3F7},
    {"BGR555ToYCbCr422", fromBytes<zmxiBGR555ToYCbCr422LS_MCU_16u16s_C3P3R>, S422, BGR555, 0xB47DDB03B775E31E},
    {"BGR555ToYCbCr411", fromBytes<zmxiBGR555ToYCbCr411LS_MCU_16u16s_C3P3R>, S411, BGR555, 0x0EC476112A9F392F},
    {"BGR565ToYCbCr444", fromBytes<zmxiBGR565ToYCbCr444LS_MCU_16u16s_C3P3R>, S444, BGR565, 0x094579F5626971DD},
    {"BGR565ToYCbCr422", fromBytes<zmxiBGR565ToYCbCr422LS_MCU_16u16s_C3P3R>, S422, BGR565, 0xAD6662FDCAEAE5A2},
    {"BGR565ToYCbCr411", fromBytes<zmxiBGR565ToYCbCr411LS_MCU_16u16s_C3P3R>, S411, BGR565, 0x33F5B81169827C92},
    {"CMYKToYCCK444", fromBytes<zmxiCMYKToYCCK444LS_MCU_8u16s_C4P4R>, S444, CMYK, 0x5E8D20B7EA0A3666},
    {"CMYKToYCCK422", fromBytes<zmxiCMYKToYCCK422LS_MCU_8u16s_C4P4R>, S422, CMYK, 0x22EA46C7AB9B854F},
    {"CMYKToYCCK411", fromBytes<zmxiCMYKToYCCK411LS_MCU_8u16s_C4P4R>, S411, CMYK, 0xCC7D97C0851F686D},
    {"SampleDown444", fromBytes<zmxiSampleDown444LS_MCU_8u16s_C3P3R>, S444, YCC, 0x49256039BF02E392},
    {"SampleDown422", fromBytes<zmxiSampleDown422LS_MCU_8u16s_C3P3R>, S422, YCC, 0xE43847DD8A99CD9F},
    {"SampleDown411", fromBytes<zmxiSampleDown411LS_MCU_8u16s_C3P3R>, S411, YCC, 0xD99BBE071ED42AC6},
    {"Split422", fromBytes<zmxiSplit422LS_MCU_8u16s_C2P3R>, S422, Pairs422, 0x360310D84FA46A7E},
};

template <class C, std::size_t N> const C& find(const C (&all)[N], Sampling s, Pixel p) {
    return *std::find_if(all, all + N, [&](const C& c) { return c.sampling == s && c.pixel == p; });
}
const Decoder& decoder(Sampling s, Pixel p) { return find(kDecoders, s, p); }
const Encoder& encoder(Sampling s, Pixel p) { return find(kEncoders, s, p); }

// The planes of a unit, each of exactly its length between guard pages; the fourth of three is not there.
class Planes {
    std::vector<std::unique_ptr<Guarded<Zmx16s>>> plane;
    std::array<Zmx16s*, 4> pointers{};

public:
    template <class C> Planes(const C& c, GuardedBlock::Flush flush) {
        for (int i = 0; i < c.planes(); ++i) {
            plane.push_back(std::make_unique<Guarded<Zmx16s>>(std::size_t(c.samples(i)), flush));
            pointers[std::size_t(i)] = plane.back()->data();
        }
    }
    Zmx16s* const* data() const { return pointers.data(); }
    Guarded<Zmx16s>& operator[](int i) { return *plane[std::size_t(i)]; }
    int size() const { return int(plane.size()); }
    void random(Rng& rng, int lo, int hi) {
        for (auto& p : plane)
            for (std::size_t i = 0; i < p->size(); ++i) (*p)[i] = Zmx16s(rng.range(lo, hi));
    }
    std::vector<Zmx16s> copy() {
        std::vector<Zmx16s> all;
        for (auto& p : plane) all.insert(all.end(), p->data(), p->data() + p->size());
        return all;
    }
};

// Both sides on the same input; what lies between the rows is compared too.
void compare(const Decoder& c, Planes& planes, int step, GuardedBlock::Flush flush) {
    Guarded<Zmx8u> dst(c.extent(step), flush);
    dst.fill(0x5A);
    std::vector<Zmx8u> expected = dst.copy();
    const std::vector<Zmx16s> before = planes.copy();
    model::pixelsFromMcu(c.sampling, c.pixel, planes.data(), expected.data(), step);
    ASSERT_EQ(c.call(planes.data(), dst.data(), step), zmxStsNoErr);
    ASSERT_TRUE(sameBytes(expected, dst.copy())) << "step " << step;
    ASSERT_TRUE(sameBytes(before, planes.copy()));
}
void compare(const Encoder& c, const std::vector<Zmx8u>& pixels, int step, GuardedBlock::Flush flush) {
    Guarded<Zmx8u> src(pixels, flush);
    Planes expected(c, flush), actual(c, flush);
    model::mcuFromPixels(c.sampling, c.pixel, src.data(), step, expected.data());
    ASSERT_EQ(c.call(src.data(), step, actual.data()), zmxStsNoErr);
    ASSERT_TRUE(sameBytes(expected.copy(), actual.copy())) << "step " << step;
    ASSERT_TRUE(sameBytes(pixels, src.copy()));
}

// One pixel of one colour through a unit: the bytes of its last pixel.
std::vector<Zmx8u> decodeFlat(const Decoder& c, std::array<int, 4> sample) {
    Planes planes(c, GuardedBlock::AtEnd);
    for (int i = 0; i < planes.size(); ++i) planes[i].fill(Zmx16s(sample[std::size_t(i)]));
    std::vector<Zmx8u> dst(c.extent(c.rowBytes()));
    EXPECT_EQ(c.call(planes.data(), dst.data(), c.rowBytes()), zmxStsNoErr);
    const std::vector<Zmx8u> first(dst.begin(), dst.begin() + 2 * model::pixelBytes(c.pixel));
    EXPECT_TRUE(sameBytes(first.data(), dst.data() + dst.size() - first.size(), first.size())) << "a flat unit is flat";
    return {first.begin(), first.begin() + model::pixelBytes(c.pixel)};
}
// A unit of one pixel value: the samples of its last place.
std::vector<int> encodeFlat(const Encoder& c, const std::vector<Zmx8u>& pixel) {
    std::vector<Zmx8u> src;
    while (int(src.size()) < c.rowBytes() * c.height()) src.insert(src.end(), pixel.begin(), pixel.end());
    Planes planes(c, GuardedBlock::AtEnd);
    EXPECT_EQ(c.call(src.data(), c.rowBytes(), planes.data()), zmxStsNoErr);
    std::vector<int> out;
    for (int i = 0; i < planes.size(); ++i) {
        const std::vector<Zmx16s> v = planes[i].copy();
        EXPECT_EQ(v, std::vector<Zmx16s>(v.size(), v.back())) << "a flat unit is flat";
        out.push_back(v.back());
    }
    return out;
}

using Bytes = std::vector<Zmx8u>;
// A packed pixel as it lies in memory: a word in the processor's own order.
Bytes packed(Zmx16u word) {
    Bytes bytes(sizeof word);
    std::memcpy(bytes.data(), &word, sizeof word);
    return bytes;
}
using Samples = std::vector<int>;

bool ofWords(Pixel p) { return p == Pixel::BGR555 || p == Pixel::BGR565; }

std::uint64_t digestOf(const Decoder& c) {
    Rng rng(900);
    Digest d;
    for (int i = 0; i < 8; ++i) {
        Planes planes(c, GuardedBlock::AtEnd);
        planes.random(rng, i < 6 ? -150 : -32768, i < 6 ? 150 : 32767);
        std::vector<Zmx8u> dst(c.extent(70), 0);
        EXPECT_EQ(c.call(planes.data(), dst.data(), 70), zmxStsNoErr);
        if (ofWords(c.pixel)) exchangeOrder(dst.data(), dst.size());
        d.add(dst);
    }
    return d.get();
}
std::uint64_t digestOf(const Encoder& c) {
    Rng rng(901);
    Digest d;
    for (int i = 0; i < 8; ++i) {
        std::vector<Zmx8u> src = rng.vec<Zmx8u>(c.extent(70), 0, 255);
        if (ofWords(c.pixel)) exchangeOrder(src.data(), src.size());
        Planes planes(c, GuardedBlock::AtEnd);
        EXPECT_EQ(c.call(src.data(), 70, planes.data()), zmxStsNoErr);
        d.add(planes.copy());
    }
    return d.get();
}

} // namespace

TEST(McuDecode, ZeroPlanesGiveMidGrey) {
    for (const Decoder& c : kDecoders) {
        SCOPED_TRACE(c.name);
        const Bytes out = decodeFlat(c, {0, 0, 0, 0});
        Zmx16u word;
        std::memcpy(&word, out.data(), 2);
        switch (c.pixel) {
        case Pixel::BGR555:
            EXPECT_EQ(word, 0x4210);
            break;
        case Pixel::BGR565:
            EXPECT_EQ(word, 0x8410);
            break;
        case Pixel::CMYK:
            EXPECT_EQ(out, (Bytes{127, 127, 127, 128}));
            break;
        default:
            EXPECT_EQ(out, Bytes(std::size_t(model::pixelBytes(c.pixel)), 128));
        }
    }
}

TEST(McuDecode, ColoursWithNoRounding) {
    const struct {
        std::array<int, 4> ycc;
        Bytes rgb;
    } cases[] = {{{0, 0, 0}, {128, 128, 128}},    {{-128, 0, 0}, {0, 0, 0}},      {{127, 0, 0}, {255, 255, 255}},
                 {{0, 127, -128}, {0, 175, 255}}, {{-52, -44, 127}, {254, 0, 0}}, {{-4, -42, 54}, {199, 99, 49}}};
    for (const Decoder& c : kDecoders)
        for (const auto& one : cases) {
            SCOPED_TRACE(c.name);
            Bytes rgb = one.rgb;
            const Bytes out = decodeFlat(c, one.ycc);
            if (c.pixel == Pixel::BGR) std::reverse(rgb.begin(), rgb.end());
            if (c.pixel == Pixel::CMYK) rgb = {Zmx8u(255 - rgb[0]), Zmx8u(255 - rgb[1]), Zmx8u(255 - rgb[2]), 128};
            if (c.pixel == Pixel::RGB || c.pixel == Pixel::BGR || c.pixel == Pixel::CMYK) {
                EXPECT_EQ(out, rgb);
            }
        }
}

TEST(McuDecode, PackingCutsLowBitsOff) {
    // (199, 99, 49): 24, 12, 6 in five bits, green 24 in six.
    EXPECT_EQ(decodeFlat(decoder(Sampling::S444, Pixel::BGR555), {-4, -42, 54}), packed(0x6186));
    EXPECT_EQ(decodeFlat(decoder(Sampling::S444, Pixel::BGR565), {-4, -42, 54}), packed(0xC306));
    EXPECT_EQ(decodeFlat(decoder(Sampling::S444, Pixel::BGR555), {127, 0, 0}), packed(0x7FFF));
    EXPECT_EQ(decodeFlat(decoder(Sampling::S444, Pixel::BGR565), {127, 0, 0}), packed(0xFFFF));
}

TEST(McuDecode, TheBlackChannelAloneWraps) {
    for (const Decoder& c : kDecoders)
        if (c.pixel == Pixel::CMYK) {
            EXPECT_EQ(decodeFlat(c, {128, 0, 0, 128}), (Bytes{0, 0, 0, 0})) << c.name;
            EXPECT_EQ(decodeFlat(c, {-129, 0, 0, -129}), (Bytes{255, 255, 255, 255})) << c.name;
            EXPECT_EQ(decodeFlat(c, {0, 0, 0, 32767}), (Bytes{127, 127, 127, 127})) << c.name;
            EXPECT_EQ(decodeFlat(c, {0, 0, 0, -32768}), (Bytes{127, 127, 127, 128})) << c.name;
        }
}

TEST(McuDecode, SampleUpSaturates) {
    for (const Decoder& c : kDecoders)
        if (c.pixel == Pixel::YCC) {
            EXPECT_EQ(decodeFlat(c, {-128, 127, 128}), (Bytes{0, 255, 255})) << c.name;
            EXPECT_EQ(decodeFlat(c, {-129, 32767, -32768}), (Bytes{0, 255, 0})) << c.name;
        }
}

TEST(McuDecode, JoinInterleavesPairs) {
    const Decoder& c = decoder(Sampling::S422, Pixel::Pairs422);
    Planes planes(c, GuardedBlock::AtEnd);
    for (int i = 0; i < 128; ++i) planes[0][std::size_t(i)] = Zmx16s(i - 128);
    for (int i = 0; i < 64; ++i) {
        planes[1][std::size_t(i)] = Zmx16s(i);
        planes[2][std::size_t(i)] = Zmx16s(i + 64);
    }
    Zmx8u dst[256];
    ASSERT_EQ(c.call(planes.data(), dst, 32), zmxStsNoErr);
    // Row 1: luma 8..15 from the left block, 72..79 from the right one; chroma 8..15 of each plane.
    const Zmx8u row[32] = {8,  136, 9,  200, 10, 137, 11, 201, 12, 138, 13, 202, 14, 139, 15, 203,
                           72, 140, 73, 204, 74, 141, 75, 205, 76, 142, 77, 206, 78, 143, 79, 207};
    EXPECT_TRUE(sameBytes(row, dst + 32, 32));
    planes[0][0] = -129, planes[1][0] = 128, planes[0][1] = 32767, planes[2][0] = -32768;
    ASSERT_EQ(c.call(planes.data(), dst, 32), zmxStsNoErr);
    EXPECT_EQ(Bytes(dst, dst + 4), (Bytes{0, 255, 255, 0}));
}

TEST(McuDecode, ChromaIsReplicated) {
    // A ramp of luma and one odd chroma sample in each place in turn: only the pixels that it covers change.
    for (const Decoder& c : kDecoders) {
        if (c.pixel != Pixel::YCC) continue;
        SCOPED_TRACE(c.name);
        const int across = c.sampling == Sampling::S444 ? 1 : 2, down = c.sampling == Sampling::S411 ? 2 : 1;
        for (int place = 0; place < 64; ++place) {
            Planes planes(c, GuardedBlock::AtEnd);
            for (int i = 0; i < 3; ++i) planes[i].fill(0);
            planes[1][std::size_t(place)] = 5;
            planes[2][std::size_t(place)] = 9;
            std::vector<Zmx8u> dst(c.extent(c.rowBytes()));
            ASSERT_EQ(c.call(planes.data(), dst.data(), c.rowBytes()), zmxStsNoErr);
            for (int y = 0; y < c.height(); ++y)
                for (int x = 0; x < c.width(); ++x) {
                    const bool covered = y / down == place / 8 && x / across == place % 8;
                    const Zmx8u* d = &dst[std::size_t(y * c.rowBytes() + 3 * x)];
                    ASSERT_EQ(Bytes(d, d + 3), covered ? (Bytes{128, 133, 137}) : (Bytes{128, 128, 128}));
                }
        }
    }
}

TEST(McuDecode, ProductsWrapIn32Bits) {
    // 91881 x 32767 is 3010664727, read as -1284302569: red gains -19597, not 45939.
    EXPECT_EQ(decodeFlat(decoder(Sampling::S444, Pixel::RGB), {0, 0, 32767})[0], 0);
    EXPECT_EQ(decodeFlat(decoder(Sampling::S444, Pixel::RGB), {19597, 0, 32767})[0], 128);
    // 116130 x 32767 is 3805231710, read as -489735586: blue gains -7473.
    EXPECT_EQ(decodeFlat(decoder(Sampling::S444, Pixel::RGB), {0, 32767, 0})[2], 0);
    EXPECT_EQ(decodeFlat(decoder(Sampling::S444, Pixel::RGB), {7473, 32767, 0})[2], 128);
    // (22554 + 46802) x 32768 is 2272657408, read as -2022309888: green gains -30858.
    EXPECT_EQ(decodeFlat(decoder(Sampling::S444, Pixel::RGB), {30858, -32768, -32768})[1], 128);
}

TEST(McuDecode, EveryChromaValueThroughEachLine) {
    // Luma is chosen so that one channel stays inside 0 to 255 and shows every step.
    const Decoder& c = decoder(Sampling::S444, Pixel::RGB);
    Rng rng(221);
    SCOPED_TRACE("seed 221");
    Planes planes(c, GuardedBlock::AtEnd);
    Zmx8u dst[192], expected[192];
    for (int line = 0; line < 4; ++line)
        for (int base = -32768; base <= 32767; base += 64) {
            for (int i = 0; i < 64; ++i) {
                const int v = base + i, other = int(rng.range(-32768, 32767));
                // Red from Cr, blue from Cb, green from either with the other at random.
                const int cb = line == 0 ? other : line == 3 ? other : v, cr = line == 0 || line == 3 ? v : other;
                const model::Word sum = line == 0   ? model::Word(91881) * cr
                                        : line == 1 ? model::Word(116130) * cb
                                                    : model::Word(-22554) * cb + model::Word(-46802) * cr;
                const int luma = int(rng.range(-128, 127)) - (sum >> 16).value();
                planes[0][std::size_t(i)] = Zmx16s(std::clamp(luma, -32768, 32767));
                planes[1][std::size_t(i)] = Zmx16s(cb);
                planes[2][std::size_t(i)] = Zmx16s(cr);
            }
            model::pixelsFromMcu(c.sampling, c.pixel, planes.data(), expected, 24);
            ASSERT_EQ(c.call(planes.data(), dst, 24), zmxStsNoErr);
            ASSERT_TRUE(sameBytes(expected, dst, 192)) << "line " << line << ", chroma from " << base;
        }
}

TEST(McuDecode, RandomUnits) {
    Rng rng(222);
    SCOPED_TRACE("seed 222");
    for (const Decoder& c : kDecoders) {
        SCOPED_TRACE(c.name);
        for (int i = 0; i < 60; ++i) {
            const auto flush = i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart;
            Planes planes(c, flush);
            const int reach = i % 3 == 0 ? 32768 : i % 3 == 1 ? 128 : 300;
            planes.random(rng, -reach, reach - 1);
            // No gap, a gap, an odd one; and a step so small that rows overlap, where the later row wins.
            const int step = i % 5 == 0 ? int(rng.range(1, c.rowBytes())) : c.rowBytes() + int(rng.range(0, 11));
            ASSERT_NO_FATAL_FAILURE(compare(c, planes, step, flush));
        }
    }
}

TEST(McuDecode, PointersThenPlanesThenStep) {
    for (const Decoder& c : kDecoders) {
        SCOPED_TRACE(c.name);
        Planes planes(c, GuardedBlock::AtEnd);
        std::vector<Zmx8u> dst(c.extent(c.rowBytes()), 0x5A);
        std::vector<ZmxStatus> tests(std::size_t(2 + c.planes()), kNull);
        tests.push_back(kStep);
        checkOrder(tests, [&](const Bad& bad) {
            const Zmx16s* pointers[4] = {};
            for (int i = 0; i < c.planes(); ++i) pointers[i] = bad.null(2 + i, planes.data()[i]);
            return c.call(bad.null(0, pointers), bad.null(1, dst.data()), bad.below1(2 + c.planes(), c.rowBytes()));
        });
        EXPECT_EQ(dst, std::vector<Zmx8u>(dst.size(), 0x5A));
    }
}

TEST(McuDecode, Digests) {
    for (const Decoder& c : kDecoders) EXPECT_EQ(digestOf(c), c.digest) << c.name << std::hex << " 0x" << digestOf(c);
}

TEST(McuEncode, MidGreyGivesZero) {
    for (const Encoder& c : kEncoders) {
        if (c.pixel == Pixel::BGR555 || c.pixel == Pixel::BGR565) continue;
        // Inverted, 128 is 127: one below the middle.
        const Samples expected = c.pixel == Pixel::CMYK ? Samples{-1, 0, 0, 0} : Samples{0, 0, 0};
        EXPECT_EQ(encodeFlat(c, Bytes(std::size_t(model::pixelBytes(c.pixel)), 128)), expected) << c.name;
    }
}

TEST(McuEncode, ColoursWithNoRounding) {
    const struct {
        Bytes rgb;
        Samples ycc;
    } cases[] = {{{255, 0, 0}, {-52, -44, 127}}, {{0, 255, 0}, {21, -85, -107}}, {{0, 0, 255}, {-99, 127, -21}},
                 {{255, 255, 255}, {127, 0, 0}}, {{0, 0, 0}, {-128, 0, 0}},      {{128, 128, 128}, {0, 0, 0}},
                 {{200, 100, 50}, {-4, -42, 54}}};
    for (const Encoder& c : kEncoders)
        for (const auto& one : cases) {
            SCOPED_TRACE(c.name);
            Bytes pixel = one.rgb;
            Samples ycc = one.ycc;
            if (c.pixel == Pixel::BGR) std::reverse(pixel.begin(), pixel.end());
            if (c.pixel == Pixel::CMYK) {
                for (Zmx8u& v : pixel) v = Zmx8u(255 - v);
                pixel.push_back(77);
                ycc.push_back(-51);
            }
            if (c.pixel == Pixel::RGB || c.pixel == Pixel::BGR || c.pixel == Pixel::CMYK) {
                EXPECT_EQ(encodeFlat(c, pixel), ycc);
            }
        }
    EXPECT_EQ(encodeFlat(encoder(Sampling::S444, Pixel::CMYK), {255, 255, 255, 0}), (Samples{-128, 0, 0, -128}));
}

TEST(McuEncode, RedDoesNotComeBackWhole) {
    const Samples red = encodeFlat(encoder(Sampling::S444, Pixel::RGB), {255, 0, 0});
    EXPECT_EQ(decodeFlat(decoder(Sampling::S444, Pixel::RGB), {red[0], red[1], red[2]}), (Bytes{254, 0, 0}));
    const Samples brown = encodeFlat(encoder(Sampling::S444, Pixel::RGB), {200, 100, 50});
    EXPECT_EQ(decodeFlat(decoder(Sampling::S444, Pixel::RGB), {brown[0], brown[1], brown[2]}), (Bytes{199, 99, 49}));
}

TEST(McuEncode, PackedFieldsAreWidenedWithZeros) {
    EXPECT_EQ(encodeFlat(encoder(Sampling::S444, Pixel::BGR555), packed(0x7FFF)), (Samples{120, 0, 0}));
    EXPECT_EQ(encodeFlat(encoder(Sampling::S444, Pixel::BGR555), packed(0xFFFF)), (Samples{120, 0, 0}))
        << "bit 15 is ignored";
    EXPECT_EQ(encodeFlat(encoder(Sampling::S444, Pixel::BGR555), packed(0x8000)), (Samples{-128, 0, 0}));
    // 565 white is (248, 252, 248): Y 250.348, Cb -1.3, Cr -1.7.
    EXPECT_EQ(encodeFlat(encoder(Sampling::S444, Pixel::BGR565), packed(0xFFFF)), (Samples{122, -2, -2}));
    EXPECT_EQ(encodeFlat(encoder(Sampling::S444, Pixel::BGR565), packed(0x8000)),
              encodeFlat(encoder(Sampling::S444, Pixel::RGB), {128, 0, 0}));
}

TEST(McuEncode, AveragesGoToTheFloor) {
    const Encoder& half = encoder(Sampling::S422, Pixel::YCC);
    const auto chromaOf = [&](const Encoder& c, Zmx8u a, Zmx8u b) {
        std::vector<Zmx8u> src(c.extent(c.rowBytes()), 0);
        for (int x = 0; x < 16; ++x) // columns in turn, all rows alike
            for (int y = 0; y < c.height(); ++y)
                src[std::size_t(y * c.rowBytes() + 3 * x + 1)] = src[std::size_t(y * c.rowBytes() + 3 * x + 2)] =
                    x % 2 ? b : a;
        Planes planes(c, GuardedBlock::AtEnd);
        EXPECT_EQ(c.call(src.data(), c.rowBytes(), planes.data()), zmxStsNoErr);
        EXPECT_EQ(planes[1].copy(), planes[2].copy());
        return int(planes[1][17]);
    };
    EXPECT_EQ(chromaOf(half, 128, 129), 0);
    EXPECT_EQ(chromaOf(half, 127, 128), -1);
    EXPECT_EQ(chromaOf(encoder(Sampling::S411, Pixel::YCC), 128, 129), 0);
    EXPECT_EQ(chromaOf(encoder(Sampling::S411, Pixel::YCC), 127, 128), -1);
    // One sample of four below the middle is enough for the floor.
    std::vector<Zmx8u> src(16 * 48, 128);
    src[1] = 127;
    Planes planes(encoder(Sampling::S411, Pixel::YCC), GuardedBlock::AtEnd);
    ASSERT_EQ(encoder(Sampling::S411, Pixel::YCC).call(src.data(), 48, planes.data()), zmxStsNoErr);
    EXPECT_EQ(planes[1][0], -1);
    EXPECT_EQ(planes[1][1], 0);
}

TEST(McuEncode, SplitTakesPairsApart) {
    const Encoder& c = encoder(Sampling::S422, Pixel::Pairs422);
    Zmx8u src[256];
    for (int i = 0; i < 256; ++i) src[i] = Zmx8u(i);
    Planes planes(c, GuardedBlock::AtEnd);
    ASSERT_EQ(c.call(src, 32, planes.data()), zmxStsNoErr);
    EXPECT_EQ(planes[0][8], 32 - 128); // row 1, left block
    EXPECT_EQ(planes[0][9], 34 - 128);
    EXPECT_EQ(planes[0][64 + 8], 48 - 128); // row 1, right block
    EXPECT_EQ(planes[1][8], 33 - 128);
    EXPECT_EQ(planes[2][8], 35 - 128);
    EXPECT_EQ(planes[2][63], 255 - 128);
}

TEST(McuEncode, EveryPackedPixel) {
    for (const Encoder& c : kEncoders) {
        if (c.pixel != Pixel::BGR555 && c.pixel != Pixel::BGR565) continue;
        SCOPED_TRACE(c.name);
        std::vector<Zmx16u> all(65536);
        for (std::size_t i = 0; i < all.size(); ++i) all[i] = Zmx16u(i * 40503); // each once, neighbours far apart
        const std::size_t unit = std::size_t(c.width() * c.height());
        for (std::size_t at = 0; at < all.size(); at += unit) {
            std::vector<Zmx8u> pixels(2 * unit);
            std::memcpy(pixels.data(), &all[at], pixels.size());
            ASSERT_NO_FATAL_FAILURE(compare(c, pixels, c.rowBytes(), GuardedBlock::AtEnd));
        }
    }
}

TEST(McuEncode, AGridOfColours) {
    // Every third value of each channel, first and last included.
    const Encoder& c = encoder(Sampling::S444, Pixel::RGB);
    std::vector<Zmx8u> src(192);
    Planes expected(c, GuardedBlock::AtEnd), actual(c, GuardedBlock::AtEnd);
    std::size_t at = 0;
    for (int r = 0; r <= 255; r += 3)
        for (int g = 0; g <= 255; g += 3)
            for (int b = 0; b <= 255; b += 3) {
                src[at++] = Zmx8u(r), src[at++] = Zmx8u(g), src[at++] = Zmx8u(b);
                if (at < src.size() && r + g + b < 765) continue;
                at = 0;
                model::mcuFromPixels(c.sampling, c.pixel, src.data(), 24, expected.data());
                ASSERT_EQ(c.call(src.data(), 24, actual.data()), zmxStsNoErr);
                for (int i = 0; i < 3; ++i)
                    ASSERT_TRUE(sameBytes(expected[i].data(), actual[i].data(), 128)) << r << " " << g << " " << b;
            }
}

TEST(McuEncode, RandomUnits) {
    Rng rng(223);
    SCOPED_TRACE("seed 223");
    for (const Encoder& c : kEncoders) {
        SCOPED_TRACE(c.name);
        for (int i = 0; i < 60; ++i) {
            const int step = i % 5 == 0 ? int(rng.range(1, c.rowBytes())) : c.rowBytes() + int(rng.range(0, 11));
            const int lo = i % 4 == 0 ? 250 : 0, hi = i % 4 == 1 ? 5 : 255;
            ASSERT_NO_FATAL_FAILURE(compare(c, rng.vec<Zmx8u>(c.extent(step), lo, hi), step,
                                            i % 2 ? GuardedBlock::AtEnd : GuardedBlock::AtStart));
        }
    }
}

TEST(McuEncode, PointersThenStepThenPlanes) {
    for (const Encoder& c : kEncoders) {
        SCOPED_TRACE(c.name);
        const std::vector<Zmx8u> src(c.extent(c.rowBytes()), 7);
        Planes planes(c, GuardedBlock::AtEnd);
        for (int i = 0; i < planes.size(); ++i) planes[i].fill(0x5A5A);
        const std::vector<Zmx16s> before = planes.copy();
        std::vector<ZmxStatus> tests{kNull, kNull, kStep};
        tests.insert(tests.end(), std::size_t(c.planes()), kNull);
        checkOrder(tests, [&](const Bad& bad) {
            Zmx16s* pointers[4] = {};
            for (int i = 0; i < c.planes(); ++i) pointers[i] = bad.null(3 + i, planes.data()[i]);
            return c.call(bad.null(0, src.data()), bad.below1(2, c.rowBytes()), bad.null(1, pointers));
        });
        EXPECT_EQ(planes.copy(), before);
    }
}

TEST(McuEncode, Digests) {
    for (const Encoder& c : kEncoders) EXPECT_EQ(digestOf(c), c.digest) << c.name << std::hex << " 0x" << digestOf(c);
}
