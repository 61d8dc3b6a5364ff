// pscopyca.cpp - zeroing, filling and copying of vectors.
//
// The zmxs functions are the tests of the arguments ahead of the owns workers, which do the work and may be called with
// any length.
// SPDX-License-Identifier: BSD-2-Clause
#include "pscopyca.h"

#include "pjargs.h"
#include "pjcopy.h"

namespace zmx {

ZmxStatus zmxsZero_8u(Zmx8u* pDst, int len) {
    if (ZmxStatus bad = Args().ptr(pDst).size(len)) return bad;
    ownsZero_8u(pDst, len);
    return zmxStsNoErr;
}

ZmxStatus zmxsZero_16s(Zmx16s* pDst, int len) {
    if (ZmxStatus bad = Args().ptr(pDst).size(len)) return bad;
    // The byte count is a 32-bit one that wraps: a vector of 2^30 elements or more counts as an empty one.
    ownsZero_8u(reinterpret_cast<Zmx8u*>(pDst), wrapMul(2, len));
    return zmxStsNoErr;
}

ZmxStatus zmxsSet_8u(Zmx8u val, Zmx8u* pDst, int len) {
    if (ZmxStatus bad = Args().ptr(pDst).size(len)) return bad;
    ownsSet_8u(val, pDst, len);
    return zmxStsNoErr;
}

ZmxStatus zmxsCopy_8u(const Zmx8u* pSrc, Zmx8u* pDst, int len) {
    if (ZmxStatus bad = Args().ptr(pSrc, pDst).size(len)) return bad;
    ownsCopy_8u(pSrc, pDst, len);
    return zmxStsNoErr;
}

Zmx8u* ownsZero_8u(Zmx8u* pDst, int len) {
    ownsSet_8u(0, pDst, len);
    return pDst;
}

void ownsSet_8u(Zmx8u val, Zmx8u* pDst, int len) {
    if (len > 0) std::memset(pDst, val, std::size_t(len));
}

void ownsSet_32s(Zmx32s val, Zmx32s* pDst, int len) {
    for (int i = 0; i < len; ++i) pDst[i] = val;
}

Zmx8u* ownsCopy_8u(const Zmx8u* pSrc, Zmx8u* pDst, int len) {
    if (len > 0) copyForward<Zmx8u>(pSrc, pDst, len);
    return pDst;
}

} // namespace zmx
