// bench_states.cpp - what an application calls once: the version, sizes, states, tables. Time per call; an InitAlloc
// is timed with its Free.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

void check(ZmxStatus status) {
    if (status) std::abort();
}

template <class Call> void each(benchmark::State& state, Call call) {
    for (auto _ : state) call();
    state.SetItemsProcessed(state.iterations());
}

void version(benchmark::State& state) {
    each(state, [] { benchmark::DoNotOptimize(zmxjGetLibVersion()); });
}

// ---- sizes

void sizeOfAll(benchmark::State& state, ZmxStatus (*get)(int*)) {
    int size;
    each(state, [&] { check(get(&size)); });
}
void sizeForBlock(benchmark::State& state, ZmxStatus (*get)(ZmxiSize, int*)) {
    int size;
    each(state, [&] { check(get({64, 64}, &size)); });
}
void sizeForTile(benchmark::State& state, ZmxStatus (*get)(const ZmxiRect*, int*)) {
    int size;
    const ZmxiRect tile{0, 0, 1920, 1080};
    each(state, [&] { check(get(&tile, &size)); });
}

// ---- Huffman tables and bit states

// The lists of a table as large as AC tables of pictures are.
struct Lists {
    Zmx32s statistics[257];
    Zmx8u bits[16] = {}, vals[256] = {};

    Lists() {
        for (int i = 0; i < 257; ++i) statistics[i] = i % 16 > 10 ? 0 : 1 + 40000 / (1 + i);
        check(zmxiEncodeHuffmanRawTableInit_JPEG_8u(statistics, bits, vals));
    }
};

void optimalTable(benchmark::State& state) {
    Lists lists;
    each(state, [&] { check(zmxiEncodeHuffmanRawTableInit_JPEG_8u(lists.statistics, lists.bits, lists.vals)); });
}

// A block of memory as large as a GetBufSize says.
template <class T> class Block {
    std::vector<std::max_align_t> memory;

public:
    explicit Block(ZmxStatus (*get)(int*)) {
        int size = 0;
        check(get(&size));
        memory.resize(std::size_t(size) / sizeof memory[0] + 1);
    }
    operator T*() { return reinterpret_cast<T*>(memory.data()); }
};

template <class Spec>
void table(benchmark::State& state, ZmxStatus (*size)(int*), ZmxStatus (*init)(const Zmx8u*, const Zmx8u*, Spec*)) {
    const Lists lists;
    Block<Spec> block(size);
    each(state, [&] { check(init(lists.bits, lists.vals, block)); });
}
template <class Spec>
void tableAlloc(benchmark::State& state, ZmxStatus (*init)(const Zmx8u*, const Zmx8u*, Spec**),
                ZmxStatus (*release)(Spec*)) {
    const Lists lists;
    Spec* spec = nullptr;
    each(state, [&] {
        check(init(lists.bits, lists.vals, &spec));
        check(release(spec));
    });
}
template <class Bits> void bitState(benchmark::State& state, ZmxStatus (*size)(int*), ZmxStatus (*init)(Bits*)) {
    Block<Bits> block(size);
    each(state, [&] { check(init(block)); });
}
template <class Bits>
void bitStateAlloc(benchmark::State& state, ZmxStatus (*init)(Bits**), ZmxStatus (*release)(Bits*)) {
    Bits* bits = nullptr;
    each(state, [&] {
        check(init(&bits));
        check(release(bits));
    });
}

// ---- states of code blocks

template <class State>
void blockState(benchmark::State& state, ZmxStatus (*init)(State**, ZmxiSize), ZmxStatus (*release)(State*)) {
    State* block = nullptr;
    each(state, [&] {
        check(init(&block, {64, 64}));
        check(release(block));
    });
}
void decoderState(benchmark::State& state) {
    int size = 0;
    check(zmxiDecodeCBProgrGetStateSize_JPEG2K({64, 64}, &size));
    std::vector<std::max_align_t> memory(std::size_t(size) / sizeof(std::max_align_t) + 1);
    each(state, [&] { check(zmxiDecodeCBProgrInit_JPEG2K(reinterpret_cast<ZmxiDecodeCBProgrState*>(memory.data()))); });
}

const bool registered = [] {
    const auto add = [](const char* name, auto run, auto... with) {
        benchmark::RegisterBenchmark((std::string("once/") + name).c_str(), run, with...);
    };
    add("GetLibVersion", version);

    add("DecodeHuffmanSpecGetBufSize", sizeOfAll, zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u);
    add("DecodeHuffmanStateGetBufSize", sizeOfAll, zmxiDecodeHuffmanStateGetBufSize_JPEG_8u);
    add("EncodeHuffmanSpecGetBufSize", sizeOfAll, zmxiEncodeHuffmanSpecGetBufSize_JPEG_8u);
    add("EncodeHuffmanStateGetBufSize", sizeOfAll, zmxiEncodeHuffmanStateGetBufSize_JPEG_8u);
    add("DecodeCBProgrGetStateSize", sizeForBlock, zmxiDecodeCBProgrGetStateSize_JPEG2K);
    add("DecodeGetBufSize", sizeForBlock, zmxiDecodeGetBufSize_JPEG2K);
    add("WTGetBufSize_B53_16s_C1IR", sizeForTile, zmxiWTGetBufSize_B53_JPEG2K_16s_C1IR);
    add("WTGetBufSize_B53_32s_C1IR", sizeForTile, zmxiWTGetBufSize_B53_JPEG2K_32s_C1IR);
    add("WTGetBufSize_B53_16s_C1R", sizeForTile, zmxiWTGetBufSize_B53_JPEG2K_16s_C1R);
    add("WTGetBufSize_B53_32s_C1R", sizeForTile, zmxiWTGetBufSize_B53_JPEG2K_32s_C1R);
    add("WTGetBufSize_D97_16s_C1IR", sizeForTile, zmxiWTGetBufSize_D97_JPEG2K_16s_C1IR);
    add("WTGetBufSize_D97_32s_C1IR", sizeForTile, zmxiWTGetBufSize_D97_JPEG2K_32s_C1IR);
    add("WTGetBufSize_D97_16s_C1R", sizeForTile, zmxiWTGetBufSize_D97_JPEG2K_16s_C1R);
    add("WTGetBufSize_D97_32s_C1R", sizeForTile, zmxiWTGetBufSize_D97_JPEG2K_32s_C1R);

    add("EncodeHuffmanRawTableInit", optimalTable);
    add("DecodeHuffmanSpecInit", table<ZmxiDecodeHuffmanSpec>, zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u,
        zmxiDecodeHuffmanSpecInit_JPEG_8u);
    add("EncodeHuffmanSpecInit", table<ZmxiEncodeHuffmanSpec>, zmxiEncodeHuffmanSpecGetBufSize_JPEG_8u,
        zmxiEncodeHuffmanSpecInit_JPEG_8u);
    add("DecodeHuffmanSpecInitAlloc", tableAlloc<ZmxiDecodeHuffmanSpec>, zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u,
        zmxiDecodeHuffmanSpecFree_JPEG_8u);
    add("EncodeHuffmanSpecInitAlloc", tableAlloc<ZmxiEncodeHuffmanSpec>, zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u,
        zmxiEncodeHuffmanSpecFree_JPEG_8u);
    add("DecodeHuffmanStateInit", bitState<ZmxiDecodeHuffmanState>, zmxiDecodeHuffmanStateGetBufSize_JPEG_8u,
        zmxiDecodeHuffmanStateInit_JPEG_8u);
    add("EncodeHuffmanStateInit", bitState<ZmxiEncodeHuffmanState>, zmxiEncodeHuffmanStateGetBufSize_JPEG_8u,
        zmxiEncodeHuffmanStateInit_JPEG_8u);
    add("DecodeHuffmanStateInitAlloc", bitStateAlloc<ZmxiDecodeHuffmanState>, zmxiDecodeHuffmanStateInitAlloc_JPEG_8u,
        zmxiDecodeHuffmanStateFree_JPEG_8u);
    add("EncodeHuffmanStateInitAlloc", bitStateAlloc<ZmxiEncodeHuffmanState>, zmxiEncodeHuffmanStateInitAlloc_JPEG_8u,
        zmxiEncodeHuffmanStateFree_JPEG_8u);

    add("DecodeCBProgrInit", decoderState);
    add("DecodeCBProgrInitAlloc", blockState<ZmxiDecodeCBProgrState>, zmxiDecodeCBProgrInitAlloc_JPEG2K,
        zmxiDecodeCBProgrFree_JPEG2K);
    add("EncodeInitAlloc", blockState<ZmxiEncodeState_JPEG2K>, zmxiEncodeInitAlloc_JPEG2K, zmxiEncodeFree_JPEG2K);
    return true;
}();

} // namespace
