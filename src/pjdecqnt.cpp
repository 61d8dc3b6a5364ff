// pjdecqnt.cpp - dequantisation and its table.
// SPDX-License-Identifier: BSD-2-Clause
#include "pjargs.h"
#include "pjqnttbl.h"
#include "psmul.h"

using namespace zmx;

ZmxStatus zmxiQuantInvTableInit_JPEG_8u16u(const Zmx8u* pQuantRawTable, Zmx16u* pQuantInvTable) {
    if (ZmxStatus bad = Args().ptr(pQuantRawTable, pQuantInvTable)) return bad;
    naturalOrder(pQuantRawTable, pQuantInvTable);
    return zmxStsNoErr;
}

ZmxStatus zmxiQuantInv8x8_JPEG_16s_C1I(Zmx16s* pSrcDst, const Zmx16u* pQuantInvTable) {
    // The table is read as signed: required.
    return zmxsMul_16s_I(reinterpret_cast<const Zmx16s*>(pQuantInvTable), pSrcDst, 64);
}
