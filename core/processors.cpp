// processors.cpp - how many processors this process may use, on POSIX systems that tell no more than their number.
// SPDX-License-Identifier: BSD-2-Clause
#include "system.h"

#include <unistd.h>

namespace zmx {

int usableProcessors() {
    const long online = sysconf(_SC_NPROCESSORS_ONLN);
    return online > 0 ? int(online) : 1;
}

} // namespace zmx
