// bench_mcu.cpp - conversions of minimum coded units: pixels a second. The peer is a plain copy of three bytes a pixel.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr ZmxiSize k444 = {8, 8}, k422 = {16, 8}, k411 = {16, 16};

// A row of units side by side: the pixels (four bytes at most), and the planes of one unit after another.
constexpr int kUnits = 64, kStep = 16 * 4 * kUnits;

struct Data {
    std::vector<Zmx8u> pixels = std::vector<Zmx8u>(16 * kStep);
    std::vector<Zmx16s> planes = std::vector<Zmx16s>(4 * 256 * kUnits);

    Data() {
        std::mt19937 random(1);
        for (auto& v : pixels) v = Zmx8u(random());
        for (auto& v : planes) v = Zmx16s(int(random() & 255) - 128);
    }
};

Data& data() {
    static Data all;
    return all;
}

template <class Each> void each(benchmark::State& state, ZmxiSize unit, Each one) {
    Data& d = data();
    for (auto _ : state) {
        for (int i = 0; i < kUnits; ++i) {
            Zmx16s* const p = &d.planes[std::size_t(4 * 256 * i)];
            one(p, p + 256, p + 512, p + 768, &d.pixels[std::size_t(4 * unit.width * i)]);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kUnits * unit.width * unit.height);
    state.SetLabel("items are pixels");
}

template <class Planes, class Pixel>
void decode(benchmark::State& s, ZmxiSize unit, ZmxStatus (*function)(Planes, Pixel*, int)) {
    each(s, unit, [=](Zmx16s* y, Zmx16s* cb, Zmx16s* cr, Zmx16s* k, Zmx8u* pixels) {
        const Zmx16s* const planes[4] = {y, cb, cr, k};
        function(planes, reinterpret_cast<Pixel*>(pixels), kStep);
    });
}

template <class Planes, class Pixel>
void encode(benchmark::State& s, ZmxiSize unit, ZmxStatus (*function)(const Pixel*, int, Planes)) {
    each(s, unit, [=](Zmx16s* y, Zmx16s* cb, Zmx16s* cr, Zmx16s* k, Zmx8u* pixels) {
        Zmx16s* const planes[4] = {y, cb, cr, k};
        function(reinterpret_cast<const Pixel*>(pixels), kStep, planes);
    });
}

void copyOfPixels(benchmark::State& s) {
    each(s, k411, [](Zmx16s* y, Zmx16s*, Zmx16s*, Zmx16s*, Zmx8u* pixels) {
        for (int row = 0; row < 16; ++row) std::memcpy(pixels + row * kStep, y, 48);
    });
}
BENCHMARK(copyOfPixels);

BENCHMARK_CAPTURE(decode, YCbCr444ToRGBLS_MCU_16s8u_P3C3R, k444, zmxiYCbCr444ToRGBLS_MCU_16s8u_P3C3R);
BENCHMARK_CAPTURE(decode, YCbCr422ToRGBLS_MCU_16s8u_P3C3R, k422, zmxiYCbCr422ToRGBLS_MCU_16s8u_P3C3R);
BENCHMARK_CAPTURE(decode, YCbCr411ToRGBLS_MCU_16s8u_P3C3R, k411, zmxiYCbCr411ToRGBLS_MCU_16s8u_P3C3R);
BENCHMARK_CAPTURE(decode, YCbCr444ToBGRLS_MCU_16s8u_P3C3R, k444, zmxiYCbCr444ToBGRLS_MCU_16s8u_P3C3R);
BENCHMARK_CAPTURE(decode, YCbCr422ToBGRLS_MCU_16s8u_P3C3R, k422, zmxiYCbCr422ToBGRLS_MCU_16s8u_P3C3R);
BENCHMARK_CAPTURE(decode, YCbCr411ToBGRLS_MCU_16s8u_P3C3R, k411, zmxiYCbCr411ToBGRLS_MCU_16s8u_P3C3R);
BENCHMARK_CAPTURE(decode, YCbCr444ToBGR555LS_MCU_16s16u_P3C3R, k444, zmxiYCbCr444ToBGR555LS_MCU_16s16u_P3C3R);
BENCHMARK_CAPTURE(decode, YCbCr422ToBGR555LS_MCU_16s16u_P3C3R, k422, zmxiYCbCr422ToBGR555LS_MCU_16s16u_P3C3R);
BENCHMARK_CAPTURE(decode, YCbCr411ToBGR555LS_MCU_16s16u_P3C3R, k411, zmxiYCbCr411ToBGR555LS_MCU_16s16u_P3C3R);
BENCHMARK_CAPTURE(decode, YCbCr444ToBGR565LS_MCU_16s16u_P3C3R, k444, zmxiYCbCr444ToBGR565LS_MCU_16s16u_P3C3R);
BENCHMARK_CAPTURE(decode, YCbCr422ToBGR565LS_MCU_16s16u_P3C3R, k422, zmxiYCbCr422ToBGR565LS_MCU_16s16u_P3C3R);
BENCHMARK_CAPTURE(decode, YCbCr411ToBGR565LS_MCU_16s16u_P3C3R, k411, zmxiYCbCr411ToBGR565LS_MCU_16s16u_P3C3R);
BENCHMARK_CAPTURE(decode, YCCK444ToCMYKLS_MCU_16s8u_P4C4R, k444, zmxiYCCK444ToCMYKLS_MCU_16s8u_P4C4R);
BENCHMARK_CAPTURE(decode, YCCK422ToCMYKLS_MCU_16s8u_P4C4R, k422, zmxiYCCK422ToCMYKLS_MCU_16s8u_P4C4R);
BENCHMARK_CAPTURE(decode, YCCK411ToCMYKLS_MCU_16s8u_P4C4R, k411, zmxiYCCK411ToCMYKLS_MCU_16s8u_P4C4R);
BENCHMARK_CAPTURE(decode, SampleUp444LS_MCU_16s8u_P3C3R, k444, zmxiSampleUp444LS_MCU_16s8u_P3C3R);
BENCHMARK_CAPTURE(decode, SampleUp422LS_MCU_16s8u_P3C3R, k422, zmxiSampleUp422LS_MCU_16s8u_P3C3R);
BENCHMARK_CAPTURE(decode, SampleUp411LS_MCU_16s8u_P3C3R, k411, zmxiSampleUp411LS_MCU_16s8u_P3C3R);
BENCHMARK_CAPTURE(decode, Join422LS_MCU_16s8u_P3C2R, k422, zmxiJoin422LS_MCU_16s8u_P3C2R);

BENCHMARK_CAPTURE(encode, RGBToYCbCr444LS_MCU_8u16s_C3P3R, k444, zmxiRGBToYCbCr444LS_MCU_8u16s_C3P3R);
BENCHMARK_CAPTURE(encode, RGBToYCbCr422LS_MCU_8u16s_C3P3R, k422, zmxiRGBToYCbCr422LS_MCU_8u16s_C3P3R);
BENCHMARK_CAPTURE(encode, RGBToYCbCr411LS_MCU_8u16s_C3P3R, k411, zmxiRGBToYCbCr411LS_MCU_8u16s_C3P3R);
BENCHMARK_CAPTURE(encode, BGRToYCbCr444LS_MCU_8u16s_C3P3R, k444, zmxiBGRToYCbCr444LS_MCU_8u16s_C3P3R);
BENCHMARK_CAPTURE(encode, BGRToYCbCr422LS_MCU_8u16s_C3P3R, k422, zmxiBGRToYCbCr422LS_MCU_8u16s_C3P3R);
BENCHMARK_CAPTURE(encode, BGRToYCbCr411LS_MCU_8u16s_C3P3R, k411, zmxiBGRToYCbCr411LS_MCU_8u16s_C3P3R);
BENCHMARK_CAPTURE(encode, BGR555ToYCbCr444LS_MCU_16u16s_C3P3R, k444, zmxiBGR555ToYCbCr444LS_MCU_16u16s_C3P3R);
BENCHMARK_CAPTURE(encode, BGR555ToYCbCr422LS_MCU_16u16s_C3P3R, k422, zmxiBGR555ToYCbCr422LS_MCU_16u16s_C3P3R);
BENCHMARK_CAPTURE(encode, BGR555ToYCbCr411LS_MCU_16u16s_C3P3R, k411, zmxiBGR555ToYCbCr411LS_MCU_16u16s_C3P3R);
BENCHMARK_CAPTURE(encode, BGR565ToYCbCr444LS_MCU_16u16s_C3P3R, k444, zmxiBGR565ToYCbCr444LS_MCU_16u16s_C3P3R);
BENCHMARK_CAPTURE(encode, BGR565ToYCbCr422LS_MCU_16u16s_C3P3R, k422, zmxiBGR565ToYCbCr422LS_MCU_16u16s_C3P3R);
BENCHMARK_CAPTURE(encode, BGR565ToYCbCr411LS_MCU_16u16s_C3P3R, k411, zmxiBGR565ToYCbCr411LS_MCU_16u16s_C3P3R);
BENCHMARK_CAPTURE(encode, CMYKToYCCK444LS_MCU_8u16s_C4P4R, k444, zmxiCMYKToYCCK444LS_MCU_8u16s_C4P4R);
BENCHMARK_CAPTURE(encode, CMYKToYCCK422LS_MCU_8u16s_C4P4R, k422, zmxiCMYKToYCCK422LS_MCU_8u16s_C4P4R);
BENCHMARK_CAPTURE(encode, CMYKToYCCK411LS_MCU_8u16s_C4P4R, k411, zmxiCMYKToYCCK411LS_MCU_8u16s_C4P4R);
BENCHMARK_CAPTURE(encode, SampleDown444LS_MCU_8u16s_C3P3R, k444, zmxiSampleDown444LS_MCU_8u16s_C3P3R);
BENCHMARK_CAPTURE(encode, SampleDown422LS_MCU_8u16s_C3P3R, k422, zmxiSampleDown422LS_MCU_8u16s_C3P3R);
BENCHMARK_CAPTURE(encode, SampleDown411LS_MCU_8u16s_C3P3R, k411, zmxiSampleDown411LS_MCU_8u16s_C3P3R);
BENCHMARK_CAPTURE(encode, Split422LS_MCU_8u16s_C2P3R, k422, zmxiSplit422LS_MCU_8u16s_C2P3R);

} // namespace
