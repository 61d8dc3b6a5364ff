// rounds.h - how many rounds a test makes that draws at random, and how many of what it is to meet on the way.
#pragma once

#include <algorithm>
#include <cstdlib>

// `usual`; ZMX_LONG_TESTS in the environment asks for a hundred times as many. ZMX_SHORT_TESTS asks for a twentieth: an
// emulator is slow.
inline int rounds(int usual) {
    if (std::getenv("ZMX_LONG_TESTS")) return usual * 100;
    if (std::getenv("ZMX_SHORT_TESTS")) return std::max(usual / 20, 1);
    return usual;
}
