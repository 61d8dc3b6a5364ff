// Samples a second of the wavelets: one level of a 1024 x 1024 plane, kernels on 64 rows of 1024 samples, and
// one stage of column lifting on rows of 1024 samples.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <random>
#include <vector>

namespace {

constexpr int kSide = 1024;
constexpr ZmxiRect kTile{0, 0, kSide, kSide};

template <class T> std::vector<T> noise(std::size_t n) {
    std::mt19937 random(1);
    std::vector<T> v(n);
    for (T& x : v) x = T(int(random() & 4095) - 2048);
    return v;
}

std::vector<Zmx8u> scratch(ZmxStatus (*size)(const ZmxiRect*, int*)) {
    int n = 0;
    size(&kTile, &n);
    return std::vector<Zmx8u>(std::size_t(n));
}

// The samples are put back before each turn, so that they do not grow.
template <class T>
void plane(benchmark::State& state, ZmxStatus (*fn)(T*, int, const ZmxiRect*, Zmx8u*),
           ZmxStatus (*size)(const ZmxiRect*, int*)) {
    const auto fresh = noise<T>(kSide * kSide);
    auto v = fresh;
    auto memory = scratch(size);
    for (auto _ : state) {
        state.PauseTiming();
        v.assign(fresh.begin(), fresh.end());
        state.ResumeTiming();
        fn(v.data(), kSide * int(sizeof(T)), &kTile, memory.data());
    }
    state.SetItemsProcessed(state.iterations() * kSide * kSide);
}

template <class T> struct Bands {
    std::vector<T> samples = noise<T>(kSide * kSide);
    T* const bands[4] = {&samples[0], &samples[kSide * kSide / 4], &samples[kSide * kSide / 2],
                         &samples[3 * kSide * kSide / 4]};
    const T* const constBands[4] = {bands[0], bands[1], bands[2], bands[3]};
    static constexpr int step = kSide / 2 * int(sizeof(T)), steps[4] = {step, step, step, step};
};
template <class T>
void toBands(benchmark::State& state,
             ZmxStatus (*fn)(const T*, int, const ZmxiRect*, T* const[4], const int[4], Zmx8u*),
             ZmxStatus (*size)(const ZmxiRect*, int*)) {
    const auto v = noise<T>(kSide * kSide);
    const Bands<T> out;
    auto memory = scratch(size);
    for (auto _ : state) fn(v.data(), kSide * int(sizeof(T)), &kTile, out.bands, out.steps, memory.data());
    state.SetItemsProcessed(state.iterations() * kSide * kSide);
}
template <class T>
void fromBands(benchmark::State& state,
               ZmxStatus (*fn)(const T* const[4], const int[4], T*, int, const ZmxiRect*, Zmx8u*),
               ZmxStatus (*size)(const ZmxiRect*, int*)) {
    std::vector<T> v(kSide * kSide);
    const Bands<T> in;
    auto memory = scratch(size);
    for (auto _ : state) fn(in.constBands, in.steps, v.data(), kSide * int(sizeof(T)), &kTile, memory.data());
    state.SetItemsProcessed(state.iterations() * kSide * kSide);
}

// Rows of 1024 samples and 16 more for what a kernel reads past them; 64 of them and as many more above and
// below.
constexpr int kRows = 64, kPitch = kSide + 32, kFirst = 8 * kPitch + 8;
template <class T>
void forwardKernel(benchmark::State& state, ZmxStatus (*fn)(const T*, int, T*, int, T*, int, ZmxiSize, int),
                   ZmxiSize pairs) {
    const auto x = noise<T>((kRows + 16) * kPitch);
    std::vector<T> low(kRows * kPitch), high(kRows * kPitch);
    const int step = kPitch * int(sizeof(T));
    for (auto _ : state) fn(&x[kFirst], step, low.data(), step, high.data(), step, pairs, 0);
    state.SetItemsProcessed(state.iterations() * kRows * kSide);
}
template <class T>
void inverseKernel(benchmark::State& state, ZmxStatus (*fn)(const T*, int, const T*, int, ZmxiSize, T*, int, int),
                   ZmxiSize pairs) {
    const auto low = noise<T>((kRows + 16) * kPitch), high = low;
    std::vector<T> x(kRows * kPitch);
    const int step = kPitch * int(sizeof(T));
    for (auto _ : state) fn(&low[kFirst], step, &high[kFirst], step, pairs, x.data(), step, 0);
    state.SetItemsProcessed(state.iterations() * kRows * kSide);
}
constexpr ZmxiSize kRowPairs{kSide / 2, kRows}, kColumnPairs{kSide, kRows / 2};

// A stage makes two rows. The rows that it may change are put back before each turn, which is timed with it.
template <class T, class Stage> void lift(benchmark::State& state, Stage stage) {
    const auto fresh = noise<T>(8 * kSide);
    auto v = fresh;
    for (auto _ : state) {
        std::copy(fresh.begin() + 3 * kSide, fresh.end(), v.begin() + 3 * kSide);
        T* rows[8];
        for (int k = 0; k < 8; ++k) rows[k] = &v[std::size_t(k * kSide)];
        stage(rows);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * 2 * kSide);
}
template <class T>
void lift53(benchmark::State& state, ZmxStatus (*fn)(const T*, const T*, const T*, T*, const T*, T*, int)) {
    lift<T>(state, [fn](T** r) { fn(r[0], r[1], r[2], r[3], r[4], r[5], kSide); });
}
template <class T>
void liftBack53(benchmark::State& state, ZmxStatus (*fn)(const T*, const T*, const T*, const T*, T*, T*, int)) {
    lift<T>(state, [fn](T** r) { fn(r[0], r[1], r[2], r[3], r[4], r[5], kSide); });
}
template <class T>
void lift97(benchmark::State& state, ZmxStatus (*fn)(const T*, const T*, const T*, T*, T*, T*, T*, T*, int)) {
    lift<T>(state, [fn](T** r) { fn(r[0], r[1], r[2], r[3], r[4], r[5], r[6], r[7], kSide); });
}
template <class T>
void liftBack97(benchmark::State& state, ZmxStatus (*fn)(const T*, const T*, const T*, const T*, T*, T*, T*, T*, int)) {
    lift<T>(state, [fn](T** r) { fn(r[0], r[1], r[2], r[3], r[4], r[5], r[6], r[7], kSide); });
}

} // namespace

BENCHMARK_CAPTURE(plane, Fwd_B53_16s_C1IR, zmxiWTFwd_B53_JPEG2K_16s_C1IR, zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR);
BENCHMARK_CAPTURE(plane, Fwd_B53_32s_C1IR, zmxiWTFwd_B53_JPEG2K_32s_C1IR, zmxiWTGetBufSize_B53_JPEG2K_32s_C1IR);
BENCHMARK_CAPTURE(plane, Inv_B53_16s_C1IR, zmxiWTInv_B53_JPEG2K_16s_C1IR, zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR);
BENCHMARK_CAPTURE(plane, Inv_B53_32s_C1IR, zmxiWTInv_B53_JPEG2K_32s_C1IR, zmxiWTGetBufSize_B53_JPEG2K_32s_C1IR);
BENCHMARK_CAPTURE(toBands, Fwd_B53_16s_C1R, zmxiWTFwd_B53_JPEG2K_16s_C1R, zmxiWTGetBufSize_B53_JPEG2K_16s_C1R);
BENCHMARK_CAPTURE(toBands, Fwd_B53_32s_C1R, zmxiWTFwd_B53_JPEG2K_32s_C1R, zmxiWTGetBufSize_B53_JPEG2K_32s_C1R);
BENCHMARK_CAPTURE(fromBands, Inv_B53_16s_C1R, zmxiWTInv_B53_JPEG2K_16s_C1R, zmxiWTGetBufSize_B53_JPEG2K_16s_C1R);
BENCHMARK_CAPTURE(fromBands, Inv_B53_32s_C1R, zmxiWTInv_B53_JPEG2K_32s_C1R, zmxiWTGetBufSize_B53_JPEG2K_32s_C1R);
BENCHMARK_CAPTURE(plane, Fwd_D97_16s_C1IR, zmxiWTFwd_D97_JPEG2K_16s_C1IR, zmxiWTGetBufSize_D97_JPEG2K_16s_C1IR);
BENCHMARK_CAPTURE(plane, Fwd_D97_32s_C1IR, zmxiWTFwd_D97_JPEG2K_32s_C1IR, zmxiWTGetBufSize_D97_JPEG2K_32s_C1IR);
BENCHMARK_CAPTURE(plane, Inv_D97_16s_C1IR, zmxiWTInv_D97_JPEG2K_16s_C1IR, zmxiWTGetBufSize_D97_JPEG2K_16s_C1IR);
BENCHMARK_CAPTURE(plane, Inv_D97_32s_C1IR, zmxiWTInv_D97_JPEG2K_32s_C1IR, zmxiWTGetBufSize_D97_JPEG2K_32s_C1IR);
BENCHMARK_CAPTURE(toBands, Fwd_D97_16s_C1R, zmxiWTFwd_D97_JPEG2K_16s_C1R, zmxiWTGetBufSize_D97_JPEG2K_16s_C1R);
BENCHMARK_CAPTURE(toBands, Fwd_D97_32s_C1R, zmxiWTFwd_D97_JPEG2K_32s_C1R, zmxiWTGetBufSize_D97_JPEG2K_32s_C1R);
BENCHMARK_CAPTURE(fromBands, Inv_D97_16s_C1R, zmxiWTInv_D97_JPEG2K_16s_C1R, zmxiWTGetBufSize_D97_JPEG2K_16s_C1R);
BENCHMARK_CAPTURE(fromBands, Inv_D97_32s_C1R, zmxiWTInv_D97_JPEG2K_32s_C1R, zmxiWTGetBufSize_D97_JPEG2K_32s_C1R);

BENCHMARK_CAPTURE(forwardKernel, FwdRow_B53_16s, zmxiWTFwdRow_B53_JPEG2K_16s_C1R, kRowPairs);
BENCHMARK_CAPTURE(forwardKernel, FwdRow_B53_32s, zmxiWTFwdRow_B53_JPEG2K_32s_C1R, kRowPairs);
BENCHMARK_CAPTURE(forwardKernel, FwdCol_B53_16s, zmxiWTFwdCol_B53_JPEG2K_16s_C1R, kColumnPairs);
BENCHMARK_CAPTURE(forwardKernel, FwdCol_B53_32s, zmxiWTFwdCol_B53_JPEG2K_32s_C1R, kColumnPairs);
BENCHMARK_CAPTURE(inverseKernel, InvRow_B53_16s, zmxiWTInvRow_B53_JPEG2K_16s_C1R, kRowPairs);
BENCHMARK_CAPTURE(inverseKernel, InvRow_B53_32s, zmxiWTInvRow_B53_JPEG2K_32s_C1R, kRowPairs);
BENCHMARK_CAPTURE(inverseKernel, InvCol_B53_16s, zmxiWTInvCol_B53_JPEG2K_16s_C1R, kColumnPairs);
BENCHMARK_CAPTURE(inverseKernel, InvCol_B53_32s, zmxiWTInvCol_B53_JPEG2K_32s_C1R, kColumnPairs);
BENCHMARK_CAPTURE(forwardKernel, FwdRow_D97_16s, zmxiWTFwdRow_D97_JPEG2K_16s_C1R, kRowPairs);
BENCHMARK_CAPTURE(forwardKernel, FwdRow_D97_32s, zmxiWTFwdRow_D97_JPEG2K_32s_C1R, kRowPairs);
BENCHMARK_CAPTURE(forwardKernel, FwdRow_D97_32f, zmxiWTFwdRow_D97_JPEG2K_32f_C1R, kRowPairs);
BENCHMARK_CAPTURE(forwardKernel, FwdCol_D97_32f, zmxiWTFwdCol_D97_JPEG2K_32f_C1R, kColumnPairs);
BENCHMARK_CAPTURE(inverseKernel, InvRow_D97_16s, zmxiWTInvRow_D97_JPEG2K_16s_C1R, kRowPairs);
BENCHMARK_CAPTURE(inverseKernel, InvRow_D97_32s, zmxiWTInvRow_D97_JPEG2K_32s_C1R, kRowPairs);
BENCHMARK_CAPTURE(inverseKernel, InvRow_D97_32f, zmxiWTInvRow_D97_JPEG2K_32f_C1R, kRowPairs);
BENCHMARK_CAPTURE(inverseKernel, InvCol_D97_32f, zmxiWTInvCol_D97_JPEG2K_32f_C1R, kColumnPairs);

BENCHMARK_CAPTURE(lift53, FwdColLift_B53_16s, zmxiWTFwdColLift_B53_JPEG2K_16s_C1);
BENCHMARK_CAPTURE(lift53, FwdColLift_B53_32s, zmxiWTFwdColLift_B53_JPEG2K_32s_C1);
BENCHMARK_CAPTURE(liftBack53, InvColLift_B53_16s, zmxiWTInvColLift_B53_JPEG2K_16s_C1);
BENCHMARK_CAPTURE(liftBack53, InvColLift_B53_32s, zmxiWTInvColLift_B53_JPEG2K_32s_C1);
BENCHMARK_CAPTURE(lift97, FwdColLift_D97_16s, zmxiWTFwdColLift_D97_JPEG2K_16s_C1);
BENCHMARK_CAPTURE(lift97, FwdColLift_D97_32s, zmxiWTFwdColLift_D97_JPEG2K_32s_C1);
BENCHMARK_CAPTURE(lift97, FwdColLift_D97_32f, zmxiWTFwdColLift_D97_JPEG2K_32f_C1);
BENCHMARK_CAPTURE(liftBack97, InvColLift_D97_16s, zmxiWTInvColLift_D97_JPEG2K_16s_C1);
BENCHMARK_CAPTURE(liftBack97, InvColLift_D97_32s, zmxiWTInvColLift_D97_JPEG2K_32s_C1);
BENCHMARK_CAPTURE(liftBack97, InvColLift_D97_32f, zmxiWTInvColLift_D97_JPEG2K_32f_C1);
