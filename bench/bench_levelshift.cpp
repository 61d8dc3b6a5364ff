// bench_levelshift.cpp - the level shift of blocks and of pictures. The peer is a plain copy of the larger side.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

namespace {

// Regions of 8 x 8, of 128 x 64 (the largest that is run serially) and of a picture that a team shares.
struct Plane {
    ZmxiSize size;
    std::vector<Zmx8u> samples;
    std::vector<Zmx16s> centred;

    explicit Plane(const benchmark::State& state)
        : size{int(state.range(0)), int(state.range(1))}, samples(std::size_t(size.width * size.height)),
          centred(samples.size()) {
        std::mt19937 random(1);
        for (auto& v : samples) v = Zmx8u(random());
        for (auto& v : centred) v = Zmx16s(int(random() & 511) - 256);
    }
};

template <class Run> void each(benchmark::State& state, Run run) {
    Plane plane(state);
    for (auto _ : state) {
        run(plane);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * plane.size.width * plane.size.height);
}

void copyOfSamples(benchmark::State& s) {
    std::vector<Zmx16s> copy(std::size_t(s.range(0) * s.range(1)));
    each(s, [&](Plane& p) { std::memcpy(copy.data(), p.centred.data(), 2 * copy.size()); });
}
void Add128_JPEG_16s8u_C1R(benchmark::State& s) {
    each(s, [](Plane& p) {
        zmxiAdd128_JPEG_16s8u_C1R(p.centred.data(), 2 * p.size.width, p.samples.data(), p.size.width, p.size);
    });
}
void Sub128_JPEG_8u16s_C1R(benchmark::State& s) {
    each(s, [](Plane& p) {
        zmxiSub128_JPEG_8u16s_C1R(p.samples.data(), p.size.width, p.centred.data(), 2 * p.size.width, p.size);
    });
}

// Plain loops, a sample at a time: as the compiler takes them, and kept scalar, by an attribute of the function with
// gcc and by a pragma at the loop with clang.
#ifdef __clang__
#define SCALAR_FUNCTION
#define SCALAR_LOOP _Pragma("clang loop vectorize(disable)")
#else
#define SCALAR_FUNCTION __attribute__((optimize("no-tree-vectorize")))
#define SCALAR_LOOP
#endif

void addAll(const Zmx16s* src, Zmx8u* dst, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) dst[i] = Zmx8u(std::clamp(src[i] + 128, 0, 255));
}
void subAll(const Zmx8u* src, Zmx16s* dst, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) dst[i] = Zmx16s(src[i] - 128);
}
SCALAR_FUNCTION void addEach(const Zmx16s* src, Zmx8u* dst, std::size_t n) {
    SCALAR_LOOP
    for (std::size_t i = 0; i < n; ++i) {
        const int v = src[i] + 128;
        dst[i] = Zmx8u(v < 0 ? 0 : v > 255 ? 255 : v);
    }
}
SCALAR_FUNCTION void subEach(const Zmx8u* src, Zmx16s* dst, std::size_t n) {
    SCALAR_LOOP
    for (std::size_t i = 0; i < n; ++i) dst[i] = Zmx16s(src[i] - 128);
}
template <auto loop> void plainAdd(benchmark::State& s) {
    each(s, [](Plane& p) { loop(p.centred.data(), p.samples.data(), p.samples.size()); });
}
template <auto loop> void plainSub(benchmark::State& s) {
    each(s, [](Plane& p) { loop(p.samples.data(), p.centred.data(), p.samples.size()); });
}
BENCHMARK(plainAdd<addAll>)->Name("plainLoopAdd")->Args({8, 8})->Args({128, 64})->Args({1920, 1080});
BENCHMARK(plainSub<subAll>)->Name("plainLoopSub")->Args({8, 8})->Args({128, 64})->Args({1920, 1080});
BENCHMARK(plainAdd<addEach>)->Name("scalarLoopAdd")->Args({8, 8})->Args({128, 64})->Args({1920, 1080});
BENCHMARK(plainSub<subEach>)->Name("scalarLoopSub")->Args({8, 8})->Args({128, 64})->Args({1920, 1080});
BENCHMARK(copyOfSamples)->Args({8, 8})->Args({128, 64})->Args({1920, 1080});
BENCHMARK(Add128_JPEG_16s8u_C1R)->Args({8, 8})->Args({128, 64});
BENCHMARK(Add128_JPEG_16s8u_C1R)->Args({1920, 1080})->UseRealTime();
BENCHMARK(Sub128_JPEG_8u16s_C1R)->Args({8, 8})->Args({128, 64});
BENCHMARK(Sub128_JPEG_8u16s_C1R)->Args({1920, 1080})->UseRealTime();

} // namespace
