// pithresh16u.cpp - samples beyond a threshold replaced.
// SPDX-License-Identifier: BSD-2-Clause
#include "pithresh16u.h"

#include "pjargs.h"
#include "pjrows.h"

namespace zmx {

// beyond(sample, threshold) says whether a sample is replaced; each mode has a loop of its own.
template <class Beyond>
static void thresholdRow(const Zmx8u* src, Zmx8u* dst, int width, Zmx16u threshold, Zmx16u value, Beyond beyond) {
    for (int x = 0; x < width; ++x) {
        const auto v = load<Zmx16u>(src, x);
        store(dst, x, beyond(v, threshold) ? value : v);
    }
}

ZmxStatus zmxiThreshold_Val_16u_C1R(const Zmx16u* pSrc, int srcStep, Zmx16u* pDst, int dstStep, ZmxiSize roiSize,
                                    Zmx16u threshold, Zmx16u value, ZmxCmpOp cmpOp) {
    // The mode before all else, sizes before steps: required here.
    if (ZmxStatus bad = Args()
                            .test(cmpOp != zmxCmpLess && cmpOp != zmxCmpGreater, zmxStsNotSupportedModeErr)
                            .ptr(pSrc, pDst)
                            .size(roiSize)
                            .step(srcStep)
                            .step(dstStep))
        return bad;
    const auto run = [=](auto beyond) {
        // Rows advance by whole samples: an odd step loses its last byte.
        Serial::rows(roiSize, [=](int y) {
            thresholdRow(rowAt(pSrc, srcStep & ~1, y), rowAt(pDst, dstStep & ~1, y), roiSize.width, threshold, value,
                         beyond);
        });
    };
    if (cmpOp == zmxCmpLess)
        run([](Zmx16u v, Zmx16u t) { return v < t; });
    else
        run([](Zmx16u v, Zmx16u t) { return v > t; });
    return zmxStsNoErr;
}

ZmxStatus zmxiThreshold_16u_C1R(const Zmx16u* pSrc, int srcStep, Zmx16u* pDst, int dstStep, ZmxiSize roiSize,
                                Zmx16u threshold, ZmxCmpOp cmpOp) {
    return zmxiThreshold_Val_16u_C1R(pSrc, srcStep, pDst, dstStep, roiSize, threshold, threshold, cmpOp);
}

ZmxStatus zmxiThreshold_16u_C1IR(Zmx16u* pSrcDst, int srcDstStep, ZmxiSize roiSize, Zmx16u threshold, ZmxCmpOp cmpOp) {
    return zmxiThreshold_16u_C1R(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, threshold, cmpOp);
}

} // namespace zmx
