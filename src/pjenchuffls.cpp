// pjenchuffls.cpp - encoding of lossless differences (ITU-T T.81, H.1.2.2): one, or a row of up to four
// planes; and the counting of their symbols.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjbitwrite.h"
#include "pjfastwrite.h"

#include <algorithm>

namespace zmx {
namespace {

// A category and the bits behind it.
ZmxStatus encodeDifference(int v, const ZmxiEncodeHuffmanSpec& table, BitWriter& out) {
    const int s = category(v);
    return writeCoded(table, s, s < 16 ? s : 0, v, out); // category 16 is one value and needs no bits
}

// The same where there is room.
ZmxStatus encodeDifference(int v, const ZmxiEncodeHuffmanSpec& table, FastWriter& out) {
    const int s = category(v), n = s & 15;
    const Zmx32u code = table.codes[s];
    if (code >> 16 == 0) return zmxStsHuffTableErr;
    out.put(std::uint64_t(code & 0xFFFF) << n | (valueBits(v) & ((1u << n) - 1)), int(code >> 16) + n);
    return zmxStsNoErr;
}

// A row of interleaved samples: pixel after pixel, and within a pixel plane after plane, each with its table.
struct Row {
    const Zmx16s* plane[4];
    const ZmxiEncodeHuffmanSpec* table[4];
    int planes;

    // Codes the differences of pixels from x up to end.
    template <class Writer> ZmxStatus encode(int x, int end, Writer& out) const {
        for (; x < end; ++x)
            for (int c = 0; c < planes; ++c)
                if (ZmxStatus failed = encodeDifference(plane[c][x], *table[c], out)) return failed;
        return zmxStsNoErr;
    }
};

// The bytes that n differences may take: each a code of 16 bits and a value of 15 (none for category 16), seven bits
// pending ahead of the first, and every byte stuffed. The bit to spare of each makes room for the pending ones, and
// whole bytes alone are written.
constexpr int kWorstDifference = 8, kDifferenceBits = kMostCodeBits + kMostValueBits - 1;
static_assert(kWorstDifference == 2 * ((kDifferenceBits + 7) / 8)); // n = 1
static_assert(8 * kWorstDifference == 2 * (kDifferenceBits + 1));   // each further one

} // namespace
} // namespace zmx

using namespace zmx;

ZmxStatus zmxiEncodeHuffmanOne_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes, int* pDstCurrPos,
                                             const ZmxiEncodeHuffmanSpec* pEncHuffTable,
                                             ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState) {
    // What a flush needs comes first: required here.
    if (ZmxStatus bad = Args().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos, pEncHuffState)) return bad;
    if (bFlushState) return flushWriter(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    if (ZmxStatus bad = Args().ptr(pSrc, pEncHuffTable)) return bad;
    BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    return encodeDifference(*pSrc, *pEncHuffTable, out);
}

ZmxStatus zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(const Zmx16s* const pSrcPlanes[4], int nWidth, int nPlanes, Zmx8u* pDst,
                                               int dstLenBytes, int* pDstCurrPos,
                                               const ZmxiEncodeHuffmanSpec* const pEncHuffTables[4],
                                               ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState) {
    if (ZmxStatus bad = Args().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos, pEncHuffState)) return bad;
    if (bFlushState) return flushWriter(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    if (ZmxStatus bad = Args().ptr(pSrcPlanes).size(nWidth).size(nPlanes).ptr(pEncHuffTables)) return bad;
    Row row{{}, {}, std::min(nPlanes, 4)}; // further planes are not looked at
    for (int c = 0; c < row.planes; ++c) {
        if (ZmxStatus bad = Args().ptr(pSrcPlanes[c], pEncHuffTables[c])) return bad;
        row.plane[c] = pSrcPlanes[c];
        row.table[c] = pEncHuffTables[c];
    }

    BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    int x = 0;
    while (x < nWidth && out.regular()) {
        const int pixels = out.room() / (kWorstDifference * row.planes);
        if (pixels < 1) break;
        const int end = x + std::min(pixels, nWidth - x);
        FastWriter fast(out);
        const ZmxStatus status = row.encode(x, end, fast);
        fast.leave(out);
        if (status) return status;
        x = end;
    }
    return row.encode(x, nWidth, out);
}

ZmxStatus zmxiGetHuffmanStatisticsOne_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pStatistics) {
    if (ZmxStatus bad = Args().ptr(pSrc, pStatistics)) return bad;
    ++pStatistics[category(*pSrc)]; // zmxStsRangeErr is for a category above 16, which no 16-bit value has
    return zmxStsNoErr;
}
