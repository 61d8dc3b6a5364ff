// pjencqnt.cpp - quantisation, its tables and their quality factor.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjqnttbl.h"
#include "pjwrap.h"
#include "psmul.h"

using namespace zmx;

ZmxStatus zmxiQuantFwdRawTableInit_JPEG_8u(Zmx8u* pQuantRawTable, int qualityFactor) {
    if (ZmxStatus bad = Args().ptr(pQuantRawTable).arg(qualityFactor < 1)) return bad;
    // The scale in percent: 5000 over the factor below 50, then falling by two a step.
    // From a quality of 100 up the scale is zero or negative, and every entry becomes 1.
    const int scale = qualityFactor < 50 ? 5000 / qualityFactor : wrapSub(200, wrapMul(2, qualityFactor));
    for (int i = 0; i < 64; ++i) {
        const int scaled = wrapAdd(wrapMul(int(pQuantRawTable[i]), scale), 50) / 100;
        pQuantRawTable[i] = Zmx8u(clamp(scaled, 1, 255));
    }
    return zmxStsNoErr;
}

ZmxStatus zmxiQuantFwdTableInit_JPEG_8u16u(const Zmx8u* pQuantRawTable, Zmx16u* pQuantFwdTable) {
    if (ZmxStatus bad = Args().ptr(pQuantRawTable, pQuantFwdTable)) return bad;
    naturalOrder(pQuantRawTable, pQuantFwdTable);
    // Reciprocals with 15 fraction bits, which zmxiQuantFwd8x8_JPEG_16s_C1I takes off again.
    return zmxsDivCRev_16u_I(32768, pQuantFwdTable, 64);
}

ZmxStatus zmxiQuantFwd8x8_JPEG_16s_C1I(Zmx16s* pSrcDst, const Zmx16u* pQuantFwdTable) {
    return zmxsMul_16u16s_Sfs(pQuantFwdTable, pSrcDst, pSrcDst, 64, 15);
}
