// bench_huffman.cpp - sequential block coding, beside libjpeg coding the same coefficients (set
// JSIMD_FORCENONE=1 for its scalar code). The argument is the number of coefficients other than 0 in a mean
// block, roughly.
// SPDX-License-Identifier: BSD-2-Clause
#include "bench/bench_libjpeg.h"

#include "zmxj.h"

#include <benchmark/benchmark.h>

namespace {

using namespace entropy;

void encode(benchmark::State& state) {
    const Coded coded(int(state.range(0)));
    std::vector<Zmx8u> out(coded.stream.size() + 1024);
    for (auto _ : state) {
        int pos = 0;
        Zmx16s lastDC = 0;
        zmxiEncodeHuffmanStateInit_JPEG_8u(coded.writer);
        for (const Block& b : coded.blocks)
            zmxiEncodeHuffman8x8_JPEG_16s1u_C1(b.data(), out.data(), int(out.size()), &pos, &lastDC, coded.encDC,
                                               coded.encAC, coded.writer, 0);
        benchmark::DoNotOptimize(out.data());
    }
    coded.report(state);
}

void encodeDirect(benchmark::State& state) {
    const Coded coded(int(state.range(0)));
    std::vector<Zmx8u> out(coded.stream.size() + 1024);
    for (auto _ : state) {
        int bits = 0;
        Zmx16s lastDC = 0;
        for (const Block& b : coded.blocks)
            zmxiEncodeHuffman8x8_Direct_JPEG_16s1u_C1(b.data(), out.data(), &bits, &lastDC, coded.encDC, coded.encAC);
        benchmark::DoNotOptimize(out.data());
    }
    coded.report(state);
}

void statistics(benchmark::State& state) {
    const Coded coded(int(state.range(0)));
    Zmx32u dc[257] = {}, ac[257] = {};
    for (auto _ : state) {
        Zmx16s lastDC = 0;
        for (const Block& b : coded.blocks) zmxiGetHuffmanStatistics8x8_JPEG_16s_C1(b.data(), dc, ac, &lastDC);
        benchmark::DoNotOptimize(ac);
    }
    coded.report(state);
}

void decode(benchmark::State& state) {
    const Coded coded(int(state.range(0)));
    Block b;
    for (auto _ : state) {
        int pos = 0, marker = 0;
        Zmx16s lastDC = 0;
        zmxiDecodeHuffmanStateInit_JPEG_8u(coded.reader);
        for (std::size_t i = 0; i < coded.blocks.size(); ++i)
            zmxiDecodeHuffman8x8_JPEG_1u16s_C1(coded.stream.data(), int(coded.stream.size()), &pos, b.data(), &lastDC,
                                               &marker, coded.decDC, coded.decAC, coded.reader);
        benchmark::DoNotOptimize(b.data());
    }
    coded.report(state);
}

void decodeDirect(benchmark::State& state) {
    const Coded coded(int(state.range(0)));
    Block b;
    for (auto _ : state) {
        int bits = 0, marker = 0;
        Zmx32u prefetched = 0;
        Zmx32s valid = 0;
        Zmx16s lastDC = 0;
        for (std::size_t i = 0; i < coded.blocks.size(); ++i)
            zmxiDecodeHuffman8x8_Direct_JPEG_1u16s_C1(coded.stream.data(), &bits, b.data(), &lastDC, &marker,
                                                      &prefetched, &valid, coded.decDC, coded.decAC);
        benchmark::DoNotOptimize(b.data());
    }
    coded.report(state);
}

#ifdef ZMX_HAVE_LIBJPEG
void encodeLibjpeg(benchmark::State& state) {
    const Coded coded(int(state.range(0)));
    const LibjpegFile file(coded);
    for (auto _ : state) benchmark::DoNotOptimize(file.rewrite());
    coded.report(state);
}

void decodeLibjpeg(benchmark::State& state) {
    const Coded coded(int(state.range(0)));
    const LibjpegFile file(coded);
    for (auto _ : state) file.read();
    coded.report(state);
}
BENCHMARK(encodeLibjpeg)->Name("huffman/encode/libjpeg")->Arg(4)->Arg(10)->Arg(25);
BENCHMARK(decodeLibjpeg)->Name("huffman/decode/libjpeg")->Arg(4)->Arg(10)->Arg(25);
#endif

BENCHMARK(encode)->Name("huffman/encode")->Arg(4)->Arg(10)->Arg(25);
BENCHMARK(encodeDirect)->Name("huffman/encode/direct")->Arg(4)->Arg(10)->Arg(25);
BENCHMARK(statistics)->Name("huffman/statistics")->Arg(4)->Arg(10)->Arg(25);
BENCHMARK(decode)->Name("huffman/decode")->Arg(4)->Arg(10)->Arg(25);
BENCHMARK(decodeDirect)->Name("huffman/decode/direct")->Arg(4)->Arg(10)->Arg(25);

} // namespace
