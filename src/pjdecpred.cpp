// pjdecpred.cpp - samples of lossless JPEG rows from their differences (ITU-T T.81, H.2.1). All sums go modulo 2^16.
//
// Each sample waits for the one to its left, unlike in the other direction: it stays in a register. The destination may
// be the source.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjpred.h"

using namespace zmx;

ZmxStatus zmxiReconstructPredFirstRow_JPEG_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst, int nWidth, int P, int Pt) {
    if (ZmxStatus bad = firstRowArgs(pSrc, pDst, nWidth, P, Pt)) return bad;
    Zmx16s Ra = pDst[0] = wrap16s(pSrc[0] + middle(P, Pt));
    for (int i = 1; i < nWidth; ++i) Ra = pDst[i] = wrap16s(pSrc[i] + Ra);
    return zmxStsNoErr;
}

ZmxStatus zmxiReconstructPredRow_JPEG_16s_C1(const Zmx16s* pSrc, const Zmx16s* pPrevRow, Zmx16s* pDst, int nWidth,
                                             int predictor) {
    if (ZmxStatus bad = rowArgs(pSrc, pPrevRow, pDst, nWidth, predictor)) return bad;
    const Zmx16s first = pDst[0] = wrap16s(pSrc[0] + pPrevRow[0]); // whatever the predictor
    withPredictor(predictor, [=](auto predict) {
        Zmx16s Ra = first;
        for (int i = 1; i < nWidth; ++i) Ra = pDst[i] = wrap16s(pSrc[i] + predict(Ra, pPrevRow[i], pPrevRow[i - 1]));
    });
    return zmxStsNoErr;
}
