// entropy.h - Huffman tables, bit states and coefficients for the digests of JPEG entropy coding.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/digests/digests.h"

#include <algorithm>

// The lists of a DHT segment.
struct Lists {
    Zmx8u bits[16] = {}, vals[256] = {};
};

// Lists of a table with a code for each of the lowest `symbols` symbols; few of them are frequent.
inline Lists listsFor(Random& random, int symbols) {
    Zmx32s statistics[257] = {};
    for (int s = 0; s < symbols; ++s) {
        const int unit = 1 << random.range(0, 12);
        statistics[s] = 1 + unit * random.range(0, 3);
    }
    Lists lists;
    zmxiEncodeHuffmanRawTableInit_JPEG_8u(statistics, lists.bits, lists.vals);
    return lists;
}

// An opaque block of the size that the library asks for.
template <class T> class Opaque {
    std::vector<std::uint64_t> memory;

public:
    explicit Opaque(ZmxStatus (*getBufSize)(int*)) {
        int size = 0;
        getBufSize(&size);
        memory.assign(std::size_t(size) / 8 + 1, 0);
    }
    T* get() { return reinterpret_cast<T*>(memory.data()); }
};

struct EncodeTable : Opaque<ZmxiEncodeHuffmanSpec> {
    explicit EncodeTable(const Lists& lists) : Opaque(zmxiEncodeHuffmanSpecGetBufSize_JPEG_8u) {
        zmxiEncodeHuffmanSpecInit_JPEG_8u(lists.bits, lists.vals, get());
    }
};
struct DecodeTable : Opaque<ZmxiDecodeHuffmanSpec> {
    explicit DecodeTable(const Lists& lists) : Opaque(zmxiDecodeHuffmanSpecGetBufSize_JPEG_8u) {
        zmxiDecodeHuffmanSpecInit_JPEG_8u(lists.bits, lists.vals, get());
    }
};
struct EncodeState : Opaque<ZmxiEncodeHuffmanState> {
    EncodeState() : Opaque(zmxiEncodeHuffmanStateGetBufSize_JPEG_8u) { zmxiEncodeHuffmanStateInit_JPEG_8u(get()); }
};
struct DecodeState : Opaque<ZmxiDecodeHuffmanState> {
    DecodeState() : Opaque(zmxiDecodeHuffmanStateGetBufSize_JPEG_8u) { zmxiDecodeHuffmanStateInit_JPEG_8u(get()); }
};

// A stream that grows call by call, and the state that goes with it.
struct Writer {
    std::vector<Zmx8u> bytes;
    int position = 0;
    EncodeState state;

    explicit Writer(std::size_t capacity) : bytes(capacity) {}
    int capacity() const { return int(bytes.size()); }
    // What was written so far.
    std::vector<Zmx8u> written() const { return {bytes.begin(), bytes.begin() + std::min(position, capacity())}; }
};

// A stream that is read, behind which an end-of-image marker stands.
struct Reader {
    std::vector<Zmx8u> bytes;
    int position = 0, marker = 0;
    DecodeState state;

    explicit Reader(const std::vector<Zmx8u>& stream) : bytes(stream) {
        bytes.push_back(0xFF);
        bytes.push_back(0xD9);
    }
    int length() const { return int(bytes.size()); }
    void digest(Digest& digest) const { digest.value(position).value(marker); }
};

// A stream with some bytes replaced and possibly cut.
inline std::vector<Zmx8u> damaged(Random& random, std::vector<Zmx8u> stream) {
    for (int n = random.range(1, 4); n > 0 && !stream.empty(); --n)
        stream[std::size_t(random.range(0, int(stream.size()) - 1))] =
            random.oneIn(4) ? 0xFF : Zmx8u(random.range(0, 255));
    if (random.oneIn(3)) stream.resize(std::size_t(random.range(1, int(stream.size()) + 1) - 1));
    return stream;
}

// Coefficients as a quantiser leaves them: small and few, or at times many and up to `largest`.
struct Coefficients {
    Zmx16s at[64] = {};

    Coefficients() = default;
    Coefficients(Random& random, int largest) {
        const int filled = random.oneIn(4) ? 64 : random.range(0, 12),
                  most = random.oneIn(3) ? largest : std::min(largest, 7);
        for (int i = 0; i < filled; ++i) at[random.range(0, 63)] = Zmx16s(random.range(-most, most));
        at[0] = Zmx16s(random.range(-largest, largest));
    }
};
