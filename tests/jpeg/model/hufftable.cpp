// hufftable.cpp - Huffman tables, the plain way. ITU-T T.81 Annex C and K.2.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/model/hufftable.h"

#include <cstring>
#include <vector>

namespace model {
namespace {

struct Code {
    int size;
    long code;
};

// The sizes in order; false if there are more than 256.
bool listSizes(const Zmx8u* bits, std::vector<Code>& codes) {
    codes.clear();
    for (int size = 1; size <= 16; ++size) {
        const int c = bits[size - 1];
        if (int(codes.size()) + c > 256) return false;
        for (int i = 0; i < c; ++i) codes.push_back({size, 0});
    }
    return true;
}

// The canonical codes, without a test that they fit.
void assignCodes(std::vector<Code>& codes) {
    if (codes.empty()) return;
    long next = 0;
    int size = codes[0].size;
    for (Code& c : codes) {
        for (; size < c.size; ++size) next *= 2;
        c.code = next++;
    }
}

// Whether after the last code of some size the next code has reached 2^size.
bool overflows(const std::vector<Code>& codes) {
    for (std::size_t i = 0; i < codes.size(); ++i)
        if ((i + 1 == codes.size() || codes[i + 1].size != codes[i].size) && codes[i].code + 1 >= (1L << codes[i].size))
            return true;
    return false;
}

} // namespace

ZmxStatus buildDecodeSpec(const Zmx8u* bits, const Zmx8u* vals, DecodeSpec& spec) {
    std::memset(&spec, 0, sizeof spec);
    std::vector<Code> codes;
    if (!listSizes(bits, codes)) return zmxStsHuffTableErr;
    assignCodes(codes);
    int p = 0;
    for (int size = 1; size <= 16; ++size) {
        const int c = bits[size - 1];
        if (c == 0) {
            spec.maxCode[size] = 65535;
            continue;
        }
        spec.valIndex[size] = Zmx16u(p);
        spec.minCode[size] = Zmx16u(codes[std::size_t(p)].code);
        for (int i = 0; i < c; ++i) spec.huffVal[p + i] = vals[p + i];
        p += c;
        spec.maxCode[size] = Zmx16u(codes[std::size_t(p) - 1].code);
    }
    spec.maxCode[17] = 65535;
    for (std::size_t i = 0; i < codes.size() && codes[i].size <= 8; ++i) {
        const int shift = 8 - codes[i].size;
        for (long n = 0; n < (1L << shift); ++n) {
            const long index = (codes[i].code << shift) + n;
            if (index > 256) return zmxStsHuffTableErr;
            if (index < 256) {
                spec.fastTable[index] = Zmx32u(codes[i].size) << 16 | vals[i];
            } else { // the word behind fastTable
                spec.minCode[0] = vals[i];
                spec.minCode[1] = Zmx16u(codes[i].size);
            }
        }
    }
    return zmxStsNoErr;
}

ZmxStatus buildEncodeSpec(const Zmx8u* bits, const Zmx8u* vals, EncodeSpec& spec) {
    std::memset(&spec, 0, sizeof spec);
    std::vector<Code> codes;
    if (!listSizes(bits, codes)) return zmxStsHuffTableErr;
    assignCodes(codes);
    if (overflows(codes)) return zmxStsHuffTableErr;
    for (std::size_t i = 0; i < codes.size(); ++i)
        spec.word[vals[i]] = Zmx32u(codes[i].size) << 16 | Zmx32u(codes[i].code);
    return zmxStsNoErr;
}

ZmxStatus optimalTable(const Zmx32s* statistics, Zmx8u* bits, Zmx8u* vals) {
    OptimalTrace trace;
    return optimalTable(statistics, bits, vals, trace);
}

ZmxStatus optimalTable(const Zmx32s* statistics, Zmx8u* bits, Zmx8u* vals, OptimalTrace& trace) {
    trace = {};
    Zmx32s freq[257];
    for (int i = 0; i < 256; ++i) freq[i] = statistics[i];
    freq[256] = 1;
    int* codeSize = trace.codeSize;
    int others[257];
    for (int& o : others) o = -1;
    Zmx8u count[33] = {}; // bytes: 256 of one size count as none

    // The index of the smallest frequency that is not 0, the highest index among equals.
    const auto smallest = [&](int except) {
        int best = -1;
        Zmx32s value = 1000000000;
        for (int i = 0; i < 257; ++i)
            if (freq[i] != 0 && freq[i] <= value && i != except) {
                value = freq[i];
                best = i;
            }
        return best;
    };
    const auto deepen = [&](int i) {
        for (;;) {
            ++codeSize[i];
            if (others[i] == -1) return i;
            i = others[i];
        }
    };
    for (;;) {
        const int c1 = smallest(-1);
        const int c2 = smallest(c1);
        if (c1 < 0 || c2 < 0) break;
        freq[c1] = Zmx32s(Zmx32u(freq[c1]) + Zmx32u(freq[c2]));
        freq[c2] = 0;
        others[deepen(c1)] = c2;
        deepen(c2);
    }
    for (int i = 0; i < 257; ++i)
        if (codeSize[i] != 0) {
            if (codeSize[i] > 32) return zmxStsHuffTableErr;
            ++count[codeSize[i]];
        }
    for (int i = 32; i > 16; --i)
        while (count[i] > 0) {
            int j = i - 2;
            while (j > 0 && count[j] == 0) --j;
            count[i] = Zmx8u(count[i] - 2);
            count[i - 1] = Zmx8u(count[i - 1] + 1);
            count[j + 1] = Zmx8u(count[j + 1] + 2);
            count[j] = Zmx8u(count[j] - 1);
        }
    int last = 16;
    while (last > 0 && count[last] == 0) --last;
    if (last > 0) --count[last];
    std::memcpy(bits, count + 1, 16);
    for (int size = 1; size <= 32; ++size)
        for (int j = 0; j < 256; ++j)
            if (codeSize[j] == size) vals[trace.listed++] = Zmx8u(j);
    return zmxStsNoErr;
}

} // namespace model
