// photo.h - the HD Photo core transform, step by step on a block of 16 numbers.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace model {

// One 4x4 block, m[4 * row + column], in place. Sums wrap in 32 bits.
void photoForward(Zmx32s m[16]);
void photoInverse(Zmx32s m[16]);

} // namespace model
