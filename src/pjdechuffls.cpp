// pjdechuffls.cpp - decoding of lossless differences (ITU-T T.81, H.2.2): one, or a row of up to four planes.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjbitread.h"
#include "pjfastread.h"

#include <algorithm>

namespace zmx {
namespace {

// A category and the bits behind it (ITU-T T.81, H.1.2.2): the difference modulo 2^16.
ZmxStatus decodeDifference(BitReader& in, Zmx16s* pDst, const ZmxiDecodeHuffmanSpec& table) {
    int s;
    if (ZmxStatus failed = ownpj_DecodeHuffSymbol(in, &s, table)) return failed;
    if (s == 0) {
        *pDst = 0;
    } else if (s >= 16) { // the one difference of category 16 has no bits of its own
        *pDst = -32768;
    } else {
        if (ZmxStatus failed = need(in, s)) return failed;
        *pDst = Zmx16s(extend(in.take(s), s));
    }
    return zmxStsNoErr;
}

// A row of interleaved samples: pixel after pixel, and within a pixel plane after plane, each with its table.
struct Row {
    Zmx16s* plane[4];
    const ZmxiDecodeHuffmanSpec* table[4];
    int planes, width;

    // Calls decode(table, difference) for each difference from plane c of pixel x on, until it returns a status
    // other than 0. The last one called is left in x and c.
    template <class Decode> ZmxStatus each(int& x, int& c, Decode decode) const {
        for (; x < width; ++x, c = 0)
            for (; c < planes; ++c)
                if (ZmxStatus failed = decode(*table[c], plane[c][x])) return failed;
        return zmxStsNoErr;
    }
    // Whether no code stands for more than category 16: those have no bits of their own either.
    bool hasCategories() const {
        return std::all_of(table, table + planes, [](const ZmxiDecodeHuffmanSpec* t) {
            return *std::max_element(t->huffVal, t->huffVal + 256) <= 16;
        });
    }
};

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiDecodeHuffmanOne_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                             int* pMarker, const ZmxiDecodeHuffmanSpec* pDecHuffTable,
                                             ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad = Args().ptr(pSrc).size(nSrcLen).ptr(pSrcCurrPos, pDst, pMarker, pDecHuffTable, pDecHuffState))
        return bad;
    BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
    return decodeDifference(in, pDst, *pDecHuffTable);
}

ZmxStatus zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos,
                                               Zmx16s* const pDstPlanes[4], int nWidth, int nPlanes, int* pMarker,
                                               const ZmxiDecodeHuffmanSpec* const pDecHuffTables[4],
                                               ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad = Args()
                            .ptr(pSrc)
                            .size(nSrcLen)
                            .ptr(pSrcCurrPos, pDstPlanes)
                            .size(nWidth)
                            .size(nPlanes)
                            .ptr(pMarker, pDecHuffTables, pDecHuffState))
        return bad;
    Row row{{}, {}, std::min(nPlanes, 4), nWidth}; // further planes are not looked at
    for (int c = 0; c < row.planes; ++c) {
        if (ZmxStatus bad = Args().ptr(pDstPlanes[c], pDecHuffTables[c])) return bad;
        row.plane[c] = pDstPlanes[c];
        row.table[c] = pDecHuffTables[c];
    }

    BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
    int x = 0, c = 0;
    if (FastReader<BitReader>::suits(in) && row.hasCategories()) {
        FastReader<BitReader> fast(in);
        row.each(x, c, [&fast](const ZmxiDecodeHuffmanSpec& table, Zmx16s& difference) {
            if (!fast.refill()) return zmxStsErr;
            const int s = fast.symbol(table);
            if (s < 0) return zmxStsErr;
            difference = s == 16 ? Zmx16s(-32768) : Zmx16s(fast.value());
            return zmxStsNoErr;
        });
        fast.leave(in); // known to be possible: of the 56 bits of a refill no more than 31 are taken
    }
    return row.each(x, c, [&in](const ZmxiDecodeHuffmanSpec& table, Zmx16s& difference) {
        return decodeDifference(in, &difference, table);
    });
}
