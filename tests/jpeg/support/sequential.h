// sequential.h - blocks and scans of sequential coding on two sides, the library's and the model's.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "tests/jpeg/model/sequential.h"
#include "tests/jpeg/support/huffman.h"

inline Outcome decode(StreamIn& in, BlockOut& out, DecodeTable& dc, DecodeTable& ac) {
    model::Reader r = in.reader();
    const ZmxStatus expected = model::decodeBlock(r, out.plain.data(), out.plainDC, dc.plain, ac.plain);
    const ZmxStatus got =
        zmxiDecodeHuffman8x8_JPEG_1u16s_C1(in.src.data(), in.len(), &in.pos[0], out.dst.data(), out.lastDC.data(),
                                           &in.marker[0], dc.lib(), ac.lib(), in.state.lib());
    return settle(in, out, expected, got, !r.noPath, r.noValue);
}

inline ZmxStatus encode(StreamOut& out, const Block& block, Zmx16s lastDC[2], EncodeTable& dc, EncodeTable& ac) {
    Guarded<Zmx16s> src(std::vector<Zmx16s>(block.begin(), block.end()));
    model::Writer w = out.writer();
    const ZmxStatus expected = model::encodeBlock(w, block.data(), lastDC[1], dc.plain, ac.plain);
    EXPECT_EQ(zmxiEncodeHuffman8x8_JPEG_16s1u_C1(src.data(), out.dst.data(), out.len(), &out.pos[0], &lastDC[0],
                                                 dc.lib(), ac.lib(), out.state.lib(), 0),
              expected);
    EXPECT_TRUE(out.same());
    EXPECT_EQ(lastDC[0], lastDC[1]);
    return expected;
}

inline ZmxStatus flush(StreamOut& out) {
    model::Writer w = out.writer();
    const ZmxStatus expected = model::flush(w);
    EXPECT_EQ(zmxiEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, out.dst.data(), out.len(), &out.pos[0], nullptr, nullptr,
                                                 nullptr, out.state.lib(), 1),
              expected);
    EXPECT_TRUE(out.same());
    return expected;
}

// A block alone, encoded from predictor 0 and flushed.
inline Bytes encoded(const Block& block, EncodeTable& dc, EncodeTable& ac) {
    StreamOut out(400);
    Zmx16s lastDC[2] = {};
    EXPECT_EQ(encode(out, block, lastDC, dc, ac), zmxStsNoErr);
    EXPECT_EQ(flush(out), zmxStsNoErr);
    return out.written();
}

// The tables of Annex K for luminance.
struct Luminance {
    EncodeTable encDC{annexK::dcLuminance}, encAC{annexK::acLuminance};
    DecodeTable decDC{annexK::dcLuminance}, decAC{annexK::acLuminance};
};

// Random tables of a decoder, drawn in this order.
struct RandomTables {
    GuardedBlock::Flush flush;
    DecodeTable dc, ac;

    explicit RandomTables(Rng& rng)
        : flush(randomFlush(rng)), dc(randomList(rng, {2, 40}, {0, 2}, 4), flush), ac(flush) {
        ac.build(randomDecoderList(rng));
    }
};

// Blocks of one scan, as an encoder is given them, and the stream that they make.
struct Scan {
    std::vector<Block> blocks;
    Bytes stream;
};

inline Scan makeScan(Rng& rng, int blocks, Luminance& t, int oneIn, int bits) {
    Scan scan;
    StreamOut out(blocks * 300 + 8);
    Zmx16s lastDC[2] = {};
    for (int i = 0; i < blocks; ++i) {
        const Block b = randomBlock(rng, oneIn, bits);
        EXPECT_EQ(encode(out, b, lastDC, t.encDC, t.encAC), zmxStsNoErr);
        scan.blocks.push_back(b);
    }
    EXPECT_EQ(flush(out), zmxStsNoErr);
    scan.stream = out.written();
    return scan;
}
