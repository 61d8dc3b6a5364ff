// pscopyca.h - zeroing, filling and copying of vectors.
//
// The zmxs functions test their arguments (null, then a length below 1); the owns workers test nothing, and a length
// below 1 does nothing.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

ZmxStatus zmxsZero_8u(Zmx8u* pDst, int len);
ZmxStatus zmxsZero_16s(Zmx16s* pDst, int len);
ZmxStatus zmxsSet_8u(Zmx8u val, Zmx8u* pDst, int len);

// Overlapping vectors are copied as by a forward element loop: a destination a little behind the start of its source
// repeats the first elements.
ZmxStatus zmxsCopy_8u(const Zmx8u* pSrc, Zmx8u* pDst, int len);

Zmx8u* ownsZero_8u(Zmx8u* pDst, int len); // returns pDst
void ownsSet_8u(Zmx8u val, Zmx8u* pDst, int len);
void ownsSet_32s(Zmx32s val, Zmx32s* pDst, int len);
Zmx8u* ownsCopy_8u(const Zmx8u* pSrc, Zmx8u* pDst, int len); // returns pDst

} // namespace zmx
