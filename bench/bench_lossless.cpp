// bench_lossless.cpp - lossless rows: prediction in both directions, and Huffman coding of three planes; of one plane
// also difference by difference.
// SPDX-License-Identifier: BSD-2-Clause
#include "bench/bench_blocks.h"

namespace {

using namespace entropy;

constexpr int kWidth = 4096, kPlanes = 3;

// Rows of a smooth picture with a little noise, and their differences.
struct Rows {
    std::vector<Zmx16s> above = std::vector<Zmx16s>(kWidth), row = above, differences = above, result = above;

    Rows() {
        std::minstd_rand random(45);
        for (int x = 0; x < kWidth; ++x) {
            above[std::size_t(x)] = Zmx16s(2000 + x / 4 + int(random() % 16));
            row[std::size_t(x)] = Zmx16s(2002 + x / 4 + int(random() % 16));
        }
        Coded::check(zmxiDiffPredRow_JPEG_16s_C1(row.data(), above.data(), differences.data(), kWidth, 4));
    }
    static void report(benchmark::State& state, int planes) {
        state.SetItemsProcessed(state.iterations() * kWidth * planes);
    }
};

void differences(benchmark::State& state) {
    Rows r;
    for (auto _ : state) {
        zmxiDiffPredRow_JPEG_16s_C1(r.row.data(), r.above.data(), r.result.data(), kWidth, int(state.range(0)));
        benchmark::DoNotOptimize(r.result.data());
    }
    Rows::report(state, 1);
}

void reconstruct(benchmark::State& state) {
    Rows r;
    for (auto _ : state) {
        zmxiReconstructPredRow_JPEG_16s_C1(r.differences.data(), r.above.data(), r.result.data(), kWidth,
                                           int(state.range(0)));
        benchmark::DoNotOptimize(r.result.data());
    }
    Rows::report(state, 1);
}

constexpr int kPrecision = 12;

void firstDifferences(benchmark::State& state) {
    Rows r;
    for (auto _ : state) {
        zmxiDiffPredFirstRow_JPEG_16s_C1(r.row.data(), r.result.data(), kWidth, kPrecision, 0);
        benchmark::DoNotOptimize(r.result.data());
    }
    Rows::report(state, 1);
}

void firstReconstruct(benchmark::State& state) {
    Rows r;
    for (auto _ : state) {
        zmxiReconstructPredFirstRow_JPEG_16s_C1(r.differences.data(), r.result.data(), kWidth, kPrecision, 0);
        benchmark::DoNotOptimize(r.result.data());
    }
    Rows::report(state, 1);
}

struct CodedRows : Rows {
    ZmxiEncodeHuffmanSpec* enc = nullptr;
    ZmxiDecodeHuffmanSpec* dec = nullptr;
    ZmxiEncodeHuffmanState* writer = nullptr;
    ZmxiDecodeHuffmanState* reader = nullptr;
    std::vector<Zmx8u> stream = std::vector<Zmx8u>(kWidth * kPlanes * 8);
    int size = 0;

    CodedRows() {
        Zmx32u counts[257] = {};
        count(counts);
        Coded::tables(counts, &enc, &dec);
        Coded::check(zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(&writer));
        Coded::check(zmxiDecodeHuffmanStateInitAlloc_JPEG_8u(&reader));
        encode();
    }
    ~CodedRows() {
        zmxiEncodeHuffmanSpecFree_JPEG_8u(enc);
        zmxiDecodeHuffmanSpecFree_JPEG_8u(dec);
        zmxiEncodeHuffmanStateFree_JPEG_8u(writer);
        zmxiDecodeHuffmanStateFree_JPEG_8u(reader);
    }
    CodedRows(const CodedRows&) = delete;
    CodedRows& operator=(const CodedRows&) = delete;

    void encode() {
        const Zmx16s* const planes[4] = {differences.data(), differences.data(), differences.data(), nullptr};
        const ZmxiEncodeHuffmanSpec* const tables[4] = {enc, enc, enc, nullptr};
        size = 0;
        Coded::check(zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(planes, kWidth, kPlanes, stream.data(), int(stream.size()),
                                                          &size, tables, writer, 0));
        Coded::check(zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(nullptr, 0, 0, stream.data(), int(stream.size()), &size,
                                                          nullptr, writer, 1));
    }
    void encodeOneByOne() {
        const auto code = [this](const Zmx16s* difference, int flush) {
            return zmxiEncodeHuffmanOne_JPEG_16s1u_C1(difference, stream.data(), int(stream.size()), &size, enc, writer,
                                                      flush);
        };
        size = 0;
        for (const Zmx16s& d : differences) Coded::check(code(&d, 0));
        Coded::check(code(nullptr, 1));
    }
    void decodeOneByOne() {
        int pos = 0, marker = 0;
        zmxiDecodeHuffmanStateInit_JPEG_8u(reader);
        for (Zmx16s& d : result)
            Coded::check(zmxiDecodeHuffmanOne_JPEG_1u16s_C1(stream.data(), size, &pos, &d, &marker, dec, reader));
    }
    void count(Zmx32u* counts) const {
        for (const Zmx16s& d : differences) Coded::check(zmxiGetHuffmanStatisticsOne_JPEG_16s_C1(&d, counts));
    }
    void decode() {
        Zmx16s* const planes[4] = {result.data(), result.data(), result.data(), nullptr};
        const ZmxiDecodeHuffmanSpec* const tables[4] = {dec, dec, dec, nullptr};
        int pos = 0, marker = 0;
        zmxiDecodeHuffmanStateInit_JPEG_8u(reader);
        Coded::check(zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4(stream.data(), size, &pos, planes, kWidth, kPlanes, &marker,
                                                          tables, reader));
    }
};

void encodeRow(benchmark::State& state) {
    CodedRows r;
    for (auto _ : state) r.encode();
    Rows::report(state, kPlanes);
}

void decodeRow(benchmark::State& state) {
    CodedRows r;
    for (auto _ : state) r.decode();
    Rows::report(state, kPlanes);
}

void statistics(benchmark::State& state) {
    const CodedRows r;
    Zmx32u counts[257] = {};
    for (auto _ : state) {
        r.count(counts);
        benchmark::DoNotOptimize(counts);
    }
    Rows::report(state, 1);
}

void encodeOne(benchmark::State& state) {
    CodedRows r;
    for (auto _ : state) r.encodeOneByOne();
    Rows::report(state, 1);
}

void decodeOne(benchmark::State& state) {
    CodedRows r;
    r.encodeOneByOne();
    r.decodeOneByOne();
    if (r.result != r.differences) return state.SkipWithError("the differences differ");
    for (auto _ : state) r.decodeOneByOne();
    Rows::report(state, 1);
}

BENCHMARK(differences)->Name("lossless/differences")->DenseRange(1, 7, 3);
BENCHMARK(reconstruct)->Name("lossless/reconstruct")->DenseRange(1, 7, 3);
BENCHMARK(firstDifferences)->Name("lossless/differences/first");
BENCHMARK(firstReconstruct)->Name("lossless/reconstruct/first");
BENCHMARK(statistics)->Name("lossless/statistics/one");
BENCHMARK(encodeOne)->Name("lossless/encode/one");
BENCHMARK(decodeOne)->Name("lossless/decode/one");
BENCHMARK(encodeRow)->Name("lossless/encode");
BENCHMARK(decodeRow)->Name("lossless/decode");

} // namespace
