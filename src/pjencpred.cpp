// pjencpred.cpp - differences of lossless JPEG rows (ITU-T T.81, H.1.2.1). All sums go modulo 2^16.
//
// Predictions are made of source samples, so that no difference waits for another.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjpred.h"

using namespace zmx;

ZmxStatus zmxiDiffPredFirstRow_JPEG_16s_C1(const Zmx16s* pSrc, Zmx16s* pDst, int nWidth, int P, int Pt) {
    if (ZmxStatus bad = firstRowArgs(pSrc, pDst, nWidth, P, Pt)) return bad;
    pDst[0] = wrap16s(pSrc[0] - middle(P, Pt));
    for (int i = 1; i < nWidth; ++i) pDst[i] = wrap16s(pSrc[i] - pSrc[i - 1]);
    return zmxStsNoErr;
}

ZmxStatus zmxiDiffPredRow_JPEG_16s_C1(const Zmx16s* pSrc, const Zmx16s* pPrevRow, Zmx16s* pDst, int nWidth,
                                      int predictor) {
    if (ZmxStatus bad = rowArgs(pSrc, pPrevRow, pDst, nWidth, predictor)) return bad;
    pDst[0] = wrap16s(pSrc[0] - pPrevRow[0]); // whatever the predictor
    withPredictor(predictor, [=](auto predict) {
        for (int i = 1; i < nWidth; ++i)
            pDst[i] = wrap16s(pSrc[i] - predict(pSrc[i - 1], pPrevRow[i], pPrevRow[i - 1]));
    });
    return zmxStsNoErr;
}
