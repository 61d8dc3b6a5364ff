// pjpred.h - the predictions of lossless JPEG (ITU-T T.81, Table H.1), for both directions.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjargs.h"
#include "pjwrap.h"

namespace zmx {

// Calls row with the prediction of a predictor from Ra to the left, Rb above and Rc above Ra, of which the
// low 16 bits count. The predictor is chosen once a row, and each has a loop of its own.
template <class Row> void withPredictor(int predictor, Row row) {
    // The halves are those of signed 16-bit samples, formed in 32 bits: no wrap ahead of the shift.
    switch (predictor) { // unreachable: rowArgs admits no other than these seven
    case 1:
        return row([](int Ra, int, int) { return Ra; });
    case 2:
        return row([](int, int Rb, int) { return Rb; });
    case 3:
        return row([](int, int, int Rc) { return Rc; });
    case 4:
        return row([](int Ra, int Rb, int Rc) { return Ra + Rb - Rc; });
    case 5:
        return row([](int Ra, int Rb, int Rc) { return Ra + ((Rb - Rc) >> 1); });
    case 6:
        return row([](int Ra, int Rb, int Rc) { return Rb + ((Ra - Rc) >> 1); });
    case 7:
        return row([](int Ra, int Rb, int) { return (Ra + Rb) >> 1; });
    }
}

// The middle of the range, which predicts the very first sample. The shift count goes modulo 32: a point
// transform of the precision or more leaves nothing in the 16 bits that count, and is not refused.
inline int middle(int P, int Pt) { return wrap16s(Zmx32s(1u << ((P - Pt - 1) & 31))); }

inline Args firstRowArgs(const Zmx16s* pSrc, const Zmx16s* pDst, int nWidth, int P, int Pt) {
    return Args().ptr(pSrc, pDst).size(nWidth).arg(P < 2 || P > 16 || Pt < 0);
}
inline Args rowArgs(const Zmx16s* pSrc, const Zmx16s* pPrevRow, const Zmx16s* pDst, int nWidth, int predictor) {
    return Args().ptr(pSrc, pPrevRow, pDst).size(nWidth).arg(predictor < 1 || predictor > 7);
}

} // namespace zmx
