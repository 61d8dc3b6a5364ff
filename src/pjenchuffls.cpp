// pjenchuffls.cpp - encoding of lossless differences (ITU-T T.81, H.1.2.2): one, or a row of up to four planes; and the
// counting of their symbols.
#include "pjargs.h"
#include "pjbitwrite.h"

#include <algorithm>

namespace {

ZmxStatus encodeDifference(int v, const ZmxiEncodeHuffmanSpec& table, BitWriter& out) {
    const int s = category(v);
    return writeCoded(table, s, s < 16 ? s : 0, v, out); // category 16 is one value and needs no bits
}

} // namespace

ZmxStatus zmxiEncodeHuffmanOne_JPEG_16s1u_C1(const Zmx16s* pSrc, Zmx8u* pDst, int dstLenBytes, int* pDstCurrPos,
                                             const ZmxiEncodeHuffmanSpec* pEncHuffTable,
                                             ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState) {
    // What a flush needs comes first: required here.
    if (ZmxStatus bad = Args().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos).ptr(pEncHuffState)) return bad;
    if (bFlushState) return flushWriter(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    if (ZmxStatus bad = Args().ptr(pSrc).ptr(pEncHuffTable)) return bad;
    BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    return encodeDifference(*pSrc, *pEncHuffTable, out);
}

ZmxStatus zmxiEncodeHuffmanRow_JPEG_16s1u_P4C1(const Zmx16s* const pSrcPlanes[4], int nWidth, int nPlanes, Zmx8u* pDst,
                                               int dstLenBytes, int* pDstCurrPos,
                                               const ZmxiEncodeHuffmanSpec* const pEncHuffTables[4],
                                               ZmxiEncodeHuffmanState* pEncHuffState, int bFlushState) {
    if (ZmxStatus bad = Args().ptr(pDst).size(dstLenBytes).ptr(pDstCurrPos).ptr(pEncHuffState)) return bad;
    if (bFlushState) return flushWriter(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    if (ZmxStatus bad = Args().ptr(pSrcPlanes).size(nWidth).size(nPlanes).ptr(pEncHuffTables)) return bad;
    const int planes = std::min(nPlanes, 4); // further ones are not looked at
    for (int c = 0; c < planes; ++c)
        if (ZmxStatus bad = Args().ptr(pSrcPlanes[c]).ptr(pEncHuffTables[c])) return bad;

    BitWriter out(pDst, dstLenBytes, pDstCurrPos, pEncHuffState);
    for (int x = 0; x < nWidth; ++x)
        for (int c = 0; c < planes; ++c)
            if (ZmxStatus failed = encodeDifference(pSrcPlanes[c][x], *pEncHuffTables[c], out)) return failed;
    return zmxStsNoErr;
}

ZmxStatus zmxiGetHuffmanStatisticsOne_JPEG_16s_C1(const Zmx16s* pSrc, Zmx32u* pStatistics) {
    if (ZmxStatus bad = Args().ptr(pSrc).ptr(pStatistics)) return bad;
    ++pStatistics[category(*pSrc)]; // zmxStsRangeErr is for a category above 16, which no 16-bit value has
    return zmxStsNoErr;
}
