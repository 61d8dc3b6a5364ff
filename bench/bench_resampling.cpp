// bench_resampling.cpp - chroma resampling: samples of the larger side a second. The peers are a plain copy
// of the larger side and plain loops; one thread, and all for what is shared out.
// SPDX-License-Identifier: BSD-2-Clause
#include "bench/bench_team.h"
#include "zmxj.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

namespace {

// Arguments: width and height of the larger side, threads. Around the source there is a margin.
struct Planes {
    ZmxiSize large, small;
    int step;
    std::vector<Zmx8u> src, dst;

    Planes(const benchmark::State& state, int vertical)
        : large{int(state.range(0)), int(state.range(1))}, small{large.width / 2, large.height / vertical},
          step(large.width + 2), src(std::size_t(step * (large.height + 2))), dst(src.size()) {
        std::mt19937 random(1);
        for (auto& v : src) v = Zmx8u(random());
    }
    const Zmx8u* origin() const { return src.data() + step + 1; }
};

template <class Run> void each(benchmark::State& state, int vertical, Run run) {
    Planes p(state, vertical);
    const Team team(int(state.range(2)));
    for (auto _ : state) {
        run(p);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * p.large.width * p.large.height);
}

template <auto f, int Vertical> void up(benchmark::State& s) {
    each(s, Vertical, [](Planes& p) { f(p.origin(), p.step, p.small, p.dst.data(), p.large.width, p.large); });
}
template <auto f, int Vertical> void down(benchmark::State& s) {
    each(s, Vertical, [](Planes& p) { f(p.origin(), p.step, p.large, p.dst.data(), p.small.width, p.small); });
}

// The row forms, over all rows of the plane; those of two sources take neighbouring rows.
template <auto f> ZmxStatus oneRow(const Zmx8u* s, const Zmx8u*, int n, Zmx8u* d) { return f(s, n, d); }
template <auto f, int Vertical> void upRows(benchmark::State& s) {
    each(s, Vertical, [](Planes& p) {
        for (int y = 0; y < p.large.height; ++y) {
            const Zmx8u* nearRow = p.origin() + p.step * (y / Vertical);
            f(nearRow, nearRow + (y % 2 ? p.step : -p.step), p.small.width, p.dst.data() + p.large.width * y);
        }
    });
}
template <auto f, int Vertical> void downRows(benchmark::State& s) {
    each(s, Vertical, [](Planes& p) {
        for (int y = 0; y < p.small.height; ++y) {
            const Zmx8u* row = p.origin() + Vertical * p.step * y;
            f(row, row + p.step, p.large.width, p.dst.data() + p.small.width * y);
        }
    });
}

void copyOfPlane(benchmark::State& s) {
    each(s, 1, [](Planes& p) { std::memcpy(p.dst.data(), p.src.data(), std::size_t(p.large.width * p.large.height)); });
}

// The formulas, a sample at a time.
ZmxStatus plainUpH2V1(const Zmx8u* src, int srcStep, ZmxiSize, Zmx8u* dst, int dstStep, ZmxiSize size) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const Zmx8u* s = src + srcStep * y + x / 2;
            dst[dstStep * y + x] = Zmx8u(x % 2 ? (3 * s[0] + s[1] + 2) >> 2 : (3 * s[0] + s[-1] + 1) >> 2);
        }
    return zmxStsNoErr;
}
ZmxStatus plainUpH2V2(const Zmx8u* src, int srcStep, ZmxiSize, Zmx8u* dst, int dstStep, ZmxiSize size) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const Zmx8u* s = src + srcStep * (y / 2) + x / 2;
            const Zmx8u* f = s + (y % 2 ? srcStep : -srcStep);
            const int here = 3 * s[0] + f[0];
            dst[dstStep * y + x] =
                Zmx8u(x % 2 ? (3 * here + 3 * s[1] + f[1] + 7) >> 4 : (3 * here + 3 * s[-1] + f[-1] + 8) >> 4);
        }
    return zmxStsNoErr;
}
ZmxStatus plainDownH2V1(const Zmx8u* src, int srcStep, ZmxiSize, Zmx8u* dst, int dstStep, ZmxiSize size) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const Zmx8u* s = src + srcStep * y + 2 * x;
            dst[dstStep * y + x] = Zmx8u((s[0] + s[1] + 1) >> 1);
        }
    return zmxStsNoErr;
}
ZmxStatus plainDownH2V2(const Zmx8u* src, int srcStep, ZmxiSize, Zmx8u* dst, int dstStep, ZmxiSize size) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const Zmx8u* s = src + srcStep * 2 * y + 2 * x;
            dst[dstStep * y + x] = Zmx8u((s[0] + s[1] + s[srcStep] + s[srcStep + 1] + 3) >> 2);
        }
    return zmxStsNoErr;
}

// One row of the same, called as the row forms are; the rounding term does not alternate.
__attribute__((noinline)) ZmxStatus plainDownRowH2V1(const Zmx8u* src, int width, Zmx8u* dst) {
    for (int x = 0; x < width / 2; ++x) dst[x] = Zmx8u((src[2 * x] + src[2 * x + 1] + 1) >> 1);
    return zmxStsNoErr;
}
__attribute__((noinline)) ZmxStatus plainDownRowH2V2(const Zmx8u* src1, const Zmx8u* src2, int width, Zmx8u* dst) {
    for (int x = 0; x < width / 2; ++x)
        dst[x] = Zmx8u((src1[2 * x] + src1[2 * x + 1] + src2[2 * x] + src2[2 * x + 1] + 2) >> 2);
    return zmxStsNoErr;
}

[[maybe_unused]] const bool registered = registerAll({
    {"copyOfPlane", copyOfPlane},
    {"plainUpH2V1", up<plainUpH2V1, 1>},
    {"SampleUpH2V1", up<zmxiSampleUpH2V1_JPEG_8u_C1R, 1>},
    {"SampleUpRowH2V1_Triangle", upRows<oneRow<zmxiSampleUpRowH2V1_Triangle_JPEG_8u_C1>, 1>},
    {"plainUpH2V2", up<plainUpH2V2, 2>},
    {"SampleUpH2V2", up<zmxiSampleUpH2V2_JPEG_8u_C1R, 2>, true},
    {"SampleUpRowH2V2_Triangle", upRows<zmxiSampleUpRowH2V2_Triangle_JPEG_8u_C1, 2>},
    {"plainDownH2V1", down<plainDownH2V1, 1>},
    {"SampleDownH2V1", down<zmxiSampleDownH2V1_JPEG_8u_C1R, 1>, true},
    {"plainDownRowH2V1", downRows<oneRow<plainDownRowH2V1>, 1>},
    {"SampleDownRowH2V1_Box", downRows<oneRow<zmxiSampleDownRowH2V1_Box_JPEG_8u_C1>, 1>},
    {"plainDownH2V2", down<plainDownH2V2, 2>},
    {"SampleDownH2V2", down<zmxiSampleDownH2V2_JPEG_8u_C1R, 2>, true},
    {"plainDownRowH2V2", downRows<plainDownRowH2V2, 2>},
    {"SampleDownRowH2V2_Box", downRows<zmxiSampleDownRowH2V2_Box_JPEG_8u_C1, 2>},
});

} // namespace
