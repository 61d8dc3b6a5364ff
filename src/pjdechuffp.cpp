// pjdechuffp.cpp - decoding of one block's share of a progressive scan (ITU-T T.81, G.2).
//
// The block keeps what earlier scans left. Positions are not tested against the band: a damaged stream may write outside
// it, but the walk's table keeps every position within the block.
#include "pjargs.h"
#include "pjband.h"
#include "pjdecwalk.h"

namespace {

// A symbol's run and category (high and low four bits).
struct RunSize {
    int r, s;
};

ZmxStatus decodeRunSize(BitReader& in, RunSize* pResult, const ZmxiDecodeHuffmanSpec& table) {
    int symbol;
    if (ZmxStatus failed = ownpj_DecodeHuffSymbol(in, &symbol, table)) return failed;
    *pResult = {symbol >> 4, symbol & 15};
    return zmxStsNoErr;
}

// The run of EOBn: 2^n and n further bits. Where those are missing the run stays 2^n.
ZmxStatus decodeEobRun(BitReader& in, int n, Zmx32s* pEobRun) {
    *pEobRun = 1 << n;
    if (n == 0) return zmxStsNoErr; // asks for no bits, not even with a negative count
    if (ZmxStatus failed = need(in, n)) return failed;
    *pEobRun += int(in.take(n));
    return zmxStsNoErr;
}

Args bandArgs(const Zmx8u* pSrc, int nSrcLen, const int* pSrcCurrPos, const Zmx16s* pDst, const int* pMarker, int Ss,
              int Se, int Al, const ZmxiDecodeHuffmanSpec* pAcTable, const ZmxiDecodeHuffmanState* pDecHuffState) {
    return Args().ptr(pSrc).size(nSrcLen).ptr(pSrcCurrPos).ptr(pDst).ptr(pMarker).arg(badBand(Ss, Se, Al)).ptr(pAcTable)
        .ptr(pDecHuffState);
}

} // namespace

ZmxStatus zmxiDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                                     Zmx16s* pLastDC, int* pMarker, int Al,
                                                     const ZmxiDecodeHuffmanSpec* pDcTable,
                                                     ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad = Args().ptr(pSrc).size(nSrcLen).ptr(pSrcCurrPos).ptr(pDst).ptr(pLastDC).ptr(pMarker)
                            .arg(badShift(Al)).ptr(pDcTable).ptr(pDecHuffState)) return bad;
    BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
    if (ZmxStatus failed = decodeDC(in, pLastDC, *pDcTable)) return failed;
    pDst[0] = wrap16s(*pLastDC << Al); // the prediction is the value ahead of the shift
    return zmxStsNoErr;
}

ZmxStatus zmxiDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                                      int* pMarker, int Al, ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad = Args().ptr(pSrc).size(nSrcLen).ptr(pSrcCurrPos).ptr(pDst).ptr(pMarker).arg(badShift(Al))
                            .ptr(pDecHuffState)) return bad;
    BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
    if (ZmxStatus failed = need(in, 1)) return failed;
    if (in.take(1)) pDst[0] = Zmx16s(pDst[0] | 1 << Al);
    return zmxStsNoErr;
}

ZmxStatus zmxiDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                                     int* pMarker, int Ss, int Se, int Al,
                                                     const ZmxiDecodeHuffmanSpec* pAcTable,
                                                     ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad = bandArgs(pSrc, nSrcLen, pSrcCurrPos, pDst, pMarker, Ss, Se, Al, pAcTable, pDecHuffState))
        return bad;
    if (pDecHuffState->eobRun > 0) {
        --pDecHuffState->eobRun;
        return zmxStsNoErr;
    }
    BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
    for (int k = Ss; k <= Se; ++k) {
        RunSize symbol;
        if (ZmxStatus failed = decodeRunSize(in, &symbol, *pAcTable)) return failed;
        const auto [r, s] = symbol;
        if (s == 0 && r < 15) {
            if (ZmxStatus failed = decodeEobRun(in, r, &pDecHuffState->eobRun)) return failed;
            --pDecHuffState->eobRun; // this block is one of the run
            return zmxStsNoErr;
        }
        k += r;
        if (s != 0) {
            if (ZmxStatus failed = need(in, s)) return failed;
            pDst[zigzagReach[std::size_t(k)]] = wrap16s(extend(in.take(s), s) << Al);
        }
    }
    return zmxStsNoErr;
}

ZmxStatus zmxiDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(const Zmx8u* pSrc, int nSrcLen, int* pSrcCurrPos, Zmx16s* pDst,
                                                      int* pMarker, int Ss, int Se, int Al,
                                                      const ZmxiDecodeHuffmanSpec* pAcTable,
                                                      ZmxiDecodeHuffmanState* pDecHuffState) {
    if (ZmxStatus bad = bandArgs(pSrc, nSrcLen, pSrcCurrPos, pDst, pMarker, Ss, Se, Al, pAcTable, pDecHuffState))
        return bad;
    BitReader in(pSrc, nSrcLen, pSrcCurrPos, pMarker, pDecHuffState);
    Zmx32s& eobRun = pDecHuffState->eobRun;
    const int plus = 1 << Al, minus = -1 << Al;

    const auto readBit = [&in](Zmx32u* pBit) {
        if (ZmxStatus failed = need(in, 1)) return failed;
        *pBit = in.take(1);
        return ZmxStatus(zmxStsNoErr);
    };
    // One bit for a coefficient that is known already. What is tested is the bit of its two's complement form, not of its
    // magnitude: required here.
    const auto correct = [&](Zmx16s& c) {
        Zmx32u bit;
        if (ZmxStatus failed = readBit(&bit)) return failed;
        if (bit && (c & plus) == 0) c = wrap16s(c + (c < 0 ? minus : plus));
        return ZmxStatus(zmxStsNoErr);
    };
    const auto at = [pDst](int k) -> Zmx16s& { return pDst[zigzagReach[std::size_t(k)]]; };

    int k = Ss;
    if (eobRun <= 0) {
        for (; k <= Se; ++k) {
            RunSize symbol;
            if (ZmxStatus failed = decodeRunSize(in, &symbol, *pAcTable)) return failed;
            auto [r, s] = symbol;
            if (s == 0 && r != 15) {
                if (ZmxStatus failed = decodeEobRun(in, r, &eobRun)) return failed;
                break;
            }
            int fresh = 0;
            if (s != 0) { // whatever s is beyond that
                Zmx32u bit;
                if (ZmxStatus failed = readBit(&bit)) return failed;
                fresh = bit ? plus : minus;
            }
            // Over r zeros, and to the zero behind them.
            for (; k <= Se; ++k) {
                if (at(k) != 0) {
                    if (ZmxStatus failed = correct(at(k))) return failed;
                } else if (--r < 0) {
                    break;
                }
            }
            if (fresh != 0) at(k) = Zmx16s(fresh); // k may be Se + 1
        }
    }
    if (eobRun <= 0) return zmxStsNoErr;
    for (; k <= Se; ++k)
        if (at(k) != 0)
            if (ZmxStatus failed = correct(at(k))) return failed;
    --eobRun;
    return zmxStsNoErr;
}
