// rounds.h - how many rounds a test makes that draws at random, and how many of what it is to meet on the way.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <algorithm>
#include <cstdlib>

// Whether the environment asks for less than usual: an emulator is slow.
inline bool shortened() { return std::getenv("ZMX_SHORT_TESTS") != nullptr; }

// `usual`, or a hundred times as many by ZMX_LONG_TESTS, or a twentieth.
inline int rounds(int usual) {
    if (std::getenv("ZMX_LONG_TESTS")) return usual * 100;
    return shortened() ? std::max(usual / 20, 1) : usual;
}
