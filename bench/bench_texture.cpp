// bench_texture.cpp - texture blocks in both directions, beside libsquish where it is there.
//
// Pictures: the middle of the photograph where there is one, else a made one; blocks: the photograph's,
// and random ones, in which every mode and every palette form turns up. Everything on one core. Rates are in pixels.
//
// The encoders also report their quality in dB over the colours (and over alpha, where there is any): `shift` as this library
// decodes the blocks, by plain shifts, and `repeat` as most other decoders do, with the top bits repeated.
// SPDX-License-Identifier: BSD-2-Clause
#include "bench/bench_photograph.h"
#include "zmxj.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>
#ifdef ZMX_HAVE_SQUISH
#include <omp.h>
#include <squish.h>
#endif

namespace {

constexpr int kSide = 1024;
constexpr ZmxiSize kSize{kSide, kSide};
constexpr int kPixels = kSide * kSide;

using Bytes = std::vector<Zmx8u>;

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
        const Photograph photo = readPhotograph("Garden", Channels::Rgb).middle(kSide, kSide);
        return photo.empty() ? madeRgb() : photo.samples;
    }();
    return picture;
}

Bytes withAlpha(bool opaque) {
    Bytes out;
    for (std::size_t i = 0; i < rgb().size(); i += 3) {
        const Zmx8u* p = &rgb()[i];
        out.insert(out.end(), {p[0], p[1], p[2], opaque ? Zmx8u(255) : Zmx8u((p[0] + p[1] + p[2]) / 3)});
    }
    return out;
}

// Alpha is the mean of the colours, so that it has a photograph's detail too; or 255, for DXT1, where libsquish would
// spend nothing on transparent texels.
const Bytes& rgba(bool opaque) {
    static const Bytes pictures[] = {withAlpha(false), withAlpha(true)};
    return pictures[opaque];
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

    const Bytes& picture() const { return rgba(bytesPerBlock == 8); }
};
const Format kFormats[] = {
    {"dxt1", 8, zmxiTextureDecodeBlockToRGBA_DXT1_8u_C1C4R, zmxiTextureEncodeBlockFromRGBA_DXT1_8u_C4C1R, kSquishDxt1},
    {"dxt3", 16, zmxiTextureDecodeBlockToRGBA_DXT3_8u_C1C4R, zmxiTextureEncodeBlockFromRGBA_DXT3_8u_C4C1R, kSquishDxt3},
    {"dxt5", 16, zmxiTextureDecodeBlockToRGBA_DXT5_8u_C1C4R, zmxiTextureEncodeBlockFromRGBA_DXT5_8u_C4C1R, kSquishDxt5},
};

Bytes encoded(const Format& f) {
    Bytes blocks(std::size_t(kPixels) / 16 * std::size_t(f.bytesPerBlock));
    f.encode(f.picture().data(), 4 * kSide, kSize, blocks.data());
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

double psnr(const Bytes& picture, const Bytes& pixels, int firstChannel, int endChannel) {
    double sum = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const int c = int(i % 4), d = pixels[i] - picture[i];
        if (c >= firstChannel && c < endChannel) sum += d * d;
    }
    return 10 * std::log10(255.0 * 255.0 * kPixels * (endChannel - firstChannel) / sum);
}

void reportQuality(benchmark::State& state, const Format& f, const Bytes& blocks) {
    Bytes pixels(4 * kPixels);
    f.decode(blocks.data(), pixels.data(), 4 * kSide, kSize);
    state.counters["shift_dB"] = psnr(f.picture(), pixels, 0, 3);
    if (f.bytesPerBlock == 16) state.counters["alpha_dB"] = psnr(f.picture(), pixels, 3, 4);
#ifdef ZMX_HAVE_SQUISH
    squish::DecompressImage(pixels.data(), kSide, kSide, blocks.data(), f.squish);
    state.counters["repeat_dB"] = psnr(f.picture(), pixels, 0, 3);
#endif
}

void encode(benchmark::State& state, const Format& f) {
    Bytes blocks(kPixels);
    for (auto _ : state) {
        f.encode(f.picture().data(), 4 * kSide, kSize, blocks.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kPixels);
    reportQuality(state, f, blocks);
}

void encodeYCoCg(benchmark::State& state) {
    Bytes blocks(kPixels);
    for (auto _ : state) {
        // The arithmetic does not mind that this is RGB.
        zmxiTextureEncodeBlockFromYCoCg_DXT5_8u_C3C1R(rgb().data(), 3 * kSide, kSize, blocks.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kPixels);
}

#ifdef ZMX_HAVE_SQUISH
void squishDecode(benchmark::State& state, const Format& f) {
    omp_set_num_threads(1);
    const Bytes blocks = encoded(f);
    Bytes pixels(4 * kPixels);
    for (auto _ : state) {
        squish::DecompressImage(pixels.data(), kSide, kSide, blocks.data(), f.squish);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kPixels);
}

void squishEncode(benchmark::State& state, const Format& f) {
    omp_set_num_threads(1);
    Bytes blocks(kPixels);
    for (auto _ : state) {
        squish::CompressImage(f.picture().data(), kSide, kSide, blocks.data(), f.squish | squish::kColourRangeFit);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kPixels);
    reportQuality(state, f, blocks);
}
#endif

const int registered = [] {
    const auto add = [](std::string name, auto run) { benchmark::RegisterBenchmark(("texture/" + name).c_str(), run); };
    for (const Format& f : kFormats) {
        const std::string name = f.name;
        add(name + "/decode/photo", [&f](benchmark::State& s) { decode(s, f.decode, encoded(f)); });
        add(name + "/decode/random", [&f](benchmark::State& s) { decode(s, f.decode, randomBlocks(f.bytesPerBlock)); });
        add(name + "/encode/photo", [&f](benchmark::State& s) { encode(s, f); });
#ifdef ZMX_HAVE_SQUISH
        add(name + "/decode/photo/squish", [&f](benchmark::State& s) { squishDecode(s, f); });
        add(name + "/encode/photo/squish", [&f](benchmark::State& s) { squishEncode(s, f); });
#endif
    }
    add("ycocg-dxt5/encode/photo", encodeYCoCg);
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
