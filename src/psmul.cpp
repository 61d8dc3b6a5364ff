// psmul.cpp - arithmetic on vectors: sums with a constant, products, quotients.
// SPDX-License-Identifier: BSD-2-Clause
#include "psmul.h"

#include "pjargs.h"
#include "pjquant.h"
#include "pjround.h"
#include "pscopyca.h"

namespace zmx {

ZmxStatus zmxsAddC_32f_I(Zmx32f val, Zmx32f* pSrcDst, int len) {
    if (ZmxStatus bad = Args().ptr(pSrcDst).size(len)) return bad;
    if (val == 0) return zmxStsNoErr; // required: even signalling NaNs and minus zeros stay
    for (int i = 0; i < len; ++i) pSrcDst[i] = rounded(pSrcDst[i] + val);
    return zmxStsNoErr;
}

ZmxStatus zmxsSubC_32f_I(Zmx32f val, Zmx32f* pSrcDst, int len) {
    if (ZmxStatus bad = Args().ptr(pSrcDst).size(len)) return bad;
    if (val == 0) return zmxStsNoErr;
    for (int i = 0; i < len; ++i) pSrcDst[i] = rounded(pSrcDst[i] - val);
    return zmxStsNoErr;
}

ZmxStatus zmxsMul_32f_I(const Zmx32f* pSrc, Zmx32f* pSrcDst, int len) {
    if (ZmxStatus bad = Args().ptr(pSrc, pSrcDst).size(len)) return bad;
    for (int i = 0; i < len; ++i) pSrcDst[i] = rounded(pSrcDst[i] * pSrc[i]);
    return zmxStsNoErr;
}

ZmxStatus zmxsMul_16s(const Zmx16s* pSrc1, const Zmx16s* pSrc2, Zmx16s* pDst, int len) {
    if (ZmxStatus bad = Args().ptr(pSrc1, pSrc2, pDst).size(len)) return bad;
    for (int i = 0; i < len; ++i) pDst[i] = dequantised(pSrc1[i], pSrc2[i]);
    return zmxStsNoErr;
}

ZmxStatus zmxsMul_16s_I(const Zmx16s* pSrc, Zmx16s* pSrcDst, int len) {
    return zmxsMul_16s(pSrc, pSrcDst, pSrcDst, len);
}

// The product times two to the power of minus the scale factor, in the ways that it asks for.
namespace {
struct Unscaled {
    Zmx16s operator()(Zmx16u a, Zmx16s b) const { return saturate16s(a * b); }
};

struct Halved { // the second lowest bit is the rounding term: ties to even
    Zmx16s operator()(Zmx16u a, Zmx16s b) const {
        const int p = a * b;
        return saturate16s((p + (p >> 1 & 1)) >> 1);
    }
};

struct ShiftedRight {
    int s; // 2 to 31
    Zmx16s operator()(Zmx16u a, Zmx16s b) const {
        // Ties to even: half of the divisor, less one for an even quotient. The rounding term is even but for its
        // lowest bit, which cannot carry alone: the halves are added, so that the sum stays in 32 bits.
        const int p = a * b, term = (1 << (s - 1)) - 1 + (p >> s & 1);
        return saturate16s(((p >> 1) + (term >> 1) + (p & term & 1)) >> (s - 1));
    }
};

struct ShiftedLeft {
    int s; // 1 to 14
    Zmx16s operator()(Zmx16u a, Zmx16s b) const { return saturate16s(saturate16s(a * b) * (1 << s)); }
};

struct AllOrNothing {
    Zmx16s operator()(Zmx16u a, Zmx16s b) const { return Zmx16s(a == 0 || b == 0 ? 0 : b < 0 ? -32768 : 32767); }
};
} // namespace

// One of them for every pair of elements.
template <class Product>
static ZmxStatus products(const Zmx16u* src1, const Zmx16s* src2, Zmx16s* dst, int len, Product product) {
    for (int i = 0; i < len; ++i) dst[i] = product(src1[i], src2[i]);
    return zmxStsNoErr;
}

ZmxStatus zmxsMul_16u16s_Sfs(const Zmx16u* pSrc1, const Zmx16s* pSrc2, Zmx16s* pDst, int len, int scaleFactor) {
    if (ZmxStatus bad = Args().ptr(pSrc1, pSrc2, pDst).size(len)) return bad;
    if (scaleFactor >= 32) return zmxsZero_16s(pDst, len);
    if (scaleFactor == 15) return products(pSrc1, pSrc2, pDst, len, quantised);
    if (scaleFactor >= 2) return products(pSrc1, pSrc2, pDst, len, ShiftedRight{scaleFactor});
    if (scaleFactor == 1) return products(pSrc1, pSrc2, pDst, len, Halved{});
    if (scaleFactor == 0) return products(pSrc1, pSrc2, pDst, len, Unscaled{});
    if (scaleFactor >= -14) return products(pSrc1, pSrc2, pDst, len, ShiftedLeft{-scaleFactor});
    return products(pSrc1, pSrc2, pDst, len, AllOrNothing{});
}

ZmxStatus zmxsDivCRev_16u(const Zmx16u* pSrc, Zmx16u val, Zmx16u* pDst, int len) {
    if (ZmxStatus bad = Args().ptr(pSrc, pDst).size(len)) return bad;
    ZmxStatus status = zmxStsNoErr;
    for (int i = 0; i < len; ++i) {
        const Zmx32u d = pSrc[i];
        if (d == 0) {
            status = zmxStsDivByZero;
            pDst[i] = val == 0 ? 0 : 65535;
            continue;
        }
        const Zmx32u q = (Zmx32u(val) << 16) / d;
        // Bit 16 of the quotient counts twice: halves go to the even neighbour, and an odd quotient whose fraction is
        // just under a half is lifted as well. Required.
        pDst[i] = Zmx16u((q + 2 * (q >> 16 & 1) + 32767) >> 16);
    }
    return status;
}

ZmxStatus zmxsDivCRev_16u_I(Zmx16u val, Zmx16u* pSrcDst, int len) {
    return zmxsDivCRev_16u(pSrcDst, val, pSrcDst, len);
}

} // namespace zmx
