// bench_colour.cpp - colour conversion of whole planes: pixels a second on one thread and on all. Beside the
// functions stand a plain copy of three bytes a pixel, plain loops through tables, and the conversions of
// TurboJPEG. To see the latter without their vector code, run with JSIMD_FORCENONE=1 in the environment.
// SPDX-License-Identifier: BSD-2-Clause
#include "bench/bench_team.h"
#include "zmxj.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <vector>

#ifdef ZMX_HAVE_TURBOJPEG
#include <turbojpeg.h>
#endif

namespace {

// Arguments: width, height, threads.
struct Picture {
    ZmxiSize size;
    std::vector<Zmx8u> plane[2][4], pixels;

    explicit Picture(const benchmark::State& state) : size{int(state.range(0)), int(state.range(1))} {
        std::mt19937 random(1);
        const std::size_t n = std::size_t(size.width * size.height);
        for (auto& side : plane)
            for (auto& p : side) {
                p.resize(n);
                for (auto& v : p) v = Zmx8u(random());
            }
        pixels.resize(4 * n);
        for (auto& v : pixels) v = Zmx8u(random());
    }
};

template <class Run> void each(benchmark::State& state, Run run) {
    Picture p(state);
    const Team team(int(state.range(2)));
    const Zmx8u* const src[4] = {p.plane[0][0].data(), p.plane[0][1].data(), p.plane[0][2].data(),
                                 p.plane[0][3].data()};
    Zmx8u* const dst[4] = {p.plane[1][0].data(), p.plane[1][1].data(), p.plane[1][2].data(), p.plane[1][3].data()};
    for (auto _ : state) {
        run(src, dst, p.pixels.data(), p.size);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * p.size.width * p.size.height);
}

// One way of passing planes and pixels: the shape of a function decides.
template <auto f> void planes(benchmark::State& s) {
    each(s, [](auto src, auto dst, Zmx8u*, ZmxiSize n) { f(src, n.width, dst, n.width, n); });
}
template <auto f, int Bytes> void planesToPixels(benchmark::State& s) {
    each(s, [](auto src, auto, Zmx8u* pixels, ZmxiSize n) { f(src, n.width, pixels, Bytes * n.width, n); });
}
template <auto f> void planesToWords(benchmark::State& s) {
    each(s, [](auto src, auto, Zmx8u* pixels, ZmxiSize n) {
        f(src, n.width, reinterpret_cast<Zmx16u*>(pixels), 2 * n.width, n);
    });
}
template <auto f, int Bytes> void pixelsToPlanes(benchmark::State& s) {
    each(s, [](auto, auto dst, Zmx8u* pixels, ZmxiSize n) { f(pixels, Bytes * n.width, dst, n.width, n); });
}
template <auto f> void wordsToPlanes(benchmark::State& s) {
    each(s, [](auto, auto dst, Zmx8u* pixels, ZmxiSize n) {
        f(reinterpret_cast<const Zmx16u*>(pixels), 2 * n.width, dst, n.width, n);
    });
}
template <auto f> void pixelsToY(benchmark::State& s) {
    each(s, [](auto, auto dst, Zmx8u* pixels, ZmxiSize n) { f(pixels, 3 * n.width, dst[0], n.width, n); });
}
template <auto f> void planesToY(benchmark::State& s) {
    each(s, [](auto src, auto dst, Zmx8u*, ZmxiSize n) { f(src, n.width, dst[0], n.width, n); });
}

void copyOfPlanes(benchmark::State& s) {
    each(s, [](auto src, auto dst, Zmx8u*, ZmxiSize n) {
        for (int p = 0; p < 3; ++p) std::memcpy(dst[p], src[p], std::size_t(n.width * n.height));
    });
}

void pairsToPixels(benchmark::State& s) {
    std::vector<Zmx8u> pixels(3 * std::size_t(s.range(0) * s.range(1)));
    each(s, [&](auto, auto, Zmx8u* pairs, ZmxiSize n) {
        zmxiYCbCr422ToRGB_JPEG_8u_C2C3R(pairs, 2 * n.width, pixels.data(), 3 * n.width, n);
    });
}

// Plain loops, a pixel at a time through tables.
template <class Rule> std::array<int, 256> table(Rule rule) {
    std::array<int, 256> t;
    for (int i = 0; i < 256; ++i) t[std::size_t(i)] = rule(i);
    return t;
}
Zmx8u limited(int v) { return Zmx8u(std::clamp(v, 0, 255)); }

const auto red = table([](int i) { return (91881 * (i - 128) + 32768) >> 16; });
const auto blue = table([](int i) { return (116130 * (i - 128) + 32768) >> 16; });
const auto greenCr = table([](int i) { return -46802 * (i - 128); });
const auto greenCb = table([](int i) { return -22554 * (i - 128) + 32768; });

void plainLoopFromYCbCr(benchmark::State& s) {
    each(s, [](auto src, auto dst, Zmx8u*, ZmxiSize n) {
        for (int i = 0; i < n.width * n.height; ++i) {
            const int y = src[0][i];
            const std::size_t cb = src[1][i], cr = src[2][i];
            dst[0][i] = limited(y + red[cr]);
            dst[1][i] = limited(y + ((greenCb[cb] + greenCr[cr]) >> 16));
            dst[2][i] = limited(y + blue[cb]);
        }
    });
}

const std::array<int, 256> sums[8] = {
    table([](int i) { return 19595 * i; }),        table([](int i) { return 38470 * i; }),
    table([](int i) { return 7471 * i + 32768; }), table([](int i) { return -11059 * i; }),
    table([](int i) { return -21709 * i; }),       table([](int i) { return 32768 * i + 8421375; }),
    table([](int i) { return -27439 * i; }),       table([](int i) { return -5329 * i; })};

void plainLoopToYCbCr(benchmark::State& s) {
    each(s, [](auto src, auto dst, Zmx8u*, ZmxiSize n) {
        for (int i = 0; i < n.width * n.height; ++i) {
            const std::size_t r = src[0][i], g = src[1][i], b = src[2][i];
            dst[0][i] = Zmx8u((sums[0][r] + sums[1][g] + sums[2][b]) >> 16);
            dst[1][i] = Zmx8u((sums[3][r] + sums[4][g] + sums[5][b]) >> 16);
            dst[2][i] = Zmx8u((sums[5][r] + sums[6][g] + sums[7][b]) >> 16);
        }
    });
}

#ifdef ZMX_HAVE_TURBOJPEG
// With 4:4:4 no more is done than the conversion and its row buffers.
void turbojpegFromYCbCr(benchmark::State& s) {
    const tjhandle handle = tjInitDecompress();
    each(s, [=](auto src, auto, Zmx8u* pixels, ZmxiSize n) {
        const unsigned char* planes[3] = {src[0], src[1], src[2]};
        const int strides[3] = {n.width, n.width, n.width};
        tjDecodeYUVPlanes(handle, planes, strides, TJSAMP_444, pixels, n.width, 3 * n.width, n.height, TJPF_RGB, 0);
    });
    tjDestroy(handle);
}
void turbojpegToYCbCr(benchmark::State& s) {
    const tjhandle handle = tjInitCompress();
    each(s, [=](auto, auto dst, Zmx8u* pixels, ZmxiSize n) {
        unsigned char* planes[3] = {dst[0], dst[1], dst[2]};
        int strides[3] = {n.width, n.width, n.width};
        tjEncodeYUVPlanes(handle, pixels, n.width, 3 * n.width, n.height, TJPF_RGB, planes, strides, TJSAMP_444, 0);
    });
    tjDestroy(handle);
}
#endif

[[maybe_unused]] const bool registered = registerAll({
    {"copyOfPlanes", copyOfPlanes},
    {"plainLoopFromYCbCr", plainLoopFromYCbCr},
    {"YCbCrToRGB_P3R", planes<zmxiYCbCrToRGB_JPEG_8u_P3R>, true},
    {"YCbCrToRGB_P3C3R", planesToPixels<zmxiYCbCrToRGB_JPEG_8u_P3C3R, 3>, true},
    {"YCbCrToBGR_P3C3R", planesToPixels<zmxiYCbCrToBGR_JPEG_8u_P3C3R, 3>, true},
    {"YCCKToCMYK_P4R", planes<zmxiYCCKToCMYK_JPEG_8u_P4R>, true},
    {"YCCKToCMYK_P4C4R", planesToPixels<zmxiYCCKToCMYK_JPEG_8u_P4C4R, 4>, true},
    {"YCbCrToBGR555_P3C3R", planesToWords<zmxiYCbCrToBGR555_JPEG_8u16u_P3C3R>},
    {"YCbCrToRGB555_P3C3R", planesToWords<zmxiYCbCrToRGB555_JPEG_8u16u_P3C3R>},
    {"YCbCrToBGR565_P3C3R", planesToWords<zmxiYCbCrToBGR565_JPEG_8u16u_P3C3R>},
    {"YCbCrToRGB565_P3C3R", planesToWords<zmxiYCbCrToRGB565_JPEG_8u16u_P3C3R>},
    {"YCbCr422ToRGB_C2C3R", pairsToPixels, true},
    {"plainLoopToYCbCr", plainLoopToYCbCr},
    {"RGBToYCbCr_P3R", planes<zmxiRGBToYCbCr_JPEG_8u_P3R>, true},
    {"RGBToYCbCr_C3P3R", pixelsToPlanes<zmxiRGBToYCbCr_JPEG_8u_C3P3R, 3>, true},
    {"BGRToYCbCr_C3P3R", pixelsToPlanes<zmxiBGRToYCbCr_JPEG_8u_C3P3R, 3>, true},
    {"CMYKToYCCK_P4R", planes<zmxiCMYKToYCCK_JPEG_8u_P4R>, true},
    {"CMYKToYCCK_C4P4R", pixelsToPlanes<zmxiCMYKToYCCK_JPEG_8u_C4P4R, 4>, true},
    {"RGBToY_C3C1R", pixelsToY<zmxiRGBToY_JPEG_8u_C3C1R>, true},
    {"BGRToY_C3C1R", pixelsToY<zmxiBGRToY_JPEG_8u_C3C1R>, true},
    {"RGBToY_P3C1R", planesToY<zmxiRGBToY_JPEG_8u_P3C1R>, true},
    {"RGB555ToYCbCr_C3P3R", wordsToPlanes<zmxiRGB555ToYCbCr_JPEG_16u8u_C3P3R>},
    {"BGR555ToYCbCr_C3P3R", wordsToPlanes<zmxiBGR555ToYCbCr_JPEG_16u8u_C3P3R>},
    {"RGB565ToYCbCr_C3P3R", wordsToPlanes<zmxiRGB565ToYCbCr_JPEG_16u8u_C3P3R>},
    {"BGR565ToYCbCr_C3P3R", wordsToPlanes<zmxiBGR565ToYCbCr_JPEG_16u8u_C3P3R>},
#ifdef ZMX_HAVE_TURBOJPEG
    {"turbojpegFromYCbCr", turbojpegFromYCbCr},
    {"turbojpegToYCbCr", turbojpegToYCbCr},
#endif
});

} // namespace
