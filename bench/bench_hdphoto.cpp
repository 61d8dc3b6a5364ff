// bench_hdphoto.cpp - the HD Photo core transform over planes of samples and over macroblocks. The peer is a plain copy.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

namespace {

std::vector<Zmx32s> samples(int width, int height) {
    std::mt19937 random(1);
    std::vector<Zmx32s> v(std::size_t(width) * std::size_t(height));
    for (Zmx32s& s : v) s = Zmx32s(random() % 256) - 128;
    return v;
}

// In place, over and over; the time of a block does not depend on what it holds.
void plane(benchmark::State& state, ZmxStatus (*run)(Zmx32s*, int, ZmxiSize)) {
    const int width = int(state.range(0)), height = int(state.range(1));
    std::vector<Zmx32s> v = samples(width, height);
    for (auto _ : state) {
        run(v.data(), 4 * width, {width, height});
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * width * height);
}
void macroblock(benchmark::State& state, ZmxStatus (*run)(Zmx32s*, int), int width, int height) {
    std::vector<Zmx32s> v = samples(width, height);
    for (auto _ : state) {
        run(v.data(), 4 * width);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * width * height);
}

void copyOfSamples(benchmark::State& state) {
    const std::vector<Zmx32s> v = samples(int(state.range(0)), int(state.range(1)));
    std::vector<Zmx32s> copy(v.size());
    for (auto _ : state) {
        std::memcpy(copy.data(), v.data(), 4 * v.size());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(1));
}
void PCTFwd_HDP_32s_C1IR(benchmark::State& s) { plane(s, zmxiPCTFwd_HDP_32s_C1IR); }
void PCTInv_HDP_32s_C1IR(benchmark::State& s) { plane(s, zmxiPCTInv_HDP_32s_C1IR); }
BENCHMARK(copyOfSamples)->Args({64, 64})->Args({1024, 1024});
BENCHMARK(PCTFwd_HDP_32s_C1IR)->Args({64, 64})->Args({1024, 1024});
BENCHMARK(PCTInv_HDP_32s_C1IR)->Args({64, 64})->Args({1024, 1024});

BENCHMARK_CAPTURE(macroblock, PCTFwd16x16, zmxiPCTFwd16x16_HDP_32s_C1IR, 16, 16);
BENCHMARK_CAPTURE(macroblock, PCTInv16x16, zmxiPCTInv16x16_HDP_32s_C1IR, 16, 16);
BENCHMARK_CAPTURE(macroblock, PCTFwd8x16, zmxiPCTFwd8x16_HDP_32s_C1IR, 8, 16);
BENCHMARK_CAPTURE(macroblock, PCTInv8x16, zmxiPCTInv8x16_HDP_32s_C1IR, 8, 16);
BENCHMARK_CAPTURE(macroblock, PCTFwd8x8, zmxiPCTFwd8x8_HDP_32s_C1IR, 8, 8);
BENCHMARK_CAPTURE(macroblock, PCTInv8x8, zmxiPCTInv8x8_HDP_32s_C1IR, 8, 8);

} // namespace
