// BMP files: what the writer makes byte by byte, and every kind that the reader knows, made up here.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/codecs/support/pictures.h"

using namespace codecs;

namespace {

// A BMP file put together from its parts.
struct Parts {
    int width, height; // a negative height: the first row is the top one
    int bits;
    std::uint32_t compression = 0;
    std::vector<std::uint32_t> masks = {};
    std::vector<std::array<std::uint8_t, 3>> palette = {}; // R, G, B
    Bytes pixels = {};
    std::size_t header = 40;
};

void put(Bytes& to, std::uint64_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) to.push_back(std::uint8_t(v >> 8 * i));
}

Bytes fileOfParts(const Parts& p) {
    const bool old = p.header == 12;
    Bytes info;
    put(info, p.header, 4);
    put(info, std::uint32_t(p.width), old ? 2 : 4);
    put(info, std::uint32_t(p.height), old ? 2 : 4);
    put(info, 1, 2);
    put(info, unsigned(p.bits), 2);
    if (!old) {
        put(info, p.compression, 4);
        info.resize(40);
        info[32] = std::uint8_t(p.palette.size());
        for (std::uint32_t m : p.masks) put(info, m, 4);
        if (p.header > info.size()) info.resize(p.header);
    }
    for (const auto& colour : p.palette) {
        info.insert(info.end(), {colour[2], colour[1], colour[0]});
        if (!old) info.push_back(0);
    }
    Bytes file{'B', 'M'};
    put(file, 14 + info.size() + p.pixels.size(), 4);
    put(file, 0, 4);
    put(file, 14 + info.size(), 4);
    file.insert(file.end(), info.begin(), info.end());
    file.insert(file.end(), p.pixels.begin(), p.pixels.end());
    return file;
}
Picture read(const Parts& p) { return pictureIn(fileOfParts(p)); }

using Numbers = std::vector<unsigned>;
constexpr std::array<std::uint8_t, 3> kRed{255, 0, 0}, kGreen{0, 255, 0}, kBlue{0, 0, 255}, kBlack{0, 0, 0},
    kWhite{255, 255, 255};

} // namespace

TEST(Bmp, TheBytesOfASmallFile) {
    const Bytes b = fileOf(made(shapeOf(2, 2, 3), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}), Container::bmp);
    ASSERT_EQ(b.size(), 14u + 40 + 16);
    EXPECT_EQ(b[2], b.size());
    EXPECT_EQ(b[10], 54);
    // The last row first, blue before red, rows filled up to four bytes.
    EXPECT_EQ(Bytes(b.begin() + 54, b.end()), (Bytes{9, 8, 7, 12, 11, 10, 0, 0, 3, 2, 1, 6, 5, 4, 0, 0}));
    const Bytes bits = fileOf(made(shapeOf(9, 1, 1, 1), {1, 0, 0, 0, 0, 0, 0, 0, 1}), Container::bmp);
    EXPECT_EQ(Bytes(bits.begin() + 54, bits.end()), (Bytes{0, 0, 0, 0, 255, 255, 255, 0, 0x80, 0x80, 0, 0}));
    const Bytes rgba = fileOf(made(shapeOf(1, 1, 4), {1, 2, 3, 4}), Container::bmp);
    EXPECT_EQ(Bytes(rgba.end() - 4, rgba.end()), (Bytes{3, 2, 1, 4}));
    EXPECT_EQ(rgba[14], 108) << "a header with a mask for alpha";
}

TEST(Bmp, PalettesOfEveryDepth) {
    for (std::size_t header : {12u, 40u}) {
        EXPECT_EQ(samplesOf(read({3, 1, 1, 0, {}, {kRed, kGreen}, {0x40, 0, 0, 0}, header})),
                  (Numbers{255, 0, 0, 0, 255, 0, 255, 0, 0}));
        std::vector<std::array<std::uint8_t, 3>> all(header == 12 ? 16 : 4, kBlack);
        all[1] = kRed;
        all[2] = kGreen;
        all[3] = kBlue;
        EXPECT_EQ(samplesOf(read({3, 1, 4, 0, {}, all, {0x12, 0x30, 0, 0}, header})),
                  (Numbers{255, 0, 0, 0, 255, 0, 0, 0, 255}));
    }
    const Picture bytes = read({2, 2, 8, 0, {}, {kRed, kGreen, kBlue}, {2, 1, 0, 0, 0, 9, 0, 0}});
    EXPECT_EQ(samplesOf(bytes), (Numbers{255, 0, 0, 0, 0, 0, 0, 0, 255, 0, 255, 0}))
        << "a place without a colour is black";
    // Black and white stays a bitmap, grey stays grey.
    const Picture bitmap = read({3, 1, 1, 0, {}, {kWhite, kBlack}, {0x40, 0, 0, 0}});
    expectSame(bitmap, made(shapeOf(3, 1, 1, 1), {1, 0, 1}));
    expectSame(read({2, 1, 8, 0, {}, {kBlack, {9, 9, 9}}, {1, 0, 0, 0}}), made(shapeOf(2, 1, 1), {9, 0}));
}

TEST(Bmp, PixelsOfEveryDepth) {
    EXPECT_EQ(samplesOf(read({1, 2, 24, 0, {}, {}, {1, 2, 3, 0, 4, 5, 6, 0}})), (Numbers{6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(samplesOf(read({1, -2, 24, 0, {}, {}, {1, 2, 3, 0, 4, 5, 6, 0}})), (Numbers{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(samplesOf(read({1, 1, 32, 0, {}, {}, {1, 2, 3, 99}})), (Numbers{3, 2, 1}));
    // 5 bits of red, green and blue; 5, 6 and 5.
    EXPECT_EQ(samplesOf(read({2, 1, 16, 0, {}, {}, {0x1F, 0x7C, 0x10, 0}})), (Numbers{255, 0, 255, 0, 0, 132}));
    EXPECT_EQ(samplesOf(read({1, 1, 16, 3, {0xF800, 0x7E0, 0x1F}, {}, {0xE0, 0xFF, 0, 0}})), (Numbers{255, 255, 0}));
    EXPECT_EQ(samplesOf(read({1, 1, 32, 3, {0xFF, 0xFF00, 0xFF0000, 0xFF000000}, {}, {1, 2, 3, 4}, 108})),
              (Numbers{1, 2, 3, 4}));
    EXPECT_EQ(samplesOf(read({1, 1, 32, 3, {0x3FF00000, 0xFFC00, 0x3FF}, {}, {0xFF, 3, 0, 0x20}})),
              (Numbers{128, 0, 255}));
}

TEST(Bmp, Runs) {
    const std::vector<std::array<std::uint8_t, 3>> colours{kBlack, {10, 10, 10}, {20, 20, 20}, {30, 30, 30}};
    // Rows from the bottom: a run; literals; a move to the right and up.
    const Picture eight = read({4, 3, 8, 1, {}, colours, {4, 1, 0, 0, 0, 3, 1, 2, 3, 0, 0, 0, 0, 2, 1, 0, 2, 3, 0, 1}});
    EXPECT_EQ(samplesOf(eight), (Numbers{0, 30, 30, 0, 10, 20, 30, 0, 10, 10, 10, 10}));
    const Picture four = read({5, 2, 4, 2, {}, colours, {5, 0x12, 0, 0, 0, 5, 0x31, 0x21, 0x30, 0, 0, 1}});
    EXPECT_EQ(samplesOf(four), (Numbers{30, 10, 20, 10, 30, 10, 20, 10, 20, 10}));
    // What goes beyond the picture, or ends early, leaves black.
    EXPECT_EQ(samplesOf(read({2, 2, 8, 1, {}, colours, {9, 1, 0, 0, 0, 2, 9, 9, 1, 1}})), (Numbers{0, 0, 10, 10}));
    EXPECT_EQ(samplesOf(read({2, 1, 8, 1, {}, colours, {1, 3, 0, 7, 1}})), (Numbers{30, 0}));
}

TEST(Bmp, WhatIsWrongIsSaid) {
    const auto wrong = [](const Parts& p) { return errorOf([&] { read(p); }); };
    EXPECT_EQ(wrong({1, 1, 24, 0, {}, {}, {1, 2}}), "BMP: the file ends before row 0 of those that stand in it");
    EXPECT_EQ(wrong({1, 1, 5, 0}), "BMP: 5 bits a pixel are not supported");
    EXPECT_EQ(wrong({1, 1, 24, 4}), "BMP: compression 4 of 24 bits a pixel is not supported");
    EXPECT_EQ(wrong({1, 1, 24, 1}), "BMP: compression 1 of 24 bits a pixel is not supported");
    EXPECT_EQ(wrong({1, -1, 8, 1}), "BMP: run-length coded rows from the top");
    EXPECT_EQ(wrong({0, 1, 24, 0}), "BMP: a picture of 0 by 1");
    EXPECT_EQ(wrong({-1, 1, 24, 0}), "BMP: a picture of 0 by 1");
    EXPECT_EQ(wrong({1, 1, 16, 3, {0, 1, 2}}), "BMP: a colour without bits");
    EXPECT_NE(wrong({1, 1, 24, 0, {}, {}, {}, 20}).find("a header of 20 bytes"), std::string::npos);
    EXPECT_EQ(errorOf([] { pictureIn(Bytes{'B', 'M', 1}); }), "BMP: the file ends in its header");
}
