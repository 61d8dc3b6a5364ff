// psalloc.cpp - the one road to memory in the library: what an application puts in the place of zmxMalloc and zmxFree
// serves all of it.
// SPDX-License-Identifier: BSD-2-Clause
#include "psalloc.h"

#include "zmxcore.h"

namespace zmx {

Zmx8u* zmxsMalloc_8u(int len) {
    if (len < 1) return nullptr;
    return static_cast<Zmx8u*>(zmxMalloc(len));
}

void zmxsFree(void* ptr) { zmxFree(ptr); }

} // namespace zmx
