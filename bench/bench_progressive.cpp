// bench_progressive.cpp - the scans of a progressive picture, DC and one band of AC: first scans at bit 1,
// refinements at 0.
// SPDX-License-Identifier: BSD-2-Clause
#include "bench/bench_blocks.h"

namespace {

using namespace entropy;

constexpr int kFilled = 10, kAl = 1;

struct Stream {
    std::vector<Zmx8u> bytes = std::vector<Zmx8u>(1 << 22);
    int pos = 0;
    int size() const { return int(bytes.size()); }
};

// One scan over all blocks: code(block) for each, flush() at the end.
template <class Code, class Flush> void scan(const Coded& coded, Code code, Flush flush) {
    zmxiEncodeHuffmanStateInit_JPEG_8u(coded.writer);
    for (const Block& b : coded.blocks) Coded::check(code(b.data()));
    Coded::check(flush());
}

// An AC scan with its optimal table.
struct Band {
    using Statistics = ZmxStatus (*)(const Zmx16s*, Zmx32u*, int, int, int, ZmxiEncodeHuffmanState*, int);
    using Encode = ZmxStatus (*)(const Zmx16s*, Zmx8u*, int, int*, int, int, int, const ZmxiEncodeHuffmanSpec*,
                                 ZmxiEncodeHuffmanState*, int);
    using Decode = ZmxStatus (*)(const Zmx8u*, int, int*, Zmx16s*, int*, int, int, int, const ZmxiDecodeHuffmanSpec*,
                                 ZmxiDecodeHuffmanState*);
    Statistics statistics;
    Encode encode;
    Decode decode;
    int Al;

    void count(const Coded& c, Zmx32u* counts) const {
        scan(
            c, [&](const Zmx16s* b) { return statistics(b, counts, 1, 63, Al, c.writer, 0); },
            [&] { return statistics(nullptr, counts, 1, 63, Al, c.writer, 1); });
    }
    void write(const Coded& c, const ZmxiEncodeHuffmanSpec* table, Stream& out) const {
        out.pos = 0;
        scan(
            c,
            [&](const Zmx16s* b) {
                return encode(b, out.bytes.data(), out.size(), &out.pos, 1, 63, Al, table, c.writer, 0);
            },
            [&] { return encode(nullptr, out.bytes.data(), out.size(), &out.pos, 1, 63, Al, table, c.writer, 1); });
        out.bytes[std::size_t(out.pos)] = 0xFF;
        out.bytes[std::size_t(out.pos) + 1] = 0xD9;
    }
    void read(const Coded& c, const ZmxiDecodeHuffmanSpec* table, const Stream& in, std::vector<Block>& blocks) const {
        int pos = 0, marker = 0;
        zmxiDecodeHuffmanStateInit_JPEG_8u(c.reader);
        for (Block& b : blocks)
            Coded::check(decode(in.bytes.data(), in.pos + 2, &pos, b.data(), &marker, 1, 63, Al, table, c.reader));
    }
};

constexpr Band kFirst{zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1, zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1,
                      zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1, kAl};
constexpr Band kRefine{zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1, zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1,
                       zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1, kAl - 1};

struct BandRun {
    Coded coded{kFilled};
    ZmxiEncodeHuffmanSpec* enc = nullptr;
    ZmxiDecodeHuffmanSpec* dec = nullptr;
    Stream stream;

    explicit BandRun(const Band& band) {
        Zmx32u counts[257] = {};
        band.count(coded, counts);
        Coded::tables(counts, &enc, &dec);
        band.write(coded, enc, stream);
    }
    ~BandRun() {
        zmxiEncodeHuffmanSpecFree_JPEG_8u(enc);
        zmxiDecodeHuffmanSpecFree_JPEG_8u(dec);
    }
};

void statistics(benchmark::State& state, const Band& band) {
    const BandRun run(band);
    Zmx32u counts[257] = {};
    for (auto _ : state) band.count(run.coded, counts);
    run.coded.report(state);
}

void encode(benchmark::State& state, const Band& band) {
    const BandRun run(band);
    Stream out;
    for (auto _ : state) band.write(run.coded, run.enc, out);
    run.coded.report(state);
}

// A refinement always starts from what the first scan left.
void decode(benchmark::State& state, const Band& band) {
    const BandRun run(band), first(kFirst);
    std::vector<Block> start(run.coded.blocks.size(), Block{}), blocks = start;
    if (band.Al != kFirst.Al) kFirst.read(first.coded, first.dec, first.stream, start);
    for (auto _ : state) {
        state.PauseTiming();
        blocks = start;
        state.ResumeTiming();
        band.read(run.coded, run.dec, run.stream, blocks);
    }
    run.coded.report(state);
}

// The scans of DC: symbols with an optimal table in the first one, a bit a block in the refinement.
struct DCRun {
    const Coded coded{kFilled};

private:
    ZmxiEncodeHuffmanSpec* enc = nullptr;
    ZmxiDecodeHuffmanSpec* dec = nullptr;
    std::vector<Block> blocks;
    Stream streams[2];

    template <class Code> void write(Stream& out, Code code) {
        out.pos = 0;
        scan(
            coded, [&](const Zmx16s* b) { return code(b, 0); }, [&] { return code(nullptr, 1); });
        out.bytes[std::size_t(out.pos)] = 0xFF;
        out.bytes[std::size_t(out.pos) + 1] = 0xD9;
    }
    template <class Code> void read(const Stream& in, Code code) {
        int pos = 0;
        zmxiDecodeHuffmanStateInit_JPEG_8u(coded.reader);
        for (Block& b : blocks) Coded::check(code(in.bytes.data(), in.pos + 2, &pos, b.data()));
    }

public:
    DCRun() : blocks(coded.blocks.size()) {
        Zmx32u counts[257] = {};
        count(counts);
        Coded::tables(counts, &enc, &dec);
        writeFirst();
        writeRefinement();
        readFirst();
        readRefinement();
        for (std::size_t i = 0; i < blocks.size(); ++i)
            if (blocks[i][0] != coded.blocks[i][0]) std::abort();
    }
    ~DCRun() {
        zmxiEncodeHuffmanSpecFree_JPEG_8u(enc);
        zmxiDecodeHuffmanSpecFree_JPEG_8u(dec);
    }
    DCRun(const DCRun&) = delete;
    DCRun& operator=(const DCRun&) = delete;

    void count(Zmx32u* counts) const {
        Zmx16s lastDC = 0;
        for (const Block& b : coded.blocks)
            Coded::check(zmxiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(b.data(), counts, &lastDC, kAl));
    }
    void writeFirst() {
        Stream& out = streams[0];
        Zmx16s lastDC = 0;
        write(out, [&](const Zmx16s* b, int flush) {
            return zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(b, out.bytes.data(), out.size(), &out.pos, &lastDC, kAl,
                                                              enc, coded.writer, flush);
        });
    }
    void writeRefinement() {
        Stream& out = streams[1];
        write(out, [&](const Zmx16s* b, int flush) {
            return zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(b, out.bytes.data(), out.size(), &out.pos, kAl - 1,
                                                               coded.writer, flush);
        });
    }
    void readFirst() {
        int marker = 0;
        Zmx16s lastDC = 0;
        read(streams[0], [&](const Zmx8u* src, int length, int* pos, Zmx16s* b) {
            return zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(src, length, pos, b, &lastDC, &marker, kAl, dec,
                                                              coded.reader);
        });
    }
    void readRefinement() {
        int marker = 0;
        read(streams[1], [&](const Zmx8u* src, int length, int* pos, Zmx16s* b) {
            return zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(src, length, pos, b, &marker, kAl - 1, coded.reader);
        });
    }
};

template <void (DCRun::*work)()> void dc(benchmark::State& state) {
    DCRun run;
    for (auto _ : state) (run.*work)();
    state.SetItemsProcessed(state.iterations() * std::int64_t(run.coded.blocks.size()));
}
void dcStatistics(benchmark::State& state) {
    const DCRun run;
    Zmx32u counts[257] = {};
    for (auto _ : state) run.count(counts);
    state.SetItemsProcessed(state.iterations() * std::int64_t(run.coded.blocks.size()));
}

BENCHMARK(dcStatistics)->Name("progressive/statistics/DCFirst");
BENCHMARK(dc<&DCRun::writeFirst>)->Name("progressive/encode/DCFirst");
BENCHMARK(dc<&DCRun::writeRefinement>)->Name("progressive/encode/DCRefine");
BENCHMARK(dc<&DCRun::readFirst>)->Name("progressive/decode/DCFirst");
BENCHMARK(dc<&DCRun::readRefinement>)->Name("progressive/decode/DCRefine");
BENCHMARK_CAPTURE(statistics, ACFirst, kFirst)->Name("progressive/statistics/ACFirst");
BENCHMARK_CAPTURE(statistics, ACRefine, kRefine)->Name("progressive/statistics/ACRefine");
BENCHMARK_CAPTURE(encode, ACFirst, kFirst)->Name("progressive/encode/ACFirst");
BENCHMARK_CAPTURE(encode, ACRefine, kRefine)->Name("progressive/encode/ACRefine");
BENCHMARK_CAPTURE(decode, ACFirst, kFirst)->Name("progressive/decode/ACFirst");
BENCHMARK_CAPTURE(decode, ACRefine, kRefine)->Name("progressive/decode/ACRefine");

} // namespace
