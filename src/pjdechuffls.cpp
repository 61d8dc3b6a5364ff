// pjdechuffls.cpp - decoding of lossless differences (ITU-T T.81, H.2.2): one, or a row of up to four planes.
#include "pjargs.h"
#include "pjbitread.h"

#include <algorithm>

namespace {

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

} // namespace

ZmxStatus zmxiDecodeHuffmanOne_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                             int* pMarker, const ZmxiDecodeHuffmanSpec* pDecHuffTable,
                                             ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad = Args().ptr(pSrc).size(nSrcLen).ptr(pSrcCurrPos).ptr(pDst).ptr(pMarker).ptr(pDecHuffTable)
                            .ptr(pDecHuffState)) return bad;
    BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
    return decodeDifference(in, pDst, *pDecHuffTable);
}

ZmxStatus zmxiDecodeHuffmanRow_JPEG_1u16s_C1P4(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos,
                                               Zmx16s* const pDstPlanes[4], int nWidth, int nPlanes, int* pMarker,
                                               const ZmxiDecodeHuffmanSpec* const pDecHuffTables[4],
                                               ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad = Args().ptr(pSrc).size(nSrcLen).ptr(pSrcCurrPos).ptr(pDstPlanes).size(nWidth).size(nPlanes)
                            .ptr(pMarker).ptr(pDecHuffTables).ptr(pDecHuffState)) return bad;
    const int planes = std::min(nPlanes, 4); // further ones are not looked at
    for (int c = 0; c < planes; ++c)
        if (ZmxStatus bad = Args().ptr(pDstPlanes[c]).ptr(pDecHuffTables[c])) return bad;

    BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
    for (int x = 0; x < nWidth; ++x)
        for (int c = 0; c < planes; ++c)
            if (ZmxStatus failed = decodeDifference(in, &pDstPlanes[c][x], *pDecHuffTables[c])) return failed;
    return zmxStsNoErr;
}
