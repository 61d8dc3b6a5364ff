// bench_dct.cpp - blocks of 8x8: time per block. The peer is a plain copy of as many bytes as a block has.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr int kBlocks = 256; // 32 KB of coefficients: they stay in the nearest caches

// Blocks side by side in a picture of one row of blocks, as samples and as quantised coefficients.
struct Blocks {
    static constexpr int step = 8 * kBlocks;
    std::vector<Zmx8u> samples = std::vector<Zmx8u>(8 * step);
    std::vector<Zmx16u> samples12 = std::vector<Zmx16u>(8 * step);
    std::vector<Zmx16s> centred = std::vector<Zmx16s>(64 * kBlocks);
    std::vector<Zmx16s> coefficients = std::vector<Zmx16s>(64 * kBlocks);
    std::vector<Zmx16s> result = std::vector<Zmx16s>(64 * kBlocks);
    Zmx8u raw[64];
    Zmx16u forward[64], inverse[64];
    Zmx32f forward12[64], inverse12[64];

    Blocks() {
        std::mt19937 random(1);
        for (auto& v : samples) v = Zmx8u(random());
        for (auto& v : samples12) v = Zmx16u(random() & 4095);
        for (auto& v : centred) v = Zmx16s(int(random() & 255) - 128);
        for (auto& v : coefficients) v = Zmx16s(int(random() % 21) - 10);
        for (int i = 0; i < 64; ++i) raw[i] = Zmx8u(2 + i / 4);
        zmxiQuantFwdTableInit_JPEG_8u16u(raw, forward);
        zmxiQuantInvTableInit_JPEG_8u16u(raw, inverse);
        for (int i = 0; i < 64; ++i) {
            inverse12[i] = inverse[i];
            forward12[i] = 1 / inverse12[i];
        }
    }
};

Blocks& blocks() {
    static Blocks all;
    return all;
}

// One call for each block; an operation in place gets a fresh block first, which the copy bench shows the price of.
template <class Each> void each(benchmark::State& state, Each one) {
    Blocks& b = blocks();
    for (auto _ : state) {
        for (int i = 0; i < kBlocks; ++i) one(b, i);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kBlocks);
    state.counters["ns/block"] = benchmark::Counter(double(state.iterations()) * kBlocks * 1e-9,
                                                    benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

Zmx16s* fresh(Blocks& b, const std::vector<Zmx16s>& from, int i) {
    std::memcpy(&b.result[64 * std::size_t(i)], &from[64 * std::size_t(i)], 128);
    return &b.result[64 * std::size_t(i)];
}

void copyOfABlock(benchmark::State& s) {
    each(s, [](Blocks& b, int i) { benchmark::DoNotOptimize(fresh(b, b.centred, i)); });
}
BENCHMARK(copyOfABlock);

void DCTQuantFwd8x8_JPEG_16s_C1(benchmark::State& s) {
    each(s, [](Blocks& b, int i) { zmxiDCTQuantFwd8x8_JPEG_16s_C1(&b.centred[64 * i], &b.result[64 * i], b.forward); });
}
void DCTQuantFwd8x8_JPEG_16s_C1I(benchmark::State& s) {
    each(s, [](Blocks& b, int i) { zmxiDCTQuantFwd8x8_JPEG_16s_C1I(fresh(b, b.centred, i), b.forward); });
}
void DCTQuantFwd8x8LS_JPEG_8u16s_C1R(benchmark::State& s) {
    each(s, [](Blocks& b, int i) {
        zmxiDCTQuantFwd8x8LS_JPEG_8u16s_C1R(&b.samples[8 * i], Blocks::step, &b.result[64 * i], b.forward);
    });
}
void DCTQuantFwd8x8LS_JPEG_16u16s_C1R(benchmark::State& s) {
    each(s, [](Blocks& b, int i) {
        zmxiDCTQuantFwd8x8LS_JPEG_16u16s_C1R(&b.samples12[8 * i], 2 * Blocks::step, &b.result[64 * i], b.forward12);
    });
}
void QuantFwd8x8_JPEG_16s_C1I(benchmark::State& s) {
    each(s, [](Blocks& b, int i) { zmxiQuantFwd8x8_JPEG_16s_C1I(fresh(b, b.centred, i), b.forward); });
}
BENCHMARK(DCTQuantFwd8x8_JPEG_16s_C1);
BENCHMARK(DCTQuantFwd8x8_JPEG_16s_C1I);
BENCHMARK(DCTQuantFwd8x8LS_JPEG_8u16s_C1R);
BENCHMARK(DCTQuantFwd8x8LS_JPEG_16u16s_C1R);
BENCHMARK(QuantFwd8x8_JPEG_16s_C1I);

void DCTQuantInv8x8_JPEG_16s_C1(benchmark::State& s) {
    each(s, [](Blocks& b, int i) {
        zmxiDCTQuantInv8x8_JPEG_16s_C1(&b.coefficients[64 * i], &b.result[64 * i], b.inverse);
    });
}
void DCTQuantInv8x8_JPEG_16s_C1I(benchmark::State& s) {
    each(s, [](Blocks& b, int i) { zmxiDCTQuantInv8x8_JPEG_16s_C1I(fresh(b, b.coefficients, i), b.inverse); });
}
void QuantInv8x8_JPEG_16s_C1I(benchmark::State& s) {
    each(s, [](Blocks& b, int i) { zmxiQuantInv8x8_JPEG_16s_C1I(fresh(b, b.coefficients, i), b.inverse); });
}
BENCHMARK(DCTQuantInv8x8_JPEG_16s_C1);
BENCHMARK(DCTQuantInv8x8_JPEG_16s_C1I);
BENCHMARK(QuantInv8x8_JPEG_16s_C1I);

// The functions from coefficients to samples share one signature.
using ToSamples = ZmxStatus(const Zmx16s*, Zmx8u*, int, const Zmx16u*);
void toSamples(benchmark::State& s, ToSamples* function) {
    each(s, [=](Blocks& b, int i) { function(&b.coefficients[64 * i], &b.samples[8 * i], Blocks::step, b.inverse); });
}
BENCHMARK_CAPTURE(toSamples, DCTQuantInv8x8LS_JPEG_16s8u_C1R, zmxiDCTQuantInv8x8LS_JPEG_16s8u_C1R);
BENCHMARK_CAPTURE(toSamples, DCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R, zmxiDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R);
BENCHMARK_CAPTURE(toSamples, DCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R, zmxiDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R);
BENCHMARK_CAPTURE(toSamples, DCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R, zmxiDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R);
BENCHMARK_CAPTURE(toSamples, DCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R, zmxiDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R);
BENCHMARK_CAPTURE(toSamples, DCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R, zmxiDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R);

void DCTQuantInv8x8LS_JPEG_16s16u_C1R(benchmark::State& s) {
    each(s, [](Blocks& b, int i) {
        zmxiDCTQuantInv8x8LS_JPEG_16s16u_C1R(&b.coefficients[64 * i], &b.samples12[8 * i], 2 * Blocks::step,
                                             b.inverse12);
    });
}
BENCHMARK(DCTQuantInv8x8LS_JPEG_16s16u_C1R);

void QuantFwdRawTableInit_JPEG_8u(benchmark::State& s) {
    each(s, [](Blocks& b, int) {
        Zmx8u raw[64];
        std::copy_n(b.raw, 64, raw);
        zmxiQuantFwdRawTableInit_JPEG_8u(raw, 75);
        benchmark::DoNotOptimize(raw);
    });
}
void QuantFwdTableInit_JPEG_8u16u(benchmark::State& s) {
    each(s, [](Blocks& b, int) { zmxiQuantFwdTableInit_JPEG_8u16u(b.raw, b.forward); });
}
void QuantInvTableInit_JPEG_8u16u(benchmark::State& s) {
    each(s, [](Blocks& b, int) { zmxiQuantInvTableInit_JPEG_8u16u(b.raw, b.inverse); });
}
BENCHMARK(QuantFwdRawTableInit_JPEG_8u);
BENCHMARK(QuantFwdTableInit_JPEG_8u16u);
BENCHMARK(QuantInvTableInit_JPEG_8u16u);

} // namespace
