// pjcopy.h - the one way in which vectors and rows are copied.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "pjrows.h"

#include <cstdint>

namespace zmx {

// Copies len elements (1 or more) as a forward element loop does, at any distance of the two: a destination a little
// behind the start of its source repeats the first elements.
template <class T> void copyForward(const Zmx8u* src, Zmx8u* dst, int len) {
    const std::ptrdiff_t bytes = std::ptrdiff_t(sizeof(T)) * len;
    // A distance of integers: the two need not lie in one array.
    const auto ahead = std::intptr_t(dst) - std::intptr_t(src);
    if (ahead <= 0 || ahead >= bytes) {
        std::memmove(dst, src, std::size_t(bytes)); // the loop reads nothing that it has written: the same bytes
        return;
    }
    for (int i = 0; i < len; ++i) store(dst, i, load<T>(src, i));
}

} // namespace zmx
