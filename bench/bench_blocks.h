// bench_blocks.h - blocks of coefficients like those of pictures, their Huffman tables and streams.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

namespace entropy {

using Block = std::array<Zmx16s, 64>;

// The natural position of the coefficient at zig-zag position k (ITU-T T.81, figure A.6).
inline int naturalPosition(int k) {
    for (int diagonal = 0, step = 0; diagonal < 15; ++diagonal)
        for (int i = 0; i <= diagonal; ++i) {
            const int row = diagonal % 2 ? i : diagonal - i, column = diagonal - row;
            if (row < 8 && column < 8 && step++ == k) return 8 * row + column;
        }
    return 63;
}

// A square of side x side blocks: Laplace-distributed coefficients that fall off along the zig-zag walk, busy
// blocks beside quiet ones. Of the AC coefficients about filled in a mean block are not 0.
inline std::vector<Block> pictureBlocks(int side, int filled) {
    std::minstd_rand random(20);
    const auto uniform = [&random] { return (double(random() % 1000000) + 0.5) / 1e6; };
    const auto laplace = [&uniform](double scale) {
        const double u = uniform() - 0.5;
        return -scale * std::copysign(std::log(1 - 2 * std::fabs(u)), u);
    };
    std::vector<Block> blocks(std::size_t(side) * std::size_t(side));
    double dc = 0;
    for (Block& b : blocks) {
        b.fill(0);
        dc = 0.95 * dc + laplace(12);
        b[0] = Zmx16s(std::lround(dc));
        const double busy = -std::log(uniform()) * filled;
        for (int k = 1; k < 64; ++k)
            b[std::size_t(naturalPosition(k))] = Zmx16s(std::lround(laplace(busy / (1.5 + k)) * 1.2));
    }
    return blocks;
}

// The lists of a DHT segment.
struct HuffmanLists {
    Zmx8u bits[16], vals[256];
};

// The blocks with optimal tables and their stream, ending in a marker.
struct Coded {
    std::vector<Block> blocks;
    HuffmanLists dcLists, acLists;
    std::vector<Zmx8u> stream;
    ZmxiEncodeHuffmanSpec *encDC, *encAC;
    ZmxiDecodeHuffmanSpec *decDC, *decAC;
    ZmxiEncodeHuffmanState* writer;
    ZmxiDecodeHuffmanState* reader;

    explicit Coded(int filled) : blocks(pictureBlocks(64, filled)) {
        Zmx32u dc[257] = {}, ac[257] = {};
        Zmx16s lastDC = 0;
        for (const Block& b : blocks) check(zmxiGetHuffmanStatistics8x8_JPEG_16s_C1(b.data(), dc, ac, &lastDC));
        dcLists = tables(dc, &encDC, &decDC);
        acLists = tables(ac, &encAC, &decAC);
        check(zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(&writer));
        check(zmxiDecodeHuffmanStateInitAlloc_JPEG_8u(&reader));
        stream.resize(blocks.size() * 600);
        int pos = 0;
        lastDC = 0;
        for (const Block& b : blocks)
            check(zmxiEncodeHuffman8x8_JPEG_16s1u_C1(b.data(), stream.data(), int(stream.size()), &pos, &lastDC, encDC,
                                                     encAC, writer, 0));
        check(zmxiEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, stream.data(), int(stream.size()), &pos, nullptr, nullptr,
                                                 nullptr, writer, 1));
        stream.resize(std::size_t(pos));
        stream.insert(stream.end(), {0xFF, 0xD9});
    }
    ~Coded() {
        zmxiEncodeHuffmanSpecFree_JPEG_8u(encDC);
        zmxiEncodeHuffmanSpecFree_JPEG_8u(encAC);
        zmxiDecodeHuffmanSpecFree_JPEG_8u(decDC);
        zmxiDecodeHuffmanSpecFree_JPEG_8u(decAC);
        zmxiEncodeHuffmanStateFree_JPEG_8u(writer);
        zmxiDecodeHuffmanStateFree_JPEG_8u(reader);
    }
    Coded(const Coded&) = delete;
    Coded& operator=(const Coded&) = delete;

    void report(benchmark::State& state) const {
        state.SetItemsProcessed(state.iterations() * std::int64_t(blocks.size()));
        state.SetBytesProcessed(state.iterations() * std::int64_t(stream.size()));
    }
    static void check(ZmxStatus status) {
        if (status) std::abort();
    }
    static HuffmanLists tables(const Zmx32u* counts, ZmxiEncodeHuffmanSpec** enc, ZmxiDecodeHuffmanSpec** dec) {
        Zmx32s statistics[257];
        for (int i = 0; i < 257; ++i) statistics[i] = Zmx32s(counts[i]);
        HuffmanLists lists{};
        check(zmxiEncodeHuffmanRawTableInit_JPEG_8u(statistics, lists.bits, lists.vals));
        check(zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u(lists.bits, lists.vals, enc));
        check(zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(lists.bits, lists.vals, dec));
        return lists;
    }
};

} // namespace entropy
