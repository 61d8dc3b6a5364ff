// pjhufftbl.cpp - Huffman tables and bit states of JPEG: their sizes, building, allocation and release, and
// the optimal table of given statistics (ITU-T T.81, Annex C and K.2).
// SPDX-License-Identifier: BSD-2-Clause
#include "pjhufftbl.h"

#include "pjargs.h"
#include "pjwrap.h"
#include "psalloc.h"

#include <algorithm>
#include <cstring>

namespace zmx {
namespace {

constexpr int kMaxLength = 16; // the longest code
constexpr int kMaxCodes = 256;

// ---- what the four kinds of blocks have in common

template <class Block> ZmxStatus getBufSize(int* pSize) {
    if (ZmxStatus bad = Args().ptr(pSize)) return bad;
    *pSize = int(sizeof(Block));
    return zmxStsNoErr;
}

// In this family a failed allocation is zmxStsNullPtrErr, and the result stays as it was.
template <class Block> ZmxStatus allocate(Block** ppBlock) {
    void* const p = zmxsMalloc_8u(int(sizeof(Block)));
    if (!p) return zmxStsNullPtrErr;
    *ppBlock = new (p) Block; // no initialiser: this writes nothing
    return zmxStsNoErr;
}

template <class Block> ZmxStatus release(Block* pBlock) {
    if (ZmxStatus bad = Args().ptr(pBlock)) return bad;
    zmxsFree(pBlock);
    return zmxStsNoErr;
}

// What fills in a table from the two lists of a DHT segment.
template <class Spec> using Build = ZmxStatus (*)(const Zmx8u*, const Zmx8u*, Spec*);

template <class Spec>
ZmxStatus initSpec(const Zmx8u* pListBits, const Zmx8u* pListVals, Spec* pSpec, Build<Spec> build) {
    if (ZmxStatus bad = Args().ptr(pListBits, pListVals, pSpec)) return bad;
    return build(pListBits, pListVals, pSpec);
}

// The block goes to the caller even if the table cannot be built.
template <class Spec>
ZmxStatus initAllocSpec(const Zmx8u* pListBits, const Zmx8u* pListVals, Spec** ppSpec, Build<Spec> build) {
    if (ZmxStatus bad = Args().ptr(pListBits, pListVals, ppSpec)) return bad;
    if (ZmxStatus failed = allocate(ppSpec)) return failed;
    return build(pListBits, pListVals, *ppSpec);
}

template <class State> ZmxStatus initState(State* pState) {
    if (ZmxStatus bad = Args().ptr(pState)) return bad;
    *pState = {};
    return zmxStsNoErr;
}

template <class State> ZmxStatus initAllocState(State** ppState) {
    if (ZmxStatus bad = Args().ptr(ppState)) return bad;
    if (ZmxStatus failed = allocate(ppState)) return failed;
    return initState(*ppState);
}

// BITS of a DHT segment, summed up.
int countCodes(const Zmx8u* pListBits) {
    int n = 0;
    for (int i = 0; i < kMaxLength; ++i) n += pListBits[i];
    return n;
}

} // namespace

ZmxStatus ownpj_DecodeHuffmanSpecInit(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                      ZmxiDecodeHuffmanSpec* pDecHuffSpec) {
    ZmxiDecodeHuffmanSpec& t = *pDecHuffSpec;
    t = {};
    if (countCodes(pListBits) > kMaxCodes) return zmxStsHuffTableErr;

    // That a code fits in its length is not tested on this side. Codes count modulo 2^16, as the tables hold
    // them.
    int firstCode[kMaxLength + 1];
    unsigned code = 0;
    int p = 0;
    for (int length = 1; length <= kMaxLength; ++length, code <<= 1) {
        const int count = pListBits[length - 1];
        firstCode[length] = int(code);
        if (count == 0) {
            t.maxCode[length] = kNoCode;
            continue;
        }
        t.valIndex[length] = Zmx16u(p);
        t.minCode[length] = Zmx16u(code);
        std::copy_n(pListVals + p, count, t.huffVal + p);
        p += count;
        code += unsigned(count);
        t.maxCode[length] = Zmx16u(code - 1);
    }
    t.maxCode[kMaxLength + 1] = kNoCode;

    // A code of 8 bits or less stands for all indices that begin with it.
    p = 0;
    for (int length = 1; length <= 8; ++length) {
        const int span = 1 << (8 - length);
        const int end = pListBits[length - 1] * span;
        for (int i = 0; i < end; ++i) {
            const int index = firstCode[length] * span + i;
            const Zmx16u symbol = t.huffVal[p + i / span];
            if (index > 256) return zmxStsHuffTableErr;
            if (index < 256) {
                t.fastTable[index] = Zmx32u(symbol) | Zmx32u(length) << 16;
            } else {
                // One entry too many is accepted, and lands in the word behind fastTable.
                t.minCode[0] = symbol;
                t.minCode[1] = Zmx16u(length);
            }
        }
        p += pListBits[length - 1];
    }
    return zmxStsNoErr;
}

// The other direction: from symbols to codes, in the order of Annex C.
static ZmxStatus encodeHuffmanSpecInit(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                       ZmxiEncodeHuffmanSpec* pEncHuffSpec) {
    *pEncHuffSpec = {};
    if (countCodes(pListBits) > kMaxCodes) return zmxStsHuffTableErr;

    // Nothing is stored before every code is known to be good.
    Zmx32u words[kMaxCodes];
    Zmx32u code = 0;
    int p = 0;
    for (int length = 1; length <= kMaxLength; ++length, code <<= 1) {
        for (int i = 0; i < pListBits[length - 1]; ++i) words[p++] = Zmx32u(length) << 16 | (code++ & 0xFFFF);
        // The code of all ones is refused here, though the decoder's table accepts it.
        if (pListBits[length - 1] > 0 && code >= 1u << length) return zmxStsHuffTableErr;
    }
    for (int i = 0; i < p; ++i) pEncHuffSpec->codes[pListVals[i]] = words[i];
    return zmxStsNoErr;
}

void ownpj_EncodeHuffmanStateInit(ZmxiEncodeHuffmanState* pEncHuffState) { *pEncHuffState = {}; }

} // namespace zmx

using namespace zmx;

ZmxStatus zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u(int* pSize) { return getBufSize<ZmxiDecodeHuffmanSpec>(pSize); }
ZmxStatus zmxiDecodeHuffmanStateGetBufSize_JPEG_8u(int* pSize) { return getBufSize<ZmxiDecodeHuffmanState>(pSize); }
ZmxStatus zmxiEncodeHuffmanSpecGetBufSize_JPEG_8u(int* pSize) { return getBufSize<ZmxiEncodeHuffmanSpec>(pSize); }
ZmxStatus zmxiEncodeHuffmanStateGetBufSize_JPEG_8u(int* pSize) { return getBufSize<ZmxiEncodeHuffmanState>(pSize); }

ZmxStatus zmxiDecodeHuffmanSpecInit_JPEG_8u(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                            ZmxiDecodeHuffmanSpec* pDecHuffSpec) {
    return initSpec(pListBits, pListVals, pDecHuffSpec, ownpj_DecodeHuffmanSpecInit);
}
ZmxStatus zmxiEncodeHuffmanSpecInit_JPEG_8u(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                            ZmxiEncodeHuffmanSpec* pEncHuffSpec) {
    return initSpec(pListBits, pListVals, pEncHuffSpec, encodeHuffmanSpecInit);
}
ZmxStatus zmxiDecodeHuffmanSpecInitAlloc_JPEG_8u(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                                 ZmxiDecodeHuffmanSpec** ppDecHuffSpec) {
    return initAllocSpec(pListBits, pListVals, ppDecHuffSpec, ownpj_DecodeHuffmanSpecInit);
}
ZmxStatus zmxiEncodeHuffmanSpecInitAlloc_JPEG_8u(const Zmx8u* pListBits, const Zmx8u* pListVals,
                                                 ZmxiEncodeHuffmanSpec** ppEncHuffSpec) {
    return initAllocSpec(pListBits, pListVals, ppEncHuffSpec, encodeHuffmanSpecInit);
}

ZmxStatus zmxiDecodeHuffmanStateInit_JPEG_8u(ZmxiDecodeHuffmanState* pDecHuffState) { return initState(pDecHuffState); }
ZmxStatus zmxiEncodeHuffmanStateInit_JPEG_8u(ZmxiEncodeHuffmanState* pEncHuffState) { return initState(pEncHuffState); }
ZmxStatus zmxiDecodeHuffmanStateInitAlloc_JPEG_8u(ZmxiDecodeHuffmanState** ppDecHuffState) {
    return initAllocState(ppDecHuffState);
}
ZmxStatus zmxiEncodeHuffmanStateInitAlloc_JPEG_8u(ZmxiEncodeHuffmanState** ppEncHuffState) {
    return initAllocState(ppEncHuffState);
}

ZmxStatus zmxiDecodeHuffmanSpecFree_JPEG_8u(ZmxiDecodeHuffmanSpec* pDecHuffSpec) { return release(pDecHuffSpec); }
ZmxStatus zmxiDecodeHuffmanStateFree_JPEG_8u(ZmxiDecodeHuffmanState* pDecHuffState) { return release(pDecHuffState); }
ZmxStatus zmxiEncodeHuffmanSpecFree_JPEG_8u(ZmxiEncodeHuffmanSpec* pEncHuffSpec) { return release(pEncHuffSpec); }
ZmxStatus zmxiEncodeHuffmanStateFree_JPEG_8u(ZmxiEncodeHuffmanState* pEncHuffState) { return release(pEncHuffState); }

namespace zmx {
namespace {

constexpr int kReserved = 256;   // the symbol that keeps the code of all ones from being given out
constexpr int kSymbols = 257;    // with the reserved one
constexpr int kMaxCodeSize = 32; // of the tree, ahead of limiting

// The index of the smallest frequency that is not 0, the highest one among equals; -1 if there is none up to
// the bound.
int rarest(const Zmx32s (&freq)[kSymbols], int except) {
    int best = -1;
    Zmx32s least = 1000000000;
    for (int i = 0; i < kSymbols; ++i)
        if (freq[i] != 0 && freq[i] <= least && i != except) {
            least = freq[i];
            best = i;
        }
    return best;
}

// The code size of every symbol (ITU-T T.81, figure K.1): merges the two rarest trees until one is left.
void findCodeSizes(const Zmx32s* pStatistics, int (&codeSize)[kSymbols]) {
    Zmx32s freq[kSymbols];
    int others[kSymbols]; // the next symbol of the same tree, or -1
    std::copy_n(pStatistics, kReserved, freq);
    freq[kReserved] = 1;
    std::fill(std::begin(others), std::end(others), -1);

    for (;;) {
        const int c1 = rarest(freq, -1), c2 = rarest(freq, c1);
        if (c2 < 0) return;
        freq[c1] = wrapAdd(freq[c1], freq[c2]);
        freq[c2] = 0;
        int last = c1;
        for (++codeSize[last]; others[last] >= 0; ++codeSize[last]) last = others[last];
        others[last] = c2;
        for (int i = c2; i >= 0; i = others[i]) ++codeSize[i];
    }
}

// Shortens codes to 16 bits (figure K.3): of each pair of longest codes one takes the place of their common
// prefix, and the other one shares the place of a shorter code. A tree deeper than 16 with at most 257 leaves
// has a leaf two levels above its deepest ones, or higher, so that the search for it ends.
void limitCodeSizes(Zmx8u (&bits)[kMaxCodeSize + 1]) {
    for (int i = kMaxCodeSize; i > kMaxLength; --i)
        while (bits[i] > 0) {
            int j = i - 2;
            while (bits[j] == 0) --j;
            bits[i] -= 2;
            bits[i - 1] += 1;
            bits[j + 1] += 2;
            bits[j] -= 1;
        }
}

} // namespace
} // namespace zmx

ZmxStatus zmxiEncodeHuffmanRawTableInit_JPEG_8u(const Zmx32s* pStatistics, Zmx8u* pListBits, Zmx8u* pListVals) {
    if (ZmxStatus bad = Args().ptr(pStatistics, pListBits, pListVals)) return bad;
    int codeSize[kSymbols] = {};
    findCodeSizes(pStatistics, codeSize);

    Zmx8u bits[kMaxCodeSize + 1] = {};
    for (int size : codeSize) {
        if (size > kMaxCodeSize) return zmxStsHuffTableErr;
        if (size > 0) ++bits[size];
    }
    limitCodeSizes(bits);

    // The reserved symbol has one of the longest codes.
    int longest = kMaxLength;
    while (longest > 0 && bits[longest] == 0) --longest;
    if (longest > 0) --bits[longest];
    std::copy_n(bits + 1, kMaxLength, pListBits);

    for (int size = 1; size <= kMaxCodeSize; ++size)
        for (int symbol = 0; symbol < kReserved; ++symbol)
            if (codeSize[symbol] == size) *pListVals++ = Zmx8u(symbol);
    return zmxStsNoErr;
}
