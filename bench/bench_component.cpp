// Samples a second of the component transforms, on 1024 x 1024 pixels of three samples.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#include <benchmark/benchmark.h>
#include <random>
#include <vector>

namespace {

constexpr int kSide = 1024;
constexpr ZmxiSize kRoi{kSide, kSide};

template <class T> std::vector<T> picture() {
    std::mt19937 random(1);
    std::vector<T> v(std::size_t(3 * kSide * kSide));
    for (T& x : v) x = T(int(random() & 4095) - 2048);
    return v;
}
template <class T> struct Planes {
    std::vector<T> samples = picture<T>();
    T* const planes[3] = {samples.data(), samples.data() + kSide* kSide, samples.data() + 2 * kSide* kSide};
    const T* const constPlanes[3] = {planes[0], planes[1], planes[2]};
    static constexpr int step = kSide * int(sizeof(T));
};
void count(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * 3 * kSide * kSide); }

template <class T> void pack(benchmark::State& state, ZmxStatus (*fn)(const T*, int, T* const[3], int, ZmxiSize)) {
    const auto pixels = picture<T>();
    const Planes<T> out;
    for (auto _ : state) fn(pixels.data(), 3 * out.step, out.planes, out.step, kRoi);
    count(state);
}
template <class T> void unpack(benchmark::State& state, ZmxStatus (*fn)(const T* const[3], int, T*, int, ZmxiSize)) {
    const Planes<T> in;
    auto pixels = picture<T>();
    for (auto _ : state) fn(in.constPlanes, in.step, pixels.data(), 3 * in.step, kRoi);
    count(state);
}
// The samples are put back before each turn, so that they do not grow.
template <class T> void inPlace(benchmark::State& state, ZmxStatus (*fn)(T* const[3], int, ZmxiSize)) {
    const auto fresh = picture<T>();
    Planes<T> p;
    for (auto _ : state) {
        state.PauseTiming();
        p.samples.assign(fresh.begin(), fresh.end());
        state.ResumeTiming();
        fn(p.planes, p.step, kRoi);
    }
    count(state);
}

} // namespace

BENCHMARK_CAPTURE(pack, RCTFwd_16s_C3P3R, zmxiRCTFwd_JPEG2K_16s_C3P3R);
BENCHMARK_CAPTURE(pack, RCTFwd_32s_C3P3R, zmxiRCTFwd_JPEG2K_32s_C3P3R);
BENCHMARK_CAPTURE(inPlace, RCTFwd_16s_P3IR, zmxiRCTFwd_JPEG2K_16s_P3IR);
BENCHMARK_CAPTURE(inPlace, RCTFwd_32s_P3IR, zmxiRCTFwd_JPEG2K_32s_P3IR);
BENCHMARK_CAPTURE(unpack, RCTInv_16s_P3C3R, zmxiRCTInv_JPEG2K_16s_P3C3R);
BENCHMARK_CAPTURE(unpack, RCTInv_32s_P3C3R, zmxiRCTInv_JPEG2K_32s_P3C3R);
BENCHMARK_CAPTURE(inPlace, RCTInv_16s_P3IR, zmxiRCTInv_JPEG2K_16s_P3IR);
BENCHMARK_CAPTURE(inPlace, RCTInv_32s_P3IR, zmxiRCTInv_JPEG2K_32s_P3IR);
BENCHMARK_CAPTURE(pack, ICTFwd_32f_C3P3R, zmxiICTFwd_JPEG2K_32f_C3P3R);
BENCHMARK_CAPTURE(inPlace, ICTFwd_32f_P3IR, zmxiICTFwd_JPEG2K_32f_P3IR);
BENCHMARK_CAPTURE(inPlace, ICTFwd_16s_P3IR, zmxiICTFwd_JPEG2K_16s_P3IR);
BENCHMARK_CAPTURE(inPlace, ICTFwd_32s_P3IR, zmxiICTFwd_JPEG2K_32s_P3IR);
BENCHMARK_CAPTURE(unpack, ICTInv_32f_P3C3R, zmxiICTInv_JPEG2K_32f_P3C3R);
BENCHMARK_CAPTURE(inPlace, ICTInv_32f_P3IR, zmxiICTInv_JPEG2K_32f_P3IR);
BENCHMARK_CAPTURE(inPlace, ICTInv_16s_P3IR, zmxiICTInv_JPEG2K_16s_P3IR);
BENCHMARK_CAPTURE(inPlace, ICTInv_32s_P3IR, zmxiICTInv_JPEG2K_32s_P3IR);
