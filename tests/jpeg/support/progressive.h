// progressive.h - one call of each progressive coder on two sides, the library's and the model's.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg/model/progressive.h"
#include "tests/jpeg/support/huffman.h"

using model::Band;

inline constexpr Band kAll{1, 63, 0};

// A table of 8 bits a symbol for all symbols but 255: the code is the symbol.
inline HuffmanList octets() {
    HuffmanList list;
    list.bits[7] = 255;
    list.vals.resize(255);
    std::iota(list.vals.begin(), list.vals.end(), Zmx8u(0));
    return list;
}

// One call of a decoder: lib() is the library's, plain(reader, astray) the model's.
template <class Lib, class Plain> Outcome decodeBoth(StreamIn& in, BlockOut& out, Lib lib, Plain plain) {
    model::Reader r = in.reader();
    bool astray = false;
    const ZmxStatus expected = plain(r, astray);
    const ZmxStatus got = lib();
    // A run whose bits are not there has no meaning either.
    if (r.noValue) std::memcpy(&in.state.plain.eobRun, in.state.bytes() + 12, 4);
    return settle(in, out, expected, got, !r.noPath && !astray, r.noValue);
}

inline Outcome decodeDCFirst(StreamIn& in, BlockOut& out, int al, DecodeTable& dc) {
    return decodeBoth(
        in, out,
        [&] {
            return zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(in.src.data(), in.len(), &in.pos[0], out.dst.data(),
                                                              out.lastDC.data(), &in.marker[0], al, dc.lib(),
                                                              in.state.lib());
        },
        [&](model::Reader& r, bool&) { return model::decodeDCFirst(r, out.plain.data(), out.plainDC, al, dc.plain); });
}

inline Outcome decodeDCRefine(StreamIn& in, BlockOut& out, int al) {
    return decodeBoth(
        in, out,
        [&] {
            return zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(in.src.data(), in.len(), &in.pos[0], out.dst.data(),
                                                               &in.marker[0], al, in.state.lib());
        },
        [&](model::Reader& r, bool&) { return model::decodeDCRefine(r, out.plain.data(), al); });
}

inline Outcome decodeACFirst(StreamIn& in, BlockOut& out, Band b, DecodeTable& ac) {
    return decodeBoth(
        in, out,
        [&] {
            return zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(in.src.data(), in.len(), &in.pos[0], out.dst.data(),
                                                              &in.marker[0], b.ss, b.se, b.al, ac.lib(),
                                                              in.state.lib());
        },
        [&](model::Reader& r, bool& astray) { return model::decodeACFirst(r, out.plain.data(), b, ac.plain, astray); });
}

inline Outcome decodeACRefine(StreamIn& in, BlockOut& out, Band b, DecodeTable& ac) {
    return decodeBoth(
        in, out,
        [&] {
            return zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(in.src.data(), in.len(), &in.pos[0], out.dst.data(),
                                                               &in.marker[0], b.ss, b.se, b.al, ac.lib(),
                                                               in.state.lib());
        },
        [&](model::Reader& r, bool&) { return model::decodeACRefine(r, out.plain.data(), b, ac.plain); });
}

// One call of an encoder. The block stands flush with a guard page.
template <class Lib, class Plain> ZmxStatus encodeBoth(StreamOut& out, Lib lib, Plain plain) {
    model::Writer w = out.writer();
    const ZmxStatus expected = plain(w);
    EXPECT_EQ(lib(), expected);
    EXPECT_TRUE(out.same());
    return expected;
}

struct BlockIn : Guarded<Zmx16s> {
    explicit BlockIn(const Block& b) : Guarded<Zmx16s>(std::vector<Zmx16s>(b.begin(), b.end())) {}
};

inline ZmxStatus encodeDCFirst(StreamOut& out, const Block& block, Zmx16s lastDC[2], int al, EncodeTable& dc) {
    BlockIn src(block);
    const ZmxStatus s = encodeBoth(
        out,
        [&] {
            return zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(src.data(), out.dst.data(), out.len(), &out.pos[0],
                                                              &lastDC[0], al, dc.lib(), out.state.lib(), 0);
        },
        [&](model::Writer& w) { return model::encodeDCFirst(w, block.data(), lastDC[1], al, dc.plain); });
    EXPECT_EQ(lastDC[0], lastDC[1]);
    return s;
}

inline ZmxStatus encodeDCRefine(StreamOut& out, const Block& block, int al) {
    BlockIn src(block);
    return encodeBoth(
        out,
        [&] {
            return zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(src.data(), out.dst.data(), out.len(), &out.pos[0], al,
                                                               out.state.lib(), 0);
        },
        [&](model::Writer& w) { return model::encodeDCRefine(w, block.data(), al); });
}

inline ZmxStatus encodeACFirst(StreamOut& out, const Block& block, Band b, EncodeTable& ac) {
    BlockIn src(block);
    return encodeBoth(
        out,
        [&] {
            return zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(src.data(), out.dst.data(), out.len(), &out.pos[0], b.ss,
                                                              b.se, b.al, ac.lib(), out.state.lib(), 0);
        },
        [&](model::Writer& w) { return model::encodeACFirst(w, block.data(), b, ac.plain); });
}

inline ZmxStatus encodeACRefine(StreamOut& out, const Block& block, Band b, EncodeTable& ac) {
    BlockIn src(block);
    return encodeBoth(
        out,
        [&] {
            return zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(src.data(), out.dst.data(), out.len(), &out.pos[0], b.ss,
                                                               b.se, b.al, ac.lib(), out.state.lib(), 0);
        },
        [&](model::Writer& w) { return model::encodeACRefine(w, block.data(), b, ac.plain); });
}

// The flushes, with nothing else than they need.
inline ZmxStatus flushDCFirst(StreamOut& out) {
    return encodeBoth(
        out,
        [&] {
            return zmxiEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(nullptr, out.dst.data(), out.len(), &out.pos[0], nullptr,
                                                              -1, nullptr, out.state.lib(), 1);
        },
        [](model::Writer& w) { return model::flush(w); });
}
inline ZmxStatus flushDCRefine(StreamOut& out) {
    return encodeBoth(
        out,
        [&] {
            return zmxiEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(nullptr, out.dst.data(), out.len(), &out.pos[0], 99,
                                                               out.state.lib(), 1);
        },
        [](model::Writer& w) { return model::flush(w); });
}
inline ZmxStatus flushACFirst(StreamOut& out, EncodeTable& ac) {
    return encodeBoth(
        out,
        [&] {
            return zmxiEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(nullptr, out.dst.data(), out.len(), &out.pos[0], 0, 99,
                                                              -1, ac.lib(), out.state.lib(), 1);
        },
        [&](model::Writer& w) { return model::flushACFirst(w, ac.plain); });
}
inline ZmxStatus flushACRefine(StreamOut& out, EncodeTable& ac) {
    return encodeBoth(
        out,
        [&] {
            return zmxiEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(nullptr, out.dst.data(), out.len(), &out.pos[0], 0, 99,
                                                               -1, ac.lib(), out.state.lib(), 1);
        },
        [&](model::Writer& w) { return model::flushACRefine(w, ac.plain); });
}

// The counters of a pass over a scan, and its state.
struct Pass {
    Guarded<Zmx32u> counts;
    std::vector<Zmx32u> plain = std::vector<Zmx32u>(257);
    EncodeStateTwin state;

    Pass() : counts(257) {
        counts.fill(0);
        state.plain = {};
        state.share();
    }
    // Which correction bits a counting pass notes is its own affair: nothing reads them.
    ::testing::AssertionResult same() {
        if (auto r = sameBytes(plain, counts.copy()); !r) return r;
        return state.same(20);
    }
};

enum class AC { First, Refine };

inline ZmxStatus countAC(Pass& pass, AC kind, const Block& block, Band b) {
    BlockIn src(block);
    const bool first = kind == AC::First;
    const ZmxStatus expected =
        (first ? model::countACFirst : model::countACRefine)(block.data(), pass.plain.data(), b, pass.state.plain);
    const auto lib =
        first ? zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1 : zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1;
    EXPECT_EQ(lib(src.data(), pass.counts.data(), b.ss, b.se, b.al, pass.state.lib(), 0), expected);
    EXPECT_TRUE(pass.same());
    return expected;
}

inline ZmxStatus flushCount(Pass& pass, AC kind) {
    const ZmxStatus expected = model::flushCount(pass.plain.data(), pass.state.plain);
    const auto lib = kind == AC::First ? zmxiGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1
                                       : zmxiGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1;
    EXPECT_EQ(lib(nullptr, pass.counts.data(), 0, 99, -1, pass.state.lib(), 1), expected);
    EXPECT_TRUE(pass.same());
    EXPECT_TRUE(pass.state.same()) << "all zero";
    return expected;
}

inline ZmxStatus countDC(Pass& pass, const Block& block, Zmx16s lastDC[2], int al) {
    BlockIn src(block);
    const ZmxStatus expected = model::countDCFirst(block.data(), pass.plain.data(), lastDC[1], al);
    EXPECT_EQ(zmxiGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(src.data(), pass.counts.data(), &lastDC[0], al),
              expected);
    EXPECT_EQ(lastDC[0], lastDC[1]);
    EXPECT_TRUE(pass.same());
    return expected;
}
