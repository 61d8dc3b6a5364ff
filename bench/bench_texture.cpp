// bench_texture.cpp - texture blocks in both directions, beside libsquish where it is there.
//
// Pictures: a photograph of the system's backgrounds where there is one, else a made one; blocks: the photograph's,
// and random ones, in which every mode and every palette form turns up. Everything on one core. Rates are in pixels.
#include "zmxj.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <vector>
#ifdef ZMX_HAVE_LIBJPEG
#include <jpeglib.h>
#endif
#ifdef ZMX_HAVE_SQUISH
#include <omp.h>
#include <squish.h>
#endif

namespace {

constexpr int kSide = 1024;
constexpr ZmxiSize kSize{kSide, kSide};
constexpr int kPixels = kSide * kSide;

using Bytes = std::vector<Zmx8u>;

#ifdef ZMX_HAVE_LIBJPEG
// The top left of a photograph as RGB, or nothing.
Bytes photographRgb() {
    const char* named = std::getenv("ZMX_BENCH_PHOTO");
    const char* path = named ? named : "/usr/share/backgrounds/mate/nature/Garden.jpg";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "rb"), std::fclose);
    if (!file) return {};
    jpeg_decompress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&jpeg);
    jpeg_stdio_src(&jpeg, file.get());
    jpeg_read_header(&jpeg, TRUE);
    jpeg.out_color_space = JCS_RGB;
    jpeg_start_decompress(&jpeg);
    Bytes picture, row(std::size_t(jpeg.output_width) * 3);
    if (jpeg.output_width >= kSide && jpeg.output_height >= kSide)
        for (int y = 0; y < kSide; ++y) {
            Zmx8u* rows[1] = {row.data()};
            jpeg_read_scanlines(&jpeg, rows, 1);
            picture.insert(picture.end(), row.begin(), row.begin() + kSide * 3);
        }
    jpeg_destroy_decompress(&jpeg);
    return picture;
}
#else
Bytes photographRgb() { return {}; }
#endif

// Smooth colours with some noise, for want of a photograph.
Bytes madeRgb() {
    std::mt19937 random(1);
    Bytes picture;
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
            for (int v : {x / 5, y / 5, (x + y) / 10}) picture.push_back(Zmx8u(v + int(random() % 16)));
    return picture;
}

const Bytes& rgb() {
    static const Bytes picture = [] {
        Bytes photo = photographRgb();
        return photo.empty() ? madeRgb() : photo;
    }();
    return picture;
}

// Alpha is the mean of the colours, so that it has a photograph's detail too.
const Bytes& rgba() {
    static const Bytes picture = [] {
        Bytes out;
        for (std::size_t i = 0; i < rgb().size(); i += 3) {
            const Zmx8u* p = &rgb()[i];
            out.insert(out.end(), {p[0], p[1], p[2], Zmx8u((p[0] + p[1] + p[2]) / 3)});
        }
        return out;
    }();
    return picture;
}

Bytes randomBlocks(int bytesPerBlock) {
    std::mt19937 random(2);
    Bytes blocks(std::size_t(kPixels) / 16 * std::size_t(bytesPerBlock));
    for (Zmx8u& b : blocks) b = Zmx8u(random());
    return blocks;
}

// BC7 with all modes equally often; random bytes alone would be mode 0 every other time.
Bytes randomBc7() {
    Bytes blocks = randomBlocks(16);
    std::mt19937 random(3);
    for (std::size_t i = 0; i < blocks.size(); i += 16) {
        const unsigned mode = random() % 8;
        blocks[i] = Zmx8u((blocks[i] << 1 | 1) << mode);
    }
    return blocks;
}

#ifdef ZMX_HAVE_SQUISH
constexpr int kSquishDxt1 = squish::kDxt1, kSquishDxt3 = squish::kDxt3, kSquishDxt5 = squish::kDxt5;
#else
constexpr int kSquishDxt1 = 0, kSquishDxt3 = 0, kSquishDxt5 = 0;
#endif

using Decoder = ZmxStatus (*)(const Zmx8u*, Zmx8u*, Zmx32u, ZmxiSize);
using Encoder = ZmxStatus (*)(const Zmx8u*, Zmx32u, ZmxiSize, Zmx8u*);

struct Format {
    const char* name;
    int bytesPerBlock;
    Decoder decode;
    Encoder encode;
    int squish;
};
const Format kFormats[] = {
    {"dxt1", 8, zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R, zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R, kSquishDxt1},
    {"dxt3", 16, zmxiTextureDecodeBlockToRGBA_DXT3_8u_C1C4R, zmxiTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R, kSquishDxt3},
    {"dxt5", 16, zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R, zmxiTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R, kSquishDxt5},
};

Bytes encoded(const Format& f) {
    Bytes blocks(std::size_t(kPixels) / 16 * std::size_t(f.bytesPerBlock));
    f.encode(rgba().data(), 4 * kSide, kSize, blocks.data());
    return blocks;
}

void decode(benchmark::State& state, Decoder decoder, const Bytes& blocks) {
    Bytes pixels(4 * kPixels);
    for (auto _ : state) {
        decoder(blocks.data(), pixels.data(), 4 * kSide, kSize);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kPixels);
}

void encode(benchmark::State& state, Encoder encoder, const Bytes& pixels, int bytesPerPixel) {
    Bytes blocks(kPixels);
    for (auto _ : state) {
        encoder(pixels.data(), Zmx32u(bytesPerPixel * kSide), kSize, blocks.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kPixels);
}

#ifdef ZMX_HAVE_SQUISH
void squishDecode(benchmark::State& state, int format, const Bytes& blocks) {
    omp_set_num_threads(1);
    Bytes pixels(4 * kPixels);
    for (auto _ : state) {
        squish::DecompressImage(pixels.data(), kSide, kSide, blocks.data(), format);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kPixels);
}

void squishEncode(benchmark::State& state, int format) {
    omp_set_num_threads(1);
    Bytes blocks(kPixels);
    for (auto _ : state) {
        squish::CompressImage(rgba().data(), kSide, kSide, blocks.data(), format | squish::kColourRangeFit);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kPixels);
}
#endif

const int registered = [] {
    const auto add = [](std::string name, auto run) { benchmark::RegisterBenchmark(("texture/" + name).c_str(), run); };
    for (const Format& f : kFormats) {
        const std::string name = f.name;
        add(name + "/decode/photo", [&f](benchmark::State& s) { decode(s, f.decode, encoded(f)); });
        add(name + "/decode/random", [&f](benchmark::State& s) { decode(s, f.decode, randomBlocks(f.bytesPerBlock)); });
        add(name + "/encode/photo", [&f](benchmark::State& s) { encode(s, f.encode, rgba(), 4); });
#ifdef ZMX_HAVE_SQUISH
        add(name + "/decode/photo/squish", [&f](benchmark::State& s) { squishDecode(s, f.squish, encoded(f)); });
        add(name + "/encode/photo/squish", [&f](benchmark::State& s) { squishEncode(s, f.squish); });
#endif
    }
    add("ycocg-dxt5/encode/photo", [](benchmark::State& s) {
        encode(s, zmxiTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R, rgb(), 3); // the arithmetic does not mind the space
    });
    add("bc7/decode/random",
        [](benchmark::State& s) { decode(s, zmxiTextureDecodeBlockToRGBA_BC7_8u_C1C4R, randomBc7()); });
    for (int mode = 0; mode < 8; ++mode)
        add("bc7/decode/random-mode" + std::to_string(mode), [mode](benchmark::State& s) {
            Bytes blocks = randomBlocks(16);
            for (std::size_t i = 0; i < blocks.size(); i += 16) blocks[i] = Zmx8u((blocks[i] << 1 | 1) << mode);
            decode(s, zmxiTextureDecodeBlockToRGBA_BC7_8u_C1C4R, blocks);
        });
    return 0;
}();

} // namespace
