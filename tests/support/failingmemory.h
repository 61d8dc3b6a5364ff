// failingmemory.h - memory of which one request fails, for the codecs and for whatever they call.
//
// Linking failingmemory.cpp into a test program puts its functions ahead of the C library's; under the sanitizers, which have
// an allocator of their own, ahead of operator new and of libzmxcore alone. What libtiff asks for itself never fails.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

// The n-th request from now (1 is the next) fails, and no other; 0: none fails. The count begins anew.
void failRequest(long n);

long requestsMade(); // since the last call of failRequest(), the failed one included
long blocksInUse();  // not yet given back
