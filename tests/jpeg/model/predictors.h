// predictors.h - plain models of the predictors of lossless rows. ITU-T T.81, H.1.2.1.
//
// All is inline, so that a caller who knows the predictor gets a loop without decisions (tests/exhaustive/).
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj/types.h"

namespace model {

inline int halved(int v) { return v >= 0 ? v / 2 : -((1 - v) / 2); } // towards minus infinity

inline int prediction(int predictor, int ra, int rb, int rc) {
    switch (predictor) {
    case 1:
        return ra;
    case 2:
        return rb;
    case 3:
        return rc;
    case 4:
        return ra + rb - rc;
    case 5:
        return ra + halved(rb - rc);
    case 6:
        return rb + halved(ra - rc);
    default:
        return halved(ra + rb);
    }
}

// Rows below the first.
inline void diffRow(const Zmx16s* src, const Zmx16s* above, Zmx16s* dst, int width, int predictor) {
    for (int i = 0; i < width; ++i)
        dst[i] = Zmx16s(src[i] - (i ? prediction(predictor, src[i - 1], above[i], above[i - 1]) : above[0]));
}
inline void reconstructRow(const Zmx16s* src, const Zmx16s* above, Zmx16s* dst, int width, int predictor) {
    for (int i = 0; i < width; ++i)
        dst[i] = Zmx16s(src[i] + (i ? prediction(predictor, dst[i - 1], above[i], above[i - 1]) : above[0]));
}

} // namespace model
