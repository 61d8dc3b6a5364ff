// huffman.h - caller-held Huffman blocks and streams on two sides: the library's, flush with guard pages, and
// the model's. Each test drives both sides alike and compares every byte.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg/model/bitio.h"
#include "tests/jpeg/support/jpeg_annex_k.h"
#include "tests/support/digest.h"
#include "tests/support/guarded.h"
#include "tests/support/rng.h"
#include "zmxj.h"

#include <algorithm>
#include <numeric>

using Bytes = std::vector<Zmx8u>;
using Block = std::array<Zmx16s, 64>; // in natural order

// A block of one value.
inline Block everywhere(int value) {
    Block b;
    b.fill(Zmx16s(value));
    return b;
}

inline constexpr auto bothEnds = {GuardedBlock::AtEnd, GuardedBlock::AtStart};

// A block of a size that the library reports.
template <class Lib, class Plain> class Twin {
    Guarded<Zmx8u> block;

public:
    Plain plain;

    explicit Twin(GuardedBlock::Flush flush = GuardedBlock::AtEnd) : block(sizeof(Plain), flush) {
        std::memset(&plain, 0x5A, sizeof plain);
        share();
    }
    Lib* lib() { return reinterpret_cast<Lib*>(block.data()); }
    const Zmx8u* bytes() { return block.data(); }
    void share() { std::memcpy(block.data(), &plain, sizeof plain); } // the model's bytes to the library's side
    ::testing::AssertionResult same(std::size_t n = sizeof(Plain)) { return sameBytes(&plain, block.data(), n); }
};

// A table on both sides, built from one list; the library reads the list flush with a guard page.
template <class Lib, class Plain> struct TableTwin : Twin<Lib, Plain> {
    using Twin<Lib, Plain>::Twin;
    TableTwin(const HuffmanList& list, GuardedBlock::Flush flush = GuardedBlock::AtEnd) : Twin<Lib, Plain>(flush) {
        EXPECT_EQ(build(list), zmxStsNoErr);
    }
    ZmxStatus build(const HuffmanList& list) {
        Guarded<Zmx8u> bits(Bytes(list.bits.begin(), list.bits.end())), vals(list.vals);
        const ZmxStatus expected = build(list.bits.data(), list.vals.data(), this->plain);
        EXPECT_EQ(build(bits.data(), vals.data(), this->lib()), expected);
        EXPECT_TRUE(this->same());
        return expected;
    }

private:
    static ZmxStatus build(const Zmx8u* bits, const Zmx8u* vals, model::DecodeSpec& spec) {
        return model::buildDecodeSpec(bits, vals, spec);
    }
    static ZmxStatus build(const Zmx8u* bits, const Zmx8u* vals, model::EncodeSpec& spec) {
        return model::buildEncodeSpec(bits, vals, spec);
    }
    static ZmxStatus build(const Zmx8u* bits, const Zmx8u* vals, ZmxiDecodeHuffmanSpec* spec) {
        return zmxiDecodeHuffmanSpecInit_JPEG_8u(bits, vals, spec);
    }
    static ZmxStatus build(const Zmx8u* bits, const Zmx8u* vals, ZmxiEncodeHuffmanSpec* spec) {
        return zmxiEncodeHuffmanSpecInit_JPEG_8u(bits, vals, spec);
    }
};
using DecodeTable = TableTwin<ZmxiDecodeHuffmanSpec, model::DecodeSpec>;
using EncodeTable = TableTwin<ZmxiEncodeHuffmanSpec, model::EncodeSpec>;
using DecodeStateTwin = Twin<ZmxiDecodeHuffmanState, model::DecodeState>;
using EncodeStateTwin = Twin<ZmxiEncodeHuffmanState, model::EncodeState>;

// The block that a decoder writes and its predictor, on both sides.
struct BlockOut {
    Guarded<Zmx16s> dst;
    Block plain;
    Guarded<Zmx16s> lastDC;
    Zmx16s plainDC = 0;

    explicit BlockOut(GuardedBlock::Flush flush = GuardedBlock::AtEnd) : dst(64, flush), lastDC(1, flush) {
        dst.fill(0x1111);
        plain.fill(0x1111);
        lastDC[0] = 0;
    }
    void set(const Block& b) {
        plain = b;
        std::copy(b.begin(), b.end(), dst.data());
    }
    void setDC(int v) { lastDC[0] = plainDC = Zmx16s(v); }
    // Takes over what the library stored where it has no meaning.
    void follow() {
        plainDC = lastDC[0];
        std::copy(dst.data(), dst.data() + 64, plain.data());
    }
    ::testing::AssertionResult same() {
        if (lastDC[0] != plainDC)
            return ::testing::AssertionFailure() << "predictor " << lastDC[0] << ", expected " << plainDC;
        return sameBytes(plain.data(), dst.data(), sizeof plain);
    }
};

// One block through the library and the model. `status` is what the model says; `path` is false once nothing
// that follows has a meaning, `value` if a value in the block has none.
struct Outcome {
    ZmxStatus status;
    bool path, value;
};

// Compares what the two sides of a decoder did, as far as it has a meaning, and takes over the rest.
template <class In> Outcome settle(In& in, BlockOut& out, ZmxStatus expected, ZmxStatus got, bool path, bool noValue) {
    if (path) {
        EXPECT_EQ(got, expected);
        EXPECT_TRUE(in.same());
        if (!noValue) {
            EXPECT_TRUE(out.same());
        }
    }
    if (!path || noValue) out.follow();
    return {expected, path, path && !noValue};
}

// A stream that is read, with everything that a call moves. Index 0 of a pair is the library's.
struct StreamIn {
    Guarded<Zmx8u> src;
    int pos[2] = {}, marker[2] = {};
    DecodeStateTwin state;

    explicit StreamIn(const std::vector<Zmx8u>& bytes, GuardedBlock::Flush flush = GuardedBlock::AtEnd)
        : src(bytes, flush), state(flush) {
        restart();
    }
    int len() const { return int(src.size()); }
    // What a caller does ahead of a scan and behind a restart marker.
    void restart() {
        state.plain = {};
        state.share();
        marker[0] = marker[1] = 0;
    }
    // The same position in another stream: one that has been cut or extended.
    void resume(const StreamIn& from) {
        pos[0] = pos[1] = from.pos[1];
        marker[0] = marker[1] = from.marker[1];
        state.plain = from.state.plain;
        state.share();
    }
    // Takes over what the library left where it has no meaning.
    void follow() {
        pos[1] = pos[0];
        marker[1] = marker[0];
        std::memcpy(&state.plain, state.bytes(), sizeof state.plain);
    }
    model::Reader reader() { return {src.data(), len(), &pos[1], &marker[1], &state.plain}; }
    ::testing::AssertionResult same() {
        if (pos[0] != pos[1] || marker[0] != marker[1])
            return ::testing::AssertionFailure() << "position " << pos[0] << ", expected " << pos[1] << "; marker "
                                                 << marker[0] << ", expected " << marker[1];
        return state.same();
    }
};

// What decoding a block left, to a digest.
inline void addDecoded(Digest& digest, const Outcome& o, StreamIn& in, BlockOut& out) {
    digest.value(o.status).add(out.dst.data(), 128).value(out.lastDC[0]);
    digest.value(in.pos[0]).value(in.marker[0]).words(in.state.bytes(), 20);
}

// A stream that is written.
struct StreamOut {
    Guarded<Zmx8u> dst;
    std::vector<Zmx8u> plain;
    int pos[2] = {};
    EncodeStateTwin state;

    explicit StreamOut(int len, GuardedBlock::Flush flush = GuardedBlock::AtEnd)
        : dst(std::size_t(len), flush), plain(std::size_t(len), 0xC3), state(flush) {
        dst.fill(0xC3);
        state.plain = {};
        state.share();
    }
    int len() const { return int(plain.size()); }
    model::Writer writer() { return {plain.data(), len(), &pos[1], &state.plain}; }
    std::vector<Zmx8u> written() const { return {plain.begin(), plain.begin() + pos[1]}; }
    ::testing::AssertionResult same() {
        if (pos[0] != pos[1]) return ::testing::AssertionFailure() << "position " << pos[0] << ", expected " << pos[1];
        if (auto r = sameBytes(plain.data(), dst.data(), plain.size()); !r) return r;
        return state.same();
    }
};

// n symbols out of 0 to 255, each once, on the leaves of a random tree; `open` codes of the deepest are left
// out, which with 0 makes a complete code set. A deep tree has codes of up to 16 bits from few symbols on.
inline HuffmanList randomTree(Rng& rng, int n, int open, bool deep) {
    int leaves[17] = {1};
    for (int have = 1; have < n + open;) {
        int depth = deep ? 15 : int(rng.range(0, 15));
        while (depth >= 0 && leaves[depth] == 0) --depth;
        if (depth < 0) continue;
        if (deep && rng.oneIn(3)) {
            depth = int(rng.range(0, 15));
            if (leaves[depth] == 0) continue;
        }
        --leaves[depth];
        leaves[depth + 1] += 2;
        ++have;
    }
    for (int depth = 16; open > 0; --depth)
        for (; open > 0 && leaves[depth] > 0; --open) --leaves[depth];
    HuffmanList list;
    // A byte holds no more than 255.
    for (int depth = 1; depth <= 16; ++depth) list.bits[std::size_t(depth - 1)] = Zmx8u(std::min(leaves[depth], 255));
    std::vector<Zmx8u> all(256);
    std::iota(all.begin(), all.end(), Zmx8u(0));
    for (int i = 255; i > 0; --i) std::swap(all[std::size_t(i)], all[std::size_t(rng.range(0, i))]);
    const int total = std::accumulate(list.bits.begin(), list.bits.end(), 0);
    list.vals.assign(all.begin(), all.begin() + total);
    return list;
}

// The same with drawn parameters, one tree in `deepOneIn` deep. They are drawn here and not where they are
// passed, because compilers differ in the order in which they look at arguments.
struct Range {
    int lo, hi;
};
inline HuffmanList randomList(Rng& rng, Range symbols, Range open, int deepOneIn) {
    const int n = int(rng.range(symbols.lo, symbols.hi));
    const int left = int(rng.range(open.lo, open.hi));
    return randomTree(rng, n, left, rng.oneIn(deepOneIn));
}

// A table of up to 250 symbols for a decoder; in one of eight the code that lands on index 256 of the fast
// table.
inline HuffmanList randomDecoderList(Rng& rng) {
    const HuffmanList list = randomList(rng, {2, 250}, {0, 2}, 4);
    return rng.oneIn(8) ? HuffmanList{{2, 0, 0, 0, 0, 0, 0, 1}, {0x21, 0xF0, 0x11}} : list;
}

inline GuardedBlock::Flush randomFlush(Rng& rng) { return rng.oneIn(2) ? GuardedBlock::AtEnd : GuardedBlock::AtStart; }

// The optimal table for 257 counters, built by the library and compared with the model.
inline HuffmanList optimalList(const std::vector<Zmx32u>& counters) {
    Guarded<Zmx32s> statistics(std::vector<Zmx32s>(counters.begin(), counters.end()));
    HuffmanList list;
    Zmx8u vals[256] = {}, bits[16] = {};
    model::OptimalTrace trace;
    const ZmxStatus expected = model::optimalTable(statistics.data(), bits, vals, trace);
    Guarded<Zmx8u> libBits(16), libVals(std::size_t(trace.listed));
    EXPECT_EQ(zmxiEncodeHuffmanRawTableInit_JPEG_8u(statistics.data(), libBits.data(), libVals.data()), expected);
    EXPECT_TRUE(sameBytes(bits, libBits.data(), 16));
    EXPECT_TRUE(sameBytes(vals, libVals.data(), std::size_t(trace.listed)));
    std::copy(bits, bits + 16, list.bits.begin());
    list.vals.assign(vals, vals + trace.listed);
    return list;
}

// A block from pairs of zig-zag position and value.
inline Block blockOf(std::initializer_list<std::pair<int, int>> values) {
    Block b{};
    for (auto [k, v] : values) b[std::size_t(annexK::zigzag[k])] = Zmx16s(v);
    return b;
}

// A block with one coefficient in `oneIn` that is not 0, of up to `bits` bits.
inline Block randomBlock(Rng& rng, int oneIn, int bits) {
    Block b{};
    for (Zmx16s& c : b)
        if (rng.oneIn(oneIn)) {
            const int magnitude = int(rng.range(1, (1 << rng.range(1, bits)) - 1));
            c = Zmx16s(rng.oneIn(2) ? magnitude : -magnitude);
        }
    return b;
}

// A table of 4 bits a symbol.
inline HuffmanList nibbles(Bytes symbols) {
    HuffmanList list;
    list.bits[3] = Zmx8u(symbols.size());
    list.vals = std::move(symbols);
    return list;
}

// n random bytes, one in `ffOneIn` of them 0xFF: stuffed, or with one in `markerOneIn` a marker.
inline std::vector<Zmx8u> randomStream(Rng& rng, int n, int ffOneIn, int markerOneIn) {
    std::vector<Zmx8u> bytes;
    while (int(bytes.size()) < n) {
        bytes.push_back(Zmx8u(rng.range(0, 254)));
        if (!rng.oneIn(ffOneIn)) continue;
        bytes.back() = 0xFF;
        while (rng.oneIn(6)) bytes.push_back(0xFF);
        bytes.push_back(rng.oneIn(markerOneIn) ? Zmx8u(rng.range(1, 254)) : Zmx8u(0));
    }
    bytes.resize(std::size_t(n));
    return bytes;
}

// 0xFF and 0xD9, behind which nothing is read.
inline std::vector<Zmx8u> withMarker(std::vector<Zmx8u> bytes, Zmx8u marker = 0xD9) {
    bytes.push_back(0xFF);
    bytes.push_back(marker);
    return bytes;
}

// One byte in 40 gone wrong, but for the marker at the end.
inline Bytes damaged(Rng& rng, Bytes bytes) {
    for (std::size_t i = 0; i + 2 < bytes.size(); ++i)
        if (rng.oneIn(40)) bytes[i] = Zmx8u(rng.range(0, 254));
    return bytes;
}
