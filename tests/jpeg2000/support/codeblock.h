// codeblock.h - code blocks for tests: random samples, the library's encoder and decoder states, and segments
// flush against a guard page.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/support/arguments.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"
#include "zmxj.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

using BlockSamples = std::vector<Zmx32u>;

// Samples with up to `bits` magnitude bits, of one of several characters: sparse, dense, in clusters, alike,
// of one sign, at the extremes. No sample is a negative zero.
inline BlockSamples randomBlock(Rng& rng, int width, int height, int bits) {
    BlockSamples v(std::size_t(width) * std::size_t(height));
    const int kind = int(rng.range(0, 6));
    const Zmx32u most = bits >= 31 ? 0x7FFFFFFFu : (1u << bits) - 1;
    const Zmx32u same = Zmx32u(rng.range(0, most));
    const int rare = int(rng.range(2, 40)), cx = int(rng.range(0, width)), cy = int(rng.range(0, height));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            Zmx32u m = 0;
            switch (kind) {
            case 0:
                m = rng.oneIn(rare) ? Zmx32u(rng.range(1, most)) : 0;
                break;
            case 1:
                m = Zmx32u(rng.range(0, most));
                break;
            case 2: // sizes of all orders
            case 3:
                m = Zmx32u(rng.range(0, most)) >> rng.range(0, bits);
                break;
            case 4:
                m = std::abs(x - cx) + std::abs(y - cy) < 4 ? Zmx32u(rng.range(0, most)) : Zmx32u(rng.oneIn(9));
                break;
            case 5:
                m = same;
                break;
            default:
                m = rng.oneIn(2) ? most : 0;
                break;
            }
            const bool negative = kind == 5 ? same & 1 : rng.oneIn(2);
            v[std::size_t(y) * std::size_t(width) + std::size_t(x)] = m && negative ? m | 0x80000000u : m;
        }
    return v;
}

// The library's encoder state.
class EncoderState {
    ZmxiEncodeState_JPEG2K* state = nullptr;

public:
    using State = ZmxiEncodeState_JPEG2K;
    explicit EncoderState(ZmxiSize largest) { EXPECT_EQ(zmxiEncodeInitAlloc_JPEG2K(&state, largest), zmxStsNoErr); }
    ~EncoderState() { EXPECT_EQ(zmxiEncodeFree_JPEG2K(state), zmxStsNoErr); }
    EncoderState(const EncoderState&) = delete;
    EncoderState& operator=(const EncoderState&) = delete;
    operator ZmxiEncodeState_JPEG2K*() const { return state; }
};

// The library's decoder state in a buffer of exactly the size that it asks for, between guard pages.
class DecoderState {
    Guarded<Zmx8u> memory;
    static std::size_t bytesFor(ZmxiSize largest) {
        int n = 0;
        EXPECT_EQ(zmxiDecodeCBProgrGetStateSize_JPEG2K(largest, &n), zmxStsNoErr);
        return std::size_t(n);
    }

public:
    using State = ZmxiDecodeCBProgrState;
    explicit DecoderState(ZmxiSize largest, GuardedBlock::Flush flush = GuardedBlock::AtStart)
        : memory(bytesFor(largest), flush) {
        EXPECT_EQ(zmxiDecodeCBProgrInit_JPEG2K(*this), zmxStsNoErr);
    }
    operator ZmxiDecodeCBProgrState*() { return reinterpret_cast<ZmxiDecodeCBProgrState*>(memory.data()); }

    int passCounter() {
        int n = -99;
        EXPECT_EQ(zmxiDecodeCBProgrGetPassCounter_JPEG2K(*this, &n), zmxStsNoErr);
        return n;
    }
    int bitPlane() {
        int n = -99;
        EXPECT_EQ(zmxiDecodeCBProgrGetCurBitPlaneNum_JPEG2K(*this, &n), zmxStsNoErr);
        return n;
    }
};

inline constexpr ZmxStatus kContext = zmxStsContextMatchErr;

// The state of a call in which one test asks whether it is there and another for its magic word.
template <class Holder>
typename Holder::State* stateOf(const Bad& bad, int nullTest, Holder& good, int magicTest, Holder& foreign) {
    typename Holder::State* const own = good;
    return bad.null(nullTest, bad.any(magicTest, own, {foreign}));
}

// A coded block: what there is to know of it.
struct CodedBlock {
    int sfBits = -1, passes = -1, segments = -1;
    std::vector<Zmx8u> bytes;
    std::vector<int> lengths, rates;
    std::vector<double> distortions;
};

struct EncodeChoice {
    int subband = 0, magnBits = 31, termination = 0;
    Zmx32u style = 0;
};
inline EncodeChoice choice(Zmx32u style, int termination = 0, int magnBits = 31, int subband = 0) {
    return {subband, magnBits, termination, style};
}

// Loads a block; of the coded block it tells the counts.
inline CodedBlock loadBlock(ZmxiEncodeState_JPEG2K* state, const BlockSamples& samples, ZmxiSize size,
                            const EncodeChoice& how) {
    CodedBlock c;
    EXPECT_EQ(zmxiEncodeLoadCodeBlock_JPEG2K_32s_C1R(reinterpret_cast<const Zmx32s*>(samples.data()), size.width * 4,
                                                     size, state, how.subband, how.magnBits, how.termination, 0,
                                                     how.style, &c.sfBits, &c.passes, &c.segments),
              zmxStsNoErr);
    return c;
}

// Loads and stores a block with buffers of a capacity.
inline CodedBlock encodeBlock(ZmxiEncodeState_JPEG2K* state, const BlockSamples& samples, ZmxiSize size,
                              const EncodeChoice& how, int capacity = 1 << 16) {
    CodedBlock c = loadBlock(state, samples, size, how);
    std::vector<Zmx8u> piece(static_cast<std::size_t>(capacity));
    for (int more = 1; more;) {
        int n = capacity;
        const ZmxStatus status = zmxiEncodeStoreBits_JPEG2K_1u(piece.data(), &n, state, &more);
        EXPECT_EQ(status, zmxStsNoErr);
        if (status) break;
        c.bytes.insert(c.bytes.end(), piece.begin(), piece.begin() + n);
        if (c.bytes.size() > (1u << 24)) {
            ADD_FAILURE() << "the store does not end";
            break;
        }
    }
    for (int i = 0; i < c.passes; ++i) {
        int rate = -1;
        double distortion = -1;
        EXPECT_EQ(zmxiEncodeGetRate_JPEG2K(state, i, &rate), zmxStsNoErr);
        EXPECT_EQ(zmxiEncodeGetDist_JPEG2K(state, i, &distortion), zmxStsNoErr);
        c.rates.push_back(rate);
        c.distortions.push_back(distortion);
    }
    for (int i = 0; i < c.segments && c.passes; ++i) {
        int length = -1;
        EXPECT_EQ(zmxiEncodeGetTermPassLen_JPEG2K(state, i, &length), zmxStsNoErr);
        c.lengths.push_back(length);
    }
    return c;
}

// Bytes flush against a guard page; the memory is used again and again.
class FlushBytes {
    GuardedBlock room;
    GuardedBlock::Flush flush;

public:
    FlushBytes(std::size_t most, GuardedBlock::Flush f) : room(most, f), flush(f) {}
    const Zmx8u* put(const Zmx8u* p, std::size_t n) {
        Zmx8u* at = flush == GuardedBlock::AtEnd ? room.data() + (room.size() - n) : room.data();
        if (n) std::memcpy(at, p, n);
        return at;
    }
    const Zmx8u* put(const std::vector<Zmx8u>& v) { return put(v.data(), v.size()); }
};
