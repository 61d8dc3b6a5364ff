// pjver.cpp - the version record.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmxj.h"

namespace zmx {

static constexpr ZmxLibraryVersion s_libVer = {
    6, 1, 137, 823, {'p', 'x', 0, 0}, "libzmxjpx.so.6.1", "6.1 build 137.56", "Mar 17 2010"};

} // namespace zmx

using namespace zmx;

const ZmxLibraryVersion* zmxjGetLibVersion(void) { return &s_libVer; }
