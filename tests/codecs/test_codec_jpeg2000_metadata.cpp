// SPDX-License-Identifier: BSD-2-Clause
// What stands beside the samples: boxes of JP2 files, both ways and broken, and PGX files.
#include "codecs/jpeg2000/pgx.h"
#include "tests/codecs/support/jpeg2000pictures.h"

namespace {

using namespace jpeg2000test;

Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

Picture small() {
    Picture p(shapeOf(9, 7, 3, 255));
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 27; ++x) p.bytes(y)[std::size_t(x)] = std::uint8_t(9 * x + y);
    return p;
}

Picture withMetadata(Metadata metadata) {
    Picture p = small();
    p.metadata = std::move(metadata);
    return p;
}

const Metadata kAll{bytesOf("what stands for a profile"), bytesOf("II*\0 EXIF"), bytesOf("<x:xmpmeta/>"),
                    Resolution{11811, 5906, Resolution::Unit::metre}};

TEST(Jpeg2000Metadata, GoesThereAndBack) {
    const DecodedPicture back = decode(encode(withMetadata(kAll)));
    EXPECT_TRUE(back.warnings.empty());
    EXPECT_EQ(back.picture.metadata, kAll);
    EXPECT_TRUE(decode(encode(small())).picture.metadata.empty());
}

TEST(Jpeg2000Metadata, ResolutionsAreExactToNineDigits) {
    for (const double v : {11811.0, 2834.6456692913, 0.25, 1.0 / 3, 65535.0, 65536.0, 1e9, 123456.789, 1e-7}) {
        const Resolution r{v, 1 / v, Resolution::Unit::metre};
        const auto back = decode(encode(withMetadata({{}, {}, {}, r}))).picture.metadata.resolution;
        ASSERT_TRUE(back) << v;
        EXPECT_EQ(back->unit, Resolution::Unit::metre);
        EXPECT_NEAR(back->x / r.x, 1, 1e-8) << v;
        EXPECT_NEAR(back->y / r.y, 1, 1e-8) << v;
    }
    const Resolution inches{300, 72, Resolution::Unit::inch};
    const auto back = decode(encode(withMetadata({{}, {}, {}, inches}))).picture.metadata.resolution;
    ASSERT_TRUE(back);
    EXPECT_NEAR(back->in(Resolution::Unit::inch).x, 300, 1e-5);
    EXPECT_NEAR(back->in(Resolution::Unit::inch).y, 72, 1e-5);
}

std::vector<std::string> toldOf(const Metadata& metadata, bool jp2) {
    const Picture p = withMetadata(metadata);
    PictureSource source(p);
    MemorySink sink;
    EncodeOptions o;
    o.jp2 = jp2;
    return encode(source, sink, o);
}

TEST(Jpeg2000Metadata, ALossIsTold) {
    EXPECT_TRUE(toldOf(kAll, true).empty());
    EXPECT_EQ(toldOf(kAll, false).size(), 1u);
    EXPECT_TRUE(toldOf({}, false).empty());
    // The shape of pixels without their size has no box.
    const Resolution shape{2, 1, Resolution::Unit::none};
    EXPECT_EQ(toldOf({{}, {}, {}, shape}, true).size(), 1u);
    EXPECT_FALSE(decode(encode(withMetadata({{}, {}, {}, shape}))).picture.metadata.resolution);
}

// Puts other bytes in the place of some; boxes keep their lengths.
Bytes replaced(Bytes file, const std::string& from, const std::string& to) {
    const auto at = std::search(file.begin(), file.end(), from.begin(), from.end());
    EXPECT_NE(at, file.end()) << from;
    std::copy(to.begin(), to.end(), at);
    return file;
}

TEST(Jpeg2000Metadata, DisplayServesWhereNoCaptureIs) {
    const Bytes file = encode(withMetadata(kAll));
    EXPECT_EQ(decode(replaced(file, "resc", "resd")).picture.metadata, kAll);
    EXPECT_FALSE(decode(replaced(file, "resc", "none")).picture.metadata.resolution);
}

// Some put what stands ahead of EXIF in a JPEG file into the box, too.
TEST(Jpeg2000Metadata, ExifMayHaveItsHeadOfJpegFiles) {
    Metadata m = kAll;
    m.exif = bytesOf(std::string("Exif\0\0", 6) + "MM EXIF");
    EXPECT_EQ(decode(encode(withMetadata(m))).picture.metadata.exif, bytesOf("MM EXIF"));
    m.exif = bytesOf(std::string("Exif\0\0Exif\0\0", 12) + "MM EXIF");
    EXPECT_EQ(decode(encode(withMetadata(m))).picture.metadata.exif, bytesOf("MM EXIF"));
}

// Whatever becomes of the boxes, the samples are what they were or the file is refused.
TEST(Jpeg2000Metadata, BrokenBoxesCostNoSamples) {
    const Bytes file = encode(withMetadata(kAll));
    const Picture whole = decode(file).picture;
    const std::size_t boxes = find(file, {0xFF, 0x4F, 0xFF, 0x51});
    Rng rng(11);
    int read = 0;
    for (int i = 0; i < 1000; ++i) {
        Bytes broken = file;
        broken[std::size_t(rng.range(12, std::int64_t(boxes) - 1))] ^= std::uint8_t(1 << rng.range(0, 7));
        try {
            const DecodedPlanes p = decodePlanes(broken);
            ++read;
            ASSERT_EQ(p.picture.components.size(), 3u);
            EXPECT_EQ(p.picture.components[1].samples[9 * 3 + 4], std::int32_t(whole.at(3 * 4 + 1, 3)));
        } catch (const Error&) {
        }
    }
    EXPECT_GT(read, 500);
}

// ---- PGX files

TEST(Pgx, EveryDepthAndSign) {
    for (int depth = 1; depth <= 16; ++depth)
        for (const bool isSigned : {false, true}) {
            PlanarPicture p = picture({.width = 13, .height = 6, .depth = depth, .isSigned = isSigned});
            Component& c = p.components[0];
            c.samples[3] = c.smallest();
            c.samples[4] = c.largest();
            const Bytes file = writePgx(c);
            const Component back = readPgx(file);
            EXPECT_EQ(back.depth, depth);
            EXPECT_EQ(back.isSigned, isSigned);
            EXPECT_EQ(back.samples, c.samples) << depth;
            // All of it is needed.
            EXPECT_THROW(readPgx(ByteView(file).first(file.size() - 1)), Error);
        }
}

TEST(Pgx, EitherByteOrderAndSpacing) {
    for (const std::string head : {"PG ML - 12 2 1\n", "PG ML -12 2 1\n", "PG ML -12 2 1\r\n", "PG  ML  -  12  2  1\n"})
        EXPECT_EQ(readPgx(bytesOf(head + "\x01\x02\x0F\xFE")).samples, (std::vector<std::int32_t>{0x102, -2})) << head;
    EXPECT_EQ(readPgx(bytesOf("PG LM + 12 2 1\n\x02\x01\xFE\x0F")).samples, (std::vector<std::int32_t>{0x102, 0xFFE}));
    EXPECT_EQ(readPgx(bytesOf("PG ML 12 2 1\n\x01\x02\x0F\xFE")).samples, (std::vector<std::int32_t>{0x102, 0xFFE}));
}

TEST(Pgx, NonsenseIsRefused) {
    for (const char* file :
         {"", "PG", "PX ML + 8 1 1\nx", "PG MM + 8 1 1\nx", "PG ML + 0 1 1\nx", "PG ML + 17 1 1\nxx",
          "PG ML + 8 0 1\nx", "PG ML + 8 1 -1\nx", "PG ML + 8 99999999999 1\nx", "PG ML + 8 1 1", "PG ML + 8 1 1x",
          "PG ML * 8 1 1\nx", "PG ML + 8 536870912 536870912\nx", "PG ML + 8 25555555121 1\nx",
          "PG ML + 8 999999999999999 1\nx", "PG ML + 8 9999999999999999 1\nx"})
        EXPECT_THROW(readPgx(bytesOf(file)), Error) << file;
}

TEST(Pgx, SizesSayHowComponentsAreSampled) {
    std::vector<Component> parts;
    for (const auto& [w, h] : {std::pair{7, 5}, {4, 5}, {3, 1}}) {
        Component c;
        c.width = w;
        c.height = h;
        c.samples.assign(std::size_t(w) * std::size_t(h), 3 * w + h);
        parts.push_back(c);
    }
    const PlanarPicture p = fromComponents(parts);
    EXPECT_EQ(p.components[1].dx, 2);
    EXPECT_EQ(p.components[1].dy, 1);
    EXPECT_EQ(p.components[2].dx, 3);
    EXPECT_EQ(p.components[2].dy, 5);
    expectSame(decoded(encode(p)), p);
}

} // namespace
