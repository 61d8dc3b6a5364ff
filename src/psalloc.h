// psalloc.h - the one road to memory in the library.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmxj.h"

namespace zmx {

// A block of len bytes, or null; a len below 1 gives null and asks nobody.
Zmx8u* zmxsMalloc_8u(int len);

// Gives a block back; what zmxFree does with a null pointer is what this does.
void zmxsFree(void* ptr);

} // namespace zmx
