// extended.h - extended precision for the models: the x87 unit's where there is one. Elsewhere it is the library's own
// type, which test_own_extended ties to the unit bit by bit.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "src/pjextended.h"

#include <cfloat>

namespace model {

#if (defined __i386__ || defined __x86_64__) && LDBL_MANT_DIG == 64
using Extended = long double;
#else
using Extended = zmx::SoftExtended;
#endif

} // namespace model
