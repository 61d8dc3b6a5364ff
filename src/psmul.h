// psmul.h - arithmetic on vectors: sums with a constant, products, quotients.
//
// Argument tests: null pointers in order, then a length below 1.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

// A val of 0.0 returns at once and leaves the data untouched, whatever it holds.
ZmxStatus zmxsAddC_32f_I(Zmx32f val, Zmx32f* pSrcDst, int len);
ZmxStatus zmxsSubC_32f_I(Zmx32f val, Zmx32f* pSrcDst, int len);

ZmxStatus zmxsMul_32f_I(const Zmx32f* pSrc, Zmx32f* pSrcDst, int len);

// Products saturated to 16 bits.
ZmxStatus zmxsMul_16s(const Zmx16s* pSrc1, const Zmx16s* pSrc2, Zmx16s* pDst, int len);
ZmxStatus zmxsMul_16s_I(const Zmx16s* pSrc, Zmx16s* pSrcDst, int len);

// Products times two to the power of minus scaleFactor, saturated to 16 bits: ties go to the even neighbour for a
// positive scaleFactor.
ZmxStatus zmxsMul_16u16s_Sfs(const Zmx16u* pSrc1, const Zmx16s* pSrc2, Zmx16s* pDst, int len, int scaleFactor);

// val divided by each element, to nearest with ties to even; a zero element gives 65535 (0 for a val of 0) and the
// warning zmxStsDivByZero.
ZmxStatus zmxsDivCRev_16u(const Zmx16u* pSrc, Zmx16u val, Zmx16u* pDst, int len);
ZmxStatus zmxsDivCRev_16u_I(Zmx16u val, Zmx16u* pSrcDst, int len);

} // namespace zmx
