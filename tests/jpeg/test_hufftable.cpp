// Huffman tables and bit states as an application sees them: sizes, memory, construction, and the optimal
// table.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/support/huffman.h"
#include "tests/support/arguments.h"
#include "tests/support/digest.h"
#include "tests/support/memory.cpp"

#include <climits>
#include <functional>
#include <gtest/gtest.h>

namespace {

// BITS from pairs of length and count; the symbols 0, 1, 2 ... in the order of the codes.
HuffmanList listOf(std::initializer_list<std::pair<int, int>> counts) {
    HuffmanList list;
    int total = 0;
    for (auto [length, count] : counts) {
        list.bits[std::size_t(length - 1)] = Zmx8u(count);
        total += count;
    }
    for (int i = 0; i < total; ++i) list.vals.push_back(Zmx8u(i));
    return list;
}

const HuffmanList* const kAnnexK[] = {&annexK::dcLuminance, &annexK::dcChrominance, &annexK::acLuminance,
                                      &annexK::acChrominance};

} // namespace

TEST(HuffmanBlocks, Sizes) {
    struct {
        ZmxStatus (*get)(int*);
        int bytes;
    } const sizes[] = {{zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u, 1644},
                       {zmxiDecodeHuffmanStateGetBufSize_JPEG_8u, 20},
                       {zmxiEncodeHuffmanSpecGetBufSize_JPEG_8u, 1024},
                       {zmxiEncodeHuffmanStateGetBufSize_JPEG_8u, 1044}};
    for (auto s : sizes) {
        int size = -1;
        EXPECT_EQ(s.get(&size), zmxStsNoErr);
        EXPECT_EQ(size, s.bytes);
        EXPECT_EQ(s.get(nullptr), zmxStsNullPtrErr);
    }
}

TEST(HuffmanBlocks, StatesStartAtZero) {
    for (auto flush : {GuardedBlock::AtEnd, GuardedBlock::AtStart}) {
        DecodeStateTwin reader(flush);
        EXPECT_EQ(zmxiDecodeHuffmanStateInit_JPEG_8u(reader.lib()), zmxStsNoErr);
        reader.plain = {};
        EXPECT_TRUE(reader.same());
        EncodeStateTwin writer(flush);
        EXPECT_EQ(zmxiEncodeHuffmanStateInit_JPEG_8u(writer.lib()), zmxStsNoErr);
        writer.plain = {};
        EXPECT_TRUE(writer.same());
    }
    EXPECT_EQ(zmxiDecodeHuffmanStateInit_JPEG_8u(nullptr), zmxStsNullPtrErr);
    EXPECT_EQ(zmxiEncodeHuffmanStateInit_JPEG_8u(nullptr), zmxStsNullPtrErr);
}

TEST(HuffmanBlocks, NullPointersOfInit) {
    const HuffmanList& list = annexK::dcLuminance;
    const Zmx8u *bits = list.bits.data(), *vals = list.vals.data();
    const int before = allocationsMade();
    const std::vector<ZmxStatus> order{kNull, kNull, kNull};
    DecodeTable dec;
    checkOrder(order, [&](const Bad& bad) {
        return zmxiDecodeHuffmanSpecInit_JPEG_8u(bad.null(0, bits), bad.null(1, vals), bad.null(2, dec.lib()));
    });
    EXPECT_TRUE(dec.same()) << "nothing is written";
    EncodeTable enc;
    checkOrder(order, [&](const Bad& bad) {
        return zmxiEncodeHuffmanSpecInit_JPEG_8u(bad.null(0, bits), bad.null(1, vals), bad.null(2, enc.lib()));
    });
    EXPECT_TRUE(enc.same());

    ZmxiDecodeHuffmanSpec* decOut = dec.lib();
    checkOrder(order, [&](const Bad& bad) {
        return zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(bad.null(0, bits), bad.null(1, vals), bad.null(2, &decOut));
    });
    EXPECT_EQ(decOut, dec.lib());
    ZmxiEncodeHuffmanSpec* encOut = enc.lib();
    checkOrder(order, [&](const Bad& bad) {
        return zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u(bad.null(0, bits), bad.null(1, vals), bad.null(2, &encOut));
    });
    EXPECT_EQ(encOut, enc.lib());

    std::vector<Zmx32s> statistics(257, 1);
    Guarded<Zmx8u> outBits(16), outVals(256);
    outBits.fill(0x77);
    outVals.fill(0x77);
    checkOrder(order, [&](const Bad& bad) {
        return zmxiEncodeHuffmanRawTableInit_JPEG_8u(bad.null(0, statistics.data()), bad.null(1, outBits.data()),
                                                     bad.null(2, outVals.data()));
    });
    EXPECT_EQ(outBits.copy(), std::vector<Zmx8u>(16, 0x77));
    EXPECT_EQ(outVals.copy(), std::vector<Zmx8u>(256, 0x77));
    EXPECT_EQ(zmxiDecodeHuffmanStateInitAlloc_JPEG_8u(nullptr), zmxStsNullPtrErr);
    EXPECT_EQ(zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(nullptr), zmxStsNullPtrErr);
    EXPECT_EQ(allocationsMade(), before) << "no memory is asked for with bad arguments";
}

TEST(HuffmanBlocks, FreeOfNullHandsNothingOn) {
    const int before = nullsFreed();
    EXPECT_EQ(zmxiDecodeHuffmanSpecFree_JPEG_8u(nullptr), zmxStsNullPtrErr);
    EXPECT_EQ(zmxiDecodeHuffmanStateFree_JPEG_8u(nullptr), zmxStsNullPtrErr);
    EXPECT_EQ(zmxiEncodeHuffmanSpecFree_JPEG_8u(nullptr), zmxStsNullPtrErr);
    EXPECT_EQ(zmxiEncodeHuffmanStateFree_JPEG_8u(nullptr), zmxStsNullPtrErr);
    EXPECT_EQ(nullsFreed(), before);
}

namespace {

// One InitAlloc and its Free: what is asked for, what is stored, and that nothing is left.
template <class Lib>
void checkAlloc(const std::function<ZmxStatus(Lib**)>& initAlloc, ZmxStatus (*release)(Lib*), const void* expected,
                int bytes, ZmxStatus status) {
    const int before = allocationsMade(), blocks = blocksHeld();
    Lib* block = nullptr;
    EXPECT_EQ(initAlloc(&block), status);
    EXPECT_EQ(allocationsMade(), before + 1);
    EXPECT_EQ(lastAllocationBytes(), bytes);
    EXPECT_EQ(blocksHeld(), blocks + 1);
    ASSERT_NE(block, nullptr) << "stored whatever the status";
    EXPECT_TRUE(sameBytes(expected, block, std::size_t(bytes)));
    EXPECT_EQ(release(block), zmxStsNoErr);
    EXPECT_EQ(blocksHeld(), blocks);

    int marker = 0;
    Lib* const asItWas = reinterpret_cast<Lib*>(&marker);
    block = asItWas;
    failAllocation(1);
    EXPECT_EQ(initAlloc(&block), zmxStsNullPtrErr) << "a failed allocation";
    failAllocation(0);
    EXPECT_EQ(block, asItWas);
    EXPECT_EQ(allocationsMade(), before + 2);
    EXPECT_EQ(blocksHeld(), blocks);
}

} // namespace

TEST(HuffmanBlocks, InitAllocAndFree) {
    const HuffmanList lists[] = {annexK::acLuminance,
                                 listOf({{1, 2}}),            // complete: good for the decoder alone
                                 listOf({{1, 3}}),            // over-full
                                 listOf({{9, 255}, {10, 2}}), // 257 codes
                                 {}};
    for (const HuffmanList& list : lists) {
        model::DecodeSpec dec;
        const ZmxStatus decStatus = model::buildDecodeSpec(list.bits.data(), list.vals.data(), dec);
        checkAlloc<ZmxiDecodeHuffmanSpec>(
            [&](auto** pp) {
                Zmx8u none = 0;
                return zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(list.bits.data(),
                                                              list.vals.empty() ? &none : list.vals.data(), pp);
            },
            zmxiDecodeHuffmanSpecFree_JPEG_8u, &dec, 1644, decStatus);
        model::EncodeSpec enc;
        const ZmxStatus encStatus = model::buildEncodeSpec(list.bits.data(), list.vals.data(), enc);
        checkAlloc<ZmxiEncodeHuffmanSpec>(
            [&](auto** pp) {
                Zmx8u none = 0;
                return zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u(list.bits.data(),
                                                              list.vals.empty() ? &none : list.vals.data(), pp);
            },
            zmxiEncodeHuffmanSpecFree_JPEG_8u, &enc, 1024, encStatus);
    }
    const model::DecodeState reader{};
    checkAlloc<ZmxiDecodeHuffmanState>(zmxiDecodeHuffmanStateInitAlloc_JPEG_8u, zmxiDecodeHuffmanStateFree_JPEG_8u,
                                       &reader, 20, zmxStsNoErr);
    const model::EncodeState writer{};
    checkAlloc<ZmxiEncodeHuffmanState>(zmxiEncodeHuffmanStateInitAlloc_JPEG_8u, zmxiEncodeHuffmanStateFree_JPEG_8u,
                                       &writer, 1044, zmxStsNoErr);
}

TEST(HuffmanTables, LuminanceDCWordForWord) {
    // Codes: 0 is 00, 1 to 5 are 010 to 110, 6 is 1110, and on to 11, which is 111111110.
    DecodeTable dec(annexK::dcLuminance);
    model::DecodeSpec t;
    std::memcpy(&t, dec.bytes(), sizeof t);
    for (int i = 0; i < 256; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(t.huffVal[i], i < 12 ? i : 0);
        const Zmx32u expected = i < 64    ? 0x20000u
                                : i < 224 ? 0x30000u + Zmx32u(i / 32 - 1)
                                : i < 240 ? 0x40006u
                                : i < 248 ? 0x50007u
                                : i < 252 ? 0x60008u
                                : i < 254 ? 0x70009u
                                : i < 255 ? 0x8000Au
                                          : 0u;
        EXPECT_EQ(t.fastTable[i], expected);
    }
    const Zmx16u none = 65535;
    const Zmx16u minCode[18] = {0, 0, 0, 2, 14, 30, 62, 126, 254, 510, 0, 0, 0, 0, 0, 0, 0, 0};
    const Zmx16u maxCode[18] = {0,   none, 0,    6,    14,   30,   62,   126,  254,
                                510, none, none, none, none, none, none, none, none};
    const Zmx16u valIndex[18] = {0, 0, 0, 1, 6, 7, 8, 9, 10, 11, 0, 0, 0, 0, 0, 0, 0, 0};
    for (int i = 0; i < 18; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(t.minCode[i], minCode[i]);
        EXPECT_EQ(t.maxCode[i], maxCode[i]);
        EXPECT_EQ(t.valIndex[i], valIndex[i]);
    }

    EncodeTable enc(annexK::dcLuminance);
    Zmx32u words[256];
    std::memcpy(words, enc.bytes(), sizeof words);
    const Zmx32u expected[12] = {0x20000, 0x30002, 0x30003, 0x30004, 0x30005, 0x30006,
                                 0x4000E, 0x5001E, 0x6003E, 0x7007E, 0x800FE, 0x901FE};
    for (int i = 0; i < 256; ++i) EXPECT_EQ(words[i], i < 12 ? expected[i] : 0u) << i;
}

TEST(HuffmanTables, LuminanceACCodes) {
    // ITU-T T.81, Table K.5: 0/0 is 1010, F/0 is 11111111001, F/A is 1111111111111110.
    EncodeTable enc(annexK::acLuminance);
    Zmx32u words[256];
    std::memcpy(words, enc.bytes(), sizeof words);
    EXPECT_EQ(words[0x00], 0x4000Au);
    EXPECT_EQ(words[0x01], 0x20000u);
    EXPECT_EQ(words[0xF0], 0xB07F9u);
    EXPECT_EQ(words[0xFA], 0x10FFFEu);
    EXPECT_EQ(words[0xFB], 0u);
    for (const HuffmanList* list : kAnnexK)
        for (auto flush : {GuardedBlock::AtEnd, GuardedBlock::AtStart}) {
            DecodeTable d(*list, flush);
            EncodeTable e(*list, flush);
        }
}

TEST(HuffmanTables, AnEmptyListIsATableWithoutCodes) {
    DecodeTable dec(HuffmanList{});
    model::DecodeSpec t{}, got;
    for (int i = 1; i < 18; ++i) t.maxCode[i] = 65535;
    std::memcpy(&got, dec.bytes(), sizeof got);
    EXPECT_TRUE(sameBytes(&t, &got, sizeof t));
    EncodeTable enc(HuffmanList{});
    EXPECT_EQ(std::count(enc.bytes(), enc.bytes() + 1024, 0), 1024);
}

TEST(HuffmanTables, At256CodesItStops) {
    DecodeTable dec;
    EncodeTable enc;
    const HuffmanList full = listOf({{9, 255}, {10, 1}}), over = listOf({{9, 255}, {10, 2}});
    EXPECT_EQ(dec.build(full), zmxStsNoErr);
    EXPECT_EQ(enc.build(full), zmxStsNoErr);
    EXPECT_EQ(dec.build(over), zmxStsHuffTableErr);
    EXPECT_EQ(enc.build(over), zmxStsHuffTableErr);
    EXPECT_EQ(std::count(dec.bytes(), dec.bytes() + 1644, 0), 1644) << "zeroed, and no further";
    EXPECT_EQ(std::count(enc.bytes(), enc.bytes() + 1024, 0), 1024);
    EXPECT_EQ(dec.build(listOf({{9, 255}, {10, 255}, {11, 255}, {16, 255}})), zmxStsHuffTableErr);
    // The 256 are counted before codes are assigned: these would not fit either.
    EXPECT_EQ(enc.build(listOf({{1, 255}, {2, 2}})), zmxStsHuffTableErr);
}

TEST(HuffmanTables, CompleteSetsAreForTheDecoderAlone) {
    DecodeTable dec;
    EncodeTable enc;
    EXPECT_EQ(dec.build(listOf({{1, 2}})), zmxStsNoErr);
    EXPECT_EQ(enc.build(listOf({{1, 2}})), zmxStsHuffTableErr);
    for (int length = 1; length <= 7; ++length) {
        SCOPED_TRACE(length);
        const int all = 1 << length;
        EXPECT_EQ(dec.build(listOf({{length, all}})), zmxStsNoErr);
        EXPECT_EQ(enc.build(listOf({{length, all}})), zmxStsHuffTableErr);
        EXPECT_EQ(enc.build(listOf({{length, all - 1}})), zmxStsNoErr);
        EXPECT_EQ(dec.build(listOf({{length, all + 1}})), zmxStsHuffTableErr);
        EXPECT_EQ(enc.build(listOf({{length, all + 1}})), zmxStsHuffTableErr);
        // The test stands at the end of each size: a full size is refused although a longer code follows.
        EXPECT_EQ(enc.build(listOf({{length, all}, {16, 1}})), zmxStsHuffTableErr);
    }
    EXPECT_EQ(enc.build(listOf({{8, 255}})), zmxStsNoErr);
    EXPECT_EQ(dec.build(listOf({{8, 255}})), zmxStsNoErr);
}

TEST(HuffmanTables, CodesOf16Bits) {
    // One code of each length up to 15 leaves 65534 and 65535 for 16 bits.
    HuffmanList list = listOf({{1, 1},
                               {2, 1},
                               {3, 1},
                               {4, 1},
                               {5, 1},
                               {6, 1},
                               {7, 1},
                               {8, 1},
                               {9, 1},
                               {10, 1},
                               {11, 1},
                               {12, 1},
                               {13, 1},
                               {14, 1},
                               {15, 1},
                               {16, 1}});
    DecodeTable dec;
    EncodeTable enc;
    EXPECT_EQ(dec.build(list), zmxStsNoErr);
    EXPECT_EQ(enc.build(list), zmxStsNoErr);
    Zmx32u word;
    std::memcpy(&word, enc.bytes() + 4 * 15, 4);
    EXPECT_EQ(word, 0x10FFFEu);
    list.bits[15] = 2;
    list.vals.push_back(99);
    EXPECT_EQ(dec.build(list), zmxStsNoErr) << "its code of all ones reads as none: the largest code is 65535";
    EXPECT_EQ(enc.build(list), zmxStsHuffTableErr);
    // Codes beyond 65535 are not fitted into 16 bits ahead of the test; the decoder keeps their low halves.
    list.bits[15] = 241;
    list.vals.resize(256, 77);
    EXPECT_EQ(dec.build(list), zmxStsNoErr);
    EXPECT_EQ(enc.build(list), zmxStsHuffTableErr);
}

TEST(HuffmanTables, ACodeOnIndex256LandsBehindTheFastTable) {
    HuffmanList list = listOf({{1, 2}, {8, 1}}); // 0, 1, and 100000000, which is over-full
    list.vals = {3, 4, 200};
    for (auto flush : {GuardedBlock::AtEnd, GuardedBlock::AtStart}) {
        DecodeTable dec(flush);
        ASSERT_EQ(dec.build(list), zmxStsNoErr);
        model::DecodeSpec t;
        std::memcpy(&t, dec.bytes(), sizeof t);
        EXPECT_EQ(t.minCode[0], 200);
        EXPECT_EQ(t.minCode[1], 8);
        EXPECT_EQ(t.minCode[8], 256);
        EXPECT_EQ(t.maxCode[8], 256);
        EXPECT_EQ(t.fastTable[255], 0x10004u);
        list.bits[7] = 2;
        list.vals.push_back(201);
        EXPECT_EQ(dec.build(list), zmxStsHuffTableErr) << "257";
        list.bits[7] = 1;
        list.vals.pop_back();
    }
    DecodeTable dec;
    EXPECT_EQ(dec.build(listOf({{7, 128}, {8, 1}})), zmxStsNoErr);
    EXPECT_EQ(dec.build(listOf({{7, 129}})), zmxStsHuffTableErr) << "256 is filled, 257 is beyond";
    EXPECT_EQ(dec.build(listOf({{1, 3}})), zmxStsHuffTableErr);
    EXPECT_EQ(dec.build(listOf({{8, 255}, {9, 1}})), zmxStsNoErr);
}

TEST(HuffmanTables, OfASymbolListedTwiceTheLastCodeStands) {
    HuffmanList list = listOf({{2, 3}});
    list.vals = {9, 5, 9};
    EncodeTable enc(list);
    Zmx32u words[256];
    std::memcpy(words, enc.bytes(), sizeof words);
    EXPECT_EQ(words[9], 0x20002u);
    EXPECT_EQ(words[5], 0x20001u);
}

TEST(HuffmanTables, RandomLists) {
    for (int seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        const auto flush = randomFlush(rng);
        DecodeTable dec(flush);
        EncodeTable enc(flush);
        HuffmanList list;
        if (seed % 2) {
            list = randomList(rng, {2, 254}, {0, 2}, 2);
        } else { // anything: over-full, too many, empty lengths
            for (Zmx8u& b : list.bits)
                if (rng.oneIn(3)) b = Zmx8u(rng.range(0, rng.oneIn(4) ? 255 : 12));
            list.vals = rng.vec<Zmx8u>(std::size_t(std::accumulate(list.bits.begin(), list.bits.end(), 0)), 0, 255);
        }
        dec.build(list);
        enc.build(list);
    }
}

namespace {

struct Optimal {
    ZmxStatus status;
    std::vector<Zmx8u> bits, vals;
};

// The library's optimal table, its lists flush with guard pages; compared with the model in passing.
Optimal optimal(const std::vector<Zmx32s>& statistics) {
    Zmx8u bits[16], vals[256];
    model::OptimalTrace trace;
    const ZmxStatus expected = model::optimalTable(statistics.data(), bits, vals, trace);
    Guarded<Zmx32s> in(statistics);
    Guarded<Zmx8u> outBits(16), outVals(std::size_t(trace.listed));
    outBits.fill(0x77);
    const ZmxStatus got = zmxiEncodeHuffmanRawTableInit_JPEG_8u(in.data(), outBits.data(), outVals.data());
    EXPECT_EQ(got, expected);
    EXPECT_TRUE(sameBytes(statistics, in.copy())) << "the caller's statistics stay";
    if (expected)
        EXPECT_EQ(outBits.copy(), std::vector<Zmx8u>(16, 0x77)) << "nothing is written";
    else
        EXPECT_TRUE(sameBytes(bits, outBits.data(), 16));
    EXPECT_TRUE(sameBytes(vals, outVals.data(), std::size_t(trace.listed)));
    return {got, outBits.copy(), outVals.copy()};
}

std::vector<Zmx32s> frequencies(std::initializer_list<std::pair<int, int>> list) {
    std::vector<Zmx32s> f(257, 0);
    for (auto [symbol, n] : list) f[std::size_t(symbol)] = n;
    return f;
}

std::vector<Zmx8u> bitsOf(std::initializer_list<std::pair<int, int>> counts) {
    std::vector<Zmx8u> b(16, 0);
    for (auto [length, n] : counts) b[std::size_t(length - 1)] = Zmx8u(n);
    return b;
}

using Bytes = std::vector<Zmx8u>;

} // namespace

TEST(OptimalTable, OneSymbolGetsOneBit) {
    for (int symbol : {0, 7, 255})
        for (int n : {1, 2, 1000000000}) {
            const Optimal o = optimal(frequencies({{symbol, n}}));
            EXPECT_EQ(o.status, zmxStsNoErr);
            EXPECT_EQ(o.bits, bitsOf({{1, 1}}));
            EXPECT_EQ(o.vals, Bytes{Zmx8u(symbol)});
        }
}

TEST(OptimalTable, NoSymbolsNoCodes) {
    const Optimal o = optimal(frequencies({}));
    EXPECT_EQ(o.status, zmxStsNoErr);
    EXPECT_EQ(o.bits, bitsOf({}));
    EXPECT_TRUE(o.vals.empty());
    // What stands in the last entry does not matter.
    for (int n : {1, 5, -1, 1000000001}) EXPECT_EQ(optimal(frequencies({{256, n}})).bits, bitsOf({}));
}

TEST(OptimalTable, TiesGoToTheHighestIndex) {
    // 256 with 4, 3 with 2, 1 with 0; then 256 with 3; then 256 with 1.
    const Optimal five = optimal(frequencies({{0, 1}, {1, 1}, {2, 1}, {3, 1}, {4, 1}}));
    EXPECT_EQ(five.bits, bitsOf({{2, 2}, {3, 3}}));
    EXPECT_EQ(five.vals, (Bytes{0, 1, 2, 3, 4}));
    // 256 with 5, of 2 now; then 256, the highest of the 2s, with 9; what is left of 5 and 9 is deeper
    // than 3.
    const Optimal three = optimal(frequencies({{3, 2}, {5, 1}, {9, 2}}));
    EXPECT_EQ(three.bits, bitsOf({{1, 1}, {2, 1}, {3, 1}}));
    EXPECT_EQ(three.vals, (Bytes{3, 9, 5}));
}

TEST(OptimalTable, EqualFrequenciesOfAll256Symbols) {
    const Optimal o = optimal(std::vector<Zmx32s>(257, 3));
    EXPECT_EQ(o.bits, bitsOf({{8, 255}, {9, 1}}));
    // 255 merged with the reserved symbol first.
    Bytes expected(256);
    std::iota(expected.begin(), expected.end(), Zmx8u(0));
    EXPECT_EQ(o.vals, expected);
}

TEST(OptimalTable, FrequenciesAboveTheStartOfTheSearchAreNotSeen) {
    EXPECT_EQ(optimal(frequencies({{4, 1000000001}})).bits, bitsOf({}));
    const Optimal o = optimal(frequencies({{4, 1000000001}, {5, 1000000000}, {6, 999999999}}));
    EXPECT_EQ(o.vals, (Bytes{5, 6})) << "merged with the reserved symbol, 6 weighs 1000000000 and goes with 5";
    EXPECT_EQ(optimal(frequencies({{5, 1000000000}, {6, 1000000000}})).vals, Bytes{6}) << "1000000001 does not";
}

TEST(OptimalTable, SizesAreLimitedTo16Bits) {
    // Fibonacci numbers make a chain. The reserved symbol is the other 1.
    for (int n = 2; n <= 42; ++n) {
        SCOPED_TRACE(n);
        std::vector<Zmx32s> f(257, 0);
        int a = 1, b = 1;
        for (int i = 0; i < n; ++i) {
            f[std::size_t(i)] = b;
            const int next = a + b;
            a = b;
            b = next;
        }
        const Optimal o = optimal(f);
        EXPECT_EQ(o.status, n <= 32 ? zmxStsNoErr : zmxStsHuffTableErr);
        if (o.status == zmxStsNoErr) {
            EXPECT_EQ(o.vals.size(), std::size_t(n));
            const HuffmanList list{{}, o.vals};
            HuffmanList built = list;
            std::copy(o.bits.begin(), o.bits.end(), built.bits.begin());
            EncodeTable enc(built);
            DecodeTable dec(built);
        }
    }
}

TEST(OptimalTable, SizesAreCountedInBytes) {
    // 255 symbols and the reserved one at 9 bits are 256, which a byte counter holds as 0; the one count that
    // is left, for 1 bit, then goes as the reserved symbol's. The symbols are listed all the same.
    std::vector<Zmx32s> f(257, 1);
    f[0] = 1000;
    const Optimal o = optimal(f);
    EXPECT_EQ(o.status, zmxStsNoErr);
    EXPECT_EQ(o.bits, bitsOf({}));
    EXPECT_EQ(o.vals.size(), 256u);
    f[17] = 0; // 255 of them count
    EXPECT_EQ(optimal(f).bits, bitsOf({{1, 1}, {8, 1}, {9, 253}}));
}

TEST(OptimalTable, RandomFrequencies) {
    for (int seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        std::vector<Zmx32s> f(257);
        const int absent = int(rng.range(1, 6)), spread = int(rng.range(1, 29));
        for (Zmx32s& n : f)
            n = rng.oneIn(absent + 1) ? 0 : Zmx32s(rng.range(1, rng.oneIn(2) ? 3 : 1 << rng.range(0, spread)));
        const Optimal o = optimal(f);
        // A sum above 1000000000 is not seen either: then more than one tree is left, which is no code set.
        if (o.status == zmxStsNoErr && std::accumulate(f.begin(), f.end() - 1, std::int64_t(1)) <= 1000000000) {
            HuffmanList list{{}, o.vals};
            std::copy(o.bits.begin(), o.bits.end(), list.bits.begin());
            EncodeTable enc;
            DecodeTable dec;
            EXPECT_EQ(enc.build(list), zmxStsNoErr);
            EXPECT_EQ(dec.build(list), zmxStsNoErr);
        }
    }
}

// Sums that wrap, and counters that no count is: trees are left apart, with as many symbols on one level as a byte of
// BITS cannot tell. The lists are those of the model.
TEST(OptimalTable, CountersThatWentNegative) {
    int built = 0, refused = 0;
    for (int seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng{std::uint64_t(seed)};
        std::vector<Zmx32s> f(257);
        for (Zmx32s& n : f) {
            const std::int64_t any = std::int32_t(rng.next()), half = rng.range(500000000, 1100000000);
            n = Zmx32s(seed % 3 == 0 ? rng.range(-4, 40) : seed % 3 == 1 ? any : half);
        }
        const Optimal o = optimal(f);
        ++(o.status ? refused : built);
        if (HasFailure()) return;
    }
    EXPECT_GT(built, 100);
    EXPECT_GT(refused, 10);
}

// By hand: what is not 0 is joined, the smallest first, and sums wrap.
TEST(OptimalTable, CountersBelowZeroAreTheRarest) {
    const int least = INT_MIN, most = 1000000000; // what is rarest is looked for up to there
    const struct {
        std::vector<Zmx32s> counts;
        Bytes lengths, symbols;
    } cases[] = {
        // -5 and the reserved 1 give -4, which with 3 gives -1.
        {frequencies({{0, -5}, {1, 3}}), bitsOf({{1, 1}, {2, 1}}), {1, 0}},
        // -5 is joined with -2 ahead of the reserved 1.
        {frequencies({{0, -5}, {1, -2}, {2, 9}}), bitsOf({{1, 1}, {2, 1}, {3, 1}}), {2, 0, 1}},
        // -1 and the reserved 1 give 0, which is none: the 5 is left alone, and without a code.
        {frequencies({{0, -1}, {1, 5}}), bitsOf({{1, 1}}), {0}},
        // The smallest number there is and -1 give the largest one, which is never the rarest; the reserved symbol is
        // left alone, and takes one of the two codes with it.
        {frequencies({{0, least}, {1, -1}}), bitsOf({{1, 1}}), {0, 1}},
        // Twice the smallest gives 0.
        {frequencies({{7, least}, {9, least}, {200, 4}}), bitsOf({{1, 3}}), {7, 9, 200}},
        // Sums above the bound are left where they are: codes of one bit, more than there are.
        {frequencies({{0, most}, {1, most}, {2, most}}), bitsOf({{1, 3}}), {0, 1, 2}},
        // The bound itself is looked for, the next number is not.
        {frequencies({{3, most + 1}, {4, 2}}), bitsOf({{1, 1}}), {4}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        const Optimal o = optimal(c.counts);
        EXPECT_EQ(o.status, zmxStsNoErr);
        EXPECT_EQ(o.bits, c.lengths);
        EXPECT_EQ(o.vals, c.symbols);
    }
}

TEST(OptimalTable, PairsThatAreNotJoined) {
    // 128 pairs, one of them with the reserved symbol, that are not joined: 256 codes of one bit, which count as none.
    const Optimal pairs = optimal(std::vector<Zmx32s>(257, 1000000000));
    EXPECT_EQ(pairs.status, zmxStsNoErr);
    EXPECT_EQ(pairs.vals.size(), 255u);
    EXPECT_EQ(pairs.bits, Bytes(16));
}

TEST(HuffmanTables, Digests) {
    Digest decoder, encoder, best;
    for (int seed = 1; seed <= 100; ++seed) {
        Rng rng{std::uint64_t(seed)};
        const HuffmanList list = randomList(rng, {2, 254}, {1, 1}, 2);
        DecodeTable dec(list);
        EncodeTable enc(list);
        // A fast table of 256 words, and the lists of codes around it in words of 16 bits.
        decoder.add(reinterpret_cast<const Zmx16u*>(dec.bytes()), 512).words(dec.bytes() + 512, 1024);
        decoder.add(reinterpret_cast<const Zmx16u*>(dec.bytes() + 1536), 108);
        encoder.words(enc.bytes(), 1024);
        const Optimal o = optimal(rng.vec<Zmx32s>(257, 0, 1 << rng.range(1, 20)));
        best.value(o.status).add(o.bits).add(o.vals);
    }
    EXPECT_EQ(decoder.get(), 0x477E30AA71C2FB2Du);
    EXPECT_EQ(encoder.get(), 0x2781C3231F643215u);
    EXPECT_EQ(best.get(), 0x7237E1ABCBFD34E5u);
}
