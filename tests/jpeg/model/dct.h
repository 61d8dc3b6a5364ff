// dct.h - plain models of the 8x8 discrete cosine transforms: the integer flow and the single-precision flow step by
// step, and the transform of ITU-T T.81 A.3.3 in double precision.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj/types.h"

namespace model {

// Integer transforms of 64 elements in place.
void dctForward(Zmx16s* block);
void dctInverse(Zmx16s* block);
void dctInverse4x4(Zmx16s* block); // only the 4x4 corner counts
void dctInverse2x2(Zmx16s* block);
void dctTo4x4(Zmx16s* block); // 16 results packed at the front, the rest left as it was
void dctTo2x2(Zmx16s* block);

// Single precision, each operation rounded.
void dctForward(Zmx32f* block);
void dctInverse(Zmx32f* block);
Zmx32f forwardNorm(int k); // the factor of element k behind the forward transform, and ahead of the inverse
Zmx32f inverseNorm(int k);

// The definition: sums of cosines.
void dctForward(double* block);
void dctInverse(double* block);

} // namespace model
