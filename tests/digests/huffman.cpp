// huffman.cpp - digests of Huffman tables and of the blocks that JPEG entropy coding runs on.
//
// What is in a table shows in the streams of the other files; here are statuses and lists.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/digests/arguments.h"
#include "tests/digests/entropy.h"

namespace {

// Lists that may or may not make a table.
Lists anyLists(Random& random) {
    Lists lists;
    const int most = random.range(1, 12);
    for (Zmx8u& bits : lists.bits) bits = random.oneIn(2) ? 0 : Zmx8u(random.range(0, most));
    for (Zmx8u& val : lists.vals) val = Zmx8u(random.range(0, 255));
    return lists;
}

template <class Spec, class Init, class InitAlloc, class Free>
void specs(Report& report, ZmxStatus (*getBufSize)(int*), const Named<Init>& init, const Named<InitAlloc>& initAlloc,
           const Named<Free>& release) {
    report.add(init.name, [&](Random& random, Digest& digest) {
        for (int round = 0; round < 400; ++round) {
            const Lists lists = anyLists(random);
            Opaque<Spec> spec(getBufSize);
            digest.value(init.call(lists.bits, lists.vals, spec.get()));
        }
    });
    report.add(initAlloc.name + ", " + release.name, [&](Random& random, Digest& digest) {
        for (int round = 0; round < 40; ++round) {
            const Lists lists = anyLists(random);
            Spec* spec = nullptr;
            digest.value(initAlloc.call(lists.bits, lists.vals, &spec)).value(int(spec != nullptr));
            digest.value(release.call(spec));
        }
    });
    Lists lists;
    Opaque<Spec> spec(getBufSize);
    Spec* pointer = nullptr;
    badArguments(report, init, lists.bits, lists.vals, spec.get());
    badArguments(report, initAlloc, lists.bits, lists.vals, &pointer);
    badArguments(report, release, spec.get());
}

template <class State, class InitAlloc>
void states(Report& report, ZmxStatus (*getBufSize)(int*), const Named<ZmxStatus(State*)>& init,
            const Named<InitAlloc>& initAlloc, const Named<ZmxStatus(State*)>& release) {
    report.add(init.name, [&](Random&, Digest& digest) {
        Opaque<State> state(getBufSize);
        digest.value(init.call(state.get()));
    });
    report.add(initAlloc.name + ", " + release.name, [&](Random&, Digest& digest) {
        State* state = nullptr;
        digest.value(initAlloc.call(&state)).value(int(state != nullptr)).value(release.call(state));
    });
    Opaque<State> state(getBufSize);
    State* pointer = nullptr;
    badArguments(report, init, state.get());
    badArguments(report, initAlloc, &pointer);
    badArguments(report, release, state.get());
}

void optimalTables(Report& report) {
    const auto function = NAMED(zmxiEncodeHuffmanRawTableInit_JPEG_8u);
    report.add(function.name, [&](Random& random, Digest& digest) {
        for (int round = 0; round < 200; ++round) {
            Zmx32s statistics[257] = {};
            const int used = random.range(0, 256), largest = 1 << random.range(0, 22);
            for (int i = 0; i < used; ++i) statistics[random.range(0, 255)] = random.range(0, largest);
            if (random.oneIn(8)) // frequencies that make long codes, in the end too long ones
                for (int i = 0, a = 1, b = 1, n = random.range(10, 42); i < n; ++i, b += a, a = b - a)
                    statistics[i] = a;
            Lists lists;
            digest.value(function.call(statistics, lists.bits, lists.vals))
                .values(lists.bits, 16)
                .values(lists.vals, 256);
        }
    });
    Zmx32s statistics[257] = {};
    Lists lists;
    badArguments(report, function, statistics, lists.bits, lists.vals);
}

// Sizes of these blocks do not depend on the platform.
void sizes(Report& report) {
    for (const auto& function :
         {NAMED(zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u), NAMED(zmxiDecodeHuffmanStateGetBufSize_JPEG_8u),
          NAMED(zmxiEncodeHuffmanSpecGetBufSize_JPEG_8u), NAMED(zmxiEncodeHuffmanStateGetBufSize_JPEG_8u)}) {
        report.add(function.name, [&](Random&, Digest& digest) {
            int size = 0;
            digest.value(function.call(&size)).value(size);
        });
        int size = 0;
        badArguments(report, function, &size);
    }
}

} // namespace

void huffmanDigests(Report& report) {
    sizes(report);
    specs<ZmxiDecodeHuffmanSpec>(
        report, zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u, NAMED(zmxiDecodeHuffmanSpecInit_JPEG_8u),
        NAMED(zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u), NAMED(zmxiDecodeHuffmanSpecFree_JPEG_8u));
    specs<ZmxiEncodeHuffmanSpec>(
        report, zmxiEncodeHuffmanSpecGetBufSize_JPEG_8u, NAMED(zmxiEncodeHuffmanSpecInit_JPEG_8u),
        NAMED(zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u), NAMED(zmxiEncodeHuffmanSpecFree_JPEG_8u));
    states(report, zmxiDecodeHuffmanStateGetBufSize_JPEG_8u, NAMED(zmxiDecodeHuffmanStateInit_JPEG_8u),
           NAMED(zmxiDecodeHuffmanStateInitAlloc_JPEG_8u), NAMED(zmxiDecodeHuffmanStateFree_JPEG_8u));
    states(report, zmxiEncodeHuffmanStateGetBufSize_JPEG_8u, NAMED(zmxiEncodeHuffmanStateInit_JPEG_8u),
           NAMED(zmxiEncodeHuffmanStateInitAlloc_JPEG_8u), NAMED(zmxiEncodeHuffmanStateFree_JPEG_8u));
    optimalTables(report);
}
