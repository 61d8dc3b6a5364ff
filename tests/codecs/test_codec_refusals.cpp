// Headers and options that are refused, each with its words, and what describe() says of files of every kind.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg2000/jpeg2000.h"
#include "codecs/texture/texture.h"
#include "tests/codecs/support/pictures.h"

using namespace codecs;

namespace {

template <class Call> std::string refusalOf(Call call) {
    try {
        call();
        return "nothing";
    } catch (const Error& e) {
        return e.what();
    }
}

// A DDS file of zeros behind its header, with one field changed by each of the pairs.
struct Field {
    std::size_t at;
    std::uint32_t value;
};
constexpr std::size_t kSize = 4, kHeight = 12, kWidth = 16, kLevels = 28, kPixelSize = 76, kPixelFlags = 80,
                      kFourCC = 84, kCaps2 = 112, kDxgi = 128, kDimension = 132, kMisc = 136, kArray = 140;
constexpr std::uint32_t kDx10 = 0x30315844; // "DX10"

Bytes ddsFile(const std::vector<Field>& fields, std::size_t size = 4096) {
    texture::Texture t;
    t.width = 8;
    t.height = 4;
    Bytes file = texture::headerOf(t);
    file.resize(std::max<std::size_t>(file.size(), 148));
    for (const Field& f : fields)
        for (std::size_t i = 0; i < 4; ++i) file[f.at + i] = std::uint8_t(f.value >> 8 * i);
    file.resize(size);
    return file;
}
texture::Texture headerOf(const Bytes& file) {
    MemorySource source(file);
    return texture::readHeader(source);
}
std::string refused(const std::vector<Field>& fields, std::size_t size = 4096) {
    return refusalOf([&] { headerOf(ddsFile(fields, size)); });
}

// With a DX10 header of these.
std::vector<Field> dx10(std::uint32_t format, std::uint32_t dimension, std::uint32_t misc, std::uint32_t elements) {
    return {{kFourCC, kDx10}, {kDxgi, format}, {kDimension, dimension}, {kMisc, misc}, {kArray, elements}};
}

} // namespace

TEST(DdsHeader, EachFieldThatIsWrong) {
    EXPECT_EQ(refused({}), "nothing");
    EXPECT_EQ(refused({{0, 0x12345678}}), "byte 0: not a DDS file");
    EXPECT_EQ(refused({}, 3), "byte 0: not a DDS file");
    EXPECT_EQ(refused({}, 127), "the file ends at byte 127, in the header of 128 bytes");
    EXPECT_EQ(refused({{kSize, 123}}), "byte 4: header size 123, not 124");
    EXPECT_EQ(refused({{kPixelSize, 31}}), "byte 76: pixel format size 31, not 32");
    EXPECT_EQ(refused({{kPixelFlags, 0x41}}), "byte 80: the pixels are not compressed in blocks");
    EXPECT_EQ(refused({{kFourCC, 0x32545844}}), "byte 84: pixel format \"DXT2\" is not DXT1, DXT3, DXT5 or DX10");
    EXPECT_EQ(refused({{kFourCC, 36}}), "byte 84: pixel format 36 is not DXT1, DXT3, DXT5 or DX10");
    EXPECT_EQ(refused({{kFourCC, 0}}), "byte 84: pixel format 0 is not DXT1, DXT3, DXT5 or DX10");
    EXPECT_EQ(refused({{kWidth, 0}}), "byte 16: width 0, not 1 to 32768");
    EXPECT_EQ(refused({{kWidth, 32769}}), "byte 16: width 32769, not 1 to 32768");
    EXPECT_EQ(refused({{kHeight, 0xFFFFFFFF}}), "byte 12: height 4294967295, not 1 to 32768");
    EXPECT_EQ(refused({{kLevels, 5}}), "byte 28: level count 5, not 1 to 4");
    EXPECT_EQ(refused({{kLevels, 0}}), "nothing") << "a writer that counts none";
}

TEST(DdsHeader, Cubes) {
    constexpr std::uint32_t cube = 0x200, volume = 0x200000;
    EXPECT_EQ(refused({{kCaps2, volume}}), "byte 112: volume textures are not supported");
    EXPECT_EQ(refused({{kCaps2, cube}}), "byte 112: a cube map without faces");
    const texture::Texture some = headerOf(ddsFile({{kCaps2, cube | 0x400 << 1 | 0x400 << 4}}));
    EXPECT_TRUE(some.cube);
    EXPECT_EQ(some.layers, 2);
    EXPECT_EQ(some.layerName(0), "face -x");
    EXPECT_EQ(some.layerName(1), "face +z");
    const texture::Texture all = headerOf(ddsFile({{kCaps2, cube | 0x3F * 0x400}}));
    EXPECT_EQ(all.layers, 6);
    EXPECT_EQ(all.layerName(5), "face -z");
    EXPECT_EQ(headerOf(ddsFile({})).layerName(0), "");
    EXPECT_NE(texture::describe(all).find("face +y"), std::string::npos);
}

TEST(DdsHeader, Dx10) {
    EXPECT_EQ(refused(dx10(98, 3, 0, 1), 147), "the file ends at byte 147, in the DX10 header of 148 bytes");
    EXPECT_EQ(refused(dx10(1, 3, 0, 1)), "byte 128: DXGI format 1 is not BC1, BC2, BC3 or BC7");
    EXPECT_EQ(refused(dx10(98, 4, 0, 1)), "byte 132: resource dimension 4, not 3");
    EXPECT_EQ(refused(dx10(98, 3, 0, 0)).substr(0, 22), "byte 140: array size 0");
    const std::pair<std::uint32_t, texture::Format> formats[] = {{70, texture::Format::dxt1},
                                                                 {75, texture::Format::dxt3},
                                                                 {77, texture::Format::dxt5},
                                                                 {99, texture::Format::bc7}};
    for (const auto& [number, format] : formats) EXPECT_EQ(headerOf(ddsFile(dx10(number, 3, 0, 1))).format, format);
    const texture::Texture elements = headerOf(ddsFile(dx10(71, 3, 0, 3)));
    EXPECT_EQ(elements.layers, 3);
    EXPECT_EQ(elements.layerName(2), "element 2");
    const texture::Texture cubes = headerOf(ddsFile(dx10(71, 3, 4, 2)));
    EXPECT_EQ(cubes.layers, 12);
    EXPECT_EQ(cubes.layerName(7), "cube 1 face -x");
    EXPECT_NE(texture::describe(elements).find("element 1"), std::string::npos);
}

TEST(DdsHeader, FilesThatEndInAPicture) {
    // 8 by 4: 16 bytes, then 8, 8 and 8 for the levels.
    EXPECT_EQ(refused({{kLevels, 4}}, 128 + 40), "nothing");
    EXPECT_EQ(refused({{kLevels, 4}}, 128 + 39),
              "the file ends at byte 167, in level 3 of layer 0; the header promises 168 bytes");
    EXPECT_EQ(refused({{kLevels, 4}}, 128 + 3),
              "the file ends at byte 131, in level 0 of layer 0; the header promises 168 bytes");
    EXPECT_EQ(refused({{kCaps2, 0x200 | 0x3F * 0x400}}, 128 + 50),
              "the file ends at byte 178, in level 0 of layer 3; the header promises 224 bytes");
}

TEST(DdsHeader, NamesOfFormats) {
    for (auto format : {texture::Format::dxt1, texture::Format::dxt3, texture::Format::dxt5, texture::Format::ycocgDxt5,
                        texture::Format::bc7})
        EXPECT_EQ(texture::formatNamed(texture::nameOf(format)), format);
    EXPECT_EQ(refusalOf([] { texture::formatNamed("dxt2"); }), "no such texture format");
}

// Each option alone, at the first value that is refused and at the last one that is not.
TEST(Jpeg2000Options, EachThatIsWrong) {
    using Options = jpeg2000::EncodeOptions;
    const auto with = [](auto change) {
        Options o;
        change(o);
        return refusalOf([&] { jpeg2000::check(o); });
    };
    EXPECT_EQ(with([](Options& o) { o.levels = 33; }), "wavelet levels are 0 to 32");
    EXPECT_EQ(with([](Options& o) { o.levels = -1; }), "wavelet levels are 0 to 32");
    EXPECT_EQ(with([](Options& o) { o.levels = 32; }), "nothing");
    EXPECT_EQ(with([](Options& o) { o.own = {{.component = -1}}; }), "options for a component below 0");
    EXPECT_EQ(with([](Options& o) { o.own = {{.component = 0, .levels = 40}}; }), "wavelet levels are 0 to 32");
    EXPECT_EQ(with([](Options& o) { o.rates = {0}; }), "a rate that is not above 0");
    EXPECT_EQ(with([](Options& o) { o.rates = {2, 1}; }), "rates of layers that fall");
    EXPECT_EQ(with([](Options& o) { o.psnrs = {40, 30}; }), "PSNRs of layers that fall");
    EXPECT_EQ(with([](Options& o) { o.ratios = {0.5}; }), "a ratio that is not 1 or more");
    EXPECT_EQ(with([](Options& o) { o.ratios = {4, 8}; }), "ratios of layers that rise");
    EXPECT_EQ(with([](Options& o) { o.ratios = {8, 4}; }), "nothing");
    EXPECT_EQ(with([](Options& o) { o.rates = {1}, o.psnrs = {30}; }),
              "layers by more than one of rate, PSNR and ratio");
    EXPECT_EQ(with([](Options& o) {
                  o.psnrs = {30}, o.region = jpeg2000::Window{0, 0, 4, 4};
              }),
              "layers by PSNR with a region of interest");
    for (double step : {1.0 / 65, 64.5, -1.0})
        EXPECT_EQ(with([&](Options& o) { o.baseStep = step; }), "a step size that is not 1/64 to 64");
    for (double step : {1.0 / 64, 64.0, 0.0}) EXPECT_EQ(with([&](Options& o) { o.baseStep = step; }), "nothing");
    for (int sampling : {0, 256}) {
        EXPECT_EQ(with([&](Options& o) { o.samplingX = sampling; }), "a sampling that is not 1 to 255");
        EXPECT_EQ(with([&](Options& o) { o.samplingY = sampling; }), "a sampling that is not 1 to 255");
    }
    EXPECT_EQ(with([](Options& o) { o.changes.resize(1001); }), "too many progression changes");
    Options o;
    o.own = {{.component = 3}};
    EXPECT_EQ(refusalOf([&] { jpeg2000::encode(noise(shapeOf(8, 8, 3)), o); }),
              "options for a component that is not there");
}

TEST(Jpeg2000Options, OfAComponentAndARegion) {
    const Picture picture = noise(shapeOf(40, 24, 3));
    jpeg2000::EncodeOptions o;
    o.own = {{.component = 1, .levels = 2, .blockWidth = 16}};
    o.colourTransform = false;
    o.region = jpeg2000::Window{4, 4, 20, 10};
    const Bytes file = jpeg2000::encode(picture, o);
    EXPECT_EQ(samplesOf(jpeg2000::decode(file).picture), samplesOf(picture));
    const std::string text = jpeg2000::describe(file);
    for (const char* word : {"region of interest shifted", "COC", "RGN"})
        EXPECT_NE(text.find(word), std::string::npos) << word << " in\n" << text;
    o = {};
    o.tileWidth = o.tileHeight = 16;
    o.tilePartsByResolution = true;
    o.progression = jpeg2000::Progression::RLCP;
    const std::string tiled = jpeg2000::describe(jpeg2000::encode(picture, o));
    for (const char* word : {"TLM", "COD", "QCD"})
        EXPECT_NE(tiled.find(word), std::string::npos) << word << " in\n" << tiled;
}

// What PNM and PAM headers say of each kind of picture.
TEST(PnmHeader, OfEachShape) {
    const auto written = [](const Shape& shape, const char* ending) -> std::string {
        Folder folder;
        const std::string path = folder.file(std::string("x") + ending);
        const std::string no = refusalOf([&] { writePicture(path, noise(shape)); });
        if (no != "nothing") return "refused";
        const Bytes bytes = readFile(path);
        return {bytes.begin(), bytes.begin() + 2};
    };
    EXPECT_EQ(written(shapeOf(5, 3, 1, 1), ".pbm"), "P4");
    EXPECT_EQ(written(shapeOf(5, 3, 1), ".pgm"), "P5");
    EXPECT_EQ(written(shapeOf(5, 3, 3), ".ppm"), "P6");
    EXPECT_EQ(written(shapeOf(5, 3, 1, 1), ".pnm"), "P4");
    EXPECT_EQ(written(shapeOf(5, 3, 3, 1), ".pnm"), "P6");
    EXPECT_EQ(written(shapeOf(5, 3, 3), ".pgm"), "P6") << "the header tells";
    EXPECT_EQ(written(shapeOf(5, 3, 1), ".pbm"), "refused");
    EXPECT_EQ(written(shapeOf(5, 3, 3, 1), ".pbm"), "refused");
    EXPECT_EQ(written(shapeOf(5, 3, 4), ".ppm"), "refused");
    for (int channels : {1, 2, 3, 4})
        for (int maxval : {1, 255, 65535}) EXPECT_EQ(written(shapeOf(5, 3, channels, maxval), ".pam"), "P7");
    EXPECT_EQ(written(cmykShape(5, 3), ".pam"), "P7");
}
